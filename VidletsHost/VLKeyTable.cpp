// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTable.h"

#include <utility>

namespace Vidlets {

namespace {

constexpr size_t kFirstBuckets = 64;
constexpr int kNone = -1;

} // namespace

VLKeyTable::VLKeyTable()
    : m_buckets(kFirstBuckets, kNone)
{
}

QList<VLKeyTable::Hit> VLKeyTable::find(const QString& key) const
{
    QList<Hit> hits;
    for (int i = m_buckets[bucketOf(key)]; i != kNone; i = m_entries[i].nextInBucket) {
        if (m_entries[i].row.key == key)
            hits.append({m_entries[i].file, m_entries[i].row});
    }
    const qsizetype ownCount = hits.size();
    for (auto it = m_nested.cbegin(); it != m_nested.cend(); ++it) {
        bool hasKey = false;
        for (qsizetype i = 0; i < ownCount; ++i)
            hasKey = hasKey || hits.at(i).file == it.key();
        if (!hasKey)
            hits.append({it.key(), it.value()});
    }
    return hits;
}

QList<VLKeyTableRow> VLKeyTable::rowsOf(int file) const
{
    QList<VLKeyTableRow> rows;
    if (size_t(file) >= m_firstOfFile.size())
        return rows;
    for (int i = m_firstOfFile[file]; i != kNone; i = m_entries[i].nextOfFile)
        rows.append(m_entries[i].row);
    const auto nested = m_nested.constFind(file);
    if (nested != m_nested.cend())
        rows.append(*nested);
    return rows;
}

void VLKeyTable::replace(int file, const QList<VLKeyTableRow>& rows)
{
    remove(file);
    if (size_t(file) >= m_firstOfFile.size())
        m_firstOfFile.resize(file + 1, kNone);
    for (const VLKeyTableRow& row : rows) {
        if (row.kind == VLKeyTableRowKind::Nested)
            m_nested.insert(file, row);
        else
            insert(file, row);
    }
}

void VLKeyTable::clear()
{
    *this = VLKeyTable();
}

size_t VLKeyTable::bucketOf(const QString& key) const
{
    return qHash(key) & (m_buckets.size() - 1);
}

void VLKeyTable::remove(int file)
{
    m_nested.remove(file);
    if (size_t(file) >= m_firstOfFile.size())
        return;
    for (int i = std::exchange(m_firstOfFile[file], kNone); i != kNone;) {
        const int next = m_entries[i].nextOfFile;
        unlink(i);
        m_entries[i] = Entry();
        m_entries[i].nextInBucket = std::exchange(m_firstFree, i);
        i = next;
    }
}

void VLKeyTable::insert(int file, const VLKeyTableRow& row)
{
    int i = m_firstFree;
    if (i != kNone) {
        m_firstFree = m_entries[i].nextInBucket;
    } else {
        if (m_entries.size() >= m_buckets.size())
            grow();
        i = int(m_entries.size());
        m_entries.emplace_back();
    }
    Entry& entry = m_entries[i];
    entry.row = row;
    entry.file = file;
    entry.nextOfFile = std::exchange(m_firstOfFile[file], i);
    entry.nextInBucket = std::exchange(m_buckets[bucketOf(row.key)], i);
}

void VLKeyTable::unlink(int entry)
{
    int* link = &m_buckets[bucketOf(m_entries[entry].row.key)];
    while (*link != entry)
        link = &m_entries[*link].nextInBucket;
    *link = m_entries[entry].nextInBucket;
}

/// Doubles the buckets; called when no entry is free.
void VLKeyTable::grow()
{
    m_buckets.assign(m_buckets.size() * 2, kNone);
    for (size_t i = 0; i < m_entries.size(); ++i)
        m_entries[i].nextInBucket =
            std::exchange(m_buckets[bucketOf(m_entries[i].row.key)], int(i));
}

} // namespace Vidlets
