// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "RandomPackages.h"
#include "TreeText.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLIndexHooks.h>
#include <Vidlets/VLXmlElement.h>

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QThread>
#include <QXmlStreamReader>

#include <cstdio>
#include <functional>
#include <memory>

#include <VidletsHost/VLKeyTableIndex.h>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 60000;
constexpr quint32 kDefaultSeed = 20260811;
constexpr int kDefaultPackages = 1000;
// The run with safeguards, which are set by chance here anyway, gets packages of its own.
constexpr quint32 kSafeguardedSeed = 20290811;
// Longer than the clock of a file system stands still.
constexpr int kSettledAfterMs = 20;
// As many as one scenario may have.
constexpr int kMaxPackages = 6;

quint32 numberFromEnvironment(const char* name, quint32 otherwise)
{
    bool isNumber = false;
    const quint32 number = qEnvironmentVariable(name).toUInt(&isNumber);
    return isNumber ? number : otherwise;
}

/// Keeps the lines on broken files, which VLIndex writes to standard output, out of the log.
class QuietOutput
{
public:
    QuietOutput()
    {
#ifdef Q_OS_UNIX
        std::fflush(stdout);
        m_saved = dup(STDOUT_FILENO);
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
#endif
    }
    ~QuietOutput()
    {
#ifdef Q_OS_UNIX
        std::fflush(stdout);
        dup2(m_saved, STDOUT_FILENO);
        close(m_saved);
#endif
    }
    Q_DISABLE_COPY_MOVE(QuietOutput)

private:
    int m_saved = -1;
};

template <typename Function> auto quietly(Function function)
{
    const QuietOutput quiet;
    return function();
}

/// How a file ends for who parses it to its end.
struct Ending
{
    bool isOpened = false;
    bool isFault = false;
    int openTags = 0;
    QString rootTag;
};

Ending endingOf(const QString& path)
{
    Ending ending;
    QFile file(path);
    ending.isOpened = file.open(QIODevice::ReadOnly);
    if (!ending.isOpened)
        return ending;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement && ending.openTags++ == 0)
            ending.rootTag = xml.qualifiedName().toString();
        else if (token == QXmlStreamReader::EndElement)
            --ending.openTags;
    }
    ending.isFault = xml.hasError();
    return ending;
}

/// Whether VLIndex gets through lookups and lists with the control file @p path.
bool isSurvived(const QString& path)
{
    const Ending ending = endingOf(path);
    if (!ending.isOpened)
        return true;
    if (ending.isFault && ending.openTags != 1)
        return false;
    return ending.rootTag == "vidlets"_L1 || ending.rootTag == "vidlet"_L1;
}

bool isKeyDataSurvived(const QString& path)
{
    const Ending ending = endingOf(path);
    return !ending.isOpened || !ending.isFault || ending.openTags > 0;
}

/// All that a lookup gives, as text.
QString answerOf(VLIndex& index, const QString& key, const QLocale& locale)
{
    QString path = u"-"_s;
    int depth = -1;
    VLXmlElement* root = nullptr;
    const VLXmlElement* element = index.retrieve(key, locale, path, depth, root);
    if (!element)
        return u"none %1 %2"_s.arg(path).arg(depth);
    const std::unique_ptr<VLXmlElement> tree(root);
    QString text =
        textOfTree(element) + u" in "_s + root->getTagName() + u'|' + root->getTagNameSpace();
    const QList<QString> names = root->attributeNames();
    for (const QString& name : names)
        text += u"|%1=%2"_s.arg(name, root->attribute(name));
    return text + u" at %1 %2 %3"_s.arg(path).arg(depth).arg(root->children().size());
}

/// An index that is told what a host does with it.
struct Candidate
{
    std::unique_ptr<VLIndex> index;
    std::function<void()> refresh;
    std::function<void()> wait;
};

/// Makes an index that keeps its table in the given file.
using MakeCandidate = std::function<Candidate(VLContext&, const QString&)>;

Candidate makeTable(VLContext& context, const QString& cacheFile)
{
    auto table = std::make_unique<VLKeyTableIndex>(&context, QStringList());
    table->setCacheFile(cacheFile);
    VLKeyTableIndex* index = table.get();
    return {std::move(table), [index] { index->refresh(); },
            [index] { QVERIFY(index->waitUntilBuilt(kPatienceMs)); }};
}

