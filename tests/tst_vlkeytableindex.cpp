// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include "TreeText.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLXmlElement.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSignalSpy>

#include <memory>
#include <vector>

#include <VidletsHost/VLKeyTableIndex.h>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 60000;

QByteArray fileOfTip(const QByteArray& key, const QByteArray& text, const QByteArray& rootXml = "")
{
    return "<vidlets " + rootXml + "><vidlet key='" + key + "'>" + text + "</vidlet></vidlets>";
}

/// Packages on disk and an index over them. What the index hands out goes with this object.
class Fixture
{
public:
    explicit Fixture(bool isGuarded = false)
    {
        context.set(ckGuardContent, isGuarded);
        index = std::make_unique<VLKeyTableIndex>(&context, QStringList());
        QObject::connect(
            index.get(), &VLKeyTableIndex::problemFound, index.get(),
            [this](const QString& file, int line, int column) {
                problems.append(
                    u"%1:%2:%3"_s.arg(QFileInfo(file).fileName()).arg(line).arg(column));
            });
        QObject::connect(index.get(), &VLKeyTableIndex::changed, index.get(),
                         [this](const QStringList& keys) { changes.append(keys); });
    }

    /// Writes a control file and indexes it. Returns its path.
    QString add(const QString& fileName, const QByteArray& content)
    {
        const QString file = write(fileName, content);
        index->indexControlFile(file, files.path(u"P.vidlets"_s));
        return file;
    }

    QString write(const QString& fileName, const QByteArray& content)
    {
        return files.writeControlFile(u"P.vidlets"_s, fileName, content);
    }

    VLXmlElement* find(const QString& key, const QLocale& locale = QLocale::c())
    {
        VLXmlElement* root = nullptr;
        VLXmlElement* element = index->retrieve(key, locale, path, depth, root);
        roots.emplace_back(root);
        return element;
    }

    /// The text of the tip; "none" where there is none.
    QString text(const QString& key, const QLocale& locale = QLocale::c())
    {
        const VLXmlElement* element = find(key, locale);
        return element ? element->content() : u"none"_s;
    }

    PackageBuilder files;
    VLContext context;
    std::unique_ptr<VLKeyTableIndex> index;
    QStringList problems;
    QList<QStringList> changes;
    QString path;
    int depth = -1;
    std::vector<std::unique_ptr<VLXmlElement>> roots;
};

} // namespace

class TestVLKeyTableIndex : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void retrieve_leavesArguments_whenNothingIsRecorded();
    void retrieve_givesTipWithItsPlace();
    void retrieve_answersBeforeTableIsBuilt();
    void retrieve_searchesLastIndexedFirst();
    void retrieve_searchesStoredLast();
    void retrieve_matchesLocale();
    void localeChain_goesOnToLanguage_data();
    void localeChain_goesOnToLanguage();
    void retrieve_passesOverFile_whenKeyStandsTwice();
    void retrieve_givesNestedRoot_forEachKey();
    void retrieve_seesEditOfAnsweringFile_data();
    void retrieve_seesEditOfAnsweringFile();
    void retrieve_goesOn_whenAnsweringFileIsGone();
    void retrieve_seesOtherEdits_afterRefresh();
    void retrieve_passesOverBrokenFile_untilItChanges_data();
    void retrieve_passesOverBrokenFile_untilItChanges();
    void retrieve_keepsTipsBeforeFault_unlessGuarded();
    void retrieve_passesOverWhatIsNoFile();
    void retrieve_addsKeyData();
    void retrieve_doesWithoutBrokenKeyData_data();
    void retrieve_doesWithoutBrokenKeyData();
    void keys_listsAllFiles();
    void clear_dropsRows_andKeepsFiles();
    void build_tellsInThreadOfIndex();
    void waitUntilBuilt_needsNoEventLoop();
    void waitUntilBuilt_givesUp_whenTimeIsOver();
    void refresh_tellsOfChangedKeys();
    void refresh_countsForFiles_thatAreBeingRead();
    void refresh_readsNothing_whenNothingChanged();
    void indexControlFile_recordsNothing_outsideOfRoot();
    void destructor_endsBuilding();
    void guard_warnsAsBaseDoes();
    void manager_takesIndex();
};

