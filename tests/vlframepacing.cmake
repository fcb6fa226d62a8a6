# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# The library exports none of it, so the test has a copy of its own.
vidlets_add_test(NAME tst_vlframepacing SOURCES "${PROJECT_SOURCE_DIR}/Vidlets/VLFramePacing.cpp")
