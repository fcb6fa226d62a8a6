// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipStage.h"
#include "ClipWriter.h"
#include "ThreadSpy.h"
#include "VidletsTest.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMetaEnum>
#include <QPainter>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickWindow>

#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kClipFrames = 12;
constexpr int kOtherClipFrames = 4;
/// Several passes of an idle loop, in milliseconds: enough to see that nothing comes.
constexpr int kSomePassesMs = 350;
/// What a picture shows where nothing was painted.
constexpr QRgb kUntouched = 0xFF00FF00U;

QSize clipSize()
{
    return {48, 32};
}

QSize otherClipSize()
{
    return {32, 24};
}

/// The frames have levels of grey that rise with their number, and a white corner.
QImage clipFrame(int number, const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    const int level = 10 + 15 * number;
    image.fill(QColor(level, level, level));
    QPainter painter(&image);
    painter.fillRect(0, 0, 8, 8, Qt::white);
    return image;
}

/// The number of the frame that shows @p image at 0, 0; -1 for none.
int numberOf(const QImage& image)
{
    const QColor color = image.pixelColor(16, 12);
    if (color.rgb() == kUntouched)
        return -1;
    return qRound((color.red() - 10) / 15.0);
}

/// The two clips that all tests share, written once.
class Clips
{
public:
    Clips()
    {
        write(u"clip.avi"_s, clipSize(), kClipFrames, 20);
        write(u"other.avi"_s, otherClipSize(), kOtherClipFrames, 20);
    }
    QString path(const QString& name) const
    {
        return m_writer.path(name);
    }
    QByteArray content(const QString& name) const
    {
        return m_writer.readBytes(name);
    }

private:
    void write(const QString& name, const QSize& size, int frames, int fps)
    {
        QList<QImage> images;
        for (int i = 0; i < frames; ++i)
            images += clipFrame(i, size);
        // Without loss, and without pictures that come out of order.
        m_writer.imageClip(name, u"rawvideo"_s, images, fps, {u"-pix_fmt"_s, u"bgr24"_s});
    }

    ClipWriter m_writer;
};

/// A view on a package with the clips, and an item in it where the test wants one.
class ItemStage : public ClipStage
{
public:
    explicit ItemStage(const Clips& clips, const QMap<int, QVariant>& settings = {})
        : ClipStage(u"tips.vidlets"_s, settings)
        , item(std::make_unique<VLVideoComponent>())
    {
        addTip(u"k"_s);
        for (const QString& name : {u"clip.avi"_s, u"other.avi"_s})
            addClip(name, clips.content(name));
        openView();
    }
    void enterView() const
    {
        item->setParentItem(view()->contentItem());
    }
    /// Loads the clip @p name and waits until it is decoded to its end.
    void load(const QString& name = u"clip.avi"_s, int frames = kClipFrames) const
    {
        enterView();
        ThreadSpy spy(source(), &VLVideoSource::streamEnded);
        item->setSource(name);
        // The controller is told first, and has paused by now.
        QTRY_COMPARE(spy.count(), 1);
        QCOMPARE(source()->totalFrameCount(), quint64(frames));
    }
    VLVideoController* controller() const
    {
        return controllerOf(item.get());
    }
    VLVideoSourceFFMPEG* source() const
    {
        return sourceOf(item.get());
    }
    /// What the item paints.
    QImage painted() const
    {
        QImage picture(QSize(120, 80), QImage::Format_RGB32);
        picture.fill(kUntouched);
        QPainter painter(&picture);
        item->paint(&painter);
        return picture;
    }

    std::unique_ptr<VLVideoComponent> item;
};

/// The signals of an item in the order in which they come.
class SignalRecord : public QObject
{
public:
    explicit SignalRecord(VLVideoComponent* item)
    {
        const auto record = [this, item](void (VLVideoComponent::*signal)(), const char* name) {
            connect(item, signal, this, [this, name] { m_order += QString::fromLatin1(name); });
        };
        record(&VLVideoComponent::sourceChanged, "source");
        record(&VLVideoComponent::stateChanged, "state");
        record(&VLVideoComponent::positionChanged, "position");
        record(&VLVideoComponent::progressChanged, "progress");
        record(&VLVideoComponent::heightChanged, "height");
        record(&VLVideoComponent::searchPathChanged, "searchPath");
        record(&VLVideoComponent::scrubbingChanged, "scrubbing");
        record(&VLVideoComponent::contentHeightChanged, "contentHeight");
        record(&VLVideoComponent::contentWidthChanged, "contentWidth");
        record(&VLVideoComponent::loadProgressChanged, "loadProgress");
    }
    /// What came since the last call.
    QString take()
    {
        const QString result = m_order.join(u' ');
        m_order.clear();
        return result;
    }

private:
    QStringList m_order;
};

