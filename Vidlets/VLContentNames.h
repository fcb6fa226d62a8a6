// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLCONTENTNAMES_H
#define VLCONTENTNAMES_H

#include <QString>

/**
 * The words of the package format, each spelled here and nowhere else: tags and attributes of
 * control files and of the key data file.
 *
 * Internal to the library.
 */
namespace Vidlets::ContentNames {

inline constexpr QLatin1StringView kControlFileTag{"vidlets"};
inline constexpr QLatin1StringView kTipTag{"vidlet"};
inline constexpr QLatin1StringView kKeyDataFileTag{"vidletkeys"};
inline constexpr QLatin1StringView kKeyDataTag{"key"};

inline QString keyAttribute()
{
    return QStringLiteral("key");
}

/// Of a record of the key data file.
inline QString nameAttribute()
{
    return QStringLiteral("name");
}

inline QString localeAttribute()
{
    return QStringLiteral("locale");
}

inline QString searchAttribute()
{
    return QStringLiteral("search");
}

inline QString titleAttribute()
{
    return QStringLiteral("title");
}

inline QString shortcutAttribute()
{
    return QStringLiteral("shortcut");
}

inline QString uiAttribute()
{
    return QStringLiteral("ui");
}

inline QString simpleUiAttribute()
{
    return QStringLiteral("simple");
}

/// Where resources are searched for.
inline QString resourcesAttribute()
{
    return QStringLiteral("resources");
}

/// Kept: what a scene is told of the directory of resources goes by a word of its own.
inline QString resourceAttribute()
{
    return QStringLiteral("resource");
}

inline QString translationsAttribute()
{
    return QStringLiteral("l10n_name");
}

/// Set on each retrieved tip: the path of its control file.
inline QString locationAttribute()
{
    return QStringLiteral("VLLocation");
}

/// Set on each retrieved tip. Kept: the name lacks an "e", and scenes read it so.
inline QString packageNameAttribute()
{
    return QStringLiteral("VLPackagName");
}

} // namespace Vidlets::ContentNames

#endif
