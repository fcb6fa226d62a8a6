// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_APPEARANCE_H
#define WORKBENCH_APPEARANCE_H

namespace Workbench {

/// Gives the whole application dark colours, the popups' scenes included.
void useDarkColors();

} // namespace Workbench

#endif
