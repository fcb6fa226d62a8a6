// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "ClipWriter.h"
#include "VidletsTest.h"
#include <Vidlets/VLVideoSourceFFMPEG.h>

#include <QDateTime>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>
#include <QRandomGenerator>
#include <QSemaphore>
#include <QtEndian>

#include <atomic>
#include <iterator>

extern "C" {
#include <libavutil/log.h>
}

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kTimeoutMs = 30000;

const auto kChanged = u"sourceChanged"_s;
const auto kLoaded = u"sourceLoaded"_s;
const auto kEnded = u"streamEnded"_s;
const auto kPosition = u"positionChanged"_s;
const auto kReady = u"frameReady"_s;
const auto kProgress = u"loadProgressChanged"_s;

QString actionEvent(VLVideoSource::Action action)
{
    return u"action %1"_s.arg(action);
}

const QString kLoad = actionEvent(VLVideoSource::ActionLoad);
const QString kClose = actionEvent(VLVideoSource::ActionClose);
const QString kSeek = actionEvent(VLVideoSource::ActionSeek);
const QString kDecode = actionEvent(VLVideoSource::ActionDecode);
const QString kIdle = actionEvent(VLVideoSource::ActionIdle);

// How many records that idle the thread follow the end of a clip, and a load that failed.
constexpr int kIdlesAfterEnd = 2;
constexpr int kIdlesAfterFailure = 3;

/// A source that writes down its signals, and can be stopped at one of them.
class RecordedSource : public VLVideoSourceFFMPEG
{
public:
    RecordedSource()
    {
        const auto note = [this](auto signal, const QString& event) {
            connect(
                this, signal, this, [this, event] { record(event); }, Qt::DirectConnection);
        };
        note(&VLVideoSource::frameReady, kReady);
        note(&VLVideoSource::sourceChanged, kChanged);
        note(&VLVideoSource::streamEnded, kEnded);
        note(&VLVideoSource::sourceLoaded, kLoaded);
        note(&VLVideoSource::positionChanged, kPosition);
        note(&VLVideoSource::loadProgressChanged, kProgress);
        connect(
            this, &VLVideoSource::actionChanged, this, [this] { record(actionEvent(action())); },
            Qt::DirectConnection);
    }
    ~RecordedSource() override
    {
        letGo();
        quit();
    }
    Q_DISABLE_COPY_MOVE(RecordedSource)

    void close() override
    {
        ++closings;
        VLVideoSourceFFMPEG::close();
    }
    bool loadSource() override
    {
        const bool result = VLVideoSourceFFMPEG::loadSource();
        const QMutexLocker locker(&m_mutex);
        loadResults += result;
        loadThread = QThread::currentThread();
        return result;
    }

    QStringList events() const
    {
        const QMutexLocker locker(&m_mutex);
        return m_events;
    }
    int count(const QString& event) const
    {
        return static_cast<int>(events().count(event));
    }

    /// Has the source thread wait at that signal. Before it starts.
    void holdAt(const QString& event, int occurrence = 1)
    {
        m_holdEvent = event;
        m_holdOccurrence = occurrence;
    }
    bool waitUntilHeld()
    {
        return m_held.tryAcquire(1, kTimeoutMs);
    }
    void letGo()
    {
        m_letGo.release();
    }

    bool waitForIdles(int number) const
    {
        return QTest::qWaitFor([this, number] { return count(kIdle) >= number; }, kTimeoutMs);
    }
    /// Decodes the clip at @p path to its end.
    bool decode(const QString& path)
    {
        return load(QUrl::fromLocalFile(path), kEnded);
    }
    /// Loads something that cannot be opened.
    bool failAt(const QUrl& url)
    {
        const int before = count(kLoaded);
        return load(url, kChanged) && count(kLoaded) == before;
    }
    /// Starts to decode the clip at @p path and waits with the first picture in the cache.
    bool decodeOnePicture(const QString& path)
    {
        // One record is of the setup, one of the load; a picture is decoded between them.
        holdAt(kDecode, 2);
        setSource(QUrl::fromLocalFile(path));
        start();
        return waitUntilHeld();
    }

    QList<VLVideoFrame> frames()
    {
        QList<VLVideoFrame> result;
        for (unsigned int i = 0; i < loadedFrameCount(); ++i)
            result += getFrame(i);
        return result;
    }
    QList<double> stamps()
    {
        QList<double> result;
        const QList<VLVideoFrame> all = frames();
        for (const VLVideoFrame& frame : all)
            result += frame.pts();
        return result;
    }

    std::atomic_int closings = 0;
    QList<bool> loadResults;
    QThread* loadThread = nullptr;

private:
    /// Loads @p url, and waits until the thread idles after one more of @p lastEvent. From then on
    /// it appends nothing to the queue, which is the test's again.
    bool load(const QUrl& url, const QString& lastEvent)
    {
        const int before = count(lastEvent);
        if (!setSource(url))
            return false;
        start();
        return QTest::qWaitFor(
            [&] {
                const QStringList all = events();
                return all.count(lastEvent) > before
                    && all.lastIndexOf(kIdle) > all.lastIndexOf(lastEvent);
            },
            kTimeoutMs);
    }

    void record(const QString& event)
    {
        {
            const QMutexLocker locker(&m_mutex);
            m_events += event;
            if (event != m_holdEvent || m_events.count(event) != m_holdOccurrence)
                return;
        }
        m_held.release();
        m_letGo.acquire();
    }

    mutable QMutex m_mutex;
    QStringList m_events;
    QString m_holdEvent;
    int m_holdOccurrence = 0;
    QSemaphore m_held;
    QSemaphore m_letGo;
};

/// A source whose load does nothing, so that no record ever ends it.
class StandingSource : public VLVideoSourceFFMPEG
{
public:
    bool loadSource() override
    {
        ++loads;
        return false;
    }

    std::atomic_int loads = 0;
};

/// Collects the debug lines of all threads during its life.
class DebugLines
{
public:
    DebugLines()
    {
        current = this;
        previous = qInstallMessageHandler(&DebugLines::handle);
    }
    ~DebugLines()
    {
        qInstallMessageHandler(previous);
        current = nullptr;
    }
    Q_DISABLE_COPY_MOVE(DebugLines)

    QStringList lines() const
    {
        const QMutexLocker locker(&m_mutex);
        return m_lines;
    }

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        if (type != QtDebugMsg) {
            previous(type, context, text);
            return;
        }
        const QMutexLocker locker(&current->m_mutex);
        current->m_lines += text;
    }

    static inline DebugLines* current = nullptr;
    static inline QtMessageHandler previous = nullptr;

    mutable QMutex m_mutex;
    QStringList m_lines;
};

/// Stamps that follow each other at that rate.
QList<double> risingStamps(double start, double rate, qsizetype number)
{
    QList<double> result;
    double clock = start;
    for (qsizetype i = 0; i < number; ++i) {
        result += clock;
        clock = 1.0 / rate + clock;
    }
    return result;
}

/// Pixels without any order, and another picture for each @p seed.
QImage noise(const QSize& size, quint32 seed, QImage::Format format = QImage::Format_RGB32)
{
    QRandomGenerator generator(seed + 1);
    QImage image(size, format);
    for (int y = 0; y < size.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const quint32 value = generator.generate();
            row[x] = format == QImage::Format_RGB32 ? 0xFF000000U | value : value;
        }
    }
    return image;
}

/// A color as the codecs see it, and what becomes of it.
struct VideoColor
{
    char luma;
    char blueDifference;
    char redDifference;
    QRgb rgb;
};
// Far from each other, so that a pixel of the picture before stands out.
constexpr VideoColor kColors[] = {
    {char(120), char(110), char(-86), qRgb(188, 94, 85)},
    {char(90), char(-96), char(100), qRgb(41, 96, 151)},
    {char(-56), char(120), char(-121), qRgb(225, 212, 198)},
};
// Of what the lossy codecs do to a plain picture.
constexpr int kGreatestLoss = 12;

