// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "PointerDriver.h"
#include "PopupStage.h"
#include "VidletsTest.h"
#include "XServer.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QDialog>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QQuickItem>
#include <QScopeGuard>
#include <QSpinBox>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>

#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr auto kScene = R"(import QtQuick

Rectangle {
    property string shownKey: vidlet ? vidlet.attribute("key") : ""
    property int clicks: 0

    width: 160
    height: 90
    color: "steelblue"

    MouseArea {
        anchors.fill: parent
        onClicked: ++parent.clicks
    }
}
)";

constexpr auto kControlFile = R"(<vidlets>
  <vidlet key="open"/>
  <vidlet key="amount"/>
  <vidlet key="accept"/>
  <vidlet key="left cell"/>
</vidlets>
)";

const QSize kPopupSize(161, 91);
constexpr int kFlickSpeed = 5000;
constexpr int kStayMs = 300;
constexpr int kFadeMs = 100;
// Slow machines may take their time between a move of the pointer and its effect.
constexpr int kPatienceMs = 15000;
constexpr int kEndlessMs = 600000;
// How long after the stay and hide times a tip may still be seen.
constexpr int kDelayMs = 500;

/// A host of one window with a title bar: a button in its corner, an amount to be spun, and a grid
/// of two cells, of which the left has a tip.
class Host : public VLInterface
{
public:
    Host(VLContext& context, const QStringList& dataPaths, VLIndex* index);

    QString keyForObject(QObject* object) override;
    bool eventFilter(QObject* object, QEvent* event) override;

    QWidget window;
    QPushButton open;
    QSpinBox amount;
    QWidget grid;
    /// Keys and turns of the wheel that have reached the window.
    int keys = 0;
    int turns = 0;
};

Host::Host(VLContext& context, const QStringList& dataPaths, VLIndex* index)
    : VLInterface(context, dataPaths, index)
    , open(u"Open"_s, &window)
    , amount(&window)
    , grid(&window)
{
    // A move to where the pointer was seen last, by the host before, would not count as one; so
    // each host has a place of its own.
    static int hosts = 0;
    hosts += 3;
    window.setGeometry(300 + hosts, 200, 500, 400);
    open.setObjectName(u"open"_s);
    open.setGeometry(200, 0, 120, 30);
    amount.setObjectName(u"amount"_s);
    amount.setGeometry(20, 100, 120, 40);
    grid.setObjectName(u"grid"_s);
    grid.setGeometry(20, 200, 400, 150);
    window.setFocusPolicy(Qt::StrongFocus);
    window.installEventFilter(this);
}

QString Host::keyForObject(QObject* object)
{
    if (object != &grid)
        return object->objectName();
    const bool isLeft = grid.mapFromGlobal(QCursor::pos()).x() < grid.width() / 2;
    return isLeft ? u"left cell"_s : u"right cell"_s;
}

bool Host::eventFilter(QObject* /*object*/, QEvent* event)
{
    if (event->type() == QEvent::KeyPress)
        ++keys;
    else if (event->type() == QEvent::Wheel)
        ++turns;
    return false;
}

/// Waits until the window manager has put its frame around @p window, which moves it.
bool hasItsFrame(const QWidget& window)
{
    const auto isInPlace = [&window] {
        return window.frameGeometry() != window.geometry()
            && positionOnScreenOfX(&window) == window.geometry().topLeft();
    };
    return QTest::qWaitFor(isInPlace, kPatienceMs);
}

/// Counts the time that the application has had to do something: one that is kept waiting by a busy
/// machine has less of it than the clock tells.
class OwnTime
{
public:
    OwnTime()
    {
        m_ticks.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_ticks, &QTimer::timeout, &m_ticks, [this] { m_elapsedMs += kTickMs; });
        m_ticks.start(kTickMs);
    }

    int elapsedMs() const
    {
        return m_elapsedMs;
    }

private:
    Q_DISABLE_COPY_MOVE(OwnTime)

    static constexpr int kTickMs = 10;
    QTimer m_ticks;
    int m_elapsedMs = 0;
};

