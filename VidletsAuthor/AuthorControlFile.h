// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORCONTROLFILE_H
#define AUTHORCONTROLFILE_H

#include "AuthorFinding.h"

#include <QSet>

namespace Vidlets {

/// Returns whether @p value ends like the name of a picture or clip.
bool looksLikeResource(QStringView value);

/// Returns whether QLocale takes the name @p locale for one of another territory.
bool isOfOtherTerritory(const QString& locale);

/// The name of a picture or clip in a text, and where it stands.
struct AuthorReference
{
    QString name;
    XmlPosition position;
    /// The directory that is searched for it, relative to a package; null for the usual one.
    QString directory;
};

/// What the rules for several files need of a tip, or of a record of the key data.
struct AuthorTip
{
    QString key;
    XmlPosition position;
    /// Whether the library takes it: the file has the key once.
    bool isFound = true;
};

/// A scene that the tips of a control file have.
struct AuthorSceneName
{
    QString name;
    XmlPosition position;
    /// Whether it is theirs because nothing names another one.
    bool isUsual = false;
};

/// A control file or key data file as it was read.
struct AuthorControlFile
{
    QString path;
    /// Whether the library takes its tips or records: the file is recognised, its root is the right
    /// one, and it is well-formed.
    bool isInUse = false;
    /// Whether it makes its package known, be it in use or not.
    bool isRecognised = false;
    QString locale;
    XmlPosition rootPosition;
    XmlPosition searchPosition;
    /// The names of further packages.
    QStringList search;
    /// The directories of resources beside the usual one, relative to the package.
    QSet<QString> resourceDirectories;
    /// Where translations lie, relative to the package, beside the usual directory.
    QSet<QString> translationDirectories;
    /// Those with a key.
    QList<AuthorTip> tips;
    QList<AuthorSceneName> scenes;
    QList<AuthorReference> references;
};

} // namespace Vidlets

#endif
