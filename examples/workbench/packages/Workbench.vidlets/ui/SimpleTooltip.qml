// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// The simple tip: title and shortcut, and the summary if there is one.
Item {
    id: root

    readonly property int padding: tipTheme.px(9)
    readonly property int widest: Math.min(Screen.width * 0.9, tipTheme.textPx(300))
    readonly property int naturalWidth: Math.max(header.naturalWidth, ruler.implicitWidth) + 1

    width: Math.min(widest, naturalWidth) + 2 * padding
    height: column.implicitHeight + 2 * padding - tipTheme.px(4)

    LayoutMirroring.enabled: tipWording.isMirrored
    LayoutMirroring.childrenInherit: true

    Theme { id: tipTheme }
    Wording { id: tipWording }

    // The summary on one line, so that a short tip stays small.
    FormattedText {
        id: ruler
        visible: false
        theme: tipTheme
        text: summary.text
        wrapMode: Text.NoWrap
    }

    Card {
        anchors.fill: parent
        theme: tipTheme
    }

    Column {
        id: column
        anchors.verticalCenter: parent.verticalCenter
        x: root.padding
        width: root.width - 2 * root.padding
        spacing: tipTheme.smallGap

        Header {
            id: header
            width: column.width
            theme: tipTheme
            wording: tipWording
            title: tipWording.attributeOf(vidlet, "title")
            shortcut: vidlet ? vidlet.attribute("shortcut") : ""
        }

        FormattedText {
            id: summary
            width: column.width
            visible: text !== ""
            theme: tipTheme
            color: tipTheme.faintText
            text: tipWording.attributeOf(vidlet, "summary")
        }
    }
}
