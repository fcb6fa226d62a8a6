// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"
#include <Vidlets/VLTranslationData.h>

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QProcess>
#include <QTranslator>

#include <algorithm>

#include <VidletsAuthor/AuthorStringsFiles.h>
#include <VidletsAuthor/AuthorTemplate.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

constexpr auto kTips = "<vidlets>\n"
                       "<vidlet key='pen' title='Pen &amp; ink'>\n"
                       "<p>Draws  freehand,\n  just as <b>you</b> move.</p>\n"
                       "<clip source='pen.webm'/>\n"
                       "</vidlet>\n"
                       "<other title='No tip'>No text</other>\n"
                       "</vidlets>";

constexpr auto kScene =
    "import QtQuick\n"
    "Item {\n"
    "function words(text) { return vidletView.translate(text, 'UI') || text; }\n"
    "property string a: words(\"Play\\u2026\")\n"
    "property string b: vidletView.translate('Stop', 'Player') || 'Stop'\n"
    "property string c: 'Not this'\n"
    "}";

AuthorPackage packageIn(const PackageBuilder& files)
{
    AuthorFindings findings;
    AuthorPackages packages(findings);
    QString reason;
    packages.add(files.dataPath(), reason);
    return packages.packages().value(0);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The texts as "context: source".
QStringList textsOf(const QList<AuthorTsMessage>& messages)
{
    QStringList result;
    for (const AuthorTsMessage& message : messages)
        result.append(u"%1: %2"_s.arg(message.context, message.source));
    return result;
}

AuthorTsFile fileFrom(const QByteArray& bytes)
{
    AuthorTsFile::Fault fault;
    return AuthorTsFile::read(bytes, fault).value_or(AuthorTsFile());
}

const AuthorTsMessage* messageOf(const AuthorTsFile& file, const QString& source)
{
    const auto found = std::find_if(
        file.messages.cbegin(), file.messages.cend(),
        [&source](const AuthorTsMessage& message) { return message.source == source; });
    return found == file.messages.cend() ? nullptr : &*found;
}

/// What the library would get from a compiled file.
QString lookUp(const QByteArray& compiled, const char* context, const char* source)
{
    const QByteArray checked = TranslationData::checked(compiled);
    QTranslator translator;
    if (!translator.load(reinterpret_cast<const uchar*>(checked.constData()),
                         static_cast<int>(checked.size())))
        return u"not loaded"_s;
    return translator.translate(context, source, nullptr, -1);
}

/// Runs a program of Qt's tools for translations; null if it fails.
QByteArray run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(u"/usr/lib/qt6/bin/"_s + program, arguments);
    const bool isDone = process.waitForFinished() && process.exitCode() == 0;
    return isDone ? process.readAllStandardOutput() : QByteArray();
}

} // namespace

class TestAuthorStrings : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void messages_areThoseOfTipsAndScenes();
    void messages_areAllThatScenesChooseFrom_data();
    void messages_areAllThatScenesChooseFrom();
    void messages_areThoseOfScenesOfOtherPackages_data();
    void messages_areThoseOfScenesOfOtherPackages();
    void messages_leaveOutScenesOfOtherPackages_whenThereAreOwn();
    void messages_areThoseForTheDirectory();
    void messages_nameKeyAndFile();
    void messages_leaveOutFilesForOneLocale();
    void update_keepsTranslationsAndMarksGone();
    void update_keepsOwnLinesForTranslators_data();
    void update_keepsOwnLinesForTranslators();
    void update_leavesCommentOfContextAlone();
    void collect_isGivenUp_whenThereAreTooManyTexts();
    void write_changesNothing_whenNothingIsNew();
    void write_keepsWhatAuthorWrote_data();
    void write_keepsWhatAuthorWrote();
    void write_leavesTemplateAsItIs();
    void write_keepsFile_whenItCannotBeRead();
    void write_changesNothing_whenControlFileIsBroken();
    void ts_isWhatToolsOfQtWrite_data();
    void ts_isWhatToolsOfQtWrite();
    void ts_isRefused_whenBroken_data();
    void ts_isRefused_whenBroken();
    void release_saysWhatLreleaseSays();
    void pseudo_isLoadedUnderItsLocale();
    void pseudoText_leavesMarkupAlone();

private:
    std::unique_ptr<PackageBuilder> m_files;
};

