// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipWriter.h"
#include "CompositorScreen.h"
#include "PackageBuilder.h"
#include "PointerDriver.h"
#include "PopupStage.h"
#include "RecordingInterface.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QDeadlineTimer>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QQuickItem>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTimer>

#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

const QColor kWindowColor(0x20, 0xa0, 0x40);
const QColor kOtherColor(0xd0, 0xb0, 0x20);
const QColor kSceneColor(0xc0, 0x30, 0x90);
const QColor kEndColor(0x30, 0x50, 0xe0);
const QSize kSceneSize(160, 90);
const QSize kLargeSize(400, 300);
const QPoint kOffset(35, 30);
const QPoint kDesktop(1270, 10);
constexpr int kPatienceMs = 15000;
// In which the compositor passes on what it has.
constexpr int kCompositorMs = 1000;
constexpr int kEndlessMs = 600000;
constexpr int kShortMs = 50;
constexpr int kFlickSpeed = 5000;

// A colour that is drawn last and in the outermost corner tells that nothing of the scene is cut.
constexpr auto kScene = R"(import QtQuick

Rectangle {
    property bool isLarge: false

    width: isLarge ? 400 : 160
    height: isLarge ? 300 : 90
    color: "#c03090"

    Rectangle {
        anchors { right: parent.right; bottom: parent.bottom }
        width: 20
        height: 20
        color: "#3050e0"
    }

    MouseArea {
        anchors.fill: parent
        onClicked: (mouse) => {
            if (mouse.y > 45)
                vidletView.reserved = true
            else
                vidletView.openExternalResource("manual")
        }
    }
}
)";

// Plays a clip once, from red to blue.
constexpr auto kClipScene = R"(import QtQuick
import com.larkspan.vidlets.qml 1.0

Item {
    width: 160
    height: 90

    VLVideoComponent {
        function open() {
            if (Window.window !== null)
                source = "clip.mkv"
        }
        function goOn() {
            if (state === 1 && !isNaN(loadProgress) && progress < 1)
                play()
        }

        width: contentWidth
        height: contentHeight
        Component.onCompleted: open()
        Window.onWindowChanged: open()
        onHeightChanged: goOn()
        onStateChanged: goOn()
    }
}
)";

constexpr auto kControlFile = R"(<vidlets>
  <vidlet key="open" title="Opening"/>
  <vidlet key="save"/>
  <vidlet key="clip" ui="ui/Clip.qml"/>
</vidlets>
)";

/// The popup that is up in the tooltip cycle, or null.
VLWidget* popupOnScreen()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        auto* popup = qobject_cast<VLWidget*>(widget);
        if (popup && popup->isVisible() && !popup->view()->reserved())
            return popup;
    }
    return nullptr;
}

/// The hide timer of the popup that is on the screen.
const QTimer* hideTimer()
{
    return popupOnScreen()->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
}

/// Where the scene is on the screen.
QRect scenePlace()
{
    return CompositorScreen::placeOf(kSceneColor) | CompositorScreen::placeOf(kEndColor);
}

/// Waits until @p isSo. By the clock, since each look at the screen takes its time.
template <typename Condition> bool comesTrue(Condition isSo)
{
    const QDeadlineTimer deadline(kPatienceMs);
    while (!isSo()) {
        if (deadline.hasExpired())
            return false;
        QTest::qWait(kShortMs);
    }
    return true;
}

/// Waits until the scene is at @p place as a whole.
bool sceneComesTo(const QRect& place)
{
    return comesTrue([&place] { return scenePlace() == place; });
}

/// Waits until the scene is on the screen as a whole. Gives its place, or null.
QRect sceneAppears(const QSize& size = kSceneSize)
{
    return comesTrue([&size] { return scenePlace().size() == size; }) ? scenePlace() : QRect();
}

/// Waits until nothing is left of the scene on the screen.
bool sceneGoes()
{
    return sceneComesTo(QRect());
}

/// A window in a colour of its own, by which it is found on the screen.
class ColoredWindow : public QWidget
{
public:
    explicit ColoredWindow(const QColor& color)
        : m_color(color)
    {
        QPalette palette;
        palette.setColor(QPalette::Window, color);
        setPalette(palette);
    }

    /// Waits until the window is there, and looks where the compositor has put it.
    void bringUpAndFind()
    {
        QVERIFY(bringUp(this));
        QVERIFY(comesTrue([this] { return !CompositorScreen::placeOf(m_color).isNull(); }));
        QTRY_VERIFY_WITH_TIMEOUT(isActiveWindow(), kPatienceMs);
        place = CompositorScreen::placeOf(m_color).topLeft();
    }

    /// Where @p position within the window is on the screen.
    QPoint toScreen(const QPoint& position) const
    {
        return place + position;
    }

