// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// The lookup of a key in the file that is searched last, and of one that is nowhere, beside a bare
/// loop of the XML reader over the same files.

#include "PackageBuilder.h"
#include "Report.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLSafeguards.h>
#include <Vidlets/VLXmlElement.h>

#include <QCoreApplication>
#include <QFile>
#include <QLocale>
#include <QXmlStreamReader>

#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFiles = 1000;
constexpr int kTipsPerFile = 100;
constexpr int kTagsPerTip = 3;
constexpr qint64 kMinBytes = 25'000'000;
constexpr qint64 kMaxBytes = 27'000'000;
constexpr int kRepetitions = 5;
const QString kPackage = u"Lookup.vidlets"_s;

QByteArray controlFile(int file)
{
    QByteArray content = "<vidlets locale=\"en_US\">\n";
    for (int tip = 0; tip < kTipsPerFile; ++tip) {
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

/// Gives the files in the order of indexing; the first is searched last.
QStringList writePackage(PackageBuilder& packages)
{
    QStringList files;
    qint64 bytes = 0;
    for (int file = 0; file < kFiles; ++file) {
        const QByteArray content = controlFile(file);
        bytes += content.size();
        files += packages.writeControlFile(kPackage, u"%1.xml"_s.arg(file), content);
    }
    Report::verify(bytes > kMinBytes && bytes < kMaxBytes, "the files are 26 MB");
    return files;
}

/// Gives the number of tags.
int readAll(const QStringList& paths)
{
    int tags = 0;
    for (const QString& path : paths) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        QXmlStreamReader reader(&file);
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::StartElement)
                ++tags;
        }
    }
    return tags;
}

/// Gives the path of the file that has the key; null where none has.
QString lookUp(Vidlets::VLIndex& index, const QString& key)
{
    QString directory;
    int depth = 0;
    Vidlets::VLXmlElement* root = nullptr;
    const Vidlets::VLXmlElement* element =
        index.retrieve(key, QLocale(u"en_US"_s), directory, depth, root);
    if (!element)
        return QString();
    const QString location = element->attribute(u"VLLocation"_s);
    delete root;
    return location;
}

template <typename Operation> void add(const std::string& name, const Operation& operation)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [operation](benchmark::State& state) {
                                     for ([[maybe_unused]] auto turn : state)
                                         benchmark::DoNotOptimize(operation());
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

std::vector<Report::Aim> aims()
{
    std::vector<Report::Aim> all;
    for (const char* subject : {"hit", "miss"}) {
        Report::Aim aim;
        aim.subject = std::string("lookup-") + subject;
        aim.measured = {subject, {}};
        aim.baseline = {"bare-reader", {}};
        aim.value = 1.05;
        all.push_back(aim);
        const std::vector<Report::Aim> beside = Report::safeguardedAims(aim.subject, subject);
        all.insert(all.end(), beside.cbegin(), beside.cend());
    }
    return all;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    PackageBuilder packages;
    const QStringList files = writePackage(packages);
    VLContext context;
    Vidlets::VLIndex index(&context, {packages.dataPath()});
    VLContext safeguards;
    Vidlets::useSafeguards(safeguards);
    Vidlets::VLIndex safeguarded(&safeguards, {packages.dataPath()});

    const QString lastKey = u"0.%1"_s.arg(kTipsPerFile - 1);
    const QString missingKey = u"nowhere"_s;
    for (Vidlets::VLIndex* each : {&index, &safeguarded}) {
        for (const QString& file : files)
            each->indexControlFile(file, packages.packageRoot(kPackage));
        Report::verify(lookUp(*each, lastKey) == files.constFirst(),
                       "the key is in the file that is searched last");
        Report::verify(lookUp(*each, missingKey).isNull(), "the other key is nowhere");
    }
    Report::verify(readAll(files) == kFiles * (1 + kTipsPerFile * kTagsPerTip),
                   "the baseline reads all tags");

    for (const auto& [name, key] : {std::pair(std::string("hit"), lastKey), {"miss", missingKey}}) {
        add(name, [&index, key = key] { return lookUp(index, key); });
        add(name + Report::kSafeguarded,
            [&safeguarded, key = key] { return lookUp(safeguarded, key); });
    }
    add("bare-reader", [&files] { return readAll(files); });

    return Report::run(argc, argv, kRepetitions, aims());
}
