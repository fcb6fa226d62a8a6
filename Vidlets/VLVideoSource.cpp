// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVideoSource.h"

#include "VLVideoFrameCache.h"

#include <QDebug>
#include <QList>
#include <QMap>
#include <QMutexLocker>
#include <QRecursiveMutex>

namespace Vidlets {

namespace {

constexpr unsigned long kQuitTimeoutMs = 10000;

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
    QRecursiveMutex cacheMutex;
    QRecursiveMutex stateMutex;
    /// The queue, oldest first; owns the records. Guarded by stateMutex, but for setAction().
    QList<VLVideoSourceChange*> changes;
    /// Owned; null until the first source is set up. Guarded by cacheMutex.
    VLVideoFrameCache* cache = nullptr;
    /// Always empty: a clip that comes back after another one is decoded again.
    QMap<QString, VLVideoFrameCache*> cachesByUrl;
};

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
    d->changes.append(new VLVideoSourceSourceChange(ActionLoad, url));
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
    // Without the lock on purpose: only the source thread comes here.
    d->changes.append(new VLVideoSourceChange(action));
}

void VLVideoSource::clearChanges()
{
    const QMutexLocker locker(&d->stateMutex);
    while (!d->changes.isEmpty())
        delete d->changes.takeFirst();
}

void VLVideoSource::setupSource()
{
    const QString name = source().toString();
    QMutexLocker locker(&d->cacheMutex);
    const auto known = d->cachesByUrl.constFind(name);
    if (known != d->cachesByUrl.constEnd()) {
        d->cache = known.value();
        locker.unlock();
    } else {
        delete d->cache;
        d->cache = new VLVideoFrameCache(name);
        locker.unlock();
        setAction(source().isEmpty() ? ActionIdle : ActionDecode);
    }
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
