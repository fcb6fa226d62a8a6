// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <algorithm>

#include <VidletsAuthor/AuthorControlReader.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

/// The findings as "line:column rule".
QStringList found(const QByteArray& bytes,
                  AuthorControlReader::Kind kind = AuthorControlReader::Kind::ControlFile)
{
    AuthorFindings findings;
    AuthorControlReader(kind, u"file.xml"_s, bytes, findings).read();
    QStringList result;
    const QList<AuthorFinding> left = findings.unsuppressed();
    for (const AuthorFinding& finding : left)
        result.append(u"%1:%2 %3"_s.arg(finding.position.line)
                          .arg(finding.position.column)
                          .arg(finding.rule));
    return result;
}

/// So many wrong references, one behind the other.
QStringList variables(int count)
{
    QStringList result;
    for (int i = 0; i < count; ++i)
        result.append(u"1:%1 variable-syntax"_s.arg(26 + 2 * i));
    return result;
}

} // namespace

class TestAuthorControlReader : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void read_findsFaultsOfFile_data();
    void read_findsFaultsOfFile();
    void read_tellsFaultsInPlainSentences_data();
    void read_tellsFaultsInPlainSentences();
    void read_findsFaultsOfTips_data();
    void read_findsFaultsOfTips();
    void read_findsFaultsOfKeyData();
    void read_tellsWhyFileIsIgnored_data();
    void read_tellsWhyFileIsIgnored();
    void read_tellsDepth();
    void read_comesToEnd_whenFileIsNasty();
    void looksLikeResource_goesBySuffix();
};

void TestAuthorControlReader::read_findsFaultsOfFile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");

    QTest::newRow("nothing is wrong")
        << QByteArray("<vidlets>\n<vidlet key=\"a\"/>\n</vidlets>\n") << u""_s;
    QTest::newRow("ampersand") << QByteArray(
        "<vidlets>\n<vidlet key=\"a\">x & y</vidlet>\n</vidlets>")
                               << u"2:20 xml-broken"_s;
    QTest::newRow("two roots") << QByteArray("<vidlets/>\n<vidlets/>") << u"2:1 xml-after-root"_s;
    QTest::newRow("text behind the root")
        << QByteArray("<vidlets/>\ntext") << u"2:1 xml-after-root"_s;
    QTest::newRow("wrong byte") << QByteArray("<vidlets>\n\n  \xff\n</vidlets>")
                                << u"3:3 xml-encoding"_s;
    QTest::newRow("wrong byte far behind")
        << QByteArray("<vidlets>" + QByteArray(100000, '\n') + "\xff</vidlets>")
        << u"100001:1 xml-encoding"_s;
    QTest::newRow("byte above ASCII")
        << QByteArray("<?xml version=\"1.0\" encoding=\"ascii\"?>\n<vidlets>\n \xe9</vidlets>")
        << u"3:2 xml-encoding"_s;
    QTest::newRow("wrong byte of a declared encoding") << QByteArray(
        "<?xml version=\"1.0\" encoding=\"windows-1252\"?>\n<vidlets>\n\x81</vidlets>")
                                                       << u"3:1 xml-encoding"_s;
    QTest::newRow("unknown encoding")
        << QByteArray("<?xml version=\"1.0\" encoding=\"nonsense\"?><vidlets/>")
        << u"1:41 xml-encoding"_s;
    QTest::newRow("other root") << QByteArray("<tips a=\"1\"/>") << u"1:1 root-foreign"_s;
    QTest::newRow("prefix") << QByteArray("<v:vidlets xmlns:v=\"u\"/>") << u"1:1 file-ignored"_s;
    QTest::newRow("broken tag") << QByteArray("\n<vidlets\n locale=\"C\"/>")
                                << u"2:1 file-ignored"_s;
    QTest::newRow("comment with a tag")
        << QByteArray("<!-- <a > -->\n<vidlets/>") << u"2:1 file-ignored"_s;
    QTest::newRow("no key") << QByteArray("<vidlets>\n  <vidlet/>\n</vidlets>")
                            << u"2:3 key-missing"_s;
    QTest::newRow("blank key") << QByteArray("<vidlets>\n<vidlet key=\" a\"/>\n</vidlets>")
                               << u"2:9 key-blank"_s;
    QTest::newRow("key twice") << QByteArray(
        "<vidlets>\n<vidlet key=\"a\"/>\n<vidlet key=\"a\"/></vidlets>")
                               << u"3:1 key-twice"_s;
    QTest::newRow("nested") << QByteArray("<vidlets><a>\n<vidlet key=\"a\"/></a></vidlets>")
                            << u"2:1 tip-nested"_s;
    QTest::newRow("locale without sense")
        << QByteArray("<vidlets locale=\"german\"/>") << u"1:10 locale-unknown"_s;
}

