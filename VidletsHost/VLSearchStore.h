// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSEARCHSTORE_H
#define VLSEARCHSTORE_H

#include "VLSearchQuery.h"
#include "VLSearchText.h"
#include "VLSqliteFile.h"
#include <Vidlets/VLIndexHooks.h>

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

namespace Vidlets {

/**
 * Which words are in which tips, in an SQLite file.
 *
 * The words are folded, so that SQLite's tokenizer has nothing to do but to part them at blanks;
 * the texts themselves are not kept. What a tip no longer has cannot be taken out of SQLite's index
 * then: its place there stays, unused, until isWorn(). A word stands in the index once with a mark
 * for each part of the tip that it is in, and the number of a tip begins with its locale: so each
 * question is for a range of numbers, and the first answers come without a look at the others.
 *
 * What it says is to be checked by reading the tip. Internal to the host kit.
 */
class VLSearchStore final : public VLSqliteFile
{
public:
    /// What is known of a control file.
    struct File
    {
        VLFileStamp stamp;
        bool isSettled = false;
        QString locale;
    };

    /// A tip that may have the words.
    struct Match
    {
        /// Grows from match to match.
        qint64 id = 0;
        QString path;
        QString key;
    };

    /// Words to look for, with what the last of them may be the beginning of.
    struct Question
    {
        struct Part
        {
            QString word;
            /// Those that begin so; none where they need not be named, or are too many.
            QStringList words;
        };
        QList<Part> parts;
    };

    /// Returns a name for a store in memory, which is there as long as one has it open.
    static QString nameInMemory();
    static bool isInMemory(const QString& path);

    VLSearchStore(const QString& path, Access access);
    ~VLSearchStore() override;

    /// Returns a number that is another one after clear(), and in each new file.
    qint64 epoch();

    /// Begins to gather changes, and keeps other writers out.
    bool begin();
    /// Writes what was gathered, or drops it.
    bool commit();
    void rollBack();

    /// Gives what is known of the control file @p path; the stamp is empty where it is unknown.
    bool get(const QString& path, File& file);
    /// Puts the tips in @p texts in the place of those of the control file @p path.
    bool put(const QString& path, const File& file, const QList<VLSearchText>& texts);
    /// Drops the tips of the control file @p path.
    bool forget(const QString& path);
    /// Gives the control files that are known.
    bool paths(QStringList& paths);
    /// Returns whether there is more waste than use.
    bool isWorn();
    /// Drops everything.
    bool clear();

    /// Gives the locales that control files name.
    bool locales(QStringList& locales);

    /// Makes a question of @p terms, for the content as it is now.
    bool ask(const QList<VLSearchQuery::Term>& terms, Question& question);
    /// Gives @p count tips at most of control files that name @p locale, with all words of
    /// @p question where @p place says, behind the match with the number @p after. Tips that have
    /// them in a better place are among them.
    bool find(const Question& question, VLSearchQuery::Place place, const QString& locale,
              qint64 after, int count, QList<Match>& matches);

protected:
    bool makeTables() override;
    bool prepare() override;
    void release() override;

private:
    Q_DISABLE_COPY_MOVE(VLSearchStore)

    struct Queries;
    /// A tip as it is stored.
    struct Document
    {
        qint64 id = 0;
        quint32 checksum = 0;
    };
    /// A control file as it is stored.
    struct Record
    {
        /// Null in one that is not.
        QVariant id;
        qint64 locale = 0;
        /// The place for its next tip.
        qint64 next = 0;
    };

    QString wordsOf(const VLSearchText& text);
    bool select(const QString& path, File& file, Record& record);
    bool write(const QString& path, const File& file, Record& record);
    bool putTips(const Record& record, QHash<QString, Document>& before,
                 const QList<VLSearchText>& texts, qint64& next);
    bool insert(qint64 id, const QString& key, const QString& words);
    bool insertTerms(const QString& words);
    bool drop(const QHash<QString, Document>& documents);
    bool documentsOf(const Record& record, QHash<QString, Document>& documents);
    bool localeId(const QString& locale, bool mayAdd, qint64& id);
    bool expand(const QString& beginning, QStringList& words);
    bool value(const QString& statement, qint64& result);

    bool m_isGathering = false;
    std::unique_ptr<Queries> m_queries;
    VLSearchFold m_fold;
    /// Words that are in the file for certain.
    QSet<QString> m_known;
    /// Tips that came and went since begin().
    qint64 m_added = 0;
    qint64 m_gone = 0;
};

} // namespace Vidlets

#endif
