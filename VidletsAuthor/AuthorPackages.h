// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORPACKAGES_H
#define AUTHORPACKAGES_H

#include "AuthorFinding.h"

namespace Vidlets {

/// Returns what the name of a package's directory ends in.
QString packageSuffix();

/// A package on disk.
struct AuthorPackage
{
    /// As the author has spelled it.
    QString path;
    QString canonicalPath;
    QString name;
    /// The place of its data path among all; a later one goes before an earlier one.
    int dataPath = 0;
    /// The paths of the files that may be control files: regular ones that end in ".xml".
    QStringList candidates;
};

/**
 * What the paths on a command line lead to.
 *
 * A path is a package, a data path or a key data file. Finds what the rules for packages find on
 * the way, but for those that look into files.
 */
class AuthorPackages
{
public:
    explicit AuthorPackages(AuthorFindings& findings);

    /// Adds what @p path leads to. False, with the @p reason as a sentence, where there is nothing.
    bool add(const QString& path, QString& reason);

    /// Returns the sentence for a directory @p path that leads to no package.
    static QString noneIn(const QString& path);

    /// Reports the names that stand in several data paths; to be called when all is added.
    void reportShadowed();

    const QList<AuthorPackage>& packages() const
    {
        return m_packages;
    }
    const QStringList& keyDataFiles() const
    {
        return m_keyDataFiles;
    }
    /// Returns the package that the file or directory @p path belongs to, null if to none.
    const AuthorPackage* packageOf(const QString& path) const;
    /// Returns the packages named @p name, in the order in which scenes and resources are searched.
    QList<const AuthorPackage*> named(const QString& name) const;
    /// Returns the directories of the packages named @p name: those that were added, or those that
    /// lie beside them; none where there is no such package.
    QStringList pathsOf(const QString& name) const;

private:
    void addDataPath(const QString& path);
    void addPackage(const QString& path, const QString& dataPath);
    void listControlDirectory(AuthorPackage& package);
    void checkEntry(const QString& dataPath, const QString& name);
    void ignored(const QString& path, const QString& reason);

    AuthorFindings& m_findings;
    QList<AuthorPackage> m_packages;
    /// The canonical paths, in order.
    QStringList m_dataPaths;
    QStringList m_keyDataFiles;
};

} // namespace Vidlets

#endif