void TestAuthorControlReader::read_findsFaultsOfFile()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, expected);

    QCOMPARE(found(bytes).join(u"; "_s), expected);
}

void TestAuthorControlReader::read_tellsFaultsInPlainSentences_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("prefix") << QByteArray("<vidlets><a:b/></vidlets>");
    QTest::newRow("control character") << QByteArray("<vidlets><a>\x01</a></vidlets>");
    QTest::newRow("control character in a tag") << QByteArray("<vidlets><a \x02/></vidlets>");
    QTest::newRow("encoding") << QByteArray("<?xml version=\"1.0\" encoding=\"x\x7f\"?><vidlets/>");
    QTest::newRow("open") << QByteArray("<vidlets><a>");
    QTest::newRow("other end") << QByteArray("<vidlets><a></b></vidlets>");
}

void TestAuthorControlReader::read_tellsFaultsInPlainSentences()
{
    QFETCH(const QByteArray, bytes);
    AuthorFindings findings;

    AuthorControlReader(AuthorControlReader::Kind::ControlFile, u"a.xml"_s, bytes, findings).read();

    QVERIFY(!findings.all().isEmpty());
    for (const AuthorFinding& finding : findings.all()) {
        const QString message = finding.message;
        QVERIFY2(message.endsWith(u'.') && !message.endsWith(".."_L1), qPrintable(message));
        QVERIFY2(std::all_of(message.cbegin(), message.cend(),
                             [](QChar character) { return character.isPrint(); }),
                 qPrintable(message));
    }
}

