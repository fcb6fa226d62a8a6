// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <memory>

#include <VidletsHost/VLKeyTableStore.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

using Access = VLKeyTableStore::Access;
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

bool put(VLKeyTableStore& store, const QString& path, const VLKeyTableFile& content)
{
    return store.begin() && store.put(path, content) && store.commit();
}

QList<KeyTableBlobs::Entry> find(VLKeyTableStore& store, const QString& key)
{
    QList<KeyTableBlobs::Entry> entries;
    if (!store.find(key, entries))
        qWarning("%s", qPrintable(store.lastError()));
    return entries;
}

QHash<QString, VLKeyTableFile> files(VLKeyTableStore& store)
{
    QHash<QString, VLKeyTableFile> files;
    if (!store.files(files))
        qWarning("%s", qPrintable(store.lastError()));
    return files;
}

} // namespace

class TestVLKeyTableStore : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void put_isFoundAgain();
    void put_replaces();
    void put_takesAnyText();
    void forget_dropsRows();
    void nestedRoot_isKept_butNotFound();
    void open_keepsWhatIsThere();
    void open_putsAside_whatIsUnusable_data();
    void open_putsAside_whatIsUnusable();
    void open_fails_whereNothingCanBe();
    void write_isSeenByOthers_afterCommit();
    void write_waitsForNobody_forLong();
    void rollBack_leavesAllAsItWas();
    void put_replacesWithinOneTransaction();
    void flippedBit_isNoticed_orDoesNotMatter();
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
    VLKeyTableStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QVERIFY(store.lastError().isNull());
    const VLKeyTableFile content = file({row(u"b"_s, 10), row(QString(), 30), row(u"a"_s, 50)});
    QVERIFY(put(store, u"/a.xml"_s, content));
    QVERIFY(put(store, u"/none.xml"_s, file({})));

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

    const auto rows = find(store, u"a"_s);
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows.constFirst().file, KeyTableBlobs::numberOf(u"/a.xml"_s));
    QVERIFY(rows.constFirst().row == content.rows.at(2));
    QVERIFY(find(store, u"A"_s).isEmpty());
    QCOMPARE(find(store, QString()).size(), 1);
}

void TestVLKeyTableStore::put_replaces()
{
    VLKeyTableStore store(path(), Access::Write);
    QVERIFY(store.open());
    QVERIFY(put(store, u"/a.xml"_s, file({row(u"a"_s, 10), row(u"b"_s, 30)})));
    QVERIFY(put(store, u"/b.xml"_s, file({row(u"a"_s, 10)})));
    QVERIFY(put(store, u"/a.xml"_s, file({row(u"b"_s, 11), row(u"c"_s, 31)})));
    QCOMPARE(files(store).size(), 2);
    QCOMPARE(find(store, u"a"_s).size(), 1);
    QCOMPARE(find(store, u"b"_s).size(), 1);
    QCOMPARE(find(store, u"b"_s).constFirst().row.start, 11);
    QCOMPARE(find(store, u"c"_s).size(), 1);
}

void TestVLKeyTableStore::put_takesAnyText()
{
    VLKeyTableStore store(path(), Access::Write);
    QVERIFY(store.open());
    const QStringList texts{u"'; DROP TABLE rows; --"_s, u"\"%?:1"_s, u"\u00e4\U0001F600"_s, u" "_s,
                            QString(5000, u'x')};
    for (const QString& text : texts) {
        QVERIFY(put(store, text, file({row(text, 1)})));
        QCOMPARE(find(store, text).size(), 1);
        VLKeyTableFile found;
        QVERIFY(store.get(text, found));
        QCOMPARE(found.rows.constFirst().key, text);
    }
    QCOMPARE(files(store).size(), texts.size());
}

void TestVLKeyTableStore::forget_dropsRows()
{
    VLKeyTableStore store(path(), Access::Write);
    QVERIFY(store.open());
    QVERIFY(put(store, u"/a.xml"_s, file({row(u"a"_s, 10)})));
    QVERIFY(store.begin());
    QVERIFY(store.forget(u"/a.xml"_s));
    QVERIFY(store.forget(u"/unknown.xml"_s));
    QVERIFY(store.commit());
    QVERIFY(files(store).isEmpty());
    QVERIFY(find(store, u"a"_s).isEmpty());
}

