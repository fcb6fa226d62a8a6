// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLESTORE_H
#define VLKEYTABLESTORE_H

#include "VLKeyTableBlobs.h"
#include "VLKeyTableFile.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>

#include <memory>
#include <vector>

class QSqlDatabase;
class QSqlError;
class QSqlQuery;

namespace Vidlets {

/**
 * The rows of control files in an SQLite file, which outlives the process and may be shared.
 *
 * Rows lie in some thousand buckets, by a number made of their key, so that a lookup reads one
 * value, and the first build writes each bucket once. The key itself stands in the names of its
 * file only: what find() gives is to be checked by reading the tip. Each value has a checksum,
 * since SQLite does not notice bits that were flipped, and a lookup that finds nothing could not
 * either. Every value goes through a bound parameter.
 *
 * Writers wait for one another for a moment; readers never wait. What was written is there as a
 * whole or not at all, also after the end of the process in the middle of it. No operation fails
 * loudly: one that fails gives false, and lastError() tells why.
 *
 * Internal to the host kit. One is used on one thread, several may be open on one file.
 */
class VLKeyTableStore
{
public:
    enum class Access : quint8 {
        Read, ///< Takes what is there.
        Write ///< Makes what is not there, and puts aside what is of no use.
    };

    /// Of the SQLite file @p path, which need not exist.
    VLKeyTableStore(const QString& path, Access access);
    ~VLKeyTableStore();

    /**
     * Opens the file. A writer makes it if need be, with the directories above it, and puts a file
     * that is damaged, of another version or no SQLite file at all aside under another name.
     *
     * @return Whether the store can be used.
     */
    bool open();
    /// Returns why the last operation failed, or why the file was put aside; null after neither.
    QString lastError() const;
    /// Returns whether something failed because the file itself is of no use.
    bool isDamaged() const;
    /// Gives the file another name, for whoever wants to know what became of it.
    static void putAside(const QString& path);

    /// Begins to gather changes, and keeps other writers out. Returns whether that was possible.
    bool begin();
    /// Returns whether nobody else is in the way of begin(), where that has failed.
    bool isLocked() const;
    /// Puts @p content in the place of what is known of the control file @p path, after begin().
    bool put(const QString& path, const VLKeyTableFile& content);
    /// Drops what is known of @p path, after begin().
    bool forget(const QString& path);
    /// Writes what was gathered. Returns whether all of it is in the file; else nothing is.
    bool commit();
    /// Drops what was gathered.
    void rollBack();
    /// Moves what was written to its place. Nothing depends on it but the size of the files.
    void tidy();

    /// Gives what is known of each control file, without the rows.
    bool files(QHash<QString, VLKeyTableFile>& files);
    /// Gives what is known of the control file @p path. Returns whether all of it is there; the
    /// last error is null where nothing is known.
    bool get(const QString& path, VLKeyTableFile& content);
    /// Gives the rows of @p key in all files, but not those of nested roots.
    bool find(const QString& key, QList<KeyTableBlobs::Entry>& entries);

    /// Returns what tells the file from any other that came to be under its name.
    const QByteArray& token() const
    {
        return m_token;
    }

    /// Returns the connection, on the thread of the store, for tables beside those of the store.
    QSqlDatabase database() const;

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableStore)

    using Table = KeyTableBlobs::Table;
    /// By the number of the file.
    using Chunk = QHash<quint64, KeyTableBlobs::Record>;

    /// What becomes of a bucket.
    struct Change
    {
        QSet<quint64> gone;
        QByteArray added;
    };

    struct Queries;

    bool openOnce();
    bool prepare();
    bool checkVersion();
    bool readToken();
    bool makeTables();
    Chunk* chunkOf(quint64 file);
    bool dropRows(quint64 file);
    bool getNow(const QString& path, VLKeyTableFile& content);
    bool readChunk(int id, Chunk& chunk);
    void dropGathered();
    bool writeChunks();
    bool writeNames();
    bool writeBuckets();
    bool readBucket(int id, QByteArray& entries);
    bool read(Table table, qint64 id, QByteArray& value, bool& isThere);
    bool write(Table table, qint64 id, const QByteArray& value);
    bool run(const QString& statement);
    bool run(QSqlQuery& query);
    bool fail(const QSqlError& error);
    bool failDamaged(const QString& reason);
    void close();

    const QString m_path;
    const Access m_access;
    const QString m_connection;
    QString m_error;
    QByteArray m_token;
    /// Whether the file is such that only a new one will do.
    bool m_isDamaged = false;
    bool m_isLocked = false;
    std::unique_ptr<Queries> m_queries;

    /// What was gathered since begin().
    QHash<int, Chunk> m_chunks;
    QMap<quint64, QByteArray> m_names;
    QSet<quint64> m_forgotten;
    std::vector<Change> m_changes;
};

} // namespace Vidlets

#endif
