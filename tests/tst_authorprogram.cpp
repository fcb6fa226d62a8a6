// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipWriter.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

struct Outcome
{
    int code = -1;
    QByteArray out;
    QByteArray err;
};

using Variables = QMap<QString, QString>;

Outcome run(const QStringList& arguments, const Variables& variables = {})
{
    QProcess process;
    // What is loaded before a test for its own sake is none of the program's business.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"LD_PRELOAD"_s);
    for (auto it = variables.cbegin(); it != variables.cend(); ++it)
        environment.insert(it.key(), it.value());
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PROGRAM), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

bool isZombie(pid_t process)
{
    QFile file(u"/proc/%1/stat"_s.arg(process));
    return !file.open(QIODevice::ReadOnly) || file.readAll().contains(") Z ");
}

} // namespace

class TestAuthorProgram : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void wrongUse_endsWithTwo_data();
    void wrongUse_endsWithTwo();
    void help_isThereForEachCommand();
    void preview_endsWithTwo_whenDisplayDoesNotAnswer();
    void new_makesPackageWithoutFaults();
    void check_endsWithOne_whenThereIsWarning();
    void explain_showsPage();
    void strings_makeFilesThatCheckIsContentWith();
    void strings_endsWithOne_whenFileIsKept();
    void clip_makesClip_andTellsWhatItTakes();
    void clip_keepsRecording_whenItIsNamedAsClip();
    void names_areToldAsTheyAre();
    void clip_showsBar_onTerminal();
    void clip_takesProgramWithIt_whenEnded_data();
    void clip_takesProgramWithIt_whenEnded();
};

void TestAuthorProgram::wrongUse_endsWithTwo_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("no command") << QStringList();
    QTest::newRow("strings of nothing") << QStringList{u"strings"_s};
    QTest::newRow("strings of two") << QStringList{u"strings"_s, u"."_s, u".."_s};
    QTest::newRow("strings without package") << QStringList{u"strings"_s, u"/dev"_s};
    QTest::newRow("strings for no locale")
        << QStringList{u"strings"_s, u"."_s, u"--locale"_s, u"xx"_s};
    QTest::newRow("unknown command") << QStringList{u"verify"_s};
    QTest::newRow("unknown option") << QStringList{u"check"_s, u"--nonsense"_s, u"."_s};
    QTest::newRow("unknown format") << QStringList{u"check"_s, u"--format"_s, u"yaml"_s, u"."_s};
    QTest::newRow("unknown rule") << QStringList{u"check"_s, u"--set"_s, u"no-rule=off"_s, u"."_s};
    QTest::newRow("unknown severity")
        << QStringList{u"check"_s, u"--set"_s, u"key-blank=x"_s, u"."_s};
    QTest::newRow("unknown rule to explain")
        << QStringList{u"check"_s, u"--explain"_s, u"no-rule"_s};
    QTest::newRow("no path") << QStringList{u"check"_s};
    QTest::newRow("missing path") << QStringList{u"check"_s, u"/nowhere"_s};
    QTest::newRow("clip without recording") << QStringList{u"clip"_s};
    QTest::newRow("clip of nothing") << QStringList{u"clip"_s, u"/nowhere.mp4"_s};
    QTest::newRow("clip of no size") << QStringList{u"clip"_s, u"a.mp4"_s, u"--size"_s, u"big"_s};
    QTest::newRow("clip of no rate") << QStringList{u"clip"_s, u"a.mp4"_s, u"--fps"_s, u"61"_s};
    QTest::newRow("clip of no time") << QStringList{u"clip"_s, u"a.mp4"_s, u"--from"_s, u"1,5"_s};
    QTest::newRow("preview of nothing") << QStringList{u"preview"_s};
    QTest::newRow("preview of missing path") << QStringList{u"preview"_s, u"/nowhere"_s};
    QTest::newRow("new without directory") << QStringList{u"new"_s};
    QTest::newRow("new with two") << QStringList{u"new"_s, u"/nowhere/A.vidlets"_s,
                                                 u"/nowhere/B.vidlets"_s};
}

void TestAuthorProgram::wrongUse_endsWithTwo()
{
    QFETCH(const QStringList, arguments);

    const Outcome outcome = run(arguments);

    QCOMPARE(outcome.code, 2);
    QVERIFY(outcome.out.isEmpty());
    QCOMPARE(outcome.err.count('\n'), 1);
}

void TestAuthorProgram::help_isThereForEachCommand()
{
    for (const QStringList& arguments :
         {QStringList{u"--help"_s}, QStringList{u"check"_s, u"--help"_s},
          QStringList{u"clip"_s, u"--help"_s}, QStringList{u"gallery"_s, u"--help"_s},
          QStringList{u"new"_s, u"-h"_s}, QStringList{u"preview"_s, u"--help"_s}}) {
        const Outcome outcome = run(arguments);
        QCOMPARE(outcome.code, 0);
        QVERIFY(outcome.out.startsWith("Usage: vidlets "));
        QVERIFY(outcome.err.isEmpty());
    }
}

