// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSqliteFile.h"

#include "VLEndOfApplication.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <atomic>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

// SQLite's numbers for what is wrong; finer ones are in the bits above.
constexpr int kResultMask = 0xFF;
constexpr int kError = 1;
constexpr int kBusy = 5;
constexpr int kLocked = 6;
constexpr int kCorrupt = 11;
constexpr int kNoDatabase = 26;

QString newConnectionName()
{
    static std::atomic<int> count = 0;
    return u"VLSqliteFile%1"_s.arg(++count);
}

} // namespace

VLSqliteFile::VLSqliteFile(const QString& path, Access access, const Kind& kind)
    : m_path(path)
    , m_access(access)
    , m_kind(kind)
    , m_connection(newConnectionName())
{
}

VLSqliteFile::~VLSqliteFile() = default;

bool VLSqliteFile::open()
{
    m_error.clear();
    m_isDamaged = false;
    m_isLocked = false;
    if (!mayOpen())
        return false;
    if (openOnce())
        return true;
    const QString reason = m_error;
    close();
    if (!m_isDamaged || m_access == Access::Read || m_kind.isInMemory)
        return false;
    putAside(m_path);
    m_isDamaged = false;
    const bool isOpen = openOnce();
    if (!isOpen)
        close();
    m_error = reason;
    return isOpen;
}

/// Whether there is a file to be opened, or can be.
bool VLSqliteFile::mayOpen()
{
    const QFileInfo file(m_path);
    // Nobody would ever write to the other end of a pipe.
    if (!m_kind.isInMemory && file.exists() && !file.isFile())
        return failWith(u"not a regular file"_s);
    const bool isDriverThere = QSqlDatabase::isDriverAvailable(u"QSQLITE"_s);
    EndOfApplication::comeFirst();
    if (!isDriverThere)
        return failWith(u"there is no driver for SQLite"_s);
    if (m_kind.isInMemory)
        return true;
    if (m_access == Access::Read)
        return file.exists() || failWith(u"no such file"_s);
    return QDir().mkpath(file.absolutePath()) || failWith(u"its directory cannot be made"_s);
}

bool VLSqliteFile::openOnce()
{
    const bool isWriter = m_access == Access::Write;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
        EndOfApplication::comeFirst();
        database.setDatabaseName(m_path);
        database.setConnectOptions(isWriter ? m_kind.writerOptions : m_kind.readerOptions);
        if (!database.open())
            return fail(database.lastError());
    }
    const int cacheKb = isWriter ? m_kind.writerCacheKb : m_kind.readerCacheKb;
    if (!run(u"PRAGMA cache_size = -%1"_s.arg(cacheKb)))
        return false;
    if (isWriter
        && (!run(u"PRAGMA journal_mode = WAL"_s) || !run(u"PRAGMA synchronous = NORMAL"_s)
            || !run(u"PRAGMA journal_size_limit = 1048576"_s)))
        return false;
    return checkVersion() && prepare();
}

bool VLSqliteFile::checkVersion()
{
    // The first look may fall between another's first and last statement, the second cannot.
    if (isReady())
        return true;
    if (!run(u"BEGIN IMMEDIATE"_s))
        return false;
    if (isReady())
        return run(u"COMMIT"_s);
    const bool isNew = isEmpty();
    if (isNew && m_access == Access::Write && makeTables()
        && run(u"PRAGMA application_id = %1"_s.arg(m_kind.applicationId))
        && run(u"PRAGMA user_version = %1"_s.arg(m_kind.version)) && run(u"COMMIT"_s))
        return true;
    if (!isNew)
        failDamaged(u"another program's file, or of another version"_s);
    QSqlQuery(database()).exec(u"ROLLBACK"_s);
    return false;
}

bool VLSqliteFile::isReady() const
{
    return number(u"PRAGMA application_id"_s) == m_kind.applicationId
        && number(u"PRAGMA user_version"_s) == m_kind.version;
}

bool VLSqliteFile::isEmpty() const
{
    return number(u"SELECT count(*) FROM sqlite_master"_s) == 0
        && number(u"PRAGMA application_id"_s) == 0 && number(u"PRAGMA user_version"_s) == 0;
}

/// Gives 0 where it fails: a file that was opened at the second look has no error to tell of.
int VLSqliteFile::number(const QString& statement) const
{
    QSqlQuery query(database());
    return query.exec(statement) && query.next() ? query.value(0).toInt() : 0;
}

QSqlDatabase VLSqliteFile::database() const
{
    return QSqlDatabase::database(m_connection, false);
}

bool VLSqliteFile::prepareQuery(QSqlQuery& query, const QString& statement)
{
    return query.prepare(statement) || fail(query.lastError());
}

bool VLSqliteFile::run(const QString& statement)
{
    QSqlQuery query(database());
    return query.exec(statement) || fail(query.lastError());
}

bool VLSqliteFile::run(QSqlQuery& query)
{
    return query.exec() || fail(query.lastError());
}

bool VLSqliteFile::fail(const QSqlError& error)
{
    const int code = error.nativeErrorCode().toInt() & kResultMask;
    m_error = error.databaseText().isEmpty() ? error.text() : error.databaseText();
    // Whoever is locked out, or may not write, has no reason to take the file from the others.
    m_isDamaged = m_isDamaged || code == kCorrupt || code == kNoDatabase
        || (code == kError && m_kind.isErrorDamage);
    m_isLocked = code == kBusy || code == kLocked;
    return false;
}

bool VLSqliteFile::failDamaged(const QString& reason)
{
    m_isDamaged = true;
    return failWith(reason);
}

bool VLSqliteFile::failWith(const QString& reason)
{
    m_error = reason;
    return false;
}

void VLSqliteFile::putAside(const QString& path)
{
    const QString aside = path + u".damaged"_s;
    QFile::remove(aside);
    QFile::rename(path, aside);
    // They belong to the one that was put aside, and would be taken for the new one's.
    QFile::remove(path + u"-wal"_s);
    QFile::remove(path + u"-shm"_s);
}

void VLSqliteFile::close()
{
    release();
    if (!QSqlDatabase::contains(m_connection))
        return;
    database().close();
    QSqlDatabase::removeDatabase(m_connection);
}

} // namespace Vidlets