void TestVLKeyTableIndex::retrieve_leavesArguments_whenNothingIsRecorded()
{
    Fixture fixture;
    VLXmlElement element;
    VLXmlElement* root = &element;
    fixture.path = u"p"_s;
    QVERIFY(!fixture.index->retrieve(u"k"_s, QLocale::c(), fixture.path, fixture.depth, root));
    QCOMPARE(root, &element);
    QCOMPARE(fixture.path, u"p"_s);
    QCOMPARE(fixture.depth, -1);
    QVERIFY(fixture.index->isBuilt());
    QVERIFY(fixture.index->waitUntilBuilt(0));
}

void TestVLKeyTableIndex::retrieve_givesTipWithItsPlace()
{
    Fixture fixture;
    const QString file =
        fixture.add(u"a.xml"_s,
                    "<vidlets search='X'> text <vidlet key='k' VLLocation='no'>t<b/>"
                    "</vidlet></vidlets>");
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    const VLXmlElement* element = fixture.find(u"k"_s);
    QVERIFY(element);
    QCOMPARE(textOfTree(element),
             u"(vidlet||t|VLLocation=%1|VLPackagName=P|key=k(b||))"_s.arg(file));
    const VLXmlElement* root = fixture.roots.back().get();
    QCOMPARE(element->parent(), root);
    QCOMPARE(root->attribute(u"search"_s), u"X"_s);
    QCOMPARE(root->content(), QString());
    QCOMPARE(fixture.depth, 2);
    QCOMPARE(fixture.path, QFileInfo(file).absolutePath());
    QVERIFY(!fixture.find(u"K"_s));
    QVERIFY(!fixture.roots.back());
}

void TestVLKeyTableIndex::retrieve_answersBeforeTableIsBuilt()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s, fileOfTip("a", "1"));
    fixture.add(u"b.xml"_s, fileOfTip("b", "2"));
    QVERIFY(!fixture.index->isBuilt());
    QCOMPARE(fixture.text(u"b"_s), u"2"_s);
    // The other one is behind it in the order, so that nobody asked for it.
    QVERIFY(!fixture.index->isBuilt());
    QCOMPARE(fixture.text(u"a"_s), u"1"_s);
    QVERIFY(fixture.index->isBuilt());
}

void TestVLKeyTableIndex::retrieve_searchesLastIndexedFirst()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s, fileOfTip("k", "1"));
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    fixture.add(u"b.xml"_s, fileOfTip("k", "2"));
    QCOMPARE(fixture.text(u"k"_s), u"2"_s);
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    QCOMPARE(fixture.text(u"k"_s), u"2"_s);
}

void TestVLKeyTableIndex::retrieve_searchesStoredLast()
{
    Fixture fixture;
    const QString stored = fixture.write(u"s.xml"_s, fileOfTip("k", "stored"));
    QVERIFY(fixture.index->store(nullptr, QLocale::c(), stored, 7));
    QVERIFY(fixture.index->store(nullptr, QLocale::c(), stored, 7));
    QVERIFY(fixture.index->store(nullptr, QLocale::c(), stored, 8));
    QCOMPARE(fixture.text(u"k"_s), u"stored"_s);
    QCOMPARE(fixture.depth, 7);
    QCOMPARE(fixture.index->keys().size(), 2);
    fixture.add(u"a.xml"_s, fileOfTip("k", "indexed"));
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    QCOMPARE(fixture.text(u"k"_s), u"indexed"_s);
}

void TestVLKeyTableIndex::retrieve_matchesLocale()
{
    Fixture fixture;
    fixture.add(u"any.xml"_s, fileOfTip("k", "any"));
    fixture.add(u"de.xml"_s, fileOfTip("k", "de", "locale='de'"));
    fixture.add(u"at.xml"_s, fileOfTip("k", "at", "locale='de_AT'"));
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    QCOMPARE(fixture.text(u"k"_s, QLocale(u"de_DE"_s)), u"de"_s);
    QCOMPARE(fixture.text(u"k"_s, QLocale(u"de_AT"_s)), u"at"_s);
    QCOMPARE(fixture.text(u"k"_s, QLocale(u"de_CH"_s)), u"any"_s);
}

