// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSEARCHTEXT_H
#define VLSEARCHTEXT_H

#include <QString>

namespace Vidlets {

/// What is searched of a tip: the author's words in plain text, with white space collapsed.
/// Internal to the host kit; a value.
struct VLSearchText
{
    QString key;
    QString title;
    QString shortcut;
    /// The attribute "summary" and all character data.
    QString text;
};

} // namespace Vidlets

#endif
