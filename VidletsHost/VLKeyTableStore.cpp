// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableStore.h"

#include "VLKeyTableScanner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <atomic>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

// Told apart from files of other programs and from those of other layouts.
constexpr int kApplicationId = 0x564C4B54;
constexpr int kVersion = 1;
// SQLite's numbers for what is wrong with a file itself.
constexpr QLatin1StringView kDamaged("11");
constexpr QLatin1StringView kNoDatabase("26");

QString newConnectionName()
{
    static std::atomic<int> count = 0;
    return u"VLKeyTableStore%1"_s.arg(++count);
}

QSqlDatabase databaseOf(const QString& connection)
{
    return QSqlDatabase::database(connection, false);
}

// XML has no way to write these characters, so no key has them.
constexpr QChar kEndOfName(u'\0');
constexpr QChar kNestedMark(u'\1');

/// What a nested root goes by in the place of a key.
QString nestedName()
{
    return kNestedMark;
}

QString nameOf(const VLKeyTableRow& row)
{
    return row.kind == VLKeyTableRowKind::Nested ? nestedName() : row.key;
}

/// The names of the rows, in their order.
QByteArray joined(const QList<VLKeyTableRow>& rows)
{
    QString names;
    for (const VLKeyTableRow& row : rows)
        names += nameOf(row) + kEndOfName;
    return names.toUtf8();
}

QStringList split(const QByteArray& names)
{
    QStringList list = QString::fromUtf8(names).split(kEndOfName);
    list.removeLast();
    return list;
}

VLKeyTableRow rowOf(const QSqlQuery& query, int firstColumn)
{
    VLKeyTableRow row;
    row.start = query.value(firstColumn).toLongLong();
    row.length = query.value(firstColumn + 1).toLongLong();
    row.checksum = quint32(query.value(firstColumn + 2).toLongLong());
    row.kind = VLKeyTableRowKind(query.value(firstColumn + 3).toInt());
    return row;
}

} // namespace

/// Compiled once: that takes longer than to run them.
struct VLKeyTableStore::Queries
{
    explicit Queries(const QSqlDatabase& database)
        : insertFile(database)
        , insertRow(database)
        , dropFile(database)
        , dropRows(database)
        , selectFile(database)
        , selectRows(database)
        , findRows(database)
    {
        for (QSqlQuery* query : {&selectFile, &selectRows, &findRows})
            query->setForwardOnly(true);
    }

    QSqlQuery insertFile;
    QSqlQuery insertRow;
    QSqlQuery dropFile;
    QSqlQuery dropRows;
    QSqlQuery selectFile;
    QSqlQuery selectRows;
    QSqlQuery findRows;
};

VLKeyTableStore::VLKeyTableStore(const QString& path)
    : m_path(path)
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
    m_isUnusable = false;
    if (!QDir().mkpath(QFileInfo(m_path).absolutePath())) {
        m_error = u"the directory cannot be made"_s;
        return false;
    }
    if (openOnce())
        return true;
    const QString reason = m_error;
    close();
    if (!m_isUnusable)
        return false;
    putAside();
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

bool VLKeyTableStore::openOnce()
{
    QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
    database.setDatabaseName(m_path);
    database.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=1000"_s);
    if (!database.open())
        return fail(database.lastError());
    // Two megabytes of pages at most.
    if (!run(u"PRAGMA journal_mode = WAL"_s) || !run(u"PRAGMA synchronous = OFF"_s)
        || !run(u"PRAGMA cache_size = -1024"_s))
        return false;
    return checkVersion() && prepare();
}

bool VLKeyTableStore::checkVersion()
{
    // One after the other, where several processes come to an empty file.
    if (!run(u"BEGIN IMMEDIATE"_s))
        return false;
    QSqlQuery query(databaseOf(m_connection));
    int id = 0;
    int version = 0;
    int tables = 0;
    if (query.exec(u"PRAGMA application_id"_s) && query.next())
        id = query.value(0).toInt();
    if (query.exec(u"PRAGMA user_version"_s) && query.next())
        version = query.value(0).toInt();
    if (query.exec(u"SELECT count(*) FROM sqlite_master"_s) && query.next())
        tables = query.value(0).toInt();
    query.finish();
    const bool isEmpty = id == 0 && version == 0 && tables == 0;
    if (!isEmpty && (id != kApplicationId || version != kVersion)) {
        run(u"ROLLBACK"_s);
        m_error = u"another program's file, or of another version"_s;
        m_isUnusable = true;
        return false;
    }
    if (!isEmpty)
        return run(u"COMMIT"_s);
    return run(u"CREATE TABLE files (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE, size, "
               "modified, changed, settled, state, unit, head, root, locale, keys, line, place, "
               "fault)"_s)
        && run(u"CREATE TABLE rows (number INTEGER, file INTEGER, position INTEGER, start, length, "
               "checksum, kind, PRIMARY KEY (number, file, position)) WITHOUT ROWID"_s)
        && run(u"PRAGMA application_id = %1"_s.arg(kApplicationId))
        && run(u"PRAGMA user_version = %1"_s.arg(kVersion)) && run(u"COMMIT"_s);
}

