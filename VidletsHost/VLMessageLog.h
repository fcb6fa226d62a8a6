// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLMESSAGELOG_H
#define VLMESSAGELOG_H

#include <Vidlets/VLInterface.h>

#include <QString>

class VLContext;

/**
 * The logging category "vidlets": warnings and errors by default, more where the rules say so.
 *
 * Internal to the host kit.
 */
namespace Vidlets::MessageLog {

/// Writes @p message at the level that goes with @p type.
void write(VLMessageType type, const QString& message);

/// Lets messages come to the log that its rules ask for, unless the host has set ckMessageLevel in
/// @p context.
void raiseLevel(VLContext& context);

} // namespace Vidlets::MessageLog

#endif
