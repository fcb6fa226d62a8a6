// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// Popups with safeguards, beside what a host would take instead: the media player of Qt Multimedia
/// in a bare popup for a clip, and the tool tip of Qt Widgets for a text. What is on the screen,
/// and when, is read off the screen for both.

#include "BarePopup.h"
#include "ClipWriter.h"
#include "FrameWatch.h"
#include "PackageBuilder.h"
#include "ProcessFigures.h"
#include "Report.h"
#include "ScreenProbe.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLSafeguards.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QRgb>
#include <QToolTip>
#include <QUrl>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kFramesPerSecond = 30;
// As many pictures of this size as the safeguards let a clip have, or almost: 9.6 seconds.
constexpr int kClipFrames = 288;
constexpr int kLoopFrames = 2 * kFramesPerSecond;
constexpr QSize kSizePx{640, 360};
constexpr int kPlayedSeconds = 10;
constexpr int kSeams = 4;
constexpr int kEndlessMs = 600000;
constexpr int kRepetitions = 25;
constexpr int kClipRepetitions = 15;
constexpr int kPlayRepetitions = 3;
constexpr double kMsPerSecond = 1000.0;
constexpr double kNsPerMs = 1e6;
const QString kPackage = u"Peers.vidlets"_s;
const QPoint kPosition(300, 200);

/// Each picture carries its number on its upper edge: after a cell that is always white and one
/// that is always black, one for each bit, white where it is set.
namespace Code {

constexpr int kCellPx = 32;
constexpr int kBits = 9;
constexpr int kCells = kBits + 2;
constexpr int kLight = 200;
constexpr int kDark = 60;

QString filter()
{
    const QString box = u"drawbox=x=%1:y=0:w=%2:h=%3:color=%4:t=fill"_s;
    QStringList boxes = {box.arg(0).arg(kCells * kCellPx).arg(kCellPx).arg(u"black"_s),
                         box.arg(0).arg(kCellPx).arg(kCellPx).arg(u"white"_s)};
    for (int bit = 0; bit < kBits; ++bit) {
        boxes += box.arg((bit + 2) * kCellPx).arg(kCellPx).arg(kCellPx).arg(u"white"_s)
            + u":enable='mod(floor(n/%1),2)'"_s.arg(1 << bit);
    }
    return boxes.join(u',');
}

QRect area(const QPoint& picture)
{
    return {picture + QPoint(0, kCellPx / 2), QSize(kCells * kCellPx, 1)};
}

/// Gives the number of the picture.
int read(const std::vector<QRgb>& pixels)
{
    int number = 0;
    for (int cell = 0; cell < kCells; ++cell) {
        const int middle = cell * kCellPx + kCellPx / 2;
        const int gray = qGray(pixels[static_cast<size_t>(middle)]);
        if (gray > kDark && gray < kLight)
            return ScreenProbe::nothing();
        const bool isSet = gray >= kLight;
        if (cell < 2 && isSet != (cell == 0))
            return ScreenProbe::nothing();
        if (cell >= 2 && isSet)
            number |= 1 << (cell - 2);
    }
    return number;
}

} // namespace Code

/// A text whose last words have a ground of one colour, by which it is known on the screen.
namespace Marked {

constexpr QRgb kGround = 0xffc00080U;
constexpr int kMinPixels = 200;

QString text()
{
    return u"<b>Brush</b> <i>(B)</i><br>Paints along the path of the pointer.<br>Hold "
           "<b>Shift</b> for a straight line.<br>Turn the wheel for the width, "
           "<span style='background-color:#c00080'>and back for less</span>"_s;
}

int read(const std::vector<QRgb>& pixels)
{
    const auto count = std::count(pixels.cbegin(), pixels.cend(), kGround);
    return count >= kMinPixels ? 1 : ScreenProbe::nothing();
}

} // namespace Marked

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    Report::verify(file.open(QIODevice::ReadOnly), "the player is there");
    return file.readAll();
}

