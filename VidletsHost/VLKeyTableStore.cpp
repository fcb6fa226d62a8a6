// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableStore.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

#include <array>

using namespace Qt::StringLiterals;

namespace Vidlets {

using namespace KeyTableBlobs;

namespace {

constexpr int kApplicationId = 0x564C4B54;
constexpr int kVersion = 2;
// Those of the store of the search included, less than two megabytes together.
constexpr int kWriterCacheKb = 768;
constexpr int kReaderCacheKb = 512;
// Stand beside the chunks: whether the buckets were ever written, and what the file goes by.
constexpr int kMark = kChunks;
constexpr int kToken = kChunks + 1;
constexpr std::array<Table, 3> kTables{Table::Buckets, Table::Chunks, Table::Names};

QString nameOf(Table table)
{
    switch (table) {
    case Table::Buckets:
        return u"buckets"_s;
    case Table::Chunks:
        return u"chunks"_s;
    default:
        return u"names"_s;
    }
}

/// SQLite's numbers are signed.
qint64 idOf(quint64 file)
{
    return qint64(file);
}

} // namespace

/// Compiled once: that takes longer than to run them.
struct VLKeyTableStore::Queries
{
    explicit Queries(const QSqlDatabase& database)
        : read{QSqlQuery(database), QSqlQuery(database), QSqlQuery(database)}
        , write{QSqlQuery(database), QSqlQuery(database), QSqlQuery(database)}
        , drop(database)
    {
        for (QSqlQuery& query : read)
            query.setForwardOnly(true);
    }

