// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableSearch.h"

#include "VLKeyTableIndex.h"
#include "VLKeyTableIndexPrivate.h"
#include <Vidlets/VLXmlElement.h>

#include <QPointer>

#include <algorithm>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

// As much as a search reads by itself before its answer is late.
constexpr qint64 kMaxReadInSearch = qint64(512) * 1024;

/// The file for the words beside that for the keys: what damages one leaves the other alone.
QString searchFileFor(const QString& cacheFile)
{
    return cacheFile.isEmpty() ? QString() : cacheFile + u"-search"_s;
}

} // namespace

VLKeyTableSearch::VLKeyTableSearch(VLKeyTableIndex* owner, VLKeyTableIndexPrivate& index)
    : m_owner(owner)
    , m_index(index)
    , m_search([this] {
        QMetaObject::invokeMethod(
            m_owner,
            [this] {
                takeResults();
                m_index.tell();
            },
            Qt::QueuedConnection);
    })
{
}

void VLKeyTableSearch::setCacheFile(const QString& path)
{
    m_isProblemNoted = false;
    m_search.setFile(searchFileFor(path));
}

void VLKeyTableSearch::noteRead(int file)
{
    m_search.await(file);
    buildSoon();
}

void VLKeyTableSearch::stop()
{
    m_search.stop();
}

/// Has the words read of what is new, when the table is built: lookups come first.
void VLKeyTableSearch::buildSoon()
{
    if (std::exchange(m_isScheduled, true))
        return;
    QMetaObject::invokeMethod(
        m_owner,
        [this] {
            m_isScheduled = false;
            if (m_index.isBuilt())
                build();
        },
        Qt::QueuedConnection);
}

void VLKeyTableSearch::build()
{
    m_search.build([this](int file) { return m_index.m_files[file].location.location; });
}

void VLKeyTableSearch::takeResults()
{
    const bool wasBuilt = m_index.isSearchBuilt();
    const QList<int> changed =
        m_search.takeResults([this](int file) { return m_index.m_files[file].stamp; });
    for (const int file : changed) {
        m_search.await(file);
        if (!m_index.m_files[file].isWaiting)
            m_index.await(file);
    }
    noteProblem();
    if (isBuilt())
        m_mustTellBuilt = m_mustTellBuilt || !wasBuilt;
    else
        buildSoon();
}

/// Whatever is wrong leads to more of it, and what is wrong with keys, too, is told of with them.
void VLKeyTableSearch::noteProblem()
{
    const QString reason = m_search.takeProblem();
    if (reason.isEmpty() || m_index.m_isCacheProblemNoted || m_index.cacheFile().isEmpty())
        return;
    if (!std::exchange(m_isProblemNoted, true))
        m_index.noteProblem(searchFileFor(m_index.cacheFile()), {{}, reason}, true);
}

bool VLKeyTableSearch::waitUntilBuilt(const QDeadlineTimer& deadline)
{
    const QPointer<VLKeyTableIndex> owner(m_owner);
    for (;;) {
        // A file that was found to have changed is read anew.
        if (!m_index.waitUntilBuilt(deadline) || !owner)
            return false;
        if (m_index.isSearchBuilt())
            return true;
        build();
        if (m_search.isWithoutStore() || !m_search.waitForResults(deadline))
            return false;
        takeResults();
        m_index.tell();
        if (!owner)
            return false;
    }
}

QList<VLSearchHit> VLKeyTableSearch::search(const QString& words, const QLocale& locale, int limit)
{
    bringInWaiting();
    takeResults();
    QList<VLSearchHit> hits = m_search.search(requestFor(words, locale, limit));
    noteProblem();
    if (!isBuilt())
        buildSoon();
    return hits;
}

