// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <VidletsAuthor/AuthorSceneText.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

QStringList literals(const QString& text)
{
    QStringList result;
    const AuthorSceneText scene(text);
    for (const AuthorLiteral& literal : scene.literals())
        result.append(u"%1:%2 %3"_s.arg(literal.position.line)
                          .arg(literal.position.column)
                          .arg(literal.text));
    return result;
}

/// The lines that the first suppression covers beside its own.
QString range(const QString& text)
{
    const AuthorSceneText scene(text);
    const AuthorSuppression first = scene.suppressions().value(0);
    return u"%1-%2"_s.arg(first.begin.line).arg(first.end.line);
}

} // namespace

class TestAuthorSceneText : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void literals_areTold_data();
    void literals_areTold();
    void suppression_coversNextStatement_data();
    void suppression_coversNextStatement();
    void comesToEnd_whenEmptyLinesAreMany();
};

void TestAuthorSceneText::literals_areTold_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("both marks") << u"a: \"b\"\nc: 'd'"_s << QStringList{u"1:4 b"_s, u"2:4 d"_s};
    QTest::newRow("escape") << u"\"a\\\"b\""_s << QStringList{u"1:1 a\\\"b"_s};
    QTest::newRow("comments") << u"// \"a\"\n/* \"b\" */ \"c\""_s << QStringList{u"2:11 c"_s};
    QTest::newRow("template") << u"`a\nb` 'c'"_s << QStringList{u"1:1 a\nb"_s, u"2:4 c"_s};
    QTest::newRow("pattern") << u"a.replace(/[\"/]\\//, 'c')"_s << QStringList{u"1:21 c"_s};
    QTest::newRow("division") << u"a / b; 'c' / 2"_s << QStringList{u"1:8 c"_s};
    QTest::newRow("open string") << u"\"a\n'b'"_s << QStringList{u"1:1 a"_s, u"2:1 b"_s};
    QTest::newRow("open comment") << u"/* 'a'"_s << QStringList();
    QTest::newRow("nothing") << QString() << QStringList();
}

void TestAuthorSceneText::literals_areTold()
{
    QFETCH(const QString, text);
    QFETCH(const QStringList, expected);

    QCOMPARE(literals(text), expected);
}

void TestAuthorSceneText::suppression_coversNextStatement_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    const QString off = u"// vidlets-check: off key-blank\n"_s;
    QTest::newRow("binding") << off + u"a: 'b'\nc: 'd'"_s << u"2-2"_s;
    QTest::newRow("semicolon") << off + u"a: 'b'; c: 'd'"_s << u"2-2"_s;
    QTest::newRow("object") << off + u"\nItem {\n a: 'b'\n}\nc: 'd'"_s << u"3-5"_s;
    QTest::newRow("continued") << off + u"a:\n 'b' +\n 'c'\nd: 'e'"_s << u"2-4"_s;
    QTest::newRow("choice in next line")
        << off + u"a: b // c\n\n ? 'c' // d\n : 'd'\ne: 'f'"_s << u"2-5"_s;
    for (const QString& sign : {u"||"_s, u"&&"_s, u"."_s, u"+"_s})
        QTest::addRow("%s in next line", qPrintable(sign))
            << off + u"a: b\n/* c */ "_s + sign + u" c\nd: 'e'"_s << u"2-3"_s;
    QTest::newRow("bracket in next line") << off + u"Item\n{\n a: 'b'\n}\nc: 'd'"_s << u"2-5"_s;
    QTest::newRow("otherwise in next line")
        << off + u"if (a) {\n b()\n}\nelse {\n c()\n}\nd()"_s << u"2-7"_s;
    QTest::newRow("word like otherwise") << off + u"a()\nelsewhere()"_s << u"2-2"_s;
    QTest::newRow("increment in next line") << off + u"a()\n++b"_s << u"2-2"_s;
    QTest::newRow("open comment in next line") << off + u"a()\n/* + b"_s << u"2-2"_s;
    QTest::newRow("end of block") << u"Item {\n"_s + off + u"}\na: 'b'"_s << u"0-0"_s;
    QTest::newRow("last of block") << u"Item {\n"_s + off + u"a: 'b' }\nc: 'd'"_s << u"3-3"_s;
    QTest::newRow("end of file") << off + u"a: 'b'"_s << u"2-0"_s;
}

void TestAuthorSceneText::suppression_coversNextStatement()
{
    QFETCH(const QString, text);
    QFETCH(const QString, expected);

    QCOMPARE(range(text), expected);
}

void TestAuthorSceneText::comesToEnd_whenEmptyLinesAreMany()
{
    constexpr qsizetype kCount = 1'000'000;
    const QString text =
        u"// vidlets-check: off key-blank\na: b"_s + u"\n"_s.repeated(kCount) + u"+ c\nd: e"_s;

    QCOMPARE(range(text), u"2-%1"_s.arg(kCount + 2));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorSceneText>(argc, argv);
}

#include "tst_authorscenetext.moc"
