// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "ObjectCensus.h"
#include "VidletsTest.h"
#include <Vidlets/VLVideoSource.h>

#include <QElapsedTimer>
#include <QSemaphore>
#include <QSignalSpy>

#include <atomic>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// A source without a thread of its own: a test makes the passes of the loop.
class PassiveSource : public VLVideoSource
{
public:
    using VLVideoSource::loadSource;
    using VLVideoSource::processActionQueue;

    PassiveSource()
        : VLVideoSource(nullptr)
    {
    }

    bool isOpen() override
    {
        return false;
    }
    double getTime() override
    {
        return 0.0;
    }
    void changeSetAction(Action action) override
    {
        calls += u"action %1"_s.arg(action);
        VLVideoSource::changeSetAction(action);
    }
    void changeSetPosition(quint64) override
    {
    }
    void changeSetSource(const QUrl& source) override
    {
        calls += u"source "_s + source.toString();
        VLVideoSource::changeSetSource(source);
    }
    double duration() override
    {
        return 0.0;
    }
    double timeBase() override
    {
        return 0.0;
    }
    double frameRate() override
    {
        return 0.0;
    }
    double frameWidth() const override
    {
        return 0.0;
    }
    double frameHeight() const override
    {
        return 0.0;
    }

    /// Makes @p number passes and gives what was called on them.
    QStringList pass(int number = 1)
    {
        calls.clear();
        for (int i = 0; i < number; ++i)
            processActionQueue();
        return calls;
    }
    /// Makes @p url the current source, with an empty cache and queue.
    void setUp(const QUrl& url)
    {
        changeSetSource(url);
        setupSource();
        clearChanges();
    }

    QStringList calls;
};

/// A source whose loop goes on until it is told to stop, and may be deaf to that.
class LoopingSource : public PassiveSource
{
public:
    explicit LoopingSource(bool isDeaf)
        : m_isDeaf(isDeaf)
    {
    }

    void run() override
    {
        started.release();
        while (m_isDeaf || !shouldQuit())
            msleep(10);
        hasLeftLoop = true;
    }

    QSemaphore started;
    std::atomic_bool hasLeftLoop = false;

private:
    const bool m_isDeaf;
};

QUrl urlA()
{
    return QUrl(u"file:///a.mp4"_s);
}

QUrl urlB()
{
    return QUrl(u"file:///b.mp4"_s);
}

VLVideoFrame newFrame(double pts)
{
    VLVideoFrame frame(4, 3, QImage::Format_RGB32, 0);
    frame.fill(Qt::green);
    frame.setPts(pts);
    return frame;
}

} // namespace

class TestVLVideoSource : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    // The source as it comes
    void newSource_isIdleAndEmpty();
    void action_hasFixedNumbers_data();
    void action_hasFixedNumbers();

    // The queue
    void setSource_queuesOnlyNewValidUrl_data();
    void setSource_queuesOnlyNewValidUrl();
    void setSource_changesUrlOnLaterPassOnly();
    void setSource_queuesTwoLoads_whenSetTwiceInARow();
    void setSource_mayComeFromAnyThread();
    void close_queuesNothing();
    void setAction_queuesOneRecordEach();
    void setAction_needsNoLock_whileOtherThreadsSetSource();
    void processActionQueue_takesOneRecordAPass();
    void processActionQueue_holdsNoLock_whileRecordIsCarriedOut();
    void clearChanges_dropsAllRecords();

    // Carrying out a record
    void changeSetAction_storesThenEmits();
    void changeSetAction_ignoresNone();
    void changeSetSource_storesWithoutSignal();
    void actionRecord_setsAction();
    void sourceRecord_setsSourceThenAction();

    // A new cache
    void setupSource_queuesActionByUrl_data();
    void setupSource_queuesActionByUrl();
    void setupSource_emitsSourceChangedWithNewCacheInPlace();
    void setupSource_replacesCache_data();
    void setupSource_replacesCache();
    void frame_staysValid_whenCacheIsReplaced();

    // Frames
    void counts_areZero_beforeFirstSource();
    void cacheAccess_endsProcess_beforeFirstSource_data();
    void cacheAccess_endsProcess_beforeFirstSource();
    void pushFrame_appendsWithoutSignal();
    void getFrame_isNull_beyondTheLast_data();
    void getFrame_isNull_beyondTheLast();
    void isFrameAvailable_looksAtCount_data();
    void isFrameAvailable_looksAtCount();
    void getFrame_takesIndexOf32Bits();
    void frames_mayBeReadWhileOthersArePushed();

    // Signals
    void loadSource_emitsSourceLoaded();
    void notifyStreamEnded_emitsStreamEnded();

    // The end of the thread
    void setShouldQuit_setsFlag();
    void quit_returnsAtOnce_whenThreadNeverRan();
    void quit_endsThread_data();
    void quit_endsThread();
    void destructor_leavesCacheAllocated();
};

