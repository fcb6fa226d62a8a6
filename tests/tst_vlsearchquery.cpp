// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <QStringList>

#include <VidletsHost/VLSearchFold.h>
#include <VidletsHost/VLSearchQuery.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

using Query = VLSearchQuery;

QStringList wordsOf(const QString& text)
{
    VLSearchFold fold;
    QStringList texts;
    const QList<VLSearchFold::Word> words = fold.words(text);
    for (const VLSearchFold::Word& word : words)
        texts += word.text;
    return texts;
}

QStringList termsOf(const QString& input)
{
    QStringList texts;
    const Query query(input);
    for (const Query::Term& term : query.terms())
        texts += term.isPrefix ? term.word + u'*' : term.word;
    return texts;
}

} // namespace

class TestVLSearchQuery : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void words_areFolded_data();
    void words_areFolded();
    void words_knowTheirPlace();
    void words_passOverVariables();
    void words_areCut_whereTooLong();
    void terms_areOfTheInput_data();
    void terms_areOfTheInput();
    void terms_endWithTheInput();
    void place_isTheBest_data();
    void place_isTheBest();
    void snippet_marksWhatWasFound_data();
    void snippet_marksWhatWasFound();
    void snippet_isShort();
};

void TestVLSearchQuery::words_areFolded_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("words");

    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("punctuation") << u" -*\"':^().,;<>&%/\\|!?\t\n"_s << QString();
    QTest::newRow("keys") << u"Ctrl+Shift+F5, tool.pen_size-2"_s
                          << u"ctrl shift f5 tool pen size 2"_s;
    QTest::newRow("German") << u"ÄÖÜ äöü Straße STRASSE GROẞ"_s
                            << u"aou aou strasse strasse gross"_s;
    QTest::newRow("French") << u"l’œuvre À l'Hôpital, garçon Œ naïve"_s
                            << u"l oeuvre a l hopital garcon oe naive"_s;
    QTest::newRow("marks apart") << u"a\u0308 e\u0301a"_s << u"a ea"_s;
    QTest::newRow("Nordic") << u"Ærø Þór Đà Łódź smørrebrød ħ"_s
                            << u"aero thor da lodz smorrebrod h"_s;
    QTest::newRow("Turkish") << u"İstanbul ISPARTA ılık i I"_s << u"istanbul isparta ilik i i"_s;
    QTest::newRow("Vietnamese") << u"Tiếng Việt đường Ước"_s << u"tieng viet duong uoc"_s;
    QTest::newRow("ligatures") << u"ﬁle oﬀice ﬃ ĳ Ǆ ﬆ"_s << u"file office ffi ij dz st"_s;
    QTest::newRow("wide") << u"ＡＢＣ １２３"_s << u"abc 123"_s;
    QTest::newRow("Greek") << u"Όδυσσεύς ΟΔΥΣΣΕΥΣ ΐ ᾼ"_s << u"οδυσσευσ οδυσσευσ ι α"_s;
    QTest::newRow("Cyrillic") << u"Ёлка ЙОД"_s << u"елка иод"_s;
    QTest::newRow("Arabic") << u"كِتَابٌ كـــتاب أحمد إحمد آحمد ٱحمد مؤمن شيء على"_s
                            << u"كتاب كتاب احمد احمد احمد احمد مومن شي علي"_s;
    QTest::newRow("Arabic forms") << u"ﻛﺘﺎﺏ ﻷ"_s << u"كتاب لا"_s;
    QTest::newRow("Arabic digits") << u"١٢٣ ۴۵"_s << u"123 45"_s;
    QTest::newRow("Hebrew") << u"שָׁלוֹם שלום שׂ"_s << u"שלום שלום ש"_s;
    QTest::newRow("Hindi keeps vowels") << u"किताब क"_s << u"किताब क"_s;
    QTest::newRow("Korean comes apart") << u"한"_s << u"\u1112\u1161\u11ab"_s;
    QTest::newRow("Chinese") << u"画笔头"_s << u"画笔 笔头 头"_s;
    QTest::newRow("Chinese alone") << u"笔"_s << u"笔"_s;
    QTest::newRow("Japanese and Latin") << u"Qtの入門2"_s << u"qt の入 入門 門 2"_s;
    QTest::newRow("no letters within")
        << u"co\u00ADop zero\u200Bwidth a\u200Db"_s << u"coop zerowidth ab"_s;
    QTest::newRow("half a pair") << u"a"_s + QChar(0xD83D) + u"b"_s + QChar(0xDE00) << u"a b"_s;
    QTest::newRow("pairs") << u"𐐀 😀 𝐀b"_s << u"𐐨 ab"_s;
    QTest::newRow("nul") << u"a"_s + QChar(0) + u"b"_s << u"a b"_s;
    QTest::newRow("symbols are no letters") << u"Pen™ 5℃"_s << u"pen 5"_s;
}

