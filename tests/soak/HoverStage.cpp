// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HoverStage.h"

#include "AllocationCounter.h"
#include "PopupStage.h"
#include <Vidlets/VLSafeguards.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>
#include <Vidlets/VLView.h>

#include <QApplication>
#include <QCursor>
#include <QDeadlineTimer>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QWindow>

#include <atomic>

// Last, since it defines common words.
#include <X11/Xlib.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 30000;
constexpr int kPulseMs = 2;
constexpr int kStayMs = 1;
constexpr int kColumns = 10;
constexpr int kClipFps = 100;
/// The orders to idle that a source gives itself at the end of a clip. With the last one carried
/// out its queue is empty.
constexpr int kIdleOrders = 2;
const QSize kControlSize(90, 40);
const QPoint kEmptyPlace(5, 5);
const QSize kEverywhere(5000, 5000);

constexpr auto kTextScene = R"(import QtQuick

Rectangle {
    function reserve() { vidletView.reserved = true }

    width: 160
    height: 90
    color: "steelblue"
    Text { text: vidlet ? vidlet.attribute("key") : "" }
}
)";

// The program sets the clip's source: it has to listen before the first order goes out.
constexpr auto kClipScene = R"(import QtQuick
import com.larkspan.vidlets.qml

Rectangle {
    function reserve() { vidletView.reserved = true }

    width: 160
    height: 90
    color: "steelblue"
    Text { text: vidlet ? vidlet.attribute("key") : "" }
    VLVideoComponent { y: 40; width: 32; height: 24 }
}
)";

QString package()
{
    return u"soak.vidlets"_s;
}

QString clipName()
{
    return u"clip.avi"_s;
}

} // namespace

