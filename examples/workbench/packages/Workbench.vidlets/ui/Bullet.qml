// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

// An <item> of a tip: a paragraph with a mark before it.
Item {
    id: bullet

    required property Theme theme
    required property Wording wording
    required property VLXmlElement element

    implicitHeight: paragraph.implicitHeight

    Rectangle {
        anchors.left: parent.left
        anchors.leftMargin: bullet.theme.px(3)
        y: bullet.theme.textSize * 0.5
        width: bullet.theme.px(5)
        height: width
        radius: width / 2
        color: bullet.theme.accent
    }

    Paragraph {
        id: paragraph
        anchors.left: parent.left
        anchors.leftMargin: bullet.theme.textPx(18)
        anchors.right: parent.right
        theme: bullet.theme
        wording: bullet.wording
        element: bullet.element
    }
}
