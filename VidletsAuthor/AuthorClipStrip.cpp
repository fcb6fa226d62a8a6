// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorClipStrip.h"

#include <Vidlets/VLVideoSourceFFMPEG.h>

#include <QDeadlineTimer>
#include <QPainter>
#include <QThread>
#include <QUrl>

#include <algorithm>

namespace Vidlets {

namespace {

constexpr int kPictures = 6;
constexpr int kPictureHeightPx = 72;
constexpr int kGapPx = 2;
constexpr int kTimeoutMs = 20000;
constexpr qint64 kMaxBytes = qint64(256) * 1024 * 1024;
constexpr qint64 kBytesPerPixel = 4;

qint64 bytesOf(VLVideoSource& source)
{
    return static_cast<qint64>(source.loadedFrameCount()) * kBytesPerPixel
        * static_cast<qint64>(source.frameWidth()) * static_cast<qint64>(source.frameHeight());
}

/// Returns whether the clip was opened.
bool decode(VLVideoSourceFFMPEG& source, const QUrl& url)
{
    if (!source.setSource(url))
        return false;
    const QDeadlineTimer deadline(kTimeoutMs);
    // It takes the address over first, and what to do with it just after that.
    int idlePasses = 0;
    constexpr int kSureIdlePasses = 5;
    while (idlePasses < kSureIdlePasses && !deadline.hasExpired()) {
        const bool isDone = source.source() == url && source.action() == VLVideoSource::ActionIdle;
        idlePasses = isDone ? idlePasses + 1 : 0;
        if (isDone || bytesOf(source) <= kMaxBytes) {
            QThread::msleep(1);
            continue;
        }
        source.close();
        break;
    }
    return source.source() == url && source.loadedFrameCount() > 0;
}

QImage strip(const QList<QImage>& pictures)
{
    int width = -kGapPx;
    for (const QImage& picture : pictures)
        width += picture.width() + kGapPx;
    QImage image(std::max(1, width), kPictureHeightPx, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    int x = 0;
    for (const QImage& picture : pictures) {
        painter.drawImage(x, 0, picture);
        x += picture.width() + kGapPx;
    }
    return image;
}

} // namespace

AuthorClipStrip AuthorClipStrip::of(const QString& path)
{
    AuthorClipStrip result;
    VLVideoSourceFFMPEG source;
    source.start();
    if (decode(source, QUrl::fromLocalFile(path))) {
        result.frames = static_cast<int>(source.loadedFrameCount());
        result.frameRate = source.frameRate();
        const int count = std::min(kPictures, result.frames);
        QList<QImage> pictures;
        for (int i = 0; i < count; ++i) {
            const int number = count == 1 ? 0 : i * (result.frames - 1) / (count - 1);
            const QImage picture = source.getFrame(static_cast<unsigned int>(number));
            result.frameSize = picture.size();
            pictures.append(picture.scaledToHeight(kPictureHeightPx, Qt::SmoothTransformation));
        }
        result.image = strip(pictures);
    }
    source.quit();
    return result;
}

} // namespace Vidlets
