// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLCLIPSAFEGUARDS_H
#define VLCLIPSAFEGUARDS_H

#include <QString>

class VLContext;

namespace Vidlets {

class VLManager;

/// What the settings ask of a clip; nothing for a clip that lies in no view. Internal to the
/// library.
struct VLClipSafeguards
{
    /// Of the settings of @p manager; null asks for nothing.
    static VLClipSafeguards of(const VLManager* manager);

    bool release = false;
    bool prompt = false;
    bool guard = false;
    bool confine = false;
    /// 0 or below for none.
    qint64 memoryLimitBytes = 0;
};

namespace ClipSafeguards {

/// The containers, codecs and protocols of clips in a package, in the form that FFmpeg takes.
const char* containers();
const char* codecs();
const char* protocols();

/// Says @p text as a warning of @p manager, once for each state of @p file. On the user-interface
/// thread.
void warn(VLManager* manager, const QString& file, const QString& text);

} // namespace ClipSafeguards

} // namespace Vidlets

#endif