/// A host with a tip on the way, on a screen with a real pointer.
class Stage
{
public:
    explicit Stage(const QSize& offset = QSize(35, 30));
    ~Stage();

    VLWidget* popup() const;
    QTimer* timer() const;
    QString shownKey() const;
    void restOn(const QPoint& position, const QString& key) const;
    static QPoint centerOf(const QWidget& widget);

    PackageBuilder packages;
    VLContext context;
    RecordingIndex index;
    std::unique_ptr<Host> host;

private:
    Q_DISABLE_COPY_MOVE(Stage)
};

Stage::Stage(const QSize& offset)
    : index(&context)
{
    packages.write(u"tips.vidlets/ui/VidletUI.qml"_s, kScene);
    packages.writeControlFile(u"tips.vidlets"_s, u"tips.xml"_s, kControlFile);
    context.set(ckInstallEventFilter, true);
    context.set(ckSteadyHover, true);
    context.set(ckStayDuration, kStayMs);
    context.set(ckHideDuration, kFadeMs);
    context.set(ckTooltipOffset, offset);
    host = std::make_unique<Host>(context, QStringList{packages.dataPath()}, &index);

    if (!PointerDriver::moveTo({1250, 20}) || !bringUp(&host->window))
        qFatal("The window did not come up");
    host->window.activateWindow();
    if (!QTest::qWaitForWindowActive(&host->window))
        qFatal("The window did not become active");
    host->window.setFocus();
    if (!hasItsFrame(host->window))
        qFatal("The window did not get its frame");
}

Stage::~Stage()
{
    host.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

VLWidget* Stage::popup() const
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        auto* popup = qobject_cast<VLWidget*>(widget);
        if (popup && popup->isVisible())
            return popup;
    }
    return nullptr;
}

QTimer* Stage::timer() const
{
    return popup()->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
}

QString Stage::shownKey() const
{
    VLWidget* shown = popup();
    return shown && shown->view()->rootObject()
        ? shown->view()->rootObject()->property("shownKey").toString()
        : QString();
}

void Stage::restOn(const QPoint& position, const QString& key) const
{
    QVERIFY(PointerDriver::moveTo(position));
    QTRY_COMPARE_WITH_TIMEOUT(shownKey(), key, kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(popup()->size(), kPopupSize, kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(popup()->windowHandle()->isExposed(), kPatienceMs);
}

QPoint Stage::centerOf(const QWidget& widget)
{
    return widget.mapToGlobal(widget.rect().center());
}

} // namespace

class TestSteadyHover : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void flickOverTitleBar_hidesTip();
    void leaveThroughTipBeyondWindow_hidesTip();
    void rest_onPartOfControl_keepsTip();
    void rest_onNextCellWithoutTip_hidesTip();
    void rest_onTip_keepsIt();
    void click_onTipOfModalDialog_reachesScene();
    void key_hidesTipAndReachesHost_data();
    void key_hidesTipAndReachesHost();
    void wheel_outside_hidesTipAndReachesHost();

    void request_duringFadeOfOther_showsWholeTip();
    void request_duringOwnFade_bringsTipBack();
    void request_afterHideInMidFade_showsWholeTip();
    void request_whileOtherCountsDown_doesNotCountDown();
    void request_afterTipThatStaysOpen_startsAfresh();
    void request_ofPartWithoutContent_changesNothing();
    void request_ofPartWithOwnToolTip_givesWay();
    void request_ofPartWithoutContent_showsNoFallback();
    void request_ofOtherKeyWithoutContent_hidesTip();
    void request_ofSameKeyForOtherControl_showsTipThere();
    void request_withoutKeyOnTheWayToTip_keepsTip();
    void request_withoutKeyForOtherControl_hidesTip();
    void key_inSceneOfTip_keepsTip();
    void hide_duringFadeIn_hidesTip();
    void repeatedShows_connectOnce();
    void endOfFormerControl_keepsTip();
    void hiddenControl_takesTipAlong();
    void wheelAndKey_leaveTipThatStaysOpen();
    void pinnedTip_isLeftAlone();
    void setWhileRunning_actsAtOnce();
};

