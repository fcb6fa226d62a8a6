// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVideoController.h"

#include "VLFramePacing.h"
#include "VLNumbers.h"
#include "VLVideoControllerPrivate.h"
#include "VLVideoSource.h"
#include "VLVideoSourcePrivate.h"

#include <QDebug>
#include <QMutexLocker>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr unsigned long kQuitTimeoutMs = 10000;
constexpr std::chrono::milliseconds kIdleSleep(100);
constexpr std::chrono::milliseconds kLockTimeout(100);
// A clock that went back gives more than the wait can count. A day is as good as for ever.
constexpr unsigned long kLongestPaceMs = 86400000;

} // namespace

void VLVideoControllerPrivate::setPrompt(bool prompt)
{
    {
        VLVideoSourcePrivate* shown = VLVideoSourcePrivate::of(source);
        const QMutexLocker locker(&shown->cacheMutex);
        shown->frameWakeUp = wakeUp;
    }
    wakeUp->setPrompt(prompt);
}

bool VLVideoControllerPrivate::isFrameAvailable(quint64 index)
{
    // Before the look, so that a frame that comes after it is not missed.
    wakeUp->setAwaitsFrame(true);
    const bool isAvailable = source->isFrameAvailable(index);
    if (isAvailable)
        wakeUp->setAwaitsFrame(false);
    return isAvailable;
}

bool VLVideoControllerPrivate::endsAt(quint64 index)
{
    // A picture before this one has had its time, so a clip that is played anew at once does not
    // keep the thread busy. One that is still decoded may go on after a while.
    return wakeUp->isPrompt() && index > 1 && index >= source->loadedFrameCount()
        && source->action() == VLVideoSource::ActionIdle;
}

VLVideoControllerPrivate::Presentation VLVideoControllerPrivate::prepareFrame()
{
    const std::lock_guard lock(controllerMutex);
    Presentation frame;
    frame.isPlaying = state == VLVideoController::StatePlaying;
    frame.position = position;
    frame.isDue = frame.isPlaying
        && (shownPosition != frame.position || frame.position < source->loadedFrameCount());
    if (!frame.isDue)
        return frame;
    frame.delaySeconds =
        VLFramePacing::delaySeconds({frame.position, shownPosition, source->frameRate(),
                                     lastFrameDisplayTime, QDateTime::currentDateTime()});
    // Asked again: the frame rate had to wait for the decoder, which may have delivered meanwhile.
    frame.isThere = frame.position < source->loadedFrameCount();
    return frame;
}

void VLVideoControllerPrivate::sleepBetweenFrames(unsigned long delayMs)
{
    // Not the other's wait: a thread that nobody prompts may be terminated in here.
    if (wakeUp->isPrompt())
        wakeUp->pace(std::chrono::milliseconds(std::min(delayMs, kLongestPaceMs)));
    else
        QThread::msleep(delayMs);
}

VLVideoController::VLVideoController(VLVideoSource* source, QObject* parent)
    : QThread(parent)
    , d(new VLVideoControllerPrivate)
{
    d->source = source;
    setObjectName(u"Controller"_s);
    connect(this, &QThread::finished, this, &QObject::deleteLater);
    connect(source, &VLVideoSource::streamEnded, this, &VLVideoController::streamEnded);
    connect(source, &VLVideoSource::sourceLoaded, this, &VLVideoController::sourceLoaded);
    connect(source, &VLVideoSource::loadProgressChanged, this,
            &VLVideoController::loadProgressChanged);
}

VLVideoController::~VLVideoController()
{
    // Waits for nothing: the owner has called quit(). The record stays.
    setShouldQuit();
    if (d->isReleased)
        delete d;
}

bool VLVideoController::setSource(const QUrl& url)
{
    setNeedFrame(true);
    streamEnded();
    setPosition(0);
    setState(StatePaused);
    if (!d->source->setSource(url))
        return false;
    {
        const QMutexLocker locker(&d->controllerMutex);
        d->position = 0;
    }
    setNeedFrame(true);
    return true;
}

