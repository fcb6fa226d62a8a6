// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableWatcher.h"

#include <QMetaObject>
#include <QMutexLocker>

#include <utility>

namespace Vidlets {

namespace {

// More than this is dropped for a sweep, which costs no more. A user interface that is busy for
// long must not fill the memory.
constexpr qsizetype kMaxFilesInNews = 50'000;

} // namespace

VLKeyTableWatcher::VLKeyTableWatcher(std::function<void()> announce)
    : m_announce(std::move(announce))
{
    m_thread.setObjectName(QStringLiteral("VLKeyTableWatch"));
}

VLKeyTableWatcher::~VLKeyTableWatcher()
{
    stop();
}

void VLKeyTableWatcher::setPlaces(const QList<VLDataPath>& dataPaths, const QString& keyData)
{
    call([dataPaths, keyData](VLKeyTableWatch* watch) { watch->setPlaces(dataPaths, keyData); });
}

void VLKeyTableWatcher::setWatching(bool on)
{
    call([on](VLKeyTableWatch* watch) { watch->setWatching(on); });
}

void VLKeyTableWatcher::watch(const QStringList& files)
{
    call([files](VLKeyTableWatch* watch) { watch->watch(files); });
}

void VLKeyTableWatcher::forget(const QStringList& files)
{
    call([files](VLKeyTableWatch* watch) { watch->forget(files); });
}

quint64 VLKeyTableWatcher::sweep(const QList<VLKeyTableWatch::Question>& questions)
{
    const quint64 number = ++m_sweeps;
    call([number, questions](VLKeyTableWatch* watch) { watch->sweep(number, questions); });
    return number;
}

void VLKeyTableWatcher::call(const std::function<void(VLKeyTableWatch*)>& function)
{
    if (m_isStopped)
        return;
    if (!m_watch) {
        m_watch = new VLKeyTableWatch([this](VLKeyTableNews&& news) { deliver(std::move(news)); },
                                      m_isStopped);
        m_watch->moveToThread(&m_thread);
        QObject::connect(&m_thread, &QThread::finished, m_watch, &QObject::deleteLater);
        m_thread.start(QThread::LowPriority);
    }
    QMetaObject::invokeMethod(
        m_watch, [function, watch = m_watch] { function(watch); }, Qt::QueuedConnection);
}

bool VLKeyTableWatcher::take(VLKeyTableNews& news)
{
    const QMutexLocker locker(&m_mutex);
    m_isAnnounced = !m_news.isEmpty();
    if (m_news.isEmpty())
        return false;
    news = m_news.dequeue();
    m_fileCount -= news.files.size();
    return true;
}

bool VLKeyTableWatcher::waitForNews(const QDeadlineTimer& deadline)
{
    const QMutexLocker locker(&m_mutex);
    while (m_news.isEmpty() && m_watch && !m_isStopped) {
        if (!m_delivered.wait(&m_mutex, deadline))
            break;
    }
    return !m_news.isEmpty();
}

void VLKeyTableWatcher::stop()
{
    m_isStopped = true;
    m_thread.quit();
    m_thread.wait();
    m_watch = nullptr;
}

void VLKeyTableWatcher::deliver(VLKeyTableNews&& news)
{
    bool mustAnnounce = false;
    {
        const QMutexLocker locker(&m_mutex);
        m_fileCount += news.files.size();
        m_news.enqueue(std::move(news));
        if (m_fileCount > kMaxFilesInNews)
            dropNews();
        mustAnnounce = !std::exchange(m_isAnnounced, true);
        m_delivered.wakeAll();
    }
    if (mustAnnounce)
        m_announce();
}

/// Drops what a sweep finds as well, but no sweep.
void VLKeyTableWatcher::dropNews()
{
    QQueue<VLKeyTableNews> rest;
    VLKeyTableNews sum;
    sum.mustSweep = true;
    qsizetype count = 0;
    for (VLKeyTableNews& news : m_news) {
        if (news.sweep > 0) {
            count += news.files.size();
            rest.enqueue(std::move(news));
            continue;
        }
        sum.keys += news.keys;
        if (!news.refusedPath.isNull())
            sum.refusedPath = news.refusedPath;
    }
    rest.enqueue(sum);
    m_news = rest;
    m_fileCount = count;
}

} // namespace Vidlets
