# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

vidlets_add_test(NAME tst_documents SOURCES shared/DocumentCheck.cpp)
target_compile_definitions(tst_documents PRIVATE SOURCE_TREE="${PROJECT_SOURCE_DIR}")

vidlets_add_test(NAME tst_documentscenes DISPLAY)
target_compile_definitions(tst_documentscenes PRIVATE SOURCE_TREE="${PROJECT_SOURCE_DIR}")
