# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

vidlets_add_test(NAME tst_wayland WAYLAND)
# Each look at the screen takes its time, and there are many.
set_tests_properties(tst_wayland tst_wayland_safeguarded PROPERTIES TIMEOUT 600)
