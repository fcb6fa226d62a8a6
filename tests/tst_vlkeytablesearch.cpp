// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndexHooks.h>
#include <Vidlets/VLXmlElement.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>

#include <VidletsHost/VLKeyTableIndex.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 30000;

/// Packages on disk and an index over them.
class Fixture
{
public:
    explicit Fixture(bool isGuarded = false, const QString& cacheFile = QString())
    {
        context.set(ckGuardContent, isGuarded);
        index = std::make_unique<VLKeyTableIndex>(&context, QStringList());
        index->setCacheFile(cacheFile);
    }

    QString write(const QString& fileName, const QString& tips, const QString& locale = QString())
    {
        const QString attribute = locale.isEmpty() ? QString() : u" locale='%1'"_s.arg(locale);
        return files.writeControlFile(
            u"P.vidlets"_s, fileName,
            (u"<vidlets%1>"_s.arg(attribute) + tips + u"</vidlets>"_s).toUtf8());
    }

    QString add(const QString& fileName, const QString& tips, const QString& locale = QString())
    {
        const QString file = write(fileName, tips, locale);
        index->indexControlFile(file, files.path(u"P.vidlets"_s));
        return file;
    }

    QStringList keys(const QString& words, const QLocale& locale = QLocale::c(), int limit = 20)
    {
        QStringList keys;
        const QList<VLSearchHit> hits = index->search(words, locale, limit);
        for (const VLSearchHit& hit : hits)
            keys += hit.key;
        return keys;
    }

    PackageBuilder files;
    VLContext context;
    std::unique_ptr<VLKeyTableIndex> index;
};

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

/// Words and what they are when they are compared.
struct Word
{
    QString written;
    QString plain;
};

const QList<Word>& vocabulary()
{
    static const QList<Word> words{
        {u"pen"_s, u"pen"_s},      {u"Pencil"_s, u"pencil"_s}, {u"PENS"_s, u"pens"_s},
        {u"Größe"_s, u"grosse"_s}, {u"groß"_s, u"gross"_s},    {u"œuvre"_s, u"oeuvre"_s},
        {u"tool"_s, u"tool"_s},    {u"tools"_s, u"tools"_s},   {u"to"_s, u"to"_s},
        {u"t"_s, u"t"_s},          {u"שָׁלוֹם"_s, u"שלום"_s},     {u"كِتَاب"_s, u"كتاب"_s},
        {u"near"_s, u"near"_s},    {u"NOT"_s, u"not"_s},       {u"7"_s, u"7"_s},
        {u"size"_s, u"size"_s},    {u"colour"_s, u"colour"_s}, {u"col"_s, u"col"_s},
    };
    return words;
}

/// A tip as a naive search knows it.
struct PlainTip
{
    QStringList title;
    QStringList name;
    QStringList text;
};

QStringList plainWords(const QString& text)
{
    QStringList words;
    static const QRegularExpression blank(u"[ .,_+]+"_s);
    const QStringList written = text.split(blank, Qt::SkipEmptyParts);
    for (const QString& word : written) {
        const auto isSame = [&word](const Word& other) { return other.written == word; };
        const auto known = std::find_if(vocabulary().cbegin(), vocabulary().cend(), isSame);
        words += known == vocabulary().cend() ? word.toLower() : known->plain;
    }
    return words;
}

bool has(const QStringList& words, const QString& word, bool isPrefix)
{
    return std::any_of(words.cbegin(), words.cend(), [&](const QString& other) {
        return isPrefix ? other.startsWith(word) : other == word;
    });
}

/// The number of the place that the tip has the words at; 4 where it lacks one.
int naivePlace(const PlainTip& tip, const QStringList& words)
{
    bool isAllInTitle = true;
    bool isSomeInTitle = false;
    bool isSomeInName = false;
    for (qsizetype i = 0; i < words.size(); ++i) {
        const bool isPrefix = i + 1 == words.size();
        const bool isInTitle = has(tip.title, words.at(i), isPrefix);
        const bool isInName = has(tip.name, words.at(i), isPrefix);
        if (!isInTitle && !isInName && !has(tip.text, words.at(i), isPrefix))
            return 4;
        isAllInTitle = isAllInTitle && isInTitle;
        isSomeInTitle = isSomeInTitle || isInTitle;
        isSomeInName = isSomeInName || isInName;
    }
    if (isAllInTitle)
        return 0;
    if (isSomeInTitle)
        return 1;
    return isSomeInName ? 2 : 3;
}

