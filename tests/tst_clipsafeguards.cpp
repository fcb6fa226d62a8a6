// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What a host gains for clips by its safeguards.

#include "ClipThreads.h"
#include "ClipWriter.h"
#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include "ThreadSpy.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoController.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLXmlElement.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>

#include <malloc.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kClipFrames = 12;
constexpr int kLongClipFrames = 300;
constexpr int kSlowestClipFrames = 3;
constexpr int kSlowClipFrames = 30;
/// How long nothing is to happen: many steps of a thread that polls.
constexpr int kQuietMs = 1500;

QSize clipSize()
{
    return {64, 48};
}

qint64 pictureBytes()
{
    return qint64(clipSize().width()) * clipSize().height() * 4;
}

QString package()
{
    return u"tips.vidlets"_s;
}

QString resource(const QString& name)
{
    return package() + u"/Resources/"_s + name;
}

/// The clips that all tests share, written once.
class Clips
{
public:
    Clips()
    {
        // Every picture of this codec stands for itself, so that none is withheld at the end.
        m_writer.testClip(u"clip.avi"_s, u"mjpeg"_s, clipSize(), 25, kClipFrames);
        m_writer.testClip(u"other.avi"_s, u"mjpeg"_s, clipSize(), 25, kClipFrames / 2);
        m_writer.testClip(u"slow.avi"_s, u"mjpeg"_s, clipSize(), 1, kSlowClipFrames);
        m_writer.testClip(u"single.avi"_s, u"mjpeg"_s, clipSize(), 25, 1);
        // A picture every twenty seconds.
        m_writer.testClip(u"slowest.avi"_s, u"mjpeg"_s, clipSize(), 1, kSlowestClipFrames,
                          {u"-vf"_s, u"setpts=20*PTS"_s, u"-r"_s, u"1/20"_s});
        m_writer.testClip(u"long.avi"_s, u"mjpeg"_s, {640, 360}, 30, kLongClipFrames);
    }
    QString path(const QString& name) const
    {
        return m_writer.path(name);
    }

private:
    ClipWriter m_writer;
};

/// A view on a package with the clips, and what the host was told.
class Stage
{
public:
    explicit Stage(const Clips& clips)
    {
        const QString location = m_packages.writeTip(package(), u"tips.xml"_s, u"k"_s);
        m_packages.write(resource(u"here.txt"_s), "");
        for (const QString& name : {u"clip.avi"_s, u"other.avi"_s, u"slow.avi"_s, u"single.avi"_s,
                                    u"slowest.avi"_s, u"long.avi"_s})
            QFile::copy(clips.path(name), m_packages.path(resource(name)));
        m_manager = std::make_unique<VLManager>(&m_host, m_context,
                                                QStringList{m_packages.dataPath()}, &m_index);
        view = std::make_unique<VLView>(m_manager.get(), nullptr);
        auto* content = new VLXmlElement;
        content->setAttribute(u"VLPackagName"_s, u"tips"_s);
        content->setAttribute(u"VLLocation"_s, location);
        view->setContent(content);
    }
    void set(contextKey key, const QVariant& value) const
    {
        m_manager->context().set(key, value);
    }
    QString write(const QString& name, const QByteArray& bytes)
    {
        return m_packages.write(resource(name), bytes);
    }
    /// Indexes one more package, with a directory of resources.
    void addPackage(const QString& name)
    {
        m_packages.packageRoot(name + u"/Resources"_s);
        m_packages.writeTip(name, u"tips.xml"_s, u"other"_s);
        m_manager->loadDataPath({m_packages.dataPath()});
    }
    /// Records the data path as the root of a control file beside the packages, as a host may.
    void recordDataPathAsRoot()
    {
        const QString file = m_packages.write(u"loose.xml"_s, "<vidlets/>");
        m_index.indexControlFile(file, QFileInfo(m_packages.dataPath()).canonicalFilePath());
    }
    QString pathOf(const QString& name) const
    {
        return m_packages.path(resource(name));
    }
    QString packagePath(const QString& relativePath) const
    {
        return m_packages.path(relativePath);
    }
    std::unique_ptr<VLVideoComponent> newItem() const
    {
        auto item = std::make_unique<VLVideoComponent>();
        item->setParentItem(view->contentItem());
        return item;
    }
    QStringList warnings() const
    {
        return m_host.messages(VLMessageWarning);
    }

private:
    PackageBuilder m_packages;
    VLContext m_context{nullptr};
    RecordingInterface m_host{m_context};
    VLIndex m_index{nullptr, {}};
    std::unique_ptr<VLManager> m_manager;

public:
    std::unique_ptr<VLView> view;
};