    /// Where the middle of @p control in this window is on the screen.
    QPoint centerOf(const QWidget& control) const
    {
        return toScreen(control.mapTo(this, control.rect().center()));
    }

    QPoint place;
    /// Keys and turns of the wheel that have reached the window.
    int keys = 0;
    int turns = 0;

protected:
    void keyPressEvent(QKeyEvent* /*event*/) override
    {
        ++keys;
    }

    void wheelEvent(QWheelEvent* /*event*/) override
    {
        ++turns;
    }

private:
    const QColor m_color;
};

/// A host with a main window of two controls that have tips.
class Host
{
public:
    explicit Host(const QSize& windowSize = QSize(700, 450));
    ~Host();

    /// Changes a setting while the host runs.
    void set(int key, const QVariant& value) const;
    /// The pointer rests on @p control until the tip for it is on the screen.
    void restOn(const QWidget& control);
    /// The same, until the tip is beside the pointer as a whole.
    void restUntilWhole(const QWidget& control);

    /// Moves the control to where neither it nor its tip is below a window whose scene is at
    /// @p place.
    void putSaveAsideOf(const QRect& place);

    PackageBuilder packages;
    VLContext context;
    RecordingIndex index;
    ColoredWindow window;
    QPushButton open;
    QPushButton save;
    std::unique_ptr<RecordingInterface> interface;

private:
    Q_DISABLE_COPY_MOVE(Host)
};

Host::Host(const QSize& windowSize)
    : index(&context)
    , window(kWindowColor)
    , open(u"Open"_s, &window)
    , save(u"Save"_s, &window)
{
    const QString package = u"tips.vidlets"_s;
    packages.write(package + u"/ui/VidletUI.qml"_s, kScene);
    packages.writeControlFile(package, u"tips.xml"_s, kControlFile);

    window.resize(windowSize);
    open.setObjectName(u"open"_s);
    open.setGeometry(60, 60, 120, 40);
    save.setObjectName(u"save"_s);
    save.setGeometry(300, 60, 120, 40);

    context.set(ckInstallEventFilter, true);
    // A pinned tip takes the activation like any other window.
    context.set(ckAlwaysShowToolTips, true);
    context.set(ckTooltipOffset, QSize(kOffset.x(), kOffset.y()));
    // A test that waits for the end of one of them shortens it.
    context.set(ckStayDuration, kEndlessMs);
    context.set(ckHideDuration, 0);
    interface =
        std::make_unique<RecordingInterface>(context, QStringList{packages.dataPath()}, &index);
    if (!CompositorScreen::movePointerTo(kDesktop))
        qFatal("The pointer cannot be driven");
}

Host::~Host()
{
    // The index clears the trees away, so the popup has to be gone before it.
    interface.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void Host::set(int key, const QVariant& value) const
{
    interface->context().set(key, value);
}

void Host::restOn(const QWidget& control)
{
    const auto* shownIn = static_cast<const ColoredWindow*>(control.window());
    const auto isUp = [&control] {
        return popupOnScreen() && popupOnScreen()->referenceWidget() == &control;
    };
    // Qt gives up a request for a tip when a key or an activation comes in between, as those of the
    // test before may on a busy machine. The next move brings another one.
    constexpr int kTries = 5;
    bool isThere = false;
    for (int i = 0; i < kTries && !isThere; ++i) {
        const QPoint before = QCursor::pos();
        const QPoint center = shownIn->centerOf(control);
        if (i > 0) {
            // Now and then a window that has just come up is not told that the pointer is in it,
            // and then of no move either until the pointer comes anew. Nothing tells of the pointer
            // outside, and what the compositor has not passed on yet it takes together.
            QVERIFY(CompositorScreen::movePointerTo(kDesktop));
            QTest::qWait(kCompositorMs);
            QVERIFY(CompositorScreen::movePointerTo(center + QPoint(10, 0)));
            (void)QTest::qWaitFor([&before] { return QCursor::pos() != before; }, kCompositorMs);
        }
        QVERIFY(CompositorScreen::movePointerTo(center));
        isThere = QTest::qWaitFor(isUp, kPatienceMs / kTries);
    }
    QVERIFY(isThere);
}

void Host::restUntilWhole(const QWidget& control)
{
    restOn(control);
    const auto* shownIn = static_cast<const ColoredWindow*>(control.window());
    QVERIFY(sceneComesTo(QRect(shownIn->centerOf(control) + kOffset, kSceneSize)));
}

void Host::putSaveAsideOf(const QRect& place)
{
    const QRect taken = place.translated(-window.place).adjusted(-40, -40, 40, 40);
    for (const QPoint& free :
         {QPoint(20, 20), QPoint(480, 20), QPoint(20, 300), QPoint(480, 300)}) {
        save.move(free);
        const QRect tip(save.geometry().center() + kOffset, kSceneSize);
        if (!taken.intersects(save.geometry() | tip))
            break;
    }
}

/// Pins the tip as a user does, and waits until the compositor has given its window a place. Gives
/// the popup, or null.
VLWidget* pin()
{
    VLWidget* popup = popupOnScreen();
    const QRect before = scenePlace();
    if (!CompositorScreen::movePointerTo(before.topLeft() + QPoint(20, 70))
        || !PointerDriver::click())
        return nullptr;
    const auto isUp = [popup] {
        return popup->view()->reserved() && popup->window()->isActiveWindow();
    };
    const auto isPlaced = [&before] {
        const QRect place = scenePlace();
        return place.size() == kSceneSize && place.topLeft() != before.topLeft();
    };
    return QTest::qWaitFor(isUp, kPatienceMs) && comesTrue(isPlaced) ? popup : nullptr;
}

} // namespace

