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

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSet>
#include <QThread>
#include <QXmlStreamReader>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>

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
// The packages that there are in the beginning leave the last one for later.
constexpr int kDataPaths = 4;
// Changed after all else, so that it is told of last.
const QString kCanary = u"canary"_s;

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

/// An index, and how it is told what a host does with it.
struct Candidate
{
    std::unique_ptr<VLKeyTableIndex> index;
    std::function<void()> refresh;
    std::function<void()> wait;
    /// Called before something is edited.
    std::function<void()> beginEdits = [] {};
    /// How long the watch may take to tell.
    int patienceMs = kPatienceMs;
};

/// Makes an index over data paths that keeps its table in the given file.
using MakeCandidate = std::function<Candidate(VLContext&, const QStringList&, const QString&)>;

Candidate candidateOf(std::unique_ptr<VLKeyTableIndex> table, const QString& cacheFile)
{
    VLKeyTableIndex* index = table.get();
    index->setCacheFile(cacheFile);
    Candidate candidate;
    candidate.index = std::move(table);
    candidate.refresh = [index] { index->refresh(); };
    candidate.wait = [index] { QVERIFY(index->waitUntilBuilt(kPatienceMs)); };
    return candidate;
}

Candidate makeTable(VLContext& context, const QStringList& dataPaths, const QString& cacheFile)
{
    return candidateOf(std::make_unique<VLKeyTableIndex>(&context, dataPaths), cacheFile);
}

/// A file that may be a control file, and its package.
struct Found
{
    QString file;
    QString root;
};

/// What a host comes across in @p dataPaths, in its order.
QList<Found> walk(const QStringList& dataPaths)
{
    QList<Found> files;
    for (const QString& dataPath : dataPaths) {
        const QStringList packages = QDir(dataPath).entryList(
            {u"*.vidlets"_s}, QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort);
        for (const QString& package : packages) {
            const QString root = dataPath + u'/' + package;
            const QDir control(root + u"/Control"_s);
            const QStringList names = control.entryList({u"*.xml"_s}, QDir::Files, QDir::NoSort);
            for (const QString& name : names)
                files.append({control.filePath(name), root});
        }
    }
    return files;
}

/// How the index gets to know of files that change, and of new ones.
enum class Way {
    Told, ///< The host records each one, and asks for a refresh.
    Refresh,
    Watch
};

/// One random set of packages, two indexes over it, and what is done to both.
class Scenario
{
public:
    Scenario(quint32 seed, const MakeCandidate& makeCandidate,
             std::optional<Way> way = std::nullopt);

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

    void chooseWay(quint32 seed, std::optional<Way> way);
    void writePackages();
    QString writeFile(const QString& package, const QString& name);
    void record(const Recorded& recorded);
    bool isTaken(const Found& found);
    void start();
    void edit();
    void editFile(const QString& path, const QStringList& others);
    void comeAndGo();
    void comeOrGo(const QString& package);
    void recordNew();
    bool awaitWatch();
    QString awaitLocations();
    QString awaitAnswers();
    QString compareLocations();
    QString takeNewOnes();
    QString compareAnswers();

    RandomPackages m_random;
    PackageBuilder m_files;
    VLContext m_candidateContext;
    VLContext m_baseContext;
    QStringList m_dataPaths;
    /// The order of search.
    QList<IndexedLocation> m_order;
    const MakeCandidate m_makeCandidate;
    Candidate m_candidate;
    QList<Recorded> m_recorded;
    Table m_table = Table::Memory;
    Way m_way = Way::Told;
    QString m_keyData;
    QString m_canary;
    /// The files that were not left alone in this round.
    QSet<QString> m_touched;
    bool m_isGuarded = false;
    int m_packages = 0;
    int m_names = 0;
    int m_lookups = 0;
    int m_found = 0;
};

Scenario::Scenario(quint32 seed, const MakeCandidate& makeCandidate, std::optional<Way> way)
    : m_random(seed)
    , m_makeCandidate(makeCandidate)
{
    chooseWay(seed, way);
    m_isGuarded = m_random.chance(40);
    for (VLContext* context : {&m_candidateContext, &m_baseContext}) {
        context->set(ckGuardContent, m_isGuarded);
        context->set(ckReleaseClips, true);
    }
    for (int i = 0; i < kDataPaths; ++i)
        m_dataPaths.append(m_files.path(u"data%1"_s.arg(i)));
    start();
    writePackages();
}

