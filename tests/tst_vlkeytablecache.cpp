// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndexHooks.h>
#include <Vidlets/VLXmlElement.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QProcess>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include <VidletsHost/VLKeyTableIndex.h>
#include <VidletsHost/VLKeyTableStore.h>

#ifdef Q_OS_LINUX
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 60000;
constexpr int kUsualSettledAfterMs = 3000;
constexpr int kDefaultKills = 20;
constexpr int kFiles = 12;
constexpr int kTips = 12;

QString keyOf(int file, int tip)
{
    return u"key.%1.%2"_s.arg(file).arg(tip);
}

QString textOf(int file, int tip)
{
    return u"text %1 of %2"_s.arg(tip).arg(file);
}

QByteArray controlFile(int file, int tips = kTips)
{
    QString content = u"<vidlets>"_s;
    for (int i = 0; i < tips; ++i)
        content += u"<vidlet key='%1'>%2</vidlet>\n"_s.arg(keyOf(file, i), textOf(file, i));
    return (content + u"</vidlets>"_s).toUtf8();
}

QString nameOf(int file)
{
    return u"f%1.xml"_s.arg(file, 4, 10, QChar(u'0'));
}

/// A host from its start on: it has indexed the package at @p root.
class Host
{
public:
    Host(const QString& root, const QString& cacheFile)
        : index(&m_context, {})
    {
        m_context.set(ckGuardContent, false);
        index.setCacheFile(cacheFile);
        QObject::connect(
            &index, &VLKeyTableIndex::problemFound, &index,
            [this](const QString& file, int line, int column) {
                problems.append(
                    u"%1:%2:%3"_s.arg(QFileInfo(file).fileName()).arg(line).arg(column));
            });
        QObject::connect(&index, &VLKeyTableIndex::changed, &index,
                         [this](const QStringList& keys) { changes.append(keys); });
        const QDir control(root + u"/Control"_s);
        const QStringList names = control.entryList(QDir::Files, QDir::Name);
        for (const QString& name : names)
            index.indexControlFile(control.filePath(name), root);
    }

    bool build()
    {
        return index.waitUntilBuilt(kPatienceMs);
    }

    /// The text of the tip; "none" where there is none.
    QString text(const QString& key)
    {
        QString path;
        int depth = 0;
        VLXmlElement* root = nullptr;
        const VLXmlElement* element = index.retrieve(key, QLocale::c(), path, depth, root);
        const std::unique_ptr<VLXmlElement> tree(root);
        return element ? element->content() : u"none"_s;
    }

    /// The first key that is not answered as the files say; null where there is none.
    QString firstWrong(int files = kFiles, int tips = kTips)
    {
        for (int i = 0; i < files; ++i) {
            for (int j = 0; j < tips; ++j) {
                if (text(keyOf(i, j)) != textOf(i, j))
                    return keyOf(i, j);
            }
            if (text(keyOf(i, tips)) != "none"_L1)
                return keyOf(i, tips);
        }
        return QString();
    }

private:
    VLContext m_context;

public:
    VLKeyTableIndex index;
    QStringList problems;
    QList<QStringList> changes;
};

#ifdef Q_OS_LINUX
/// Tells which files of a directory were opened.
class OpenWatch
{
public:
    explicit OpenWatch(const QString& directory)
        : m_handle(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        inotify_add_watch(m_handle, QFile::encodeName(directory).constData(), IN_OPEN);
    }
    ~OpenWatch()
    {
        close(m_handle);
    }
    Q_DISABLE_COPY_MOVE(OpenWatch)

    /// The names of the files that were opened since the last call, each once.
    QStringList take()
    {
        QStringList names;
        std::vector<char> buffer(size_t(64) * 1024);
        for (;;) {
            const auto size = read(m_handle, buffer.data(), buffer.size());
            if (size <= 0)
                break;
            for (qsizetype at = 0; at < size;) {
                inotify_event event = {};
                std::memcpy(&event, buffer.data() + at, sizeof event);
                const char* name = buffer.data() + at + sizeof event;
                // The directory itself has none.
                if (event.len > 0)
                    names.append(QFile::decodeName(name));
                at += qsizetype(sizeof event + event.len);
            }
        }
        names.removeDuplicates();
        names.sort();
        return names;
    }

private:
    int m_handle = -1;
};
#endif

bool writeBytes(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Runs @p statements on the table.
bool runOnTable(const QString& table, const QStringList& statements)
{
    bool isDone = true;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"attack"_s);
        database.setDatabaseName(table);
        isDone = database.open();
        for (const QString& statement : statements)
            isDone = isDone && QSqlQuery(database).exec(statement);
        database.close();
    }
    QSqlDatabase::removeDatabase(u"attack"_s);
    return isDone;
}

