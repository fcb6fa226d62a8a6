// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipStage.h"
#include "ClipWriter.h"
#include "ThreadSpy.h"
#include "VidletsTest.h"

#include <QFile>
#include <QQmlContext>
#include <QQuickItem>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// Longer than the player waits for a clip to open.
constexpr int kGivesUpMs = 10000;
constexpr int kClipFrames = 10;

QString first()
{
    return u"first.avi"_s;
}

QString second()
{
    return u"second.avi"_s;
}

/// A file that no decoder opens.
QString broken()
{
    return u"broken.avi"_s;
}

QString missing()
{
    return u"missing.avi"_s;
}

QSize sizeOf(const QString& name)
{
    return name == first() ? QSize(160, 96) : QSize(96, 64);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Could not read %s", qPrintable(path));
    return file.readAll();
}

/// The clips that all tests share, written once. The names are those of the resources.
class Clips
{
public:
    Clips()
    {
        for (const QString& name : {first(), second()}) {
            // Without pictures that come out of order, so that none is lost.
            m_writer.testClip(name, u"mpeg4"_s, sizeOf(name), 25, kClipFrames, {u"-bf"_s, u"0"_s});
        }
    }
    QByteArray content(const QString& name) const
    {
        return m_writer.readBytes(name);
    }

private:
    ClipWriter m_writer;
};

/// A view on a scene that consists of the workbench's player alone.
class PlayerStage : public ClipStage
{
public:
    explicit PlayerStage(const Clips& clips)
    {
        addTip(u"k"_s);
        for (const QString& name : {first(), second()})
            addClip(name, clips.content(name));
        addClip(broken(), "This is no clip.");
        write(u"ui/VideoPlayer.qml"_s, contentOf(QStringLiteral(VIDEO_PLAYER)));
        const QString scene = write(u"ui/VidletUI.qml"_s,
                                    "import QtQuick\n"
                                    "Item {\n"
                                    "    width: 320; height: 240\n"
                                    "    VideoPlayer { objectName: \"player\" }\n"
                                    "}\n");
        openView();
        view()->rootContext()->setContextProperty(u"vidletView"_s, view());
        view()->loadQML(scene);
        view()->show();
        player = view()->rootObject()->findChild<QQuickItem*>(u"player"_s);
        item = player->findChild<VLVideoComponent*>();
        source = sourceOf(item);
    }
    void setSource(const QString& name) const
    {
        player->setProperty("source", name);
    }
    /// Shows the clip @p name and waits until it is decoded.
    void open(const QString& name) const
    {
        setSource(name);
        QTRY_VERIFY(isShowing(name));
        QTRY_COMPARE(source->totalFrameCount(), quint64(kClipFrames));
    }
    /// Whether the player has the size of the clip @p name, and the decoder this very clip.
    bool isShowing(const QString& name) const
    {
        const QSize size(player->property("fullWidth").toInt(),
                         player->property("fullHeight").toInt());
        return player->isVisible() && size == sizeOf(name) && source->source().fileName() == name;
    }

    QQuickItem* player = nullptr;
    VLVideoComponent* item = nullptr;
    VLVideoSourceFFMPEG* source = nullptr;
};

} // namespace

/// The player of the workbench's package, which authors copy.
class TestVideoPlayer : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void source_showsClipAndPlaysIt();
    void source_showsNothing_whenItIsEmptyOrHasNoFile_data();
    void source_showsNothing_whenItIsEmptyOrHasNoFile();
    void source_showsClipAgain_whenItComesBack_data();
    void source_showsClipAgain_whenItComesBack();
    void source_showsClipAgain_whenItWentBeforeItWasOpened();
    void source_playsFromStart_whenItComesBackAfterItsEnd();
    void source_replacesClip();
    void source_opensTheLast_whenItChangesWhileClipIsOpened_data();
    void source_opensTheLast_whenItChangesWhileClipIsOpened();
    void source_doesNotCountClipBefore_whenItChangesWhileThatIsOpened_data();
    void source_doesNotCountClipBefore_whenItChangesWhileThatIsOpened();
    void source_givesRoomBack_whenFileIsNoClip();
    void source_opensNext_afterFileThatIsNoClip();
    void clip_pausesAndRewinds_whenWindowHides();

private:
    const Clips m_clips;
};

void TestVideoPlayer::source_showsClipAndPlaysIt()
{
    const PlayerStage stage(m_clips);
    stage.open(first());
    QTRY_COMPARE(stage.item->progress(), 1.0);
    QTRY_VERIFY(!stage.player->property("isWanted").toBool());
}

void TestVideoPlayer::source_showsNothing_whenItIsEmptyOrHasNoFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << QString();
    QTest::newRow("no such file") << missing();
}

