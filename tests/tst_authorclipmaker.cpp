// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipWriter.h"
#include "VidletsTest.h"
#include <Vidlets/VLVideoSourceFFMPEG.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>

#include <VidletsAuthor/AuthorClipMaker.h>
#include <VidletsAuthor/AuthorClipReader.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

constexpr int kTimeoutMs = 60'000;

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts);
}

bool goOn(double share)
{
    return share >= 0.0 && share <= 1.0;
}

AuthorClipOrder orderOf(const QString& in, const QString& out = QString(), double from = -1.0,
                        double to = -1.0)
{
    return {in, out, {}, 0.0, from, to};
}

/// The pictures that the library gives of a clip.
QList<QImage> picturesOf(const QString& path)
{
    VLVideoSourceFFMPEG source;
    QSignalSpy ended(&source, &VLVideoSource::streamEnded);
    source.setSource(QUrl::fromLocalFile(path));
    source.start();
    QList<QImage> pictures;
    if (!QTest::qWaitFor([&ended] { return !ended.isEmpty(); }, kTimeoutMs))
        return pictures;
    for (quint64 i = 0; i < source.loadedFrameCount(); ++i)
        pictures.append(source.getFrame(static_cast<unsigned int>(i)));
    return pictures;
}

/// Pictures of which each is a little lighter than the one before.
QList<QImage> stairs(int count)
{
    QList<QImage> images;
    for (int i = 0; i < count; ++i) {
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(QColor(10 * i, 10 * i, 10 * i));
        images.append(image);
    }
    return images;
}

/// Which of the stairs() the pictures are.
QString stepsOf(const QList<QImage>& pictures)
{
    QStringList steps;
    for (const QImage& picture : pictures)
        steps.append(QString::number(qRound(qGray(picture.pixel(32, 24)) / 10.0)));
    return steps.join(u' ');
}

/// Has the film in an MP4 file stand on its side.
QByteArray rotated(QByteArray bytes)
{
    constexpr qsizetype kMatrixOffset = 4 + 40;
    const QByteArray matrix = QByteArray::fromHex("000000000001000000000000"
                                                  "ffff00000000000000000000"
                                                  "000000000000000040000000");
    const qsizetype header = bytes.indexOf("tkhd");
    if (header < 0)
        qFatal("There is no track in the clip");
    return bytes.replace(header + kMatrixOffset, matrix.size(), matrix);
}

} // namespace

class TestAuthorClipMaker : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void secondsOf_readsTimes();
    void sizeOf_isEven();
    void make_givesClipThatPlaysToItsEnd_data();
    void make_givesClipThatPlaysToItsEnd();
    void make_cutsToThePicture_data();
    void make_cutsToThePicture();
    void make_showsWhatWasOnShow_whenRateChanges();
    void make_setsClipUpright();
    void make_takesNewNameBesideRecording();
    void make_replacesNamedClip();
    void make_refuses_whenClipWouldReplaceRecording_data();
    void make_refuses_whenClipWouldReplaceRecording();
    void make_refuses_whenProgramIsMissing();
    void make_refuses_whenThereIsNothingToDo();
    void make_leavesNothingBehind_whenItFails();
    void make_leavesNothingBehind_whenStopped();

private:
    QString recording(const char* file, const char* codec, const char* options = "",
                      QSize size = {64, 48}, int rate = 25, int pictures = 40);

    ClipWriter m_clips;
};

QString TestAuthorClipMaker::recording(const char* file, const char* codec, const char* options,
                                       QSize size, int rate, int pictures)
{
    return m_clips.testClip(QString::fromLatin1(file), QString::fromLatin1(codec), size, rate,
                            pictures, words(options));
}

