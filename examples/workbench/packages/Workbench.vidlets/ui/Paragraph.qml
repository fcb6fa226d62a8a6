// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

// A <p> of a tip.
FormattedText {
    required property Wording wording
    required property VLXmlElement element

    text: wording.contentOf(element)
}
