// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipWriter.h"
#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include "ThreadSpy.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLXmlElement.h>

#include <QFile>
#include <QQmlContext>
#include <QQuickItem>

#include <memory>

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
class Stage
{
public:
    explicit Stage(const Clips& clips)
    {
        m_packages.writeTip(package(), u"tips.xml"_s, u"k"_s);
        for (const QString& name : {first(), second()})
            write(u"Resources/"_s + name, clips.content(name));
        write(u"Resources/"_s + broken(), "This is no clip.");
        write(u"ui/VideoPlayer.qml"_s, contentOf(QStringLiteral(VIDEO_PLAYER)));
        const QString scene = write(u"ui/VidletUI.qml"_s,
                                    "import QtQuick\n"
                                    "Item {\n"
                                    "    width: 320; height: 240\n"
                                    "    VideoPlayer { objectName: \"player\" }\n"
                                    "}\n");
        m_manager = std::make_unique<VLManager>(&m_host, m_context,
                                                QStringList{m_packages.dataPath()}, &m_index);
        m_view = std::make_unique<VLView>(m_manager.get(), nullptr);
        auto* content = new VLXmlElement;
        content->setAttribute(u"VLPackagName"_s, u"tips"_s);
        m_view->setContent(content);
        m_view->rootContext()->setContextProperty(u"vidletView"_s, m_view.get());
        m_view->loadQML(scene);
        m_view->show();
        player = m_view->rootObject()->findChild<QQuickItem*>(u"player"_s);
        item = player->findChild<VLVideoComponent*>();
        source = item->findChild<VLVideoSourceFFMPEG*>();
    }
    ~Stage()
    {
        // The items of the scene end their threads while the manager is still there.
        m_view.reset();
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
    VLView* view() const
    {
        return m_view.get();
    }

private:
    static QString package()
    {
        return u"tips.vidlets"_s;
    }
    QString write(const QString& name, const QByteArray& content)
    {
        return m_packages.write(package() + u'/' + name, content);
    }

    PackageBuilder m_packages;
    VLContext m_context{nullptr};
    RecordingInterface m_host{m_context};
    VLIndex m_index{nullptr, {}};
    std::unique_ptr<VLManager> m_manager;
    std::unique_ptr<VLView> m_view;

public:
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
    const Stage stage(m_clips);
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
    const Stage stage(m_clips);
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
    const Stage stage(m_clips);
    stage.open(first());
    stage.setSource(name);
    QVERIFY(!stage.player->isVisible());
    stage.setSource(first());
    QTRY_VERIFY(stage.isShowing(first()));
    QTRY_COMPARE(stage.item->progress(), 1.0);
}

void TestVideoPlayer::source_showsClipAgain_whenItWentBeforeItWasOpened()
{
    const Stage stage(m_clips);
    stage.setSource(first());
    stage.setSource({});
    stage.setSource(first());
    QTRY_VERIFY(stage.isShowing(first()));
    QTRY_COMPARE(stage.item->progress(), 1.0);
}

void TestVideoPlayer::source_playsFromStart_whenItComesBackAfterItsEnd()
{
    const Stage stage(m_clips);
    stage.open(first());
    QTRY_VERIFY(!stage.player->property("isWanted").toBool());
    stage.setSource({});
    QCOMPARE(stage.item->position(), qlonglong(0));
    stage.setSource(first());
    QVERIFY(stage.player->property("isPlaying").toBool());
}

void TestVideoPlayer::source_replacesClip()
{
    const Stage stage(m_clips);
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
    const Stage stage(m_clips);
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
    const Stage stage(m_clips);
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
    const Stage stage(m_clips);
    stage.player->setProperty("expectedSize", QSizeF(160, 96));
    stage.setSource(broken());
    QVERIFY(stage.player->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!stage.player->isVisible(), kGivesUpMs);
}

void TestVideoPlayer::source_opensNext_afterFileThatIsNoClip()
{
    const Stage stage(m_clips);
    stage.setSource(broken());
    stage.setSource(first());
    QTRY_VERIFY_WITH_TIMEOUT(stage.isShowing(first()), kGivesUpMs);
}

void TestVideoPlayer::clip_pausesAndRewinds_whenWindowHides()
{
    const Stage stage(m_clips);
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