void TestVLKeyTableIndex::localeChain_goesOnToLanguage_data()
{
    QTest::addColumn<QStringList>("locales");
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("without");
    QTest::addColumn<QString>("with");

    const QString none = u"none"_s;
    QTest::newRow("exact") << QStringList({u"de_AT"_s, u"de"_s, u"de_CH"_s}) << u"de_AT"_s
                           << u"de_AT"_s << u"de_AT"_s;
    QTest::newRow("language") << QStringList({u"de"_s, u"de_CH"_s}) << u"de_AT"_s << none
                              << u"de"_s;
    QTest::newRow("territory") << QStringList({u"fr"_s, u"de_CH"_s}) << u"de_AT"_s << none
                               << u"de_CH"_s;
    QTest::newRow("territory, in search order")
        << QStringList({u"de_CH"_s, u"de_LI"_s}) << u"de_AT"_s << none << u"de_LI"_s;
    QTest::newRow("other language") << QStringList({u"fr"_s}) << u"de_AT"_s << none << none;
    QTest::newRow("other script") << QStringList({u"zh_Hant_TW"_s}) << u"zh_Hans_CN"_s << none
                                  << none;
    QTest::newRow("same script") << QStringList({u"zh_Hant_TW"_s}) << u"zh_Hant_HK"_s << none
                                 << u"zh_Hant_TW"_s;
    QTest::newRow("without a locale")
        << QStringList({QString(), u"de"_s}) << u"de_AT"_s << QString() << QString();
    QTest::newRow("of no language") << QStringList({u"de"_s}) << u"C"_s << none << none;
}

void TestVLKeyTableIndex::localeChain_goesOnToLanguage()
{
    QFETCH(const QStringList, locales);
    QFETCH(const QString, asked);
    QFETCH(const QString, without);
    QFETCH(const QString, with);
    for (const bool isGuarded : {false, true}) {
        Fixture fixture(isGuarded);
        for (const QString& name : locales) {
            fixture.add(name + u".xml"_s,
                        fileOfTip("k", name.toUtf8(), "locale='" + name.toUtf8() + '\''));
        }
        QVERIFY(!fixture.index->localeChain());
        QCOMPARE(fixture.text(u"k"_s, QLocale(asked)), without);
        fixture.index->setLocaleChain(true);
        QVERIFY(fixture.index->localeChain());
        QCOMPARE(fixture.text(u"k"_s, QLocale(asked)), with);
    }
}

void TestVLKeyTableIndex::retrieve_passesOverFile_whenKeyStandsTwice()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s, fileOfTip("k", "1"));
    fixture.add(u"b.xml"_s, "<vidlets><vidlet key='k'/><vidlet key='k'/><vidlet/></vidlets>");
    QCOMPARE(fixture.text(u"k"_s), u"1"_s);
    QVERIFY(fixture.find(QString()));
}

void TestVLKeyTableIndex::retrieve_givesNestedRoot_forEachKey()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s,
                "<vidlets><vidlet key='o'>1</vidlet><vidlets a='n'>x<vidlet key='k'/><vidlet "
                "key='l'/></vidlets></vidlets>");
    const VLXmlElement* element = fixture.find(u"k"_s);
    QVERIFY(element);
    QCOMPARE(element->getTagName(), u"vidlets"_s);
    QCOMPARE(element->children().size(), 1);
    QVERIFY(fixture.find(u"none"_s));
    QVERIFY(!fixture.find(u"o"_s));
}

void TestVLKeyTableIndex::retrieve_seesEditOfAnsweringFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");

    QTest::newRow("longer") << fileOfTip("k", "longer") << u"longer"_s;
    QTest::newRow("of same size") << fileOfTip("k", "2") << u"2"_s;
    QTest::newRow("key has gone") << fileOfTip("l", "1") << u"other"_s;
    QTest::newRow("locale has come") << fileOfTip("k", "1", "locale='fr'") << u"other"_s;
    QTest::newRow("broken") << QByteArray("<vidlets>") << u"other"_s;
    QTest::newRow("moved in file")
        << QByteArray("<vidlets><!-- c --><vidlet key='k'>x</vidlet></vidlets>") << u"x"_s;
}

void TestVLKeyTableIndex::retrieve_seesEditOfAnsweringFile()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, text);
    Fixture fixture;
    fixture.add(u"other.xml"_s, fileOfTip("k", "other"));
    fixture.add(u"a.xml"_s, fileOfTip("k", "1"));
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    QCOMPARE(fixture.text(u"k"_s), u"1"_s);
    fixture.write(u"a.xml"_s, content);
    QCOMPARE(fixture.text(u"k"_s), text);
    QTRY_COMPARE(fixture.changes.value(0).contains(u"k"_s), true);
}

