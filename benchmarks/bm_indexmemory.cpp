// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What a recorded control file keeps in memory, beside the length of its path.

#include "PackageBuilder.h"
#include "ProcessFigures.h"
#include "Report.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLInterface.h>

#include <QCoreApplication>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPackages = 50;
constexpr int kFilesPerPackage = 200;
constexpr int kFiles = kPackages * kFilesPerPackage;
constexpr int kRepetitions = 5;

/// Counts what the scan hands over.
class CountingIndex : public Vidlets::VLIndex
{
public:
    using VLIndex::VLIndex;

    void indexControlFile(const QString& file, const QString& root) override
    {
        VLIndex::indexControlFile(file, root);
        ++count;
        pathLength += file.size();
    }

    qsizetype count = 0;
    qsizetype pathLength = 0;
};

void writePackages(PackageBuilder& packages)
{
    for (int file = 0; file < kFiles; ++file) {
        const QString key = QString::number(file);
        packages.writeTip(u"Package%1.vidlets"_s.arg(file % kPackages), u"tips-%1.xml"_s.arg(key),
                          key);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    PackageBuilder packages;
    writePackages(packages);

    VLContext context;
    {
        CountingIndex index(&context, {packages.dataPath()});
        Vidlets::VLInterface host(context, {packages.dataPath()}, &index);
        Report::verify(index.count == kFiles && host.keys().size() == kFiles,
                       "the index records all control files");
    }

    // The record of an index outlives it, so each repetition pays for a new one.
    benchmark::RegisterBenchmark("index-memory", [&](benchmark::State& state) {
        for ([[maybe_unused]] auto turn : state) {
            CountingIndex index(&context, {packages.dataPath()});
            const double before = ProcessFigures::residentBytes();
            const Vidlets::VLInterface host(context, {packages.dataPath()}, &index);
            state.counters["bytes"] = (ProcessFigures::residentBytes() - before) / kFiles;
            state.counters["path"] =
                static_cast<double>(index.pathLength) / static_cast<double>(index.count);
        }
    })->Iterations(1);

    Report::Aim aim;
    aim.subject = "index-memory";
    aim.measured = {"index-memory", "bytes"};
    aim.comparison = Report::Comparison::Figure;
    aim.limit = Report::Limit::Below;
    aim.value = 1024;
    aim.unit = "bytes";
    return Report::run(argc, argv, kRepetitions, {aim});
}
