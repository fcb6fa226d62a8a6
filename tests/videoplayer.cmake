# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT

vidlets_add_test(NAME tst_videoplayer)
target_compile_definitions(
  tst_videoplayer
  PRIVATE
    VIDEO_PLAYER="${PROJECT_SOURCE_DIR}/examples/workbench/packages/Workbench.vidlets/ui/VideoPlayer.qml"
)
