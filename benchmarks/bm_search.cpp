// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// The search among 100,000 tips for words that are everywhere, here and there, or nowhere, beside
/// a pass of SQLite over the texts of all tips.

#include "PackageBuilder.h"
#include "Report.h"
#include <Vidlets/VLContext.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLocale>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

#include <VidletsHost/VLKeyTableIndex.h>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFiles = 1000;
constexpr int kTipsPerFile = 100;
constexpr int kWords = 30'000;
constexpr int kWordsPerTip = 35;
constexpr int kRepetitions = 5;
// A single run says more about the machine than about the search.
constexpr int kRunsPerInput = 5;
const QString kPackage = u"Search.vidlets"_s;

/// Texts in which few words are frequent and most are rare, as in a language.
class Author
{
public:
    Author()
    {
        const QStringList syllables =
            u"pen tool se lec co lor ra ma ti on in ver be un der ge st ab el to ni ka line wid"_s
                .split(u' ');
        for (int i = 0; i < kWords; ++i) {
            QString word;
            for (int n = 1 + m_random.bounded(5); n >= 0; --n)
                word += syllables.at(m_random.bounded(int(syllables.size())));
            m_vocabulary += word;
        }
    }

    const QString& word()
    {
        // The chance of a word goes down with its rank.
        const double rank = std::exp(m_random.generateDouble() * std::log(double(kWords)));
        return m_vocabulary.at(qBound(0, int(rank) - 1, kWords - 1));
    }

    QString words(int count)
    {
        QStringList list;
        for (int i = 0; i < count; ++i)
            list += word();
        return list.join(u' ');
    }

    /// The word of that rank.
    const QString& ranked(int rank) const
    {
        return m_vocabulary.at(rank);
    }

private:
    QRandomGenerator m_random{1};
    QStringList m_vocabulary;
};

/// The same texts as files and in a table.
class Content
{
public:
    Content()
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s);
        database.setDatabaseName(u":memory:"_s);
        Report::verify(database.open(), "SQLite is there");
        QSqlQuery query(database);
        query.exec(u"CREATE TABLE tips (key, title, text)"_s);
        query.prepare(u"INSERT INTO tips VALUES (?, ?, ?)"_s);
        for (int file = 0; file < kFiles; ++file) {
            // Every other one is in another language.
            QString xml = u"<vidlets locale='%1'>\n"_s.arg(file % 2 ? u"en_US"_s : u"de_DE"_s);
            for (int tip = 0; tip < kTipsPerFile; ++tip) {
                const QString key = u"%1.%2"_s.arg(file).arg(tip);
                const QString title = author.words(2);
                const QString text = u"every "_s + author.words(kWordsPerTip);
                xml += u"<vidlet key='%1' title='%2' shortcut='Ctrl+K'><text>%3</text></vidlet>\n"_s
                           .arg(key, title, text);
                for (const QString& value : {key, title, text})
                    query.addBindValue(value);
                query.exec();
            }
            files += packages.writeControlFile(kPackage, u"%1.xml"_s.arg(file),
                                               (xml + u"</vidlets>\n"_s).toUtf8());
        }
    }

    Author author;
    PackageBuilder packages;
    QStringList files;
};

struct Subject
{
    std::string name;
    QStringList inputs;
};

std::vector<Subject> subjectsOf(const Author& author)
{
    const QString common = author.ranked(0);
    const QString second = author.ranked(1);
    const QString rare = author.ranked(kWords - 7);
    QStringList prefixes;
    for (const QString& letters : {u"pe"_s, u"to"_s, u"se"_s, u"co"_s, u"ev"_s, u"wi"_s, u"xy"_s})
        prefixes += letters;
    QStringList typed;
    for (const QString& word : {common, second, rare, u"every"_s}) {
        for (qsizetype length = 2; length <= word.size(); ++length)
            typed += word.first(length);
    }
    return {{"common", {u"every "_s, common, second}},
            {"rare", {rare, author.ranked(kWords - 99), u"500.77"_s, u"nowhere"_s}},
            {"two-words",
             {common + u' ' + second, common + u' ' + rare, u"every every"_s, u"every nowhere"_s,
              u"every ev"_s, rare + u" ev"_s}},
            {"two-letters", prefixes},
            {"typed", typed}};
}

/// What the slowest of the inputs takes, in milliseconds.
struct Slowest
{
    double clock = 0.0;
    /// Of the processor, for the thread: other work on the machine disturbs it less.
    double processor = 0.0;
};

