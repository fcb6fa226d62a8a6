// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORTIPLIST_H
#define AUTHORTIPLIST_H

#include "AuthorFinding.h"
#include "AuthorTipHost.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace Vidlets {

/// Where a tip stands in a control file.
struct AuthorTipSpot
{
    QString file;
    /// The locale of the file; empty where it serves all.
    QString locale;
    XmlPosition begin;
    /// The beginning of the next tip of the file; a line of 0 for the last one.
    XmlPosition end;
};

/// A tip of a package, in all its languages.
struct AuthorListedTip
{
    QString key;
    QList<AuthorTipSpot> spots;
};

/// A package with its tips.
struct AuthorListedPackage
{
    QString name;
    /// As the author has spelled it.
    QString path;
    QString canonicalPath;
    /// The locales of its control files and translations, sorted; "en_US" for files that serve all.
    QStringList locales;
    /// Those of its files for translators, released or not.
    QStringList draftLocales;
    /// By key.
    QList<AuthorListedTip> tips;
};

/// The tips that a path leads to.
struct AuthorTipList
{
    AuthorTipPlaces places;
    QList<AuthorListedPackage> packages;

    /// Reads what the path of a package or data path leads to. Nothing, with the @p reason as a
    /// sentence, where it leads to no directory.
    static std::optional<AuthorTipList> read(const QString& path, QString& reason);

    /// Returns the locales of all packages, sorted.
    QStringList locales() const;
    /// Returns them together with those of files for translators.
    QStringList localesWithDrafts() const;
};

/// Returns whether a control file has @p tip for @p locale, or for all languages.
bool hasLocale(const AuthorListedTip& tip, const QString& locale);

/// Returns whether @p finding stands in the tip @p tip.
bool isIn(const AuthorListedTip& tip, const AuthorFinding& finding);

} // namespace Vidlets

#endif
