// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef POINTERDRIVER_H
#define POINTERDRIVER_H

#include <QPoint>

/// Drives the pointer of the X display from outside the process, as a user would. Positions are in
/// global coordinates. Each operation gives whether the display took it.
namespace PointerDriver {

/// Moves the pointer to @p position by way of its neighbour, so that a move is seen in any case.
bool moveTo(const QPoint& position);

/// Presses and releases the left button where the pointer is.
bool click();

} // namespace PointerDriver

#endif
