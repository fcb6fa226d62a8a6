// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLTipSearch.h"

#include "VLKeyTableReader.h"
#include "VLTipText.h"
#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLXmlElement.h>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr std::array kPlaces{VLSearchQuery::AllInTitle, VLSearchQuery::SomeInTitle,
                             VLSearchQuery::SomeInName, VLSearchQuery::InText};
// How many tips are asked for at once.
constexpr int kMinBatch = 20;
constexpr int kMaxBatch = 500;
// Tips behind others of the same key are passed over; with more of them, the answer would be late.
constexpr int kMaxShadowed = 1000;

} // namespace

VLTipSearch::VLTipSearch(std::function<void()> announce)
    : m_path(VLSearchStore::nameInMemory())
    , m_builder(std::move(announce))
{
}

VLTipSearch::~VLTipSearch() = default;

void VLTipSearch::setFile(const QString& path)
{
    m_store.reset();
    m_path = path.isEmpty() ? VLSearchStore::nameInMemory() : path;
    m_builder.setStore(m_path, false);
    m_isStoreSet = true;
    m_hasFailed = false;
    awaitAll();
}

void VLTipSearch::await(int file)
{
    m_fileCount = qMax(m_fileCount, file + 1);
    m_pending.insert(file);
    m_unsubmitted.insert(file);
}

void VLTipSearch::awaitAll()
{
    for (int file = 0; file < m_fileCount; ++file)
        await(file);
}

void VLTipSearch::build(const std::function<QString(int file)>& pathOf)
{
    if (m_unsubmitted.isEmpty() || m_hasFailed)
        return;
    if (!std::exchange(m_isStoreSet, true))
        m_builder.setStore(m_path, false);
    QList<int> files(m_unsubmitted.cbegin(), m_unsubmitted.cend());
    std::sort(files.begin(), files.end());
    m_unsubmitted = {};
    QList<VLSearchBuilder::Job> jobs;
    jobs.reserve(files.size());
    for (const int file : std::as_const(files)) {
        const QString path = pathOf(file);
        if (path.isNull())
            m_pending.remove(file);
        else
            jobs.append({file, path});
    }
    m_builder.add(jobs);
}

QList<int> VLTipSearch::takeResults(const std::function<VLFileStamp(int file)>& stampOf)
{
    VLSearchBuilder::Result result;
    QList<int> changed;
    while (m_builder.take(result)) {
        if (!result.reason.isEmpty())
            m_problem = result.reason;
        switch (result.kind) {
        case VLSearchBuilder::Kind::Done:
            m_epoch = result.epoch;
            if (m_unsubmitted.contains(result.file))
                break;
            if (stampOf(result.file) == result.stamp)
                m_pending.remove(result.file);
            else
                changed.append(result.file);
            break;
        case VLSearchBuilder::Kind::Problem:
            break;
        case VLSearchBuilder::Kind::Cleared:
            awaitAll();
            break;
        case VLSearchBuilder::Kind::Failed:
            storeFailed();
            break;
        }
    }
    // Without the room that it took when there were many.
    if (m_pending.isEmpty())
        m_pending = {};
    return changed;
}

/// Goes on in memory; where that is impossible, too, without a store.
void VLTipSearch::storeFailed()
{
    const bool wasInMemory = VLSearchStore::isInMemory(m_path);
    setFile(QString());
    m_hasFailed = wasInMemory;
}

bool VLTipSearch::waitForResults(const QDeadlineTimer& deadline)
{
    return m_builder.waitForResults(deadline);
}

void VLTipSearch::stop()
{
    m_builder.stop();
    m_store.reset();
    m_hasFailed = true;
    awaitAll();
}

VLSearchText VLTipSearch::textOf(const QString& key, const VLXmlElement& tip)
{
    return {key, TipText::title(tip, nullptr),
            TipText::plain(tip.attribute(ContentNames::shortcutAttribute())),
            TipText::text(tip, nullptr)};
}

QList<VLSearchHit> VLTipSearch::search(const Request& request)
{
    Run run{request, VLSearchQuery(request.words), {}, {}, {}, {}, 0, {}};
    if (run.query.terms().isEmpty() || request.limit <= 0)
        return {};
    readFiles(run);
    if (!request.isStoreUsed || !prepareStore(run))
        run.locales.clear();
    for (const VLSearchQuery::Place place : kPlaces) {
        // One of one word is all of them.
        if (place != VLSearchQuery::SomeInTitle || run.query.terms().size() > 1)
            look(run, place);
    }
    return run.hits;
}

