// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLVIDEOSOURCE_H
#define VLVIDEOSOURCE_H

#include "VLVideoFrame.h"
#include <Vidlets/VidletsExport.h>

#include <QThread>
#include <QUrl>

namespace Vidlets {

class VLVideoSourcePrivate;

/**
 * A thread that produces the frames of a clip into a cache.
 *
 * Threads: other threads leave the decoding alone. They append a change record to a queue, which
 * the source thread carries out at the top of a later pass of its loop, one record a pass. It
 * sleeps in steps of 100 milliseconds when idle, and polls; there is no condition variable.
 *
 * Locks: the state mutex guards the source URL, the quit flag, the action and the queue; the cache
 * mutex guards the pointer to the cache and every call on it. They are never held both at once, and
 * code that holds the cache mutex calls nothing outside. The state mutex is held for short moments;
 * the cache mutex also while the frames of the clip before are deleted, which takes longer the more
 * there are. setSource() appends to the queue under the state mutex, setAction() without any lock.
 *
 * The thread ends by the quit flag: quit() before the object goes, while the derived class is still
 * whole. The private record, the queue and the cache stay allocated then.
 */
class VIDLETS_EXPORT VLVideoSource : public QThread
{
    Q_OBJECT

public:
    /// What the source thread does on each pass, until a change record sets another action.
    enum Action {
        ActionNone = -1,  ///< Keep the current action.
        ActionQuit = 0,   ///< Leave the loop.
        ActionLoad = 1,   ///< Load the current source.
        ActionClose = 2,  ///< Close the open media, then go idle.
        ActionSeek = 3,   ///< Seek to a stored target.
        ActionDecode = 4, ///< Decode one more frame.
        ActionIdle = 5    ///< Sleep.
    };

    /// Makes a source without a URL; the owner starts the thread. @p parent may be null.
    explicit VLVideoSource(QObject* parent = nullptr);
    /// Stops the thread, and leaves the private record, the queue and the cache allocated.
    ~VLVideoSource() override;

    /// Passes an empty URL to setSource(), which refuses it: closing is the derived class's work.
    virtual void close();
    /// Returns whether a media is open.
    virtual bool isOpen() = 0;
    /// Returns the wall clock, in seconds.
    virtual double getTime() = 0;
    /// Makes @p action the current one, unless it is ActionNone. For change records.
    virtual void changeSetAction(Action action);
    /// Seeks to the frame at @p position. For change records.
    virtual void changeSetPosition(quint64 position) = 0;
    /// Makes @p source the current URL, without a signal. For change records.
    virtual void changeSetSource(const QUrl& source);
    /// Returns the length of the clip, in seconds.
    virtual double duration() = 0;
    /// Returns the seconds per tick of the codec.
    virtual double timeBase() = 0;
    /// Returns the frames per second.
    virtual double frameRate() = 0;
    /// Returns the width of the pictures, in pixels.
    virtual double frameWidth() const = 0;
    /// Returns the height of the pictures, in pixels.
    virtual double frameHeight() const = 0;

    /**
     * Asks the source thread to load @p url. On any thread: the URLs are compared and the change
     * record is appended under the state mutex. The records of setAction() are appended without it,
     * and all are carried out in the order in which they came.
     *
     * The current URL changes later, when the source thread gets to it.
     *
     * @return True where the change was queued. False, with nothing changed, where @p url is
     * invalid or the current one.
     */
    bool setSource(const QUrl& url);
    /// Returns the current URL. On any thread.
    QUrl source();
    /// Returns the current action. On any thread.
    Action action();
    /// Appends a change of the action. On the source thread alone: it takes no lock.
    void setAction(Action action);
    /// Drops all changes that have not been carried out. On any thread.
    void clearChanges();
    /// Puts a fresh cache in place and has the thread decode into it. On the source thread.
    void setupSource();

    /// Returns the frame at @p index, or a null one beyond the last. On any thread, but not before
    /// the first source was set up.
    VLVideoFrame getFrame(unsigned int index);
    /// Appends @p frame to the cache. On the source thread, not before the first source was set up.
    void pushFrame(const VLVideoFrame& frame);
    /// Returns whether there is a frame at @p index. On any thread.
    bool isFrameAvailable(quint64 index);
    /// Returns the number of frames decoded so far. On any thread.
    quint64 loadedFrameCount();
    /// Returns the same as loadedFrameCount(), as nobody knows ahead of decoding how many frames
    /// there will be. On any thread.
    quint64 totalFrameCount();

    /// Sends streamEnded().
    void notifyStreamEnded();
    /// Has the loop end. On any thread.
    void setShouldQuit();
    /// Returns whether the loop is to end. On any thread.
    bool shouldQuit();
    /// Has the loop end and waits for it, for 10000 milliseconds, then terminates the thread and
    /// waits as long again. On any thread but the source's.
    void quit();

Q_SIGNALS:
    /// Never sent.
    void frameReady();
    /// A new source was set up, with an empty cache.
    void sourceChanged();
    /// The clip was decoded to its end.
    void streamEnded();
    /// The media was opened, and its size is known.
    void sourceLoaded();
    /// The current action was set.
    void actionChanged();
    /// The decoder was asked for another position.
    void positionChanged();
    /// Never sent.
    void loadProgressChanged();

protected:
    /// Ends a load: sends sourceLoaded(). Always returns true.
    virtual bool loadSource();

    /// Carries out the oldest change record, if there is one. At the top of each pass of the loop.
    void processActionQueue();

private:
    friend class VLVideoSourcePrivate;
    Q_DISABLE_COPY_MOVE(VLVideoSource)

    VLVideoSourcePrivate* const d;
};

/// A change that waits for the source thread: sets the action.
struct VLVideoSourceChange
{
    /// Makes a change to @p newAction.
    explicit VLVideoSourceChange(VLVideoSource::Action newAction)
        : action(newAction)
    {
    }
    virtual ~VLVideoSourceChange() = default;

    /// Returns what the record sets, as a sum: 1 for the action, 2 for the source. Nothing reads
    /// it.
    virtual int changeMask()
    {
        return 1;
    }
    /// Carries the change out on @p source.
    virtual void apply(VLVideoSource* source)
    {
        source->changeSetAction(action);
    }

    /// The action to be set.
    VLVideoSource::Action action;

    Q_DISABLE_COPY_MOVE(VLVideoSourceChange)
};

} // namespace Vidlets

/// A change that waits for the source thread: sets the source, then the action. In the global
/// namespace, and stays there.
struct VLVideoSourceSourceChange : public Vidlets::VLVideoSourceChange
{
    /// Makes a change to @p newUrl, then to @p newAction.
    VLVideoSourceSourceChange(Vidlets::VLVideoSource::Action newAction, const QUrl& newUrl)
        : VLVideoSourceChange(newAction)
        , url(newUrl)
    {
    }

    int changeMask() override
    {
        return 3;
    }
    void apply(Vidlets::VLVideoSource* source) override
    {
        source->changeSetSource(url);
        source->changeSetAction(action);
    }

    /// The source to be set.
    QUrl url;
};

#endif
