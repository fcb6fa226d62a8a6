// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableWatch.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>

#include <algorithm>
#include <utility>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace Vidlets {

using Reason = VLKeyTableNews::Reason;

namespace {

// What an editor does to save a file is over when nothing more comes for so long.
constexpr int kQuietMs = 40;
// Who writes on and on is told of at these intervals.
constexpr int kMaxGatherMs = 150;
constexpr int kHealMs = 400;
constexpr int kMaxTries = 3;
// A directory that changes while it is looked at tells of that by itself.
constexpr int kMaxSurveys = 5;

QString directoryOf(const QString& path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash > 0 ? path.left(slash) : path.left(slash + 1);
}

QPair<quint64, quint64> identityOf(const QString& path)
{
#ifdef Q_OS_UNIX
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) == 0)
        return {status.st_dev, status.st_ino};
#else
    Q_UNUSED(path)
#endif
    return {};
}

} // namespace

VLKeyTableWatch::VLKeyTableWatch(Deliver deliver, const std::atomic<bool>& isStopped)
    : m_deliver(std::move(deliver))
    , m_isStopped(isStopped)
    , m_gatherTimer(this)
    , m_healTimer(this)
{
    m_gatherTimer.setSingleShot(true);
    m_healTimer.setSingleShot(true);
    connect(&m_gatherTimer, &QTimer::timeout, this, &VLKeyTableWatch::process);
    connect(&m_healTimer, &QTimer::timeout, this, &VLKeyTableWatch::heal);
}

VLKeyTableWatch::~VLKeyTableWatch() = default;

void VLKeyTableWatch::setPlaces(const QList<VLDataPath>& dataPaths, const QString& keyData)
{
    VLKeyTableNews news;
    m_dataPaths = dataPaths;
    if (m_keyData != keyData) {
        if (m_watcher && !m_keyData.isEmpty())
            m_watcher->removePath(m_keyData);
        m_keyData = keyData;
        m_dirtyFiles.insert(keyData);
    }
    checkKeyData(news);
    if (m_watcher)
        listFiles(survey(news), news);
    deliver(news);
}

void VLKeyTableWatch::setWatching(bool on)
{
    m_gatherTimer.stop();
    m_healTimer.stop();
    m_dirtyDirectories.clear();
    m_dirtyFiles.clear();
    m_directories.clear();
    m_others.clear();
    m_absent.clear();
    m_isStorm = false;
    m_isRefused = false;
    m_isRefusalTold = false;
    m_watcher.reset();
    if (!on)
        return;
    m_watcher = std::make_unique<QFileSystemWatcher>();
    connect(m_watcher.get(), &QFileSystemWatcher::directoryChanged, this,
            &VLKeyTableWatch::noteDirectory);
    connect(m_watcher.get(), &QFileSystemWatcher::fileChanged, this, &VLKeyTableWatch::noteFile);
    VLKeyTableNews news;
    listFiles(survey(news), news);
    if (!m_keyData.isEmpty()) {
        add(m_keyData, news);
        checkKeyData(news);
    }
    deliver(news);
}

void VLKeyTableWatch::watch(const QStringList& files)
{
    if (!m_watcher)
        return;
    VLKeyTableNews news;
    bool isDirectoryNew = false;
    for (const QString& file : files) {
        const QString directory = directoryOf(file);
        const int roles = m_directories.value(directory).roles;
        if ((roles & Control) != 0)
            continue;
        m_others[directory].insert(file);
        isDirectoryNew = isDirectoryNew || (roles & Around) == 0;
    }
    // Before the files, so that none comes unseen.
    if (isDirectoryNew)
        listFiles(survey(news), news);
    for (const QString& file : files) {
        if (m_isStopped)
            return;
        place(file, Reason::Placed, news);
    }
    deliver(news);
}

void VLKeyTableWatch::forget(const QStringList& files)
{
    if (!m_watcher)
        return;
    VLKeyTableNews news;
    for (const QString& file : files) {
        const auto others = m_others.find(directoryOf(file));
        if (others != m_others.end()) {
            others->remove(file);
            if (others->isEmpty())
                m_others.erase(others);
        }
        m_absent.remove(file);
        if (QFileInfo::exists(file))
            place(file, Reason::Placed, news);
    }
    if (!news.files.isEmpty())
        deliver(news);
}

