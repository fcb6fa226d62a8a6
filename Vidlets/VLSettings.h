// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSETTINGS_H
#define VLSETTINGS_H

#include "VLContext.h"
#include "VLInterface.h"

#include <QSize>
#include <QString>

/**
 * How each setting is read: its type and the value that stands in where the host has stored none.
 *
 * Internal to the library. Each function asks the store anew, so that a change takes effect at the
 * next use.
 */
namespace Vidlets::Settings {

inline float stayDurationMs(const VLContext& context)
{
    return context.get(ckStayDuration, 3000.0F).toFloat();
}

inline bool keepPopupWindowFlags(const VLContext& context)
{
    return context.get(ckKeepPopupWindowFlags, false).toBool();
}

inline QString packageExtension(const VLContext& context)
{
    return context.get(ckPackageExtension, QStringLiteral("vidlets")).toString();
}

inline QString extraComponentPath(const VLContext& context)
{
    return context.get(ckExtraComponentPath, QVariant()).toString();
}

/// For VLView::findComponent(), which reads the key itself.
inline QString uiFileDefault()
{
    return QStringLiteral("ui/VidletUI.qml");
}

/// For VLView::findComponent(), which reads the key itself.
inline QString simpleUiFileDefault()
{
    return QStringLiteral("ui/SimpleTooltip.qml");
}

/// For VLView::findComponent() and VLView::categoryPath(), which read the key themselves.
inline QString resourceDirectoryDefault()
{
    return QStringLiteral("Resources");
}

/// For VLView::findComponent(), which reads the key itself.
inline QString translationDirectoryDefault()
{
    return QStringLiteral("l10n");
}

inline bool installEventFilter(const VLContext& context)
{
    return context.get(ckInstallEventFilter, false).toBool();
}

inline QSize safeZoneMarginPx(const VLContext& context)
{
    return context.get(ckSafeZoneMargin, QSize(20, 20)).toSize();
}

inline QSize tooltipOffsetPx(const VLContext& context)
{
    return context.get(ckTooltipOffset, QSize(35, 30)).toSize();
}

inline bool simpleTooltips(const VLContext& context)
{
    return context.get(ckSimpleTooltips, false).toBool();
}

/// Kept: with the key absent scenes are told no, and the opening itself is still allowed.
inline bool documentationAvailable(const VLContext& context)
{
    return context.get(ckDocumentationEnabled, QVariant()).toBool();
}

inline bool documentationAllowed(const VLContext& context)
{
    return context.get(ckDocumentationEnabled, true).toBool();
}

inline bool externalLinksEnabled(const VLContext& context)
{
    return context.get(ckExternalLinksEnabled, true).toBool();
}

inline QString fallbackKey(const VLContext& context)
{
    return context.get(ckFallbackKey, QString()).toString();
}

inline QString contentLocale(const VLContext& context)
{
    return context.get(ckLocale, QStringLiteral("en_US")).toString();
}

inline QString contentFallbackLocale(const VLContext& context)
{
    return context.get(ckFallbackLocale, QStringLiteral("en_US")).toString();
}

/// Kept: translation does not fall back to English but, where this and the next are empty, to the
/// system's language.
inline QString translationLocale(const VLContext& context)
{
    return context.get(ckLocale, QString()).toString();
}

inline QString translationFallbackLocale(const VLContext& context)
{
    return context.get(ckFallbackLocale, QString()).toString();
}

inline bool disabled(const VLContext& context)
{
    return context.get(ckDisabled, false).toBool();
}

inline bool clearIndexOnSetup(const VLContext& context)
{
    return context.get(ckClearIndexOnSetup, true).toBool();
}

inline bool alwaysShowToolTips(const VLContext& context)
{
    return context.get(ckAlwaysShowToolTips, false).toBool();
}

inline QString keyDataFile(const VLContext& context)
{
    return context.get(ckKeyDataFile, QString()).toString();
}

inline Qt::KeyboardModifiers requiredModifiers(const VLContext& context)
{
    const int value = context.get(ckRequiredModifiers, 0).toInt();
    return Qt::KeyboardModifiers::fromInt(static_cast<uint>(value));
}

inline QString controlDirectory(const VLContext& context)
{
    return context.get(ckControlDirectory, QStringLiteral("Control")).toString();
}

inline int showDurationMs(const VLContext& context)
{
    return context.get(ckShowDuration, 0).toInt();
}

inline int hideDurationMs(const VLContext& context)
{
    return context.get(ckHideDuration, 300).toInt();
}

inline int messageLevel(const VLContext& context)
{
    return context.get(ckMessageLevel, VLMessageWarning).toInt();
}

inline QString translationStem(const VLContext& context)
{
    return context.get(ckTranslationStem, QStringLiteral("Vidlets")).toString();
}

inline float scale(const VLContext& context)
{
    return context.get(ckScale, 1.0F).toFloat();
}

inline bool releaseClips(const VLContext& context)
{
    return context.get(ckReleaseClips, false).toBool();
}

/// 0 or below for none.
inline qint64 clipMemoryLimitBytes(const VLContext& context)
{
    return context.get(ckClipMemoryLimit, 0).toLongLong();
}

inline bool promptClips(const VLContext& context)
{
    return context.get(ckPromptClips, false).toBool();
}

inline bool guardContent(const VLContext& context)
{
    return context.get(ckGuardContent, false).toBool();
}

inline bool confineContent(const VLContext& context)
{
    return context.get(ckConfineContent, false).toBool();
}

inline bool steadyHover(const VLContext& context)
{
    return context.get(ckSteadyHover, false).toBool();
}

inline bool keepOffReference(const VLContext& context)
{
    return context.get(ckKeepOffReference, false).toBool();
}

inline bool tendPinned(const VLContext& context)
{
    return context.get(ckTendPinned, false).toBool();
}

} // namespace Vidlets::Settings

#endif
