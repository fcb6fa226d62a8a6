// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSearchStore.h"

#include "VLKeyTableScanner.h"

#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>
#include <atomic>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

// Told apart from files of other programs and from those of other layouts, foldings among them.
constexpr int kApplicationId = 0x564C5354;
constexpr int kVersion = 1;
// The number of a tip: its locale, its file, its place.
constexpr int kFileBits = 24;
constexpr int kPlaceBits = 24;
constexpr qint64 kMaxLocale = 0x7FFE;
constexpr qint64 kMaxFile = (qint64(1) << kFileBits) - 1;
constexpr qint64 kMaxPlace = (qint64(1) << kPlaceBits) - 1;
// More words than these are looked for by their beginning, in one go, which takes the longer the
// more tips there are.
constexpr int kMaxExpansion = 128;
constexpr qsizetype kMaxKnown = 50'000;
// See VLKeyTableStore.
constexpr int kWriterCacheKb = 448;
constexpr int kReaderCacheKb = 256;
// Below that it costs next to nothing.
constexpr qint64 kTolerableWaste = 20'000;

// Before each word in the index: where it is.
constexpr QChar kAnywhere(u'a');
constexpr QChar kInTitle(u't');
constexpr QChar kInName(u'n');

constexpr QLatin1StringView kMemoryUri("file:/vidlets-search-");

constexpr qint64 firstOf(qint64 locale, qint64 file)
{
    // A number is used only where it was found: fail() is always false.
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
    return ((locale << kFileBits) | file) << kPlaceBits;
}

/// Whether all words that begin so are one list in the index: see its "prefix", where the mark
/// counts.
bool hasIndexOfBeginnings(const QString& beginning)
{
    const qsizetype length = beginning.toUcs4().size();
    return length == 2 || length == 3;
}

quint32 checksumOf(const QString& words)
{
    VLKeyTableChecksum checksum;
    const QByteArray bytes = words.toUtf8();
    checksum.add(bytes.constData(), bytes.size());
    return checksum.value();
}

/// As a string of SQLite's language of questions. A word has nothing but letters and digits.
QString quoted(QChar mark, const QString& word)
{
    return u'"' + (mark + word) + u'"';
}

/// What SQLite is asked for one word.
QString expressionOf(const VLSearchStore::Question::Part& part, QChar mark)
{
    if (part.words.isEmpty())
        return quoted(mark, part.word) + u" *"_s;
    QStringList words;
    for (const QString& word : part.words)
        words += quoted(mark, word);
    return u'(' + words.join(" OR "_L1) + u')';
}

QString expressionOf(const VLSearchStore::Question& question, VLSearchQuery::Place place)
{
    QStringList all;
    QStringList some;
    for (const VLSearchStore::Question::Part& part : question.parts) {
        all += expressionOf(part, place == VLSearchQuery::AllInTitle ? kInTitle : kAnywhere);
        if (place == VLSearchQuery::SomeInTitle)
            some += expressionOf(part, kInTitle);
        else if (place == VLSearchQuery::SomeInName)
            some += expressionOf(part, kInName);
    }
    const QString text = all.join(" AND "_L1);
    return some.isEmpty() ? text : text + " AND ("_L1 + some.join(" OR "_L1) + u')';
}

} // namespace

/// Compiled once: that takes longer than to run them.
struct VLSearchStore::Queries
{
    explicit Queries(const QSqlDatabase& database)
        : selectFile(database)
        , putFile(database)
        , selectDocuments(database)
        , insertDocument(database)
        , insertWords(database)
        , dropDocument(database)
        , insertTerm(database)
        , selectTerms(database)
        , find(database)
    {
        for (QSqlQuery* query : {&selectFile, &selectDocuments, &selectTerms, &find})
            query->setForwardOnly(true);
    }

    QSqlQuery selectFile;
    QSqlQuery putFile;
    QSqlQuery selectDocuments;
    QSqlQuery insertDocument;
    QSqlQuery insertWords;
    QSqlQuery dropDocument;
    QSqlQuery insertTerm;
    QSqlQuery selectTerms;
    QSqlQuery find;
};

QString VLSearchStore::nameInMemory()
{
    static std::atomic<int> count = 0;
    return kMemoryUri + QString::number(++count) + "?vfs=memdb"_L1;
}

bool VLSearchStore::isInMemory(const QString& path)
{
    return path.startsWith(kMemoryUri);
}

VLSearchStore::VLSearchStore(const QString& path, Access access)
    : VLSqliteFile(path, access,
                   {kApplicationId, kVersion, u"QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=1000"_s,
                    u"QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=250"_s, kWriterCacheKb, kReaderCacheKb,
                    false, isInMemory(path)})
{
}