class TestWayland : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void rest_showsWholeTipBesidePointer();
    void rest_showsWholeTipBesidePointer_afterHide();
    void rest_onOtherControl_movesTipToPointer();
    void rest_showsTipOfControl_inSecondWindow();
    void rest_movesTip_toSamePlaceInOtherWindow();
    void rest_keepsTipOnScreen_whenItWouldNotFit_data();
    void rest_keepsTipOnScreen_whenItWouldNotFit();
    void rest_keepsActivationOfWindow();
    void tip_staysWholeOnScreen_whenSceneGrows();
    void tip_fadesInAndOutWithoutWarning();
    void click_reachesScene();
    void clip_playsInTip();
    void move_fromControlToTip_keepsTip();
    void move_away_hidesTip();
    void move_toDesktop_hidesTip();
    void move_toOtherWindow_hidesTip();
    void click_elsewhere_hidesTipAtOnce();
    void click_elsewhere_keepsTipThatStaysOpen();
    void window_takesTipAlong_whenHidden();
    void pin_makesWindowWithTitleBar();
    void pin_leavesNextTipBesidePointer();
    void pin_docksIntoWindowOfHost();
    void stayOnTop_leavesPinnedWindowWhole();
    void otherProgram_hidesTip_whenItTakesActivation();
    void click_onTipOfModalDialog_reachesScene_data();
    void click_onTipOfModalDialog_reachesScene();

    void steadyTip_hides_whenPointerFlicksOverTitleBar();
    void steadyTip_hides_whenPointerLeavesThroughIt();
    void steadyTip_stays_overPartOfControl();
    void steadyTip_hides_atRequestWithoutContent();
    void steadyTip_hides_atKeyThatReachesHost_data();
    void steadyTip_hides_atKeyThatReachesHost();
    void steadyTip_hides_atWheelThatReachesHost();
    void steadyTip_stays_atWheelOverIt();
    void steadyTip_goesWithItsControl();
    void steadyTip_fadesFromFull_onceItCameBack();
    void steadyTip_moves_toOtherWindow();

    void keptOffTip_leavesControlFree_data();
    void keptOffTip_leavesControlFree();
    void keptOffTip_leavesControlFree_inLargeWindow();
    void keptOffTip_leavesControlFree_whenSceneGrows();
};

void TestWayland::rest_showsWholeTipBesidePointer()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    // The pointer is over the control, so nothing counts down.
    QVERIFY(!hideTimer()->isActive());
}

void TestWayland::rest_showsWholeTipBesidePointer_afterHide()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    popupOnScreen()->hideAnimated();
    QVERIFY(sceneGoes());
    host.restUntilWhole(host.save);
}

void TestWayland::rest_onOtherControl_movesTipToPointer()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    host.restUntilWhole(host.save);
    host.restUntilWhole(host.open);
}

void TestWayland::rest_showsTipOfControl_inSecondWindow()
{
    Host host(QSize(500, 300));
    host.window.bringUpAndFind();
    ColoredWindow second(kOtherColor);
    second.resize(300, 200);
    QPushButton control(u"Save"_s, &second);
    control.setObjectName(u"save"_s);
    control.setGeometry(60, 60, 120, 40);
    second.bringUpAndFind();
    host.restUntilWhole(control);
    // A pointer that rests on the control is safe, whatever other window claims the place.
    QVERIFY(!hideTimer()->isActive());
}

void TestWayland::rest_movesTip_toSamePlaceInOtherWindow()
{
    Host host(QSize(500, 300));
    ColoredWindow second(kOtherColor);
    second.resize(500, 300);
    QPushButton control(u"Save"_s, &second);
    control.setObjectName(u"save"_s);
    control.setGeometry(host.open.geometry());
    second.bringUpAndFind();
    host.restUntilWhole(control);
    // A window comes up on top of those that are there.
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
}

