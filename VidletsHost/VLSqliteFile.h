// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSQLITEFILE_H
#define VLSQLITEFILE_H

#include <QString>
#include <QtGlobal>

class QSqlDatabase;
class QSqlError;
class QSqlQuery;

namespace Vidlets {

/**
 * A connection to an SQLite file that may be thrown away, and that several processes may share.
 *
 * A writer makes the file if need be, with the directories above it, and puts one that is damaged,
 * of another version or no SQLite file at all aside. No operation fails loudly: one that fails
 * gives false, and lastError() tells why. Internal to the host kit. One is used on one thread,
 * several may be open on one file.
 */
class VLSqliteFile
{
public:
    enum class Access : quint8 {
        Read, ///< Takes what is there.
        Write ///< Makes what is not there, and puts aside what is of no use.
    };

    /// Opens the file. Returns whether it can be used.
    bool open();
    /// Returns why the last operation failed, or why the file was put aside; null after neither.
    QString lastError() const
    {
        return m_error;
    }
    /// Returns whether something failed because the file itself is of no use.
    bool isDamaged() const
    {
        return m_isDamaged;
    }
    /// Returns whether the last operation failed because others are in the way.
    bool isLocked() const
    {
        return m_isLocked;
    }
    /// Gives the file the name "PATH.damaged", for whoever wants to know what became of it.
    static void putAside(const QString& path);

protected:
    /// What tells one kind of file from another, and how it is used.
    struct Kind
    {
        /// Tell it apart from files of other programs and from those of other layouts.
        int applicationId = 0;
        int version = 0;
        QString writerOptions;
        QString readerOptions;
        int writerCacheKb = 0;
        int readerCacheKb = 0;
        /// Whether a statement that SQLite does not understand tells that tables are missing.
        bool isErrorDamage = false;
        bool isInMemory = false;
    };

    /// Of the SQLite file @p path, which need not exist.
    VLSqliteFile(const QString& path, Access access, const Kind& kind);
    /// Closes nothing: who derives from it calls close() in its own.
    virtual ~VLSqliteFile();

    /// Makes the tables, in a transaction that goes on afterwards.
    virtual bool makeTables() = 0;
    /// Makes ready what is there.
    virtual bool prepare() = 0;
    /// Lets go of all that uses the connection.
    virtual void release() = 0;

    void close();
    QSqlDatabase database() const;
    bool prepareQuery(QSqlQuery& query, const QString& statement);
    bool run(const QString& statement);
    bool run(QSqlQuery& query);
    /// Note why something failed, the second one of what SQLite does not notice. Always give false.
    bool fail(const QSqlError& error);
    bool failDamaged(const QString& reason);
    void clearError()
    {
        m_error.clear();
    }
    /// Notes why something failed that is no fault of the file. Always gives false.
    bool failWith(const QString& reason);

private:
    Q_DISABLE_COPY_MOVE(VLSqliteFile)

    bool mayOpen();
    bool openOnce();
    bool checkVersion();
    bool isReady() const;
    bool isEmpty() const;
    int number(const QString& statement) const;

    const QString m_path;
    const Access m_access;
    const Kind m_kind;
    const QString m_connection;
    QString m_error;
    /// Whether the file is such that only a new one will do.
    bool m_isDamaged = false;
    bool m_isLocked = false;
};

} // namespace Vidlets

#endif