VLVideoSourceFFMPEG* sourceOf(const VLVideoComponent& item)
{
    return item.findChild<VLVideoSourceFFMPEG*>();
}

VLVideoController* controllerOf(const VLVideoComponent& item)
{
    return item.findChild<VLVideoController*>();
}

/// Loads the clip @p name and waits until its decoding has ended.
void load(VLVideoComponent& item, const QString& name)
{
    ThreadSpy ended(sourceOf(item), &VLVideoSource::streamEnded);
    item.setSource(name);
    QTRY_COMPARE(ended.count(), 1);
}

/// A picture of 16000 by 16000 pixels in a few bytes, near the largest that FFmpeg takes.
QByteArray hugeGif()
{
    const QByteArray screen = QByteArray::fromHex("803e803e800000000000ffffff");
    const QByteArray picture = QByteArray::fromHex("2c000000000100010000");
    return "GIF89a" + screen + picture + QByteArray::fromHex("02024401003b");
}

/// The same.
QByteArray hugePng()
{
    return QByteArray::fromHex("89504e470d0a1a0a0000000d4948445200003e8000003e800802000000ce1c4889"
                               "0000000c49444154789c6360a03d00000064000186643c350000000049454e44ae"
                               "426082");
}

/// @p clip, whose pictures are PNG, with that size in each picture and not in the container.
QByteArray withHugePictures(QByteArray clip)
{
    // With the check sum.
    constexpr qsizetype kHeaderSize = 21;
    const QByteArray header = hugePng().mid(hugePng().indexOf("IHDR"), kHeaderSize);
    for (qsizetype at = clip.indexOf("IHDR"); at >= 0; at = clip.indexOf("IHDR", at + 1))
        clip.replace(at, kHeaderSize, header);
    return clip;
}

/// The largest address space that the process has had, whether it was written to or not.
qint64 peakBytes()
{
    QFile file(u"/proc/self/status"_s);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray status = file.readAll();
    const QByteArray tag = "\nVmPeak:";
    const qsizetype start = status.indexOf(tag) + tag.size();
    return status.mid(start, status.indexOf("kB", start) - start).trimmed().toLongLong() * 1024;
}

bool isOpen(const QString& path)
{
    const QDir descriptors(u"/proc/self/fd"_s);
    for (const QString& number :
         descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        if (QFileInfo(descriptors.filePath(number)).symLinkTarget() == path)
            return true;
    }
    return false;
}

} // namespace

class TestClipSafeguards : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void promptClip_showsFirstFrame();
    void promptClip_playsToTheEnd();
    void promptClip_showsFrameThatIsSought();
    void promptClip_takesEachOfManySources();
    void promptClip_wakesNoThread_whenPaused();
    void promptClip_keepsItsPace();
    void promptClip_endsWithoutHalt_afterLastFrame();
    void promptClip_keepsItsPace_whenOneFrameIsPlayedAnew();
    void promptClip_goesAtOnce_whilePlaying();

    void releasedClip_closesItsFile_whileDecoding();
    void releasedClip_hasSamePictures_data();
    void releasedClip_hasSamePictures();
    void releasedClip_leavesNoMemory();
    void releasedClip_leavesNoMemory_whileDecoding();
    void releasedClip_leavesNoMemory_whenSourceChanges();

    void liveClip_goesOn_whenSafeguardsChange_data();
    void liveClip_goesOn_whenSafeguardsChange();
    void limitedClip_endsAtLimit_withOneWarning();
    void limitedClip_endsAtLargePicture_withOneWarning();
    void limitedClip_isWhole_whenItJustFits();
    void limitedClip_refusesPicture_beforeThereIsMemoryForIt_data();
    void limitedClip_refusesPicture_beforeThereIsMemoryForIt();
    void limitedClip_isRefusedByItsHeader_withOneWarning();

    void guardedClip_isWarnedAboutOnce_whenItDoesNotOpen();
    void guardedClip_isWarnedAboutAgain_whenFileHasChanged();
    void guardedClip_isWarnedAboutOnce_whenItIsMissing();
    void guardedClip_isWarnedAboutOnce_whenItIsNoRegularFile_data();
    void guardedClip_isWarnedAboutOnce_whenItIsNoRegularFile();
    void missingClip_isNotTakenFromWorkingDirectory_data();
    void missingClip_isNotTakenFromWorkingDirectory();

    void confinedClip_plays_whenItIsInPackage();
    void confinedClip_plays_whenItIsInAnotherPackage();
    void confinedClip_isRefusedWithOneWarning_whenItLeadsOut_data();
    void confinedClip_isRefusedWithOneWarning_whenItLeadsOut();
    void confinedClip_isRefused_whenDataPathWasRecordedAsRoot();
    void confinedClip_isRefused_whenItIsPlaylist_data();
    void confinedClip_isRefused_whenItIsPlaylist();
    void confinedClip_isRefused_whenCodecIsUnusual();

