// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableLive.h"

#include "VLKeyTableIndex.h"
#include "VLKeyTableIndexPrivate.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLSettings.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

using Reason = VLKeyTableNews::Reason;

namespace {

// A turn of the event loop is over at the first file that ends behind this.
constexpr qint64 kTurnMs = 2;
// So many are asked for their stamps in less than a turn; more are left to the thread.
constexpr qsizetype kFewFiles = 500;
// A file that comes again keeps its place. Who makes ever new names must not fill the memory.
constexpr qsizetype kMaxGone = 256;

} // namespace

VLKeyTableLive::VLKeyTableLive(VLKeyTableIndex* owner, VLKeyTableIndexPrivate& index)
    : m_owner(owner)
    , m_index(index)
    , m_watcher([this, owner] {
        QMetaObject::invokeMethod(
            owner, [this] { takeNews(); }, Qt::QueuedConnection);
    })
{
    VLIndexHooks::setDataPathListener(
        *owner, [this] { callLater(&VLKeyTableLive::updatePlaces, m_arePlacesScheduled); });
    // Not before the host is through with its scan.
    callLater(&VLKeyTableLive::start, m_isStartScheduled);
}

VLKeyTableLive::~VLKeyTableLive() = default;

/// Has @p member called when the event loop runs, once however often this is called until then.
void VLKeyTableLive::callLater(void (VLKeyTableLive::*member)(), bool& isScheduled)
{
    if (std::exchange(isScheduled, true))
        return;
    QMetaObject::invokeMethod(
        m_owner,
        [this, member, &isScheduled] {
            isScheduled = false;
            (this->*member)();
        },
        Qt::QueuedConnection);
}

void VLKeyTableLive::start()
{
    m_isStarted = true;
    updatePlaces();
    if (m_isWatching)
        startWatch();
}

void VLKeyTableLive::setWatching(bool on)
{
    if (std::exchange(m_isWatching, on) == on || !m_isStarted)
        return;
    if (on)
        startWatch();
    else
        m_watcher.setWatching(false);
}

void VLKeyTableLive::startWatch()
{
    m_watcher.setWatching(true);
    m_toWatch.clear();
    for (const auto& file : m_index.m_files) {
        if (!file.isFree)
            m_toWatch.append(file.location.location);
    }
    flushWatch();
}

/// Tells the watcher where content comes from, as far as that is new.
void VLKeyTableLive::updatePlaces()
{
    VLContext& context = m_owner->context();
    listenTo(context);
    const QList<VLDataPath> dataPaths = VLIndexHooks::dataPaths(*m_owner);
    QString keyData = Settings::keyDataFile(context);
    if (!keyData.isEmpty())
        keyData = QFileInfo(keyData).absoluteFilePath();
    if (dataPaths == m_dataPaths && keyData == m_keyData)
        return;
    m_dataPaths = dataPaths;
    m_keyData = keyData;
    m_watcher.setPlaces(dataPaths, keyData);
}

void VLKeyTableLive::listenTo(VLContext& context)
{
    if (m_context == &context)
        return;
    QObject::disconnect(m_contextConnection);
    m_context = &context;
    m_contextConnection = QObject::connect(
        &context, &VLContext::settingDidChange, m_owner, [this](const VLContextKey& key) {
            if (key == ckKeyDataFile || key == ckPackageExtension || key == ckControlDirectory)
                callLater(&VLKeyTableLive::updatePlaces, m_arePlacesScheduled);
        });
}

void VLKeyTableLive::noteRecorded(int file)
{
    const auto pathOf = [this](int number) -> const QString& {
        return m_index.locationOf(number).location;
    };
    m_paths.insert(file, pathOf);
    // One that has come later has changed what there was.
    m_index.m_files[file].isKnown = m_isRecording;
    m_index.m_files[file].isFound = m_isRecording;
    watchAnew(pathOf(file));
}

void VLKeyTableLive::noteHosted(const QString& path)
{
    if (m_isRecording)
        return;
    const QList<int> files = filesAt(path);
    for (const int file : files)
        m_index.m_files[file].isFound = false;
}

void VLKeyTableLive::noteRead(int file)
{
    noteGone(file);
    // Lookups come across it before the watch, which has to see it come again.
    if (m_index.m_files[file].state == VLKeyTableState::Absent)
        watchAnew(m_index.locationOf(file).location);
    const auto told = m_told.constFind(file);
    if (told == m_told.cend())
        return;
    const bool isAsTold = m_index.m_files[file].stamp == *told;
    m_told.erase(told);
    if (!isAsTold)
        m_index.await(file);
}