double clockMs(clockid_t clock)
{
    timespec time = {};
    clock_gettime(clock, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

double median(std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

Slowest slowest(Vidlets::VLKeyTableIndex& index, const QStringList& inputs)
{
    Slowest worst;
    for (const QString& input : inputs) {
        std::vector<double> clock;
        std::vector<double> processor;
        for (int run = 0; run < kRunsPerInput; ++run) {
            const double start = clockMs(CLOCK_MONOTONIC);
            const double processorStart = clockMs(CLOCK_THREAD_CPUTIME_ID);
            benchmark::DoNotOptimize(index.search(input, QLocale(u"en_US"_s)));
            processor.push_back(clockMs(CLOCK_THREAD_CPUTIME_ID) - processorStart);
            clock.push_back(clockMs(CLOCK_MONOTONIC) - start);
        }
        worst.clock = std::max(worst.clock, median(clock));
        worst.processor = std::max(worst.processor, median(processor));
    }
    return worst;
}

/// Gives how many tips SQLite finds that have the word, by reading all of them.
int scan(const QString& word)
{
    QSqlQuery query;
    query.setForwardOnly(true);
    query.prepare(u"SELECT key FROM tips WHERE title LIKE ? OR text LIKE ?"_s);
    query.addBindValue(u'%' + word + u'%');
    query.addBindValue(u'%' + word + u'%');
    query.exec();
    int count = 0;
    while (query.next())
        ++count;
    return count;
}

void build(Vidlets::VLKeyTableIndex& index, Content& content)
{
    QElapsedTimer timer;
    timer.start();
    const double start = clockMs(CLOCK_PROCESS_CPUTIME_ID);
    for (const QString& file : content.files)
        index.indexControlFile(file, content.packages.packageRoot(kPackage));
    Report::verify(index.waitUntilBuilt(), "the table is built");
    const double table = double(timer.restart()) / 1e3;
    const double middle = clockMs(CLOCK_PROCESS_CPUTIME_ID);
    Report::verify(index.waitUntilSearchBuilt(), "the words are read");
    const double end = clockMs(CLOCK_PROCESS_CPUTIME_ID);
    std::printf("table %.2f s, of the processor %.2f s; words %.2f s, of the processor %.2f s\n",
                table, (middle - start) / 1e3, double(timer.elapsed()) / 1e3, (end - middle) / 1e3);
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    Content content;
    const QTemporaryDir cache;
    VLContext context;
    Vidlets::VLKeyTableIndex index(&context, {});
    index.setCacheFile(cache.filePath(u"keys"_s));
    build(index, content);
    const QString rare = content.author.ranked(kWords - 7);
    Report::verify(index.search(u"every"_s, QLocale(u"en_US"_s)).size() == 20, "tips are found");
    Report::verify(scan(rare) > 0, "the baseline finds tips");

    std::vector<Report::Aim> aims;
    for (const auto& [name, inputs] : subjectsOf(content.author)) {
        benchmark::RegisterBenchmark(name.c_str(),
                                     [&index, inputs = inputs](benchmark::State& state) {
                                         for ([[maybe_unused]] auto turn : state) {
                                             const Slowest worst = slowest(index, inputs);
                                             state.counters["slowest_ms"] = worst.clock;
                                             state.counters["processor_ms"] = worst.processor;
                                         }
                                     })
            ->UseRealTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
        Report::Aim aim;
        aim.subject = "search-" + name;
        aim.measured = {name, "slowest_ms"};
        aim.comparison = Report::Comparison::Figure;
        aim.limit = Report::Limit::Below;
        aim.value = 20.0;
        aim.unit = "ms";
        aims.push_back(aim);
        aim.subject += "-processor";
        aim.measured.counter = "processor_ms";
        aims.push_back(aim);
    }
    benchmark::RegisterBenchmark("like-scan",
                                 [rare](benchmark::State& state) {
                                     QElapsedTimer timer;
                                     for ([[maybe_unused]] auto turn : state) {
                                         timer.start();
                                         benchmark::DoNotOptimize(scan(rare));
                                         state.counters["slowest_ms"] =
                                             double(timer.nsecsElapsed()) / 1e6;
                                     }
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
    Report::Aim beside = aims.front();
    beside.subject = "search-rare-to-like-scan";
    beside.measured.benchmark = "rare";
    beside.baseline = {"like-scan", "slowest_ms"};
    beside.comparison = Report::Comparison::Ratio;
    beside.value = 1.0;
    beside.unit.clear();
    aims.push_back(beside);
    return Report::run(argc, argv, kRepetitions, aims);
}
