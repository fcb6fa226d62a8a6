// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QMap>
#include <QProcess>
#include <QProcessEnvironment>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QStandardPaths>

#include <VidletsAuthor/AuthorTemplate.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

constexpr int kTimeoutMs = 120000;
constexpr QRgb kUnusualColor = qRgb(0x12, 0xb4, 0x56);

struct Outcome
{
    int code = -1;
    QByteArray out;
    QByteArray err;
};

Outcome run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    // What is loaded before a test for its own sake is none of the program's business.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"LD_PRELOAD"_s);
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(kTimeoutMs) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

Outcome gallery(const QStringList& arguments)
{
    return run(QStringLiteral(PROGRAM), QStringList{u"gallery"_s} + arguments);
}

/// All files below @p directory, by their names.
QMap<QString, QByteArray> filesBelow(const QString& directory)
{
    QMap<QString, QByteArray> result;
    QDirIterator walk(directory, QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        QFile file(walk.next());
        if (file.open(QIODevice::ReadOnly))
            result.insert(QDir(directory).relativeFilePath(file.fileName()), file.readAll());
    }
    return result;
}

QByteArray pageOf(const QString& directory)
{
    return filesBelow(directory).value(u"index.html"_s);
}

QByteArray scene(const QByteArray& color, const QByteArray& more = QByteArray())
{
    return "import QtQuick\nRectangle {\n    width: vidletView.getScaledSize(120)\n"
           "    height: vidletView.getScaledSize(80)\n    color: \""
        + color + "\"\n" + more + "}\n";
}

QByteArray tips(const QStringList& keys)
{
    QByteArray text = "<vidlets>\n";
    for (const QString& key : keys)
        text += "<vidlet key=\"" + key.toUtf8() + "\" title=\"Tip of " + key.toUtf8() + "\"/>\n";
    return text + "</vidlets>\n";
}

} // namespace

class TestAuthorGallery : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void wrongUse_endsWithTwo_data();
    void wrongUse_endsWithTwo();
    void gallery_showsTemplate();
    void twoGalleries_areTheSameToTheLastByte();
    void page_namesNothingAbsoluteOrRemote();
    void failingScene_isShownWithItsError();
    void brokenFile_isShownAsFailed();
    void missingLanguage_isNoFailure();
    void looks_areDrawnBesideEachOther();
    void package_isNotShadowedByAnother();
    void compare_marksWhatDiffers();
    void compare_marksNothing_whenOnlyLooksDiffer();
    void compare_tellsOfLanguageThatIsGoneOrNew();
    void compare_namesPackages_whenEitherGalleryHasSeveral();
    void oldPictures_goWithTheGallery();
    void interruptedGallery_isFinishedByTheNext();
    void endlessScene_isShownAsFailed();
    void page_isShownByBrowser();
};

void TestAuthorGallery::wrongUse_endsWithTwo_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("sentence");

    QTest::newRow("no path") << QStringList{u"-o"_s, u"%1/out"_s}
                             << u"What is to be drawn? vidlets gallery PATH -o DIR"_s;
    QTest::newRow("no directory") << QStringList{u"%1/A.vidlets"_s}
                                  << u"Where to? vidlets gallery PATH -o DIR"_s;
    QTest::newRow("missing path") << QStringList{u"%1/none"_s, u"-o"_s, u"%1/out"_s}
                                  << u"There is no \"%1/none\"."_s;
    QTest::newRow("two paths") << QStringList{u"%1"_s, u"%1"_s, u"-o"_s, u"%1/out"_s}
                               << u"What is to be drawn? vidlets gallery PATH -o DIR"_s;
    QTest::newRow("unknown option")
        << QStringList{u"%1"_s, u"-o"_s, u"%1/out"_s, u"--light"_s} << u"Unknown option 'light'."_s;
    QTest::newRow("no scale") << QStringList{u"%1"_s, u"-o"_s, u"%1/out"_s, u"--scale"_s, u"x"_s}
                              << u"A scale is a number from 0.25 to 8."_s;
    QTest::newRow("scale of 0") << QStringList{u"%1"_s, u"-o"_s, u"%1/out"_s, u"--scale"_s, u"0"_s}
                                << u"A scale is a number from 0.25 to 8."_s;
    QTest::newRow("a directory of something else")
        << QStringList{u"%1"_s, u"-o"_s, u"%1/A.vidlets"_s}
        << u"\"%1/A.vidlets\" is not empty, and no gallery."_s;
    QTest::newRow("nothing to compare with")
        << QStringList{u"%1"_s, u"-o"_s, u"%1/out"_s, u"--compare"_s, u"%1"_s}
        << u"\"%1\" is no gallery to compare with."_s;
    QTest::newRow("a file that is no package")
        << QStringList{u"%1/A.vidlets/Control/a.xml"_s, u"-o"_s, u"%1/out"_s}
        << u"\"%1/A.vidlets/Control/a.xml\" is neither a package nor a data path."_s;
}

