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

Outcome runAny(const QString& program, const QStringList& arguments, const Variables& variables)
{
    QProcess process;
    // What is loaded before a test for its own sake is none of the program's business.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"LD_PRELOAD"_s);
    for (auto it = variables.cbegin(); it != variables.cend(); ++it)
        environment.insert(it.key(), it.value());
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

Outcome run(const QStringList& arguments, const Variables& variables = {})
{
    return runAny(QStringLiteral(PROGRAM), arguments, variables);
}

/// Runs the program with @p arguments as a shell reads them; all that it says comes out as one.
Outcome runOnTerminal(const QString& arguments, const Variables& variables = {})
{
    return runAny(u"script"_s,
                  {u"-qec"_s, u"'%1' "_s.arg(QStringLiteral(PROGRAM)) + arguments, u"/dev/null"_s},
                  variables);
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
    void check_saysWhatItWaitsFor_onTerminal();
    void explain_showsPage();
    void strings_makeFilesThatCheckIsContentWith();
    void strings_writeWhereTheLibraryLooks();
    void strings_endsWithOne_whenFileIsKept();
    void strings_endsWithOne_whenDirectoriesAreTooMany();
    void clip_makesClip_andTellsWhatItTakes();
    void clip_keepsRecording_whenItIsNamedAsClip();
    void names_areToldAsTheyAre();
    void clip_showsBar_onTerminal();
    void clip_takesProgramWithIt_whenEnded_data();
    void clip_takesProgramWithIt_whenEnded();
};

void TestAuthorProgram::wrongUse_endsWithTwo_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("sentence");

    const auto row = [](const char* name, const QString& arguments, const QString& sentence) {
        QTest::newRow(name) << arguments << sentence;
    };
    row("no command", QString(), u"Which command? \"vidlets --help\" lists them."_s);
    row("unknown command", u"verify"_s,
        u"There is no command \"verify\". \"vidlets --help\" lists them."_s);
    row("strings of nothing", u"strings"_s, u"Of which package? vidlets strings PATH"_s);
    row("strings of two", u"strings {PACKAGE} {PACKAGE}"_s,
        u"Of which package? vidlets strings PATH"_s);
    row("strings without package", u"strings {EMPTY}"_s, u"There is no package in \"{EMPTY}\"."_s);
    row("strings for no locale", u"strings {PACKAGE} --locale xx"_s,
        u"There is no locale \"xx\"."_s);
    row("strings without translations", u"strings {BARE}"_s,
        u"There are no translations yet; --locale LOCALE begins one."_s);
    row("unknown option", u"check --nonsense {PACKAGE}"_s, u"Unknown option 'nonsense'."_s);
    row("unknown format", u"check --format yaml {PACKAGE}"_s,
        u"\"yaml\" is not text, json, sarif or junit."_s);
    row("unknown rule", u"check --set no-rule=off {PACKAGE}"_s, u"There is no rule \"no-rule\"."_s);
    row("unknown severity", u"check --set key-blank=x {PACKAGE}"_s,
        u"\"key-blank=x\" does not say RULE=error, warning, note or off."_s);
    row("unknown rule to explain", u"check --explain no-rule"_s,
        u"There is no rule \"no-rule\"."_s);
    row("check for no locale", u"check {PACKAGE} --locale xx_bad"_s,
        u"There is no locale \"xx_bad\"."_s);
    row("check for a locale of another territory", u"check {PACKAGE} --locale de_US"_s,
        u"There is no locale \"de_US\"; \"de_DE\" would be taken for it."_s);
    row("check for a locale without name", u"check {PACKAGE} --locale="_s,
        u"There is no locale \"\"."_s);
    row("no path", u"check"_s, u"What is to be checked? vidlets check PATH..."_s);
    row("missing path", u"check {PACKAGE} /nowhere"_s, u"There is no \"/nowhere\"."_s);
    row("check without package", u"check {EMPTY}"_s, u"There is no package in \"{EMPTY}\"."_s);
    row("check without package beside one", u"check {PACKAGE} {EMPTY}"_s,
        u"There is no package in \"{EMPTY}\"."_s);
    row("gallery without package", u"gallery {EMPTY} -o {OUT}"_s,
        u"There is no package in \"{EMPTY}\"."_s);
    row("gallery for no locale", u"gallery {PACKAGE} -o {OUT} --locale zzz"_s,
        u"There is no locale \"zzz\"."_s);
    row("gallery of nothing", u"gallery -o {OUT}"_s,
        u"What is to be drawn? vidlets gallery PATH -o DIR"_s);
    row("gallery without directory", u"gallery {PACKAGE}"_s,
        u"Where to? vidlets gallery PATH -o DIR"_s);
    row("clip without recording", u"clip"_s,
        u"\"vidlets clip\" makes one clip: vidlets clip IN."_s);
    row("clip of nothing", u"clip /nowhere.mp4"_s, u"There is no \"/nowhere.mp4\"."_s);
    row("clip of no size", u"clip {CLIP} --size big"_s, u"\"big\" is no size such as 320x180."_s);
    row("clip of no rate", u"clip {CLIP} --fps 61"_s, u"\"61\" is no rate from 1 to 60."_s);
    row("clip of no time", u"clip {CLIP} --from 1,5"_s,
        u"\"1,5\" is no time such as 1.5 or 2:03.25."_s);
    row("clip without name", u"clip {CLIP} -o "_s, u"The clip has no name."_s);
    row("preview of nothing", u"preview"_s, u"What is to be shown? vidlets preview PATH"_s);
    row("preview of missing path", u"preview /nowhere"_s, u"There is no \"/nowhere\"."_s);
    row("new without directory", u"new"_s,
        u"\"vidlets new\" makes one package: vidlets new DIR."_s);
    row("new with comma", u"new {OUT}/A,B.vidlets"_s,
        u"\"search\" could not name \"A,B.vidlets\": blanks, commas and semicolons separate names."_s);
    row("new with two", u"new {OUT}/A.vidlets {OUT}/B.vidlets"_s,
        u"\"vidlets new\" makes one package: vidlets new DIR."_s);
}

