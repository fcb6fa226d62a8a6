# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

# What the window system reports too early cannot be brought about in another way.
vidlets_add_test(
  NAME tst_show
  DISPLAY
  LIBRARIES Qt6::GuiPrivate)
