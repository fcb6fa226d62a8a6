// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSTRINGSFILES_H
#define AUTHORSTRINGSFILES_H

#include "AuthorStrings.h"

namespace Vidlets {

/**
 * Brings the files of translations of a package up to date.
 *
 * Each file is written as a whole and renamed, and left alone where nothing changes.
 */
class AuthorStringsFiles
{
public:
    /// For the files in @p directory, which is relative to the package; null for the usual one.
    explicit AuthorStringsFiles(const AuthorPackage& package, const QString& directory = QString());

    /// Returns where the translations of the package's tips lie; see AuthorStrings::directories().
    const QStringList& directories() const
    {
        return m_strings.directories();
    }

    /// Takes up the files that exist.
    void addExisting();
    /// Takes up the file for @p locale, which is begun where there is none.
    void add(const QString& locale);
    /// Takes up the file for pseudoLocale().
    void addPseudo();
    /// Has the compiled files written as well.
    void setCompiling(bool isCompiling)
    {
        m_isCompiling = isCompiling;
    }

    /// Writes all that was taken up. False where something is left undone.
    bool write();

    /// What was done, as lines for people.
    const QStringList& report() const
    {
        return m_report;
    }
    /// Why something is left undone, likewise.
    const QStringList& faults() const
    {
        return m_faults;
    }
    /// Returns whether there is anything to write.
    bool isEmpty() const
    {
        return m_locales.isEmpty();
    }

private:
    QString pathFor(const QString& locale) const;
    bool update(const QString& locale);
    std::optional<AuthorTsFile> read(const QString& path, const QString& locale);
    bool compile(const QString& path, const AuthorTsFile& file);
    bool save(const QString& path, const QByteArray& content);

    const QString m_directory;
    const AuthorStrings m_strings;
    QStringList m_locales;
    QStringList m_report;
    QStringList m_faults;
    bool m_isCompiling = false;
};

} // namespace Vidlets

#endif