void TestVLKeyTableIndex::retrieve_goesOn_whenAnsweringFileIsGone()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s, fileOfTip("k", "1"));
    const QString file = fixture.add(u"b.xml"_s, fileOfTip("k", "2"));
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    QVERIFY(QFile::remove(file));
    QCOMPARE(fixture.text(u"k"_s), u"1"_s);
    fixture.write(u"b.xml"_s, fileOfTip("k", "3"));
    fixture.index->refresh();
    QCOMPARE(fixture.text(u"k"_s), u"3"_s);
    QCOMPARE(fixture.problems, QStringList());
}

void TestVLKeyTableIndex::retrieve_seesOtherEdits_afterRefresh()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s, fileOfTip("k", "1"));
    fixture.add(u"b.xml"_s, fileOfTip("l", "2"));
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    fixture.write(u"b.xml"_s, fileOfTip("k", "new one"));
    fixture.index->refresh();
    QVERIFY(!fixture.index->isBuilt());
    QCOMPARE(fixture.text(u"k"_s), u"new one"_s);
}

void TestVLKeyTableIndex::retrieve_passesOverBrokenFile_untilItChanges_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("place");

    QTest::newRow("empty") << QByteArray("") << u"1:0"_s;
    QTest::newRow("behind the root") << fileOfTip("k", "2") + "x" << u"1:47"_s;
    QTest::newRow("in a tip") << "<vidlets><vidlet key='k'/><vidlet>"_ba << u"1:34"_s;
    QTest::newRow("other root") << "<a><vidlet key='k'/></a>"_ba << u"1:3"_s;
}

void TestVLKeyTableIndex::retrieve_passesOverBrokenFile_untilItChanges()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, place);
    Fixture fixture;
    fixture.add(u"a.xml"_s, fileOfTip("k", "1"));
    fixture.add(u"b.xml"_s, fileOfTip("k", "2"));
    fixture.write(u"b.xml"_s, content);
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    QCOMPARE(fixture.problems, QStringList(u"b.xml:"_s + place));
    QCOMPARE(fixture.text(u"k"_s), u"1"_s);
    QCOMPARE(fixture.index->keys(), QStringList(u"k"_s));
    fixture.index->refresh();
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    QCOMPARE(fixture.problems.size(), 1);

    fixture.write(u"b.xml"_s, fileOfTip("k", "mended"));
    fixture.index->refresh();
    QCOMPARE(fixture.text(u"k"_s), u"mended"_s);
    fixture.write(u"b.xml"_s, content);
    QCOMPARE(fixture.text(u"k"_s), u"1"_s);
    QCOMPARE(fixture.problems.size(), 2);
}

void TestVLKeyTableIndex::retrieve_keepsTipsBeforeFault_unlessGuarded()
{
    for (const bool isGuarded : {false, true}) {
        Fixture fixture(isGuarded);
        fixture.add(u"a.xml"_s, "<vidlets><vidlet key='k'>1</vidlet> & </vidlets>");
        QCOMPARE(fixture.text(u"k"_s), isGuarded ? u"none"_s : u"1"_s);
        QCOMPARE(fixture.index->keys(), isGuarded ? QStringList() : QStringList(u"k"_s));
        QCOMPARE(fixture.problems.size(), 1);
    }
}

void TestVLKeyTableIndex::retrieve_passesOverWhatIsNoFile()
{
    Fixture fixture;
    const QString directory = fixture.files.packageRoot(u"D.vidlets"_s);
    fixture.index->store(nullptr, QLocale::c(), directory, 2);
    fixture.index->store(nullptr, QLocale::c(), fixture.files.path(u"none.xml"_s), 2);
#ifdef Q_OS_UNIX
    const QString pipe = directory + u"/pipe.xml"_s;
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), S_IRUSR | S_IWUSR), 0);
    fixture.index->store(nullptr, QLocale::c(), pipe, 2);
    fixture.index->indexControlFile(pipe, directory);
    QCOMPARE(fixture.problems, QStringList(u"pipe.xml:0:0"_s));