QByteArray controlFile()
{
    QByteArray content = "<vidlets>\n";
    for (const char* name : {"clip", "loop"}) {
        for (const char* turn : {"even", "odd"}) {
            content += QByteArray("<vidlet key=\"") + name + '-' + turn
                + "\" ui=\"ui/Clip.qml\" clip=\"" + name + ".mp4\"/>\n";
        }
    }
    for (const char* turn : {"even", "odd"}) {
        content += QByteArray("<vidlet key=\"text-") + turn + "\"><text><![CDATA["
            + Marked::text().toUtf8() + "]]></text></vidlet>\n";
    }
    return content + "</vidlets>\n";
}

/// @p text is an expression of QML.
QByteArray textScene(const QByteArray& text)
{
    return R"(import QtQuick

Rectangle {
    width: text.implicitWidth + 8
    height: text.implicitHeight + 8
    color: "#ffffdc"
    border.color: "black"

    Text {
        id: text
        x: 4
        y: 4
        textFormat: Text.RichText
        text: TEXT
    }
}
)"_ba.replace("TEXT", text);
}

QByteArray clipScene()
{
    return R"(import QtQuick

Item {
    width: 640
    height: 382

    VideoPlayer {
        width: parent.width
        source: vidlet ? vidlet.attribute("clip") : ""
        loop: true
        expectedSize: Qt.size(640, 360)
    }
}
)";
}

/// The picture with a bar and a button below, as the player of the packages has them.
QByteArray peerScene(const QString& clip)
{
    return R"(import QtQuick
import QtMultimedia

Item {
    width: 640
    height: 382

    readonly property bool isShown: Window.window !== null && Window.window.visible
    onIsShownChanged: isShown ? media.play() : media.stop()

    VideoOutput {
        id: output
        width: 640
        height: 360

        TapHandler {
            onTapped: media.playbackState === MediaPlayer.PlayingState ? media.pause()
                                                                       : media.play()
        }
    }

    MediaPlayer {
        id: media
        source: "CLIP"
        videoOutput: output
        loops: MediaPlayer.Infinite
    }

    Row {
        x: 3
        y: 366
        spacing: 3

        Rectangle { width: 3; height: 10; color: "black" }
        Rectangle { width: 3; height: 10; color: "black" }
    }

    Item {
        id: bar
        x: 20
        y: 360
        width: 615
        height: 22

        readonly property real share: media.duration > 0 ? media.position / media.duration : 0

        Rectangle { y: 10; width: parent.width; height: 3; radius: 1.5; color: "lightgray" }
        Rectangle { y: 10; width: parent.width * bar.share; height: 3; radius: 1.5; color: "blue" }
        Rectangle { y: 6; x: parent.width * bar.share - 4; width: 9; height: 9; radius: 4.5; color: "blue" }
    }
}
)"_ba.replace("CLIP", QUrl::fromLocalFile(clip).toEncoded());
}

void runFor(double seconds)
{
    QElapsedTimer clock;
    clock.start();
    waitUntil([&] { return static_cast<double>(clock.elapsed()) >= seconds * kMsPerSecond; },
              "the time to pass");
}

/// One of two that show the same. Each show is a new request with its scene loaded anew, in a
/// window that is kept.
class Candidate
{
public:
    Candidate() = default;
    virtual ~Candidate() = default;

    virtual void show(const QString& what) = 0;
    virtual void hide() = 0;
    /// Where it is, in pixels of the screen, once shown.
    virtual QRect place() const = 0;

private:
    Q_DISABLE_COPY_MOVE(Candidate)
};

/// The bare screen below the popups, and the control that they are for.
class Backdrop
{
public:
    Backdrop()
    {
        m_ground.setWindowFlags(Qt::FramelessWindowHint);
        m_ground.setGeometry(0, 0, 1200, 780);
        m_control.setGeometry(kPosition.x() - 40, kPosition.y() - 40, 60, 20);
        m_ground.show();
        waitUntil([this] { return m_ground.windowHandle()->isExposed(); }, "the control");
    }

