// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "FrameWatch.h"

#include <QCoreApplication>
#include <QMutexLocker>
#include <QTimer>

namespace {

constexpr int kLimitMs = 60000;
constexpr double kNsPerSecond = 1e9;

} // namespace

void waitUntil(const std::function<bool()>& condition, const char* what)
{
    QElapsedTimer clock;
    clock.start();
    // Wakes the loop where no event comes: the condition may come true without one.
    QTimer waker;
    waker.start(1);
    while (!condition()) {
        if (clock.hasExpired(kLimitMs))
            qFatal("In vain: waiting for %s", what);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

FrameWatch::FrameWatch()
{
    m_clock.start();
}

void FrameWatch::watch(QQuickWindow* window)
{
    // Direct, so that a busy user-interface thread does not date the frame later.
    connect(
        window, &QQuickWindow::frameSwapped, this,
        [this] {
            const double now = seconds();
            const QMutexLocker locker(&m_mutex);
            m_times.push_back(now);
        },
        Qt::DirectConnection);
}

double FrameWatch::waitForFirst()
{
    waitUntil([this] { return !times().empty(); }, "a frame");
    return times().front();
}

std::vector<double> FrameWatch::times() const
{
    const QMutexLocker locker(&m_mutex);
    return m_times;
}

void FrameWatch::clear()
{
    const QMutexLocker locker(&m_mutex);
    m_times.clear();
}

double FrameWatch::seconds() const
{
    return static_cast<double>(m_clock.nsecsElapsed()) / kNsPerSecond;
}
