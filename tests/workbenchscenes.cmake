# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# A build without examples has no scenes to look at.
if(NOT TARGET workbench)
  return()
endif()

vidlets_add_test(
  NAME tst_workbenchscenes
  DISPLAY
  SOURCES shared/HostStage.cpp
  LIBRARIES Vidlets::Host)
# Knows the library alone, as a host without the kit does.
vidlets_add_test(NAME tst_plainscenes DISPLAY)
get_target_property(vidlets_workbench_build workbench BINARY_DIR)
foreach(test IN ITEMS tst_workbenchscenes tst_plainscenes)
  add_dependencies(${test} workbench_package)
  target_compile_definitions(
    ${test} PRIVATE WORKBENCH_PACKAGES="${vidlets_workbench_build}/packages"
                    PICTURES="${PROJECT_BINARY_DIR}/scenes")
endforeach()