/// A plain picture of the pixel format "yuv420p".
QByteArray plainPicture(const QSize& size, const VideoColor& color)
{
    const qsizetype chromaSize = qsizetype((size.width() + 1) / 2) * ((size.height() + 1) / 2);
    return QByteArray(qsizetype(size.width()) * size.height(), color.luma)
        + QByteArray(chromaSize, color.blueDifference)
        + QByteArray(chromaSize, color.redDifference);
}

/// The pixels of @p image that are not opaque.
int transparentPixels(const QImage& image)
{
    int result = 0;
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x)
            result += qAlpha(row[x]) != 0xFF;
    }
    return result;
}

/// The greatest difference of a channel of any pixel of @p image to @p color.
int greatestDifference(const QImage& image, QRgb color)
{
    int result = 0;
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            result = qMax(result, qAbs(qRed(row[x]) - qRed(color)));
            result = qMax(result, qAbs(qGreen(row[x]) - qGreen(color)));
            result = qMax(result, qAbs(qBlue(row[x]) - qBlue(color)));
        }
    }
    return result;
}

QByteArray randomBytes(qsizetype size)
{
    QRandomGenerator generator(7);
    QByteArray result(size, '\0');
    for (char& byte : result)
        byte = static_cast<char>(generator.generate() & 0xFFU);
    return result;
}

/// A packet of eight pictures for a VP9 decoder, of which none is one.
QByteArray brokenParts()
{
    constexpr int kParts = 8;
    constexpr char kPartSize = 4;
    const QByteArray marker(1, char(0xC0 | (kParts - 1)));
    return QByteArray(qsizetype(kParts) * kPartSize, '\0') + marker + QByteArray(kParts, kPartSize)
        + marker;
}

/// @p clip, a file of the format "ivf", with @p content for the packet at @p index.
QByteArray withPacket(const QByteArray& clip, int index, const QByteArray& content)
{
    constexpr qsizetype kFileHeaderSize = 32;
    constexpr qsizetype kPacketHeaderSize = 12;
    const auto sizeAt = [&clip](qsizetype offset) {
        return static_cast<qsizetype>(qFromLittleEndian<quint32>(clip.constData() + offset));
    };
    qsizetype offset = kFileHeaderSize;
    for (int i = 0; i < index; ++i)
        offset += kPacketHeaderSize + sizeAt(offset);
    const quint32 size = qToLittleEndian(static_cast<quint32>(content.size()));
    QByteArray result = clip;
    result.replace(offset + kPacketHeaderSize, sizeAt(offset), content);
    return result.replace(offset, sizeof(size), reinterpret_cast<const char*>(&size), sizeof(size));
}

QStringList options(const char* text)
{
    return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts);
}

} // namespace

class TestVLVideoSourceFFMPEG : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    void initTestCase();

    // The source as it comes
    void newSource_answersDefaults();
    void getTime_isWallClockInSeconds();
    void constructor_silencesFFmpegOnce();

    // Decoding
    void decoding_fillsCache_data();
    void decoding_fillsCache();
    void decoding_lacksWithheldPictures_whenCodecReordersThem_data();
    void decoding_lacksWithheldPictures_whenCodecReordersThem();
    void decoding_goesThroughSignalsInOrder();
    void decoding_leavesNeverSentSignalsAlone();
    void loadSource_runsOnSourceThread();
    void streamEnded_comesWithMediaClosedAndCacheComplete();
    void properties_tellOfClip();
    void timeBase_isTickOfCodec_data();
    void timeBase_isTickOfCodec();
    void properties_stay_whenClipHasEnded();
    void progress_isNewestStampByDuration();
    void position_isAlwaysZero();

    // Pictures
    void picture_equalsEncodedOne_whenCodecIsLossless_data();
    void picture_equalsEncodedOne_whenCodecIsLossless();
    void picture_isOpaque_whenClipIsTransparent();
    void picture_isWrittenToLastColumnAndRow_data();
    void picture_isWrittenToLastColumnAndRow();
    void pictures_keepPixelsOfTheirOwn();
    void getFrame_sharesPixelsWithCache();
    void pictures_keepFirstSize_whenStreamChangesIt_data();
    void pictures_keepFirstSize_whenStreamChangesIt();

    // Stamps
    void stamps_riseByInverseFrameRate_data();
    void stamps_riseByInverseFrameRate();
    void stamps_ignoreTimesInFile_whenRateVaries();
    void stamps_continue_whenAnotherClipIsLoaded();
    void stamps_ignoreOtherStreams();

    // Unusual and damaged files
    void path_mayHoldAnyCharacters_data();
    void path_mayHoldAnyCharacters();
    void decoding_endsAtLastWholePicture_whenFileIsCutOff_data();
    void decoding_endsAtLastWholePicture_whenFileIsCutOff();
    void decoding_sendsPacketAgain_whenDecoderRefusesIt();
    void decoding_survivesRandomBytes_data();
    void decoding_survivesRandomBytes();

    // Failures to load
    void load_writesOneLineAndSendsNothing_whenItFails_data();
    void load_writesOneLineAndSendsNothing_whenItFails();
    void load_succeeds_afterOneThatFailed();
    void frameSize_staysOfLastClip_whenLoadFails();
    void loadSource_closesMedia_whenUrlIsEmpty();

    // Another clip
    void setSource_replacesCache_whenClipHasEnded();
    void setSource_abandonsClip_whileDecoding();
    void setSource_isRefusedAndKeepsFrames_whenSetAgain();
    void setSource_loadsTwice_whenSetTwiceInARow();

    // Closing
    void close_stopsDecodingAndKeepsFrames();
    void close_isHarmless_withoutMedia();
    void close_mayComeFromAnyThread_whileDecoding();

    // Actions
    void actionLoad_isRepeatedUntilAnotherIsSet();
    void actionQuit_endsThread();
    void actionClose_closesMediaAndIdles();
    void actionSeek_goesToStart_withMedia();
    void actionSeek_idles_withoutMedia();
    void changeSetPosition_seeksForwardToNextKeyPicture();
    void changeSetPosition_seeksBackwardToKeyPictureBefore();
    void changeSetPosition_resetsClockAndProgress_withoutMedia();

    // The end of the thread
    void run_returnsAtOnce_whenAlreadyToldToQuit();
    void quit_comesInTime_data();
    void quit_comesInTime();

private:
    QString clip(const QString& fileName, const QString& codec, int frames,
                 const char* extraOptions = "", const QSize& size = {160, 90}, int fps = 25);
    /// Encodes pictures of the format "yuv420p". Returns the clip's path.
    QString plainClip(const QString& fileName, const QString& codec, const QByteArray& extraOptions,
                      const QSize& size, const QByteArray& pictures);

    ClipWriter m_clips;
    QString m_clip;        ///< 10 pictures of 160 by 90 pixels, 25 a second.
    QString m_otherClip;   ///< 5 pictures of 100 by 50 pixels, 10 a second.
    QString m_longClip;    ///< 300 pictures of 320 by 240 pixels.
    QString m_groupedClip; ///< 50 pictures; a key picture is every twelfth.
};

int TestVLVideoSourceFFMPEG::runChild(const QString& name)
{
    if (name != u"logLevel"_s)
        return VidletsTest::runChild(name);
    av_log_set_level(AV_LOG_INFO);
    VLVideoSourceFFMPEG first;
    const bool isSilent = av_log_get_level() == AV_LOG_QUIET;
    av_log_set_level(AV_LOG_INFO);
    VLVideoSourceFFMPEG second;
    return isSilent && av_log_get_level() == AV_LOG_INFO ? EXIT_SUCCESS : EXIT_FAILURE;
}