void TestSteadyHover::flickOverTitleBar_hidesTip()
{
    const Stage stage;
    const QPoint start = Stage::centerOf(stage.host->open);
    stage.restOn(start, u"open"_s);
    QVERIFY(PointerDriver::flick(start, QPoint(start.x(), 5), kFlickSpeed));
    const OwnTime sinceFlick;
    QTRY_VERIFY_WITH_TIMEOUT(!stage.popup(), kPatienceMs);
    QVERIFY(sinceFlick.elapsedMs() <= kStayMs + kFadeMs + kDelayMs);
}

void TestSteadyHover::leaveThroughTipBeyondWindow_hidesTip()
{
    const Stage stage(QSize(35, -120));
    const QPoint start = Stage::centerOf(stage.host->open);
    stage.restOn(start, u"open"_s);
    const QRect frame = stage.popup()->frameGeometry();
    QVERIFY(frame.top() < stage.host->window.frameGeometry().top() - 30);
    QVERIFY(PointerDriver::moveTo(QPoint(frame.center().x(), frame.top() + 5)));
    QTest::qWait(kStayMs + kFadeMs);
    QVERIFY(stage.popup());
    QVERIFY(PointerDriver::flick(QPoint(frame.center().x(), frame.top() + 5),
                                 QPoint(frame.center().x(), 5), kFlickSpeed));
    const OwnTime sinceFlick;
    QTRY_VERIFY_WITH_TIMEOUT(!stage.popup(), kPatienceMs);
    QVERIFY(sinceFlick.elapsedMs() <= kStayMs + kFadeMs + kDelayMs);
}

void TestSteadyHover::rest_onPartOfControl_keepsTip()
{
    const Stage stage;
    const auto* edit = stage.host->amount.findChild<QLineEdit*>();
    stage.restOn(Stage::centerOf(*edit), u"amount"_s);
    QCOMPARE(QApplication::widgetAt(QCursor::pos()), edit);
    // Longer than the tip would live, and long enough for Qt to ask once more.
    for (int x = 1; x <= 3; ++x) {
        QVERIFY(PointerDriver::moveTo(Stage::centerOf(*edit) + QPoint(x, 0)));
        QTest::qWait(kStayMs + kFadeMs);
        QVERIFY(stage.popup());
        QVERIFY(!stage.timer()->isActive());
        QCOMPARE(stage.popup()->windowOpacity(), 1.0);
    }
    // Qt 6.4 forgets to delete the window of a line edit that goes from under the pointer.
    QVERIFY(PointerDriver::moveTo(Stage::centerOf(stage.host->open)));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"open"_s, kPatienceMs);
}

void TestSteadyHover::rest_onNextCellWithoutTip_hidesTip()
{
    const Stage stage;
    const QPoint middle = Stage::centerOf(stage.host->grid);
    stage.restOn(middle - QPoint(150, 60), u"left cell"_s);
    QVERIFY(PointerDriver::moveTo(middle + QPoint(150, -60)));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.popup(), kPatienceMs);
    stage.restOn(middle - QPoint(150, 60), u"left cell"_s);
}

void TestSteadyHover::rest_onTip_keepsIt()
{
    const Stage stage;
    stage.restOn(Stage::centerOf(stage.host->open), u"open"_s);
    QVERIFY(PointerDriver::moveTo(stage.popup()->frameGeometry().center()));
    QTest::qWait(3 * (kStayMs + kFadeMs));
    QVERIFY(stage.popup());
    QVERIFY(!stage.timer()->isActive());
}

