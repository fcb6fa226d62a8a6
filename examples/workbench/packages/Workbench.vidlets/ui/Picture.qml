// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

// A <picture> of a tip: a file of the package's resources over the whole width, with a caption.
Column {
    id: picture

    required property Theme theme
    required property Wording wording
    required property VLXmlElement element

    spacing: theme.smallGap

    // A resource that no package has is answered with the name of the directory alone.
    function urlOf(name) {
        const path = vidletView.findResource(name);
        if (!path.endsWith("/" + name)) {
            return "";
        }
        return (path.startsWith("/") ? "file://" : "file:///")
            + path.split("/").map(encodeURIComponent).join("/").replace("%3A", ":");
    }

    Image {
        width: parent.width
        height: implicitWidth > 0 ? width * implicitHeight / implicitWidth : 0
        visible: status === Image.Ready
        source: picture.element ? picture.urlOf(picture.element.attribute("source")) : ""
        fillMode: Image.PreserveAspectFit
        Accessible.role: Accessible.Graphic
        Accessible.name: caption.text
        smooth: true
        mipmap: true
    }

    FormattedText {
        id: caption
        width: parent.width
        visible: text !== ""
        theme: picture.theme
        color: theme.faintText
        font.pixelSize: theme.smallSize
        text: picture.wording.attributeOf(picture.element, "caption")
    }
}