/// Says how an index does where Qt has no plugin for SQLite.
int runWithoutDriver(const QString& root, const QString& table)
{
    QCoreApplication::setLibraryPaths({});
    if (QSqlDatabase::isDriverAvailable(u"QSQLITE"_s))
        return EXIT_FAILURE;
    Host host(root, table);
    const QString early = host.firstWrong();
    if (!host.build())
        return EXIT_FAILURE;
    // There is no store that could ever be built.
    host.index.waitUntilSearchBuilt(kPatienceMs);
    QStringList found;
    const QList<VLSearchHit> hits = host.index.search(textOf(3, 2), QLocale::c());
    for (const VLSearchHit& hit : hits) {
        if (hit.snippet.contains(u"<b>2</b> <b>of</b> <b>3</b>"_s))
            found.append(hit.key);
    }
    std::printf("problems %s wrong %s%s, found %s", qPrintable(host.problems.join(u' ')),
                qPrintable(early), qPrintable(host.firstWrong()), qPrintable(found.join(u' ')));
    writeBytes(root + u"/Control/"_s + nameOf(0), "<vidlets><vidlet key='k'>1</vidlet></vidlets>");
    host.index.refresh();
    std::printf(", after an edit %s wrong %s\n", qPrintable(host.text(u"k"_s)),
                qPrintable(host.firstWrong()));
    return host.problems.size() == 1 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

class TestVLKeyTableCache : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void cacheFile_isInCacheLocation_byDefault();
    void start_readsNoFile_withValidTable();
    void start_readsWhatHasChanged();
    void start_readsWhatMayHaveChangedUnseen();
    void start_seesFileOfEqualSizeAndTime();
    void start_tellsOfBrokenFilesAgain();
    void start_servesNestedRoots();
    void lookup_readsTipsOnly_whenRowsAreOnDisk();
    void edit_isToldOf_andKept();
    void edit_seenByLookup_isKept();
    void removal_isToldOf_andKept();
    void filesThatHaveGone_areForgotten_withOthers();
    void clear_readsAnew();
    void setCacheFile_movesTable();
    void emptyCacheFile_writesNothing();
    void useless_isPutAside_data();
    void useless_isPutAside();
    void unusable_isDoneWithout_data();
    void unusable_isDoneWithout();
    void damage_whileRunning_isDoneWithout();
    void cutTable_answersRight();
    void flippedBits_answerRight();
    void lockedTable_isDoneWithout();
    void fullDisk_isDoneWithout();
    void limitedFileSize_isDoneWithout();
    void missingDriver_isDoneWithout();
    void tableOfAnotherProcess_isNotTakenForOwn();
    void changed_namesWhatWasGiven_whenAnotherWroteFirst();
    void application_mayEnd_whileWordsAreRead();
    void twoProcesses_buildAtOnce();
    void killedBuild_leavesNothingWrong();

private:
    /// Begins with a new package.
    void prepareFiles(int count = kFiles)
    {
        m_files = std::make_unique<PackageBuilder>();
        writeFiles(count);
    }
    void writeFiles(int count)
    {
        for (int i = 0; i < count; ++i)
            m_files->writeControlFile(u"P.vidlets"_s, nameOf(i), controlFile(i));
        // The clock of the file system is a coarse one.
        QThread::msleep(20);
    }
    QString write(int file, const QByteArray& content)
    {
        return m_files->writeControlFile(u"P.vidlets"_s, nameOf(file), content);
    }
    QString root() const
    {
        return m_files->path(u"P.vidlets"_s);
    }
    QString table() const
    {
        return m_files->path(u"cache/keys.sqlite"_s);
    }
    /// Makes a valid table.
    void buildTable()
    {
        Host host(root(), table());
        QVERIFY(host.build());
        QCOMPARE(host.problems, QStringList());
    }
    void checkHost(const QStringList& problems);

    std::unique_ptr<PackageBuilder> m_files;
};

void TestVLKeyTableCache::initTestCase()
{
    VLIndexHooks::settledAfterMs = 10;
}

void TestVLKeyTableCache::cleanupTestCase()
{
    QVERIFY(QSqlDatabase::connectionNames().isEmpty());
}

/// Checks a host that starts now: while it builds, with its table, and at the next start.
void TestVLKeyTableCache::checkHost(const QStringList& problems)
{
    for (const bool isBuilt : {false, true}) {
        Host host(root(), table());
        if (isBuilt)
            QVERIFY(host.build());
        QCOMPARE(host.firstWrong(), QString());
        QVERIFY(host.build());
        QCOMPARE(host.firstWrong(), QString());
        if (!isBuilt)
            QCOMPARE(host.problems, problems);
    }
}

void TestVLKeyTableCache::cacheFile_isInCacheLocation_byDefault()
{
    prepareFiles();
    VLContext context;
    VLKeyTableIndex index(&context, {});
    const QString file = index.cacheFile();
    QCOMPARE(QFileInfo(file).absolutePath(),
             QStandardPaths::writableLocation(QStandardPaths::CacheLocation));
    index.indexControlFile(root() + u"/Control/"_s + nameOf(0), root());
    QVERIFY(!QFile::exists(file));
    QVERIFY(index.waitUntilBuilt(kPatienceMs));
    QVERIFY(QFile::exists(file));
}

