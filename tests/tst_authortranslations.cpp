// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "CheckedPackages.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QDir>
#include <QFileInfo>

#include <VidletsAuthor/AuthorCheck.h>
#include <VidletsAuthor/AuthorTsFile.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

/// The findings about translations as "rule file:line".
QStringList checked(const PackageBuilder& files, const QStringList& locales = {})
{
    AuthorCheck check;
    QString reason;
    if (!check.add(files.dataPath(), reason))
        qWarning().noquote() << reason;
    check.setLocales(locales);
    QStringList result;
    const QList<AuthorFinding> findings = check.run();
    for (const AuthorFinding& finding : findings) {
        if (finding.rule.startsWith("l10n-"_L1))
            result.append(u"%1 %2:%3"_s.arg(finding.rule, QFileInfo(finding.file).fileName(),
                                            QString::number(finding.position.line)));
    }
    return result;
}

QByteArray source(const QByteArray& messages)
{
    return "<TS version=\"2.1\" language=\"de_DE\" sourcelanguage=\"en_GB\">\n<context><name>UI"
           "</name>\n"
        + messages + "</context></TS>";
}

QByteArray message(const QByteArray& text, const QByteArray& translation,
                   const QByteArray& type = QByteArray())
{
    return "<message><source>" + text + "</source><translation type=\"" + type + "\">" + translation
        + "</translation></message>\n";
}

QByteArray compiled(const QByteArray& bytes)
{
    AuthorTsFile::Fault fault;
    return AuthorTsFile::read(bytes, fault).value_or(AuthorTsFile()).compiled();
}

} // namespace

class TestAuthorTranslations : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void fresh_hasNoFinding();
    void stale_isWhatLacksTexts_data();
    void stale_isWhatLacksTexts();
    void stale_saysWhatIsLacking();
    void stale_goesByContents_data();
    void stale_goesByContents();
    void unfinished_isToldWithLine();
    void unfinished_isToldApart_fromUntranslated();
    void broken_isTold_data();
    void broken_isTold();
    void missing_isTold_whenNotCompiled();
    void missing_advisesToTranslate_whenNothingIs();
    void missing_goesByLocale();
    void missing_isNotTold_whenSearchedPackageHasFile();
    void missing_isNotTold_whenNothingIsTranslated();
    void otherDirectory_isLookedInto();
    void lack_isToldOfTenDirectories();
    void strangeFiles_bringCheckToEnd();

private:
    void write(const QString& name, const QByteArray& bytes)
    {
        m_files->write(u"A.vidlets/l10n/"_s + name, bytes);
    }

    std::unique_ptr<PackageBuilder> m_files;
};

void TestAuthorTranslations::init()
{
    m_files = std::make_unique<PackageBuilder>();
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets/>");
}

void TestAuthorTranslations::fresh_hasNoFinding()
{
    const QByteArray text = source(message("a", "b") + message("c", "d", "vanished"));
    write(u"Vidlets_de_DE.ts"_s, text);
    write(u"Vidlets_de_DE.qm"_s, compiled(text));

    QCOMPARE(checked(*m_files), QStringList());
}

