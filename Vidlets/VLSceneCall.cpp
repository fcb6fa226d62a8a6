// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSceneCall.h"

#include "VLHostState.h"

#include <utility>

namespace Vidlets {

VLSceneCall::VLSceneCall(VLManager* manager)
    : m_manager(manager)
{
    if (m_manager)
        ++m_manager->hostState().sceneCalls;
}

VLSceneCall::~VLSceneCall()
{
    if (!m_manager)
        return;
    VLHostState& state = m_manager->hostState();
    if (--state.sceneCalls > 0 || !std::exchange(state.showsAnewLater, false))
        return;
    VLManager* manager = m_manager;
    QMetaObject::invokeMethod(
        manager, [manager] { manager->showAnew(); }, Qt::QueuedConnection);
}

} // namespace Vidlets