void TestAuthorControlReader::read_findsFaultsOfTips_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");

    QTest::newRow("other territory")
        << QByteArray("<vidlets locale=\"de_XX\"/>") << u"1:10 locale-unknown"_s;
    QTest::newRow("language alone") << QByteArray("<vidlets locale=\"de\"/>") << u""_s;
    QTest::newRow("territory") << QByteArray("<vidlets locale=\"de_AT\"/>") << u""_s;
    QTest::newRow("dash") << QByteArray("<vidlets locale=\"pt-BR\"/>") << u""_s;
    QTest::newRow("codeset") << QByteArray("<vidlets locale=\"de_DE.UTF-8\"/>") << u""_s;
    QTest::newRow("modifier") << QByteArray("<vidlets locale=\"de_DE@euro\"/>") << u""_s;
    QTest::newRow("variant") << QByteArray("<vidlets locale=\"en_US_POSIX\"/>") << u""_s;
    QTest::newRow("script") << QByteArray("<vidlets locale=\"zh_Hant_TW\"/>") << u""_s;
    QTest::newRow("reserved") << QByteArray(
        "<vidlets>\n<vidlet key=\"a\"\n  VLLocation=\"x\"/></vidlets>")
                              << u"3:3 attribute-reserved"_s;
    QTest::newRow("variable") << QByteArray(
        "<vidlets><vidlet key=\"a\">\n%(a)s\n%(b)</vidlet></vidlets>")
                              << u"3:1 variable-syntax"_s;
    QTest::newRow("variable behind a child")
        << QByteArray("<vidlets><vidlet key=\"a\">\n%(a)s <b\n c=\"\">\n</b> <!--\n %( -->\n "
                      "%(b</vidlet></vidlets>")
        << u"6:2 variable-syntax"_s;
    QTest::newRow("variable behind an entity")
        << QByteArray("<vidlets><vidlet key=\"a\">&#10;&#10;&lt;\n %(b</vidlet></vidlets>")
        << u"2:2 variable-syntax"_s;
    QTest::newRow("variable behind a long tag")
        << QByteArray("<vidlets><vidlet\nkey=\"a\"\n>%(b</vidlet></vidlets>")
        << u"3:2 variable-syntax"_s;
    QTest::newRow("several variables") << QByteArray(
        "<vidlets><vidlet key=\"a\">%(a <![CDATA[\n%(b\n]]>%(c\n%(d)s</vidlet></vidlets>")
                                       << u"1:26 variable-syntax; 2:1 variable-syntax; "
                                          "3:4 variable-syntax"_s;
    QTest::newRow("no end of variables") << QByteArray(
        "<vidlets><vidlet key=\"a\">" + QByteArray("%(").repeated(700) + "</vidlet></vidlets>")
                                         << QStringList(variables(20)).join(u"; "_s);
    QTest::newRow("variable in attribute")
        << QByteArray("<vidlets><vidlet key=\"a\" t=\"%(b\"/></vidlets>")
        << u"1:26 variable-syntax"_s;
    QTest::newRow("long text") << QByteArray("<vidlets><vidlet key=\"a\"><p>"
                                             + QByteArray("a ").repeated(751)
                                             + "</p></vidlet></vidlets>")
                               << u"1:26 text-overlong"_s;
    QTest::newRow("text with much white space")
        << QByteArray("<vidlets><vidlet key=\"a\"><p>" + QByteArray("a  \n").repeated(750)
                      + "</p></vidlet></vidlets>")
        << u""_s;
    QTest::newRow("title of many units")
        << QByteArray("<vidlets><vidlet key=\"a\" title=\""
                      + QByteArray("\xf0\x9f\x98\x80").repeated(120) + "\"/></vidlets>")
        << u""_s;
    QTest::newRow("title with much white space") << QByteArray(
        "<vidlets><vidlet key=\"a\" title=\"" + QByteArray("a  ").repeated(60) + "\"/></vidlets>")
                                                 << u""_s;
    QTest::newRow("long title") << QByteArray("<vidlets><vidlet key=\"a\" title=\""
                                              + QByteArray("a").repeated(121) + "\"/></vidlets>")
                                << u"1:26 text-overlong"_s;
    QTest::newRow("suppressed element") << QByteArray(
        "<vidlets>\n<!-- vidlets-check: off key-missing -->\n\n<vidlet/>\n<vidlet/></vidlets>")
                                        << u"5:1 key-missing"_s;
    QTest::newRow("suppressed line")
        << QByteArray("<vidlets>\n<vidlet/> <!-- vidlets-check: off key-missing -->\n</vidlets>")
        << u""_s;
    QTest::newRow("suppression before an end") << QByteArray(
        "<vidlets><a>\n<!-- vidlets-check: off key-missing --></a>\n<vidlet/></vidlets>")
                                               << u"3:1 key-missing"_s;
    QTest::newRow("suppression of another rule")
        << QByteArray("<vidlets><!-- vidlets-check: off key-blank -->\n<vidlet/></vidlets>")
        << u"2:1 key-missing"_s;
    QTest::newRow("suppression of no rule")
        << QByteArray("<vidlets>\n<!-- vidlets-check: off key-mising -->\n</vidlets>")
        << u"2:1 settings-broken"_s;
}

void TestAuthorControlReader::read_findsFaultsOfTips()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, expected);

    QCOMPARE(found(bytes).join(u"; "_s), expected);
}