int TestVLVideoSource::runChild(const QString& name)
{
    PassiveSource source;
    if (name == u"getFrame"_s)
        return source.getFrame(0).isNull() ? EXIT_SUCCESS : EXIT_FAILURE;
    if (name == u"pushFrame"_s) {
        source.pushFrame(newFrame(0.0));
        return EXIT_SUCCESS;
    }
    return VidletsTest::runChild(name);
}

void TestVLVideoSource::newSource_isIdleAndEmpty()
{
    PassiveSource source;
    QCOMPARE(source.action(), VLVideoSource::ActionIdle);
    QCOMPARE(source.source(), QUrl());
    QVERIFY(!source.shouldQuit());
    QVERIFY(!source.isRunning());
    QCOMPARE(source.objectName(), QString());
    QCOMPARE(source.pass(), QStringList());
}

void TestVLVideoSource::action_hasFixedNumbers_data()
{
    QTest::addColumn<int>("action");
    QTest::addColumn<int>("expectedNumber");
    QTest::newRow("ActionNone") << int(VLVideoSource::ActionNone) << -1;
    QTest::newRow("ActionQuit") << int(VLVideoSource::ActionQuit) << 0;
    QTest::newRow("ActionLoad") << int(VLVideoSource::ActionLoad) << 1;
    QTest::newRow("ActionClose") << int(VLVideoSource::ActionClose) << 2;
    QTest::newRow("ActionSeek") << int(VLVideoSource::ActionSeek) << 3;
    QTest::newRow("ActionDecode") << int(VLVideoSource::ActionDecode) << 4;
    QTest::newRow("ActionIdle") << int(VLVideoSource::ActionIdle) << 5;
}

void TestVLVideoSource::action_hasFixedNumbers()
{
    QFETCH(int, action);
    QTEST(action, "expectedNumber");
}

void TestVLVideoSource::setSource_queuesOnlyNewValidUrl_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<bool>("expectedResult");
    QTest::newRow("new") << urlB() << true;
    QTest::newRow("new, not a local file") << QUrl(u"http://localhost/b.mp4"_s) << true;
    QTest::newRow("new, relative") << QUrl(u"b.mp4"_s) << true;
    QTest::newRow("current") << urlA() << false;
    QTest::newRow("empty") << QUrl() << false;
    QTest::newRow("invalid") << QUrl(u"http://localhost:port/"_s) << false;
}

void TestVLVideoSource::setSource_queuesOnlyNewValidUrl()
{
    QFETCH(QUrl, url);
    QFETCH(bool, expectedResult);
    PassiveSource source;
    source.setUp(urlA());

    QCOMPARE(source.setSource(url), expectedResult);

    QCOMPARE(source.source(), urlA());
    const QStringList expectedCalls{u"source "_s + url.toString(), u"action 1"_s};
    QCOMPARE(source.pass(2), expectedResult ? expectedCalls : QStringList());
    QCOMPARE(source.source(), expectedResult ? url : urlA());
}

void TestVLVideoSource::setSource_changesUrlOnLaterPassOnly()
{
    PassiveSource source;
    QSignalSpy spy(&source, &VLVideoSource::actionChanged);
    QVERIFY(source.setSource(urlA()));
    QCOMPARE(source.source(), QUrl());
    QCOMPARE(source.action(), VLVideoSource::ActionIdle);
    QCOMPARE(spy.count(), 0);

    source.pass();
    QCOMPARE(source.source(), urlA());
    QCOMPARE(source.action(), VLVideoSource::ActionLoad);
    QCOMPARE(spy.count(), 1);
    // From here on the same is refused.
    QVERIFY(!source.setSource(urlA()));
}

