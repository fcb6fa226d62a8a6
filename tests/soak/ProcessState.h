// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef PROCESSSTATE_H
#define PROCESSSTATE_H

#include "AllocationCounter.h"

/// What the process holds at a moment. Large: not for the stack.
struct ProcessState
{
    /// Brings the state up to date.
    void take();

    AllocationCounter::Snapshot memory;
    /// Resident bytes, after what is free was given back to the system.
    long long resident = 0;
    /// The bytes in use by the reckoning of the C library: rounded, and with a header for each
    /// block that the counter adds.
    long long allocatorUse = 0;
    long long threads = 0;
    long long descriptors = 0;
    /// Of the whole display, which this process has to itself but for its window manager.
    long long windows = 0;
};

#endif