private:
    const Clips m_clips;
};

void TestClipSafeguards::promptClip_showsFirstFrame()
{
    const Stage stage(m_clips);
    stage.set(ckPromptClips, true);
    const auto item = stage.newItem();
    ThreadSpy shown(controllerOf(*item), &VLVideoController::displayFrame);
    item->setSource(u"clip.avi"_s);
    QVERIFY(shown.wait());
    QTRY_VERIFY(!controllerOf(*item)->currentFrame().isNull());
}

void TestClipSafeguards::promptClip_playsToTheEnd()
{
    const Stage stage(m_clips);
    stage.set(ckPromptClips, true);
    const auto item = stage.newItem();
    load(*item, u"clip.avi"_s);
    item->play();
    QTRY_COMPARE(item->position(), qlonglong(kClipFrames));
    QTRY_COMPARE(item->state(), VLVideoComponent::pausedState);
}

void TestClipSafeguards::promptClip_showsFrameThatIsSought()
{
    const Stage stage(m_clips);
    stage.set(ckPromptClips, true);
    const auto item = stage.newItem();
    load(*item, u"slow.avi"_s);
    ThreadSpy shown(controllerOf(*item), &VLVideoController::displayFrame);
    item->setPosition(7);
    QVERIFY(shown.wait());
    // The next one would take a second by itself.
    item->play();
    QTRY_VERIFY(item->position() > 7);
    item->setPosition(20);
    QTRY_VERIFY(item->position() > 20);
}

void TestClipSafeguards::promptClip_takesEachOfManySources()
{
    const Stage stage(m_clips);
    stage.set(ckPromptClips, true);
    const auto item = stage.newItem();
    // The records wait for each other, and none for a step of the thread.
    for (const QString& name : {u"clip.avi"_s, u"slow.avi"_s, u"long.avi"_s, u"other.avi"_s})
        item->setSource(name);
    QTRY_COMPARE(sourceOf(*item)->source(), QUrl::fromLocalFile(stage.pathOf(u"other.avi"_s)));
    QTRY_COMPARE(sourceOf(*item)->totalFrameCount(), quint64(kClipFrames / 2));
}

void TestClipSafeguards::promptClip_wakesNoThread_whenPaused()
{
    const Stage stage(m_clips);
    stage.set(ckPromptClips, true);
    const auto item = stage.newItem();
    ThreadSpy shown(controllerOf(*item), &VLVideoController::displayFrame);
    load(*item, u"clip.avi"_s);
    QTRY_VERIFY(shown.count() > 0);
    // What the end of the decoding has set going comes to rest.
    int before = -1;
    QTRY_VERIFY_WITH_TIMEOUT(
        std::exchange(before, sleepsOfClipThreads()) == sleepsOfClipThreads() && before > 0, 5000);
    QTest::qWait(kQuietMs);
    before = sleepsOfClipThreads();
    QTest::qWait(kQuietMs);
    QCOMPARE(sleepsOfClipThreads(), before);
}

void TestClipSafeguards::promptClip_keepsItsPace()
{
    const Stage stage(m_clips);
    stage.set(ckPromptClips, true);
    const auto item = stage.newItem();
    load(*item, u"clip.avi"_s);
    QElapsedTimer timer;
    timer.start();
    item->play();
    QTRY_COMPARE(item->position(), qlonglong(kClipFrames));
    // 40 milliseconds lie between two frames; the sleep leaves out the fraction.
    QVERIFY2(timer.elapsed() >= qint64(39) * (kClipFrames - 1),
             qPrintable(QString::number(timer.elapsed())));
}

