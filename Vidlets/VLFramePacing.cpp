// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLFramePacing.h"

#include "VLNumbers.h"

#include <algorithm>

namespace Vidlets::VLFramePacing {

namespace {

constexpr double kMsPerDay = 86400000.0;
constexpr double kMsPerSecond = 1000.0;
constexpr double kMicrosecondsPerMs = 1000.0;

} // namespace

double delaySeconds(const Moment& moment)
{
    const double frameDelay = 1.0 / moment.frameRate;
    const double wanted = static_cast<double>(moment.position - moment.shownPosition) * frameDelay;
    const auto days = static_cast<double>(moment.lastShown.daysTo(moment.now));
    const double msecs = moment.lastShown.time().msecsTo(moment.now.time());
    const double elapsed = (msecs + days * kMsPerDay) * kMicrosecondsPerMs;
    // Kept: the wanted time is in seconds and the elapsed one in microseconds. That mix is what
    // makes the pacing even: no frame is caught up with, and none is skipped.
    const double remaining = wanted - std::min(wanted, elapsed);
    return std::max(remaining, frameDelay);
}

unsigned long sleepMs(double delaySeconds)
{
    // Kept: a frame rate of 0 gives no sleep at all, and a clock that went back one that only
    // terminating the thread ends.
    return static_cast<unsigned long>(truncatedToUInt64(delaySeconds * kMsPerSecond));
}

} // namespace Vidlets::VLFramePacing
