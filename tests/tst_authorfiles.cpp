// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QFile>

#include <VidletsAuthor/AuthorFiles.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

class TestAuthorFiles : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void list_tellsKinds();
    void read_isNothing_whenNoRegularFile();
    void join_leavesCurrentDirectoryOut();
    void isBelow_takesWholeNames();
};

void TestAuthorFiles::list_tellsKinds()
{
    PackageBuilder files;
    files.write(u"d/b"_s, "");
    files.write(u"d/a/x"_s, "");
    QVERIFY(QFile::link(u"b"_s, files.path(u"d/c"_s)));

    const auto entries = AuthorFiles::list(files.path(u"d"_s));

    QVERIFY(entries.has_value());
    QCOMPARE(entries->size(), 3);
    QCOMPARE(entries->at(0).kind, AuthorFiles::Kind::Directory);
    QCOMPARE(entries->at(1).kind, AuthorFiles::Kind::File);
    QCOMPARE(entries->at(2).kind, AuthorFiles::Kind::Link);
    QVERIFY(!AuthorFiles::list(files.path(u"none"_s)).has_value());
}

void TestAuthorFiles::read_isNothing_whenNoRegularFile()
{
    PackageBuilder files;
    files.write(u"d/b"_s, "content");
    QString reason;

    QCOMPARE(AuthorFiles::read(files.path(u"d/b"_s), reason).value_or(QByteArray()),
             QByteArray("content"));
    QVERIFY(!AuthorFiles::read(files.path(u"d"_s), reason).has_value());
    QVERIFY(!AuthorFiles::read(u"/dev/zero"_s, reason).has_value());
    QVERIFY(!AuthorFiles::read(files.path(u"none"_s), reason).has_value());
    QVERIFY(!AuthorFiles::read(files.path(u"d/b"_s), reason, 3).has_value());
}

void TestAuthorFiles::join_leavesCurrentDirectoryOut()
{
    QCOMPARE(AuthorFiles::join(u"a"_s, u"b"_s), u"a/b"_s);
    QCOMPARE(AuthorFiles::join(u"/"_s, u"b"_s), u"/b"_s);
    QCOMPARE(AuthorFiles::join(u"."_s, u"b"_s), u"b"_s);
    QCOMPARE(AuthorFiles::join(u".."_s, u"b"_s), u"../b"_s);
}

void TestAuthorFiles::isBelow_takesWholeNames()
{
    QVERIFY(AuthorFiles::isBelow(u"a"_s, u"a"_s));
    QVERIFY(AuthorFiles::isBelow(u"a"_s, u"a/b"_s));
    QVERIFY(!AuthorFiles::isBelow(u"a"_s, u"ab"_s));
    QVERIFY(AuthorFiles::isBelow(u"."_s, u"a/b"_s));
    QVERIFY(!AuthorFiles::isBelow(u"."_s, u"../b"_s));
    QVERIFY(!AuthorFiles::isBelow(u"."_s, u".."_s));
    QVERIFY(!AuthorFiles::isBelow(u"."_s, u"/b"_s));
    QVERIFY(AuthorFiles::isBelow(u".."_s, u"../b"_s));
    QVERIFY(!AuthorFiles::isBelow(u".."_s, u"../../b"_s));
    QCOMPARE(AuthorFiles::below(u"."_s, u"a/b"_s), u"a/b"_s);
    QCOMPARE(AuthorFiles::below(u".."_s, u"../a/b"_s), u"a/b"_s);
    QVERIFY(AuthorFiles::isBelow(u"/"_s, u"/b"_s));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorFiles>(argc, argv);
}

#include "tst_authorfiles.moc"
