// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// Makes text ready for show: translated, with the host's variables filled in.
QtObject {
    // Translators answer this with "RTL" where the text runs from right to left.
    readonly property bool isMirrored: phrase("QT_LAYOUT_DIRECTION") === "RTL"

    function phrase(source) {
        const text = source.trim().replace(/\s+/g, " ");
        if (text === "") {
            return "";
        }
        // A translation file without an entry for the text answers with nothing.
        return vidletView.interpolate(vidletView.translate(text, "VidletUI") || text);
    }

    function contentOf(element) {
        return element ? phrase(element.content) : "";
    }

    function attributeOf(element, name) {
        return element ? phrase(element.attribute(name)) : "";
    }
}