QString TestVLVideoSourceFFMPEG::clip(const QString& fileName, const QString& codec, int frames,
                                      const char* extraOptions, const QSize& size, int fps)
{
    return m_clips.testClip(fileName, codec, size, fps, frames, options(extraOptions));
}

QString TestVLVideoSourceFFMPEG::plainClip(const QString& fileName, const QString& codec,
                                           const QByteArray& extraOptions, const QSize& size,
                                           const QByteArray& pictures)
{
    const QString input = m_clips.writeBytes(u"pictures.yuv"_s, pictures);
    const QString sizeText = u"%1x%2"_s.arg(size.width()).arg(size.height());
    return m_clips.write(fileName,
                         options("-f rawvideo -pix_fmt yuv420p -framerate 25 -video_size")
                             + QStringList{sizeText, u"-i"_s, input, u"-c:v"_s, codec}
                             + options(extraOptions.constData()));
}

void TestVLVideoSourceFFMPEG::initTestCase()
{
    m_clip = clip(u"clip.mp4"_s, u"mpeg4"_s, 10);
    m_otherClip = clip(u"other.avi"_s, u"mjpeg"_s, 5, "", QSize(100, 50), 10);
    m_longClip = clip(u"long.avi"_s, u"mpeg4"_s, 300, "", {320, 240});
    m_groupedClip = clip(u"grouped.mp4"_s, u"mpeg4"_s, 50, "-g 12 -sc_threshold 1000000000");
}

void TestVLVideoSourceFFMPEG::newSource_answersDefaults()
{
    RecordedSource source;
    QCOMPARE(source.objectName(), u"FFMPEG"_s);
    QCOMPARE(source.action(), VLVideoSource::ActionIdle);
    QCOMPARE(source.source(), QUrl());
    QVERIFY(!source.isOpen());
    QCOMPARE(source.frameWidth(), 200.0);
    QCOMPARE(source.frameHeight(), 150.0);
    QCOMPARE(source.duration(), 0.0);
    QCOMPARE(source.timeBase(), 0.0);
    QCOMPARE(source.frameRate(), 0.0);
    QCOMPARE(source.progress(), 0.0);
    QCOMPARE(source.position(), 0U);
    QVERIFY(!source.isRunning());
}

void TestVLVideoSourceFFMPEG::getTime_isWallClockInSeconds()
{
    VLVideoSourceFFMPEG source;
    // The system's clocks differ by their grain.
    constexpr double kGrainSeconds = 0.1;
    const auto now = [] {
        return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
    };
    const double before = now() - kGrainSeconds;
    const double time = source.getTime();
    const double after = now() + kGrainSeconds;
    QVERIFY2(before <= time && time <= after, qPrintable(QString::number(time, 'f')));
}

void TestVLVideoSourceFFMPEG::constructor_silencesFFmpegOnce()
{
    const ChildResult result = runInChildProcess(u"logLevel"_s);
    QVERIFY(result.finished && !result.crashed);
    QCOMPARE(result.exitCode, EXIT_SUCCESS);
}

void TestVLVideoSourceFFMPEG::decoding_fillsCache_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QByteArray>("extraOptions");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("frames");

    const auto row = [](const char* name, const char* fileName, const char* codec,
                        const QByteArray& extraOptions = {}, const QSize& size = {160, 90},
                        int frames = 20) {
        QTest::newRow(name) << QString::fromLatin1(fileName) << QString::fromLatin1(codec)
                            << extraOptions << size << frames;
    };
    row("mpeg4 in mp4", "counted.mp4", "mpeg4");
    row("mpeg4 in avi", "counted.avi", "mpeg4");
    row("mjpeg in avi", "counted.avi", "mjpeg");
    row("raw mjpeg", "counted.mjpeg", "mjpeg");
    row("vp8 in webm", "counted.webm", "libvpx");
    row("vp9 in webm", "counted.webm", "libvpx-vp9", "-cpu-used 8");
    row("h264 in mp4, no reordering", "counted.mp4", "libx264", "-bf 0", {160, 90}, 90);
    row("h264 in mkv, no reordering", "counted.mkv", "libx264", "-bf 0 -pix_fmt yuv420p");
    row("one picture", "counted.mp4", "mpeg4", "", {160, 90}, 1);
    row("one picture in an image file", "counted.png", "png", "", {160, 90}, 1);
    row("161x91", "counted.avi", "mpeg4", "", {161, 91});
    row("854x480", "counted.avi", "mpeg4", "", {854, 480});
    row("100x50", "counted.avi", "mpeg4", "", {100, 50});
    row("426x240", "counted.avi", "mpeg4", "", {426, 240});
    row("16x1", "counted.mkv", "ffv1", "", {16, 1});
}

void TestVLVideoSourceFFMPEG::decoding_fillsCache()
{
    QFETCH(QString, fileName);
    QFETCH(QString, codec);
    QFETCH(QByteArray, extraOptions);
    QFETCH(QSize, size);
    QFETCH(int, frames);
    const QString path = clip(fileName, codec, frames, extraOptions.constData(), size);
    RecordedSource source;

    QVERIFY(source.decode(path));

    QCOMPARE(source.loadedFrameCount(), static_cast<quint64>(frames));
    QCOMPARE(source.totalFrameCount(), static_cast<quint64>(frames));
    QCOMPARE(QSizeF(source.frameWidth(), source.frameHeight()), QSizeF(size));
    const QList<VLVideoFrame> pictures = source.frames();
    for (const VLVideoFrame& picture : pictures) {
        QCOMPARE(picture.size(), size);
        QCOMPARE(picture.format(), QImage::Format_RGB32);
        QCOMPARE(transparentPixels(picture), 0);
    }
}

void TestVLVideoSourceFFMPEG::decoding_lacksWithheldPictures_whenCodecReordersThem_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QByteArray>("extraOptions");
    QTest::addColumn<int>("expectedFrames");

    // A decoder is not drained at the end, so what it holds back is lost.
    QTest::newRow("h264, defaults of the encoder") << u"libx264"_s << QByteArray() << 88;
    QTest::newRow("h264, no reordering") << u"libx264"_s << QByteArrayLiteral("-bf 0") << 90;
    QTest::newRow("mpeg4, reordering") << u"mpeg4"_s << QByteArrayLiteral("-bf 2") << 89;
}

void TestVLVideoSourceFFMPEG::decoding_lacksWithheldPictures_whenCodecReordersThem()
{
    QFETCH(QString, codec);
    QFETCH(QByteArray, extraOptions);
    QFETCH(int, expectedFrames);
    const QString path = clip(u"reordered.mp4"_s, codec, 90, extraOptions.constData());
    RecordedSource source;

    QVERIFY(source.decode(path));

    QCOMPARE(source.loadedFrameCount(), static_cast<quint64>(expectedFrames));
}

void TestVLVideoSourceFFMPEG::decoding_goesThroughSignalsInOrder()
{
    RecordedSource source;
    QVERIFY(source.decode(m_clip));
    QVERIFY(source.waitForIdles(kIdlesAfterEnd));
    QCOMPARE(source.events(),
             (QStringList{kLoad, kChanged, kLoaded, kDecode, kDecode, kEnded, kIdle, kIdle}));
}

void TestVLVideoSourceFFMPEG::decoding_leavesNeverSentSignalsAlone()
{
    RecordedSource source;
    QVERIFY(source.decode(m_clip));
    QCOMPARE(source.count(kReady), 0);
    QCOMPARE(source.count(kProgress), 0);
    QCOMPARE(source.count(kPosition), 0);
}

