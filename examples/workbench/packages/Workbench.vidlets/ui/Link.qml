// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// A <link> of a tip. What it leads to is the host's affair.
Text {
    id: link

    required property Theme theme
    required property string target

    color: theme.link
    font.pixelSize: theme.textSize
    font.underline: hover.hovered
    horizontalAlignment: Text.AlignLeft
    wrapMode: Text.Wrap
    textFormat: Text.PlainText

    Component.onCompleted: vidletView.setItemCursor(link, "PointingHandCursor", "link")

    HoverHandler { id: hover }
    TapHandler { onTapped: vidletView.openExternalResource(link.target) }
}
