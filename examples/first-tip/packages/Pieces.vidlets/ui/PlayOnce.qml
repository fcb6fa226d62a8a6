// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

VLVideoComponent {
    id: video
    width: contentWidth
    height: contentHeight

    function open() {
        if (Window.window !== null) {
            source = "pen.mp4";
        }
    }

    function goOn() {
        if (state === 1 && !isNaN(loadProgress) && progress < 1) {
            play();
        }
    }

    Component.onCompleted: open()
    Window.onWindowChanged: open()
    onHeightChanged: goOn()
    onStateChanged: goOn()
}