VLSearchStore::~VLSearchStore()
{
    close();
}

void VLSearchStore::release()
{
    rollBack();
    m_queries.reset();
}

bool VLSearchStore::makeTables()
{
    return run(u"CREATE TABLE files (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE, size, "
               "modified, changed, settled, locale INTEGER, next INTEGER)"_s)
        && run(u"CREATE TABLE tips (id INTEGER PRIMARY KEY, key TEXT, checksum)"_s)
        && run(u"CREATE TABLE locales (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE)"_s)
        && run(u"CREATE TABLE terms (word TEXT PRIMARY KEY) WITHOUT ROWID"_s)
        && run(u"CREATE TABLE state (id INTEGER PRIMARY KEY, epoch, added, gone)"_s)
        && run(u"CREATE VIRTUAL TABLE words USING fts5(list, content='', detail=none, "
               "columnsize=0, tokenize='ascii', prefix='3 4')"_s)
        && clear();
}

bool VLSearchStore::prepare()
{
    m_queries = std::make_unique<Queries>(database());
    Queries& queries = *m_queries;
    return prepareQuery(queries.selectFile,
                        u"SELECT files.id, size, modified, changed, settled, locale, next, name "
                        "FROM files JOIN locales ON locales.id = locale WHERE path = ?"_s)
        && prepareQuery(queries.putFile,
                        u"INSERT OR REPLACE INTO files VALUES (?, ?, ?, ?, ?, ?, ?, ?)"_s)
        && prepareQuery(queries.selectDocuments,
                        u"SELECT id, key, checksum FROM tips WHERE id BETWEEN ? AND ?"_s)
        && prepareQuery(queries.insertDocument, u"INSERT INTO tips VALUES (?, ?, ?)"_s)
        && prepareQuery(queries.insertWords, u"INSERT INTO words (rowid, list) VALUES (?, ?)"_s)
        && prepareQuery(queries.dropDocument, u"DELETE FROM tips WHERE id = ?"_s)
        && prepareQuery(queries.insertTerm, u"INSERT OR IGNORE INTO terms VALUES (?)"_s)
        && prepareQuery(queries.selectTerms,
                        u"SELECT word FROM terms WHERE word >= ? AND word < ? LIMIT ?"_s)
        && prepareQuery(queries.find,
                        u"SELECT words.rowid, files.path, tips.key FROM words "
                        "CROSS JOIN tips ON tips.id = words.rowid "
                        "CROSS JOIN files ON files.id = (words.rowid >> %1) & %2 "
                        "WHERE words MATCH ? AND words.rowid BETWEEN ? AND ? "
                        "ORDER BY words.rowid LIMIT ?"_s.arg(kPlaceBits)
                            .arg(kMaxFile));
}

qint64 VLSearchStore::epoch()
{
    qint64 epoch = 0;
    return value(u"SELECT epoch FROM state"_s, epoch) ? epoch : 0;
}

bool VLSearchStore::begin()
{
    m_isGathering = m_queries && run(u"BEGIN IMMEDIATE"_s);
    return m_isGathering;
}

bool VLSearchStore::commit()
{
    const bool isDone = m_isGathering
        && run(u"UPDATE state SET added = added + %1, gone = gone + %2"_s.arg(m_added).arg(m_gone))
        && run(u"COMMIT"_s);
    m_added = 0;
    m_gone = 0;
    if (isDone) {
        m_isGathering = false;
        return true;
    }
    rollBack();
    return false;
}

void VLSearchStore::rollBack()
{
    m_added = 0;
    m_gone = 0;
    m_known.clear();
    if (std::exchange(m_isGathering, false))
        QSqlQuery(database()).exec(u"ROLLBACK"_s);
}

bool VLSearchStore::get(const QString& path, File& file)
{
    Record record;
    return select(path, file, record);
}

bool VLSearchStore::select(const QString& path, File& file, Record& record)
{
    file = File();
    QSqlQuery& query = m_queries->selectFile;
    query.bindValue(0, path);
    if (!run(query))
        return false;
    if (query.next()) {
        record.id = query.value(0);
        file.stamp = {query.value(1).toLongLong(), query.value(2).toLongLong(),
                      query.value(3).toLongLong()};
        file.isSettled = query.value(4).toBool();
        record.locale = query.value(5).toLongLong();
        record.next = query.value(6).toLongLong();
        file.locale = query.value(7).toString();
    }
    query.finish();
    return true;
}

