// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef FRAMEWATCH_H
#define FRAMEWATCH_H

#include <QElapsedTimer>
#include <QEventLoop>
#include <QMutex>
#include <QQuickWindow>

#include <functional>
#include <vector>

/// Runs the event loop until @p condition holds, which is looked at after each turn with events.
/// A minute without it ends the program.
void waitUntil(const std::function<bool()>& condition, const char* what);

/// Notes when the frames of a window are swapped, on whichever thread that happens.
class FrameWatch : public QObject
{
public:
    /// Starts the clock.
    FrameWatch();

    void watch(QQuickWindow* window);

    /// Runs the event loop until a frame was swapped that the watch has seen. Gives the seconds
    /// from its start to the first of them.
    double waitForFirst();

    /// The seconds from the start to each swapped frame.
    std::vector<double> times() const;
    /// Forgets the frames so far.
    void clear();

private:
    double seconds() const;

    QElapsedTimer m_clock;
    mutable QMutex m_mutex;
    std::vector<double> m_times; ///< Guarded by m_mutex.
};

#endif
