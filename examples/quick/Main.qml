// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import com.larkspan.vidlets.host

ApplicationWindow {
    width: 420
    height: 260
    title: "Timer"
    visible: true

    GridLayout {
        anchors.centerIn: parent
        columns: 2
        columnSpacing: 16
        rowSpacing: 12

        Label { text: "Minutes" }
        // What a control consists of counts as the control.
        SpinBox {
            objectName: "minutes"
            Vidlet.key: "minutes"
            from: 1
            to: 60
            value: 5
        }

        Label { text: "Volume" }
        Slider {
            objectName: "volume"
            Vidlet.key: "volume"
            value: 0.5
        }

        CheckBox {
            objectName: "repeat"
            Vidlet.key: "repeat"
            text: "Repeat"
        }
        // Why it is disabled is what the tip is for.
        Button {
            objectName: "pause"
            Vidlet.key: "pause"
            text: "Pause"
            enabled: false
        }

        Button {
            objectName: "start"
            Vidlet.key: "start"
            text: "Start"
        }
    }
}