QImage pictureWith(const QImage& image)
{
    QImage picture(QSize(120, 80), QImage::Format_RGB32);
    picture.fill(kUntouched);
    QPainter painter(&picture);
    painter.drawImage(0, 0, image);
    return picture;
}

QString clipName()
{
    return u"clip.avi"_s;
}

QString otherClipName()
{
    return u"other.avi"_s;
}

} // namespace

class TestVLVideoComponent : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    // Construction
    void constructor_setsInitialState();
    void constructor_takesParent();
    void constructor_startsTwoThreads();
    void threads_areNamed();
    void videoState_hasFixedNumbers();

    // Source
    void setSource_isDropped_whenThereIsNoWindow();
    void setSource_isDropped_whenWindowIsNoView();
    void setSource_forgetsView_whenItemHasMovedToAnotherWindow();
    void setSource_loadsClip_whenItemIsInView();
    void setSource_loadsClip_whenNameHasDirectories();
    void setSource_usesAbsolutePath();
    void setSource_pausesAndRewinds_whenNameIsEmpty_data();
    void setSource_pausesAndRewinds_whenNameIsEmpty();
    void setSource_keepsClip_whenNameIsNoFile_data();
    void setSource_keepsClip_whenNameIsNoFile();
    void setSource_keepsPictureOnScreen();
    void setSource_showsFirstFrame();
    void setSource_replacesClip();
    void setSource_rewinds_whenClipIsTheSame();
    void setSource_tellsNothing_whenFileIsNoClip();

    // Properties
    void content_hasDefaultSize_beforeFirstClip();
    void content_hasSizeOfClip();
    void loadProgress_isNotANumber_beforeFirstClip();
    void setSearchPath_emitsOnEveryCall();
    void setScrubbing_emitsNothing();
    void setState_asksController_data();
    void setState_asksController();
    void setState_doesNothing_whenValueIsUnknown();
    void setState_resetPauses_data();
    void setState_resetPauses();
    void setState_resetShowsFrameAgain();

    // Playing and moving
    void play_playsToTheEnd();
    void play_emitsTwice_forFrameThatIsFetched();
    void play_startsAgain_whenAtTheEnd();
    void play_goesOn_afterItPausedAtTheEndOfDecoding();
    void pause_holdsPosition();
    void setPosition_movesAndShowsFrame_data();
    void setPosition_movesAndShowsFrame();
    void setProgress_movesAndShowsFrame();
    void frameReady_emits_whenProgressDiffersAlone();
    void rewindToStart_pausesAtFirstFrame();
    void rewindToStart_emitsInOrder();

    // Signals
    void sourceChangedState_emitsStateChanged();
    void controllerPositionChanged_emitsInOrder();
    void heightChanged_isSentForFrameOfAnotherHeight();
    void frameReady_keepsFrame_whenThereIsNone();
    void frameReady_emitsNothing_whenNothingMoved();
    void neverSentSignals_areNotSent();

    // Painting
    void paint_drawsNothing_whenThereIsNoFrame();
    void paint_scalesByView_data();
    void paint_scalesByView();
    void paint_ignoresSizeOfItem();
    void screen_showsFrames();
    void scene_playsClip();

    // Destruction
    void destructor_endsThreads_data();
    void destructor_endsThreads();

private:
    const Clips m_clips;
};

void TestVLVideoComponent::constructor_setsInitialState()
{
    const VLVideoComponent item;
    QCOMPARE(item.source(), QString());
    QCOMPARE(item.state(), VLVideoComponent::pausedState);
    QCOMPARE(item.position(), qlonglong(0));
    QCOMPARE(item.progress(), 0.0);
    QCOMPARE(item.searchPath(), QString());
    QVERIFY(!item.isScrubbing());
    QVERIFY(item.flags().testFlag(QQuickItem::ItemHasContents));
    QVERIFY(!item.parentItem());
    QVERIFY(!item.parent());
}

void TestVLVideoComponent::constructor_takesParent()
{
    VLVideoComponent parent;
    const VLVideoComponent child(&parent);
    QCOMPARE(child.parentItem(), &parent);
}

void TestVLVideoComponent::constructor_startsTwoThreads()
{
    const VLVideoComponent item;
    const auto threads = item.findChildren<QThread*>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(threads.size(), 2);
    QVERIFY(qobject_cast<VLVideoSourceFFMPEG*>(threads.at(0)));
    QVERIFY(qobject_cast<VLVideoController*>(threads.at(1)));
    for (const QThread* thread : threads) {
        QVERIFY(thread->isRunning());
        QCOMPARE(thread->thread(), QThread::currentThread());
        QCOMPARE(thread->priority(), QThread::InheritPriority);
    }
}

