// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLFIRSTTAG_H
#define VLFIRSTTAG_H

#include "VLXmlReport.h"

#include <QString>

class QIODevice;

/**
 * What control files are told apart by, before anything is parsed.
 *
 * Internal to the library and to the tools for authors, which have to judge as it does.
 */
namespace Vidlets::FirstTag {

/// Returns the first tag found on a line of @p device by a pattern, be it in a comment; null where
/// there is none. A tag counts only if an attribute or its bracket follows on the same line.
QString in(QIODevice& device);

/// Returns where that tag stands; the start of @p device where there is none.
XmlPosition placeIn(QIODevice& device);

} // namespace Vidlets::FirstTag

#endif
