// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

Image {
    required property string name

    source: urlOf(name)

    // A resource that no package has is answered with the name of the directory alone.
    function urlOf(name) {
        const path = vidletView.findResource(name); // qmllint disable unqualified
        if (!path.endsWith("/" + name)) {
            return "";
        }
        return (path.startsWith("/") ? "file://" : "file:///")
            + path.split("/").map(encodeURIComponent).join("/").replace("%3A", ":");
    }
}
