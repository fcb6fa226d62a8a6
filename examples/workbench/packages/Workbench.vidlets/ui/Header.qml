// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// The title, with the shortcut beside it, or below where the two have no room on one line.
Item {
    id: header

    required property Theme theme
    required property Wording wording
    property alias title: title.text
    property alias shortcut: caps.shortcut

    readonly property bool hasShortcut: shortcut !== ""
    readonly property int naturalWidth: Math.ceil(ruler.implicitWidth)
        + (hasShortcut ? 2 * theme.gap + Math.ceil(caps.implicitWidth) : 0)
    readonly property bool isOneLine: naturalWidth <= width

    readonly property int firstLineHeight: isOneLine ? lineHeight : Math.ceil(ruler.implicitHeight)
    readonly property int lineHeight: Math.max(title.height, capsHeight)
    readonly property int capsHeight: hasShortcut ? caps.height : 0

    implicitHeight: isOneLine ? lineHeight
                              : title.height + (hasShortcut ? theme.smallGap : 0) + capsHeight

    // The title on one line, whatever becomes of the visible one.
    Text {
        id: ruler
        visible: false
        text: title.text
        font: title.font
        textFormat: title.textFormat
    }

    Text {
        id: title
        anchors.left: parent.left
        y: header.isOneLine ? Math.round((header.lineHeight - height) / 2) : 0
        width: header.isOneLine ? ruler.implicitWidth : header.width
        color: header.theme.text
        font.pixelSize: header.theme.titleSize
        font.bold: true
        horizontalAlignment: Text.AlignLeft
        wrapMode: Text.Wrap
        textFormat: Text.PlainText

        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    KeyCaps {
        id: caps
        theme: header.theme
        wording: header.wording
        visible: header.hasShortcut
        x: header.isOneLine !== header.wording.isMirrored ? header.width - width : 0
        // As it is written; the caps by themselves are single letters.
        Accessible.role: Accessible.StaticText
        Accessible.name: shortcut
        y: header.isOneLine ? Math.round((header.lineHeight - height) / 2)
                            : title.height + header.theme.smallGap
    }
}
