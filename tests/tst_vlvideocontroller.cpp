// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "ThreadSpy.h"
#include "VidletsTest.h"
#include <Vidlets/VLVideoController.h>
#include <Vidlets/VLVideoSource.h>

#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QPointer>
#include <QRegularExpression>
#include <QSemaphore>

#include <cmath>
#include <limits>
#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// Several passes of an idle loop, in milliseconds: enough to see that nothing comes.
constexpr int kSomePassesMs = 350;
/// A frame rate at which a sleep of one frame's time outlasts any test.
constexpr double kNeverEndingSleepHz = 1.0 / 3600.0;
constexpr quint64 kNowhere = std::numeric_limits<quint64>::max();

/// A frame that can be told from others by its width.
VLVideoFrame numberedFrame(int number)
{
    return VLVideoFrame(number + 1, 1, QImage::Format_RGB32, 0);
}

/// The number of a frame; -1 for a null one.
int numberOf(const VLVideoFrame& frame)
{
    return frame.width() - 1;
}

/// A source that decodes nothing and whose thread does not run: the test does its work.
class FakeSource : public VLVideoSource
{
public:
    bool isOpen() override
    {
        return false;
    }
    double getTime() override
    {
        return 0.0;
    }
    void changeSetPosition(quint64) override
    {
        ++changesOfPosition;
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
        for (; framesToCome > 0; --framesToCome)
            pushFrame(numberedFrame(0));
        return rate;
    }
    double frameWidth() const override
    {
        return 320.5;
    }
    double frameHeight() const override
    {
        return 240.5;
    }
    void close() override
    {
        ++closings;
    }

    /// Makes an empty cache, then pushes the frames @p first to @p first + @p count - 1.
    void load(int count, int first = 0)
    {
        setupSource();
        for (int i = 0; i < count; ++i)
            pushFrame(numberedFrame(first + i));
    }
    /// Carries out the URL that was asked for, and the action queued by it.
    void applyChange()
    {
        processActionQueue();
    }
    /// Sends sourceLoaded().
    bool finishLoading()
    {
        return VLVideoSource::loadSource();
    }

    double rate = 100.0;
    /// Delivered as soon as somebody asks for the frame rate.
    int framesToCome = 0;
    int closings = 0;
    int changesOfPosition = 0;
};

/// A controller whose thread the test starts or leaves, and a record of what it sends.
struct Player
{
    explicit Player(int frames = 0, double rate = 100.0)
    {
        source.rate = rate;
        source.load(frames);
        const auto record = [this](void (VLVideoController::*signal)(), const char* name) {
            QObject::connect(
                controller, signal, controller,
                [this, name] {
                    const QMutexLocker locker(&mutex);
                    order += QString::fromLatin1(name);
                    if (QThread::currentThread() == controller)
                        fromLoop += QString::fromLatin1(name);
                },
                Qt::DirectConnection);
        };
        record(&VLVideoController::displayFrame, "display");
        record(&VLVideoController::stateChanged, "state");
        record(&VLVideoController::positionChanged, "position");
        record(&VLVideoController::widthChanged, "width");
        record(&VLVideoController::heightChanged, "height");
        record(&VLVideoController::loadProgressChanged, "load");
    }
    ~Player()
    {
        if (controller)
            controller->quit();
        delete controller;
    }
    Q_DISABLE_COPY_MOVE(Player)

    VLVideoController* operator->() const
    {
        return controller;
    }
    /// What was sent since the last call, on whatever thread.
    QString takeOrder()
    {
        const QMutexLocker locker(&mutex);
        const QString result = order.join(u' ');
        order.clear();
        return result;
    }
    /// How often the loop has sent the signal with that name.
    qsizetype countFromLoop(const char* name)
    {
        const QMutexLocker locker(&mutex);
        return fromLoop.count(QString::fromLatin1(name));
    }

    FakeSource source;
    QMutex mutex;
    QStringList order;
    QStringList fromLoop;
    QPointer<VLVideoController> controller = new VLVideoController(&source);
};

/// Opens the switch that a thread has for itself.
class OpenThread : public QThread
{
public:
    using QThread::setTerminationEnabled;
};

QUrl clipUrl()
{
    return QUrl(u"file:///clip.mp4"_s);
}

} // namespace

