// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// A media file, opened and decoded as the source thread does it, on this thread.
//
// The input is the file. Time and frames are bounded, and so is the room that the pictures take.
// The decoder libraries themselves are not instrumented: only the library's own use of them is.

#include "FuzzSupport.h"

// For the steps of the thread's loop, and for the records, the picture buffer and the scaler that
// stay behind by design.
#include "VLVideoSource.cpp"
#include "VLVideoSourceFFMPEG.cpp"

#include <QDeadlineTimer>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr qint64 kDeadlineMs = 2000;
constexpr quint64 kMaxFrames = 50;
// A header of a few bytes may announce pictures of a gigabyte, which only costs time.
constexpr size_t kMaxAllocationBytes = 48UL * 1024 * 1024;
constexpr double kMaxPictureBytes = 256.0 * 1024 * 1024;
constexpr double kBytesPerPixel = 4.0;

quint64 frameLimit(const VLVideoSourceFFMPEG& source)
{
    const double pictureBytes = source.frameWidth() * source.frameHeight() * kBytesPerPixel;
    return qBound<quint64>(1, static_cast<quint64>(kMaxPictureBytes / qMax(pictureBytes, 1.0)),
                           kMaxFrames);
}

void decode(VLVideoSourceFFMPEG& source)
{
    const QDeadlineTimer deadline(kDeadlineMs);
    const quint64 limit = frameLimit(source);
    while (source.d->decodeNextFrame()) {
        if (source.loadedFrameCount() >= limit || deadline.hasExpired())
            return;
    }
}

void checkFrames(VLVideoSourceFFMPEG& source)
{
    for (quint64 i = 0; i < source.loadedFrameCount(); ++i) {
        const VLVideoFrame frame = source.getFrame(static_cast<unsigned int>(i));
        const QSize size(static_cast<int>(source.frameWidth()),
                         static_cast<int>(source.frameHeight()));
        if (!frame.isNull() && frame.size() != size)
            qFatal("A frame has not the size of the clip");
        // Reads the pixels, so that a short picture is seen by the sanitizer.
        if (!frame.isNull() && qAlpha(frame.pixel(size.width() - 1, size.height() - 1)) != 0xFF)
            qFatal("A frame is not opaque");
    }
}

/// As for a tip in a host with all safeguards, but for confinement: the clip lies in no package.
VLClipSafeguards safeguardsOfHost()
{
    VLClipSafeguards safeguards;
    safeguards.release = true;
    safeguards.prompt = true;
    safeguards.guard = true;
    safeguards.memoryLimitBytes = qint64(256) * 1024 * 1024;
    return safeguards;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const FuzzDirectory directory;
    av_max_alloc(kMaxAllocationBytes);
    const QString path = directory.write(u"clip"_s, inputBytes(data, size));

    VLVideoSourcePrivate* base = nullptr;
    VLVideoSourceFFMPEGPrivate* record = nullptr;
    {
        VLVideoSourceFFMPEG source;
        base = source.VLVideoSource::d;
        record = source.d;
        if (isGuardedRun())
            base->setSafeguards(safeguardsOfHost(), nullptr);
        base->isReleased = isGuardedRun();
        source.changeSetSource(QUrl::fromLocalFile(path));
        if (source.loadSource())
            decode(source);
        checkFrames(source);
    }
    if (isGuardedRun())
        return 0;
    // What a source leaves behind.
    delete base;
    delete record;
    return 0;
}
