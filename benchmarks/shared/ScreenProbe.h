// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef SCREENPROBE_H
#define SCREENPROBE_H

#include <QElapsedTimer>
#include <QMutex>
#include <QRect>
#include <QRgb>
#include <QThread>

#include <atomic>
#include <functional>
#include <vector>

/**
 * Looks at a part of the X screen, over and over, and notes what is to be seen there and since
 * when.
 *
 * It has a thread and a connection of its own. So what different toolkits paint is dated in the
 * same way, with neither being asked, and a busy user-interface thread does not date it later.
 */
class ScreenProbe
{
public:
    /// What is to be seen there, of the pixels row by row; nothing() where it is not what is looked
    /// for. Called on the probe's thread.
    using Look = std::function<int(const std::vector<QRgb>& pixels)>;

    struct Sight
    {
        double seconds; ///< Since the probe was made, when it was first seen.
        int seen;
    };

    /// Starts the clock after a first look. @p area is in pixels of the screen and lies on it.
    ScreenProbe(const QRect& area, Look look);
    ~ScreenProbe();

    static constexpr int nothing()
    {
        return -1;
    }

    /// Runs the event loop until something was seen. Gives the seconds from the start to then.
    double waitForFirst(const char* what);
    /// Each change of what was seen, nothing() included.
    std::vector<Sight> sights() const;

private:
    Q_DISABLE_COPY_MOVE(ScreenProbe)

    void watch();
    double seconds() const;

    const QRect m_area;
    const Look m_look;
    QElapsedTimer m_clock;
    std::atomic<qint64> m_startNs = 0; ///< After the first look, which has to connect.
    std::atomic_bool m_shouldStop = false;
    mutable QMutex m_mutex;
    std::vector<Sight> m_sights; ///< Guarded by m_mutex.
    QThread* m_thread;
};

#endif
