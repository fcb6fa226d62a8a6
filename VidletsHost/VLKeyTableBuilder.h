// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEBUILDER_H
#define VLKEYTABLEBUILDER_H

#include "VLKeyTableFile.h"

#include <QDeadlineTimer>
#include <QList>
#include <QMutex>
#include <QQueue>
#include <QString>
#include <QThread>
#include <QWaitCondition>

#include <atomic>
#include <functional>

namespace Vidlets {

/**
 * Reads control files on a thread of its own.
 *
 * The thread runs as long as there are files to read. What it has read waits until it is taken, on
 * the user-interface thread, to which all members belong but for run(). Jobs, results and flags are
 * guarded by one mutex, under which no file is touched.
 *
 * Internal to the host kit.
 */
class VLKeyTableBuilder final : public QThread
{
public:
    struct Job
    {
        int file = 0;
        /// Tells the owner whether the result still matters.
        quint32 generation = 0;
        QString path;
    };

    struct Result
    {
        int file = 0;
        quint32 generation = 0;
        VLKeyTableFile content;
    };

    /// Makes a builder that calls @p announce, on its own thread, when results wait that it has not
    /// announced since the last were taken.
    explicit VLKeyTableBuilder(std::function<void()> announce);
    /// Ends the thread; a file that it is at is left in the middle.
    ~VLKeyTableBuilder() override;

    /// Has @p jobs done after those that wait.
    void add(const QList<Job>& jobs);
    /// Drops what waits. The thread goes on with the file that it is at.
    void clear();
    /// Ends the thread for good.
    void stop();
    /// Returns whether stop() was called.
    bool isStopped() const
    {
        return m_isStopped;
    }

    /// Gives the oldest result. Returns whether there was one.
    bool take(Result& result);

    /// Waits until there are results. Returns false where @p deadline has passed or none can come.
    bool waitForResults(const QDeadlineTimer& deadline);

protected:
    void run() override;

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableBuilder)

    bool takeJob(Job& job);
    void deliver(Result&& result);

    const std::function<void()> m_announce;
    QMutex m_mutex;
    QWaitCondition m_delivered;
    QQueue<Job> m_jobs;
    QQueue<Result> m_results;
    /// Whether run() will look for jobs again.
    bool m_isRunning = false;
    bool m_isAnnounced = false;
    std::atomic<bool> m_isStopped = false;
};

} // namespace Vidlets

#endif