void TestAuthorProgram::preview_endsWithTwo_whenDisplayDoesNotAnswer()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);
    // No server may listen at a socket of a port above 65535.
    const Variables stale{{u"DISPLAY"_s, u":59999"_s},
                          {u"WAYLAND_DISPLAY"_s, u""_s},
                          {u"QT_QPA_PLATFORM"_s, u"xcb"_s}};

    const Outcome shown = run({u"preview"_s, files.path(u"A.vidlets"_s)}, stale);
    QCOMPARE(shown.code, 2);
    QCOMPARE(shown.err, QByteArray("vidlets: There is no display to show tips on.\n"));

    const Outcome help = run({u"preview"_s, u"--help"_s}, stale);
    QCOMPARE(help.code, 0);
    QVERIFY(help.out.startsWith("Usage: vidlets preview"));
}

void TestAuthorProgram::new_makesPackageWithoutFaults()
{
    PackageBuilder files;
    const QString package = files.path(u"First.vidlets"_s);
    const Outcome made = run({u"new"_s, package});
    QCOMPARE(made.err, QByteArray());
    QCOMPARE(made.code, 0);

    const Outcome checked = run({u"check"_s, package});

    QCOMPARE(checked.out, QByteArray());
    QCOMPARE(checked.code, 0);
    QCOMPARE(run({u"new"_s, package}).code, 2);
}

void TestAuthorProgram::check_endsWithOne_whenThereIsWarning()
{
    PackageBuilder files;
    files.packageRoot(u"A.vidlets"_s);

    QCOMPARE(run({u"check"_s, files.dataPath()}).code, 1);
    const Outcome outcome =
        run({u"check"_s, u"--set"_s, u"package-empty=note"_s, files.dataPath()});
    QCOMPARE(outcome.code, 0);
    QVERIFY(outcome.out.contains("[package-empty]"));
}

void TestAuthorProgram::explain_showsPage()
{
    const Outcome outcome = run({u"check"_s, u"--explain"_s, u"key-blank"_s});

    QCOMPARE(outcome.code, 0);
    QVERIFY(outcome.out.startsWith("# key-blank\n"));
}

void TestAuthorProgram::strings_makeFilesThatCheckIsContentWith()
{
    const PackageBuilder files;
    const QString package = files.path(u"First.vidlets"_s);
    QCOMPARE(run({u"new"_s, package}).code, 0);

    // The template's own translation is whole.
    const Outcome updated = run({u"strings"_s, package, u"--release"_s});
    QCOMPARE(updated.err, QByteArray());
    QVERIFY2(updated.out.contains("Vidlets_de_DE.ts: 6 texts, 0 new, 0 gone, 0 unfinished"),
             updated.out.constData());
    QCOMPARE(run({u"strings"_s, package, u"--pseudo"_s}).code, 0);
    const Outcome checked = run({u"check"_s, u"--locale"_s, u"vo_001"_s, package});
    QCOMPARE(checked.out, QByteArray());
    QCOMPARE(checked.code, 0);

    QCOMPARE(run({u"strings"_s, package, u"--locale"_s, u"fr"_s, u"--release"_s}).code, 0);
    const Outcome unfinished = run({u"check"_s, package});
    QVERIFY2(unfinished.out.contains("Vidlets_fr_FR.ts"), unfinished.out.constData());
    QVERIFY2(unfinished.out.contains("[l10n-unfinished]"), unfinished.out.constData());
}

void TestAuthorProgram::strings_endsWithOne_whenFileIsKept()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    files.write(u"A.vidlets/l10n/Vidlets_de_DE.ts"_s, "words");

    const Outcome outcome = run({u"strings"_s, files.dataPath()});

    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.contains("left as it is"), outcome.err.constData());
}

void TestAuthorProgram::clip_makesClip_andTellsWhatItTakes()
{
    ClipWriter clips;
    const QString in = clips.testClip(u"in.mp4"_s, u"libx264"_s, {64, 48}, 25, 50);
    const QString out = clips.path(u"out.webm"_s);

    const Outcome outcome = run({u"clip"_s, in, u"-o"_s, out, u"--size"_s, u"32x24"_s, u"--fps"_s,
                                 u"10"_s, u"--from"_s, u"1"_s, u"--to"_s, u"0:01.5"_s});

    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.code, 0);
    QVERIFY(outcome.out.contains("in.mp4: 50 pictures of 64 x 48, 25 a second; "));
    QVERIFY(outcome.out.contains("out.webm: 5 pictures of 32 x 24, 10 a second; "));
    QVERIFY(outcome.out.contains(" MB on disk, 0.6 MB in memory"));
    QVERIFY(QFileInfo::exists(out));
}

void TestAuthorProgram::clip_keepsRecording_whenItIsNamedAsClip()
{
    ClipWriter clips;
    const QString in = clips.testClip(u"in.mp4"_s, u"libx264"_s, {64, 48}, 25, 50);
    QFile file(in);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();

    const Outcome outcome = run({u"clip"_s, in, u"-o"_s, in, u"--to"_s, u"1"_s});

    QCOMPARE(outcome.code, 2);
    QVERIFY2(outcome.err.contains("is the recording itself"), outcome.err.constData());
    // It may be another file by now.
    file.close();
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll() == before);
}

