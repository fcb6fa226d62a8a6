// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// Clips that are broken, decoded directly and played by a scene.

#include "BadContentTest.h"
#include "ClipWriter.h"
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>

#include <QMutex>
#include <QMutexLocker>
#include <QQuickItem>
#include <QStringList>

#include <functional>

using namespace Qt::StringLiterals;

using namespace Vidlets;
using namespace Steps;

namespace {

constexpr int kClipFrames = 12;
constexpr int kTimeoutMs = 30000;

/// Keeps what is written to Qt's log, on whatever thread, and passes it on.
class LogCapture
{
public:
    LogCapture()
    {
        lines.clear();
        previous = qInstallMessageHandler(keep);
    }
    ~LogCapture()
    {
        qInstallMessageHandler(previous);
    }

    static qsizetype count(const QString& line)
    {
        const QMutexLocker locker(&mutex);
        return lines.count(line);
    }

private:
    Q_DISABLE_COPY_MOVE(LogCapture)

    static void keep(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        {
            const QMutexLocker locker(&mutex);
            lines += text;
        }
        previous(type, context, text);
    }

    static QMutex mutex;
    static QStringList lines;
    static QtMessageHandler previous;
};

QMutex LogCapture::mutex;
QStringList LogCapture::lines;
QtMessageHandler LogCapture::previous = nullptr;

/// A source that decodes on the calling thread, until it goes idle.
class StraightSource : public VLVideoSourceFFMPEG
{
public:
    void decode(const QString& path)
    {
        setSource(QUrl::fromLocalFile(path));
        run();
    }
    void changeSetAction(Action action) override
    {
        VLVideoSourceFFMPEG::changeSetAction(action);
        if (action == ActionIdle)
            setShouldQuit();
    }
};

/// How many of a clip's pictures come out of a damaged file.
enum class Pictures {
    Unopened, ///< The file is no media.
    NoStream, ///< There is no video in it.
    Some,     ///< Fewer than the whole clip has.
    All,
    Any, ///< It is the decoder's business.
};

QString clipPath()
{
    return u"Resources/clip"_s;
}

VLVideoComponent* clipItem(BadPackage& package)
{
    return package.stage.scene()->findChild<VLVideoComponent*>();
}

int decodedPictures(StraightSource& source)
{
    return static_cast<int>(source.loadedFrameCount());
}

/// What the source writes to the log on a clip that it cannot read; null for others.
QString expectedLine(Pictures expected, const QString& path)
{
    if (expected == Pictures::Unopened)
        return u"Could not open media at: "_s + path;
    if (expected == Pictures::NoStream)
        return u"Could not find a video stream in "_s + path;
    return QString();
}

bool isCountRight(Pictures expected, int count)
{
    switch (expected) {
    case Pictures::All:
        return count == kClipFrames;
    case Pictures::Some:
        return count > 0 && count < kClipFrames;
    case Pictures::Any:
        return count <= kClipFrames;
    case Pictures::Unopened:
    case Pictures::NoStream:
        break;
    }
    return count == 0;
}

QString findingInPictures(StraightSource& source, int count)
{
    const QSizeF clipSize(source.frameWidth(), source.frameHeight());
    for (int i = 0; i < count; ++i) {
        if (source.getFrame(static_cast<unsigned int>(i)).size() != clipSize)
            return u"picture %1 has another size"_s.arg(i);
    }
    return QString();
}

/// Decodes the clip of the package directly, then in the popup's scene.
Examination picturesAre(Pictures expected)
{
    return [expected](BadPackage& package) {
        const QString path = package.path(clipPath());
        const LogCapture log;
        StraightSource source;
        source.decode(path);
        const int count = decodedPictures(source);
        const QString line = expectedLine(expected, path);
        if (!line.isEmpty() && LogCapture::count(line) != 1)
            return u"the line is missing: "_s + line;
        if (!isCountRight(expected, count))
            return u"there are %1 pictures"_s.arg(count);
        if (const QString finding = findingInPictures(source, count); !finding.isEmpty())
            return finding;

        VLVideoComponent* item = clipItem(package);
        item->setSource(u"clip"_s);
        item->setState(VLVideoComponent::playingState);
        const bool seen = QTest::qWaitFor(
            [&] {
                return line.isEmpty() ? count == 0 || item->contentWidth() == source.frameWidth()
                                      : LogCapture::count(line) == 2;
            },
            kTimeoutMs);
        return seen ? QString() : u"the scene does not see the same"_s;
    };
}

QString findingInProgress(const VLVideoComponent* item)
{
    return qIsNaN(item->loadProgress()) ? QString() : u"there are pictures"_s;
}

Examination nothingIsLoaded()
{
    return [](BadPackage& package) {
        VLVideoComponent* item = clipItem(package);
        item->setSource(u"clip"_s);
        return findingInProgress(item);
    };
}

Examination nothingIsLoadedOnceItPlays()
{
    return [](BadPackage& package) {
        VLVideoComponent* item = clipItem(package);
        item->setSource(u"clip"_s);
        item->setState(VLVideoComponent::playingState);
        return findingInProgress(item);
    };
}

Step clipScene()
{
    return inTurn(goodControlFile(),
                  file(u"ui/VidletUI.qml"_s,
                       "import QtQuick\nimport com.larkspan.vidlets.qml 1.0\nItem {\n"
                       "    property string shownKey: vidlet.attribute(\"key\")\n"
                       "    width: 120; height: 80\n"
                       "    VLVideoComponent { objectName: \"clip\"; anchors.fill: parent }\n}\n"));
}

/// Made only where it is needed: writing a clip takes its time.
using ClipMaker = std::function<QByteArray()>;

Step clip(const ClipMaker& make)
{
    return [make](BadPackage& package) { package.write(clipPath(), make()); };
}

BadCase badClip(const char* name)
{
    return bad(name).has(clipScene()).isShown();
}

/// A case with a file of tests/data/broken/clip, named as its file is.
BadCase broken(const char* fileName)
{
    const QString path = u"clip/"_s + QString::fromLatin1(fileName);
    return BadCase(QString::fromLatin1(fileName).replace(u'-', u' '))
        .has(clipScene())
        .has(file(clipPath(), brokenFile(path)))
        .isShown();
}

QByteArray clipBytes(const char* fileName, const char* codec, const char* format,
                     const QSize& size = {64, 48}, int frames = kClipFrames)
{
    ClipWriter clips;
    const QString name = QString::fromLatin1(fileName);
    clips.testClip(name, QString::fromLatin1(codec), size, 25, frames,
                   {u"-bf"_s, u"0"_s, u"-g"_s, u"4"_s, u"-f"_s, QString::fromLatin1(format)});
    return clips.readBytes(name);
}

QByteArray soundBytes()
{
    ClipWriter clips;
    const QString name = u"sound.wav"_s;
    clips.write(name, {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=duration=0.1"_s});
    return clips.readBytes(name);
}

QByteArray withFlippedBits(QByteArray bytes)
{
    constexpr qsizetype kStep = 97;
    for (qsizetype i = bytes.size() / 2; i < bytes.size(); i += kStep)
        bytes[i] = static_cast<char>(bytes.at(i) ^ 0x10);
    return bytes;
}

/// The bytes of @p make up to @p part of them.
ClipMaker cutOff(const ClipMaker& make, double part)
{
    return [make, part] {
        const QByteArray whole = make();
        return whole.left(static_cast<qsizetype>(part * static_cast<double>(whole.size())));
    };
}

/// The bytes of @p make, with noise behind the first @p divisor-th of them.
ClipMaker noisyBehind(const ClipMaker& make, int divisor)
{
    return [make, divisor] {
        constexpr int kRepeats = 4;
        const QByteArray whole = make();
        const qsizetype kept = whole.size() / divisor;
        const QByteArray noise = brokenFile(u"controlfile/binary.xml"_s).repeated(kRepeats);
        return whole.left(kept) + noise.left(whole.size() - kept);
    };
}

ClipMaker flipped(const ClipMaker& make)
{
    return [make] { return withFlippedBits(make()); };
}

// Of pictures that depend on no other.
QByteArray avi()
{
    return clipBytes("a.avi", "mjpeg", "avi");
}

QByteArray mp4()
{
    return clipBytes("a.mp4", "mpeg4", "mp4");
}

QByteArray mkv()
{
    return clipBytes("a.mkv", "mpeg4", "matroska");
}

QByteArray clipOfTwoSizes()
{
    return clipBytes("a.mjpeg", "mjpeg", "mjpeg", QSize(64, 48), kClipFrames / 2)
        + clipBytes("b.mjpeg", "mjpeg", "mjpeg", QSize(96, 32), kClipFrames / 2);
}

BadCases unreadableClips()
{
    const Examination nothing = picturesAre(Pictures::Unopened);
    return {
        broken("zero-size").where(nothing),
        broken("text").where(nothing),
        broken("binary").where(nothing),
        badClip("sound alone").has(clip(soundBytes)).where(picturesAre(Pictures::NoStream)),
        badClip("cut off in its head").has(clip(cutOff(mkv, 0.01))).where(nothing),
        badClip("cut off before its index").has(clip(cutOff(mp4, 0.5))).where(nothing),
    };
}

BadCases damagedClips()
{
    const Examination all = picturesAre(Pictures::All);
    const Examination some = picturesAre(Pictures::Some);
    const Examination any = picturesAre(Pictures::Any);
    return {
        badClip("whole").has(clip(avi)).where(all),
        badClip("cut off half-way").has(clip(cutOff(mkv, 0.5))).where(some),
        badClip("of single pictures, cut off half-way").has(clip(cutOff(avi, 0.5))).where(some),
        badClip("noise behind its head").has(clip(noisyBehind(mkv, 8))).where(any),
        badClip("noise half-way").has(clip(noisyBehind(avi, 2))).where(any),
        badClip("flipped bits").has(clip(flipped(avi))).where(any),
        badClip("damaged index").has(clip(flipped(mp4))).where(any),
        badClip("another size half-way").has(clip(clipOfTwoSizes)).where(all),
    };
}

BadCases missingClips()
{
    return {
        badClip("gone before it is played")
            .has(clip(avi))
            .afterTheScan(removed(clipPath()))
            .where(nothingIsLoadedOnceItPlays()),
        badClip("directory").afterTheScan(directory(clipPath())).where(nothingIsLoaded()),
    };
}

} // namespace

class TestBadClip : public BadContentTest
{
    Q_OBJECT

private Q_SLOTS:
    void clip_isReported_whenItCannotBeRead_data();
    void clip_isReported_whenItCannotBeRead();
    void clip_playsWhatIsLeft_whenItIsDamaged_data();
    void clip_playsWhatIsLeft_whenItIsDamaged();
    void clip_isNotLoaded_whenItIsMissing_data();
    void clip_isNotLoaded_whenItIsMissing();
    void brokenClips_haveACaseEach();

protected:
    BadCases allCases() const override;
};

BadCases TestBadClip::allCases() const
{
    return unreadableClips() + damagedClips() + missingClips();
}

void TestBadClip::clip_isReported_whenItCannotBeRead_data()
{
    addRows(unreadableClips());
}

void TestBadClip::clip_isReported_whenItCannotBeRead()
{
    runRow(unreadableClips());
}

void TestBadClip::clip_playsWhatIsLeft_whenItIsDamaged_data()
{
    addRows(damagedClips());
}

void TestBadClip::clip_playsWhatIsLeft_whenItIsDamaged()
{
    runRow(damagedClips());
}

void TestBadClip::clip_isNotLoaded_whenItIsMissing_data()
{
    addRows(missingClips());
}

void TestBadClip::clip_isNotLoaded_whenItIsMissing()
{
    runRow(missingClips());
}

void TestBadClip::brokenClips_haveACaseEach()
{
    QVERIFY(!brokenFileNames(u"clip"_s).isEmpty());
    QCOMPARE(filesWithoutCase(u"clip"_s, allCases()), QStringList());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestBadClip>(argc, argv);
}

#include "tst_badclip.moc"
