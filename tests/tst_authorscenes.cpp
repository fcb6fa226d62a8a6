// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "CheckedPackages.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <VidletsAuthor/AuthorCheck.h>
#include <VidletsAuthor/AuthorQmllint.h>
#include <VidletsAuthor/AuthorReport.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

constexpr auto kProgram = "VIDLETS_QMLLINT";

/// The findings about scenes as "rule file:line:column".
QStringList scenePlaces(const QList<AuthorFinding>& findings)
{
    QStringList result;
    for (const AuthorFinding& finding : findings) {
        if (finding.rule.startsWith("scene-"_L1))
            result.append(u"%1 %2:%3:%4"_s.arg(finding.rule, QFileInfo(finding.file).fileName())
                              .arg(finding.position.line)
                              .arg(finding.position.column));
    }
    return result;
}

/// A program in the place of qmllint.
QString standIn(PackageBuilder& files, const QByteArray& script)
{
    const QString path = files.write(u"qmllint"_s, "#!/bin/sh\n" + script + '\n');
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

} // namespace

class TestAuthorScenes : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void goodScene_hasNoFinding_data();
    void goodScene_hasNoFinding();
    void place_isThatInScene_data();
    void place_isThatInScene();
    void message_namesSceneOfAuthor();
    void settingsOfPackage_haveNoEffect();
    void suppression_switchesOff();
    void suppression_isReported_whenThereIsNoSuchRule();
    void sceneOfOtherPackage_isKnown();
    void absence_isSaidOfPackage();
    void builtinsOfQtItself_areNoFinding();
    void hang_isSaidOfScene();
    void wait_isToldOnce();
    void crash_isSaidOfSceneAlone();
    void installedTypes_needNothingElse();
};

void TestAuthorScenes::cleanup()
{
    qunsetenv(kProgram);
}

void TestAuthorScenes::goodScene_hasNoFinding_data()
{
    QTest::addColumn<QByteArray>("text");

    const QByteArray head = "import QtQuick\nimport com.larkspan.vidlets.qml 1.0\n";
    const auto row = [&head](const char* name, const QByteArray& members) {
        QTest::newRow(name) << head + "Item {\nid: root\n" + members + "\n}";
    };
    for (const char* type : {"QtObject", "VLXmlElement", "var"}) {
        row(type,
            QByteArray("readonly property TYPE tip: vidlet\n"
                       "readonly property TYPE inner: tip ? tip.childElement('p') : null\n"
                       "readonly property TYPE first: tip ? tip.childElementList('p')[0] : null\n"
                       "readonly property string a: inner ? inner.attribute('a') : ''\n"
                       "readonly property string b: first && first.hasAttribute('b') ? "
                       "first.content + first.tagName : ''\n")
                .replace("TYPE", type));
    }
    row("list",
        "readonly property list<QtObject> l: vidlet ? vidlet.childElementList('p') : []\n"
        "Repeater {\nmodel: root.l\n"
        "Text {\nrequired property QtObject modelData\n"
        "text: modelData ? modelData.content : ''\n}\n}\n");
    row("functions",
        "function f(e: VLXmlElement): string { return e.attribute('a'); }\n"
        "function g() { const list = vidlet ? vidlet.childElementList('') : [];\n"
        "return list.map(e => e ? e.content : '').join(); }\n");
    row("view",
        "width: vidletView.getScaledSize(3)\n"
        "property string a: vidletView.interpolate(vidletView.translate('a', 'b') || 'a')\n"
        "property string b: dataLocation + '/' + vidletView.resourceDirectory\n"
        "Component.onCompleted: { vidletView.stayOpen = true; vidletView.debugLog('a'); "
        "vidletView.setItemCursor(root, 'IBeamCursor', '') }\n"
        "Connections { target: vidletView; function onReservedChanged() {} }\n");
    row("types",
        "VLStyledRectangle { id: r; element: 'PE_Frame' }\n"
        "VLVideoComponent { state: VLVideoComponent.pausedState\n"
        "width: contentWidth; onStateChanged: if (state === 1) play() }\n"
        "Text { color: r.textColor }\n");
    row("object of another type",
        "property QtObject a: root\nproperty QtObject b: Timer {}\n"
        "property string c: b.objectName\n");
    row("delegate", "property int n: 3\nRepeater { model: 2; Item { width: root.n } }\n");
    row("later", "function f() {}\nComponent.onCompleted: Qt.callLater(root.f)\n");
    QTest::newRow("without the module")
        << QByteArray("import QtQuick\nItem {\nproperty string a: vidlet ? vidlet.content : ''\n"
                      "width: vidletView.getScaledSize(2)\n}");
    QTest::newRow("in another order")
        << QByteArray("import com.larkspan.vidlets.qml 1.0\nimport QtQuick\nItem {\n"
                      "property QtObject a: vidlet\nproperty string b: a ? a.content : ''\n}");
    QTest::newRow("host") << QByteArray(
        "import QtQuick\nimport com.larkspan.vidlets.host 1.0\nItem {\nVidlet.key: 'a'\n"
        "scale: VidletPreferences.textScale\nvisible: !VidletPreferences.reducedMotion\n}");
}

