// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// How long it takes from setting the source of a video item to its first picture on the screen.

#include "FrameWatch.h"
#include "Report.h"
#include "VideoStage.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <benchmark/benchmark.h>

namespace {

constexpr int kClipFrames = 10 * VideoStage::kFramesPerSecond;
constexpr int kTries = 30;
constexpr double kNsPerSecond = 1e9;
constexpr double kMsPerSecond = 1000.0;

/// Lets the time pass that spreads the tries evenly over the period of the polls.
void shiftPhase(int turn)
{
    constexpr int kPollMs = 100;
    constexpr int kStepMs = 37;
    QEventLoop loop;
    QTimer::singleShot(turn * kStepMs % kPollMs, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

double secondsToFirstPicture(VideoStage& stage, int turn)
{
    stage.showScene();
    shiftPhase(turn);

    bool hasPicture = false;
    double seconds = 0.0;
    QElapsedTimer clock;
    QObject receiver;
    // A new item takes a picture's height as news exactly once: with the first.
    QObject::connect(stage.item(), &Vidlets::VLVideoComponent::heightChanged, &receiver,
                     [&hasPicture] { hasPicture = true; });
    QObject::connect(stage.view(), &QQuickWindow::frameSwapped, &receiver, [&] {
        if (hasPicture && seconds == 0.0)
            seconds = static_cast<double>(clock.nsecsElapsed()) / kNsPerSecond;
    });
    clock.start();
    stage.setClip();
    waitUntil([&seconds] { return seconds != 0.0; }, "the first picture");
    Report::verify(stage.source()->loadedFrameCount() > 0, "there is a picture to be shown");
    stage.releaseClip();
    return seconds;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    VideoStage stage(kClipFrames);
    int turn = 0;

    benchmark::RegisterBenchmark("first-picture",
                                 [&](benchmark::State& state) {
                                     for ([[maybe_unused]] auto iteration : state) {
                                         const double seconds =
                                             secondsToFirstPicture(stage, turn++);
                                         state.SetIterationTime(seconds);
                                         state.counters["ms"] = seconds * kMsPerSecond;
                                     }
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);

    Report::Aim median;
    median.subject = "first-picture-median";
    median.measured = {"first-picture", "ms"};
    median.comparison = Report::Comparison::Figure;
    median.limit = Report::Limit::Below;
    median.value = 150.0;
    median.unit = "ms";
    Report::Aim worst = median;
    worst.subject = "first-picture-worst";
    worst.value = 300.0;
    worst.statistic = Report::Statistic::Worst;
    return Report::run(argc, argv, kTries, {median, worst});
}