/// One random set of packages, two indexes over it, and what is done to both.
class Scenario
{
public:
    Scenario(quint32 seed, const MakeCandidate& makeCandidate);

    /// Gives the first difference in a few rounds of edits and lookups; null where there is none.
    QString findDifference();

    int packages() const
    {
        return m_packages;
    }
    /// How many lookups there were, and how many among them found something.
    int lookups() const
    {
        return m_lookups;
    }
    int found() const
    {
        return m_found;
    }

private:
    /// Where the table is.
    enum class Table {
        Memory,
        Disk,
        FoundAtStart ///< On disk, and the host starts anew in each round.
    };

    /// A file as it was handed to the indexes.
    struct Recorded
    {
        QString file;
        QString root;
        bool isStored = false;
        int depth = 0;
    };

    void writePackages();
    void record(const Recorded& recorded);
    void start();
    void edit();
    QString compareLocations() const;
    QString compareAnswers();

    RandomPackages m_random;
    PackageBuilder m_files;
    VLContext m_candidateContext;
    VLContext m_baseContext;
    /// Keeps the order of search; its lookups are not asked for.
    std::unique_ptr<VLIndex> m_recorder;
    const MakeCandidate m_makeCandidate;
    Candidate m_candidate;
    QList<Recorded> m_recorded;
    Table m_table = Table::Memory;
    QString m_keyData;
    bool m_isGuarded = false;
    int m_packages = 0;
    int m_lookups = 0;
    int m_found = 0;
};

Scenario::Scenario(quint32 seed, const MakeCandidate& makeCandidate)
    : m_random(seed)
    , m_makeCandidate(makeCandidate)
    , m_table(Table(seed % 3))
{
    m_isGuarded = m_random.chance(40);
    for (VLContext* context : {&m_candidateContext, &m_baseContext}) {
        context->set(ckGuardContent, m_isGuarded);
        context->set(ckReleaseClips, true);
    }
    start();
    writePackages();
}

/// Starts the host, with what it had recorded before.
void Scenario::start()
{
    m_candidate = Candidate();
    m_recorder = std::make_unique<VLIndex>(&m_baseContext, QStringList());
    const bool isOnDisk = m_table != Table::Memory;
    m_candidate = m_makeCandidate(m_candidateContext,
                                  isOnDisk ? m_files.path(u"cache/keys.sqlite"_s) : QString());
    for (const Recorded& recorded : std::as_const(m_recorded))
        record(recorded);
}

void Scenario::writePackages()
{
    m_packages = 1 + m_random.number(kMaxPackages);
    for (int i = 0; i < m_packages; ++i) {
        const QString package = u"data%1/P%2.vidlets"_s.arg(m_random.number(3)).arg(i / 2);
        const QString root = m_files.path(package);
        const int count = m_random.number(4);
        for (int j = 0; j < count; ++j) {
            const QString name = package + u"/Control/%1-%2.xml"_s.arg(i).arg(j);
            const QString file = m_files.write(name, m_random.controlFile());
            m_recorded.append({file, root, m_random.chance(50), 1 + m_random.number(2)});
            record(m_recorded.constLast());
        }
    }
    if (m_random.chance(40)) {
        m_keyData = m_files.write(u"keys.xml"_s, m_random.keyDataFile());
        m_candidateContext.set(ckKeyDataFile, m_keyData);
    }
}

void Scenario::record(const Recorded& recorded)
{
    for (VLIndex* index : {m_recorder.get(), m_candidate.index.get()}) {
        if (recorded.isStored)
            index->store(nullptr, QLocale::c(), recorded.file, recorded.depth);
        else
            index->indexControlFile(recorded.file, recorded.root);
    }
}

