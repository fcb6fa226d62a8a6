// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

// The links of a tip, on a band of their own.
Rectangle {
    id: footer

    required property Theme theme
    required property Wording wording
    property var links: []

    readonly property bool isEmpty: repeater.count === 0

    visible: !isEmpty
    implicitHeight: isEmpty ? 0 : column.implicitHeight + 2 * theme.gap
    color: theme.shade

    Rectangle {
        width: parent.width
        height: 1
        color: footer.theme.line
    }

    Column {
        id: column
        anchors.left: parent.left
        anchors.right: parent.right
        // The band begins right of the bar along the tip's edge.
        anchors.leftMargin: footer.theme.margin - footer.theme.barWidth
        anchors.rightMargin: footer.theme.margin - 1
        anchors.verticalCenter: parent.verticalCenter
        spacing: footer.theme.smallGap

        Text {
            width: parent.width
            color: footer.theme.faintText
            font.pixelSize: footer.theme.smallSize
            font.bold: true
            horizontalAlignment: Text.AlignLeft
            text: footer.wording.phrase("Read more")
            textFormat: Text.PlainText

            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        Repeater {
            id: repeater
            model: footer.links

            Link {
                required property VLXmlElement modelData

                width: column.width
                theme: footer.theme
                text: footer.wording.contentOf(modelData)
                target: modelData ? modelData.attribute("target") : ""
            }
        }
    }
}