#endif
    QVERIFY(!fixture.find(u"k"_s));
    QVERIFY(fixture.problems.contains(u"D.vidlets:0:0"_s));
    QVERIFY(!fixture.problems.contains(u"none.xml:0:0"_s));
}

void TestVLKeyTableIndex::retrieve_addsKeyData()
{
    for (const bool isGuarded : {false, true}) {
        Fixture fixture(isGuarded);
        const QString keyData =
            fixture.files.write(u"keys.xml"_s,
                                "<vidletkeys><key name='k' a='1' VLLocation='x' "
                                "title='new'/><key name='k2' a='2'/></vidletkeys>");
        fixture.context.set(ckKeyDataFile, keyData);
        const QString file = fixture.add(u"a.xml"_s,
                                         "<vidlets><vidlet key='k' title='old'/>"
                                         "<vidlet key='l'/></vidlets>");
        const VLXmlElement* element = fixture.find(u"k"_s);
        QVERIFY(element);
        QCOMPARE(element->attribute(u"a"_s), u"1"_s);
        QCOMPARE(element->attribute(u"title"_s), u"new"_s);
        QCOMPARE(element->attribute(u"VLLocation"_s), file);
        QVERIFY(!element->hasAttribute(u"name"_s));
        QVERIFY(!fixture.find(u"l"_s)->hasAttribute(u"a"_s));
        fixture.files.write(u"keys.xml"_s, "<vidletkeys><key name='k' a='edited'/></vidletkeys>");
        QCOMPARE(fixture.find(u"k"_s)->attribute(u"a"_s), u"edited"_s);
        QCOMPARE(fixture.problems, QStringList());
    }
}

void TestVLKeyTableIndex::retrieve_doesWithoutBrokenKeyData_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("value");

    QTest::newRow("empty") << QByteArray("") << QString();
    QTest::newRow("behind root") << "<vidletkeys><key name='k' a='1'/></vidletkeys>x"_ba
                                 << QString();
    QTest::newRow("within root") << "<vidletkeys><key name='k' a='1'/><x>"_ba << u"1"_s;
    QTest::newRow("other root") << "<x><key name='k' a='1'/></x>"_ba << QString();
    QTest::newRow("record as root") << "<key name='k'><x name='n' a='1'/></key>"_ba << u"1"_s;
    QTest::newRow("nested root")
        << "<vidletkeys><vidletkeys a='1'/><key name='k' a='2'/></vidletkeys"
           "><"_ba
        << QString();
}

void TestVLKeyTableIndex::retrieve_doesWithoutBrokenKeyData()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, value);
    Fixture fixture;
    fixture.context.set(ckKeyDataFile, fixture.files.write(u"keys.xml"_s, content));
    fixture.add(u"a.xml"_s, fileOfTip("k", "1"));
    for (int i = 0; i < 2; ++i) {
        const VLXmlElement* element = fixture.find(u"k"_s);
        QVERIFY(element);
        QCOMPARE(element->attribute(u"a"_s), value);
        QCOMPARE(fixture.problems.size(), 1);
    }
}

void TestVLKeyTableIndex::keys_listsAllFiles()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s, "<vidlets><vidlet key='b'/><vidlet/><vidlet key='a'/></vidlets>");
    fixture.add(u"b.xml"_s, "<vidlets locale='de'><vidlet key='a'/><vidlet key='a'/></vidlets>");
    QCOMPARE(fixture.index->keys(), QStringList({u"a"_s, u"a"_s, u"b"_s, u"a"_s}));
    QVERIFY(fixture.index->isBuilt());
}

void TestVLKeyTableIndex::clear_dropsRows_andKeepsFiles()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s, fileOfTip("k", "1"));
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    QVERIFY(fixture.index->clear());
    QVERIFY(!fixture.index->isBuilt());
    QCOMPARE(fixture.text(u"k"_s), u"1"_s);
    QVERIFY(fixture.index->remove());
    QVERIFY(!fixture.index->isBuilt());
    QVERIFY(fixture.index->setup());
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    QCOMPARE(fixture.text(u"k"_s), u"1"_s);
}