void TestVLKeyTableCache::start_readsNoFile_withValidTable()
{
#ifdef Q_OS_LINUX
    prepareFiles();
    OpenWatch watch(root() + u"/Control"_s);
    buildTable();
    QCOMPARE(watch.take().size(), kFiles);
    Host host(root(), table());
    QVERIFY(host.index.isBuilt());
    QVERIFY(host.build());
    QCOMPARE(watch.take(), QStringList());
    QCOMPARE(host.firstWrong(1), QString());
    QCOMPARE(watch.take(), QStringList{nameOf(0)});
    QCOMPARE(host.firstWrong(), QString());
    QCOMPARE(host.problems, QStringList());
    QCOMPARE(host.changes.size(), 0);
#else
    QSKIP("Nothing tells which files are opened.");
#endif
}

void TestVLKeyTableCache::start_readsWhatHasChanged()
{
#ifdef Q_OS_LINUX
    prepareFiles();
    buildTable();
    write(3, "<vidlets><vidlet key='new'>1</vidlet></vidlets>");
    write(kFiles, "<vidlets><vidlet key='added'>2</vidlet></vidlets>");
    QFile::remove(root() + u"/Control/"_s + nameOf(4));
    OpenWatch watch(root() + u"/Control"_s);
    Host host(root(), table());
    QCOMPARE(host.text(u"new"_s), u"1"_s);
    QCOMPARE(host.text(u"added"_s), u"2"_s);
    QCOMPARE(host.text(keyOf(3, 1)), u"none"_s);
    QCOMPARE(host.text(keyOf(4, 1)), u"none"_s);
    QVERIFY(host.build());
    QCOMPARE(watch.take(), QStringList({nameOf(3), nameOf(kFiles)}));
    QCOMPARE(host.text(keyOf(2, 1)), textOf(2, 1));
    QVERIFY(host.index.keys().contains(u"new"_s));
#else
    QSKIP("Nothing tells which files are opened.");
#endif
}

void TestVLKeyTableCache::start_readsWhatMayHaveChangedUnseen()
{
#ifdef Q_OS_LINUX
    prepareFiles();
    VLIndexHooks::settledAfterMs = kUsualSettledAfterMs;
    buildTable();
    OpenWatch watch(root() + u"/Control"_s);
    {
        Host host(root(), table());
        QVERIFY(!host.index.isBuilt());
        QVERIFY(host.build());
        QCOMPARE(watch.take().size(), kFiles);
    }
    VLIndexHooks::settledAfterMs = 10;
    buildTable();
    watch.take();
    // What comes from the future is never settled.
    QFile file(root() + u"/Control/"_s + nameOf(0));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addDays(1),
                             QFileDevice::FileModificationTime));
    file.close();
    buildTable();
    watch.take();
    Host host(root(), table());
    QVERIFY(host.build());
    QCOMPARE(watch.take(), QStringList{nameOf(0)});
#else
    QSKIP("Nothing tells which files are opened.");
#endif
}

void TestVLKeyTableCache::start_seesFileOfEqualSizeAndTime()
{
    prepareFiles();
    const QString path = write(0, "<vidlets><vidlet key='k'>1</vidlet></vidlets>");
    QThread::msleep(20);
    buildTable();
    const QDateTime time = QFileInfo(path).lastModified();
    write(0, "<vidlets><vidlet key='l'>2</vidlet></vidlets>");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
    file.close();
    Host host(root(), table());
    QCOMPARE(host.text(u"k"_s), u"none"_s);
    QCOMPARE(host.text(u"l"_s), u"2"_s);
}

void TestVLKeyTableCache::start_tellsOfBrokenFilesAgain()
{
    prepareFiles();
    write(0, "<vidlets><vidlet key='k'>1</vidlet><vidlet>");
    QThread::msleep(20);
    {
        Host host(root(), table());
        QVERIFY(host.build());
        QCOMPARE(host.problems.size(), 1);
    }
    Host host(root(), table());
    QVERIFY(host.index.isBuilt());
    QVERIFY(host.build());
    QCOMPARE(host.problems.size(), 1);
    QVERIFY(host.problems.constFirst().startsWith(nameOf(0) + u":1:"_s));
    QCOMPARE(host.text(u"k"_s), u"none"_s);
    write(0, "<vidlets><vidlet key='k'>1</vidlet></vidlets>");
    host.index.refresh();
    QCOMPARE(host.text(u"k"_s), u"1"_s);
}