void TestAuthorGallery::wrongUse_endsWithTwo()
{
    QFETCH(const QStringList, arguments);
    QFETCH(QString, sentence);
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"pen"_s);
    sentence.replace(u"%1"_s, files.dataPath());

    const Outcome outcome =
        gallery(QStringList(arguments).replaceInStrings(u"%1"_s, files.dataPath()));

    QCOMPARE(QString::fromUtf8(outcome.err), u"vidlets: "_s + sentence + u'\n');
    QCOMPARE(outcome.code, 2);
    QCOMPARE(outcome.out, QByteArray());
    QVERIFY(!QDir(files.path(u"out"_s)).exists());
}

void TestAuthorGallery::gallery_showsTemplate()
{
    PackageBuilder files;
    QString reason;
    const QString package = files.path(u"First.vidlets"_s);
    QVERIFY2(AuthorTemplate::create(QStringLiteral(TEMPLATE), package, reason), qPrintable(reason));

    const Outcome outcome = gallery({package, u"-o"_s, files.path(u"out"_s)});

    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.code, 0);
    QVERIFY(outcome.out.contains("1 tip, 0 failed"));
    const QByteArray page = pageOf(files.path(u"out"_s));
    QVERIFY(page.contains("<h3>Pen<code>tool.pen</code>"));
    QVERIFY(page.contains("<th>de_DE</th><th>en_US</th>"));
    QVERIFY(page.contains("<figure class=\"strip\">"));
    const QImage image(files.path(u"out/pictures/First/tool.pen/de_5fDE-light.png"_s));
    QVERIFY(image.width() > 320);
    QVERIFY(image != QImage(files.path(u"out/pictures/First/tool.pen/en_5fUS-light.png"_s)));
}

void TestAuthorGallery::twoGalleries_areTheSameToTheLastByte()
{
    PackageBuilder files;
    QString reason;
    const QString package = files.path(u"First.vidlets"_s);
    QVERIFY2(AuthorTemplate::create(QStringLiteral(TEMPLATE), package, reason), qPrintable(reason));
    files.writeControlFile(u"Moving.vidlets"_s, u"a.xml"_s,
                           tips({u"one"_s, u"two"_s, u"three"_s, u"four"_s}));
    files.write(u"Moving.vidlets/ui/VidletUI.qml"_s, scene("teal", R"(
    Rectangle {
        width: 20; height: 20
        NumberAnimation on x { from: 0; to: 100; duration: 700; loops: Animation.Infinite }
    }
    Text {
        id: count
        property int ticks: 0
        y: 30
        text: ticks + " ticks"
        Timer { interval: 90; running: true; repeat: true; onTriggered: ++count.ticks }
    }
)"));

    const Outcome first = gallery({files.dataPath(), u"-o"_s, files.path(u"one"_s), u"--dark"_s});
    const Outcome second = gallery({files.dataPath(), u"-o"_s, files.path(u"two"_s), u"--dark"_s});

    QCOMPARE(first.code, second.code);
    const QMap<QString, QByteArray> one = filesBelow(files.path(u"one"_s));
    const QMap<QString, QByteArray> two = filesBelow(files.path(u"two"_s));
    QVERIFY(one.size() > 10);
    QCOMPARE(one.keys(), two.keys());
    for (auto file = one.cbegin(); file != one.cend(); ++file)
        QVERIFY2(file.value() == two.value(file.key()), qPrintable(file.key()));
}

void TestAuthorGallery::page_namesNothingAbsoluteOrRemote()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips({u"a \"b\" <c>/é"_s.toHtmlEscaped()}));
    files.write(u"A.vidlets/ui/VidletUI.qml"_s,
                scene("teal", "    Image { source: vidletView.findResource(\"none.png\") }\n"));

    gallery({files.dataPath(), u"-o"_s, files.path(u"out"_s)});

    const QByteArray page = pageOf(files.path(u"out"_s));
    QVERIFY(page.contains("A.vidlets/"));
    QVERIFY(!page.contains(files.dataPath().toUtf8()));
    QVERIFY(!page.contains("://"));
    QVERIFY(!page.contains("src=\"/"));
    QVERIFY(!page.contains("<c>"));
    QVERIFY(!page.contains("<script"));
}

