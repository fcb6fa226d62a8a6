// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSETTINGS_H
#define AUTHORSETTINGS_H

#include "AuthorFinding.h"

#include <QHash>

namespace Vidlets {

/**
 * How much each rule weighs: by the rule itself, by the file .vidletscheck.toml of a package, and
 * by the command line, the later before the earlier. The file also has the limits of rules.
 */
class AuthorSettings
{
public:
    /// The name of the file in a package.
    static QString fileName();

    /// Takes over what the file in the package @p package says; what is wrong with it goes to
    /// @p findings.
    void loadPackage(const QString& package, AuthorFindings& findings);

    /// Takes over "RULE=SEVERITY" for all packages. False, with the @p reason as a sentence, for
    /// anything else.
    bool set(const QString& assignment, QString& reason);

    /// Returns how much memory the pictures of a clip in the package @p package may take.
    qint64 clipMemoryLimitBytes(const QString& package) const;

    /// Returns how much @p rule weighs in the package @p package, null for what lies in none.
    AuthorSeverity severity(const QString& rule, const QString& package) const;

private:
    QHash<QString, AuthorSeverity> m_overall;
    QHash<QString, QHash<QString, AuthorSeverity>> m_packages;
    QHash<QString, qint64> m_clipMemoryLimits;
};

} // namespace Vidlets

#endif
