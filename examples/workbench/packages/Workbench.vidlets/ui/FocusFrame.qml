// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// The frame around the item that has the keyboard.
Rectangle {
    required property Theme theme

    anchors.fill: parent
    anchors.margins: -theme.px(2)
    visible: parent.activeFocus
    color: "transparent"
    border.color: theme.text
    border.width: theme.px(2)
    radius: theme.px(3)
}
