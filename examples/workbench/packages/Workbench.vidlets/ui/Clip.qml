// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

// A <clip> of a tip: a film of the package's resources, with a caption.
Column {
    id: clip

    required property Theme theme
    required property Wording wording
    required property VLXmlElement element

    spacing: theme.smallGap

    function number(name) {
        return element ? Number(element.attribute(name)) : 0;
    }

    VideoPlayer {
        width: parent.width
        source: clip.element ? clip.element.attribute("source") : ""
        loop: clip.element !== null && clip.element.attribute("loop") === "true"
        expectedSize: Qt.size(clip.number("width"), clip.number("height"))
        accent: clip.theme.accent
        ink: clip.theme.text
        track: clip.theme.line
        backdrop: clip.theme.shade
        textSize: clip.theme.textSize
        autoPlay: !clip.theme.reducedMotion
        // A title may have variables of the host in it.
        label: caption.plain(caption.text || clip.wording.attributeOf(vidlet, "title"))
    }

    FormattedText {
        id: caption
        width: parent.width
        visible: text !== ""
        theme: clip.theme
        color: theme.faintText
        font.pixelSize: theme.smallSize
        text: clip.wording.attributeOf(clip.element, "caption")
    }
}
