// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "CheckedPackages.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;
using namespace Vidlets;

class TestAuthorPackages : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void add_takesOnePlaceOnce();
    void reportShadowed_namesBoth_whenDataPathsDiffer();
    void pathsOf_knowsPackagesBesideOnes();
    void link_isIgnored_whenPackage();
    void link_isIgnored_whenControlDirectoryLeadsOut();
    void hidden_isIgnored();
    void keyData_isTakenOnce_whenSpelledTwice();
    void file_isToldToBeControlFile_whenNoKeyData();
};

void TestAuthorPackages::add_takesOnePlaceOnce()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    const QString path = files.dataPath();

    QCOMPARE(
        checked({path, path + u"/."_s, path + u"/A.vidlets"_s, path + u"/A.vidlets/"_s}).size(), 0);
}

void TestAuthorPackages::reportShadowed_namesBoth_whenDataPathsDiffer()
{
    PackageBuilder one;
    PackageBuilder two;
    one.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    two.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");

    const QList<AuthorFinding> findings = checked({one.dataPath(), two.dataPath()});

    QCOMPARE(places(findings, u"package-shadowed"_s), QStringList{u"A.vidlets:0"_s});
    QVERIFY(findings.constFirst().file.startsWith(two.dataPath()));
    QVERIFY(findings.constFirst().message.contains(one.dataPath()));
}

void TestAuthorPackages::pathsOf_knowsPackagesBesideOnes()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets search=\"B C\"/>");
    files.writeTip(u"B.vidlets"_s, u"b.xml"_s, u"b"_s);

    const QList<AuthorFinding> findings = checked({files.path(u"A.vidlets"_s)});

    QCOMPARE(findings.size(), 1);
    QVERIFY(findings.constFirst().message.contains("\"C\""_L1));
}

void TestAuthorPackages::link_isIgnored_whenPackage()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);
    QVERIFY(QFile::link(files.path(u"A.vidlets"_s), files.path(u"B.vidlets"_s)));

    QCOMPARE(places(checked({files.dataPath()}), u"file-ignored"_s), QStringList{u"B.vidlets:0"_s});
}

void TestAuthorPackages::link_isIgnored_whenControlDirectoryLeadsOut()
{
    PackageBuilder files;
    files.write(u"tips/a.xml"_s, "<vidlets/>");
    files.write(u"A.vidlets/ui/VidletUI.qml"_s, "import QtQuick\nItem {}");
    files.writeControlFile(u"B.vidlets"_s, u"b.xml"_s, "<vidlets/>");
    QVERIFY(QFile::link(u"../tips"_s, files.path(u"A.vidlets/Control"_s)));
    QVERIFY(QDir(files.path(u"B.vidlets"_s)).rename(u"Control"_s, u"Tips"_s));
    QVERIFY(QFile::link(u"Tips"_s, files.path(u"B.vidlets/Control"_s)));

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(places(findings, u"file-ignored"_s), QStringList{u"Control:0"_s});
    QCOMPARE(places(findings, u"package-empty"_s), QStringList{u"A.vidlets:0"_s});
}

void TestAuthorPackages::hidden_isIgnored()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    files.writeControlFile(u"A.vidlets"_s, u".b.xml"_s, "<vidlets/>");
    files.writeControlFile(u".C.vidlets"_s, u"c.xml"_s, "<vidlets/>");

    const QStringList expected{u".C.vidlets:0"_s, u".b.xml:0"_s};
    QCOMPARE(places(checked({files.dataPath()}), u"file-ignored"_s), expected);
    QCOMPARE(places(checked({files.path(u".C.vidlets"_s)}), u"file-ignored"_s),
             QStringList{u".C.vidlets:0"_s});
}

void TestAuthorPackages::keyData_isTakenOnce_whenSpelledTwice()
{
    PackageBuilder files;
    const QString keys = files.write(u"keys.xml"_s, "<vidletkeys><key/></vidletkeys>");

    QCOMPARE(checked({keys, files.path(u"x/../keys.xml"_s), QDir().relativeFilePath(keys)}).size(),
             1);
}

void TestAuthorPackages::file_isToldToBeControlFile_whenNoKeyData()
{
    PackageBuilder files;
    const QString path = files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);

    const QList<AuthorFinding> findings = checked({path});

    QCOMPARE(findings.size(), 1);
    QCOMPARE(findings.constFirst().rule, u"root-foreign"_s);
    QVERIFY(findings.constFirst().message.contains("control file"_L1));
    QVERIFY(findings.constFirst().help.contains("package"_L1));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorPackages>(argc, argv);
}

#include "tst_authorpackages.moc"
