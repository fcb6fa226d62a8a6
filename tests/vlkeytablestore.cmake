# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

vidlets_add_test(
  NAME tst_vlkeytablestore
  SOURCES ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableBlobs.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableScanner.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLEndOfApplication.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableStore.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLSqliteFile.cpp
  LIBRARIES Qt6::Sql)