void Scenario::chooseWay(quint32 seed, std::optional<Way> way)
{
    // Waiting for the watch takes its time.
    constexpr quint32 kWatchEach = 19;
    const QList<Way> ways{Way::Told, Way::Refresh};
    const Way usual = ways.at(qsizetype(seed / 3) % ways.size());
    m_table = Table(seed % 3);
    m_way = way.value_or(seed % kWatchEach == 0 ? Way::Watch : usual);
    if (m_table == Table::FoundAtStart && way && m_way != Way::Told)
        m_table = Table::Disk;
    else if (m_table == Table::FoundAtStart)
        m_way = Way::Told;
}

/// Starts the host, with what it had recorded before.
void Scenario::start()
{
    m_candidate = Candidate();
    m_order.clear();
    const bool isOnDisk = m_table != Table::Memory;
    m_candidate =
        m_makeCandidate(m_candidateContext, m_way == Way::Told ? QStringList() : m_dataPaths,
                        isOnDisk ? m_files.path(u"cache/keys.sqlite"_s) : QString());
    m_candidate.index->setWatching(m_way == Way::Watch);
    for (const Recorded& recorded : std::as_const(m_recorded))
        record(recorded);
}

void Scenario::writePackages()
{
    if (m_way == Way::Watch) {
        const QString package = u"data0/Canary.vidlets"_s;
        m_canary = m_files.write(package + u"/Control/canary.xml"_s, "<vidlets></vidlets>");
        m_recorded.append({m_canary, m_files.path(package), false, 0});
        record(m_recorded.constLast());
    }
    m_packages = 1 + m_random.number(kMaxPackages);
    for (int i = 0; i < m_packages; ++i) {
        const QString package =
            u"data%1/P%2.vidlets"_s.arg(m_random.number(kDataPaths - 1)).arg(i / 2);
        const QString root = m_files.path(package);
        const int count = m_random.number(4);
        for (int j = 0; j < count; ++j) {
            const QString file = writeFile(package, u"%1-%2.xml"_s.arg(i).arg(j));
            m_recorded.append({file, root, m_random.chance(50), 1 + m_random.number(2)});
            record(m_recorded.constLast());
        }
    }
    if (m_random.chance(40)) {
        m_keyData = m_files.write(u"keys.xml"_s, m_random.keyDataFile());
        m_candidateContext.set(ckKeyDataFile, m_keyData);
    }
}

QString Scenario::writeFile(const QString& package, const QString& name)
{
    return m_files.write(package + u"/Control/"_s + name, m_random.controlFile());
}

void Scenario::record(const Recorded& recorded)
{
    const IndexedLocation entry{recorded.file, recorded.depth};
    if (!recorded.isStored) {
        m_candidate.index->indexControlFile(recorded.file, recorded.root);
        isTaken({recorded.file, recorded.root});
        return;
    }
    m_candidate.index->store(nullptr, QLocale::c(), recorded.file, recorded.depth);
    if (!m_order.contains(entry))
        m_order.append(entry);
}

/// Has the base judge whether the file is one to be recorded, and puts it in front if it was not.
/// Gives whether it is there now.
bool Scenario::isTaken(const Found& found)
{
    VLIndex base(&m_baseContext, {});
    base.indexControlFile(found.file, found.root);
    const QList<IndexedLocation> locations = VLIndexHooks::locations(base);
    VLIndexHooks::deleteRecord(base);
    if (!locations.isEmpty() && !m_order.contains(locations.constFirst()))
        m_order.prepend(locations.constFirst());
    return !locations.isEmpty();
}

void Scenario::edit()
{
    m_candidate.beginEdits();
    m_touched.clear();
    QStringList paths;
    for (const IndexedLocation& entry : std::as_const(m_order)) {
        if (entry.location != m_canary)
            paths.append(entry.location);
    }
    for (const QString& path : std::as_const(paths)) {
        if (m_random.chance(40))
            editFile(path, paths);
    }
    if (!m_keyData.isEmpty() && m_random.chance(50))
        m_files.write(u"keys.xml"_s, m_random.keyDataFile());
    if (m_way != Way::Told || m_table == Table::FoundAtStart)
        comeAndGo();
    if (m_table == Table::FoundAtStart) {
        recordNew();
        start();
    } else if (m_way != Way::Watch) {
        m_candidate.refresh();
    }
}