void TestAuthorTranslations::stale_isWhatLacksTexts_data()
{
    QTest::addColumn<QString>("replaced");
    QTest::addColumn<QByteArray>("replacement");
    QTest::addColumn<bool>("isStale");

    const QString tips = u"A.vidlets/Control/a.xml"_s;
    const QString scene = u"A.vidlets/ui/VidletUI.qml"_s;
    const QString translations = u"A.vidlets/l10n/Vidlets_de_DE.ts"_s;
    const QByteArray tip = "<vidlets><vidlet key='a' title='";
    QTest::newRow("nothing") << QString() << QByteArray() << false;
    QTest::newRow("title") << tips << tip + "Brush'/></vidlets>" << true;
    QTest::newRow("text") << tips << tip + "Pen'><p>New</p></vidlet></vidlets>" << true;
    QTest::newRow("text without words")
        << tips << tip + "Pen'><p>1 %(a)s &lt;b></p><p>A_B</p></vidlet></vidlets>" << false;
    QTest::newRow("text of one locale")
        << tips << QByteArray("<vidlets locale='fr'><vidlet key='a' title='Plume'/></vidlets>")
        << false;
    QTest::newRow("words of a scene")
        << scene << QByteArray("Item { a: v.translate('Stop', 'UI') || 'Stop' }") << true;
    QTest::newRow("context of a scene")
        << scene << QByteArray("Item { a: v.translate('Play', 'Other') || 'Play' }") << true;
    QTest::newRow("context of tips")
        << scene << QByteArray("Item { a: v.translate(vidlet.attribute('title'), 'Other') }")
        << true;
    QTest::newRow("context that cannot be told")
        << scene << QByteArray("Item { a: v.translate('Stop', b) }") << false;
    QTest::newRow("scene that translates no tip")
        << scene << QByteArray("Item { a: v.translate('Play', 'UI') }") << false;
    QTest::newRow("text that is gone")
        << translations << source(message("Pen", "Stift", "vanished") + message("Play", "Los"))
        << true;
    QTest::newRow("own language") << translations
                                  << source(message("Play", "Los"))
                                         .replace("sourcelanguage=\"en_GB\"",
                                                  "sourcelanguage=\"de\"")
                                  << false;
}

void TestAuthorTranslations::stale_isWhatLacksTexts()
{
    QFETCH(const QString, replaced);
    QFETCH(const QByteArray, replacement);
    QFETCH(const bool, isStale);
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                              "<vidlets><vidlet key='a' title=' Pen '/></vidlets>");
    m_files->write(u"A.vidlets/ui/VidletUI.qml"_s,
                   "Item { a: v.translate(vidlet.attribute('title'), 'UI') || "
                   "v.translate('Play', 'UI') }");
    const QByteArray whole = source(message("Pen", "Stift") + message("Play", "Los"));
    m_files->write(u"A.vidlets/l10n/Vidlets_de_DE.ts"_s, whole);
    // One for nobody is brought up to date when somebody wants it.
    m_files->write(u"A.vidlets/l10n/Vidlets_vo_001.ts"_s, source(message("Old", "Olde")));
    if (!replaced.isEmpty())
        m_files->write(replaced, replacement);

    QStringList findings = checked(*m_files);
    findings.removeIf([](const QString& finding) { return !finding.startsWith("l10n-stale"_L1); });

    QCOMPARE(findings, isStale ? QStringList{u"l10n-stale Vidlets_de_DE.ts:0"_s} : QStringList());
}

void TestAuthorTranslations::stale_saysWhatIsLacking()
{
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                              "<vidlets l10n_name='lang'>\n<vidlet key='a' title='Pen'><p>Ink</p>"
                              "</vidlet>\n</vidlets>");
    m_files->writeControlFile(u"A.vidlets"_s, u"de.xml"_s,
                              "<vidlets locale='de_AT'><vidlet key='a' title='Stift'/></vidlets>");
    m_files->write(u"A.vidlets/ui/VidletUI.qml"_s,
                   "Item { a: v.translate(vidlet.attribute('title'), 'UI') }");
    // The tips are there in German, which has nothing to be translated then.
    m_files->write(u"A.vidlets/lang/Vidlets_de_DE.ts"_s, source(message("a", "b")));
    m_files->write(u"A.vidlets/lang/Vidlets_fr_FR.ts"_s,
                   source(message("a", "b")).replace("de_DE", "fr_FR"));
    // No tip has its translations there.
    m_files->write(u"A.vidlets/l10n/Vidlets_fr_FR.ts"_s,
                   source(message("a", "b")).replace("de_DE", "fr_FR"));
    AuthorCheck check;
    QString reason;
    QVERIFY(check.add(m_files->dataPath(), reason));

    QList<AuthorFinding> findings = check.run();
    findings.removeIf([](const AuthorFinding& finding) { return finding.rule != "l10n-stale"_L1; });

    QCOMPARE(findings.size(), 1);
    QVERIFY(findings.constFirst().file.endsWith("/lang/Vidlets_fr_FR.ts"_L1));
    QCOMPARE(findings.constFirst().message,
             u"The file lacks 2 texts: \"Pen\" in Control/a.xml:2, and others."_s);
}