class TestVLVideoController : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    // Construction
    void constructor_setsInitialState();
    void constructor_takesParent();
    void constructor_connectsSignalsOfSource_data();
    void constructor_connectsSignalsOfSource();
    void constructor_connectsSourceByThread();
    void finishedThread_deletesController();
    void state_hasFixedNumbers();

    // Source
    void setSource_emitsInOrder_data();
    void setSource_emitsInOrder();
    void setSource_rewindsAndQueuesUrl();
    void setSource_changesPositionOnly_whenUrlIsRefused_data();
    void setSource_changesPositionOnly_whenUrlIsRefused();
    void setSource_startsAtFirstFrame_whenThereWereNone();
    void setSource_leavesPositionNowhere_whenRefusedWithoutFrames();
    void source_isUrlOfSource();
    void close_closesSource();

    // State
    void setState_emitsOnEveryCall();
    void play_emitsOnEveryCall();
    void pause_emitsOnEveryCall();
    void stateChanged_isSentAfterTheChange();
    void play_rewinds_whenPositionIsAtEnd();
    void play_keepsPosition_whenThereAreFramesLeft();
    void play_losesPosition_whenThereAreNoFrames();

    // Position and progress
    void setPosition_staysWithinFrames_data();
    void setPosition_staysWithinFrames();
    void setPosition_wraps_whenThereAreNoFrames();
    void setPosition_emitsAfterTheChange_onEveryCall();
    void setProgress_cutsToFrame_data();
    void setProgress_cutsToFrame();
    void setProgress_wraps_whenThereAreNoFrames();
    void progress_isPositionByFrameCount();
    void progress_isZero_whenThereAreNoFrames();
    void loadProgress_isOne_whenThereAreFrames();
    void loadProgress_isNotANumber_whenThereAreNoFrames();
    void loadProgress_isZero_whenThereIsNoSource();

    // Frames
    void frameCount_isTotalOfSource();
    void frameSize_isThatOfSource();
    void getFrame_cutsIndexTo32Bits_data();
    void getFrame_cutsIndexTo32Bits();
    void currentFrame_isFrameAtPosition();
    void currentFrame_isNull_whenPositionIsNowhere();
    void scrubbing_emitsNothing();
    void lastFrameDisplayTime_isKept();
    void seeking_neverReachesDecoder();

    // Signals of the source
    void streamEnded_pauses();
    void streamEnded_doesNotPause_whileScrubbing();
    void sourceLoaded_emitsInOrder();

    // One frame
    void presentFrame_emitsAlone_whenPaused();
    void presentFrame_movesOnByOne_whenPlaying();
    void presentFrame_showsFrame_thatArrivesWhileItAsks();
    void presentFrame_setsDisplayTime_whenPlaying();
    void presentFrame_doesNothing_whenLastFrameWasFetched();
    void presentFrame_onlySleeps_whenEndWasNotFetched();
    void presentFrame_sleepsOneInterval_atLeast();
    void presentFrame_sleepsForUnfetchedFrames_whenNothingWasShownYet();
    void run_playsToTheEndWithoutSleep_whenThereIsNoFrameRate_data();
    void run_playsToTheEndWithoutSleep_whenThereIsNoFrameRate();

    // The loop
    void thread_isNamed();
    void run_showsFrameOnce_whenPaused();
    void run_showsFrameAtPosition_whenPaused();
    void run_showsAgain_whenFirstFrameIsNull();
    void run_showsNothing_whenThereIsNoFrame();
    void run_showsFrame_afterEachMove();
    void run_showsFrame_whenNeeded_data();
    void run_showsFrame_whenNeeded();
    void run_showsOldFrameThenNew_whenSourceChanges();
    void run_givesSameFrame_whenNothingMoved();
    void run_playsEachFrameToTheEnd();
    void run_startsAgain_whenPlayedAtTheEnd();
    void run_takesFrameTime_forEachFrame();
    void run_pauses_whenDecoderIsCaughtUpWith();
    void run_pauses_whenStateIsPlayingWithoutFrames();
    void run_staysPlaying_whenPlayWasTooEarly();
    void run_needsNoFrame_whenItHasPlayed();
    void run_goesOn_whenScrubbingAndDecodingEnds();

    // The end of the thread
    void quit_endsThread_data();
    void quit_endsThread();
    void quit_isHarmless_whenThreadIsNotRunning();
    void shouldQuit_isFlag();
    void shouldQuit_isFalse_whenLockIsTaken();
    void run_ignoresQuit_whileLockIsTaken();
    void quit_terminatesThread_afterClockWentBack();
    void quit_givesUp_whenThreadCannotBeTerminated();
    void destructor_doesNotWait();
};

int TestVLVideoController::runChild(const QString& name)
{
    if (name != u"deleteRunning"_s)
        return VidletsTest::runChild(name);
    FakeSource source;
    source.rate = kNeverEndingSleepHz;
    source.load(3);
    auto* controller = new VLVideoController(&source);
    QSemaphore shown;
    connect(
        controller, &VLVideoController::displayFrame, controller, [&shown] { shown.release(); },
        Qt::DirectConnection);
    controller->play();
    controller->start();
    shown.acquire();
    delete controller;
    return EXIT_SUCCESS;
}

void TestVLVideoController::constructor_setsInitialState()
{
    const Player player;
    QCOMPARE(player->objectName(), u"Controller"_s);
    QCOMPARE(player->state(), VLVideoController::StatePaused);
    QCOMPARE(player->position(), quint64(0));
    QVERIFY(!player->isScrubbing());
    QVERIFY(!player->shouldQuit());
    QVERIFY(player->lastFrameDisplayTime().isNull());
    QVERIFY(!player->isRunning());
    QVERIFY(!player->parent());
}

void TestVLVideoController::constructor_takesParent()
{
    FakeSource source;
    QObject parent;
    const VLVideoController controller(&source, &parent);
    QCOMPARE(controller.parent(), &parent);
}

void TestVLVideoController::constructor_connectsSignalsOfSource_data()
{
    QTest::addColumn<QByteArray>("signal");
    QTest::addColumn<QString>("order");
    QTest::newRow("frame") << QByteArray("frameReady") << QString();
    QTest::newRow("source") << QByteArray("sourceChanged") << QString();
    QTest::newRow("end") << QByteArray("streamEnded") << u"state load"_s;
    QTest::newRow("load") << QByteArray("sourceLoaded") << u"width height load"_s;
    QTest::newRow("action") << QByteArray("actionChanged") << QString();
    QTest::newRow("position") << QByteArray("positionChanged") << QString();
    QTest::newRow("progress") << QByteArray("loadProgressChanged") << u"load"_s;
}

void TestVLVideoController::constructor_connectsSignalsOfSource()
{
    QFETCH(QByteArray, signal);
    Player player;
    QVERIFY(QMetaObject::invokeMethod(&player.source, signal.constData()));
    QTEST(player.takeOrder(), "order");
}

void TestVLVideoController::constructor_connectsSourceByThread()
{
    Player player;
    const std::unique_ptr<QThread> thread(
        QThread::create([&player] { player.source.notifyStreamEnded(); }));
    thread->start();
    QVERIFY(thread->wait(QDeadlineTimer(QDeadlineTimer::Forever)));
    QCOMPARE(player.takeOrder(), QString());

    QCoreApplication::sendPostedEvents(player.controller);
    QCOMPARE(player.takeOrder(), u"state load"_s);
}

