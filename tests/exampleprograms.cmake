# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# A build without examples has no programs to run.
if(NOT TARGET hostkit)
  return()
endif()

vidlets_add_test(NAME tst_exampleprograms DISPLAY)
target_compile_definitions(tst_exampleprograms PRIVATE MINIMAL_PROGRAM="$<TARGET_FILE:minimal>"
                                                       HOSTKIT_PROGRAM="$<TARGET_FILE:hostkit>")
add_dependencies(tst_exampleprograms minimal hostkit)