void VLKeyTableWatch::sweep(quint64 number, const QList<Question>& questions)
{
    VLKeyTableNews news;
    news.sweep = number;
    // There may be room by now.
    m_isRefused = false;
    survey(news);
    listFiles(QSet<QString>(m_controls.cbegin(), m_controls.cend()), news);
    for (const Question& question : questions) {
        if (m_isStopped)
            return;
        if (VLIndexHooks::stampAt(question.path) != question.stamp)
            news.changed.append(question.file);
    }
    checkKeyData(news);
    deliver(news);
}

void VLKeyTableWatch::noteDirectory(const QString& path)
{
    m_dirtyDirectories.insert(path);
    gather();
}

void VLKeyTableWatch::noteFile(const QString& path)
{
    m_dirtyFiles.insert(path);
    gather();
}

/// Waits for more to come.
void VLKeyTableWatch::gather()
{
    if (!m_gatherTimer.isActive())
        m_sinceFirst.start();
    m_gatherTimer.start(qBound(0, kMaxGatherMs - int(m_sinceFirst.elapsed()), kQuietMs));
}

void VLKeyTableWatch::process()
{
    VLKeyTableNews news;
    bool isStructure = forgetLost(news);
    bool isAbove = false;
    QSet<QString> listed;
    const QSet<QString> directories = withTwins(std::exchange(m_dirtyDirectories, {}));
    for (const QString& path : directories) {
        const int roles = m_directories.value(path).roles;
        isStructure = isStructure || (roles & Structure) != 0;
        isAbove = isAbove || (roles & Above) != 0;
        if ((roles & (Control | Around)) != 0)
            listed.insert(path);
    }
    // Such a lot comes when the system's queue is full, too, and then more was dropped.
    const bool isOverlong = m_sinceFirst.elapsed() >= kMaxGatherMs;
    const bool isOurs = isStructure || !listed.isEmpty() || !m_dirtyFiles.isEmpty();
    m_isStorm = m_isStorm || (isOverlong && isOurs);
    if (isStructure || (isAbove && havePlacesMoved()))
        listed += survey(news);
    checkKeyData(news);
    listFiles(listed, news);
    const QSet<QString> files = std::exchange(m_dirtyFiles, {});
    for (const QString& path : files) {
        place(path, Reason::Changed, news);
        const QString directory = directoryOf(path);
        const QSet<QString> twins = m_twins.value(directory);
        for (const QString& twin : twins)
            place(twin + path.mid(directory.size()), Reason::Changed, news);
    }
    placeReturned(listed, news);
    if (m_isStorm)
        m_healTimer.start(kHealMs);
    deliver(news);
}

/// Adds the other paths of the same directories: what happens there is told for one of them.
QSet<QString> VLKeyTableWatch::withTwins(const QSet<QString>& paths) const
{
    QSet<QString> all = paths;
    for (const QString& path : paths)
        all += m_twins.value(path);
    return all;
}

/// Forgets directories that are watched no more, since they have gone; there may be others in their
/// place by now. Gives whether there was one.
bool VLKeyTableWatch::forgetLost(VLKeyTableNews& news)
{
    const QStringList watched = m_watcher->directories();
    const QSet<QString> living(watched.cbegin(), watched.cend());
    bool isAnyLost = false;
    for (const QString& path : std::as_const(m_dirtyDirectories)) {
        const auto known = m_directories.constFind(path);
        if (known == m_directories.cend() || living.contains(path))
            continue;
        if ((known->roles & (Control | Around)) != 0)
            news.directories.append(path);
        m_directories.erase(known);
        isAnyLost = true;
    }
    return isAnyLost;
}

void VLKeyTableWatch::heal()
{
    m_isStorm = false;
    VLKeyTableNews news;
    news.mustSweep = true;
    deliver(news);
}

/// Finds out which directories matter, and watches them. Gives those with control files or single
/// files that are new or others.
QSet<QString> VLKeyTableWatch::survey(VLKeyTableNews& news)
{
    QSet<QString> fresh;
    // What comes into a directory before it is watched is seen by the next one.
    for (int i = 0; i < kMaxSurveys && !m_isStopped; ++i) {
        if (!surveyOnce(fresh, news))
            break;
    }
    return fresh;
}