void waitUntil(const std::function<bool()>& condition, const char* what)
{
    const QDeadlineTimer deadline(kPatienceMs);
    while (!condition()) {
        if (deadline.hasExpired())
            qFatal("Waited in vain until %s", what);
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

QSize HoverStage::clipSize()
{
    return {32, 24};
}

bool HoverStage::hasClip(int hover)
{
    return hover % kControls % kClipEvery == kClipEvery - 1;
}

QString HoverStage::keyOf(int number)
{
    return u"control-%1"_s.arg(number % kControls, 2, 10, QChar(u'0'));
}

HoverStage::HoverStage(bool safeguarded)
{
    writePackage();
    m_window.resize(1000, 300);
    for (int i = 0; i < kControls; ++i) {
        auto* control = new QPushButton(keyOf(i), &m_window);
        control->setObjectName(keyOf(i));
        control->setGeometry(
            QRect(QPoint(20 + i % kColumns * 95, 20 + i / kColumns * 50), kControlSize));
        m_controls += control;
    }
    if (!bringUp(&m_window))
        qFatal("The window did not come up");
    QCursor::setPos(m_window.mapToGlobal(kEmptyPlace));

    if (safeguarded)
        useSafeguards(m_settings);
    m_settings.set(ckInstallEventFilter, true);
    m_settings.set(ckHideDuration, 0);
    m_settings.set(ckStayDuration, kStayMs);
    m_settings.set(ckSafeZoneMargin, kEverywhere);
    m_interface =
        std::make_unique<VLInterface>(m_settings, QStringList{m_packages.dataPath()}, &m_index);
    m_pulse.start(kPulseMs);

    // The first request makes the popup, through which a host finds its manager.
    m_interface->show(u"none"_s, QPoint(), nullptr);
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        if (auto* popup = qobject_cast<VLWidget*>(widget))
            m_manager = popup->manager();
    }
}

void HoverStage::writePackage()
{
    QByteArray tips = "<vidlets>\n";
    for (int i = 0; i < kControls; ++i) {
        tips += "  <vidlet key=\"" + keyOf(i).toUtf8() + "\" ui=\"ui/"
            + (hasClip(i) ? "Clip" : "Text") + ".qml\"><text>A tip.</text></vidlet>\n";
    }
    m_packages.writeControlFile(package(), u"tips.xml"_s, tips + "</vidlets>\n");
    m_packages.write(package() + u"/ui/Text.qml"_s, kTextScene);
    m_packages.write(package() + u"/ui/Clip.qml"_s, kClipScene);
    // Every picture of this codec stands for itself, so that none is withheld at the end.
    m_clips.testClip(clipName(), u"ffv1"_s, clipSize(), kClipFps, kClipFrames,
                     {u"-pix_fmt"_s, u"yuv420p"_s});
    m_packages.write(package() + u"/Resources/"_s + clipName(), m_clips.readBytes(clipName()));
}

void HoverStage::hover(int number)
{
    showTip(number);
    constexpr int kWaysToGo = 3;
    switch (number % kWaysToGo) {
    case 0:
        click();
        break;
    case 1:
        moveAway();
        break;
    default:
        // The next tip takes its place.
        break;
    }
    // Else the engine's lists would be as long as the run.
    if (number % kControls == kControls - 1)
        popup()->view()->engine()->collectGarbage();
}

void HoverStage::rest()
{
    // Not the first one itself, which may be up.
    showTip(1);
    showTip(0);
    click();
    settle();
}

void HoverStage::settle()
{
    // Twice: the first time the engine makes a list as long as what it finds.
    popup()->view()->engine()->collectGarbage();
    popup()->view()->engine()->collectGarbage();
    // The window manager takes its time, and what it tells is allocated until it is read.
    constexpr int kQuietTurns = 100;
    long long bytes = 0;
    int quietTurns = 0;
    waitUntil(
        [&] {
            // Xlib remembers each request until it reads an answer, and Qt reads them past it.
            XSync(qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->display(), 0);
            const long long now = AllocationCounter::liveBytesNow();
            quietTurns = now == bytes ? quietTurns + 1 : 0;
            bytes = now;
            return quietTurns == kQuietTurns;
        },
        "nothing happens any more");
}

void HoverStage::pin(int number)
{
    showTip(number);
    const QPointer<VLWidget> pinned = popup();
    QMetaObject::invokeMethod(pinned->view()->rootObject(), "reserve");
    if (popup() == pinned)
        qFatal("The popup was not reserved");
    waitUntil([&] { return pinned->isVisible() && pinned->windowHandle()->isExposed(); },
              "a reserved window is on the screen");
    pinned->close();
    waitUntil([&] { return pinned.isNull(); }, "a reserved window is gone");
    // Forgets the window that has gone.
    m_manager->raise();
}

QString HoverStage::clipPath() const
{
    return m_packages.path(package() + u"/Resources/"_s + clipName());
}

VLIndex& HoverStage::index()
{
    return m_index;
}

int HoverStage::shows() const
{
    return m_shows;
}

int HoverStage::clipShows() const
{
    return m_clipShows;
}

void HoverStage::showTip(int number)
{
    QPushButton* control = m_controls.at(number % kControls);
    const QPoint place = control->rect().center();
    QHelpEvent event(QEvent::ToolTip, place, control->mapToGlobal(place));
    bool drawn = false;
    const auto connection =
        QObject::connect(popup()->view(), &QQuickWindow::frameSwapped, [&drawn] { drawn = true; });
    QCoreApplication::sendEvent(control, &event);
    ++m_shows;
    waitUntil([this, &drawn] { return drawn && popup()->windowHandle()->isExposed(); },
              "a tip is on the screen");
    QObject::disconnect(connection);
    const QVariant key = popup()->view()->content()->attribute(u"key"_s);
    if (key != keyOf(number) || !popup()->view()->rootObject())
        qFatal("The tip is not that of %s", qPrintable(keyOf(number)));
    if (hasClip(number))
        playClip();
}

/// Has the clip of the tip decoded to its end and played. An item that goes earlier leaves the open
/// file behind, and orders that were not carried out.
void HoverStage::playClip()
{
    ++m_clipShows;
    auto* item = popup()->view()->rootObject()->findChild<VLVideoComponent*>();
    auto* source = item->findChild<VLVideoSourceFFMPEG*>();
    std::atomic<int> idleOrders{0};
    const auto connection = QObject::connect(
        source, &VLVideoSource::actionChanged, source,
        [source, &idleOrders] {
            if (source->action() == VLVideoSource::ActionIdle)
                ++idleOrders;
        },
        Qt::DirectConnection);
    item->setSource(clipName());
    waitUntil([&] { return idleOrders == kIdleOrders; }, "a clip is decoded");
    QObject::disconnect(connection);
    if (source->loadedFrameCount() != kClipFrames)
        qFatal("The clip has %llu frames", source->loadedFrameCount());
    // The end of decoding pauses, as soon as word of it comes to this thread.
    QCoreApplication::processEvents();
    item->play();
    waitUntil([item] { return item->position() > 0; }, "a clip plays");
}

void HoverStage::click()
{
    QMouseEvent press(QEvent::MouseButtonPress, kEmptyPlace, m_window.mapToGlobal(kEmptyPlace),
                      Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&m_window, &press);
    if (popup()->isVisible())
        qFatal("A click did not hide the tip");
    waitForUnmapping();
}

void HoverStage::moveAway()
{
    m_interface->context().set(ckSafeZoneMargin, QSize(0, 0));
    QMouseEvent move(QEvent::MouseMove, kEmptyPlace, m_window.mapToGlobal(kEmptyPlace),
                     Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&m_window, &move);
    waitUntil([this] { return !popup()->isVisible(); }, "a tip has gone");
    m_interface->context().set(ckSafeZoneMargin, kEverywhere);
    waitForUnmapping();
}

/// A window that is shown again before the display has heard of its hiding may stay unmapped.
void HoverStage::waitForUnmapping()
{
    waitUntil([this] { return !popup()->windowHandle()->isExposed(); }, "a tip is off the screen");
}

VLWidget* HoverStage::popup() const
{
    return m_manager->widget();
}