void Scenario::edit()
{
    const QList<IndexedLocation> locations = VLIndexHooks::locations(*m_recorder);
    for (const IndexedLocation& entry : locations) {
        const QString path = entry.location;
        if (!m_random.chance(40))
            continue;
        const QString other = locations.at(m_random.number(int(locations.size()))).location;
        switch (m_random.number(5)) {
        case 0:
            QFile::remove(path);
            break;
        case 1:
            // As some editors write: a file of its own that takes the place of the old one.
            QFile::remove(path + u".new"_s);
            QFile::rename(other, path + u".new"_s);
            QFile::remove(path);
            QFile::rename(path + u".new"_s, path);
            break;
        case 2: {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly))
                break;
            const QByteArray content = file.readAll();
            file.close();
            m_files.write(QDir(m_files.dataPath()).relativeFilePath(path),
                          m_random.broken(content));
            break;
        }
        default:
            m_files.write(QDir(m_files.dataPath()).relativeFilePath(path), m_random.controlFile());
            break;
        }
    }
    if (!m_keyData.isEmpty() && m_random.chance(50))
        m_files.write(u"keys.xml"_s, m_random.keyDataFile());
    if (m_table == Table::FoundAtStart)
        start();
    else
        m_candidate.refresh();
}

QString Scenario::findDifference()
{
    constexpr int kRounds = 3;
    for (int round = 0; round < kRounds; ++round) {
        if (round > 0)
            edit();
        const QString difference = compareLocations();
        if (!difference.isNull())
            return difference;
        // Else the next start would go by none of it.
        if (m_table == Table::FoundAtStart)
            QThread::msleep(kSettledAfterMs + 5);
        if (m_random.chance(60))
            m_candidate.wait();
        const QString found = compareAnswers();
        if (!found.isNull())
            return u"round %1, %2, table %3: "_s.arg(round)
                       .arg(m_isGuarded ? u"guarded"_s : u"plain"_s)
                       .arg(int(m_table))
                + found;
    }
    return QString();
}

QString Scenario::compareLocations() const
{
    if (VLIndexHooks::locations(*m_recorder) == VLIndexHooks::locations(*m_candidate.index))
        return QString();
    return u"other files are recorded"_s;
}

QString Scenario::compareAnswers()
{
    // What ends the process, or comes back deleted, counts as not being there.
    VLIndex base(&m_baseContext, {});
    for (const IndexedLocation& entry : VLIndexHooks::locations(*m_recorder)) {
        if (m_isGuarded || isSurvived(entry.location))
            base.store(nullptr, QLocale::c(), entry.location, entry.depth);
    }
    const bool hasKeyData = !m_keyData.isEmpty() && (m_isGuarded || isKeyDataSurvived(m_keyData));
    m_baseContext.set(ckKeyDataFile, hasKeyData ? m_keyData : QString());

    const QStringList keys = RandomPackages::keys();
    const QStringList locales = RandomPackages::locales();
    for (const QString& key : keys) {
        for (const QString& name : locales) {
            const QString wanted = quietly([&] { return answerOf(base, key, QLocale(name)); });
            const QString given = answerOf(*m_candidate.index, key, QLocale(name));
            ++m_lookups;
            m_found += wanted.startsWith("none"_L1) ? 0 : 1;
            if (given != wanted) {
                return u"key \"%1\", locale \"%2\"\n  wanted %3\n  given  %4"_s.arg(
                    key, name, wanted.left(2000), given.left(2000));
            }
        }
    }
    const QStringList wanted = quietly([&base] { return base.keys(); });
    const QStringList given = m_candidate.index->keys();
    if (given == wanted)
        return QString();
    return u"keys\n  wanted %1\n  given  %2"_s.arg(wanted.join(u", "_s), given.join(u", "_s));
}

/// A table that is wrong in one way.
class WrongIndex : public VLKeyTableIndex
{
public:
    enum Fault {
        OtherLocale,
        AnyCase,
        LosesText,
        LosesAttribute,
        OtherDepth,
        LosesKeyData,
        ShortList,
        SearchesStoredFirst
    };

    WrongIndex(VLContext* context, Fault fault)
        : VLKeyTableIndex(context, {})
        , m_fault(fault)
    {
    }

    VLXmlElement* retrieve(const QString& key, const QLocale& locale, QString& path, int& depth,
                           VLXmlElement*& root) override
    {
        const QString keyData = context().get(ckKeyDataFile, QString()).toString();
        if (m_fault == LosesKeyData)
            context().set(ckKeyDataFile, QString());
        VLXmlElement* element = VLKeyTableIndex::retrieve(
            m_fault == AnyCase ? key.toLower() : key,
            m_fault == OtherLocale ? QLocale(locale.language()) : locale, path, depth, root);
        context().set(ckKeyDataFile, keyData);
        if (!element)
            return nullptr;
        if (m_fault == LosesText)
            element->setContent(element->content().trimmed());
        if (m_fault == LosesAttribute && element->hasAttribute(u"title"_s))
            element->setAttribute(u"title"_s, QString());
        if (m_fault == OtherDepth)
            depth = 2;
        return element;
    }

