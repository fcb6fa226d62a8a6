// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLELIVE_H
#define VLKEYTABLELIVE_H

#include "VLKeyTablePaths.h"
#include "VLKeyTableWatcher.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>

class VLContext;

namespace Vidlets {

class VLKeyTableIndex;
class VLKeyTableIndexPrivate;

/**
 * Keeps an index in step with the disk: what the watch has told and what a refresh has found
 * becomes files that are recorded or wait.
 *
 * A refresh that is not through yet is waited for by the first lookup. Internal to the host kit;
 * used on the user-interface thread.
 */
class VLKeyTableLive final
{
public:
    VLKeyTableLive(VLKeyTableIndex* owner, VLKeyTableIndexPrivate& index);
    ~VLKeyTableLive();

    void setWatching(bool on);
    bool isWatching() const
    {
        return m_isWatching;
    }

    /// Says that @p file is a new one of the index.
    void noteRecorded(int file);

    /// Says that the host has recorded the file @p path, which may be known.
    void noteHosted(const QString& path);

    /// Says that @p file has been read, and is in the table.
    void noteRead(int file);

    /// Asks all files, and looks for new ones.
    void refresh();

    /// Waits until what refresh() has begun is through.
    void settle(const QDeadlineTimer& deadline = QDeadlineTimer::Forever);

    /// Whether a file is being recorded or put aside, during which nobody is told of anything.
    bool isApplying() const
    {
        return m_isApplying;
    }

    /// Whether some of what was told at once is still to be taken over.
    bool isBehind() const
    {
        return m_nextFile < m_news.files.size();
    }

    /// Ends the thread.
    void stop();

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableLive)

    void callLater(void (VLKeyTableLive::*member)(), bool& isScheduled);
    void start();
    void updatePlaces();
    void listenTo(VLContext& context);
    void startWatch();
    void sweepHere();
    QList<VLKeyTableWatch::Question> questions() const;
    void watchAnew(const QString& path);
    void unwatch(const QString& path);
    void flushWatch();

    void takeNews();
    bool takeNext();
    void begin(VLKeyTableNews&& news);
    void awaitFilesIn(const QStringList& directories);
    void apply(const VLKeyTableNews::File& file);
    bool isNews(int file, const VLKeyTableNews::File& news);
    bool isToBeRecorded(const VLKeyTableNews::File& file, const QList<int>& known) const;
    void record(const KeyTableWalk::File& file);
    void noteGone(int file);
    void forgetGone();
    void forget(int file);
    QList<int> filesAt(const QString& path) const;

    VLKeyTableIndex* const m_owner;
    VLKeyTableIndexPrivate& m_index;
    VLKeyTablePaths m_paths;
    bool m_isWatching = true;
    /// Whether the event loop has run.
    bool m_isStarted = false;
    bool m_isStartScheduled = false;
    bool m_arePlacesScheduled = false;
    bool m_isFlushScheduled = false;
    bool m_isTakingScheduled = false;

    /// As the watcher was told.
    QList<VLDataPath> m_dataPaths;
    QString m_keyData;
    QPointer<VLContext> m_context;
    QMetaObject::Connection m_contextConnection;

    /// What the watcher is to be told.
    QStringList m_toWatch;
    QStringList m_toForget;
    /// Files in data paths that are no control files, as they were then.
    QHash<QString, VLFileStamp> m_refused;
    /// Of files that wait, as they were met last.
    QHash<int, VLFileStamp> m_told;
    /// Those that no host has recorded and that have gone, the longest first.
    QList<int> m_gone;
    bool m_isRecording = false;
    bool m_isApplying = false;

    /// What is being taken over.
    VLKeyTableNews m_news;
    qsizetype m_nextFile = 0;
    /// The sweep that lookups have to wait for, and the last that has been taken over.
    quint64 m_owedSweep = 0;
    quint64 m_doneSweep = 0;

    /// Last, so that its thread ends first.
    VLKeyTableWatcher m_watcher;
};

} // namespace Vidlets

#endif
