// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorWatcher.h"

#include "AuthorFiles.h"
#include "AuthorPackages.h"

#include <QFile>
#include <QSet>

#include <chrono>
#include <utility>

#include <sys/stat.h>

namespace Vidlets {

namespace {

/// Long enough for the events of one save to come together, and not to be noticed.
constexpr std::chrono::milliseconds kPause(30);
constexpr int kMaxDepth = 8;
constexpr qsizetype kMaxPaths = 20000;
constexpr qint64 kMsPerSecond = 1000;
constexpr qint64 kNsPerMs = 1000000;

} // namespace

AuthorWatcher::AuthorWatcher(QObject* parent)
    : QObject(parent)
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(kPause);
    // Not begun anew by each event: a file that is written all the time is shown all the same.
    const auto lookSoon = [this] {
        if (!m_pause.isActive())
            m_pause.start();
    };
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, lookSoon);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, lookSoon);
    connect(&m_pause, &QTimer::timeout, this, &AuthorWatcher::compare);
}

AuthorWatcher::~AuthorWatcher() = default;

void AuthorWatcher::watch(const QStringList& packages, const QStringList& dataPaths)
{
    m_packages = packages;
    m_dataPaths = dataPaths;
    m_stamps = look();
}

void AuthorWatcher::compare()
{
    const QHash<QString, Stamp> now = look();
    QStringList paths;
    for (auto file = now.cbegin(); file != now.cend(); ++file) {
        const auto before = m_stamps.constFind(file.key());
        if (before == m_stamps.cend() || !(*before == file.value()))
            paths.append(file.key());
    }
    for (auto file = m_stamps.cbegin(); file != m_stamps.cend(); ++file) {
        if (!now.contains(file.key()))
            paths.append(file.key());
    }
    m_stamps = now;
    if (paths.isEmpty())
        return;
    paths.sort();
    Q_EMIT changed(paths);
}

QHash<QString, AuthorWatcher::Stamp> AuthorWatcher::look()
{
    m_seen.clear();
    m_seenPaths.clear();
    for (const QString& package : std::as_const(m_packages))
        lookInto(package, 0);
    for (const QString& dataPath : std::as_const(m_dataPaths))
        lookIntoDataPath(dataPath);
    watchSeen();
    return std::exchange(m_seen, {});
}

void AuthorWatcher::watchSeen()
{
    const QStringList watchedPaths = m_watcher.files() + m_watcher.directories();
    const QSet<QString> watched(watchedPaths.cbegin(), watchedPaths.cend());
    const QSet<QString> gone = watched - m_seenPaths;
    const QSet<QString> fresh = m_seenPaths - watched;
    if (!gone.isEmpty())
        m_watcher.removePaths(gone.values());
    if (!fresh.isEmpty())
        m_watcher.addPaths(fresh.values());
}

void AuthorWatcher::lookIntoDataPath(const QString& dataPath)
{
    const auto entries = AuthorFiles::list(dataPath);
    if (!entries)
        return;
    m_seenPaths.insert(dataPath);
    for (const AuthorFiles::Entry& entry : *entries) {
        const bool isPackage = entry.kind == AuthorFiles::Kind::Directory && entry.isNamed
            && entry.name.endsWith(packageSuffix());
        const QString path = AuthorFiles::join(dataPath, entry.name);
        if (isPackage && !m_seenPaths.contains(path))
            lookInto(path, 0);
    }
}

void AuthorWatcher::lookInto(const QString& directory, int depth)
{
    const auto entries = AuthorFiles::list(directory);
    if (!entries || depth > kMaxDepth)
        return;
    m_seenPaths.insert(directory);
    for (const AuthorFiles::Entry& entry : *entries) {
        const QString path = AuthorFiles::join(directory, entry.name);
        if (!entry.isNamed || m_seenPaths.size() > kMaxPaths)
            continue;
        if (entry.kind == AuthorFiles::Kind::Directory && !entry.name.startsWith(u'.'))
            lookInto(path, depth + 1);
        struct stat status = {};
        const bool isFile = entry.kind == AuthorFiles::Kind::File
            && ::lstat(QFile::encodeName(path).constData(), &status) == 0;
        if (!isFile)
            continue;
        m_seenPaths.insert(path);
        const qint64 modifiedMs = static_cast<qint64>(status.st_mtim.tv_sec) * kMsPerSecond
            + static_cast<qint64>(status.st_mtim.tv_nsec) / kNsPerMs;
        m_seen.insert(
            path,
            {static_cast<qint64>(status.st_size), modifiedMs, static_cast<quint64>(status.st_ino)});
    }
}

} // namespace Vidlets

#include "moc_AuthorWatcher.cpp"
