// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// Decoding a clip into the cache, beside the command "ffmpeg" that converts the same clip into
/// nothing.

#include "ClipLoader.h"
#include "ClipWriter.h"
#include "ProcessFigures.h"
#include "Report.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFramesPerSecond = 30;
// Long enough that the start of a process does not matter; a gigabyte in the cache.
constexpr int kFrames = 40 * kFramesPerSecond;
constexpr int kTinyFrames = 10;
constexpr int kRepetitions = 5;
constexpr QSize kSizePx{640, 360};
constexpr double kNsPerSecond = 1e9;

QStringList conversion(const QString& clip)
{
    return {u"-nostdin"_s,  u"-loglevel"_s, u"error"_s, u"-nostats"_s, u"-threads"_s, u"1"_s,
            u"-i"_s,        clip,           u"-f"_s,    u"rawvideo"_s, u"-pix_fmt"_s, u"rgb24"_s,
            u"-progress"_s, u"pipe:1"_s,    u"-y"_s,    u"/dev/null"_s};
}

/// Gives the seconds that the command took.
double convertToNothing(const QString& clip)
{
    QElapsedTimer clock;
    clock.start();
    QProcess process;
    process.start(u"ffmpeg"_s, conversion(clip));
    Report::verify(process.waitForFinished(-1) && process.exitCode() == 0, "ffmpeg succeeds");
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / kNsPerSecond;
    Report::verify(
        process.readAllStandardOutput().contains("frame=" + QByteArray::number(kFrames) + '\n'),
        "ffmpeg converts all frames");
    return seconds;
}

class DecodeBenchmark
{
public:
    DecodeBenchmark()
    {
        m_tinyClip = m_clips.testClip(u"tiny.mp4"_s, u"libx264"_s, kSizePx, kFramesPerSecond,
                                      kTinyFrames, outputOptions());
    }

    QString h264Clip()
    {
        return m_clips.testClip(u"clip.mp4"_s, u"libx264"_s, kSizePx, kFramesPerSecond, kFrames,
                                outputOptions());
    }

    QString vp9Clip()
    {
        const QStringList quick = {u"-deadline"_s, u"realtime"_s, u"-cpu-used"_s, u"8"_s};
        return m_clips.testClip(u"clip.webm"_s, u"libvpx-vp9"_s, kSizePx, kFramesPerSecond, kFrames,
                                outputOptions() + quick);
    }

    void decode(benchmark::State& state, const QString& clip)
    {
        for ([[maybe_unused]] auto turn : state) {
            // Takes the frames of the last run out of the cache, outside the time.
            m_loader.load(m_tinyClip, kTinyFrames);
            const double used = ProcessFigures::processorSeconds();
            const double seconds = m_loader.load(clip, kFrames);
            state.counters["cpu_s"] = ProcessFigures::processorSeconds() - used;
            state.counters["fps"] = static_cast<double>(m_loader.frameCount()) / seconds;
            state.SetIterationTime(seconds);
        }
    }

    static void convert(benchmark::State& state, const QString& clip)
    {
        for ([[maybe_unused]] auto turn : state) {
            const double used = ProcessFigures::childProcessorSeconds();
            const double seconds = convertToNothing(clip);
            state.counters["cpu_s"] = ProcessFigures::childProcessorSeconds() - used;
            state.counters["fps"] = kFrames / seconds;
            state.SetIterationTime(seconds);
        }
    }

private:
    /// A test pattern alone is next to no work to decode: noise makes it as much as a film is.
    static QStringList outputOptions()
    {
        return {u"-vf"_s, u"noise=all_strength=8:all_flags=t"_s, u"-pix_fmt"_s, u"yuv420p"_s};
    }

    ClipWriter m_clips;
    ClipLoader m_loader;
    QString m_tinyClip;
};

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    DecodeBenchmark decoding;
    std::vector<Report::Aim> aims;
    const auto add = [&](const std::string& codec, const QString& clip) {
        const std::string baseline = codec + "-ffmpeg";
        benchmark::RegisterBenchmark(
            codec.c_str(),
            [&decoding, clip](benchmark::State& state) { decoding.decode(state, clip); })
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(
            baseline.c_str(),
            [clip](benchmark::State& state) { DecodeBenchmark::convert(state, clip); })
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);

        Report::Aim aim;
        aim.subject = "decode-" + codec;
        aim.measured = {codec, "fps"};
        aim.baseline = {baseline, "fps"};
        aim.limit = Report::Limit::NotBelow;
        aim.value = 1.0;
        aims.push_back(aim);
    };
    add("h264", decoding.h264Clip());
    add("vp9", decoding.vp9Clip());
    return Report::run(argc, argv, kRepetitions, aims);
}