void TestVLVideoController::finishedThread_deletesController()
{
    const Player player;
    player->start();
    player->quit();
    QVERIFY(player.controller);
    QTRY_VERIFY(!player.controller);
}

void TestVLVideoController::state_hasFixedNumbers()
{
    QCOMPARE(int(VLVideoController::StatePaused), 0);
    QCOMPARE(int(VLVideoController::StatePlaying), 1);
}

void TestVLVideoController::setSource_emitsInOrder_data()
{
    QTest::addColumn<bool>("scrubbing");
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QString>("order");
    const QString plain = u"state load position state"_s;
    const QString whileScrubbing = u"load position state"_s;
    QTest::newRow("accepted") << false << clipUrl() << plain;
    QTest::newRow("accepted, scrubbing") << true << clipUrl() << whileScrubbing;
    QTest::newRow("refused") << false << QUrl() << plain;
    QTest::newRow("refused, scrubbing") << true << QUrl() << whileScrubbing;
}

void TestVLVideoController::setSource_emitsInOrder()
{
    QFETCH(bool, scrubbing);
    QFETCH(QUrl, url);
    Player player(3);
    player->setScrubbing(scrubbing);
    player->setState(VLVideoController::StatePlaying);
    player.takeOrder();

    QCOMPARE(player->setSource(url), !url.isEmpty());

    QTEST(player.takeOrder(), "order");
    QCOMPARE(player->state(), VLVideoController::StatePaused);
    QCOMPARE(player->isScrubbing(), scrubbing);
}

void TestVLVideoController::setSource_rewindsAndQueuesUrl()
{
    Player player(5);
    player.source.applyChange();
    player->setPosition(4);

    QVERIFY(player->setSource(clipUrl()));

    QCOMPARE(player->position(), quint64(0));
    QCOMPARE(player.source.source(), QUrl());
    player.source.applyChange();
    QCOMPARE(player.source.source(), clipUrl());
    QCOMPARE(player.source.action(), VLVideoSource::ActionLoad);
}

void TestVLVideoController::setSource_changesPositionOnly_whenUrlIsRefused_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::newRow("current") << clipUrl();
    QTest::newRow("empty") << QUrl();
    QTest::newRow("invalid") << QUrl(u"http://[broken"_s);
}

void TestVLVideoController::setSource_changesPositionOnly_whenUrlIsRefused()
{
    QFETCH(QUrl, url);
    Player player(5);
    player.source.applyChange();
    QVERIFY(player->setSource(clipUrl()));
    player.source.applyChange();
    player->setPosition(4);
    player->setState(VLVideoController::StatePlaying);
    ThreadSpy actionSpy(&player.source, &VLVideoSource::actionChanged);

    QVERIFY(!player->setSource(url));

    QCOMPARE(player->position(), quint64(0));
    QCOMPARE(player->state(), VLVideoController::StatePaused);
    QCOMPARE(player.source.source(), clipUrl());
    QCOMPARE(player->frameCount(), quint64(5));
    player.source.applyChange();
    QCOMPARE(actionSpy.count(), 0);
}

void TestVLVideoController::setSource_startsAtFirstFrame_whenThereWereNone()
{
    const Player player;
    QList<quint64> positions;
    connect(player.controller, &VLVideoController::positionChanged, this,
            [&] { positions += player->position(); });

    QVERIFY(player->setSource(clipUrl()));

    QCOMPARE(positions, QList<quint64>{kNowhere});
    QCOMPARE(player->position(), quint64(0));
}

void TestVLVideoController::setSource_leavesPositionNowhere_whenRefusedWithoutFrames()
{
    const Player player;
    QVERIFY(!player->setSource(QUrl()));
    QCOMPARE(player->position(), kNowhere);
}

void TestVLVideoController::source_isUrlOfSource()
{
    Player player;
    QCOMPARE(player->source(), QUrl());
    player.source.changeSetSource(clipUrl());
    QCOMPARE(player->source(), clipUrl());
}

void TestVLVideoController::close_closesSource()
{
    Player player;
    player->close();
    QCOMPARE(player.source.closings, 1);
    QCOMPARE(player.takeOrder(), QString());
}

void TestVLVideoController::setState_emitsOnEveryCall()
{
    Player player(3);
    player->setState(VLVideoController::StatePlaying);
    QCOMPARE(player->state(), VLVideoController::StatePlaying);
    player->setState(VLVideoController::StatePlaying);
    player->setState(VLVideoController::StatePaused);
    QCOMPARE(player->state(), VLVideoController::StatePaused);
    player->setState(VLVideoController::StatePaused);
    QCOMPARE(player.takeOrder(), u"state state state state"_s);
}

void TestVLVideoController::play_emitsOnEveryCall()
{
    Player player(3);
    player->play();
    player->play();
    QCOMPARE(player->state(), VLVideoController::StatePlaying);
    QCOMPARE(player.takeOrder(), u"state state"_s);
}

void TestVLVideoController::pause_emitsOnEveryCall()
{
    Player player(3);
    player->setState(VLVideoController::StatePlaying);
    player->pause();
    player->pause();
    QCOMPARE(player->state(), VLVideoController::StatePaused);
    QCOMPARE(player.takeOrder(), u"state state state"_s);
}

void TestVLVideoController::stateChanged_isSentAfterTheChange()
{
    const Player player(3);
    QList<int> states;
    connect(player.controller, &VLVideoController::stateChanged, this,
            [&] { states += player->state(); });
    player->play();
    player->pause();
    QCOMPARE(states, (QList<int>{1, 0}));
}

