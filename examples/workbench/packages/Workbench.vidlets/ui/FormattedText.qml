// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// Text with simple markup (bold, italics, links), as wide as it is told to be.
Text {
    id: formatted

    required property Theme theme

    color: theme.text
    linkColor: theme.link
    font.pixelSize: theme.textSize
    lineHeight: 1.12
    // Said expressly, so that it is mirrored with the layout: else each text goes by its first letter.
    horizontalAlignment: Text.AlignLeft
    wrapMode: Text.Wrap
    textFormat: Text.StyledText

    onLinkActivated: link => vidletView.openExternalResource(link)
    onLinkHovered: link =>
        vidletView.setItemCursor(formatted, link === "" ? "" : "PointingHandCursor", "link")
}