void VLKeyTableLive::refresh()
{
    updatePlaces();
    const bool areFew = qsizetype(m_index.m_files.size()) <= kFewFiles;
    for (size_t i = 0; i < m_index.m_files.size(); ++i) {
        const auto& file = m_index.m_files[i];
        if (file.isFree)
            continue;
        // What has been read of a file that waits may be older than the call.
        if (file.isWaiting || !file.isSettled
            || (areFew && VLIndexHooks::stampAt(file.location.location) != file.stamp))
            m_index.await(int(i));
    }
    if (!areFew || !m_dataPaths.isEmpty() || !m_keyData.isEmpty())
        m_owedSweep = m_watcher.sweep(areFew ? QList<VLKeyTableWatch::Question>() : questions());
}

QList<VLKeyTableWatch::Question> VLKeyTableLive::questions() const
{
    QList<VLKeyTableWatch::Question> questions;
    questions.reserve(qsizetype(m_index.m_files.size()));
    for (size_t i = 0; i < m_index.m_files.size(); ++i) {
        const auto& file = m_index.m_files[i];
        if (!file.isWaiting && !file.isFree)
            questions.append({int(i), file.location.location, file.stamp});
    }
    return questions;
}

void VLKeyTableLive::settle(const QDeadlineTimer& deadline)
{
    if (m_isApplying || m_doneSweep >= m_owedSweep)
        return;
    while (m_doneSweep < m_owedSweep) {
        if (takeNext() || m_doneSweep >= m_owedSweep)
            continue;
        if (m_watcher.isStopped())
            sweepHere();
        else if (!m_watcher.waitForNews(deadline) && !m_watcher.isStopped())
            break;
    }
    if (!isBehind())
        m_index.tellOfChanges();
}

/// Makes the sweep that is owed without the thread.
void VLKeyTableLive::sweepHere()
{
    QList<VLKeyTableNews> all;
    const std::atomic<bool> isStopped = false;
    VLKeyTableWatch watch([&all](VLKeyTableNews&& news) { all.append(std::move(news)); },
                          isStopped);
    watch.setPlaces(m_dataPaths, m_keyData);
    watch.sweep(m_owedSweep, questions());
    for (VLKeyTableNews& news : all) {
        begin(std::move(news));
        while (m_nextFile < m_news.files.size())
            takeNext();
        takeNext();
    }
}

void VLKeyTableLive::stop()
{
    m_watcher.stop();
}

void VLKeyTableLive::watchAnew(const QString& path)
{
    if (!m_isStarted || !m_isWatching)
        return;
    m_toWatch.append(path);
    callLater(&VLKeyTableLive::flushWatch, m_isFlushScheduled);
}

/// Says that nobody needs to know when the file, which has gone, comes again.
void VLKeyTableLive::unwatch(const QString& path)
{
    if (!m_isStarted || !m_isWatching)
        return;
    m_toForget.append(path);
    callLater(&VLKeyTableLive::flushWatch, m_isFlushScheduled);
}

void VLKeyTableLive::flushWatch()
{
    const QStringList files = std::exchange(m_toWatch, {});
    if (m_isWatching && !files.isEmpty())
        m_watcher.watch(files);
    // After what it was told to watch before that had gone.
    const QStringList gone = std::exchange(m_toForget, {});
    if (m_isWatching && !gone.isEmpty())
        m_watcher.forget(gone);
}

/// Takes over what the watcher has told, as much as a turn of the event loop may take.
void VLKeyTableLive::takeNews()
{
    // An override that runs an event loop of its own is in the middle of it.
    if (m_isApplying)
        return;
    QElapsedTimer timer;
    timer.start();
    while (takeNext()) {
        // The watcher announces nothing more while some are left.
        if (timer.hasExpired(kTurnMs)) {
            callLater(&VLKeyTableLive::takeNews, m_isTakingScheduled);
            break;
        }
    }
    if (!isBehind())
        m_index.tellOfChanges();
    m_index.tell();
}

/// Takes the next step. Returns whether there was one.
bool VLKeyTableLive::takeNext()
{
    if (m_nextFile < m_news.files.size()) {
        const VLKeyTableNews::File file = m_news.files.at(m_nextFile++);
        m_isApplying = true;
        apply(file);
        m_isApplying = false;
        return true;
    }
    m_doneSweep = qMax(m_doneSweep, m_news.sweep);
    m_news = VLKeyTableNews();
    m_nextFile = 0;
    VLKeyTableNews news;
    if (!m_watcher.take(news))
        return false;
    begin(std::move(news));
    return true;
}

