// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLTIPFILTER_H
#define VLTIPFILTER_H

#include "VLContentNames.h"
#include "VLXmlParser.h"

#include <QString>
#include <QStringView>

/// The element filters of lookups. Internal to the library.
namespace Vidlets::TipFilter {

/// The answers of a filter that builds the matching children of one root and passes over the rest.
inline int matchChild(QStringView tag, QLatin1StringView rootTag, QLatin1StringView childTag,
                      bool matches)
{
    if (tag == childTag)
        return matches ? FilterChildren | KeepChildren : NoElement | SkipChildren;
    return tag == rootTag ? FilterChildren : NoElement | SkipChildren;
}

/// Builds the tips of a key; the user data is the address of the key.
inline int matchKeyElement(const QString& tag, const QXmlStreamAttributes& attributes,
                           void* userData)
{
    const auto& key = *static_cast<const QString*>(userData);
    return matchChild(tag, ContentNames::kControlFileTag, ContentNames::kTipTag,
                      attributes.value(ContentNames::keyAttribute()) == key);
}

/// Builds the records of a key in the key data file; the user data is the address of the key.
inline int matchKeyDataElement(const QString& tag, const QXmlStreamAttributes& attributes,
                               void* userData)
{
    const auto& key = *static_cast<const QString*>(userData);
    return matchChild(tag, ContentNames::kKeyDataFileTag, ContentNames::kKeyDataTag,
                      attributes.value(ContentNames::nameAttribute()) == key);
}

} // namespace Vidlets::TipFilter

#endif
