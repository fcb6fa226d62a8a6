// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableBuilder.h"

#include "VLKeyTableReader.h"

#include <QMutexLocker>

#include <algorithm>
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
        for (const Job& job : jobs) {
            if (!job.content)
                m_wanted.insert(job.file, job.generation);
        }
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
    m_wanted.clear();
    const auto isOfFile = [](const Result& result) { return result.kind != Kind::Incident; };
    m_results.removeIf(isOfFile);
}

void VLKeyTableBuilder::setCacheFile(const QString& path)
{
    m_isEnding = true;
    clear();
    wait();
    m_isEnding = m_isStopped.load();
    const QMutexLocker locker(&m_mutex);
    m_results.clear();
    m_isRunning = false;
    m_cacheFile = path;
    m_isSwept = false;
}

void VLKeyTableBuilder::stop()
{
    {
        const QMutexLocker locker(&m_mutex);
        m_isCutShort = m_isCutShort || !m_jobs.isEmpty();
    }
    m_isStopped = true;
    m_isEnding = true;
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

bool VLKeyTableBuilder::isBusy()
{
    const QMutexLocker locker(&m_mutex);
    return m_isRunning || !m_results.isEmpty();
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
    do {
        // What it leaves to be tidied up is done before the owner can come to wait for this thread.
        VLKeyTableWriter writer(m_cacheFile, m_isEnding);
        for (Job job; takeJob(job);) {
            read(job, writer);
            if (writer.isFull())
                flush(writer);
        }
        flush(writer);
        sweep(writer);
    } while (!endIfIdle());
}

void VLKeyTableBuilder::read(Job& job, VLKeyTableWriter& writer)
{
    Result result;
    result.file = job.file;
    result.generation = job.generation;
    if (job.content) {
        writer.add({job.file, job.generation, job.path, std::move(*job.content)});
        return;
    }
    const bool isKnown = !job.mustRead && writer.knows(job.path, result.content);
    deliverIncident(writer);
    if (isKnown) {
        result.kind = Kind::Known;
        result.token = writer.token();
        deliver(std::move(result));
        return;
    }
    if (job.isStored)
        result.before = writer.contentOf(job.path);
    result.content = VLKeyTableReader(job.path, VLKeyTableReader::Keys::Omit, &m_isEnding).read();
    if (m_isEnding)
        return;
    result.content.isIndexed = job.isIndexed;
    writer.add({job.file, job.generation, job.path, result.content});
    deliverIncident(writer);
    deliver(std::move(result));
}

void VLKeyTableBuilder::flush(VLKeyTableWriter& writer)
{
    {
        // Who ends the process in the middle of a build has no time for it.
        const QMutexLocker locker(&m_mutex);
        if (m_isCutShort || (m_isEnding && !m_isStopped))
            return;
    }
    const QList<VLKeyTableWriter::Content> written = writer.flush();
    deliverIncident(writer);
    for (const VLKeyTableWriter::Content& content : written) {
        Result result;
        result.kind = Kind::Stored;
        result.file = content.file;
        result.generation = content.generation;
        result.token = writer.token();
        deliver(std::move(result));
    }
}

/// Drops what the table on disk has of files that went while nobody was looking, once and when
/// there is nothing else to do.
void VLKeyTableBuilder::sweep(VLKeyTableWriter& writer)
{
    QStringList gone;
    if (m_isSwept || !writer.findGone([this] { return hasJobs(); }, gone))
        return;
    m_isSwept = true;
    writer.forget(gone);
    deliverIncident(writer);
}

bool VLKeyTableBuilder::hasJobs()
{
    const QMutexLocker locker(&m_mutex);
    return m_isEnding || !m_jobs.isEmpty();
}

void VLKeyTableBuilder::deliverIncident(VLKeyTableWriter& writer)
{
    Result result;
    result.kind = Kind::Incident;
    if (!writer.takeIncident(result.incident))
        return;
    if (result.incident.isGivenUp) {
        const QMutexLocker locker(&m_mutex);
        m_cacheFile.clear();
    }
    deliver(std::move(result));
}

/// Gives the next job. Returns whether there is one.
bool VLKeyTableBuilder::takeJob(Job& job)
{
    const QMutexLocker locker(&m_mutex);
    while (!m_isEnding && !m_jobs.isEmpty()) {
        job = m_jobs.dequeue();
        if (job.content)
            return true;
        // A file that changes faster than it is read is read for its last state only.
        const auto wanted = m_wanted.constFind(job.file);
        if (wanted == m_wanted.cend() || *wanted != job.generation)
            continue;
        m_wanted.erase(wanted);
        return true;
    }
    return false;
}

/// Has the thread end where there is nothing to do. Returns whether it does.
bool VLKeyTableBuilder::endIfIdle()
{
    const QMutexLocker locker(&m_mutex);
    if (!m_isEnding && !m_jobs.isEmpty())
        return false;
    m_isRunning = false;
    m_delivered.wakeAll();
    return true;
}

void VLKeyTableBuilder::deliver(Result&& result)
{
    bool mustAnnounce = false;
    {
        const QMutexLocker locker(&m_mutex);
        if (m_isStopped)
            return;
        m_results.append(std::move(result));
        mustAnnounce = !std::exchange(m_isAnnounced, true);
        m_delivered.wakeAll();
    }
    if (mustAnnounce)
        m_announce();
}

} // namespace Vidlets
