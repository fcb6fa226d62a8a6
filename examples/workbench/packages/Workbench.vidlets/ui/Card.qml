// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// The background of a tip.
Rectangle {
    id: card

    required property Theme theme

    color: theme.surface
    border.color: theme.border
    border.width: 1

    Rectangle {
        anchors.left: parent.left
        width: card.theme.barWidth
        height: parent.height
        color: card.theme.accent
    }
}
