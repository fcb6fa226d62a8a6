// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVideoSourceFFMPEG.h"

#include "VLNumbers.h"
#include "VLPictureMemory.h"
#include "VLVideoSourcePrivate.h"

#include <QDebug>
#include <QMutexLocker>
#include <QRecursiveMutex>

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/time.h>
#include <libswscale/swscale.h>
}

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr double kDefaultWidthPx = 200.0;
constexpr double kDefaultHeightPx = 150.0;
constexpr double kMicrosecondsPerSecond = 1000000.0;
constexpr std::chrono::milliseconds kIdleSleep(100);
constexpr qint64 kPictureBytesPerPixel = 4;
// A decoder may refuse a packet until it has worked off the parts of the one before; VP9 packs up
// to eight. The bound keeps one that refuses for ever from hanging the thread.
constexpr int kSendAttempts = 32;
// The scaler works in blocks of pixels: it leaves the last columns unwritten where a row has no
// room for a whole block, and may write its last block past the end of the picture.
constexpr int kRowBlockPx = 16;
constexpr int kRowAlignment = 64;
constexpr size_t kScalerOverrunBytes = 256;
/// As many as the scaler asks about, used or not.
constexpr size_t kMostPlanes = 4;

std::atomic_bool ffmpegInitialised = false;

// Kept: shared by all sources, so a picture may get the stamp of another one's packet. That is
// harmless, as nothing reads the blocks it goes to.
std::atomic<int64_t> currentPacketPts = 0;

/**
 * The tick that the codec itself counts in, by what its headers say of it: half a frame's time
 * where a frame may be coded as two fields. A codec that says nothing counts in the ticks of the
 * stream.
 *
 * Up to FFmpeg 6.0 the context that found the stream's properties holds the tick; from 6.1 on it is
 * derived from the frame rate that the context found.
 */
AVRational codecTick(const AVStream* stream)
{
#if LIBAVCODEC_VERSION_INT < AV_VERSION_INT(60, 31, 0)
    const AVRational tick = av_stream_get_codec_timebase(stream);
    return tick.num > 0 && tick.den > 0 ? tick : stream->time_base;
#else
    const AVCodecParameters* parameters = stream->codecpar;
    const AVRational rate = parameters->framerate;
    const AVRational tick = rate.num > 0 && rate.den > 0 ? av_inv_q(rate) : stream->time_base;
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(parameters->codec_id);
    // MPEG-1 is marked for the sake of FFmpeg's parser, and knows no fields.
    const bool hasFields = descriptor && descriptor->props & AV_CODEC_PROP_FIELDS
        && parameters->codec_id != AV_CODEC_ID_MPEG1VIDEO;
    return hasFields ? av_mul_q(tick, AVRational{1, 2}) : tick;
#endif
}

struct PacketDeleter
{
    void operator()(AVPacket* packet) const
    {
        av_packet_free(&packet);
    }
};
using PacketPointer = std::unique_ptr<AVPacket, PacketDeleter>;

/// Attaches the stamp of the packet to the picture, in a block that goes with the picture.
int packetPtsGetBuffer(AVCodecContext* context, AVFrame* picture, int flags)
{
    const int result = avcodec_default_get_buffer2(context, picture, flags);
    if (result < 0)
        return result;
    av_buffer_unref(&picture->opaque_ref);
    const int64_t pts = currentPacketPts;
    picture->opaque_ref = av_buffer_alloc(sizeof(pts));
    if (picture->opaque_ref)
        std::memcpy(picture->opaque_ref->data, &pts, sizeof(pts));
    return result;
}

struct DictionaryDeleter
{
    void operator()(AVDictionary* dictionary) const
    {
        av_dict_free(&dictionary);
    }
};
using DictionaryPointer = std::unique_ptr<AVDictionary, DictionaryDeleter>;

qint64 pictureBytes(int width, int height)
{
    return qint64(width) * height * kPictureBytesPerPixel;
}

/// For FFmpeg, which asks while it waits for a file.
int isToldToStop(void* source)
{
    return static_cast<VLVideoSourcePrivate*>(source)->isToldToStop() ? 1 : 0;
}

void writePlainLine(const QString& text)
{
    qDebug("%s", qUtf8Printable(text));
}

} // namespace

