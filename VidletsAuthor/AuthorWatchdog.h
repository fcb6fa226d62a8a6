// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORWATCHDOG_H
#define AUTHORWATCHDOG_H

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QThread>
#include <QWaitCondition>

#include <chrono>
#include <ctime>

class QJSEngine;

namespace Vidlets {

/**
 * Interrupts a script that does not come to an end, so that it costs one tip and not the program.
 *
 * What counts is the time that the thread of the engines has had a processor for, so that a busy
 * machine interrupts nothing. What cannot be interrupted, such as sorting millions, ends
 * the program after a while, with a message: it would never do anything again.
 *
 * It has a thread of its own, which goes with it; the operations are for the thread of the engines.
 */
class AuthorWatchdog : public QThread
{
    Q_OBJECT

public:
    /// It interrupts what has run for @p patience, and ends the program after four times that.
    explicit AuthorWatchdog(std::chrono::milliseconds patience = std::chrono::seconds(5));
    ~AuthorWatchdog() override;

    /// Watches @p engine, too, until it goes or the watchdog does.
    void watch(QJSEngine* engine);

    /// A script may run from now on; what was running has come to its end.
    void begin();
    /// No script runs any more. Returns whether one was interrupted since the last begin(), or a
    /// series of those.
    bool end();
    /// Says which file is to be named if nothing else helps.
    void setFile(const QString& file);

protected:
    void run() override;

private:
    Q_DISABLE_COPY_MOVE(AuthorWatchdog)

    void forget(const QObject* engine);
    void patrol();
    qint64 spentMs() const;

    const qint64 m_patienceMs;
    QMutex m_mutex;
    // All below are guarded by the mutex.
    QWaitCondition m_wakeUp;
    QList<QJSEngine*> m_engines;
    QByteArray m_file;
    /// Counts the time of the thread of the engines.
    clockid_t m_clock = CLOCK_MONOTONIC;
    qint64 m_beginMs = 0;
    bool m_isOnWatch = false;
    bool m_wasInterrupted = false;
    bool m_shouldQuit = false;
};

} // namespace Vidlets

#endif