void TestAuthorScenes::goodScene_hasNoFinding()
{
    QFETCH(const QByteArray, text);
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    files.write(u"A.vidlets/ui/VidletUI.qml"_s, text);

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QVERIFY2(findings.isEmpty(), AuthorReport::text(findings).constData());
}

void TestAuthorScenes::place_isThatInScene_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("import before")
        << QByteArray("import QtQuick; Item { width: nothing }") << u"scene-lint A.qml:1:31"_s;
    QTest::newRow("no import") << QByteArray("QtObject { property int a: nothing }")
                               << u"scene-lint A.qml:1:28"_s;
    QTest::newRow("next line") << QByteArray("import QtQuick // words\nItem { width: nothing }")
                               << u"scene-lint A.qml:2:15"_s;
    QTest::newRow("misspelt") << QByteArray(
        "import QtQuick\nText { text: vidlet ? vidlet.attributeOf('a') : '' }")
                              << u"scene-lint A.qml:2:30"_s;
    QTest::newRow("misspelt in view")
        << QByteArray("import QtQuick\nText { text: vidletView.interpolat('') }")
        << u"scene-lint A.qml:2:25"_s;
    QTest::newRow("broken") << QByteArray("import QtQuick\nItem {\n width: 3 +\n}")
                            << u"scene-broken A.qml:4:1"_s;
    QTest::newRow("no text at all") << QByteArray() << u"scene-broken A.qml:1:1"_s;
}

void TestAuthorScenes::place_isThatInScene()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QString, expected);
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    files.write(u"A.vidlets/ui/A.qml"_s, text);

    QCOMPARE(scenePlaces(checked({files.dataPath()})), QStringList{expected});
}

void TestAuthorScenes::message_namesSceneOfAuthor()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    const QString scene =
        files.write(u"A.vidlets/ui/A.qml"_s, "import QtQuick\nimport QtQuick.Controls\nItem {}\n");

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(findings.size(), 1);
    // The one of newer Qt names no scene at all.
    const QStringList words{u"Unused import at %1:2:1."_s.arg(scene), u"Unused import."_s};
    QVERIFY2(words.contains(findings.constFirst().message),
             qPrintable(findings.constFirst().message));
}

void TestAuthorScenes::settingsOfPackage_haveNoEffect()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    files.write(u"A.vidlets/ui/A.qml"_s, "import QtQuick\nItem { width: nothing; B {} }");
    files.write(u"A.vidlets/ui/B.qml"_s, "import QtQuick\nItem {}");
    const QStringList expected{u"scene-lint A.qml:2:15"_s};
    QCOMPARE(scenePlaces(checked({files.dataPath()})), expected);

    // Each of them would have an effect on qmllint in this place.
    const QByteArray settings = "[General]\nDisableDefaultImports=true\n[Warnings]\n"
                                "UnqualifiedAccess=disable\n";
    files.write(u".qmllint.ini"_s, settings);
    files.write(u"A.vidlets/ui/.qmllint.ini"_s, settings);
    files.write(u"A.vidlets/ui/qmldir"_s, "module ui\nplugin evil\nB 1.0 A.qml\n");

    QCOMPARE(scenePlaces(checked({files.dataPath()})), expected);
}

void TestAuthorScenes::suppression_switchesOff()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    files.write(u"A.vidlets/ui/A.qml"_s,
                "import QtQuick\nItem {\n// vidlets-check: off scene-lint\nwidth: nothing\n"
                "height: nothing\n// qmllint disable unqualified\nx: nothing\n}");

    QCOMPARE(scenePlaces(checked({files.dataPath()})), QStringList{u"scene-lint A.qml:5:9"_s});
}

void TestAuthorScenes::suppression_isReported_whenThereIsNoSuchRule()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    files.write(u"A.vidlets/ui/A.qml"_s,
                "import QtQuick\nItem {\n// vidlets-check: off scene-lint, scene-lnit\nx: 3\n}");

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(findings.size(), 1);
    QCOMPARE(findings.constFirst().rule, u"settings-broken"_s);
    QCOMPARE(findings.constFirst().position.line, 3);
    QCOMPARE(findings.constFirst().message, u"There is no rule \"scene-lnit\"."_s);
}

void TestAuthorScenes::sceneOfOtherPackage_isKnown()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    files.writeControlFile(u"B.vidlets"_s, u"b.xml"_s, "<vidlets/>");
    files.write(u"A.vidlets/ui/A.qml"_s,
                "import QtQuick\nimport \"../../B.vidlets/ui\"\nimport \"words.js\" as Words\n"
                "B { b: Words.c(); d: 3; Item {} }");
    files.write(u"A.vidlets/ui/words.js"_s, "function c() { return ''; }");
    files.write(u"B.vidlets/ui/B.qml"_s, "import QtQuick\nItem { property string b }");

    QCOMPARE(scenePlaces(checked({files.dataPath()})), QStringList{u"scene-lint A.qml:4:19"_s});
}