QUrl VLVideoController::source()
{
    return d->source->source();
}

void VLVideoController::close()
{
    d->source->close();
}

void VLVideoController::play()
{
    {
        const QMutexLocker locker(&d->controllerMutex);
        d->state = StatePlaying;
        if (d->source && d->position >= d->source->totalFrameCount())
            setProgress(0.0);
    }
    d->wakeUp->wake(VLWakeUp::Work);
    Q_EMIT stateChanged();
}

void VLVideoController::pause()
{
    setState(StatePaused);
}

void VLVideoController::setState(State state)
{
    {
        const QMutexLocker locker(&d->controllerMutex);
        d->state = state;
    }
    d->wakeUp->wake(VLWakeUp::Command);
    Q_EMIT stateChanged();
}

VLVideoController::State VLVideoController::state()
{
    const QMutexLocker locker(&d->controllerMutex);
    return d->state;
}

quint64 VLVideoController::position()
{
    return d->position;
}

void VLVideoController::setPosition(quint64 position)
{
    // With no frames the last one is the largest number there is: kept, see play().
    const quint64 loaded = d->source->loadedFrameCount();
    if (position >= loaded)
        position = loaded - 1;
    {
        const QMutexLocker locker(&d->controllerMutex);
        d->position = position;
        // One behind means that the frame here was not fetched yet.
        d->shownPosition = position - 1;
    }
    d->wakeUp->wake(VLWakeUp::Command);
    setNeedFrame(true);
    Q_EMIT positionChanged();
}

double VLVideoController::progress()
{
    const auto total = static_cast<double>(d->source->totalFrameCount());
    if (total == 0.0)
        return 0.0;
    const QMutexLocker locker(&d->controllerMutex);
    return static_cast<double>(d->position) / total;
}

void VLVideoController::setProgress(double progress)
{
    // Kept: through 32 signed bits, and widened with the sign. What does not fit or is not a number
    // is the least of them, and so leads to the last frame.
    const qint32 index =
        truncatedToInt32(static_cast<double>(d->source->totalFrameCount()) * progress);
    setPosition(static_cast<quint64>(static_cast<qint64>(index)));
}

double VLVideoController::loadProgress() const
{
    if (!d->source)
        return 0.0;
    // Without frames this is not a number, and stays so.
    return static_cast<double>(d->source->loadedFrameCount())
        / static_cast<double>(d->source->totalFrameCount());
}

quint64 VLVideoController::frameCount()
{
    return d->source->totalFrameCount();
}

double VLVideoController::frameWidth() const
{
    return d->source->frameWidth();
}

double VLVideoController::frameHeight() const
{
    return d->source->frameHeight();
}

VLVideoFrame VLVideoController::getFrame(quint64 index)
{
    const QMutexLocker locker(&d->controllerMutex);
    return d->source->getFrame(static_cast<unsigned int>(index));
}

VLVideoFrame VLVideoController::currentFrame()
{
    const QMutexLocker locker(&d->controllerMutex);
    // Read once: the step may raise it meanwhile.
    const quint64 position = d->position;
    const VLVideoFrame frame = d->source->getFrame(static_cast<unsigned int>(position));
    d->shownPosition = position;
    return frame;
}

bool VLVideoController::isScrubbing() const
{
    const QMutexLocker locker(&d->controllerMutex);
    return d->scrubbing;
}

void VLVideoController::setScrubbing(bool scrubbing)
{
    const QMutexLocker locker(&d->controllerMutex);
    d->scrubbing = scrubbing;
}

void VLVideoController::setNeedFrame(bool needFrame)
{
    {
        const QMutexLocker locker(&d->controllerMutex);
        d->needFrame = needFrame;
    }
    d->wakeUp->wake(VLWakeUp::Work);
}