void TestAuthorTranslations::stale_goesByContents_data()
{
    QTest::addColumn<QByteArray>("old");

    QTest::newRow("changed") << message("a", "x") + message("c", "d");
    QTest::newRow("lacking") << message("a", "b");
    QTest::newRow("too many") << message("a", "b") + message("c", "d") + message("e", "f");
}

void TestAuthorTranslations::stale_goesByContents()
{
    QFETCH(const QByteArray, old);
    write(u"Vidlets_de_DE.ts"_s, source(message("a", "b") + message("c", "d")));
    write(u"Vidlets_de_DE.qm"_s, compiled(source(old)));

    QCOMPARE(checked(*m_files), QStringList{u"l10n-stale Vidlets_de_DE.qm:0"_s});
}

void TestAuthorTranslations::unfinished_isToldWithLine()
{
    const QByteArray text =
        source(message("a", "b") + message("c", "d", "unfinished") + message("e", ""));
    write(u"Vidlets_de_DE.ts"_s, text);
    write(u"Vidlets_de_DE.qm"_s, compiled(text));

    const QStringList expected{u"l10n-unfinished Vidlets_de_DE.ts:4"_s,
                               u"l10n-unfinished Vidlets_de_DE.ts:5"_s};
    QCOMPARE(checked(*m_files), expected);
}

void TestAuthorTranslations::unfinished_isToldApart_fromUntranslated()
{
    const QByteArray text =
        source(message("c", "d", "unfinished") + message("e", "", "unfinished"));
    write(u"Vidlets_de_DE.ts"_s, text);
    write(u"Vidlets_de_DE.qm"_s, compiled(text));

    const QList<AuthorFinding> findings = checked({m_files->dataPath()});

    QCOMPARE(places(findings, u"l10n-unfinished"_s).size(), 2);
    QCOMPARE(findings.at(0).message, u"The translation of \"c\" is not marked as finished."_s);
    QCOMPARE(findings.at(1).message, u"\"e\" is not translated."_s);
}

void TestAuthorTranslations::broken_isTold_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("line");

    const QByteArray good = source(message("a", "b"));
    const QByteArray binary = compiled(good);
    QTest::newRow("no source") << u"Vidlets_de_DE.ts"_s << QByteArray("<TS>\n<context>") << 2;
    QTest::newRow("other root") << u"Vidlets_de_DE.ts"_s << QByteArray("<a/>") << 1;
    QTest::newRow("no binary") << u"Vidlets_de_DE.qm"_s << QByteArray("words") << 0;
    QTest::newRow("cut off") << u"Vidlets_de_DE.qm"_s << binary.chopped(3) << 0;
    QTest::newRow("asks for others")
        << u"Vidlets_de_DE.qm"_s << binary + QByteArray("\x96\0\0\0\4\0\0\0a", 9) << 0;
    QTest::newRow("language alone") << u"Vidlets_de.qm"_s << binary << 0;
    QTest::newRow("no locale") << u"Vidlets_xx_YY.qm"_s << binary << 0;
}

void TestAuthorTranslations::broken_isTold()
{
    QFETCH(const QString, name);
    QFETCH(const QByteArray, bytes);
    QFETCH(const int, line);
    write(name, bytes);

    QCOMPARE(checked(*m_files), QStringList{u"l10n-broken %1:%2"_s.arg(name).arg(line)});
}

void TestAuthorTranslations::missing_isTold_whenNotCompiled()
{
    write(u"Vidlets_de_DE.ts"_s, source(message("a", "b")));

    QCOMPARE(checked(*m_files), QStringList{u"l10n-missing Vidlets_de_DE.ts:0"_s});
}

void TestAuthorTranslations::missing_advisesToTranslate_whenNothingIs()
{
    const auto adviceFor = [this](const QByteArray& text) {
        write(u"Vidlets_de_DE.ts"_s, source(text));
        return checked({m_files->dataPath()}).constFirst().help;
    };

    QVERIFY(adviceFor(message("a", "")).startsWith("Translate"_L1));
    QVERIFY(adviceFor(message("a", "b", "unfinished")).startsWith("Compile"_L1));
}

