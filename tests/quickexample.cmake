# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

vidlets_add_test(
  NAME tst_quickexample
  DISPLAY
  LIBRARIES Vidlets::Host)
target_compile_definitions(tst_quickexample
                           PRIVATE QUICK_FOLDER="${PROJECT_SOURCE_DIR}/examples/quick")
if(TARGET quick)
  target_compile_definitions(tst_quickexample PRIVATE QUICK_PROGRAM="$<TARGET_FILE:quick>")
  add_dependencies(tst_quickexample quick)
endif()
