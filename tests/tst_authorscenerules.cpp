// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <VidletsAuthor/AuthorSceneRules.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

/// What the rules find in a scene, as "rule line:column".
QStringList found(const QString& text)
{
    AuthorFindings findings;
    const AuthorSceneOutline scene(text);
    AuthorSceneRules(u"/nowhere/ui/VidletUI.qml"_s, scene, findings).check();
    QStringList result;
    for (const AuthorFinding& finding : findings.all())
        result.append(u"%1 %2:%3"_s.arg(finding.rule)
                          .arg(finding.position.line)
                          .arg(finding.position.column));
    return result;
}

/// A member of a scene, in which a "#" stands before what is found.
void addGuardRow(const char* name, const QString& member, bool isFound)
{
    const QStringList expected{u"scene-unguarded 2:%1"_s.arg(member.indexOf(u'#') + 1)};
    QString text = member;
    QTest::newRow(name) << u"Item {\n"_s + text.remove(u'#') + u"\n}"_s
                        << (isFound ? expected : QStringList());
}

} // namespace

class TestAuthorSceneRules : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void finds_data();
    void finds();
    void outline_namesMembers();
    void comesToEnd_whenBracketsAreMany();

private:
    static void addGuards();
    static void addTests();
    static void addAddresses();
    static void addTexts();
    static void addFallbacks();
};

void TestAuthorSceneRules::addGuards()
{
    addGuardRow("bare", u"a: #vidlet.content"_s, true);
    addGuardRow("index", u"a: #vidlet['content']"_s, true);
    addGuardRow("conditional", u"a: vidlet ? vidlet.content : ''"_s, false);
    addGuardRow("and", u"a: vidlet && vidlet.content"_s, false);
    addGuardRow("compared", u"a: vidlet !== null ? vidlet.content : ''"_s, false);
    addGuardRow("optional", u"a: vidlet?.content ?? ''"_s, false);
    addGuardRow("over lines", u"a: vidlet\n ? vidlet.content\n : ''"_s, false);
    addGuardRow("tested behind", u"a: #vidlet.content && vidlet"_s, true);
    addGuardRow("function", u"function f() { return #vidlet.content; }"_s, true);
    addGuardRow("early return",
                u"function f() { if (!vidlet) return ''; return vidlet.content; }"_s, false);
    addGuardRow("argument", u"function f(vidlet) { return vidlet.content; }"_s, false);
    addGuardRow("handler", u"onA: { if (vidlet) { b(vidlet.content); } }"_s, false);
    addGuardRow("other object", u"a: other.vidlet.content"_s, false);
    addGuardRow("alias", u"property var tip: vidlet; property var a: #tip.content"_s, true);
    addGuardRow("alias of root",
                u"id: r; property var tip: vidlet; property var a: r.#tip.content"_s, true);
    addGuardRow("tested alias",
                u"property var tip: vidlet; property var a: tip ? tip.content : ''"_s, false);
    addGuardRow("in a string", u"a: 'vidlet.content' // vidlet.content"_s, false);
    addGuardRow("in a template", u"a: #`${b} ${ vidlet.content }`"_s, true);
    addGuardRow("tested in a template", u"a: `${vidlet ? vidlet.content : ''}`"_s, false);
    addGuardRow("template behind a test", u"a: vidlet ? `${vidlet.content}` : ''"_s, false);
    addGuardRow("word in a template", u"a: `vidlet.content ${b.vidlet.content} } vidlet.content`"_s,
                false);
    addGuardRow("no template", u"a: '${vidlet.content}'"_s, false);
    QTest::newRow("test of another binding") << u"Item {\na: vidlet ? 1 : 2\nb: vidlet.content\n}"_s
                                             << QStringList{u"scene-unguarded 3:4"_s};
    QTest::newRow("test around an object")
        << u"Item {\na: vidlet ? 1 : 2\nText {\nc: vidlet.content } }"_s
        << QStringList{u"scene-unguarded 4:4"_s};
}