void TestVLVideoComponent::threads_areNamed()
{
    const VLVideoComponent item;
    const auto names = [] {
        QByteArrayList result;
        const QDir tasks(u"/proc/self/task"_s);
        for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile file(tasks.filePath(task + u"/comm"_s));
            if (file.open(QIODevice::ReadOnly))
                result += file.readAll().trimmed();
        }
        return result;
    };
    QTRY_COMPARE(names().count("Controller"), 1);
    QTRY_COMPARE(names().count("FFMPEG"), 1);
}

void TestVLVideoComponent::videoState_hasFixedNumbers()
{
    const auto states = QMetaEnum::fromType<VLVideoComponent::VideoState>();
    QCOMPARE(states.keyCount(), 3);
    QCOMPARE(states.keyToValue("resetState"), 0);
    QCOMPARE(states.keyToValue("pausedState"), 1);
    QCOMPARE(states.keyToValue("playingState"), 2);
}

void TestVLVideoComponent::setSource_isDropped_whenThereIsNoWindow()
{
    const ItemStage stage(m_clips);
    SignalRecord record(stage.item.get());

    stage.item->setSource(clipName());

    QCOMPARE(stage.item->source(), QString());
    QCOMPARE(record.take(), QString());
    // Entering the view later changes nothing by itself.
    stage.load();
    QCOMPARE(stage.item->source(), clipName());
}

void TestVLVideoComponent::setSource_isDropped_whenWindowIsNoView()
{
    const ItemStage stage(m_clips);
    QQuickWindow window;
    stage.item->setParentItem(window.contentItem());
    SignalRecord record(stage.item.get());

    stage.item->setSource(clipName());
    stage.item->setSource(stage.resource(clipName()));

    QCOMPARE(stage.item->source(), QString());
    QCOMPARE(record.take(), QString());
    stage.item->setParentItem(nullptr);
}

void TestVLVideoComponent::setSource_forgetsView_whenItemHasMovedToAnotherWindow()
{
    const ItemStage stage(m_clips, {{ckScale, 2}});
    stage.load();
    QTRY_COMPARE(numberOf(stage.painted()), 0);
    QCOMPARE(stage.painted(), pictureWith(clipFrame(0, clipSize()).scaled(clipSize() * 2)));
    QQuickWindow window;
    stage.item->setParentItem(window.contentItem());

    stage.item->setSource(otherClipName());

    QCOMPARE(stage.item->source(), clipName());
    QCOMPARE(stage.painted(), pictureWith(clipFrame(0, clipSize())));
    stage.item->setParentItem(nullptr);
}

void TestVLVideoComponent::setSource_loadsClip_whenItemIsInView()
{
    const ItemStage stage(m_clips);
    stage.load();
    QCOMPARE(stage.item->source(), clipName());
    QCOMPARE(stage.source()->source(), QUrl::fromLocalFile(stage.resource(clipName())));
    QCOMPARE(stage.item->loadProgress(), 1.0);
}

void TestVLVideoComponent::setSource_loadsClip_whenNameHasDirectories()
{
    ItemStage stage(m_clips);
    const QString name = u"a # b/100 %?.avi"_s;
    stage.addClip(name, m_clips.content(otherClipName()));
    stage.load(name, kOtherClipFrames);
    QCOMPARE(stage.item->source(), name);
}

void TestVLVideoComponent::setSource_usesAbsolutePath()
{
    const ItemStage stage(m_clips);
    const QString path = m_clips.path(clipName());
    stage.load(path);
    QCOMPARE(stage.item->source(), path);
}

void TestVLVideoComponent::setSource_pausesAndRewinds_whenNameIsEmpty_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("inView");
    QTest::newRow("null") << QString() << true;
    QTest::newRow("empty") << u""_s << true;
    QTest::newRow("without window") << QString() << false;
}

void TestVLVideoComponent::setSource_pausesAndRewinds_whenNameIsEmpty()
{
    QFETCH(QString, name);
    QFETCH(bool, inView);
    const ItemStage stage(m_clips);
    stage.load();
    const QUrl url = stage.source()->source();
    if (!inView)
        stage.item->setParentItem(nullptr);
    stage.item->setPosition(3);
    stage.item->play();
    SignalRecord record(stage.item.get());

    stage.item->setSource(name);

    QCOMPARE(stage.item->source(), QString());
    QCOMPARE(stage.item->state(), VLVideoComponent::pausedState);
    QCOMPARE(stage.item->position(), qlonglong(0));
    QCOMPARE(record.take(), u"state loadProgress position progress state"_s);
    QCOMPARE(stage.source()->source(), url);
    // The picture comes again from the clip that is still there.
    QTRY_COMPARE(numberOf(stage.painted()), 0);
}

void TestVLVideoComponent::setSource_keepsClip_whenNameIsNoFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << u"missing.avi"_s;
    QTest::newRow("directory") << u"."_s;
}

