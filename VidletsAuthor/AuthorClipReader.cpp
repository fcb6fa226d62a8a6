// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorClipReader.h"

#include <Vidlets/VLClipSafeguards.h>
#include <Vidlets/VLContentGuard.h>

#include <QDeadlineTimer>
#include <QFile>
#include <QList>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr qint64 kPictureBytesPerPixel = 4;
/// As often as the library hands a packet to a decoder that has no room for it.
constexpr int kSendAttempts = 32;
constexpr int kMaxSidePx = 4096;
/// Some 20 seconds of 1280 x 720, far more than a tip can hold. A picture counts as this many at
/// least.
constexpr qint64 kMaxPixels = qint64(500) * 1000 * 1000;
constexpr qint64 kLeastPixels = 4096;
/// For files that keep the reader busy without giving pictures.
constexpr std::chrono::seconds kMaxTime(20);
constexpr int kReadBytes = 32 * 1024;

struct FormatDeleter
{
    void operator()(AVFormatContext* context) const
    {
        avformat_close_input(&context);
    }
};

struct InputDeleter
{
    void operator()(AVIOContext* context) const
    {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};

struct DecoderDeleter
{
    void operator()(AVCodecContext* context) const
    {
        avcodec_free_context(&context);
    }
};

struct PacketDeleter
{
    void operator()(AVPacket* packet) const
    {
        av_packet_free(&packet);
    }
};

struct PictureDeleter
{
    void operator()(AVFrame* picture) const
    {
        av_frame_free(&picture);
    }
};

struct DictionaryDeleter
{
    void operator()(AVDictionary* dictionary) const
    {
        av_dict_free(&dictionary);
    }
};

int readBytes(void* file, uint8_t* buffer, int size)
{
    const qint64 count = static_cast<QFile*>(file)->read(reinterpret_cast<char*>(buffer), size);
    return count > 0 ? static_cast<int>(count) : AVERROR_EOF;
}

int64_t seekTo(void* opaque, int64_t offset, int whence)
{
    auto* file = static_cast<QFile*>(opaque);
    if (whence == AVSEEK_SIZE)
        return file->size();
    if (whence == SEEK_CUR)
        offset += file->pos();
    else if (whence == SEEK_END)
        offset += file->size();
    return file->seek(offset) ? offset : -1;
}

/// Clips that refer to other files get none of them.
int refuseFile(AVFormatContext* /*context*/, AVIOContext** /*input*/, const char* /*url*/,
               int /*flags*/, AVDictionary** /*options*/)
{
    return AVERROR(EACCES);
}

int isOver(void* deadline)
{
    return static_cast<QDeadlineTimer*>(deadline)->hasExpired() ? 1 : 0;
}

QString codecName(AVCodecID id)
{
    switch (id) {
    case AV_CODEC_ID_H264:
        return u"H.264"_s;
    case AV_CODEC_ID_VP8:
        return u"VP8"_s;
    case AV_CODEC_ID_VP9:
        return u"VP9"_s;
    default:
        return QString::fromLatin1(avcodec_get_name(id));
    }
}

bool isUsual(AVCodecID id)
{
    return id == AV_CODEC_ID_H264 || id == AV_CODEC_ID_VP8 || id == AV_CODEC_ID_VP9;
}

/// One file on its way through the decoder.
class Reader
{
public:
    explicit Reader(const QString& path)
        : m_file(path)
    {
    }

    AuthorClip read()
    {
        if (!open())
            return m_clip;
        readProperties();
        const bool isPictureTooLarge = qMax(m_clip.size.width(), m_clip.size.height()) > kMaxSidePx;
        const bool isDecoding = !isPictureTooLarge && openDecoder();
        if (!isDecoding && !isPictureTooLarge && m_clip.isUsualCodec)
            m_clip.fault = u"its pictures cannot be decoded"_s;
        if (!m_clip.fault.isEmpty())
            return m_clip;
        readPackets();
        if (m_deadline.hasExpired())
            m_clip.fault = u"it takes too long to read"_s;
        else if (isDecoding)
            judge();
        return m_clip;
    }

private:
    bool open();
    bool openInput();
    bool openDecoder();
    void readProperties();
    void readPackets();
    void decode(const AVPacket* packet);
    qint64 takePictures();
    bool hasWorkLeft() const
    {
        return m_decoder && m_pixels < kMaxPixels;
    }
    void judge();
    bool isSteady();
    const AVStream* stream() const
    {
        return m_format->streams[m_stream];
    }

