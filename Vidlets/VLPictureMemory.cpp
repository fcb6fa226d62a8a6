// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLPictureMemory.h"

#ifdef Q_OS_UNIX
#include <sys/mman.h>
#endif

#include <cstdlib>
#include <new>

namespace Vidlets::PictureMemory {

#ifdef Q_OS_UNIX

namespace {

/// Below that a mapping of its own is not worth its pages, of which a process has a limited number,
/// and the heap keeps little.
constexpr size_t kMinMappedBytes = size_t(128) * 1024;

/// All pages of a picture are written to, and a fault for each takes a good part of the time that
/// decoding it does.
#ifdef MAP_POPULATE
constexpr int kAtOnce = MAP_POPULATE;
#else
constexpr int kAtOnce = 0;
#endif

/// Stands before the pixels, which thereby stay aligned for any instruction.
struct alignas(64) MappingHead
{
    size_t bytes;
};

/// Returns null where there is no memory.
uchar* mapped(size_t bytes)
{
    bytes += sizeof(MappingHead);
    void* mapping =
        mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | kAtOnce, -1, 0);
    if (mapping == MAP_FAILED)
        return nullptr;
    return reinterpret_cast<uchar*>(new (mapping) MappingHead{bytes} + 1);
}

void unmap(void* pixels)
{
    auto* head = static_cast<MappingHead*>(pixels) - 1;
    munmap(head, head->bytes);
}

} // namespace

#endif

QImage picture(const QSize& size, qsizetype bytesPerLine, qsizetype spareBytes)
{
    const auto bytes = static_cast<size_t>(bytesPerLine * size.height() + spareBytes);
    uchar* pixels = nullptr;
    QImageCleanupFunction release = std::free;
#ifdef Q_OS_UNIX
    if (bytes >= kMinMappedBytes) {
        pixels = mapped(bytes);
        release = unmap;
    }
#endif
    if (release == std::free)
        pixels = static_cast<uchar*>(std::malloc(bytes));
    if (!pixels)
        return QImage();
    return QImage(pixels, size.width(), size.height(), bytesPerLine, QImage::Format_RGB32, release,
                  pixels);
}

} // namespace Vidlets::PictureMemory