void TestAuthorStrings::init()
{
    m_files = std::make_unique<PackageBuilder>();
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s, kTips);
    m_files->write(u"A.vidlets/ui/VidletUI.qml"_s, kScene);
}

void TestAuthorStrings::messages_areThoseOfTipsAndScenes()
{
    const AuthorStrings strings(packageIn(*m_files));

    QVERIFY2(strings.faults().isEmpty(), qPrintable(strings.faults().join(u'\n')));
    const QStringList expected{u"UI: Play\u2026"_s, u"Player: Stop"_s, u"UI: Pen & ink"_s,
                               u"UI: you"_s, u"UI: Draws freehand, just as move."_s};
    QCOMPARE(textsOf(strings.messages()), expected);
}

void TestAuthorStrings::messages_areAllThatScenesChooseFrom_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QStringList>("sources");

    const QString usual = u"UI: Pen & ink"_s;
    const QString dynamic = u"Ctx: Pen & ink"_s;
    QTest::newRow("put together") << u"'Long ' + \"wor\" + 'ds'"_s
                                  << QStringList{u"Ctx: Long words"_s, usual};
    QTest::newRow("one of two") << u"a > (b ? c : d) ? 'A' : \"B\""_s
                                << QStringList{u"Ctx: A"_s, u"Ctx: B"_s, usual};
    QTest::newRow("one of three") << u"(a ? b ? 'A' : ('B' + 'b') : 'C')"_s
                                  << QStringList{u"Ctx: A"_s, u"Ctx: Bb"_s, u"Ctx: C"_s, usual};
    QTest::newRow("one and another")
        << u"a ? 'A' : b"_s << QStringList{u"Ctx: A"_s, dynamic, usual};
    QTest::newRow("end left out") << u"'A' + "_s << QStringList{dynamic, usual};
    QTest::newRow("with a value") << u"'A ' + b"_s << QStringList{dynamic, usual};
    QTest::newRow("value within") << u"`A ${b}`"_s << QStringList{dynamic, usual};
    QTest::newRow("member that may be null") << u"a?.b"_s << QStringList{dynamic, usual};
    QTest::newRow("other half left out") << u"a ? 'A'"_s << QStringList{dynamic, usual};
}

void TestAuthorStrings::messages_areAllThatScenesChooseFrom()
{
    QFETCH(const QString, argument);
    QFETCH(const QStringList, sources);
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                              "<vidlets><vidlet key='pen' title='Pen &amp; ink'/></vidlets>");
    m_files->write(
        u"A.vidlets/ui/VidletUI.qml"_s,
        u"Item {\nfunction words(t) { return v.translate(t, 'UI'); }\na: v.translate(%1, 'Ctx')\n}"_s
            .arg(argument)
            .toUtf8());

    QCOMPARE(textsOf(AuthorStrings(packageIn(*m_files)).messages()), sources);
}

void TestAuthorStrings::messages_areThoseOfScenesOfOtherPackages_data()
{
    QTest::addColumn<QByteArray>("root");

    QTest::newRow("usual scene") << QByteArray("<vidlets search='None, Shared'>");
    QTest::newRow("named scene") << QByteArray("<vidlets search='Shared' ui='ui/VidletUI.qml'>");
    QTest::newRow("path") << QByteArray("<vidlets ui='../Shared.vidlets/ui/VidletUI.qml'>");
}

/// The library looks for translations in one file alone, that of the tip's own package.
void TestAuthorStrings::messages_areThoseOfScenesOfOtherPackages()
{
    QFETCH(const QByteArray, root);
    m_files->writeControlFile(u"B.vidlets"_s, u"b.xml"_s,
                              root + "<vidlet key='b' title='Brush'/></vidlets>");
    m_files->writeControlFile(u"Shared.vidlets"_s, u"s.xml"_s, "<vidlets/>");
    m_files->write(u"Shared.vidlets/ui/VidletUI.qml"_s, kScene);
    AuthorFindings findings;
    AuthorPackages packages(findings);
    QString reason;
    QVERIFY(packages.add(m_files->path(u"B.vidlets"_s), reason));

    const AuthorStrings strings(packages.packages().value(0));

    QVERIFY2(strings.faults().isEmpty(), qPrintable(strings.faults().join(u'\n')));
    const QStringList expected{u"UI: Play\u2026"_s, u"Player: Stop"_s, u"UI: Brush"_s};
    QCOMPARE(textsOf(strings.messages()), expected);
    const AuthorTsMessage play = strings.messages().value(0);
    QCOMPARE(play.extraComment, u"../Shared.vidlets/ui/VidletUI.qml"_s);
    QCOMPARE(play.locations.value(0).file, u"../../Shared.vidlets/ui/VidletUI.qml"_s);
}

