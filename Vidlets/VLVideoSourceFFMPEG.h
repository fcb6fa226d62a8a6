// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLVIDEOSOURCEFFMPEG_H
#define VLVIDEOSOURCEFFMPEG_H

#include "VLVideoSource.h"
#include <Vidlets/VidletsExport.h>

namespace Vidlets {

class VLVideoSourceFFMPEGPrivate;

/**
 * Decodes the video stream of a local media file into the cache, as fast as the machine allows.
 *
 * The clip is decoded once, from the first packet to the last; then everything that was opened is
 * closed, and the clip lives in the cache alone. Pictures are stamped by a running clock at the
 * frame rate, which goes on from one clip to the next. At the end of the file the decoder is not
 * drained, so a clip with reordered pictures lacks its last ones.
 *
 * A file that cannot be opened writes one debug line, sends nothing and leaves the cache empty. A
 * read error in mid-file is taken for the end of the file.
 *
 * Threads: the decoder belongs to the source thread; close() and the queries may come from any.
 * Locks: the media mutex guards all of the decoder. It is taken before the state mutex, and never
 * while the cache mutex is held or the other way round.
 *
 * The object name is "FFMPEG". What the class owns stays allocated when it goes: one picture buffer
 * and one scaler per load, the last picture, the private record, and the media if it is still open.
 */
class VIDLETS_EXPORT VLVideoSourceFFMPEG : public VLVideoSource
{
    Q_OBJECT

public:
    /// Makes a source with no media. Silences FFmpeg's own log for the process. On the
    /// user-interface thread; @p parent may be null.
    explicit VLVideoSourceFFMPEG(QObject* parent = nullptr);
    ~VLVideoSourceFFMPEG() override;

    /// Closes the media; a decoding thread goes idle at its next frame. The frames stay. On any
    /// thread.
    void close() override;
    /// Returns whether a media is open: from the load to the end of decoding or close().
    bool isOpen() override;
    /// Returns the wall clock, in seconds.
    double getTime() override;
    /// Seeks the decoder to the frame at @p frameIndex, or resets the clock with no media open.
    /// Nothing in the library asks for it.
    void changeSetPosition(quint64 frameIndex) override;
    /// Returns the length of the clip that was loaded last, in seconds; 0.0 before.
    double duration() override;
    /// Returns the seconds per tick of the codec of the clip that was loaded last; 0.0 before. The
    /// tick is what the codec's headers tell, which is half a frame's time for H.264 and MPEG-2. It
    /// is that of the stream where the headers know of no rate, as for VP8.
    double timeBase() override;
    /// Returns the frames per second of the clip that was loaded last; 0.0 before.
    double frameRate() override;
    /// Returns the width of the clip that was loaded last, in pixels; 200.0 before.
    double frameWidth() const override;
    /// Returns the height of the clip that was loaded last, in pixels; 150.0 before.
    double frameHeight() const override;
    /// Always returns 0.
    virtual quint64 position();
    /// Returns the stamp of the newest frame divided by the duration.
    virtual double progress();

protected:
    /// The loop of the thread, until the quit flag or ActionQuit is set.
    void run() override;
    /// Opens the current source and starts to decode it. Returns false where that failed.
    bool loadSource() override;

private:
    Q_DISABLE_COPY_MOVE(VLVideoSourceFFMPEG)

    VLVideoSourceFFMPEGPrivate* const d;
};

} // namespace Vidlets

#endif