bool VLKeyTableStore::prepare()
{
    m_queries = std::make_unique<Queries>(databaseOf(m_connection));
    const auto prepared = [this](QSqlQuery& query, const QString& statement) {
        if (query.prepare(statement))
            return true;
        return fail(query.lastError());
    };
    Queries& queries = *m_queries;
    return prepared(queries.insertFile,
                    u"INSERT INTO files (id, path, size, modified, changed, settled, state, unit, "
                    "head, root, locale, keys, line, place, fault) "
                    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"_s)
        && prepared(queries.insertRow, u"INSERT INTO rows VALUES (?, ?, ?, ?, ?, ?, ?)"_s)
        && prepared(queries.dropFile, u"DELETE FROM files WHERE id = ?"_s)
        && prepared(queries.dropRows,
                    u"DELETE FROM rows WHERE number = ? AND file = ? AND position = ?"_s)
        && prepared(queries.selectFile,
                    u"SELECT id, size, modified, changed, settled, state, unit, head, root, "
                    "locale, keys, line, place, fault FROM files WHERE path = ?"_s)
        && prepared(queries.selectRows,
                    u"SELECT start, length, checksum, kind FROM rows "
                    "WHERE number = ? AND file = ? AND position = ?"_s)
        && prepared(
               queries.findRows,
               u"SELECT file, start, length, checksum, kind FROM rows WHERE number IN (?, ?)"_s);
}

bool VLKeyTableStore::begin()
{
    return run(u"BEGIN IMMEDIATE"_s);
}

bool VLKeyTableStore::commit()
{
    if (run(u"COMMIT"_s))
        return true;
    const QString reason = m_error;
    run(u"ROLLBACK"_s);
    m_error = reason;
    return false;
}

bool VLKeyTableStore::put(const QString& path, const VLKeyTableFile& content)
{
    if (!m_queries || !run(u"SAVEPOINT put"_s))
        return false;
    // A file keeps its number: readers may have it in their hands.
    QVariant id;
    const bool isDone = dropRows(path, id) && insertFile(id, path, content)
        && insertRows(id.toLongLong(), content.rows);
    const QString reason = m_error;
    if (!isDone)
        run(u"ROLLBACK TO put"_s);
    const bool isReleased = run(u"RELEASE put"_s);
    if (!isDone)
        m_error = reason;
    return isDone && isReleased;
}

bool VLKeyTableStore::forget(const QString& path)
{
    if (!m_queries || !run(u"SAVEPOINT forget"_s))
        return false;
    QVariant id;
    const bool isDone = dropRows(path, id);
    if (!isDone)
        run(u"ROLLBACK TO forget"_s);
    return run(u"RELEASE forget"_s) && isDone;
}

/// Drops the file with its rows, and gives the number that it had, if it had one.
bool VLKeyTableStore::dropRows(const QString& path, QVariant& id)
{
    QByteArray keys;
    if (!selectFile(path))
        return false;
    if (m_queries->selectFile.next()) {
        id = m_queries->selectFile.value(u"id"_s);
        keys = m_queries->selectFile.value(u"keys"_s).toByteArray();
    }
    m_queries->selectFile.finish();
    if (id.isNull())
        return true;
    const QStringList names = split(keys);
    QSqlQuery& drop = m_queries->dropRows;
    for (qsizetype i = 0; i < names.size(); ++i) {
        drop.bindValue(0, numberOf(names.at(i)));
        drop.bindValue(1, id);
        drop.bindValue(2, i);
        if (!run(drop))
            return false;
    }
    m_queries->dropFile.bindValue(0, id);
    return run(m_queries->dropFile);
}

bool VLKeyTableStore::insertFile(QVariant& id, const QString& path, const VLKeyTableFile& content)
{
    QSqlQuery& insert = m_queries->insertFile;
    int column = 0;
    insert.bindValue(column++, id);
    insert.bindValue(column++, path);
    insert.bindValue(column++, content.stamp.size);
    insert.bindValue(column++, content.stamp.modifiedNs);
    insert.bindValue(column++, content.stamp.changedNs);
    insert.bindValue(column++, content.isSettled);
    insert.bindValue(column++, int(content.state));
    insert.bindValue(column++, int(content.unit));
    insert.bindValue(column++, content.headLength);
    insert.bindValue(column++, content.rootTag);
    insert.bindValue(column++, content.locale);
    insert.bindValue(column++, joined(content.rows));
    insert.bindValue(column++, content.problem.position.line);
    insert.bindValue(column++, content.problem.position.column);
    insert.bindValue(column++, content.problem.text);
    if (!run(insert))
        return false;
    id = insert.lastInsertId();
    return true;
}

bool VLKeyTableStore::insertRows(qint64 id, const QList<VLKeyTableRow>& rows)
{
    QSqlQuery& insert = m_queries->insertRow;
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const VLKeyTableRow& row = rows.at(i);
        int column = 0;
        insert.bindValue(column++, numberOf(nameOf(row)));
        insert.bindValue(column++, id);
        insert.bindValue(column++, i);
        insert.bindValue(column++, row.start);
        insert.bindValue(column++, row.length);
        insert.bindValue(column++, row.checksum);
        insert.bindValue(column++, int(row.kind));
        if (!run(insert))
            return false;
    }
    return true;
}