void TestVLKeyTableCache::start_servesNestedRoots()
{
    prepareFiles();
    write(kFiles,
          "<vidlets><vidlets><vidlet key='k'>1</vidlet></vidlets>"
          "<vidlet key='key.0.0'/></vidlets>");
    QThread::msleep(20);
    for (int start = 0; start < 2; ++start) {
        Host host(root(), table());
        QVERIFY(host.build());
        QVERIFY(host.text(u"any"_s) != "none"_L1);
        // It stands beside the own tip of the file, so that the next file answers.
        QCOMPARE(host.text(keyOf(0, 0)), textOf(0, 0));
        QVERIFY(host.text(keyOf(0, 1)) != textOf(0, 1));
    }
}

void TestVLKeyTableCache::lookup_readsTipsOnly_whenRowsAreOnDisk()
{
    prepareFiles();
    Host host(root(), table());
    QVERIFY(host.build());
    QVERIFY(runOnTable(table(), {u"PRAGMA wal_checkpoint(TRUNCATE)"_s}));
    QCOMPARE(host.firstWrong(), QString());
    QCOMPARE(host.problems, QStringList());
    // Lookups go by the table: without it they find out at once.
    QVERIFY(runOnTable(table(), {u"DELETE FROM buckets"_s}));
    QCOMPARE(host.text(u"another"_s), u"none"_s);
    QCOMPARE(host.problems, QStringList{u"keys.sqlite:0:0"_s});
}

void TestVLKeyTableCache::edit_isToldOf_andKept()
{
    prepareFiles();
    buildTable();
    {
        Host host(root(), table());
        QVERIFY(host.build());
        write(0,
              "<vidlets><vidlet key='key.0.0'>text 0 of 0</vidlet>"
              "<vidlet key='key.0.1'>other</vidlet><vidlet key='new'>n</vidlet></vidlets>");
        QThread::msleep(20);
        host.index.refresh();
        QVERIFY(host.build());
        QCOMPARE(host.text(u"new"_s), u"n"_s);
        QTRY_COMPARE(host.changes.size(), 1);
        const QStringList& keys = host.changes.constFirst();
        QVERIFY(!keys.contains(keyOf(0, 0)));
        for (const QString& key : {keyOf(0, 1), keyOf(0, kTips - 1), u"new"_s})
            QVERIFY2(keys.contains(key), qPrintable(key));
        QCOMPARE(keys.size(), kTips);
    }
    Host host(root(), table());
    QVERIFY(host.index.isBuilt());
    QCOMPARE(host.text(keyOf(0, 1)), u"other"_s);
    QCOMPARE(host.text(keyOf(0, 2)), u"none"_s);
}

void TestVLKeyTableCache::edit_seenByLookup_isKept()
{
    prepareFiles();
    buildTable();
    {
        Host host(root(), table());
        QVERIFY(host.build());
        write(0, "<vidlets> <vidlet key='key.0.0'>text 0 of 0</vidlet></vidlets>");
        QThread::msleep(20);
        QCOMPARE(host.text(keyOf(0, 0)), textOf(0, 0));
        QTRY_COMPARE(host.changes.size(), 1);
        QCOMPARE(host.changes.constFirst().size(), kTips - 1);
        QVERIFY(host.build());
    }
#ifdef Q_OS_LINUX
    OpenWatch watch(root() + u"/Control"_s);
    Host host(root(), table());
    QVERIFY(host.build());
    QCOMPARE(watch.take(), QStringList());
#endif
}

void TestVLKeyTableCache::removal_isToldOf_andKept()
{
    prepareFiles();
    buildTable();
    Host host(root(), table());
    QVERIFY(host.build());
    QFile::remove(root() + u"/Control/"_s + nameOf(5));
    QCOMPARE(host.text(keyOf(5, 5)), u"none"_s);
    QTRY_COMPARE(host.changes.size(), 1);
    QCOMPARE(host.changes.constFirst().size(), kTips);
    QVERIFY(host.build());
    // As it was before, and none of its rows is left over.
    write(5, controlFile(5, 2));
    host.index.refresh();
    QVERIFY(host.build());
    QCOMPARE(host.text(keyOf(5, 1)), textOf(5, 1));
    QCOMPARE(host.text(keyOf(5, 2)), u"none"_s);
}

void TestVLKeyTableCache::filesThatHaveGone_areForgotten_withOthers()
{
    prepareFiles();
    buildTable();
    // Of another host that shares the table.
    PackageBuilder others;
    const QString gone = others.writeControlFile(u"P.vidlets"_s, u"gone.xml"_s, controlFile(20));
    const QString kept = others.writeControlFile(u"P.vidlets"_s, u"kept.xml"_s, controlFile(21));
    {
        Host other(others.path(u"P.vidlets"_s), table());
        QVERIFY(other.build());
    }
    QVERIFY(QFile::remove(gone));
    QVERIFY(QFile::remove(root() + u"/Control/"_s + nameOf(0)));
    // It has something to write, and asks about the rest as well.
    write(1, controlFile(1));
    Host host(root(), table());
    QVERIFY(host.build());
    QHash<QString, VLKeyTableFile> files;
    VLKeyTableStore store(table(), VLKeyTableStore::Access::Read);
    QVERIFY(store.open());
    QVERIFY(store.files(files));
    QVERIFY(files.contains(kept));
    QVERIFY(!files.contains(gone));
    QVERIFY(!files.contains(root() + u"/Control/"_s + nameOf(0)));
    QCOMPARE(files.size(), kFiles);
    write(0, controlFile(0));
    Host other(root(), table());
    QCOMPARE(other.firstWrong(), QString());
    QCOMPARE(other.problems, QStringList());
}

