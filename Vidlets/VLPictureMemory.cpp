// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLPictureMemory.h"

#include <QPainter>

#ifdef Q_OS_UNIX
#include <sys/mman.h>
#endif

#include <new>

namespace Vidlets::PictureMemory {

#ifdef Q_OS_UNIX

namespace {

/// Below that a mapping of its own is not worth its pages, and the heap keeps little.
constexpr qsizetype kMinMappedBytes = qsizetype(128) * 1024;
constexpr qsizetype kBytesPerPixel = 4;

/// Stands before the pixels, which thereby stay aligned for any instruction.
struct alignas(64) MappingHead
{
    size_t bytes;
};

void unmap(void* mapping)
{
    munmap(mapping, static_cast<MappingHead*>(mapping)->bytes);
}

QImage mappedImage(const QSize& size)
{
    const qsizetype rowBytes = size.width() * kBytesPerPixel;
    const auto bytes = static_cast<size_t>(rowBytes * size.height()) + sizeof(MappingHead);
    void* mapping =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED)
        return QImage();
    auto* head = new (mapping) MappingHead{bytes};
    return QImage(reinterpret_cast<uchar*>(head + 1), size.width(), size.height(), rowBytes,
                  QImage::Format_RGB32, unmap, mapping);
}

} // namespace

QImage copyOf(const QImage& picture)
{
    if (picture.width() * kBytesPerPixel * picture.height() < kMinMappedBytes)
        return picture.convertToFormat(QImage::Format_RGB32);
    QImage copy = mappedImage(picture.size());
    if (copy.isNull())
        return copy;
    QPainter painter(&copy);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(0, 0, picture);
    return copy;
}

#else

QImage copyOf(const QImage& picture)
{
    return picture.convertToFormat(QImage::Format_RGB32);
}

#endif

} // namespace Vidlets::PictureMemory