void TestVLKeyTableIndex::build_tellsInThreadOfIndex()
{
    Fixture fixture;
    QList<QPair<int, int>> progress;
    bool isOtherThread = false;
    int built = 0;
    // Direct connections: they run where the signal is emitted.
    QObject::connect(fixture.index.get(), &VLKeyTableIndex::progressChanged,
                     [&progress, &isOtherThread](int done, int total) {
                         isOtherThread =
                             isOtherThread || QThread::currentThread() != qApp->thread();
                         progress.append({done, total});
                     });
    QObject::connect(fixture.index.get(), &VLKeyTableIndex::built, [&built] { ++built; });
    constexpr int kFiles = 150;
    for (int i = 0; i < kFiles; ++i)
        fixture.add(u"%1.xml"_s.arg(i), fileOfTip("k" + QByteArray::number(i), "t"));
    QCOMPARE(progress.size(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(built, 1, kPatienceMs);
    QVERIFY(fixture.index->isBuilt());
    QVERIFY(!isOtherThread);
    QCOMPARE(progress.constLast(), qMakePair(kFiles, kFiles));
    for (qsizetype i = 1; i < progress.size(); ++i)
        QVERIFY(progress.at(i).first > progress.at(i - 1).first);
    for (int i = 0; i < kFiles; ++i)
        QCOMPARE(fixture.text(u"k%1"_s.arg(i)), u"t"_s);
    QCOMPARE(built, 1);
}

void TestVLKeyTableIndex::waitUntilBuilt_needsNoEventLoop()
{
    Fixture fixture;
    QSignalSpy built(fixture.index.get(), &VLKeyTableIndex::built);
    constexpr int kFiles = 150;
    for (int i = 0; i < kFiles; ++i)
        fixture.add(u"%1.xml"_s.arg(i), fileOfTip("k" + QByteArray::number(i), "t"));
    QVERIFY(fixture.index->waitUntilBuilt());
    QVERIFY(fixture.index->isBuilt());
    QCOMPARE(built.count(), 1);
}

void TestVLKeyTableIndex::waitUntilBuilt_givesUp_whenTimeIsOver()
{
    Fixture fixture;
    QByteArray content = "<vidlets>";
    constexpr int kTips = 50'000;
    for (int i = 0; i < kTips; ++i)
        content += "<vidlet key='k" + QByteArray::number(i) + "'>some text</vidlet>\n";
    fixture.add(u"big.xml"_s, content + "</vidlets>");
    QVERIFY(!fixture.index->waitUntilBuilt(0));
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    QCOMPARE(fixture.text(u"k49999"_s), u"some text"_s);
}

void TestVLKeyTableIndex::refresh_tellsOfChangedKeys()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s,
                "<vidlets><vidlet key='same'/><vidlet key='gone'/><vidlet key='other'>1</vidlet>"
                "<vidlet key='twice'/></vidlets>");
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    fixture.write(u"a.xml"_s,
                  "<vidlets><vidlet key='new'/><vidlet key='other'>2</vidlet><vidlet key='same'/>"
                  "<vidlet key='twice'/><vidlet key='twice'/></vidlets>");
    fixture.index->refresh();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.changes.size(), 1, kPatienceMs);
    QCOMPARE(fixture.changes.constFirst(),
             QStringList({u"gone"_s, u"new"_s, u"other"_s, u"twice"_s}));
    // The start tag of the root is part of each tip's surroundings.
    fixture.write(u"a.xml"_s, "<vidlets a=''><vidlet key='same'/></vidlets>");
    fixture.index->refresh();
    QTRY_COMPARE_WITH_TIMEOUT(fixture.changes.size(), 2, kPatienceMs);
    QCOMPARE(fixture.changes.constLast(),
             QStringList({u"new"_s, u"other"_s, u"same"_s, u"twice"_s}));
}

void TestVLKeyTableIndex::refresh_countsForFiles_thatAreBeingRead()
{
    Fixture fixture;
    fixture.index->setWatching(false);
    // The thread is before, in and behind its reading in turn.
    for (int i = 0; i < 30; ++i) {
        const QString name = u"f%1.xml"_s.arg(i);
        const QString key = u"k%1"_s.arg(i);
        fixture.add(name, fileOfTip(key.toUtf8(), "1"));
        QCoreApplication::processEvents();
        QThread::usleep(ulong(i) * 200);
        fixture.write(name, fileOfTip("new", QByteArray::number(i) + " instead"));
        fixture.index->refresh();
        QCOMPARE(fixture.text(u"new"_s), u"%1 instead"_s.arg(i));
    }
}

