// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLFIRSTTAG_H
#define VLFIRSTTAG_H

#include "VLXmlReport.h"

#include <QString>

#include <limits>

class QIODevice;

/**
 * What control files are told apart by, before anything is parsed.
 *
 * Internal to the library and to the tools for authors, which have to judge as it does.
 */
namespace Vidlets::FirstTag {

/// Returns the first tag found on a line of @p device by a pattern, be it in a comment; null where
/// there is none. A tag counts only if an attribute or its bracket follows on the same line. No
/// line is looked at that begins behind the first @p limit bytes.
QString in(QIODevice& device, qint64 limit = std::numeric_limits<qint64>::max());

/// Returns where that tag stands; the start of @p device where there is none.
XmlPosition placeIn(QIODevice& device);

} // namespace Vidlets::FirstTag

#endif