void TestVLVideoController::play_rewinds_whenPositionIsAtEnd()
{
    Player player(1, 1000.0);
    player->setState(VLVideoController::StatePlaying);
    player->presentFrame();
    QCOMPARE(player->position(), quint64(1));
    player->pause();
    player.takeOrder();

    player->play();

    QCOMPARE(player->position(), quint64(0));
    QCOMPARE(player->state(), VLVideoController::StatePlaying);
    QCOMPARE(player.takeOrder(), u"position state"_s);
}

void TestVLVideoController::play_keepsPosition_whenThereAreFramesLeft()
{
    const Player player(3);
    player->setPosition(2);
    player->play();
    QCOMPARE(player->position(), quint64(2));
}

void TestVLVideoController::play_losesPosition_whenThereAreNoFrames()
{
    Player player;
    player->play();
    QCOMPARE(player->position(), kNowhere);
    QCOMPARE(player->state(), VLVideoController::StatePlaying);
    QCOMPARE(player.takeOrder(), u"position state"_s);
}

void TestVLVideoController::setPosition_staysWithinFrames_data()
{
    QTest::addColumn<quint64>("asked");
    QTest::addColumn<quint64>("got");
    QTest::newRow("first") << quint64(0) << quint64(0);
    QTest::newRow("within") << quint64(5) << quint64(5);
    QTest::newRow("last") << quint64(9) << quint64(9);
    QTest::newRow("one beyond") << quint64(10) << quint64(9);
    QTest::newRow("beyond 32 bits") << (quint64(1) << 32) << quint64(9);
    QTest::newRow("largest") << kNowhere << quint64(9);
}

void TestVLVideoController::setPosition_staysWithinFrames()
{
    QFETCH(quint64, asked);
    const Player player(10);
    player->setPosition(asked);
    QTEST(player->position(), "got");
}

void TestVLVideoController::setPosition_wraps_whenThereAreNoFrames()
{
    const Player player;
    player->setPosition(0);
    QCOMPARE(player->position(), kNowhere);
    player->setPosition(7);
    QCOMPARE(player->position(), kNowhere);
}

void TestVLVideoController::setPosition_emitsAfterTheChange_onEveryCall()
{
    Player player(10);
    QList<quint64> seen;
    connect(player.controller, &VLVideoController::positionChanged, this,
            [&] { seen += player->position(); });
    player->setPosition(4);
    player->setPosition(4);
    QCOMPARE(seen, (QList<quint64>{4, 4}));
    QCOMPARE(player.takeOrder(), u"position position"_s);
}

void TestVLVideoController::setProgress_cutsToFrame_data()
{
    QTest::addColumn<double>("progress");
    QTest::addColumn<quint64>("position");
    QTest::newRow("start") << 0.0 << quint64(0);
    QTest::newRow("below the second") << 0.09 << quint64(0);
    QTest::newRow("second") << 0.1 << quint64(1);
    QTest::newRow("half") << 0.5 << quint64(5);
    QTest::newRow("between two") << 0.56 << quint64(5);
    QTest::newRow("below the end") << 0.99 << quint64(9);
    QTest::newRow("end") << 1.0 << quint64(9);
    QTest::newRow("beyond") << 1.5 << quint64(9);
    QTest::newRow("far beyond") << 1e8 << quint64(9);
    // Cut towards zero.
    QTest::newRow("just below zero") << -0.09 << quint64(0);
    // Widened with the sign: a huge position.
    QTest::newRow("negative") << -0.1 << quint64(9);
    QTest::newRow("far below zero") << -1e8 << quint64(9);
    // What 32 bits do not hold, and what is no number, is the least that they hold.
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    QTest::newRow("last that fits") << 214748364.7 << quint64(9);
    QTest::newRow("too large") << 214748364.8 << quint64(9);
    QTest::newRow("too large, its low bits are few") << 429496729.8 << quint64(9);
    QTest::newRow("too small") << -429496729.4 << quint64(9);
    QTest::newRow("infinite") << kInfinity << quint64(9);
    QTest::newRow("negative, infinite") << -kInfinity << quint64(9);
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << quint64(9);
}

void TestVLVideoController::setProgress_cutsToFrame()
{
    QFETCH(double, progress);
    Player player(10);
    player->setPosition(3);
    player.takeOrder();

    player->setProgress(progress);

    QTEST(player->position(), "position");
    QCOMPARE(player.takeOrder(), u"position"_s);
}

void TestVLVideoController::setProgress_wraps_whenThereAreNoFrames()
{
    const Player player;
    player->setProgress(0.0);
    QCOMPARE(player->position(), kNowhere);
}

void TestVLVideoController::progress_isPositionByFrameCount()
{
    const Player player(8);
    QCOMPARE(player->progress(), 0.0);
    player->setPosition(2);
    QCOMPARE(player->progress(), 0.25);
    player->setPosition(7);
    QCOMPARE(player->progress(), 0.875);
}

void TestVLVideoController::progress_isZero_whenThereAreNoFrames()
{
    const Player player;
    QCOMPARE(player->progress(), 0.0);
    player->setPosition(0);
    QCOMPARE(player->progress(), 0.0);
}

void TestVLVideoController::loadProgress_isOne_whenThereAreFrames()
{
    Player player(1);
    QCOMPARE(player->loadProgress(), 1.0);
    player.source.pushFrame(numberedFrame(1));
    QCOMPARE(player->loadProgress(), 1.0);
}

void TestVLVideoController::loadProgress_isNotANumber_whenThereAreNoFrames()
{
    const Player player;
    QVERIFY(std::isnan(player->loadProgress()));
}

void TestVLVideoController::loadProgress_isZero_whenThereIsNoSource()
{
    const QRegularExpression warning(u"invalid nullptr parameter"_s);
    for (int i = 0; i < 3; ++i)
        QTest::ignoreMessage(QtWarningMsg, warning);
    VLVideoController controller(nullptr);
    QCOMPARE(controller.loadProgress(), 0.0);
    controller.play();
    QCOMPARE(controller.state(), VLVideoController::StatePlaying);
    QCOMPARE(controller.position(), quint64(0));
}

