// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORTRANSLATIONS_H
#define AUTHORTRANSLATIONS_H

#include "AuthorControlFile.h"
#include "AuthorPackages.h"
#include "AuthorStrings.h"
#include "AuthorTsFile.h"

#include <QHash>
#include <QSet>

namespace Vidlets {

/**
 * The rules for files of translations.
 *
 * First all control files are added, then check() is called. The packages have to stay.
 */
class AuthorTranslations
{
public:
    AuthorTranslations(const AuthorPackages& packages, AuthorFindings& findings);

    void addControlFile(const AuthorPackage& package, const AuthorControlFile& file);
    /// Has the package wanted in each locale, if only for the words of its scenes.
    void addTranslating(const AuthorPackage& package);

    /// @p locales are wanted of each package that is translated.
    void check(const QStringList& locales);

private:
    /// What is known of the packages of one name.
    struct PackageFacts
    {
        QSet<QString> search;
        QSet<QString> directories;
        /// The locales that there are files for, those of the texts themselves included.
        QSet<QString> locales;
        bool isTranslating = false;
    };

    /// A package, and the directory in it whose files are looked at.
    struct Place
    {
        const AuthorPackage& package;
        QString directory;
        /// Once a file has been compared with them.
        std::optional<AuthorStrings> strings;
    };

    void checkDirectory(const AuthorPackage& package, const QString& directory);
    void checkName(const QString& path, PackageFacts& facts);
    void checkSource(const QString& path, bool isCompiled, PackageFacts& facts, Place& place);
    void checkLack(const QString& path, const AuthorTsFile& file, Place& place);
    void checkCompiled(const QString& path);
    void checkUnfinished(const QString& path, const AuthorTsFile& file);
    void reportUncompiled(const QString& path, const AuthorTsFile& file,
                          const QString& compiledPath);
    void checkStale(const QString& path, const AuthorTsFile& file, const QString& compiledPath);
    void checkLocale(const AuthorPackage& package, const QString& locale);
    void broken(const QString& path, XmlPosition position, const QString& message,
                const QString& help = QString());

    const AuthorPackages& m_packages;
    AuthorFindings& m_findings;
    QHash<QString, PackageFacts> m_facts;
    /// What is needed of the control files in use, by the path of the package.
    QHash<QString, QList<AuthorControlFile>> m_files;
    /// How many directories of it have been compared with the texts, likewise.
    QHash<QString, int> m_compared;
};

} // namespace Vidlets

#endif
