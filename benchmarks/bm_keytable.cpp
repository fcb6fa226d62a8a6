// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// The index with a table of keys: lookups beside those of VLIndex, the first build beside a pass
/// of the XML reader, the start with a valid table beside listing and asking for sizes and times,
/// edits beside a bare watcher.

#include "PackageBuilder.h"
#include "ProcessFigures.h"
#include "Report.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLIndexHooks.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLXmlElement.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QLocale>
#include <QRandomGenerator>
#include <QThread>
#include <QTimer>
#include <QXmlStreamReader>

#include <algorithm>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include <VidletsHost/VLKeyTableIndex.h>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

using Vidlets::VLIndex;
using Vidlets::VLIndexHooks;
using Vidlets::VLInterface;
using Vidlets::VLKeyTableIndex;

constexpr int kTipsPerFile = 100;
constexpr int kFewFiles = 1000;
constexpr int kManyFiles = 10'000;
constexpr int kStartFiles = 2000;
constexpr int kPackages = 40;
constexpr int kLookups = 2000;
constexpr int kBaseLookups = 3;
constexpr int kRepetitions = 5;
constexpr double kNsPerUs = 1e3;
constexpr double kNsPerMs = 1e6;
constexpr double kNsPerSecond = 1e9;
constexpr double kPageCacheBytes = 2.0 * 1024 * 1024;

QByteArray controlFile(int file, int tips)
{
    QByteArray content = "<vidlets locale=\"en_US\">\n";
    for (int tip = 0; tip < tips; ++tip) {
        const QByteArray key = QByteArray::number(file) + '.' + QByteArray::number(tip);
        content += "  <vidlet key=\"" + key + "\" title=\"Tool number " + QByteArray::number(tip)
            + "\" shortcut=\"Ctrl+K\">\n"
              "    <text>Paints along the path of the pointer. Hold Shift for a straight line. "
              "Turn the wheel for the width."
              "</text>\n"
              "    <link target=\"https://example.org/manual\">More about it</link>\n"
              "  </vidlet>\n";
    }
    return content + "</vidlets>\n";
}

/// Packages on disk, and where a table for them lies.
struct Content
{
    Content(int count, int tips)
        : fileCount(count)
        , table(packages.path(u"cache/keys.sqlite"_s))
    {
        for (int file = 0; file < count; ++file) {
            const QString package =
                u"Package%1.vidlets"_s.arg(file % kPackages, 2, 10, QChar(u'0'));
            files +=
                packages.writeControlFile(package, u"%1.xml"_s.arg(file), controlFile(file, tips));
        }
    }

    void index(VLIndex& index) const
    {
        for (const QString& file : files)
            index.indexControlFile(file, QFileInfo(QFileInfo(file).absolutePath()).absolutePath());
    }

    PackageBuilder packages;
    const int fileCount;
    const QString table;
    QStringList files;
};

/// An index over content whose table is on disk, and built.
class Subject
{
public:
    explicit Subject(const Content& content)
        : index(&m_context, {content.packages.dataPath()})
    {
        index.setCacheFile(content.table);
        content.index(index);
    }

private:
    VLContext m_context;

public:
    VLKeyTableIndex index;
};

/// The processor time of all threads, which other work on the machine disturbs less.
class ProcessorClock
{
public:
    double ms() const
    {
        return (ProcessFigures::processorSeconds() - m_start) * kNsPerSecond / kNsPerMs;
    }

private:
    const double m_start = ProcessFigures::processorSeconds();
};

double threadMs()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * kNsPerSecond / kNsPerMs + double(time.tv_nsec) / kNsPerMs;
}

bool lookUp(VLIndex& index, const QString& key, const QLocale& locale)
{
    QString directory;
    int depth = 0;
    Vidlets::VLXmlElement* root = nullptr;
    const bool isFound = index.retrieve(key, locale, directory, depth, root) != nullptr;
    delete root;
    return isFound;
}

bool hit(VLIndex& index, const Content& content)
{
    QRandomGenerator& random = *QRandomGenerator::global();
    static const QLocale locale(u"en_US"_s);
    return lookUp(
        index, u"%1.%2"_s.arg(random.bounded(content.fileCount)).arg(random.bounded(kTipsPerFile)),
        locale);
}

