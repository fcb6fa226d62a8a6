// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLVIDEOCONTROLLERPRIVATE_H
#define VLVIDEOCONTROLLERPRIVATE_H

#include "VLVideoController.h"
#include "VLWakeUp.h"

#include <QDateTime>
#include <QRecursiveMutex>

#include <atomic>
#include <memory>

// Not installed: the record of a controller, for the library's own classes.

namespace Vidlets {

class VLVideoSource;

class VLVideoControllerPrivate
{
public:
    static VLVideoControllerPrivate* of(VLVideoController* controller)
    {
        return controller->d;
    }

    /// Has the thread woken by whatever it goes by, frames included.
    void setPrompt(bool prompt);
    /// Whether there is a frame at @p index; where there is none, its coming wakes the thread.
    bool isFrameAvailable(quint64 index);
    /// Whether a clip that is whole has no frame from @p index on that would need its time. Only
    /// for a thread that is prompted.
    bool endsAt(quint64 index);
    /// What a pass of the thread is to do about the next frame.
    struct Presentation
    {
        bool isPlaying = false;
        bool isDue = false;
        bool isThere = false;
        quint64 position = 0;
        double delaySeconds = 0.0;
    };
    Presentation prepareFrame();
    void sleepBetweenFrames(unsigned long delayMs);

    /// Not owned; never replaced.
    VLVideoSource* source = nullptr;
    /// The frame that the item last fetched.
    quint64 shownPosition = 0;
    /// The frame that the item is to fetch next. Set under the mutex, but raised by the step and
    /// read by position() without it.
    std::atomic<quint64> position = 0;
    /// Guards everything here but source and, in part, position.
    QRecursiveMutex controllerMutex;
    bool shouldQuit = false;
    /// A frame must be shown although the position does not walk.
    bool needFrame = true;
    bool scrubbing = false;
    QDateTime lastFrameDisplayTime;
    VLVideoController::State state = VLVideoController::StatePaused;

    /// Shared with the source, which may be told of it for longer than the controller lives.
    const std::shared_ptr<VLWakeUp> wakeUp = std::make_shared<VLWakeUp>();
    /// The thread did not end by itself, and may have left anything half done.
    bool wasTerminated = false;
    /// The record goes with the controller. Set once its thread has ended.
    bool isReleased = false;
};

} // namespace Vidlets

#endif