void Scenario::editFile(const QString& path, const QStringList& others)
{
    const QString other = others.at(m_random.number(int(others.size())));
    const QString name = QDir(m_files.dataPath()).relativeFilePath(path);
    m_touched.insert(path);
    switch (m_random.number(5)) {
    case 0:
        QFile::remove(path);
        break;
    case 1:
        // As some editors write: a file of its own that takes the place of the old one.
        m_touched.insert(other);
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
        m_files.write(name, m_random.broken(content));
        break;
    }
    default:
        m_files.write(name, m_random.controlFile());
        break;
    }
}

/// Makes files that were not there, and takes packages away.
void Scenario::comeAndGo()
{
    QStringList packages;
    for (const QString& dataPath : std::as_const(m_dataPaths)) {
        const QStringList names =
            QDir(dataPath).entryList({u"*.vidlets"_s}, QDir::Dirs, QDir::Name);
        for (const QString& name : names) {
            if (name != "Canary.vidlets"_L1)
                packages.append(QFileInfo(dataPath).fileName() + u'/' + name);
        }
    }
    for (const QString& package : std::as_const(packages)) {
        if (m_random.chance(30))
            comeOrGo(package);
    }
    const int count = m_random.number(3);
    for (int i = 0; i < count; ++i) {
        // As a whole, as who installs it does.
        const QString name = u"N%1.vidlets"_s.arg(++m_names);
        const QString dataPath = m_dataPaths.at(m_random.number(kDataPaths));
        for (int j = m_random.number(3); j >= 0; --j)
            writeFile(u"aside/"_s + name, u"new-%1.xml"_s.arg(++m_names));
        QDir().mkpath(dataPath);
        QDir().rename(m_files.path(u"aside/"_s + name), dataPath + u'/' + name);
    }
}

void Scenario::comeOrGo(const QString& package)
{
    const QString root = m_files.path(package);
    const QDir control(root + u"/Control"_s);
    const QStringList names = control.entryList({u"*.xml"_s}, QDir::Files, QDir::Name);
    for (const QString& name : names)
        m_touched.insert(control.filePath(name));
    const QString fresh = u"new-%1.xml"_s.arg(++m_names);
    switch (m_random.number(5)) {
    case 0:
        if (names.isEmpty())
            break;
        QFile::rename(control.filePath(names.at(m_random.number(int(names.size())))),
                      control.filePath(fresh));
        break;
    case 1:
        QDir().rename(root, QFileInfo(root).path() + u"/R%1.vidlets"_s.arg(++m_names));
        break;
    case 2:
        QDir(root).removeRecursively();
        break;
    default:
        writeFile(package, fresh);
        break;
    }
}

/// Has the host record at its next start what has come.
void Scenario::recordNew()
{
    const QList<Found> files = walk(m_dataPaths);
    for (const Found& found : files) {
        const auto isOf = [&found](const Recorded& other) { return other.file == found.file; };
        if (std::none_of(m_recorded.cbegin(), m_recorded.cend(), isOf))
            m_recorded.append({found.file, found.root, false, 0});
    }
}

/// Waits until the index has been told of all that was done. Gives whether it has.
bool Scenario::awaitWatch()
{
    bool isTold = false;
    const QMetaObject::Connection connection = QObject::connect(
        m_candidate.index.get(), &VLKeyTableIndex::changed, m_candidate.index.get(),
        [&isTold](const QStringList& keys) { isTold = isTold || keys.contains(kCanary); });
    // The system tells of changes in their order. Files that have come are watched, and compared
    // with what was read of them, after the first.
    for (int i = 0; i < 2; ++i) {
        isTold = false;
        QFile file(m_canary);
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write("<vidlets><vidlet key='" + kCanary.toLatin1() + "'>"
                   + QByteArray::number(++m_names) + "</vidlet></vidlets>");
        file.close();
        if (!QTest::qWaitFor([&isTold] { return isTold; }, m_candidate.patienceMs))
            return false;
    }
    QObject::disconnect(connection);
    return true;
}

