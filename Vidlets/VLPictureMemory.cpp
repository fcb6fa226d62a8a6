// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLPictureMemory.h"

#ifdef Q_OS_UNIX
#include <sys/mman.h>
#endif

#include <algorithm>
#include <cstring>
#include <new>

namespace Vidlets::PictureMemory {

#ifdef Q_OS_UNIX

namespace {

/// Below that a mapping of its own is not worth its pages, and the heap keeps little.
constexpr qsizetype kMinMappedBytes = qsizetype(128) * 1024;
constexpr qsizetype kBytesPerPixel = 4;
/// What stays in the processor's cache between the conversion and the copy.
constexpr qsizetype kChunkBytes = qsizetype(64) * 1024;

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
    const qsizetype rowBytes = copy.bytesPerLine();
    const int rows = static_cast<int>(std::max(kChunkBytes / rowBytes, qsizetype(1)));
    for (int y = 0; y < picture.height(); y += rows) {
        const QImage chunk(picture.constScanLine(y), picture.width(),
                           std::min(rows, picture.height() - y), picture.bytesPerLine(),
                           picture.format());
        const QImage converted = chunk.convertToFormat(QImage::Format_RGB32);
        if (converted.isNull())
            return QImage();
        std::memcpy(copy.scanLine(y), converted.constBits(),
                    static_cast<size_t>(converted.sizeInBytes()));
    }
    return copy;
}

#else

QImage copyOf(const QImage& picture)
{
    return picture.convertToFormat(QImage::Format_RGB32);
}

#endif

} // namespace Vidlets::PictureMemory