/// Gives the file its number where it has none.
bool VLSearchStore::write(const QString& path, const File& file, Record& record)
{
    const QList<QVariant> values{
        record.id,      path,          file.stamp.size, file.stamp.modifiedNs, file.stamp.changedNs,
        file.isSettled, record.locale, record.next};
    QSqlQuery& query = m_queries->putFile;
    for (qsizetype i = 0; i < values.size(); ++i)
        query.bindValue(int(i), values.at(i));
    if (!run(query))
        return false;
    record.id = query.lastInsertId();
    if (record.id.toLongLong() <= kMaxFile)
        return true;
    return failWith(u"too many files"_s);
}

bool VLSearchStore::paths(QStringList& paths)
{
    QSqlQuery query(database());
    query.setForwardOnly(true);
    if (!query.exec(u"SELECT path FROM files WHERE modified <> 0"_s))
        return fail(query.lastError());
    while (query.next())
        paths.append(query.value(0).toString());
    return true;
}

bool VLSearchStore::locales(QStringList& locales)
{
    QSqlQuery query(database());
    query.setForwardOnly(true);
    if (!query.exec(u"SELECT name FROM locales ORDER BY id"_s))
        return fail(query.lastError());
    while (query.next())
        locales.append(query.value(0).toString());
    return true;
}

/// Gives the number of a locale; -1 where it has none.
bool VLSearchStore::localeId(const QString& locale, bool mayAdd, qint64& id)
{
    id = -1;
    // SQL takes a null string for no value at all.
    const QString name = locale.isNull() ? u""_s : locale;
    QSqlQuery query(database());
    if (!query.prepare(u"SELECT id FROM locales WHERE name = ?"_s))
        return fail(query.lastError());
    query.bindValue(0, name);
    if (!run(query))
        return false;
    if (query.next()) {
        id = query.value(0).toLongLong();
        return true;
    }
    query.finish();
    if (!mayAdd)
        return true;
    if (!query.prepare(u"INSERT INTO locales (name) VALUES (?)"_s))
        return fail(query.lastError());
    query.bindValue(0, name);
    if (!run(query))
        return false;
    id = query.lastInsertId().toLongLong();
    if (id <= kMaxLocale)
        return true;
    return failWith(u"too many locales"_s);
}

bool VLSearchStore::put(const QString& path, const File& file, const QList<VLSearchText>& texts)
{
    qint64 locale = 0;
    File old;
    Record record;
    QHash<QString, Document> before;
    if (!localeId(file.locale, true, locale) || !select(path, old, record))
        return false;
    if (record.id.isNull()) {
        record.locale = locale;
        if (!write(path, file, record))
            return false;
    }
    if (!documentsOf(record, before))
        return false;
    if (record.locale != locale && !drop(std::exchange(before, {})))
        return false;
    record.locale = locale;
    qint64 next = record.next;
    if (!putTips(record, before, texts, next) || !drop(before))
        return false;
    record.next = next;
    return write(path, file, record);
}

/// Leaves those in @p before that are no more.
bool VLSearchStore::putTips(const Record& record, QHash<QString, Document>& before,
                            const QList<VLSearchText>& texts, qint64& next)
{
    if (next + texts.size() > kMaxPlace) {
        return failWith(u"too many tips"_s);
    }
    for (const VLSearchText& text : texts) {
        const QString words = wordsOf(text);
        const auto same = before.constFind(text.key);
        if (same != before.cend() && same->checksum == checksumOf(words)) {
            before.erase(same);
            continue;
        }
        const qint64 first = firstOf(record.locale, record.id.toLongLong());
        if (!insert(first + next++, text.key, words))
            return false;
    }
    return true;
}

bool VLSearchStore::forget(const QString& path)
{
    // Its number stays, so that no other file gets what is left of it.
    return put(path, File(), {});
}

bool VLSearchStore::documentsOf(const Record& record, QHash<QString, Document>& documents)
{
    const qint64 first = firstOf(record.locale, record.id.toLongLong());
    QSqlQuery& query = m_queries->selectDocuments;
    query.bindValue(0, first);
    query.bindValue(1, first + kMaxPlace);
    if (!run(query))
        return false;
    while (query.next())
        documents.insert(query.value(1).toString(),
                         {query.value(0).toLongLong(), quint32(query.value(2).toLongLong())});
    query.finish();
    return true;
}

bool VLSearchStore::insert(qint64 id, const QString& key, const QString& words)
{
    QSqlQuery& insertDocument = m_queries->insertDocument;
    insertDocument.bindValue(0, id);
    insertDocument.bindValue(1, key.isNull() ? u""_s : key);
    insertDocument.bindValue(2, checksumOf(words));
    QSqlQuery& insertWords = m_queries->insertWords;
    insertWords.bindValue(0, id);
    insertWords.bindValue(1, words);
    ++m_added;
    return run(insertDocument) && run(insertWords) && insertTerms(words);
}

