// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef POINTERDRIVER_H
#define POINTERDRIVER_H

#include <QPoint>
#include <QString>

/// Drives the pointer of the X display from outside the process, as a user would. Positions are in
/// global coordinates. Each operation gives whether the display took it.
namespace PointerDriver {

/// Moves the pointer to @p position by way of its neighbour, so that a move is seen in any case.
bool moveTo(const QPoint& position);

/// Moves the pointer in a straight line from @p from to @p to at @p pixelsPerSecond, a step every
/// hundredth of a second.
bool flick(const QPoint& from, const QPoint& to, int pixelsPerSecond);

/// Presses and releases the left button where the pointer is.
bool click();

/// Turns the wheel by one notch where the pointer is.
bool turnWheel();

/// Types @p words, with the time between keys that a quick typist takes.
bool type(const QString& words);

/// Presses and releases the key @p name, as X calls it.
bool pressKey(const QString& name);

} // namespace PointerDriver

#endif
