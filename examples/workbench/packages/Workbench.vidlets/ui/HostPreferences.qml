// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQml
import com.larkspan.vidlets.host 1.0

// What the user prefers, from a host with the host kit. Another one lacks the module, so that no file
// but this one may import it; see Theme.qml.
QtObject {
    readonly property bool reducedMotion: VidletPreferences.reducedMotion
    readonly property real textScale: VidletPreferences.textScale
    readonly property bool highContrast: VidletPreferences.highContrast
}