/// Takes over what does not concern single files.
void VLKeyTableLive::begin(VLKeyTableNews&& news)
{
    m_news = std::move(news);
    m_nextFile = 0;
    awaitFilesIn(m_news.directories);
    for (const int file : std::as_const(m_news.changed)) {
        if (!m_index.m_files[file].isWaiting)
            m_index.await(file);
    }
    if (!m_news.keys.isEmpty())
        m_index.noteChangedKeys(m_news.keys);
    if (!m_news.refusedPath.isNull()) {
        const QString text = u"cannot be watched, since the system watches no more files for this "
                             "user: changes count after a refresh"_s;
        m_index.noteProblem(m_news.refusedPath, {{}, text}, true);
    }
    if (m_news.mustSweep)
        m_watcher.sweep(questions());
}

void VLKeyTableLive::awaitFilesIn(const QStringList& directories)
{
    if (directories.isEmpty())
        return;
    const QSet<QString> gone(directories.cbegin(), directories.cend());
    for (size_t i = 0; i < m_index.m_files.size(); ++i) {
        const QString& path = m_index.m_files[i].location.location;
        if (m_index.m_files[i].isFree || !gone.contains(path.left(path.lastIndexOf(u'/'))))
            continue;
        m_index.await(int(i));
        watchAnew(path);
    }
}

void VLKeyTableLive::apply(const VLKeyTableNews::File& file)
{
    const QList<int> known = filesAt(file.found.path);
    bool isAnyNews = false;
    for (const int number : known) {
        if (!isNews(number, file))
            continue;
        isAnyNews = true;
        m_index.await(number);
    }
    // There is another file than the one that is watched, or it was not there then.
    if (isAnyNews && file.reason == Reason::Listed)
        watchAnew(m_index.locationOf(known.constFirst()).location);
    if (isToBeRecorded(file, known))
        record(file.found);
    else if (file.found.stamp == VLFileStamp() && known.isEmpty())
        unwatch(file.found.path);
    if (file.found.stamp == VLFileStamp())
        m_refused.remove(file.found.path);
}

bool VLKeyTableLive::isNews(int file, const VLKeyTableNews::File& news)
{
    if (news.reason == Reason::Changed)
        return true;
    const auto& record = m_index.m_files[file];
    if (record.isWaiting) {
        // It may have been read before this, and only wait to be taken over.
        m_told.insert(file, news.found.stamp);
        return false;
    }
    if (record.stamp != news.found.stamp)
        return true;
    // What was done between the reading and the watch may have left the stamp as it was.
    if (news.reason == Reason::Placed && !record.isSettled)
        m_index.doubt(file);
    return false;
}

bool VLKeyTableLive::isToBeRecorded(const VLKeyTableNews::File& file, const QList<int>& known) const
{
    const KeyTableWalk::File& found = file.found;
    if (found.root.isNull() || found.stamp == VLFileStamp() || !found.path.startsWith(found.root))
        return false;
    const auto depth = QStringView(found.path).mid(found.root.size()).count(u'/');
    for (const int number : known) {
        if (m_index.locationOf(number).depth == depth)
            return false;
    }
    const auto refused = m_refused.constFind(found.path);
    return refused == m_refused.cend() || *refused != found.stamp || file.reason == Reason::Changed;
}

/// Records a file that has come; if it is a control file, that is.
void VLKeyTableLive::record(const KeyTableWalk::File& file)
{
    forgetGone();
    const qsizetype count = VLIndexHooks::locations(*m_owner).size();
    m_isRecording = true;
    m_owner->indexControlFile(file.path, file.root);
    m_isRecording = false;
    if (VLIndexHooks::locations(*m_owner).size() > count) {
        m_refused.remove(file.path);
        return;
    }
    // It may be on the way to become one.
    m_refused.insert(file.path, file.stamp);
    watchAnew(file.path);
}

/// Keeps account of files that may be forgotten.
void VLKeyTableLive::noteGone(int file)
{
    const auto& record = m_index.m_files[file];
    if (!m_gone.isEmpty())
        m_gone.removeOne(file);
    if (record.isFound && record.state == VLKeyTableState::Absent)
        m_gone.append(file);
}

/// Forgets the files that went first, where many have gone.
void VLKeyTableLive::forgetGone()
{
    while (m_gone.size() > kMaxGone) {
        const int file = m_gone.takeFirst();
        const auto& record = m_index.m_files[file];
        // One that waits may have come again, and is told of when it has been read.
        if (!record.isFound || record.isWaiting || record.isDoubted)
            continue;
        if (VLIndexHooks::stampAt(record.location.location) == VLFileStamp())
            forget(file);
        else
            m_index.await(file);
    }
}

void VLKeyTableLive::forget(int file)
{
    m_paths.remove(
        file, [this](int number) -> const QString& { return m_index.locationOf(number).location; });
    m_told.remove(file);
    unwatch(m_index.locationOf(file).location);
    m_index.forget(file);
}

QList<int> VLKeyTableLive::filesAt(const QString& path) const
{
    return m_paths.find(
        path, [this](int number) -> const QString& { return m_index.locationOf(number).location; });
}

} // namespace Vidlets
