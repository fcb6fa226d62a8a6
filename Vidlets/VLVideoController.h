// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLVIDEOCONTROLLER_H
#define VLVIDEOCONTROLLER_H

#include "VLVideoFrame.h"
#include <Vidlets/VidletsExport.h>

#include <QDateTime>
#include <QThread>
#include <QUrl>

namespace Vidlets {

class VLVideoControllerPrivate;
class VLVideoSource;

/**
 * The clock of playback: a thread that walks a position over the frames of a source at the clip's
 * frame rate.
 *
 * Playing, pausing and seeking act on the position alone; the source goes on decoding regardless.
 * The position rises by exactly one a step and never skips: a busy item paints the newest frame and
 * misses those that the position passed meanwhile.
 *
 * Threads: the controller thread runs the loop and sends displayFrame(), positionChanged() and,
 * when it pauses by itself, stateChanged(). The object itself, with its slots, stays on the thread
 * that made it.
 *
 * Locks: the controller mutex guards the private record, but for the position, an atomic number:
 * position() reads it, and the step raises it, without the mutex. The mutex is taken before the
 * source's cache mutex or media mutex, and recursively. The loop waits for it for 100 milliseconds
 * at most.
 * play() may send positionChanged() with the mutex held: a slot that deletes the controller there
 * waits for the thread in vain.
 *
 * The thread ends by the quit flag: quit() before the object goes. The private record stays
 * allocated then. The object name is "Controller".
 */
class VIDLETS_EXPORT VLVideoController : public QThread
{
    Q_OBJECT

public:
    /// Whether the position walks.
    enum State {
        StatePaused = 0, ///< The position stands.
        StatePlaying = 1 ///< The position walks.
    };

    /// Makes a paused controller of @p source, which stays the caller's and outlives the thread;
    /// the owner starts the thread. @p parent may be null.
    explicit VLVideoController(VLVideoSource* source, QObject* parent = nullptr);
    /// Sets the quit flag, and waits for nothing.
    ~VLVideoController() override;

    /// Pauses, rewinds and has the source load @p url. Returns false where the source refuses it.
    bool setSource(const QUrl& url);
    /// Returns the source's current URL.
    QUrl source();
    /// Closes the source.
    void close();

    /// Plays; from the start where the position is at the end.
    void play();
    /// Pauses.
    void pause();
    /// Sets the state; the signal is sent also when it stays the same.
    void setState(State state);
    /// Returns the state.
    State state();

    /// Returns the index of the frame to be shown next.
    quint64 position();
    /// Moves to the frame @p position, or to the last one where there is no such frame. With no
    /// frames at all the position ends beyond any frame.
    void setPosition(quint64 position);
    /// Returns the position divided by the number of frames, or 0.0 where there are none.
    double progress();
    /// Moves to @p progress, from 0.0 for the first to 1.0 for the last frame. What lies outside,
    /// and what is not a number, leads to the last frame too; less than a frame below 0.0 is 0.0.
    void setProgress(double progress);
    /// Returns 1.0, or not a number while there are no frames: the loaded and the total count are
    /// the same.
    double loadProgress() const;
    /// Returns the number of frames.
    quint64 frameCount();
    /// Returns the source's frame width, in pixels.
    double frameWidth() const;
    /// Returns the source's frame height, in pixels.
    double frameHeight() const;

    /// Returns the frame at @p index, or a null one. Must not be called before the first source was
    /// set up.
    VLVideoFrame getFrame(quint64 index);
    /// Returns the frame at the position, or a null one, and notes that it was fetched. Must not be
    /// called before the first source was set up.
    VLVideoFrame currentFrame();

    /// Returns what setScrubbing() has set.
    bool isScrubbing() const;
    /// While @p scrubbing, the end of decoding does not pause. No signal is sent.
    void setScrubbing(bool scrubbing);
    /// Sets whether a frame must be shown although the position does not walk.
    void setNeedFrame(bool needFrame);
    /// Returns when the last frame was shown, or a null time before the first.
    QDateTime lastFrameDisplayTime() const;
    /// Sets when the last frame was shown.
    void setLastFrameDisplayTime(const QDateTime& time);

    /// Has the loop end.
    void setShouldQuit();
    /// Returns whether the loop is to end. Returns false also where the lock could not be had in
    /// 100 milliseconds.
    bool shouldQuit();
    /// Has the loop end and waits for it, for 10000 milliseconds, then terminates the thread and
    /// waits as long again.
    void quit();
    /// One step: shows the frame at the position if paused, else moves on by one and sleeps for a
    /// frame's time. For the loop.
    void presentFrame();

Q_SIGNALS:
    /// A frame is to be fetched by currentFrame() and shown.
    void displayFrame();
    /// The state was set.
    void stateChanged();
    /// The position was set, or has moved.
    void positionChanged();
    /// A new media was opened.
    void widthChanged();
    /// A new media was opened.
    void heightChanged();
    /// A new media was opened, or decoded to its end; also sent by each setSource().
    void loadProgressChanged();

public Q_SLOTS:
    /// The end of decoding, not of playing: pauses unless scrubbing, and nothing resumes it.
    void streamEnded();
    /// A new media was opened.
    void sourceLoaded();

protected:
    /// The loop of the thread, until the quit flag is set.
    void run() override;

private:
    friend class VLVideoControllerPrivate;
    Q_DISABLE_COPY_MOVE(VLVideoController)

    bool step();

    VLVideoControllerPrivate* const d;
};

} // namespace Vidlets

#endif
