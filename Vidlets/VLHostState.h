// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLHOSTSTATE_H
#define VLHOSTSTATE_H

#include "VLHostHooks.h"

#include <QStringList>

namespace Vidlets {

/// What helpers of a host have set in a manager. Internal to the library.
struct VLHostState
{
    /// Empty where every key counts.
    VLHostHooks::KeyFilter keyFilter;
    /// Empty where nobody wants to know.
    VLHostHooks::TipWatcher tipWatcher;
    /// Whether a request by the keyboard is being dealt with.
    bool isCalling = false;
    /// How many calls from scenes are being dealt with.
    int sceneCalls = 0;
    /// Whether what is up is to be shown anew when there are none any more.
    bool showsAnewLater = false;
    /// The keys whose tips are to be renewed then.
    QStringList keysToRenew;
};

} // namespace Vidlets

#endif