PlainTip plainTip(const QString& key, const VLXmlElement& tip)
{
    PlainTip plain;
    plain.title = plainWords(tip.attribute(u"title"_s));
    plain.name = plainWords(tip.attribute(u"shortcut"_s)) + plainWords(key);
    plain.text = plainWords(tip.attribute(u"summary"_s)) + plainWords(tip.content());
    const QList<QObject*> descendants = tip.childElementList(QString());
    for (const QObject* descendant : descendants)
        plain.text += plainWords(static_cast<const VLXmlElement*>(descendant)->content());
    return plain;
}

/// Makes control files at random.
class Author
{
public:
    explicit Author(quint32 seed)
        : m_random(seed)
    {
    }

    QString words(int max)
    {
        QStringList list;
        for (int i = m_random.bounded(max + 1); i > 0; --i)
            list += vocabulary().at(m_random.bounded(int(vocabulary().size()))).written;
        return list.join(u' ');
    }

    QString key()
    {
        return u"%1.%2"_s.arg(QStringList({u"pen"_s, u"tool"_s, u"x"_s}).at(m_random.bounded(3)))
            .arg(m_random.bounded(8));
    }

    QString tip()
    {
        QString xml = u"<vidlet key='%1'"_s.arg(key());
        if (m_random.bounded(3) > 0)
            xml += u" title='%1'"_s.arg(words(2));
        if (m_random.bounded(4) == 0)
            xml += u" shortcut='%1'"_s.arg(words(1));
        if (m_random.bounded(4) == 0)
            xml += u" summary='%1'"_s.arg(words(2));
        xml += u'>' + words(3);
        if (m_random.bounded(3) == 0)
            xml += u" <p>%1<i>%2</i> %3</p> %4"_s.arg(words(1), words(1), words(1), words(1));
        if (m_random.bounded(4) == 0)
            xml += u" <![CDATA[%1]]>"_s.arg(words(1));
        return xml + u"</vidlet>"_s;
    }

    QString file()
    {
        QString xml;
        for (int i = m_random.bounded(6); i >= 0; --i)
            xml += tip() + u'\n';
        if (m_random.bounded(10) == 0)
            xml += u"<vidlets>%1</vidlets>"_s.arg(tip());
        if (m_random.bounded(8) == 0)
            xml.truncate(m_random.bounded(int(xml.size())));
        return xml;
    }

    QString locale()
    {
        return QStringList({QString(), u"de_DE"_s, u"de"_s, u"de_AT"_s, u"en_US"_s})
            .at(m_random.bounded(5));
    }

    QString input()
    {
        QStringList list;
        for (int i = m_random.bounded(3); i >= 0; --i)
            list += vocabulary().at(m_random.bounded(int(vocabulary().size()))).plain;
        QString& last = list.last();
        last.truncate(1 + m_random.bounded(int(last.size())));
        return list.join(u' ');
    }

    int bounded(int end)
    {
        return m_random.bounded(end);
    }

private:
    QRandomGenerator m_random;
};

/// Compares what a search gives with a look at each tip. Returns what differs.
QString compare(Fixture& fixture, const QString& input, const QLocale& locale)
{
    const QStringList words = input.split(u' ');
    QHash<QString, int> places;
    QSet<QString> keys;
    for (const QString& first : {u"pen"_s, u"tool"_s, u"x"_s}) {
        for (int i = 0; i < 8; ++i)
            keys.insert(u"%1.%2"_s.arg(first).arg(i));
    }
    for (const QString& key : std::as_const(keys)) {
        QString path;
        int depth = 0;
        VLXmlElement* root = nullptr;
        const VLXmlElement* tip = fixture.index->retrieve(key, locale, path, depth, root);
        const std::unique_ptr<VLXmlElement> owner(root);
        if (!tip || tip->getTagName() != "vidlet"_L1)
            continue;
        const int place = naivePlace(plainTip(key, *tip), words);
        if (place < 4)
            places.insert(key, place);
    }
    int last = 0;
    QString difference;
    const QStringList found = fixture.keys(input, locale, 1000);
    for (const QString& key : found) {
        const int place = places.contains(key) ? places.take(key) : -1;
        if (place < last)
            difference += u" [%1 at %2]"_s.arg(key).arg(place);
        last = qMax(last, place);
    }
    for (auto it = places.cbegin(); it != places.cend(); ++it)
        difference += u" [%1 not found at %2]"_s.arg(it.key()).arg(it.value());
    return difference.isEmpty() ? difference
                                : input + u" in "_s + locale.name() + u':' + difference;
}

} // namespace

