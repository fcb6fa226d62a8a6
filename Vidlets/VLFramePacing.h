// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLFRAMEPACING_H
#define VLFRAMEPACING_H

#include <QDateTime>
#include <QtGlobal>

// Not installed: when the next frame of a playing clip is due, as calculations on values.

namespace Vidlets::VLFramePacing {

/// What the delay after a frame depends on.
struct Moment
{
    /// The frame that is to be fetched next.
    quint64 position = 0;
    /// The frame that was fetched last; may be ahead of the position, and the difference wraps.
    quint64 shownPosition = 0;
    /// Frames per second.
    double frameRate = 0.0;
    /// When the last frame was shown; null before the first.
    QDateTime lastShown;
    QDateTime now;
};

/**
 * Returns how long to wait after a frame, in seconds: one frame interval, or, where the last frame
 * was shown within the same millisecond or never, one for each frame that was not fetched yet.
 *
 * Infinite or not a number where the frame rate is 0. Where the wall clock went back since the last
 * frame, a million seconds for each second of that.
 */
double delaySeconds(const Moment& moment);

/// Returns the milliseconds of @p delaySeconds, which is above 0, without their fraction; 0 where
/// they are infinite. What is 0, negative or not a number is no delay, and is not to be handed in.
unsigned long sleepMs(double delaySeconds);

} // namespace Vidlets::VLFramePacing

#endif