void TestVLVideoSource::setSource_queuesTwoLoads_whenSetTwiceInARow()
{
    PassiveSource source;
    QVERIFY(source.setSource(urlA()));
    QVERIFY(source.setSource(urlA()));
    const QStringList once{u"source file:///a.mp4"_s, u"action 1"_s};
    QCOMPARE(source.pass(), once);
    QCOMPARE(source.pass(), once);
    QCOMPARE(source.pass(), QStringList());
}

void TestVLVideoSource::setSource_mayComeFromAnyThread()
{
    constexpr int kThreads = 4;
    constexpr int kRecords = 200;
    PassiveSource source;
    std::vector<std::unique_ptr<QThread>> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back(QThread::create([&source] {
            for (int j = 0; j < kRecords; ++j)
                source.setSource(urlA());
        }));
    }
    for (const auto& thread : threads)
        thread->start();
    for (const auto& thread : threads)
        QVERIFY(thread->wait());

    QCOMPARE(source.pass(kThreads * kRecords + 5).size(), 2 * kThreads * kRecords);
}

void TestVLVideoSource::close_queuesNothing()
{
    PassiveSource source;
    source.setUp(urlA());
    source.close();
    QCOMPARE(source.pass(), QStringList());
    QCOMPARE(source.source(), urlA());
}

void TestVLVideoSource::setAction_queuesOneRecordEach()
{
    PassiveSource source;
    source.setAction(VLVideoSource::ActionDecode);
    source.setAction(VLVideoSource::ActionDecode);
    QCOMPARE(source.action(), VLVideoSource::ActionIdle);
    QCOMPARE(source.pass(), QStringList{u"action 4"_s});
    QCOMPARE(source.action(), VLVideoSource::ActionDecode);
    QCOMPARE(source.pass(), QStringList{u"action 4"_s});
    QCOMPARE(source.pass(), QStringList());
}

void TestVLVideoSource::setAction_needsNoLock_whileOtherThreadsSetSource()
{
    constexpr int kRecords = 20000;
    PassiveSource source;
    const std::unique_ptr<QThread> thread(QThread::create([&source] {
        for (int i = 0; i < kRecords; ++i)
            source.setSource(urlA());
    }));
    thread->start();
    for (int i = 0; i < kRecords; ++i)
        source.setAction(VLVideoSource::ActionNone);
    QVERIFY(thread->wait());

    const QStringList calls = source.pass(2 * kRecords + 5);
    QCOMPARE(calls.count(u"action -1"_s), kRecords);
    QCOMPARE(calls.count(u"action 1"_s), kRecords);
}

void TestVLVideoSource::processActionQueue_takesOneRecordAPass()
{
    PassiveSource source;
    source.setAction(VLVideoSource::ActionSeek);
    source.setSource(urlA());
    // It takes a pass too, and changes nothing.
    source.setAction(VLVideoSource::ActionNone);
    source.setAction(VLVideoSource::ActionClose);

    QCOMPARE(source.pass(), QStringList{u"action 3"_s});
    QCOMPARE(source.pass(), (QStringList{u"source file:///a.mp4"_s, u"action 1"_s}));
    QCOMPARE(source.pass(), QStringList{u"action -1"_s});
    QCOMPARE(source.action(), VLVideoSource::ActionLoad);
    QCOMPARE(source.pass(), QStringList{u"action 2"_s});
    QCOMPARE(source.pass(), QStringList());
}

void TestVLVideoSource::processActionQueue_holdsNoLock_whileRecordIsCarriedOut()
{
    PassiveSource source;
    bool isFree = false;
    connect(
        &source, &VLVideoSource::actionChanged, &source,
        [&] {
            // Another thread gets at the state meanwhile.
            const std::unique_ptr<QThread> other(
                QThread::create([&source] { source.setSource(urlA()); }));
            other->start();
            isFree = other->wait();
        },
        Qt::DirectConnection);
    source.setAction(VLVideoSource::ActionDecode);
    source.processActionQueue();
    QVERIFY(isFree);
    QCOMPARE(source.pass().size(), 2);
}