class TestVLKeyTableSearch : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void search_givesHits();
    void search_isSorted();
    void search_isSorted_rightAfterAnEdit();
    void search_readsFewFiles_atOnce();
    void search_isOfLocale();
    void search_goesAlongLocaleChain();
    void search_passesOverHiddenTips();
    void search_passesOverBrokenFiles();
    void search_seesEdits_data();
    void search_seesEdits();
    void search_isLimited();
    void search_takesAnyInput();
    void search_findsTheSame_asALookAtEachTip_data();
    void search_findsTheSame_asALookAtEachTip();
    void searchBuilt_isToldAfterBuilt();
    void searchBuilt_comes_whenFileHasChangedUnseen();
    void keys_leavesWordsAlone();
    void hit_hasTitleOfKeyData();
    void damagedFileOfWords_isToldOf_andMadeAnew();
    void store_isTakenOver_atNextStart();
    void store_isDoneWithout_whereItCannotBe();
    void store_isMadeAnew_whenDamaged();
    void store_isSharedByTwo();
    void destructor_endsReading();
};

void TestVLKeyTableSearch::search_givesHits()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s,
                u"<vidlet key='tool.pen' title=' The &lt;b&gt;Füller&lt;/b&gt;  &amp; more' "
                "shortcut='Ctrl+7'>It &lt;i>draws&lt;/i> <p>on %(paper)s &amp;lt;</p></vidlet>"_s);
    for (const bool isBuilt : {false, true}) {
        if (isBuilt)
            QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
        const QList<VLSearchHit> hits = fixture.index->search(u"draw"_s, QLocale::c());
        QCOMPARE(hits.size(), 1);
        QCOMPARE(hits.first().key, u"tool.pen"_s);
        QCOMPARE(hits.first().title, u"The Füller & more"_s);
        QCOMPARE(hits.first().snippet, u"It <b>draws</b>. on %(paper)s &lt;"_s);
        QCOMPARE(hits.first().package, u"P"_s);
        QCOMPARE(fixture.index->search(u"fuller"_s, QLocale::c()).first().snippet,
                 u"The <b>Füller</b> &amp; more"_s);
        // Neither markup nor the name of a variable is a word.
        QVERIFY(fixture.keys(u"i"_s) == QStringList(u"tool.pen"_s));
        QVERIFY(fixture.keys(u"i draws"_s).isEmpty());
        QVERIFY(fixture.keys(u"paper"_s).isEmpty());
        QVERIFY(fixture.keys(u"lt"_s).isEmpty());
    }
}

void TestVLKeyTableSearch::search_isSorted()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s,
                u"<vidlet key='a'>The pen</vidlet><vidlet key='pen'>x</vidlet>"
                "<vidlet key='c' title='A pen'/><vidlet key='d' shortcut='Pen'/>"
                "<vidlet key='e' title='the thing'>pen</vidlet>"_s);
    for (const bool isBuilt : {false, true}) {
        if (isBuilt)
            QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
        const QStringList keys = fixture.keys(u"pen"_s);
        QCOMPARE(keys.first(), u"c"_s);
        QCOMPARE(sorted(keys.sliced(1, 2)), QStringList({u"d"_s, u"pen"_s}));
        QCOMPARE(sorted(keys.sliced(3)), QStringList({u"a"_s, u"e"_s}));
        QCOMPARE(fixture.keys(u"pen the"_s), QStringList({u"e"_s, u"a"_s}));
    }
}