void TestVLVideoController::frameCount_isTotalOfSource()
{
    Player player;
    QCOMPARE(player->frameCount(), quint64(0));
    player.source.pushFrame(numberedFrame(0));
    QCOMPARE(player->frameCount(), quint64(1));
}

void TestVLVideoController::frameSize_isThatOfSource()
{
    const Player player;
    QCOMPARE(player->frameWidth(), 320.5);
    QCOMPARE(player->frameHeight(), 240.5);
}

void TestVLVideoController::getFrame_cutsIndexTo32Bits_data()
{
    QTest::addColumn<quint64>("index");
    QTest::addColumn<int>("number");
    QTest::newRow("first") << quint64(0) << 0;
    QTest::newRow("last") << quint64(2) << 2;
    QTest::newRow("beyond") << quint64(3) << -1;
    QTest::newRow("largest of 32 bits") << quint64(0xFFFFFFFF) << -1;
    QTest::newRow("one more") << (quint64(1) << 32) << 0;
    QTest::newRow("three more") << (quint64(1) << 32) + 2 << 2;
    QTest::newRow("largest") << kNowhere << -1;
}

void TestVLVideoController::getFrame_cutsIndexTo32Bits()
{
    QFETCH(quint64, index);
    const Player player(3);
    QTEST(numberOf(player->getFrame(index)), "number");
    QCOMPARE(player->position(), quint64(0));
}

void TestVLVideoController::currentFrame_isFrameAtPosition()
{
    const Player player(3);
    QCOMPARE(numberOf(player->currentFrame()), 0);
    player->setPosition(2);
    QCOMPARE(numberOf(player->currentFrame()), 2);
    QCOMPARE(numberOf(player->currentFrame()), 2);
}

void TestVLVideoController::currentFrame_isNull_whenPositionIsNowhere()
{
    Player player;
    player->setPosition(0);
    QVERIFY(player->currentFrame().isNull());
    player.source.pushFrame(numberedFrame(0));
    QVERIFY(player->currentFrame().isNull());
}

void TestVLVideoController::scrubbing_emitsNothing()
{
    Player player(3);
    player->setScrubbing(true);
    QVERIFY(player->isScrubbing());
    player->setScrubbing(false);
    QVERIFY(!player->isScrubbing());
    QCOMPARE(player.takeOrder(), QString());
}

void TestVLVideoController::lastFrameDisplayTime_isKept()
{
    const Player player;
    const QDateTime time(QDate(2026, 3, 1), QTime(12, 0, 0, 5));
    player->setLastFrameDisplayTime(time);
    QCOMPARE(player->lastFrameDisplayTime(), time);
}

void TestVLVideoController::seeking_neverReachesDecoder()
{
    Player player(5);
    player.source.applyChange();
    ThreadSpy actionSpy(&player.source, &VLVideoSource::actionChanged);
    player->play();
    player->setPosition(2);
    player->setProgress(0.9);
    player->setScrubbing(true);
    player->pause();
    player.source.applyChange();
    QCOMPARE(actionSpy.count(), 0);
    QCOMPARE(player.source.changesOfPosition, 0);
}

void TestVLVideoController::streamEnded_pauses()
{
    Player player(3);
    player->setPosition(1);
    player->play();
    player.takeOrder();

    player->streamEnded();

    QCOMPARE(player->state(), VLVideoController::StatePaused);
    QCOMPARE(player->position(), quint64(1));
    QCOMPARE(player.takeOrder(), u"state load"_s);
}

void TestVLVideoController::streamEnded_doesNotPause_whileScrubbing()
{
    Player player(3);
    player->setScrubbing(true);
    player->play();
    player.takeOrder();

    player->streamEnded();

    QCOMPARE(player->state(), VLVideoController::StatePlaying);
    QCOMPARE(player.takeOrder(), u"load"_s);
}

void TestVLVideoController::sourceLoaded_emitsInOrder()
{
    Player player(3);
    player->play();
    player.takeOrder();
    player->sourceLoaded();
    QCOMPARE(player.takeOrder(), u"width height load"_s);
    QCOMPARE(player->state(), VLVideoController::StatePlaying);
}

void TestVLVideoController::presentFrame_emitsAlone_whenPaused()
{
    Player player(3, kNeverEndingSleepHz);
    player->presentFrame();
    QCOMPARE(player.takeOrder(), u"display"_s);
    QCOMPARE(player->position(), quint64(0));
    QVERIFY(player->lastFrameDisplayTime().isNull());
}

void TestVLVideoController::presentFrame_movesOnByOne_whenPlaying()
{
    Player player(3, 1000.0);
    QList<quint64> seen;
    connect(player.controller, &VLVideoController::displayFrame, this,
            [&] { seen += player->position(); });
    player->setState(VLVideoController::StatePlaying);
    player.takeOrder();

    player->presentFrame();
    player->presentFrame();

    QCOMPARE(seen, (QList<quint64>{1, 2}));
    QCOMPARE(player.takeOrder(), u"display position display position"_s);
    QCOMPARE(numberOf(player->currentFrame()), 2);
}

void TestVLVideoController::presentFrame_showsFrame_thatArrivesWhileItAsks()
{
    Player player(1, 1000.0);
    player->setState(VLVideoController::StatePlaying);
    player->presentFrame();
    QCOMPARE(player->position(), 1U);
    player.takeOrder();

    player.source.framesToCome = 1;
    player->presentFrame();

    QCOMPARE(player->position(), 2U);
    QCOMPARE(player.takeOrder(), u"display position"_s);
}