void TestClipSafeguards::promptClip_endsWithoutHalt_afterLastFrame()
{
    const Stage stage(m_clips);
    stage.set(ckPromptClips, true);
    const auto item = stage.newItem();
    load(*item, u"slowest.avi"_s);
    item->setPosition(kSlowestClipFrames - 1);
    item->play();
    // A second halt would take twenty seconds.
    QTRY_COMPARE_WITH_TIMEOUT(item->state(), VLVideoComponent::pausedState, 10000);
    QCOMPARE(item->position(), qlonglong(kSlowestClipFrames));
}

void TestClipSafeguards::promptClip_keepsItsPace_whenOneFrameIsPlayedAnew()
{
    constexpr int kTurns = 5;
    const Stage stage(m_clips);
    stage.set(ckPromptClips, true);
    const auto item = stage.newItem();
    load(*item, u"single.avi"_s);
    QElapsedTimer timer;
    timer.start();
    for (int turn = 0; turn < kTurns; ++turn) {
        item->play();
        QTRY_COMPARE(item->state(), VLVideoComponent::pausedState);
    }
    // 40 milliseconds are the time of a frame; the sleep leaves out the fraction.
    QVERIFY2(timer.elapsed() >= qint64(39) * kTurns, qPrintable(QString::number(timer.elapsed())));
}

void TestClipSafeguards::promptClip_goesAtOnce_whilePlaying()
{
    const Stage stage(m_clips);
    stage.set(ckPromptClips, true);
    qint64 elapsedMs = 0;
    constexpr int kTries = 20;
    for (int i = 0; i < kTries; ++i) {
        auto item = stage.newItem();
        load(*item, u"slow.avi"_s);
        item->play();
        QTRY_VERIFY(item->position() > 0);
        QElapsedTimer timer;
        timer.start();
        item.reset();
        elapsedMs += timer.elapsed();
    }
    // Each would wait for the next frame, for up to a second.
    QVERIFY2(elapsedMs < qint64(kTries) * 250, qPrintable(QString::number(elapsedMs)));
}

void TestClipSafeguards::releasedClip_closesItsFile_whileDecoding()
{
    const Stage stage(m_clips);
    stage.set(ckReleaseClips, true);
    const QString path = stage.pathOf(u"long.avi"_s);
    auto item = stage.newItem();
    item->setSource(u"long.avi"_s);
    QTRY_VERIFY(sourceOf(*item)->loadedFrameCount() > 0);
    QVERIFY2(isOpen(path), "The clip was decoded before it could be looked at");
    item.reset();
    QVERIFY(!isOpen(path));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
static qint64 bytesInUse()
{
    const struct mallinfo2 use = mallinfo2();
    const size_t bytes = use.uordblks + use.hblkhd;
    return static_cast<qint64>(bytes);
}
constexpr bool kCountsMemory = true;
#else
static qint64 bytesInUse()
{
    return 0;
}
constexpr bool kCountsMemory = false;
#endif
/// Less than the records of a clip alone take.
constexpr qint64 kMaxGrowthBytes = 1024;

/// Verifies that @p turn, done many times, leaves nothing behind.
template <typename Turn> static void checkLeavesNoMemory(Turn turn)
{
    if (!kCountsMemory) {
        QTest::qSkip("The sanitizer's own memory would be counted", __FILE__, __LINE__);
        return;
    }
    constexpr int kTries = 20;
    // These fill the tables that everything else shares.
    for (int i = 0; i < kTries; ++i)
        turn();
    const qint64 before = bytesInUse();
    for (int i = 0; i < kTries; ++i)
        turn();
    // The pictures of the last clip are freed on a thread of their own.
    QTRY_COMPARE_LT((bytesInUse() - before) / kTries, kMaxGrowthBytes);
}

void TestClipSafeguards::releasedClip_hasSamePictures_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("pixelFormat");
    QTest::newRow("small") << QSize(64, 48) << u"png"_s << u"rgb24"_s;
    QTest::newRow("with rows of an odd length") << QSize(333, 201) << u"png"_s << u"rgb24"_s;
    QTest::newRow("with memory of their own") << QSize(640, 360) << u"png"_s << u"rgb24"_s;
    QTest::newRow("of brightness and colour") << QSize(334, 202) << u"mpeg4"_s << u"yuv420p"_s;
    QTest::newRow("transparent") << QSize(333, 201) << u"png"_s << u"rgba"_s;
}