void TestWayland::rest_keepsTipOnScreen_whenItWouldNotFit_data()
{
    QTest::addColumn<Qt::WindowState>("state");
    QTest::newRow("full screen") << Qt::WindowFullScreen;
    QTest::newRow("maximised") << Qt::WindowMaximized;
}

void TestWayland::rest_keepsTipOnScreen_whenItWouldNotFit()
{
    QFETCH(const Qt::WindowState, state);
    Host host;
    const QRect screen = CompositorScreen::picture().rect();
    host.window.setWindowState(state);
    host.window.bringUpAndFind();
    QTRY_VERIFY_WITH_TIMEOUT(host.window.width() > screen.width() - 20, kPatienceMs);
    QVERIFY(comesTrue([&host] {
        const QRect place = CompositorScreen::placeOf(kWindowColor);
        host.window.place = place.topLeft();
        return place.size() == host.window.size();
    }));
    host.open.move(host.window.rect().bottomRight() - QPoint(130, 50));
    host.restOn(host.open);
    QVERIFY(!sceneAppears().isNull());
    QVERIFY(screen.contains(scenePlace()));
    // No further from where it was to be than it had to go; a border of the window may lie between.
    const QPoint distance = screen.bottomRight() - scenePlace().bottomRight();
    QVERIFY(distance.manhattanLength() <= 20);
}

void TestWayland::rest_keepsActivationOfWindow()
{
    Host host;
    host.window.bringUpAndFind();
    QSignalSpy focus(qGuiApp, &QGuiApplication::focusWindowChanged);
    host.restUntilWhole(host.open);
    QVERIFY(CompositorScreen::movePointerTo(scenePlace().topLeft() + QPoint(20, 20)));
    QVERIFY(PointerDriver::click());
    QTRY_COMPARE_WITH_TIMEOUT(host.interface->openedResources.size(), 1, kPatienceMs);
    QVERIFY(host.window.isActiveWindow());
    for (const QList<QVariant>& change : std::as_const(focus))
        QCOMPARE(change.constFirst().value<QWindow*>(), host.window.windowHandle());
}

void TestWayland::tip_staysWholeOnScreen_whenSceneGrows()
{
    Host host;
    const QRect screen = CompositorScreen::picture().rect();
    host.window.setWindowState(Qt::WindowFullScreen);
    host.window.bringUpAndFind();
    QVERIFY(comesTrue([&screen] { return CompositorScreen::placeOf(kWindowColor) == screen; }));
    host.window.place = QPoint();
    host.open.move(screen.width() - 430, screen.height() - 250);
    host.restUntilWhole(host.open);

    popupOnScreen()->view()->rootObject()->setProperty("isLarge", true);
    QVERIFY(!sceneAppears(kLargeSize).isNull());
    QVERIFY(screen.contains(scenePlace()));
    QVERIFY(popupOnScreen());
}

void TestWayland::tip_fadesInAndOutWithoutWarning()
{
    Host host;
    host.context.set(ckShowDuration, kShortMs);
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    auto* popup = popupOnScreen();
    popup->manager()->context().set(ckShowDuration, kShortMs);
    popup->manager()->context().set(ckHideDuration, kShortMs);
    const auto* fade = popup->findChild<QPropertyAnimation*>(QString(), Qt::FindDirectChildrenOnly);
    for (int i = 0; i < 2; ++i) {
        popup->hideAnimated();
        QCOMPARE(fade->state(), QAbstractAnimation::Running);
        QVERIFY(popup->isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(!popup->isVisible(), kPatienceMs);
        QVERIFY(sceneGoes());
        popup->showAnimated();
        QTRY_COMPARE_WITH_TIMEOUT(fade->state(), QAbstractAnimation::Stopped, kPatienceMs);
        QVERIFY(!sceneAppears().isNull());
    }
}

void TestWayland::click_reachesScene()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    QVERIFY(CompositorScreen::movePointerTo(scenePlace().topLeft() + QPoint(20, 20)));
    QVERIFY(PointerDriver::click());
    QTRY_COMPARE_WITH_TIMEOUT(host.interface->openedResources.size(), 1, kPatienceMs);
    QVERIFY(popupOnScreen());
}

void TestWayland::clip_playsInTip()
{
    Host host;
    ClipWriter clips;
    constexpr int kFps = 25;
    QList<QImage> pictures;
    for (const QColor color : {Qt::red, Qt::blue}) {
        QImage picture(160, 90, QImage::Format_RGB32);
        picture.fill(color);
        pictures.append(QList<QImage>(qsizetype(3) * kFps, picture));
    }
    QFile clip(clips.imageClip(u"clip.mkv"_s, u"ffv1"_s, pictures));
    QVERIFY(clip.open(QIODevice::ReadOnly));
    host.packages.write(u"tips.vidlets/Resources/clip.mkv"_s, clip.readAll());
    host.packages.write(u"tips.vidlets/ui/Clip.qml"_s, kClipScene);
    host.open.setObjectName(u"clip"_s);
    host.window.bringUpAndFind();
    host.restOn(host.open);
    // The middle of the tip, since an encoder may blend colours at an edge.
    const QPoint middle = host.window.centerOf(host.open) + kOffset + QPoint(80, 45);
    const auto isShown = [&middle](bool isWanted(const QColor&)) {
        return comesTrue([&] { return isWanted(CompositorScreen::picture().pixelColor(middle)); });
    };
    QVERIFY(isShown([](const QColor& c) { return c.red() > 200 && c.blue() < 60; }));
    QVERIFY(isShown([](const QColor& c) { return c.blue() > 200 && c.red() < 60; }));
}