void TestAuthorClipMaker::secondsOf_readsTimes()
{
    QCOMPARE(AuthorClipMaker::secondsOf(u"1.5"_s).value_or(-1), 1.5);
    QCOMPARE(AuthorClipMaker::secondsOf(u"90"_s).value_or(-1), 90.0);
    QCOMPARE(AuthorClipMaker::secondsOf(u"2:03.25"_s).value_or(-1), 123.25);
    QCOMPARE(AuthorClipMaker::secondsOf(u"1:00:01"_s).value_or(-1), 3601.0);
    for (const QString& text : {u""_s, u"-1"_s, u"1,5"_s, u"1:"_s, u"a"_s, u"1:2:3:4"_s, u"nan"_s})
        QVERIFY2(!AuthorClipMaker::secondsOf(text), qPrintable(text));
}

void TestAuthorClipMaker::sizeOf_isEven()
{
    QCOMPARE(AuthorClipMaker::sizeOf(u"320x180"_s).value_or(QSize()), QSize(320, 180));
    QCOMPARE(AuthorClipMaker::sizeOf(u"321x181"_s).value_or(QSize()), QSize(320, 180));
    for (const QString& text : {u""_s, u"320"_s, u"320x"_s, u"1x1"_s, u"0x180"_s, u"-2x180"_s,
                                u"99999x2"_s, u"320x180x2"_s})
        QVERIFY2(!AuthorClipMaker::sizeOf(text), qPrintable(text));
}

void TestAuthorClipMaker::make_givesClipThatPlaysToItsEnd_data()
{
    QTest::addColumn<QString>("in");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("fps");
    QTest::addColumn<int>("pictures");
    QTest::addColumn<QSize>("madeSize");
    QTest::addColumn<double>("madeRate");

    const auto row = [](const char* name, const QString& in, const char* out, int pictures,
                        double rate, QSize madeSize = {64, 48}, QSize size = {}, double fps = 0.0) {
        QTest::newRow(name) << in << QString::fromLatin1(out) << size << fps << pictures << madeSize
                            << rate;
    };
    const QString reordered = recording("in.mp4", "libx264", "-bf 3 -pix_fmt yuv420p");
    row("reordered pictures", reordered, "out.mp4", 40, 25);
    row("VP8", reordered, "out.webm", 40, 25);
    row("smaller", reordered, "out.mp4", 40, 25, {32, 24}, {32, 24});
    row("slower", reordered, "out.mp4", 16, 10, {64, 48}, {}, 10);
    row("faster", reordered, "out.webm", 80, 50, {64, 48}, {}, 50);
    row("odd", recording("odd.mkv", "ffv1", "", {63, 47}), "out.mp4", 40, 25, {62, 46});
    row("above 60", recording("fast.mkv", "libx264", "", {64, 48}, 120), "out.mp4", 20, 60);
    row("fraction", recording("ntsc.mp4", "mpeg4", "-r 30000/1001"), "out.mp4", 40, 30000 / 1001.0);
    row("a stream that begins later", recording("in.ts", "libx264"), "out.mp4", 40, 25);
    row("no square pixels", recording("wide.mp4", "libx264", "-vf setsar=2"), "out.mp4", 40, 25,
        {128, 48});
    row("colours of a screen", recording("rgb.mkv", "libx264rgb"), "out.mp4", 40, 25);
    row("few pictures", recording("few.mkv", "libx264", "", {64, 48}, 5, 3), "out.mp4", 3, 5);
    row("one picture", recording("one.mp4", "libx264", "", {64, 48}, 25, 1), "out.mp4", 1, 25);
    row("a name like an address", recording("http:a%d.mp4", "libx264"), "out.mp4", 40, 25);
    row("sound",
        m_clips.write(u"sound.mp4"_s,
                      words("-f lavfi -i testsrc=size=64x48:rate=25:duration=2 -f lavfi -i "
                            "sine=duration=2 -c:v libx264 -c:a aac")),
        "out.mp4", 50, 25);
}

