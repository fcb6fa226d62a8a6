// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef REPORT_H
#define REPORT_H

#include <optional>
#include <string>
#include <vector>

/// Runs benchmarks and sets their figures beside their baselines and their aims.
namespace Report {

/// A counter that every benchmark has: the processor time of the thread that it runs on, which
/// other work on the machine disturbs less.
inline constexpr const char* kProcessorNs = "processor_ns";

/// A series of figures, one for each repetition of a benchmark.
struct Series
{
    std::string benchmark; ///< The name that it was registered with.
    std::string counter;   ///< Null for the time of one iteration, in nanoseconds.
};

/// What is made of a series.
enum class Statistic {
    Median,
    Worst
};

/// What is made of a figure and its baseline.
enum class Comparison {
    Ratio,      ///< The figure divided by the baseline.
    Difference, ///< The figure minus the baseline.
    Figure      ///< The figure alone.
};

enum class Limit {
    AtMost,
    NotBelow,
    Below,
    Within
};

/// One line of the summary.
struct Aim
{
    std::string subject;
    Series measured;
    Series baseline; ///< Without a benchmark where there is none.
    Comparison comparison = Comparison::Ratio;
    Limit limit = Limit::AtMost;
    double value = 0.0;    ///< What is allowed.
    double centre = 0.0;   ///< Around what, for Limit::Within.
    std::string unit = {}; ///< Follows the figure; empty for a ratio.
    Statistic statistic = Statistic::Median;
};

/// Follows the name of a series in its twin, which runs with safeguards on.
inline constexpr const char* kSafeguarded = "-safeguarded";

/// The aims of @p benchmark with safeguards on, beside the same without: by its time, and by
/// @p processorCounter, which other work on the machine disturbs less.
std::vector<Aim> safeguardedAims(const std::string& subject, const std::string& benchmark,
                                 const std::string& processorCounter = kProcessorNs);

/**
 * Runs the registered benchmarks @p repetitions times each, in a random order, so that whatever
 * else the machine does falls on subject and baseline alike. Prints the usual table and then, for
 * each of @p aims, one line: "ratio SUBJECT VALUE (aim AIM)".
 *
 * The command line may overrule the number of repetitions; lines without figures are left out then.
 * Gives the exit code.
 */
int run(int argc, char* argv[], int repetitions, const std::vector<Aim>& aims);

/// Ends the program where @p holds is false: what is not what it seems is not timed.
void verify(bool holds, const char* claim);

} // namespace Report

#endif