    QWidget* control()
    {
        return &m_control;
    }

private:
    QWidget m_ground;
    QWidget m_control{&m_ground};
};

class Popup : public Candidate
{
public:
    Popup(const PackageBuilder& packages, QWidget* control)
        : m_control(control)
    {
        // Counting down, as by default, but never to the end.
        m_context.set(Vidlets::ckStayDuration, kEndlessMs);
        Vidlets::useSafeguards(m_context);
        m_manager = std::make_unique<Vidlets::VLManager>(&m_host, m_context,
                                                         QStringList{packages.dataPath()}, nullptr);
    }

    void show(const QString& what) override
    {
        const QString key = what + (++m_shows % 2 == 0 ? u"-even"_s : u"-odd"_s);
        Report::verify(m_manager->show(key, kPosition, m_control), "the key has a tip");
    }

    void hide() override
    {
        m_manager->widget()->hide();
    }

    QRect place() const override
    {
        const Vidlets::VLView* view = m_manager->widget()->view();
        return {view->mapToGlobal(QPoint(0, 0)), view->size()};
    }

private:
    VLContext m_context;
    Vidlets::VLInterface m_host{m_context, {}, nullptr};
    std::unique_ptr<Vidlets::VLManager> m_manager;
    QWidget* m_control;
    int m_shows = 0;
};

class ScenePopup : public Candidate
{
public:
    explicit ScenePopup(const PackageBuilder& packages)
        : m_packages(packages)
    {
    }

    void show(const QString& what) override
    {
        m_popup.show(QUrl::fromLocalFile(m_packages.path(what + u".qml"_s)), kPosition);
    }

    void hide() override
    {
        m_popup.window().hide();
    }

    QRect place() const override
    {
        return m_popup.window().geometry();
    }

private:
    const PackageBuilder& m_packages;
    BarePopup m_popup;
};

class ToolTip : public Candidate
{
public:
    explicit ToolTip(QWidget* control)
        : m_control(control)
    {
    }

    void show(const QString&) override
    {
        QToolTip::showText(kPosition, Marked::text(), m_control, QRect(), kEndlessMs);
    }

    void hide() override
    {
        QToolTip::hideText();
        waitUntil([] { return !QToolTip::isVisible(); }, "the tool tip to be gone");
    }

    QRect place() const override
    {
        const QWidgetList all = QApplication::topLevelWidgets();
        const auto found = std::find_if(all.cbegin(), all.cend(), [](const QWidget* widget) {
            return widget->inherits("QTipLabel") && widget->isVisible();
        });
        Report::verify(found != all.cend(), "there is a tool tip");
        return (*found)->geometry();
    }

private:
    QWidget* m_control;
};

/// Gives where it is on the screen. The first show of a process loads plugins, fonts and the cache
/// of compiled scenes, which would fall on whichever benchmark comes first.
QRect warmUp(Candidate& candidate, const QString& what)
{
    candidate.show(what);
    runFor(1.0);
    const QRect place = candidate.place();
    candidate.hide();
    return place;
}

class Trial
{
public:
    Trial(Candidate& candidate, const QString& what)
        : m_candidate(candidate)
        , m_what(what)
        , m_place(warmUp(candidate, what))
    {
    }

    /// From the request to what is looked for on the screen.
    void first(benchmark::State& state)
    {
        for ([[maybe_unused]] auto turn : state) {
            clearScreen();
            ScreenProbe probe = newProbe();
            QElapsedTimer request;
            request.start();
            m_candidate.show(m_what);
            state.counters["request_ms"] = static_cast<double>(request.nsecsElapsed()) / kNsPerMs;
            state.SetIterationTime(probe.waitForFirst("the first sight"));
            m_candidate.hide();
        }
    }

