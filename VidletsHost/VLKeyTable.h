// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLE_H
#define VLKEYTABLE_H

#include "VLKeyTableFile.h"

#include <QHash>
#include <QList>
#include <QString>

#include <deque>
#include <vector>

namespace Vidlets {

/**
 * The rows of all control files in memory, found by their key.
 *
 * Files go by a number of the index's choice, counted from 0 without gaps. Internal to the host
 * kit; used on the user-interface thread.
 */
class VLKeyTable
{
public:
    /// Where a lookup may find its tip.
    struct Hit
    {
        int file = 0;
        VLKeyTableRow row;
    };

    VLKeyTable();

    /// Returns the rows that a lookup of @p key may be answered with, in no order: those of a tip,
    /// those of a nested root in files that have no such key, and the hidden ones.
    QList<Hit> find(const QString& key) const;

    /// Returns the rows of @p file, in no order.
    QList<VLKeyTableRow> rowsOf(int file) const;

    /// Puts @p rows in the place of those of @p file.
    void replace(int file, const QList<VLKeyTableRow>& rows);

    /// Drops the rows of @p file, but for that of a nested root.
    void keepNested(int file);

    /// Drops all rows.
    void clear();

private:
    struct Entry
    {
        VLKeyTableRow row;
        int file = 0;
        /// The next entry of the same bucket, or of those that are free.
        int nextInBucket = -1;
        int nextOfFile = -1;
    };

    size_t bucketOf(const QString& key) const;
    void remove(int file);
    void insert(int file, const VLKeyTableRow& row);
    void unlink(int entry);
    void addBucket();
    void freeIfEmpty();

    // Neither is moved as a whole when it grows, which would take a turn of the event loop.
    std::deque<Entry> m_entries;
    /// The first entry of each.
    std::deque<int> m_buckets;
    std::vector<int> m_firstOfFile;
    int m_firstFree = -1;
    size_t m_count = 0;
    /// Few, and candidates in each lookup.
    QHash<int, VLKeyTableRow> m_nested;
};

} // namespace Vidlets

#endif
