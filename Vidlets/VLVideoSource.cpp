// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVideoSource.h"

#include "VLManager.h"
#include "VLVideoFrameCache.h"
#include "VLVideoSourcePrivate.h"

#include <QDebug>
#include <QMutexLocker>
#include <QThreadPool>

#include <algorithm>
#include <iterator>
#include <utility>

namespace Vidlets {

namespace {

constexpr unsigned long kQuitTimeoutMs = 10000;
constexpr int kDisposerExpiryMs = 100;

/// Deletes pictures where nobody waits for it: those of one clip take many milliseconds.
void dispose(VLVideoFrameCache* cache)
{
    if (!cache)
        return;
    // Waits for its thread at the end of the process.
    static QThreadPool pool;
    pool.setMaxThreadCount(1);
    pool.setExpiryTimeout(kDisposerExpiryMs);
    pool.start([cache] { delete cache; });
}

} // namespace

VLVideoChangeInbox::~VLVideoChangeInbox()
{
    QList<VLVideoSourceChange*> changes;
    moveTo(changes);
    qDeleteAll(changes);
}

void VLVideoChangeInbox::add(VLVideoSourceChange* change)
{
    auto* node = new Node{change, m_newest.load()};
    while (!m_newest.compare_exchange_weak(node->older, node)) { }
}

void VLVideoChangeInbox::moveTo(QList<VLVideoSourceChange*>& changes)
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

bool VLVideoChangeInbox::isEmpty() const
{
    return !m_newest;
}

// Runs only where the safeguards ask for it: else the record stays allocated.
VLVideoSourcePrivate::~VLVideoSourcePrivate()
{
    qDeleteAll(changes);
    dispose(cache);
}

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

void VLVideoSourcePrivate::unload()
{
    inbox.add(new VLVideoSourceSourceChange(VLVideoSource::ActionLoad, QUrl()));
    wakeUp.wake(VLWakeUp::Work);
}

void VLVideoSourcePrivate::setSafeguards(const VLClipSafeguards& asked, VLManager* warned)
{
    m_warned = warned;
    {
        const QMutexLocker locker(&stateMutex);
        m_safeguards = asked;
    }
    wakeUp.setPrompt(asked.prompt);
}

VLClipSafeguards VLVideoSourcePrivate::safeguards()
{
    const QMutexLocker locker(&stateMutex);
    return m_safeguards;
}

bool VLVideoSourcePrivate::isToldToStop()
{
    if (!wakeUp.isPrompt())
        return false;
    const QMutexLocker locker(&stateMutex);
    return shouldQuit;
}

bool VLVideoSourcePrivate::isQueueEmpty()
{
    const QMutexLocker locker(&stateMutex);
    return changes.isEmpty() && inbox.isEmpty();
}

void VLVideoSourcePrivate::addWarning(VLVideoSource* owner, const QString& file,
                                      const QString& text)
{
    {
        const QMutexLocker locker(&stateMutex);
        m_warnings.append({file, text});
    }
    // Forgotten with the source, whose owner then says what is left.
    QMetaObject::invokeMethod(
        owner, [this] { sayWarnings(); }, Qt::QueuedConnection);
}

void VLVideoSourcePrivate::sayWarnings()
{
    QList<Warning> warnings;
    {
        const QMutexLocker locker(&stateMutex);
        warnings.swap(m_warnings);
    }
    for (const Warning& warning : std::as_const(warnings))
        ClipSafeguards::warn(m_warned, warning.file, warning.text);
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
    if (d->isReleased)
        delete d;
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
    d->wakeUp.wake(VLWakeUp::Work);
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
    d->wakeUp.wake(VLWakeUp::Work);
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
    if (d->frameWakeUp)
        d->frameWakeUp->wakeForFrame();
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
    {
        const QMutexLocker locker(&d->stateMutex);
        d->shouldQuit = true;
    }
    d->wakeUp.wake(VLWakeUp::Quit);
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
    d->wasTerminated = true;
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
