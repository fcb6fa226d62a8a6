// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSEARCHBUILDER_H
#define VLSEARCHBUILDER_H

#include "VLSearchStore.h"
#include <Vidlets/VLIndexHooks.h>

#include <QDeadlineTimer>
#include <QList>
#include <QMutex>
#include <QQueue>
#include <QString>
#include <QThread>
#include <QWaitCondition>

#include <atomic>
#include <functional>
#include <memory>

namespace Vidlets {

/**
 * Puts the words of tips into a VLSearchStore, on a thread of its own.
 *
 * The thread runs as long as there are files to read; with a store in memory it stays, since that
 * would go with it. Results wait until they are taken, on the user-interface thread, to which all
 * members belong but for those that run() calls. Jobs, results and flags are guarded by one mutex,
 * under which no file is touched.
 *
 * Internal to the host kit.
 */
class VLSearchBuilder final : public QThread
{
public:
    struct Job
    {
        int file = 0;
        QString path;
    };

    enum class Kind : quint8 {
        Done,    ///< The words of a file are in the store.
        Cleared, ///< Nothing is in the store any more.
        Problem, ///< The store was of no use, and another was made.
        Failed   ///< There is no store, and no job is done any more.
    };

    struct Result
    {
        Kind kind = Kind::Done;
        int file = 0;
        /// Of the file as it was read.
        VLFileStamp stamp;
        /// See VLSearchStore::epoch().
        qint64 epoch = 0;
        /// What is wrong with the store, if anything is.
        QString reason;
    };

    /// Makes a builder that calls @p announce, on its own thread, when results wait that it has not
    /// announced since the last were taken.
    explicit VLSearchBuilder(std::function<void()> announce);
    /// Ends the thread; a file that it is at is left in the middle.
    ~VLSearchBuilder() override;

    /// Drops what waits, and has what comes put into the store @p path; where @p mustReplace is
    /// set, what is there is of no use. Waits for the thread to be through with what it is at.
    void setStore(const QString& path, bool mustReplace);
    /// Has @p jobs done after those that wait.
    void add(const QList<Job>& jobs);
    /// Ends the thread for good.
    void stop();
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
    Q_DISABLE_COPY_MOVE(VLSearchBuilder)

    /// What becomes of the thread after something was done.
    enum class Outcome : quint8 {
        GoOn,
        StartAnew, ///< The store is of no use.
        GiveUp
    };

    void endThread();
    bool hasJobs();
    bool takeJob(Job& job);
    bool mayStay();
    Outcome openStore(std::unique_ptr<VLSearchStore>& store);
    Outcome workOff(VLSearchStore& store);
    Outcome index(VLSearchStore& store, const Job& job, Result& result);
    Outcome commit(VLSearchStore& store, QList<Result>& results);
    Outcome sweep(VLSearchStore& store);
    Outcome begin(VLSearchStore& store);
    Outcome failed(const VLSearchStore& store);
    void deliver(QList<Result>& results);

    const std::function<void()> m_announce;
    QMutex m_mutex;
    QWaitCondition m_changed;
    QQueue<Job> m_jobs;
    QQueue<Result> m_results;
    QString m_path;
    bool m_mustReplace = false;
    /// Why the store was given up last.
    QString m_reason;
    /// Whether files that are no more have been looked for.
    bool m_isSwept = false;
    /// Whether run() will look for jobs again.
    bool m_isRunning = false;
    /// Whether it has nothing to do and waits for jobs.
    bool m_isIdle = false;
    bool m_isAnnounced = false;
    std::atomic<bool> m_isEnding = false;
    std::atomic<bool> m_isStopped = false;
};

} // namespace Vidlets

#endif