void TestVLVideoSourceFFMPEG::loadSource_runsOnSourceThread()
{
    RecordedSource source;
    QVERIFY(source.decode(m_clip));
    QCOMPARE(source.loadResults, QList<bool>{true});
    QCOMPARE(source.loadThread, static_cast<QThread*>(&source));
}

void TestVLVideoSourceFFMPEG::streamEnded_comesWithMediaClosedAndCacheComplete()
{
    RecordedSource source;
    source.holdAt(kEnded);
    source.setSource(QUrl::fromLocalFile(m_clip));
    source.start();
    QVERIFY(source.waitUntilHeld());

    QVERIFY(!source.isOpen());
    QCOMPARE(source.loadedFrameCount(), 10U);
    QCOMPARE(source.action(), VLVideoSource::ActionDecode);
}

void TestVLVideoSourceFFMPEG::properties_tellOfClip()
{
    const QString path = clip(u"ntsc.mp4"_s, u"mpeg4"_s, 60, "-r 30000/1001", {160, 90}, 30);
    RecordedSource source;
    source.holdAt(kLoaded);
    source.setSource(QUrl::fromLocalFile(path));
    source.start();
    QVERIFY(source.waitUntilHeld());

    QVERIFY(source.isOpen());
    QCOMPARE(source.loadedFrameCount(), 0U);
    QCOMPARE(source.frameRate(), 30000.0 / 1001.0);
    // The clip counts in ticks of which each frame takes 1001.
    QCOMPARE(source.timeBase(), 1.0 / 30000.0);
    QCOMPARE(source.duration(), 60.0 * 1001.0 / 30000.0);
    QCOMPARE(source.frameWidth(), 160.0);
    QCOMPARE(source.frameHeight(), 90.0);
    QCOMPARE(source.progress(), 0.0);
}

void TestVLVideoSourceFFMPEG::timeBase_isTickOfCodec_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QByteArray>("extraOptions");
    QTest::addColumn<double>("expectedSeconds");

    const auto row = [](const char* name, const char* fileName, const char* codec,
                        const QByteArray& extraOptions, double expectedSeconds) {
        QTest::newRow(name) << QString::fromLatin1(fileName) << QString::fromLatin1(codec)
                            << extraOptions << expectedSeconds;
    };
    // A frame may be two fields.
    row("h264 in mp4", "tick.mp4", "libx264", "", 1.0 / 60.0);
    row("h264 in mkv", "tick.mkv", "libx264", "", 1.0 / 60.0);
    row("h264 in avi", "tick.avi", "libx264", "-bf 0", 1.0 / 60.0);
    row("h264, ntsc", "ntsc.mp4", "libx264", "-r 30000/1001", 1001.0 / 60000.0);
    row("mpeg2", "tick.mkv", "mpeg2video", "", 1.0 / 60.0);
    row("mpeg1", "tick.mpg", "mpeg1video", "", 1.0 / 30.0);
    row("mpeg4 in mp4", "tick.mp4", "mpeg4", "", 1.0 / 30.0);
    row("mpeg4 in avi", "tick.avi", "mpeg4", "", 1.0 / 30.0);
    // The codec knows of no rate, and the stream counts in these.
    row("vp8", "tick.webm", "libvpx", "-deadline realtime", 1.0 / 1000.0);
    row("mjpeg in avi", "tick.avi", "mjpeg", "", 1.0 / 30.0);
}

void TestVLVideoSourceFFMPEG::timeBase_isTickOfCodec()
{
    QFETCH(QString, fileName);
    QFETCH(QString, codec);
    QFETCH(QByteArray, extraOptions);
    const QString path = clip(fileName, codec, 10, extraOptions.constData(), {160, 90}, 30);
    RecordedSource source;

    QVERIFY(source.decode(path));

    QTEST(source.timeBase(), "expectedSeconds");
}

void TestVLVideoSourceFFMPEG::properties_stay_whenClipHasEnded()
{
    RecordedSource source;
    QVERIFY(source.decode(m_clip));
    QVERIFY(!source.isOpen());
    QVERIFY(source.isFrameAvailable(9));
    QVERIFY(!source.isFrameAvailable(10));
    QCOMPARE(source.frameRate(), 25.0);
    QCOMPARE(source.timeBase(), 0.04);
    QCOMPARE(source.duration(), 0.4);
    QCOMPARE(source.frameWidth(), 160.0);
    QCOMPARE(source.frameHeight(), 90.0);
    QVERIFY(source.isRunning());
}

void TestVLVideoSourceFFMPEG::progress_isNewestStampByDuration()
{
    RecordedSource source;
    QVERIFY(source.decodeOnePicture(m_clip));
    QCOMPARE(source.progress(), 0.0);
    source.letGo();
    QVERIFY(source.waitForIdles(kIdlesAfterEnd));
    QCOMPARE(source.progress(), 0.36 / 0.4);
}

void TestVLVideoSourceFFMPEG::position_isAlwaysZero()
{
    RecordedSource source;
    QVERIFY(source.decodeOnePicture(m_clip));
    QCOMPARE(source.position(), 0U);
    source.changeSetPosition(3);
    QCOMPARE(source.position(), 0U);
    source.letGo();
    QVERIFY(source.waitForIdles(kIdlesAfterEnd));
    QCOMPARE(source.position(), 0U);
}

void TestVLVideoSourceFFMPEG::picture_equalsEncodedOne_whenCodecIsLossless_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QByteArray>("extraOptions");
    QTest::addColumn<QSize>("size");

    const struct
    {
        const char* name;
        const char* fileName;
        const char* codec;
        const char* extraOptions;
    } formats[] = {
        {"ffv1 bgr0", "lossless.mkv", "ffv1", "-pix_fmt bgr0"},
        {"png rgb24", "lossless.avi", "png", "-pix_fmt rgb24"},
        {"raw bgr24", "lossless.avi", "rawvideo", "-pix_fmt bgr24"},
        {"raw bgr0", "lossless.nut", "rawvideo", "-pix_fmt bgr0"},
        {"raw rgb24", "lossless.nut", "rawvideo", "-pix_fmt rgb24"},
        {"h264 planar", "lossless.mp4", "libx264rgb", "-qp 0 -bf 0"},
    };
    constexpr QSize kSizes[] = {{161, 91}, {854, 480}, {100, 50}, {3, 5}};
    for (const auto& format : formats) {
        for (const QSize& size : kSizes) {
            QTest::addRow("%s, %dx%d", format.name, size.width(), size.height())
                << QString::fromLatin1(format.fileName) << QString::fromLatin1(format.codec)
                << QByteArray(format.extraOptions) << size;
        }
    }
}

void TestVLVideoSourceFFMPEG::picture_equalsEncodedOne_whenCodecIsLossless()
{
    QFETCH(QString, fileName);
    QFETCH(QString, codec);
    QFETCH(QByteArray, extraOptions);
    QFETCH(QSize, size);
    const QList<QImage> images{noise(size, 0), noise(size, 1), noise(size, 2)};
    const QString path =
        m_clips.imageClip(fileName, codec, images, 25, options(extraOptions.constData()));
    RecordedSource source;

    QVERIFY(source.decode(path));

    const QList<VLVideoFrame> pictures = source.frames();
    QCOMPARE(pictures.size(), images.size());
    for (qsizetype i = 0; i < images.size(); ++i) {
        QCOMPARE(QImage(pictures.at(i)), images.at(i));
        QCOMPARE(transparentPixels(pictures.at(i)), 0);
    }
}

