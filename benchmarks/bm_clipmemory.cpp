// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What a decoded clip keeps in memory, beside its frames at four bytes for a pixel.

#include "ClipLoader.h"
#include "ClipWriter.h"
#include "ProcessFigures.h"
#include "Report.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFramesPerSecond = 30;
constexpr int kFrames = 10 * kFramesPerSecond;
constexpr int kTinyFrames = 10;
constexpr int kRepetitions = 5;
constexpr QSize kSizePx{640, 360};
constexpr int kBytesPerPixel = 4;

double frameBytes(quint64 frames)
{
    return static_cast<double>(frames) * kSizePx.width() * kSizePx.height() * kBytesPerPixel;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    ClipWriter clips;
    const auto makeClip = [&clips](const QString& name, int frames) {
        return clips.testClip(name, u"libx264"_s, kSizePx, kFramesPerSecond, frames,
                              {u"-pix_fmt"_s, u"yuv420p"_s});
    };
    const QString clip = makeClip(u"clip.mp4"_s, kFrames);
    const QString tinyClip = makeClip(u"tiny.mp4"_s, kTinyFrames);
    ClipLoader loader;

    benchmark::RegisterBenchmark("clip-memory",
                                 [&](benchmark::State& state) {
                                     for ([[maybe_unused]] auto turn : state) {
                                         loader.load(tinyClip, kTinyFrames);
                                         const quint64 tinyFrames = loader.frameCount();
                                         const double before = ProcessFigures::residentBytes();
                                         loader.load(clip, kFrames);
                                         const double grown =
                                             ProcessFigures::residentBytes() - before;
                                         state.counters["grown_MB"] = grown / 1e6;
                                         state.counters["share"] =
                                             grown / frameBytes(loader.frameCount() - tinyFrames);
                                     }
                                 })
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);

    Report::Aim aim;
    aim.subject = "clip-memory";
    aim.measured = {"clip-memory", "share"};
    aim.limit = Report::Limit::Within;
    aim.value = 0.05;
    aim.centre = 1.0;
    return Report::run(argc, argv, kRepetitions, {aim});
}
