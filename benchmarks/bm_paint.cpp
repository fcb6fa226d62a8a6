// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What painting a picture takes, beside one QPainter::drawImage() of it.

#include "ClipLoader.h"
#include "FrameWatch.h"
#include "Report.h"
#include "VideoStage.h"
#include <Vidlets/VLVideoController.h>

#include <QApplication>
#include <QPainter>

#include <deque>
#include <functional>

#include <benchmark/benchmark.h>

namespace {

constexpr int kRepetitions = 25;
constexpr int kMaxScale = 2;

/// One target for all, in the format of the scene graph's own: where an image lies in memory has
/// its part in the time.
QImage& target()
{
    static QImage image(VideoStage::clipSizePx() * kMaxScale, QImage::Format_ARGB32_Premultiplied);
    return image;
}

QImage painted(const std::function<void(QPainter*)>& paint)
{
    target().fill(Qt::transparent);
    QPainter painter(&target());
    paint(&painter);
    return target().copy();
}

void time(benchmark::State& state, const std::function<void(QPainter*)>& paint)
{
    QPainter painter(&target());
    for ([[maybe_unused]] auto turn : state)
        paint(&painter);
}

void addBenchmark(const std::string& name, const std::function<void(QPainter*)>& paint)
{
    benchmark::RegisterBenchmark(name.c_str(), time, paint)
        ->MinTime(0.1)
        ->Unit(benchmark::kMicrosecond);
}

/// Gives the picture that the item of the stage shows.
QImage showPicture(VideoStage& stage)
{
    stage.showScene();
    bool hasPicture = false;
    QObject::connect(stage.item(), &Vidlets::VLVideoComponent::heightChanged, stage.item(),
                     [&hasPicture] { hasPicture = true; });
    stage.setClip();
    waitUntil([&hasPicture] { return hasPicture; }, "the first picture");
    waitUntilDecoded(*stage.source(), 1);
    return stage.item()->findChild<Vidlets::VLVideoController*>()->currentFrame();
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    // A factor is taken as what it makes of one pixel, in whole pixels: 1.5 leaves a picture as it
    // is, and 2 is the first to scale it.
    struct Row
    {
        const char* name;
        float scale;
        int factor;
    };
    const std::vector<Row> rows = {
        {"scale-1", 1.0F, 1}, {"scale-1.5", 1.5F, 1}, {"scale-2", 2.0F, 2}};
    std::deque<VideoStage> stages;
    std::vector<Report::Aim> aims;
    for (const Row& row : rows) {
        VideoStage& stage = stages.emplace_back(VideoStage::kTinyFrames, row.scale);
        const QImage picture = showPicture(stage);
        const auto paintItem = [item = stage.item()](QPainter* painter) { item->paint(painter); };
        const auto drawImage = [picture](QPainter* painter) {
            painter->drawImage(QPoint(0, 0), picture);
        };
        const QImage expected = picture.scaled(picture.size() * row.factor);
        Report::verify(painted(paintItem) == painted([&expected](QPainter* painter) {
                           painter->drawImage(QPoint(0, 0), expected);
                       }),
                       "the item paints the picture");

        const std::string baseline = std::string(row.name) + "-draw-image";
        addBenchmark(row.name, paintItem);
        addBenchmark(baseline, drawImage);
        Report::Aim aim;
        aim.subject = std::string("paint-") + row.name;
        aim.measured = {row.name, Report::kProcessorNs};
        aim.baseline = {baseline, Report::kProcessorNs};
        aim.value = 1.1;
        if (row.factor == 1)
            aims.push_back(aim);
    }
    return Report::run(argc, argv, kRepetitions, aims);
}
