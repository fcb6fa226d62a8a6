// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QTemporaryDir>

#include <memory>

#include <VidletsHost/VLSearchStore.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

using Access = VLSearchStore::Access;
using Query = VLSearchQuery;

VLSearchStore::File file(const QString& locale = QString(), qint64 size = 1)
{
    return {{size, 1'700'000'000'123'456'789, 1'700'000'000'987'654'321}, true, locale};
}

/// The keys of the tips that have the words, in the order of their places and with each place's
/// number before the first of it.
QString keysFor(VLSearchStore& store, const QString& input, const QString& locale = QString(),
                int count = 100)
{
    VLSearchStore::Question question;
    const Query query(input);
    if (!store.ask(query.terms(), question))
        return store.lastError();
    QStringList result;
    for (const auto place :
         {Query::AllInTitle, Query::SomeInTitle, Query::SomeInName, Query::InText}) {
        QList<VLSearchStore::Match> matches;
        qint64 after = -1;
        qsizetype size = -1;
        while (matches.size() != size) {
            size = matches.size();
            if (!store.find(question, place, locale, after, count, matches))
                return store.lastError();
            if (!matches.isEmpty())
                after = matches.constLast().id;
        }
        QStringList keys;
        for (const VLSearchStore::Match& match : std::as_const(matches))
            keys += match.key;
        result += keys.join(u',');
    }
    return result.join(u'|');
}

} // namespace

class TestVLSearchStore : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void find_givesPlaces_data();
    void find_givesPlaces();
    void find_isOfLocale();
    void find_goesOn_behindTheLast();
    void find_takesBeginnings_ofManyWords();
    void put_replaces();
    void put_keepsWhatIsSame();
    void put_movesToAnotherLocale();
    void forget_dropsTips();
    void store_wears_andIsCleared();
    void open_keepsWhatIsThere();
    void open_putsAside_whatIsUnusable_data();
    void open_putsAside_whatIsUnusable();
    void open_fails_whereNothingCanBe();
    void memory_isShared_andGoes();
    void open_leavesNoConnection();

private:
    QString path() const
    {
        return m_directory->filePath(u"sub/search.sqlite"_s);
    }
    bool put(VLSearchStore& store, const QString& path, const VLSearchStore::File& file,
             const QList<VLSearchText>& texts)
    {
        return store.begin() && store.put(path, file, texts) && store.commit();
    }

    std::unique_ptr<QTemporaryDir> m_directory;
};

void TestVLSearchStore::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
}

void TestVLSearchStore::find_givesPlaces_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("keys");

    QTest::newRow("title, shortcut, text") << u"pen"_s << u"a|a|b,pen.c|a,b,pen.c,d"_s;
    QTest::newRow("two words") << u"size pen"_s << u"a|a,d||a,d"_s;
    QTest::newRow("a beginning") << u"si"_s << u"a,d|a,d||a,d"_s;
    QTest::newRow("a whole word before") << u"si pen"_s << u"|||"_s;
    QTest::newRow("none") << u"pencil"_s << u"|||"_s;
    QTest::newRow("one letter") << u"p"_s << u"a|a|b,pen.c|a,b,pen.c,d"_s;
    QTest::newRow("folded") << u"STRASSE"_s << u"|||d"_s;
    QTest::newRow("no mark of ours") << u"apen tpen"_s << u"|||"_s;
    QTest::newRow("an empty key") << u"nameless"_s << u"|||"_s;
}

void TestVLSearchStore::find_givesPlaces()
{
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QVERIFY(put(store, u"/a.xml"_s, file(),
                {{u"a"_s, u"Pen Size"_s, u"Ctrl+1"_s, u"some text"_s},
                 {u"b"_s, u"Brush"_s, u"Pen"_s, u"other text"_s},
                 {u"pen.c"_s, QString(), QString(), QString()},
                 {u"d"_s, u"Size"_s, QString(), u"The pen's Straße %(nameless)s"_s}}));
    QFETCH(const QString, input);
    QTEST(keysFor(store, input), "keys");
}

void TestVLSearchStore::find_isOfLocale()
{
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QVERIFY(put(store, u"/a.xml"_s, file(), {{u"a"_s, {}, {}, u"pen"_s}}));
    QVERIFY(put(store, u"/b.xml"_s, file(u"de_DE"_s), {{u"b"_s, {}, {}, u"pen"_s}}));
    QVERIFY(put(store, u"/c.xml"_s, file(), {{u"c"_s, {}, {}, u"pen"_s}}));
    QStringList locales;
    QVERIFY(store.locales(locales));
    QCOMPARE(locales, QStringList({QString(), u"de_DE"_s}));
    QCOMPARE(keysFor(store, u"pen"_s), u"|||a,c"_s);
    QCOMPARE(keysFor(store, u"pen"_s, u"de_DE"_s), u"|||b"_s);
    QCOMPARE(keysFor(store, u"pen"_s, u"fr"_s), u"|||"_s);
}

