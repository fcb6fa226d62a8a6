// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLContext.h"

namespace {

/// Connections and calls that are made by name and wait in the event loop look up the types of
/// their arguments by the names in the signature. Each needs a store first, and each store was made
/// by the constructor that calls this or copied from one that was.
void registerKeyTypes()
{
    qRegisterMetaType<Vidlets::contextKey>("Vidlets::contextKey");
    qRegisterMetaType<VLContextKey>("VLContextKey");
}

} // namespace

VLContext::VLContext(QObject* parent)
    : QObject(parent)
{
    registerKeyTypes();
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