void TestAuthorGallery::failingScene_isShownWithItsError()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips({u"one"_s, u"two"_s}));
    const QString path = files.write(u"A.vidlets/ui/VidletUI.qml"_s,
                                     "import QtQuick\nItem {\n    width: 10;\n    tea\n}\n");

    const Outcome outcome = gallery({files.dataPath(), u"-o"_s, files.path(u"out"_s)});

    QCOMPARE(outcome.code, 1);
    QVERIFY(outcome.out.contains("2 tips, 2 failed"));
    const QByteArray page = pageOf(files.path(u"out"_s));
    QCOMPARE(page.count("class=\"tip failed\""), 2);
    // Each tip says it, also the second one of the same scene. Where the slip is said to be
    // differs from one Qt to another.
    QQmlEngine engine;
    const QList<QQmlError> errors = QQmlComponent(&engine, path).errors();
    QVERIFY(!errors.isEmpty());
    const QQmlError& error = errors.constFirst();
    const QString told =
        u"<pre>A.vidlets/ui/VidletUI.qml:%1:%2: "_s.arg(error.line()).arg(error.column());
    QCOMPARE(page.count(told.toUtf8()), 2);
}

void TestAuthorGallery::brokenFile_isShownAsFailed()
{
    PackageBuilder files;
    files.writeScene(u"A.vidlets"_s);
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets>\n<vidlet key=\"pen\">&</vidlet>\n");

    const Outcome outcome = gallery({files.dataPath(), u"-o"_s, files.path(u"out"_s)});

    QCOMPARE(outcome.code, 1);
    QVERIFY(pageOf(files.path(u"out"_s)).contains("class=\"tip failed\""));
}

void TestAuthorGallery::missingLanguage_isNoFailure()
{
    PackageBuilder files;
    files.writeScene(u"A.vidlets"_s);
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets locale=\"en_US\"><vidlet key=\"pen\"/></vidlets>\n");
    files.writeControlFile(u"A.vidlets"_s, u"b.xml"_s,
                           "<vidlets locale=\"fr_FR\"><vidlet key=\"line\"/></vidlets>\n");

    const Outcome outcome = gallery({files.dataPath(), u"-o"_s, files.path(u"out"_s)});

    QVERIFY(outcome.out.contains("2 tips, 0 failed"));
    QCOMPARE(pageOf(files.path(u"out"_s)).count("<small>no tip</small>"), 2);
}

void TestAuthorGallery::looks_areDrawnBesideEachOther()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"pen"_s);
    files.write(u"A.vidlets/ui/VidletUI.qml"_s, R"(import QtQuick
Rectangle {
    SystemPalette { id: colors }
    width: vidletView.getScaledSize(120)
    height: vidletView.getScaledSize(80)
    color: colors.window
    Rectangle {
        x: Qt.application.layoutDirection === Qt.RightToLeft ? parent.width - width : 0
        width: 10; height: 10
        color: "red"
    }
}
)");

    const Outcome outcome = gallery({files.dataPath(), u"-o"_s, files.path(u"out"_s), u"--dark"_s,
                                     u"--rtl"_s, u"--scale"_s, u"1"_s, u"--scale"_s, u"1.5"_s});

    QVERIFY(outcome.code >= 0);
    const QString prefix = files.path(u"out/pictures/A/pen/en_5fUS-"_s);
    const QImage light(prefix + u"light.png"_s);
    const QImage dark(prefix + u"dark.png"_s);
    const QImage mirrored(prefix + u"light-rtl.png"_s);
    const QImage large(prefix + u"dark-rtl-x1.5.png"_s);
    QCOMPARE(light.size(), QSize(120, 80));
    QCOMPARE(large.size(), QSize(180, 120));
    QVERIFY(qGray(light.pixel(60, 60)) > 200);
    QVERIFY(qGray(dark.pixel(60, 60)) < 100);
    QCOMPARE(light.pixel(5, 5), qRgb(255, 0, 0));
    QCOMPARE(mirrored.pixel(115, 5), qRgb(255, 0, 0));
    QCOMPARE(filesBelow(files.path(u"out/pictures"_s)).size(), 8);
}

