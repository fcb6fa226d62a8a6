// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableBuilder.h"

#include "VLKeyTableReader.h"

#include <QMutexLocker>

#include <utility>

namespace Vidlets {

VLKeyTableBuilder::VLKeyTableBuilder(std::function<void()> announce)
    : m_announce(std::move(announce))
{
    setObjectName(QStringLiteral("VLKeyTable"));
}

VLKeyTableBuilder::~VLKeyTableBuilder()
{
    stop();
}

void VLKeyTableBuilder::add(const QList<Job>& jobs)
{
    {
        const QMutexLocker locker(&m_mutex);
        if (m_isStopped || jobs.isEmpty())
            return;
        m_jobs.append(jobs);
        if (std::exchange(m_isRunning, true))
            return;
    }
    // It has found nothing more to do, and may still be on its way out.
    wait();
    start();
}

void VLKeyTableBuilder::clear()
{
    const QMutexLocker locker(&m_mutex);
    m_jobs.clear();
    m_results.clear();
}

void VLKeyTableBuilder::stop()
{
    m_isStopped = true;
    clear();
    wait();
}

bool VLKeyTableBuilder::take(Result& result)
{
    const QMutexLocker locker(&m_mutex);
    m_isAnnounced = !m_results.isEmpty();
    if (m_results.isEmpty())
        return false;
    result = m_results.dequeue();
    return true;
}

bool VLKeyTableBuilder::waitForResults(const QDeadlineTimer& deadline)
{
    const QMutexLocker locker(&m_mutex);
    while (m_results.isEmpty() && m_isRunning) {
        if (!m_delivered.wait(&m_mutex, deadline))
            break;
    }
    return !m_results.isEmpty();
}

void VLKeyTableBuilder::run()
{
    for (Job job; takeJob(job);) {
        Result result{job.file, job.generation, {}};
        result.content =
            VLKeyTableReader(job.path, VLKeyTableReader::Keys::Omit, &m_isStopped).read();
        deliver(std::move(result));
    }
}

/// Gives the next job. Where there is none, the thread ends.
bool VLKeyTableBuilder::takeJob(Job& job)
{
    const QMutexLocker locker(&m_mutex);
    if (m_isStopped || m_jobs.isEmpty()) {
        m_isRunning = false;
        m_delivered.wakeAll();
        return false;
    }
    job = m_jobs.dequeue();
    return true;
}

void VLKeyTableBuilder::deliver(Result&& result)
{
    bool mustAnnounce = false;
    {
        const QMutexLocker locker(&m_mutex);
        if (m_isStopped)
            return;
        m_results.enqueue(std::move(result));
        mustAnnounce = !std::exchange(m_isAnnounced, true);
        m_delivered.wakeAll();
    }
    if (mustAnnounce)
        m_announce();
}

} // namespace Vidlets
