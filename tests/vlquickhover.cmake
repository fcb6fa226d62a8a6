# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

vidlets_add_test(
  NAME tst_vlquickhover
  DISPLAY
  LIBRARIES Vidlets::Host Qt6::QuickWidgets)