void TestClipSafeguards::releasedClip_hasSamePictures()
{
    QFETCH(const QSize, size);
    QFETCH(const QString, codec);
    QFETCH(const QString, pixelFormat);
    ClipWriter writer;
    writer.testClip(u"fresh.mov"_s, codec, size, 25, 2, {u"-pix_fmt"_s, pixelFormat});
    QList<QImage> pictures;
    for (const bool isReleased : {false, true}) {
        Stage stage(m_clips);
        stage.set(ckReleaseClips, isReleased);
        stage.write(u"fresh.mov"_s, writer.readBytes(u"fresh.mov"_s));
        const auto item = stage.newItem();
        load(*item, u"fresh.mov"_s);
        pictures.append(sourceOf(*item)->getFrame(0).copy());
    }
    QVERIFY(!pictures.at(0).isNull());
    QCOMPARE(pictures.at(1).format(), pictures.at(0).format());
    QCOMPARE(pictures.at(1), pictures.at(0));
    // What draws pictures goes by the bits that stand for no colour, too.
    for (int y = 0; y < size.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(pictures.at(1).constScanLine(y));
        QVERIFY(
            std::all_of(row, row + size.width(), [](QRgb pixel) { return qAlpha(pixel) == 0xFF; }));
    }
}

void TestClipSafeguards::releasedClip_leavesNoMemory()
{
    const Stage stage(m_clips);
    stage.set(ckReleaseClips, true);
    stage.set(ckPromptClips, true);
    checkLeavesNoMemory([&stage] {
        const auto item = stage.newItem();
        load(*item, u"clip.avi"_s);
    });
}

void TestClipSafeguards::releasedClip_leavesNoMemory_whileDecoding()
{
    const Stage stage(m_clips);
    stage.set(ckReleaseClips, true);
    stage.set(ckPromptClips, true);
    checkLeavesNoMemory([&stage] {
        const auto item = stage.newItem();
        item->setSource(u"long.avi"_s);
        QTRY_VERIFY(sourceOf(*item)->loadedFrameCount() > 5);
    });
}

void TestClipSafeguards::releasedClip_leavesNoMemory_whenSourceChanges()
{
    const Stage stage(m_clips);
    stage.set(ckReleaseClips, true);
    stage.set(ckPromptClips, true);
    const auto item = stage.newItem();
    checkLeavesNoMemory([&item] {
        load(*item, u"clip.avi"_s);
        load(*item, u"other.avi"_s);
    });
}

void TestClipSafeguards::liveClip_goesOn_whenSafeguardsChange_data()
{
    QTest::addColumn<bool>("before");
    QTest::newRow("turned on") << false;
    QTest::newRow("turned off") << true;
}

void TestClipSafeguards::liveClip_goesOn_whenSafeguardsChange()
{
    QFETCH(const bool, before);
    const Stage stage(m_clips);
    const auto setAll = [&stage](bool on) {
        stage.set(ckReleaseClips, on);
        stage.set(ckPromptClips, on);
        stage.set(ckClipMemoryLimit, on ? kClipFrames * pictureBytes() : 0);
    };
    setAll(before);
    auto item = stage.newItem();
    load(*item, u"clip.avi"_s);
    setAll(!before);
    item->play();
    QTRY_COMPARE(item->position(), qlonglong(kClipFrames));
    load(*item, u"other.avi"_s);
    item.reset();
    item = stage.newItem();
    load(*item, u"clip.avi"_s);
    QCOMPARE(sourceOf(*item)->totalFrameCount(), quint64(kClipFrames));
    item->play();
    QTRY_COMPARE(item->position(), qlonglong(kClipFrames));
}

void TestClipSafeguards::limitedClip_endsAtLimit_withOneWarning()
{
    const Stage stage(m_clips);
    stage.set(ckClipMemoryLimit, 5 * pictureBytes() + pictureBytes() / 2);
    const auto item = stage.newItem();
    load(*item, u"clip.avi"_s);
    QCOMPARE(sourceOf(*item)->totalFrameCount(), quint64(5));
    QVERIFY(!isOpen(stage.pathOf(u"clip.avi"_s)));
    QTRY_COMPARE(stage.warnings().size(), 1);
    const QString warning = stage.warnings().constFirst();
    QVERIFY2(warning.contains(stage.pathOf(u"clip.avi"_s)), qPrintable(warning));
    QVERIFY2(warning.contains(u"5 pictures of 64x48 pixels"_s), qPrintable(warning));
    // What was kept plays.
    item->play();
    QTRY_COMPARE(item->position(), qlonglong(5));
}

