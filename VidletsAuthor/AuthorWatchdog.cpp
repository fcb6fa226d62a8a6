// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorWatchdog.h"

#include <QJSEngine>
#include <QMutexLocker>

#include <utility>

namespace Vidlets {

namespace {

/// Nobody waits for a tip that long.
constexpr int kPatienceMs = 5000;

} // namespace

AuthorWatchdog::AuthorWatchdog(QJSEngine* engine)
    : m_engine(engine)
{
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

void AuthorWatchdog::begin()
{
    const QMutexLocker locker(&m_mutex);
    m_deadline = QDeadlineTimer(kPatienceMs);
    m_wakeUp.wakeAll();
}

bool AuthorWatchdog::end()
{
    const QMutexLocker locker(&m_mutex);
    m_deadline = QDeadlineTimer(QDeadlineTimer::Forever);
    m_engine->setInterrupted(false);
    return std::exchange(m_wasInterrupted, false);
}

void AuthorWatchdog::run()
{
    const QMutexLocker locker(&m_mutex);
    while (!m_shouldQuit) {
        // Woken for a new deadline, too.
        if (m_wakeUp.wait(&m_mutex, m_deadline) || m_shouldQuit || !m_deadline.hasExpired())
            continue;
        m_wasInterrupted = true;
        m_engine->setInterrupted(true);
        m_deadline = QDeadlineTimer(QDeadlineTimer::Forever);
    }
}

} // namespace Vidlets

#include "moc_AuthorWatchdog.cpp"