    /// The processor time of the process from the request on, decoding included.
    void play(benchmark::State& state)
    {
        for ([[maybe_unused]] auto turn : state) {
            clearScreen();
            const double used = ProcessFigures::processorSeconds();
            m_candidate.show(m_what);
            runFor(kPlayedSeconds);
            const double seconds = ProcessFigures::processorSeconds() - used;
            state.SetIterationTime(seconds);
            verifyPlays();
            m_candidate.hide();
        }
    }

    /// The longest time without a new picture around each seam, beyond the time of a picture.
    void loop(benchmark::State& state)
    {
        for ([[maybe_unused]] auto turn : state) {
            clearScreen();
            ScreenProbe probe = newProbe();
            m_candidate.show(m_what);
            std::vector<ScreenProbe::Sight> sights;
            waitUntil(
                [&] {
                    sights = picturesOf(probe.sights());
                    return seamsOf(sights).size() > kSeams;
                },
                "the clip to begin anew");
            m_candidate.hide();
            setSeamFigures(state, sights);
        }
    }

private:
    static bool isText(const QString& what)
    {
        return what == "text"_L1;
    }

    ScreenProbe newProbe() const
    {
        return isText(m_what) ? ScreenProbe(m_place, Marked::read)
                              : ScreenProbe(Code::area(m_place.topLeft()), Code::read);
    }

    void clearScreen() const
    {
        const ScreenProbe probe = newProbe();
        waitUntil([&probe] { return probe.sights().back().seen == ScreenProbe::nothing(); },
                  "the screen to be bare");
    }

    void verifyPlays() const
    {
        const ScreenProbe probe = newProbe();
        runFor(1.0);
        Report::verify(probe.sights().size() > kFramesPerSecond / 2, "the clip plays");
    }

    static std::vector<ScreenProbe::Sight> picturesOf(std::vector<ScreenProbe::Sight> sights)
    {
        // Half a picture is none.
        sights.erase(std::remove_if(sights.begin(), sights.end(),
                                    [](const ScreenProbe::Sight& sight) {
                                        return sight.seen == ScreenProbe::nothing();
                                    }),
                     sights.end());
        return sights;
    }

    /// The places of the pictures that come before the one before them.
    static std::vector<size_t> seamsOf(const std::vector<ScreenProbe::Sight>& pictures)
    {
        std::vector<size_t> seams;
        for (size_t i = 1; i < pictures.size(); ++i) {
            if (pictures[i].seen < pictures[i - 1].seen - kLoopFrames / 2)
                seams.push_back(i);
        }
        return seams;
    }

    static void setSeamFigures(benchmark::State& state,
                               const std::vector<ScreenProbe::Sight>& pictures)
    {
        constexpr size_t kAround = 4;
        std::vector<double> gaps;
        std::vector<double> skipped;
        std::vector<size_t> seams = seamsOf(pictures);
        seams.resize(kSeams); // What follows the last one is not there yet.
        for (const size_t seam : seams) {
            double longest = 0.0;
            for (size_t i = seam - kAround + 1; i < seam + kAround; ++i)
                longest = std::max(longest, pictures[i].seconds - pictures[i - 1].seconds);
            gaps.push_back((longest - 1.0 / kFramesPerSecond) * kMsPerSecond);
            skipped.push_back(kLoopFrames - 1 - pictures[seam - 1].seen + pictures[seam].seen);
        }
        std::sort(gaps.begin(), gaps.end());
        std::sort(skipped.begin(), skipped.end());
        state.SetIterationTime(gaps[kSeams / 2] / kMsPerSecond);
        state.counters["gap_ms"] = gaps[kSeams / 2];
        state.counters["worst_gap_ms"] = gaps.back();
        state.counters["pictures_skipped"] = skipped[kSeams / 2];
    }

    Candidate& m_candidate;
    const QString m_what;
    const QRect m_place;
};

