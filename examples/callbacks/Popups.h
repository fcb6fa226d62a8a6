// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef POPUPS_H
#define POPUPS_H

#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>

/// The manager; null before the first request for a tip.
Vidlets::VLManager* vidletsManager();

/// Tells scenes with links into the documentation when that comes or goes.
void connectScenesToSettings(Vidlets::VLInterface& vidlets);

/// Closes the tips that the user has kept.
void deletePinnedTips();

#endif
