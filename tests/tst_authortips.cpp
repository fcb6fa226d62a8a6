// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "CheckedPackages.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

QByteArray tips(const QByteArray& locale, const QByteArray& keys)
{
    QByteArray result = "<vidlets locale=\"" + locale + "\">\n";
    for (const char key : keys)
        result += QByteArray("<vidlet key=\"") + key + "\"/>\n";
    return result + "</vidlets>\n";
}

} // namespace

class TestAuthorTips : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void twiceAcross_namesWinner_whenDataPathsDiffer();
    void twiceAcross_isFound_whenOneServesAll();
    void twiceAcross_isNotFound_whenFileIsNotInUse();
    void twiceAcross_passesOverFile_whenKeyIsTwiceInIt();
    void empty_isNoPackage_whenFileIsBroken();
    void gap_isFilledByFileForAll();
    void gap_isNotOfUnknownLocale();
    void ui_isFoundInSearchedPackage();
    void ui_isFoundInPackageBeside();
    void ui_isMissed_whenSearchNamesUnknownPackage();
    void places_areThoseOfAttributes();
    void keyData_isToldOnce_whenKeyIsEmpty();
    void keyData_isNotTold_whenTipIsInBrokenFile();
    void keyData_isNotCompared_whenThereIsNoPackage();
};

void TestAuthorTips::twiceAcross_namesWinner_whenDataPathsDiffer()
{
    PackageBuilder one;
    PackageBuilder two;
    one.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips("de", "x"));
    two.writeControlFile(u"B.vidlets"_s, u"b.xml"_s, tips("de_DE", "x"));

    const QList<AuthorFinding> findings = checked({one.dataPath(), two.dataPath()});

    QCOMPARE(places(findings, u"key-twice-across"_s), QStringList{u"a.xml:2"_s});
    const bool isNamed =
        std::any_of(findings.cbegin(), findings.cend(), [](const AuthorFinding& finding) {
            return finding.message.contains(u"b.xml:2 too, which wins"_s);
        });
    QVERIFY(isNamed);
}

void TestAuthorTips::twiceAcross_isFound_whenOneServesAll()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips("", "x"));
    files.writeControlFile(u"A.vidlets"_s, u"b.xml"_s, tips("de", "x"));
    files.writeControlFile(u"A.vidlets"_s, u"c.xml"_s, tips("fr", "y"));

    QCOMPARE(places(checked({files.dataPath()}), u"key-twice-across"_s), QStringList{u"b.xml:2"_s});
}

void TestAuthorTips::twiceAcross_isNotFound_whenFileIsNotInUse()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips("", "x"));
    files.writeControlFile(u"A.vidlets"_s, u"b.xml"_s, tips("", "x") + "<");

    QCOMPARE(places(checked({files.dataPath()}), u"key-twice-across"_s), QStringList());
}

void TestAuthorTips::twiceAcross_passesOverFile_whenKeyIsTwiceInIt()
{
    PackageBuilder one;
    PackageBuilder two;
    one.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips("de", "x"));
    two.writeControlFile(u"B.vidlets"_s, u"b.xml"_s, tips("de", "xx"));

    const QList<AuthorFinding> findings = checked({one.dataPath(), two.dataPath()});

    QCOMPARE(places(findings, u"key-twice"_s), QStringList{u"b.xml:3"_s});
    QCOMPARE(places(findings, u"key-twice-across"_s), QStringList());
}

void TestAuthorTips::empty_isNoPackage_whenFileIsBroken()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets>\n<vidlet key=\"a\"></vidlets>");
    files.writeControlFile(u"B.vidlets"_s, u"b.xml"_s, "<tips a=\"\"/>");

    QCOMPARE(places(checked({files.dataPath()}), u"package-empty"_s),
             QStringList{u"B.vidlets:0"_s});
}

