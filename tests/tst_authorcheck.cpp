// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "CheckedPackages.h"
#include "ClipWriter.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <VidletsAuthor/AuthorCheck.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

class TestAuthorCheck : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void add_isFalse_whenThereIsNothing();
    void run_isInOrderOfPathAndLine();
    void set_goesBeforeSettingsOfPackage();
    void run_findsTheSame_howeverPathIsSpelled_data();
    void run_findsTheSame_howeverPathIsSpelled();
    void run_comesToEnd_whenFilesAreNasty();
    void run_comesToEnd_whenKeyDataIsFifo();
    void locales_areWantedOfPackage();
    void suppression_holdsForRulesOfSeveralFiles();
    void run_comesToEnd_whenMuchIsNamedThatIsNotThere();
};

void TestAuthorCheck::add_isFalse_whenThereIsNothing()
{
    AuthorCheck check;
    QString reason;

    QVERIFY(!check.add(u"/nowhere/at/all"_s, reason));
    QVERIFY(!reason.isEmpty());
    QVERIFY(!check.add(QString(), reason));
    QVERIFY(!check.add(u"/dev/null"_s, reason));
}

void TestAuthorCheck::run_isInOrderOfPathAndLine()
{
    PackageBuilder files;
    files.writeControlFile(u"B.vidlets"_s, u"b.xml"_s, "<vidlets><vidlet/></vidlets>");
    files.writeControlFile(u"A.vidlets"_s, u"b.xml"_s,
                           "<vidlets>\n<vidlet/>\n\n<vidlet/></vidlets>");

    const QStringList expected{u"b.xml:2"_s, u"b.xml:4"_s, u"b.xml:1"_s};
    QCOMPARE(places(checked({files.dataPath()}), u"key-missing"_s), expected);
}

void TestAuthorCheck::set_goesBeforeSettingsOfPackage()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets><vidlet/></vidlets>");
    files.writeControlFile(u"B.vidlets"_s, u"b.xml"_s, "<vidlets><vidlet/></vidlets>");
    files.write(u"A.vidlets/.vidletscheck.toml"_s, "[rules]\nkey-missing = \"off\"\n");
    QCOMPARE(places(checked({files.dataPath()}), u"key-missing"_s), QStringList{u"b.xml:1"_s});

    AuthorCheck check;
    QString reason;
    QVERIFY(check.add(files.dataPath(), reason));
    QVERIFY(check.set(u"key-missing=note"_s, reason));

    const QList<AuthorFinding> findings = check.run();
    QCOMPARE(places(findings, u"key-missing"_s).size(), 2);
    for (const AuthorFinding& finding : findings)
        QVERIFY(finding.rule != "key-missing"_L1 || finding.severity == AuthorSeverity::Note);
}

void TestAuthorCheck::run_findsTheSame_howeverPathIsSpelled_data()
{
    QTest::addColumn<QString>("directory");
    QTest::addColumn<QString>("path");

    QTest::newRow("data path") << u"/"_s << u"%1"_s;
    QTest::newRow("package") << u"/"_s << u"%1/A.vidlets"_s;
    QTest::newRow("current directory") << u"%1"_s << u"."_s;
    QTest::newRow("below the current directory") << u"%1"_s << u"./A.vidlets"_s;
    QTest::newRow("with a slash") << u"%1"_s << u"A.vidlets/"_s;
    QTest::newRow("within the package") << u"%1/A.vidlets"_s << u"."_s;
    QTest::newRow("above the current directory") << u"%1/A.vidlets/Resources"_s << u".."_s;
    QTest::newRow("around the current directory") << u"%1/A.vidlets"_s << u".."_s;
}

/// What the package sets holds for its resources and clips, too.
void TestAuthorCheck::run_findsTheSame_howeverPathIsSpelled()
{
    QFETCH(const QString, directory);
    QFETCH(const QString, path);
    PackageBuilder files;
    ClipWriter clips;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets><vidlet key=\"a\"><p s=\"Pen.svg\" c=\"c.mp4\"/>"
                           "<p s=\"gone.png\"/></vidlet></vidlets>");
    files.write(u"A.vidlets/Resources/pen.svg"_s, "");
    files.write(u"A.vidlets/Resources/unused.svg"_s, "");
    files.write(u"A.vidlets/.vidletscheck.toml"_s,
                "[rules]\nresource-unused = \"off\"\n[clip-memory]\nlimit = 1000\n");
    files.write(u"A.vidlets/VidletUI.qml"_s, "import QtQuick\nText { text: \"Pen\" }\n");
    QVERIFY(
        QFile::copy(clips.testClip(u"c.mp4"_s, u"libx264"_s, {160, 90}, 25, 10, {u"-bf"_s, u"0"_s}),
                    files.path(u"A.vidlets/Resources/c.mp4"_s)));
    const QString before = QDir::currentPath();
    const auto back = qScopeGuard([&before] { QDir::setCurrent(before); });
    QVERIFY(
        QDir::setCurrent(directory.contains(u'%') ? directory.arg(files.dataPath()) : directory));

    const QList<AuthorFinding> findings =
        checked({path.contains(u'%') ? path.arg(files.dataPath()) : path});

    QStringList found;
    for (const AuthorFinding& finding : findings) {
        QVERIFY2(QDir::cleanPath(finding.file) == finding.file, qPrintable(finding.file));
        found.append(u"%1 %2"_s.arg(QFileInfo(finding.file).fileName(), finding.rule));
    }
    found.sort();
    QCOMPARE(found,
             (QStringList{u"VidletUI.qml string-untranslated"_s, u"a.xml resource-case"_s,
                          u"a.xml resource-missing"_s, u"a.xml scene-missing"_s,
                          u"a.xml scene-missing"_s, u"c.mp4 clip-memory"_s}));
}