void TestVLVideoComponent::setSource_keepsClip_whenNameIsNoFile()
{
    QFETCH(QString, name);
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setPosition(3);
    QTRY_COMPARE(numberOf(stage.painted()), 3);
    const QUrl url = stage.source()->source();
    SignalRecord record(stage.item.get());

    stage.item->setSource(name);

    QCOMPARE(stage.item->source(), name);
    QCOMPARE(numberOf(stage.painted()), -1);
    QCOMPARE(record.take(), QString());
    QCOMPARE(stage.item->position(), qlonglong(3));
    QCOMPARE(stage.source()->source(), url);
    QCOMPARE(stage.controller()->frameCount(), quint64(kClipFrames));
}

void TestVLVideoComponent::setSource_keepsPictureOnScreen()
{
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setSize(clipSize());
    stage.view()->resize(clipSize());
    stage.view()->show();
    QVERIFY(QTest::qWaitForWindowExposed(stage.view()));
    stage.item->setPosition(3);
    QTRY_COMPARE(numberOf(stage.painted()), 3);
    const QImage before = stage.view()->grabWindow();
    QCOMPARE(numberOf(before), 3);

    stage.item->setSource(u"missing.avi"_s);

    QCOMPARE(stage.view()->grabWindow(), before);
    stage.item->update();
    QVERIFY(stage.view()->grabWindow() != before);
}

void TestVLVideoComponent::setSource_showsFirstFrame()
{
    const ItemStage stage(m_clips);
    stage.load();
    QTRY_COMPARE(numberOf(stage.painted()), 0);
    QCOMPARE(stage.painted(), pictureWith(clipFrame(0, clipSize())));
    QCOMPARE(stage.item->state(), VLVideoComponent::pausedState);
}

void TestVLVideoComponent::setSource_replacesClip()
{
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setPosition(5);
    QTRY_COMPARE(numberOf(stage.painted()), 5);

    stage.load(otherClipName(), kOtherClipFrames);

    QTRY_COMPARE(stage.painted(), pictureWith(clipFrame(0, otherClipSize())));
    QCOMPARE(stage.item->position(), qlonglong(0));
    QTRY_COMPARE(stage.item->contentWidth(), double(otherClipSize().width()));
}

void TestVLVideoComponent::setSource_rewinds_whenClipIsTheSame()
{
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setPosition(5);
    stage.item->play();
    ThreadSpy spy(stage.source(), &VLVideoSource::sourceChanged);

    stage.item->setSource(clipName());

    QCOMPARE(stage.item->state(), VLVideoComponent::pausedState);
    QCOMPARE(stage.item->position(), qlonglong(0));
    QTRY_COMPARE(numberOf(stage.painted()), 0);
    QCOMPARE(spy.count(), 0);
}

void TestVLVideoComponent::setSource_tellsNothing_whenFileIsNoClip()
{
    ItemStage stage(m_clips);
    const QString path = stage.write(u"Resources/text.avi"_s, "no clip");
    stage.enterView();
    QTest::ignoreMessage(QtDebugMsg, qPrintable(u"Could not open media at: "_s + path));
    ThreadSpy actionSpy(stage.source(), &VLVideoSource::actionChanged);
    ThreadSpy sourceSpy(stage.source(), &VLVideoSource::sourceChanged);
    stage.item->setSource(u"text.avi"_s);
    SignalRecord record(stage.item.get());

    QTRY_COMPARE(sourceSpy.count(), 1);
    QTRY_VERIFY(actionSpy.count() > 1);
    QTRY_COMPARE(stage.source()->action(), VLVideoSource::ActionIdle);

    QCOMPARE(record.take(), QString());
    QCOMPARE(stage.item->source(), u"text.avi"_s);
    QCOMPARE(stage.item->contentWidth(), 200.0);
    QCOMPARE(numberOf(stage.painted()), -1);
}

void TestVLVideoComponent::content_hasDefaultSize_beforeFirstClip()
{
    const VLVideoComponent item;
    QCOMPARE(item.contentWidth(), 200.0);
    QCOMPARE(item.contentHeight(), 150.0);
}

void TestVLVideoComponent::content_hasSizeOfClip()
{
    const ItemStage stage(m_clips);
    ThreadSpy widthSpy(stage.item.get(), &VLVideoComponent::contentWidthChanged);
    ThreadSpy heightSpy(stage.item.get(), &VLVideoComponent::contentHeightChanged);
    stage.load();
    QTRY_COMPARE(widthSpy.count(), 1);
    QTRY_COMPARE(heightSpy.count(), 1);
    QCOMPARE(stage.item->contentWidth(), double(clipSize().width()));
    QCOMPARE(stage.item->contentHeight(), double(clipSize().height()));
    // The item does not follow.
    QCOMPARE(stage.item->width(), 0.0);
    QCOMPARE(stage.item->height(), 0.0);
}