/// As the manager does: in the locale, then in the one to fall back to.
bool miss(VLIndex& index, const Content& content)
{
    QRandomGenerator& random = *QRandomGenerator::global();
    static const QLocale locale(u"de_DE"_s);
    static const QLocale fallback(u"en_US"_s);
    const QString key = u"none.%1"_s.arg(random.bounded(content.fileCount * kTipsPerFile));
    return lookUp(index, key, locale) || lookUp(index, key, fallback);
}

using Lookup = bool (*)(VLIndex& index, const Content& content);

/// Times each of @p count lookups by itself.
void addLookups(const std::string& name, VLIndex& index, const Content& content, Lookup lookup,
                int count)
{
    const bool isFound = lookup == hit;
    benchmark::RegisterBenchmark(
        name.c_str(),
        [&index, &content, lookup, count, isFound](benchmark::State& state) {
            for ([[maybe_unused]] auto turn : state) {
                std::vector<double> times;
                std::vector<double> used;
                for (int i = 0; i < count; ++i) {
                    QElapsedTimer clock;
                    clock.start();
                    const double before = threadMs();
                    const bool found = lookup(index, content);
                    times.push_back(double(clock.nsecsElapsed()) / kNsPerUs);
                    used.push_back((threadMs() - before) * kNsPerMs / kNsPerUs);
                    Report::verify(found == isFound, "the lookup finds what is there");
                }
                std::sort(times.begin(), times.end());
                std::sort(used.begin(), used.end());
                state.counters["median_us"] = times.at(times.size() / 2);
                state.counters["p99_us"] = times.at(times.size() * 99 / 100);
                state.counters["p99_processor_us"] = used.at(used.size() * 99 / 100);
            }
        })
        ->Iterations(1);
}

/// Gives the number of characters in names, attributes and texts.
qsizetype readAll(const Content& content)
{
    qsizetype characters = 0;
    for (const QString& path : content.files) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        QXmlStreamReader reader(&file);
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::StartElement) {
                characters += reader.qualifiedName().toString().size();
                const QXmlStreamAttributes attributes = reader.attributes();
                for (const QXmlStreamAttribute& attribute : attributes)
                    characters += attribute.value().toString().size();
            } else if (reader.isCharacters()) {
                characters += reader.text().toString().size();
            }
        }
    }
    return characters;
}

template <typename Operation> double msFor(const Operation& operation)
{
    QElapsedTimer clock;
    clock.start();
    operation();
    return double(clock.nsecsElapsed()) / kNsPerMs;
}

void removeTable(const Content& content)
{
    for (const QString& suffix : {QString(), u"-wal"_s, u"-shm"_s})
        QFile::remove(content.table + suffix);
}

/// The time until the table is on disk.
void buildOnce(benchmark::State& state, const Content& content)
{
    for ([[maybe_unused]] auto turn : state) {
        removeTable(content);
        Subject subject(content);
        const ProcessorClock processor;
        const double ms = msFor(
            [&subject] { Report::verify(subject.index.waitUntilBuilt(), "the table is built"); });
        state.SetIterationTime(ms * kNsPerMs / kNsPerSecond);
        state.counters["all_threads_ms"] = processor.ms();
    }
}

/// The longest turn of the event loop meanwhile, by the clock and by the processor time of the
/// thread, which other work on the machine does not lengthen.
void buildInTurns(benchmark::State& state, const Content& content)
{
    for ([[maybe_unused]] auto turn : state) {
        removeTable(content);
        Subject subject(content);
        double longest = 0;
        double longestByClock = 0;
        // Until the rows have left memory, too.
        QElapsedTimer idle;
        idle.start();
        constexpr int kIdleMs = 500;
        while (!subject.index.isBuilt() || idle.elapsed() < kIdleMs) {
            const double before = threadMs();
            QElapsedTimer clock;
            clock.start();
            QCoreApplication::processEvents();
            const double ms = double(clock.nsecsElapsed()) / kNsPerMs;
            const double used = threadMs() - before;
            // A turn without work is over at once.
            constexpr double kWorkMs = 0.1;
            if (used > kWorkMs)
                idle.restart();
            else
                QThread::usleep(200);
            longest = std::max(longest, used);
            longestByClock = std::max(longestByClock, ms);
        }
        state.counters["processor_ms"] = longest;
        state.counters["clock_ms"] = longestByClock;
    }
}

/// Gives the number of control files.
int listAndAsk(const QString& dataPath)
{
    int controlFiles = 0;
    const QFileInfoList packages =
        QDir(dataPath).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo& package : packages) {
        const QDir control(package.absoluteFilePath() + u"/Control"_s);
        const QFileInfoList entries =
            control.entryInfoList({u"*.xml"_s}, QDir::Files, QDir::NoSort);
        for (const QFileInfo& entry : entries) {
            if (entry.size() > 0 && entry.lastModified().isValid())
                ++controlFiles;
        }
    }
    return controlFiles;
}