void TestAuthorStrings::messages_leaveOutScenesOfOtherPackages_whenThereAreOwn()
{
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                              "<vidlets search='Shared' simple='ui/VidletUI.qml'><vidlet key='b' "
                              "title='Brush'/></vidlets>");
    m_files->writeControlFile(u"Shared.vidlets"_s, u"s.xml"_s, "<vidlets/>");
    m_files->write(u"Shared.vidlets/ui/VidletUI.qml"_s,
                   "Item { a: v.translate('Pause', 'Other') }");

    const QStringList expected{u"UI: Play\u2026"_s, u"Player: Stop"_s, u"UI: Brush"_s};
    QCOMPARE(textsOf(AuthorStrings(packageIn(*m_files)).messages()), expected);
}

void TestAuthorStrings::messages_areThoseForTheDirectory()
{
    m_files->write(u"A.vidlets/ui/VidletUI.qml"_s, "Item {}");
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                              "<vidlets l10n_name='words/all/'>\n"
                              "<vidlet key='a' title='Root'/>\n"
                              "<vidlet key='b' title='Own' l10n_name='lang'/>\n"
                              "<vidlet key='c' title='Usual' l10n_name=''/>\n"
                              "</vidlets>");
    const AuthorPackage package = packageIn(*m_files);
    const AuthorStrings usual(package);
    const AuthorStrings nested(package, u"words/all"_s);

    const QStringList directories{u"words/all"_s, u"lang"_s, u"l10n"_s};
    QCOMPARE(usual.directories(), directories);
    QCOMPARE(textsOf(usual.messages()), QStringList{u"VidletUI: Usual"_s});
    QCOMPARE(textsOf(AuthorStrings(package, u"lang"_s).messages()),
             QStringList{u"VidletUI: Own"_s});
    QCOMPARE(textsOf(nested.messages()), QStringList{u"VidletUI: Root"_s});
    QCOMPARE(nested.messages().value(0).locations.value(0).file, u"../../Control/a.xml"_s);
}

void TestAuthorStrings::messages_nameKeyAndFile()
{
    const AuthorStrings strings(packageIn(*m_files));
    const AuthorTsMessage title = strings.messages().value(2);

    QCOMPARE(title.extraComment, u"pen, Control/a.xml"_s);
    QCOMPARE(title.locations.value(0).file, u"../Control/a.xml"_s);
    QCOMPARE(title.locations.value(0).line, 2);
    QCOMPARE(strings.messages().value(0).extraComment, u"ui/VidletUI.qml"_s);
}

void TestAuthorStrings::messages_leaveOutFilesForOneLocale()
{
    m_files->writeControlFile(u"A.vidlets"_s, u"de.xml"_s,
                              "<vidlets locale='de_DE'><vidlet key='b' title='Stift'/></vidlets>");

    const AuthorStrings strings(packageIn(*m_files));

    QVERIFY(!textsOf(strings.messages()).contains(u"UI: Stift"_s));
}

void TestAuthorStrings::update_keepsTranslationsAndMarksGone()
{
    AuthorTsFile file = fileFrom(
        "<TS version=\"2.1\"><context><name>UI</name>"
        "<message><source>Pen &amp; ink</source><translatorcomment>Hm</translatorcomment>"
        "<translation>Stift</translation></message>"
        "<message><source>Gone</source><translation>Weg</translation></message>"
        "<message><source>Never done</source><translation type=\"unfinished\"/></message>"
        "<message><source>you</source><translation type=\"vanished\">du</translation></message>"
        "</context></TS>");
    QCOMPARE(file.messages.size(), 4);

    const AuthorStrings::Change change = AuthorStrings(packageIn(*m_files)).update(file);

    using State = AuthorTsMessage::State;
    QCOMPARE(change.added, 3);
    QCOMPARE(change.gone, 2);
    QCOMPARE(change.unfinished, 3);
    QCOMPARE(messageOf(file, u"Pen & ink"_s)->translations, QStringList{u"Stift"_s});
    QCOMPARE(messageOf(file, u"Pen & ink"_s)->translatorComment, u"Hm"_s);
    QVERIFY(messageOf(file, u"Gone"_s)->state == State::Vanished);
    QVERIFY(messageOf(file, u"Never done"_s)->state == State::Obsolete);
    QVERIFY(messageOf(file, u"you"_s)->state == State::Finished);
}