void TestVLSearchStore::find_goesOn_behindTheLast()
{
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QList<VLSearchText> texts;
    QStringList keys;
    for (int i = 0; i < 50; ++i) {
        keys += QString::number(i);
        texts.append({keys.constLast(), {}, {}, u"pen"_s});
    }
    QVERIFY(put(store, u"/a.xml"_s, file(), texts));
    QCOMPARE(keysFor(store, u"pen"_s, QString(), 7), u"|||"_s + keys.join(u','));
}

void TestVLSearchStore::find_takesBeginnings_ofManyWords()
{
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QList<VLSearchText> texts;
    QStringList keys;
    for (int i = 0; i < 1000; ++i) {
        keys += u"k%1"_s.arg(i);
        texts.append({keys.constLast(), {}, {}, u"word%1 𐐀x%1"_s.arg(i)});
    }
    QVERIFY(put(store, u"/a.xml"_s, file(), texts));
    for (const QString& input : {u"w"_s, u"wo"_s, u"wor"_s, u"word"_s, u"𐐀"_s, u"𐐀x"_s})
        QCOMPARE(keysFor(store, input), u"|||"_s + keys.join(u','));
    QCOMPARE(keysFor(store, u"word99"_s),
             u"|||k99,k990,k991,k992,k993,k994,k995,k996,k997,k998,k999"_s);
}

void TestVLSearchStore::put_replaces()
{
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QVERIFY(put(store, u"/a.xml"_s, file({}, 1),
                {{u"a"_s, {}, {}, u"pen"_s}, {u"b"_s, {}, {}, u"brush"_s}}));
    QVERIFY(put(store, u"/a.xml"_s, file({}, 2),
                {{u"a"_s, {}, {}, u"brush"_s}, {u"c"_s, {}, {}, u"pencil"_s}}));
    QCOMPARE(keysFor(store, u"pen"_s), u"|||c"_s);
    QCOMPARE(keysFor(store, u"brush"_s), u"|||a"_s);
    VLSearchStore::File known;
    QVERIFY(store.get(u"/a.xml"_s, known));
    QCOMPARE(known.stamp, file({}, 2).stamp);
    QVERIFY(known.isSettled);
    QVERIFY(store.get(u"/b.xml"_s, known));
    QCOMPARE(known.stamp, VLFileStamp());
}

void TestVLSearchStore::put_keepsWhatIsSame()
{
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    const QList<VLSearchText> texts{{u"a"_s, {}, {}, u"pen one"_s}, {u"b"_s, {}, {}, u"pen"_s}};
    QVERIFY(put(store, u"/a.xml"_s, file({}, 1), texts));
    const auto idOf = [&store](const QString& input) {
        VLSearchStore::Question question;
        QList<VLSearchStore::Match> matches;
        const bool isFound = store.ask(Query(input).terms(), question)
            && store.find(question, Query::InText, QString(), -1, 1, matches);
        return isFound && !matches.isEmpty() ? matches.constFirst().id : -1;
    };
    const qint64 before = idOf(u"one"_s);
    QVERIFY(put(store, u"/a.xml"_s, file({}, 2), {texts.at(1), texts.at(0)}));
    QCOMPARE(idOf(u"one"_s), before);
    QVERIFY(before >= 0);
}

void TestVLSearchStore::put_movesToAnotherLocale()
{
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QVERIFY(put(store, u"/a.xml"_s, file(), {{u"a"_s, {}, {}, u"pen"_s}}));
    QVERIFY(put(store, u"/a.xml"_s, file(u"fr"_s), {{u"a"_s, {}, {}, u"pen"_s}}));
    QCOMPARE(keysFor(store, u"pen"_s), u"|||"_s);
    QCOMPARE(keysFor(store, u"pen"_s, u"fr"_s), u"|||a"_s);
    QVERIFY(put(store, u"/a.xml"_s, file(), {{u"a"_s, {}, {}, u"pen"_s}}));
    QCOMPARE(keysFor(store, u"pen"_s), u"|||a"_s);
    QCOMPARE(keysFor(store, u"pen"_s, u"fr"_s), u"|||"_s);
}

void TestVLSearchStore::forget_dropsTips()
{
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QVERIFY(put(store, u"/a.xml"_s, file(), {{u"a"_s, {}, {}, u"pen"_s}}));
    QVERIFY(put(store, u"/b.xml"_s, file(), {{u"b"_s, {}, {}, u"pen"_s}}));
    QVERIFY(store.begin() && store.forget(u"/a.xml"_s) && store.forget(u"/none.xml"_s)
            && store.commit());
    QCOMPARE(keysFor(store, u"pen"_s), u"|||b"_s);
    QStringList paths;
    QVERIFY(store.paths(paths));
    QCOMPARE(paths, QStringList(u"/b.xml"_s));
}

