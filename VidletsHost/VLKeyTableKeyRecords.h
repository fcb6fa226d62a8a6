// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEKEYRECORDS_H
#define VLKEYTABLEKEYRECORDS_H

#include <QHash>
#include <QSet>
#include <QString>

#include <atomic>

namespace Vidlets {

/**
 * What one state of a key data file says of each key, as far as it takes to tell the next state
 * from it.
 *
 * Internal to the host kit; a value, for any thread.
 */
class VLKeyTableKeyRecords
{
public:
    /// Those of a file that is not there.
    VLKeyTableKeyRecords() = default;

    /// Reads the file @p path. Where @p isStopped becomes true the result means nothing.
    static VLKeyTableKeyRecords read(const QString& path, const std::atomic<bool>& isStopped);

    /// Returns the keys that are given something else by one than by the other.
    static QSet<QString> differences(const VLKeyTableKeyRecords& left,
                                     const VLKeyTableKeyRecords& right);

private:
    QSet<QString> keys() const;

    /// By key, a number for all that its records say.
    QHash<QString, size_t> m_records;
    /// For what concerns all keys.
    size_t m_frame = 0;
};

} // namespace Vidlets

#endif
