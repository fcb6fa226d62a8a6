// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AllocationCounter.h"
#include "HoverStage.h"
#include "KnownRemains.h"
#include "ProcessState.h"

#include <QApplication>
#include <QElapsedTimer>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using AllocationCounter::Remains;

namespace {

constexpr int kHovers = 10000;
constexpr int kPins = 200;
/// What may lie about at the moment of looking, however many turns there were: an event of the
/// display that is not read yet, a list of Qt's that grew for a burst of them.
constexpr long long kMomentaryBytes = 4096;
/// By how much there may be less than is explained: a picture of a tip that was still held at the
/// first look.
constexpr long long kReleasedBytes = 32768;
/// By how much the process may grow for each turn with safeguards.
constexpr long long kSafeguardedBytesPerTurn = 64;
constexpr int kWarmUpRounds = 4;
constexpr int kWarmUpPins = 20;

bool safeguarded = false;
ProcessState start;
ProcessState end;

/// One kind of memory that stays, and how often it did.
struct Part
{
    std::string name;
    Remains each;
    long long times;
};

/// All that a clip leaves, each part measured once.
const std::vector<Part>& clipParts(const HoverStage& stage)
{
    const QSize size = HoverStage::clipSize();
    static const std::vector<Part> parts{
        {"record of the controller", KnownRemains::controllerRecord(), 0},
        {"records of the source", KnownRemains::sourceRecords(), 0},
        {"room of the source's queue", KnownRemains::orderQueue(), 0},
        {"URL and names of the clip", KnownRemains::clipNames(stage.clipPath()), 0},
        {"cache with its frames", KnownRemains::cachedFrames(size, HoverStage::kClipFrames), 0},
        {"picture buffer", KnownRemains::pictureBuffer(size), 0},
        {"scaler", KnownRemains::scaler(size), 0}};
    return parts;
}

std::vector<Part> clipParts(const HoverStage& stage, long long times)
{
    std::vector<Part> parts = clipParts(stage);
    for (Part& part : parts)
        part.times = times;
    return parts;
}

void printRow(const std::string& name, const Remains& total)
{
    std::printf("  %-34s %43lld bytes in %8lld blocks\n", name.c_str(), total.bytes, total.blocks);
}

void printPart(const Part& part)
{
    std::printf("  %-34s %6lld x %7lld bytes in %3lld = %13lld bytes in %8lld blocks\n",
                part.name.c_str(), part.times, part.each.bytes, part.each.blocks,
                part.each.bytes * part.times, part.each.blocks * part.times);
}

bool checkCount(const char* name, long long before, long long after)
{
    std::printf("  %-34s %6lld -> %lld\n", name, before, after);
    return after <= before;
}

/// Prints the growth of a phase beside its parts; gives whether these are all of it.
bool report(const char* title, int turns, const std::vector<Part>& parts)
{
    std::printf("%s\n", title);
    const Remains growth = AllocationCounter::between(start.memory, end.memory);
    Remains explained;
    for (const Part& part : parts) {
        printPart(part);
        AllocationCounter::add(explained, part.each, part.times);
    }
    Remains rest = growth;
    AllocationCounter::add(rest, explained, -1);
    printRow("explained", explained);
    printRow("growth", growth);
    printRow("not explained", rest);
    for (const auto& [size, blocks] : rest.blocksBySize) {
        if (blocks != 0)
            std::printf("    %lld blocks of %zu bytes\n", blocks, size);
    }
    const auto perTurn = [turns](long long bytes) { return static_cast<double>(bytes) / turns; };
    std::printf("  growth per turn: %.1f bytes; by the C library's reckoning %.1f, resident %.1f\n",
                perTurn(growth.bytes), perTurn(end.allocatorUse - start.allocatorUse),
                perTurn(end.resident - start.resident));
    // Nothing stays by design then.
    bool good = safeguarded ? growth.bytes < kSafeguardedBytesPerTurn * turns
                            : rest.bytes <= kMomentaryBytes && rest.bytes >= -kReleasedBytes;
    good = checkCount("threads", start.threads, end.threads) && good;
    good = checkCount("file descriptors", start.descriptors, end.descriptors) && good;
    good = checkCount("windows on the display", start.windows, end.windows) && good;
    std::fflush(stdout);
    return good;
}

bool soakHovers(HoverStage& stage, int hovers)
{
    stage.rest();
    start.take();
    const int showsBefore = stage.shows();
    const int clipsBefore = stage.clipShows();
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < hovers; ++i)
        stage.hover(i);
    const double seconds = static_cast<double>(timer.elapsed()) / 1000.0;
    stage.rest();
    end.take();

    const int clips = stage.clipShows() - clipsBefore;
    const int shows = stage.shows() - showsBefore;
    std::printf("%d hovers in %.0f seconds, %d of them with a clip\n", hovers, seconds, clips);
    if (safeguarded)
        return report("Hovers", hovers, {});
    std::vector<Part> parts = clipParts(stage, clips);
    parts.push_back({"connection to the control", KnownRemains::connection(), shows});
    parts.push_back({"connection to the view", KnownRemains::sceneName(), shows});
    return report("Hovers", hovers, parts);
}

bool soakPins(HoverStage& stage, int pins)
{
    // The popup of the hovers goes, and its connections with it.
    stage.pin(0);
    stage.settle();
    start.take();
    const int clipsBefore = stage.clipShows();
    for (int i = 0; i < pins; ++i)
        stage.pin(i);
    stage.settle();
    end.take();

    if (safeguarded)
        return report("Reserved windows, closed again", pins, {});
    std::vector<Part> parts = clipParts(stage, stage.clipShows() - clipsBefore);
    parts.push_back({"root above the content",
                     KnownRemains::contentRoot(stage.index(), HoverStage::keyOf(0)), pins});
    return report("Reserved windows, closed again", pins, parts);
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QStringList numbers = QApplication::arguments().mid(1);
    safeguarded = numbers.removeOne(QStringLiteral("--safeguarded"));
    const int hovers = numbers.isEmpty() ? kHovers : numbers.at(0).toInt();
    const int pins = numbers.size() < 2 ? kPins : numbers.at(1).toInt();
    if (hovers <= 0 || pins <= 0)
        return EXIT_FAILURE;

    HoverStage stage(safeguarded);
    // The pins first: their popups go, and the one that stays has to know all scenes.
    for (int i = 0; i < kWarmUpPins; ++i)
        stage.pin(i);
    for (int i = 0; i < kWarmUpRounds * HoverStage::kControls; ++i)
        stage.hover(i);
    stage.rest();
    // Tables of Qt's and of this program's own have their size from here on.
    clipParts(stage);
    KnownRemains::connection();
    KnownRemains::sceneName();
    end.take();

    const bool hoversAreGood = soakHovers(stage, hovers);
    const bool pinsAreGood = soakPins(stage, pins);
    return hoversAreGood && pinsAreGood ? EXIT_SUCCESS : EXIT_FAILURE;
}