void TestVLVideoComponent::loadProgress_isNotANumber_beforeFirstClip()
{
    const VLVideoComponent item;
    QVERIFY(std::isnan(item.loadProgress()));
}

void TestVLVideoComponent::setSearchPath_emitsOnEveryCall()
{
    VLVideoComponent item;
    ThreadSpy spy(&item, &VLVideoComponent::searchPathChanged);
    item.setSearchPath(u"a"_s);
    item.setSearchPath(u"a"_s);
    QCOMPARE(item.searchPath(), u"a"_s);
    QCOMPARE(spy.count(), 2);
}

void TestVLVideoComponent::setScrubbing_emitsNothing()
{
    VLVideoComponent item;
    SignalRecord record(&item);
    item.setScrubbing(true);
    QVERIFY(item.isScrubbing());
    item.setScrubbing(false);
    QVERIFY(!item.isScrubbing());
    QCOMPARE(record.take(), QString());
}

void TestVLVideoComponent::setState_asksController_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("order");
    QTest::newRow("playing") << 2 << u"state"_s;
    QTest::newRow("paused") << 1 << u"state"_s;
}

void TestVLVideoComponent::setState_asksController()
{
    QFETCH(int, state);
    const ItemStage stage(m_clips);
    stage.load();
    SignalRecord record(stage.item.get());
    QVERIFY(stage.item->setProperty("state", state));
    QCOMPARE(stage.item->property("state").toInt(), state);
    QTEST(record.take(), "order");
}

void TestVLVideoComponent::setState_doesNothing_whenValueIsUnknown()
{
    VLVideoComponent item;
    SignalRecord record(&item);
    for (const int state : {-1, 3})
        item.setState(static_cast<VLVideoComponent::VideoState>(state));
    QCOMPARE(record.take(), QString());
    QCOMPARE(item.state(), VLVideoComponent::pausedState);
}

void TestVLVideoComponent::setState_resetPauses_data()
{
    QTest::addColumn<bool>("scrubbing");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("order");
    QTest::newRow("not scrubbing") << false << 1 << u"state loadProgress"_s;
    QTest::newRow("scrubbing") << true << 2 << u"loadProgress"_s;
}

void TestVLVideoComponent::setState_resetPauses()
{
    QFETCH(bool, scrubbing);
    VLVideoComponent item;
    item.setScrubbing(scrubbing);
    // Without frames there is nothing that could end this state.
    item.play();
    const qlonglong position = item.position();
    SignalRecord record(&item);

    item.setState(VLVideoComponent::resetState);

    QTEST(int(item.state()), "state");
    QTEST(record.take(), "order");
    // No rewind.
    QCOMPARE(item.position(), position);
}

void TestVLVideoComponent::setState_resetShowsFrameAgain()
{
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setPosition(4);
    QTRY_COMPARE(numberOf(stage.painted()), 4);
    ThreadSpy spy(stage.controller(), &VLVideoController::displayFrame);
    QVERIFY(!spy.wait(kSomePassesMs));

    stage.item->setState(VLVideoComponent::resetState);

    QVERIFY(spy.wait());
    QCOMPARE(stage.item->position(), qlonglong(4));
}

void TestVLVideoComponent::play_playsToTheEnd()
{
    const ItemStage stage(m_clips);
    stage.load();
    QTRY_COMPARE(numberOf(stage.painted()), 0);
    ThreadSpy spy(stage.controller(), &VLVideoController::displayFrame);

    stage.item->play();
    QCOMPARE(stage.item->state(), VLVideoComponent::playingState);

    QTRY_COMPARE(stage.item->state(), VLVideoComponent::pausedState);
    QCOMPARE(stage.item->position(), qlonglong(kClipFrames));
    QCOMPARE(stage.item->progress(), 1.0);
    QTRY_COMPARE(spy.count(), kClipFrames);
    // The position after the last frame has none: the one before it stays.
    QVERIFY(numberOf(stage.painted()) > 0);
}

void TestVLVideoComponent::play_emitsTwice_forFrameThatIsFetched()
{
    const ItemStage stage(m_clips);
    stage.load();
    SignalRecord record(stage.item.get());
    stage.item->play();
    QTRY_COMPARE(stage.item->state(), VLVideoComponent::pausedState);
    // First the frame tells of the progress, then the move does.
    QVERIFY(record.take().contains(u"progress position position progress"_s));
}

