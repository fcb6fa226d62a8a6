// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.host 1.0

// Has the size of text that the user prefers, which a host with the host kit knows.
Rectangle {
    width: words.width + 24
    height: words.height + 24
    color: palette.window
    border.color: palette.mid

    SystemPalette { id: palette }

    // Only an item with text knows what size in pixels the application's font comes to.
    Text { id: probe }

    Text {
        id: words
        anchors.centerIn: parent
        color: palette.windowText
        font.pixelSize: probe.fontInfo.pixelSize * VidletPreferences.textScale
        text: vidlet ? "<b>" + vidlet.attribute("title") + "</b><br>"
                       + vidlet.childElement("text").content : ""
        textFormat: Text.StyledText
    }
}
