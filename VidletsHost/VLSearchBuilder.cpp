// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSearchBuilder.h"

#include "VLKeyTableReader.h"

#include <QElapsedTimer>
#include <QMutexLocker>
#include <QStringList>

#include <utility>

namespace Vidlets {

namespace {

// Each commit costs, and what is not written yet counts for nothing.
constexpr qint64 kGatherMs = 200;
// Readers of a store in memory have to wait for writers.
constexpr qint64 kGatherInMemoryMs = 8;
// Another process that writes for longer than that has come to a halt.
constexpr int kMaxBegins = 10;
constexpr int kMaxStores = 3;

} // namespace

VLSearchBuilder::VLSearchBuilder(std::function<void()> announce)
    : m_announce(std::move(announce))
{
    setObjectName(QStringLiteral("VLSearch"));
}

VLSearchBuilder::~VLSearchBuilder()
{
    stop();
}

void VLSearchBuilder::setStore(const QString& path, bool mustReplace)
{
    endThread();
    const QMutexLocker locker(&m_mutex);
    m_path = path;
    m_mustReplace = mustReplace;
    m_isSwept = false;
}

void VLSearchBuilder::add(const QList<Job>& jobs)
{
    {
        const QMutexLocker locker(&m_mutex);
        if (m_isStopped || jobs.isEmpty())
            return;
        m_jobs.append(jobs);
        m_isIdle = false;
        m_changed.wakeAll();
        if (std::exchange(m_isRunning, true))
            return;
    }
    // It has found nothing more to do, and may still be on its way out.
    wait();
    start();
}

void VLSearchBuilder::stop()
{
    m_isStopped = true;
    endThread();
}

void VLSearchBuilder::endThread()
{
    m_isEnding = true;
    {
        const QMutexLocker locker(&m_mutex);
        m_jobs.clear();
        m_results.clear();
        m_changed.wakeAll();
    }
    wait();
    m_isEnding = false;
    const QMutexLocker locker(&m_mutex);
    m_results.clear();
    m_isRunning = false;
}

bool VLSearchBuilder::take(Result& result)
{
    const QMutexLocker locker(&m_mutex);
    m_isAnnounced = !m_results.isEmpty();
    if (m_results.isEmpty())
        return false;
    result = m_results.dequeue();
    return true;
}

bool VLSearchBuilder::waitForResults(const QDeadlineTimer& deadline)
{
    const QMutexLocker locker(&m_mutex);
    while (m_results.isEmpty() && m_isRunning && !m_isIdle) {
        if (!m_changed.wait(&m_mutex, deadline))
            break;
    }
    return !m_results.isEmpty();
}

void VLSearchBuilder::run()
{
    std::unique_ptr<VLSearchStore> store;
    Outcome outcome = Outcome::GoOn;
    for (int stores = 0; outcome != Outcome::GiveUp;) {
        if (!store) {
            outcome = ++stores > kMaxStores ? Outcome::GiveUp : openStore(store);
            continue;
        }
        outcome = workOff(*store);
        if (outcome == Outcome::StartAnew) {
            store.reset();
            m_mustReplace = true;
            QList<Result> results{{Kind::Cleared, 0, {}, 0, {}},
                                  {Kind::Problem, 0, {}, 0, m_reason}};
            deliver(results);
        } else if (outcome == Outcome::GoOn && !mayStay()) {
            return;
        }
    }
    store.reset();
    QList<Result> results;
    if (!m_isEnding)
        results.append({Kind::Failed, 0, {}, 0, m_reason});
    deliver(results);
    const QMutexLocker locker(&m_mutex);
    m_jobs.clear();
    m_isRunning = false;
    m_changed.wakeAll();
}

VLSearchBuilder::Outcome VLSearchBuilder::openStore(std::unique_ptr<VLSearchStore>& store)
{
    if (std::exchange(m_mustReplace, false) && !VLSearchStore::isInMemory(m_path))
        VLSearchStore::putAside(m_path);
    store = std::make_unique<VLSearchStore>(m_path, VLSearchStore::Access::Write);
    const bool isOpen = store->open();
    m_reason = store->lastError();
    if (!isOpen) {
        store.reset();
        return Outcome::GiveUp;
    }
    if (!m_reason.isEmpty()) {
        QList<Result> results{{Kind::Problem, 0, {}, 0, m_reason}};
        deliver(results);
    }
    return Outcome::GoOn;
}

bool VLSearchBuilder::hasJobs()
{
    const QMutexLocker locker(&m_mutex);
    return !m_jobs.isEmpty();
}

bool VLSearchBuilder::takeJob(Job& job)
{
    const QMutexLocker locker(&m_mutex);
    if (m_isEnding || m_jobs.isEmpty())
        return false;
    job = m_jobs.dequeue();
    return true;
}

/// Where there is nothing to do, waits for jobs or has the thread end.
bool VLSearchBuilder::mayStay()
{
    const QMutexLocker locker(&m_mutex);
    m_isIdle = true;
    m_changed.wakeAll();
    while (m_jobs.isEmpty() && !m_isEnding && VLSearchStore::isInMemory(m_path))
        m_changed.wait(&m_mutex);
    m_isIdle = false;
    m_isRunning = !m_jobs.isEmpty() && !m_isEnding;
    return m_isRunning;
}

VLSearchBuilder::Outcome VLSearchBuilder::workOff(VLSearchStore& store)
{
    const qint64 limit = VLSearchStore::isInMemory(m_path) ? kGatherInMemoryMs : kGatherMs;
    while (hasJobs()) {
        Outcome outcome = begin(store);
        QList<Result> results;
        QElapsedTimer timer;
        timer.start();
        Job job;
        while (outcome == Outcome::GoOn && !timer.hasExpired(limit) && takeJob(job)) {
            Result result{Kind::Done, job.file, {}, 0, {}};
            outcome = index(store, job, result);
            results.append(result);
        }
        if (m_isEnding) {
            store.rollBack();
            return Outcome::GiveUp;
        }
        if (outcome == Outcome::GoOn)
            outcome = commit(store, results);
        if (outcome != Outcome::GoOn)
            return outcome;
    }
    return m_isEnding ? Outcome::GiveUp : sweep(store);
}

VLSearchBuilder::Outcome VLSearchBuilder::begin(VLSearchStore& store)
{
    for (int i = 0; i < kMaxBegins && !m_isEnding; ++i) {
        if (store.begin())
            return Outcome::GoOn;
        if (store.isDamaged())
            break;
    }
    return failed(store);
}

VLSearchBuilder::Outcome VLSearchBuilder::index(VLSearchStore& store, const Job& job,
                                                Result& result)
{
    VLSearchStore::File known;
    if (!store.get(job.path, known))
        return failed(store);
    result.stamp = VLIndexHooks::stampAt(job.path);
    if (known.isSettled && known.stamp == result.stamp)
        return Outcome::GoOn;
    QList<VLSearchText> texts;
    VLKeyTableReader reader(job.path, VLKeyTableReader::Keys::Omit, &m_isEnding);
    const VLKeyTableFile content = reader.read(&texts);
    if (m_isEnding)
        return Outcome::GiveUp;
    result.stamp = content.stamp;
    const bool isPut = content.state == VLKeyTableState::Absent
        ? store.forget(job.path)
        : store.put(job.path, {content.stamp, content.isSettled, content.locale}, texts);
    return isPut ? Outcome::GoOn : failed(store);
}

VLSearchBuilder::Outcome VLSearchBuilder::commit(VLSearchStore& store, QList<Result>& results)
{
    if (!store.commit())
        return failed(store);
    const qint64 epoch = store.epoch();
    for (Result& result : results)
        result.epoch = epoch;
    deliver(results);
    return Outcome::GoOn;
}

/// Drops what is of no use any more.
VLSearchBuilder::Outcome VLSearchBuilder::sweep(VLSearchStore& store)
{
    if (store.isWorn()) {
        if (begin(store) != Outcome::GoOn || !store.clear() || !store.commit())
            return failed(store);
        QList<Result> results{{Kind::Cleared, 0, {}, 0, {}}};
        deliver(results);
        return Outcome::GoOn;
    }
    if (std::exchange(m_isSwept, true) || VLSearchStore::isInMemory(m_path))
        return Outcome::GoOn;
    QStringList paths;
    if (!store.paths(paths))
        return failed(store);
    const auto isThere = [this](const QString& path) {
        return m_isEnding || VLIndexHooks::stampAt(path) != VLFileStamp();
    };
    paths.removeIf(isThere);
    if (paths.isEmpty())
        return Outcome::GoOn;
    if (begin(store) != Outcome::GoOn)
        return failed(store);
    for (const QString& path : std::as_const(paths)) {
        if (!store.forget(path))
            return failed(store);
    }
    return store.commit() ? Outcome::GoOn : failed(store);
}

VLSearchBuilder::Outcome VLSearchBuilder::failed(const VLSearchStore& store)
{
    m_reason = store.lastError();
    return store.isDamaged() ? Outcome::StartAnew : Outcome::GiveUp;
}

void VLSearchBuilder::deliver(QList<Result>& results)
{
    bool mustAnnounce = false;
    {
        const QMutexLocker locker(&m_mutex);
        if (m_isEnding || results.isEmpty())
            return;
        for (const Result& result : std::as_const(results))
            m_results.enqueue(result);
        mustAnnounce = !std::exchange(m_isAnnounced, true);
        m_changed.wakeAll();
    }
    results.clear();
    if (mustAnnounce)
        m_announce();
}

} // namespace Vidlets