void TestAuthorTips::gap_isFilledByFileForAll()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips("de", "xyz"));
    files.writeControlFile(u"A.vidlets"_s, u"b.xml"_s, tips("en_US", "x"));
    files.writeControlFile(u"A.vidlets"_s, u"c.xml"_s, tips("", "y"));
    files.writeControlFile(u"B.vidlets"_s, u"d.xml"_s, tips("fr", "q"));

    QCOMPARE(places(checked({files.dataPath()}), u"locale-gap"_s), QStringList{u"a.xml:4"_s});
}

void TestAuthorTips::gap_isNotOfUnknownLocale()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips("de", "xy"));
    files.writeControlFile(u"A.vidlets"_s, u"b.xml"_s, tips("qq", "x"));
    files.writeControlFile(u"A.vidlets"_s, u"c.xml"_s, tips("fr", "x"));

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(places(findings, u"locale-unknown"_s), QStringList{u"b.xml:1"_s});
    QCOMPARE(places(findings, u"locale-gap"_s), QStringList{u"a.xml:3"_s});
    for (const AuthorFinding& finding : findings)
        QVERIFY2(finding.rule != "locale-gap"_L1 || finding.message.endsWith(" for fr_FR."_L1),
                 qPrintable(finding.message));
}

void TestAuthorTips::ui_isFoundInPackageBeside()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets search=\"B\" ui=\"ui/VidletUI.qml\" simple=\"ui/None.qml\"/>");
    files.writeScene(u"B.vidlets"_s);

    QCOMPARE(places(checked({files.path(u"A.vidlets"_s)}), u"ui-missing"_s),
             QStringList{u"a.xml:1"_s});
}

void TestAuthorTips::ui_isMissed_whenSearchNamesUnknownPackage()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets search=\"No\" ui=\"ui/None.qml\"/>");

    QCOMPARE(places(checked({files.dataPath()}), u"ui-missing"_s), QStringList{u"a.xml:1"_s});
}

void TestAuthorTips::places_areThoseOfAttributes()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets locale=\"de\"\n search=\"No\"\n ui=\"No.qml\">\n"
                           "<vidlet key=\"a\"\n simple=\"Not.qml\"/></vidlets>");

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(places(findings, u"search-unknown"_s), QStringList{u"a.xml:2"_s});
    const QStringList expected{u"a.xml:3"_s, u"a.xml:5"_s};
    QCOMPARE(places(findings, u"ui-missing"_s), expected);
}

void TestAuthorTips::keyData_isNotTold_whenTipIsInBrokenFile()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets><vidlet key=\"a\"/>&</vidlets>");
    const QString keys =
        files.write(u"keys.xml"_s, "<vidletkeys><key name=\"a\"/>\n<key name=\"b\"/></vidletkeys>");

    QCOMPARE(places(checked({files.dataPath(), keys}), u"keydata-unknown-key"_s),
             QStringList{u"keys.xml:2"_s});
}

void TestAuthorTips::keyData_isToldOnce_whenKeyIsEmpty()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);
    const QString keys = files.write(u"keys.xml"_s, "<vidletkeys><key name=\"\"/></vidletkeys>");

    const QList<AuthorFinding> findings = checked({files.dataPath(), keys});

    QCOMPARE(places(findings, u"key-blank"_s), QStringList{u"keys.xml:1"_s});
    QVERIFY(places(findings, u"keydata-unknown-key"_s).isEmpty());
}

void TestAuthorTips::ui_isFoundInSearchedPackage()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets search=\"B\" ui=\"ui/VidletUI.qml\" simple=\"ui/None.qml\"/>");
    files.writeTip(u"B.vidlets"_s, u"b.xml"_s, u"b"_s);
    files.writeScene(u"B.vidlets"_s);

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(places(findings, u"ui-missing"_s), QStringList{u"a.xml:1"_s});
    QVERIFY(findings.constFirst().message.contains("ui/None.qml"_L1));
}

void TestAuthorTips::keyData_isNotCompared_whenThereIsNoPackage()
{
    PackageBuilder files;
    const QString keys = files.write(u"keys.xml"_s, "<vidletkeys><key name=\"a\"/></vidletkeys>");

    QCOMPARE(checked({keys}).size(), 0);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorTips>(argc, argv);
}

#include "tst_authortips.moc"