void TestClipSafeguards::limitedClip_endsAtLargePicture_withOneWarning()
{
    Stage stage(m_clips);
    stage.set(ckClipMemoryLimit, 1024 * 1024);
    // Of the containers that are let in none can be joined so simply.
    stage.set(ckConfineContent, false);
    ClipWriter writer;
    writer.testClip(u"small.ts"_s, u"mpeg2video"_s, clipSize(), 25, 6);
    writer.testClip(u"large.ts"_s, u"mpeg2video"_s, QSize(1280, 720), 25, 6);
    stage.write(u"grown.ts"_s, writer.readBytes(u"small.ts"_s) + writer.readBytes(u"large.ts"_s));
    const auto item = stage.newItem();
    load(*item, u"grown.ts"_s);
    QVERIFY(sourceOf(*item)->totalFrameCount() > 0);
    QVERIFY(!isOpen(stage.pathOf(u"grown.ts"_s)));
    QTRY_COMPARE(stage.warnings().size(), 1);
    QVERIFY2(stage.warnings().constFirst().contains(u"was cut off"_s),
             qPrintable(stage.warnings().constFirst()));
}

void TestClipSafeguards::limitedClip_isWhole_whenItJustFits()
{
    const Stage stage(m_clips);
    stage.set(ckClipMemoryLimit, kClipFrames * pictureBytes());
    auto item = stage.newItem();
    load(*item, u"clip.avi"_s);
    QCOMPARE(sourceOf(*item)->totalFrameCount(), quint64(kClipFrames));
    item.reset();
    QCOMPARE(stage.warnings(), QStringList());
}

void TestClipSafeguards::limitedClip_refusesPicture_beforeThereIsMemoryForIt_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("clip");
    QTest::newRow("GIF") << u"bomb.gif"_s << hugeGif();
    QTest::newRow("PNG") << u"bomb.png"_s << hugePng();
    ClipWriter writer;
    writer.testClip(u"clip.avi"_s, u"png"_s, clipSize(), 25, 3);
    QTest::newRow("AVI with a header of another size")
        << u"bomb.avi"_s << withHugePictures(writer.readBytes(u"clip.avi"_s));
}

void TestClipSafeguards::limitedClip_refusesPicture_beforeThereIsMemoryForIt()
{
    QFETCH(const QString, name);
    QFETCH(const QByteArray, clip);
    Stage stage(m_clips);
    stage.set(ckClipMemoryLimit, 256 * 1024 * 1024);
    stage.write(name, clip);
    const auto item = stage.newItem();
    ThreadSpy carriedOut(sourceOf(*item), &VLVideoSource::actionChanged);
    const qint64 before = peakBytes();
    item->setSource(name);
    QTRY_VERIFY(carriedOut.count() >= 2 && sourceOf(*item)->action() == VLVideoSource::ActionIdle);
    const qint64 growth = peakBytes() - before;
    // The picture takes twice that, without what comes after it; threads have some for themselves.
    constexpr qint64 kMaxGrowth = qint64(512) * 1024 * 1024;
    QVERIFY2(growth < kMaxGrowth, qPrintable(QString::number(growth)));
    QCOMPARE(sourceOf(*item)->totalFrameCount(), quint64(0));
}

void TestClipSafeguards::limitedClip_isRefusedByItsHeader_withOneWarning()
{
    Stage stage(m_clips);
    stage.set(ckClipMemoryLimit, 256 * 1024 * 1024);
    stage.write(u"bomb.gif"_s, hugeGif());
    const auto item = stage.newItem();
    ThreadSpy loaded(sourceOf(*item), &VLVideoSource::sourceLoaded);
    item->setSource(u"bomb.gif"_s);
    QTRY_COMPARE(stage.warnings().size(), 1);
    const QString warning = stage.warnings().constFirst();
    QVERIFY2(warning.contains(u"16000x16000"_s), qPrintable(warning));
    QCOMPARE(loaded.count(), 0);
    QCOMPARE(sourceOf(*item)->frameWidth(), 200.0);
}

void TestClipSafeguards::guardedClip_isWarnedAboutOnce_whenItDoesNotOpen()
{
    Stage stage(m_clips);
    stage.set(ckGuardContent, true);
    const QString path = stage.write(u"broken.avi"_s, "This is no clip.");
    for (int i = 0; i < 3; ++i) {
        const auto item = stage.newItem();
        ThreadSpy carriedOut(sourceOf(*item), &VLVideoSource::actionChanged);
        item->setSource(u"broken.avi"_s);
        // Told to load, and to idle since that failed.
        QTRY_VERIFY(carriedOut.count() >= 2);
    }
    QTRY_COMPARE(stage.warnings(), QStringList{u"Could not open media at: "_s + path});
}

