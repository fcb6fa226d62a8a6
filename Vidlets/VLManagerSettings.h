// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLMANAGERSETTINGS_H
#define VLMANAGERSETTINGS_H

#include "VLContext.h"
#include "VLManager.h"

namespace Vidlets {

/// The settings of @p manager, or those of a store with nothing in it where the manager is gone.
/// Internal to the library.
///
/// Popups and scenes may outlive the manager: those that a user has pinned, and the current one
/// until its deferred deletion takes place.
inline const VLContext& settingsOf(VLManager* manager)
{
    static const VLContext defaults;
    return manager ? manager->context() : defaults;
}

} // namespace Vidlets

#endif