void TestVLVideoSource::clearChanges_dropsAllRecords()
{
    PassiveSource source;
    source.clearChanges();
    source.setSource(urlA());
    source.setAction(VLVideoSource::ActionDecode);
    source.clearChanges();
    QCOMPARE(source.pass(3), QStringList());
    QCOMPARE(source.source(), QUrl());
    QCOMPARE(source.action(), VLVideoSource::ActionIdle);
}

void TestVLVideoSource::changeSetAction_storesThenEmits()
{
    PassiveSource source;
    QList<VLVideoSource::Action> seen;
    connect(&source, &VLVideoSource::actionChanged, &source, [&] { seen += source.action(); });
    source.changeSetAction(VLVideoSource::ActionDecode);
    source.changeSetAction(VLVideoSource::ActionDecode);
    source.changeSetAction(VLVideoSource::ActionQuit);
    QCOMPARE(seen,
             (QList<VLVideoSource::Action>{VLVideoSource::ActionDecode, VLVideoSource::ActionDecode,
                                           VLVideoSource::ActionQuit}));
}

void TestVLVideoSource::changeSetAction_ignoresNone()
{
    PassiveSource source;
    QSignalSpy spy(&source, &VLVideoSource::actionChanged);
    source.changeSetAction(VLVideoSource::ActionNone);
    QCOMPARE(source.action(), VLVideoSource::ActionIdle);
    QCOMPARE(spy.count(), 0);
}

void TestVLVideoSource::changeSetSource_storesWithoutSignal()
{
    PassiveSource source;
    QSignalSpy sourceSpy(&source, &VLVideoSource::sourceChanged);
    QSignalSpy actionSpy(&source, &VLVideoSource::actionChanged);
    source.changeSetSource(urlA());
    QCOMPARE(source.source(), urlA());
    QCOMPARE(sourceSpy.count() + actionSpy.count(), 0);
}

void TestVLVideoSource::actionRecord_setsAction()
{
    PassiveSource source;
    VLVideoSourceChange record(VLVideoSource::ActionSeek);
    static_assert(std::has_virtual_destructor_v<VLVideoSourceChange>);
    QCOMPARE(record.changeMask(), 1);
    record.apply(&source);
    QCOMPARE(source.calls, QStringList{u"action 3"_s});
}

void TestVLVideoSource::sourceRecord_setsSourceThenAction()
{
    PassiveSource source;
    ::VLVideoSourceSourceChange record(VLVideoSource::ActionLoad, urlB());
    QCOMPARE(record.url, urlB());
    QCOMPARE(record.action, VLVideoSource::ActionLoad);

    VLVideoSourceChange& base = record;
    QCOMPARE(base.changeMask(), 3);
    base.apply(&source);
    QCOMPARE(source.calls, (QStringList{u"source file:///b.mp4"_s, u"action 1"_s}));
}

void TestVLVideoSource::setupSource_queuesActionByUrl_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QString>("expectedCall");
    QTest::newRow("url") << urlA() << u"action 4"_s;
    QTest::newRow("no url") << QUrl() << u"action 5"_s;
}

void TestVLVideoSource::setupSource_queuesActionByUrl()
{
    QFETCH(QUrl, url);
    QFETCH(QString, expectedCall);
    PassiveSource source;
    source.changeSetSource(url);
    source.setupSource();
    QCOMPARE(source.pass(2), QStringList{expectedCall});
}

void TestVLVideoSource::setupSource_emitsSourceChangedWithNewCacheInPlace()
{
    PassiveSource source;
    source.setUp(urlA());
    source.pushFrame(newFrame(0.0));
    quint64 frames = 99;
    QStringList queued;
    connect(&source, &VLVideoSource::sourceChanged, &source, [&] {
        frames = source.loadedFrameCount();
        queued = source.pass();
    });
    source.setupSource();
    QCOMPARE(frames, 0U);
    QCOMPARE(queued, QStringList{u"action 4"_s});
}

void TestVLVideoSource::setupSource_replacesCache_data()
{
    QTest::addColumn<QUrl>("second");
    QTest::newRow("another url") << urlB();
    QTest::newRow("the same url") << urlA();
}

