// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLMessageLog.h"

#include <Vidlets/VLContext.h>

#include <QLoggingCategory>

namespace Vidlets::MessageLog {

namespace {

Q_LOGGING_CATEGORY(lcVidlets, "vidlets", QtWarningMsg)

} // namespace

void write(VLMessageType type, const QString& message)
{
    // Hosts have numbers of their own in between; each counts as the next less severe.
    if (type <= VLMessageError)
        qCCritical(lcVidlets, "%ls", qUtf16Printable(message));
    else if (type <= VLMessageWarning)
        qCWarning(lcVidlets, "%ls", qUtf16Printable(message));
    else if (type <= VLMessageInformation)
        qCInfo(lcVidlets, "%ls", qUtf16Printable(message));
    else
        qCDebug(lcVidlets, "%ls", qUtf16Printable(message));
}

void raiseLevel(VLContext& context)
{
    if (context.contains(ckMessageLevel))
        return;
    if (lcVidlets().isDebugEnabled())
        context.set(ckMessageLevel, static_cast<int>(VLMessageDebug));
    else if (lcVidlets().isInfoEnabled())
        context.set(ckMessageLevel, static_cast<int>(VLMessageInformation));
}

} // namespace Vidlets::MessageLog