/// What a start takes beyond the manager's own walk, as a share of listing and asking.
void startHost(benchmark::State& state, const Content& content)
{
    const QString dataPath = content.packages.dataPath();
    for ([[maybe_unused]] auto turn : state) {
        VLContext context;
        const double plain = msFor([&] { const VLInterface host(context, {dataPath}, nullptr); });
        VLKeyTableIndex index(&context, {dataPath});
        index.setCacheFile(content.table);
        const double table = msFor([&] {
            const VLInterface host(context, {dataPath}, &index);
            // What the index has put off to the next turn.
            QCoreApplication::processEvents();
        });
        Report::verify(index.isBuilt(), "the table is valid");
        const double list = msFor([&] {
            Report::verify(listAndAsk(dataPath) == content.fileCount, "all files are listed");
        });
        state.counters["table_ms"] = table;
        state.counters["plain_ms"] = plain;
        state.counters["list_ms"] = list;
        state.counters["share"] = (table - plain) / list;
    }
}

/// What a file takes in memory beyond what VLIndex keeps of it, after lookups.
void measureMemory(benchmark::State& state, const Content& content)
{
    for ([[maybe_unused]] auto turn : state) {
        VLContext context;
        auto plain = std::make_unique<VLIndex>(&context, QStringList());
        double before = ProcessFigures::residentBytes();
        content.index(*plain);
        const double plainBytes = ProcessFigures::residentBytes() - before;
        before = ProcessFigures::residentBytes();
        const auto subject = std::make_unique<Subject>(content);
        Report::verify(subject->index.waitUntilBuilt(), "the table is valid");
        for (int i = 0; i < kLookups; ++i)
            hit(subject->index, content);
        const double bytes = ProcessFigures::residentBytes() - before - plainBytes;
        state.counters["bytes"] = bytes / content.fileCount;
        state.counters["without_pages"] = (bytes - kPageCacheBytes) / content.fileCount;
    }
}

/// Puts something else into one of the tips.
void edit(const Content& content, int file)
{
    static int edits = 0;
    QFile target(content.files.at(file));
    Report::verify(target.open(QIODevice::WriteOnly), "the file is written");
    target.write(controlFile(file, kTipsPerFile)
                     .replace("Tool number 7\"", "Edit " + QByteArray::number(++edits) + '"'));
}

void runEventsFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

/// Times edits of single files until @p signal comes.
template <typename Sender, typename Signal>
void timeEdits(benchmark::State& state, const Content& content, const Sender* sender, Signal signal)
{
    constexpr int kEdits = 11;
    constexpr int kPatienceMs = 10'000;
    // One edit may be told of in several steps.
    constexpr int kQuietMs = 300;
    std::vector<double> times;
    for (int i = 0; i < kEdits; ++i) {
        runEventsFor(kQuietMs);
        QEventLoop loop;
        QObject::connect(sender, signal, &loop, &QEventLoop::quit);
        QTimer::singleShot(kPatienceMs, &loop, [&loop] { loop.exit(1); });
        times.push_back(msFor([&] {
            edit(content, i * content.fileCount / kEdits);
            Report::verify(loop.exec() == 0, "the edit is told of");
        }));
    }
    std::sort(times.begin(), times.end());
    state.counters["median_ms"] = times.at(times.size() / 2);
    state.counters["longest_ms"] = times.back();
}

void editWatchedByIndex(benchmark::State& state, const Content& content)
{
    for ([[maybe_unused]] auto turn : state) {
        Subject subject(content);
        Report::verify(subject.index.waitUntilBuilt(), "the table is built");
        timeEdits(state, content, &subject.index, &VLKeyTableIndex::changed);
    }
}

void editWatchedBySystem(benchmark::State& state, const Content& content)
{
    for ([[maybe_unused]] auto turn : state) {
        const QFileSystemWatcher watcher(content.files);
        timeEdits(state, content, &watcher, &QFileSystemWatcher::fileChanged);
    }
}

Report::Aim figure(const std::string& subject, const std::string& benchmark,
                   const std::string& counter, double value, const std::string& unit)
{
    Report::Aim aim;
    aim.subject = subject;
    aim.measured = {benchmark, counter};
    aim.comparison = Report::Comparison::Figure;
    aim.limit = Report::Limit::Below;
    aim.value = value;
    aim.unit = unit;
    return aim;
}

