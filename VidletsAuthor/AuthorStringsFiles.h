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
    explicit AuthorStringsFiles(const AuthorPackage& package);

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