void TestVLVideoController::presentFrame_setsDisplayTime_whenPlaying()
{
    const Player player(3, 1000.0);
    player->setState(VLVideoController::StatePlaying);
    QDateTime duringSignal = QDateTime::currentDateTime();
    connect(player.controller, &VLVideoController::positionChanged, this,
            [&] { duringSignal = player->lastFrameDisplayTime(); });
    const QDateTime before = QDateTime::currentDateTime();

    player->presentFrame();

    // Set after the signals.
    QVERIFY(duringSignal.isNull());
    QVERIFY(player->lastFrameDisplayTime() >= before);
    QVERIFY(player->lastFrameDisplayTime() <= QDateTime::currentDateTime());
}

void TestVLVideoController::presentFrame_doesNothing_whenLastFrameWasFetched()
{
    Player player(1, 1000.0);
    player->setState(VLVideoController::StatePlaying);
    player->presentFrame();
    QVERIFY(player->currentFrame().isNull());
    player.takeOrder();
    player.source.rate = kNeverEndingSleepHz;

    player->presentFrame();

    QCOMPARE(player.takeOrder(), QString());
    QCOMPARE(player->position(), quint64(1));
    QCOMPARE(player->state(), VLVideoController::StatePlaying);
}

void TestVLVideoController::presentFrame_onlySleeps_whenEndWasNotFetched()
{
    Player player(1, 1000.0);
    player->setState(VLVideoController::StatePlaying);
    player->presentFrame();
    const QDateTime shown = player->lastFrameDisplayTime();
    player.takeOrder();
    player.source.rate = 20.0;
    QElapsedTimer timer;

    timer.start();
    player->presentFrame();

    QVERIFY2(timer.elapsed() >= 50, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(player.takeOrder(), QString());
    QCOMPARE(player->position(), quint64(1));
    QCOMPARE(player->lastFrameDisplayTime(), shown);
}

void TestVLVideoController::presentFrame_sleepsOneInterval_atLeast()
{
    const Player player(3, 20.0);
    player->setState(VLVideoController::StatePlaying);
    player->currentFrame();
    QElapsedTimer timer;
    for (int i = 0; i < 2; ++i) {
        timer.start();
        player->presentFrame();
        QVERIFY2(timer.elapsed() >= 50, qPrintable(QString::number(timer.elapsed())));
        player->currentFrame();
    }
}

void TestVLVideoController::presentFrame_sleepsForUnfetchedFrames_whenNothingWasShownYet()
{
    Player player(5, 1000.0);
    player->setPosition(0);
    player->setState(VLVideoController::StatePlaying);
    player->presentFrame();
    player->presentFrame();
    player->setLastFrameDisplayTime(QDateTime());
    player.source.rate = 20.0;
    QElapsedTimer timer;

    // The frames 0, 1 and 2 were not fetched.
    timer.start();
    player->presentFrame();

    QVERIFY2(timer.elapsed() >= 150, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(player->position(), quint64(3));
}

void TestVLVideoController::run_playsToTheEndWithoutSleep_whenThereIsNoFrameRate_data()
{
    QTest::addColumn<double>("rate");
    QTest::newRow("zero") << 0.0;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
}

void TestVLVideoController::run_playsToTheEndWithoutSleep_whenThereIsNoFrameRate()
{
    QFETCH(double, rate);
    Player player(20, rate);
    player->play();
    player->start();
    QTRY_COMPARE(player->state(), VLVideoController::StatePaused);
    QCOMPARE(player->position(), quint64(20));
    QCOMPARE(player.countFromLoop("display"), 20);
}

void TestVLVideoController::thread_isNamed()
{
    Player player(1);
    QByteArray name;
    QSemaphore done;
    connect(
        player.controller, &VLVideoController::displayFrame, player.controller,
        [&] {
            QFile file(u"/proc/thread-self/comm"_s);
            if (file.open(QIODevice::ReadOnly))
                name = file.readAll().trimmed();
            done.release();
        },
        Qt::DirectConnection);
    player->start();
    QVERIFY(done.tryAcquire(1, 5000));
    QCOMPARE(name, QByteArray("Controller"));
}

void TestVLVideoController::run_showsFrameOnce_whenPaused()
{
    Player player(3);
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->start();
    QVERIFY(spy.wait());
    QVERIFY(!spy.wait(kSomePassesMs));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(player.countFromLoop("display"), 1);
    QCOMPARE(player.takeOrder(), u"display"_s);
    QCOMPARE(numberOf(player->currentFrame()), 0);
}

void TestVLVideoController::run_showsFrameAtPosition_whenPaused()
{
    const Player player(3);
    player->setPosition(2);
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->start();
    QVERIFY(spy.wait());
    QCOMPARE(numberOf(player->currentFrame()), 2);
}

void TestVLVideoController::run_showsAgain_whenFirstFrameIsNull()
{
    Player player;
    player.source.pushFrame(VLVideoFrame());
    player.source.pushFrame(numberedFrame(1));
    player->setPosition(1);
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->start();
    QTRY_VERIFY(spy.count() >= 3);
    QCOMPARE(numberOf(player->currentFrame()), 1);
}

void TestVLVideoController::run_showsNothing_whenThereIsNoFrame()
{
    Player player;
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->start();
    QVERIFY(!spy.wait(kSomePassesMs));
    // Still wanted, so the first frame is shown as it comes.
    player.source.pushFrame(numberedFrame(0));
    QVERIFY(spy.wait());
}

void TestVLVideoController::run_showsFrame_afterEachMove()
{
    const Player player(5);
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->start();
    QVERIFY(spy.wait());
    for (const quint64 position : {3, 1, 1}) {
        player->setPosition(position);
        QVERIFY(spy.wait());
        QCOMPARE(numberOf(player->currentFrame()), int(position));
    }
    QVERIFY(!spy.wait(kSomePassesMs));
    QCOMPARE(spy.count(), 4);
}

void TestVLVideoController::run_showsFrame_whenNeeded_data()
{
    using Call = void (*)(VLVideoController*);
    QTest::addColumn<Call>("call");
    const auto row = [](const char* name, Call call) { QTest::newRow(name) << call; };
    row("asked for", [](VLVideoController* controller) { controller->setNeedFrame(true); });
    row("end of decoding", [](VLVideoController* controller) { controller->streamEnded(); });
    row("source loaded", [](VLVideoController* controller) { controller->sourceLoaded(); });
    row("source set", [](VLVideoController* controller) { controller->setSource(clipUrl()); });
    row("source refused", [](VLVideoController* controller) { controller->setSource(QUrl()); });
}

void TestVLVideoController::run_showsFrame_whenNeeded()
{
    using Call = void (*)(VLVideoController*);
    QFETCH(Call, call);
    const Player player(5);
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->start();
    QVERIFY(spy.wait());
    call(player.controller);
    QVERIFY(spy.wait());
}

void TestVLVideoController::run_showsOldFrameThenNew_whenSourceChanges()
{
    Player player(2);
    player.source.applyChange();
    player->setPosition(1);
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->start();
    QVERIFY(spy.wait());

    QVERIFY(player->setSource(clipUrl()));
    QVERIFY(spy.wait());
    QCOMPARE(numberOf(player->currentFrame()), 0);

    player.source.applyChange();
    player.source.load(1, 10);
    QVERIFY(player.source.finishLoading());
    QTRY_COMPARE(numberOf(player->currentFrame()), 10);
}

void TestVLVideoController::run_givesSameFrame_whenNothingMoved()
{
    const Player player(3);
    player->setPosition(1);
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->start();
    for (int i = 0; i < 2; ++i) {
        QVERIFY(spy.wait());
        QCOMPARE(numberOf(player->currentFrame()), 1);
        player->setNeedFrame(true);
    }
}

void TestVLVideoController::run_playsEachFrameToTheEnd()
{
    Player player(3, 50.0);
    QList<quint64> positions;
    connect(
        player.controller, &VLVideoController::displayFrame, player.controller,
        [&] { positions += player->position(); }, Qt::DirectConnection);
    player->play();
    player.takeOrder();
    ThreadSpy stateSpy(player.controller.data(), &VLVideoController::stateChanged);

    player->start();

    QVERIFY(stateSpy.wait());
    QCOMPARE(player->state(), VLVideoController::StatePaused);
    QCOMPARE(player->position(), quint64(3));
    QCOMPARE(player->progress(), 1.0);
    QCOMPARE(player.countFromLoop("state"), 1);
    QCOMPARE(player.takeOrder(), u"display position display position display position state"_s);
    QVERIFY(player->currentFrame().isNull());
    player->quit();
    QCOMPARE(positions, (QList<quint64>{1, 2, 3}));
}

void TestVLVideoController::run_startsAgain_whenPlayedAtTheEnd()
{
    Player player(3, 50.0);
    player.source.applyChange();
    ThreadSpy actionSpy(&player.source, &VLVideoSource::actionChanged);
    ThreadSpy displaySpy(player.controller.data(), &VLVideoController::displayFrame);
    player->play();
    player->start();
    QTRY_COMPARE(player->state(), VLVideoController::StatePaused);
    QTRY_COMPARE(displaySpy.count(), 3);

    player->play();

    QTRY_COMPARE(displaySpy.count(), 6);
    QTRY_COMPARE(player->state(), VLVideoController::StatePaused);
    QCOMPARE(player->position(), quint64(3));
    player.source.applyChange();
    QCOMPARE(actionSpy.count(), 0);
}

void TestVLVideoController::run_takesFrameTime_forEachFrame()
{
    Player player(6, 25.0);
    QList<qint64> times;
    QElapsedTimer timer;
    timer.start();
    connect(
        player.controller, &VLVideoController::displayFrame, player.controller,
        [&] { times += timer.elapsed(); }, Qt::DirectConnection);
    player->play();
    player->start();
    QTRY_COMPARE(player->state(), VLVideoController::StatePaused);
    player->quit();
    QCOMPARE(times.size(), 6);
    // Each time is cut to a millisecond.
    for (qsizetype i = 1; i < times.size(); ++i)
        QVERIFY2(times.at(i) - times.at(i - 1) >= 39, qPrintable(QString::number(i)));
}

void TestVLVideoController::run_pauses_whenDecoderIsCaughtUpWith()
{
    Player player(2);
    ThreadSpy stateSpy(player.controller.data(), &VLVideoController::stateChanged);
    player->play();
    player->start();
    QTRY_COMPARE(player->state(), VLVideoController::StatePaused);
    // Of play(), then of the loop.
    QVERIFY(stateSpy.wait() && stateSpy.wait());

    player.source.pushFrame(numberedFrame(2));

    QVERIFY(!stateSpy.wait(kSomePassesMs));
    QCOMPARE(player->state(), VLVideoController::StatePaused);
    QCOMPARE(player->position(), quint64(2));
}

void TestVLVideoController::run_pauses_whenStateIsPlayingWithoutFrames()
{
    Player player;
    player->setState(VLVideoController::StatePlaying);
    player->start();
    QTRY_COMPARE(player->state(), VLVideoController::StatePaused);
    QTRY_COMPARE(player.countFromLoop("state"), 1);
    QCOMPARE(player->position(), quint64(0));
}

void TestVLVideoController::run_staysPlaying_whenPlayWasTooEarly()
{
    Player player;
    ThreadSpy displaySpy(player.controller.data(), &VLVideoController::displayFrame);
    player->play();
    player->start();
    for (int i = 0; i < 3; ++i)
        player.source.pushFrame(numberedFrame(i));

    QVERIFY(!displaySpy.wait(kSomePassesMs));
    QCOMPARE(player->state(), VLVideoController::StatePlaying);
    QCOMPARE(player->position(), kNowhere);
    QCOMPARE(player.countFromLoop("state"), 0);

    player.source.notifyStreamEnded();
    QCOMPARE(player->state(), VLVideoController::StatePaused);
    player->play();
    QVERIFY(displaySpy.wait());
    QTRY_COMPARE(player->position(), quint64(3));
}

void TestVLVideoController::run_needsNoFrame_whenItHasPlayed()
{
    const Player player(2);
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->play();
    player->start();
    QTRY_COMPARE(player->state(), VLVideoController::StatePaused);
    QVERIFY(spy.wait() && spy.wait());
    QVERIFY(!spy.wait(kSomePassesMs));
}

void TestVLVideoController::run_goesOn_whenScrubbingAndDecodingEnds()
{
    Player player(10, 50.0);
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->setScrubbing(true);
    player->play();
    player->start();
    QVERIFY(spy.wait());
    player.source.notifyStreamEnded();
    QTRY_COMPARE(player->position(), quint64(10));
}

void TestVLVideoController::quit_endsThread_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<bool>("playing");
    QTest::newRow("nothing to show") << 0 << false;
    QTest::newRow("paused") << 5 << false;
    QTest::newRow("playing") << 500 << true;
}

void TestVLVideoController::quit_endsThread()
{
    QFETCH(int, frames);
    QFETCH(bool, playing);
    const Player player(frames, 10.0);
    player->setState(playing ? VLVideoController::StatePlaying : VLVideoController::StatePaused);
    player->start();
    QVERIFY(player->isRunning());
    QElapsedTimer timer;
    timer.start();
    player->quit();
    QVERIFY(player->isFinished());
    QVERIFY(player->shouldQuit());
    // Far from the time after which the thread would be terminated.
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
}

void TestVLVideoController::quit_isHarmless_whenThreadIsNotRunning()
{
    Player player(3);
    player->quit();
    player->quit();
    QVERIFY(player->shouldQuit());
    QCOMPARE(player.takeOrder(), QString());
}

void TestVLVideoController::shouldQuit_isFlag()
{
    const Player player;
    QVERIFY(!player->shouldQuit());
    player->setShouldQuit();
    QVERIFY(player->shouldQuit());
    // A thread that is started after that ends at once.
    player->start();
    QVERIFY(player->wait(QDeadlineTimer(QDeadlineTimer::Forever)));
}

void TestVLVideoController::shouldQuit_isFalse_whenLockIsTaken()
{
    const Player player;
    player->setShouldQuit();
    QSemaphore taken;
    QSemaphore release;
    // The rewind of play() sends its signal with the lock held.
    connect(
        player.controller, &VLVideoController::positionChanged, player.controller,
        [&] {
            taken.release();
            release.acquire();
        },
        Qt::DirectConnection);
    const std::unique_ptr<QThread> holder(QThread::create([&player] { player->play(); }));
    holder->start();
    taken.acquire();

    QElapsedTimer timer;
    timer.start();
    const bool whileTaken = player->shouldQuit();
    const qint64 waitedMs = timer.elapsed();
    release.release();
    QVERIFY(holder->wait(QDeadlineTimer(QDeadlineTimer::Forever)));

    QVERIFY(!whileTaken);
    QVERIFY2(waitedMs >= 99, qPrintable(QString::number(waitedMs)));
    QVERIFY(player->shouldQuit());
}

void TestVLVideoController::run_ignoresQuit_whileLockIsTaken()
{
    const Player player;
    bool endedWhileTaken = true;
    connect(player.controller, &VLVideoController::positionChanged, this, [&] {
        player->setShouldQuit();
        endedWhileTaken = player->wait(kSomePassesMs);
    });
    const QMetaObject::Connection started =
        connect(player.controller, &QThread::started, this, [&player] { player->play(); });
    QVERIFY(started);

    player->start();
    QTRY_VERIFY(!player.controller);

    QVERIFY(!endedWhileTaken);
}

void TestVLVideoController::quit_terminatesThread_afterClockWentBack()
{
    Player player(5);
    // The next sleep lasts a thousand seconds for each millisecond.
    player->setLastFrameDisplayTime(QDateTime::currentDateTime().addSecs(60));
    ThreadSpy spy(player.controller.data(), &VLVideoController::displayFrame);
    player->play();
    player->start();
    QVERIFY(spy.wait());
    QTest::ignoreMessage(QtDebugMsg, "VLVideoController did not quit in a timely fashion");

    player->quit();

    QVERIFY(player->isFinished());
    QCOMPARE(player->position(), quint64(1));
    QCOMPARE(player.countFromLoop("display"), 1);
}

void TestVLVideoController::quit_givesUp_whenThreadCannotBeTerminated()
{
    Player player(1);
    QSemaphore blocked;
    QSemaphore release;
    connect(
        player.controller, &VLVideoController::displayFrame, player.controller,
        [&] {
            OpenThread::setTerminationEnabled(false);
            blocked.release();
            release.acquire();
        },
        Qt::DirectConnection);
    player->play();
    player->start();
    blocked.acquire();
    QTest::ignoreMessage(QtDebugMsg, "VLVideoController did not quit in a timely fashion");
    QTest::ignoreMessage(QtDebugMsg, "VLVideoController did not quit at all");

    player->quit();

    const bool stillRuns = player->isRunning();
    release.release();
    QVERIFY(player->wait(QDeadlineTimer(QDeadlineTimer::Forever)));
    QVERIFY(stillRuns);
}

void TestVLVideoController::destructor_doesNotWait()
{
    const ChildResult result = runInChildProcess(u"deleteRunning"_s);
    QVERIFY(result.finished);
    QVERIFY(result.crashed);
    QVERIFY2(result.standardError.contains("Destroyed while thread is still running"),
             result.standardError.constData());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLVideoController>(argc, argv);
}

#include "tst_vlvideocontroller.moc"