void TestVLSearchStore::store_wears_andIsCleared()
{
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    const qint64 epoch = store.epoch();
    QVERIFY(epoch > 0);
    for (int i = 0; i < 25; ++i) {
        QVERIFY(!store.isWorn());
        QList<VLSearchText> texts;
        for (int j = 0; j < 1000; ++j)
            texts.append({QString::number(j), {}, {}, u"pen%1"_s.arg(i)});
        QVERIFY(put(store, u"/a.xml"_s, file({}, i + 1), texts));
        if (store.isWorn())
            break;
    }
    QVERIFY(store.isWorn());
    QVERIFY(store.begin() && store.clear() && store.commit());
    QVERIFY(!store.isWorn());
    QVERIFY(store.epoch() != epoch);
    QCOMPARE(keysFor(store, u"pen"_s), u"|||"_s);
    QVERIFY(put(store, u"/a.xml"_s, file(), {{u"a"_s, {}, {}, u"pen"_s}}));
    QCOMPARE(keysFor(store, u"pen"_s), u"|||a"_s);
}

void TestVLSearchStore::open_keepsWhatIsThere()
{
    {
        VLSearchStore reader(path(), Access::Read);
        QVERIFY(!reader.open());
        VLSearchStore store(path(), Access::Write);
        QVERIFY2(store.open(), qPrintable(store.lastError()));
        QVERIFY(put(store, u"/a.xml"_s, file(), {{u"a"_s, {}, {}, u"pen"_s}}));
        QVERIFY2(reader.open(), qPrintable(reader.lastError()));
        QCOMPARE(keysFor(reader, u"pen"_s), u"|||a"_s);
        // What is not written yet is nobody else's, and is in nobody's way.
        QVERIFY(store.begin() && store.forget(u"/a.xml"_s));
        QCOMPARE(keysFor(reader, u"pen"_s), u"|||a"_s);
        store.rollBack();
        QCOMPARE(reader.epoch(), store.epoch());
    }
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QCOMPARE(keysFor(store, u"pen"_s), u"|||a"_s);
    QVERIFY(store.lastError().isNull());
}

void TestVLSearchStore::open_putsAside_whatIsUnusable_data()
{
    QTest::addColumn<int>("damage");
    QTest::newRow("not a database") << 0;
    QTest::newRow("cut") << 1;
    QTest::newRow("another's") << 2;
}

void TestVLSearchStore::open_putsAside_whatIsUnusable()
{
    QFETCH(const int, damage);
    {
        VLSearchStore store(path(), Access::Write);
        QVERIFY2(store.open(), qPrintable(store.lastError()));
        QVERIFY(put(store, u"/a.xml"_s, file(), {{u"a"_s, {}, {}, u"pen"_s}}));
    }
    QFile raw(path());
    QVERIFY(raw.open(QIODevice::ReadWrite));
    if (damage == 0)
        QVERIFY(raw.resize(0) && raw.write(QByteArray(8192, 'x')) == 8192);
    else if (damage == 1)
        QVERIFY(raw.resize(5000));
    else // The number of the program.
        QVERIFY(raw.seek(68) && raw.write("XXXX") == 4);
    raw.close();
    VLSearchStore reader(path(), Access::Read);
    QVERIFY(!reader.open());
    VLSearchStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QVERIFY(!store.lastError().isNull());
    QVERIFY(QFileInfo::exists(path() + u".damaged"_s));
    QVERIFY(put(store, u"/b.xml"_s, file(), {{u"b"_s, {}, {}, u"pen"_s}}));
    QCOMPARE(keysFor(store, u"pen"_s), u"|||b"_s);
}

void TestVLSearchStore::open_fails_whereNothingCanBe()
{
    VLSearchStore store(m_directory->path(), Access::Write);
    QVERIFY(!store.open());
    QVERIFY(!store.lastError().isEmpty());
    VLSearchStore beneath(u"/dev/null/search.sqlite"_s, Access::Write);
    QVERIFY(!beneath.open());
}

void TestVLSearchStore::memory_isShared_andGoes()
{
    const QString name = VLSearchStore::nameInMemory();
    QVERIFY(VLSearchStore::isInMemory(name));
    QVERIFY(name != VLSearchStore::nameInMemory());
    {
        VLSearchStore store(name, Access::Write);
        QVERIFY2(store.open(), qPrintable(store.lastError()));
        QVERIFY(put(store, u"/a.xml"_s, file(), {{u"a"_s, {}, {}, u"pen"_s}}));
        VLSearchStore reader(name, Access::Read);
        QVERIFY2(reader.open(), qPrintable(reader.lastError()));
        QCOMPARE(keysFor(reader, u"pen"_s), u"|||a"_s);
    }
    VLSearchStore store(name, Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QCOMPARE(keysFor(store, u"pen"_s), u"|||"_s);
}

void TestVLSearchStore::open_leavesNoConnection()
{
    QVERIFY(QSqlDatabase::connectionNames().isEmpty());
}

QTEST_GUILESS_MAIN(TestVLSearchStore)
#include "tst_vlsearchstore.moc"
