// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// Colours and sizes of a tip. All colours come from the system's palette, so that tips follow light
// and dark themes; all sizes go through the host's scale.
Item {
    id: theme

    visible: false

    readonly property bool isDark: palette.window.hslLightness < 0.5
    readonly property color surface: isDark ? mix(palette.window, palette.windowText, 0.06)
                                            : palette.base
    readonly property color shade: mix(surface, palette.windowText, isDark ? 0.06 : 0.045)
    readonly property color line: mix(surface, palette.windowText, isDark ? 0.2 : 0.16)
    readonly property color border: mix(surface, palette.windowText, isDark ? 0.34 : 0.32)
    readonly property color text: palette.windowText
    readonly property color faintText: mix(surface, palette.windowText, 0.66)
    readonly property color accent: palette.highlight
    // The palette's highlight is made to be a background. As ink it needs more contrast.
    readonly property color link: mix(palette.highlight, palette.windowText, isDark ? 0.25 : 0.2)

    readonly property int margin: px(14)
    readonly property int barWidth: px(3)
    readonly property int gap: px(8)
    readonly property int smallGap: px(4)
    readonly property int textSize: px(probe.fontInfo.pixelSize)
    readonly property int titleSize: px(probe.fontInfo.pixelSize * 1.2)
    readonly property int smallSize: px(probe.fontInfo.pixelSize * 0.88)

    function px(size) {
        return vidletView.getScaledSize(Math.round(size));
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
