// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLEndOfApplication.h"

#include <QCoreApplication>
#include <QHash>
#include <QMutex>
#include <QMutexLocker>

#include <utility>

namespace Vidlets::EndOfApplication {

namespace {

struct Registry
{
    QMutex mutex;
    QHash<const void*, std::function<void()>> actions;
};

/// Never deleted: owners may be objects that go after it.
Registry& registry()
{
    static auto* const registry = new Registry;
    return *registry;
}

void callAll()
{
    QHash<const void*, std::function<void()>> actions;
    {
        const QMutexLocker locker(&registry().mutex);
        actions = std::exchange(registry().actions, {});
    }
    for (const std::function<void()>& action : std::as_const(actions))
        action();
}

} // namespace

void add(const void* owner, const std::function<void()>& action)
{
    {
        const QMutexLocker locker(&registry().mutex);
        registry().actions.insert(owner, action);
    }
    comeFirst();
}

void remove(const void* owner)
{
    const QMutexLocker locker(&registry().mutex);
    registry().actions.remove(owner);
}

void comeFirst()
{
    const QMutexLocker locker(&registry().mutex);
    qRemovePostRoutine(&callAll);
    qAddPostRoutine(&callAll);
}

} // namespace Vidlets::EndOfApplication