/// Gives whether there was any directory to be watched that was not.
bool VLKeyTableWatch::surveyOnce(QSet<QString>& fresh, VLKeyTableNews& news)
{
    Directories wanted;
    m_controls.clear();
    m_places.clear();
    for (const VLDataPath& dataPath : std::as_const(m_dataPaths))
        addPackages(dataPath, wanted);
    if (!m_watcher) {
        m_directories = wanted;
        return false;
    }
    for (auto it = m_others.cbegin(); it != m_others.cend(); ++it)
        addPlace(it.key(), Around, wanted);
    if (!m_keyData.isEmpty())
        addPlace(directoryOf(m_keyData), Around, wanted);
    dropOthers(wanted, news);

    m_twins.clear();
    QHash<QPair<quint64, quint64>, QString> first;
    bool isAnyNew = false;
    for (auto it = wanted.begin(); it != wanted.end(); ++it) {
        const QString& path = it.key();
        it->identity = identityOf(path);
        noteTwin(first[it->identity], path);
        const auto before = m_directories.constFind(path);
        const bool isThere = before != m_directories.cend() && before->identity == it->identity;
        const int roles = isThere ? before->roles : 0;
        // What is watched stays so: events that have not been read yet would be lost.
        if (!isThere)
            add(path, news);
        isAnyNew = isAnyNew || !isThere;
        if ((it->roles & ~roles & (Control | Around)) != 0)
            fresh.insert(path);
    }
    m_directories = wanted;
    return isAnyNew;
}

/// Remembers @p path as another one of the directory @p first, which may be the first of it.
void VLKeyTableWatch::noteTwin(QString& first, const QString& path)
{
    if (first.isNull()) {
        first = path;
        return;
    }
    const QSet<QString> others = m_twins.value(first);
    for (const QString& other : others)
        m_twins[other].insert(path);
    m_twins[path] = others;
    m_twins[path].insert(first);
    m_twins[first].insert(path);
}

void VLKeyTableWatch::addPackages(const VLDataPath& dataPath, Directories& wanted)
{
    addPlace(dataPath.path, Structure, wanted);
    const QList<KeyTableWalk::Package> packages = KeyTableWalk::packagesIn(dataPath);
    for (const KeyTableWalk::Package& package : packages) {
        if (m_isStopped)
            return;
        wanted[package.root].roles |= Structure;
        addControl(package, wanted);
    }
}

void VLKeyTableWatch::addControl(const KeyTableWalk::Package& package, Directories& wanted)
{
    QString above = directoryOf(QDir::cleanPath(package.controlPath));
    if (above != package.root && !above.startsWith(package.root + u'/'))
        addPlace(package.controlPath, 0, wanted);
    for (; above.size() > package.root.size(); above = directoryOf(above)) {
        if (above.startsWith(package.root) && QFileInfo(above).isDir())
            wanted[above].roles |= Structure;
    }
    const QString path = QFileInfo(package.controlPath).isDir()
        ? QDir(package.controlPath).canonicalPath()
        : QString();
    if (path.isEmpty())
        return;
    Directory& directory = wanted[path];
    if ((directory.roles & Control) != 0)
        return;
    directory.roles |= Control;
    directory.root = package.root;
    m_controls.append(path);
}

/// Adds a directory that need not be there.
void VLKeyTableWatch::addPlace(const QString& path, int roles, Directories& wanted)
{
    const QFileInfo info(path);
    const QString target = info.canonicalFilePath();
    m_places.insert(path, target);
    addAbove(path, wanted);
    if (!target.isEmpty() && target != path)
        addAbove(target, wanted);
    if (roles != 0 && info.isDir())
        wanted[path].roles |= roles;
}

void VLKeyTableWatch::addAbove(const QString& path, Directories& wanted)
{
    QString above = path;
    while (above.size() > 1) {
        above = directoryOf(above);
        const auto known = wanted.constFind(above);
        if (known != wanted.cend() && (known->roles & Above) != 0)
            return;
        if (!above.isEmpty() && QFileInfo(above).isDir())
            wanted[above].roles |= Above;
    }
}

bool VLKeyTableWatch::havePlacesMoved() const
{
    for (auto it = m_places.cbegin(); it != m_places.cend(); ++it) {
        if (QFileInfo(it.key()).canonicalFilePath() != it.value())
            return true;
        const auto known = m_directories.constFind(it.key());
        if (known != m_directories.cend() && known->identity != identityOf(it.key()))
            return true;
    }
    return false;
}