/// Packages for ours, and scenes for the media player.
void writeContent(PackageBuilder& packages)
{
    packages.writeControlFile(kPackage, u"tips.xml"_s, controlFile());
    packages.write(kPackage + u"/ui/VideoPlayer.qml"_s, contentOf(QStringLiteral(VIDEO_PLAYER)));
    packages.write(kPackage + u"/ui/Clip.qml"_s, clipScene());
    packages.write(kPackage + u"/ui/VidletUI.qml"_s,
                   textScene("vidlet ? vidlet.childElement(\"text\").content : \"\""));
    packages.write(u"text.qml"_s, textScene('"' + Marked::text().toUtf8() + '"'));
    ClipWriter clips;
    for (const auto& [name, frames] :
         {std::pair(u"clip"_s, kClipFrames), {u"loop"_s, kLoopFrames}}) {
        const QString fileName = name + u".mp4"_s;
        clips.testClip(fileName, u"libx264"_s, kSizePx, kFramesPerSecond, frames,
                       {u"-vf"_s, Code::filter(), u"-pix_fmt"_s, u"yuv420p"_s});
        const QString path =
            packages.write(kPackage + u"/Resources/"_s + fileName, clips.readBytes(fileName));
        packages.write(name + u".qml"_s, peerScene(path));
    }
}

bool isSoftware()
{
    return qEnvironmentVariable("QT_QUICK_BACKEND") == "software"_L1;
}

Report::Aim aim(const std::string& subject, const char* baseline)
{
    Report::Aim result;
    result.subject =
        "peers-" + subject + "-beside-" + baseline + (isSoftware() ? "-software" : "-opengl");
    result.measured = {subject, {}};
    result.baseline = {subject + '-' + baseline, {}};
    result.value = 1.05;
    return result;
}

std::vector<Report::Aim> aims()
{
    Report::Aim loop = aim("loop", "media");
    loop.measured.counter = loop.baseline.counter = "gap_ms";
    loop.comparison = Report::Comparison::Difference;
    loop.value = 1.0;
    loop.unit = "ms";
    return {aim("text", "tooltip"), aim("text", "bare"), aim("picture", "media"),
            aim("play", "media"), loop};
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    PackageBuilder packages;
    writeContent(packages);
    Backdrop backdrop;
    std::vector<std::unique_ptr<Trial>> trials;
    // One for each, so that no text waits for the clip before it to go.
    Popup popup(packages, backdrop.control());
    Popup textPopup(packages, backdrop.control());
    ScenePopup media(packages);
    ScenePopup bare(packages);
    ToolTip toolTip(backdrop.control());

    const auto add = [&trials](const char* name, Candidate& candidate, const QString& what,
                               int repetitions, void (Trial::*operation)(benchmark::State&)) {
        trials.push_back(std::make_unique<Trial>(candidate, what));
        Trial* trial = trials.back().get();
        benchmark::RegisterBenchmark(
            name, [trial, operation](benchmark::State& state) { (trial->*operation)(state); })
            ->UseManualTime()
            ->Iterations(1)
            ->Repetitions(repetitions)
            ->Unit(benchmark::kMillisecond);
    };
    add("text", textPopup, u"text"_s, kRepetitions, &Trial::first);
    add("text-tooltip", toolTip, u"text"_s, kRepetitions, &Trial::first);
    add("text-bare", bare, u"text"_s, kRepetitions, &Trial::first);
    add("picture", popup, u"clip"_s, kClipRepetitions, &Trial::first);
    add("play", popup, u"clip"_s, kPlayRepetitions, &Trial::play);
    add("loop", popup, u"loop"_s, kPlayRepetitions, &Trial::loop);
    // With the software renderer Qt Multimedia shows no picture, and the process may end of it.
    if (!isSoftware()) {
        add("picture-media", media, u"clip"_s, kClipRepetitions, &Trial::first);
        add("play-media", media, u"clip"_s, kPlayRepetitions, &Trial::play);
        add("loop-media", media, u"loop"_s, kPlayRepetitions, &Trial::loop);
    }
    return Report::run(argc, argv, kRepetitions, aims());
}
