// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// From the request for a popup to its first frame on the screen, beside a bare view in a window
/// container that shows the same scene.

#include "BarePopup.h"
#include "FrameWatch.h"
#include "PackageBuilder.h"
#include "Report.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLSafeguards.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QApplication>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QSGRendererInterface>
#include <QUrl>
#include <QWidget>

#include <memory>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kRepetitions = 25;
constexpr int kEndlessMs = 600000;
const QString kPackage = u"Show.vidlets"_s;
const QPoint kPosition(300, 250);

QByteArray scene()
{
    return R"(import QtQuick

Rectangle {
    width: 360
    height: 220
    color: "#fdf6e3"
    border.color: "#657b83"

    Column {
        anchors { fill: parent; margins: 12 }
        spacing: 6

        Text { text: vidlet ? vidlet.attribute("title") : ""; font.bold: true; font.pixelSize: 18 }
        Text {
            width: parent.width
            text: vidlet ? vidlet.childElement("text").content : ""
            wrapMode: Text.WordWrap
        }
        Repeater {
            model: 5
            Row {
                spacing: 8
                Rectangle { width: 14; height: 14; radius: 7; color: "steelblue" }
                Text { text: "Line " + index }
            }
        }
    }
}
)";
}

/// A bare popup with content for its scene, which outlives the scene.
class BareTip
{
public:
    explicit BareTip(const QUrl& scene)
        : m_scene(scene)
    {
        m_content.setAttribute(u"title"_s, u"A title"_s);
        auto* text = new Vidlets::VLXmlElement(&m_content);
        text->setProperty("tagName", u"text"_s);
    }

    void show()
    {
        m_popup.view()->rootContext()->setContextProperty(u"vidlet"_s, &m_content);
        m_popup.show(m_scene, kPosition);
    }

    void showLoaded()
    {
        m_popup.showLoaded();
    }

    QWidget& window()
    {
        return m_popup.window();
    }

    QQuickView* view() const
    {
        return m_popup.view();
    }

private:
    QUrl m_scene;
    Vidlets::VLXmlElement m_content;
    BarePopup m_popup;
};

struct Host
{
    VLContext context;
    Vidlets::VLInterface interface {
        context, {}, nullptr
    };
};

class ShowBenchmark
{
public:
    ShowBenchmark()
    {
        Vidlets::useSafeguards(m_safeguarded.context);
        const QString path = m_packages.write(kPackage + u"/ui/VidletUI.qml"_s, scene());
        m_scene = QUrl::fromLocalFile(path);
        for (const QString& key : {u"even"_s, u"odd"_s}) {
            m_packages.writeControlFile(
                kPackage, key + u".xml"_s,
                "<vidlets><vidlet key=\"" + key.toUtf8()
                    + "\" title=\"A title\"><text>Text of the tip</text></vidlet></vidlets>");
        }
        // Counting down, as by default, but never to the end.
        for (Host* host : {&m_plain, &m_safeguarded})
            host->context.set(Vidlets::ckStayDuration, kEndlessMs);
        m_control.setGeometry(100, 100, 200, 100);
        m_control.show();
        waitUntil([this] { return m_control.windowHandle()->isExposed(); }, "the control");
    }

    /// The first window of a process loads plugins, fonts and the cache of compiled scenes, which
    /// would fall on whichever benchmark comes first.
    void warmUp()
    {
        firstPopupSeconds(m_plain);
        firstPopupSeconds(m_safeguarded);
        firstBareSeconds();
    }

    Host& plain()
    {
        return m_plain;
    }

    Host& safeguarded()
    {
        return m_safeguarded;
    }

    void firstShow(benchmark::State& state, Host& host)
    {
        for ([[maybe_unused]] auto turn : state)
            state.SetIterationTime(firstPopupSeconds(host));
    }

    void firstBareShow(benchmark::State& state)
    {
        for ([[maybe_unused]] auto turn : state)
            state.SetIterationTime(firstBareSeconds());
    }

    void laterShow(benchmark::State& state, Host& host)
    {
        const auto manager = newManager(host);
        requestPopup(*manager);
        for ([[maybe_unused]] auto turn : state) {
            hide(*manager->widget(), manager->widget()->view());
            FrameWatch frames;
            frames.watch(manager->widget()->view());
            requestPopup(*manager);
            state.SetIterationTime(frames.waitForFirst());
            verifyShown(manager->widget()->view());
        }
    }

