// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef ALLOCATIONCOUNTER_H
#define ALLOCATIONCOUNTER_H

#include <array>
#include <cstddef>
#include <map>

/**
 * What this process has allocated and not given back, to the byte.
 *
 * Counts what was asked for, not what the allocator made of it: its rounding depends on the gaps
 * that it finds. The source replaces malloc and its kin for the whole process.
 */
namespace AllocationCounter {

/// Larger blocks are counted all the same, but not by their size.
constexpr std::size_t kSizesCounted = 65536;

/// All that is allocated at a moment. Takes no memory by itself, which would be counted.
struct Snapshot
{
    long long bytes = 0;
    long long blocks = 0;
    std::array<int, kSizesCounted> blocksBySize{};
};

/// What was allocated and not given back between two moments.
struct Remains
{
    long long bytes = 0;
    long long blocks = 0;
    std::map<std::size_t, long long> blocksBySize;
};

long long liveBytesNow();
void take(Snapshot& snapshot);
Remains between(const Snapshot& before, const Snapshot& after);
/// Adds @p more to @p remains, as often as @p times says.
void add(Remains& remains, const Remains& more, long long times = 1);

/// What stays allocated after @p operation.
template <typename Operation> Remains leftBy(Operation operation)
{
    static Snapshot before;
    static Snapshot after;
    take(before);
    operation();
    take(after);
    return between(before, after);
}

} // namespace AllocationCounter

#endif