void TestWayland::move_fromControlToTip_keepsTip()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    const QRect place = scenePlace();
    for (const QPoint& position :
         {place.topLeft() - QPoint(10, 10), place.center(), place.bottomRight() + QPoint(10, 10)}) {
        QVERIFY(CompositorScreen::movePointerTo(position));
        QTRY_COMPARE_WITH_TIMEOUT(QCursor::pos() - popupOnScreen()->pos(),
                                  position - place.topLeft(), kPatienceMs);
        QVERIFY(popupOnScreen());
        QVERIFY(!hideTimer()->isActive());
    }
}

void TestWayland::move_away_hidesTip()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    popupOnScreen()->manager()->context().set(ckStayDuration, kShortMs);
    QVERIFY(CompositorScreen::movePointerTo(host.window.toScreen(QPoint(600, 400))));
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
    QVERIFY(sceneGoes());
}

void TestWayland::move_toDesktop_hidesTip()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    popupOnScreen()->manager()->context().set(ckStayDuration, kShortMs);
    QVERIFY(CompositorScreen::movePointerTo(kDesktop));
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
    QVERIFY(sceneGoes());
}

void TestWayland::move_toOtherWindow_hidesTip()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    popupOnScreen()->manager()->context().set(ckStayDuration, kShortMs);
    ColoredWindow second(kOtherColor);
    second.setWindowState(Qt::WindowMaximized);
    second.bringUpAndFind();
    // The same place within this window as that of the control in its own.
    QVERIFY(CompositorScreen::movePointerTo(second.toScreen(host.open.geometry().center())));
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
}

void TestWayland::click_elsewhere_hidesTipAtOnce()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    QVERIFY(CompositorScreen::movePointerTo(host.window.toScreen(QPoint(600, 400))));
    QVERIFY(popupOnScreen());
    QVERIFY(PointerDriver::click());
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
    QVERIFY(sceneGoes());
}

void TestWayland::click_elsewhere_keepsTipThatStaysOpen()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    popupOnScreen()->view()->setStayOpen(true);
    QSignalSpy clicks(&host.save, &QPushButton::clicked);
    QVERIFY(CompositorScreen::movePointerTo(host.window.centerOf(host.save)));
    QVERIFY(PointerDriver::click());
    QTRY_COMPARE_WITH_TIMEOUT(clicks.size(), 1, kPatienceMs);
    QVERIFY(popupOnScreen());
}

void TestWayland::window_takesTipAlong_whenHidden()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    host.window.hide();
    QVERIFY(!popupOnScreen());
    QVERIFY(sceneGoes());
    // The connection to the compositor has survived it.
    QVERIFY(CompositorScreen::movePointerTo(kDesktop));
    host.window.bringUpAndFind();
    host.restUntilWhole(host.save);
}

void TestWayland::pin_makesWindowWithTitleBar()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    VLWidget* pinned = pin();
    QVERIFY(pinned);
    QVERIFY(!sceneAppears().isNull());
    QCOMPARE(pinned->windowType(), Qt::Tool);
    // Dragged by its title bar it moves as a whole.
    const QRect before = scenePlace();
    QPoint pointer = before.topLeft() + QPoint(60, -12);
    QVERIFY(CompositorScreen::movePointerTo(pointer));
    QVERIFY(QProcess::execute(u"xdotool"_s, {u"mousedown"_s, u"1"_s}) == 0);
    // The compositor begins once the program has asked for it, and goes by the moves from then on.
    const QPoint step = before.x() > 300 ? QPoint(-5, 3) : QPoint(5, 3);
    const bool isDragged = comesTrue([&] {
        pointer += step;
        return CompositorScreen::movePointerTo(pointer)
            && scenePlace().topLeft() != before.topLeft();
    });
    QVERIFY(QProcess::execute(u"xdotool"_s, {u"mouseup"_s, u"1"_s}) == 0);
    QVERIFY(isDragged);
    QVERIFY(!sceneAppears().isNull());
    pinned->close();
    QVERIFY(sceneGoes());
}