bool VLSearchStore::insertTerms(const QString& words)
{
    // Most are met over and over, and the file need not be asked.
    if (m_known.size() > kMaxKnown)
        m_known.clear();
    const auto list = QStringView(words).split(u' ', Qt::SkipEmptyParts);
    for (const QStringView marked : list) {
        const QString word = marked.sliced(1).toString();
        if (m_known.contains(word))
            continue;
        m_known.insert(word);
        m_queries->insertTerm.bindValue(0, word);
        if (!run(m_queries->insertTerm))
            return false;
    }
    return true;
}

bool VLSearchStore::drop(const QHash<QString, Document>& documents)
{
    QSqlQuery& query = m_queries->dropDocument;
    for (const Document& document : documents) {
        query.bindValue(0, document.id);
        ++m_gone;
        if (!run(query))
            return false;
    }
    return true;
}

/// The words of a tip as the index takes them, each once.
QString VLSearchStore::wordsOf(const VLSearchText& text)
{
    QSet<QString> words;
    const auto add = [&](const QString& source, QChar mark) {
        const QList<VLSearchFold::Word> list = m_fold.words(source);
        for (const VLSearchFold::Word& word : list) {
            words.insert(kAnywhere + word.text);
            if (mark != kAnywhere)
                words.insert(mark + word.text);
        }
    };
    add(text.title, kInTitle);
    add(text.shortcut, kInName);
    add(text.key, kInName);
    add(text.text, kAnywhere);
    QStringList sorted(words.cbegin(), words.cend());
    sorted.sort();
    return sorted.join(u' ');
}

bool VLSearchStore::isWorn()
{
    qint64 gone = 0;
    qint64 added = 0;
    return value(u"SELECT gone FROM state"_s, gone) && value(u"SELECT added FROM state"_s, added)
        && gone > kTolerableWaste && gone > added / 2;
}

bool VLSearchStore::clear()
{
    // A number that SQLite has room for, and that no other process comes upon.
    const auto epoch = qint64(QRandomGenerator::system()->generate64() >> 1);
    m_known.clear();
    return run(u"DELETE FROM files"_s) && run(u"DELETE FROM tips"_s)
        && run(u"DELETE FROM locales"_s) && run(u"DELETE FROM terms"_s)
        && run(u"INSERT INTO words (words) VALUES ('delete-all')"_s)
        && run(u"INSERT OR REPLACE INTO state VALUES (1, %1, 0, 0)"_s.arg(epoch));
}

bool VLSearchStore::ask(const QList<VLSearchQuery::Term>& terms, Question& question)
{
    for (const VLSearchQuery::Term& term : terms) {
        Question::Part part{term.word, {}};
        if (!term.isPrefix)
            part.words.append(term.word);
        else if (!hasIndexOfBeginnings(term.word) && !expand(term.word, part.words))
            return false;
        question.parts.append(part);
    }
    return true;
}

/// Gives the words that begin so; none where there are too many.
bool VLSearchStore::expand(const QString& beginning, QStringList& words)
{
    // The first word behind those that begin so.
    const char32_t last = 0x10FFFF;
    QSqlQuery& query = m_queries->selectTerms;
    query.bindValue(0, beginning);
    query.bindValue(1, beginning + QString::fromUcs4(&last, 1));
    query.bindValue(2, kMaxExpansion + 1);
    if (!run(query))
        return false;
    QStringList found;
    while (query.next())
        found.append(query.value(0).toString());
    query.finish();
    if (found.size() > kMaxExpansion)
        words.clear();
    else if (!found.isEmpty())
        words = found;
    return true;
}

bool VLSearchStore::find(const Question& question, VLSearchQuery::Place place,
                         const QString& locale, qint64 after, int count, QList<Match>& matches)
{
    qint64 number = 0;
    if (!localeId(locale, false, number))
        return false;
    if (number < 0 || question.parts.isEmpty())
        return true;
    QSqlQuery& query = m_queries->find;
    query.bindValue(0, expressionOf(question, place));
    query.bindValue(1, qMax(firstOf(number, 0), after + 1));
    query.bindValue(2, firstOf(number + 1, 0) - 1);
    query.bindValue(3, count);
    if (!run(query))
        return false;
    while (query.next())
        matches.append(
            {query.value(0).toLongLong(), query.value(1).toString(), query.value(2).toString()});
    query.finish();
    return true;
}

bool VLSearchStore::value(const QString& statement, qint64& result)
{
    QSqlQuery query(database());
    if (!query.exec(statement))
        return fail(query.lastError());
    if (!query.next())
        return false;
    result = query.value(0).toLongLong();
    return true;
}

} // namespace Vidlets
