s// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

// What users see who want less: title and shortcut.
Item {
    id: root

    // The names come from outside this file, so qmllint cannot know them.
    readonly property var tip: vidlet // qmllint disable unqualified
    readonly property var view: vidletView // qmllint disable unqualified
    readonly property int margin: view.getScaledSize(6)

    width: label.width + 2 * margin
    height: label.height + 2 * margin

    function heading() {
        const title = tip ? tip.attribute("title") : "";
        const shortcut = tip ? tip.attribute("shortcut") : "";
        const text = view.translate(title, "VidletUI") || title;
        return shortcut === "" ? text : text + " (" + shortcut + ")";
    }

    VLStyledRectangle {
        id: background
        anchors.fill: parent
    }

    Text {
        id: label
        x: root.margin
        y: root.margin
        color: background.textColor
        text: root.heading()
    }
}