void TestVLKeyTableSearch::search_isSorted_rightAfterAnEdit()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s, u"<vidlet key='a' title='Pen'/>"_s);
    fixture.add(u"b.xml"_s, u"<vidlet key='b' shortcut='Pen'/>"_s);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    QCOMPARE(fixture.keys(u"pen"_s), QStringList({u"a"_s, u"b"_s}));
    fixture.write(u"a.xml"_s, u"<vidlet key='a'>The pen</vidlet>"_s);
    fixture.index->refresh();
    // The store still has it in the title.
    QCOMPARE(fixture.keys(u"pen"_s), QStringList({u"b"_s, u"a"_s}));
}

void TestVLKeyTableSearch::search_readsFewFiles_atOnce()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s, u"<vidlet key='a'>pen</vidlet>"_s);
    QVERIFY(!fixture.index->isSearchBuilt());
    QCOMPARE(fixture.keys(u"pen"_s), QStringList(u"a"_s));
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    fixture.add(u"b.xml"_s, u"<vidlet key='b'>pen</vidlet>"_s);
    QCOMPARE(sorted(fixture.keys(u"pen"_s)), QStringList({u"a"_s, u"b"_s}));
}

void TestVLKeyTableSearch::search_isOfLocale()
{
    Fixture fixture;
    fixture.add(u"none.xml"_s, u"<vidlet key='none'>pen</vidlet>"_s);
    fixture.add(u"de.xml"_s, u"<vidlet key='de'>pen</vidlet>"_s, u"de_DE"_s);
    fixture.add(u"fr.xml"_s, u"<vidlet key='fr'>pen</vidlet>"_s, u"fr_FR"_s);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    QCOMPARE(sorted(fixture.keys(u"pen"_s, QLocale(u"de_DE"_s))),
             QStringList({u"de"_s, u"none"_s}));
    QCOMPARE(sorted(fixture.keys(u"pen"_s, QLocale(u"it_IT"_s))), QStringList(u"none"_s));
}

void TestVLKeyTableSearch::search_goesAlongLocaleChain()
{
    Fixture fixture;
    fixture.add(u"ch.xml"_s, u"<vidlet key='a'>pen ch</vidlet><vidlet key='b'>pen</vidlet>"_s,
                u"de_CH"_s);
    fixture.add(u"at.xml"_s, u"<vidlet key='a'>pen at</vidlet>"_s, u"de_AT"_s);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    QCOMPARE(sorted(fixture.keys(u"pen"_s, QLocale(u"de_AT"_s))), QStringList(u"a"_s));
    fixture.index->setLocaleChain(true);
    QCOMPARE(sorted(fixture.keys(u"pen"_s, QLocale(u"de_AT"_s))), QStringList({u"a"_s, u"b"_s}));
    // Lookups give the tip of de_AT.
    QVERIFY(fixture.keys(u"ch"_s, QLocale(u"de_AT"_s)).isEmpty());
    QCOMPARE(fixture.keys(u"at"_s, QLocale(u"de_AT"_s)), QStringList(u"a"_s));
}

void TestVLKeyTableSearch::search_passesOverHiddenTips()
{
    Fixture fixture;
    fixture.add(u"below.xml"_s,
                u"<vidlet key='a'>pencil</vidlet><vidlet key='b'>pencil</vidlet>"_s);
    fixture.add(u"above.xml"_s, u"<vidlet key='a'>pen</vidlet>"_s);
    fixture.add(u"twice.xml"_s,
                u"<vidlet key='c'>pencil</vidlet><vidlet key='c'>pencil</vidlet>"_s);
    fixture.add(u"nested.xml"_s,
                u"<vidlet key='d'>pencil</vidlet>"
                "<vidlets><vidlet key='e'>pencil</vidlet></vidlets>"_s,
                u"fr_FR"_s);
    for (const bool isBuilt : {false, true}) {
        if (isBuilt)
            QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
        QCOMPARE(fixture.keys(u"pencil"_s), QStringList(u"b"_s));
        QVERIFY(fixture.keys(u"pencil"_s, QLocale(u"fr_FR"_s)).isEmpty());
    }
}

