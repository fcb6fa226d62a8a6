# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

foreach(kind IN ITEMS badclip badcontent badpackage)
  vidlets_add_test(NAME tst_${kind} SOURCES shared/BadContentTest.cpp shared/BadPackage.cpp
                                            shared/ObjectCensus.cpp)
endforeach()
