// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORCHECK_H
#define AUTHORCHECK_H

#include "AuthorPackages.h"
#include "AuthorQmllint.h"
#include "AuthorSettings.h"

#include <utility>

namespace Vidlets {

/**
 * Looks for faults in packages, data paths and key data files.
 *
 * Loads no code from them, and opens nothing but regular files. Not for several threads.
 */
class AuthorCheck
{
public:
    AuthorCheck();

    /// Adds what is to be checked. False, with the @p reason as a sentence, where there is nothing,
    /// nor anything to say of why not.
    bool add(const QString& path, QString& reason);
    /// Takes over "RULE=SEVERITY" for all packages; false, with a @p reason, for anything else.
    bool set(const QString& assignment, QString& reason);
    /// Has tips looked for in these locales, beside those that a package has files for.
    void setLocales(const QStringList& locales);
    /// Has @p onWait called, once, where qmllint takes its time with scenes.
    void setOnWait(AuthorQmllint::OnWait onWait)
    {
        m_onWait = std::move(onWait);
    }

    /// Returns what is wrong, by path and place. To be called once.
    QList<AuthorFinding> run();

private:
    QList<AuthorFinding> settled() const;

    AuthorFindings m_findings;
    AuthorPackages m_packages;
    AuthorSettings m_settings;
    QStringList m_locales;
    AuthorQmllint::OnWait m_onWait;
};

} // namespace Vidlets

#endif