/// Runs the query of the record of @p path, which gives a row if there is one.
bool VLKeyTableStore::selectFile(const QString& path)
{
    m_queries->selectFile.bindValue(0, path);
    return run(m_queries->selectFile);
}

bool VLKeyTableStore::get(const QString& path, VLKeyTableFile& content)
{
    if (!m_queries || !selectFile(path))
        return false;
    QSqlQuery& query = m_queries->selectFile;
    if (!query.next()) {
        query.finish();
        return false;
    }
    int column = 0;
    const qint64 id = query.value(column++).toLongLong();
    content = VLKeyTableFile();
    content.stamp.size = query.value(column++).toLongLong();
    content.stamp.modifiedNs = query.value(column++).toLongLong();
    content.stamp.changedNs = query.value(column++).toLongLong();
    content.isSettled = query.value(column++).toBool();
    content.state = VLKeyTableState(query.value(column++).toInt());
    content.unit = VLKeyTableUnit(query.value(column++).toInt());
    content.headLength = query.value(column++).toLongLong();
    content.rootTag = query.value(column++).toString();
    content.locale = query.value(column++).toString();
    const QStringList names = split(query.value(column++).toByteArray());
    content.problem.position.line = query.value(column++).toLongLong();
    content.problem.position.column = query.value(column++).toLongLong();
    content.problem.text = query.value(column++).toString();
    query.finish();
    return getRows(id, names, content.rows);
}

bool VLKeyTableStore::getRows(qint64 id, const QStringList& names, QList<VLKeyTableRow>& rows)
{
    QSqlQuery& query = m_queries->selectRows;
    for (qsizetype i = 0; i < names.size(); ++i) {
        query.bindValue(0, numberOf(names.at(i)));
        query.bindValue(1, id);
        query.bindValue(2, i);
        const bool isThere = run(query) && query.next();
        if (isThere) {
            rows.append(rowOf(query, 0));
            if (rows.constLast().kind != VLKeyTableRowKind::Nested)
                rows.last().key = names.at(i);
        }
        query.finish();
        if (!isThere)
            return false;
    }
    return true;
}

QHash<QString, qint64> VLKeyTableStore::files()
{
    QHash<QString, qint64> files;
    QSqlQuery query(databaseOf(m_connection));
    query.setForwardOnly(true);
    if (!m_queries || !query.exec(u"SELECT path, id FROM files"_s))
        return files;
    while (query.next())
        files.insert(query.value(0).toString(), query.value(1).toLongLong());
    return files;
}

QList<QPair<qint64, VLKeyTableRow>> VLKeyTableStore::find(const QString& key)
{
    QList<QPair<qint64, VLKeyTableRow>> found;
    if (!m_queries)
        return found;
    QSqlQuery& query = m_queries->findRows;
    query.bindValue(0, numberOf(key));
    query.bindValue(1, numberOf(nestedName()));
    if (!run(query))
        return found;
    while (query.next()) {
        VLKeyTableRow row = rowOf(query, 1);
        if (row.kind != VLKeyTableRowKind::Nested)
            row.key = key;
        found.append({query.value(0).toLongLong(), row});
    }
    query.finish();
    return found;
}

bool VLKeyTableStore::run(const QString& statement)
{
    QSqlQuery query(databaseOf(m_connection));
    if (query.exec(statement))
        return true;
    return fail(query.lastError());
}

bool VLKeyTableStore::run(QSqlQuery& query)
{
    if (query.exec())
        return true;
    return fail(query.lastError());
}

/// Notes why something failed. Always returns false.
bool VLKeyTableStore::fail(const QSqlError& error)
{
    const QString code = error.nativeErrorCode();
    m_error = error.text();
    // Whoever is locked out, or may not write, has no reason to take the file from the others.
    m_isUnusable = m_isUnusable || code == kDamaged || code == kNoDatabase;
    return false;
}

/// Leaves the file to whoever wants to know what became of it; the one before goes.
void VLKeyTableStore::putAside()
{
    const QString aside = m_path + u".damaged"_s;
    QFile::remove(aside);
    QFile::rename(m_path, aside);
    // They belong to the one that was put aside, and would be taken for the new one's.
    QFile::remove(m_path + u"-wal"_s);
    QFile::remove(m_path + u"-shm"_s);
}

void VLKeyTableStore::close()
{
    m_queries.reset();
    {
        QSqlDatabase database = databaseOf(m_connection);
        database.close();
    }
    QSqlDatabase::removeDatabase(m_connection);
}

qint64 VLKeyTableStore::numberOf(const QString& name)
{
    const QByteArray bytes = name.toUtf8();
    VLKeyTableChecksum checksum;
    checksum.add(bytes.constData(), bytes.size());
    return qint64(checksum.longValue());
}

} // namespace Vidlets