void TestAuthorStrings::update_keepsOwnLinesForTranslators_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    const QString note = u"pen, Control/a.xml"_s;

    QTest::newRow("none") << QString() << note;
    QTest::newRow("that alone") << note << note;
    QTest::newRow("own alone") << u"A tool"_s << u"A tool\n"_s + note;
    QTest::newRow("own above") << u"A tool\n"_s + note << u"A tool\n"_s + note;
    QTest::newRow("own below") << note + u"\nA tool,\n  not a pen for cows"_s
                               << note + u"\nA tool,\n  not a pen for cows"_s;
    QTest::newRow("other key before") << u"above\npencil, two, Control/old one.xml\nbelow"_s
                                      << u"above\n"_s + note + u"\nbelow"_s;
    QTest::newRow("other scene before")
        << u"ui/Old.qml\nsee ui/VidletUI.qml"_s << note + u"\nsee ui/VidletUI.qml"_s;
}

void TestAuthorStrings::update_keepsOwnLinesForTranslators()
{
    QFETCH(const QString, before);
    QFETCH(const QString, after);
    AuthorTsFile file;
    AuthorTsMessage message;
    message.context = u"UI"_s;
    message.source = u"Pen & ink"_s;
    message.extraComment = before;
    file.messages.append(message);
    const AuthorStrings strings(packageIn(*m_files));

    strings.update(file);
    QCOMPARE(file.messages.constFirst().extraComment, after);
    strings.update(file);
    QCOMPARE(file.messages.constFirst().extraComment, after);
}

/// Which Qt's tools write as a message without a text.
void TestAuthorStrings::update_leavesCommentOfContextAlone()
{
    AuthorTsFile file =
        fileFrom("<TS><context><name>UI</name><message><source></source><comment>Short!</comment>"
                 "<translation type=\"unfinished\"/></message></context></TS>");
    const AuthorStrings strings(packageIn(*m_files));

    const AuthorStrings::Change change = strings.update(file);

    QCOMPARE(change.gone, 0);
    QCOMPARE(change.unfinished, strings.messages().size());
    QCOMPARE(file.messages.constFirst().comment, u"Short!"_s);
    QVERIFY(file.messages.constFirst().state == AuthorTsMessage::State::Unfinished);
}

void TestAuthorStrings::collect_isGivenUp_whenThereAreTooManyTexts()
{
    constexpr int kContexts = 2000;
    QByteArray scene = "import QtQuick\nItem {\n";
    for (int i = 0; i < kContexts; ++i)
        scene += "function f" + QByteArray::number(i) + "(t) { return vidletView.translate(t, 'C"
            + QByteArray::number(i) + "'); }\n";
    m_files->write(u"A.vidlets/ui/Many.qml"_s, scene + "}\n");
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                              "<vidlets><vidlet key='a'><p>" + QByteArray(100'000, 'a')
                                  + "</p></vidlet></vidlets>");

    const AuthorStrings strings(packageIn(*m_files));

    QCOMPARE(strings.faults().size(), 1);
    QVERIFY2(strings.faults().constFirst().contains("too many: in 2001 contexts"_L1),
             qPrintable(strings.faults().constFirst()));
}

void TestAuthorStrings::write_changesNothing_whenNothingIsNew()
{
    const QString path = m_files->path(u"A.vidlets/l10n/Vidlets_de_DE.ts"_s);
    AuthorStringsFiles first(packageIn(*m_files));
    first.add(u"de_DE"_s);
    QVERIFY(first.write());
    const QByteArray content = contentOf(path);
    QVERIFY(content.contains("<source>Pen &amp; ink</source>"));

    AuthorStringsFiles second(packageIn(*m_files));
    second.addExisting();
    QVERIFY(!second.isEmpty());
    QVERIFY(second.write());

    QCOMPARE(contentOf(path), content);
}

