// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <memory>

#include <VidletsHost/VLKeyTableStore.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

using Kind = VLKeyTableRowKind;

VLKeyTableRow row(const QString& key, qint64 start, Kind kind = Kind::Tip)
{
    return {key, start, 20, 0xFFFFFFF0U, kind};
}

VLKeyTableFile file(const QList<VLKeyTableRow>& rows)
{
    VLKeyTableFile content;
    content.stamp = {123, 1'700'000'000'123'456'789, 1'700'000'000'987'654'321};
    content.state = VLKeyTableState::Survived;
    content.isSettled = true;
    content.unit = VLKeyTableUnit::BigWord;
    content.headLength = 77;
    content.rootTag = u"vidlets"_s;
    content.locale = u"de"_s;
    content.rows = rows;
    content.problem = {{3, 4}, u"why"_s};
    return content;
}

} // namespace

class TestVLKeyTableStore : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void put_isFoundAgain();
    void put_replaces_andKeepsNumber();
    void put_takesAnyText();
    void forget_dropsRows();
    void find_givesNestedRoots_forEachKey();
    void open_keepsWhatIsThere();
    void open_putsAside_whatIsUnusable_data();
    void open_putsAside_whatIsUnusable();
    void open_fails_whereNothingCanBe();
    void write_isSeenByOthers_afterCommit();
    void write_waitsForNobody_forLong();
    void open_leavesNoConnection();

private:
    QString path() const
    {
        return m_directory->filePath(u"sub/table.sqlite"_s);
    }

    std::unique_ptr<QTemporaryDir> m_directory;
};

void TestVLKeyTableStore::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
}

void TestVLKeyTableStore::put_isFoundAgain()
{
    VLKeyTableStore store(path());
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QVERIFY(store.lastError().isNull());
    const VLKeyTableFile content = file({row(u"b"_s, 10), row(QString(), 30), row(u"a"_s, 50)});
    QVERIFY(store.put(u"/a.xml"_s, content));
    QVERIFY(store.put(u"/none.xml"_s, file({})));

    VLKeyTableFile found;
    QVERIFY(store.get(u"/a.xml"_s, found));
    QCOMPARE(found.stamp.modifiedNs, content.stamp.modifiedNs);
    QVERIFY(found.stamp == content.stamp);
    QCOMPARE(found.state, content.state);
    QCOMPARE(found.isSettled, true);
    QCOMPARE(found.unit, content.unit);
    QCOMPARE(found.headLength, content.headLength);
    QCOMPARE(found.rootTag, content.rootTag);
    QCOMPARE(found.locale, content.locale);
    QCOMPARE(found.problem.text, content.problem.text);
    QCOMPARE(found.problem.position.line, 3);
    QCOMPARE(found.problem.position.column, 4);
    QVERIFY(found.rows == content.rows);
    QVERIFY(store.get(u"/none.xml"_s, found));
    QVERIFY(found.rows.isEmpty());
    QVERIFY(!store.get(u"/other.xml"_s, found));

    const auto rows = store.find(u"a"_s);
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows.constFirst().first, store.files().value(u"/a.xml"_s));
    QVERIFY(rows.constFirst().second == content.rows.at(2));
    QVERIFY(store.find(u"A"_s).isEmpty());
    QCOMPARE(store.find(QString()).size(), 1);
}

void TestVLKeyTableStore::put_replaces_andKeepsNumber()
{
    VLKeyTableStore store(path());
    QVERIFY(store.open());
    QVERIFY(store.put(u"/a.xml"_s, file({row(u"a"_s, 10), row(u"b"_s, 30)})));
    QVERIFY(store.put(u"/b.xml"_s, file({row(u"a"_s, 10)})));
    const QHash<QString, qint64> numbers = store.files();
    QVERIFY(store.put(u"/a.xml"_s, file({row(u"b"_s, 11), row(u"c"_s, 31)})));
    QCOMPARE(store.files(), numbers);
    QCOMPARE(store.find(u"a"_s).size(), 1);
    QCOMPARE(store.find(u"b"_s).size(), 1);
    QCOMPARE(store.find(u"b"_s).constFirst().second.start, 11);
    QCOMPARE(store.find(u"c"_s).size(), 1);
}

void TestVLKeyTableStore::put_takesAnyText()
{
    VLKeyTableStore store(path());
    QVERIFY(store.open());
    const QStringList texts{u"'; DROP TABLE rows; --"_s, u"\"%?:1"_s, u"\u00e4\U0001F600"_s, u" "_s,
                            QString(5000, u'x')};
    for (const QString& text : texts) {
        QVERIFY(store.put(text, file({row(text, 1)})));
        QCOMPARE(store.find(text).size(), 1);
        VLKeyTableFile found;
        QVERIFY(store.get(text, found));
        QCOMPARE(found.rows.constFirst().key, text);
    }
    QCOMPARE(store.files().size(), texts.size());
}

void TestVLKeyTableStore::forget_dropsRows()
{
    VLKeyTableStore store(path());
    QVERIFY(store.open());
    QVERIFY(store.put(u"/a.xml"_s, file({row(u"a"_s, 10)})));
    QVERIFY(store.forget(u"/a.xml"_s));
    QVERIFY(store.forget(u"/unknown.xml"_s));
    QVERIFY(store.files().isEmpty());
    QVERIFY(store.find(u"a"_s).isEmpty());
}

