# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# Translation files are compiled while the test runs, as authors of packages compile them.
find_package(Qt6 6.4 REQUIRED COMPONENTS LinguistTools)

vidlets_add_test(NAME tst_translation SOURCES shared/ObjectCensus.cpp)
target_compile_definitions(tst_translation PRIVATE LRELEASE="$<TARGET_FILE:Qt6::lrelease>")
