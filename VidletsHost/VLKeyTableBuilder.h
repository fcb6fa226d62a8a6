// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEBUILDER_H
#define VLKEYTABLEBUILDER_H

#include "VLKeyTableFile.h"
#include "VLKeyTableWriter.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QQueue>
#include <QString>
#include <QThread>
#include <QWaitCondition>

#include <atomic>
#include <functional>
#include <optional>

namespace Vidlets {

/**
 * Reads control files on a thread of its own.
 *
 * The thread runs as long as there are files to read, and puts what it has read into the table on
 * disk, if there is to be one. What it has read waits until it is taken, on
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
        /// Whether the file is to be read also where the table on disk knows it as it is.
        bool mustRead = false;
        /// Whether the owner goes by the rows of the file that are in the table on disk.
        bool isStored = false;
        /// Whether the head of the file marks it as a control file.
        bool isIndexed = false;
        /// What the owner has read by itself, to be put into the table on disk only.
        std::optional<VLKeyTableFile> content;
    };

    enum class Kind : quint8 {
        Read,    ///< A file was read.
        Known,   ///< A file is as the table on disk has it, with its rows.
        Stored,  ///< The rows of what was read of a file are in the table on disk.
        Incident ///< Something has happened to the table on disk.
    };

    struct Result
    {
        Kind kind = Kind::Read;
        int file = 0;
        quint32 generation = 0;
        VLKeyTableFile content;
        /// What the table on disk had of the file before; where that was asked for, and is known.
        std::optional<VLKeyTableFile> before;
        /// Tells the table on disk that has the rows from any other.
        QByteArray token;
        VLKeyTableWriter::Incident incident;
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
    /// Drops what waits, and has what is read from now on put into the table @p path on disk; an
    /// empty one stands for none. Waits for the thread to leave what it is at.
    void setCacheFile(const QString& path);
    /// Ends the thread for good.
    void stop();
    /// Returns whether stop() was called.
    bool isStopped() const
    {
        return m_isStopped;
    }

    /// Gives the oldest result. Returns whether there was one.
    bool take(Result& result);

    /// Returns whether there are results, or more may come.
    bool isBusy();

    /// Waits until there are results. Returns false where @p deadline has passed or none can come.
    bool waitForResults(const QDeadlineTimer& deadline);

protected:
    void run() override;

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableBuilder)

    bool takeJob(Job& job);
    bool endIfIdle();
    void read(Job& job, VLKeyTableWriter& writer);
    void flush(VLKeyTableWriter& writer);
    void sweep(VLKeyTableWriter& writer);
    bool hasJobs();
    void deliver(Result&& result);
    void deliverIncident(VLKeyTableWriter& writer);

    const std::function<void()> m_announce;
    QMutex m_mutex;
    QWaitCondition m_delivered;
    QQueue<Job> m_jobs;
    /// The generation that each file is to be read for; jobs for others are passed over.
    QHash<int, quint32> m_wanted;
    QQueue<Result> m_results;
    QString m_cacheFile;
    /// Whether files that are no more have been looked for in the table on disk.
    bool m_isSwept = false;
    /// Whether stop() came before all jobs were done.
    bool m_isCutShort = false;
    /// Whether run() will look for jobs again.
    bool m_isRunning = false;
    bool m_isAnnounced = false;
    /// Whether the thread is to leave what it is at.
    std::atomic<bool> m_isEnding = false;
    std::atomic<bool> m_isStopped = false;
};

} // namespace Vidlets

#endif