void TestSteadyHover::click_onTipOfModalDialog_reachesScene()
{
    const Stage stage;
    QDialog dialog(&stage.host->window);
    QPushButton accept(u"Accept"_s, &dialog);
    accept.setObjectName(u"accept"_s);
    accept.setGeometry(20, 20, 120, 40);
    // Without a frame it is where it is put.
    dialog.setWindowFlag(Qt::FramelessWindowHint);
    dialog.setGeometry(450, 250, 400, 300);
    dialog.setModal(true);
    QVERIFY(bringUp(&dialog));
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTRY_COMPARE_WITH_TIMEOUT(positionOnScreenOfX(&dialog), dialog.pos(), kPatienceMs);

    stage.restOn(Stage::centerOf(accept), u"accept"_s);
    QVERIFY(PointerDriver::moveTo(stage.popup()->frameGeometry().center()));
    QVERIFY(PointerDriver::click());
    const QQuickItem* scene = stage.popup()->view()->rootObject();
    QTRY_COMPARE_WITH_TIMEOUT(scene->property("clicks").toInt(), 1, kPatienceMs);
    QVERIFY(stage.popup());
}

void TestSteadyHover::key_hidesTipAndReachesHost_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("hides");
    QTest::newRow("escape") << u"Escape"_s << true;
    QTest::newRow("letter") << u"a"_s << true;
    QTest::newRow("arrow") << u"Down"_s << true;
    QTest::newRow("modifier") << u"Shift_L"_s << false;
}

void TestSteadyHover::key_hidesTipAndReachesHost()
{
    QFETCH(QString, key);
    QFETCH(bool, hides);
    const Stage stage;
    stage.restOn(Stage::centerOf(stage.host->open), u"open"_s);
    QVERIFY(PointerDriver::pressKey(key));
    QTRY_VERIFY_WITH_TIMEOUT(stage.host->keys > 0, kPatienceMs);
    QCOMPARE(stage.popup() == nullptr, hides);
}

void TestSteadyHover::wheel_outside_hidesTipAndReachesHost()
{
    const Stage stage;
    stage.restOn(Stage::centerOf(stage.host->open), u"open"_s);
    QVERIFY(PointerDriver::turnWheel());
    QTRY_VERIFY_WITH_TIMEOUT(stage.host->turns > 0, kPatienceMs);
    QVERIFY(!stage.popup());
}

namespace {

/// A stage whose settings are as in a host that wants steady tips. Tips neither count down nor fade
/// to their end within a test.
QMap<int, QVariant> steady()
{
    return {{ckSteadyHover, true}, {ckStayDuration, kEndlessMs}, {ckHideDuration, kEndlessMs}};
}

QPoint middleOf(const QWidget& widget)
{
    return widget.mapToGlobal(widget.rect().center());
}

bool showKey(PopupStage& stage, const QString& key, QWidget* reference)
{
    return stage.manager->show(key, middleOf(*reference), reference);
}

bool isFading(PopupStage& stage)
{
    return stage.animation()->state() == QAbstractAnimation::Running;
}

} // namespace

void TestSteadyHover::request_duringFadeOfOther_showsWholeTip()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    stage.popup()->hideAnimated();
    QVERIFY(isFading(stage));
    QVERIFY(showKey(stage, u"save"_s, &stage.control));
    QVERIFY(!isFading(stage));
    QCOMPARE(stage.popup()->windowOpacity(), 1.0);
    QVERIFY(stage.popup()->isVisible());
}

void TestSteadyHover::request_duringOwnFade_bringsTipBack()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    const VLXmlElement* content = stage.view()->content();
    stage.popup()->hideAnimated();
    QVERIFY(isFading(stage));
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    QVERIFY(!isFading(stage));
    QCOMPARE(stage.popup()->windowOpacity(), 1.0);
    QCOMPARE(stage.view()->content(), content);
    // The fade that was broken off ends nothing any more, and the next is one of its own.
    stage.popup()->hideAnimated();
    stage.finishFade();
    QVERIFY(!stage.popup()->isVisible());
}

void TestSteadyHover::request_afterHideInMidFade_showsWholeTip()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    stage.popup()->hideAnimated();
    stage.popup()->hide();
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    QVERIFY(!isFading(stage));
    QCOMPARE(stage.popup()->windowOpacity(), 1.0);
}

void TestSteadyHover::request_whileOtherCountsDown_doesNotCountDown()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    stage.popup()->checkMousePosition(PopupStage::farAway());
    QVERIFY(stage.timer()->isActive());
    QVERIFY(showKey(stage, u"save"_s, &stage.control));
    QVERIFY(!stage.timer()->isActive());
    // The pointer is elsewhere, so the new tip soon counts down by itself.
    QTRY_VERIFY(stage.timer()->isActive());
}