void TestAuthorStrings::write_keepsWhatAuthorWrote_data()
{
    QTest::addColumn<QByteArray>("root");
    QTest::addColumn<QByteArray>("context");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("behind");

    const QByteArray none;
    QTest::newRow("attribute of the root alone") << none << none << none << none;
    QTest::newRow("dependencies") << QByteArray(
        "<dependencies>\n<dependency catalog=\"a&amp;b\"/>\n"
        "</dependencies>\n") << none
                                  << none << none;
    QTest::newRow("extra at the root")
        << QByteArray("    <extra-po-headers>X: &quot;y&quot;\n  z</extra-po-headers>\n") << none
        << none << none;
    QTest::newRow("comment at the root")
        << QByteArray("<!-- mine: <b> & 'c' -->\n") << none << none << none;
    QTest::newRow("instruction at the root")
        << QByteArray("<?tool words?>\n") << none << none << none;
    QTest::newRow("comment of a context")
        << none << QByteArray("    <comment>Words of &lt;buttons&gt;</comment>\n") << none << none;
    QTest::newRow("comment in a context")
        << none << QByteArray("    <!-- mine\n of two lines -->\n") << none << none;
    QTest::newRow("comment in a message")
        << none << none << QByteArray("        <!-- mine -->\n") << none;
    QTest::newRow("element in a message")
        << none << none << QByteArray("        <seen by=\"&lt;me&#xa;\"><on/>x</seen>\n") << none;
    QTest::newRow("element of others")
        << QByteArray("<o:a xmlns:o=\"urn:o\" o:b=\"c\"><o:d/></o:a>\n") << none << none << none;
    QTest::newRow("behind the root") << none << none << none << QByteArray("<!-- mine -->\n");
}

void TestAuthorStrings::write_keepsWhatAuthorWrote()
{
    QFETCH(const QByteArray, root);
    QFETCH(const QByteArray, context);
    QFETCH(const QByteArray, message);
    QFETCH(const QByteArray, behind);
    const QByteArray content = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!DOCTYPE TS>\n"
                               "<TS version=\"2.1\" language=\"de_DE\" xmlns:p=\"urn:p\">\n"
        + root + "<context>\n    <name>UI</name>\n" + context
        + "    <message>\n        <source>Old</source>\n" + message
        + "        <translation type=\"vanished\">Alt</translation>\n    </message>\n" + context
        + "    <message>\n        <source>Older</source>\n"
          "        <translation type=\"vanished\">Aelter</translation>\n"
        + message + "    </message>\n" + context + "</context>\n" + root
        + "<context>\n    <name>Alone</name>\n    <message>\n        <source>Oldest</source>\n"
          "        <translation type=\"obsolete\"></translation>\n    </message>\n</context>\n"
        + root + "</TS>\n" + behind;
    const QString path = m_files->write(u"A.vidlets/l10n/Vidlets_de_DE.ts"_s, content);
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
    m_files->write(u"A.vidlets/ui/VidletUI.qml"_s, "Item {}\n");
    AuthorStringsFiles files(packageIn(*m_files));
    files.addExisting();

    QVERIFY2(files.write(), qPrintable(files.faults().join(u'\n')));
    QCOMPARE(contentOf(path), content);
    QCOMPARE(fileFrom(content).write(), content);

    // And with a text that is new.
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                              "<vidlets><vidlet key='a' title='T'/></vidlets>");
    AuthorStringsFiles again(packageIn(*m_files));
    again.addExisting();
    QVERIFY(again.write());
    const QByteArray longer = contentOf(path);
    QVERIFY(longer.contains("<source>T</source>"));
    for (const QByteArray& part : {root, context, message, behind})
        QCOMPARE(part.isEmpty() ? 0 : longer.count(part), part.isEmpty() ? 0 : content.count(part));
}