/// What is a test, and what looks like one.
void TestAuthorSceneRules::addTests()
{
    addGuardRow("logged", u"function f() { console.log('a', vidlet); return #vidlet.content; }"_s,
                true);
    addGuardRow("logged test", u"function f() { console.log(!vidlet || vidlet.content); }"_s,
                false);
    addGuardRow("handed to a function", u"a: isThere(vidlet) ? vidlet.content : ''"_s, false);
    addGuardRow("constant", u"function f() { const t = vidlet; return #t.content; }"_s, true);
    addGuardRow("tested constant",
                u"function f() { const t = vidlet; return t ? t.content : ''; }"_s, false);
    addGuardRow("tested by its constant",
                u"function f() { const t = vidlet; if (!t) return ''; return vidlet.content; }"_s,
                false);
    addGuardRow("constant behind a test",
                u"function f() { if (!vidlet) return ''; const t = vidlet; return t.content; }"_s,
                false);
    addGuardRow("constant that may be another",
                u"function f() { const t = vidlet || other; return t.content; }"_s, false);
    addGuardRow(
        "name of a constant elsewhere",
        u"function f() { const t = vidlet; return t; }\nfunction g(t) { return t.content; }"_s,
        false);
    addGuardRow("where it is null", u"a: vidlet ? '' : #vidlet.content"_s, true);
    addGuardRow("where it is null, in an argument", u"a: f(vidlet ? b ? 1 : 2 : #vidlet.content)"_s,
                true);
    addGuardRow("behind where it is null",
                u"a: (vidlet ? 1 : 2) + (vidlet ? vidlet.content : '')"_s, false);
    addGuardRow("where it is not null", u"a: !vidlet ? '' : vidlet.content"_s, false);
    addGuardRow("where it is not equal", u"a: null == vidlet ? '' : vidlet.content"_s, false);
    addGuardRow("chosen by more", u"a: b && vidlet ? '' : vidlet.content"_s, false);
    addGuardRow("tested once more", u"a: vidlet ? '' : vidlet && vidlet.content"_s, false);
    addGuardRow("tested before",
                u"function f() { if (!vidlet) return ''; return vidlet ? '' : vidlet.a }"_s, false);
    addGuardRow("statement behind",
                u"function f() { const b = vidlet ? 1 : 2\nif (b == 1) c(vidlet.d) }"_s, false);
    addGuardRow("caught",
                u"function f() { try { return vidlet.content; } catch (e) { return ''; } }"_s,
                false);
    addGuardRow("where it is caught",
                u"function f() { try { g(); } catch (e) { return #vidlet.content; } }"_s, true);
}

void TestAuthorSceneRules::addAddresses()
{
    const auto row = [](const char* name, const QString& member, const QString& rule) {
        QTest::newRow(name) << u"Item {\n"_s + member + u"\n}"_s
                            << (rule.isEmpty() ? QStringList() : QStringList{rule});
    };
    row("remote picture", u"source: 'https://e.org/a.png'"_s, u"scene-network 2:9"_s);
    row("remote markup", u"a: '<img src=\"http://e.org/a.png\">'"_s, u"scene-network 2:4"_s);
    row("link", u"a: '<a href=\"https://e.org/\">e</a>'"_s, QString());
    row("opened", u"onA: vidletView.openExternalResource('https://e.org/')"_s, QString());
    row("opened by a constant",
        u"onA: { const u = 'https://e.org/'; vidletView.openExternalResource(u); }"_s, QString());
    row("opened by a property",
        u"property url u: 'https://e.org/'; onA: Qt.openUrlExternally(root.u + 'a')"_s, QString());
    row("opened by a property of an inner object",
        u"onA: Qt.openUrlExternally(u)\nB { C { property url u: 'https://e.org/' } }"_s, QString());
    row("opened and loaded by a property",
        u"property url u: 'https://e.org/'\nsource: u\nonA: Qt.openUrlExternally(u)"_s,
        u"scene-network 2:17"_s);
    row("by a property", u"property url u: 'https://e.org/'"_s, u"scene-network 2:17"_s);
    row("opened by one of two", u"property url u: a ? 'https://e.org/' : v; onA: f(u)"_s,
        u"scene-network 2:21"_s);
    row("name of a language", u"a: b.createElementNS('http://www.w3.org/2000/svg', 'svg')"_s,
        QString());
    row("picture of its maker", u"source: 'http://www.w3.org/2000/svg/a.svg'"_s,
        u"scene-network 2:9"_s);
    row("request", u"function f() { new XMLHttpRequest(); }"_s, u"scene-network 2:20"_s);
    row("path", u"source: '/home/me/a.png'"_s, u"scene-absolute-path 2:9"_s);
    row("url", u"source: \"file:///home/me/a.png\""_s, u"scene-absolute-path 2:9"_s);
    row("drive", u"source: 'C:/a.png'"_s, u"scene-absolute-path 2:9"_s);
    row("scheme alone", u"source: 'file://' + dataLocation + '/Resources/a.png'"_s, QString());
    row("slash", u"a: b.split('/')"_s, QString());
    row("loaded scene", u"source: 'Gone.qml'"_s, u"scene-missing 2:9"_s);
    row("made scene", u"a: Qt.createComponent('Gone.qml')"_s, u"scene-missing 2:23"_s);
    row("scene put together", u"source: folder + 'Gone.qml'"_s, QString());
    QTest::newRow("module") << u"import QtWebSockets\nItem {}"_s
                            << QStringList{u"scene-network 1:8"_s};
}

