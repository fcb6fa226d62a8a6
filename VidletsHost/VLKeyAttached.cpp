// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyAttached.h"

#include <QQmlInfo>
#include <QQuickItem>

namespace Vidlets {

VLKeyAttached::VLKeyAttached(QObject* parent)
    : QObject(parent)
{
}

VLKeyAttached::~VLKeyAttached() = default;

VLKeyAttached* VLKeyAttached::qmlAttachedProperties(QObject* object)
{
    if (!qobject_cast<QQuickItem*>(object))
        qmlWarning(object) << "Vidlet.key is for items: nothing else has a place for a tip.";
    return new VLKeyAttached(object);
}

std::optional<QString> VLKeyAttached::keyOf(const QQuickItem* item)
{
    const auto* attached = qobject_cast<VLKeyAttached*>(
        qmlAttachedPropertiesObject<VLKeyAttached>(const_cast<QQuickItem*>(item), false));
    return attached ? attached->m_key : std::nullopt;
}

QString VLKeyAttached::key() const
{
    return m_key.value_or(QString());
}

void VLKeyAttached::setKey(const QString& key)
{
    if (m_key == key)
        return;
    m_key = key;
    Q_EMIT keyChanged();
}

void VLKeyAttached::resetKey()
{
    if (!m_key)
        return;
    m_key.reset();
    Q_EMIT keyChanged();
}

} // namespace Vidlets

#include "moc_VLKeyAttached.cpp"