void TestSteadyHover::request_afterTipThatStaysOpen_startsAfresh()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    stage.view()->setStayOpen(true);
    QVERIFY(showKey(stage, u"save"_s, &stage.control));
    QVERIFY(!stage.view()->stayOpen());
}

void TestSteadyHover::request_ofPartWithoutContent_changesNothing()
{
    PopupStage stage(steady());
    QWidget part(&stage.control);
    part.setObjectName(u"part"_s);
    part.setGeometry(10, 10, 50, 30);
    part.show();
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    const QPoint place = stage.popup()->pos();
    QVERIFY(showKey(stage, u"part"_s, &part));
    QVERIFY(stage.popup()->isVisible());
    QVERIFY(!isFading(stage));
    QCOMPARE(stage.popup()->pos(), place);
    QCOMPARE(stage.popup()->referenceWidget(), &stage.control);
    // Content of its own is another matter.
    QVERIFY(showKey(stage, u"save"_s, &part));
    QCOMPARE(stage.popup()->referenceWidget(), &part);
}

void TestSteadyHover::request_ofPartWithOwnToolTip_givesWay()
{
    PopupStage stage(steady());
    QWidget part(&stage.control);
    part.setToolTip(u"An ordinary tooltip"_s);
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    QVERIFY(!showKey(stage, u"part"_s, &part));
    QVERIFY(isFading(stage));
}

void TestSteadyHover::request_ofPartWithoutContent_showsNoFallback()
{
    PopupStage stage(steady());
    stage.set(ckFallbackKey, u"save"_s);
    QWidget part(&stage.control);
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    QVERIFY(showKey(stage, u"part"_s, &part));
    QCOMPARE(stage.view()->content()->attribute(u"key"_s), u"open"_s);
}

void TestSteadyHover::request_ofOtherKeyWithoutContent_hidesTip()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    QCursor::setPos(middleOf(stage.control));
    QTRY_COMPARE(QCursor::pos(), middleOf(stage.control));
    QVERIFY(!showKey(stage, u"unknown"_s, &stage.control));
    QVERIFY(isFading(stage));
    stage.finishFade();
    QVERIFY(!stage.popup()->isVisible());
}

void TestSteadyHover::request_ofSameKeyForOtherControl_showsTipThere()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    QWidget other;
    other.setGeometry(500, 400, 100, 50);
    QVERIFY(bringUp(&other));
    QVERIFY(showKey(stage, u"open"_s, &other));
    QCOMPARE(stage.popup()->referenceWidget(), &other);
    QCOMPARE(stage.popup()->windowHandle()->transientParent(), other.windowHandle());
    QVERIFY(stage.popup()->isVisible());
}

void TestSteadyHover::request_withoutKeyOnTheWayToTip_keepsTip()
{
    PopupStage stage(steady());
    QWidget around;
    around.setGeometry(500, 400, 100, 50);
    QWidget control(&around);
    QVERIFY(bringUp(&around));
    QVERIFY(showKey(stage, u"open"_s, &control));
    const QPoint edge = stage.popup()->frameGeometry().topLeft() - QPoint(5, 5);
    QVERIFY(stage.manager->show(QString(), edge, &around));
    QVERIFY(!isFading(stage));
    // Far from the tip it does cost it.
    QVERIFY(!stage.manager->show(QString(), PopupStage::farAway(), &around));
    QVERIFY(isFading(stage));
}

void TestSteadyHover::request_withoutKeyForOtherControl_hidesTip()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    QWidget other;
    const QPoint edge = stage.popup()->frameGeometry().topLeft() - QPoint(5, 5);
    QVERIFY(!stage.manager->show(QString(), edge, &other));
    QVERIFY(isFading(stage));
}

