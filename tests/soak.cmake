# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# Counts allocations with functions of its own in place of the C library's, which the sanitizers
# replace as well.
if(NOT VIDLETS_SANITIZE)
  add_subdirectory(soak)
endif()