void TestVLKeyTableSearch::search_passesOverBrokenFiles()
{
    for (const bool isGuarded : {false, true}) {
        Fixture fixture(isGuarded);
        fixture.add(u"a.xml"_s, u"<vidlet key='a'>pen</vidlet>"_s);
        fixture.add(u"broken.xml"_s, u"<vidlet key='b'>pen</vidlet><vidlet key='c'>pen"_s);
        fixture.add(u"survived.xml"_s, u"<vidlet key='d'>pen</vidlet> & "_s);
        for (const bool isBuilt : {false, true}) {
            if (isBuilt)
                QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
            const QStringList keys =
                isGuarded ? QStringList(u"a"_s) : QStringList({u"a"_s, u"d"_s});
            QCOMPARE(sorted(fixture.keys(u"pen"_s)), keys);
        }
    }
}

void TestVLKeyTableSearch::search_seesEdits_data()
{
    QTest::addColumn<bool>("isWaitedFor");
    QTest::newRow("at once") << false;
    QTest::newRow("in the store") << true;
}

void TestVLKeyTableSearch::search_seesEdits()
{
    QFETCH(const bool, isWaitedFor);
    Fixture fixture;
    const auto settle = [&] {
        fixture.index->refresh();
        return !isWaitedFor || fixture.index->waitUntilSearchBuilt(kPatienceMs);
    };
    fixture.add(u"a.xml"_s, u"<vidlet key='a'>pen</vidlet><vidlet key='b'>brush</vidlet>"_s);
    const QString file = fixture.add(u"c.xml"_s, u"<vidlet key='c'>pen</vidlet>"_s);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    fixture.write(u"a.xml"_s,
                  u"<vidlet key='a'>brush is new</vidlet><vidlet key='d'>pen</vidlet>"_s);
    // The file that answers is looked at in any case.
    QCOMPARE(fixture.keys(u"pen"_s).contains(u"a"_s), false);
    QVERIFY(settle());
    QCOMPARE(sorted(fixture.keys(u"pen"_s)), QStringList({u"c"_s, u"d"_s}));
    QCOMPARE(fixture.keys(u"brush new"_s), QStringList(u"a"_s));
    QCOMPARE(fixture.keys(u"brush"_s), QStringList(u"a"_s));
    QVERIFY(QFile::remove(file));
    QVERIFY(settle());
    QCOMPARE(sorted(fixture.keys(u"pen"_s)), QStringList(u"d"_s));
    fixture.write(u"a.xml"_s, u"<vidlet key='a'>brush"_s);
    QVERIFY(settle());
    QVERIFY(fixture.keys(u"pen"_s).isEmpty());
    QVERIFY(fixture.keys(u"brush"_s).isEmpty());
    fixture.write(u"a.xml"_s, u"<vidlet key='a'>brush</vidlet>"_s, u"de_DE"_s);
    QVERIFY(settle());
    QVERIFY(fixture.keys(u"brush"_s).isEmpty());
    QCOMPARE(fixture.keys(u"brush"_s, QLocale(u"de_DE"_s)), QStringList(u"a"_s));
}

void TestVLKeyTableSearch::search_isLimited()
{
    Fixture fixture;
    QString tips;
    for (int i = 0; i < 100; ++i)
        tips += u"<vidlet key='k%1'>pen</vidlet>"_s.arg(i);
    fixture.add(u"a.xml"_s, tips);
    for (const bool isBuilt : {false, true}) {
        if (isBuilt)
            QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
        QCOMPARE(fixture.keys(u"pen"_s).size(), 20);
        QCOMPARE(fixture.keys(u"pen"_s, QLocale::c(), 3).size(), 3);
        QCOMPARE(fixture.keys(u"pen"_s, QLocale::c(), 1000).size(), 100);
        QVERIFY(fixture.keys(u"pen"_s, QLocale::c(), 0).isEmpty());
        QVERIFY(fixture.keys(u"pen"_s, QLocale::c(), -1).isEmpty());
    }
}

