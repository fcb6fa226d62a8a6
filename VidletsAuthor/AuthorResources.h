// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORRESOURCES_H
#define AUTHORRESOURCES_H

#include "AuthorControlFile.h"
#include "AuthorPackages.h"

#include <QHash>
#include <QSet>

namespace Vidlets {

/**
 * The rules for pictures and clips: what names them, and what lies in the packages.
 *
 * First all that names resources is added, then check() is called.
 */
class AuthorResources
{
public:
    AuthorResources(const AuthorPackages& packages, AuthorFindings& findings);

    /// Adds what a control file of @p package names.
    void addControlFile(const AuthorPackage& package, const AuthorControlFile& file);
    /// Adds what a key data file names, which may lie in any package.
    void addKeyData(const AuthorControlFile& file);
    /// Reads the scenes of @p package.
    void addScenes(const AuthorPackage& package);

    void check();

    /// Returns the clips that check() has come across.
    const QStringList& clips() const
    {
        return m_clips;
    }

private:
    struct Use
    {
        QString file;
        AuthorReference reference;
        /// Null for key data.
        const AuthorPackage* package = nullptr;
        /// Whether the name may be relative to the file itself.
        bool isInScene = false;
        /// The other packages that the control file names; a scene has none of its own.
        QStringList search = {};
    };

    /// What is known of the packages of one name.
    struct PackageFacts
    {
        QSet<QString> search;
        QSet<QString> directories;
    };

    void addScene(const AuthorPackage& package, const QString& path);
    void checkUse(const Use& use);
    QStringList candidates(const Use& use) const;
    QSet<QString> packageNamesFor(const Use& use) const;
    QStringList packagePaths(const QString& name) const;
    QString otherCase(const QString& path) const;
    QStringList namesIn(const QString& directory) const;
    void checkFiles(const AuthorPackage& package, const QString& directory);
    void checkFile(const QString& path);
    void checkPixels(const QString& path);

    const AuthorPackages& m_packages;
    AuthorFindings& m_findings;
    QList<Use> m_uses;
    QHash<QString, PackageFacts> m_facts;
    QStringList m_clips;
    /// The names of files that something names, without directories and in small letters.
    QSet<QString> m_named;
    /// The directories of the packages of a name.
    mutable QHash<QString, QStringList> m_paths;
    mutable QHash<QString, bool> m_exists;
    mutable QHash<QString, QStringList> m_listed;
};

} // namespace Vidlets

#endif
