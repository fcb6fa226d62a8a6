# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

find_package(Qt6 6.4 REQUIRED COMPONENTS Sql)

vidlets_add_test(
  NAME tst_vlkeytablestore
  SOURCES ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableBlobs.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableScanner.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableStore.cpp
  LIBRARIES Qt6::Sql)
vidlets_add_test(NAME tst_vlkeytablecache LIBRARIES Vidlets::Host Qt6::Sql)
