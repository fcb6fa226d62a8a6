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
    font.underline: hover.hovered || activeFocus
    horizontalAlignment: Text.AlignLeft
    wrapMode: Text.Wrap
    textFormat: Text.PlainText

    activeFocusOnTab: true

    Accessible.role: Accessible.Link
    Accessible.name: text
    Accessible.focusable: true
    Accessible.onPressAction: open()
    Keys.onReturnPressed: open()
    Keys.onEnterPressed: open()
    Keys.onSpacePressed: open()
    Component.onCompleted: vidletView.setItemCursor(link, "PointingHandCursor", "link")

    function open() {
        vidletView.openExternalResource(target);
    }

    FocusFrame { theme: link.theme }
    HoverHandler { id: hover }
    TapHandler { onTapped: link.open() }
}