void TestVLSearchQuery::words_areFolded()
{
    QFETCH(const QString, text);
    QFETCH(const QString, words);
    QCOMPARE(wordsOf(text).join(u' '), words);
    // What is folded stays as it is.
    const bool hasParts = words.contains(u'入') || words.contains(u'笔');
    if (!hasParts)
        QCOMPARE(wordsOf(words).join(u' '), words);
}

void TestVLSearchQuery::words_knowTheirPlace()
{
    VLSearchFold fold;
    const QString text = u"Die Straße, e\u0301tat 😀𐐀 کتابـ! 画笔"_s;
    QStringList parts;
    const QList<VLSearchFold::Word> words = fold.words(text);
    for (const VLSearchFold::Word& word : words)
        parts += text.sliced(word.start, word.length);
    QCOMPARE(parts,
             QStringList(
                 {u"Die"_s, u"Straße"_s, u"e\u0301tat"_s, u"𐐀"_s, u"کتابـ"_s, u"画笔"_s, u"笔"_s}));
}

void TestVLSearchQuery::words_passOverVariables()
{
    QCOMPARE(wordsOf(u"in %(app_name-2)s now"_s), QStringList({u"in"_s, u"now"_s}));
    QCOMPARE(wordsOf(u"50%(of it)s %()s %(a"_s),
             QStringList({u"50"_s, u"of"_s, u"it"_s, u"s"_s, u"s"_s, u"a"_s}));
}

void TestVLSearchQuery::words_areCut_whereTooLong()
{
    QCOMPARE(wordsOf(QString(1000, u'a')), QStringList(QString(64, u'a')));
    QCOMPARE(wordsOf(u'a' + u"𐐀"_s.repeated(100)), QStringList(u'a' + u"𐐨"_s.repeated(31)));
}

void TestVLSearchQuery::terms_areOfTheInput_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("terms");

    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("one") << u" Pen "_s << u"pen*"_s;
    QTest::newRow("several") << u"Pen tool pe"_s << u"pen tool pe*"_s;
    QTest::newRow("twice") << u"pen pen pen"_s << u"pen pen*"_s;
    QTest::newRow("operators") << u"pen OR NEAR(tool, 5) NOT -x"_s
                               << u"pen or near tool 5 not x*"_s;
    QTest::newRow("columns and quotes")
        << u"title: \"pen\"* ^to'ol); DROP TABLE x --"_s << u"title pen to ol drop table x*"_s;
    QTest::newRow("nothing but syntax") << u"\"*^:-(){}"_s << QString();
    QTest::newRow("no blanks") << u"画笔头 笔 pen"_s << u"画笔 笔头 笔* pen*"_s;
}

void TestVLSearchQuery::terms_areOfTheInput()
{
    QFETCH(const QString, input);
    QTEST(termsOf(input).join(u' '), "terms");
}