void TestVLKeyTableCache::clear_readsAnew()
{
#ifdef Q_OS_LINUX
    prepareFiles();
    buildTable();
    Host host(root(), table());
    QVERIFY(host.build());
    OpenWatch watch(root() + u"/Control"_s);
    QVERIFY(host.index.clear());
    QVERIFY(host.build());
    QCOMPARE(watch.take().size(), kFiles);
    QCOMPARE(host.firstWrong(), QString());
    QCOMPARE(host.changes.size(), 0);
#else
    QSKIP("Nothing tells which files are opened.");
#endif
}

void TestVLKeyTableCache::setCacheFile_movesTable()
{
    prepareFiles();
    Host host(root(), QString());
    QVERIFY(host.build());
    host.index.setCacheFile(table());
    QCOMPARE(host.index.cacheFile(), table());
    QCOMPARE(host.firstWrong(2), QString());
    QVERIFY(host.build());
    QVERIFY(QFile::exists(table()));
    QCOMPARE(host.firstWrong(), QString());
    host.index.setCacheFile(QString());
    QFile::remove(table());
    QCOMPARE(host.firstWrong(), QString());
    QVERIFY(host.build());
    QCOMPARE(host.firstWrong(), QString());
    QVERIFY(!QFile::exists(table()));
    QCOMPARE(host.problems, QStringList());
    QCOMPARE(host.changes.size(), 0);
}

void TestVLKeyTableCache::emptyCacheFile_writesNothing()
{
    prepareFiles();
    const QDir directory(QStandardPaths::writableLocation(QStandardPaths::CacheLocation));
    QFile::remove(directory.filePath(u"vidlets-keys.sqlite"_s));
    Host host(root(), QString());
    QVERIFY(host.build());
    QCOMPARE(host.firstWrong(), QString());
    QVERIFY(host.index.cacheFile().isEmpty());
    QVERIFY(!directory.exists(u"vidlets-keys.sqlite"_s));
}

void TestVLKeyTableCache::useless_isPutAside_data()
{
    QTest::addColumn<QString>("attack");

    QTest::newRow("text") << u"text"_s;
    QTest::newRow("no header") << u"header"_s;
    QTest::newRow("other version") << u"PRAGMA user_version = 99"_s;
    QTest::newRow("another program's") << u"PRAGMA application_id = 99"_s;
    QTest::newRow("no table") << u"DROP TABLE names"_s;
    QTest::newRow("no record of files") << u"DELETE FROM chunks WHERE id = 17"_s;
    QTest::newRow("a record of another place")
        << u"UPDATE chunks SET data = (SELECT data FROM chunks WHERE id = 1) WHERE id = 2"_s;
    QTest::newRow("no name") << u"DELETE FROM chunks WHERE id = 257"_s;
}

void TestVLKeyTableCache::useless_isPutAside()
{
    QFETCH(const QString, attack);
    prepareFiles();
    buildTable();
    if (attack == "text"_L1)
        QVERIFY(writeBytes(table(), QByteArray(9000, 'x')));
    else if (attack == "header"_L1)
        QVERIFY(writeBytes(table(), QByteArray(100, '\0') + bytesOf(table()).mid(100)));
    else
        QVERIFY(runOnTable(table(), {attack}));
    checkHost({u"keys.sqlite:0:0"_s});
    QVERIFY(QFile::exists(table() + u".damaged"_s));
    // The new one is sound.
    checkHost({});
}

void TestVLKeyTableCache::unusable_isDoneWithout_data()
{
    QTest::addColumn<QString>("attack");

    QTest::newRow("directory") << u"directory"_s;
    QTest::newRow("below a file") << u"below"_s;
    QTest::newRow("pipe") << u"pipe"_s;
    QTest::newRow("without permission") << u"permission"_s;
    QTest::newRow("read-only") << u"readonly"_s;
}