void TestAuthorScenes::absence_isSaidOfPackage()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    files.write(u"A.vidlets/ui/A.qml"_s, "import QtQuick\nItem { width: nothing }");
    qputenv(kProgram, "/nowhere/qmllint");

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(scenePlaces(findings), QStringList{u"scene-unchecked A.vidlets:0:0"_s});
    QVERIFY(findings.constFirst().message.contains("there is no such program"_L1));
}

void TestAuthorScenes::builtinsOfQtItself_areNoFinding()
{
    PackageBuilder files;
    const AuthorSceneOutline scene(u"import QtQuick\nItem {}"_s);
    AuthorFindings findings;
    AuthorQmllint qmllint(findings);
    qmllint.add(u"/a/A.qml"_s, u"A.qml"_s, scene);

    qmllint.check(standIn(
        files,
        "cat >\"$2\" <<END\n"
        "{\"files\":[{\"filename\":\"$5\",\"success\":false,\"warnings\":["
        "{\"line\":1,\"column\":1,\"type\":\"warning\",\"message\":\"Failed to find the "
        "following builtins: jsroot.qmltypes (so will use qrc). Import paths used:\"},"
        "{\"line\":1,\"column\":1,\"type\":\"warning\",\"message\":\"Warnings occurred while "
        "importing base modules:\"},"
        "{\"line\":2,\"column\":1,\"type\":\"warning\",\"message\":\"Other\"}]}]}\nEND\n"));

    QCOMPARE(scenePlaces(findings.all()), QStringList{u"scene-lint A.qml:2:1"_s});
}

void TestAuthorScenes::hang_isSaidOfScene()
{
    PackageBuilder files;
    const AuthorSceneOutline scene(u"Item {}"_s);
    AuthorFindings findings;
    AuthorQmllint qmllint(findings);
    qmllint.add(u"/a/A.qml"_s, u"A.qml"_s, scene);
    qmllint.setTimeLimit(50);
    QList<qsizetype> waits;
    qmllint.setOnWait([&waits](qsizetype scenes) { waits.append(scenes); });

    qmllint.check(standIn(files, "exec sleep 1000"));

    QCOMPARE(scenePlaces(findings.all()), QStringList{u"scene-unchecked A.qml:0:0"_s});
    QCOMPARE(waits, QList<qsizetype>{1});
}

void TestAuthorScenes::wait_isToldOnce()
{
    PackageBuilder files;
    const AuthorSceneOutline scene(u"import QtQuick\nItem {}"_s);
    AuthorFindings findings;
    AuthorQmllint qmllint(findings);
    qmllint.add(u"/a/A.qml"_s, u"A.qml"_s, scene);
    qmllint.add(u"/a/B.qml"_s, u"B.qml"_s, scene);
    qmllint.setTimeLimit(50);
    QList<qsizetype> waits;
    qmllint.setOnWait([&waits](qsizetype scenes) { waits.append(scenes); });

    // Looks at both together first, then at each alone.
    qmllint.check(standIn(files, "exec sleep 1000"));

    QCOMPARE(waits, QList<qsizetype>{2});
}

void TestAuthorScenes::crash_isSaidOfSceneAlone()
{
    PackageBuilder files;
    const QString real = AuthorQmllint::find();
    QVERIFY(!real.isNull());
    const AuthorSceneOutline scene(u"import QtQuick\nItem { width: nothing }"_s);
    AuthorFindings findings;
    AuthorQmllint qmllint(findings);
    for (const char16_t* name : {u"A.qml", u"B.qml", u"Evil.qml", u"C.qml", u"D.qml"})
        qmllint.add(u"/a/"_s + QString::fromUtf16(name), QString::fromUtf16(name), scene);

    qmllint.check(standIn(files,
                          "case \"$*\" in *Evil.qml*) kill -SEGV $$ ;; esac\nexec " + real.toUtf8()
                              + " \"$@\""));

    QStringList found = scenePlaces(findings.all());
    found.sort();
    const QStringList expected{u"scene-lint A.qml:2:15"_s, u"scene-lint B.qml:2:15"_s,
                               u"scene-lint C.qml:2:15"_s, u"scene-lint D.qml:2:15"_s,
                               u"scene-unchecked Evil.qml:0:0"_s};
    QCOMPARE(found, expected);
}

void TestAuthorScenes::installedTypes_needNothingElse()
{
    PackageBuilder files;
    const QString scene =
        files.write(u"A.qml"_s,
                    "import QtQuick\nimport com.larkspan.vidlets.qml 1.0\n"
                    "import com.larkspan.vidlets.host 1.0\nItem {\nproperty QtObject tip: vidlet\n"
                    "width: vidletView.getScaledSize(2)\nVidlet.key: tip ? tip.content : ''\n}");
    QProcess process;

    process.start(AuthorQmllint::find(), {u"-I"_s, QStringLiteral(TYPES), scene});

    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardError(), QByteArray());
    QCOMPARE(process.exitCode(), 0);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorScenes>(argc, argv);
}

#include "tst_authorscenes.moc"
