// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include <Vidlets/VLContext.h>
#include <Vidlets/VLSafeguards.h>

#include <QtGlobal>

// Loaded before the library, this takes the place of the store's own reading: a safeguard that the
// test has not set itself counts as on. So each test runs once more as in a host with safeguards.

namespace {

VLContext& safeguards()
{
    static VLContext context;
    if (!context.contains(Vidlets::ckReleaseClips))
        Vidlets::useSafeguards(context);
    return context;
}

/// The tools that a test starts have no use for the module, and would load Qt for it each time.
[[maybe_unused]] const bool isOutOfEnvironment = qunsetenv("LD_PRELOAD");

} // namespace

QVariant VLContext::get(const VLContextKey& key, const QVariant& defaultValue) const
{
    if (key < Vidlets::ckReleaseClips || m_settings.contains(key))
        return m_settings.value(key, defaultValue);
    return safeguards().m_settings.value(key, defaultValue);
}