    QFile m_file;
    AuthorClip m_clip;
    QDeadlineTimer m_deadline{kMaxTime};
    std::unique_ptr<AVIOContext, InputDeleter> m_input;
    std::unique_ptr<AVFormatContext, FormatDeleter> m_format;
    std::unique_ptr<AVCodecContext, DecoderDeleter> m_decoder;
    std::unique_ptr<AVFrame, PictureDeleter> m_picture;
    const AVCodec* m_codec = nullptr;
    int m_stream = -1;
    /// The times of the pictures, in ticks of the stream.
    QList<qint64> m_times;
    bool m_areTimesKnown = true;
    qint64 m_pixels = 0;
    qint64 m_packets = 0;
    qint64 m_decodedPackets = 0;
};

bool Reader::open()
{
    if (!VLContentGuard::open(m_file)) {
        m_clip.fault = u"it is no regular file, or cannot be opened"_s;
        return false;
    }
    if (!openInput()) {
        m_clip.fault = u"it is no clip in a container that every host takes"_s;
        return false;
    }
    // Pictures are decoded in here, too.
    AVDictionary* limit = nullptr;
    av_dict_set_int(&limit, "max_pixels", qint64(kMaxSidePx) * kMaxSidePx, 0);
    const std::unique_ptr<AVDictionary, DictionaryDeleter> limitOwner(limit);
    std::vector<AVDictionary*> options(m_format->nb_streams, nullptr);
    for (AVDictionary*& option : options)
        av_dict_copy(&option, limit, 0);
    const bool isKnown = avformat_find_stream_info(m_format.get(), options.data()) >= 0;
    for (AVDictionary*& option : options)
        av_dict_free(&option);
    m_stream =
        isKnown ? av_find_best_stream(m_format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &m_codec, 0) : -1;
    // Without a decoder of its own there is still a stream to tell of.
    for (unsigned int i = 0; m_stream < 0 && i < m_format->nb_streams; ++i) {
        if (m_format->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
            m_stream = static_cast<int>(i);
    }
    if (m_stream < 0)
        m_clip.fault = u"there are no moving pictures in it"_s;
    return m_stream >= 0;
}

bool Reader::openInput()
{
    av_log_set_level(AV_LOG_QUIET);
    auto* buffer = static_cast<unsigned char*>(av_malloc(kReadBytes));
    m_input.reset(avio_alloc_context(buffer, kReadBytes, 0, &m_file, readBytes, nullptr, seekTo));
    AVFormatContext* context = avformat_alloc_context();
    if (!m_input || !context)
        return false;
    context->pb = m_input.get();
    context->interrupt_callback = {isOver, &m_deadline};
    context->io_open = refuseFile;
    context->protocol_whitelist = av_strdup(ClipSafeguards::protocols());
    context->format_whitelist = av_strdup(ClipSafeguards::containers());
    context->codec_whitelist = av_strdup(ClipSafeguards::codecs());
    // Releases the context where it fails.
    if (avformat_open_input(&context, m_file.fileName().toUtf8().constData(), nullptr, nullptr) < 0)
        return false;
    m_format.reset(context);
    return true;
}

bool Reader::openDecoder()
{
    m_decoder.reset(m_codec ? avcodec_alloc_context3(m_codec) : nullptr);
    m_picture.reset(av_frame_alloc());
    if (!m_decoder || !m_picture
        || avcodec_parameters_to_context(m_decoder.get(), stream()->codecpar) < 0) {
        m_decoder.reset();
        return false;
    }
    // More threads would withhold more pictures at the end of the clip.
    m_decoder->thread_count = 1;
    m_decoder->max_pixels = qint64(kMaxSidePx) * kMaxSidePx;
    m_decoder->codec_whitelist = av_strdup(ClipSafeguards::codecs());
    if (avcodec_open2(m_decoder.get(), m_codec, nullptr) < 0)
        m_decoder.reset();
    return m_decoder != nullptr;
}

void Reader::readProperties()
{
    for (unsigned int i = 0; i < m_format->nb_streams; ++i) {
        if (m_format->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            m_clip.hasSound = true;
    }
    const AVCodecParameters* parameters = stream()->codecpar;
    m_clip.codec = codecName(parameters->codec_id);
    m_clip.isUsualCodec = isUsual(parameters->codec_id);
    m_clip.size = QSize(parameters->width, parameters->height);
    const AVRational rate = stream()->r_frame_rate;
    m_clip.rate = rate.num > 0 && rate.den > 0 ? av_q2d(rate) : 0.0;
}

void Reader::readPackets()
{
    const std::unique_ptr<AVPacket, PacketDeleter> packet(av_packet_alloc());
    while (packet && av_read_frame(m_format.get(), packet.get()) >= 0 && !m_deadline.hasExpired()) {
        if (packet->stream_index == m_stream) {
            ++m_packets;
            if (hasWorkLeft())
                decode(packet.get());
        }
        av_packet_unref(packet.get());
    }
}

void Reader::decode(const AVPacket* packet)
{
    ++m_decodedPackets;
    for (int i = 0; i < kSendAttempts; ++i) {
        const int result = avcodec_send_packet(m_decoder.get(), packet);
        m_clip.pictures += takePictures();
        if (result == AVERROR(EAGAIN))
            continue;
        if (result < 0)
            ++m_clip.damaged;
        return;
    }
    ++m_clip.damaged;
}

qint64 Reader::takePictures()
{
    qint64 count = 0;
    while (avcodec_receive_frame(m_decoder.get(), m_picture.get()) >= 0) {
        ++count;
        m_pixels += qMax(kLeastPixels, qint64(m_picture->width) * m_picture->height);
        const qint64 time = m_picture->best_effort_timestamp;
        m_areTimesKnown = m_areTimesKnown && time != AV_NOPTS_VALUE;
        if (m_areTimesKnown)
            m_times.append(time);
    }
    return count;
}

/// With all read, what the decoder still holds are the pictures that the library does not ask for.
void Reader::judge()
{
    avcodec_send_packet(m_decoder.get(), nullptr);
    m_clip.lost = takePictures();
    m_clip.isSteady = isSteady();
    m_clip.pictures += m_packets - m_decodedPackets;
    if (m_clip.pictures + m_clip.lost == 0)
        m_clip.fault = u"none of its pictures can be decoded"_s;
}

/// Whether the pictures come at the rate that the file names, as far as its ticks can tell.
bool Reader::isSteady()
{
    const double tick = av_q2d(stream()->time_base);
    if (!m_areTimesKnown || m_times.size() < 2 || m_clip.rate <= 0.0 || tick <= 0.0)
        return true;
    std::sort(m_times.begin(), m_times.end());
    const double time = 1.0 / m_clip.rate;
    const auto count = static_cast<double>(m_times.size() - 1);
    const double mean =
        static_cast<double>(m_times.constLast() - m_times.constFirst()) * tick / count;
    constexpr double kRounding = 0.002;
    const double slack = std::min(std::max(1.01 * tick, kRounding), time / 3);
    if (std::abs(mean - time) * count > std::max(slack, 0.01 * time * count))
        return false;
    for (qsizetype i = 0; i < m_times.size(); ++i) {
        const double at = static_cast<double>(m_times.at(i) - m_times.constFirst()) * tick;
        if (std::abs(at - static_cast<double>(i) * mean) > slack)
            return false;
    }
    return true;
}

} // namespace

qint64 AuthorClip::memoryBytes() const
{
    return pictures * size.width() * size.height() * kPictureBytesPerPixel;
}

AuthorClip AuthorClipReader::read(const QString& path)
{
    return Reader(path).read();
}

} // namespace Vidlets
