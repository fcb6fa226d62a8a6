// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// Text with simple markup (bold, italics, links), as wide as it is told to be.
Text {
    id: formatted

    required property Theme theme

    // Where each link lies, by its target. Found only when somebody asks, or a moment after the
    // popup has come up, since a text can only be asked point by point.
    property var places: ({})
    property bool isSearched: false

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

    onTextChanged: isSearched = false
    onWidthChanged: isSearched = false
    onHeightChanged: isSearched = false
    onLineCountChanged: isSearched = false

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

    function findPlaces() {
        if (isSearched) {
            return;
        }
        isSearched = true;
        const targets = anchorsIn(text).map(anchor => anchor.target);
        const line = contentHeight / Math.max(1, lineCount);
        let found = {};
        // Where lines differ in height, one may lie between the rows of the first search.
        for (const share of [1, 0.25]) {
            const step = Qt.size(Math.max(1, font.pixelSize * 0.4 * share),
                                 Math.max(1, line * share));
            found = placesBy(hitsBy(step), step);
            if (targets.every(target => target in found)) {
                break;
            }
        }
        places = found;
    }

    // The points within each link, by its target, row by row.
    function hitsBy(step) {
        const hits = {};
        for (let y = step.height / 2; y < height; y += step.height) {
            for (let x = step.width / 2; x < width; x += step.width) {
                const target = linkAt(x, y);
                if (target !== "") {
                    hits[target] = hits[target] || [];
                    hits[target].push(Qt.point(x, y));
                }
            }
        }
        return hits;
    }

    function placesBy(hits, step) {
        const found = {};
        for (const target in hits) {
            const points = hits[target];
            const first = points.reduce((a, b) => b.x < a.x ? b : a);
            const last = points.reduce((a, b) => b.x > a.x ? b : a);
            const left = edge(target, first, -step.width, 0).x;
            const right = edge(target, last, step.width, 0).x;
            const top = edge(target, points[0], 0, -step.height).y;
            const bottom = edge(target, points[points.length - 1], 0, step.height).y;
            found[target] = Qt.rect(left, top, right - left, bottom - top);
        }
        return found;
    }

    // The last point of a link on the way from one within it to one outside.
    function edge(target, inside, dx, dy) {
        for (let part = 0.5; Math.abs(dx + dy) * part > 0.25; part /= 2) {
            const next = Qt.point(inside.x + dx * part, inside.y + dy * part);
            if (linkAt(next.x, next.y) === target) {
                inside = next;
            }
        }
        return inside;
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
            // Somewhere in the text, until it is known where.
            readonly property rect place: formatted.places[modelData.target]
                                          || Qt.rect(0, 0, formatted.width, formatted.height)
            readonly property bool isShown: Window.window !== null && Window.window.visible

            function open() {
                formatted.linkActivated(modelData.target);
            }

            function findPlace() {
                formatted.findPlaces();
            }

            x: place.x
            y: place.y
            width: place.width
            height: place.height
            activeFocusOnTab: true
            onActiveFocusChanged: {
                if (activeFocus) {
                    findPlace();
                }
            }

            // A screen reader asks for the place without a word to the scene, but after the popup
            // has come up.
            Timer {
                interval: 100
                running: anchor.isShown && !formatted.isSearched
                onTriggered: anchor.findPlace()
            }

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
