// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// Colours and sizes of a tip. All colours come from the system's palette, so that tips follow light
// and dark themes, unless the user wants them as far apart as possible; all sizes go through the
// host's scale, and those of text through the user's as well.
Item {
    id: theme

    visible: false

    readonly property bool isDark: palette.window.hslLightness < 0.5
    readonly property color text: highContrast ? (isDark ? "white" : "black") : palette.windowText
    readonly property color surface: highContrast ? (isDark ? "black" : "white")
                                   : isDark ? mix(palette.window, text, 0.06) : palette.base
    readonly property color shade: shadeOf(isDark ? 0.06 : 0.045, surface)
    readonly property color line: shadeOf(isDark ? 0.2 : 0.16, text)
    readonly property color border: shadeOf(isDark ? 0.34 : 0.32, text)
    readonly property color faintText: shadeOf(0.66, text)
    readonly property color accent: highContrast ? link : palette.highlight
    // The palette's highlight is made to be a background. As ink it needs more contrast.
    readonly property color link: highContrast ? (isDark ? "yellow" : "#0000b0")
                                : mix(palette.highlight, text, isDark ? 0.25 : 0.2)

    readonly property int margin: px(14)
    readonly property int barWidth: px(3)
    readonly property int gap: px(8)
    readonly property int smallGap: px(4)
    readonly property int textSize: textPx(probe.fontInfo.pixelSize)
    readonly property int titleSize: textPx(probe.fontInfo.pixelSize * 1.2)
    readonly property int smallSize: textPx(probe.fontInfo.pixelSize * 0.88)

    // Null without the host kit: then the user has no preferences.
    property var preferences: null
    readonly property bool reducedMotion: preferences ? preferences.reducedMotion : false
    readonly property real textScale: preferences ? preferences.textScale : 1
    readonly property bool highContrast: preferences ? preferences.highContrast : false

    // A component that cannot be made is silent about it, other than a loader.
    Component.onCompleted: {
        const component = Qt.createComponent("HostPreferences.qml");
        if (component.status === Component.Ready) {
            preferences = component.createObject(theme);
        }
    }

    function px(size) {
        return vidletView.getScaledSize(Math.round(size));
    }

    // For text, and for what is to grow with it.
    function textPx(size) {
        return px(size * textScale);
    }

    function shadeOf(share, strong) {
        return highContrast ? strong : mix(surface, text, share);
    }

    function mix(from, to, share) {
        return Qt.rgba(from.r + (to.r - from.r) * share,
                       from.g + (to.g - from.g) * share,
                       from.b + (to.b - from.b) * share, 1);
    }

    SystemPalette { id: palette }

    // Only an item with text knows what size in pixels the application's font comes to.
    Text { id: probe }
}
