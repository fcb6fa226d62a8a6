// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORWATCHDOG_H
#define AUTHORWATCHDOG_H

#include <QDeadlineTimer>
#include <QMutex>
#include <QThread>
#include <QWaitCondition>

class QJSEngine;

namespace Vidlets {

/**
 * Interrupts a script that does not come to an end, so that it costs one tip and not the program.
 *
 * It has a thread of its own, which goes with it; the operations are for the thread of the engine.
 */
class AuthorWatchdog : public QThread
{
    Q_OBJECT

public:
    /// Watches @p engine, which has to outlive it.
    explicit AuthorWatchdog(QJSEngine* engine);
    ~AuthorWatchdog() override;

    /// A script may run from now on; what was running has come to its end.
    void begin();
    /// No script runs any more. Returns whether one was interrupted since the last begin(), or a
    /// series of those.
    bool end();

protected:
    void run() override;

private:
    Q_DISABLE_COPY_MOVE(AuthorWatchdog)

    QJSEngine* const m_engine;
    QMutex m_mutex;
    // All below are guarded by the mutex.
    QWaitCondition m_wakeUp;
    QDeadlineTimer m_deadline = QDeadlineTimer(QDeadlineTimer::Forever);
    bool m_wasInterrupted = false;
    bool m_shouldQuit = false;
};

} // namespace Vidlets

#endif