void TestVLVideoSourceFFMPEG::picture_isOpaque_whenClipIsTransparent()
{
    const QImage image = noise({33, 17}, 0, QImage::Format_ARGB32);
    const QString path = m_clips.imageClip(u"transparent.mkv"_s, u"png"_s, {image, image}, 25,
                                           options("-pix_fmt rgba"));
    RecordedSource source;

    QVERIFY(source.decode(path));

    QCOMPARE(source.loadedFrameCount(), 2U);
    const VLVideoFrame picture = source.getFrame(0);
    QCOMPARE(transparentPixels(picture), 0);
    for (int x = 0; x < image.width(); ++x)
        QCOMPARE(picture.pixel(x, 5), image.pixel(x, 5) | 0xFF000000U);
}

void TestVLVideoSourceFFMPEG::picture_isWrittenToLastColumnAndRow_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QByteArray>("extraOptions");
    QTest::addColumn<QSize>("size");

    const QList<QSize> evenSizes{{426, 240}, {18, 16}};
    const QList<QSize> someSizes{{161, 91}, {426, 240}, {17, 16}};
    // Blocks of 8 and 16 pixels that the row has no or just enough room for.
    const QList<QSize> allSizes{{161, 91}, {854, 480}, {100, 50}, {426, 240},
                                {17, 16},  {21, 32},   {33, 20},  {43, 16}};
    const struct
    {
        const char* name;
        const char* fileName;
        const char* codec;
        const char* extraOptions;
        QList<QSize> sizes;
    } formats[] = {
        {"mpeg4", "plain.avi", "mpeg4", "-q:v 2", someSizes},
        {"mjpeg", "plain.avi", "mjpeg", "-q:v 2", someSizes},
        {"ffv1 420", "plain.mkv", "ffv1", "-pix_fmt yuv420p", allSizes},
        {"ffv1 422", "plain.mkv", "ffv1", "-pix_fmt yuv422p", allSizes},
        {"ffv1 444", "plain.mkv", "ffv1", "-pix_fmt yuv444p", allSizes},
        {"vp8", "plain.webm", "libvpx", "-b:v 2M", someSizes},
        {"vp9", "plain.webm", "libvpx-vp9", "-b:v 2M -cpu-used 8", someSizes},
        {"h264", "plain.mp4", "libx264", "-bf 0 -pix_fmt yuv420p -qp 10", evenSizes},
    };
    for (const auto& format : formats) {
        for (const QSize& size : format.sizes) {
            QTest::addRow("%s, %dx%d", format.name, size.width(), size.height())
                << QString::fromLatin1(format.fileName) << QString::fromLatin1(format.codec)
                << QByteArray(format.extraOptions) << size;
        }
    }
}

void TestVLVideoSourceFFMPEG::picture_isWrittenToLastColumnAndRow()
{
    QFETCH(QString, fileName);
    QFETCH(QString, codec);
    QFETCH(QByteArray, extraOptions);
    QFETCH(QSize, size);
    QByteArray content;
    for (const VideoColor& color : kColors)
        content += plainPicture(size, color);
    const QString path = plainClip(fileName, codec, extraOptions, size, content);
    RecordedSource source;

    QVERIFY(source.decode(path));

    const QList<VLVideoFrame> pictures = source.frames();
    QCOMPARE(pictures.size(), qsizetype(std::size(kColors)));
    for (qsizetype i = 0; i < pictures.size(); ++i) {
        const int difference = greatestDifference(pictures.at(i), kColors[i].rgb);
        QVERIFY2(difference <= kGreatestLoss, qPrintable(QString::number(difference)));
    }
}

void TestVLVideoSourceFFMPEG::pictures_keepPixelsOfTheirOwn()
{
    RecordedSource source;
    QVERIFY(source.decode(m_clip));
    const QList<VLVideoFrame> pictures = source.frames();
    for (qsizetype i = 1; i < pictures.size(); ++i) {
        QVERIFY(pictures.at(i).constBits() != pictures.at(i - 1).constBits());
        QVERIFY(pictures.at(i) != pictures.at(i - 1));
    }
}

void TestVLVideoSourceFFMPEG::getFrame_sharesPixelsWithCache()
{
    RecordedSource source;
    QVERIFY(source.decode(m_clip));
    QCOMPARE(source.getFrame(4).constBits(), source.getFrame(4).constBits());
}

void TestVLVideoSourceFFMPEG::pictures_keepFirstSize_whenStreamChangesIt_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QByteArray>("extraOptions");
    QTest::addColumn<int>("headerSize");
    QTest::addColumn<QSize>("secondSize");

    const struct
    {
        const char* name;
        const char* extension;
        const char* codec;
        const char* extraOptions;
        int headerSize; ///< Of the file, which the second half goes without.
    } formats[] = {
        {"mjpeg", "mjpeg", "mjpeg", "-q:v 2", 0},
        {"h264", "h264", "libx264", "-bf 0 -pix_fmt yuv420p -qp 10", 0},
        {"mpeg4", "m4v", "mpeg4", "-q:v 2 -f m4v", 0},
        {"vp8", "ivf", "libvpx", "-b:v 2M", 32},
        {"vp9", "ivf", "libvpx-vp9", "-b:v 2M -cpu-used 8", 32},
    };
    constexpr QSize kSecondSizes[] = {{320, 240}, {96, 64}};
    for (const auto& format : formats) {
        for (const QSize& size : kSecondSizes) {
            QTest::addRow("%s to %dx%d", format.name, size.width(), size.height())
                << QString::fromLatin1(format.extension) << QString::fromLatin1(format.codec)
                << QByteArray(format.extraOptions) << format.headerSize << size;
        }
    }
}

void TestVLVideoSourceFFMPEG::pictures_keepFirstSize_whenStreamChangesIt()
{
    QFETCH(QString, extension);
    QFETCH(QString, codec);
    QFETCH(QByteArray, extraOptions);
    QFETCH(int, headerSize);
    QFETCH(QSize, secondSize);
    constexpr QSize kFirstSize(160, 96);
    constexpr int kPictures = 10;
    const QString first = u"first."_s + extension;
    const QString second = u"second."_s + extension;
    plainClip(first, codec, extraOptions, kFirstSize,
              plainPicture(kFirstSize, kColors[0]).repeated(kPictures));
    plainClip(second, codec, extraOptions, secondSize,
              plainPicture(secondSize, kColors[1]).repeated(kPictures));
    const QString path =
        m_clips.writeBytes(u"joined."_s + extension,
                           m_clips.readBytes(first) + m_clips.readBytes(second).mid(headerSize));
    RecordedSource source;

    QVERIFY(source.decode(path));

    const QList<VLVideoFrame> pictures = source.frames();
    QCOMPARE(pictures.size(), 2 * kPictures);
    for (qsizetype i = 0; i < pictures.size(); ++i) {
        QCOMPARE(pictures.at(i).size(), kFirstSize);
        const int difference =
            greatestDifference(pictures.at(i), kColors[i < kPictures ? 0 : 1].rgb);
        QVERIFY2(difference <= kGreatestLoss, qPrintable(QString::number(difference)));
    }
    QCOMPARE(QSizeF(source.frameWidth(), source.frameHeight()), QSizeF(kFirstSize));
}

void TestVLVideoSourceFFMPEG::stamps_riseByInverseFrameRate_data()
{
    QTest::addColumn<int>("fps");
    QTest::newRow("10") << 10;
    QTest::newRow("25") << 25;
    QTest::newRow("30") << 30;
    QTest::newRow("60") << 60;
}

void TestVLVideoSourceFFMPEG::stamps_riseByInverseFrameRate()
{
    QFETCH(int, fps);
    const QString path = clip(u"rate.mp4"_s, u"mpeg4"_s, 12, "", {160, 90}, fps);
    RecordedSource source;
    QVERIFY(source.decode(path));
    QCOMPARE(source.frameRate(), static_cast<double>(fps));
    QCOMPARE(source.stamps(), risingStamps(0.0, fps, 12));
}