    template <typename Show> void laterBareShow(benchmark::State& state, Show show)
    {
        BareTip bare(m_scene);
        bare.show();
        for ([[maybe_unused]] auto turn : state) {
            hide(bare.window(), bare.view());
            FrameWatch frames;
            frames.watch(bare.view());
            show(bare);
            state.SetIterationTime(frames.waitForFirst());
            verifyShown(bare.view());
        }
    }

private:
    std::unique_ptr<Vidlets::VLManager> newManager(Host& host)
    {
        return std::make_unique<Vidlets::VLManager>(&host.interface, host.context,
                                                    QStringList{m_packages.dataPath()}, nullptr);
    }

    double firstPopupSeconds(Host& host)
    {
        auto manager = newManager(host);
        FrameWatch frames;
        requestPopup(*manager);
        frames.watch(manager->widget()->view());
        const double seconds = frames.waitForFirst();
        verifyShown(manager->widget()->view());
        manager.reset();
        waitUntilAlone();
        return seconds;
    }

    double firstBareSeconds()
    {
        FrameWatch frames;
        auto bare = std::make_unique<BareTip>(m_scene);
        bare->show();
        frames.watch(bare->view());
        const double seconds = frames.waitForFirst();
        verifyShown(bare->view());
        bare.reset();
        waitUntilAlone();
        return seconds;
    }

    void requestPopup(Vidlets::VLManager& manager)
    {
        const QString key = ++m_shows % 2 == 0 ? u"even"_s : u"odd"_s;
        Report::verify(manager.show(key, kPosition, &m_control), "the key has a tip");
    }

    static void hide(QWidget& window, QQuickWindow* view)
    {
        waitUntil([view] { return view->isExposed(); }, "the view");
        window.hide();
        waitUntil([view] { return !view->isExposed(); }, "the view to be hidden");
    }

    void waitUntilAlone() const
    {
        waitUntil([] { return QApplication::topLevelWidgets().size() == 1; },
                  "the windows to be gone");
    }

    static void verifyShown(QQuickView* view)
    {
        const bool isSoftware = qEnvironmentVariable("QT_QUICK_BACKEND") == "software"_L1;
        const auto expected =
            isSoftware ? QSGRendererInterface::Software : QSGRendererInterface::OpenGL;
        Report::verify(view->rendererInterface()->graphicsApi() == expected,
                       "the scene graph is the one that was asked for");
        Report::verify(view->rootObject() && view->isVisible(), "the scene is on show");
    }

    PackageBuilder m_packages;
    Host m_plain;
    Host m_safeguarded;
    QUrl m_scene;
    QWidget m_control;
    int m_shows = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    ShowBenchmark showing;
    showing.warmUp();
    const auto add = [](const char* name, auto operation) {
        benchmark::RegisterBenchmark(name, operation)
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    };
    add("first", [&](benchmark::State& state) { showing.firstShow(state, showing.plain()); });
    add("first-safeguarded",
        [&](benchmark::State& state) { showing.firstShow(state, showing.safeguarded()); });
    add("first-bare", [&](benchmark::State& state) { showing.firstBareShow(state); });
    add("later", [&](benchmark::State& state) { showing.laterShow(state, showing.plain()); });
    add("later-safeguarded",
        [&](benchmark::State& state) { showing.laterShow(state, showing.safeguarded()); });
    add("later-bare", [&](benchmark::State& state) {
        showing.laterBareShow(state, [](BareTip& bare) { bare.show(); });
    });
    add("later-bare-same-scene", [&](benchmark::State& state) {
        showing.laterBareShow(state, [](BareTip& bare) { bare.showLoaded(); });
    });

    const std::string backend =
        qEnvironmentVariable("QT_QUICK_BACKEND") == "software"_L1 ? "software" : "opengl";
    std::vector<Report::Aim> aims;
    for (const std::string& show : {std::string("first"), std::string("later")}) {
        Report::Aim aim;
        aim.subject = "show-" + show + "-" + backend;
        aim.measured = {show, {}};
        aim.baseline = {show + "-bare", {}};
        aim.value = show == "later" ? 1.05 : 1.1;
        aims.push_back(aim);
        const std::vector<Report::Aim> beside = Report::safeguardedAims(aim.subject, show);
        aims.insert(aims.end(), beside.cbegin(), beside.cend());
    }
    return Report::run(argc, argv, kRepetitions, aims);
}
