// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLESTORE_H
#define VLKEYTABLESTORE_H

#include "VLKeyTableBlobs.h"
#include "VLKeyTableFile.h"
#include "VLSqliteFile.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>

#include <memory>
#include <vector>

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
 * whole or not at all, also after the end of the process in the middle of it. Internal to the host
 * kit.
 */
class VLKeyTableStore final : public VLSqliteFile
{
public:
    /// Of the SQLite file @p path, which need not exist.
    VLKeyTableStore(const QString& path, Access access);
    ~VLKeyTableStore() override;

    /// Begins to gather changes, and keeps other writers out. Returns whether that was possible.
    bool begin();
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

protected:
    bool makeTables() override;
    bool prepare() override;
    void release() override;

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

    bool prepareQueries();
    bool readToken();
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

    QByteArray m_token;
    std::unique_ptr<Queries> m_queries;

    /// What was gathered since begin().
    QHash<int, Chunk> m_chunks;
    QMap<quint64, QByteArray> m_names;
    QSet<quint64> m_forgotten;
    std::vector<Change> m_changes;
};

} // namespace Vidlets

#endif