    QList<QString> keys() override
    {
        QList<QString> keys = VLKeyTableIndex::keys();
        if (m_fault == ShortList)
            keys.removeAll(QString());
        return keys;
    }

    bool store(VLXmlElement* element, const QLocale& locale, const QString& location,
               int depth) override
    {
        if (m_fault != SearchesStoredFirst)
            return VLKeyTableIndex::store(element, locale, location, depth);
        indexControlFile(location, QFileInfo(location).dir().absolutePath());
        return true;
    }

private:
    const Fault m_fault;
};

} // namespace

class TestVLKeyTableDifferential : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void table_answersAsBase();
    void test_findsWrongIndex_data();
    void test_findsWrongIndex();
    void test_findsStaleTable();
};

void TestVLKeyTableDifferential::initTestCase()
{
    VLIndexHooks::settledAfterMs = kSettledAfterMs;
}

void TestVLKeyTableDifferential::table_answersAsBase()
{
    const bool isSafeguarded = qEnvironmentVariableIsSet("VIDLETS_SAFEGUARD_EXCEPTIONS");
    const quint32 seed = numberFromEnvironment("VIDLETS_DIFFERENTIAL_SEED",
                                               isSafeguarded ? kSafeguardedSeed : kDefaultSeed);
    const int packages =
        int(numberFromEnvironment("VIDLETS_DIFFERENTIAL_PACKAGES", kDefaultPackages));
    qInfo("seed %u, %d packages", seed, packages);
    int done = 0;
    int lookups = 0;
    int found = 0;
    for (quint32 i = 0; done < packages; ++i) {
        Scenario scenario(seed + i, makeTable);
        const QString difference = scenario.findDifference();
        QVERIFY2(difference.isNull(), qPrintable(u"seed %1: %2"_s.arg(seed + i).arg(difference)));
        done += scenario.packages();
        lookups += scenario.lookups();
        found += scenario.found();
    }
    qInfo("%d lookups, %d of them found something", lookups, found);
    // Else the files would not be worth their while.
    QVERIFY(found > lookups / 10);
    QVERIFY(found < lookups);
}

void TestVLKeyTableDifferential::test_findsWrongIndex_data()
{
    QTest::addColumn<int>("fault");

    QTest::newRow("other locale") << int(WrongIndex::OtherLocale);
    QTest::newRow("any case") << int(WrongIndex::AnyCase);
    QTest::newRow("loses text") << int(WrongIndex::LosesText);
    QTest::newRow("loses attribute") << int(WrongIndex::LosesAttribute);
    QTest::newRow("other depth") << int(WrongIndex::OtherDepth);
    QTest::newRow("loses key data") << int(WrongIndex::LosesKeyData);
    QTest::newRow("short list") << int(WrongIndex::ShortList);
    QTest::newRow("searches stored first") << int(WrongIndex::SearchesStoredFirst);
}

void TestVLKeyTableDifferential::test_findsWrongIndex()
{
    QFETCH(const int, fault);
    const auto make = [fault](VLContext& context, const QString& /*cacheFile*/) {
        return Candidate{std::make_unique<WrongIndex>(&context, WrongIndex::Fault(fault)), [] {},
                         [] {}};
    };
    constexpr quint32 kScenarios = 60;
    for (quint32 i = 0; i < kScenarios; ++i) {
        if (!Scenario(kDefaultSeed + i, make).findDifference().isNull())
            return;
    }
    QFAIL("The fault was not found.");
}

void TestVLKeyTableDifferential::test_findsStaleTable()
{
    const auto make = [](VLContext& context, const QString& cacheFile) {
        Candidate candidate = makeTable(context, cacheFile);
        candidate.refresh = [] {};
        return candidate;
    };
    constexpr quint32 kScenarios = 60;
    for (quint32 i = 0; i < kScenarios; ++i) {
        if (!Scenario(kDefaultSeed + i, make).findDifference().isNull())
            return;
    }
    QFAIL("The fault was not found.");
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLKeyTableDifferential>(argc, argv);
}

#include "tst_vlkeytabledifferential.moc"
