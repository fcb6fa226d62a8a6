// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORRULES_H
#define AUTHORRULES_H

#include "AuthorFinding.h"

namespace Vidlets {

/// What check looks for under one name.
struct AuthorRule
{
    QLatin1StringView id;
    /// Unless an author sets another one.
    AuthorSeverity severity;
    /// What is found, in one line.
    QLatin1StringView summary;
    /// What to do, where a finding does not know better.
    QLatin1StringView help;
};

/**
 * All rules of check, the only list of them.
 *
 * Each has a page in docs/rules/, which is compiled in.
 */
namespace AuthorRules {

/// Returns the rules in the order of their names.
const QList<AuthorRule>& all();
/// Returns the rule named @p id, null if there is none.
const AuthorRule* find(QStringView id);
/// Returns the page of the rule as Markdown; null if there is none.
QString page(QStringView id);

} // namespace AuthorRules

} // namespace Vidlets

#endif