VLTipSearch::Request VLKeyTableSearch::requestFor(const QString& words, const QLocale& locale,
                                                  int limit)
{
    VLTipSearch::Request request;
    request.words = words;
    request.limit = limit;
    request.unread = filesOutside();
    // A tip of which it is not certain that it is found first would have all files read before.
    request.isStoreUsed = m_index.isBuilt();
    request.turnOf = [this, locale](const QString& name) { return passOf(name, locale); };
    request.mayServe = [this, locale](const QString& key, const QString& path) {
        return mayServe(key, locale, path);
    };
    request.lookUp = [this, locale](const QString& key, QString& path) {
        int file = 0;
        std::unique_ptr<VLXmlElement> root = m_index.lookUp(key, locale, file);
        if (root)
            path = m_index.locationOf(file).location;
        return root;
    };
    request.packageOf = [this](const QString& path) {
        return m_owner->packageNameForLocation(path);
    };
    request.complete = [this](const QString& key, VLXmlElement* tip) {
        m_index.addKeyData(key, tip);
    };
    return request;
}

/// Reads what waits, as lookups do, as long as that is little.
void VLKeyTableSearch::bringInWaiting()
{
    m_index.m_readInLookup.clear();
    qint64 bytes = 0;
    while (!m_index.m_waiting.isEmpty() && bytes < kMaxReadInSearch) {
        const int file = m_index.m_waiting.first();
        if (!m_index.takeResults())
            m_index.readNow(file);
        bytes += m_index.m_files[file].stamp.size;
    }
}

/// The files that the search is to read by itself, in search order.
QStringList VLKeyTableSearch::filesOutside() const
{
    QList<int> files(m_search.pending().cbegin(), m_search.pending().cend());
    const auto isSearchedBefore = [this](int left, int right) {
        return m_index.m_files[left].order < m_index.m_files[right].order;
    };
    std::sort(files.begin(), files.end(), isSearchedBefore);
    QStringList paths;
    qint64 bytes = 0;
    for (const int file : std::as_const(files)) {
        const auto& record = m_index.m_files[file];
        if (record.isFree)
            continue;
        if (!m_index.m_waiting.isEmpty() && m_index.m_waiting.firstKey() < record.order)
            break;
        bytes += record.stamp.size;
        // Without a store, late is better than never.
        if (bytes > kMaxReadInSearch && !paths.isEmpty() && !m_search.isWithoutStore())
            break;
        paths.append(record.location.location);
    }
    return paths;
}

/// The pass of a lookup that comes upon files that name that locale; -1 for none.
int VLKeyTableSearch::passOf(const QString& name, const QLocale& locale) const
{
    using Pass = VLKeyTableIndexPrivate::Pass;
    const QLocale own(name);
    if (name.isEmpty() || own == locale)
        return int(Pass::Exact);
    if (!m_index.hasLocaleChain || locale.language() == QLocale::C
        || own.language() != locale.language() || own.script() != locale.script())
        return -1;
    return int(own == QLocale(locale.language(), locale.script(), QLocale::AnyTerritory)
                   ? Pass::Language
                   : Pass::Territory);
}

/// Whether a lookup may come upon the tip in the file @p path first, as far as the table says.
bool VLKeyTableSearch::mayServe(const QString& key, const QLocale& locale, const QString& path)
{
    using Pass = VLKeyTableIndexPrivate::Pass;
    if (!m_index.m_waiting.isEmpty())
        return true;
    const QList<VLKeyTable::Hit> hits = m_index.candidates(key);
    for (const Pass pass : {Pass::Exact, Pass::Language, Pass::Territory}) {
        if (pass != Pass::Exact && (!m_index.hasLocaleChain || locale.language() == QLocale::C))
            break;
        for (const VLKeyTable::Hit& hit : hits) {
            const auto& record = m_index.m_files[hit.file];
            if (hit.row.kind != VLKeyTableRowKind::Hidden && m_index.serves(record, locale, pass))
                return record.location.location == path;
        }
    }
    return false;
}

} // namespace Vidlets
