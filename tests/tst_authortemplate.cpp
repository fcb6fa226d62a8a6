// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QFile>
#include <QFileInfo>

#include <VidletsAuthor/AuthorCheck.h>
#include <VidletsAuthor/AuthorReport.h>
#include <VidletsAuthor/AuthorTemplate.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

class TestAuthorTemplate : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void player_isThatOfWorkbench();
    void create_makesPackageWithoutFaults();
    void create_isFalse_whenDirectoryIsNotEmpty();
    void create_takesEmptyDirectory();
    void create_isFalse_whenNameIsNoPackage();
    void create_isFalse_whenCheckWouldFindFaultWithName_data();
    void create_isFalse_whenCheckWouldFindFaultWithName();
};

void TestAuthorTemplate::player_isThatOfWorkbench()
{
    QFile ours(QStringLiteral(TEMPLATE "/ui/VideoPlayer.qml"));
    QFile theirs(QStringLiteral(WORKBENCH "/ui/VideoPlayer.qml"));

    QVERIFY(ours.open(QIODevice::ReadOnly));
    QVERIFY(theirs.open(QIODevice::ReadOnly));
    QCOMPARE(ours.readAll(), theirs.readAll());
}

void TestAuthorTemplate::create_makesPackageWithoutFaults()
{
    PackageBuilder files;
    const QString package = files.path(u"First.vidlets"_s);
    QString reason;
    QVERIFY2(AuthorTemplate::create(QStringLiteral(TEMPLATE), package, reason), qPrintable(reason));

    AuthorCheck check;
    QVERIFY(check.add(package, reason));
    const QList<AuthorFinding> findings = check.run();

    QVERIFY2(findings.isEmpty(), AuthorReport::text(findings).constData());
    QVERIFY(QFileInfo(package + u"/ui/VidletUI.qml"_s).isWritable());
}

void TestAuthorTemplate::create_isFalse_whenDirectoryIsNotEmpty()
{
    PackageBuilder files;
    files.write(u"First.vidlets/.hidden"_s, "");
    QString reason;

    QVERIFY(
        !AuthorTemplate::create(QStringLiteral(TEMPLATE), files.path(u"First.vidlets"_s), reason));

    QVERIFY(!QFileInfo::exists(files.path(u"First.vidlets/ui"_s)));
    QVERIFY(reason.contains("not empty"_L1));
}

void TestAuthorTemplate::create_takesEmptyDirectory()
{
    PackageBuilder files;
    const QString package = files.packageRoot(u"First.vidlets"_s);
    QString reason;

    QVERIFY(AuthorTemplate::create(QStringLiteral(TEMPLATE), package, reason));
}

void TestAuthorTemplate::create_isFalse_whenNameIsNoPackage()
{
    PackageBuilder files;
    QString reason;

    QVERIFY(!AuthorTemplate::create(QStringLiteral(TEMPLATE), files.path(u"First"_s), reason));
    QVERIFY(!AuthorTemplate::create(QStringLiteral(TEMPLATE), files.path(u".vidlets"_s), reason));
    files.write(u"File.vidlets"_s, "");
    QVERIFY(
        !AuthorTemplate::create(QStringLiteral(TEMPLATE), files.path(u"File.vidlets"_s), reason));
    QVERIFY(!QFileInfo::exists(files.path(u"First"_s)));
}

void TestAuthorTemplate::create_isFalse_whenCheckWouldFindFaultWithName_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("blank") << u"has space.vidlets"_s;
    QTest::newRow("comma") << u"has,comma.vidlets"_s;
    QTest::newRow("semicolon") << u"has;semicolon.vidlets"_s;
    QTest::newRow("hidden") << u".hidden.vidlets"_s;
}

void TestAuthorTemplate::create_isFalse_whenCheckWouldFindFaultWithName()
{
    QFETCH(const QString, name);
    PackageBuilder files;
    QString reason;

    QVERIFY(!AuthorTemplate::create(QStringLiteral(TEMPLATE), files.path(name), reason));

    QVERIFY2(reason.contains(name), qPrintable(reason));
    QVERIFY(!QFileInfo::exists(files.path(name)));
    // Only the name of the package itself counts.
    const QString package = files.path(name + u"/First.vidlets"_s);
    QVERIFY2(AuthorTemplate::create(QStringLiteral(TEMPLATE), package, reason), qPrintable(reason));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorTemplate>(argc, argv);
}

#include "tst_authortemplate.moc"