void TestVLKeyTableCache::unusable_isDoneWithout()
{
#ifdef Q_OS_LINUX
    QFETCH(const QString, attack);
    prepareFiles();
    QString cache = table();
    const auto restore = qScopeGuard([this] {
        if (getuid() == 0)
            QCOMPARE(seteuid(0), 0);
        chmod(QFile::encodeName(QFileInfo(table()).absolutePath()).constData(), 0755);
    });
    if (attack == "directory"_L1) {
        QVERIFY(QDir().mkpath(cache));
    } else if (attack == "below"_L1) {
        cache = root() + u"/Control/"_s + nameOf(0) + u"/keys.sqlite"_s;
    } else if (attack == "pipe"_L1) {
        QVERIFY(QDir().mkpath(QFileInfo(cache).absolutePath()));
        QCOMPARE(mkfifo(QFile::encodeName(cache).constData(), 0600), 0);
    } else {
        buildTable();
        const mode_t mode = attack == "permission"_L1 ? 0 : 0444;
        QCOMPARE(chmod(QFile::encodeName(cache).constData(), mode), 0);
        QCOMPARE(chmod(QFile::encodeName(QFileInfo(cache).absolutePath()).constData(), 0555), 0);
        // Nothing is refused to the superuser.
        const QString home = QFileInfo(m_files->dataPath()).absolutePath();
        QCOMPARE(chmod(QFile::encodeName(home).constData(), 0755), 0);
        write(0, controlFile(0));
        constexpr uid_t kNobody = 65534;
        if (geteuid() == 0)
            QCOMPARE(seteuid(kNobody), 0);
    }
    {
        Host host(root(), cache);
        QCOMPARE(host.firstWrong(), QString());
        QVERIFY(host.build());
        QCOMPARE(host.firstWrong(), QString());
        QCOMPARE(host.problems, QStringList{u"keys.sqlite:0:0"_s});
    }
#else
    QSKIP("Made of what Linux has.");
#endif
}

void TestVLKeyTableCache::damage_whileRunning_isDoneWithout()
{
    prepareFiles();
    Host host(root(), table());
    QVERIFY(host.build());
    QCOMPARE(host.firstWrong(2), QString());
    QByteArray bytes = bytesOf(table());
    QVERIFY(bytes.size() > 8192);
    QVERIFY(runOnTable(table(), {u"UPDATE buckets SET data = zeroblob(40)"_s}));
    QCOMPARE(host.firstWrong(), QString());
    QVERIFY(host.build());
    QCOMPARE(host.firstWrong(), QString());
    QCOMPARE(host.problems, QStringList{u"keys.sqlite:0:0"_s});
    QVERIFY(QFile::exists(table() + u".damaged"_s));
    QVERIFY(host.index.cacheFile().isEmpty());
    QVERIFY(host.changes.isEmpty());
}

void TestVLKeyTableCache::cutTable_answersRight()
{
    prepareFiles();
    buildTable();
    const QByteArray sound = bytesOf(table());
    constexpr int kCuts = 10;
    for (int i = 0; i < kCuts; ++i) {
        QVERIFY(writeBytes(table(), sound.left(sound.size() * i / kCuts)));
        Host host(root(), table());
        QCOMPARE(host.firstWrong(), QString());
        QVERIFY(host.build());
        QCOMPARE(host.firstWrong(), QString());
        // Nothing at all is what a new table is made in.
        QCOMPARE(host.problems.size(), i == 0 ? 0 : 1);
    }
}

void TestVLKeyTableCache::flippedBits_answerRight()
{
    prepareFiles();
    buildTable();
    const QByteArray sound = bytesOf(table());
    const quint32 seed = 20261122;
    QRandomGenerator random(seed);
    constexpr int kRounds = 40;
    constexpr int kFlips = 40;
    for (int i = 0; i < kRounds; ++i) {
        QByteArray bytes = sound;
        for (int j = 0; j < kFlips; ++j) {
            const int place = random.bounded(int(bytes.size()));
            bytes[place] = char(bytes.at(place) ^ (1 << random.bounded(8)));
        }
        QFile::remove(table() + u"-wal"_s);
        QFile::remove(table() + u"-shm"_s);
        QVERIFY(writeBytes(table(), bytes));
        Host host(root(), table());
        if (i % 2 == 0)
            QVERIFY(host.build());
        QCOMPARE(host.firstWrong(), QString());
        QVERIFY(host.build());
        QVERIFY2(host.problems.size() <= 1, qPrintable(host.problems.join(u' ')));
    }
}

void TestVLKeyTableCache::lockedTable_isDoneWithout()
{
    prepareFiles();
    buildTable();
    write(0, controlFile(0));
    write(1, "<vidlets/>");
    QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"lock"_s);
    database.setDatabaseName(table());
    QVERIFY(database.open());
    QVERIFY(QSqlQuery(database).exec(u"BEGIN IMMEDIATE"_s));
    {
        Host host(root(), table());
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(host.text(keyOf(0, 0)), textOf(0, 0));
        QCOMPARE(host.text(keyOf(1, 0)), u"none"_s);
        QVERIFY(host.build());
        QCOMPARE(host.text(keyOf(2, 0)), textOf(2, 0));
        QCOMPARE(host.problems, QStringList{u"keys.sqlite:0:0"_s});
    }
    database.close();
    database = QSqlDatabase();
    QSqlDatabase::removeDatabase(u"lock"_s);
    QVERIFY(!QFile::exists(table() + u".damaged"_s));
}

