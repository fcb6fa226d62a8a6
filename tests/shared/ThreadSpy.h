// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef THREADSPY_H
#define THREADSPY_H

#include <QObject>
#include <QTest>

/**
 * Counts a signal that comes from whatever thread, on the thread of the test.
 *
 * Unlike QSignalSpy it misses no signal that comes before wait(), and shares nothing with the
 * sending thread.
 */
class ThreadSpy : public QObject
{
public:
    template <typename Sender, typename Signal> ThreadSpy(Sender* sender, Signal signal)
    {
        connect(sender, signal, this, [this] { ++m_count; });
    }

    /// How often the signal has come.
    int count() const
    {
        return m_count;
    }
    /// Waits for one more signal than have been waited for.
    bool wait(int timeoutMs = 5000)
    {
        if (!QTest::qWaitFor([this] { return m_count > m_waitedFor; }, timeoutMs))
            return false;
        ++m_waitedFor;
        return true;
    }

private:
    int m_count = 0;
    int m_waitedFor = 0;
};

#endif
