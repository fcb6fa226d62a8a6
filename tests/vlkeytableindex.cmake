# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# The classes behind the index are not exported: the test has them in itself.
vidlets_add_test(
  NAME tst_vlkeytablereader
  SOURCES ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableRange.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableReader.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableScanner.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLSearchCollector.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLTipText.cpp)
vidlets_add_test(NAME tst_vlkeytableindex LIBRARIES Vidlets::Host)
vidlets_add_test(
  NAME tst_vlkeytabledifferential
  SOURCES shared/RandomPackages.cpp
  LIBRARIES Vidlets::Host)
vidlets_add_test(NAME tst_vlkeytablelive LIBRARIES Vidlets::Host)
vidlets_add_test(
  NAME tst_vlkeytablecache
  SOURCES ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableBlobs.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableScanner.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLEndOfApplication.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableStore.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLSqliteFile.cpp
  LIBRARIES Vidlets::Host Qt6::Sql)
if(VIDLETS_SANITIZE OR VIDLETS_SANITIZE_THREADS)
  # Else it takes longer than a test may.
  set_property(
    TEST tst_vlkeytabledifferential tst_vlkeytabledifferential_safeguarded
    APPEND
    PROPERTY ENVIRONMENT VIDLETS_DIFFERENTIAL_PACKAGES=200)
  set_property(
    TEST tst_vlkeytablecache tst_vlkeytablecache_safeguarded
    APPEND
    PROPERTY ENVIRONMENT VIDLETS_KILLS=5)
endif()