void TestVLKeyTableSearch::search_takesAnyInput()
{
    Fixture fixture;
    fixture.add(u"a.xml"_s,
                u"<vidlet key='a' title='Pen'>near or not and</vidlet>"
                "<vidlet key='b'>list title words rowid rank</vidlet>"_s);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    QCOMPARE(fixture.keys(u"NEAR OR NOT"_s), QStringList(u"a"_s));
    QCOMPARE(fixture.keys(u"\"pen\" *"_s), QStringList(u"a"_s));
    QCOMPARE(fixture.keys(u"^pen -near : or*"_s), QStringList(u"a"_s));
    QCOMPARE(fixture.keys(u"{list}:title"_s), QStringList(u"b"_s));
    QCOMPARE(fixture.keys(u"'; DROP TABLE words; --"_s), QStringList());
    QCOMPARE(fixture.keys(u"words"_s), QStringList(u"b"_s));
    QCOMPARE(fixture.keys(u"pen"_s + QChar(0) + u"near"_s), QStringList(u"a"_s));
    QCOMPARE(fixture.keys(QChar(0xD800) + u"pen"_s + QChar(0xDC00)), QStringList(u"a"_s));
    for (const QString& input : {QString(), u" "_s, u"\"*^:-(){}'"_s, QString(QChar(0)), u"%_"_s,
                                 u"NEAR(pencil"_s, QString(300, u' ') + u"pen"_s})
        QCOMPARE(fixture.keys(input), QStringList());

    // Anything at all comes to an end, and gives what has its words.
    QRandomGenerator random(7);
    const QString characters = u"pen\"'*^:-+(){}[]ANDORNEAR% ;,.\t\n\\ß\u0301\u0640"_s + QChar(0)
        + QChar(0xD83D) + QChar(0xDE00) + QChar(0xFFFF) + u"画笔كi̇"_s;
    for (int i = 0; i < 3000; ++i) {
        QString input;
        for (int j = random.bounded(i % 50 == 0 ? 600 : 12); j > 0; --j)
            input += characters.at(random.bounded(characters.size()));
        QVERIFY(fixture.keys(input).size() <= 2);
    }
    QCOMPARE(fixture.keys(u"pen"_s), QStringList(u"a"_s));
}

void TestVLKeyTableSearch::search_findsTheSame_asALookAtEachTip_data()
{
    QTest::addColumn<bool>("isGuarded");
    QTest::addColumn<bool>("hasFile");
    QTest::newRow("in memory") << false << false;
    QTest::newRow("on disk, guarded") << true << true;
}

void TestVLKeyTableSearch::search_findsTheSame_asALookAtEachTip()
{
    QFETCH(const bool, isGuarded);
    QFETCH(const bool, hasFile);
    const quint32 seed = qEnvironmentVariableIsSet("VIDLETS_SEARCH_SEED")
        ? quint32(qEnvironmentVariableIntValue("VIDLETS_SEARCH_SEED"))
        : QRandomGenerator::global()->generate();
    const int wanted = qEnvironmentVariableIntValue("VIDLETS_SEARCH_PACKAGES");
    const int packages = wanted > 0 ? wanted : 12;
    qInfo("VIDLETS_SEARCH_SEED=%u", seed);
    // A guarded host warns of each broken file.
    if (isGuarded)
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const auto restore = qScopeGuard([] { qInstallMessageHandler(nullptr); });
    Author author(seed);
    QString difference;
    int found = 0;
    for (int package = 0; package < packages && difference.isEmpty(); ++package) {
        const QTemporaryDir directory;
        Fixture fixture(isGuarded, hasFile ? directory.filePath(u"keys"_s) : QString());
        fixture.index->setLocaleChain(author.bounded(2) == 1);
        const int count = 2 + author.bounded(6);
        for (int i = 0; i < count; ++i)
            fixture.add(u"f%1.xml"_s.arg(i), author.file(), author.locale());
        for (int step = 0; step < 4 && difference.isEmpty(); ++step) {
            if (step % 2 == 1)
                difference =
                    fixture.index->waitUntilSearchBuilt(kPatienceMs) ? QString() : u"late"_s;
            for (int i = 0; i < 10 && difference.isEmpty(); ++i) {
                const QString input = author.input();
                const QLocale locale(author.locale());
                difference = compare(fixture, input, locale);
                found += fixture.keys(input, locale).isEmpty() ? 0 : 1;
            }
            fixture.write(u"f%1.xml"_s.arg(author.bounded(count)), author.file(), author.locale());
            fixture.index->refresh();
        }
    }
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    // What finds nothing on either side proves nothing.
    QVERIFY2(found > packages * 3, qPrintable(QString::number(found)));
}