void TestAuthorSceneRules::addTexts()
{
    const auto row = [](const char* name, const QString& member, int column) {
        const QStringList expected{u"string-untranslated 2:%1"_s.arg(column)};
        QTest::newRow(name) << u"Text {\n"_s + member + u"\n}"_s
                            << (column > 0 ? expected : QStringList());
    };
    row("text", u"text: 'Play'"_s, 7);
    row("name", u"Accessible.name: \"Play\""_s, 18);
    row("other property", u"objectName: 'Play'"_s, 0);
    row("signs", u"text: '%1 / %2 \\u25b6 %(name)s <b>&amp;</b>'"_s, 0);
    row("markup", u"text: '<b>Play</b>'"_s, 7);
    row("fallback", u"text: vidletView.translate('Play', 'UI') || 'Play'"_s, 0);
    row("fallback of another", u"text: tip.attribute('a') || 'Play'"_s, 29);
    row("own function",
        u"function words(t) { return v.translate(t, 'UI') || t }\n"
        "text: words('Play')"_s,
        0);
    row("fallback of own function",
        u"function words(t) { return v.translate(t, 'UI') }\n"
        "text: words('Play') || 'Play'"_s,
        0);
    row("other branch", u"text: a ? b.translate('P', 'UI') || 'P' : 'Stop'"_s, 43);
    row("compared", u"text: a === 'Play' ? b : c"_s, 0);
    row("qsTr", u"text: qsTr('Play')"_s, 12);
    row("assigned", u"onA: { label.text = 'Play'; }"_s, 21);
    row("colour named text", u"property color text: 'white'"_s, 0);
    row("key of an object", u"text: ({ 'Play': 1, 'Stop': 2 })['Stop']"_s, 0);
    row("attached", u"ToolTip.text: 'Play'"_s, 15);
    row("of another object", u"button.label.text: 'Play'"_s, 20);
    row("attached in a block", u"Accessible { name: 'Play' }"_s, 20);
    row("name in another block", u"State { name: 'Play' }"_s, 0);
    row("interpolated", u"text: vidletView.interpolate('Play')"_s, 30);
    row("interpolated fallback",
        u"text: vidletView.interpolate(vidletView.translate('Play', 'UI') || 'Play')"_s, 0);
    row("interpolated argument", u"text: words(vidletView.interpolate('Play'))"_s, 0);
    row("first of list", u"text: ['Play', '1'][0]"_s, 8);
    row("index", u"text: tip['Play']"_s, 0);
}

