// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLWakeUp.h"

namespace Vidlets {

void VLWakeUp::setPrompt(bool prompt)
{
    if (m_isPrompt.exchange(prompt) != prompt)
        add(Command);
}

bool VLWakeUp::isPrompt() const
{
    return m_isPrompt;
}

void VLWakeUp::wake(Reason reason)
{
    // A thread that nobody prompts keeps its steps, and may have been terminated anywhere.
    if (m_isPrompt)
        add(reason);
}

void VLWakeUp::setAwaitsFrame(bool awaits)
{
    m_awaitsFrame = awaits;
}

void VLWakeUp::wakeForFrame()
{
    if (m_awaitsFrame)
        wake(Work);
}

void VLWakeUp::beginPass()
{
    const std::lock_guard lock(m_mutex);
    m_reasons &= Quit;
}

void VLWakeUp::idle(std::chrono::milliseconds step)
{
    std::unique_lock lock(m_mutex);
    const auto isWoken = [this] { return m_reasons != 0; };
    if (m_isPrompt)
        m_condition.wait(lock, isWoken);
    else
        m_condition.wait_for(lock, step, isWoken);
}

void VLWakeUp::pace(std::chrono::milliseconds interval)
{
    const auto deadline = std::chrono::steady_clock::now() + interval;
    std::unique_lock lock(m_mutex);
    m_condition.wait_until(lock, deadline, [this] { return (m_reasons & ~Work) != 0; });
}

void VLWakeUp::add(int reason)
{
    {
        const std::lock_guard lock(m_mutex);
        m_reasons |= reason;
    }
    m_condition.notify_all();
}

} // namespace Vidlets
