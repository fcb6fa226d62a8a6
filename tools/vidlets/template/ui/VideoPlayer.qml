// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick
import com.larkspan.vidlets.qml 1.0

// A clip that plays while its popup is up, with a button and a bar to move in it.
//
// Needs nothing but this file and the names that every scene is given: copy it into your package.
// The picture is shown at its own size, in the host's scale; one that is wider than the player is
// made to fit. A clip that is missing takes no room, and one that cannot be opened gives it back.
Item {
    id: player

    // The names come from outside this file, so qmllint cannot know them.
    readonly property var view: vidletView // qmllint disable unqualified
    readonly property var tip:
        typeof vidlet === "undefined" ? null : vidlet // qmllint disable unqualified

    // The name of the clip within the resource directory of the package.
    property string source
    // Whether the clip begins anew at its end.
    property bool loop: false
    // The size of the clip in its own pixels, if it is known: keeps the room while the clip is
    // being opened, so that the popup does not grow under the eyes of the reader.
    property size expectedSize: Qt.size(0, 0)

    // Whether the clip plays without being asked to.
    property bool autoPlay: true
    // What the clip shows, for screen readers; the title of the tip where this is empty.
    property string label
    // The size of the player's own words, in pixels; 0 for that of the application.
    property int textSize: 0

    property color accent: palette.highlight
    property color ink: palette.windowText
    property color track: Qt.rgba(ink.r, ink.g, ink.b, 0.18)
    property color backdrop: Qt.rgba(ink.r, ink.g, ink.b, 0.06)

    // Looked up while the popup comes up. Later the translation is that of other popups.
    readonly property string playLabel: translated("Play")
    readonly property string pauseLabel: translated("Pause")
    readonly property string pausedLabel: translated("Paused")
    readonly property string positionLabel: translated("Position")

    readonly property bool isPlaying: video.state === playingState
    readonly property bool isEmpty: clipSize.width <= 0 || clipSize.height <= 0

    // The item's own name for it is undefined in scripts.
    readonly property int playingState: 2

    // Before a clip is opened the item names a size that nothing has.
    readonly property size clipSize: isOnShow() ? Qt.size(video.contentWidth, video.contentHeight)
                                                : mayOpen() ? expectedSize : Qt.size(0, 0)
    readonly property int fullWidth: view.getScaledSize(Math.ceil(clipSize.width))
    readonly property int fullHeight: view.getScaledSize(Math.ceil(clipSize.height))
    readonly property real fit: width > 0 && fullWidth > width ? width / fullWidth : 1

    readonly property bool isShown: Window.window !== null && Window.window.visible
    // Whether the package has a file for the source.
    property bool hasFile: false

    // The item keeps a clip until it is asked for another one, so what follows is about the clip
    // that it was asked for last. That is another than the source where the source is empty, where
    // there is no such file, and while the clip before is still being opened.
    property string asked
    property bool isOpen: false
    property bool isOpening: false
    property bool hasFailed: false
    // Until then the number of pictures grows, and a pause may mean that the next is not there yet.
    property bool isDecoded: false

    // What the user wants; the item pauses for reasons of its own.
    property bool isWanted: true

    visible: !isEmpty
    implicitWidth: fullWidth
    implicitHeight: isEmpty ? 0 : frame.height + controls.height

    // An item without a window finds no clip, and a scene is complete before it gets its window.
    Component.onCompleted: open()
    Window.onWindowChanged: open()
    onSourceChanged: open()

    onAutoPlayChanged: {
        isWanted = autoPlay;
        if (!autoPlay) {
            video.pause();
        }
        goOn();
    }

    onIsShownChanged: {
        if (isShown) {
            goOn();
        } else {
            rewind();
        }
    }

    SystemPalette { id: palette }

    // Only an item with text knows what size in pixels the application's font comes to.
    Text {
        id: probe
        visible: false
    }

    // The item does not tell of a file that it cannot open.
    Timer {
        interval: 3000
        running: player.isShown && player.asked !== "" && !player.isOpen && !player.hasFailed
        onTriggered: {
            player.hasFailed = true;
            player.open();
        }
    }

    function px(size) {
        return view.getScaledSize(size);
    }

    // A translation file without an entry for the text answers with nothing.
    function translated(text) {
        return view.translate(text, "VidletUI") || text;
    }

    function isCurrent() {
        return hasFile && asked === source;
    }

    function isOnShow() {
        return isCurrent() && isOpen;
    }

    function mayOpen() {
        return hasFile && !(asked === source && hasFailed);
    }

    function open() {
        if (Window.window === null) {
            return;
        }
        // A resource that no package has is answered with the name of the directory alone.
        hasFile = source !== "" && view.findResource(source).endsWith("/" + source);
        if (!isCurrent()) {
            rewind();
            ask();
        }
        goOn();
    }

    // The item tells of an opened clip without saying which. So it gets one at a time: asked for
    // the next while one is being opened, it could not be told whose size and pictures came.
    function ask() {
        if (!hasFile || (asked !== "" && !isOpen && !hasFailed)) {
            return;
        }
        isOpen = false;
        hasFailed = false;
        isDecoded = false;
        asked = source;
        video.source = source;
    }

    // Asked to play before there is a picture, the item would lose its place.
    function hasPictures() {
        return isOpen && !isNaN(video.loadProgress);
    }

    // Plays if it should and does not.
    function goOn() {
        // Asks the item: the property of the player may be about to change at this moment.
        if (!isShown || !isCurrent() || !isWanted || video.state === playingState || scrubber.pressed
                || !hasPictures()) {
            return;
        }
        if (video.progress < 1) {
            video.play();
        } else if (isDecoded && loop) {
            video.play(); // From the start, since the position is at the end.
        } else if (isDecoded) {
            isWanted = false;
        }
    }

    function toggle() {
        isWanted = !isWanted;
        if (!isWanted) {
            video.pause();
        } else if (hasPictures()) {
            video.play();
        }
    }

    function rewind() {
        isWanted = autoPlay;
        if (hasPictures()) {
            video.rewindToStart();
        }
    }

    // Goes to a place within the clip, from 0 to 1.
    function seek(place) {
        if (hasPictures()) {
            video.progress = Math.max(0, Math.min(1, place));
        }
    }

    function step(distance) {
        if (!isDecoded) {
            return;
        }
        video.scrubbing = true;
        video.pause();
        seek(video.progress + distance);
        video.scrubbing = false;
        goOn();
    }

    // The frame around what has the keyboard.
    component KeyboardFrame: Rectangle {
        anchors.fill: parent
        visible: parent.activeFocus
        color: "transparent"
        border.width: 2
        radius: 3
    }

    Rectangle {
        id: frame
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.round(player.fullWidth * player.fit)
        height: Math.round(player.fullHeight * player.fit)
        color: player.backdrop

        Accessible.role: Accessible.Animation
        Accessible.name: player.label || (player.tip ? player.tip.attribute("title") : "")
        Accessible.onPressAction: player.toggle()

        // Paints at its top left corner and at full size, whatever its width and height are.
        VLVideoComponent {
            id: video
            objectName: "clip"
            width: player.fullWidth
            height: player.fullHeight
            scale: player.fit
            transformOrigin: Item.TopLeft

            onContentWidthChanged: {
                player.isOpening = true;
                player.isOpen = true;
                player.hasFailed = false;
                player.isDecoded = false;
                // The source may have changed meanwhile.
                player.open();
            }
            // Comes twice, when the clip has been opened and when its last picture is decoded.
            onLoadProgressChanged: {
                if (player.isOpen && !player.isOpening) {
                    player.isDecoded = true;
                }
                player.isOpening = false;
                player.goOn();
            }
            // The first picture is there.
            onHeightChanged: player.goOn()
            // The item pauses at the end of decoding and at the last picture.
            onStateChanged: player.goOn()
        }

        Rectangle {
            anchors.left: parent.left
            anchors.top: parent.top
            anchors.margins: player.px(8)
            visible: !player.isWanted
            width: pausedText.implicitWidth + player.px(12)
            height: pausedText.implicitHeight + player.px(6)
            radius: player.px(3)
            color: Qt.rgba(0, 0, 0, 0.6)

            Text {
                id: pausedText
                anchors.centerIn: parent
                color: "white"
                font.pixelSize: player.textSize > 0 ? player.textSize : probe.fontInfo.pixelSize
                text: player.pausedLabel
                textFormat: Text.PlainText
            }
        }

        TapHandler { onTapped: player.toggle() }
    }

    Item {
        id: controls
        anchors.top: frame.bottom
        anchors.left: frame.left
        width: frame.width
        height: player.px(22)

        // The way of time is the same for all scripts.
        LayoutMirroring.enabled: false
        LayoutMirroring.childrenInherit: true

        Item {
            id: button
            width: player.px(20)
            height: parent.height
            Component.onCompleted: player.view.setItemCursor(button, "PointingHandCursor", "clip")

            Accessible.role: Accessible.Button
            Accessible.name: player.isWanted ? player.pauseLabel : player.playLabel
            Accessible.focusable: true
            Accessible.onPressAction: player.toggle()
            activeFocusOnTab: true
            Keys.onReturnPressed: player.toggle()
            Keys.onEnterPressed: player.toggle()
            Keys.onSpacePressed: player.toggle()

            readonly property color ink: hover.hovered || activeFocus ? player.accent : player.ink
            readonly property int side: player.px(10)

            // Half of a square on its corner is a triangle that points to the right.
            Item {
                x: player.px(4)
                anchors.verticalCenter: parent.verticalCenter
                visible: !player.isWanted
                width: button.side * 0.75
                height: button.side * 1.1
                clip: true

                Rectangle {
                    x: -width / 2
                    anchors.verticalCenter: parent.verticalCenter
                    width: button.side * 0.77
                    height: width
                    rotation: 45
                    antialiasing: true
                    color: button.ink
                }
            }

            Row {
                x: player.px(3)
                anchors.verticalCenter: parent.verticalCenter
                visible: player.isWanted
                spacing: player.px(3)

                Rectangle {
                    width: player.px(3)
                    height: button.side
                    color: button.ink
                }

                Rectangle {
                    width: player.px(3)
                    height: button.side
                    color: button.ink
                }
            }

            KeyboardFrame { border.color: player.ink }
            HoverHandler { id: hover }
            TapHandler { onTapped: player.toggle() }
        }

        Item {
            id: bar
            anchors.left: button.right
            anchors.right: parent.right
            anchors.rightMargin: knob.width / 2
            height: parent.height

            // While the clip is decoded the share of a picture shrinks with each new one.
            readonly property real share: player.isDecoded ? Math.min(1, video.progress) : 0

            Rectangle {
                id: groove
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width
                height: player.px(3)
                radius: height / 2
                color: player.track
            }

            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                width: bar.width * bar.share
                height: groove.height
                radius: height / 2
                color: player.accent
            }

            Rectangle {
                id: knob
                anchors.verticalCenter: parent.verticalCenter
                x: bar.width * bar.share - width / 2
                width: player.px(scrubber.containsMouse || scrubber.pressed ? 11 : 9)
                height: width
                radius: width / 2
                color: player.accent
            }

            MouseArea {
                id: scrubber
                anchors.fill: parent
                hoverEnabled: true
                preventStealing: true
                Accessible.role: Accessible.Slider
                Accessible.name: player.positionLabel
                Accessible.focusable: true
                Accessible.onIncreaseAction: player.step(stepSize)
                Accessible.onDecreaseAction: player.step(-stepSize)
                activeFocusOnTab: true
                Keys.onRightPressed: player.step(stepSize)
                Keys.onLeftPressed: player.step(-stepSize)

                // By these names screen readers find the place of a slider.
                readonly property real value: bar.share
                readonly property real minimumValue: 0
                readonly property real maximumValue: 1
                readonly property real stepSize: 0.05

                KeyboardFrame { border.color: player.ink }

                Component.onCompleted:
                    player.view.setItemCursor(scrubber, "PointingHandCursor", "clip")

                onPressed: mouse => {
                    video.scrubbing = true;
                    video.pause();
                    player.seek(mouse.x / width);
                }
                onPositionChanged: mouse => {
                    if (pressed) {
                        player.seek(mouse.x / width);
                    }
                }
                onPressedChanged: {
                    if (!pressed) {
                        video.scrubbing = false;
                        player.goOn();
                    }
                }
            }
        }
    }
}
