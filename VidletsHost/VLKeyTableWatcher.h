// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEWATCHER_H
#define VLKEYTABLEWATCHER_H

#include "VLKeyTableWatch.h"

#include <QDeadlineTimer>
#include <QList>
#include <QMutex>
#include <QQueue>
#include <QString>
#include <QStringList>
#include <QThread>
#include <QWaitCondition>

#include <atomic>
#include <functional>

namespace Vidlets {

/**
 * A VLKeyTableWatch on its thread, and the way to it and back.
 *
 * The thread runs from the first call that needs it on. What it tells waits until it is taken. All
 * members belong to the user-interface thread. News and flags are guarded by one mutex, under which
 * nothing else happens.
 *
 * Internal to the host kit.
 */
class VLKeyTableWatcher final
{
public:
    /// Makes a watcher that calls @p announce, on its own thread, when there are news that it has
    /// not announced since the last were taken.
    explicit VLKeyTableWatcher(std::function<void()> announce);
    /// Ends the thread.
    ~VLKeyTableWatcher();

    void setPlaces(const QList<VLDataPath>& dataPaths, const QString& keyData);
    void setWatching(bool on);
    void watch(const QStringList& files);
    void forget(const QStringList& files);
    /// Has a sweep made, and gives its number.
    quint64 sweep(const QList<VLKeyTableWatch::Question>& questions);

    /// Gives the oldest news. Returns whether there were any.
    bool take(VLKeyTableNews& news);
    /// Waits for news. Returns false where @p deadline has passed or none can come.
    bool waitForNews(const QDeadlineTimer& deadline);

    /// Ends the thread for good; whoever waits for a sweep has to make it.
    void stop();
    /// Returns whether stop() was called.
    bool isStopped() const
    {
        return m_isStopped;
    }

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableWatcher)

    void call(const std::function<void(VLKeyTableWatch*)>& function);
    void deliver(VLKeyTableNews&& news);
    void dropNews();

    const std::function<void()> m_announce;
    QThread m_thread;
    /// Deletes itself at the end of the thread.
    VLKeyTableWatch* m_watch = nullptr;
    quint64 m_sweeps = 0;
    std::atomic<bool> m_isStopped = false;
    QMutex m_mutex;
    QWaitCondition m_delivered;
    QQueue<VLKeyTableNews> m_news;
    /// The files in m_news.
    qsizetype m_fileCount = 0;
    bool m_isAnnounced = false;
};

} // namespace Vidlets

#endif
