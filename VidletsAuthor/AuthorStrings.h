// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSTRINGS_H
#define AUTHORSTRINGS_H

#include "AuthorPackages.h"
#include "AuthorTsFile.h"

#include <QHash>
#include <QSet>

namespace Vidlets {

class AuthorSceneOutline;

/**
 * The texts of a package that can be translated: title and texts of the tips in control files for
 * all languages, and the words that scenes have translated.
 */
class AuthorStrings
{
public:
    /// Collects the texts of @p package.
    explicit AuthorStrings(const AuthorPackage& package);

    /// Returns why not all texts could be collected, as lines for people; empty where they could.
    const QStringList& faults() const
    {
        return m_faults;
    }
    /// Returns the texts without translations, in the order of files and lines.
    const QList<AuthorTsMessage>& messages() const
    {
        return m_messages;
    }

    /// What an update of a file has changed.
    struct Change
    {
        qsizetype added = 0;
        qsizetype gone = 0;
        qsizetype unfinished = 0;
    };

    /// Brings @p file up to date: translations are kept, and what is gone is marked.
    Change update(AuthorTsFile& file) const;
    /// Returns a file in which each text is translated into itself, longer and with accents.
    AuthorTsFile pseudo() const;

    /// Returns the locale of such a file: one that hosts can set, and that nobody is served with.
    static QString pseudoLocale();
    /// Returns @p text longer and with accents; markup and variables stay.
    static QString pseudoText(const QString& text);

private:
    void readScenes(const AuthorPackage& package);
    void readWrappers(const AuthorSceneOutline& scene);
    void readCalls(const QString& path, const AuthorSceneOutline& scene);
    void readControlFile(const QString& path);
    void readTips(const QString& path, const QByteArray& bytes);
    void addTip(const QString& path, const QString& key, qint64 line, const QString& text);
    void add(const QString& context, const QString& source, const QString& path, qint64 line,
             const QString& note);
    void sortContexts();

    QString m_root;
    QStringList m_faults;
    QList<AuthorTsMessage> m_messages;
    /// By context and source.
    QHash<QString, qsizetype> m_numbers;
    /// The notes of each message, by its number.
    QSet<std::pair<qsizetype, QString>> m_notes;
    /// How many characters were looked at to collect the texts.
    qsizetype m_characters = 0;
    /// The contexts in which scenes have texts translated that they do not spell.
    QSet<QString> m_contexts;
    /// The same, in an order that is always the same.
    QStringList m_sortedContexts;
    /// The functions of scenes that translate what they are given, with the context.
    QHash<QString, QString> m_wrappers;
};

} // namespace Vidlets

#endif