void TestVLKeyTableCache::fullDisk_isDoneWithout()
{
#ifdef Q_OS_LINUX
    prepareFiles();
    const QString directory = QFileInfo(table()).absolutePath();
    QVERIFY(QDir().mkpath(directory));
    const QByteArray target = QFile::encodeName(directory);
    if (mount("tmpfs", target.constData(), "tmpfs", 0, "size=128k") != 0)
        QSKIP("No file system can be mounted.");
    {
        Host host(root(), table());
        QCOMPARE(host.firstWrong(3), QString());
        QVERIFY(host.build());
        QCOMPARE(host.firstWrong(), QString());
        QCOMPARE(host.problems, QStringList{u"keys.sqlite:0:0"_s});
        write(0, "<vidlets><vidlet key='k'>1</vidlet></vidlets>");
        host.index.refresh();
        QCOMPARE(host.text(u"k"_s), u"1"_s);
        QVERIFY(host.build());
        QCOMPARE(host.problems.size(), 1);
    }
    QCOMPARE(umount(target.constData()), 0);
#else
    QSKIP("Made of what Linux has.");
#endif
}

void TestVLKeyTableCache::limitedFileSize_isDoneWithout()
{
    prepareFiles();
    qputenv("VIDLETS_TEST_ROOT", root().toUtf8());
    qputenv("VIDLETS_TEST_TABLE", table().toUtf8());
    const ChildResult result = runInChildProcess(u"limited"_s);
    QVERIFY(result.finished && !result.crashed);
    QCOMPARE(result.exitCode, EXIT_SUCCESS);
    QCOMPARE(result.standardOutput.trimmed(), "problems keys.sqlite:0:0 wrong");
    checkHost({});
}

void TestVLKeyTableCache::missingDriver_isDoneWithout()
{
    prepareFiles();
    qputenv("VIDLETS_TEST_ROOT", root().toUtf8());
    qputenv("VIDLETS_TEST_TABLE", table().toUtf8());
    const ChildResult result = runInChildProcess(u"driverless"_s);
    QVERIFY(result.finished && !result.crashed);
    QVERIFY2(!result.standardError.contains("QSql"), result.standardError.constData());
    QCOMPARE(result.standardOutput.trimmed(),
             "problems keys.sqlite:0:0 wrong , found key.3.2, after an edit 1 wrong key.0.0");
    QCOMPARE(result.exitCode, EXIT_SUCCESS);
    QVERIFY(!QFile::exists(table()));
    write(0, controlFile(0));
    checkHost({});
}

void TestVLKeyTableCache::tableOfAnotherProcess_isNotTakenForOwn()
{
    prepareFiles();
    Host host(root(), table());
    QVERIFY(host.build());
    // As another process does that finds it damaged; the one that it makes knows of one file.
    for (const QString& suffix : {QString(), u"-wal"_s, u"-shm"_s})
        QFile::rename(table() + suffix, table() + suffix + u".damaged"_s);
    {
        VLContext context;
        VLKeyTableIndex other(&context, {});
        other.setCacheFile(table());
        other.indexControlFile(root() + u"/Control/"_s + nameOf(7), root());
        QVERIFY(other.waitUntilBuilt(kPatienceMs));
    }
    QCOMPARE(host.firstWrong(), QString());
    write(0, "<vidlets><vidlet key='k'>1</vidlet></vidlets>");
    host.index.refresh();
    QVERIFY(host.build());
    QCOMPARE(host.text(u"k"_s), u"1"_s);
    write(0, controlFile(0));
    host.index.refresh();
    QVERIFY(host.build());
    QCOMPARE(host.firstWrong(), QString());
}

void TestVLKeyTableCache::changed_namesWhatWasGiven_whenAnotherWroteFirst()
{
    prepareFiles(1);
    Host host(root(), table());
    Host other(root(), table());
    for (Host* each : {&host, &other}) {
        each->index.setWatching(false);
        QVERIFY(each->build());
        QCOMPARE(each->text(keyOf(0, 3)), textOf(0, 3));
    }
    write(0, controlFile(0, 3));
    for (Host* each : {&other, &host}) {
        each->index.refresh();
        QVERIFY(each->build());
        QTRY_VERIFY_WITH_TIMEOUT(!each->changes.isEmpty(), kPatienceMs);
        QVERIFY(each->changes.constFirst().contains(keyOf(0, 3)));
    }
}