void TestVLVideoSource::setupSource_replacesCache()
{
    QFETCH(QUrl, second);
    PassiveSource source;
    const ObjectCensus census;
    source.setUp(urlA());
    source.pushFrame(newFrame(0.0));
    QCOMPARE(census.living<QObject>().size(), 1);

    // Accepting a URL leaves the old cache where it is.
    source.setSource(second);
    QCOMPARE(source.loadedFrameCount(), 1U);
    source.setUp(second);

    QCOMPARE(source.loadedFrameCount(), 0U);
    QVERIFY(!source.isFrameAvailable(0));
    QCOMPARE(census.living<QObject>().size(), 1);
    QCOMPARE(census.madeCount(), 2);
}

void TestVLVideoSource::frame_staysValid_whenCacheIsReplaced()
{
    PassiveSource source;
    source.setUp(urlA());
    source.pushFrame(newFrame(1.5));
    const VLVideoFrame frame = source.getFrame(0);
    source.setUp(urlB());
    QCOMPARE(QImage(frame), QImage(newFrame(1.5)));
    QCOMPARE(frame.pts(), 1.5);
}

void TestVLVideoSource::counts_areZero_beforeFirstSource()
{
    PassiveSource source;
    QVERIFY(!source.isFrameAvailable(0));
    QCOMPARE(source.loadedFrameCount(), 0U);
    QCOMPARE(source.totalFrameCount(), 0U);
}

void TestVLVideoSource::cacheAccess_endsProcess_beforeFirstSource_data()
{
    QTest::addColumn<QString>("operation");
    QTest::newRow("getFrame") << u"getFrame"_s;
    QTest::newRow("pushFrame") << u"pushFrame"_s;
}

void TestVLVideoSource::cacheAccess_endsProcess_beforeFirstSource()
{
    QFETCH(QString, operation);
    const ChildResult result = runInChildProcess(operation);
    QVERIFY(result.finished);
    // The sanitizers turn the crash into an exit of their own.
    QVERIFY(result.crashed || result.exitCode != EXIT_SUCCESS);
}

void TestVLVideoSource::pushFrame_appendsWithoutSignal()
{
    PassiveSource source;
    source.setUp(urlA());
    QSignalSpy readySpy(&source, &VLVideoSource::frameReady);
    QSignalSpy progressSpy(&source, &VLVideoSource::loadProgressChanged);
    source.pushFrame(newFrame(0.5));
    source.pushFrame(newFrame(0.25));
    QCOMPARE(source.loadedFrameCount(), 2U);
    QCOMPARE(source.totalFrameCount(), 2U);
    QCOMPARE(source.getFrame(0).pts(), 0.5);
    QCOMPARE(source.getFrame(1).pts(), 0.25);
    QCOMPARE(QImage(source.getFrame(1)), QImage(newFrame(0.25)));
    QCOMPARE(readySpy.count() + progressSpy.count(), 0);
}

void TestVLVideoSource::getFrame_isNull_beyondTheLast_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<unsigned int>("index");
    QTest::newRow("empty cache") << 0 << 0U;
    QTest::newRow("next") << 2 << 2U;
    QTest::newRow("greatest") << 2 << std::numeric_limits<unsigned int>::max();
}

void TestVLVideoSource::getFrame_isNull_beyondTheLast()
{
    QFETCH(int, frames);
    QFETCH(unsigned int, index);
    PassiveSource source;
    source.setUp(urlA());
    for (int i = 0; i < frames; ++i)
        source.pushFrame(newFrame(i));
    const VLVideoFrame frame = source.getFrame(index);
    QVERIFY(frame.isNull());
    QCOMPARE(frame.pts(), 0.0);
    QCOMPARE(source.loadedFrameCount(), static_cast<quint64>(frames));
}

void TestVLVideoSource::isFrameAvailable_looksAtCount_data()
{
    QTest::addColumn<quint64>("index");
    QTest::addColumn<bool>("expected");
    QTest::newRow("first") << quint64(0) << true;
    QTest::newRow("last") << quint64(1) << true;
    QTest::newRow("next") << quint64(2) << false;
    QTest::newRow("beyond 32 bits") << quint64(0x100000000) << false;
    QTest::newRow("greatest") << std::numeric_limits<quint64>::max() << false;
}