/// What stands in for a translation is what the translation is made of.
void TestAuthorSceneRules::addFallbacks()
{
    const auto row = [](const char* name, const QString& member, int column = 0) {
        const QStringList expected{u"string-untranslated 2:%1"_s.arg(column)};
        QTest::newRow(name) << u"Text {\n"_s
                + QString(member).replace(u'$', u"v.translate('Keep', 'UI')"_s)
                + u"\n}"_s << (column > 0 ? expected : QStringList());
    };
    row("in brackets", u"text: ($) || 'Keep'"_s);
    row("fallback in brackets", u"text: $ || ('Keep')"_s);
    row("put together", u"text: $ || 'Ke' + n + \n 'ep'"_s);
    row("with values", u"text: $.arg(a).arg(b) || '%1 of %2'.arg(a).arg(b)"_s);
    row("choice", u"text: $ ? $ : 'Keep'"_s);
    row("choice by comparison", u"text: $ !== '' ? $ : 'Keep'"_s);
    row("choice the other way", u"text: $ === '' ? 'Keep' : $"_s);
    row("choice within", u"text: a + ($ ? ($) : 'Keep')"_s);
    row("variable", u"text: { const s = $; return s === '' ? 'Keep' : s; }"_s);
    row("variable set anew", u"text: { let s = $; if (s === '') s = 'Keep'; return s; }"_s);
    row("property", u"property string s: $\ntext: s || 'Keep'"_s);
    row("choice by something else", u"text: a ? v.translate('P', 'UI') : 'Stop'"_s, 36);
    row("choice of something else", u"text: v.translate('P', 'UI') ? a : 'Stop'"_s, 36);
    row("behind another member",
        u"a: v.translate('P', 'U') ? v.translate('P', 'U') : ''; text: 'P'"_s, 62);
    row("behind a translation", u"text: v.translate('P', 'UI') + 'Stop'"_s, 32);
    row("set to a shown text", u"a: { b.text = v.translate('P', 'UI'); c.text = 'Stop'; }"_s, 48);
    row("behind a comparison", u"text: a == b || 'Stop' || s === v.translate('P', 'U')"_s, 17);
}

void TestAuthorSceneRules::finds_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");

    addGuards();
    addTests();
    addAddresses();
    addTexts();
    addFallbacks();
}

void TestAuthorSceneRules::finds()
{
    QFETCH(const QString, text);
    QFETCH(const QStringList, expected);

    QCOMPARE(found(text), expected);
}

void TestAuthorSceneRules::outline_namesMembers()
{
    const AuthorSceneOutline scene(u"import QtQuick 2.15 as Q\nQ.Item {\n id: a; "
                                   "readonly property list<QtObject> b: []\n"
                                   " Accessible.name: c(\n d)\n onE: { if (f) { g } else { h } }\n"
                                   " function i(j) { k: l }\n Text { text: m\n + n }\n}"_s);
    QStringList names;
    for (const AuthorSceneOutline::Member& member : scene.members())
        names.append(member.name);

    const QStringList expected{QString(), u"Q.Item"_s, u"id"_s,   u"b"_s,   u"Accessible.name"_s,
                               u"onE"_s,  u"i"_s,      u"Text"_s, u"text"_s};
    QCOMPARE(names, expected);
}

void TestAuthorSceneRules::comesToEnd_whenBracketsAreMany()
{
    constexpr qsizetype kCount = 200'000;

    QVERIFY(found(u"("_s.repeated(kCount)).isEmpty());
    QVERIFY(found(u"{"_s.repeated(kCount) + u"'a' "_s.repeated(kCount)).isEmpty());
    QVERIFY(found(u"property list<"_s.repeated(kCount)).isEmpty());
    QVERIFY(found(u"a."_s.repeated(kCount)).isEmpty());
    QVERIFY(found(u")]}"_s.repeated(kCount)).isEmpty());
    QVERIFY(found(u"a: "_s + u"(vidlet ? b "_s.repeated(kCount)).isEmpty());
    QVERIFY(found(u"a: `"_s + u"${"_s.repeated(kCount)).isEmpty());
    // Each with a finding.
    constexpr qsizetype kTexts = 20'000;
    for (const QString& part : {u"a ? 'b' : "_s, u"'b' + "_s, u"{ a || 'b' } "_s})
        QVERIFY(!found(u"text: "_s + part.repeated(kTexts)).isEmpty());
    QVERIFY(
        !found(u"text: "_s + u"("_s.repeated(kTexts) + u"a || 'b')"_s.repeated(kTexts)).isEmpty());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorSceneRules>(argc, argv);
}

#include "tst_authorscenerules.moc"
