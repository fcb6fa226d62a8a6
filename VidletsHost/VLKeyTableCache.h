// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLECACHE_H
#define VLKEYTABLECACHE_H

#include "VLKeyTableBlobs.h"
#include "VLKeyTableFile.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <memory>

namespace Vidlets {

class VLKeyTableStore;

/**
 * The table on disk as lookups see it. Internal to the host kit; used on the user-interface thread.
 */
class VLKeyTableCache
{
public:
    VLKeyTableCache();
    ~VLKeyTableCache();

    /// Returns the path of the table; by default a file in the host's cache directory.
    const QString& path() const
    {
        return m_path;
    }
    /// Closes the table and goes on with @p path, where an empty one stands for none.
    void setPath(const QString& path);

    /// Opens the table, if there is one. Returns whether it is open.
    bool open();
    bool isOpen() const
    {
        return m_store != nullptr;
    }
    void close();
    /// Returns what tells the open table from any other; null where none is open.
    QByteArray token() const;
    /// Returns why the last operation failed.
    QString lastError() const;
    /// Returns the open table, or null.
    VLKeyTableStore* store() const
    {
        return m_store.get();
    }

    /// Returns whether the table says anything of the control file @p path. It is opened and read
    /// for that at the first time; after dropKnown() the answer is no.
    bool mayKnow(const QString& path);
    /// Returns what the table says of the control file @p path, without its rows, but for a nested
    /// one; null where that is nothing, or the file may be another than that with @p stamp.
    const VLKeyTableFile* known(const QString& path, const VLFileStamp& stamp) const;
    /// Frees what known() goes by.
    void dropKnown();

    /// Gives what the table says of the control file @p path. Returns whether that is anything.
    bool get(const QString& path, VLKeyTableFile& content);
    /// Gives the rows of @p key, but not those of nested roots. Returns whether that was possible.
    bool find(const QString& key, QList<KeyTableBlobs::Entry>& entries);
    /// Has the next lookup ask the table: it has changed.
    void dropFound();

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableCache)

    QString m_path;
    QString m_error;
    std::unique_ptr<VLKeyTableStore> m_store;
    bool m_isKnownRead = false;
    QHash<QString, VLKeyTableFile> m_known;
    /// The last answer, since a lookup without result is followed by one in another locale.
    bool m_hasFound = false;
    QString m_foundKey;
    QList<KeyTableBlobs::Entry> m_found;
};

} // namespace Vidlets

#endif