QString Scenario::findDifference()
{
    constexpr int kRounds = 3;
    if (m_way == Way::Watch) {
        m_candidate.wait();
        // The watch begins with the event loop.
        QCoreApplication::sendPostedEvents(m_candidate.index.get());
    } else if (m_way == Way::Refresh) {
        m_candidate.refresh();
    }
    for (int round = 0; round < kRounds; ++round) {
        const QString place = u"round %1, %2, table %3, way %4: "_s.arg(round)
                                  .arg(m_isGuarded ? u"guarded"_s : u"plain"_s)
                                  .arg(int(m_table))
                                  .arg(int(m_way));
        if (round > 0)
            edit();
        if (m_way == Way::Watch && !awaitWatch())
            return place + u"the watch does not tell"_s;
        const QString difference = awaitLocations();
        if (!difference.isNull())
            return place + difference;
        // Else the next start would go by none of it.
        if (m_table == Table::FoundAtStart)
            QThread::msleep(kSettledAfterMs + 5);
        if (m_random.chance(60))
            m_candidate.wait();
        const QString found = awaitAnswers();
        if (!found.isNull())
            return place + found;
    }
    return QString();
}

/// A watch that was told of a lot at once, as on a busy machine, looks at everything once more, and
/// only then knows of all.
QString Scenario::awaitLocations()
{
    if (m_way != Way::Watch)
        return compareLocations();
    const QList<IndexedLocation> order = m_order;
    QString difference;
    (void)QTest::qWaitFor(
        [&] {
            m_order = order;
            difference = compareLocations();
            return difference.isNull();
        },
        m_candidate.patienceMs);
    return difference;
}

QString Scenario::compareLocations()
{
    // Lookups wait for what a refresh finds.
    if (m_way == Way::Refresh)
        answerOf(*m_candidate.index, QString(), QLocale::c());
    if (m_way == Way::Watch) {
        const QString difference = takeNewOnes();
        if (!difference.isNull())
            return difference;
    }
    if (m_way != Way::Told) {
        const QList<Found> files = walk(m_dataPaths);
        for (const Found& found : files)
            isTaken(found);
    }
    if (m_order == VLIndexHooks::locations(*m_candidate.index))
        return QString();
    return u"other files are recorded"_s;
}

/// Takes over the order of the files that were recorded one by one, as they came.
QString Scenario::takeNewOnes()
{
    const QList<IndexedLocation> locations = VLIndexHooks::locations(*m_candidate.index);
    const qsizetype count = locations.size() - m_order.size();
    for (qsizetype i = count - 1; i >= 0; --i) {
        const IndexedLocation& entry = locations.at(i);
        if (m_order.contains(entry))
            return u"a file is recorded twice"_s;
        const QString root = QFileInfo(QFileInfo(entry.location).path()).path();
        if (isTaken({entry.location, root}))
            continue;
        // It may have been a control file for a moment.
        if (!m_touched.contains(entry.location) || entry.depth != 2)
            return entry.location + u" is recorded and no control file"_s;
        m_order.prepend(entry);
    }
    return QString();
}

/// As awaitLocations().
QString Scenario::awaitAnswers()
{
    QString difference = compareAnswers();
    if (m_way != Way::Watch || difference.isNull())
        return difference;
    (void)QTest::qWaitFor([&] { return (difference = compareAnswers()).isNull(); },
                          m_candidate.patienceMs);
    return difference;
}

