// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// Decoding a clip into the cache, beside the command "ffmpeg" that converts the same clip into
/// nothing.

#include "ClipLoader.h"
#include "ClipStage.h"
#include "ClipWriter.h"
#include "ProcessFigures.h"
#include "Report.h"
#include <Vidlets/VLSafeguards.h>
#include <Vidlets/VLVideoComponent.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFramesPerSecond = 30;
// Long enough that the start of a process does not matter; a gigabyte in the cache.
constexpr int kFrames = 40 * kFramesPerSecond;
// Almost as many as the safeguards let a clip of this size have.
constexpr int kShortFrames = 288;
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

/// What safeguards set, for a stage.
QMap<int, QVariant> safeguards()
{
    VLContext context;
    Vidlets::useSafeguards(context);
    QMap<int, QVariant> settings;
    for (int key = Vidlets::ckReleaseClips; key <= Vidlets::ckTendPinned; ++key)
        settings.insert(key, context.get(key, QVariant()));
    return settings;
}

/// An item in a view, whose source goes by the settings of the host.
class ItemLoader
{
public:
    explicit ItemLoader(const QMap<int, QVariant>& settings)
        : m_stage(u"Clips.vidlets"_s, settings)
    {
        m_stage.openView();
        m_item = std::make_unique<Vidlets::VLVideoComponent>();
        m_item->setParentItem(m_stage.view()->contentItem());
        m_loader = std::make_unique<ClipLoader>(*ClipStage::sourceOf(m_item.get()));
    }

    ClipLoader& loader()
    {
        return *m_loader;
    }

private:
    ClipStage m_stage;
    std::unique_ptr<Vidlets::VLVideoComponent> m_item;
    std::unique_ptr<ClipLoader> m_loader;
};

class DecodeBenchmark
{
public:
    DecodeBenchmark()
    {
        m_tinyClip = m_clips.testClip(u"tiny.mp4"_s, u"libx264"_s, kSizePx, kFramesPerSecond,
                                      kTinyFrames, outputOptions());
    }

    QString h264Clip(int frames)
    {
        return m_clips.testClip(u"clip-%1.mp4"_s.arg(frames), u"libx264"_s, kSizePx,
                                kFramesPerSecond, frames, outputOptions());
    }

    QString vp9Clip(int frames)
    {
        const QStringList quick = {u"-deadline"_s, u"realtime"_s, u"-cpu-used"_s, u"8"_s};
        return m_clips.testClip(u"clip-%1.webm"_s.arg(frames), u"libvpx-vp9"_s, kSizePx,
                                kFramesPerSecond, frames, outputOptions() + quick);
    }

    void decode(benchmark::State& state, const QString& clip)
    {
        decode(state, m_loader, clip, kFrames);
    }

    void decodeInView(benchmark::State& state, const QString& clip, bool safeguarded)
    {
        ItemLoader& item = safeguarded ? m_safeguarded : m_plain;
        decode(state, item.loader(), clip, kShortFrames);
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
    void decode(benchmark::State& state, ClipLoader& loader, const QString& clip, int frames)
    {
        for ([[maybe_unused]] auto turn : state) {
            // Takes the frames of the last run out of the cache, outside the time.
            loader.load(m_tinyClip, kTinyFrames);
            const double used = ProcessFigures::processorSeconds();
            const double seconds = loader.load(clip, frames);
            state.counters["cpu_s"] = ProcessFigures::processorSeconds() - used;
            state.counters["fps"] = static_cast<double>(loader.frameCount()) / seconds;
            state.SetIterationTime(seconds);
        }
    }

    /// A test pattern alone is next to no work to decode: noise makes it as much as a film is.
    static QStringList outputOptions()
    {
        return {u"-vf"_s, u"noise=all_strength=8:all_flags=t"_s, u"-pix_fmt"_s, u"yuv420p"_s};
    }

    ClipWriter m_clips;
    ClipLoader m_loader;
    ItemLoader m_plain{{}};
    ItemLoader m_safeguarded{safeguards()};
    QString m_tinyClip;
};

template <typename Operation> void add(const std::string& name, const Operation& operation)
{
    benchmark::RegisterBenchmark(name.c_str(), operation)
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

Report::Aim addBesideFfmpeg(DecodeBenchmark& decoding, const std::string& codec,
                            const QString& clip)
{
    const std::string baseline = codec + "-ffmpeg";
    add(codec, [&decoding, clip](benchmark::State& state) { decoding.decode(state, clip); });
    add(baseline, [clip](benchmark::State& state) { DecodeBenchmark::convert(state, clip); });

    Report::Aim aim;
    aim.subject = "decode-" + codec;
    aim.measured = {codec, "fps"};
    aim.baseline = {baseline, "fps"};
    aim.limit = Report::Limit::NotBelow;
    aim.value = 1.0;
    return aim;
}

std::vector<Report::Aim> addWithSafeguards(DecodeBenchmark& decoding, const std::string& name,
                                           const QString& clip)
{
    add(name,
        [&decoding, clip](benchmark::State& state) { decoding.decodeInView(state, clip, false); });
    add(name + Report::kSafeguarded,
        [&decoding, clip](benchmark::State& state) { decoding.decodeInView(state, clip, true); });
    return Report::safeguardedAims("decode-" + name, name, "cpu_s");
}

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    DecodeBenchmark decoding;
    std::vector<Report::Aim> aims = {addBesideFfmpeg(decoding, "h264", decoding.h264Clip(kFrames)),
                                     addBesideFfmpeg(decoding, "vp9", decoding.vp9Clip(kFrames))};
    for (const auto& [name, clip] :
         {std::pair(std::string("h264-short"), decoding.h264Clip(kShortFrames)),
          {"vp9-short", decoding.vp9Clip(kShortFrames)}}) {
        const std::vector<Report::Aim> beside = addWithSafeguards(decoding, name, clip);
        aims.insert(aims.end(), beside.cbegin(), beside.cend());
    }
    return Report::run(argc, argv, kRepetitions, aims);
}
