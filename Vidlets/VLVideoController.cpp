// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVideoController.h"

#include "VLVideoSource.h"

#include <QDebug>
#include <QMutexLocker>
#include <QRecursiveMutex>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr unsigned long kQuitTimeoutMs = 10000;
constexpr unsigned long kIdleSleepMs = 100;
constexpr int kLockTimeoutMs = 100;
constexpr double kMsPerDay = 86400000.0;
constexpr double kMsPerSecond = 1000.0;
constexpr double kMicrosecondsPerMs = 1000.0;

} // namespace

class VLVideoControllerPrivate
{
public:
    double frameDelaySeconds() const;

    /// Not owned.
    VLVideoSource* source = nullptr;
    /// The frame that the item last fetched.
    quint64 shownPosition = 0;
    /// The frame that the item is to fetch next. Raised and read without the lock in two places.
    quint64 position = 0;
    /// Guards everything here.
    QRecursiveMutex controllerMutex;
    bool shouldQuit = false;
    /// A frame must be shown although the position does not walk.
    bool needFrame = true;
    bool scrubbing = false;
    QDateTime lastFrameDisplayTime;
    VLVideoController::State state = VLVideoController::StatePaused;
};

/**
 * How long to sleep after a frame: one frame interval, or, where the last frame was shown within
 * the same millisecond or never, one for each frame that was not fetched yet.
 *
 * The wanted time is in seconds and the elapsed one in microseconds. That mix is what makes the
 * pacing even, and it stays: no frame is caught up with, and none is skipped.
 */
double VLVideoControllerPrivate::frameDelaySeconds() const
{
    const double frameDelay = 1.0 / source->frameRate();
    const double wanted = static_cast<double>(position - shownPosition) * frameDelay;
    const QDateTime now = QDateTime::currentDateTime();
    const auto days = static_cast<double>(lastFrameDisplayTime.daysTo(now));
    const double msecs = lastFrameDisplayTime.time().msecsTo(now.time());
    const double elapsed = (msecs + days * kMsPerDay) * kMicrosecondsPerMs;
    const double remaining = wanted - std::min(wanted, elapsed);
    return std::max(remaining, frameDelay);
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
    // Through 32 signed bits, and widened with the sign.
    const auto index =
        static_cast<qint32>(static_cast<double>(d->source->totalFrameCount()) * progress);
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
    const VLVideoFrame frame = d->source->getFrame(static_cast<unsigned int>(d->position));
    d->shownPosition = d->position;
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
    const QMutexLocker locker(&d->controllerMutex);
    d->needFrame = needFrame;
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
    const QMutexLocker locker(&d->controllerMutex);
    d->shouldQuit = true;
}

bool VLVideoController::shouldQuit()
{
    if (!d->controllerMutex.tryLock(kLockTimeoutMs))
        return false;
    const bool result = d->shouldQuit;
    d->controllerMutex.unlock();
    return result;
}

void VLVideoController::quit()
{
    setShouldQuit();
    if (wait(kQuitTimeoutMs))
        return;
    qDebug("VLVideoController did not quit in a timely fashion");
    terminate();
    if (wait(kQuitTimeoutMs))
        return;
    qDebug("VLVideoController did not quit at all");
}

void VLVideoController::presentFrame()
{
    QMutexLocker locker(&d->controllerMutex);
    if (d->state != StatePlaying) {
        locker.unlock();
        Q_EMIT displayFrame();
        return;
    }
    if (d->shownPosition == d->position && d->position >= d->source->loadedFrameCount())
        return;

    const double delaySeconds = d->frameDelaySeconds();
    const bool hasFrame = d->position < d->source->loadedFrameCount();
    locker.unlock();
    if (hasFrame) {
        // Raised without the lock, which is accepted: a reader gets the old or the new position.
        ++d->position;
        Q_EMIT displayFrame();
        Q_EMIT positionChanged();
        setLastFrameDisplayTime(QDateTime::currentDateTime());
    }
    if (delaySeconds > 0.0)
        msleep(static_cast<unsigned long>(delaySeconds * kMsPerSecond));
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
    while (!shouldQuit()) {
        // Without the lock the pass has nothing to do and no sleep: the try itself has waited.
        if (d->controllerMutex.tryLock(kLockTimeoutMs) && !step())
            msleep(kIdleSleepMs);
    }
}

/// One pass of the loop, entered with the mutex held and left without it. False where there was
/// nothing to play.
bool VLVideoController::step()
{
    if (d->state == StatePaused) {
        if (d->needFrame && d->source->isFrameAvailable(d->position)) {
            // The first frame, wherever the position is: only looked at for being there. The item
            // fetches the one at the position.
            if (!d->source->getFrame(0).isNull())
                d->needFrame = false;
            presentFrame();
        }
    } else if (d->source->isFrameAvailable(d->position)) {
        d->needFrame = false;
        d->controllerMutex.unlock();
        presentFrame();
        return true;
    } else if (d->source->totalFrameCount() >= d->position) {
        pause();
    }
    d->controllerMutex.unlock();
    return false;
}

} // namespace Vidlets

#include "moc_VLVideoController.cpp"
