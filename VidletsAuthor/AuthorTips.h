// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORTIPS_H
#define AUTHORTIPS_H

#include "AuthorControlFile.h"
#include "AuthorPackages.h"

#include <QHash>
#include <QLocale>
#include <QSet>

namespace Vidlets {

/**
 * The rules for what control files and key data say of each other and of their packages.
 *
 * First all files are added, then check() is called. The packages have to stay.
 */
class AuthorTips
{
public:
    AuthorTips(const AuthorPackages& packages, AuthorFindings& findings);

    void addControlFile(const AuthorPackage& package, const AuthorControlFile& file);
    void addKeyData(const AuthorControlFile& file);

    /// @p locales are wanted of each package beside those that it has files for.
    void check(const QStringList& locales);

private:
    /// A control file that is in use.
    struct Source
    {
        QString path;
        const AuthorPackage* package = nullptr;
        /// The number of its locale; -1 where it serves all.
        int locale = -1;
    };
    struct Place
    {
        int source = 0;
        XmlPosition position;
        bool isFound = true;
    };

    int numberOf(const QString& locale);
    void checkEmptyPackages();
    void checkSearch();
    void checkScenes();
    static bool isScene(const QStringList& places, const QString& name);
    void checkTwice();
    void reportTwice(const QString& key, const Place& loser, const Place& winner);
    void checkGaps(const QStringList& locales);
    void checkGap(const QString& key, const QList<Place>& places, const QList<int>& wanted);
    void checkKeyData();

    const AuthorPackages& m_packages;
    AuthorFindings& m_findings;
    QList<Source> m_sources;
    QHash<QString, QList<Place>> m_places;
    /// Those of files that the library meets a fault in.
    QSet<QString> m_brokenKeys;
    QSet<const AuthorPackage*> m_known;
    QList<QLocale> m_locales;
    /// Without their tips, which are in m_places.
    QList<AuthorControlFile> m_files;
    QList<AuthorControlFile> m_keyData;
};

} // namespace Vidlets

#endif
