// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// How long it takes from saving a file to the preview's first picture of what is new.

#include "FrameWatch.h"
#include "PackageBuilder.h"
#include "Report.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QQuickItem>

#include <VidletsAuthor/AuthorPreviewStage.h>
#include <VidletsAuthor/AuthorPreviewWindow.h>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

constexpr int kTries = 20;
constexpr double kNsPerMs = 1e6;

/// Saves one of its files, which says @p state then.
using Save = void (*)(PackageBuilder& files, const QByteArray& state);

void saveScene(PackageBuilder& files, const QByteArray& state)
{
    files.write(u"A.vidlets/ui/VidletUI.qml"_s,
                "import QtQuick\nimport com.larkspan.vidlets.qml 1.0\nRectangle {\n"
                "    property string sceneState: \""
                    + state
                    + "\"\n    property string textState: vidlet ? vidlet.attribute(\"title\") : "
                      "\"\"\n    width: 300\n    height: 200\n    color: \"teal\"\n"
                      "    Text { text: parent.sceneState + parent.textState }\n}\n");
}

void saveText(PackageBuilder& files, const QByteArray& state)
{
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets><vidlet key=\"one\" title=\"" + state + "\"/></vidlets>");
}

double msToPicture(PackageBuilder& files, const AuthorPreviewStage* stage, Save save,
                   const char* property)
{
    static int turn = 0;
    const QByteArray state = QByteArray::number(++turn);
    save(files, state);
    QElapsedTimer clock;
    clock.start();
    waitUntil(
        [stage, property, &state] {
            const QQuickItem* scene = stage->scene();
            return scene && scene->property(property).toByteArray() == state
                && stage->cost().firstPictureMs >= 0.0;
        },
        "the picture of what was saved");
    return static_cast<double>(clock.nsecsElapsed()) / kNsPerMs;
}

Report::Aim aimFor(const std::string& subject, Report::Statistic statistic)
{
    Report::Aim aim;
    aim.subject = subject + (statistic == Report::Statistic::Worst ? "-worst" : "-median");
    aim.measured = {subject, "ms"};
    aim.comparison = Report::Comparison::Figure;
    aim.limit = Report::Limit::Below;
    aim.value = 300.0;
    aim.unit = "ms";
    aim.statistic = statistic;
    return aim;
}

} // namespace

int main(int argc, char* argv[])
{
    // As the program has it.
    qputenv("QML_DISABLE_DISK_CACHE", "1");
    QApplication application(argc, argv);
    PackageBuilder files;
    saveScene(files, "0");
    saveText(files, "0");
    QString reason;
    const auto list = AuthorTipList::read(files.dataPath(), reason);
    Report::verify(list.has_value(), "there is a package");
    AuthorPreviewWindow window(files.dataPath(), *list, QString());
    window.show();
    Report::verify(window.choose(u"one"_s), "there is a tip");
    const auto* stage = window.findChild<AuthorPreviewStage*>();
    waitUntil([stage] { return stage->cost().firstPictureMs >= 0.0; }, "the first picture");

    const auto registerSeries = [&](const char* name, Save save, const char* property) {
        benchmark::RegisterBenchmark(name,
                                     [&files, stage, save, property](benchmark::State& state) {
                                         for ([[maybe_unused]] auto iteration : state)
                                             state.counters["ms"] =
                                                 msToPicture(files, stage, save, property);
                                     })
            ->Iterations(1);
    };
    registerSeries("saved-scene", saveScene, "sceneState");
    registerSeries("saved-text", saveText, "textState");
    return Report::run(argc, argv, kTries,
                       {aimFor("saved-scene", Report::Statistic::Median),
                        aimFor("saved-scene", Report::Statistic::Worst),
                        aimFor("saved-text", Report::Statistic::Median),
                        aimFor("saved-text", Report::Statistic::Worst)});
}