void TestVLVideoSourceFFMPEG::stamps_ignoreTimesInFile_whenRateVaries()
{
    // Pictures at 25 a second for the first half, then every fifth of them.
    const QString path = m_clips.write(
        u"variable.mkv"_s,
        {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=size=160x90:rate=25:duration=4"_s, u"-vf"_s,
         u"select='lt(n,50)+not(mod(n,5))'"_s, u"-vsync"_s, u"vfr"_s, u"-c:v"_s, u"ffv1"_s});
    RecordedSource source;
    QVERIFY(source.decode(path));
    QCOMPARE(source.loadedFrameCount(), 60U);
    QVERIFY(source.frameRate() > 0.0);
    QCOMPARE(source.stamps(), risingStamps(0.0, source.frameRate(), 60));
}

void TestVLVideoSourceFFMPEG::stamps_continue_whenAnotherClipIsLoaded()
{
    RecordedSource source;
    QVERIFY(source.decode(m_clip));
    QVERIFY(source.decode(m_otherClip));
    const double end = risingStamps(0.0, 25.0, 11).constLast();
    QCOMPARE(source.stamps(), risingStamps(end, 10.0, 5));
}

void TestVLVideoSourceFFMPEG::stamps_ignoreOtherStreams()
{
    const QString path = m_clips.write(
        u"sound.mp4"_s,
        options("-f lavfi -i sine=duration=2 -f lavfi -i testsrc=size=160x90:rate=25:duration=1 "
                "-map 0:a -map 1:v -c:a aac -c:v mpeg4"));
    RecordedSource source;
    QVERIFY(source.decode(path));
    QCOMPARE(source.stamps(), risingStamps(0.0, 25.0, 25));
}

void TestVLVideoSourceFFMPEG::path_mayHoldAnyCharacters_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("blanks") << u"a clip with  blanks.mp4"_s;
    QTest::newRow("letters beyond ASCII") << QString::fromUtf8("Größe – Übung 映画.mp4");
    QTest::newRow("percent and hash") << u"100%20 #1 ?a=b.mp4"_s;
    QTest::newRow("colon") << u"http:clip.mp4"_s;
}

void TestVLVideoSourceFFMPEG::path_mayHoldAnyCharacters()
{
    QFETCH(QString, name);
    const QString path = m_clips.writeBytes(name, m_clips.readBytes(u"clip.mp4"_s));
    RecordedSource source;
    QVERIFY(source.decode(path));
    QCOMPARE(source.loadedFrameCount(), 10U);
}

void TestVLVideoSourceFFMPEG::decoding_endsAtLastWholePicture_whenFileIsCutOff_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QByteArray>("extraOptions");
    QTest::newRow("mpeg4 in avi") << u"whole.avi"_s << u"mpeg4"_s << QByteArray();
    QTest::newRow("mpeg4 in mp4") << u"whole.mp4"_s << u"mpeg4"_s
                                  << QByteArrayLiteral("-movflags +faststart");
    QTest::newRow("h264 in mkv") << u"whole.mkv"_s << u"libx264"_s << QByteArrayLiteral("-bf 0");
    QTest::newRow("vp8 in webm") << u"whole.webm"_s << u"libvpx"_s << QByteArray();
}

void TestVLVideoSourceFFMPEG::decoding_endsAtLastWholePicture_whenFileIsCutOff()
{
    QFETCH(QString, fileName);
    QFETCH(QString, codec);
    QFETCH(QByteArray, extraOptions);
    clip(fileName, codec, 60, extraOptions.constData());
    const QByteArray whole = m_clips.readBytes(fileName);
    const QString path = m_clips.writeBytes(u"cut-"_s + fileName, whole.left(whole.size() / 2));
    RecordedSource source;

    const DebugLines debug;
    QVERIFY(source.decode(path));

    QVERIFY(source.loadedFrameCount() > 0);
    QVERIFY(source.loadedFrameCount() < 60);
    QVERIFY(!source.isOpen());
    QCOMPARE(debug.lines(), QStringList());
}

void TestVLVideoSourceFFMPEG::decoding_sendsPacketAgain_whenDecoderRefusesIt()
{
    constexpr int kFrames = 20;
    constexpr int kDamaged = 10;
    clip(u"good.ivf"_s, u"libvpx-vp9"_s, kFrames,
         "-deadline realtime -cpu-used 8 -lag-in-frames 0 -auto-alt-ref 0");
    // The parts of the damaged packet fail one by one, and while some are left the decoder takes
    // no more than one packet behind them.
    const QString path = m_clips.writeBytes(
        u"refused.ivf"_s, withPacket(m_clips.readBytes(u"good.ivf"_s), kDamaged, brokenParts()));
    RecordedSource source;

    QVERIFY(source.decode(path));

    QCOMPARE(source.loadedFrameCount(), quint64(kFrames - 1));
}

void TestVLVideoSourceFFMPEG::decoding_survivesRandomBytes_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QByteArray>("extraOptions");
    QTest::addColumn<QByteArray>("marker");

    const auto row = [](const char* name, const char* fileName, const char* codec,
                        const QByteArray& extraOptions, const QByteArray& marker) {
        QTest::newRow(name) << QString::fromLatin1(fileName) << QString::fromLatin1(codec)
                            << extraOptions << marker;
    };
    const QByteArray cluster("\x1f\x43\xb6\x75");
    row("mpeg4 in avi", "good.avi", "mpeg4", "", "movi");
    row("mjpeg in avi", "good.avi", "mjpeg", "", "movi");
    row("h264 in avi", "good.avi", "libx264", "-bf 0", "movi");
    row("raw in avi", "good.avi", "rawvideo", "-pix_fmt bgr24", "movi");
    row("mpeg4 in mp4", "good.mp4", "mpeg4", "-movflags +faststart", "mdat");
    row("h264 in mp4", "good.mp4", "libx264", "-movflags +faststart", "mdat");
    row("ffv1 in mkv", "good.mkv", "ffv1", "", cluster);
    row("vp9 in webm", "good.webm", "libvpx-vp9", "-cpu-used 8", cluster);
}

void TestVLVideoSourceFFMPEG::decoding_survivesRandomBytes()
{
    QFETCH(QString, fileName);
    QFETCH(QString, codec);
    QFETCH(QByteArray, extraOptions);
    QFETCH(QByteArray, marker);
    clip(fileName, codec, 20, extraOptions.constData());
    const QByteArray good = m_clips.readBytes(fileName);
    const qsizetype start = good.indexOf(marker) + marker.size();
    QVERIFY(start > marker.size());
    const QString path = m_clips.writeBytes(u"random-"_s + fileName,
                                            good.left(start) + randomBytes(good.size() - start));
    RecordedSource source;

    const DebugLines debug;
    source.setSource(QUrl::fromLocalFile(path));
    source.start();

    // Either nothing can be made of it, or it comes to its end like any clip.
    QTRY_COMPARE_WITH_TIMEOUT(source.count(kEnded) + static_cast<int>(debug.lines().size()), 1,
                              kTimeoutMs);
    QTRY_COMPARE(source.action(), VLVideoSource::ActionIdle);
    QVERIFY(!source.isOpen());
    const QList<VLVideoFrame> pictures = source.frames();
    for (const VLVideoFrame& picture : pictures)
        QCOMPARE(QSizeF(picture.size()), QSizeF(source.frameWidth(), source.frameHeight()));
}

