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
    if (--state.sceneCalls > 0)
        return;
    VLManager* manager = m_manager;
    if (std::exchange(state.showsAnewLater, false)) {
        QMetaObject::invokeMethod(
            manager, [manager] { manager->showAnew(); }, Qt::QueuedConnection);
    }
    const QStringList keys = std::exchange(state.keysToRenew, {});
    if (keys.isEmpty())
        return;
    QMetaObject::invokeMethod(
        manager, [manager, keys] { manager->renewTips(keys); }, Qt::QueuedConnection);
}

} // namespace Vidlets
