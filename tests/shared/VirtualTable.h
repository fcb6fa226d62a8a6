// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VIRTUALTABLE_H
#define VIRTUALTABLE_H

#include <cstddef>
#include <cstring>

/**
 * The place of a virtual operation in the virtual table of its class, counted in slots.
 *
 * By the C++ ABI of this platform a pointer to a virtual member function holds its offset in the
 * table plus one.
 */
template <typename Function> std::ptrdiff_t virtualSlot(Function function)
{
    static_assert(sizeof(function) == 2 * sizeof(std::ptrdiff_t));
    std::ptrdiff_t value = 0;
    std::memcpy(&value, &function, sizeof(value));
    return (value - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

#endif