/// But for what is wrong in them, the commands could be carried out.
void TestAuthorProgram::wrongUse_endsWithTwo()
{
    QFETCH(const QString, arguments);
    QFETCH(const QString, sentence);
    PackageBuilder files;
    ClipWriter clips;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"pen"_s);
    files.writeScene(u"A.vidlets"_s);
    files.write(u"A.vidlets/l10n/Vidlets_de_DE.ts"_s, "<TS version=\"2.1\"/>");
    files.writeTip(u"bare/B.vidlets"_s, u"a.xml"_s, u"pen"_s);
    QVERIFY(QDir(files.dataPath()).mkdir(u"empty"_s));
    const auto filledIn = [&](QString text) {
        return text.replace(u"{PACKAGE}"_s, files.path(u"A.vidlets"_s))
            .replace(u"{BARE}"_s, files.path(u"bare"_s))
            .replace(u"{EMPTY}"_s, files.path(u"empty"_s))
            .replace(u"{CLIP}"_s, clips.path(u"in.mp4"_s))
            .replace(u"{OUT}"_s, files.path(u"out"_s));
    };
    if (arguments.contains("{CLIP}"_L1))
        clips.testClip(u"in.mp4"_s, u"libx264"_s, {64, 48}, 25, 5);

    const Outcome outcome =
        run(arguments.isEmpty() ? QStringList() : filledIn(arguments).split(u' '));

    QCOMPARE(QString::fromUtf8(outcome.err), u"vidlets: %1\n"_s.arg(filledIn(sentence)));
    QCOMPARE(outcome.code, 2);
    QCOMPARE(outcome.out, QByteArray());
    QVERIFY(!QFileInfo::exists(files.path(u"out"_s)));
    QVERIFY(!QFileInfo::exists(clips.path(u"in-2.mp4"_s)));
}