void TestVLKeyTableStore::nestedRoot_isKept_butNotFound()
{
    VLKeyTableStore store(path(), Access::Write);
    QVERIFY(store.open());
    const QList<VLKeyTableRow> rows{row(u"a"_s, 10, Kind::Hidden),
                                    row(QString(), 30, Kind::Nested)};
    QVERIFY(put(store, u"/a.xml"_s, file(rows)));
    QCOMPARE(find(store, u"a"_s).size(), 1);
    QVERIFY(find(store, QString()).isEmpty());
    QCOMPARE(files(store).value(u"/a.xml"_s).rows, rows.mid(1));
    VLKeyTableFile found;
    QVERIFY(store.get(u"/a.xml"_s, found));
    QVERIFY(found.rows == rows);
}

void TestVLKeyTableStore::open_keepsWhatIsThere()
{
    {
        VLKeyTableStore store(path(), Access::Write);
        QVERIFY(store.open());
        QVERIFY(put(store, u"/a.xml"_s, file({row(u"a"_s, 10)})));
    }
    VLKeyTableStore store(path(), Access::Write);
    QVERIFY(store.open());
    QVERIFY(store.lastError().isNull());
    QCOMPARE(find(store, u"a"_s).size(), 1);
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
        VLKeyTableStore store(path(), Access::Write);
        QVERIFY(store.open());
        QVERIFY(put(store, u"/a.xml"_s, file({row(u"a"_s, 10)})));
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
    VLKeyTableStore store(path(), Access::Write);
    QVERIFY2(store.open(), qPrintable(store.lastError()));
    QVERIFY(!store.lastError().isNull());
    QVERIFY(files(store).isEmpty());
    QVERIFY(put(store, u"/a.xml"_s, file({row(u"a"_s, 10)})));
    QCOMPARE(find(store, u"a"_s).size(), 1);
    QVERIFY(QFile::exists(path() + u".damaged"_s));
}

void TestVLKeyTableStore::open_fails_whereNothingCanBe()
{
    QVERIFY(QDir().mkpath(path()));
    VLKeyTableStore directory(path(), Access::Write);
    QVERIFY(!directory.open());
    QVERIFY(!directory.lastError().isNull());
    QVERIFY(!directory.begin());
    QVERIFY(!directory.put(u"/a.xml"_s, file({})));
    QList<KeyTableBlobs::Entry> entries;
    QVERIFY(!directory.find(u"a"_s, entries));
    QHash<QString, VLKeyTableFile> files;
    QVERIFY(!directory.files(files));

    QFile blocker(m_directory->filePath(u"file"_s));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    VLKeyTableStore below(m_directory->filePath(u"file/table.sqlite"_s), Access::Write);
    QVERIFY(!below.open());
}

void TestVLKeyTableStore::write_isSeenByOthers_afterCommit()
{
    VLKeyTableStore writer(path(), Access::Write);
    VLKeyTableStore reader(path(), Access::Read);
    QVERIFY(writer.open());
    QVERIFY(reader.open());
    QVERIFY(writer.begin());
    QVERIFY(writer.put(u"/a.xml"_s, file({row(u"a"_s, 10)})));
    QVERIFY(find(reader, u"a"_s).isEmpty());
    QVERIFY(writer.commit());
    QCOMPARE(find(reader, u"a"_s).size(), 1);
}

void TestVLKeyTableStore::write_waitsForNobody_forLong()
{
    VLKeyTableStore first(path(), Access::Write);
    VLKeyTableStore second(path(), Access::Write);
    QVERIFY(first.open());
    QVERIFY(second.open());
    QVERIFY(first.begin());
    QVERIFY(!second.begin());
    QVERIFY(!put(second, u"/a.xml"_s, file({})));
    QVERIFY(!second.lastError().isNull());
    // Nobody's file is taken away for a lock.
    VLKeyTableStore third(path(), Access::Write);
    QVERIFY(third.open());
    QVERIFY(!third.begin());
    QVERIFY(third.isLocked() && !third.isDamaged());
    QVERIFY(!QFile::exists(path() + u".damaged"_s));
    QVERIFY(first.commit());
    QVERIFY(put(second, u"/a.xml"_s, file({})));
}

