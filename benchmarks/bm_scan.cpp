// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// The scan of the data paths, beside listing the same directories and reading each file's first
/// line.

#include "PackageBuilder.h"
#include "Report.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLSafeguards.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPackages = 40;
constexpr int kFilesPerPackage = 50;
constexpr int kTipsPerFile = 5;
constexpr int kRepetitions = 15;
constexpr qint64 kMaxLineBytes = 1024;
constexpr double kNsPerSecond = 1e9;

void writePackages(PackageBuilder& packages)
{
    for (int file = 0; file < kPackages * kFilesPerPackage; ++file) {
        QByteArray content = "<vidlets locale=\"en_US\">\n";
        for (int tip = 0; tip < kTipsPerFile; ++tip) {
            const QByteArray key = QByteArray::number(file) + '.' + QByteArray::number(tip);
            content += "  <vidlet key=\"" + key + "\" title=\"A tip\">\n    <text>Tip " + key
                + " of the scan</text>\n  </vidlet>\n";
        }
        packages.writeControlFile(u"Package%1.vidlets"_s.arg(file % kPackages, 2, 10, QChar(u'0')),
                                  u"tips-%1.xml"_s.arg(file), content + "</vidlets>\n");
    }
}

/// Gives the number of control files.
int listAndReadFirstLines(const QString& dataPath)
{
    int controlFiles = 0;
    const QFileInfoList packages =
        QDir(dataPath).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo& package : packages) {
        const QDir control(package.absoluteFilePath() + u"/Control"_s);
        const QFileInfoList entries =
            control.entryInfoList({u"*.xml"_s}, QDir::Files, QDir::NoSort);
        for (const QFileInfo& entry : entries) {
            QFile file(entry.absoluteFilePath());
            if (file.open(QIODevice::ReadOnly)
                && file.readLine(kMaxLineBytes).startsWith("<vidlets"))
                ++controlFiles;
        }
    }
    return controlFiles;
}

template <typename Operation> void add(const std::string& name, const Operation& operation)
{
    const auto time = [operation](benchmark::State& state) {
        for ([[maybe_unused]] auto turn : state) {
            QElapsedTimer clock;
            clock.start();
            operation();
            state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / kNsPerSecond);
        }
    };
    benchmark::RegisterBenchmark(name.c_str(), time)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    PackageBuilder packages;
    writePackages(packages);
    const QString dataPath = packages.dataPath();

    VLContext context;
    VLContext safeguarded;
    Vidlets::useSafeguards(safeguarded);
    for (VLContext* each : {&context, &safeguarded}) {
        Vidlets::VLInterface host(*each, {dataPath}, nullptr);
        Report::verify(host.keys().size() == qsizetype(kPackages) * kFilesPerPackage * kTipsPerFile,
                       "the scan records all control files");
    }
    Report::verify(listAndReadFirstLines(dataPath) == kPackages * kFilesPerPackage,
                   "the baseline reads all control files");

    const auto scan = [&dataPath](VLContext& settings) {
        Vidlets::VLInterface scanning(settings, {dataPath}, nullptr);
    };
    add("scan", [&] { scan(context); });
    add(std::string("scan") + Report::kSafeguarded, [&] { scan(safeguarded); });
    add("list-and-read", [&] { benchmark::DoNotOptimize(listAndReadFirstLines(dataPath)); });

    Report::Aim aim;
    aim.subject = "scan";
    aim.measured = {"scan", {}};
    aim.baseline = {"list-and-read", {}};
    aim.value = 2.0;
    std::vector<Report::Aim> aims = Report::safeguardedAims(aim.subject, "scan");
    aims.insert(aims.begin(), aim);
    return Report::run(argc, argv, kRepetitions, aims);
}
