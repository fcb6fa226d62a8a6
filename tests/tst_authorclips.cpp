// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipWriter.h"
#include "VidletsTest.h"
#include <Vidlets/VLVideoSourceFFMPEG.h>

#include <QFile>
#include <QRandomGenerator>
#include <QSignalSpy>

#include <VidletsAuthor/AuthorClips.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

constexpr qint64 kLimitBytes = qint64(256) * 1024 * 1024;
constexpr int kTimeoutMs = 60'000;

/// The rules that find something in a clip.
QStringList rulesOf(const QString& path, qint64 limitBytes = kLimitBytes)
{
    AuthorFindings findings;
    AuthorClips(findings).check(path, limitBytes);
    QStringList rules;
    for (const AuthorFinding& finding : findings.all())
        rules.append(finding.rule);
    rules.sort();
    return rules;
}

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts);
}

/// How many pictures the library gives.
qint64 picturesOfLibrary(const QString& path)
{
    VLVideoSourceFFMPEG source;
    QSignalSpy ended(&source, &VLVideoSource::streamEnded);
    source.setSource(QUrl::fromLocalFile(path));
    source.start();
    if (!QTest::qWaitFor([&ended] { return !ended.isEmpty(); }, kTimeoutMs))
        return -1;
    return static_cast<qint64>(source.loadedFrameCount());
}

} // namespace

class TestAuthorClips : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void check_findsRule_data();
    void check_findsRule();
    void check_findsMemory_aboveLimitAlone();
    void read_countsPictures_asLibraryDoes_data();
    void read_countsPictures_asLibraryDoes();
    void read_ends_whenClipIsLong();
    void check_findsUnreadable_whenThereIsNoClip();
    void check_opensNothing_whenFileIsNotRegular();
    void check_ends_whenFileIsDamaged();
    void check_opensNoOtherFile();

private:
    ClipWriter m_clips;
};

void TestAuthorClips::check_findsRule_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("rate");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("rules");

    const QSize size(64, 48);
    const QStringList plain = words("-bf 0 -pix_fmt yuv420p");
    const auto row = [](const char* name, const char* file, const char* codec, QSize pixels,
                        int rate, const QStringList& options, const char* rules) {
        QTest::newRow(name) << QString::fromLatin1(file) << QString::fromLatin1(codec) << pixels
                            << rate << options << QString::fromLatin1(rules);
    };
    row("H.264", "good.mp4", "libx264", size, 25, plain, "");
    row("H.264 in Matroska, at a rate that is no whole number of ms", "good.mkv", "libx264", size,
        30, plain, "");
    row("60 pictures a second", "good.webm", "libvpx", size, 60, words("-lag-in-frames 0"), "");
    row("VP9", "good.webm", "libvpx-vp9", size, 24, words("-cpu-used 8"), "");
    row("B-frames", "wrong.mp4", "libx264", size, 25, words("-bf 2 -pix_fmt yuv420p"),
        "clip-bframes");
    row("codec", "wrong.avi", "mpeg4", size, 25, {}, "clip-codec");
    row("a codec that hosts refuse", "wrong.avi", "cinepak", size, 25, {}, "clip-codec");
    row("odd", "wrong.mkv", "libvpx", {63, 48}, 25, words("-lag-in-frames 0 -pix_fmt yuv420p"),
        "clip-odd-size");
    row("fast", "wrong.mp4", "libx264", size, 90, plain, "clip-rate");
    row("changing", "wrong.mp4", "libx264", size, 25,
        plain + words("-vf select=not(between(n\\,3\\,6)) -fps_mode vfr"), "clip-rate");
    row("wide", "wrong.mp4", "libx264", {4100, 16}, 25, plain + words("-preset ultrafast"),
        "resource-huge");
}

void TestAuthorClips::check_findsRule()
{
    QFETCH(const QString, file);
    QFETCH(const QString, codec);
    QFETCH(const QSize, size);
    QFETCH(const int, rate);
    QFETCH(const QStringList, options);
    QFETCH(const QString, rules);
    const QString path = m_clips.testClip(file, codec, size, rate, 20, options);

    QCOMPARE(rulesOf(path).join(u' '), rules);
}

void TestAuthorClips::check_findsMemory_aboveLimitAlone()
{
    const QString path = m_clips.testClip(u"memory.mp4"_s, u"libx264"_s, {64, 48}, 25, 20,
                                          words("-bf 0 -pix_fmt yuv420p"));
    constexpr qint64 kBytes = qint64(20) * 64 * 48 * 4;

    QCOMPARE(AuthorClipReader::read(path).memoryBytes(), kBytes);
    QCOMPARE(rulesOf(path, kBytes), QStringList());
    QCOMPARE(rulesOf(path, kBytes - 1), QStringList{u"clip-memory"_s});
}

