// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "CheckedPackages.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QFileInfo>
#include <QImage>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace Vidlets;

class TestAuthorResources : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void names_areFoundInScenes();
    void names_areFoundInSearchedPackages();
    void names_areFoundInPackagesBeside();
    void missing_isTold_whenAnotherFileNamesUnknownPackage();
    void case_isTold_whenFolderDiffers();
    void huge_goesByPixels();
    void directory_isLeftAlone_whenOutsideOfPackage();
    void directory_isThatOfTip_forAllThatIsInIt();
    void picture_isLeftAlone_whenItIsOfAnotherKind();
    void filter_isNoName();
    void keyData_isLeftAlone_withoutPackage();
};

void TestAuthorResources::names_areFoundInScenes()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);
    files.write(u"A.vidlets/Resources/used.png"_s, "");
    files.write(u"A.vidlets/Resources/unused.png"_s, "");
    files.write(u"A.vidlets/ui/near.svg"_s, "");
    files.write(
        u"A.vidlets/ui/VidletUI.qml"_s,
        "// \"comment.png\"\nItem { a: \"used.png\"; b: \"../Resources/used.png\"; c: 'near.svg'\n"
        "d: \"gone.png\"; e: \"http://e/x.png\"; f: \"/x.png\"; g: \"This is gone.png\" }");

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(places(findings, u"resource-missing"_s), QStringList{u"VidletUI.qml:3"_s});
    QCOMPARE(places(findings, u"resource-unused"_s), QStringList{u"unused.png:0"_s});
    QVERIFY(places(findings, u"resource-case"_s).isEmpty());
}

void TestAuthorResources::names_areFoundInSearchedPackages()
{
    PackageBuilder files;
    files.writeControlFile(
        u"A.vidlets"_s, u"a.xml"_s,
        "<vidlets search=\"B\"><vidlet key=\"a\" p=\"b.png\" q=\"c.png\"/></vidlets>");
    files.writeTip(u"B.vidlets"_s, u"b.xml"_s, u"b"_s);
    files.write(u"B.vidlets/Resources/b.png"_s, "");

    QCOMPARE(places(checked({files.dataPath()}), u"resource-missing"_s), QStringList{u"a.xml:1"_s});
}

void TestAuthorResources::names_areFoundInPackagesBeside()
{
    PackageBuilder files;
    files.writeControlFile(
        u"A.vidlets"_s, u"a.xml"_s,
        "<vidlets search=\"B\"><vidlet key=\"a\" p=\"b.png\" q=\"c.png\"/></vidlets>");
    files.write(u"B.vidlets/Resources/b.png"_s, "");

    const QList<AuthorFinding> findings = checked({files.path(u"A.vidlets"_s)});

    QCOMPARE(places(findings, u"resource-missing"_s), QStringList{u"a.xml:1"_s});
    QVERIFY(places(findings, u"search-unknown"_s).isEmpty());
}

void TestAuthorResources::missing_isTold_whenAnotherFileNamesUnknownPackage()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets search=\"No\"><vidlet key=\"a\" p=\"a.png\"/></vidlets>");
    files.writeControlFile(u"A.vidlets"_s, u"b.xml"_s,
                           "<vidlets><vidlet key=\"b\" p=\"b.png\"/></vidlets>");

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(places(findings, u"resource-missing"_s), (QStringList{u"a.xml:1"_s, u"b.xml:1"_s}));
    QCOMPARE(places(findings, u"search-unknown"_s), QStringList{u"a.xml:1"_s});
}

void TestAuthorResources::case_isTold_whenFolderDiffers()
{
    PackageBuilder files;
    files.writeControlFile(
        u"A.vidlets"_s, u"a.xml"_s,
        "<vidlets resources=\"Pics\"><vidlet key=\"a\" p=\"in/A.png\"/></vidlets>");
    files.write(u"A.vidlets/Pics/In/a.png"_s, "");

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(places(findings, u"resource-case"_s), QStringList{u"a.xml:1"_s});
    const bool isNamed =
        std::any_of(findings.cbegin(), findings.cend(), [](const AuthorFinding& finding) {
            return finding.message.contains("Pics/In/a.png"_L1);
        });
    QVERIFY(isNamed);
}

