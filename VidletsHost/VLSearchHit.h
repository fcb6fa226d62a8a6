// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSEARCHHIT_H
#define VLSEARCHHIT_H

#include <QString>

namespace Vidlets {

/**
 * A tip that VLKeyTableIndex::search() has found.
 *
 * The texts are the author's, with white space collapsed: neither translated nor with variables
 * filled in. A value.
 */
struct VLSearchHit
{
    /// What to look the tip up with, in the locale of the search.
    QString key;
    /// The title in plain text; empty where the tip has none.
    QString title;
    /// HTML: about 120 characters around the first word that was found, with "<b>" around each one
    /// there, and with "…" where something is left out. It is taken from the text of the tip; where
    /// no word is in that, from the title, the shortcut or the key. All else in it is escaped.
    QString snippet;
    /// The name of the package, as VLIndex::packageNameForLocation() gives it.
    QString package;
};

} // namespace Vidlets

#endif
