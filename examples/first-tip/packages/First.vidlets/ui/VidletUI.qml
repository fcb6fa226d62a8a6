// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

Item {
    id: root

    readonly property var tip: vidlet
    readonly property var view: vidletView

    readonly property var clipElement: tip ? tip.childElement("clip") : null
    readonly property int margin: view.getScaledSize(12)

    width: column.width + 2 * margin
    height: column.height + 2 * margin

    // The translation of a text, or the text itself where there is none.
    function translated(text) {
        const source = text.trim();
        return source === "" ? "" : view.translate(source, "VidletUI") || source;
    }

    function heading() {
        const title = tip ? translated(tip.attribute("title")) : "";
        const shortcut = tip ? tip.attribute("shortcut") : "";
        return shortcut === "" ? title : title + " (" + shortcut + ")";
    }

    function paragraphs() {
        const elements = tip ? tip.childElementList("p") : [];
        return elements.map(p => p ? view.interpolate(translated(p.content)) : "").join("\n\n");
    }

    VLStyledRectangle {
        id: background
        anchors.fill: parent
    }

    Column {
        id: column
        x: root.margin
        y: root.margin
        width: root.view.getScaledSize(320)
        spacing: root.view.getScaledSize(6)

        Text {
            width: parent.width
            color: background.textColor
            font.bold: true
            wrapMode: Text.Wrap
            text: root.heading()
        }

        Text {
            width: parent.width
            color: background.textColor
            wrapMode: Text.Wrap
            text: root.paragraphs()
        }

        VideoPlayer {
            width: parent.width
            source: root.clipElement ? root.clipElement.attribute("source") : ""
            loop: true
        }
    }
}
