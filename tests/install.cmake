# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# An instrumented library can be linked into instrumented programs only.
if(VIDLETS_SANITIZE)
  return()
endif()

add_test(NAME install_consumer COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/consumer/check"
                                       "${PROJECT_BINARY_DIR}" "${PROJECT_BINARY_DIR}/consumer")
set_tests_properties(
  install_consumer PROPERTIES TIMEOUT ${vidlets_test_timeout_s} ENVIRONMENT
                              "${vidlets_test_environment};QT_QPA_PLATFORM=offscreen")

add_test(NAME exported_symbols COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/consumer/symbols"
                                       $<TARGET_FILE:Vidlets> exported.txt)
add_test(NAME exported_symbols_host COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/consumer/symbols"
                                            $<TARGET_FILE:VidletsHost> exported-host.txt)