class VLVideoSourceFFMPEGPrivate
{
public:
    explicit VLVideoSourceFFMPEGPrivate(VLVideoSourceFFMPEG* source)
        : owner(source)
    {
    }
    ~VLVideoSourceFFMPEGPrivate();

    bool openMedia();
    void closeMedia();
    void release();
    bool decodeNextFrame();
    void seek();

    VLVideoSourceFFMPEG* owner;
    QString fileName;
    /// Null means that no media is open.
    AVFormatContext* formatContext = nullptr;
    AVCodecContext* codecContext = nullptr;
    const AVCodec* codec = nullptr;
    /// The picture as decoded.
    AVFrame* frame = nullptr;
    /// The picture after conversion, its planes laid over buffer.
    AVFrame* frameRGB = nullptr;
    /// Keeps its value when the media is closed.
    AVStream* stream = nullptr;
    /// The picture that each decoded frame is written into; owned, and stays when the media is
    /// closed, so that the size is known on.
    VLVideoFrame* workingFrame = nullptr;
    uint8_t* buffer = nullptr;
    int videoStream = -1;
    SwsContext* swsContext = nullptr;
    /// In seconds; goes on from one clip to the next.
    double videoClock = 0.0;
    bool seekRequested = false;
    int64_t seekTarget = 0;
    double progress = 0.0;
    double duration = 0.0;
    double timeBase = 0.0;
    double frameRate = 0.0;
    int seekFlags = 0;
    bool endOfStream = false;
    /// The size that the clip was opened with; its pictures are brought to it.
    int clipWidth = 0;
    int clipHeight = 0;
    /// What swsContext was made for.
    int scalerWidth = 0;
    int scalerHeight = 0;
    int scalerFormat = AV_PIX_FMT_NONE;
    /// What the clip was opened under, and how many pictures it has given since. The source
    /// thread's own.
    VLClipSafeguards safeguards;
    qint64 pictureCount = 0;
    /// Guards everything above but owner against the queries and close(), which come from other
    /// threads. The source thread holds it while a file is opened, and for at most one packet after
    /// that. It goes without it for what it alone writes: it reads endOfStream, moves videoClock,
    /// and stamps and pushes workingFrame.
    QRecursiveMutex mediaMutex;
    /// The picture after conversion where released pictures have memory of their own, until it is
    /// delivered. The source thread's own.
    QImage ownPicture;

private:
    bool openStreams();
    void setUpFormatContext() const;
    bool findStreamInfo();
    bool openDecoder();
    bool openScaler();
    bool makeScaler(SwsContext* reusable, int width, int height, int format);
    void readStreamProperties();
    bool fail(const char* message) const;
    bool fits(int width, int height) const;
    bool refuse(int width, int height) const;
    bool refuseUnknownSize() const;
    bool refuseStreamsBeyondLimit() const;
    bool endAtLimit(QMutexLocker<QRecursiveMutex>& locker);
    void endAtLargePicture(int result, QMutexLocker<QRecursiveMutex>& locker);
    void cutOff(QMutexLocker<QRecursiveMutex>& locker);
    void releaseScaling();
    void warn(const QString& text) const;
    bool readPacket(AVPacket* packet, QMutexLocker<QRecursiveMutex>& locker);
    bool decodePacket(const AVPacket* packet, QMutexLocker<QRecursiveMutex>& locker);
    bool fetchPictures(QMutexLocker<QRecursiveMutex>& locker);
    bool convertPicture();
    bool deliverPicture(QMutexLocker<QRecursiveMutex>& locker);
    double synchronizeClock(int repeatCount, double stamp);
    AVPixelFormat scaledFormat() const;
    void scaleIntoPicture();
    QImage takeConvertedImage();
};

// Runs only where the safeguards ask for it: else the record stays allocated.
VLVideoSourceFFMPEGPrivate::~VLVideoSourceFFMPEGPrivate()
{
    delete workingFrame;
    closeMedia();
    releaseScaling();
}

void VLVideoSourceFFMPEGPrivate::releaseScaling()
{
    av_freep(&buffer);
    sws_freeContext(swsContext);
    swsContext = nullptr;
}

/// Lets go of what is left of a clip that no other follows, where the safeguards ask for it.
void VLVideoSourceFFMPEGPrivate::release()
{
    VLVideoSourcePrivate* record = VLVideoSourcePrivate::of(owner);
    if (!record->safeguards().release)
        return;
    record->makeCacheCurrent(QString());
    const QMutexLocker locker(&mediaMutex);
    releaseScaling();
}