void TestClipSafeguards::guardedClip_isWarnedAboutAgain_whenFileHasChanged()
{
    Stage stage(m_clips);
    stage.set(ckGuardContent, true);
    stage.write(u"broken.avi"_s, "This is no clip.");
    auto item = stage.newItem();
    item->setSource(u"broken.avi"_s);
    QTRY_COMPARE(stage.warnings().size(), 1);
    stage.write(u"broken.avi"_s, "This is no clip either.");
    item = stage.newItem();
    item->setSource(u"broken.avi"_s);
    QTRY_COMPARE(stage.warnings().size(), 2);
}

void TestClipSafeguards::guardedClip_isWarnedAboutOnce_whenItIsMissing()
{
    const Stage stage(m_clips);
    stage.set(ckGuardContent, true);
    const auto item = stage.newItem();
    for (int i = 0; i < 3; ++i)
        item->setSource(u"missing.avi"_s);
    item->setSource(QString());
    QCOMPARE(stage.warnings(),
             QStringList{stage.packagePath(package() + u"/Control/tips.xml"_s)
                         + u": the resource \"missing.avi\" is not found"_s});
}

void TestClipSafeguards::guardedClip_isWarnedAboutOnce_whenItIsNoRegularFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("directory") << u"directory.avi"_s;
    QTest::newRow("FIFO") << u"fifo.avi"_s;
}

void TestClipSafeguards::guardedClip_isWarnedAboutOnce_whenItIsNoRegularFile()
{
    QFETCH(const QString, name);
    const Stage stage(m_clips);
    stage.set(ckGuardContent, true);
    QVERIFY(QDir().mkpath(stage.pathOf(u"directory.avi"_s)));
    QCOMPARE(mkfifo(qPrintable(stage.pathOf(u"fifo.avi"_s)), S_IRUSR | S_IWUSR), 0);
    const auto item = stage.newItem();
    item->setSource(name);
    item->setSource(name);
    QCOMPARE(stage.warnings(), QStringList{stage.pathOf(name) + u": not a regular file"_s});
    QCOMPARE(controllerOf(*item)->source(), QUrl());
}

void TestClipSafeguards::missingClip_isNotTakenFromWorkingDirectory_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("warnings");
    QTest::newRow("guarded") << int(ckGuardContent) << 1;
    // A clip that is merely missing is the guard's business.
    QTest::newRow("confined") << int(ckConfineContent) << 0;
}

void TestClipSafeguards::missingClip_isNotTakenFromWorkingDirectory()
{
    QFETCH(const int, key);
    QFETCH(const int, warnings);
    const QTemporaryDir directory;
    QVERIFY(QFile::copy(m_clips.path(u"clip.avi"_s), directory.filePath(u"Resources"_s)));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(directory.path()));
    const auto back = qScopeGuard([&before] { QDir::setCurrent(before); });

    const Stage stage(m_clips);
    stage.set(ckGuardContent, false);
    stage.set(ckConfineContent, false);
    stage.set(contextKey(key), true);
    const auto item = stage.newItem();
    item->setSource(u"missing.avi"_s);
    QCOMPARE(controllerOf(*item)->source(), QUrl());
    QCOMPARE(stage.warnings().size(), warnings);
}

void TestClipSafeguards::confinedClip_plays_whenItIsInPackage()
{
    const Stage stage(m_clips);
    stage.set(ckConfineContent, true);
    auto item = stage.newItem();
    load(*item, u"clip.avi"_s);
    QCOMPARE(sourceOf(*item)->totalFrameCount(), quint64(kClipFrames));
    item.reset();
    QCOMPARE(stage.warnings(), QStringList());
}

void TestClipSafeguards::confinedClip_plays_whenItIsInAnotherPackage()
{
    Stage stage(m_clips);
    stage.set(ckConfineContent, true);
    stage.addPackage(u"others.vidlets"_s);
    const QString name = u"../../others.vidlets/Resources/clip.avi"_s;
    QVERIFY(QFile::copy(m_clips.path(u"clip.avi"_s), stage.pathOf(name)));
    auto item = stage.newItem();
    load(*item, name);
    QCOMPARE(sourceOf(*item)->totalFrameCount(), quint64(kClipFrames));
    item.reset();
    QCOMPARE(stage.warnings(), QStringList());
}