QString Scenario::compareAnswers()
{
    // What ends the process, or comes back deleted, counts as not being there.
    VLIndex base(&m_baseContext, {});
    for (const IndexedLocation& entry : std::as_const(m_order)) {
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
        SearchesStoredFirst,
        SeesNoNewFiles,
        SearchesNewFilesLast,
        TakesAnyNewFile
    };

    WrongIndex(VLContext* context, const QStringList& dataPaths, Fault fault)
        : VLKeyTableIndex(context, dataPaths)
        , m_fault(fault)
    {
    }

    /// Says that what comes from now on is new.
    void beginEdits()
    {
        m_isWrongNow = true;
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

    void indexControlFile(const QString& file, const QString& root) override
    {
        const Fault fault = m_isWrongNow ? m_fault : ShortList;
        if (fault == SearchesNewFilesLast)
            store(nullptr, QLocale::c(), file, 2);
        else if (fault == TakesAnyNewFile)
            VLIndexHooks::indexKnownFile(*this, file, root);
        if (fault != SeesNoNewFiles && fault != SearchesNewFilesLast)
            VLKeyTableIndex::indexControlFile(file, root);
    }

private:
    const Fault m_fault;
    bool m_isWrongNow = false;
};

/// A candidate with that fault.
MakeCandidate makeWrong(WrongIndex::Fault fault)
{
    return [fault](VLContext& context, const QStringList& dataPaths, const QString& cacheFile) {
        auto wrong = std::make_unique<WrongIndex>(&context, dataPaths, fault);
        WrongIndex* index = wrong.get();
        Candidate candidate = candidateOf(std::move(wrong), cacheFile);
        candidate.beginEdits = [index] { index->beginEdits(); };
        // It need not come to be right.
        candidate.patienceMs = 3000;
        return candidate;
    };
}

/// Gives whether one of a few scenarios finds the fault.
bool isFound(const MakeCandidate& make, std::optional<Way> way = std::nullopt)
{
    constexpr quint32 kScenarios = 60;
    for (quint32 i = 0; i < kScenarios; ++i) {
        const QString difference = Scenario(kDefaultSeed + i, make, way).findDifference();
        if (difference.isNull())
            continue;
        qInfo("seed %u: %ls", kDefaultSeed + i, qUtf16Printable(difference.left(300)));
        return true;
    }
    return false;
}

} // namespace

class TestVLKeyTableDifferential : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void table_answersAsBase();
    void test_findsWrongIndex_data();
    void test_findsWrongIndex();
    void test_findsIndexWrongAboutNewFiles_data();
    void test_findsIndexWrongAboutNewFiles();
    void test_findsStaleTable_data();
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
    QVERIFY(isFound(makeWrong(WrongIndex::Fault(fault))));
}

namespace {

void addLiveWays()
{
    QTest::addColumn<Way>("way");
    QTest::newRow("refresh") << Way::Refresh;
    QTest::newRow("watch") << Way::Watch;
}

} // namespace

void TestVLKeyTableDifferential::test_findsIndexWrongAboutNewFiles_data()
{
    addLiveWays();
}

void TestVLKeyTableDifferential::test_findsIndexWrongAboutNewFiles()
{
    QFETCH(const Way, way);
    // The order of two that come at once is not certain for who watches.
    if (way == Way::Refresh) {
        const auto make = [](VLContext& context, const QStringList& dataPaths,
                             const QString& cacheFile) {
            Candidate candidate = makeTable(context, dataPaths, cacheFile);
            candidate.patienceMs = 3000;
            VLKeyTableIndex* index = candidate.index.get();
            candidate.refresh = [index, dataPaths] {
                QList<Found> files = walk(dataPaths);
                std::reverse(files.begin(), files.end());
                for (const Found& found : std::as_const(files))
                    index->indexControlFile(found.file, found.root);
                index->refresh();
            };
            return candidate;
        };
        QVERIFY(isFound(make, way));
    }
    QVERIFY(isFound(makeWrong(WrongIndex::SeesNoNewFiles), way));
    QVERIFY(isFound(makeWrong(WrongIndex::SearchesNewFilesLast), way));
    QVERIFY(isFound(makeWrong(WrongIndex::TakesAnyNewFile), way));
}

void TestVLKeyTableDifferential::test_findsStaleTable_data()
{
    addLiveWays();
    QTest::newRow("told of files") << Way::Told;
}

void TestVLKeyTableDifferential::test_findsStaleTable()
{
    QFETCH(const Way, way);
    const auto make = [way](VLContext& context, const QStringList& dataPaths,
                            const QString& cacheFile) {
        Candidate candidate = makeTable(context, dataPaths, cacheFile);
        candidate.refresh = [] {};
        candidate.patienceMs = 1000;
        if (way == Way::Watch)
            candidate.beginEdits = [index = candidate.index.get()] { index->setWatching(false); };
        return candidate;
    };
    QVERIFY(isFound(make, way));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLKeyTableDifferential>(argc, argv);
}

#include "tst_vlkeytabledifferential.moc"
