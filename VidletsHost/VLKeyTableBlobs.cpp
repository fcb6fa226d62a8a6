// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableBlobs.h"

#include "VLKeyTableScanner.h"

#include <QDataStream>
#include <QIODevice>

#include <array>
#include <cstring>

namespace Vidlets::KeyTableBlobs {

namespace {

// An entry: what the bucket does not tell of the key's number, the file's number, start, length,
// checksum, kind.
constexpr int kBucketBits = 12;
constexpr int kKeyBytes = 5;
constexpr int kFileBytes = 8;
constexpr int kStartBytes = 5;
constexpr int kLengthBytes = 4;
constexpr int kChecksumBytes = 4;
constexpr int kKindBytes = 1;
static_assert(kBuckets == 1 << kBucketBits);
static_assert(kEntryBytes
              == kKeyBytes + kFileBytes + kStartBytes + kLengthBytes + kChecksumBytes + kKindBytes);

constexpr int kByteBits = 8;
constexpr int kSealBytes = 8;

// XML has no way to write this character, so no key has it.
constexpr QChar kEndOfName(u'\0');

/// Writes a number and goes on behind it.
void putNumber(char*& data, quint64 number, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        data[i] = char(uchar(number >> (i * kByteBits)));
    data += bytes;
}

/// Reads a number and goes on behind it.
quint64 takeNumber(const char*& data, int bytes)
{
    quint64 number = 0;
    for (int i = 0; i < bytes; ++i)
        number |= quint64(uchar(data[i])) << (i * kByteBits);
    data += bytes;
    return number;
}

quint64 storedKey(quint64 key)
{
    return (key >> kBucketBits) & ((quint64(1) << (kKeyBytes * kByteBits)) - 1);
}

quint64 sealOf(const QByteArray& data, Table table, qint64 id)
{
    std::array<char, kSealBytes + 1> place{};
    char* at = place.data();
    putNumber(at, quint64(id), kSealBytes);
    *at = char(table);
    VLKeyTableChecksum checksum;
    checksum.add(place.data(), place.size());
    checksum.add(data.constData(), data.size());
    return checksum.longValue();
}

Entry entryAt(const char* data)
{
    data += kKeyBytes;
    Entry entry;
    entry.file = takeNumber(data, kFileBytes);
    entry.row.start = qint64(takeNumber(data, kStartBytes));
    entry.row.length = qint64(takeNumber(data, kLengthBytes));
    entry.row.checksum = quint32(takeNumber(data, kChecksumBytes));
    entry.row.kind = VLKeyTableRowKind(takeNumber(data, kKindBytes));
    return entry;
}

using KeyBytes = std::array<char, kKeyBytes>;

/// What an entry of the key begins with.
KeyBytes keyBytes(quint64 key)
{
    KeyBytes bytes{};
    char* at = bytes.data();
    putNumber(at, storedKey(key), kKeyBytes);
    return bytes;
}

bool hasKey(const char* data, const KeyBytes& key)
{
    return std::memcmp(data, key.data(), key.size()) == 0;
}

QDataStream& operator<<(QDataStream& stream, const VLKeyTableRow& row)
{
    return stream << row.start << row.length << row.checksum << quint8(row.kind);
}

QDataStream& operator>>(QDataStream& stream, VLKeyTableRow& row)
{
    quint8 kind = 0;
    stream >> row.start >> row.length >> row.checksum >> kind;
    row.kind = VLKeyTableRowKind(kind);
    return stream;
}

void pack(QDataStream& stream, const Record& record)
{
    const VLKeyTableFile& file = record.content;
    stream << record.path.toUtf8() << file.stamp.size << file.stamp.modifiedNs
           << file.stamp.changedNs << quint8(file.state) << file.isSettled << file.isIndexed
           << quint8(file.unit) << file.headLength << file.rootTag.toUtf8() << file.locale.toUtf8()
           << file.problem.position.line << file.problem.position.column
           << file.problem.text.toUtf8();
    const bool hasNested =
        !file.rows.isEmpty() && file.rows.constLast().kind == VLKeyTableRowKind::Nested;
    stream << hasNested;
    if (hasNested)
        stream << file.rows.constLast();
}

QString takeText(QDataStream& stream)
{
    QByteArray text;
    stream >> text;
    return text.isEmpty() ? QString() : QString::fromUtf8(text);
}

Record unpack(QDataStream& stream)
{
    Record record;
    VLKeyTableFile& file = record.content;
    quint8 state = 0;
    quint8 unit = 0;
    bool hasNested = false;
    record.path = takeText(stream);
    stream >> file.stamp.size >> file.stamp.modifiedNs >> file.stamp.changedNs >> state
        >> file.isSettled >> file.isIndexed >> unit >> file.headLength;
    file.state = VLKeyTableState(state);
    file.unit = VLKeyTableUnit(unit);
    file.rootTag = takeText(stream);
    file.locale = takeText(stream);
    stream >> file.problem.position.line >> file.problem.position.column;
    file.problem.text = takeText(stream);
    stream >> hasNested;
    if (hasNested) {
        file.rows.append(VLKeyTableRow());
        stream >> file.rows.last();
    }
    return record;
}

} // namespace

quint64 numberOf(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    VLKeyTableChecksum checksum;
    checksum.add(bytes.constData(), bytes.size());
    return checksum.longValue();
}

int bucketOf(quint64 key)
{
    return int(key % kBuckets);
}

int chunkOf(quint64 file)
{
    return int(file % kChunks);
}

QByteArray sealed(QByteArray data, Table table, qint64 id)
{
    std::array<char, kSealBytes> seal{};
    char* at = seal.data();
    putNumber(at, sealOf(data, table, id), kSealBytes);
    return data.append(seal.data(), kSealBytes);
}

bool unseal(QByteArray& data, Table table, qint64 id)
{
    const qsizetype size = data.size() - kSealBytes;
    if (size < 0)
        return false;
    const char* at = data.constData() + size;
    const quint64 seal = takeNumber(at, kSealBytes);
    data.truncate(size);
    return seal == sealOf(data, table, id);
}

void append(QByteArray& bucket, quint64 key, const Entry& entry)
{
    const VLKeyTableRow& row = entry.row;
    // What does not fit is found by a pass over the whole file.
    const bool fits = quint64(row.start) >> (kStartBytes * kByteBits) == 0
        && quint64(row.length) >> (kLengthBytes * kByteBits) == 0;
    std::array<char, kEntryBytes> bytes{};
    char* at = bytes.data();
    putNumber(at, storedKey(key), kKeyBytes);
    putNumber(at, entry.file, kFileBytes);
    putNumber(at, fits ? quint64(row.start) : 0, kStartBytes);
    putNumber(at, fits ? quint64(row.length) : 0, kLengthBytes);
    putNumber(at, row.checksum, kChecksumBytes);
    putNumber(at, quint64(row.kind), kKindBytes);
    bucket.append(bytes.data(), kEntryBytes);
}

QList<Entry> find(const QByteArray& bucket, quint64 key)
{
    QList<Entry> entries;
    const KeyBytes bytes = keyBytes(key);
    for (qsizetype at = 0; at < bucket.size(); at += kEntryBytes) {
        const char* data = bucket.constData() + at;
        if (hasKey(data, bytes))
            entries.append(entryAt(data));
    }
    return entries;
}

bool find(const QByteArray& bucket, quint64 key, quint64 file, VLKeyTableRow& row)
{
    const KeyBytes bytes = keyBytes(key);
    for (qsizetype at = 0; at < bucket.size(); at += kEntryBytes) {
        const char* data = bucket.constData() + at;
        if (!hasKey(data, bytes) || fileOf(data) != file)
            continue;
        row = entryAt(data).row;
        return true;
    }
    return false;
}

bool isBucket(const QByteArray& bucket)
{
    return bucket.size() % kEntryBytes == 0;
}

quint64 fileOf(const char* data)
{
    data += kKeyBytes;
    return takeNumber(data, kFileBytes);
}

QByteArray packNames(const QList<VLKeyTableRow>& rows)
{
    QString names;
    for (const VLKeyTableRow& row : rows) {
        if (row.kind != VLKeyTableRowKind::Nested)
            names += row.key + kEndOfName;
    }
    return names.toUtf8();
}

QStringList unpackNames(const QByteArray& names)
{
    QStringList list = QString::fromUtf8(names).split(kEndOfName);
    list.removeLast();
    return list;
}

QByteArray packRecords(const QList<Record>& records)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    for (const Record& record : records)
        pack(stream, record);
    return data;
}

bool unpackRecords(const QByteArray& data, QList<Record>& records)
{
    QDataStream stream(data);
    stream.setVersion(QDataStream::Qt_6_0);
    while (!stream.atEnd()) {
        records.append(unpack(stream));
        if (stream.status() != QDataStream::Ok)
            return false;
    }
    return true;
}

} // namespace Vidlets::KeyTableBlobs