void TestVLVideoSourceFFMPEG::load_writesOneLineAndSendsNothing_whenItFails_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QString>("expectedLine");

    const auto row = [](const char* name, const QString& path, const char* message) {
        QTest::newRow(name) << QUrl::fromLocalFile(path) << QString::fromLatin1(message).arg(path);
    };
    const char* const notOpened = "Could not open media at: %1";
    row("missing file", m_clips.path(u"missing \"%1\" %2.avi"_s), notOpened);
    row("missing file, letters beyond ASCII", m_clips.path(QString::fromUtf8("fehlt – ü.avi")),
        notOpened);
    row("directory", QFileInfo(m_clip).path(), notOpened);
    row("empty file", m_clips.writeBytes(u"empty.avi"_s, {}), notOpened);
    row("no media", m_clips.writeBytes(u"noise.bin"_s, randomBytes(5000)), notOpened);
    QTest::newRow("not a local file")
        << QUrl(u"http://127.0.0.1/clip.mp4"_s) << u"Could not open media at: "_s;

    const char* const noVideo = "Could not find a video stream in %1";
    row("audio only", m_clips.write(u"sound.wav"_s, options("-f lavfi -i sine=duration=1")),
        noVideo);
    clip(u"good.avi"_s, u"mpeg4"_s, 5);
    row("unknown codec",
        m_clips.writeBytes(u"unknown.avi"_s,
                           m_clips.readBytes(u"good.avi"_s).replace("FMP4", "ZZZZ")),
        noVideo);

    clip(u"good.mkv"_s, u"ffv1"_s, 5, "-level 3");
    QByteArray badSetup = m_clips.readBytes(u"good.mkv"_s);
    constexpr qsizetype kSetupOffset = 24; // Of the codec's own header, from its name on.
    constexpr qsizetype kDamageSize = 20;
    badSetup.replace(badSetup.indexOf("FFV1", badSetup.indexOf("\x63\xa2")) + kSetupOffset,
                     kDamageSize, QByteArray(kDamageSize, '\xff'));
    row("damaged codec header", m_clips.writeBytes(u"setup.mkv"_s, badSetup),
        "Could not open codec for stream in: %1");

    // Nothing but the pictures would tell the format of a pixel.
    clip(u"good.avi"_s, u"libx264"_s, 5, "-bf 0");
    QByteArray noPictures = m_clips.readBytes(u"good.avi"_s);
    const qsizetype payload = noPictures.indexOf("movi") + 4;
    const qsizetype payloadSize = noPictures.size() - payload;
    noPictures.replace(payload, payloadSize, QByteArray(payloadSize, '\0'));
    const char* const noScaler = "Could not get a swscale context for %1";
    row("unknown pixel format", m_clips.writeBytes(u"format.avi"_s, noPictures), noScaler);
    constexpr qsizetype kSizeOffset = 12; // Of width and height in the header of the stream.
    noPictures.replace(noPictures.indexOf("strf") + kSizeOffset, 8, QByteArray(8, '\0'));
    row("no size", m_clips.writeBytes(u"size.avi"_s, noPictures), noScaler);
}

void TestVLVideoSourceFFMPEG::load_writesOneLineAndSendsNothing_whenItFails()
{
    QFETCH(QUrl, url);
    QFETCH(QString, expectedLine);
    RecordedSource source;

    const DebugLines debug;
    QVERIFY(source.failAt(url));
    QVERIFY(source.waitForIdles(kIdlesAfterFailure));

    QCOMPARE(debug.lines(), QStringList{expectedLine});
    QCOMPARE(source.events(), (QStringList{kLoad, kChanged, kDecode, kIdle, kIdle, kIdle}));
    QCOMPARE(source.loadResults, QList<bool>{false});
    QVERIFY(!source.isOpen());
    QCOMPARE(source.loadedFrameCount(), 0U);
    QVERIFY(source.getFrame(0).isNull());
    QCOMPARE(source.source(), url);
}

void TestVLVideoSourceFFMPEG::load_succeeds_afterOneThatFailed()
{
    RecordedSource source;
    const DebugLines debug;
    QVERIFY(source.failAt(QUrl::fromLocalFile(m_clips.path(u"missing.avi"_s))));
    QVERIFY(source.decode(m_clip));
    QCOMPARE(source.stamps(), risingStamps(0.0, 25.0, 10));
    QCOMPARE(debug.lines().size(), 1);
}

void TestVLVideoSourceFFMPEG::frameSize_staysOfLastClip_whenLoadFails()
{
    RecordedSource source;
    const DebugLines debug;
    QVERIFY(source.decode(m_clip));
    QVERIFY(source.failAt(QUrl::fromLocalFile(m_clips.path(u"missing.avi"_s))));
    QCOMPARE(source.frameWidth(), 160.0);
    QCOMPARE(source.frameHeight(), 90.0);
    QCOMPARE(source.loadedFrameCount(), 0U);
}

void TestVLVideoSourceFFMPEG::loadSource_closesMedia_whenUrlIsEmpty()
{
    RecordedSource source;
    QVERIFY(source.decodeOnePicture(m_clip));
    source.changeSetSource(QUrl());
    source.setAction(VLVideoSource::ActionLoad);
    source.letGo();

    QVERIFY(source.waitForIdles(1));

    QVERIFY(!source.isOpen());
    QCOMPARE(source.loadResults, (QList<bool>{true, false}));
    QCOMPARE(source.closings, 1);
    QCOMPARE(source.count(kChanged), 1);
    QCOMPARE(source.count(kLoaded), 1);
    QCOMPARE(source.count(kEnded), 0);
    QVERIFY(source.isFrameAvailable(0));
}

void TestVLVideoSourceFFMPEG::setSource_replacesCache_whenClipHasEnded()
{
    RecordedSource source;
    QVERIFY(source.decode(m_clip));
    const VLVideoFrame kept = source.getFrame(9);
    const QImage pixels = kept.copy();

    QVERIFY(source.decode(m_otherClip));

    QCOMPARE(source.loadedFrameCount(), 5U);
    QCOMPARE(source.getFrame(0).size(), QSize(100, 50));
    QCOMPARE(QSizeF(source.frameWidth(), source.frameHeight()), QSizeF(100, 50));
    QCOMPARE(QImage(kept), pixels);

    QVERIFY(source.decode(m_clip));
    QCOMPARE(source.loadedFrameCount(), 10U);
    QCOMPARE(source.loadResults.size(), 3);
}

void TestVLVideoSourceFFMPEG::setSource_abandonsClip_whileDecoding()
{
    RecordedSource source;
    QVERIFY(source.decodeOnePicture(m_longClip));
    QCOMPARE(source.loadedFrameCount(), 1U);
    QVERIFY(source.isOpen());

    QVERIFY(source.setSource(QUrl::fromLocalFile(m_otherClip)));
    QCOMPARE(source.source(), QUrl::fromLocalFile(m_longClip));
    source.letGo();
    QVERIFY(source.waitForIdles(kIdlesAfterEnd));

    QCOMPARE(source.source(), QUrl::fromLocalFile(m_otherClip));
    QCOMPARE(source.loadedFrameCount(), 5U);
    QCOMPARE(source.count(kChanged), 2);
    QCOMPARE(source.count(kLoaded), 2);
    QCOMPARE(source.count(kEnded), 1);
}

void TestVLVideoSourceFFMPEG::setSource_isRefusedAndKeepsFrames_whenSetAgain()
{
    RecordedSource source;
    QVERIFY(source.decode(m_clip));
    QVERIFY(!source.setSource(QUrl::fromLocalFile(m_clip)));
    QVERIFY(!source.setSource(QUrl()));
    QCOMPARE(source.loadedFrameCount(), 10U);
}

void TestVLVideoSourceFFMPEG::setSource_loadsTwice_whenSetTwiceInARow()
{
    RecordedSource source;
    QVERIFY(source.setSource(QUrl::fromLocalFile(m_clip)));
    QVERIFY(source.setSource(QUrl::fromLocalFile(m_clip)));
    source.start();

    QVERIFY(source.waitForIdles(kIdlesAfterEnd));

    QCOMPARE(source.events(),
             (QStringList{kLoad, kChanged, kLoaded, kLoad, kChanged, kLoaded, kDecode, kDecode,
                          kDecode, kDecode, kEnded, kIdle, kIdle}));
    QCOMPARE(source.loadedFrameCount(), 10U);
}

