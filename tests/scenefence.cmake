# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

find_package(Qt6 6.4 REQUIRED COMPONENTS Network)
vidlets_add_test(NAME tst_scenefence LIBRARIES Qt6::Network)

# The library does not export it, so the test compiles it.
vidlets_add_test(
  NAME tst_scenesource
  SOURCES "${PROJECT_SOURCE_DIR}/Vidlets/VLSceneSource.cpp"
          "${PROJECT_SOURCE_DIR}/Vidlets/VLSceneText.cpp"
          "${PROJECT_SOURCE_DIR}/Vidlets/VLVectorPicture.cpp"
          "${PROJECT_SOURCE_DIR}/Vidlets/VLContentRoots.cpp")
