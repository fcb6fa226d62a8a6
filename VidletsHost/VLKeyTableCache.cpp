// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableCache.h"

#include "VLKeyTableStore.h"

#include <QFileInfo>
#include <QStandardPaths>

#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

// After the end of another process the one that opens the table first puts in place what that has
// left. More than this is for the builder's thread.
constexpr qint64 kMaxLeftBytes = qint64(2) * 1024 * 1024;

QString defaultPath()
{
    const QString directory = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    return directory.isEmpty() ? QString() : directory + u"/vidlets-keys.sqlite"_s;
}

} // namespace

VLKeyTableCache::VLKeyTableCache()
    : m_path(defaultPath())
{
}

VLKeyTableCache::~VLKeyTableCache() = default;

void VLKeyTableCache::setPath(const QString& path)
{
    close();
    m_known = {};
    m_isKnownRead = false;
    m_path = path;
}

bool VLKeyTableCache::open()
{
    if (m_store || m_path.isEmpty())
        return isOpen();
    auto store = std::make_unique<VLKeyTableStore>(m_path, VLKeyTableStore::Access::Read);
    if (store->open())
        m_store = std::move(store);
    else
        m_error = store->lastError();
    return isOpen();
}

void VLKeyTableCache::close()
{
    if (m_store)
        m_error = m_store->lastError();
    m_store.reset();
    dropFound();
}

QByteArray VLKeyTableCache::token() const
{
    return m_store ? m_store->token() : QByteArray();
}

QString VLKeyTableCache::lastError() const
{
    return m_store ? m_store->lastError() : m_error;
}

bool VLKeyTableCache::mayKnow(const QString& path)
{
    if (!std::exchange(m_isKnownRead, true)) {
        const bool isMuchLeft = QFileInfo(m_path + u"-wal"_s).size() > kMaxLeftBytes;
        // The builder finds out by itself what is wrong with the table, and sees to it.
        if (!isMuchLeft && open() && !m_store->files(m_known)) {
            m_known.clear();
            close();
        }
    }
    return m_known.contains(path);
}

const VLKeyTableFile* VLKeyTableCache::known(const QString& path, const VLFileStamp& stamp) const
{
    const auto found = m_known.constFind(path);
    const bool isSame = found != m_known.cend() && found->isSettled && found->stamp == stamp;
    return isSame ? &*found : nullptr;
}

void VLKeyTableCache::dropKnown()
{
    // Who comes later is few, and read or looked up by the builder.
    m_isKnownRead = true;
    m_known = {};
}

bool VLKeyTableCache::get(const QString& path, VLKeyTableFile& content)
{
    return m_store && m_store->get(path, content);
}

bool VLKeyTableCache::find(const QString& key, QList<KeyTableBlobs::Entry>& entries)
{
    if (m_hasFound && key == m_foundKey) {
        entries = m_found;
        return true;
    }
    if (!m_store || !m_store->find(key, entries))
        return false;
    m_hasFound = true;
    m_foundKey = key;
    m_found = entries;
    return true;
}

void VLKeyTableCache::dropFound()
{
    m_hasFound = false;
    m_foundKey.clear();
    m_found.clear();
}

} // namespace Vidlets