void TestClipSafeguards::confinedClip_isRefusedWithOneWarning_whenItLeadsOut_data()
{
    QTest::addColumn<bool>("isGuarded");
    QTest::addColumn<QString>("name");
    for (const bool isGuarded : {false, true}) {
        const char* suffix = isGuarded ? ", guarded" : "";
        QTest::addRow("link%s", suffix) << isGuarded << u"link.avi"_s;
        QTest::addRow("steps%s", suffix) << isGuarded << u"../../beside.avi"_s;
        QTest::addRow("absolute%s", suffix) << isGuarded << m_clips.path(u"clip.avi"_s);
        QTest::addRow("not indexed%s", suffix) << isGuarded << u"../../empty.vidlets/clip.avi"_s;
    }
}

void TestClipSafeguards::confinedClip_isRefusedWithOneWarning_whenItLeadsOut()
{
    QFETCH(const bool, isGuarded);
    QFETCH(const QString, name);
    const Stage stage(m_clips);
    stage.set(ckConfineContent, true);
    stage.set(ckGuardContent, isGuarded);
    const QString clip = m_clips.path(u"clip.avi"_s);
    QVERIFY(QFile::link(clip, stage.pathOf(u"link.avi"_s)));
    QVERIFY(QFile::copy(clip, stage.packagePath(u"beside.avi"_s)));
    QVERIFY(QDir().mkpath(stage.packagePath(u"empty.vidlets"_s)));
    QVERIFY(QFile::copy(clip, stage.packagePath(u"empty.vidlets/clip.avi"_s)));
    const auto item = stage.newItem();
    item->setSource(name);
    item->setSource(name);
    QCOMPARE(stage.warnings().size(), 1);
    const QString warning = stage.warnings().constFirst();
    QVERIFY2(warning.contains(QFileInfo(name).fileName()), qPrintable(warning));
    QCOMPARE(controllerOf(*item)->source(), QUrl());
    // The next clip is the first one to be loaded.
    load(*item, u"other.avi"_s);
    QCOMPARE(sourceOf(*item)->totalFrameCount(), quint64(kClipFrames / 2));
    QCOMPARE(stage.warnings().size(), 1);
}

void TestClipSafeguards::confinedClip_isRefused_whenDataPathWasRecordedAsRoot()
{
    Stage stage(m_clips);
    stage.set(ckConfineContent, true);
    QVERIFY(QFile::copy(m_clips.path(u"clip.avi"_s), stage.packagePath(u"beside.avi"_s)));
    stage.recordDataPathAsRoot();
    const auto item = stage.newItem();
    item->setSource(u"../../beside.avi"_s);
    QCOMPARE(stage.warnings().size(), 1);
    QCOMPARE(controllerOf(*item)->source(), QUrl());
}

void TestClipSafeguards::confinedClip_isRefused_whenItIsPlaylist_data()
{
    QTest::addColumn<QByteArray>("playlist");
    QTest::newRow("list of files") << QByteArray("ffconcat version 1.0\nfile 'other.avi'\n");
    QTest::newRow("list of segments")
        << QByteArray("#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nother.avi\n#EXT-X-ENDLIST\n");
}

void TestClipSafeguards::confinedClip_isRefused_whenItIsPlaylist()
{
    QFETCH(QByteArray, playlist);
    Stage stage(m_clips);
    stage.set(ckConfineContent, true);
    const QString path = stage.write(u"playlist.mp4"_s, playlist);
    const auto item = stage.newItem();
    item->setSource(u"playlist.mp4"_s);
    QTRY_COMPARE(stage.warnings(), QStringList{u"Could not open media at: "_s + path});
    QCOMPARE(sourceOf(*item)->totalFrameCount(), quint64(0));
}

void TestClipSafeguards::confinedClip_isRefused_whenCodecIsUnusual()
{
    Stage stage(m_clips);
    ClipWriter writer;
    writer.testClip(u"unusual.avi"_s, u"snow"_s, clipSize(), 25, 5,
                    {u"-strict"_s, u"experimental"_s});
    stage.write(u"unusual.avi"_s, writer.readBytes(u"unusual.avi"_s));
    stage.set(ckConfineContent, true);
    const auto item = stage.newItem();
    item->setSource(u"unusual.avi"_s);
    QTRY_COMPARE(stage.warnings().size(), 1);
    QVERIFY(stage.warnings().constFirst().contains(u"unusual.avi"_s));
    QCOMPARE(sourceOf(*item)->totalFrameCount(), quint64(0));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestClipSafeguards>(argc, argv);
}

#include "tst_clipsafeguards.moc"
