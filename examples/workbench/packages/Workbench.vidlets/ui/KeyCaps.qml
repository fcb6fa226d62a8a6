// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// A shortcut such as "Ctrl+Shift+S" as key caps. Keys pressed together stand close to each other,
// and the steps of a sequence such as "Ctrl+K, Ctrl+C" further apart.
Row {
    id: caps

    required property Theme theme
    required property Wording wording
    property string shortcut

    spacing: theme.px(12)

    function steps(shortcut) {
        return shortcut === "" ? [] : shortcut.split(", ");
    }

    // A plus at the end is a key of its own: "Ctrl++" is Ctrl with the plus key.
    function keysOf(step) {
        if (!step.endsWith("+")) {
            return step.split("+");
        }
        const modifiers = step.slice(0, -1).split("+").filter(key => key !== "");
        return modifiers.concat("+");
    }

    Repeater {
        model: caps.steps(caps.shortcut)

        Row {
            id: step

            required property string modelData

            spacing: caps.theme.px(3)
            // Keys are written in the order of the keyboard, whatever way the text runs.
            layoutDirection: Qt.LeftToRight
            LayoutMirroring.enabled: false

            Repeater {
                model: caps.keysOf(step.modelData)

                KeyCap {
                    required property string modelData

                    theme: caps.theme
                    text: caps.wording.phrase(modelData)
                }
            }
        }
    }
}
