// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

// One element of a tip's body, drawn by the component for its tag.
Loader {
    id: block

    required property Theme theme
    required property Wording wording
    required property VLXmlElement element

    readonly property var files: ({ "p": "Paragraph.qml", "item": "Bullet.qml",
                                    "picture": "Picture.qml", "clip": "Clip.qml" })

    Component.onCompleted: setSource(files[element.tagName],
                                     { theme: theme, wording: wording, element: element })
}
