// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// The root item's size is the size of the popup.
Rectangle {
    width: column.width + 24
    height: column.height + 24
    color: palette.window
    border.color: palette.mid

    SystemPalette { id: palette }

    Column {
        id: column
        anchors.centerIn: parent
        spacing: 4

        Text {
            text: vidlet ? vidlet.attribute("title") : ""
            color: palette.windowText
            font.bold: true
        }
        Text {
            text: vidlet ? vidlet.childElement("text").content : ""
            color: palette.windowText
        }
    }
}