void TestAuthorResources::huge_goesByPixels()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s,
                   "<p a=\"wide.png\" b=\"fits.png\" c=\"broken.png\"/>");
    files.write(u"A.vidlets/Resources/broken.png"_s, "no picture");
    QImage fits(4096, 1, QImage::Format_Mono);
    fits.fill(0);
    QVERIFY(fits.save(files.path(u"A.vidlets/Resources/fits.png"_s)));
    QImage wide(4097, 1, QImage::Format_Mono);
    wide.fill(0);
    QVERIFY(wide.save(files.path(u"A.vidlets/Resources/wide.png"_s)));

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(places(findings, u"resource-huge"_s), QStringList{u"wide.png:0"_s});
}

void TestAuthorResources::directory_isLeftAlone_whenOutsideOfPackage()
{
    PackageBuilder files;
    files.writeControlFile(
        u"A.vidlets"_s, u"a.xml"_s,
        "<vidlets resources=\"../..\"><vidlet key=\"a\" p=\"a.png\"/></vidlets>");
    files.write(u"b.png"_s, "");

    QCOMPARE(places(checked({files.dataPath()}), u"resource-unused"_s), QStringList());
}

void TestAuthorResources::directory_isThatOfTip_forAllThatIsInIt()
{
    PackageBuilder files;
    files.write(u"A.vidlets/Resources/usual.png"_s, "");
    files.write(u"A.vidlets/img/own.png"_s, "");
    files.write(u"A.vidlets/root/root.png"_s, "");
    files.write(u"A.vidlets/scene/unused.png"_s, "");
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets resources=\"root\">\n"
                           "<vidlet key=\"a\"><i s=\"root.png\"/></vidlet>\n"
                           "<vidlet key=\"b\" resources=\"img\"><p><i s=\"own.png\"/></p>\n"
                           "<i s=\"usual.png\"/></vidlet>\n"
                           "<vidlet key=\"c\" resources=\"\"><i s=\"usual.png\"/>\n"
                           "<i s=\"root.png\"/></vidlet>\n"
                           "<vidlet key=\"d\"><i resources=\"img\" s=\"own.png\"/></vidlet>\n"
                           "<vidlet key=\"e\" resources=\"scene\"/></vidlets>");

    const QList<AuthorFinding> findings = checked({files.dataPath()});

    const QStringList expected{u"a.xml:4"_s, u"a.xml:6"_s, u"a.xml:7"_s};
    QCOMPARE(places(findings, u"resource-missing"_s), expected);
    QCOMPARE(places(findings, u"resource-unused"_s), QStringList{u"unused.png:0"_s});
}

void TestAuthorResources::picture_isLeftAlone_whenItIsOfAnotherKind()
{
    PackageBuilder files;
    const QImage image(8, 5000, QImage::Format_RGB32);
    files.write(u"A.vidlets/Resources/a.png"_s, "");
    QVERIFY(image.save(files.path(u"A.vidlets/Resources/a.png"_s), "JPG"));
    files.write(u"A.vidlets/Resources/b.jpg"_s, "");
    QVERIFY(image.save(files.path(u"A.vidlets/Resources/b.jpg"_s), "PNG"));
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets><vidlet key=\"a\" p=\"a.png\" q=\"b.jpg\"/></vidlets>");

    // A word of a reader on the way would make the test fail.
    const QList<AuthorFinding> findings = checked({files.dataPath()});

    QCOMPARE(places(findings, u"resource-huge"_s), QStringList());
    QCOMPARE(places(findings, u"resource-missing"_s), QStringList());
}

void TestAuthorResources::filter_isNoName()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);
    files.write(u"A.vidlets/ui/VidletUI.qml"_s, "Item { nameFilters: [\"*.png\"]\ns: \"a.png\" }");

    QCOMPARE(places(checked({files.dataPath()}), u"resource-missing"_s),
             QStringList{u"VidletUI.qml:2"_s});
}

void TestAuthorResources::keyData_isLeftAlone_withoutPackage()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);
    const QString keys =
        files.write(u"keys.xml"_s, "<vidletkeys><key name=\"a\" p=\"no.png\"/></vidletkeys>");

    QCOMPARE(checked({keys}).size(), 0);
    QCOMPARE(places(checked({keys, files.dataPath()}), u"resource-missing"_s),
             QStringList{u"keys.xml:1"_s});
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorResources>(argc, argv);
}

#include "tst_authorresources.moc"