void TestAuthorProgram::help_isThereForEachCommand()
{
    for (const QStringList& arguments :
         {QStringList{u"--help"_s}, QStringList{u"check"_s, u"--help"_s},
          QStringList{u"clip"_s, u"--help"_s}, QStringList{u"gallery"_s, u"--help"_s},
          QStringList{u"new"_s, u"-h"_s}, QStringList{u"preview"_s, u"--help"_s},
          QStringList{u"strings"_s, u"--help"_s}}) {
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

void TestAuthorProgram::check_saysWhatItWaitsFor_onTerminal()
{
    PackageBuilder files;
    const QString package = files.path(u"A.vidlets"_s);
    QCOMPARE(run({u"new"_s, package}).code, 0);
    // Takes its time at first.
    const QString qmllint = files.write(u"qmllint"_s,
                                        "#!/bin/sh\n"
                                        "[ -e \"$0.waited\" ] && exit 1\n"
                                        ": >\"$0.waited\"\nsleep 3\nexit 1\n");
    QFile::setPermissions(qmllint, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const Variables variables{{u"VIDLETS_QMLLINT"_s, qmllint}};

    const Outcome watched = runOnTerminal(u"check '%1'"_s.arg(package), variables);
    QVERIFY(QFile::remove(qmllint + u".waited"_s));
    const Outcome unwatched = run({u"check"_s, package}, variables);

    QVERIFY2(watched.out.startsWith("Waiting for qmllint, which looks at 3 scenes...\r\n"),
             watched.out.constData());
    QCOMPARE(unwatched.err, QByteArray());
    QVERIFY(watched.out.endsWith(QByteArray(unwatched.out).replace("\n", "\r\n")));
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

void TestAuthorProgram::strings_writeWhereTheLibraryLooks()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets l10n_name='lang'><vidlet key='a' title='A'/></vidlets>");
    files.writeControlFile(u"B.vidlets"_s, u"b.xml"_s,
                           "<vidlets l10n_name='../A.vidlets'><vidlet key='b'/></vidlets>");

    const Outcome outcome = run({u"strings"_s, files.dataPath(), u"--locale"_s, u"de_DE"_s});

    QCOMPARE(outcome.code, 1);
    QVERIFY2(outcome.err.contains("B.vidlets: \"../A.vidlets\", where"), outcome.err.constData());
    QVERIFY(QFile::exists(files.path(u"A.vidlets/lang/Vidlets_de_DE.ts"_s)));
    for (const QString& path :
         {u"A.vidlets/l10n"_s, u"B.vidlets/l10n"_s, u"A.vidlets/Vidlets_de_DE.ts"_s})
        QVERIFY2(!QFile::exists(files.path(path)), qPrintable(path));
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

void TestAuthorProgram::strings_endsWithOne_whenDirectoriesAreTooMany()
{
    PackageBuilder files;
    QByteArray tips("<vidlets>");
    // Enough to take minutes where each is looked for among all that came before.
    constexpr int kCount = 100'000;
    for (int i = 0; i < kCount; ++i) {
        const QByteArray number = QByteArray::number(i);
        tips += "<vidlet key='" + number + "' l10n_name='" + number + "' title='T'/>\n";
    }
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips + "</vidlets>");
    const QString package = files.path(u"A.vidlets"_s);

    const Outcome strings = run({u"strings"_s, package, u"--locale"_s, u"de_DE"_s});

    QCOMPARE(strings.code, 1);
    QVERIFY2(strings.err.contains(" in 100000 directories, more than 100."),
             strings.err.constData());
    QVERIFY(!QFile::exists(package + u"/l10n"_s));
    QVERIFY(run({u"check"_s, package}).code >= 0);
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
    const QString package = files.path(u"%2%4.vidlets"_s);
    QCOMPARE(run({u"new"_s, package}).code, 0);
    const Outcome strings = run({u"strings"_s, package});
    QVERIFY2(strings.out.contains("/%2%4.vidlets/l10n/Vidlets_de_DE.ts: 6 texts, 0 new, "),
             strings.out.constData());
    const Outcome gallery = run({u"gallery"_s, package, u"-o"_s, files.path(u"%2 %3"_s)});
    QVERIFY2(gallery.out.endsWith("/%2 %3/index.html: 1 tip, 0 failed\n"), gallery.out.constData());
}

void TestAuthorProgram::clip_showsBar_onTerminal()
{
    ClipWriter clips;
    const QString in = clips.testClip(u"in.mp4"_s, u"libx264"_s, {64, 48}, 25, 50);

    const Outcome clip = runOnTerminal(u"clip '%1'"_s.arg(in));

    QCOMPARE(clip.code, 0);
    QVERIFY2(clip.out.contains("\r[") && clip.out.contains(" %"), clip.out.constData());
    // It makes room for what there is to tell at the end.
    QVERIFY(clip.out.contains("\r\033[K"));
    QVERIFY(clip.out.contains(" MB in memory"));
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