void TestAuthorCheck::run_comesToEnd_whenFilesAreNasty()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);
    const QByteArray control = QFile::encodeName(files.path(u"A.vidlets/Control/"_s));
    QCOMPARE(::mkfifo((control + "fifo.xml").constData(), 0600), 0);
    QCOMPARE(::symlink("loop.xml", (control + "loop.xml").constData()), 0);
    QCOMPARE(::symlink("/dev/zero", (control + "zero.xml").constData()), 0);
    QCOMPARE(::symlink("..", (control + "up").constData()), 0);
    const int handle = ::open((control + "caf\xe9.xml").constData(), O_CREAT | O_WRONLY, 0600);
    QVERIFY(handle >= 0);
    ::close(handle);
    QFile huge(files.path(u"A.vidlets/Control/huge.xml"_s));
    QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(qint64(100) * 1024 * 1024 * 1024));

    const QStringList ignored = places(checked({files.dataPath()}), u"file-ignored"_s);
    // QTemporaryDir would leave it behind.
    QCOMPARE(::unlink((control + "caf\xe9.xml").constData()), 0);

    QCOMPARE(ignored.size(), 6);
    QVERIFY(ignored.contains(u"huge.xml:0"_s));
}

void TestAuthorCheck::run_comesToEnd_whenKeyDataIsFifo()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);
    const QByteArray fifo = QFile::encodeName(files.path(u"A.vidlets/.vidletscheck.toml"_s));
    QCOMPARE(::mkfifo(fifo.constData(), 0600), 0);

    QCOMPARE(places(checked({files.dataPath()}), u"settings-broken"_s),
             QStringList{u".vidletscheck.toml:0"_s});
}

void TestAuthorCheck::locales_areWantedOfPackage()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets locale=\"en_US\"><vidlet key=\"a\"/></vidlets>");
    AuthorCheck check;
    QString reason;
    QVERIFY(check.add(files.dataPath(), reason));
    check.setLocales({u"de_DE"_s});

    const QList<AuthorFinding> findings = check.run();

    QCOMPARE(places(findings, u"locale-gap"_s), QStringList{u"a.xml:1"_s});
    QVERIFY(findings.constFirst().message.contains("de_DE"_L1));
}

void TestAuthorCheck::suppression_holdsForRulesOfSeveralFiles()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets>\n<!-- vidlets-check: off resource-missing -->\n"
                           "<vidlet key=\"a\"><p s=\"a.png\"/></vidlet>\n"
                           "<vidlet key=\"b\"><p s=\"b.png\"/></vidlet>\n</vidlets>");

    QCOMPARE(places(checked({files.dataPath()}), u"resource-missing"_s), QStringList{u"a.xml:4"_s});
}

void TestAuthorCheck::run_comesToEnd_whenMuchIsNamedThatIsNotThere()
{
    PackageBuilder files;
    // Each scene and resource looked for in each package would take minutes.
    constexpr int kNames = 100'000;
    constexpr int kTips = 2'000;
    QByteArray content("<vidlets search=\"");
    for (int i = 0; i < kNames; ++i)
        content += 'n' + QByteArray::number(i) + ' ';
    content += "\">\n";
    for (int i = 0; i < kTips; ++i) {
        const QByteArray number = QByteArray::number(i);
        content +=
            "<vidlet key='" + number + "' ui='" + number + ".qml' p='" + number + ".png'/>\n";
    }
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, content + "</vidlets>");

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(places(findings, u"search-unknown"_s).size(), kNames);
    QCOMPARE(places(findings, u"ui-missing"_s).size(), kTips);
    QCOMPARE(places(findings, u"resource-missing"_s).size(), kTips);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorCheck>(argc, argv);
}

#include "tst_authorcheck.moc"