void TestSteadyHover::key_inSceneOfTip_keepsTip()
{
    PopupStage stage(steady());
    stage.writeScene("import QtQuick\n"
                     "TextInput { width: 120; height: 80; focus: true }\n");
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    QTRY_VERIFY_WITH_TIMEOUT(stage.popup()->isVisible(), kPatienceMs);
    QVERIFY(PointerDriver::moveTo(stage.popup()->frameGeometry().center()));
    // A click that comes while the window manager is busy with the window gives it no focus.
    const auto hasFocus = [&stage] { return stage.scene()->property("activeFocus").toBool(); };
    bool isFocused = false;
    for (int i = 0; i < 5 && !isFocused; ++i) {
        QVERIFY(PointerDriver::click());
        isFocused = QTest::qWaitFor(hasFocus, kPatienceMs / 5);
    }
    QVERIFY(isFocused);
    QTest::keyClick(stage.view(), Qt::Key_A);
    QCOMPARE(stage.scene()->property("text").toString(), u"a"_s);
    QVERIFY(stage.popup()->isVisible());
    QVERIFY(!isFading(stage));
}

void TestSteadyHover::hide_duringFadeIn_hidesTip()
{
    PopupStage stage(steady());
    stage.set(ckShowDuration, kEndlessMs);
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    QVERIFY(isFading(stage));
    QVERIFY(!showKey(stage, u"unknown"_s, &stage.control));
    stage.finishFade();
    QVERIFY(!stage.popup()->isVisible());
}

void TestSteadyHover::repeatedShows_connectOnce()
{
    class Control : public QWidget
    {
    public:
        int listeners() const
        {
            return receivers(SIGNAL(destroyed(QObject*)));
        }
    };
    PopupStage stage(steady());
    Control control;
    control.setGeometry(500, 400, 100, 50);
    QVERIFY(bringUp(&control));
    QVERIFY(showKey(stage, u"open"_s, &control));
    const int listeners = control.listeners();
    for (const QString& key : {u"save"_s, u"open"_s, u"save"_s})
        QVERIFY(showKey(stage, key, &control));
    QCOMPARE(control.listeners(), listeners);
}

void TestSteadyHover::endOfFormerControl_keepsTip()
{
    PopupStage stage(steady());
    auto former = std::make_unique<QWidget>();
    QVERIFY(showKey(stage, u"open"_s, former.get()));
    QVERIFY(showKey(stage, u"save"_s, &stage.control));
    former.reset();
    QVERIFY(stage.popup()->isVisible());
}

void TestSteadyHover::hiddenControl_takesTipAlong()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    stage.control.hide();
    QVERIFY(!stage.popup()->isVisible());
}

void TestSteadyHover::wheelAndKey_leaveTipThatStaysOpen()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    stage.view()->setStayOpen(true);
    QTest::keyClick(&stage.control, Qt::Key_A);
    QVERIFY(stage.popup()->isVisible());
    QWheelEvent turn(QPointF(), QPointF(), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                     Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&stage.control, &turn);
    QVERIFY(stage.popup()->isVisible());
    QTest::keyClick(&stage.control, Qt::Key_Escape);
    QVERIFY(!stage.popup()->isVisible());
}

void TestSteadyHover::pinnedTip_isLeftAlone()
{
    PopupStage stage(steady());
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    VLWidget* pinned = stage.popup();
    pinned->view()->setReserved(true);
    const auto closing = qScopeGuard([pinned] { delete pinned; });
    QVERIFY(pinned->isVisible());
    QTest::keyClick(&stage.control, Qt::Key_Escape);
    QVERIFY(pinned->isVisible());
}

void TestSteadyHover::setWhileRunning_actsAtOnce()
{
    PopupStage stage(steady());
    stage.set(ckSteadyHover, false);
    QVERIFY(showKey(stage, u"open"_s, &stage.control));
    QTest::keyClick(&stage.control, Qt::Key_Escape);
    QVERIFY(stage.popup()->isVisible());
    stage.popup()->hide();
    stage.set(ckSteadyHover, true);
    QVERIFY(showKey(stage, u"save"_s, &stage.control));
    QTest::keyClick(&stage.control, Qt::Key_Escape);
    QVERIFY(!stage.popup()->isVisible());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestSteadyHover>(argc, argv);
}

#include "tst_steadyhover.moc"
