// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLHOSTSTATE_H
#define VLHOSTSTATE_H

#include "VLHostHooks.h"

namespace Vidlets {

/// What the host kit has set in a manager. Internal to the library.
struct VLHostState
{
    /// Empty where every key counts.
    VLHostHooks::KeyFilter keyFilter;
    /// Empty where nobody wants to know.
    VLHostHooks::TipWatcher tipWatcher;
    /// Whether a request by the keyboard is being dealt with.
    bool isCalling = false;
};

} // namespace Vidlets

#endif
