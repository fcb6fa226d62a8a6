// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSAFEGUARDS_H
#define VLSAFEGUARDS_H

#include <Vidlets/VidletsExport.h>

class VLContext;

namespace Vidlets {

/**
 * Turns on every safeguard: the keys ckReleaseClips to ckTendPinned of Vidlets::contextKey.
 *
 * Sets each bool among them to true and ckClipMemoryLimit to 256 MiB in @p context, whatever was
 * stored there before; a host that wants another value sets it afterwards. To be called before the
 * VLInterface is built, so that the scan of the data paths is guarded too. On the user-interface
 * thread. Cannot fail.
 */
VIDLETS_EXPORT void useSafeguards(VLContext& context);

} // namespace Vidlets

#endif