void TestVideoPlayer::source_showsNothing_whenItIsEmptyOrHasNoFile()
{
    QFETCH(const QString, name);
    const PlayerStage stage(m_clips);
    stage.open(first());
    stage.setSource(name);
    QVERIFY(!stage.player->isVisible());
    QCOMPARE(stage.player->implicitHeight(), 0.0);
    QCOMPARE(stage.item->state(), VLVideoComponent::pausedState);
}

void TestVideoPlayer::source_showsClipAgain_whenItComesBack_data()
{
    source_showsNothing_whenItIsEmptyOrHasNoFile_data();
}

void TestVideoPlayer::source_showsClipAgain_whenItComesBack()
{
    QFETCH(const QString, name);
    const PlayerStage stage(m_clips);
    stage.open(first());
    stage.setSource(name);
    QVERIFY(!stage.player->isVisible());
    stage.setSource(first());
    QTRY_VERIFY(stage.isShowing(first()));
    QTRY_COMPARE(stage.item->progress(), 1.0);
}

void TestVideoPlayer::source_showsClipAgain_whenItWentBeforeItWasOpened()
{
    const PlayerStage stage(m_clips);
    stage.setSource(first());
    stage.setSource({});
    stage.setSource(first());
    QTRY_VERIFY(stage.isShowing(first()));
    QTRY_COMPARE(stage.item->progress(), 1.0);
}

void TestVideoPlayer::source_playsFromStart_whenItComesBackAfterItsEnd()
{
    const PlayerStage stage(m_clips);
    stage.open(first());
    QTRY_VERIFY(!stage.player->property("isWanted").toBool());
    stage.setSource({});
    QCOMPARE(stage.item->position(), qlonglong(0));
    stage.setSource(first());
    QVERIFY(stage.player->property("isPlaying").toBool());
}

void TestVideoPlayer::source_replacesClip()
{
    const PlayerStage stage(m_clips);
    stage.open(first());
    stage.open(second());
    stage.open(first());
    QTRY_COMPARE(stage.item->progress(), 1.0);
}

void TestVideoPlayer::source_opensTheLast_whenItChangesWhileClipIsOpened_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::newRow("another") << QStringList{first(), second()};
    QTest::newRow("back") << QStringList{first(), second(), first()};
    QTest::newRow("there and back") << QStringList{second(), first(), second(), first()};
    QTest::newRow("by way of nothing") << QStringList{first(), QString(), second()};
}

void TestVideoPlayer::source_opensTheLast_whenItChangesWhileClipIsOpened()
{
    QFETCH(const QStringList, names);
    const PlayerStage stage(m_clips);
    for (const QString& name : names)
        stage.setSource(name);
    QTRY_VERIFY(stage.isShowing(names.last()));
    QTRY_COMPARE(stage.item->progress(), 1.0);
    QCOMPARE(stage.source->source().fileName(), names.last());
}

void TestVideoPlayer::source_doesNotCountClipBefore_whenItChangesWhileThatIsOpened_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << QString();
    QTest::newRow("no such file") << missing();
    QTest::newRow("no clip") << broken();
}

void TestVideoPlayer::source_doesNotCountClipBefore_whenItChangesWhileThatIsOpened()
{
    QFETCH(const QString, name);
    const PlayerStage stage(m_clips);
    ThreadSpy opened(stage.item, &VLVideoComponent::contentWidthChanged);
    stage.setSource(first());
    stage.setSource(name);
    QVERIFY(opened.wait());
    QVERIFY(!stage.player->isVisible());
    // Not with the pictures either, which come after it.
    QTRY_VERIFY(name == broken() || stage.source->totalFrameCount() == quint64(kClipFrames));
    QVERIFY(!stage.player->isVisible());
    QVERIFY(!stage.player->property("isPlaying").toBool());
}

void TestVideoPlayer::source_givesRoomBack_whenFileIsNoClip()
{
    const PlayerStage stage(m_clips);
    stage.player->setProperty("expectedSize", QSizeF(160, 96));
    stage.setSource(broken());
    QVERIFY(stage.player->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!stage.player->isVisible(), kGivesUpMs);
}

void TestVideoPlayer::source_opensNext_afterFileThatIsNoClip()
{
    const PlayerStage stage(m_clips);
    stage.setSource(broken());
    stage.setSource(first());
    QTRY_VERIFY_WITH_TIMEOUT(stage.isShowing(first()), kGivesUpMs);
}

void TestVideoPlayer::clip_pausesAndRewinds_whenWindowHides()
{
    const PlayerStage stage(m_clips);
    stage.player->setProperty("loop", true);
    stage.open(first());
    QTRY_VERIFY(stage.item->position() > 0);
    stage.view()->hide();
    QVERIFY(!stage.player->property("isPlaying").toBool());
    QCOMPARE(stage.item->position(), qlonglong(0));
    stage.view()->show();
    QTRY_VERIFY(stage.item->position() > 0);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVideoPlayer>(argc, argv);
}

#include "tst_videoplayer.moc"