void TestVLVideoSourceFFMPEG::close_stopsDecodingAndKeepsFrames()
{
    RecordedSource source;
    QVERIFY(source.decodeOnePicture(m_longClip));
    QVERIFY(source.isOpen());

    source.close();
    QVERIFY(!source.isOpen());
    QCOMPARE(source.action(), VLVideoSource::ActionDecode);
    source.letGo();
    QVERIFY(source.waitForIdles(kIdlesAfterEnd));

    QCOMPARE(source.loadedFrameCount(), 1U);
    QCOMPARE(source.count(kEnded), 0);
    QCOMPARE(source.source(), QUrl::fromLocalFile(m_longClip));
    QCOMPARE(source.frameWidth(), 320.0);
}

void TestVLVideoSourceFFMPEG::close_isHarmless_withoutMedia()
{
    RecordedSource source;
    source.close();
    QVERIFY(source.decode(m_clip));
    source.close();
    source.close();
    QVERIFY(!source.isOpen());
    QCOMPARE(source.loadedFrameCount(), 10U);
}

void TestVLVideoSourceFFMPEG::close_mayComeFromAnyThread_whileDecoding()
{
    constexpr int kRounds = 40;
    int closedInTime = 0;
    for (int i = 0; i < kRounds; ++i) {
        RecordedSource source;
        source.setSource(QUrl::fromLocalFile(m_longClip));
        source.start();
        // Another moment of the decoding in each round.
        const quint64 pictures = static_cast<quint64>(i) / 2;
        while (!source.isFrameAvailable(pictures))
            QThread::yieldCurrentThread();
        source.close();

        QVERIFY(!source.isOpen());
        QVERIFY(source.waitForIdles(kIdlesAfterEnd));
        QCOMPARE(source.stamps(),
                 risingStamps(0.0, 25.0, static_cast<qsizetype>(source.loadedFrameCount())));
        closedInTime += source.count(kEnded) == 0;
    }
    QVERIFY(closedInTime > 0);
}

void TestVLVideoSourceFFMPEG::actionLoad_isRepeatedUntilAnotherIsSet()
{
    StandingSource source;
    source.setAction(VLVideoSource::ActionLoad);
    source.start();
    QTRY_VERIFY(source.loads > 2);
    source.quit();
    QCOMPARE(source.action(), VLVideoSource::ActionLoad);
}

void TestVLVideoSourceFFMPEG::actionQuit_endsThread()
{
    RecordedSource source;
    source.setAction(VLVideoSource::ActionQuit);
    source.start();
    QVERIFY(source.wait(kTimeoutMs));
    QVERIFY(!source.shouldQuit());
}

void TestVLVideoSourceFFMPEG::actionClose_closesMediaAndIdles()
{
    RecordedSource source;
    QVERIFY(source.decodeOnePicture(m_clip));
    source.setAction(VLVideoSource::ActionClose);
    source.letGo();
    // The picture of the record at which it was held comes first.
    QVERIFY(source.waitForIdles(1));
    QCOMPARE(source.events().mid(5), (QStringList{kClose, kIdle}));
    QVERIFY(!source.isOpen());
    QCOMPARE(source.closings, 1);
    QCOMPARE(source.loadedFrameCount(), 2U);
}

void TestVLVideoSourceFFMPEG::actionSeek_goesToStart_withMedia()
{
    RecordedSource source;
    QVERIFY(source.decodeOnePicture(m_clip));
    source.setAction(VLVideoSource::ActionSeek);
    source.setAction(VLVideoSource::ActionDecode);
    source.letGo();
    QVERIFY(source.waitForIdles(kIdlesAfterEnd));

    // Two pictures were decoded before; the clock knows nothing of the seek.
    QCOMPARE(source.count(kSeek), 1);
    QCOMPARE(source.stamps(), risingStamps(0.0, 25.0, 12));
    QCOMPARE(QImage(source.getFrame(2)), QImage(source.getFrame(0)));
}

void TestVLVideoSourceFFMPEG::actionSeek_idles_withoutMedia()
{
    RecordedSource source;
    source.setAction(VLVideoSource::ActionSeek);
    source.start();
    QVERIFY(source.waitForIdles(1));
    QCOMPARE(source.events(), (QStringList{kSeek, kIdle}));
}

void TestVLVideoSourceFFMPEG::changeSetPosition_seeksForwardToNextKeyPicture()
{
    RecordedSource source;
    QVERIFY(source.decodeOnePicture(m_groupedClip));
    source.changeSetPosition(30);
    QCOMPARE(source.events().constLast(), kPosition);
    source.letGo();
    QVERIFY(source.waitForIdles(kIdlesAfterEnd));

    // From the key picture 36 on, stamped as if it were 30.
    QCOMPARE(source.stamps(), QList<double>{0.0} + risingStamps(30.0 / 25.0, 25.0, 14));
}

void TestVLVideoSourceFFMPEG::changeSetPosition_seeksBackwardToKeyPictureBefore()
{
    RecordedSource source;
    QVERIFY(source.decodeOnePicture(m_groupedClip));
    source.changeSetPosition(30);
    source.changeSetPosition(20);
    source.letGo();
    QVERIFY(source.waitForIdles(kIdlesAfterEnd));

    // From the key picture 12 on, stamped as if it were 20.
    QCOMPARE(source.stamps(), QList<double>{0.0} + risingStamps(20.0 / 25.0, 25.0, 38));
    QCOMPARE(source.count(kPosition), 2);
}

void TestVLVideoSourceFFMPEG::changeSetPosition_resetsClockAndProgress_withoutMedia()
{
    RecordedSource source;
    QVERIFY(source.decode(m_clip));
    source.changeSetPosition(5);
    QCOMPARE(source.progress(), 0.0);
    QCOMPARE(source.count(kPosition), 1);
    QCOMPARE(source.loadedFrameCount(), 10U);

    QVERIFY(source.decode(m_otherClip));
    QCOMPARE(source.stamps(), risingStamps(0.0, 10.0, 5));
}

void TestVLVideoSourceFFMPEG::run_returnsAtOnce_whenAlreadyToldToQuit()
{
    RecordedSource source;
    source.setSource(QUrl::fromLocalFile(m_clip));
    source.setShouldQuit();
    source.start();
    QVERIFY(source.wait(kTimeoutMs));
    QCOMPARE(source.events(), QStringList());
    QCOMPARE(source.source(), QUrl());
}

void TestVLVideoSourceFFMPEG::quit_comesInTime_data()
{
    QTest::addColumn<bool>("decodes");
    QTest::newRow("idle") << false;
    QTest::newRow("decoding") << true;
}

void TestVLVideoSourceFFMPEG::quit_comesInTime()
{
    QFETCH(bool, decodes);
    RecordedSource source;
    if (decodes) {
        QVERIFY(source.decodeOnePicture(m_longClip));
        source.letGo();
    } else {
        source.start();
    }

    const DebugLines debug;
    QElapsedTimer timer;
    timer.start();
    source.quit();

    constexpr qint64 kGenerousMs = 5000;
    QVERIFY2(timer.elapsed() < kGenerousMs, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(source.isFinished());
    QVERIFY(source.shouldQuit());
    QCOMPARE(debug.lines(), QStringList());
    QCOMPARE(source.isOpen(), decodes);
    QVERIFY(source.loadedFrameCount() < 300U);
    source.close();
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLVideoSourceFFMPEG>(argc, argv);
}

#include "tst_vlvideosourceffmpeg.moc"
