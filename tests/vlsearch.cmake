# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

find_package(Qt6 6.4 REQUIRED COMPONENTS Sql)

# The classes behind the search are not exported: the tests have them in themselves.
vidlets_add_test(NAME tst_vlsearchquery SOURCES ${PROJECT_SOURCE_DIR}/VidletsHost/VLSearchFold.cpp
                                                ${PROJECT_SOURCE_DIR}/VidletsHost/VLSearchQuery.cpp)
vidlets_add_test(
  NAME tst_vlsearchstore
  SOURCES ${PROJECT_SOURCE_DIR}/VidletsHost/VLKeyTableScanner.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLSearchFold.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLSearchQuery.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLEndOfApplication.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLSearchStore.cpp
          ${PROJECT_SOURCE_DIR}/VidletsHost/VLSqliteFile.cpp
  LIBRARIES Qt6::Sql)
vidlets_add_test(NAME tst_vlkeytablesearch LIBRARIES Vidlets::Host)
if(VIDLETS_SANITIZE OR VIDLETS_SANITIZE_THREADS)
  # Else it takes seven minutes.
  set_property(
    TEST tst_vlkeytablesearch tst_vlkeytablesearch_safeguarded
    APPEND
    PROPERTY ENVIRONMENT VIDLETS_SEARCH_PACKAGES=3)
endif()