bool VLVideoSourceFFMPEGPrivate::openMedia()
{
    closeMedia();
    safeguards = VLVideoSourcePrivate::of(owner)->safeguards();
    pictureCount = 0;
    QMutexLocker locker(&mediaMutex);
    if (safeguards.release)
        releaseScaling();
    if (!openStreams() || !openDecoder() || !openScaler()) {
        locker.unlock();
        closeMedia();
        return false;
    }
    readStreamProperties();
    return true;
}

bool VLVideoSourceFFMPEGPrivate::openStreams()
{
    formatContext = avformat_alloc_context();
    setUpFormatContext();
    const QByteArray path = fileName.toUtf8();
    if (avformat_open_input(&formatContext, path.constData(), nullptr, nullptr) < 0)
        return fail("Could not open media at: %1");
    if (refuseStreamsBeyondLimit())
        return false;
    if (!findStreamInfo())
        return fail("Could not find any stream information in media at: %1");
    videoStream = -1;
    videoStream = av_find_best_stream(formatContext, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (videoStream < 0)
        return fail("Could not find a video stream in %1");
    return true;
}

void VLVideoSourceFFMPEGPrivate::setUpFormatContext() const
{
    if (!formatContext)
        return;
    if (safeguards.prompt)
        formatContext->interrupt_callback = {isToldToStop, VLVideoSourcePrivate::of(owner)};
    if (!safeguards.confine)
        return;
    // FFmpeg goes by the bytes of a file and not by its name: a playlist would open other files.
    formatContext->protocol_whitelist = av_strdup(ClipSafeguards::protocols());
    formatContext->format_whitelist = av_strdup(ClipSafeguards::containers());
    formatContext->codec_whitelist = av_strdup(ClipSafeguards::codecs());
}

/// With a limit the pictures that are decoded to learn of the stream keep to it, too.
bool VLVideoSourceFFMPEGPrivate::findStreamInfo()
{
    if (safeguards.memoryLimitBytes <= 0)
        return avformat_find_stream_info(formatContext, nullptr) >= 0;
    AVDictionary* limit = nullptr;
    av_dict_set_int(&limit, "max_pixels", safeguards.memoryLimitBytes / kPictureBytesPerPixel, 0);
    const DictionaryPointer limitOwner(limit);
    std::vector<AVDictionary*> options(formatContext->nb_streams, nullptr);
    for (AVDictionary*& option : options)
        av_dict_copy(&option, limit, 0);
    const int result = avformat_find_stream_info(formatContext, options.data());
    for (AVDictionary*& option : options)
        av_dict_free(&option);
    return result >= 0;
}

bool VLVideoSourceFFMPEGPrivate::fits(int width, int height) const
{
    return safeguards.memoryLimitBytes <= 0
        || pictureBytes(width, height) <= safeguards.memoryLimitBytes;
}

/// Returns false, with a warning.
bool VLVideoSourceFFMPEGPrivate::refuse(int width, int height) const
{
    warn(u"The clip %1 was refused: one picture of %2x%3 pixels takes more than %4 bytes"_s.arg(
        fileName, QString::number(width), QString::number(height),
        QString::number(safeguards.memoryLimitBytes)));
    return false;
}

/// Where the size stands in the pictures, one that is too large is not even known.
bool VLVideoSourceFFMPEGPrivate::refuseUnknownSize() const
{
    warn(u"The clip %1 was refused: it has no picture that takes at most %2 bytes"_s.arg(
        fileName, QString::number(safeguards.memoryLimitBytes)));
    return false;
}

/// By what the header says, before anything is made for a picture. Returns whether there was one.
bool VLVideoSourceFFMPEGPrivate::refuseStreamsBeyondLimit() const
{
    for (unsigned int i = 0; i < formatContext->nb_streams; ++i) {
        const AVCodecParameters* parameters = formatContext->streams[i]->codecpar;
        if (parameters->codec_type != AVMEDIA_TYPE_VIDEO
            || fits(parameters->width, parameters->height))
            continue;
        refuse(parameters->width, parameters->height);
        return true;
    }
    return false;
}

/// Ends the clip before the picture that would exceed the limit. Returns false where there is room
/// for one more. Enters and leaves locked, and lets go of the lock to tell of it.
bool VLVideoSourceFFMPEGPrivate::endAtLimit(QMutexLocker<QRecursiveMutex>& locker)
{
    const qint64 limit = safeguards.memoryLimitBytes;
    if (limit <= 0 || (pictureCount + 1) * pictureBytes(clipWidth, clipHeight) <= limit)
        return false;
    cutOff(locker);
    return true;
}

/// Ends the clip where its pictures have become so large that the decoder does not make the one in
/// the packet of this @p result.
void VLVideoSourceFFMPEGPrivate::endAtLargePicture(int result,
                                                   QMutexLocker<QRecursiveMutex>& locker)
{
    // That is how a decoder says that it has not taken a size on.
    const bool isTooLarge = result < 0 && codecContext && codecContext->width == 0;
    if (isTooLarge && safeguards.memoryLimitBytes > 0)
        cutOff(locker);
}

/// Enters and leaves locked, and lets go of the lock to tell of it.
void VLVideoSourceFFMPEGPrivate::cutOff(QMutexLocker<QRecursiveMutex>& locker)
{
    endOfStream = true;
    closeMedia();
    locker.unlock();
    warn(u"The clip %1 was cut off: %2 pictures of %3x%4 pixels were kept, one more takes more "
         u"than %5 bytes"_s.arg(fileName, QString::number(pictureCount), QString::number(clipWidth),
                                QString::number(clipHeight),
                                QString::number(safeguards.memoryLimitBytes)));
    owner->notifyStreamEnded();
    locker.relock();
}

void VLVideoSourceFFMPEGPrivate::warn(const QString& text) const
{
    VLVideoSourcePrivate::of(owner)->addWarning(owner, fileName, text);
}

bool VLVideoSourceFFMPEGPrivate::openDecoder()
{
    const AVCodecParameters* parameters = formatContext->streams[videoStream]->codecpar;
    codecContext = avcodec_alloc_context3(codec);
    if (!codecContext || avcodec_parameters_to_context(codecContext, parameters) < 0)
        return fail("Could not open codec for stream in: %1");
    // More threads would withhold more pictures at the end of the clip.
    codecContext->thread_count = 1;
    if (safeguards.memoryLimitBytes > 0)
        codecContext->max_pixels = safeguards.memoryLimitBytes / kPictureBytesPerPixel;
    if (safeguards.confine)
        codecContext->codec_whitelist = av_strdup(ClipSafeguards::codecs());
    if (avcodec_open2(codecContext, codec, nullptr) < 0)
        return fail("Could not open codec for stream in: %1");

    frame = av_frame_alloc();
    if (!frame)
        return fail("Could not allocate original frame in %1");
    frameRGB = av_frame_alloc();
    if (!frameRGB)
        return fail("Could not allocate rgb frame in %1");
    return true;
}

bool VLVideoSourceFFMPEGPrivate::openScaler()
{
    clipWidth = codecContext->width;
    clipHeight = codecContext->height;
    if (!fits(clipWidth, clipHeight))
        return refuse(clipWidth, clipHeight);
    if (safeguards.memoryLimitBytes > 0 && pictureBytes(clipWidth, clipHeight) <= 0)
        return refuseUnknownSize();
    const int rowWidth = (clipWidth + kRowBlockPx - 1) / kRowBlockPx * kRowBlockPx;
    // Without a size there is no picture to scale to.
    const int bufferSize =
        av_image_get_buffer_size(scaledFormat(), rowWidth, clipHeight, kRowAlignment);
    if (bufferSize <= 0)
        return fail("Could not get a swscale context for %1");

    // The buffer and the scaler of the load before are left behind, not released.
    buffer =
        static_cast<uint8_t*>(av_malloc(static_cast<size_t>(bufferSize) + kScalerOverrunBytes));
    if (!buffer)
        return fail("Could not get a swscale context for %1");
    av_image_fill_arrays(frameRGB->data, frameRGB->linesize, buffer, scaledFormat(), rowWidth,
                         clipHeight, kRowAlignment);
    if (!makeScaler(nullptr, clipWidth, clipHeight, codecContext->pix_fmt))
        return fail("Could not get a swscale context for %1");
    return true;
}

/// What pictures are scaled to.
AVPixelFormat VLVideoSourceFFMPEGPrivate::scaledFormat() const
{
    return safeguards.release ? AV_PIX_FMT_0RGB32 : AV_PIX_FMT_RGB24;
}

/// Makes the scaler from pictures of that size and format to the size of the clip.
bool VLVideoSourceFFMPEGPrivate::makeScaler(SwsContext* reusable, int width, int height, int format)
{
    // The scaler ends the process on a format that it does not know.
    const auto sourceFormat = static_cast<AVPixelFormat>(format);
    if (!av_pix_fmt_desc_get(sourceFormat) || !sws_isSupportedInput(sourceFormat))
        return false;
    swsContext = sws_getCachedContext(reusable, width, height, sourceFormat, clipWidth, clipHeight,
                                      scaledFormat(), SWS_BICUBIC, nullptr, nullptr, nullptr);
    // A failure has released the scaler before: then no picture fits.
    scalerWidth = swsContext ? width : 0;
    scalerHeight = swsContext ? height : 0;
    scalerFormat = swsContext ? format : AV_PIX_FMT_NONE;
    return swsContext != nullptr;
}

void VLVideoSourceFFMPEGPrivate::readStreamProperties()
{
    stream = formatContext->streams[videoStream];
    codecContext->get_buffer2 = packetPtsGetBuffer;
    delete workingFrame;
    workingFrame =
        new VLVideoFrame(codecContext->width, codecContext->height, QImage::Format_RGB32, 0);
    duration = av_q2d(stream->time_base) * static_cast<double>(stream->duration);
    timeBase = av_q2d(codecTick(stream));
    frameRate = av_q2d(stream->r_frame_rate);
    // The clock and the progress are not reset: the stamps go on from the clip before.
    endOfStream = false;
}

bool VLVideoSourceFFMPEGPrivate::fail(const char* message) const
{
    // A clip that was told to stop has not failed.
    if (VLVideoSourcePrivate::of(owner)->isToldToStop())
        return false;
    const QString text = QString::fromLatin1(message).arg(fileName);
    writePlainLine(text);
    if (safeguards.guard || safeguards.confine)
        warn(text);
    return false;
}

void VLVideoSourceFFMPEGPrivate::closeMedia()
{
    const QMutexLocker locker(&mediaMutex);
    av_frame_free(&frameRGB);
    av_frame_free(&frame);
    avcodec_free_context(&codecContext);
    codec = nullptr;
    avformat_close_input(&formatContext);
}

bool VLVideoSourceFFMPEGPrivate::decodeNextFrame()
{
    const PacketPointer packet(av_packet_alloc());
    for (;;) {
        QMutexLocker locker(&mediaMutex);
        if (!formatContext) {
            if (owner->action() != VLVideoSource::ActionIdle)
                owner->setAction(VLVideoSource::ActionIdle);
            return false;
        }
        if (endOfStream || !readPacket(packet.get(), locker))
            continue;
        const bool finished = decodePacket(packet.get(), locker);
        locker.unlock();
        av_packet_unref(packet.get());
        if (finished && !endOfStream)
            return true;
    }
}

/// Reads one packet. Enters locked; leaves locked where it returns true. Otherwise the file has
/// ended: closes the media, leaves unlocked, and tells of it.
bool VLVideoSourceFFMPEGPrivate::readPacket(AVPacket* packet, QMutexLocker<QRecursiveMutex>& locker)
{
    if (av_read_frame(formatContext, packet) >= 0)
        return true;
    // Any read error ends the clip; the decoder is not drained.
    av_seek_frame(formatContext, videoStream, 0, AVSEEK_FLAG_BYTE);
    endOfStream = true;
    closeMedia();
    locker.unlock();
    owner->notifyStreamEnded();
    return false;
}

/// Decodes one packet and delivers the pictures that it finishes. Returns whether there were any.
/// Enters and leaves locked, and lets go of the lock on the way.
bool VLVideoSourceFFMPEGPrivate::decodePacket(const AVPacket* packet,
                                              QMutexLocker<QRecursiveMutex>& locker)
{
    currentPacketPts = packet->pts;
    if (packet->stream_index != videoStream)
        return false;

    bool finished = false;
    // The media may be gone after each delivery.
    for (int i = 0; i < kSendAttempts && codecContext; ++i) {
        const int result = avcodec_send_packet(codecContext, packet);
        // Whatever the result: a decoder may have pictures in spite of an error.
        finished = fetchPictures(locker) || finished;
        endAtLargePicture(result, locker);
        if (result != AVERROR(EAGAIN))
            break;
    }
    return finished;
}

/// Delivers the pictures that the decoder has finished. Returns whether there were any. Enters and
/// leaves locked, and lets go of the lock at each.
bool VLVideoSourceFFMPEGPrivate::fetchPictures(QMutexLocker<QRecursiveMutex>& locker)
{
    bool finished = false;
    while (codecContext && avcodec_receive_frame(codecContext, frame) >= 0) {
        if (endAtLimit(locker))
            break;
        if (convertPicture())
            finished = deliverPicture(locker) || finished;
    }
    return finished;
}

bool VLVideoSourceFFMPEGPrivate::convertPicture()
{
    // A stream may change its size or format half-way.
    const bool fits = frame->width == scalerWidth && frame->height == scalerHeight
        && frame->format == scalerFormat;
    if (!fits && !makeScaler(swsContext, frame->width, frame->height, frame->format))
        return false;
    if (safeguards.release)
        scaleIntoPicture();
    else
        sws_scale(swsContext, frame->data, frame->linesize, 0, frame->height, frameRGB->data,
                  frameRGB->linesize);
    return true;
}

/// Saves the way over the buffer, of whose rows only the length counts here.
void VLVideoSourceFFMPEGPrivate::scaleIntoPicture()
{
    ownPicture = PictureMemory::picture(QSize(clipWidth, clipHeight), frameRGB->linesize[0],
                                        kScalerOverrunBytes);
    if (ownPicture.isNull())
        return;
    const std::array<uint8_t*, kMostPlanes> planes = {ownPicture.bits()};
    const std::array<int, kMostPlanes> rowBytes = {static_cast<int>(ownPicture.bytesPerLine())};
    sws_scale(swsContext, frame->data, frame->linesize, 0, frame->height, planes.data(),
              rowBytes.data());
}

/// Stamps the converted picture and puts it into the cache. Returns false where the media was
/// closed meanwhile. Enters and leaves locked, and lets go of the lock for the clock and for the
/// cache.
bool VLVideoSourceFFMPEGPrivate::deliverPicture(QMutexLocker<QRecursiveMutex>& locker)
{
    // Of the converted picture, where it is never set.
    const int repeatCount = frameRGB->repeat_pict;
    locker.unlock();
    const double stamp = synchronizeClock(repeatCount, 0.0);
    locker.relock();
    if (!frameRGB) {
        ownPicture = QImage();
        return false;
    }
    // An image of its own each time: the one before shares its pixels with the cache.
    *workingFrame = VLVideoFrame(takeConvertedImage(), 0);
    progress = stamp / duration;
    locker.unlock();

    // The cache has a mutex of its own, which is never taken with the media's held.
    workingFrame->setPts(stamp);
    owner->pushFrame(*workingFrame);
    ++pictureCount;
    locker.relock();
    return true;
}

/**
 * Stamps a picture: always by the running clock, since the stamp offered is always 0.0. Timing in
 * the file plays no part.
 */
double VLVideoSourceFFMPEGPrivate::synchronizeClock(int repeatCount, double stamp)
{
    if (stamp != 0.0)
        videoClock = stamp;
    else
        stamp = videoClock;
    const double delay = 1.0 / frameRate;
    videoClock = repeatCount * delay * 0.5 + delay + stamp;
    return stamp;
}

void VLVideoSourceFFMPEGPrivate::seek()
{
    QMutexLocker locker(&mediaMutex);
    if (formatContext) {
        av_seek_frame(formatContext, videoStream, seekTarget, seekFlags);
        seekRequested = false;
        return;
    }
    locker.unlock();
    owner->setAction(VLVideoSource::ActionIdle);
}

/// Returns the converted picture as an image with pixels of its own; a null one where there is no
/// memory for it.
QImage VLVideoSourceFFMPEGPrivate::takeConvertedImage()
{
    if (safeguards.release)
        return std::exchange(ownPicture, QImage());
    const QImage picture(frameRGB->data[0], clipWidth, clipHeight, frameRGB->linesize[0],
                         QImage::Format_RGB888);
    return picture.convertToFormat(QImage::Format_RGB32);
}

VLVideoSourceFFMPEG::VLVideoSourceFFMPEG(QObject* parent)
    : VLVideoSource(parent)
    , d(new VLVideoSourceFFMPEGPrivate(this))
{
    setObjectName(u"FFMPEG"_s);
    if (!ffmpegInitialised.exchange(true))
        av_log_set_level(AV_LOG_QUIET);
}

VLVideoSourceFFMPEG::~VLVideoSourceFFMPEG()
{
    // Else the base stops the thread; the media is not closed, and the record stays.
    if (VLVideoSourcePrivate::of(this)->isReleased)
        delete d;
}

void VLVideoSourceFFMPEG::close()
{
    d->closeMedia();
    VLVideoSource::close();
}

bool VLVideoSourceFFMPEG::isOpen()
{
    const QMutexLocker locker(&d->mediaMutex);
    return d->formatContext != nullptr;
}

double VLVideoSourceFFMPEG::getTime()
{
    return static_cast<double>(av_gettime()) / kMicrosecondsPerSecond;
}

void VLVideoSourceFFMPEG::changeSetPosition(quint64 frameIndex)
{
    {
        const QMutexLocker locker(&d->mediaMutex);
        if (d->stream && d->formatContext) {
            const double oldClock = d->videoClock;
            d->videoClock = static_cast<double>(frameIndex) / frameRate();
            const quint64 target = truncatedToUInt64(d->videoClock / av_q2d(d->stream->time_base));
            av_seek_frame(d->formatContext, d->videoStream, static_cast<int64_t>(target),
                          oldClock > d->videoClock ? AVSEEK_FLAG_BACKWARD : 0);
            avcodec_flush_buffers(d->codecContext);
            d->endOfStream = false;
        } else {
            d->videoClock = 0.0;
            d->progress = 0.0;
        }
    }
    Q_EMIT positionChanged();
}

double VLVideoSourceFFMPEG::duration()
{
    const QMutexLocker locker(&d->mediaMutex);
    return d->duration;
}

double VLVideoSourceFFMPEG::timeBase()
{
    const QMutexLocker locker(&d->mediaMutex);
    return d->timeBase;
}

double VLVideoSourceFFMPEG::frameRate()
{
    const QMutexLocker locker(&d->mediaMutex);
    return d->frameRate;
}

double VLVideoSourceFFMPEG::frameWidth() const
{
    const QMutexLocker locker(&d->mediaMutex);
    return d->workingFrame ? d->workingFrame->width() : kDefaultWidthPx;
}

double VLVideoSourceFFMPEG::frameHeight() const
{
    const QMutexLocker locker(&d->mediaMutex);
    return d->workingFrame ? d->workingFrame->height() : kDefaultHeightPx;
}

quint64 VLVideoSourceFFMPEG::position()
{
    return 0;
}

double VLVideoSourceFFMPEG::progress()
{
    const QMutexLocker locker(&d->mediaMutex);
    return d->progress;
}

void VLVideoSourceFFMPEG::run()
{
    // The action is a standing order: it is repeated on each pass until a record changes it.
    VLVideoSourcePrivate* record = VLVideoSourcePrivate::of(this);
    for (record->wakeUp.beginPass(); !shouldQuit(); record->wakeUp.beginPass()) {
        processActionQueue();
        switch (action()) {
        case ActionQuit:
            return;
        case ActionLoad:
            loadSource();
            break;
        case ActionClose:
            close();
            setAction(ActionIdle);
            break;
        case ActionSeek:
            d->seek();
            break;
        case ActionDecode:
            if (!d->decodeNextFrame())
                setAction(ActionIdle);
            break;
        case ActionIdle:
            // Kept: by default each record waits for the sleep before it.
            if (!record->wakeUp.isPrompt() || record->isQueueEmpty())
                record->wakeUp.idle(kIdleSleep);
            break;
        case ActionNone:
            break;
        }
    }
}

bool VLVideoSourceFFMPEG::loadSource()
{
    const QUrl url = source();
    if (url.isEmpty()) {
        {
            const QMutexLocker locker(&d->mediaMutex);
            d->fileName.clear();
        }
        setAction(ActionIdle);
        close();
        d->release();
        return false;
    }

    setupSource();
    {
        const QMutexLocker locker(&d->mediaMutex);
        d->fileName = url.toLocalFile();
    }
    if (!d->openMedia()) {
        setAction(ActionIdle);
        return false;
    }
    VLVideoSource::loadSource();
    setAction(ActionDecode);
    return true;
}

} // namespace Vidlets

#include "moc_VLVideoSourceFFMPEG.cpp"