void TestAuthorTranslations::missing_goesByLocale()
{
    const QByteArray text = source(message("a", "b"));
    write(u"Vidlets_de_DE.ts"_s, text);
    write(u"Vidlets_de_DE.qm"_s, compiled(text));

    // The texts themselves are in en_GB.
    QCOMPARE(checked(*m_files, {u"de"_s, u"fr_FR"_s, u"en_GB"_s}),
             QStringList{u"l10n-missing A.vidlets:0"_s});
}

void TestAuthorTranslations::missing_isNotTold_whenSearchedPackageHasFile()
{
    m_files->writeControlFile(u"B.vidlets"_s, u"b.xml"_s,
                              "<vidlets search=\"A\"><vidlet key=\"b\"/></vidlets>");
    m_files->write(u"B.vidlets/ui/VidletUI.qml"_s,
                   "import QtQuick\nText { text: vidletView.translate('a', 'b') || 'a' }");
    write(u"Vidlets_de_DE.qm"_s, compiled(source(message("a", "b"))));

    QCOMPARE(checked(*m_files, {u"de_DE"_s}), QStringList());
    const QStringList both{u"l10n-missing A.vidlets:0"_s, u"l10n-missing B.vidlets:0"_s};
    QCOMPARE(checked(*m_files, {u"fr_FR"_s}), both);
}

void TestAuthorTranslations::missing_isNotTold_whenNothingIsTranslated()
{
    QCOMPARE(checked(*m_files, {u"de_DE"_s}), QStringList());
}

void TestAuthorTranslations::otherDirectory_isLookedInto()
{
    m_files->writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets l10n_name=\"words\"/>");
    m_files->write(u"A.vidlets/words/Vidlets_de_DE.ts"_s, source(message("a", "b")));

    QCOMPARE(checked(*m_files), QStringList{u"l10n-missing Vidlets_de_DE.ts:0"_s});
}

void TestAuthorTranslations::strangeFiles_bringCheckToEnd()
{
    QDir(m_files->dataPath()).mkpath(u"A.vidlets/l10n/Vidlets_fr_FR.qm"_s);
    write(u"Vidlets_de_DE.ts"_s,
          QByteArray("<TS><context>").append(QByteArray("<a>").repeated(100'000)));
    write(u"Other.qm"_s, QByteArray());
    write(u"words.txt"_s, "a");

    const QStringList expected{
        u"l10n-broken Other.qm:0"_s,
        u"l10n-broken Vidlets_de_DE.ts:1"_s,
    };
    QCOMPARE(checked(*m_files), expected);
}

void TestAuthorTranslations::lack_isToldOfTenDirectories()
{
    PackageBuilder files;
    QByteArray tips("<vidlets>");
    for (char name = 'a'; name <= 'l'; ++name) {
        tips += QByteArray("<vidlet key='") + name + "' title='Pen' l10n_name='" + name + "'/>\n";
        files.write(u"A.vidlets/%1/Vidlets_de_DE.ts"_s.arg(QLatin1Char(name)),
                    "<!DOCTYPE TS><TS version=\"2.1\" language=\"de_DE\"></TS>");
    }
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, tips + "</vidlets>");
    files.write(u"A.vidlets/ui/VidletUI.qml"_s,
                "import QtQuick\nText { text: vidlet ? vidletView.translate(vidlet.attribute("
                "\"title\"), \"C\") || \"\" : \"\" }\n");

    QStringList found;
    const QList<AuthorFinding> findings = ::checked({files.dataPath()});
    for (const AuthorFinding& finding : findings) {
        if (finding.rule == "l10n-stale"_L1)
            found.append(QFileInfo(finding.file).dir().dirName());
    }

    QCOMPARE(found.join(QString()), u"abcdefghij"_s);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorTranslations>(argc, argv);
}

#include "tst_authortranslations.moc"
