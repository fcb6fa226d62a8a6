// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AllocationCounter.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the C library has reserved them, for itself.
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void __libc_free(void* block);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {

/// Stands before each block that is handed out.
struct Header
{
    void* base;
    size_t size;
};

constexpr size_t kHeaderBytes = sizeof(Header);
static_assert(kHeaderBytes == alignof(std::max_align_t));

std::atomic<long long> liveBytes{0};
std::atomic<long long> liveBlocks{0};
std::array<std::atomic<int>, AllocationCounter::kSizesCounted> liveBySize{};

Header* headerOf(void* block)
{
    return static_cast<Header*>(block) - 1;
}

void count(size_t size, int sign)
{
    liveBytes += sign * static_cast<long long>(size);
    liveBlocks += sign;
    if (size < AllocationCounter::kSizesCounted)
        liveBySize[size] += sign;
}

/// Makes a block of what the C library gave; @p alignment is 1 where it is right already.
void* handOut(void* base, size_t size, size_t alignment)
{
    if (!base)
        return nullptr;
    const auto address = reinterpret_cast<uintptr_t>(base) + kHeaderBytes;
    const uintptr_t padding = (alignment - address % alignment) % alignment;
    void* block = static_cast<char*>(base) + kHeaderBytes + padding;
    *headerOf(block) = {base, size};
    count(size, 1);
    return block;
}

void* allocateAligned(size_t alignment, size_t size)
{
    if (size > SIZE_MAX - alignment - kHeaderBytes) {
        errno = ENOMEM;
        return nullptr;
    }
    return handOut(__libc_malloc(size + alignment + kHeaderBytes), size, alignment);
}

} // namespace

extern "C" {

void* malloc(size_t size)
{
    return allocateAligned(1, size);
}

void* calloc(size_t number, size_t size)
{
    size_t total = 0;
    if (__builtin_mul_overflow(number, size, &total) || total > SIZE_MAX - kHeaderBytes) {
        errno = ENOMEM;
        return nullptr;
    }
    return handOut(__libc_calloc(1, total + kHeaderBytes), total, 1);
}

void free(void* block)
{
    if (!block)
        return;
    const Header header = *headerOf(block);
    count(header.size, -1);
    __libc_free(header.base);
}

void* realloc(void* block, size_t size)
{
    if (!block)
        return malloc(size);
    if (size == 0) {
        free(block);
        return nullptr;
    }
    void* larger = malloc(size);
    if (!larger)
        return nullptr;
    const size_t oldSize = headerOf(block)->size;
    std::memcpy(larger, block, oldSize < size ? oldSize : size);
    free(block);
    return larger;
}

void* memalign(size_t alignment, size_t size)
{
    return allocateAligned(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size)
{
    return allocateAligned(alignment, size);
}

int posix_memalign(void** block, size_t alignment, size_t size)
{
    const int oldError = errno;
    *block = allocateAligned(alignment, size);
    errno = oldError;
    return *block ? 0 : ENOMEM;
}

size_t malloc_usable_size(void* block)
{
    return block ? headerOf(block)->size : 0;
}

} // extern "C"

namespace AllocationCounter {

long long liveBytesNow()
{
    return liveBytes;
}

void take(Snapshot& snapshot)
{
    snapshot.bytes = liveBytes;
    snapshot.blocks = liveBlocks;
    for (std::size_t size = 0; size < kSizesCounted; ++size)
        snapshot.blocksBySize[size] = liveBySize[size];
}

Remains between(const Snapshot& before, const Snapshot& after)
{
    Remains remains{after.bytes - before.bytes, after.blocks - before.blocks, {}};
    for (std::size_t size = 0; size < kSizesCounted; ++size) {
        if (const int blocks = after.blocksBySize[size] - before.blocksBySize[size])
            remains.blocksBySize[size] = blocks;
    }
    return remains;
}

void add(Remains& remains, const Remains& more, long long times)
{
    remains.bytes += more.bytes * times;
    remains.blocks += more.blocks * times;
    for (const auto& [size, blocks] : more.blocksBySize)
        remains.blocksBySize[size] += blocks * times;
}

} // namespace AllocationCounter
