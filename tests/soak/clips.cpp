// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What tips with a clip cost a host with safeguards: memory, threads and descriptors over many of
/// them, the time that the next tip waits, the time until the first picture, and the wake-ups of a
/// clip that is paused. Clips of 640 by 360 pixels, 300 pictures, 30 a second.

#include "ClipWriter.h"
#include "PackageBuilder.h"
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLSafeguards.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoController.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QQuickItem>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kWarmUp = 10;
constexpr int kTries = 30;
constexpr int kPatienceMs = 30000;
constexpr int kQuietMs = 10000;

constexpr auto kTextScene = "import QtQuick\nRectangle { width: 160; height: 90 }\n";
constexpr auto kClipScene = "import QtQuick\nimport com.larkspan.vidlets.qml\n"
                            "Rectangle { width: 640; height: 360\n"
                            "    VLVideoComponent { width: 640; height: 360 } }\n";

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

long long residentBytes()
{
    return contentOf(u"/proc/self/statm"_s).split(' ').at(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

qsizetype entriesOf(const QString& directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

int sleepsOfClipThreads()
{
    int sleeps = 0;
    const QDir tasks(u"/proc/self/task"_s);
    for (const QString& id : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QByteArray status = contentOf(tasks.filePath(id + u"/status"_s));
        if (!status.contains("FFMPEG\n") && !status.contains("Controller\n"))
            continue;
        const QByteArray tag = "\nvoluntary_ctxt_switches:";
        const qsizetype start = status.indexOf(tag) + tag.size();
        sleeps += status.mid(start, status.indexOf('\n', start) - start).trimmed().toInt();
    }
    return sleeps;
}

/// A host with one tip that has a clip and one that has none.
class Stage
{
public:
    explicit Stage(bool safeguarded)
    {
        m_packages.writeControlFile(u"clips.vidlets"_s, u"tips.xml"_s,
                                    "<vidlets><vidlet key=\"clip\" ui=\"ui/Clip.qml\"/>"
                                    "<vidlet key=\"text\" ui=\"ui/Text.qml\"/></vidlets>");
        m_packages.write(u"clips.vidlets/ui/Clip.qml"_s, kClipScene);
        m_packages.write(u"clips.vidlets/ui/Text.qml"_s, kTextScene);
        m_clips.testClip(u"clip.mp4"_s, u"libx264"_s, {640, 360}, 30, 300,
                         {u"-bf"_s, u"0"_s, u"-pix_fmt"_s, u"yuv420p"_s});
        m_packages.write(u"clips.vidlets/Resources/clip.mp4"_s, m_clips.readBytes(u"clip.mp4"_s));
        if (safeguarded) {
            useSafeguards(m_settings);
            // All pictures of the clip, which are a little more.
            m_settings.set(ckClipMemoryLimit, 0);
        }
        m_interface =
            std::make_unique<VLInterface>(m_settings, QStringList{m_packages.dataPath()}, nullptr);
    }
    VLVideoComponent* showClip()
    {
        m_interface->show(u"clip"_s, QPoint(50, 50), nullptr);
        return popup()->view()->rootObject()->findChild<VLVideoComponent*>();
    }
    /// Returns the milliseconds that it took.
    double showText()
    {
        QElapsedTimer timer;
        timer.start();
        m_interface->show(u"text"_s, QPoint(50, 50), nullptr);
        return static_cast<double>(timer.nsecsElapsed()) / 1e6;
    }

private:
    static VLWidget* popup()
    {
        const QWidgetList widgets = QApplication::topLevelWidgets();
        for (QWidget* widget : widgets) {
            if (auto* popup = qobject_cast<VLWidget*>(widget))
                return popup;
        }
        qFatal("There is no popup");
    }

    ClipWriter m_clips;
    PackageBuilder m_packages;
    VLContext m_settings{nullptr};
    std::unique_ptr<VLInterface> m_interface;
};

void printTimes(const char* name, std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    std::printf("%s: median %.2f ms, worst %.2f ms of %zu\n", name, times[times.size() / 2],
                times.back(), times.size());
}

void hover(Stage& stage, int hovers, bool decodeWhole)
{
    std::vector<double> blocked;
    long long resident = 0;
    qsizetype threads = 0;
    qsizetype descriptors = 0;
    for (int i = 0; i < kWarmUp + hovers; ++i) {
        if (i == kWarmUp) {
            resident = residentBytes();
            threads = entriesOf(u"/proc/self/task"_s);
            descriptors = entriesOf(u"/proc/self/fd"_s);
        }
        VLVideoComponent* item = stage.showClip();
        auto* source = item->findChild<VLVideoSource*>();
        bool ended = false;
        QObject::connect(source, &VLVideoSource::streamEnded, item, [&ended] { ended = true; });
        item->setSource(u"clip.mp4"_s);
        item->play();
        if (!QTest::qWaitFor([&] { return decodeWhole ? ended : source->loadedFrameCount() > 5; },
                             kPatienceMs))
            qFatal("The clip was not decoded");
        const double time = stage.showText();
        if (i >= kWarmUp)
            blocked.push_back(time);
        QTest::qWait(1);
    }
    std::printf("%d hovers, %s: %lld bytes a hover, threads %+lld, descriptors %+lld\n", hovers,
                decodeWhole ? "clip decoded" : "in mid-decoding",
                (residentBytes() - resident) / hovers,
                static_cast<long long>(entriesOf(u"/proc/self/task"_s) - threads),
                static_cast<long long>(entriesOf(u"/proc/self/fd"_s) - descriptors));
    printTimes("  next tip after one with a player", blocked);
    std::fflush(stdout);
}

void showFirstPictures(Stage& stage)
{
    std::vector<double> times;
    for (int i = 0; i < kTries; ++i) {
        VLVideoComponent* item = stage.showClip();
        QTest::qWait(50);
        auto* controller = item->findChild<VLVideoController*>();
        bool shown = false;
        QEventLoop loop;
        QObject::connect(controller, &VLVideoController::displayFrame, item, [&] {
            shown = shown || !controller->currentFrame().isNull();
            if (shown)
                loop.quit();
        });
        QElapsedTimer timer;
        timer.start();
        item->setSource(u"clip.mp4"_s);
        if (!shown)
            loop.exec();
        times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        stage.showText();
    }
    printTimes("First picture after source, paused", times);
}

void countWakeUps(Stage& stage)
{
    VLVideoComponent* item = stage.showClip();
    item->setSource(u"clip.mp4"_s);
    QTest::qWait(kQuietMs / 2);
    const int before = sleepsOfClipThreads();
    QTest::qWait(kQuietMs);
    std::printf("Wake-ups of a paused clip in 10 s: %d\n", sleepsOfClipThreads() - before);
    stage.showText();
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const int hovers = argc > 1 ? std::atoi(argv[1]) : 1000;
    if (hovers <= 0)
        return EXIT_FAILURE;
    Stage stage(argc <= 2);
    hover(stage, hovers, false);
    hover(stage, hovers, true);
    showFirstPictures(stage);
    countWakeUps(stage);
    return EXIT_SUCCESS;
}