void TestAuthorControlReader::read_findsFaultsOfKeyData()
{
    const QByteArray bytes(
        "<vidletkeys>\n<key/>\n<key name=\"a\"/><key name=\"a\"/>\n</vidletkeys>");

    const QStringList expected{u"2:1 key-missing"_s, u"3:16 key-twice"_s};
    QCOMPARE(found(bytes, AuthorControlReader::Kind::KeyData), expected);
    AuthorFindings findings;
    AuthorControlReader(AuthorControlReader::Kind::KeyData, u"a.xml"_s, bytes, findings).read();
    QVERIFY(findings.all().constLast().message.contains("only that record counts"_L1));
    QCOMPARE(found("<vidlets/>", AuthorControlReader::Kind::KeyData),
             QStringList{u"1:1 root-foreign"_s});
}

void TestAuthorControlReader::read_tellsWhyFileIsIgnored_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");

    const QString text = u"<vidlets locale=\"C\"/>"_s;
    const QByteArray wide(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    QTest::newRow("prefix") << QByteArray("<v:vidlets xmlns:v=\"u\"/>") << u"prefix"_s;
    QTest::newRow("broken tag") << QByteArray("<vidlets\n locale=\"C\"/>")
                                << u"broken over lines"_s;
    QTest::newRow("comment with a tag")
        << QByteArray("<!--\n<a > -->\n<vidlets/>") << u"in line 2"_s;
    QTest::newRow("UTF-16") << "\xff\xfe" + wide << u"UTF-16"_s;
    QTest::newRow("far behind") << "<!--" + QByteArray(1010, ' ') + "--><vidlets locale=\"C\"/>"
                                << u"too far behind in its line"_s;
}

void TestAuthorControlReader::read_tellsWhyFileIsIgnored()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, reason);
    AuthorFindings findings;

    AuthorControlReader(AuthorControlReader::Kind::ControlFile, u"a.xml"_s, bytes, findings).read();

    QCOMPARE(findings.all().size(), 1);
    QCOMPARE(findings.all().constFirst().rule, u"file-ignored"_s);
    QVERIFY2(findings.all().constFirst().message.contains(reason),
             qPrintable(findings.all().constFirst().message));
}

void TestAuthorControlReader::read_tellsDepth()
{
    const auto nested = [](int depth) {
        return "<vidlets>" + QByteArray("<a>").repeated(depth - 1)
            + QByteArray("</a>").repeated(depth - 1) + "</vidlets>";
    };

    QCOMPARE(found(nested(100)), QStringList());
    QCOMPARE(found(nested(101)), QStringList{u"1:307 xml-depth"_s});
}

void TestAuthorControlReader::read_comesToEnd_whenFileIsNasty()
{
    const QByteArray open("<a>");
    QCOMPARE(found("<vidlets>" + open.repeated(200'000)).size(), 2);
    QVERIFY(!found(QByteArray(1'000'000, '<')).isEmpty());
    QVERIFY(!found(QByteArray(1'000'000, '\0')).isEmpty());
    QVERIFY(!found(QByteArray()).isEmpty());
    const QByteArray laughs(
        "<!DOCTYPE a [<!ENTITY a \"0123456789\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
        "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;\">"
        "<!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;\">]>\n<vidlets>&e;&e;&e;&e;</vidlets>");
    QVERIFY(!found(laughs).isEmpty());
}

void TestAuthorControlReader::looksLikeResource_goesBySuffix()
{
    QVERIFY(looksLikeResource(u"pen.png"));
    QVERIFY(looksLikeResource(u"a/Pen.WEBM"));
    QVERIFY(!looksLikeResource(u".png"));
    QVERIFY(!looksLikeResource(u"pen.png.txt"));
    QVERIFY(!looksLikeResource(u"pen"));
    QVERIFY(!looksLikeResource(u""));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorControlReader>(argc, argv);
}

#include "tst_authorcontrolreader.moc"