void TestVLVideoComponent::play_startsAgain_whenAtTheEnd()
{
    const ItemStage stage(m_clips);
    stage.load();
    ThreadSpy spy(stage.source(), &VLVideoSource::sourceChanged);
    stage.item->setPosition(kClipFrames - 1);
    stage.item->play();
    QTRY_COMPARE(stage.item->state(), VLVideoComponent::pausedState);
    QCOMPARE(stage.item->position(), qlonglong(kClipFrames));

    SignalRecord record(stage.item.get());
    stage.item->play();

    QVERIFY(record.take().startsWith(u"position progress state"_s));
    QVERIFY(stage.item->position() < kClipFrames);
    QTRY_COMPARE(stage.item->state(), VLVideoComponent::pausedState);
    QCOMPARE(stage.item->position(), qlonglong(kClipFrames));
    QCOMPARE(spy.count(), 0);
}

void TestVLVideoComponent::play_goesOn_afterItPausedAtTheEndOfDecoding()
{
    const ItemStage stage(m_clips);
    stage.enterView();
    stage.item->setSource(clipName());
    stage.item->setState(VLVideoComponent::playingState);
    QTRY_COMPARE(stage.item->state(), VLVideoComponent::pausedState);
    QTRY_COMPARE(stage.controller()->frameCount(), quint64(kClipFrames));
    QVERIFY(stage.item->position() != kClipFrames);

    stage.item->play();

    QTRY_COMPARE(stage.item->position(), qlonglong(kClipFrames));
}

void TestVLVideoComponent::pause_holdsPosition()
{
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->play();
    QTRY_VERIFY(stage.item->position() > 1);
    stage.item->pause();
    QCOMPARE(stage.item->state(), VLVideoComponent::pausedState);
    // A step that was under way may still end.
    ThreadSpy spy(stage.controller(), &VLVideoController::positionChanged);
    while (spy.wait(kSomePassesMs)) { }
    QVERIFY(spy.count() <= 1);
    QVERIFY(stage.item->position() < kClipFrames);
}

void TestVLVideoComponent::setPosition_movesAndShowsFrame_data()
{
    QTest::addColumn<qlonglong>("asked");
    QTest::addColumn<int>("shown");
    QTest::newRow("first") << qlonglong(0) << 0;
    QTest::newRow("within") << qlonglong(7) << 7;
    QTest::newRow("last") << qlonglong(kClipFrames - 1) << kClipFrames - 1;
    QTest::newRow("beyond") << qlonglong(kClipFrames) << kClipFrames - 1;
    QTest::newRow("negative") << qlonglong(-1) << kClipFrames - 1;
}

void TestVLVideoComponent::setPosition_movesAndShowsFrame()
{
    QFETCH(qlonglong, asked);
    QFETCH(int, shown);
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setPosition(3);
    QTRY_COMPARE(numberOf(stage.painted()), 3);

    stage.item->setPosition(asked);

    QCOMPARE(stage.item->position(), qlonglong(shown));
    QTRY_COMPARE(numberOf(stage.painted()), shown);
    QCOMPARE(stage.painted(), pictureWith(clipFrame(shown, clipSize())));
}

void TestVLVideoComponent::setProgress_movesAndShowsFrame()
{
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setProgress(0.5);
    QCOMPARE(stage.item->position(), qlonglong(kClipFrames / 2));
    QCOMPARE(stage.item->progress(), 0.5);
    QTRY_COMPARE(numberOf(stage.painted()), kClipFrames / 2);
    stage.item->setProgress(1.0);
    QTRY_COMPARE(numberOf(stage.painted()), kClipFrames - 1);
}

void TestVLVideoComponent::frameReady_emits_whenProgressDiffersAlone()
{
    const ItemStage stage(m_clips);
    stage.load();
    QTRY_COMPARE(numberOf(stage.painted()), 0);
    stage.item->pause();
    SignalRecord record(stage.item.get());

    // The first pair comes from the move; the frame brings no progress that is not known yet.
    stage.item->setPosition(6);
    QCOMPARE(record.take(), u"position progress"_s);
    QTRY_COMPARE(numberOf(stage.painted()), 6);
    QCOMPARE(record.take(), QString());

    // A frame that comes before its move is told of.
    QSignalBlocker blocker(stage.controller());
    stage.controller()->setPosition(9);
    blocker.unblock();
    stage.item->frameReady();
    QCOMPARE(record.take(), u"progress position"_s);
    stage.item->frameReady();
    QCOMPARE(record.take(), QString());
}

void TestVLVideoComponent::rewindToStart_pausesAtFirstFrame()
{
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setPosition(5);
    QTRY_COMPARE(numberOf(stage.painted()), 5);
    ThreadSpy spy(stage.controller(), &VLVideoController::displayFrame);

    stage.item->rewindToStart();

    QCOMPARE(stage.item->state(), VLVideoComponent::pausedState);
    QCOMPARE(stage.item->position(), qlonglong(0));
    QVERIFY(spy.wait());
    QCOMPARE(numberOf(stage.painted()), 0);
    QVERIFY(!spy.wait(kSomePassesMs));
    QCOMPARE(spy.count(), 1);
}

