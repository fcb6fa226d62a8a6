// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// Pins the tip: it stays where it is, as a window of its own or wherever the host puts it. In a tip
// that has been pinned it is a sign alone.
Item {
    id: button

    required property Theme theme
    required property Wording wording
    // Looked up while the tip comes up. Later the translation is that of other tips.
    readonly property string label: wording.phrase("Pin")
    readonly property string pinnedLabel: wording.phrase("Pinned")

    readonly property bool isPinned: vidletView.reserved
    readonly property bool isPointedAt: !isPinned && (hover.hovered || activeFocus)
    readonly property bool isLit: isPinned || isPointedAt

    objectName: "pin"
    implicitWidth: theme.textPx(22)
    implicitHeight: theme.textPx(22)
    enabled: !isPinned
    activeFocusOnTab: !isPinned

    Accessible.role: isPinned ? Accessible.Graphic : Accessible.Button
    Accessible.name: isPinned ? pinnedLabel : label
    Accessible.focusable: !isPinned
    Accessible.onPressAction: pin()
    Keys.onReturnPressed: pin()
    Keys.onEnterPressed: pin()
    Keys.onSpacePressed: pin()
    onIsPinnedChanged: vidletView.setItemCursor(button, "", "pin")
    Component.onCompleted: vidletView.setItemCursor(button, "PointingHandCursor", "pin")

    // The popup gets another window on the way, which is too much for a click that is under way.
    function pin() {
        Qt.callLater(function() {
            vidletView.stayOpen = true;
            vidletView.reserved = true;
        });
    }

    Rectangle {
        anchors.fill: parent
        radius: button.theme.px(4)
        visible: button.isPointedAt
        color: button.theme.shade
        border.color: button.theme.line
    }

    // A pin from the side, drawn into a square of 16 by 16. It stands upright once it is in.
    Canvas {
        id: drawing
        anchors.centerIn: parent
        width: button.theme.textPx(16)
        height: width
        rotation: button.isPinned ? 0 : 40
        antialiasing: true

        readonly property color ink: button.isLit ? button.theme.accent : button.theme.faintText
        readonly property bool isFilled: button.isLit

        onInkChanged: requestPaint()
        onIsFilledChanged: requestPaint()
        onPaint: {
            const context = getContext("2d");
            context.reset();
            context.scale(width / 16, height / 16);
            context.strokeStyle = ink;
            context.fillStyle = ink;
            context.lineWidth = 1.3;
            context.lineJoin = "round";
            context.lineCap = "round";
            context.beginPath();
            context.moveTo(5.2, 1.5);
            context.lineTo(10.8, 1.5);
            context.lineTo(10, 3);
            context.lineTo(10.4, 6.6);
            context.lineTo(12.4, 9.4);
            context.lineTo(3.6, 9.4);
            context.lineTo(5.6, 6.6);
            context.lineTo(6, 3);
            context.closePath();
            if (isFilled) {
                context.fill();
            }
            context.stroke();
            context.beginPath();
            context.moveTo(8, 9.4);
            context.lineTo(8, 14.6);
            context.stroke();
        }
    }

    // What the button does, over whatever stands beside it.
    Rectangle {
        anchors.right: parent.left
        anchors.verticalCenter: parent.verticalCenter
        visible: button.isPointedAt
        width: word.implicitWidth + 2 * button.theme.gap
        height: parent.height
        color: button.theme.surface

        Text {
            id: word
            anchors.centerIn: parent
            text: button.label
            color: button.theme.accent
            font.pixelSize: button.theme.smallSize
            textFormat: Text.PlainText
        }
    }

    FocusFrame { theme: button.theme }
    HoverHandler { id: hover }
    TapHandler { onTapped: button.pin() }
}
