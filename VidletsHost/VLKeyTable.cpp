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

void VLKeyTable::keepNested(int file)
{
    const auto nested = m_nested.constFind(file);
    if (nested == m_nested.cend()) {
        remove(file);
    } else {
        // Which takes the row away.
        const QList<VLKeyTableRow> rows{*nested};
        replace(file, rows);
    }
    freeIfEmpty();
}

void VLKeyTable::clear()
{
    *this = VLKeyTable();
}

/// With n buckets, those above n - 2^k, where 2^k is the highest power not above n, are still to be
/// split by one bit more.
size_t VLKeyTable::bucketOf(const QString& key) const
{
    size_t bits = kFirstBuckets;
    while (bits * 2 <= m_buckets.size())
        bits *= 2;
    const size_t hash = qHash(key);
    const size_t bucket = hash & (bits * 2 - 1);
    return bucket < m_buckets.size() ? bucket : hash & (bits - 1);
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
        --m_count;
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
            addBucket();
        i = int(m_entries.size());
        m_entries.emplace_back();
    }
    ++m_count;
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

/// Splits one bucket in two.
void VLKeyTable::addBucket()
{
    size_t bits = kFirstBuckets;
    while (bits * 2 <= m_buckets.size())
        bits *= 2;
    const size_t split = m_buckets.size() - bits;
    int entry = std::exchange(m_buckets[split], kNone);
    m_buckets.push_back(kNone);
    while (entry != kNone) {
        int& first = m_buckets[bucketOf(m_entries[entry].row.key)];
        const int next = std::exchange(m_entries[entry].nextInBucket, first);
        first = std::exchange(entry, next);
    }
}

/// What was read of the files waits here on its way to the disk, and there may be much of it.
void VLKeyTable::freeIfEmpty()
{
    if (m_count > 0 || m_entries.empty())
        return;
    m_entries = {};
    m_buckets = std::deque<int>(kFirstBuckets, kNone);
    m_firstFree = kNone;
}

} // namespace Vidlets
