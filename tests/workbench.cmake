# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# A build without examples has no workbench to look at.
if(NOT TARGET workbench)
  return()
endif()

vidlets_add_test(NAME tst_workbench)
add_dependencies(tst_workbench workbench)
target_compile_definitions(tst_workbench PRIVATE WORKBENCH_PROGRAM="$<TARGET_FILE:workbench>")

vidlets_add_test(NAME tst_workbenchsearch DISPLAY)
add_dependencies(tst_workbenchsearch workbench)
target_compile_definitions(tst_workbenchsearch PRIVATE WORKBENCH_PROGRAM="$<TARGET_FILE:workbench>")

# Rests a real pointer on the controls of the program and looks at what comes up. It waits most of
# the time, but for popups, which a machine with too much to do brings up late.
add_test(NAME workbench_tour COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/tour/tour"
                                     $<TARGET_FILE:workbench> "${PROJECT_BINARY_DIR}/tour")
set_tests_properties(workbench_tour PROPERTIES TIMEOUT 900 ENVIRONMENT
                                               "${vidlets_test_environment};QT_QPA_PLATFORM=xcb")