void TestAuthorClipMaker::make_givesClipThatPlaysToItsEnd()
{
    QFETCH(const QString, in);
    QFETCH(const QString, out);
    QFETCH(const QSize, size);
    QFETCH(const double, fps);
    QFETCH(const int, pictures);
    QFETCH(const QSize, madeSize);
    QFETCH(const double, madeRate);
    const AuthorClipOrder order{in, m_clips.path(out), size, fps};
    AuthorClipMaker maker(order);

    const auto outcome = maker.make(goOn);

    QCOMPARE(maker.reason(), QString());
    QCOMPARE(outcome, AuthorClipMaker::Outcome::Made);
    const AuthorClip clip = AuthorClipReader::read(order.out);
    QCOMPARE(clip.fault, QString());
    QCOMPARE(clip.size, madeSize);
    QCOMPARE(clip.pictures, qint64(pictures));
    QCOMPARE(clip.lost, qint64(0));
    QVERIFY(!clip.hasSound);
    QVERIFY(clip.isUsualCodec);
    QVERIFY(clip.isSteady);
    QVERIFY2(qAbs(clip.rate - madeRate) < 0.01, qPrintable(QString::number(clip.rate)));
    QCOMPARE(picturesOf(order.out).size(), qsizetype(pictures));
    QCOMPARE(maker.after().pictures, qint64(pictures));
    QCOMPARE(maker.after().memoryBytes,
             qint64(pictures) * madeSize.width() * madeSize.height() * 4);
    QCOMPARE(maker.after().fileBytes, QFileInfo(order.out).size());
    const QByteArray bytes = m_clips.readBytes(out);
    // What a player has to know comes first.
    if (out.endsWith(".mp4"_L1))
        QVERIFY(bytes.indexOf("moov") < bytes.indexOf("mdat"));
}

void TestAuthorClipMaker::make_cutsToThePicture_data()
{
    QTest::addColumn<QString>("in");
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<QString>("steps");

    const auto options = words("-bf 2 -qp 1 -pix_fmt yuv420p");
    const QString mp4 = m_clips.imageClip(u"stairs.mp4"_s, u"libx264"_s, stairs(20), 25, options);
    const QString ts = m_clips.imageClip(u"stairs.ts"_s, u"libx264"_s, stairs(20), 25, options);
    // So slow that the place is looked for from behind the beginning of the file.
    const QString slow =
        m_clips.imageClip(u"slow.mkv"_s, u"libx264"_s, stairs(20), 1, options + words("-g 5"));
    const auto row = [](const char* name, const QString& in, double from, double to,
                        const char* steps) {
        QTest::newRow(name) << in << from << to << QString::fromLatin1(steps);
    };
    row("from a picture to another", mp4, 0.2, 0.4, "5 6 7 8 9");
    row("between pictures", mp4, 0.19, 0.39, "5 6 7 8 9");
    row("one picture", mp4, 0.2, 0.24, "5");
    row("to the end", mp4, 0.68, -1, "17 18 19");
    row("to behind the end", mp4, 0.68, 100, "17 18 19");
    row("from the beginning", mp4, -1, 0.08, "0 1");
    row("a stream that begins later", ts, 0.2, 0.32, "5 6 7");
    row("far behind the beginning", slow, 13, 16, "13 14 15");
}

void TestAuthorClipMaker::make_cutsToThePicture()
{
    QFETCH(const QString, in);
    QFETCH(const double, from);
    QFETCH(const double, to);
    QFETCH(const QString, steps);
    const AuthorClipOrder order{in, m_clips.path(u"cut.mp4"_s), {}, 0.0, from, to};
    AuthorClipMaker maker(order);

    QCOMPARE(maker.make(goOn), AuthorClipMaker::Outcome::Made);

    QCOMPARE(stepsOf(picturesOf(order.out)), steps);
}

