// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLVIDEOFRAMECACHE_H
#define VLVIDEOFRAMECACHE_H

#include "VLVideoFrame.h"
#include <Vidlets/VidletsExport.h>

#include <QObject>
#include <QString>

#include <memory>

namespace Vidlets {

class VLVideoFrameCachePrivate;

/**
 * All frames of one clip in memory, in the order in which the decoder finished them.
 *
 * There is no limit and no eviction: a clip of N pictures of W by H pixels takes N * W * H * 4
 * bytes until the cache goes. The class locks nothing; VLVideoSource holds its cache mutex around
 * every call. Frames that were handed out stay valid after that.
 */
class VIDLETS_EXPORT VLVideoFrameCache : public QObject // clazy:exclude=missing-qobject-macro
{
    // Plain on purpose: nothing asks for a meta-object of this class.

public:
    /// Makes an empty cache without a parent. @p name is kept and read by nothing.
    explicit VLVideoFrameCache(const QString& name);
    ~VLVideoFrameCache() override;

    /// Appends a copy of @p frame.
    virtual void addFrame(const VLVideoFrame& frame);

    /// Returns the frame at @p index, or a null one beyond the last. Must not be called on an empty
    /// cache, which ends the process.
    virtual VLVideoFrame frame(quint64 index);

    /// Returns the number of frames.
    virtual quint64 length();

private:
    Q_DISABLE_COPY_MOVE(VLVideoFrameCache)

    const std::unique_ptr<VLVideoFrameCachePrivate> d;
};

} // namespace Vidlets

#endif