void TestVLVideoSource::isFrameAvailable_looksAtCount()
{
    QFETCH(quint64, index);
    PassiveSource source;
    source.setUp(urlA());
    source.pushFrame(newFrame(0.0));
    source.pushFrame(newFrame(1.0));
    QTEST(source.isFrameAvailable(index), "expected");
}

void TestVLVideoSource::getFrame_takesIndexOf32Bits()
{
    static_assert(std::is_same_v<decltype(&VLVideoSource::getFrame),
                                 VLVideoFrame (VLVideoSource::*)(unsigned int)>);
    PassiveSource source;
    source.setUp(urlA());
    source.pushFrame(newFrame(2.5));
    // A count of more bits loses them on its way.
    const quint64 index = 0x100000000;
    QCOMPARE(source.getFrame(static_cast<unsigned int>(index)).pts(), 2.5);
}

void TestVLVideoSource::frames_mayBeReadWhileOthersArePushed()
{
    constexpr int kFrames = 3000;
    PassiveSource source;
    source.setUp(urlA());
    const std::unique_ptr<QThread> writer(QThread::create([&source] {
        for (int i = 0; i < kFrames; ++i)
            source.pushFrame(newFrame(i));
    }));
    writer->start();
    unsigned int next = 0;
    while (next < kFrames) {
        if (!source.isFrameAvailable(next)) {
            QThread::yieldCurrentThread();
            continue;
        }
        QCOMPARE(source.getFrame(next).pts(), static_cast<double>(next));
        ++next;
    }
    QVERIFY(writer->wait());
    QCOMPARE(source.loadedFrameCount(), static_cast<quint64>(kFrames));
}

void TestVLVideoSource::loadSource_emitsSourceLoaded()
{
    PassiveSource source;
    QSignalSpy spy(&source, &VLVideoSource::sourceLoaded);
    QVERIFY(source.loadSource());
    QCOMPARE(spy.count(), 1);
    QCOMPARE(source.pass(), QStringList());
}

void TestVLVideoSource::notifyStreamEnded_emitsStreamEnded()
{
    PassiveSource source;
    QSignalSpy spy(&source, &VLVideoSource::streamEnded);
    source.notifyStreamEnded();
    QCOMPARE(spy.count(), 1);
}

void TestVLVideoSource::setShouldQuit_setsFlag()
{
    PassiveSource source;
    source.setShouldQuit();
    QVERIFY(source.shouldQuit());
}

void TestVLVideoSource::quit_returnsAtOnce_whenThreadNeverRan()
{
    PassiveSource source;
    source.quit();
    QVERIFY(source.shouldQuit());
    QVERIFY(!source.isRunning());
}

void TestVLVideoSource::quit_endsThread_data()
{
    QTest::addColumn<bool>("isDeaf");
    QTest::newRow("that listens") << false;
    QTest::newRow("that is terminated after ten seconds") << true;
}

void TestVLVideoSource::quit_endsThread()
{
    QFETCH(bool, isDeaf);
    LoopingSource source(isDeaf);
    source.start();
    source.started.acquire();
    if (isDeaf)
        QTest::ignoreMessage(QtDebugMsg, "VLVideoSource did not quit in a timely fashion");

    QElapsedTimer timer;
    timer.start();
    source.quit();

    constexpr qint64 kTimeoutMs = 10000;
    QCOMPARE(timer.elapsed() >= kTimeoutMs, isDeaf);
    QVERIFY(timer.elapsed() < 2 * kTimeoutMs);
    QVERIFY(source.isFinished());
    QCOMPARE(source.hasLeftLoop.load(), !isDeaf);
}

void TestVLVideoSource::destructor_leavesCacheAllocated()
{
    const ObjectCensus census;
    auto source = std::make_unique<PassiveSource>();
    source->setUp(urlA());
    QCOMPARE(census.living<QObject>().size(), 2);
    source.reset();
    QCOMPARE(census.living<QObject>().size(), 1);
    census.deleteLiving<QObject>();
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLVideoSource>(argc, argv);
}

#include "tst_vlvideosource.moc"
