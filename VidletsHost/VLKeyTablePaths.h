// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEPATHS_H
#define VLKEYTABLEPATHS_H

#include <QHash>
#include <QList>
#include <QString>

#include <utility>
#include <vector>

namespace Vidlets {

/**
 * Finds files by their path, in a few bytes for each, since the paths stay with the files.
 *
 * Internal to the host kit.
 */
class VLKeyTablePaths
{
public:
    /// Adds @p file. @p pathOf gives the path of a file.
    template <typename PathOf> void insert(int file, const PathOf& pathOf)
    {
        if ((m_count + 1) * 2 > m_slots.size())
            grow(pathOf);
        put(file, pathOf(file));
        ++m_count;
    }

    /// Takes @p file away, which has the path that it was added with.
    template <typename PathOf> void remove(int file, const PathOf& pathOf)
    {
        const size_t mask = m_slots.size() - 1;
        size_t gap = slotOf(pathOf(file));
        while (m_slots[gap] != file)
            gap = (gap + 1) & mask;
        --m_count;
        // Who stands behind it for want of room moves up, so that a search finds no gap on its way.
        for (size_t i = (gap + 1) & mask; m_slots[i] != kNone; i = (i + 1) & mask) {
            const size_t wanted = slotOf(pathOf(m_slots[i]));
            if (((i - wanted) & mask) >= ((i - gap) & mask))
                m_slots[std::exchange(gap, i)] = m_slots[i];
        }
        m_slots[gap] = kNone;
    }

    /// Returns the files that were added with the path @p path.
    template <typename PathOf> QList<int> find(const QString& path, const PathOf& pathOf) const
    {
        QList<int> files;
        if (m_slots.empty())
            return files;
        for (size_t i = slotOf(path); m_slots[i] != kNone; i = (i + 1) & (m_slots.size() - 1)) {
            if (pathOf(m_slots[i]) == path)
                files.append(m_slots[i]);
        }
        return files;
    }

private:
    static constexpr int kNone = -1;
    static constexpr size_t kFirstSlots = 16;

    size_t slotOf(const QString& path) const
    {
        return qHash(path) & (m_slots.size() - 1);
    }

    void put(int file, const QString& path)
    {
        size_t i = slotOf(path);
        while (m_slots[i] != kNone)
            i = (i + 1) & (m_slots.size() - 1);
        m_slots[i] = file;
    }

    template <typename PathOf> void grow(const PathOf& pathOf)
    {
        const size_t count = m_slots.empty() ? kFirstSlots : m_slots.size() * 2;
        const std::vector<int> before = std::exchange(m_slots, std::vector<int>(count, kNone));
        for (const int file : before) {
            if (file != kNone)
                put(file, pathOf(file));
        }
    }

    /// Their number is a power of two, and at most half of them are taken.
    std::vector<int> m_slots;
    size_t m_count = 0;
};

} // namespace Vidlets

#endif