    std::array<QSqlQuery, 3> read;
    std::array<QSqlQuery, 3> write;
    QSqlQuery drop;
};

// Readers wait only for one who mends the file after the end of another process.
VLKeyTableStore::VLKeyTableStore(const QString& path, Access access)
    : VLSqliteFile(path, access,
                   {kApplicationId, kVersion, u"QSQLITE_BUSY_TIMEOUT=100"_s,
                    u"QSQLITE_BUSY_TIMEOUT=250"_s, kWriterCacheKb, kReaderCacheKb, true, false})
{
}

VLKeyTableStore::~VLKeyTableStore()
{
    close();
}

void VLKeyTableStore::release()
{
    rollBack();
    m_queries.reset();
}

bool VLKeyTableStore::makeTables()
{
    for (const Table table : kTables) {
        if (!run(u"CREATE TABLE %1 (id INTEGER PRIMARY KEY, data BLOB NOT NULL)"_s.arg(
                nameOf(table))))
            return false;
    }
    if (!prepareQueries())
        return false;
    for (int id = 0; id <= kMark; ++id) {
        if (!write(Table::Chunks, id, QByteArray()))
            return false;
    }
    return write(Table::Chunks, kToken, QUuid::createUuid().toRfc4122());
}

bool VLKeyTableStore::prepare()
{
    return prepareQueries() && readToken();
}

bool VLKeyTableStore::prepareQueries()
{
    m_queries = std::make_unique<Queries>(database());
    for (const Table table : kTables) {
        const auto place = size_t(table);
        const QString name = nameOf(table);
        if (!prepareQuery(m_queries->read.at(place),
                          u"SELECT data FROM %1 WHERE id = ?"_s.arg(name))
            || !prepareQuery(m_queries->write.at(place),
                             u"INSERT OR REPLACE INTO %1 (id, data) VALUES (?, ?)"_s.arg(name)))
            return false;
    }
    return prepareQuery(m_queries->drop, u"DELETE FROM names WHERE id = ?"_s);
}

bool VLKeyTableStore::readToken()
{
    bool isThere = false;
    return read(Table::Chunks, kToken, m_token, isThere)
        && (isThere || failDamaged(u"the table has no name"_s));
}

bool VLKeyTableStore::begin()
{
    rollBack();
    if (!m_queries || !run(u"BEGIN IMMEDIATE"_s))
        return false;
    m_changes.resize(kBuckets);
    return true;
}

void VLKeyTableStore::rollBack()
{
    if (m_changes.empty())
        return;
    QSqlQuery(database()).exec(u"ROLLBACK"_s);
    dropGathered();
}

void VLKeyTableStore::dropGathered()
{
    m_chunks.clear();
    m_names.clear();
    m_forgotten.clear();
    m_changes = {};
}

bool VLKeyTableStore::put(const QString& path, const VLKeyTableFile& content)
{
    const quint64 file = numberOf(path);
    Chunk* chunk = m_changes.empty() ? nullptr : chunkOf(file);
    if (!chunk)
        return false;
    const auto before = chunk->constFind(file);
    if (before != chunk->cend() && before->path != path) {
        return failWith(u"two paths have the same number"_s);
    }
    if (before != chunk->cend() && !dropRows(file))
        return false;
    for (const VLKeyTableRow& row : content.rows) {
        if (row.kind == VLKeyTableRowKind::Nested)
            continue;
        const quint64 key = numberOf(row.key);
        append(m_changes[size_t(bucketOf(key))].added, key, {file, row});
    }
    m_names.insert(file, packNames(content.rows));
    m_forgotten.remove(file);
    chunk->insert(file, {path, content});
    return true;
}

bool VLKeyTableStore::forget(const QString& path)
{
    const quint64 file = numberOf(path);
    Chunk* chunk = m_changes.empty() ? nullptr : chunkOf(file);
    if (!chunk)
        return false;
    const auto found = chunk->constFind(file);
    if (found == chunk->cend() || found->path != path)
        return true;
    chunk->erase(found);
    const bool isDropped = dropRows(file);
    m_names.remove(file);
    m_forgotten.insert(file);
    return isDropped;
}

/// Gives the chunk of @p file for changes, or null.
VLKeyTableStore::Chunk* VLKeyTableStore::chunkOf(quint64 file)
{
    const int id = KeyTableBlobs::chunkOf(file);
    auto found = m_chunks.find(id);
    if (found != m_chunks.end())
        return &*found;
    Chunk chunk;
    if (!readChunk(id, chunk))
        return nullptr;
    return &*m_chunks.insert(id, chunk);
}

/// Has the rows of @p file dropped, those that were gathered for it included.
bool VLKeyTableStore::dropRows(quint64 file)
{
    const auto gathered = m_names.constFind(file);
    const bool isGathered = gathered != m_names.cend();
    QByteArray names;
    bool isThere = true;
    if (isGathered)
        names = *gathered;
    else if (!read(Table::Names, idOf(file), names, isThere))
        return false;
    if (!isThere)
        return failDamaged(u"the keys of a file are missing"_s);
    const auto isOfFile = [file](quint64 other) { return other == file; };
    const QStringList keys = unpackNames(names);
    for (const QString& key : keys) {
        Change& change = m_changes[size_t(bucketOf(numberOf(key)))];
        if (isGathered)
            change.added = without(change.added, isOfFile);
        change.gone.insert(file);
    }
    return true;
}

bool VLKeyTableStore::commit()
{
    if (m_changes.empty())
        return false;
    const bool isWritten = writeChunks() && writeNames() && writeBuckets() && run(u"COMMIT"_s);
    if (isWritten)
        dropGathered();
    else
        rollBack();
    return isWritten;
}

bool VLKeyTableStore::writeChunks()
{
    for (auto it = m_chunks.cbegin(); it != m_chunks.cend(); ++it) {
        if (!write(Table::Chunks, it.key(), packRecords(it->values())))
            return false;
    }
    return true;
}

bool VLKeyTableStore::writeNames()
{
    for (auto it = m_names.cbegin(); it != m_names.cend(); ++it) {
        if (!write(Table::Names, idOf(it.key()), *it))
            return false;
    }
    for (const quint64 file : std::as_const(m_forgotten)) {
        m_queries->drop.bindValue(0, idOf(file));
        if (!run(m_queries->drop))
            return false;
    }
    return true;
}

bool VLKeyTableStore::writeBuckets()
{
    QByteArray mark;
    bool isThere = false;
    if (!read(Table::Chunks, kMark, mark, isThere))
        return false;
    const bool isFirst = mark.isEmpty();
    for (int id = 0; id < kBuckets; ++id) {
        const Change& change = m_changes[size_t(id)];
        if (!isFirst && change.added.isEmpty() && change.gone.isEmpty())
            continue;
        QByteArray entries;
        if (!isFirst && !readBucket(id, entries))
            return false;
        if (!change.gone.isEmpty())
            entries =
                without(entries, [&change](quint64 file) { return change.gone.contains(file); });
        if (!write(Table::Buckets, id, entries + change.added))
            return false;
    }
    return !isFirst || write(Table::Chunks, kMark, QByteArrayLiteral("filled"));
}

void VLKeyTableStore::tidy()
{
    if (m_queries)
        QSqlQuery(database()).exec(u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
}

bool VLKeyTableStore::files(QHash<QString, VLKeyTableFile>& files)
{
    QSqlQuery query(database());
    query.setForwardOnly(true);
    if (!m_queries || !query.exec(u"SELECT id, data FROM chunks WHERE id < %1"_s.arg(kChunks)))
        return m_queries && fail(query.lastError());
    int count = 0;
    QList<Record> records;
    for (; query.next(); ++count) {
        QByteArray data = query.value(1).toByteArray();
        if (!unseal(data, Table::Chunks, query.value(0).toLongLong())
            || !unpackRecords(data, records))
            return failDamaged(u"a record of files is damaged"_s);
    }
    if (query.lastError().isValid())
        return fail(query.lastError());
    if (count != kChunks)
        return failDamaged(u"a record of files is missing"_s);
    files.reserve(records.size());
    for (const Record& record : std::as_const(records))
        files.insert(record.path, record.content);
    return true;
}

bool VLKeyTableStore::get(const QString& path, VLKeyTableFile& content)
{
    clearError();
    // All of one state, whoever writes meanwhile.
    if (!m_queries || !run(u"BEGIN"_s))
        return false;
    const bool isThere = getNow(path, content);
    QSqlQuery(database()).exec(u"COMMIT"_s);
    return isThere;
}

bool VLKeyTableStore::getNow(const QString& path, VLKeyTableFile& content)
{
    const quint64 file = numberOf(path);
    Chunk chunk;
    if (!readChunk(KeyTableBlobs::chunkOf(file), chunk) || chunk.value(file).path != path)
        return false;
    content = chunk.value(file).content;
    const QList<VLKeyTableRow> nested = content.rows;
    content.rows.clear();
    QByteArray names;
    bool isThere = false;
    if (!read(Table::Names, idOf(file), names, isThere))
        return false;
    if (!isThere)
        return failDamaged(u"the keys of a file are missing"_s);
    const QStringList keys = unpackNames(names);
    for (const QString& key : keys) {
        const quint64 number = numberOf(key);
        QByteArray entries;
        VLKeyTableRow row;
        if (!readBucket(bucketOf(number), entries))
            return false;
        if (!KeyTableBlobs::find(entries, number, file, row))
            return failDamaged(u"a row is missing"_s);
        row.key = key;
        content.rows.append(row);
    }
    content.rows += nested;
    return true;
}

bool VLKeyTableStore::find(const QString& key, QList<Entry>& entries)
{
    const quint64 number = numberOf(key);
    QByteArray bucket;
    if (!m_queries || !readBucket(bucketOf(number), bucket))
        return false;
    entries = KeyTableBlobs::find(bucket, number);
    for (Entry& entry : entries)
        entry.row.key = key;
    return true;
}

bool VLKeyTableStore::readChunk(int id, Chunk& chunk)
{
    QByteArray data;
    bool isThere = false;
    QList<Record> records;
    if (!read(Table::Chunks, id, data, isThere))
        return false;
    if (!isThere || !unpackRecords(data, records))
        return failDamaged(u"a record of files is missing"_s);
    for (const Record& record : std::as_const(records))
        chunk.insert(numberOf(record.path), record);
    return true;
}

bool VLKeyTableStore::readBucket(int id, QByteArray& entries)
{
    bool isThere = false;
    if (!read(Table::Buckets, id, entries, isThere))
        return false;
    if (isThere)
        return isBucket(entries) || failDamaged(u"rows are damaged"_s);
    QByteArray mark;
    if (!read(Table::Chunks, kMark, mark, isThere))
        return false;
    if (isThere && mark.isEmpty())
        return true;
    // They may have been written in between.
    if (!read(Table::Buckets, id, entries, isThere))
        return false;
    return (isThere && isBucket(entries)) || failDamaged(u"rows are missing"_s);
}

bool VLKeyTableStore::read(Table table, qint64 id, QByteArray& value, bool& isThere)
{
    QSqlQuery& query = m_queries->read.at(size_t(table));
    query.bindValue(0, id);
    if (!run(query))
        return false;
    isThere = query.next();
    if (isThere)
        value = query.value(0).toByteArray();
    const QSqlError error = query.lastError();
    query.finish();
    if (error.isValid())
        return fail(error);
    return !isThere || unseal(value, table, id) || failDamaged(u"a checksum is wrong"_s);
}

bool VLKeyTableStore::write(Table table, qint64 id, const QByteArray& value)
{
    QSqlQuery& query = m_queries->write.at(size_t(table));
    query.bindValue(0, id);
    query.bindValue(1, sealed(value, table, id));
    return run(query);
}

} // namespace Vidlets
