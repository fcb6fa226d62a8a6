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