void TestAuthorGallery::package_isNotShadowedByAnother()
{
    PackageBuilder files;
    for (const auto& [package, color] :
         {std::pair("A.vidlets", "red"), std::pair("B.vidlets", "blue")}) {
        const QString name = QString::fromLatin1(package);
        files.writeTip(name, u"a.xml"_s, u"pen"_s);
        files.write(name + u"/ui/VidletUI.qml"_s, scene(color));
    }

    gallery({files.dataPath(), u"-o"_s, files.path(u"out"_s)});

    const QImage first(files.path(u"out/pictures/A/pen/en_5fUS-light.png"_s));
    const QImage second(files.path(u"out/pictures/B/pen/en_5fUS-light.png"_s));
    QCOMPARE(first.pixel(50, 50), qRgb(255, 0, 0));
    QCOMPARE(second.pixel(50, 50), qRgb(0, 0, 255));
}

void TestAuthorGallery::compare_marksWhatDiffers()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips({u"same"_s, u"other"_s, u"old"_s}));
    files.write(u"A.vidlets/ui/VidletUI.qml"_s, scene("teal"));
    files.write(u"A.vidlets/ui/Other.qml"_s, scene("navy"));
    gallery({files.dataPath(), u"-o"_s, files.path(u"old"_s)});
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           tips({u"same"_s, u"other"_s, u"fresh"_s})
                               .replace("key=\"other\"", "key=\"other\" ui=\"ui/Other.qml\""));

    const Outcome outcome = gallery(
        {files.dataPath(), u"-o"_s, files.path(u"new"_s), u"--compare"_s, files.path(u"old"_s)});

    QVERIFY(outcome.out.startsWith("changed: other\nnew: fresh\ngone: old\n"));
    const QByteArray page = pageOf(files.path(u"new"_s));
    QVERIFY(page.contains("<article class=\"tip changed\" id=\"A/other\">"));
    QVERIFY(page.contains("<article class=\"tip new\" id=\"A/fresh\">"));
    QVERIFY(page.contains("<article class=\"tip\" id=\"A/same\">"));
    QVERIFY(page.contains("<li>old</li>"));
}

void TestAuthorGallery::compare_marksNothing_whenOnlyLooksDiffer()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"pen"_s);
    files.writeScene(u"A.vidlets"_s);
    const QString out = files.path(u"out"_s);
    gallery({files.dataPath(), u"-o"_s, out});

    // The gallery that it replaces is the one that it is compared with.
    const Outcome outcome =
        gallery({files.dataPath(), u"-o"_s, out, u"--dark"_s, u"--compare"_s, out});

    QVERIFY(!outcome.out.contains("changed"));
    QVERIFY(!pageOf(out).contains("tip changed"));
}

void TestAuthorGallery::compare_tellsOfLanguageThatIsGoneOrNew()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"pen"_s);
    files.writeScene(u"A.vidlets"_s);
    const QString german = files.write(u"A.vidlets/l10n/Vidlets_de_DE.qm"_s, "");
    const QString both = files.path(u"both"_s);
    const QString one = files.path(u"one"_s);
    gallery({files.dataPath(), u"-o"_s, both});
    QVERIFY(QFile::exists(both + u"/pictures/A/pen/de_5fDE-light.png"_s));
    QVERIFY(QFile::remove(german));

    const Outcome gone = gallery({files.dataPath(), u"-o"_s, one, u"--compare"_s, both});
    QVERIFY2(gone.out.startsWith("changed: pen\n"), gone.out.constData());
    QVERIFY(pageOf(one).contains("class=\"tip changed\""));

    files.write(u"A.vidlets/l10n/Vidlets_de_DE.qm"_s, "");
    const QStringList again{files.dataPath(), u"-o"_s, files.path(u"again"_s), u"--compare"_s, one};
    QVERIFY(gallery(again).out.startsWith("changed: pen\n"));
    // What was not asked for is not gone.
    const Outcome less =
        gallery(again.mid(0, 3) + QStringList{u"--compare"_s, both, u"--locale"_s, u"en_US"_s});
    QVERIFY2(!less.out.contains("changed"), less.out.constData());
}

void TestAuthorGallery::compare_namesPackages_whenEitherGalleryHasSeveral()
{
    PackageBuilder files;
    for (const QString& package : {u"A.vidlets"_s, u"B.vidlets"_s}) {
        files.writeTip(package, u"a.xml"_s, u"pen"_s);
        files.writeScene(package);
    }
    gallery({files.dataPath(), u"-o"_s, files.path(u"old"_s)});

    const Outcome outcome = gallery({files.path(u"A.vidlets"_s), u"-o"_s, files.path(u"new"_s),
                                     u"--compare"_s, files.path(u"old"_s)});

    QVERIFY2(outcome.out.startsWith("gone: B/pen\n"), outcome.out.constData());
}

