# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

vidlets_add_test(
  NAME tst_vlpreferences
  DISPLAY
  SOURCES shared/HostStage.cpp
  LIBRARIES Vidlets::Host)