void TestVLKeyTableSearch::searchBuilt_isToldAfterBuilt()
{
    Fixture fixture;
    QStringList told;
    connect(fixture.index.get(), &VLKeyTableIndex::built, this, [&told] { told += u"built"_s; });
    connect(fixture.index.get(), &VLKeyTableIndex::searchBuilt, this, [&] {
        told += u"search"_s;
        QVERIFY(fixture.index->isSearchBuilt());
    });
    fixture.add(u"a.xml"_s, u"<vidlet key='a'>pen</vidlet>"_s);
    QTRY_COMPARE_WITH_TIMEOUT(told, QStringList({u"built"_s, u"search"_s}), kPatienceMs);
    fixture.add(u"b.xml"_s, u"<vidlet key='b'>pen</vidlet>"_s);
    QVERIFY(!fixture.index->isSearchBuilt());
    QTRY_COMPARE_WITH_TIMEOUT(told.size(), 4, kPatienceMs);
    QCOMPARE(told.constLast(), u"search"_s);
}

void TestVLKeyTableSearch::searchBuilt_comes_whenFileHasChangedUnseen()
{
    Fixture fixture;
    fixture.index->setWatching(false);
    fixture.add(u"a.xml"_s, u"<vidlet key='a' title='one'/>"_s);
    QVERIFY(fixture.index->waitUntilBuilt(kPatienceMs));
    fixture.write(u"a.xml"_s, u"<vidlet key='a' title='another'/>"_s);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    QCOMPARE(fixture.keys(u"another"_s), QStringList{u"a"_s});
    QCOMPARE(fixture.keys(u"one"_s), QStringList());
}

void TestVLKeyTableSearch::keys_leavesWordsAlone()
{
    const auto restore = qScopeGuard(
        [before = VLIndexHooks::settledAfterMs.load()] { VLIndexHooks::settledAfterMs = before; });
    VLIndexHooks::settledAfterMs = 0;
    Fixture fixture;
    fixture.index->setWatching(false);
    fixture.add(u"a.xml"_s, u"<vidlet key='a' title='pen'/>"_s);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    QCOMPARE(fixture.index->keys(), QStringList{u"a"_s});
    QVERIFY(fixture.index->isSearchBuilt());
}

void TestVLKeyTableSearch::hit_hasTitleOfKeyData()
{
    Fixture fixture;
    fixture.context.set(
        ckKeyDataFile,
        fixture.files.write(u"keys.xml"_s,
                            "<vidletkeys><key name='a' title='Quill'/></vidletkeys>"));
    fixture.add(u"a.xml"_s, u"<vidlet key='a' title='Pen'>draws</vidlet>"_s);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    const QList<VLSearchHit> hits = fixture.index->search(u"pen"_s, QLocale::c());
    QCOMPARE(hits.size(), 1);
    QCOMPARE(hits.constFirst().title, u"Quill"_s);
}

void TestVLKeyTableSearch::damagedFileOfWords_isToldOf_andMadeAnew()
{
    const QTemporaryDir dir;
    const QString table = dir.filePath(u"keys.sqlite"_s);
    QFile words(table + u"-search"_s);
    QVERIFY(words.open(QIODevice::WriteOnly));
    QVERIFY(words.write(QByteArray(8192, 'x')) == 8192);
    words.close();
    Fixture fixture(false, table);
    QStringList problems;
    connect(fixture.index.get(), &VLKeyTableIndex::problemFound, this,
            [&problems](const QString& file, int line) {
                problems += u"%1:%2"_s.arg(QFileInfo(file).fileName()).arg(line);
            });
    fixture.add(u"a.xml"_s, u"<vidlet key='a' title='pen'/>"_s);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    QCOMPARE(fixture.keys(u"pen"_s), QStringList{u"a"_s});
    QCOMPARE(problems, QStringList{u"keys.sqlite-search:0"_s});
    QVERIFY(QFile::exists(words.fileName() + u".damaged"_s));
}

void TestVLKeyTableSearch::store_isTakenOver_atNextStart()
{
    const QTemporaryDir directory;
    const QString cache = directory.filePath(u"keys"_s);
    const PackageBuilder files;
    for (int run = 0; run < 2; ++run) {
        Fixture fixture(false, cache);
        fixture.add(u"a.xml"_s, u"<vidlet key='a'>pen</vidlet>"_s);
        QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
        QCOMPARE(fixture.keys(u"pen"_s), QStringList(u"a"_s));
        QVERIFY(QFileInfo::exists(cache + u"-search"_s));
    }
}

