// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorStillTime.h"

namespace Vidlets {

AuthorStillTime::AuthorStillTime()
{
    install();
    m_motion.setStartValue(0.0);
    m_motion.setEndValue(1.0);
    m_motion.setLoopCount(-1);
    m_motion.start();
}

AuthorStillTime::~AuthorStillTime()
{
    m_motion.stop();
    uninstall();
}

void AuthorStillTime::pass(int stepMs)
{
    m_elapsedMs += stepMs;
    advanceAnimation();
}

void AuthorStillTime::advance()
{
    // Whoever draws a window asks for that.
}

qint64 AuthorStillTime::elapsed() const
{
    return m_elapsedMs;
}

} // namespace Vidlets

#include "moc_AuthorStillTime.cpp"
