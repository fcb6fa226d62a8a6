// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Report.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>

#include <benchmark/benchmark.h>

namespace Report {

namespace {

constexpr double kNsPerSecond = 1e9;
constexpr double kLevelRatio = 1.05;

using Figures = std::vector<double>;

/// Keeps the single runs, and leaves the medians and their like to the table.
class Reporter : public benchmark::ConsoleReporter
{
public:
    Reporter()
        : ConsoleReporter(OO_Tabular)
    {
    }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        std::vector<Run> aggregates;
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration)
                keep(run);
            else
                aggregates.push_back(run);
        }
        ConsoleReporter::ReportRuns(aggregates);
    }

    std::optional<double> statistic(const Series& series, Statistic statistic) const
    {
        const auto found = m_figures.find({series.benchmark, series.counter});
        if (found == m_figures.end())
            return std::nullopt;
        Figures figures = found->second;
        std::sort(figures.begin(), figures.end());
        if (statistic == Statistic::Worst)
            return figures.back();
        const size_t middle = figures.size() / 2;
        return figures.size() % 2 != 0 ? figures[middle]
                                       : (figures[middle - 1] + figures[middle]) / 2.0;
    }

private:
    void keep(const Run& run)
    {
        const std::string& name = run.run_name.function_name;
        const auto iterations = static_cast<double>(std::max<int64_t>(run.iterations, 1));
        m_figures[{name, {}}].push_back(run.real_accumulated_time * kNsPerSecond / iterations);
        m_figures[{name, kProcessorNs}].push_back(run.cpu_accumulated_time * kNsPerSecond
                                                  / iterations);
        for (const auto& [counter, value] : run.counters)
            m_figures[{name, counter}].push_back(value.value);
    }

    std::map<std::pair<std::string, std::string>, Figures> m_figures;
};

std::string number(double value)
{
    char text[32];
    std::snprintf(text, sizeof(text), std::abs(value) < 100.0 ? "%.3g" : "%.0f", value);
    return text;
}

std::string limitText(const Aim& aim)
{
    switch (aim.limit) {
    case Limit::AtMost:
        return "at most " + number(aim.value);
    case Limit::NotBelow:
        return "at least " + number(aim.value);
    case Limit::Below:
        return "below " + number(aim.value);
    case Limit::Within:
        break;
    }
    return "within " + number(aim.value) + " of " + number(aim.centre);
}

bool isMet(const Aim& aim, double value)
{
    switch (aim.limit) {
    case Limit::AtMost:
        return value <= aim.value;
    case Limit::NotBelow:
        return value >= aim.value;
    case Limit::Below:
        return value < aim.value;
    case Limit::Within:
        break;
    }
    return std::abs(value - aim.centre) <= aim.value;
}

double compared(Comparison comparison, double measured, double baseline)
{
    switch (comparison) {
    case Comparison::Ratio:
        return measured / baseline;
    case Comparison::Difference:
        return measured - baseline;
    case Comparison::Figure:
        break;
    }
    return measured;
}

void printAim(const Aim& aim, const Reporter& reporter)
{
    const std::optional<double> measured = reporter.statistic(aim.measured, aim.statistic);
    const std::optional<double> baseline = aim.baseline.benchmark.empty()
        ? std::optional<double>(1.0)
        : reporter.statistic(aim.baseline, aim.statistic);
    if (!measured || !baseline)
        return;
    const double value = compared(aim.comparison, *measured, *baseline);
    const std::string unit = aim.unit.empty() ? "" : " " + aim.unit;
    std::printf("%s %s %s%s (aim %s%s)\n", aim.comparison == Comparison::Ratio ? "ratio" : "figure",
                aim.subject.c_str(), number(value).c_str(), unit.c_str(), limitText(aim).c_str(),
                isMet(aim, value) ? "" : ", missed");
}

} // namespace

std::vector<Aim> safeguardedAims(const std::string& subject, const std::string& benchmark,
                                 const std::string& processorCounter)
{
    Aim time;
    time.subject = subject + kSafeguarded;
    time.measured = {benchmark + kSafeguarded, {}};
    time.baseline = {benchmark, {}};
    time.value = kLevelRatio;
    Aim processor = time;
    processor.subject += "-processor";
    processor.measured.counter = processorCounter;
    processor.baseline.counter = processorCounter;
    return {time, processor};
}

int run(int argc, char* argv[], int repetitions, const std::vector<Aim>& aims)
{
    std::string program = argv[0];
    std::string repetitionFlag = "--benchmark_repetitions=" + std::to_string(repetitions);
    std::string orderFlag = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments = {program.data(), repetitionFlag.data(), orderFlag.data()};
    // The later one counts, so the command line has the last word.
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);

    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return EXIT_FAILURE;
    Reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const Aim& aim : aims)
        printAim(aim, reporter);
    return EXIT_SUCCESS;
}

void verify(bool holds, const char* claim)
{
    if (!holds)
        qFatal("Not so: %s", claim);
}

} // namespace Report
