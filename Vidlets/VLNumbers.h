// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLNUMBERS_H
#define VLNUMBERS_H

#include <QtGlobal>

#include <limits>

// Not installed: conversions of numbers that are the same on each processor. The language leaves
// open what becomes of a number that does not fit, and processors differ in it.

namespace Vidlets {

/// Returns @p number without its fraction; the least number there is where it is not a number or
/// does not fit.
inline qint32 truncatedToInt32(double number)
{
    constexpr double kBelowLeast = -2147483649.0;
    constexpr double kAboveGreatest = 2147483648.0;
    if (number > kBelowLeast && number < kAboveGreatest)
        return static_cast<qint32>(number);
    return std::numeric_limits<qint32>::min();
}

/**
 * Returns @p number without its fraction, cut to 64 bits.
 *
 * A negative number wraps around. What is too large, infinity included, becomes 0; what is too
 * small or not a number, half of the range.
 */
inline quint64 truncatedToUInt64(double number)
{
    constexpr double kTwoPower63 = 9223372036854775808.0;
    constexpr quint64 kHalf = quint64(1) << 63U;
    if (number >= 2 * kTwoPower63)
        return 0;
    if (number >= 0.0)
        return static_cast<quint64>(number);
    if (number >= -kTwoPower63)
        return static_cast<quint64>(static_cast<qint64>(number));
    return kHalf;
}

} // namespace Vidlets

#endif
