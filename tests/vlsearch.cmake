# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# The classes behind the search are not exported: the tests have them in themselves.
vidlets_add_test(NAME tst_vlsearchquery SOURCES ${PROJECT_SOURCE_DIR}/VidletsHost/VLSearchFold.cpp
                                                ${PROJECT_SOURCE_DIR}/VidletsHost/VLSearchQuery.cpp)
