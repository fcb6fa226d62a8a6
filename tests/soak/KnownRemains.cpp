// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "KnownRemains.h"

#include <Vidlets/VLVideoController.h>
#include <Vidlets/VLVideoFrame.h>
#include <Vidlets/VLVideoFrameCache.h>
#include <Vidlets/VLVideoSource.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>
#include <Vidlets/VLXmlElement.h>

#include <QDir>
#include <QList>
#include <QLocale>
#include <QObject>
#include <QQmlContext>
#include <QQmlEngine>
#include <QThread>
#include <QUrl>

#include <memory>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/mem.h>
#include <libswscale/swscale.h>
}

using namespace Qt::StringLiterals;

using namespace Vidlets;
using AllocationCounter::leftBy;
using AllocationCounter::Remains;

namespace {

constexpr int kRowBlockPx = 16;
constexpr int kRowAlignment = 64;
constexpr size_t kScalerOverrunBytes = 256;

class Receiver : public QObject
{
public:
    void receive(QObject* /*object*/)
    {
    }
};

qsizetype threadCount()
{
    return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs).size();
}

struct Names
{
    QUrl url;
    QString cache;
    QString file;
};

} // namespace

namespace KnownRemains {

Remains controllerRecord()
{
    VLVideoSourceFFMPEG source(nullptr);
    const auto makeOne = [&source] { const VLVideoController controller(&source, nullptr); };
    // The first one makes the source's list of connections, which goes with the source.
    makeOne();
    return leftBy(makeOne);
}

Remains sourceRecords()
{
    return leftBy([] { const VLVideoSourceFFMPEG source(nullptr); });
}

Remains orderQueue()
{
    QList<VLVideoSourceChange*> queue;
    const Remains remains = leftBy([&queue] {
        queue.append(nullptr);
        queue.takeFirst();
        // While decoding goes on, then at its end: two at a time.
        for (int pair = 0; pair < 2; ++pair) {
            queue.append(nullptr);
            queue.append(nullptr);
            queue.takeFirst();
            queue.takeFirst();
        }
    });
    return remains;
}

Remains clipNames(const QString& clipPath)
{
    Names names;
    return leftBy([&names, &clipPath] {
        // A copy, as the search for the file makes one.
        names.url = QUrl::fromLocalFile(QString(clipPath.constData(), clipPath.size()));
        names.cache = names.url.toString();
        names.file = names.url.toLocalFile();
    });
}

Remains cachedFrames(const QSize& size, int frames)
{
    std::unique_ptr<VLVideoFrameCache> cache;
    std::unique_ptr<VLVideoFrame> working;
    const auto fill = [&] {
        cache = std::make_unique<VLVideoFrameCache>(QString());
        working =
            std::make_unique<VLVideoFrame>(size.width(), size.height(), QImage::Format_RGB32, 0);
        for (int frame = 0; frame < frames; ++frame) {
            // Detaches, so that the frame before keeps its pixels.
            working->fill(Qt::black);
            cache->addFrame(*working);
        }
    };
    // On a thread that goes: the cache, as an object of it, holds Qt's record of the thread.
    const auto fillOnThread = [&fill] {
        const auto threads = threadCount();
        const std::unique_ptr<QThread> thread(QThread::create(fill));
        thread->start();
        thread->wait();
        // A thread gives back the last of its memory after it counts as finished.
        while (threadCount() > threads)
            QThread::yieldCurrentThread();
    };
    // The first thread may need a stack of its own, which later ones use again.
    fillOnThread();
    cache.reset();
    working.reset();
    return leftBy(fillOnThread);
}

Remains pictureBuffer(const QSize& size)
{
    const int rowWidth = (size.width() + kRowBlockPx - 1) / kRowBlockPx * kRowBlockPx;
    void* buffer = nullptr;
    const Remains remains = leftBy([&] {
        const int bytes =
            av_image_get_buffer_size(AV_PIX_FMT_RGB24, rowWidth, size.height(), kRowAlignment);
        buffer = av_malloc(static_cast<size_t>(bytes) + kScalerOverrunBytes);
    });
    av_free(buffer);
    return remains;
}

Remains scaler(const QSize& size)
{
    SwsContext* context = nullptr;
    const Remains remains = leftBy([&] {
        context = sws_getCachedContext(nullptr, size.width(), size.height(), AV_PIX_FMT_YUV420P,
                                       size.width(), size.height(), AV_PIX_FMT_RGB24, SWS_BICUBIC,
                                       nullptr, nullptr, nullptr);
    });
    sws_freeContext(context);
    return remains;
}

Remains connection()
{
    QObject sender;
    Receiver receiver;
    const auto connectOnce = [&] {
        QObject::connect(&sender, &QObject::destroyed, &receiver, &Receiver::receive);
    };
    // The first one makes the lists of both objects.
    connectOnce();
    return leftBy(connectOnce);
}

Remains sceneName()
{
    QQmlEngine engine;
    QObject view;
    const auto setOnce = [&] { engine.rootContext()->setContextProperty(u"vidletView"_s, &view); };
    setOnce();
    // The least of several: a new engine has a thread of its own that is still starting.
    constexpr int kTries = 20;
    Remains least = leftBy(setOnce);
    for (int i = 1; i < kTries; ++i) {
        const Remains remains = leftBy(setOnce);
        if (remains.bytes < least.bytes && remains.bytes > 0)
            least = remains;
    }
    return least;
}

Remains contentRoot(VLIndex& index, const QString& key)
{
    VLXmlElement* root = nullptr;
    const Remains remains = leftBy([&] {
        QString path;
        int depth = 0;
        delete index.retrieve(key, QLocale(u"en_US"_s), path, depth, root);
    });
    delete root;
    return remains;
}

} // namespace KnownRemains