void TestWayland::pin_leavesNextTipBesidePointer()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    const QPointer<VLWidget> pinned = pin();
    QVERIFY(pinned);
    const QRect place = sceneAppears();
    QVERIFY(!place.isNull());
    pinned->view()->rootObject()->setProperty("visible", false);
    QVERIFY(sceneGoes());
    host.putSaveAsideOf(place);
    host.restUntilWhole(host.save);
    delete pinned;
}

void TestWayland::pin_docksIntoWindowOfHost()
{
    Host host;
    QWidget dock;
    host.interface->windowToGive = &dock;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    const QPointer<VLWidget> docked = pin();
    QVERIFY(docked);
    QCOMPARE(docked->window(), &dock);
    QTRY_VERIFY_WITH_TIMEOUT(docked->view()->isExposed(), kPatienceMs);
    QVERIFY(!sceneAppears().isNull());
    QVERIFY(CompositorScreen::movePointerTo(scenePlace().topLeft() + QPoint(20, 20)));
    QVERIFY(PointerDriver::click());
    QTRY_COMPARE_WITH_TIMEOUT(host.interface->openedResources.size(), 1, kPatienceMs);
}

void TestWayland::stayOnTop_leavesPinnedWindowWhole()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    const std::unique_ptr<VLWidget> pinned(pin());
    QVERIFY(pinned);
    const QRect place = sceneAppears();
    QVERIFY(!place.isNull());
    host.putSaveAsideOf(place);
    host.restOn(host.save);
    for (const bool onTop : {true, false}) {
        pinned->manager()->setStayOnTop(onTop);
        QVERIFY(popupOnScreen());
        QTRY_VERIFY_WITH_TIMEOUT(pinned->view()->isExposed(), kPatienceMs);
    }
    popupOnScreen()->hide();
    // A picture may still show what the compositor is about to take away.
    QVERIFY(comesTrue([&host] {
        const QRect shown = scenePlace();
        return shown.size() == kSceneSize
            && CompositorScreen::movePointerTo(shown.topLeft() + QPoint(20, 20))
            && PointerDriver::click()
            && QTest::qWaitFor([&host] { return !host.interface->openedResources.isEmpty(); },
                               4 * kShortMs);
    }));
}

