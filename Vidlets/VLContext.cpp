// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLContext.h"

VLContext::VLContext(QObject* parent)
    : QObject(parent)
{
    // By name, so that connections and invocations by name find the type whichever comes first.
    qRegisterMetaType<Vidlets::contextKey>("Vidlets::contextKey");
}

VLContext::VLContext(const VLContext& other)
    : QObject(nullptr)
    , m_settings(other.m_settings)
{
}

VLContext::~VLContext() = default;

VLContext& VLContext::operator=(const VLContext& other)
{
    if (this != &other)
        m_settings = other.m_settings;
    return *this;
}

QVariant VLContext::get(const VLContextKey& key, const QVariant& defaultValue) const
{
    return m_settings.value(key, defaultValue);
}

void VLContext::set(const VLContextKey& key, const QVariant& value)
{
    Q_EMIT settingWillChange(key);
    m_settings.insert(key, value);
    Q_EMIT settingDidChange(key);
}

bool VLContext::contains(const VLContextKey& key)
{
    return m_settings.contains(key);
}

QList<int> VLContext::keys()
{
    return m_settings.keys();
}

#include "moc_VLContext.cpp"