/// Its lines would be stale, else, and change with the first text that an author adds.
void TestAuthorStrings::write_leavesTemplateAsItIs()
{
    const QString package = m_files->path(u"New.vidlets"_s);
    QString reason;
    QVERIFY2(AuthorTemplate::create(QStringLiteral(TEMPLATE), package, reason), qPrintable(reason));
    const QString source = package + u"/l10n/Vidlets_de_DE.ts"_s;
    const QString compiled = package + u"/l10n/Vidlets_de_DE.qm"_s;
    const QByteArray before = contentOf(source);
    QVERIFY(!before.isEmpty());
    AuthorFindings findings;
    AuthorPackages packages(findings);
    QVERIFY(packages.add(package, reason));
    AuthorStringsFiles files(packages.packages().value(0));
    files.addExisting();
    files.setCompiling(true);
    QVERIFY(files.write());

    QCOMPARE(contentOf(source), before);
    QCOMPARE(contentOf(compiled), contentOf(QStringLiteral(TEMPLATE "/l10n/Vidlets_de_DE.qm")));
}

void TestAuthorStrings::write_keepsFile_whenItCannotBeRead()
{
    const QByteArray broken = "<TS><context><name>UI</name>";
    const QString path = m_files->write(u"A.vidlets/l10n/Vidlets_de_DE.ts"_s, broken);
    AuthorStringsFiles files(packageIn(*m_files));
    files.addExisting();
    files.add(u"fr_FR"_s);
    files.setCompiling(true);

    QVERIFY(!files.write());

    QCOMPARE(contentOf(path), broken);
    QCOMPARE(files.faults().size(), 1);
    QVERIFY(files.faults().constFirst().startsWith(path));
    QVERIFY(QFileInfo::exists(m_files->path(u"A.vidlets/l10n/Vidlets_fr_FR.ts"_s)));
}

void TestAuthorStrings::write_changesNothing_whenControlFileIsBroken()
{
    const QByteArray content =
        "<TS version=\"2.1\"><context><name>UI</name><message><source>Pen &amp; "
        "ink</source><translation>Stift</translation></message></context></TS>";
    const QString path = m_files->write(u"A.vidlets/l10n/Vidlets_de_DE.ts"_s, content);
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets><vidlet key='pen'>");
    AuthorStringsFiles files(packageIn(*m_files));
    files.addExisting();

    QVERIFY(!files.write());

    QCOMPARE(contentOf(path), content);
    QVERIFY(files.faults().constFirst().contains("a.xml:1"_L1));
}

void TestAuthorStrings::ts_isWhatToolsOfQtWrite_data()
{
    QTest::addColumn<QByteArray>("message");

    QTest::newRow("plain") << QByteArray("<source>a</source><translation>b</translation>");
    QTest::newRow("signs") << QByteArray("<source>&lt;a&gt; &amp; \"b\" 'c'\n\td</source>"
                                         "<translation>\xc3\xa4 \xe4\xb8\xad \xf0\x9f\x98\x80"
                                         "</translation>");
    QTest::newRow("rare signs") << QByteArray("<source>a<byte value=\"x1b\"/>b&#xa0;c&#x2028;d"
                                              "</source><translation>e</translation>");
    QTest::newRow("states") << QByteArray(
        "<source>a</source><translation type=\"unfinished\"></translation></message>"
        "<message><source>b</source><translation type=\"vanished\">c</translation></message>"
        "<message><source>d</source><translation type=\"obsolete\">e</translation>");
    QTest::newRow("comments") << QByteArray(
        "<source>a</source><oldsource>o</oldsource><comment>b</comment><oldcomment>p</oldcomment>"
        "<extracomment>c\nd</extracomment><translatorcomment>e</translatorcomment>"
        "<translation>f</translation><extra-hint>g</extra-hint>");
    QTest::newRow("variants") << QByteArray(
        "<source>a</source><translation variants=\"yes\"><lengthvariant>long</lengthvariant>"
        "<lengthvariant>l</lengthvariant></translation>");
    QTest::newRow("numerus") << QByteArray(
        "<source>a</source><translation>b</translation></message><message numerus=\"yes\">"
        "<source>%n a</source><translation><numerusform>%n b</numerusform>"
        "<numerusform>%n c</numerusform></translation>");
}

void TestAuthorStrings::ts_isWhatToolsOfQtWrite()
{
    QFETCH(const QByteArray, message);
    const AuthorTsFile file = fileFrom(
        "<!DOCTYPE TS><TS version=\"2.1\" language=\"de_DE\" sourcelanguage=\"en_US\"><context>"
        "<name>UI</name><message>"
        + message + "</message></context></TS>");
    const QByteArray written = file.write();
    const QString path = m_files->write(u"a.ts"_s, written);

    QCOMPARE(run(u"lconvert"_s, {u"-if"_s, u"ts"_s, u"-of"_s, u"ts"_s, path}), written);
    QCOMPARE(fileFrom(written).write(), written);
}