void TestVLVideoComponent::rewindToStart_emitsInOrder()
{
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setPosition(5);
    SignalRecord record(stage.item.get());
    stage.item->rewindToStart();
    QCOMPARE(record.take(), u"state position progress progress position"_s);
}

void TestVLVideoComponent::sourceChangedState_emitsStateChanged()
{
    VLVideoComponent item;
    SignalRecord record(&item);
    item.sourceChangedState();
    QCOMPARE(record.take(), u"state"_s);
}

void TestVLVideoComponent::controllerPositionChanged_emitsInOrder()
{
    VLVideoComponent item;
    SignalRecord record(&item);
    item.controllerPositionChanged();
    item.controllerPositionChanged();
    QCOMPARE(record.take(), u"position progress position progress"_s);
}

void TestVLVideoComponent::heightChanged_isSentForFrameOfAnotherHeight()
{
    const ItemStage stage(m_clips);
    ThreadSpy spy(stage.item.get(), &VLVideoComponent::heightChanged);
    stage.load();
    QTRY_COMPARE(numberOf(stage.painted()), 0);
    QCOMPARE(spy.count(), 1);

    stage.item->setPosition(4);
    QTRY_COMPARE(numberOf(stage.painted()), 4);
    QCOMPARE(spy.count(), 1);

    stage.load(otherClipName(), kOtherClipFrames);
    QTRY_COMPARE(spy.count(), 2);

    // The item's own height is another one: its signal is that of QQuickItem.
    stage.item->setHeight(77);
    QCOMPARE(spy.count(), 2);
}

void TestVLVideoComponent::frameReady_keepsFrame_whenThereIsNone()
{
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setPosition(kClipFrames - 1);
    QTRY_COMPARE(numberOf(stage.painted()), kClipFrames - 1);
    stage.item->play();
    QTRY_COMPARE(stage.item->position(), qlonglong(kClipFrames));
    QTRY_COMPARE(stage.item->state(), VLVideoComponent::pausedState);
    // What the controller has sent is carried out.
    QCoreApplication::sendPostedEvents(stage.item.get());
    SignalRecord record(stage.item.get());

    stage.item->frameReady();

    QCOMPARE(numberOf(stage.painted()), kClipFrames - 1);
    QCOMPARE(record.take(), QString());
}

void TestVLVideoComponent::frameReady_emitsNothing_whenNothingMoved()
{
    const ItemStage stage(m_clips);
    stage.load();
    QTRY_COMPARE(numberOf(stage.painted()), 0);
    SignalRecord record(stage.item.get());
    stage.item->frameReady();
    QCOMPARE(record.take(), QString());
}

void TestVLVideoComponent::neverSentSignals_areNotSent()
{
    const ItemStage stage(m_clips);
    ThreadSpy sourceSpy(stage.item.get(), &VLVideoComponent::sourceChanged);
    ThreadSpy scrubbingSpy(stage.item.get(), &VLVideoComponent::scrubbingChanged);
    stage.load();
    stage.item->setScrubbing(true);
    stage.item->play();
    QTRY_COMPARE(stage.item->position(), qlonglong(kClipFrames));
    stage.item->setScrubbing(false);
    stage.item->setSource(QString());
    QCOMPARE(sourceSpy.count(), 0);
    QCOMPARE(scrubbingSpy.count(), 0);
}

void TestVLVideoComponent::paint_drawsNothing_whenThereIsNoFrame()
{
    for (const double scale : {1.0, 2.0}) {
        const ItemStage stage(m_clips, {{ckScale, scale}});
        QCOMPARE(stage.painted(), pictureWith(QImage()));
        stage.enterView();
        stage.item->setSource(u"missing.avi"_s);
        QCOMPARE(stage.painted(), pictureWith(QImage()));
    }
}

void TestVLVideoComponent::paint_scalesByView_data()
{
    QTest::addColumn<double>("scale");
    QTest::addColumn<QSize>("size");
    QTest::newRow("not scaled") << 1.0 << QSize(48, 32);
    QTest::newRow("zero counts as one") << 0.0 << QSize(48, 32);
    // One pixel, scaled and cut, is still one pixel.
    QTest::newRow("less than double") << 1.5 << QSize(48, 32);
    QTest::newRow("double") << 2.0 << QSize(96, 64);
    QTest::newRow("cut to pixels") << 2.05 << QSize(98, 65);
    QTest::newRow("half") << 0.5 << QSize(24, 16);
}