/// A recorder of the screen leaves out what does not change.
void TestAuthorClipMaker::make_showsWhatWasOnShow_whenRateChanges()
{
    const QString in = m_clips.imageClip(
        u"changing.mkv"_s, u"libx264"_s, stairs(20), 10,
        words("-vf select=not(between(n\\,4\\,12)) -fps_mode vfr -qp 1 -pix_fmt yuv420p"));
    const QList<std::pair<AuthorClipOrder, QString>> rows{
        {orderOf(in, m_clips.path(u"changed.mp4"_s), 1.0, 1.5), u"3 3 3 13 14"_s},
        {orderOf(in, m_clips.path(u"end.mp4"_s), 1.0), u"3 3 3 13 14 15 16 17 18 19"_s},
        {orderOf(in, m_clips.path(u"whole.webm"_s)),
         u"0 1 2 3 3 3 3 3 3 3 3 3 3 13 14 15 16 17 18 19"_s}};
    for (const auto& [order, steps] : rows) {
        AuthorClipMaker maker(order);
        QCOMPARE(maker.make(goOn), AuthorClipMaker::Outcome::Made);
        QCOMPARE(stepsOf(picturesOf(order.out)), steps);
    }
}

void TestAuthorClipMaker::make_setsClipUpright()
{
    recording("lying.mp4", "libx264", "-pix_fmt yuv420p");
    const QString in =
        m_clips.writeBytes(u"standing.mp4"_s, rotated(m_clips.readBytes(u"lying.mp4"_s)));
    const AuthorClipOrder order = orderOf(in, m_clips.path(u"upright.mp4"_s));
    AuthorClipMaker maker(order);

    QCOMPARE(maker.make(goOn), AuthorClipMaker::Outcome::Made);

    const QList<QImage> pictures = picturesOf(order.out);
    QCOMPARE(pictures.size(), 40);
    QCOMPARE(pictures.constFirst().size(), QSize(48, 64));
}

void TestAuthorClipMaker::make_takesNewNameBesideRecording()
{
    const QString in = recording("film.mkv", "libx264");
    const AuthorClipOrder order = orderOf(in);

    AuthorClipMaker first(order);
    QCOMPARE(first.make(goOn), AuthorClipMaker::Outcome::Made);
    AuthorClipMaker second(order);
    QCOMPARE(second.make(goOn), AuthorClipMaker::Outcome::Made);

    QCOMPARE(first.out(), m_clips.path(u"film.mp4"_s));
    QCOMPARE(second.out(), m_clips.path(u"film-2.mp4"_s));
    QCOMPARE(AuthorClipReader::read(second.out()).pictures, qint64(40));
    QVERIFY(QFile::permissions(first.out()).testFlag(QFile::ReadGroup));
}

void TestAuthorClipMaker::make_replacesNamedClip()
{
    const QString in = recording("again.mp4", "libx264", "-bf 3");
    const QString out = m_clips.path(u"there.mp4"_s);
    QVERIFY(QFile::copy(in, out));
    AuthorClipMaker maker(orderOf(in, out));

    QCOMPARE(maker.make(goOn), AuthorClipMaker::Outcome::Made);

    QCOMPARE(AuthorClipReader::read(out).lost, qint64(0));
    QCOMPARE(AuthorClipReader::read(out).pictures, qint64(40));
}

void TestAuthorClipMaker::make_refuses_whenClipWouldReplaceRecording_data()
{
    QTest::addColumn<QString>("in");
    QTest::addColumn<QString>("out");

    QTest::newRow("its name") << u"own.mp4"_s << u"own.mp4"_s;
    QTest::newRow("another way to it") << u"own.mp4"_s << u"folder/../own.mp4"_s;
    QTest::newRow("link to it") << u"own.mp4"_s << u"link.mp4"_s;
    QTest::newRow("link as recording") << u"link.mp4"_s << u"own.mp4"_s;
    QTest::newRow("directory by a link") << u"own.mp4"_s << u"linked/own.mp4"_s;
    QTest::newRow("another name of it") << u"own.mp4"_s << u"hard.mp4"_s;
}

