// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEBLOBS_H
#define VLKEYTABLEBLOBS_H

#include "VLKeyTableFile.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

/// How the store packs what it keeps into the values of its tables. On any thread. Internal to the
/// host kit.
namespace Vidlets::KeyTableBlobs {

enum class Table : quint8 {
    Buckets, ///< The rows, by their key.
    Chunks,  ///< What is known of the files, some to a value.
    Names    ///< The keys of one file.
};

constexpr int kBuckets = 4096;
constexpr int kChunks = 256;

/// A row and the number of its file. The key is not packed with it.
struct Entry
{
    quint64 file = 0;
    VLKeyTableRow row;
};

/// A control file; its rows lie elsewhere, but for that of a nested root.
struct Record
{
    QString path;
    VLKeyTableFile content;
};

/// Returns the number that a key or a path goes by; the same on each machine.
quint64 numberOf(const QString& text);
/// Returns where the rows of a key are.
int bucketOf(quint64 key);
/// Returns where what is known of a file is.
int chunkOf(quint64 file);

/// Returns @p data with a checksum that holds for this place only.
QByteArray sealed(QByteArray data, Table table, qint64 id);
/// Takes the checksum off. Returns whether it is right.
bool unseal(QByteArray& data, Table table, qint64 id);

/// Appends a row whose key has the number @p key.
void append(QByteArray& bucket, quint64 key, const Entry& entry);
/// Returns the rows of the key of number @p key.
QList<Entry> find(const QByteArray& bucket, quint64 key);
/// Gives the row of @p key in @p file. Returns whether there is one.
bool find(const QByteArray& bucket, quint64 key, quint64 file, VLKeyTableRow& row);
/// Returns whether @p bucket is made of entries.
bool isBucket(const QByteArray& bucket);
/// Returns the entries of those files for which @p isGone gives false.
template <typename Predicate> QByteArray without(const QByteArray& bucket, Predicate isGone);

QByteArray packNames(const QList<VLKeyTableRow>& rows);
QStringList unpackNames(const QByteArray& names);

QByteArray packRecords(const QList<Record>& records);
/// Returns whether @p data is what packRecords() gives.
bool unpackRecords(const QByteArray& data, QList<Record>& records);

constexpr qsizetype kEntryBytes = 27;
/// Returns the number of the file of the entry at @p data.
quint64 fileOf(const char* data);

template <typename Predicate> QByteArray without(const QByteArray& bucket, Predicate isGone)
{
    QByteArray rest;
    rest.reserve(bucket.size());
    for (qsizetype at = 0; at < bucket.size(); at += kEntryBytes) {
        if (!isGone(fileOf(bucket.constData() + at)))
            rest.append(bucket.constData() + at, kEntryBytes);
    }
    return rest;
}

} // namespace Vidlets::KeyTableBlobs

#endif