QDateTime VLVideoController::lastFrameDisplayTime() const
{
    const QMutexLocker locker(&d->controllerMutex);
    return d->lastFrameDisplayTime;
}

void VLVideoController::setLastFrameDisplayTime(const QDateTime& time)
{
    const QMutexLocker locker(&d->controllerMutex);
    d->lastFrameDisplayTime = time;
}

void VLVideoController::setShouldQuit()
{
    {
        const QMutexLocker locker(&d->controllerMutex);
        d->shouldQuit = true;
    }
    d->wakeUp->wake(VLWakeUp::Quit);
}

bool VLVideoController::shouldQuit()
{
    const std::unique_lock lock(d->controllerMutex, kLockTimeout);
    return lock.owns_lock() && d->shouldQuit;
}

void VLVideoController::quit()
{
    setShouldQuit();
    if (wait(kQuitTimeoutMs))
        return;
    qDebug("VLVideoController did not quit in a timely fashion");
    d->wasTerminated = true;
    terminate();
    if (wait(kQuitTimeoutMs))
        return;
    qDebug("VLVideoController did not quit at all");
}

/// No lock is taken here: one that is held on to in a thread that is terminated in its sleep would
/// have to be cleaned up.
void VLVideoController::presentFrame()
{
    const VLVideoControllerPrivate::Presentation frame = d->prepareFrame();
    if (!frame.isPlaying) {
        Q_EMIT displayFrame();
        return;
    }
    if (!frame.isDue)
        return;
    if (frame.isThere) {
        // Kept: raised without the lock. A reader gets the old or the new position.
        ++d->position;
        Q_EMIT displayFrame();
        Q_EMIT positionChanged();
        setLastFrameDisplayTime(QDateTime::currentDateTime());
        // The step past the end shows nothing: the last picture would stand twice its time, which
        // is seen as a halt where the clip begins anew.
        if (d->endsAt(frame.position + 1))
            return;
    }
    // What is not a number is no delay either.
    if (frame.delaySeconds > 0.0)
        d->sleepBetweenFrames(VLFramePacing::sleepMs(frame.delaySeconds));
}

void VLVideoController::streamEnded()
{
    if (!isScrubbing())
        setState(StatePaused);
    Q_EMIT loadProgressChanged();
    setNeedFrame(true);
}

void VLVideoController::sourceLoaded()
{
    setNeedFrame(true);
    Q_EMIT widthChanged();
    Q_EMIT heightChanged();
    Q_EMIT loadProgressChanged();
}

void VLVideoController::run()
{
    const auto tryStep = [this]() -> std::optional<bool> {
        const std::unique_lock lock(d->controllerMutex, kLockTimeout);
        if (!lock.owns_lock())
            return std::nullopt;
        return step();
    };
    for (d->wakeUp->beginPass(); !shouldQuit(); d->wakeUp->beginPass()) {
        const std::optional<bool> plays = tryStep();
        // The pass has nothing to do then, and no sleep: the try itself has waited.
        if (!plays)
            continue;
        if (*plays)
            presentFrame();
        else
            d->wakeUp->idle(kIdleSleep);
    }
}

/// One pass of the loop, with the mutex held throughout. Returns whether there is a frame to be
/// played, which the caller presents without the mutex.
bool VLVideoController::step()
{
    const quint64 position = d->position;
    if (d->state == StatePaused) {
        if (d->needFrame && d->isFrameAvailable(position)) {
            // Kept: the first frame, wherever the position is. It is only looked at for being
            // there; the item fetches the one at the position.
            if (!d->source->getFrame(0).isNull())
                d->needFrame = false;
            presentFrame();
        }
        return false;
    }
    if (d->isFrameAvailable(position)) {
        d->needFrame = false;
        return true;
    }
    if (d->source->totalFrameCount() >= position)
        pause();
    return false;
}

} // namespace Vidlets

#include "moc_VLVideoController.cpp"
