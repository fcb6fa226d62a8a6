// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// A <p> of a tip.
FormattedText {
    required property Wording wording
    required property QtObject element

    text: wording.contentOf(element)
}