void TestAuthorStrings::ts_isRefused_whenBroken_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("open") << QByteArray("<TS><context>");
    QTest::newRow("other root") << QByteArray("<vidlets/>");
    QTest::newRow("behind the root") << QByteArray("<TS/><TS/>");
    QTest::newRow("entities") << QByteArray(
        "<!DOCTYPE TS [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b "
        "'&a;&a;&a;'>]><TS><context><name>&c;</name></context></TS>");
}

void TestAuthorStrings::ts_isRefused_whenBroken()
{
    QFETCH(const QByteArray, bytes);
    AuthorTsFile::Fault fault;

    QVERIFY(!AuthorTsFile::read(bytes, fault));
    QVERIFY(!fault.reason.isEmpty());
}

void TestAuthorStrings::release_saysWhatLreleaseSays()
{
    AuthorTsFile file = fileFrom(
        "<TS version=\"2.1\" language=\"de_DE\"><context><name>UI</name>"
        "<message><source>Pen</source><translation>Stift</translation></message>"
        "<message><source>Caf\xc3\xa9</source><translation>Kaffeehaus \xf0\x9f\x98\x80"
        "</translation></message>"
        "<message><source>Undone</source><translation type=\"unfinished\">U</translation></message>"
        "<message><source>Empty</source><translation type=\"unfinished\"/></message>"
        "<message><source>Gone</source><translation type=\"vanished\">Weg</translation></message>"
        "</context><context><name>Other</name>"
        "<message><source>Pen</source><translation>Feder</translation></message></context></TS>");
    const QByteArray ours = file.compiled();
    const QString source = m_files->write(u"a.ts"_s, file.write());
    const QString path = m_files->path(u"theirs.qm"_s);
    run(u"lrelease"_s, {u"-silent"_s, source, u"-qm"_s, path});
    const QByteArray theirs = contentOf(path);
    QVERIFY(!theirs.isEmpty());

    for (const char* text : {"Pen", "Caf\xc3\xa9", "Undone", "Empty", "Gone", "Nothing"}) {
        for (const char* context : {"UI", "Other", ""})
            QCOMPARE(lookUp(ours, context, text), lookUp(theirs, context, text));
    }
    QCOMPARE(lookUp(ours, "Other", "Pen"), u"Feder"_s);
    // And back again.
    const QString compiled = m_files->write(u"ours.qm"_s, ours);
    const AuthorTsFile back =
        fileFrom(run(u"lconvert"_s, {u"-if"_s, u"qm"_s, u"-of"_s, u"ts"_s, compiled}));
    QCOMPARE(back.messages.size(), 4);
    QCOMPARE(messageOf(back, u"Caf\u00e9"_s)->translations,
             messageOf(file, u"Caf\u00e9"_s)->translations);
}

void TestAuthorStrings::pseudo_isLoadedUnderItsLocale()
{
    AuthorStringsFiles files(packageIn(*m_files));
    files.addPseudo();
    QVERIFY(files.write());

    // The name of the file is what the library makes of the locale.
    QCOMPARE(QLocale(AuthorStrings::pseudoLocale()).name(), AuthorStrings::pseudoLocale());
    const QByteArray compiled = contentOf(
        m_files->path(u"A.vidlets/l10n/Vidlets_%1.qm"_s.arg(AuthorStrings::pseudoLocale())));
    const QString text = lookUp(compiled, "UI", "Pen & ink");
    QVERIFY2(text.size() > u"Pen & ink"_s.size() + 2, qPrintable(text));
    QVERIFY2(text.contains(u"Péñ & îñk"_s), qPrintable(text));
}

void TestAuthorStrings::pseudoText_leavesMarkupAlone()
{
    const QString text = AuthorStrings::pseudoText(u"<b>Use</b> %(name)s &amp; %1 as one"_s);

    QVERIFY2(text.startsWith(u"[<b>Ûşé</b> %(name)s &amp; %1 àş öñé "_s), qPrintable(text));
    QVERIFY(text.endsWith(u']'));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorStrings>(argc, argv);
}

#include "tst_authorstrings.moc"
