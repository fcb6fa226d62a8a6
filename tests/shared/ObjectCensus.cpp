// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ObjectCensus.h"

#include <QMutex>
#include <QMutexLocker>

// Where Qt lets object inspectors listen in; it has no header that is installed with the others.
extern Q_CORE_EXPORT quintptr qtHookData[];

namespace {

constexpr int kAddObjectHook = 3;
constexpr int kRemoveObjectHook = 4;

// Objects may come and go on any thread.
QMutex mutex;
QList<QObject*> objects;
int made = 0;

void addObject(QObject* object)
{
    const QMutexLocker lock(&mutex);
    objects += object;
    ++made;
}

void removeObject(QObject* object)
{
    const QMutexLocker lock(&mutex);
    objects.removeOne(object);
}

} // namespace

ObjectCensus::ObjectCensus()
{
    objects.clear();
    made = 0;
    qtHookData[kAddObjectHook] = reinterpret_cast<quintptr>(&addObject);
    qtHookData[kRemoveObjectHook] = reinterpret_cast<quintptr>(&removeObject);
}

ObjectCensus::~ObjectCensus()
{
    qtHookData[kAddObjectHook] = 0;
    qtHookData[kRemoveObjectHook] = 0;
}

bool ObjectCensus::isAlive(const QObject* address) const
{
    const QMutexLocker lock(&mutex);
    return objects.contains(address);
}

int ObjectCensus::madeCount() const
{
    const QMutexLocker lock(&mutex);
    return made;
}

QList<QObject*> ObjectCensus::livingObjects()
{
    const QMutexLocker lock(&mutex);
    return objects;
}