void TestWayland::otherProgram_hidesTip_whenItTakesActivation()
{
    Host host;
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    QProcess program;
    program.start(u"weston-flower"_s, QStringList());
    QVERIFY(program.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(!host.window.isActiveWindow(), kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
    QVERIFY(sceneGoes());
    program.kill();
    QVERIFY(program.waitForFinished());
    // What the compositor does about it is over before the next window comes up.
    QTRY_VERIFY_WITH_TIMEOUT(host.window.isActiveWindow(), kPatienceMs);
}

void TestWayland::click_onTipOfModalDialog_reachesScene_data()
{
    QTest::addColumn<bool>("isSteady");
    QTest::newRow("as it is") << false;
    QTest::newRow("steady") << true;
}

void TestWayland::click_onTipOfModalDialog_reachesScene()
{
    QFETCH(const bool, isSteady);
    Host host;
    host.set(ckSteadyHover, isSteady);
    host.window.bringUpAndFind();
    // The window in between has the colour, and takes no part in the dialog.
    ColoredWindow dialog(kOtherColor);
    dialog.setParent(&host.window, Qt::Dialog);
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.resize(300, 200);
    QPushButton control(u"Save"_s, &dialog);
    control.setObjectName(u"save"_s);
    control.setGeometry(20, 20, 120, 40);
    dialog.bringUpAndFind();
    host.restUntilWhole(control);
    QVERIFY(CompositorScreen::movePointerTo(scenePlace().topLeft() + QPoint(20, 20)));
    QVERIFY(PointerDriver::click());
    QTRY_COMPARE_WITH_TIMEOUT(host.interface->openedResources.size(), 1, kPatienceMs);
    QVERIFY(popupOnScreen());
    QVERIFY(!hideTimer()->isActive());
}

void TestWayland::steadyTip_hides_whenPointerFlicksOverTitleBar()
{
    Host host;
    host.set(ckSteadyHover, true);
    host.open.move(60, 0);
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    host.set(ckStayDuration, kShortMs);
    const QPoint start = host.window.centerOf(host.open);
    QVERIFY(PointerDriver::flick(start, QPoint(start.x(), 2), kFlickSpeed));
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
    QVERIFY(sceneGoes());
}

void TestWayland::steadyTip_hides_whenPointerLeavesThroughIt()
{
    Host host;
    host.set(ckSteadyHover, true);
    host.window.bringUpAndFind();
    // Out of the window where there is more room.
    const QRect screen = CompositorScreen::picture().rect();
    const int roomAbove = host.window.place.y();
    const bool isAbove = roomAbove > screen.height() - roomAbove - host.window.height();
    const QSize offset(35, isAbove ? -120 : 30);
    host.set(ckTooltipOffset, offset);
    host.open.move(60, isAbove ? 0 : host.window.height() - host.open.height());
    host.restOn(host.open);
    const QPoint place = host.window.centerOf(host.open) + QPoint(offset.width(), offset.height());
    QVERIFY(sceneComesTo(QRect(place, kSceneSize)));

    const int y = isAbove ? place.y() + 5 : place.y() + kSceneSize.height() - 5;
    const QPoint inTip(place.x() + 80, y);
    QVERIFY(CompositorScreen::movePointerTo(inTip));
    QTRY_COMPARE_WITH_TIMEOUT(QCursor::pos() - popupOnScreen()->pos(), inTip - place, kPatienceMs);
    QVERIFY(!hideTimer()->isActive());
    host.set(ckStayDuration, kShortMs);
    QVERIFY(PointerDriver::flick(inTip, QPoint(inTip.x(), isAbove ? 2 : screen.bottom() - 2),
                                 kFlickSpeed));
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
    QVERIFY(sceneGoes());
}

void TestWayland::steadyTip_stays_overPartOfControl()
{
    Host host;
    host.set(ckSteadyHover, true);
    QSpinBox amount(&host.window);
    amount.setObjectName(u"open"_s);
    amount.setGeometry(300, 200, 120, 40);
    const auto* edit = amount.findChild<QLineEdit*>();
    host.window.bringUpAndFind();
    QVERIFY(CompositorScreen::movePointerTo(host.window.centerOf(*edit)));
    QTRY_VERIFY_WITH_TIMEOUT(popupOnScreen(), kPatienceMs);
    QCOMPARE(popupOnScreen()->referenceWidget(), &amount);
    const qsizetype requests = host.interface->objectsAskedForKey.size();
    QVERIFY(CompositorScreen::movePointerTo(host.window.centerOf(*edit) + QPoint(5, 0)));
    // The part was asked for, to no effect.
    QTRY_VERIFY_WITH_TIMEOUT(host.interface->objectsAskedForKey.size() > requests, kPatienceMs);
    QVERIFY(popupOnScreen());
    QVERIFY(!hideTimer()->isActive());
    QCOMPARE(popupOnScreen()->referenceWidget(), &amount);
    // Qt 6.4 forgets to delete the window of a line edit that goes from under the pointer.
    host.restOn(host.save);
}

void TestWayland::steadyTip_hides_atRequestWithoutContent()
{
    Host host;
    host.set(ckSteadyHover, true);
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    // As the next cell of a view has another key.
    host.open.setObjectName(u"unknown"_s);
    QVERIFY(CompositorScreen::movePointerTo(host.window.centerOf(host.open) + QPoint(20, 0)));
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
    QVERIFY(sceneGoes());
}

void TestWayland::steadyTip_hides_atKeyThatReachesHost_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("hides");
    QTest::newRow("escape") << u"Escape"_s << true;
    QTest::newRow("letter") << u"a"_s << true;
    QTest::newRow("modifier") << u"Shift_L"_s << false;
}

void TestWayland::steadyTip_hides_atKeyThatReachesHost()
{
    QFETCH(const QString, key);
    QFETCH(const bool, hides);
    Host host;
    host.set(ckSteadyHover, true);
    host.window.bringUpAndFind();
    host.window.setFocus();
    host.restUntilWhole(host.open);
    QVERIFY(PointerDriver::pressKey(key));
    QTRY_VERIFY_WITH_TIMEOUT(host.window.keys > 0, kPatienceMs);
    QCOMPARE(popupOnScreen() == nullptr, hides);
}

void TestWayland::steadyTip_hides_atWheelThatReachesHost()
{
    Host host;
    host.set(ckSteadyHover, true);
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    QVERIFY(PointerDriver::turnWheel());
    QTRY_VERIFY_WITH_TIMEOUT(host.window.turns > 0, kPatienceMs);
    QVERIFY(!popupOnScreen());
}

void TestWayland::steadyTip_stays_atWheelOverIt()
{
    Host host;
    host.set(ckSteadyHover, true);
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    QVERIFY(CompositorScreen::movePointerTo(scenePlace().topLeft() + QPoint(20, 20)));
    QVERIFY(PointerDriver::turnWheel());
    // Events come in their order: after this one the turn is no longer on its way.
    QVERIFY(PointerDriver::click());
    QTRY_COMPARE_WITH_TIMEOUT(host.interface->openedResources.size(), 1, kPatienceMs);
    QVERIFY(popupOnScreen());
}

void TestWayland::steadyTip_goesWithItsControl()
{
    Host host;
    host.set(ckSteadyHover, true);
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    host.open.hide();
    QVERIFY(!popupOnScreen());
    QVERIFY(sceneGoes());
}

void TestWayland::steadyTip_fadesFromFull_onceItCameBack()
{
    Host host;
    host.set(ckSteadyHover, true);
    host.set(ckHideDuration, kEndlessMs);
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    auto* popup = popupOnScreen();
    auto* fade = popup->findChild<QPropertyAnimation*>(QString(), Qt::FindDirectChildrenOnly);
    popup->hideAnimated();
    fade->setCurrentTime(kEndlessMs / 2);
    QVERIFY(CompositorScreen::movePointerTo(host.window.centerOf(host.open) + QPoint(5, 0)));
    QTRY_COMPARE_WITH_TIMEOUT(fade->state(), QAbstractAnimation::Stopped, kPatienceMs);
    QVERIFY(popup->isVisible());
    popup->hideAnimated();
    QCOMPARE(fade->startValue().toReal(), 1.0);
}

void TestWayland::steadyTip_moves_toOtherWindow()
{
    Host host(QSize(500, 300));
    host.set(ckSteadyHover, true);
    host.window.bringUpAndFind();
    ColoredWindow second(kOtherColor);
    second.resize(500, 300);
    QPushButton control(u"Save"_s, &second);
    control.setObjectName(u"save"_s);
    control.setGeometry(host.save.geometry());
    second.bringUpAndFind();
    host.restUntilWhole(control);
    QVERIFY(!hideTimer()->isActive());
    // On top of the other one, which claims the same place and was made later.
    host.window.hide();
    host.window.bringUpAndFind();
    host.restUntilWhole(host.open);
    QVERIFY(!hideTimer()->isActive());
    QCOMPARE(popupOnScreen()->windowHandle()->transientParent(), host.window.windowHandle());
    const QPoint before = QCursor::pos();
    QVERIFY(CompositorScreen::movePointerTo(host.window.centerOf(host.open) + QPoint(5, 0)));
    QTRY_COMPARE_WITH_TIMEOUT(QCursor::pos(), before + QPoint(5, 0), kPatienceMs);
    QVERIFY(!hideTimer()->isActive());
}

void TestWayland::keptOffTip_leavesControlFree_data()
{
    QTest::addColumn<Qt::WindowState>("state");
    QTest::addColumn<QRect>("control");
    QTest::addColumn<QPoint>("expected");
    QTest::newRow("below") << Qt::WindowNoState << QRect(60, 60, 121, 41) << QPoint(155, 110);
    QTest::newRow("below a high one")
        << Qt::WindowNoState << QRect(60, 60, 121, 201) << QPoint(155, 261);
    QTest::newRow("above") << Qt::WindowFullScreen << QRect(60, 700, 121, 61) << QPoint(155, 609);
    QTest::newRow("at the side") << Qt::WindowFullScreen << QRect(60, 40, 301, 741)
                                 << QPoint(361, 440);
}

void TestWayland::keptOffTip_leavesControlFree()
{
    QFETCH(const Qt::WindowState, state);
    QFETCH(const QRect, control);
    QFETCH(const QPoint, expected);
    Host host;
    host.set(ckKeepOffReference, true);
    host.open.setGeometry(control);
    host.window.setWindowState(state);
    host.window.bringUpAndFind();
    if (state == Qt::WindowFullScreen) {
        const QRect screen = CompositorScreen::picture().rect();
        QVERIFY(comesTrue([&screen] { return CompositorScreen::placeOf(kWindowColor) == screen; }));
        host.window.place = QPoint();
    }
    host.restOn(host.open);
    QVERIFY(sceneComesTo(QRect(host.window.toScreen(expected), kSceneSize)));
}

void TestWayland::keptOffTip_leavesControlFree_inLargeWindow()
{
    Host host(QSize(1200, 720));
    host.set(ckKeepOffReference, true);
    host.open.setGeometry(60, 670, 121, 50);
    host.window.bringUpAndFind();
    host.restOn(host.open);
    // Wherever the window is, there is no room below it.
    QVERIFY(sceneComesTo(QRect(host.window.toScreen(QPoint(155, 574)), kSceneSize)));
}

void TestWayland::keptOffTip_leavesControlFree_whenSceneGrows()
{
    Host host;
    host.set(ckKeepOffReference, true);
    host.window.setWindowState(Qt::WindowFullScreen);
    host.open.setGeometry(60, 500, 121, 51);
    host.window.bringUpAndFind();
    const QRect screen = CompositorScreen::picture().rect();
    QVERIFY(comesTrue([&screen] { return CompositorScreen::placeOf(kWindowColor) == screen; }));
    host.window.place = QPoint();
    host.restUntilWhole(host.open);
    popupOnScreen()->view()->rootObject()->setProperty("isLarge", true);
    // Above, since it has no room below any more.
    QVERIFY(sceneComesTo(QRect(QPoint(155, 195), kLargeSize)));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestWayland>(argc, argv);
}

#include "tst_wayland.moc"