/// Lets go of the directories that do not matter any more, or are others.
void VLKeyTableWatch::dropOthers(const Directories& wanted, VLKeyTableNews& news)
{
    for (auto it = m_directories.cbegin(); it != m_directories.cend(); ++it) {
        const bool isWanted = wanted.contains(it.key());
        if (isWanted && it->identity == identityOf(it.key()))
            continue;
        if (!isWanted)
            m_watcher->removePath(it.key());
        if ((it->roles & (Control | Around)) != 0)
            news.directories.append(it.key());
    }
    if (news.directories.isEmpty())
        return;
    // Files that were moved along are told of by their old names as long as those are watched, too.
    const QSet<QString> gone(news.directories.cbegin(), news.directories.cend());
    QStringList stale = m_watcher->files();
    const auto isLiving = [&gone](const QString& path) {
        return !gone.contains(directoryOf(path));
    };
    stale.removeIf(isLiving);
    if (!stale.isEmpty())
        m_watcher->removePaths(stale);
}

void VLKeyTableWatch::listFiles(const QSet<QString>& directories, VLKeyTableNews& news) const
{
    if (directories.isEmpty())
        return;
    for (const QString& path : m_controls) {
        if (m_isStopped)
            return;
        if (!directories.contains(path))
            continue;
        const QString root = m_directories.value(path).root;
        const QList<KeyTableWalk::File> files = KeyTableWalk::filesIn(path, root);
        for (const KeyTableWalk::File& file : files)
            news.files.append({file, Reason::Listed});
    }
    for (const QString& path : directories) {
        const QSet<QString> others = m_others.value(path);
        for (const QString& file : others)
            news.files.append({{file, QString(), VLIndexHooks::stampAt(file)}, Reason::Listed});
    }
}

/// Watches a file that may be there already, or another than before.
void VLKeyTableWatch::place(const QString& path, VLKeyTableNews::Reason reason,
                            VLKeyTableNews& news)
{
    const bool isWatched = add(path, news);
    const bool isListed = !QFileInfo(path).isSymLink();
    const QString root = isListed ? m_directories.value(directoryOf(path)).root : QString();
    VLFileStamp stamp = VLIndexHooks::stampAt(path);
    // It has come in between.
    if (!isWatched && stamp != VLFileStamp()) {
        add(path, news);
        stamp = VLIndexHooks::stampAt(path);
    }
    news.files.append({{path, root, stamp}, reason});
    if (stamp == VLFileStamp())
        m_absent.insert(path);
    else
        m_absent.remove(path);
}

/// What went and came again between two looks has left no trace in its directory where that was
/// moved itself. What came and went in between may have been read.
void VLKeyTableWatch::placeReturned(const QSet<QString>& directories, VLKeyTableNews& news)
{
    const QSet<QString> absent = m_absent;
    for (const QString& path : absent) {
        if (QFileInfo::exists(path))
            place(path, Reason::Placed, news);
        else if (directories.contains(directoryOf(path)))
            news.files.append({{path, QString(), VLFileStamp()}, Reason::Listed});
    }
}

/// Gives whether it is watched.
bool VLKeyTableWatch::add(const QString& path, VLKeyTableNews& news)
{
    // What cannot be read is told of elsewhere, and its directory tells when that changes.
    if (!m_watcher || !QFileInfo(path).isReadable())
        return false;
    if (!m_isRefused && m_watcher->addPath(path))
        return true;
    // It is watched already, but perhaps what was there before.
    if (m_watcher->removePath(path) && m_watcher->addPath(path))
        return true;
    // Editors take a file away for a moment; where the system refuses, it does so again.
    for (int i = 0; i < kMaxTries; ++i) {
        if (m_isRefused || !QFileInfo::exists(path))
            return false;
        if (m_watcher->addPath(path))
            return true;
    }
    m_isRefused = true;
    if (!std::exchange(m_isRefusalTold, true))
        news.refusedPath = path;
    return false;
}

void VLKeyTableWatch::checkKeyData(VLKeyTableNews& news)
{
    const bool isCertain = m_dirtyFiles.remove(m_keyData);
    const VLFileStamp stamp =
        m_keyData.isEmpty() ? VLFileStamp() : VLIndexHooks::stampAt(m_keyData);
    if (m_isKeyDataKnown && !isCertain && stamp == m_keyDataStamp)
        return;
    m_keyDataStamp = stamp;
    if (!m_keyData.isEmpty())
        add(m_keyData, news);
    const VLKeyTableKeyRecords records = VLKeyTableKeyRecords::read(m_keyData, m_isStopped);
    if (std::exchange(m_isKeyDataKnown, true))
        news.keys = VLKeyTableKeyRecords::differences(m_keyRecords, records);
    m_keyRecords = records;
}

void VLKeyTableWatch::deliver(VLKeyTableNews& news)
{
    if (!m_isStopped)
        m_deliver(std::move(news));
}

} // namespace Vidlets

#include "moc_VLKeyTableWatch.cpp"
