// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// Text with simple markup (bold, italics, links), as wide as it is told to be.
Text {
    id: formatted

    required property Theme theme

    color: theme.text
    linkColor: theme.link
    font.pixelSize: theme.textSize
    lineHeight: 1.12
    // Said expressly, so that it is mirrored with the layout: else each text goes by its first letter.
    horizontalAlignment: Text.AlignLeft
    wrapMode: Text.Wrap
    textFormat: Text.StyledText

    onLinkActivated: link => vidletView.openExternalResource(link)
    onLinkHovered: link =>
        vidletView.setItemCursor(formatted, link === "" ? "" : "PointingHandCursor", "link")

    function plain(markup) {
        return markup.replace(/<[^>]*>/g, "").replace(/&lt;/g, "<").replace(/&gt;/g, ">")
                     .replace(/&quot;/g, "\"").replace(/&nbsp;/g, " ").replace(/&amp;/g, "&");
    }

    function anchorsIn(markup) {
        const anchor = /<a\s+href\s*=\s*["']([^"']*)["'][^>]*>(.*?)<\/a>/gi;
        const found = [];
        for (let match = anchor.exec(markup); match !== null; match = anchor.exec(markup)) {
            found.push({ target: plain(match[1]), label: plain(match[2]) });
        }
        return found;
    }

    // Where a link lies, of which the text can only be asked point by point. The rest of the
    // arguments says what that depends on.
    function placeOf(target, width, height, lines) {
        const step = 3;
        const place = { left: width, top: height, right: 0, bottom: 0 };
        for (let y = step; y < height; y += step) {
            for (let x = 1; x < width; x += step) {
                if (linkAt(x, y) === target) {
                    place.left = Math.min(place.left, x - step);
                    place.right = Math.max(place.right, x + step);
                    place.top = Math.min(place.top, y - step);
                    place.bottom = Math.max(place.bottom, y + step);
                }
            }
        }
        return place.right > 0 ? Qt.rect(place.left, place.top, place.right - place.left,
                                         place.bottom - place.top)
                               : Qt.rect(0, 0, width, height);
    }

    // Given a role itself, the text would show its links to screen readers as well, but those cannot
    // have the keyboard.
    Item {
        anchors.fill: parent
        visible: formatted.text !== ""
        Accessible.role: Accessible.StaticText
        Accessible.name: formatted.plain(formatted.text)
    }

    // A text has one cursor for all its links, but the keyboard goes from one to the next.
    Repeater {
        model: formatted.visible ? formatted.anchorsIn(formatted.text) : []

        Item {
            id: anchor

            required property var modelData
            readonly property rect place: formatted.placeOf(modelData.target, formatted.width,
                                                            formatted.height, formatted.lineCount)

            function open() {
                formatted.linkActivated(modelData.target);
            }

            x: place.x
            y: place.y
            width: place.width
            height: place.height
            activeFocusOnTab: true

            Accessible.role: Accessible.Link
            Accessible.name: modelData.label
            Accessible.focusable: true
            Accessible.onPressAction: open()
            Keys.onReturnPressed: open()
            Keys.onEnterPressed: open()
            Keys.onSpacePressed: open()

            FocusFrame { theme: formatted.theme }
        }
    }
}
