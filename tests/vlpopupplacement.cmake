# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# The library does not export the calculation, so the test compiles it.
vidlets_add_test(NAME tst_vlpopupplacement
                 SOURCES "${PROJECT_SOURCE_DIR}/Vidlets/VLPopupPlacement.cpp")
