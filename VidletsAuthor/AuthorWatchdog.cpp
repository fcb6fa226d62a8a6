// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorWatchdog.h"

#include <QFile>
#include <QJSEngine>
#include <QMutexLocker>

#include <cstdio>
#include <cstdlib>
#include <utility>

#include <pthread.h>

namespace Vidlets {

namespace {

/// What was interrupted and still runs after so many times the patience does not hear of it.
constexpr qint64 kLastFactor = 4;
constexpr qint64 kMsPerS = 1000;
constexpr qint64 kNsPerMs = 1'000'000;

} // namespace

AuthorWatchdog::AuthorWatchdog(std::chrono::milliseconds patience)
    : m_patienceMs(patience.count())
{
    pthread_getcpuclockid(pthread_self(), &m_clock);
    start();
}

AuthorWatchdog::~AuthorWatchdog()
{
    {
        const QMutexLocker locker(&m_mutex);
        m_shouldQuit = true;
        m_wakeUp.wakeAll();
    }
    wait();
}

void AuthorWatchdog::watch(QJSEngine* engine)
{
    const QMutexLocker locker(&m_mutex);
    if (m_engines.contains(engine))
        return;
    m_engines.append(engine);
    connect(engine, &QObject::destroyed, this, &AuthorWatchdog::forget, Qt::DirectConnection);
}

void AuthorWatchdog::forget(const QObject* engine)
{
    const QMutexLocker locker(&m_mutex);
    m_engines.removeIf([engine](const QObject* watched) { return watched == engine; });
}

void AuthorWatchdog::begin()
{
    const QMutexLocker locker(&m_mutex);
    m_beginMs = spentMs();
    m_isOnWatch = true;
    m_wakeUp.wakeAll();
}

bool AuthorWatchdog::end()
{
    const QMutexLocker locker(&m_mutex);
    m_isOnWatch = false;
    if (m_wasInterrupted) {
        for (QJSEngine* engine : std::as_const(m_engines))
            engine->setInterrupted(false);
    }
    return std::exchange(m_wasInterrupted, false);
}

void AuthorWatchdog::setFile(const QString& file)
{
    const QMutexLocker locker(&m_mutex);
    m_file = QFile::encodeName(file);
}

void AuthorWatchdog::run()
{
    const QMutexLocker locker(&m_mutex);
    while (!m_shouldQuit) {
        if (!m_isOnWatch) {
            m_wakeUp.wait(&m_mutex);
            continue;
        }
        // The thread spends no more than passes. Woken for a new begin, too.
        const qint64 patienceMs = m_patienceMs * (m_wasInterrupted ? kLastFactor : 1);
        const qint64 leftMs = patienceMs - (spentMs() - m_beginMs);
        if (leftMs <= 0)
            patrol();
        else
            m_wakeUp.wait(&m_mutex, static_cast<unsigned long>(leftMs));
    }
}

void AuthorWatchdog::patrol()
{
    if (m_wasInterrupted) {
        std::fprintf(stderr, "vidlets: \"%s\" keeps the program from doing anything else.\n",
                     m_file.constData());
        // Nothing can be tidied up from here: the other thread has all of it.
        std::_Exit(EXIT_FAILURE);
    }
    m_wasInterrupted = true;
    for (QJSEngine* engine : std::as_const(m_engines))
        engine->setInterrupted(true);
}

qint64 AuthorWatchdog::spentMs() const
{
    timespec time{};
    clock_gettime(m_clock, &time);
    return time.tv_sec * kMsPerS + time.tv_nsec / kNsPerMs;
}

} // namespace Vidlets

#include "moc_AuthorWatchdog.cpp"