/// Also where they look like the places of a sentence that is filled in.
void TestAuthorProgram::names_areToldAsTheyAre()
{
    ClipWriter clips;
    const QString in = clips.testClip(u"in %2 %5.mp4"_s, u"libx264"_s, {64, 48}, 25, 50);
    const QString out = clips.path(u"%3%1.mp4"_s);
    const Outcome clip = run({u"clip"_s, in, u"-o"_s, out});
    QVERIFY2(clip.out.contains("/in %2 %5.mp4: 50 pictures of 64 x 48, 25 a second; "),
             clip.out.constData());
    QVERIFY2(clip.out.contains("/%3%1.mp4: 50 pictures of 64 x 48, 25 a second; "),
             clip.out.constData());

    const PackageBuilder files;
    const QString package = files.path(u"%2 %4.vidlets"_s);
    QCOMPARE(run({u"new"_s, package}).code, 0);
    const Outcome strings = run({u"strings"_s, package});
    QVERIFY2(strings.out.contains("/%2 %4.vidlets/l10n/Vidlets_de_DE.ts: 6 texts, 0 new, "),
             strings.out.constData());
    const Outcome gallery = run({u"gallery"_s, package, u"-o"_s, files.path(u"%2 %3"_s)});
    QVERIFY2(gallery.out.endsWith("/%2 %3/index.html: 1 tips, 0 failed\n"),
             gallery.out.constData());
}

void TestAuthorProgram::clip_showsBar_onTerminal()
{
    ClipWriter clips;
    const QString in = clips.testClip(u"in.mp4"_s, u"libx264"_s, {64, 48}, 25, 50);
    QProcess script;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"LD_PRELOAD"_s);
    script.setProcessEnvironment(environment);
    script.start(u"script"_s,
                 {u"-qec"_s, u"'%1' clip '%2'"_s.arg(QStringLiteral(PROGRAM), in), u"/dev/null"_s});

    QVERIFY(script.waitForFinished());

    const QByteArray shown = script.readAllStandardOutput();
    QCOMPARE(script.exitCode(), 0);
    QVERIFY2(shown.contains("\r[") && shown.contains(" %"), shown.constData());
    // It makes room for what there is to tell at the end.
    QVERIFY(shown.contains("\r\033[K"));
    QVERIFY(shown.contains(" MB in memory"));
}

void TestAuthorProgram::clip_takesProgramWithIt_whenEnded_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("isTidiedUp");

    QTest::newRow("by the keyboard") << SIGINT << true;
    QTest::newRow("by its session") << SIGHUP << true;
    QTest::newRow("by the system") << SIGTERM << true;
    QTest::newRow("by force") << SIGKILL << false;
}

/// With programs in place of the real ones, the second of which never ends.
void TestAuthorProgram::clip_takesProgramWithIt_whenEnded()
{
    QFETCH(const int, signal);
    QFETCH(const bool, isTidiedUp);
    PackageBuilder files;
    files.write(u"in.mp4"_s, "recording");
    files.write(
        u"programs/ffprobe"_s,
        "#!/bin/sh\necho '{\"streams\": [{\"width\": 2, \"height\": 2, \"r_frame_rate\": \"25/1\", "
        "\"nb_read_packets\": \"1\"}]}'\n");
    const QString pidFile = files.path(u"pid"_s);
    files.write(u"programs/ffmpeg"_s,
                "#!/bin/sh\necho $$ > " + pidFile.toUtf8() + ".new; mv " + pidFile.toUtf8()
                    + ".new " + pidFile.toUtf8() + "\nexec sleep 600\n");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"LD_PRELOAD"_s);
    environment.insert(u"PATH"_s, files.path(u"programs"_s) + u":/usr/bin:/bin"_s);
    for (const QString& name : {u"programs/ffprobe"_s, u"programs/ffmpeg"_s})
        QFile::setPermissions(files.path(name), QFile::ReadOwner | QFile::ExeOwner);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PROGRAM), {u"clip"_s, files.path(u"in.mp4"_s)});
    QTRY_VERIFY(QFileInfo::exists(pidFile));
    QFile file(pidFile);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const pid_t child = file.readAll().trimmed().toInt();
    QVERIFY(child > 0);
    QCOMPARE(kill(child, 0), 0);

    QCOMPARE(kill(static_cast<pid_t>(process.processId()), signal), 0);

    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    // As a zombie it is still there until somebody asks for how it ended.
    QTRY_VERIFY(kill(child, 0) != 0 || isZombie(child));
    const QStringList left =
        QDir(files.path(QString())).entryList({u".vidlets-*"_s}, QDir::Files | QDir::Hidden);
    QCOMPARE(left.isEmpty(), isTidiedUp);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorProgram>(argc, argv);
}

#include "tst_authorprogram.moc"
