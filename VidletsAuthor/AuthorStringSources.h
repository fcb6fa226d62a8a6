// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSTRINGSOURCES_H
#define AUTHORSTRINGSOURCES_H

#include <QStringList>

namespace Vidlets {

class AuthorSceneOutline;

/// The strings that the first argument of a call can be, as the program means them.
struct AuthorStringSources
{
    /// Returns those of the call whose bracket is at @p opener: strings that are put together, or
    /// chosen from.
    static AuthorStringSources ofCall(const AuthorSceneOutline& scene, qsizetype opener);
    /// Returns the second argument of such a call; null where it is no string.
    static QString contextOfCall(const AuthorSceneOutline& scene, qsizetype opener);

    QStringList texts;
    /// Where the first one stands.
    qint64 line = 0;
    /// Whether the argument can be nothing else.
    bool isWhole = true;
};

} // namespace Vidlets

#endif