void TestAuthorClipMaker::make_refuses_whenClipWouldReplaceRecording()
{
    QFETCH(const QString, in);
    QFETCH(const QString, out);
    ClipWriter clips;
    const QString own = clips.testClip(u"own.mp4"_s, u"libx264"_s, {64, 48}, 25, 50);
    QVERIFY(QDir(clips.path(QString())).mkdir(u"folder"_s));
    QVERIFY(QFile::link(own, clips.path(u"link.mp4"_s)));
    QVERIFY(QFile::link(clips.path(QString()), clips.path(u"linked"_s)));
    QCOMPARE(::link(QFile::encodeName(own).constData(),
                    QFile::encodeName(clips.path(u"hard.mp4"_s)).constData()),
             0);
    QFile file(own);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    AuthorClipMaker maker(orderOf(clips.path(in), clips.path(out), 0.0, 1.0));

    QCOMPARE(maker.make(goOn), AuthorClipMaker::Outcome::Refused);

    QVERIFY2(maker.reason().contains("is the recording itself"_L1), qPrintable(maker.reason()));
    file.close();
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll() == before);
}

void TestAuthorClipMaker::make_refuses_whenProgramIsMissing()
{
    const QTemporaryDir empty;
    const QString in = recording("in.mp4", "libx264");
    AuthorClipMaker maker(orderOf(in), {empty.path()});

    QCOMPARE(maker.make(goOn), AuthorClipMaker::Outcome::Refused);

    QVERIFY2(maker.reason().contains("apt install ffmpeg"_L1), qPrintable(maker.reason()));
}

void TestAuthorClipMaker::make_refuses_whenThereIsNothingToDo()
{
    const QString in = recording("in.mp4", "libx264");
    const QString out = m_clips.path(u"out.mp4"_s);
    const QList<AuthorClipOrder> orders{orderOf(u"/nowhere.mp4"_s),
                                        orderOf(m_clips.path(QString())),
                                        orderOf(u"/dev/zero"_s),
                                        orderOf(in, m_clips.path(u"out.gif"_s)),
                                        orderOf(in, u"/nowhere/out.mp4"_s),
                                        orderOf(in, out, 2.0, 2.0),
                                        orderOf(in, out, -1.0, 0.0)};
    for (const AuthorClipOrder& order : orders) {
        AuthorClipMaker maker(order);
        QCOMPARE(maker.make(goOn), AuthorClipMaker::Outcome::Refused);
        QVERIFY(!maker.reason().isEmpty());
    }
}

void TestAuthorClipMaker::make_leavesNothingBehind_whenItFails()
{
    ClipWriter files;
    files.writeBytes(u"text.mp4"_s, "no recording");
    files.testClip(u"film.mp4"_s, u"libx264"_s);
    files.write(u"sound.mp4"_s, words("-f lavfi -i sine=duration=1 -c:a aac"));
    const QList<AuthorClipOrder> orders{orderOf(files.path(u"text.mp4"_s)),
                                        orderOf(files.path(u"sound.mp4"_s)),
                                        orderOf(files.path(u"film.mp4"_s), {}, 1000.0, 1001.0)};
    const auto entries = [&files] {
        return QDir(files.path(QString())).entryList(QDir::Files | QDir::Hidden);
    };
    const QStringList before = entries();
    for (const AuthorClipOrder& order : orders) {
        AuthorClipMaker maker(order);
        QCOMPARE(maker.make(goOn), AuthorClipMaker::Outcome::Failed);
        QVERIFY(!maker.reason().isEmpty());
    }
    QCOMPARE(entries(), before);
}

void TestAuthorClipMaker::make_leavesNothingBehind_whenStopped()
{
    ClipWriter files;
    const QString in = files.testClip(u"film.mp4"_s, u"libx264"_s);
    AuthorClipMaker maker(orderOf(in));

    QCOMPARE(maker.make([](double) { return false; }), AuthorClipMaker::Outcome::Stopped);

    QCOMPARE(QDir(files.path(QString())).entryList(QDir::Files | QDir::Hidden),
             QStringList{u"film.mp4"_s});
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorClipMaker>(argc, argv);
}

#include "tst_authorclipmaker.moc"
