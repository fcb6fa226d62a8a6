// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <VidletsAuthor/AuthorEncoding.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

class TestAuthorEncoding : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void firstWrongByte_goesByDeclaration_data();
    void firstWrongByte_goesByDeclaration();
    void isWide_goesByFirstBytes();
};

void TestAuthorEncoding::firstWrongByte_goesByDeclaration_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char* name, const QByteArray& bytes, const QString& expected) {
        QTest::newRow(name) << bytes << expected;
    };
    const QByteArray ascii("<?xml version='1.0' encoding='US-ASCII'?>\n");
    row("nothing wrong", "<a>\xc3\xa9</a>", u"0:0"_s);
    row("nothing declared", "<a>\n<b>\xe9</b></a>", u"2:4"_s);
    row("behind the character for wrong ones", "<a>\xef\xbf\xbd \xff</a>", u"1:6"_s);
    row("behind a character of two units", "<a>\xf0\x9f\x98\x80\xff</a>", u"1:6"_s);
    row("cut off at the end", "<a>\xf0\x9f", u"1:4"_s);
    row("surrogate", "<a>\xed\xa0\x80</a>", u"1:4"_s);
    row("UTF-8 declared", "<?xml version='1.0' encoding=\"utf-8\"?>\n<a>\xff</a>", u"2:4"_s);
    row("UTF-8 in another spelling", "<?xml version='1.0' encoding='utf8'?>\n\n\xe9", u"3:1"_s);
    row("ASCII", ascii + "<a>\nx\xc3\xa9</a>", u"3:2"_s);
    row("ASCII without fault", ascii + "<a/>", u"0:0"_s);
    row("another one", "<?xml version='1.0' encoding='iso-8859-1'?>\n\xe9", u"0:0"_s);
    row("UTF-16", QByteArray("\xff\xfe<\0a\0\xff\0", 8), u"0:0"_s);
}

void TestAuthorEncoding::firstWrongByte_goesByDeclaration()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, expected);
    QString encoding;

    const XmlPosition place = AuthorEncoding::firstWrongByte(bytes, encoding);

    QCOMPARE(u"%1:%2"_s.arg(place.line).arg(place.column), expected);
}

void TestAuthorEncoding::isWide_goesByFirstBytes()
{
    QVERIFY(AuthorEncoding::isWide(QByteArray("\xff\xfe<\0", 4)));
    QVERIFY(AuthorEncoding::isWide(QByteArray("\xfe\xff\0<", 4)));
    QVERIFY(AuthorEncoding::isWide(QByteArray("\0<\0a", 4)));
    QVERIFY(!AuthorEncoding::isWide("<a/>"));
    QVERIFY(!AuthorEncoding::isWide("\xef\xbb\xbf<a/>"));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorEncoding>(argc, argv);
}

#include "tst_authorencoding.moc"
