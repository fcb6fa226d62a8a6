# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

vidlets_add_test(
  NAME tst_vlaccess
  DISPLAY
  SOURCES shared/AccessStage.cpp
  LIBRARIES Vidlets::Host Qt6::QuickWidgets)
