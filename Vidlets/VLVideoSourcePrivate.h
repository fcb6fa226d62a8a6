// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLVIDEOSOURCEPRIVATE_H
#define VLVIDEOSOURCEPRIVATE_H

#include "VLClipSafeguards.h"
#include "VLVideoSource.h"
#include "VLWakeUp.h"

#include <QList>
#include <QMap>
#include <QPointer>
#include <QRecursiveMutex>
#include <QString>
#include <QUrl>

#include <atomic>
#include <memory>

// Not installed: the record of a source, for the library's own classes.

namespace Vidlets {

class VLManager;
class VLVideoFrameCache;

/**
 * Where change records arrive: any thread adds one without waiting for another, and whoever takes
 * them takes all.
 */
class VLVideoChangeInbox
{
public:
    VLVideoChangeInbox() = default;
    ~VLVideoChangeInbox();

    /// Takes ownership of @p change.
    void add(VLVideoSourceChange* change);
    /// Takes all records out and appends them to @p changes, oldest first.
    void moveTo(QList<VLVideoSourceChange*>& changes);
    bool isEmpty() const;

private:
    Q_DISABLE_COPY_MOVE(VLVideoChangeInbox)

    struct Node
    {
        VLVideoSourceChange* change;
        Node* older;
    };

    std::atomic<Node*> m_newest = nullptr;
};

class VLVideoSourcePrivate
{
public:
    VLVideoSourcePrivate() = default;
    ~VLVideoSourcePrivate();

    static VLVideoSourcePrivate* of(VLVideoSource* source)
    {
        return source->d;
    }

    bool makeCacheCurrent(const QString& name);

    /// Has the clip go without another in its place.
    void unload();

    /// What the source goes by from its next load on; prompting at once. @p warned is told of
    /// warnings. On the thread of the source object.
    void setSafeguards(const VLClipSafeguards& asked, VLManager* warned);
    VLClipSafeguards safeguards();
    /// Whether FFmpeg is to give up whatever it waits for.
    bool isToldToStop();
    /// Has nothing to carry out, so that the thread may sleep.
    bool isQueueEmpty();

    /// Keeps a warning of @p file until it is said. On the source thread.
    void addWarning(VLVideoSource* owner, const QString& file, const QString& text);
    /// On the thread of the source object.
    void sayWarnings();

    /// Guarded by stateMutex.
    QUrl source;
    /// Guarded by stateMutex.
    bool shouldQuit = false;
    /// Guarded by stateMutex.
    VLVideoSource::Action action = VLVideoSource::ActionIdle;
    /// Held also while an old cache is deleted with all its frames.
    QRecursiveMutex cacheMutex;
    /// Held while two URLs are compared, and while a record is added or deleted.
    QRecursiveMutex stateMutex;
    /// The queue, oldest first; owns the records. Guarded by stateMutex.
    QList<VLVideoSourceChange*> changes;
    /// The end of the queue, which records come in by. Needs no lock.
    VLVideoChangeInbox inbox;
    /// Owned; null until the first source is set up. Guarded by cacheMutex.
    VLVideoFrameCache* cache = nullptr;
    /// Always empty: a clip that comes back after another one is decoded again.
    QMap<QString, VLVideoFrameCache*> cachesByUrl;

    VLWakeUp wakeUp;
    /// Of the thread that shows the frames; null where nobody is to be told of them. Guarded by
    /// cacheMutex.
    std::shared_ptr<VLWakeUp> frameWakeUp;
    /// The thread did not end by itself, and may have left anything half done.
    bool wasTerminated = false;
    /// The records of the source go with it. Set once its thread has ended.
    bool isReleased = false;

private:
    struct Warning
    {
        QString file;
        QString text;
    };

    /// Guarded by stateMutex.
    VLClipSafeguards m_safeguards;
    /// Guarded by stateMutex.
    QList<Warning> m_warnings;
    QPointer<VLManager> m_warned;
};

} // namespace Vidlets

#endif
