// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What it takes to look for faults in many packages, as their author calls it.

#include "PackageBuilder.h"
#include "Report.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <array>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPackages = 40;
constexpr int kFiles = 1000;
constexpr int kTipsPerFile = 100;
constexpr int kRepetitions = 5;
constexpr double kBytesPerKilobyte = 1024;
constexpr double kBytesPerMebibyte = kBytesPerKilobyte * kBytesPerKilobyte;

QByteArray controlFile(int file)
{
    QByteArray content = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<vidlets>\n";
    for (int tip = 0; tip < kTipsPerFile; ++tip) {
        const QByteArray number = QByteArray::number(file * kTipsPerFile + tip);
        content += "  <vidlet key=\"tool." + number + "\" title=\"Tool " + number
            + "\">\n    <p>What the tool " + number
            + " does is told here, in <b>a sentence or two</b> as they are in real tips.</p>\n"
              "    <p>And what else there is to know of it.</p>\n  </vidlet>\n";
    }
    return content + "</vidlets>\n";
}

void writePackages(PackageBuilder& packages, bool hasScenes)
{
    for (int file = 0; file < kFiles; ++file) {
        packages.writeControlFile(u"Package%1.vidlets"_s.arg(file % kPackages),
                                  u"tips-%1.xml"_s.arg(file), controlFile(file));
    }
    for (int package = 0; hasScenes && package < kPackages; ++package) {
        const QString name = u"Package%1.vidlets"_s.arg(package);
        QFile::copy(packages.writeScene(name), packages.path(name + u"/ui/SimpleTooltip.qml"_s));
    }
}

struct Usage
{
    int exitCode = -1;
    double peakBytes = 0.0;
};

/// What the program writes is lost.
Usage check(const QString& path, bool hasScenes)
{
    const QByteArray program(PROGRAM);
    const QByteArray place = QFile::encodeName(path);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::array<const char*, 6> arguments{program.constData(), "check",
                                         place.constData(),   hasScenes ? nullptr : "--set",
                                         "scene-missing=off", nullptr};
    pid_t child = 0;
    Usage usage;
    // posix_spawn() takes what it does not write to.
    const int failure = posix_spawn(&child, program.constData(), &actions, nullptr,
                                    const_cast<char* const*>(arguments.data()), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage resources{};
    if (failure == 0 && wait4(child, &status, 0, &resources) == child && WIFEXITED(status))
        usage.exitCode = WEXITSTATUS(status);
    usage.peakBytes = static_cast<double>(resources.ru_maxrss) * kBytesPerKilobyte;
    return usage;
}

void measure(benchmark::State& state, const PackageBuilder& packages, bool hasScenes)
{
    for ([[maybe_unused]] auto turn : state) {
        QElapsedTimer clock;
        clock.start();
        const Usage usage = check(packages.dataPath(), hasScenes);
        state.counters["ms"] = static_cast<double>(clock.elapsed());
        Report::verify(usage.exitCode == 0, "the packages have no faults");
        state.counters["mebibytes"] = usage.peakBytes / kBytesPerMebibyte;
    }
}

Report::Aim aimFor(const std::string& subject, const std::string& counter, double value,
                   const std::string& unit)
{
    Report::Aim aim;
    aim.subject = subject;
    aim.measured = {subject, counter};
    aim.comparison = Report::Comparison::Figure;
    aim.limit = Report::Limit::Below;
    aim.value = value;
    aim.unit = unit;
    return aim;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    PackageBuilder texts;
    writePackages(texts, false);
    PackageBuilder withScenes;
    writePackages(withScenes, true);

    benchmark::RegisterBenchmark("check",
                                 [&](benchmark::State& state) { measure(state, texts, false); })
        ->Iterations(1)
        ->UseRealTime();
    benchmark::RegisterBenchmark("check-scenes",
                                 [&](benchmark::State& state) { measure(state, withScenes, true); })
        ->Iterations(1)
        ->UseRealTime();

    constexpr double kLimitMs = 3000;
    constexpr double kLimitMebibytes = 200;
    return Report::run(argc, argv, kRepetitions,
                       {aimFor("check", "ms", kLimitMs, "ms"),
                        aimFor("check", "mebibytes", kLimitMebibytes, "MiB"),
                        aimFor("check-scenes", "ms", kLimitMs, "ms"),
                        aimFor("check-scenes", "mebibytes", kLimitMebibytes, "MiB")});
}
