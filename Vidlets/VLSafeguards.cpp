// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSafeguards.h"

#include "VLContext.h"

namespace Vidlets {

namespace {

constexpr qint64 kClipMemoryLimitBytes = qint64(256) * 1024 * 1024;

} // namespace

void useSafeguards(VLContext& context)
{
    context.set(ckReleaseClips, true);
    context.set(ckClipMemoryLimit, kClipMemoryLimitBytes);
    context.set(ckPromptClips, true);
    context.set(ckGuardContent, true);
    context.set(ckConfineContent, true);
    context.set(ckSteadyHover, true);
    context.set(ckKeepOffReference, true);
    context.set(ckTendPinned, true);
}

} // namespace Vidlets