void TestVLKeyTableSearch::store_isDoneWithout_whereItCannotBe()
{
    const QTemporaryDir directory;
    const QString cache = directory.filePath(u"keys"_s);
    QVERIFY(QDir().mkpath(cache + u"-search"_s));
    Fixture fixture(false, cache);
    QSignalSpy problems(fixture.index.get(), &VLKeyTableIndex::problemFound);
    fixture.add(u"a.xml"_s, u"<vidlet key='a'>pen</vidlet>"_s);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    QCOMPARE(fixture.keys(u"pen"_s), QStringList(u"a"_s));
    QCOMPARE(problems.size(), 1);
    QCOMPARE(problems.constFirst().at(0).toString(), cache + u"-search"_s);
}

void TestVLKeyTableSearch::store_isMadeAnew_whenDamaged()
{
    const QTemporaryDir directory;
    const QString cache = directory.filePath(u"keys"_s);
    Fixture fixture(false, cache);
    QString tips;
    for (int i = 0; i < 2000; ++i)
        tips += u"<vidlet key='k%1'>pen%1 and more</vidlet>"_s.arg(i);
    fixture.add(u"a.xml"_s, tips);
    QVERIFY(fixture.index->waitUntilSearchBuilt(kPatienceMs));
    QFile file(cache + u"-search"_s);
    QVERIFY(file.open(QIODevice::ReadWrite));
    // All of it is in its place when the thread has ended.
    QTRY_VERIFY_WITH_TIMEOUT(file.size() > 20'000, kPatienceMs);
    const qint64 size = file.size();
    for (qint64 at = 4096; at < size; at += 512)
        QVERIFY(file.seek(at) && file.write(QByteArray(256, '\xA5')) == 256);
    file.close();
    QFile::remove(cache + u"-search-wal"_s);
    // The first searches may find nothing, but they end, and in the end all is found.
    fixture.keys(u"pen"_s);
    QElapsedTimer timer;
    timer.start();
    QStringList keys;
    while (keys != QStringList(u"k77"_s) && !timer.hasExpired(kPatienceMs)) {
        fixture.index->waitUntilSearchBuilt(100);
        keys = fixture.keys(u"pen77 more"_s);
    }
    QCOMPARE(keys, QStringList(u"k77"_s));
    QVERIFY(QFileInfo::exists(cache + u"-search.damaged"_s));
}

void TestVLKeyTableSearch::store_isSharedByTwo()
{
    const QTemporaryDir directory;
    const QString cache = directory.filePath(u"keys"_s);
    Fixture one(false, cache);
    Fixture other(false, cache);
    for (int i = 0; i < 20; ++i) {
        one.add(u"f%1.xml"_s.arg(i), u"<vidlet key='a%1'>pen one</vidlet>"_s.arg(i));
        other.add(u"f%1.xml"_s.arg(i), u"<vidlet key='b%1'>pen other</vidlet>"_s.arg(i));
    }
    QVERIFY(one.index->waitUntilSearchBuilt(kPatienceMs));
    QVERIFY(other.index->waitUntilSearchBuilt(kPatienceMs));
    QCOMPARE(one.keys(u"pen"_s, QLocale::c(), 100).size(), 20);
    QCOMPARE(other.keys(u"pen"_s, QLocale::c(), 100).size(), 20);
    QVERIFY(one.keys(u"other"_s).isEmpty());
    QVERIFY(other.keys(u"pen one"_s).isEmpty());
}

void TestVLKeyTableSearch::destructor_endsReading()
{
    for (int i = 0; i < 20; ++i) {
        Fixture fixture;
        QString tips;
        for (int j = 0; j < 500; ++j)
            tips += u"<vidlet key='k%1'>pen%1 and more</vidlet>"_s.arg(j);
        fixture.add(u"a.xml"_s, tips);
        fixture.index->waitUntilSearchBuilt(i);
    }
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLKeyTableSearch>(argc, argv);
}
#include "tst_vlkeytablesearch.moc"