/// Whatever ended it, and whatever has become of the packages meanwhile.
void TestAuthorGallery::interruptedGallery_isFinishedByTheNext()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"pen"_s);
    files.writeScene(u"A.vidlets"_s);
    files.writeTip(u"B.vidlets"_s, u"b.xml"_s, u"line"_s);
    files.write(u"B.vidlets/ui/VidletUI.qml"_s,
                scene("teal", "    Component.onCompleted: { while (true) {} }\n"));
    const QString out = files.path(u"out"_s);
    const QString drawn = out + u"/pictures/A/pen/en_5fUS-light.png"_s;
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"LD_PRELOAD"_s);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PROGRAM), {u"gallery"_s, files.dataPath(), u"-o"_s, out});
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(drawn), kTimeoutMs);
    process.kill();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QVERIFY(!QFile::exists(out + u"/gallery.json"_s));
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"pencil"_s);
    files.write(u"B.vidlets/ui/VidletUI.qml"_s, scene("teal"));

    const Outcome outcome = gallery({files.dataPath(), u"-o"_s, out});

    QVERIFY2(outcome.out.contains("2 tips, 0 failed"), outcome.err.constData());
    QVERIFY(!QFile::exists(drawn));
    gallery({files.dataPath(), u"-o"_s, files.path(u"fresh"_s)});
    QCOMPARE(filesBelow(out), filesBelow(files.path(u"fresh"_s)));
}

void TestAuthorGallery::oldPictures_goWithTheGallery()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"pen"_s);
    files.writeScene(u"A.vidlets"_s);
    const QString out = files.path(u"out"_s);
    gallery({files.dataPath(), u"-o"_s, out});
    files.write(u"out/notes.txt"_s, "mine");
    QVERIFY(QFile::exists(out + u"/pictures/A/pen/en_5fUS-light.png"_s));
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"line"_s);

    gallery({files.dataPath(), u"-o"_s, out});

    QVERIFY(!QFile::exists(out + u"/pictures/A/pen"_s));
    QVERIFY(QFile::exists(out + u"/pictures/A/line/en_5fUS-light.png"_s));
    QVERIFY(QFile::exists(out + u"/notes.txt"_s));
}

void TestAuthorGallery::endlessScene_isShownAsFailed()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"pen"_s);
    files.write(u"A.vidlets/ui/VidletUI.qml"_s,
                scene("teal", "    Component.onCompleted: { while (true) {} }\n"));
    files.writeTip(u"B.vidlets"_s, u"b.xml"_s, u"line"_s);
    files.writeScene(u"B.vidlets"_s);

    const Outcome outcome = gallery({files.dataPath(), u"-o"_s, files.path(u"out"_s)});

    QCOMPARE(outcome.code, 1);
    QVERIFY(outcome.out.contains("2 tips, 1 failed"));
    QVERIFY(QFile::exists(files.path(u"out/pictures/B/line/en_5fUS-light.png"_s)));
}

void TestAuthorGallery::page_isShownByBrowser()
{
    const QString browser = QStandardPaths::findExecutable(u"chromium"_s);
    QVERIFY2(!browser.isEmpty(), "There is no chromium (Debian package chromium).");
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a pen"_s);
    files.write(u"A.vidlets/ui/VidletUI.qml"_s, scene(QColor(kUnusualColor).name().toLatin1()));
    gallery({files.dataPath(), u"-o"_s, files.path(u"out"_s)});

    const QString shot = files.path(u"shot.png"_s);
    const Outcome outcome =
        run(browser,
            {u"--headless"_s, u"--no-sandbox"_s, u"--disable-gpu"_s,
             u"--user-data-dir="_s + files.path(u"profile"_s), u"--screenshot="_s + shot,
             u"--window-size=900,700"_s, u"file://%1/index.html"_s.arg(files.path(u"out"_s))});

    QCOMPARE(outcome.code, 0);
    const QImage image(shot);
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            found += image.pixel(x, y) == kUnusualColor ? 1 : 0;
    }
    QCOMPARE(found, 120 * 80);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorGallery>(argc, argv);
}

#include "tst_authorgallery.moc"