void TestVLKeyTableIndex::refresh_readsNothing_whenNothingChanged()
{
    Fixture fixture;
    const QString path = fixture.add(u"a.xml"_s, fileOfTip("k", "1"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    fixture.index->refresh();
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    // As long as another edit could have the same time, the file is not trusted.
    QTRY_VERIFY_WITH_TIMEOUT((fixture.index->waitUntilBuilt(kPatienceMs), fixture.index->refresh(),
                              fixture.index->isBuilt()),
                             kPatienceMs);
}

void TestVLKeyTableIndex::indexControlFile_recordsNothing_outsideOfRoot()
{
    Fixture fixture;
    const QString file =
        fixture.files.writeControlFile(u"Package.vidlets"_s, u"a.xml"_s, fileOfTip("k", "1"));
    const QString root = fixture.files.path(u"Pack"_s);
    QVERIFY(QDir().mkpath(root));
    fixture.index->indexControlFile(file, root);
    QVERIFY(!fixture.find(u"k"_s));
    QCOMPARE(fixture.problems, QStringList(u"a.xml:0:0"_s));
    fixture.index->indexControlFile(file, u"/other"_s);
    fixture.index->indexControlFile(fixture.files.path(u"Package.vidlets/Control/none.xml"_s),
                                    fixture.files.path(u"Package.vidlets"_s));
    QCOMPARE(fixture.problems.size(), 1);
    QVERIFY(fixture.index->isBuilt());
}

void TestVLKeyTableIndex::destructor_endsBuilding()
{
    Fixture fixture;
    QByteArray content = "<vidlets>";
    constexpr int kTips = 50'000;
    for (int i = 0; i < kTips; ++i)
        content += "<vidlet key='k'>some text</vidlet>\n";
    for (int i = 0; i < 10; ++i)
        fixture.add(u"%1.xml"_s.arg(i), content + "</vidlets>");
    QVERIFY(!fixture.index->waitUntilBuilt(1));
    fixture.index.reset();
}

void TestVLKeyTableIndex::guard_warnsAsBaseDoes()
{
    QStringList warnings[2];
    for (const bool isTable : {false, true}) {
        PackageBuilder files;
        files.writeControlFile(u"P.vidlets"_s, u"broken.xml"_s, "<vidlets>\n<vidlet & </vidlets>");
        files.writeControlFile(u"P.vidlets"_s, u"twice.xml"_s,
                               "<vidlets><vidlet key='t'/>\n<vidlet key='t'/></vidlets>");
        files.writeControlFile(u"P.vidlets"_s, u"search.xml"_s,
                               "<vidlets search='None'><vidlet key='s'/></vidlets>");
        VLContext context;
        context.set(ckGuardContent, true);
        context.set(ckMessageLevel, VLMessageWarning);
        std::unique_ptr<VLIndex> index;
        if (isTable)
            index = std::make_unique<VLKeyTableIndex>(&context, QStringList());
        else
            index = std::make_unique<VLIndex>(&context, QStringList());
        RecordingInterface host(context, {files.dataPath()}, index.get());
        for (int i = 0; i < 2; ++i) {
            for (const QString& key : {u"t"_s, u"s"_s, u"none"_s}) {
                QString path;
                int depth = 0;
                VLXmlElement* root = nullptr;
                index->retrieve(key, QLocale::c(), path, depth, root);
                delete root;
            }
        }
        QStringList& list = warnings[isTable ? 1 : 0];
        list = host.messages(VLMessageWarning);
        list.replaceInStrings(files.dataPath(), QString());
        list.sort();
    }
    QCOMPARE(warnings[0].size(), 3);
    QCOMPARE(warnings[1], warnings[0]);
}

void TestVLKeyTableIndex::manager_takesIndex()
{
    PackageBuilder files;
    files.writeTip(u"P.vidlets"_s, u"a.xml"_s, u"k"_s, "text");
    VLContext context;
    VLKeyTableIndex index(&context, {files.dataPath()});
    RecordingInterface host(context, {files.dataPath()}, &index);
    QCOMPARE(host.keys(), QStringList(u"k"_s));
    QVERIFY(index.isBuilt());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLKeyTableIndex>(argc, argv);
}

#include "tst_vlkeytableindex.moc"
