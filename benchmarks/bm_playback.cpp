// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// How evenly a clip plays on the screen, and what that takes of the processor.

#include "ClipLoader.h"
#include "FrameWatch.h"
#include "ProcessFigures.h"
#include "Report.h"
#include "VideoStage.h"

#include <QApplication>

#include <algorithm>

#include <benchmark/benchmark.h>

namespace {

constexpr int kSeconds = 10;
constexpr int kFrames = kSeconds * VideoStage::kFramesPerSecond;
constexpr int kMinFrames = kFrames * 95 / 100;
constexpr int kRepetitions = 3;
constexpr double kMsPerSecond = 1000.0;
constexpr double kWantedMs = 33.0;

std::vector<double> sortedIntervals(const std::vector<double>& times)
{
    std::vector<double> intervals;
    for (size_t i = 1; i < times.size(); ++i)
        intervals.push_back((times[i] - times[i - 1]) * kMsPerSecond);
    std::sort(intervals.begin(), intervals.end());
    return intervals;
}

void play(VideoStage& stage, benchmark::State& state)
{
    Vidlets::VLVideoComponent* item = stage.item();
    item->rewindToStart();
    FrameWatch frames;
    frames.watch(stage.view());
    // The picture at the start, so that it is no part of what follows.
    frames.waitForFirst();
    frames.clear();

    const double used = ProcessFigures::processorSeconds();
    item->play();
    waitUntil([item] { return item->state() == Vidlets::VLVideoComponent::pausedState; },
              "the end of the clip");
    const double processor = ProcessFigures::processorSeconds() - used;

    const std::vector<double> times = frames.times();
    Report::verify(times.size() >= kMinFrames, "the pictures reach the screen");
    const std::vector<double> intervals = sortedIntervals(times);
    state.SetIterationTime(times.back() - times.front());
    state.counters["frames"] = static_cast<double>(times.size());
    state.counters["median_ms"] = intervals[intervals.size() / 2];
    state.counters["p99_ms"] = intervals[intervals.size() * 99 / 100];
    state.counters["worst_ms"] = intervals.back();
    state.counters["cpu_share"] = processor / (times.back() - times.front());
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    VideoStage stage(kFrames);
    stage.showScene();
    stage.setClip();
    // The end of decoding pauses a clip that plays.
    waitUntilDecoded(*stage.source(), kMinFrames);

    benchmark::RegisterBenchmark("playback",
                                 [&stage](benchmark::State& state) {
                                     for ([[maybe_unused]] auto turn : state)
                                         play(stage, state);
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);

    Report::Aim median;
    median.subject = "playback-median-interval";
    median.measured = {"playback", "median_ms"};
    median.comparison = Report::Comparison::Figure;
    median.limit = Report::Limit::Within;
    median.value = 2.0;
    median.centre = kWantedMs;
    median.unit = "ms";
    return Report::run(argc, argv, kRepetitions, {median});
}
