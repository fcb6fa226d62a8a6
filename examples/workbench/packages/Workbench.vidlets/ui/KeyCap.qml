// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// One key of a keyboard, standing a little proud of the surface.
Rectangle {
    id: cap

    required property Theme theme
    property alias text: label.text

    implicitWidth: Math.max(implicitHeight, label.implicitWidth + theme.px(10))
    implicitHeight: label.implicitHeight + theme.px(5)
    radius: theme.px(3)
    color: theme.border

    Rectangle {
        anchors.fill: parent
        anchors.margins: 1
        anchors.bottomMargin: cap.theme.px(2)
        radius: Math.max(0, cap.radius - 1)
        color: cap.theme.shade

        Text {
            id: label
            anchors.centerIn: parent
            color: cap.theme.text
            font.pixelSize: cap.theme.smallSize
            textFormat: Text.PlainText
        }
    }
}
