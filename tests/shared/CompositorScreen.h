// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef COMPOSITORSCREEN_H
#define COMPOSITORSCREEN_H

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QRect>

/// The screen of a compositor that draws into an X display: no program is told where its windows
/// are, so places are read from pictures. In pixels of the screen.
namespace CompositorScreen {

/// What is on the screen now; null where no picture could be taken.
QImage picture();

/// The smallest rectangle around all that has exactly this @p color; null where nothing has it.
QRect placeOf(const QColor& color);

/// Takes the pointer to a place on the screen. The compositor gets to know of the distance alone,
/// so the first way leads into a corner.
bool movePointerTo(const QPoint& position);

} // namespace CompositorScreen

#endif
