// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLESEARCH_H
#define VLKEYTABLESEARCH_H

#include "VLSearchHit.h"
#include "VLTipSearch.h"

#include <QDeadlineTimer>
#include <QList>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <utility>

namespace Vidlets {

class VLKeyTableIndex;
class VLKeyTableIndexPrivate;

/**
 * The search by words of an index with a table: which files it is given, and when, and which of the
 * tips that it finds are those that lookups give.
 *
 * Internal to the host kit; used on the user-interface thread.
 */
class VLKeyTableSearch final
{
public:
    VLKeyTableSearch(VLKeyTableIndex* owner, VLKeyTableIndexPrivate& index);

    /// Puts the words beside the table on disk @p path; in memory where that is empty.
    void setCacheFile(const QString& path);

    /// Says that the words of @p file are not what they were.
    void noteRead(int file);

    /// Whether the words of all files that were read are in the store.
    bool isBuilt() const
    {
        return m_search.isBuilt();
    }
    bool waitUntilBuilt(const QDeadlineTimer& deadline);

    QList<VLSearchHit> search(const QString& words, const QLocale& locale, int limit);

    /// Takes over what the builder has done.
    void takeResults();

    /// Whether the owner has something to tell since the last call.
    bool takeNews()
    {
        return std::exchange(m_mustTellBuilt, false);
    }

    /// Ends the thread.
    void stop();

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableSearch)

    void build();
    void buildSoon();
    void noteProblem();
    VLTipSearch::Request requestFor(const QString& words, const QLocale& locale, int limit);
    void bringInWaiting();
    QStringList filesOutside() const;
    int passOf(const QString& name, const QLocale& locale) const;
    bool mayServe(const QString& key, const QLocale& locale, const QString& path);

    VLKeyTableIndex* const m_owner;
    VLKeyTableIndexPrivate& m_index;
    bool m_isProblemNoted = false;
    bool m_isScheduled = false;
    bool m_mustTellBuilt = false;
    /// Last, so that its thread ends first.
    VLTipSearch m_search;
};

} // namespace Vidlets

#endif