void TestVLSearchQuery::terms_endWithTheInput()
{
    QCOMPARE(termsOf(QString(250, u' ') + u"pencil and more"_s), QStringList(u"pencil*"_s));
    QCOMPARE(termsOf(QString(253, u' ') + u"pencil and more"_s), QStringList(u"pen*"_s));
    QCOMPARE(termsOf(QString(255, u' ') + u"𐐀"_s), QStringList());
}

void TestVLSearchQuery::place_isTheBest_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<int>("place");

    const auto row = [](const char* input, Query::Place place) {
        QTest::newRow(input) << QString::fromUtf8(input) << int(place);
    };
    row("pen", Query::AllInTitle);
    row("size PÉN", Query::AllInTitle);
    row("si", Query::AllInTitle);
    row("pen si", Query::AllInTitle);
    row("si pen", Query::Nowhere);
    row("pen stroke", Query::SomeInTitle);
    row("ctrl pen", Query::SomeInTitle);
    row("ctr", Query::SomeInName);
    row("brush", Query::SomeInName);
    row("strasse brush", Query::SomeInName);
    row("stras", Query::InText);
    row("strasse stroke", Query::InText);
    row("strasse stroke none", Query::Nowhere);
    row("variable", Query::Nowhere);
}

void TestVLSearchQuery::place_isTheBest()
{
    QFETCH(const QString, input);
    const VLSearchText text{u"tool.brush"_s, u"Pen Size"_s, u"Ctrl+7"_s,
                            u"The stroke of the Straße in %(variable)s."_s};
    Query query(input);
    QTEST(int(query.placeIn(text)), "place");
}

void TestVLSearchQuery::snippet_marksWhatWasFound_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("snippet");

    QTest::newRow("in the text") << u"stras on"_s
                                 << u"Straßen &amp; &lt;ways&gt; <b>on</b> a map."_s;
    QTest::newRow("a prefix") << u"strasse"_s << u"<b>Straßen</b> &amp; &lt;ways&gt; on a map."_s;
    QTest::newRow("two") << u"on way"_s << u"Straßen &amp; &lt;<b>ways</b>&gt; <b>on</b> a map."_s;
    QTest::newRow("in the title") << u"pen"_s << u"<b>Pen</b> &quot;Size&quot;"_s;
    QTest::newRow("in the shortcut") << u"ctrl"_s << u"<b>Ctrl</b>+7"_s;
    QTest::newRow("in the key") << u"bru"_s << u"tool.<b>brush</b>"_s;
}

void TestVLSearchQuery::snippet_marksWhatWasFound()
{
    QFETCH(const QString, input);
    const VLSearchText text{u"tool.brush"_s, u"Pen \"Size\""_s, u"Ctrl+7"_s,
                            u"Straßen & <ways> on a map."_s};
    Query query(input);
    QTEST(query.snippet(text), "snippet");
}

void TestVLSearchQuery::snippet_isShort()
{
    VLSearchText text;
    text.text =
        u"one two three "_s.repeated(2000) + u"needle"_s + u" four five six"_s.repeated(2000);
    Query query(u"needle"_s);
    const QString snippet = query.snippet(text);
    QVERIFY2(snippet.startsWith(u"…"_s) && snippet.endsWith(u"…"_s), qPrintable(snippet));
    QVERIFY2(snippet.contains(u"<b>needle</b>"_s), qPrintable(snippet));
    QVERIFY2(snippet.size() < 150, qPrintable(snippet));

    text.text = u"画"_s.repeated(500) + u"筆箱"_s + u"画"_s.repeated(500);
    const QString ideographs = Query(u"筆箱"_s).snippet(text);
    QVERIFY2(ideographs.contains(u"<b>筆箱</b>"_s), qPrintable(ideographs));
    QVERIFY2(ideographs.size() < 150, qPrintable(ideographs));

    // One word that is longer than a snippet.
    text.text = QString(5000, u'a');
    QCOMPARE(Query(u"aaa"_s).snippet(text), u"<b>"_s + text.text + u"</b>"_s);
}

QTEST_GUILESS_MAIN(TestVLSearchQuery)
#include "tst_vlsearchquery.moc"