void TestVLKeyTableStore::find_givesNestedRoots_forEachKey()
{
    VLKeyTableStore store(path());
    QVERIFY(store.open());
    const QList<VLKeyTableRow> rows{row(u"a"_s, 10, Kind::Hidden),
                                    row(QString(), 30, Kind::Nested)};
    QVERIFY(store.put(u"/a.xml"_s, file(rows)));
    QCOMPARE(store.find(u"a"_s).size(), 2);
    QCOMPARE(store.find(u"other"_s).size(), 1);
    QVERIFY(store.find(u"other"_s).constFirst().second == rows.at(1));
    VLKeyTableFile found;
    QVERIFY(store.get(u"/a.xml"_s, found));
    QVERIFY(found.rows == rows);
}

void TestVLKeyTableStore::open_keepsWhatIsThere()
{
    {
        VLKeyTableStore store(path());
        QVERIFY(store.open());
        QVERIFY(store.put(u"/a.xml"_s, file({row(u"a"_s, 10)})));
    }
    VLKeyTableStore store(path());
    QVERIFY(store.open());
    QVERIFY(store.lastError().isNull());
    QCOMPARE(store.find(u"a"_s).size(), 1);
}

void TestVLKeyTableStore::open_putsAside_whatIsUnusable_data()
{
    QTest::addColumn<QString>("damage");

    QTest::newRow("no database") << u"text"_s;
    QTest::newRow("cut") << u"cut"_s;
    QTest::newRow("header gone") << u"header"_s;
    QTest::newRow("other version") << u"version"_s;
    QTest::newRow("another program's") << u"program"_s;
}

void TestVLKeyTableStore::open_putsAside_whatIsUnusable()
{
    QFETCH(const QString, damage);
    {
        VLKeyTableStore store(path());
        QVERIFY(store.open());
        QVERIFY(store.put(u"/a.xml"_s, file({row(u"a"_s, 10)})));
    }
    if (damage == "version"_L1 || damage == "program"_L1) {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"damage"_s);
        database.setDatabaseName(path());
        QVERIFY(database.open());
        database.exec(damage == "version"_L1 ? u"PRAGMA user_version = 99"_s
                                             : u"PRAGMA application_id = 99"_s);
        database.close();
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(u"damage"_s);
    } else {
        QFile table(path());
        QVERIFY(table.open(QIODevice::ReadWrite));
        if (damage == "cut"_L1)
            QVERIFY(table.resize(3000));
        else
            table.write(QByteArray(damage == "text"_L1 ? 8000 : 60, 'x'));
    }
    VLKeyTableStore store(path());
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QVERIFY(!store.lastError().isNull());
    QVERIFY(store.files().isEmpty());
    QVERIFY(store.put(u"/a.xml"_s, file({row(u"a"_s, 10)})));
    QCOMPARE(store.find(u"a"_s).size(), 1);
    QVERIFY(QFile::exists(path() + u".damaged"_s));
}

void TestVLKeyTableStore::open_fails_whereNothingCanBe()
{
    QVERIFY(QDir().mkpath(path()));
    VLKeyTableStore directory(path());
    QVERIFY(!directory.open());
    QVERIFY(!directory.lastError().isNull());
    QVERIFY(!directory.put(u"/a.xml"_s, file({})));
    QVERIFY(directory.find(u"a"_s).isEmpty());
    QVERIFY(directory.files().isEmpty());

    QFile blocker(m_directory->filePath(u"file"_s));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    VLKeyTableStore below(m_directory->filePath(u"file/table.sqlite"_s));
    QVERIFY(!below.open());
}

void TestVLKeyTableStore::write_isSeenByOthers_afterCommit()
{
    VLKeyTableStore writer(path());
    VLKeyTableStore reader(path());
    QVERIFY(writer.open());
    QVERIFY(reader.open());
    QVERIFY(writer.begin());
    QVERIFY(writer.put(u"/a.xml"_s, file({row(u"a"_s, 10)})));
    QVERIFY(reader.find(u"a"_s).isEmpty());
    QVERIFY(writer.commit());
    QCOMPARE(reader.find(u"a"_s).size(), 1);
}

void TestVLKeyTableStore::write_waitsForNobody_forLong()
{
    VLKeyTableStore first(path());
    VLKeyTableStore second(path());
    QVERIFY(first.open());
    QVERIFY(second.open());
    QVERIFY(first.begin());
    QVERIFY(!second.begin());
    QVERIFY(!second.put(u"/a.xml"_s, file({})));
    QVERIFY(!second.lastError().isNull());
    // Nobody's file is taken away for a lock.
    VLKeyTableStore third(path());
    QVERIFY(!third.open());
    QVERIFY(!QFile::exists(path() + u".damaged"_s));
    QVERIFY(first.commit());
    QVERIFY(second.put(u"/a.xml"_s, file({})));
}

void TestVLKeyTableStore::open_leavesNoConnection()
{
    {
        VLKeyTableStore store(path());
        QVERIFY(store.open());
    }
    {
        const VLKeyTableStore unopened(path());
    }
    QVERIFY(QSqlDatabase::connectionNames().isEmpty());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLKeyTableStore>(argc, argv);
}

#include "tst_vlkeytablestore.moc"