void TestVLKeyTableStore::rollBack_leavesAllAsItWas()
{
    VLKeyTableStore store(path(), Access::Write);
    QVERIFY(store.open());
    QVERIFY(put(store, u"/a.xml"_s, file({row(u"a"_s, 10)})));
    QVERIFY(store.begin());
    QVERIFY(store.put(u"/a.xml"_s, file({row(u"b"_s, 10)})));
    QVERIFY(store.put(u"/b.xml"_s, file({row(u"a"_s, 10)})));
    store.rollBack();
    QCOMPARE(find(store, u"a"_s).size(), 1);
    QVERIFY(find(store, u"b"_s).isEmpty());
    QCOMPARE(files(store).size(), 1);
    QVERIFY(!store.commit());
}

void TestVLKeyTableStore::put_replacesWithinOneTransaction()
{
    VLKeyTableStore store(path(), Access::Write);
    QVERIFY(store.open());
    QVERIFY(put(store, u"/a.xml"_s, file({row(u"a"_s, 10), row(u"b"_s, 30)})));
    QVERIFY(store.begin());
    QVERIFY(store.put(u"/a.xml"_s, file({row(u"a"_s, 20), row(u"c"_s, 40)})));
    QVERIFY(store.put(u"/a.xml"_s, file({row(u"a"_s, 30)})));
    QVERIFY(store.put(u"/b.xml"_s, file({row(u"a"_s, 40)})));
    QVERIFY(store.forget(u"/b.xml"_s));
    QVERIFY(store.put(u"/c.xml"_s, file({row(u"a"_s, 50)})));
    QVERIFY(store.forget(u"/c.xml"_s));
    QVERIFY(store.put(u"/c.xml"_s, file({row(u"d"_s, 50)})));
    QVERIFY(store.commit());
    QCOMPARE(find(store, u"a"_s).size(), 1);
    QCOMPARE(find(store, u"a"_s).constFirst().row.start, 30);
    QVERIFY(find(store, u"b"_s).isEmpty());
    QVERIFY(find(store, u"c"_s).isEmpty());
    QCOMPARE(find(store, u"d"_s).size(), 1);
    VLKeyTableFile found;
    QVERIFY(store.get(u"/c.xml"_s, found));
    QVERIFY(!store.get(u"/b.xml"_s, found));
    QVERIFY(store.lastError().isNull());
}

void TestVLKeyTableStore::flippedBit_isNoticed_orDoesNotMatter()
{
    constexpr int kKeys = 400;
    const auto key = [](int i) { return u"key%1"_s.arg(i); };
    QList<VLKeyTableRow> rows;
    for (int i = 0; i < kKeys; ++i)
        rows.append(row(key(i), 100 + i));
    {
        VLKeyTableStore store(path(), Access::Write);
        QVERIFY(store.open());
        QVERIFY(put(store, u"/a.xml"_s, file(rows)));
    }
    QFile table(path());
    QVERIFY(table.open(QIODevice::ReadOnly));
    const QByteArray sound = table.readAll();
    table.close();

    QRandomGenerator random(7);
    int noticed = 0;
    for (int round = 0; round < 120; ++round) {
        QByteArray damaged = sound;
        const int place = random.bounded(int(damaged.size()));
        damaged[place] = char(damaged.at(place) ^ (1 << random.bounded(8)));
        QFile::remove(path() + u"-wal"_s);
        QFile::remove(path() + u"-shm"_s);
        QVERIFY(table.open(QIODevice::WriteOnly));
        table.write(damaged);
        table.close();
        VLKeyTableStore store(path(), Access::Read);
        bool isSound = store.open();
        for (int i = 0; isSound && i < kKeys; ++i) {
            QList<KeyTableBlobs::Entry> entries;
            isSound = store.find(key(i), entries);
            if (!isSound)
                break;
            QVERIFY2(entries.size() == 1 && entries.constFirst().row == rows.at(i),
                     qPrintable(u"byte %1"_s.arg(place)));
        }
        QHash<QString, VLKeyTableFile> files;
        if (isSound && store.files(files))
            QCOMPARE(files.size(), 1);
        else
            ++noticed;
    }
    QVERIFY(noticed > 0);
}

void TestVLKeyTableStore::open_leavesNoConnection()
{
    {
        VLKeyTableStore store(path(), Access::Write);
        QVERIFY(store.open());
    }
    {
        const VLKeyTableStore unopened(path(), Access::Write);
    }
    QVERIFY(QSqlDatabase::connectionNames().isEmpty());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLKeyTableStore>(argc, argv);
}

#include "tst_vlkeytablestore.moc"
