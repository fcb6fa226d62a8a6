// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSTRINGS_H
#define AUTHORSTRINGS_H

#include "AuthorPackages.h"
#include "AuthorTsFile.h"

#include <QHash>
#include <QSet>

class QXmlStreamReader;

namespace Vidlets {

class AuthorSceneOutline;
struct AuthorControlFile;

/**
 * The texts of a package that can be translated: title and texts of the tips in control files for
 * all languages, and the words that scenes have translated.
 *
 * Its scenes are its own and those of other packages that its tips are shown with: the library
 * takes all translations from one file, that of the tip's package where there is one.
 */
class AuthorStrings
{
public:
    /// Collects the texts of @p package that are looked for in the files in @p directory, which is
    /// relative to it; null for the usual one.
    explicit AuthorStrings(const AuthorPackage& package, const QString& directory = QString());

    /// Likewise, where the control files of @p package have been read already: those in use among
    /// @p files count. Of each text only one place is kept, for lackOf().
    AuthorStrings(const AuthorPackage& package, const QString& directory,
                  const QList<AuthorControlFile>& files);

    /// Returns where the library looks for translations of @p name, which an attribute may give.
    static QString directoryFor(const QString& name);

    /// Returns why not all texts could be collected, as lines for people; empty where they could.
    const QStringList& faults() const
    {
        return m_faults;
    }
    /// Returns where the translations of the tips lie, in the order of the control files, each
    /// directory relative to the package; the usual one where there is no tip.
    const QStringList& directories() const
    {
        return m_directories;
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
    /// Which texts a file lacks.
    struct Lack
    {
        qsizetype count = 0;
        QString source;
        /// Where the first one stands, relative to the package.
        QString place;
    };

    /// Returns what @p file lacks for sure: texts with letters, in a context that scenes of the
    /// package spell, and those of tips, if @p areTipsWanted, where a scene has them translated.
    Lack lackOf(const AuthorTsFile& file, bool areTipsWanted) const;
    /// Returns a file in which each text is translated into itself, longer and with accents.
    AuthorTsFile pseudo() const;

    /// Returns the locale of such a file: one that hosts can set, and that nobody is served with.
    static QString pseudoLocale();
    /// Returns @p text longer and with accents; markup and variables stay.
    static QString pseudoText(const QString& text);

private:
    /// A text of a tip.
    struct TipText
    {
        QString path;
        QString key;
        qint64 line = 0;
        QString source;
    };

    void collect();
    void readUsed(const AuthorControlFile& file, const QByteArray& bytes);
    void findScenes(const AuthorControlFile& file);
    void readScenes();
    void readWrappers(const AuthorSceneOutline& scene);
    void readCalls(const QString& path, const AuthorSceneOutline& scene);
    void readControlFile(const QString& path);
    void readTips(const AuthorControlFile& file, const QByteArray& bytes);
    bool isPassedOver(const AuthorControlFile& file, const QXmlStreamReader& reader,
                      const QString& usualDirectory);
    void addTip(const QString& path, const QString& key, qint64 line, const QString& text);
    void addTips();
    void add(const QString& context, const QString& source, const QString& path, qint64 line,
             const QString& note);
    void sortContexts();

    QString m_root;
    const QString m_directory;
    QStringList m_directories;
    QSet<QString> m_knownDirectories;
    /// The packages whose scenes show the tips, this one among them.
    QStringList m_scenePackages;
    QList<TipText> m_tipTexts;
    /// Whether only the first place of each text is wanted.
    const bool m_isBrief = false;
    QStringList m_faults;
    QList<AuthorTsMessage> m_messages;
    /// By context and source.
    QHash<QString, qsizetype> m_numbers;
    /// The notes of each message, by its number.
    QSet<std::pair<qsizetype, QString>> m_notes;
    /// How many characters were looked at to collect the texts.
    qsizetype m_characters = 0;
    /// How many of the messages are the words of scenes, which come first.
    qsizetype m_sceneMessages = 0;
    /// Whether any scene has texts translated that it does not spell.
    bool m_isTranslatingTips = false;
    /// Texts in contexts that cannot be told.
    QSet<QString> m_guessed;
    /// The contexts in which scenes have texts translated that they do not spell.
    QSet<QString> m_contexts;
    /// The same, in an order that is always the same.
    QStringList m_sortedContexts;
    /// The functions of scenes that translate what they are given, with the context.
    QHash<QString, QString> m_wrappers;
};

} // namespace Vidlets

#endif