Report::Aim ratio(const std::string& subject, const Report::Series& measured,
                  const Report::Series& baseline, double value)
{
    Report::Aim aim;
    aim.subject = subject;
    aim.measured = measured;
    aim.baseline = baseline;
    aim.value = value;
    return aim;
}

std::vector<Report::Aim> aims()
{
    constexpr double kHitUs = 300;
    constexpr double kWorstHitUs = 1000;
    return {
        figure("keytable-hit", "hit", "median_us", kHitUs, "us"),
        figure("keytable-hit-p99", "hit", "p99_us", kWorstHitUs, "us"),
        figure("keytable-hit-p99-processor", "hit", "p99_processor_us", kWorstHitUs, "us"),
        figure("keytable-hit-plain-index", "plain-hit", "median_us", 1e9, "us"),
        figure("keytable-miss", "miss", "median_us", 10, "us"),
        figure("keytable-miss-plain-index", "plain-miss", "median_us", 1e9, "us"),
        ratio("keytable-hit-10000", {"hit-10000", "median_us"}, {"hit", "median_us"}, 1.5),
        figure("keytable-miss-10000", "miss-10000", "median_us", 15, "us"),
        ratio("keytable-first-build", {"first-build", {}}, {"bare-reader", {}}, 2.0),
        ratio("keytable-first-build-all-threads", {"first-build", "all_threads_ms"},
              {"bare-reader", "all_threads_ms"}, 2.0),
        figure("keytable-longest-turn", "turns", "processor_ms", 5, "ms"),
        figure("keytable-edit", "edit", "median_ms", 300, "ms"),
        figure("keytable-edit-bare-watcher", "bare-edit", "median_ms", 1e9, "ms"),
        figure("keytable-start", "start", "share", 0.2, "of listing"),
        figure("keytable-memory", "memory", "without_pages", 200, "bytes a file"),
        figure("keytable-disk", "disk", "bytes", 60, "bytes a tip"),
    };
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    // What was written just now is not to be read again at each start.
    VLIndexHooks::settledAfterMs = 0;
    const Content few(kFewFiles, kTipsPerFile);
    const Content many(kManyFiles, kTipsPerFile);
    const Content small(kStartFiles, 5);
    VLContext context;
    VLIndex plain(&context, {});
    few.index(plain);
    const Subject first(small);
    Report::verify(const_cast<VLKeyTableIndex&>(first.index).waitUntilBuilt(), "it is built");
    Subject fewSubject(few);
    Subject manySubject(many);
    for (Subject* subject : {&fewSubject, &manySubject})
        Report::verify(subject->index.waitUntilBuilt(), "the table is built");
    const Content built(kFewFiles, kTipsPerFile);

    addLookups("hit", fewSubject.index, few, hit, kLookups);
    addLookups("miss", fewSubject.index, few, miss, kLookups);
    addLookups("hit-10000", manySubject.index, many, hit, kLookups);
    addLookups("miss-10000", manySubject.index, many, miss, kLookups);
    addLookups("plain-hit", plain, few, hit, kBaseLookups);
    addLookups("plain-miss", plain, few, miss, kBaseLookups);
    const auto add = [](const char* name, const Content& content, auto operation) {
        return benchmark::RegisterBenchmark(
                   name,
                   [&content, operation](benchmark::State& state) { operation(state, content); })
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    };
    add("first-build", built, buildOnce)->UseManualTime();
    add("bare-reader", built, [](benchmark::State& state, const Content& content) {
        for ([[maybe_unused]] auto turn : state) {
            const ProcessorClock processor;
            benchmark::DoNotOptimize(readAll(content));
            state.counters["all_threads_ms"] = processor.ms();
        }
    })->UseRealTime();
    add("turns", built, buildInTurns);
    const Content edited(kFewFiles, kTipsPerFile);
    add("edit", edited, editWatchedByIndex);
    add("bare-edit", edited, editWatchedBySystem);
    add("start", small, startHost);
    add("memory", many, measureMemory);
    add("disk", few, [](benchmark::State& state, const Content& content) {
        for ([[maybe_unused]] auto turn : state)
            state.counters["bytes"] =
                double(QFileInfo(content.table).size()) / content.fileCount / kTipsPerFile;
    });
    return Report::run(argc, argv, kRepetitions, aims());
}