void TestAuthorClips::read_countsPictures_asLibraryDoes_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QStringList>("options");

    const auto row = [](const char* file, const char* codec, const char* options) {
        QTest::addRow("%s, %s %s", file, codec, options)
            << QString::fromLatin1(file) << QString::fromLatin1(codec) << words(options);
    };
    row("a.mp4", "libx264", "-bf 0");
    row("a.mp4", "libx264", "-bf 1");
    row("a.mp4", "libx264", "-bf 3 -b_strategy 0");
    row("a.mkv", "libx264", "-bf 16 -b_strategy 0");
    row("a.mp4", "libx265", "-x265-params log-level=none");
    row("a.avi", "mpeg4", "-bf 2");
    row("a.webm", "libvpx", "-lag-in-frames 16 -auto-alt-ref 1");
    row("a.webm", "libvpx-vp9", "-lag-in-frames 16 -auto-alt-ref 1 -cpu-used 8");
}

void TestAuthorClips::read_countsPictures_asLibraryDoes()
{
    QFETCH(const QString, file);
    QFETCH(const QString, codec);
    QFETCH(const QStringList, options);
    constexpr int kPictures = 40;
    const QString path = m_clips.testClip(file, codec, {64, 48}, 25, kPictures, options);

    const AuthorClip clip = AuthorClipReader::read(path);

    QCOMPARE(clip.fault, QString());
    QCOMPARE(clip.pictures, picturesOfLibrary(path));
    QCOMPARE(clip.pictures + clip.lost, qint64(kPictures));
}

void TestAuthorClips::read_ends_whenClipIsLong()
{
    constexpr int kPictures = 2000;
    const QString path = m_clips.testClip(u"long.mp4"_s, u"libx264"_s, {640, 480}, 50, kPictures,
                                          words("-preset ultrafast -bf 2 -pix_fmt yuv420p"));

    const AuthorClip clip = AuthorClipReader::read(path);

    // What lies behind the limit is counted without being decoded.
    QCOMPARE(clip.pictures + clip.lost, qint64(kPictures));
    QVERIFY(clip.isSteady);
    QVERIFY(rulesOf(path).contains(u"clip-memory"_s));
}

void TestAuthorClips::check_findsUnreadable_whenThereIsNoClip()
{
    const QStringList unreadable{u"clip-unreadable"_s};
    QCOMPARE(rulesOf(m_clips.writeBytes(u"empty.mp4"_s, {})), unreadable);
    QCOMPARE(rulesOf(m_clips.writeBytes(u"text.mp4"_s, "no clip")), unreadable);
    QCOMPARE(rulesOf(m_clips.writeBytes(u"zeros.mp4"_s, QByteArray(100'000, '\0'))), unreadable);
    QCOMPARE(rulesOf(m_clips.path(u"nowhere.mp4"_s)), unreadable);
    const QString sound =
        m_clips.write(u"sound.mp4"_s, words("-f lavfi -i sine=duration=1 -c:a aac"));
    QCOMPARE(rulesOf(sound), unreadable);
}

void TestAuthorClips::check_opensNothing_whenFileIsNotRegular()
{
    const QString pipe = m_clips.path(u"pipe.mp4"_s);
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);

    QCOMPARE(rulesOf(pipe), QStringList{u"clip-unreadable"_s});
    QCOMPARE(rulesOf(u"/dev/zero"_s), QStringList{u"clip-unreadable"_s});
}

/// Any outcome will do, as long as there is one.
void TestAuthorClips::check_ends_whenFileIsDamaged()
{
    constexpr int kSamples = 60;
    const QStringList names{u"damage.mp4"_s, u"damage.webm"_s, u"damage.mkv"_s, u"damage.avi"_s};
    const QStringList codecs{u"libx264"_s, u"libvpx"_s, u"libvpx-vp9"_s, u"mjpeg"_s};
    QRandomGenerator random(7);
    for (qsizetype i = 0; i < names.size(); ++i) {
        m_clips.testClip(names.at(i), codecs.at(i), {64, 48}, 25, 10);
        const QByteArray whole = m_clips.readBytes(names.at(i));
        QCOMPARE(rulesOf(m_clips.path(names.at(i))).contains(u"clip-unreadable"_s), false);
        for (int sample = 0; sample < kSamples; ++sample) {
            QByteArray bytes = whole.left(random.bounded(1, static_cast<int>(whole.size())));
            for (int change = 0; change < sample % 8; ++change)
                bytes[random.bounded(static_cast<int>(bytes.size()))] =
                    static_cast<char>(random.bounded(256));
            rulesOf(m_clips.writeBytes(u"damaged-"_s + names.at(i), bytes));
        }
    }
}

/// A list of clips is itself no clip, whatever its name.
void TestAuthorClips::check_opensNoOtherFile()
{
    m_clips.testClip(u"good.mp4"_s, u"libx264"_s, {64, 48}, 25, 10, words("-bf 0"));
    const QString list = m_clips.writeBytes(u"list.mp4"_s, "ffconcat version 1.0\nfile good.mp4\n");
    const QString playlist =
        m_clips.writeBytes(u"playlist.mp4"_s, "#EXTM3U\n#EXTINF:1,\ngood.mp4\n#EXT-X-ENDLIST\n");

    QCOMPARE(rulesOf(list), QStringList{u"clip-unreadable"_s});
    QCOMPARE(rulesOf(playlist), QStringList{u"clip-unreadable"_s});
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorClips>(argc, argv);
}

#include "tst_authorclips.moc"
