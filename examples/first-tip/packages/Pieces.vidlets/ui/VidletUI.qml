// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

import QtQuick

// One of each piece that the author guide shows.
Item {
    width: column.width
    height: column.height

    Column {
        id: column

        Keep { objectName: "keep" }
        Resource { objectName: "resource"; name: "pen.png" }
        PlayOnce { objectName: "clip" }
    }
}
