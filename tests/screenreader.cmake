# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

add_executable(screen-reader-host screenreader/host.cpp)
target_link_libraries(screen-reader-host PRIVATE Vidlets::Host vidlets_warnings)

# Reads, walks and presses what a screen reader would, over a bus of its own.
add_test(
  NAME screen_reader
  COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/screenreader/read-tips" $<TARGET_FILE:screen-reader-host>
          "${PROJECT_SOURCE_DIR}/examples/workbench/packages")
# Tips that the keyboard has called.
add_test(
  NAME screen_reader_called
  COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/screenreader/read-tips" $<TARGET_FILE:screen-reader-host>
          "${PROJECT_SOURCE_DIR}/examples/workbench/packages" --sequence shift+F1)
set_tests_properties(
  screen_reader screen_reader_called PROPERTIES TIMEOUT ${vidlets_test_timeout_s} ENVIRONMENT
                                                "${vidlets_test_environment};QT_QPA_PLATFORM=xcb")
