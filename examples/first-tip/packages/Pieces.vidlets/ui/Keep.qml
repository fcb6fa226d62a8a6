// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

Text {
    id: button

    readonly property var view: vidletView // qmllint disable unqualified

    text: "Keep"
    // The room of the button stays when it has done its work.
    opacity: view.reserved ? 0 : 1
    enabled: !view.reserved

    function keep() {
        view.stayOpen = true;
        view.reserved = true;
    }

    // The popup gets another window, which must not happen in the middle of a click.
    Timer {
        id: soon
        interval: 0
        onTriggered: button.keep()
    }
    TapHandler { onTapped: soon.start() }
}
