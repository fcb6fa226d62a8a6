// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVideoSource.h"

#include "VLVideoFrameCache.h"

#include <QDebug>
#include <QList>
#include <QMap>
#include <QMutexLocker>
#include <QRecursiveMutex>

#include <algorithm>
#include <atomic>
#include <iterator>

namespace Vidlets {

namespace {

constexpr unsigned long kQuitTimeoutMs = 10000;

/**
 * Where change records arrive: any thread adds one without waiting for another, and whoever takes
 * them takes all.
 */
class ChangeInbox
{
public:
    /// Takes ownership of @p change.
    void add(VLVideoSourceChange* change)
    {
        auto* node = new Node{change, m_newest.load()};
        while (!m_newest.compare_exchange_weak(node->older, node)) { }
    }
    /// Takes all records out and appends them to @p changes, oldest first.
    void moveTo(QList<VLVideoSourceChange*>& changes)
    {
        const qsizetype before = changes.size();
        for (Node* node = m_newest.exchange(nullptr); node;) {
            changes.append(node->change);
            const Node* taken = node;
            node = node->older;
            delete taken;
        }
        std::reverse(std::next(changes.begin(), before), changes.end());
    }

private:
    struct Node
    {
        VLVideoSourceChange* change;
        Node* older;
    };

    std::atomic<Node*> m_newest = nullptr;
};

} // namespace

class VLVideoSourcePrivate
{
public:
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
    ChangeInbox inbox;
    /// Owned; null until the first source is set up. Guarded by cacheMutex.
    VLVideoFrameCache* cache = nullptr;
    /// Always empty: a clip that comes back after another one is decoded again.
    QMap<QString, VLVideoFrameCache*> cachesByUrl;

    bool makeCacheCurrent(const QString& name);
};

/// Replaces the current cache by the known one of that name, or by a new one. Returns whether there
/// was a known one.
bool VLVideoSourcePrivate::makeCacheCurrent(const QString& name)
{
    const QMutexLocker locker(&cacheMutex);
    const auto known = cachesByUrl.constFind(name);
    if (known != cachesByUrl.constEnd()) {
        cache = known.value();
        return true;
    }
    delete cache;
    cache = new VLVideoFrameCache(name);
    return false;
}

VLVideoSource::VLVideoSource(QObject* parent)
    : QThread(parent)
    , d(new VLVideoSourcePrivate)
{
}

VLVideoSource::~VLVideoSource()
{
    // Stops the thread and no more: record, queue and cache stay, should it have survived.
    quit();
}

void VLVideoSource::close()
{
    setSource(QUrl());
}

void VLVideoSource::changeSetAction(Action action)
{
    if (action == ActionNone)
        return;
    {
        const QMutexLocker locker(&d->stateMutex);
        d->action = action;
    }
    Q_EMIT actionChanged();
}

void VLVideoSource::changeSetSource(const QUrl& source)
{
    const QMutexLocker locker(&d->stateMutex);
    d->source = source;
}

bool VLVideoSource::setSource(const QUrl& url)
{
    const QMutexLocker locker(&d->stateMutex);
    if (!url.isValid() || url == d->source)
        return false;
    d->inbox.add(new VLVideoSourceSourceChange(ActionLoad, url));
    return true;
}

QUrl VLVideoSource::source()
{
    const QMutexLocker locker(&d->stateMutex);
    return d->source;
}

VLVideoSource::Action VLVideoSource::action()
{
    const QMutexLocker locker(&d->stateMutex);
    return d->action;
}

void VLVideoSource::setAction(Action action)
{
    // Kept: without the lock, which setSource() takes. Only the source thread comes here.
    d->inbox.add(new VLVideoSourceChange(action));
}

void VLVideoSource::clearChanges()
{
    const QMutexLocker locker(&d->stateMutex);
    d->inbox.moveTo(d->changes);
    while (!d->changes.isEmpty())
        delete d->changes.takeFirst();
}

void VLVideoSource::setupSource()
{
    if (!d->makeCacheCurrent(source().toString()))
        setAction(source().isEmpty() ? ActionIdle : ActionDecode);
    Q_EMIT sourceChanged();
}

VLVideoFrame VLVideoSource::getFrame(unsigned int index)
{
    VLVideoFrame frame;
    const QMutexLocker locker(&d->cacheMutex);
    if (index < d->cache->length())
        frame = d->cache->frame(index);
    return frame;
}

void VLVideoSource::pushFrame(const VLVideoFrame& frame)
{
    const QMutexLocker locker(&d->cacheMutex);
    d->cache->addFrame(frame);
}

bool VLVideoSource::isFrameAvailable(quint64 index)
{
    const QMutexLocker locker(&d->cacheMutex);
    return d->cache && d->cache->length() > index;
}

quint64 VLVideoSource::loadedFrameCount()
{
    const QMutexLocker locker(&d->cacheMutex);
    return d->cache ? d->cache->length() : 0;
}

quint64 VLVideoSource::totalFrameCount()
{
    return loadedFrameCount();
}

void VLVideoSource::notifyStreamEnded()
{
    Q_EMIT streamEnded();
}

void VLVideoSource::setShouldQuit()
{
    const QMutexLocker locker(&d->stateMutex);
    d->shouldQuit = true;
}

bool VLVideoSource::shouldQuit()
{
    const QMutexLocker locker(&d->stateMutex);
    return d->shouldQuit;
}

void VLVideoSource::quit()
{
    setShouldQuit();
    if (wait(kQuitTimeoutMs))
        return;
    qDebug("VLVideoSource did not quit in a timely fashion");
    terminate();
    if (wait(kQuitTimeoutMs))
        return;
    qDebug("VLVideoSource did not quit at all");
}

bool VLVideoSource::loadSource()
{
    Q_EMIT sourceLoaded();
    return true;
}

void VLVideoSource::processActionQueue()
{
    QMutexLocker locker(&d->stateMutex);
    d->inbox.moveTo(d->changes);
    if (d->changes.isEmpty())
        return;
    VLVideoSourceChange* change = d->changes.takeFirst();
    // Carried out with no lock held: it may wait for the decoder, and send signals.
    locker.unlock();
    change->apply(this);
    locker.relock();
    delete change;
}

} // namespace Vidlets

#include "moc_VLVideoSource.cpp"
