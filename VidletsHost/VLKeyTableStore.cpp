// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableStore.h"

#include "VLEndOfApplication.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

#include <array>
#include <atomic>

using namespace Qt::StringLiterals;

namespace Vidlets {

using namespace KeyTableBlobs;

namespace {

// Told apart from files of other programs and from those of other layouts.
constexpr int kWriterCacheKb = 768;
constexpr int kReaderCacheKb = 512;
constexpr int kApplicationId = 0x564C4B54;
constexpr int kVersion = 2;
// SQLite's numbers for what is wrong; finer ones are in the bits above.
constexpr int kResultMask = 0xFF;
constexpr int kNoTable = 1;
constexpr int kBusy = 5;
constexpr int kLocked = 6;
constexpr int kCorrupt = 11;
constexpr int kNoDatabase = 26;
// Stand beside the chunks: whether the buckets were ever written, and what the file goes by.
constexpr int kMark = kChunks;
constexpr int kToken = kChunks + 1;
constexpr std::array<Table, 3> kTables{Table::Buckets, Table::Chunks, Table::Names};

QString newConnectionName()
{
    static std::atomic<int> count = 0;
    return u"VLKeyTableStore%1"_s.arg(++count);
}

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

int numberFrom(const QSqlDatabase& database, const QString& statement)
{
    QSqlQuery query(database);
    return query.exec(statement) && query.next() ? query.value(0).toInt() : 0;
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

VLKeyTableStore::VLKeyTableStore(const QString& path, Access access)
    : m_path(path)
    , m_access(access)
    , m_connection(newConnectionName())
{
}

VLKeyTableStore::~VLKeyTableStore()
{
    close();
}

bool VLKeyTableStore::open()
{
    m_error.clear();
    m_isDamaged = false;
    m_isLocked = false;
    const QFileInfo file(m_path);
    // Nobody would ever write to the other end of a pipe.
    if (file.exists() && !file.isFile()) {
        m_error = u"not a regular file"_s;
        return false;
    }
    const bool isDriverThere = QSqlDatabase::isDriverAvailable(u"QSQLITE"_s);
    EndOfApplication::comeFirst();
    if (!isDriverThere) {
        m_error = u"there is no driver for SQLite"_s;
        return false;
    }
    if (m_access == Access::Read ? !file.exists() : !QDir().mkpath(file.absolutePath())) {
        m_error = m_access == Access::Read ? u"no such file"_s : u"its directory cannot be made"_s;
        return false;
    }
    if (openOnce())
        return true;
    const QString reason = m_error;
    close();
    if (!m_isDamaged || m_access == Access::Read)
        return false;
    putAside(m_path);
    const bool isOpen = openOnce();
    if (!isOpen)
        close();
    m_error = reason;
    return isOpen;
}

QString VLKeyTableStore::lastError() const
{
    return m_error;
}

bool VLKeyTableStore::isDamaged() const
{
    return m_isDamaged;
}

bool VLKeyTableStore::isLocked() const
{
    return m_isLocked;
}

QSqlDatabase VLKeyTableStore::database() const
{
    return QSqlDatabase::database(m_connection, false);
}

bool VLKeyTableStore::openOnce()
{
    const bool isWriter = m_access == Access::Write;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
        EndOfApplication::comeFirst();
        database.setDatabaseName(m_path);
        // Readers wait only for one who mends the file after the end of another process.
        database.setConnectOptions(isWriter ? u"QSQLITE_BUSY_TIMEOUT=100"_s
                                            : u"QSQLITE_BUSY_TIMEOUT=250"_s);
        if (!database.open())
            return fail(database.lastError());
    }
    // The writer's, the reader's and those of the search's store are less than two megabytes
    // together.
    if (!run(u"PRAGMA cache_size = -%1"_s.arg(isWriter ? kWriterCacheKb : kReaderCacheKb)))
        return false;
    if (isWriter
        && (!run(u"PRAGMA journal_mode = WAL"_s) || !run(u"PRAGMA synchronous = NORMAL"_s)
            || !run(u"PRAGMA journal_size_limit = 1048576"_s)))
        return false;
    return checkVersion() && prepare() && readToken();
}

bool VLKeyTableStore::checkVersion()
{
    const QSqlDatabase database = this->database();
    const auto isReady = [&database] {
        return numberFrom(database, u"PRAGMA application_id"_s) == kApplicationId
            && numberFrom(database, u"PRAGMA user_version"_s) == kVersion;
    };
    // The first look may fall between another's first and last statement, the second cannot.
    if (isReady())
        return true;
    if (!run(u"BEGIN IMMEDIATE"_s))
        return false;
    if (isReady())
        return run(u"COMMIT"_s);
    const bool isEmpty = numberFrom(database, u"SELECT count(*) FROM sqlite_master"_s) == 0
        && numberFrom(database, u"PRAGMA application_id"_s) == 0
        && numberFrom(database, u"PRAGMA user_version"_s) == 0;
    if (isEmpty && m_access == Access::Write && makeTables() && run(u"COMMIT"_s))
        return true;
    if (!isEmpty)
        failDamaged(u"another program's file, or of another version"_s);
    QSqlQuery(database).exec(u"ROLLBACK"_s);
    return false;
}

bool VLKeyTableStore::makeTables()
{
    for (const Table table : kTables) {
        if (!run(u"CREATE TABLE %1 (id INTEGER PRIMARY KEY, data BLOB NOT NULL)"_s.arg(
                nameOf(table))))
            return false;
    }
    if (!prepare())
        return false;
    for (int id = 0; id <= kMark; ++id) {
        if (!write(Table::Chunks, id, QByteArray()))
            return false;
    }
    if (!write(Table::Chunks, kToken, QUuid::createUuid().toRfc4122()))
        return false;
    return run(u"PRAGMA application_id = %1"_s.arg(kApplicationId))
        && run(u"PRAGMA user_version = %1"_s.arg(kVersion));
}

bool VLKeyTableStore::prepare()
{
    m_queries = std::make_unique<Queries>(database());
    const auto prepared = [this](QSqlQuery& query, const QString& statement) {
        return query.prepare(statement) || fail(query.lastError());
    };
    for (const Table table : kTables) {
        const auto place = size_t(table);
        const QString name = nameOf(table);
        if (!prepared(m_queries->read.at(place), u"SELECT data FROM %1 WHERE id = ?"_s.arg(name))
            || !prepared(m_queries->write.at(place),
                         u"INSERT OR REPLACE INTO %1 (id, data) VALUES (?, ?)"_s.arg(name)))
            return false;
    }
    return prepared(m_queries->drop, u"DELETE FROM names WHERE id = ?"_s);
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
        m_error = u"two paths have the same number"_s;
        return false;
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
    m_error.clear();
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

bool VLKeyTableStore::run(const QString& statement)
{
    QSqlQuery query(database());
    return query.exec(statement) || fail(query.lastError());
}

bool VLKeyTableStore::run(QSqlQuery& query)
{
    return query.exec() || fail(query.lastError());
}

/// Notes why something failed. Always returns false.
bool VLKeyTableStore::fail(const QSqlError& error)
{
    const int code = error.nativeErrorCode().toInt() & kResultMask;
    m_error = error.databaseText().isEmpty() ? error.text() : error.databaseText();
    // Whoever is locked out, or may not write, has no reason to take the file from the others.
    m_isDamaged = m_isDamaged || code == kNoTable || code == kCorrupt || code == kNoDatabase;
    m_isLocked = code == kBusy || code == kLocked;
    return false;
}

/// As fail(), for what SQLite does not notice.
bool VLKeyTableStore::failDamaged(const QString& reason)
{
    m_error = reason;
    m_isDamaged = true;
    return false;
}

void VLKeyTableStore::putAside(const QString& path)
{
    const QString aside = path + u".damaged"_s;
    QFile::remove(aside);
    QFile::rename(path, aside);
    // They belong to the one that was put aside, and would be taken for the new one's.
    QFile::remove(path + u"-wal"_s);
    QFile::remove(path + u"-shm"_s);
}

void VLKeyTableStore::close()
{
    rollBack();
    m_queries.reset();
    if (!QSqlDatabase::contains(m_connection))
        return;
    database().close();
    QSqlDatabase::removeDatabase(m_connection);
}

} // namespace Vidlets
