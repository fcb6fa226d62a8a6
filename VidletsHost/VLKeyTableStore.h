// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLESTORE_H
#define VLKEYTABLESTORE_H

#include "VLKeyTableFile.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

class QSqlError;
class QSqlQuery;

namespace Vidlets {

/**
 * The rows of control files in an SQLite file, which outlives the process and may be shared.
 *
 * A row is found by a number made of its key, not by the key itself, which stands once in the
 * record of its file: what find() gives is to be checked by reading the tip. Every value goes
 * through a bound parameter.
 *
 * Writers wait for one another for a moment; readers never wait. What was written is there as a
 * whole or not at all, also after the end of the process in the middle of it, but may be lost with
 * the power: files are read again then. No operation fails loudly: one that fails gives nothing or
 * false, and lastError() tells why.
 *
 * Internal to the host kit. One is used on one thread, several may be open on one file.
 */
class VLKeyTableStore
{
public:
    /// Of the SQLite file @p path, which need not exist.
    explicit VLKeyTableStore(const QString& path);
    ~VLKeyTableStore();

    /**
     * Opens the file, and makes it if need be, with the directories above it.
     *
     * A file that is damaged, of another version or no SQLite file at all is put aside under a name
     * of its own and made anew.
     *
     * @return Whether the store can be read and written.
     */
    bool open();
    /// Returns why the last operation failed, or why the file was put aside; null after neither.
    QString lastError() const;

    /// Begins to gather writes, which are then cheap. Returns whether that was possible.
    bool begin();
    /// Ends what begin() has begun. Returns whether all of it is in the file.
    bool commit();

    /// Puts @p content in the place of what is known of the control file @p path. Returns whether
    /// that was possible.
    bool put(const QString& path, const VLKeyTableFile& content);
    /// Drops what is known of @p path. Returns whether that was possible.
    bool forget(const QString& path);

    /// Gives what is known of the control file @p path. Returns whether all of it is there.
    bool get(const QString& path, VLKeyTableFile& content);
    /// Returns the number of each control file that is known, by its path.
    QHash<QString, qint64> files();
    /// Returns the rows of @p key and those of nested roots in all files, each with the number of
    /// its file.
    QList<QPair<qint64, VLKeyTableRow>> find(const QString& key);

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableStore)

    struct Queries;

    bool openOnce();
    bool prepare();
    bool dropRows(const QString& path, QVariant& id);
    bool insertFile(QVariant& id, const QString& path, const VLKeyTableFile& content);
    bool insertRows(qint64 id, const QList<VLKeyTableRow>& rows);
    bool selectFile(const QString& path);
    bool getRows(qint64 id, const QStringList& names, QList<VLKeyTableRow>& rows);
    bool checkVersion();
    bool run(const QString& statement);
    bool run(QSqlQuery& query);
    bool fail(const QSqlError& error);
    void putAside();
    void close();
    static qint64 numberOf(const QString& name);

    const QString m_path;
    const QString m_connection;
    QString m_error;
    /// Whether the file is such that only a new one will do.
    bool m_isUnusable = false;
    std::unique_ptr<Queries> m_queries;
};

} // namespace Vidlets

#endif
