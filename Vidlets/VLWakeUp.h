// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLWAKEUP_H
#define VLWAKEUP_H

#include <QtGlobal>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Vidlets {

/**
 * Where a thread of a clip sleeps, and how others wake it. Internal to the library.
 *
 * Without setPrompt() nobody wakes it, and it sleeps in steps. With it each change of what the
 * thread goes by wakes it, and it sleeps until then. The thread calls beginPass() before it looks
 * at anything: what changes after that ends the sleep that follows.
 *
 * All of it may be called on any thread.
 */
class VLWakeUp
{
public:
    VLWakeUp() = default;

    enum Reason {
        Work = 1,    ///< There is something new to do; a sleep between two frames goes on.
        Command = 2, ///< Ends the sleep between two frames, too.
        Quit = 4     ///< From now on there is no sleep.
    };

    /// A thread that sleeps looks anew, at once.
    void setPrompt(bool prompt);
    bool isPrompt() const;

    void wake(Reason reason);

    /// Whether wakeForFrame() is to wake the thread. Set it before looking whether a frame is
    /// there.
    void setAwaitsFrame(bool awaits);
    void wakeForFrame();

    void beginPass();
    /// Sleeps until there is something to do. Without prompting, for @p step at most.
    void idle(std::chrono::milliseconds step);
    /// Sleeps between two frames. Only for a thread that is prompted.
    void pace(std::chrono::milliseconds interval);

private:
    Q_DISABLE_COPY_MOVE(VLWakeUp)

    void add(int reason);

    std::mutex m_mutex;
    std::condition_variable m_condition;
    /// Reasons since the pass began. Changed under m_mutex alone, so that none comes between the
    /// look and the sleep; atomic for the thread sanitizer, which does not see each lock of it.
    std::atomic_int m_reasons = 0;
    std::atomic_bool m_isPrompt = false;
    std::atomic_bool m_awaitsFrame = false;
};

} // namespace Vidlets

#endif
