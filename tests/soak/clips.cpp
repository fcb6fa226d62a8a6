// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What tips with a clip cost a host with safeguards: memory, threads and descriptors over many of
/// them, the time that the next tip waits, the time until the first picture, and the wake-ups of a
/// clip that is paused. Clips of 640 by 360 pixels, 300 pictures, 30 a second.

#include "ClipThreads.h"
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

#ifdef __GLIBC__
#include <malloc.h>
#endif

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kWarmUp = 10;
constexpr int kTries = 30;
constexpr int kPatienceMs = 30000;
constexpr int kQuietMs = 10000;
constexpr int kSettleMs = 300;
constexpr long long kMaxGrowthBytes = 1024;

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

/// Whether a clip plays, or the pictures of one are being freed.
bool hasClipThreads()
{
    const QDir tasks(u"/proc/self/task"_s);
    const QStringList ids = tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return std::any_of(ids.cbegin(), ids.cend(), [&tasks](const QString& id) {
        const QByteArray name = contentOf(tasks.filePath(id + u"/comm"_s));
        return name == "FFMPEG\n" || name == "Controller\n" || name.contains("pooled");
    });
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

/// Prints what was measured beside its aim. Gives whether it was met.
bool checkTimes(const char* name, std::vector<double> times, double medianMs, double worstMs)
{
    std::sort(times.begin(), times.end());
    const double median = times[times.size() / 2];
    const bool met = median <= medianMs && times.back() <= worstMs;
    std::printf("%s: median %.2f ms (aim %.0f), worst %.2f ms (aim %.0f) of %zu: %s\n", name,
                median, medianMs, times.back(), worstMs, times.size(), met ? "met" : "missed");
    return met;
}

struct Holdings
{
    long long resident = 0;
    /// Without what the heap keeps to give out again: it reaches its height within some tips.
    long long inUse = 0;
    /// What is allocated, whatever memory it takes to hold it.
    long long allocated = 0;
    qsizetype threads = 0;
    qsizetype descriptors = 0;
};

/// What the process holds once the thread that frees pictures has gone.
Holdings settledHoldings(Stage& stage)
{
    stage.showText();
    if (!QTest::qWaitFor([] { return !hasClipThreads(); }, kPatienceMs))
        std::printf("  threads of a clip are still there\n");
    QTest::qWait(kSettleMs);
    Holdings holdings;
    holdings.resident = residentBytes();
#ifdef __GLIBC__
    malloc_trim(0);
    const struct mallinfo2 heap = mallinfo2();
    holdings.allocated =
        static_cast<long long>(heap.uordblks) + static_cast<long long>(heap.hblkhd);
#endif
    holdings.inUse = residentBytes();
    holdings.threads = entriesOf(u"/proc/self/task"_s);
    holdings.descriptors = entriesOf(u"/proc/self/fd"_s);
    return holdings;
}

/// Has one tip with a clip come and go, and gives how long the next tip took.
double hoverOnce(Stage& stage, bool decodeWhole)
{
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
    QTest::qWait(1);
    return time;
}

bool hover(Stage& stage, int hovers, bool decodeWhole)
{
    for (int i = 0; i < kWarmUp; ++i)
        hoverOnce(stage, decodeWhole);
    const Holdings before = settledHoldings(stage);
    std::vector<double> blocked;
    for (int i = 0; i < hovers; ++i)
        blocked.push_back(hoverOnce(stage, decodeWhole));
    const Holdings after = settledHoldings(stage);

    const long long growth = (after.inUse - before.inUse) / hovers;
    const qsizetype threads = after.threads - before.threads;
    const qsizetype descriptors = after.descriptors - before.descriptors;
    const bool met = growth < kMaxGrowthBytes && threads <= 0 && descriptors <= 0;
    std::printf("%d hovers, %s: %lld bytes a hover, %lld with what the heap keeps, %lld allocated, "
                "threads %+lld, descriptors %+lld: %s\n",
                hovers, decodeWhole ? "clip decoded" : "in mid-decoding", growth,
                (after.resident - before.resident) / hovers,
                (after.allocated - before.allocated) / hovers, static_cast<long long>(threads),
                static_cast<long long>(descriptors), met ? "met" : "missed");
    const bool inTime = checkTimes("  next tip after one with a player", blocked, 5, 20);
    std::fflush(stdout);
    return met && inTime;
}

bool showFirstPictures(Stage& stage)
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
    return checkTimes("First picture after source, paused", times, 30, 60);
}

bool countWakeUps(Stage& stage)
{
    VLVideoComponent* item = stage.showClip();
    item->setSource(u"clip.mp4"_s);
    QTest::qWait(kQuietMs / 2);
    const int before = sleepsOfClipThreads();
    QTest::qWait(kQuietMs);
    const int wakeUps = sleepsOfClipThreads() - before;
    std::printf("Wake-ups of a paused clip in 10 s: %d: %s\n", wakeUps,
                wakeUps == 0 ? "met" : "missed");
    stage.showText();
    return wakeUps == 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const int hovers = argc > 1 ? std::atoi(argv[1]) : 1000;
    if (hovers <= 0)
        return EXIT_FAILURE;
    Stage stage(argc <= 2);
    bool met = hover(stage, hovers, false);
    met = hover(stage, hovers, true) && met;
    met = showFirstPictures(stage) && met;
    met = countWakeUps(stage) && met;
    return met ? EXIT_SUCCESS : EXIT_FAILURE;
}