void TestVLKeyTableCache::application_mayEnd_whileWordsAreRead()
{
    constexpr int kMany = 100;
    constexpr int kRounds = 12;
    prepareFiles(1);
    for (int file = 0; file < kMany; ++file)
        write(file, controlFile(file, 60));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"VIDLETS_TEST_ROOT"_s, root());
    environment.insert(u"VIDLETS_TEST_TABLE"_s, table());
    for (int round = 0; round < kRounds; ++round) {
        environment.insert(u"VIDLETS_TEST_MS"_s, QString::number(round * 5));
        QProcess child;
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(), {u"--child"_s, u"left"_s});
        QVERIFY(child.waitForFinished(kPatienceMs));
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), EXIT_SUCCESS);
        QVERIFY(!child.readAllStandardError().contains("not open"));
        QFile::remove(table() + u"-search"_s);
    }
}

void TestVLKeyTableCache::twoProcesses_buildAtOnce()
{
    constexpr int kMany = 30;
    prepareFiles(kMany);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"VIDLETS_TEST_ROOT"_s, root());
    environment.insert(u"VIDLETS_TEST_TABLE"_s, table());
    for (int round = 0; round < 5; ++round) {
        std::vector<std::unique_ptr<QProcess>> children;
        for (int i = 0; i < 2; ++i) {
            children.push_back(std::make_unique<QProcess>());
            children.back()->setProcessEnvironment(environment);
            children.back()->start(QCoreApplication::applicationFilePath(),
                                   {u"--child"_s, u"build"_s});
        }
        for (const auto& child : children) {
            QVERIFY(child->waitForFinished(kPatienceMs));
            QCOMPARE(child->readAllStandardOutput().trimmed(), "problems  wrong");
            QCOMPARE(child->exitStatus(), QProcess::NormalExit);
        }
        Host host(root(), table());
        QVERIFY(host.build());
        QCOMPARE(host.firstWrong(kMany), QString());
        QCOMPARE(host.problems, QStringList());
        if (round % 2 == 0)
            QFile::remove(table());
        else
            writeFiles(kMany / 2);
    }
}

void TestVLKeyTableCache::killedBuild_leavesNothingWrong()
{
    bool isNumber = false;
    const int wanted = qEnvironmentVariableIntValue("VIDLETS_KILLS", &isNumber);
    const int kills = isNumber ? wanted : kDefaultKills;
    constexpr int kMany = 30;
    prepareFiles(kMany);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"VIDLETS_TEST_ROOT"_s, root());
    environment.insert(u"VIDLETS_TEST_TABLE"_s, table());
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u, %d kills", seed, kills);
    QRandomGenerator random(seed);
    int left = 0;
    for (int i = 0; i < kills; ++i) {
        QProcess child;
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(), {u"--child"_s, u"builds"_s});
        QVERIFY(child.waitForReadyRead(kPatienceMs));
        QThread::usleep(random.bounded(150'000));
        child.kill();
        QVERIFY(child.waitForFinished(kPatienceMs));
        left += QFile::exists(table() + u"-wal"_s) ? 1 : 0;
        Host host(root(), table());
        QCOMPARE(host.firstWrong(kMany), QString());
        QVERIFY(host.build());
        QCOMPARE(host.firstWrong(kMany), QString());
        QCOMPARE(host.problems, QStringList());
        if (random.bounded(3) == 0)
            QFile::remove(table());
    }
    qInfo("%d of them were killed with the table open", left);
    QVERIFY(left > 0);
}

int TestVLKeyTableCache::runChild(const QString& name)
{
    const QString root = qEnvironmentVariable("VIDLETS_TEST_ROOT");
    const QString table = qEnvironmentVariable("VIDLETS_TEST_TABLE");
    VLIndexHooks::settledAfterMs = 10;
#ifdef Q_OS_LINUX
    if (name == "limited"_L1) {
        // A write beyond it fails, as on a full disk.
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{65536, 65536};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
#endif
    if (name == "left"_L1) {
        // It outlives the application.
        static Host host(root, table);
        host.build();
        QEventLoop loop;
        QTimer::singleShot(qEnvironmentVariableIntValue("VIDLETS_TEST_MS"), &loop,
                           &QEventLoop::quit);
        loop.exec();
        return EXIT_SUCCESS;
    }
    if (name == "driverless"_L1)
        return runWithoutDriver(root, table);
    // Told before, so that it is killed at any step.
    if (name == "builds"_L1) {
        std::printf("ready\n");
        std::fflush(stdout);
    }
    QElapsedTimer timer;
    timer.start();
    do {
        Host host(root, table);
        if (!host.build())
            return EXIT_FAILURE;
        if (name == "builds"_L1) {
            host.index.clear();
            host.build();
            continue;
        }
        const QDir control(root + u"/Control"_s);
        const int count = int(control.entryList(QDir::Files).size());
        std::printf("problems %s wrong %s\n", qPrintable(host.problems.join(u' ')),
                    qPrintable(host.firstWrong(count)));
    } while (name == "builds"_L1 && !timer.hasExpired(kPatienceMs));
    return EXIT_SUCCESS;
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLKeyTableCache>(argc, argv);
}

#include "tst_vlkeytablecache.moc"