void VLTipSearch::openStore()
{
    if (m_store && m_epoch != 0 && m_store->epoch() != m_epoch)
        m_store.reset();
    if (m_store || m_hasFailed)
        return;
    m_store = std::make_unique<VLSearchStore>(m_path, VLSearchStore::Access::Read);
    if (!m_store->open())
        dropStore();
}

/// Returns whether the store can be asked.
bool VLTipSearch::prepareStore(Run& run)
{
    openStore();
    if (!m_store)
        return false;
    if (m_epoch != 0 && m_store->epoch() != m_epoch) {
        // Another process has begun anew: it may not have come to all of the files yet.
        m_epoch = m_store->epoch();
        awaitAll();
    }
    QStringList locales;
    if (!m_store->locales(locales) || !m_store->ask(run.query.terms(), run.question)) {
        dropStore();
        return false;
    }
    run.locales = locales;
    run.locales.removeIf([&run](const QString& name) { return run.request.turnOf(name) < 0; });
    // Those that come first stand in front of the others' tips.
    std::stable_sort(run.locales.begin(), run.locales.end(),
                     [&run](const QString& left, const QString& right) {
                         return run.request.turnOf(left) < run.request.turnOf(right);
                     });
    return true;
}

void VLTipSearch::readFiles(Run& run) const
{
    for (const QString& path : run.request.unread) {
        QList<VLSearchText> texts;
        const VLKeyTableFile file = VLKeyTableReader(path).read(&texts);
        if (run.request.turnOf(file.locale) < 0)
            continue;
        for (const VLSearchText& text : std::as_const(texts)) {
            const VLSearchQuery::Place place = run.query.placeIn(text);
            if (place != VLSearchQuery::Nowhere)
                run.read.at(size_t(place)).append({path, text.key});
        }
    }
}

bool VLTipSearch::isWanting(const Run& run)
{
    return run.hits.size() < run.request.limit && run.shadowed < kMaxShadowed;
}

void VLTipSearch::look(Run& run, VLSearchQuery::Place place)
{
    for (const Candidate& candidate : std::as_const(run.read.at(size_t(place)))) {
        if (isWanting(run))
            tryOne(run, place, candidate);
    }
    for (const QString& locale : std::as_const(run.locales))
        lookInStore(run, place, locale);
}

void VLTipSearch::lookInStore(Run& run, VLSearchQuery::Place place, const QString& locale)
{
    qint64 after = -1;
    while (m_store && isWanting(run)) {
        QList<VLSearchStore::Match> matches;
        const int count = qBound(kMinBatch, run.request.limit, kMaxBatch);
        if (!m_store->find(run.question, place, locale, after, count, matches)) {
            dropStore();
            return;
        }
        for (const VLSearchStore::Match& match : std::as_const(matches)) {
            if (isWanting(run))
                tryOne(run, place, {match.path, match.key});
        }
        if (matches.size() < count)
            return;
        after = matches.constLast().id;
    }
}

/// Adds the tip to the hits if a lookup gives it, with the words.
void VLTipSearch::tryOne(Run& run, VLSearchQuery::Place place, const Candidate& candidate)
{
    const QString name = candidate.path + QChar(u'\0') + candidate.key;
    if (run.seen.contains(name))
        return;
    run.seen.insert(name);
    ++run.shadowed;
    if (!run.request.mayServe(candidate.key, candidate.path))
        return;
    QString path;
    const std::unique_ptr<VLXmlElement> root = run.request.lookUp(candidate.key, path);
    if (!root || path != candidate.path)
        return;
    --run.shadowed;
    auto* tip = qobject_cast<VLXmlElement*>(root->children().constFirst());
    // What serves each key of its file is the tip of none.
    if (tip->getTagName() == ContentNames::kControlFileTag)
        return;
    const VLSearchText text = textOf(candidate.key, *tip);
    const VLSearchQuery::Place actual = run.query.placeIn(text);
    if (actual == VLSearchQuery::Nowhere)
        return;
    if (actual > place) {
        // The store does not know of an edit yet: its turn comes.
        run.seen.remove(name);
        return;
    }
    const QString snippet = run.query.snippet(text);
    run.request.complete(candidate.key, tip);
    run.hits.append(
        {candidate.key, TipText::title(*tip, nullptr), snippet, run.request.packageOf(path)});
}

/// Does without the store for now; one that is damaged is made anew.
void VLTipSearch::dropStore()
{
    const bool isDamaged = m_store->isDamaged();
    const QString reason = m_store->lastError();
    m_store.reset();
    if (!isDamaged)
        return;
    m_problem = reason;
    m_builder.setStore(m_path, true);
    awaitAll();
}

} // namespace Vidlets