void TestVLVideoComponent::paint_scalesByView()
{
    QFETCH(double, scale);
    QFETCH(QSize, size);
    const ItemStage stage(m_clips, {{ckScale, scale}});
    stage.load();
    stage.item->setPosition(6);
    QTRY_VERIFY(stage.painted().pixelColor(20, 4).red() == 10 + 15 * 6);

    const QImage frame = clipFrame(6, clipSize());
    // Each pixel is that of the nearest one of the frame.
    const QImage scaled = frame.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    QCOMPARE(stage.painted(), pictureWith(scaled));
}

void TestVLVideoComponent::paint_ignoresSizeOfItem()
{
    const ItemStage stage(m_clips);
    stage.load();
    stage.item->setPosition(6);
    QTRY_COMPARE(numberOf(stage.painted()), 6);
    for (const QSizeF& size : {QSizeF(100, 70), QSizeF(10, 10), QSizeF()}) {
        stage.item->setSize(size);
        QCOMPARE(stage.painted(), pictureWith(clipFrame(6, clipSize())));
    }
}

void TestVLVideoComponent::screen_showsFrames()
{
    const ItemStage stage(m_clips);
    stage.item->setSize(clipSize());
    stage.load();
    stage.view()->resize(clipSize());
    stage.view()->show();
    QVERIFY(QTest::qWaitForWindowExposed(stage.view()));
    for (const int position : {8, 2}) {
        stage.item->setPosition(position);
        // The frame asks for the repaint by itself.
        QTRY_COMPARE(numberOf(stage.view()->grabWindow()), position);
    }
}

void TestVLVideoComponent::scene_playsClip()
{
    ItemStage stage(m_clips);
    const QString scene = stage.write(u"ui/VidletUI.qml"_s,
                                      "import QtQuick\n"
                                      "import com.larkspan.vidlets.qml 1.0\n"
                                      "Item {\n"
                                      "    width: 48; height: 32\n"
                                      "    property bool ended: video.progress === 1.0\n"
                                      "    function load() { video.source = \"clip.avi\" }\n"
                                      "    function play() { video.state = 2 }\n"
                                      "    VLVideoComponent {\n"
                                      "        id: video\n"
                                      "        width: contentWidth; height: contentHeight\n"
                                      "        Component.onCompleted: source = \"other.avi\"\n"
                                      "    }\n"
                                      "}\n");
    stage.view()->loadQML(scene);
    stage.view()->show();
    QQuickItem* root = stage.view()->rootObject();
    QVERIFY(root);
    auto* item = root->findChild<VLVideoComponent*>();
    QVERIFY(item);
    // The item is completed before it is in the view.
    QCOMPARE(item->source(), QString());
    QCOMPARE(item->size(), QSizeF(200, 150));

    ThreadSpy decodedSpy(item->findChild<VLVideoSource*>(), &VLVideoSource::streamEnded);
    QVERIFY(QMetaObject::invokeMethod(root, "load"));
    QTRY_COMPARE(decodedSpy.count(), 1);
    QTRY_COMPARE(item->size(), QSizeF(clipSize()));
    QTRY_COMPARE(numberOf(stage.view()->grabWindow()), 0);
    QVERIFY(QMetaObject::invokeMethod(root, "play"));

    QTRY_VERIFY(root->property("ended").toBool());
    QTRY_COMPARE(item->state(), VLVideoComponent::pausedState);
    QCOMPARE(item->position(), qlonglong(kClipFrames));
    QVERIFY(numberOf(stage.view()->grabWindow()) > 0);
}

void TestVLVideoComponent::destructor_endsThreads_data()
{
    using Call = void (*)(const ItemStage&);
    QTest::addColumn<Call>("prepare");
    const auto row = [](const char* name, Call call) { QTest::newRow(name) << call; };
    row("idle", [](const ItemStage&) {});
    row("loading", [](const ItemStage& stage) {
        stage.enterView();
        stage.item->setSource(clipName());
    });
    row("decoding", [](const ItemStage& stage) {
        stage.enterView();
        stage.item->setSource(clipName());
        QTRY_VERIFY(stage.source()->loadedFrameCount() > 0);
    });
    row("paused", [](const ItemStage& stage) { stage.load(); });
    row("playing", [](const ItemStage& stage) {
        stage.load();
        stage.item->play();
        QTRY_VERIFY(stage.item->position() > 0);
    });
    row("play without frames", [](const ItemStage& stage) { stage.item->play(); });
}

void TestVLVideoComponent::destructor_endsThreads()
{
    using Call = void (*)(const ItemStage&);
    QFETCH(Call, prepare);
    ItemStage stage(m_clips);
    prepare(stage);
    const QPointer<QThread> source = stage.source();
    const QPointer<QThread> controller = stage.controller();
    QElapsedTimer timer;
    timer.start();

    stage.item.reset();

    // Far from the time after which a thread would be terminated.
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(!source);
    QVERIFY(!controller);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLVideoComponent>(argc, argv);
}

#include "tst_vlvideocomponent.moc"
