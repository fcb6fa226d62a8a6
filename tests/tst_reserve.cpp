// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PointerDriver.h"
#include "PopupStage.h"
#include "VidletsTest.h"
#include "XServer.h"

#include <QDir>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QQuickItem>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kFloatingFlags = 0x0A00100B;
constexpr int kHostWindowFlags = 0x0A001000;
constexpr int kStayOnTopFlag = 0x00040000;
constexpr int kEndlessMs = 600000;
constexpr int kShortMs = 1;
// Windows pass through a window manager, which may be busy.
constexpr int kPatienceMs = 15000;
// That of the pointer and the default offset.
const QPoint kTipPosition(435, 330);
const QSize kSceneSize(120, 80);

/// A scene that a click detaches.
constexpr auto kClickScene = R"(import QtQuick

Rectangle {
    property string shownKey: vidlet ? vidlet.attribute("key") : ""
    property int clicks: 0

    width: 120
    height: 80
    color: "seagreen"

    MouseArea {
        anchors.fill: parent
        onClicked: {
            vidletView.reserved = true;
            ++parent.clicks;
        }
    }
}
)";

/// A scene that detaches itself before it is complete.
constexpr auto kLoadScene = R"(import QtQuick

Rectangle {
    property string shownKey: vidlet ? vidlet.attribute("key") : ""

    width: 120
    height: 80
    color: "seagreen"
    Component.onCompleted: vidletView.reserved = true
}
)";

QString openKey()
{
    return u"open"_s;
}

QString saveKey()
{
    return u"save"_s;
}

QTimer* timerOf(const VLWidget* popup)
{
    return popup->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
}

QWidget* containerOf(const VLWidget* popup)
{
    return popup->layout()->itemAt(0)->widget();
}

QQuickItem* sceneOf(VLWidget* popup)
{
    return popup->view()->rootObject();
}

QString shownKey(VLWidget* popup)
{
    const QObject* scene = sceneOf(popup);
    return scene ? scene->property("shownKey").toString() : QString();
}

bool isDeletedOnClose(const VLWidget* popup)
{
    return popup->testAttribute(Qt::WA_DeleteOnClose);
}

/// What Qt makes of @p flags when it gives them to a window: it adds a system menu to a close
/// button, and takes the frame back in where there is a button in it.
Qt::WindowFlags asQtKeepsThem(int flags)
{
    QWidget probe;
    probe.setWindowFlags(Qt::WindowFlags::fromInt(flags));
    return probe.windowFlags();
}

/// The windows of clients on the display, the lowest first.
QList<WId> stackingOrder()
{
    const QString answer = answerOf(u"xprop"_s, {u"-root"_s, u"_NET_CLIENT_LIST_STACKING"_s});
    QList<WId> ids;
    const QRegularExpression number(u"0x[0-9a-f]+"_s);
    auto matches = number.globalMatch(answer);
    while (matches.hasNext())
        ids += matches.next().captured().toULongLong(nullptr, 16);
    return ids;
}

WId activeWindowOfX()
{
    const QString answer = answerOf(u"xprop"_s, {u"-root"_s, u"_NET_ACTIVE_WINDOW"_s});
    const QRegularExpression number(u"0x[0-9a-f]+"_s);
    return number.match(answer).captured().toULongLong(nullptr, 16);
}

/// Those of @p popups that the X server has, the lowest first.
QList<VLWidget*> stackingOrderOf(const QList<VLWidget*>& popups)
{
    QList<VLWidget*> result;
    const QList<WId> ids = stackingOrder();
    for (const WId id : ids) {
        const auto popup = std::find_if(popups.cbegin(), popups.cend(), [id](VLWidget* candidate) {
            return windowOfX(candidate) == id;
        });
        if (popup != popups.cend())
            result += *popup;
    }
    return result;
}

/// Whether the window manager knows the window of @p popup as one to be kept above others.
bool isAboveForX(const VLWidget* popup)
{
    return answerOf(u"xprop"_s, {u"-id"_s, QString::number(windowOfX(popup)), u"_NET_WM_STATE"_s})
        .contains(u"_NET_WM_STATE_ABOVE"_s);
}

qsizetype windowCountOfX()
{
    return answerOf(u"xwininfo"_s, {u"-root"_s, u"-tree"_s})
        .count(QRegularExpression(u"^ +0x"_s, QRegularExpression::MultilineOption));
}

qsizetype entryCount(const QString& directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

/// What a process holds that a popup might leave behind.
struct Holdings
{
    static Holdings now()
    {
        return {QGuiApplication::allWindows().size(), windowCountOfX(),
                entryCount(u"/proc/self/task"_s), entryCount(u"/proc/self/fd"_s)};
    }

    friend bool operator==(const Holdings& left, const Holdings& right)
    {
        return left.windows == right.windows && left.windowsOfX == right.windowsOfX
            && left.threads == right.threads && left.files == right.files;
    }
    friend char* toString(const Holdings& holdings)
    {
        return QTest::toString(
            u"%1 windows, %2 windows of X, %3 threads, %4 files"_s.arg(holdings.windows)
                .arg(holdings.windowsOfX)
                .arg(holdings.threads)
                .arg(holdings.files));
    }

    qsizetype windows;
    qsizetype windowsOfX;
    qsizetype threads;
    qsizetype files;
};

/// Settings with which nothing counts down.
QMap<int, QVariant> lasting()
{
    return {{ckStayDuration, 0}};
}

/// Detaches @p count popups that belong to the window of @p reference, and waits until all are
/// there.
QList<VLWidget*> detachSeveral(PopupStage& stage, int count, QObject* reference)
{
    QList<VLWidget*> popups;
    for (int i = 0; i < count; ++i) {
        popups += stage.detach(openKey(), reference);
        if (!QTest::qWaitForWindowExposed(popups.last()))
            qFatal("The window did not come up");
    }
    return popups;
}

/// Detaches @p count popups that have no window above them, and waits until all are there.
QList<VLWidget*> detachFreely(PopupStage& stage, int count)
{
    return detachSeveral(stage, count, nullptr);
}

} // namespace

class TestReserve : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    // The manager's side
    void reserve_refuses_whenPopupIsNotTheCurrentOne();
    void reserve_refuses_whenPopupIsReservedAlready();
    void reserve_asksHostForWindow_data();
    void reserve_asksHostForWindow();
    void reserve_leavesFreshPopupReady();
    void reserve_keepsContentOnShow_whileHoveringGoesOn();
    void show_retrievesAgain_whenKeyIsOnlyInReservedWindow();
    void reservedPopup_isOutOfTheCycle_data();
    void reservedPopup_isOutOfTheCycle();

    // The slot
    void reservedChanged_hasNoEffect_whenFalse();
    void reservedChanged_hasNoEffect_whenFalseAgain();
    void reservedChanged_hasNoEffect_whenPopupIsNoLongerHeld_data();
    void reservedChanged_hasNoEffect_whenPopupIsNoLongerHeld();
    void reservedChanged_isHarmless_withoutContent_data();
    void reservedChanged_isHarmless_withoutContent();

    // Floating
    void floating_takesFlags();
    void floating_isNotModal();
    void floating_belongsToWindowOfReference();
    void floating_hasNoParent_withoutReference_data();
    void floating_hasNoParent_withoutReference();
    void floating_hasNoParent_whenReferenceIsPopupItself_data();
    void floating_hasNoParent_whenReferenceIsPopupItself();
    void floating_takesTitleFromPropertyAlone_data();
    void floating_takesTitleFromPropertyAlone();
    void floating_keepsPosition();
    void floating_keepsPosition_whenMinimisedAndSceneGrows();
    void floating_isDeletedWithViewAndContent_whenClosed();
    void floating_isDeleted_whenUserClosesIt();
    void floating_staysAlive_whenHidden();
    void floating_isHiddenByTimer();
    void floating_armsTimerAsItShows_data();
    void floating_armsTimerAsItShows();

    // Docked
    void docked_becomesChildOfHostWindow();
    void docked_addsFlagsToHostWindow_data();
    void docked_addsFlagsToHostWindow();
    void docked_makesLayout_whenHostWindowHasNone();
    void docked_joinsLayoutOfHostWindow();
    void docked_takesTitleFromAttributeAlone_data();
    void docked_takesTitleFromAttributeAlone();
    void docked_takesSizeOfScene();
    void docked_takesExactSizeOfScene_whenHostWindowIsHidden();
    void docked_movesHostWindowToPosition();
    void docked_movesWindowAround_whenGivenWidgetIsNoWindow();
    void docked_isNotHiddenByTimer();
    void docked_staysAlive_whenHostWindowIsClosed();
    void docked_isDeletedWithViewAndContent_whenHostWindowIs();

    // From the scene
    void scene_detachesPopup_whenClicked_data();
    void scene_detachesPopup_whenClicked();
    void scene_detachesPopup_whileItLoads_data();
    void scene_detachesPopup_whileItLoads();
    void scene_detachesPopup_whereItIs_whileItLoads();

    // Raising and staying on top
    void raise_goesFromLastToFirst();
    void raise_isHarmless_withoutReservedWindows();
    void setStayOnTop_setsAndClearsState();
    void setStayOnTop_keepsSceneOnScreen();
    void setStayOnTop_leavesOtherFlags();
    void setStayOnTop_leavesViewAlone_whenFlagsStayTheSame();
    void setStayOnTop_keepsSize();
    void setStayOnTop_showsHiddenWindow();
    void setStayOnTop_leavesDockedPopupInItsWindow();
    void setStayOnTop_leavesCurrentPopupAlone();
    void raise_leavesCurrentPopupAlone();
    void deadEntries_areRemoved_data();
    void deadEntries_areRemoved();
    void manager_isReachedFromReservedWindow();
    void vidletAttribute_passesOverReservedPopup_withoutView();
    void reservedWindow_livesOn_whenManagerIsGone();

    // Many
    void reserve_leavesNothingBehind_whenDoneOften();
};

void TestReserve::reserve_refuses_whenPopupIsNotTheCurrentOne()
{
    PopupStage stage(lasting());
    VLWidget* current = stage.bringUpTip(openKey());
    VLWidget other(stage.manager.get(), nullptr);
    QWidget* window = &stage.control;

    QVERIFY(!stage.manager->reserve(&other, window));

    QCOMPARE(window, &stage.control);
    QCOMPARE(stage.interface.windowsAskedFor, 0);
    QCOMPARE(stage.manager->widget(), current);
    QVERIFY(current->isVisible());
    // It was not taken in among the reserved ones either.
    stage.manager->setStayOnTop(true);
    QVERIFY(!other.isVisible());
}

void TestReserve::reserve_refuses_whenPopupIsReservedAlready()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    const VLWidget* fresh = stage.manager->widget();
    QWidget* window = &stage.control;
    QVERIFY(!stage.manager->reserve(popup, window));
    QCOMPARE(window, &stage.control);
    QCOMPARE(stage.interface.windowsAskedFor, 1);
    QCOMPARE(stage.manager->widget(), fresh);
}

void TestReserve::reserve_asksHostForWindow_data()
{
    QTest::addColumn<bool>("given");
    QTest::newRow("given") << true;
    QTest::newRow("none") << false;
}

void TestReserve::reserve_asksHostForWindow()
{
    QFETCH(bool, given);
    PopupStage stage(lasting());
    VLWidget* popup = stage.bringUpTip(openKey());
    QWidget hostWindow;
    stage.interface.windowToGive = given ? &hostWindow : nullptr;
    QWidget* window = &stage.control;

    QVERIFY(stage.manager->reserve(popup, window));

    QCOMPARE(window, stage.interface.windowToGive);
    QCOMPARE(stage.interface.windowsAskedFor, 1);
}

void TestReserve::reserve_leavesFreshPopupReady()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    VLWidget* fresh = stage.manager->widget();
    QVERIFY(fresh);
    QVERIFY(fresh != popup);
    QVERIFY(!fresh->isVisible());
    QVERIFY(fresh->view());
    QVERIFY(fresh->view() != popup->view());
    QVERIFY(!fresh->view()->content());
    QVERIFY(!fresh->view()->reserved());
    QCOMPARE(containerOf(fresh)->parentWidget(), fresh);
}

void TestReserve::reserve_keepsContentOnShow_whileHoveringGoesOn()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    const QPointer<VLXmlElement> content = popup->view()->content();
    const QPointer<QObject> scene = popup->view()->rootObject();
    VLWidget* fresh = stage.manager->widget();
    stage.control.setObjectName(saveKey());
    QHelpEvent event(QEvent::ToolTip, QPoint(), PopupStage::pointer());

    QVERIFY(stage.manager->eventFilter(&stage.control, &event));

    QCOMPARE(stage.manager->widget(), fresh);
    QVERIFY(QTest::qWaitForWindowExposed(fresh));
    QCOMPARE(shownKey(fresh), saveKey());
    QVERIFY(popup->isVisible());
    QVERIFY(content);
    QVERIFY(scene);
    QCOMPARE(popup->view()->content(), content.data());
    QCOMPARE(shownKey(popup), openKey());
}

void TestReserve::show_retrievesAgain_whenKeyIsOnlyInReservedWindow()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    stage.index.requests.clear();
    QVERIFY(stage.manager->show(openKey(), PopupStage::pointer(), &stage.control));
    QCOMPARE(stage.index.requests.size(), 1);
    QVERIFY(stage.popup()->isVisible());
    QVERIFY(popup->isVisible());
    QVERIFY(stage.view()->content() != popup->view()->content());
}

void TestReserve::reservedPopup_isOutOfTheCycle_data()
{
    QTest::addColumn<QEvent::Type>("type");
    QTest::newRow("press") << QEvent::MouseButtonPress;
    QTest::newRow("release") << QEvent::MouseButtonRelease;
    QTest::newRow("move") << QEvent::MouseMove;
    QTest::newRow("deactivation") << QEvent::ApplicationDeactivate;
}

void TestReserve::reservedPopup_isOutOfTheCycle()
{
    QFETCH(QEvent::Type, type);
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    stage.set(ckStayDuration, kEndlessMs);
    QMouseEvent mouse(type, QPointF(), PopupStage::farAway(), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QEvent plain(type);
    QEvent& event = type == QEvent::ApplicationDeactivate ? plain : mouse;
    stage.manager->eventFilter(&stage.control, &event);
    QVERIFY(popup->isVisible());
    QVERIFY(!timerOf(popup)->isActive());
}

void TestReserve::reservedChanged_hasNoEffect_whenFalse()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.bringUpTip(openKey());
    const Qt::WindowFlags flags = popup->windowFlags();
    Q_EMIT popup->view()->reservedChanged();
    QCOMPARE(stage.interface.windowsAskedFor, 0);
    QCOMPARE(stage.manager->widget(), popup);
    QCOMPARE(popup->windowFlags(), flags);
    QVERIFY(!isDeletedOnClose(popup));
}

void TestReserve::reservedChanged_hasNoEffect_whenFalseAgain()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    const VLWidget* fresh = stage.manager->widget();
    popup->view()->setReserved(false);
    QVERIFY(popup->isVisible());
    QCOMPARE(popup->windowFlags(), asQtKeepsThem(kFloatingFlags));
    QVERIFY(isDeletedOnClose(popup));
    QCOMPARE(stage.manager->widget(), fresh);
}

void TestReserve::reservedChanged_hasNoEffect_whenPopupIsNoLongerHeld_data()
{
    reserve_asksHostForWindow_data();
}

void TestReserve::reservedChanged_hasNoEffect_whenPopupIsNoLongerHeld()
{
    QFETCH(bool, given);
    PopupStage stage(lasting());
    QWidget window;
    stage.interface.windowToGive = given ? &window : nullptr;
    VLWidget* popup = stage.detach(openKey());
    const QWidget* parent = popup->parentWidget();
    const VLWidget* fresh = stage.manager->widget();
    popup->hide();
    popup->setWindowTitle(u"left alone"_s);
    window.setWindowTitle(u"left alone"_s);

    popup->view()->setReserved(false);
    popup->view()->setReserved(true);

    QCOMPARE(stage.interface.windowsAskedFor, 1);
    QCOMPARE(stage.manager->widget(), fresh);
    QCOMPARE(popup->parentWidget(), parent);
    QVERIFY(popup->isHidden());
    QCOMPARE(popup->windowTitle(), u"left alone"_s);
    QCOMPARE(window.windowTitle(), u"left alone"_s);
}

void TestReserve::reservedChanged_isHarmless_withoutContent_data()
{
    reserve_asksHostForWindow_data();
}

void TestReserve::reservedChanged_isHarmless_withoutContent()
{
    QFETCH(const bool, given);
    PopupStage stage(lasting());
    QWidget window;
    window.setWindowTitle(u"of the host"_s);
    stage.interface.windowToGive = given ? &window : nullptr;
    const std::unique_ptr<VLWidget> popup(stage.popup());
    QVERIFY(!popup->view()->content());

    popup->view()->setReserved(true);

    QVERIFY(stage.manager->widget() != popup.get());
    QCOMPARE(popup->window()->windowTitle(), QString());
    QCOMPARE(popup->isWindow(), !given);
}

void TestReserve::floating_takesFlags()
{
    PopupStage stage(lasting());
    const VLWidget* popup = stage.detach(openKey());
    QCOMPARE(popup->windowFlags(), asQtKeepsThem(kFloatingFlags));
    QVERIFY(popup->isWindow());
    QVERIFY(popup->isVisible());
    QVERIFY(isDeletedOnClose(popup));
}

void TestReserve::floating_isNotModal()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.bringUpTip(openKey());
    popup->setWindowModality(Qt::ApplicationModal);
    popup->view()->setReserved(true);
    QCOMPARE(popup->windowModality(), Qt::NonModal);
    QVERIFY(!QApplication::activeModalWidget());
}

void TestReserve::floating_belongsToWindowOfReference()
{
    PopupStage stage(lasting());
    QWidget button(&stage.control);
    QWidget icon(&button);
    {
        const VLWidget* popup = stage.detach(openKey(), &icon);
        QCOMPARE(popup->parentWidget(), &stage.control);
        QVERIFY(popup->isWindow());
    }
    const VLWidget* popup = stage.detach(openKey(), &stage.control);
    QCOMPARE(popup->parentWidget(), &stage.control);
}

void TestReserve::floating_hasNoParent_withoutReference_data()
{
    QTest::addColumn<bool>("isNull");
    QTest::newRow("null") << true;
    QTest::newRow("no widget") << false;
}

void TestReserve::floating_hasNoParent_withoutReference()
{
    QFETCH(bool, isNull);
    PopupStage stage(lasting());
    QObject noWidget;
    const VLWidget* popup = stage.detach(openKey(), isNull ? nullptr : &noWidget);
    QVERIFY(!popup->parentWidget());
    QVERIFY(popup->isVisible());
    QCOMPARE(popup->windowFlags(), asQtKeepsThem(kFloatingFlags));
}

void TestReserve::floating_hasNoParent_whenReferenceIsPopupItself_data()
{
    QTest::addColumn<QString>("reference");
    QTest::newRow("the popup") << u"popup"_s;
    QTest::newRow("a widget inside it") << u"inside"_s;
    QTest::newRow("a window that belongs to it") << u"window"_s;
}

void TestReserve::floating_hasNoParent_whenReferenceIsPopupItself()
{
    QFETCH(const QString, reference);
    PopupStage stage(lasting());
    const QPointer<VLWidget> popup = stage.popup();
    auto* window = new QWidget(popup, Qt::Window);
    const QMap<QString, QWidget*> widgets{
        {u"popup"_s, popup}, {u"inside"_s, containerOf(popup)}, {u"window"_s, window}};

    stage.detach(openKey(), widgets.value(reference));

    QVERIFY(!popup->parentWidget());
    QVERIFY(popup->isWindow());
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QVERIFY(popup->close());
    runDeferredDeletions();
    QVERIFY(!popup);
}

void TestReserve::floating_takesTitleFromPropertyAlone_data()
{
    QTest::addColumn<bool>("hasProperty");
    QTest::addColumn<QString>("title");
    QTest::newRow("attribute alone") << false << QString();
    QTest::newRow("attribute and property") << true << u"of the property"_s;
}

void TestReserve::floating_takesTitleFromPropertyAlone()
{
    QFETCH(bool, hasProperty);
    PopupStage stage(lasting());
    VLWidget* popup = stage.bringUpTip(openKey());
    popup->setWindowTitle(u"of before"_s);
    VLXmlElement* content = popup->view()->content();
    content->setAttribute(u"title"_s, u"of the attribute"_s);
    if (hasProperty)
        content->setProperty("title", u"of the property"_s);

    popup->view()->setReserved(true);

    QTEST(popup->windowTitle(), "title");
}

void TestReserve::floating_keepsPosition()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.bringUpTip(openKey());
    QTRY_COMPARE_WITH_TIMEOUT(popup->pos(), kTipPosition, kPatienceMs);

    popup->view()->setReserved(true);

    QCOMPARE(popup->pos(), kTipPosition);
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QTRY_COMPARE_WITH_TIMEOUT(positionOnScreenOfX(popup), kTipPosition, kPatienceMs);
}

void TestReserve::floating_keepsPosition_whenMinimisedAndSceneGrows()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QTRY_VERIFY_WITH_TIMEOUT(popup->pos() != popup->geometry().topLeft(), kPatienceMs);
    const QPoint position = popup->pos();
    const QPoint positionOfX = positionOnScreenOfX(popup);
    popup->showMinimized();
    QTRY_VERIFY_WITH_TIMEOUT(!popup->windowHandle()->isExposed(), kPatienceMs);

    sceneOf(popup)->setWidth(200);

    QTRY_COMPARE_WITH_TIMEOUT(containerOf(popup)->width(), 200, kPatienceMs);
    QCOMPARE(popup->pos(), position);
    popup->showNormal();
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QTRY_COMPARE_WITH_TIMEOUT(positionOnScreenOfX(popup), positionOfX, kPatienceMs);
    QCOMPARE(popup->pos(), position);
}

void TestReserve::floating_isDeletedWithViewAndContent_whenClosed()
{
    PopupStage stage(lasting());
    const QPointer<VLWidget> popup = stage.detach(openKey());
    const QPointer<VLView> view = popup->view();
    const QPointer<VLXmlElement> content = view->content();
    const QPointer<QObject> root = content->parent();
    const QPointer<VLWidget> fresh = stage.manager->widget();

    QVERIFY(popup->close());
    runDeferredDeletions();

    QVERIFY(!popup);
    QVERIFY(!view);
    QVERIFY(!content);
    // The view owns the element, not what is above it.
    QVERIFY(root);
    QVERIFY(fresh);
    QVERIFY(stage.manager->show(saveKey(), PopupStage::pointer(), &stage.control));
}

void TestReserve::floating_isDeleted_whenUserClosesIt()
{
    PopupStage stage(lasting());
    const QPointer<VLWidget> popup = stage.detach(openKey());
    const QPointer<VLXmlElement> content = popup->view()->content();
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    popup->activateWindow();
    // Qt takes a tool window for active as soon as its parent is.
    const auto mayPress = [&popup] { return !popup || activeWindowOfX() == windowOfX(popup); };
    // A window manager with much to do may let a key pass.
    for (int attempt = 0; attempt < 3 && popup; ++attempt) {
        QTRY_VERIFY_WITH_TIMEOUT(mayPress(), kPatienceMs);
        answerOf(u"xdotool"_s, {u"key"_s, u"alt+F4"_s});
        (void)QTest::qWaitFor([&popup] { return !popup; }, kPatienceMs / 3);
    }
    QVERIFY(!popup);
    QVERIFY(!content);
    QVERIFY(stage.control.isVisible());
}

void TestReserve::floating_staysAlive_whenHidden()
{
    PopupStage stage(lasting());
    const QPointer<VLWidget> popup = stage.detach(openKey());
    const QPointer<VLXmlElement> content = popup->view()->content();
    popup->hide();
    runDeferredDeletions();
    QVERIFY(popup);
    QVERIFY(content);
    popup->show();
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QCOMPARE(shownKey(popup), openKey());
}

void TestReserve::floating_isHiddenByTimer()
{
    PopupStage stage({{ckStayDuration, 0}, {ckHideDuration, 0}});
    const QPointer<VLWidget> popup = stage.bringUpTip(openKey());
    stage.set(ckStayDuration, kShortMs);
    popup->view()->setReserved(true);
    QTRY_VERIFY_WITH_TIMEOUT(!popup->isVisible(), kPatienceMs);
    runDeferredDeletions();
    QVERIFY(popup);
}

void TestReserve::floating_armsTimerAsItShows_data()
{
    QTest::addColumn<bool>("stayOpen");
    QTest::addColumn<bool>("pointerOverPopup");
    QTest::addColumn<bool>("counting");
    QTest::newRow("pointer elsewhere") << false << false << true;
    QTest::newRow("pointer elsewhere, to stay open") << true << false << false;
    QTest::newRow("pointer over the popup") << false << true << false;
}

void TestReserve::floating_armsTimerAsItShows()
{
    QFETCH(bool, stayOpen);
    QFETCH(bool, pointerOverPopup);
    PopupStage stage(lasting());
    VLWidget* popup = stage.bringUpTip(openKey());
    popup->view()->setStayOpen(stayOpen);
    if (pointerOverPopup)
        QCursor::setPos(popup->frameGeometry().center());
    stage.set(ckStayDuration, kEndlessMs);

    popup->view()->setReserved(true);

    QTEST(timerOf(popup)->isActive(), "counting");
    QVERIFY(popup->isVisible());
}

void TestReserve::docked_becomesChildOfHostWindow()
{
    PopupStage stage(lasting());
    QWidget window;
    stage.interface.windowToGive = &window;
    const VLWidget* popup = stage.detach(openKey());
    QCOMPARE(popup->parentWidget(), &window);
    QVERIFY(!popup->isWindow());
    QCOMPARE(popup->windowType(), Qt::Widget);
    QVERIFY(!isDeletedOnClose(popup));
    QVERIFY(window.isVisible());
    QVERIFY(popup->isVisible());
}

void TestReserve::docked_addsFlagsToHostWindow_data()
{
    QTest::addColumn<Qt::WindowFlags>("own");
    QTest::addColumn<bool>("visible");
    const Qt::WindowFlags tool = Qt::Tool | Qt::FramelessWindowHint;
    const Qt::WindowFlags dialog = Qt::Dialog | Qt::WindowStaysOnTopHint;
    QTest::newRow("window") << Qt::WindowFlags(Qt::Window) << false;
    QTest::newRow("tool") << tool << false;
    QTest::newRow("dialog") << dialog << false;
    QTest::newRow("window on the screen") << Qt::WindowFlags(Qt::Window) << true;
}

void TestReserve::docked_addsFlagsToHostWindow()
{
    QFETCH(Qt::WindowFlags, own);
    QFETCH(bool, visible);
    PopupStage stage(lasting());
    QWidget window;
    window.setWindowFlags(own);
    window.resize(200, 150);
    if (visible)
        QVERIFY(bringUp(&window));
    const int flags = static_cast<int>(window.windowFlags().toInt());
    stage.interface.windowToGive = &window;
    stage.detach(openKey());
    QCOMPARE(window.windowFlags(), asQtKeepsThem(flags | kHostWindowFlags));
    QVERIFY(window.isVisible());
}

void TestReserve::docked_makesLayout_whenHostWindowHasNone()
{
    PopupStage stage(lasting());
    QWidget window;
    stage.interface.windowToGive = &window;
    const VLWidget* popup = stage.detach(openKey());
    const auto* layout = qobject_cast<QVBoxLayout*>(window.layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->count(), 1);
    QCOMPARE(layout->itemAt(0)->widget(), popup);
}

void TestReserve::docked_joinsLayoutOfHostWindow()
{
    PopupStage stage(lasting());
    QWidget window;
    auto* layout = new QHBoxLayout(&window);
    const QMargins margins(1, 2, 3, 4);
    layout->setContentsMargins(margins);
    layout->addWidget(new QLabel(u"Tips"_s));
    stage.interface.windowToGive = &window;

    const VLWidget* first = stage.detach(openKey());
    const VLWidget* second = stage.detach(saveKey());

    QCOMPARE(window.layout(), layout);
    QCOMPARE(layout->contentsMargins(), margins);
    QCOMPARE(layout->count(), 3);
    QCOMPARE(layout->itemAt(1)->widget(), first);
    QCOMPARE(layout->itemAt(2)->widget(), second);
    QVERIFY(first->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(second->isVisible(), kPatienceMs);
}

void TestReserve::docked_takesTitleFromAttributeAlone_data()
{
    QTest::addColumn<bool>("hasAttribute");
    QTest::addColumn<QString>("title");
    QTest::newRow("property alone") << false << QString();
    QTest::newRow("property and attribute") << true << u"of the attribute"_s;
}

void TestReserve::docked_takesTitleFromAttributeAlone()
{
    QFETCH(bool, hasAttribute);
    PopupStage stage(lasting());
    QWidget window;
    window.setWindowTitle(u"of the host"_s);
    stage.interface.windowToGive = &window;
    const VLWidget* popup = stage.bringUpTip(openKey());
    VLXmlElement* content = stage.view()->content();
    content->setProperty("title", u"of the property"_s);
    if (hasAttribute)
        content->setAttribute(u"title"_s, u"of the attribute"_s);

    stage.view()->setReserved(true);

    QTEST(window.windowTitle(), "title");
    QCOMPARE(popup->windowTitle(), QString());
}

void TestReserve::docked_takesSizeOfScene()
{
    PopupStage stage(lasting());
    QWidget window;
    stage.interface.windowToGive = &window;
    VLWidget* popup = stage.bringUpTip(openKey());
    QTRY_COMPARE_WITH_TIMEOUT(containerOf(popup)->size(), kSceneSize, kPatienceMs);
    containerOf(popup)->setFixedSize(10, 10);

    popup->view()->setReserved(true);

    QCOMPARE(containerOf(popup)->minimumSize(), kSceneSize);
    QCOMPARE(containerOf(popup)->maximumSize(), kSceneSize);
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_COMPARE_WITH_TIMEOUT(containerOf(popup)->size(), kSceneSize, kPatienceMs);
}

void TestReserve::docked_takesExactSizeOfScene_whenHostWindowIsHidden()
{
    PopupStage stage(lasting());
    QWidget window;
    stage.interface.windowToGive = &window;
    VLWidget* popup = stage.bringUpTip(openKey());
    QTRY_COMPARE_WITH_TIMEOUT(popup->size(), kSceneSize + QSize(1, 1), kPatienceMs);

    popup->view()->setReserved(true);

    QCOMPARE(popup->minimumSize(), kSceneSize);
    QCOMPARE(popup->maximumSize(), kSceneSize);
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_COMPARE_WITH_TIMEOUT(positionOnScreenOfX(&window), kTipPosition, kPatienceMs);
    QCOMPARE(popup->size(), kSceneSize);
    QCOMPARE(containerOf(popup)->size(), kSceneSize);
    QCOMPARE(window.size(), kSceneSize);
}

void TestReserve::docked_movesHostWindowToPosition()
{
    PopupStage stage(lasting());
    QWidget window;
    window.move(10, 10);
    stage.interface.windowToGive = &window;
    VLWidget* popup = stage.bringUpTip(openKey());
    QTRY_COMPARE_WITH_TIMEOUT(popup->pos(), kTipPosition, kPatienceMs);

    popup->view()->setReserved(true);

    QCOMPARE(window.pos(), kTipPosition);
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_COMPARE_WITH_TIMEOUT(positionOnScreenOfX(&window), kTipPosition, kPatienceMs);
}

void TestReserve::docked_movesWindowAround_whenGivenWidgetIsNoWindow()
{
    PopupStage stage(lasting());
    QWidget mainWindow;
    mainWindow.setGeometry(20, 20, 400, 300);
    QWidget panel(&mainWindow);
    panel.setGeometry(30, 40, 200, 150);
    QVERIFY(bringUp(&mainWindow));
    stage.interface.windowToGive = &panel;
    VLWidget* popup = stage.bringUpTip(openKey());
    QTRY_COMPARE_WITH_TIMEOUT(popup->pos(), kTipPosition, kPatienceMs);

    popup->view()->setReserved(true);

    QCOMPARE(popup->parentWidget(), &panel);
    QCOMPARE(panel.parentWidget(), &mainWindow);
    QVERIFY(!panel.isWindow());
    QCOMPARE(panel.windowFlags() & Qt::WindowFlags::fromInt(kHostWindowFlags),
             Qt::WindowFlags::fromInt(kHostWindowFlags));
    QTRY_COMPARE_WITH_TIMEOUT(mainWindow.pos(), kTipPosition, kPatienceMs);
}

void TestReserve::docked_isNotHiddenByTimer()
{
    PopupStage stage({{ckStayDuration, 0}, {ckHideDuration, 0}});
    QWidget window;
    stage.interface.windowToGive = &window;
    VLWidget* popup = stage.detach(openKey());
    const QSignalSpy timeouts(timerOf(popup), &QTimer::timeout);
    stage.set(ckStayDuration, kShortMs);
    popup->setTimer();
    QTRY_COMPARE_WITH_TIMEOUT(timeouts.count(), 1, kPatienceMs);
    QVERIFY(popup->isVisible());

    // Asked to, it still hides.
    popup->hideAnimated();
    QVERIFY(!popup->isVisible());
}

void TestReserve::docked_staysAlive_whenHostWindowIsClosed()
{
    PopupStage stage(lasting());
    QWidget window;
    stage.interface.windowToGive = &window;
    const QPointer<VLWidget> popup = stage.detach(openKey());
    QVERIFY(window.close());
    runDeferredDeletions();
    QVERIFY(popup);
    window.show();
    QVERIFY(popup->isVisible());
    QCOMPARE(shownKey(popup), openKey());
}

void TestReserve::docked_isDeletedWithViewAndContent_whenHostWindowIs()
{
    PopupStage stage(lasting());
    auto window = std::make_unique<QWidget>();
    stage.interface.windowToGive = window.get();
    const QPointer<VLWidget> popup = stage.detach(openKey());
    const QPointer<VLView> view = popup->view();
    const QPointer<VLXmlElement> content = view->content();
    window.reset();
    QVERIFY(!popup);
    QVERIFY(!view);
    QVERIFY(!content);
    stage.manager->raise();
    QVERIFY(stage.manager->show(saveKey(), PopupStage::pointer(), &stage.control));
}

void TestReserve::scene_detachesPopup_whenClicked_data()
{
    reserve_asksHostForWindow_data();
}

void TestReserve::scene_detachesPopup_whenClicked()
{
    QFETCH(bool, given);
    PopupStage stage(lasting());
    stage.writeScene(kClickScene);
    QWidget window;
    stage.interface.windowToGive = given ? &window : nullptr;
    VLWidget* popup = stage.bringUpTip(openKey());
    QTRY_COMPARE_WITH_TIMEOUT(popup->pos(), kTipPosition, kPatienceMs);

    QVERIFY(PointerDriver::moveTo(popup->frameGeometry().center()));
    QVERIFY(PointerDriver::click());

    QTRY_VERIFY_WITH_TIMEOUT(stage.manager->widget() != popup, kPatienceMs);
    QCOMPARE(popup->view()->rootObject()->property("clicks").toInt(), 1);
    QVERIFY(popup->isVisible());
    QCOMPARE(popup->isWindow(), !given);
    QCOMPARE(shownKey(popup), openKey());
    QVERIFY(QTest::qWaitForWindowExposed(popup->window()));
    stage.manager->show(saveKey(), PopupStage::pointer(), &stage.control);
    QCOMPARE(shownKey(stage.popup()), saveKey());
}

void TestReserve::scene_detachesPopup_whileItLoads_data()
{
    reserve_asksHostForWindow_data();
}

void TestReserve::scene_detachesPopup_whileItLoads()
{
    QFETCH(bool, given);
    PopupStage stage(lasting());
    stage.writeScene(kLoadScene);
    QWidget window;
    stage.interface.windowToGive = given ? &window : nullptr;
    QPointer<VLWidget> popup = stage.popup();

    QVERIFY(stage.manager->show(openKey(), PopupStage::pointer(), nullptr));

    QVERIFY(stage.manager->widget() != popup);
    QVERIFY(!stage.manager->widget()->isVisible());
    QVERIFY(popup->isVisible());
    QCOMPARE(popup->isWindow(), !given);
    QVERIFY(QTest::qWaitForWindowExposed(popup->window()));
    QTRY_COMPARE_WITH_TIMEOUT(containerOf(popup)->size(), kSceneSize, kPatienceMs);
    QCOMPARE(shownKey(popup), openKey());
    delete popup;
}

void TestReserve::scene_detachesPopup_whereItIs_whileItLoads()
{
    PopupStage stage(lasting());
    stage.writeScene(kLoadScene);
    const QPointer<VLWidget> popup = stage.popup();

    QVERIFY(stage.manager->show(openKey(), PopupStage::pointer(), nullptr));

    QCOMPARE(popup->pos(), kTipPosition);
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QTRY_COMPARE_WITH_TIMEOUT(positionOnScreenOfX(popup), kTipPosition, kPatienceMs);
    delete popup;
}

void TestReserve::raise_goesFromLastToFirst()
{
    PopupStage stage(lasting());
    // Of windows without one above them the window manager takes some for children of others, in
    // one run of ten, and keeps these on top whatever is raised.
    const QList<VLWidget*> popups = detachSeveral(stage, 3, &stage.control);
    QTRY_COMPARE_WITH_TIMEOUT(stackingOrderOf(popups), popups, kPatienceMs);

    // The one raised last, the first to be reserved, comes out on top.
    const QList<VLWidget*> reversed(popups.crbegin(), popups.crend());
    // A busy window manager gives the keyboard to a window late, and raises it once more for that.
    for (int attempt = 0; attempt < 3 && stackingOrderOf(popups) != reversed; ++attempt) {
        stage.manager->raise();
        (void)QTest::qWaitFor([&] { return stackingOrderOf(popups) == reversed; }, kPatienceMs / 3);
    }
    QCOMPARE(stackingOrderOf(popups), reversed);
}

void TestReserve::raise_isHarmless_withoutReservedWindows()
{
    PopupStage stage(lasting());
    stage.manager->raise();
    stage.manager->setStayOnTop(true);
    QVERIFY(!stage.manager->widget());
}

void TestReserve::setStayOnTop_setsAndClearsState()
{
    PopupStage stage(lasting());
    const QList<VLWidget*> popups = detachFreely(stage, 2);
    for (const VLWidget* popup : popups)
        QVERIFY(!isAboveForX(popup));

    stage.manager->setStayOnTop(true);
    for (const VLWidget* popup : popups) {
        QVERIFY(popup->isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(isAboveForX(popup), kPatienceMs);
    }

    stage.manager->setStayOnTop(false);
    for (VLWidget* popup : popups) {
        QVERIFY(popup->isVisible());
        QVERIFY(QTest::qWaitForWindowExposed(popup));
        QTRY_VERIFY_WITH_TIMEOUT(!isAboveForX(popup), kPatienceMs);
    }
}

void TestReserve::setStayOnTop_keepsSceneOnScreen()
{
    PopupStage stage(lasting());
    const VLWidget* popup = stage.detach(openKey());
    QVERIFY(QTest::qWaitForWindowExposed(const_cast<VLWidget*>(popup)));
    const auto colorOnScreen = [popup] {
        const QPoint center = popup->mapToGlobal(popup->rect().center());
        return popup->screen()
            ->grabWindow(0, center.x(), center.y(), 1, 1)
            .toImage()
            .pixelColor(0, 0);
    };
    const QColor sceneColor(u"steelblue"_s);
    QTRY_COMPARE_WITH_TIMEOUT(colorOnScreen(), sceneColor, kPatienceMs);

    for (const bool onTop : {true, false}) {
        stage.manager->setStayOnTop(onTop);
        QTRY_COMPARE_WITH_TIMEOUT(colorOnScreen(), sceneColor, kPatienceMs);
    }
}

void TestReserve::setStayOnTop_leavesViewAlone_whenFlagsStayTheSame()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    stage.manager->setStayOnTop(true);
    QVERIFY(QTest::qWaitForWindowExposed(popup->view()));
    // A scene that pauses while it is not visible would notice.
    const QSignalSpy visibility(popup->view(), &QWindow::visibleChanged);
    const WId id = popup->view()->winId();

    stage.manager->setStayOnTop(true);

    QCOMPARE(visibility.count(), 0);
    QCOMPARE(popup->view()->winId(), id);
    QVERIFY(popup->isVisible());
}

void TestReserve::setStayOnTop_keepsSize()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    QVERIFY(QTest::qWaitForWindowExposed(popup));
    QTRY_VERIFY_WITH_TIMEOUT(positionOnScreenOfX(popup) == kTipPosition, kPatienceMs);
    const QSize size = popup->size();

    for (const bool onTop : {true, false, true}) {
        stage.manager->setStayOnTop(onTop);
        QVERIFY(QTest::qWaitForWindowExposed(popup));
        QTRY_COMPARE_WITH_TIMEOUT(isAboveForX(popup), onTop, kPatienceMs);
        QTRY_VERIFY_WITH_TIMEOUT(popup->view()->isExposed(), kPatienceMs);
        QCoreApplication::processEvents();
        QCOMPARE(popup->size(), size);
        QCOMPARE(containerOf(popup)->size(), kSceneSize);
    }
}

void TestReserve::setStayOnTop_leavesOtherFlags()
{
    PopupStage stage(lasting());
    const VLWidget* popup = stage.detach(openKey());
    stage.manager->setStayOnTop(true);
    QCOMPARE(popup->windowFlags(), asQtKeepsThem(kFloatingFlags | kStayOnTopFlag));
    QCOMPARE(popup->parentWidget(), &stage.control);
    stage.manager->setStayOnTop(false);
    QCOMPARE(popup->windowFlags(), asQtKeepsThem(kFloatingFlags));
    QCOMPARE(popup->parentWidget(), &stage.control);
    QCOMPARE(popup->pos(), kTipPosition);
}

void TestReserve::setStayOnTop_showsHiddenWindow()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    popup->hide();
    stage.manager->setStayOnTop(false);
    QVERIFY(popup->isVisible());
}

void TestReserve::setStayOnTop_leavesDockedPopupInItsWindow()
{
    PopupStage stage(lasting());
    QWidget window;
    stage.interface.windowToGive = &window;
    const VLWidget* popup = stage.detach(openKey());
    const Qt::WindowFlags flags = window.windowFlags();
    stage.manager->setStayOnTop(true);
    QVERIFY(popup->windowFlags() & Qt::WindowStaysOnTopHint);
    QCOMPARE(popup->parentWidget(), &window);
    QVERIFY(!popup->isWindow());
    QVERIFY(popup->isVisible());
    QCOMPARE(window.windowFlags(), flags);
}

void TestReserve::setStayOnTop_leavesCurrentPopupAlone()
{
    PopupStage stage(lasting());
    stage.detach(openKey());
    VLWidget* hidden = stage.manager->widget();
    const Qt::WindowFlags flags = hidden->windowFlags();
    stage.manager->setStayOnTop(true);
    QCOMPARE(hidden->windowFlags(), flags);
    QVERIFY(!hidden->isVisible());

    const VLWidget* current = stage.bringUpTip(saveKey());
    QCOMPARE(current, hidden);
    const WId id = windowOfX(current);
    stage.manager->setStayOnTop(true);
    QCOMPARE(current->windowFlags(), flags);
    // A change of flags would have cost it its window.
    QCOMPARE(windowOfX(current), id);
    QVERIFY(!isAboveForX(current));
}

void TestReserve::raise_leavesCurrentPopupAlone()
{
    PopupStage stage(lasting());
    VLWidget* reserved = stage.detach(openKey(), nullptr);
    QVERIFY(QTest::qWaitForWindowExposed(reserved));
    VLWidget* current = stage.bringUpTip(saveKey(), nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(stackingOrderOf({reserved, current}),
                              (QList<VLWidget*>{reserved, current}), kPatienceMs);
    stage.manager->raise();
    QTRY_COMPARE_WITH_TIMEOUT(stackingOrderOf({reserved, current}),
                              (QList<VLWidget*>{current, reserved}), kPatienceMs);
}

void TestReserve::deadEntries_areRemoved_data()
{
    QTest::addColumn<QList<int>>("closed");
    QTest::newRow("first") << QList<int>{0};
    QTest::newRow("middle") << QList<int>{1};
    QTest::newRow("last") << QList<int>{3};
    QTest::newRow("neighbours") << QList<int>{1, 2};
    QTest::newRow("both ends") << QList<int>{0, 3};
    QTest::newRow("all") << QList<int>{0, 1, 2, 3};
}

void TestReserve::deadEntries_areRemoved()
{
    QFETCH(QList<int>, closed);
    PopupStage stage(lasting());
    QList<VLWidget*> living = detachSeveral(stage, 4, &stage.control);
    QList<QPointer<VLWidget>> dead;
    for (auto it = closed.crbegin(); it != closed.crend(); ++it) {
        dead += living.takeAt(*it);
        dead.last()->close();
    }
    runDeferredDeletions();
    for (const QPointer<VLWidget>& popup : std::as_const(dead))
        QVERIFY(!popup);

    // The walk that removes an entry must not pass over its neighbour, nor the next one miss any.
    stage.manager->raise();
    const QList<VLWidget*> reversed(living.crbegin(), living.crend());
    QTRY_COMPARE_WITH_TIMEOUT(stackingOrderOf(living), reversed, kPatienceMs);
    stage.manager->setStayOnTop(true);
    for (const VLWidget* popup : std::as_const(living))
        QCOMPARE(popup->windowFlags(), asQtKeepsThem(kFloatingFlags | kStayOnTopFlag));
    stage.manager->setStayOnTop(false);
    for (const VLWidget* popup : std::as_const(living))
        QCOMPARE(popup->windowFlags(), asQtKeepsThem(kFloatingFlags));
}

void TestReserve::manager_isReachedFromReservedWindow()
{
    PopupStage stage(lasting());
    VLWidget* popup = stage.detach(openKey());
    popup->manager()->setStayOnTop(true);
    QCOMPARE(popup->windowFlags(), asQtKeepsThem(kFloatingFlags | kStayOnTopFlag));
    popup->view()->manager()->setStayOnTop(false);
    QCOMPARE(popup->windowFlags(), asQtKeepsThem(kFloatingFlags));
    popup->view()->manager()->raise();
    QCOMPARE(popup->manager(), stage.manager.get());
    QCOMPARE(popup->view()->manager(), stage.manager.get());
}

void TestReserve::vidletAttribute_passesOverReservedPopup_withoutView()
{
    PopupStage stage(lasting());
    VLWidget* first = stage.detach(openKey());
    VLWidget* second = stage.detach(openKey());
    second->view()->content()->setAttribute(u"shortcut"_s, u"F1"_s);

    first->setView(nullptr);

    QCOMPARE(stage.manager->vidletAttribute(openKey(), u"shortcut"_s, QString()), u"F1"_s);
    second->setView(nullptr);
    QCOMPARE(stage.manager->vidletAttribute(openKey(), u"shortcut"_s, QString()), u"Ctrl+O"_s);
}

void TestReserve::reservedWindow_livesOn_whenManagerIsGone()
{
    PopupStage stage(lasting());
    const QPointer<VLWidget> popup = stage.detach(openKey());
    QVERIFY(QTest::qWaitForWindowExposed(popup));

    stage.manager.reset();
    runDeferredDeletions();

    QVERIFY(popup);
    QVERIFY(!popup->manager());
    QVERIFY(!popup->view()->manager());
    sceneOf(popup)->setSize(QSizeF(160, 90));
    QTRY_COMPARE_WITH_TIMEOUT(containerOf(popup)->size(), QSize(160, 90), kPatienceMs);
    popup->view()->setReserved(false);
    popup->view()->setReserved(true);
    // It belongs to the user, and still goes when it is closed.
    QVERIFY(popup->close());
    runDeferredDeletions();
    QVERIFY(!popup);
}

void TestReserve::reserve_leavesNothingBehind_whenDoneOften()
{
    constexpr int kWarmUps = 5;
    constexpr int kRounds = 200;
    PopupStage stage(lasting());
    const auto detachAndClose = [&] {
        VLWidget* popup = stage.detach(openKey());
        QVERIFY(QTest::qWaitForWindowExposed(popup));
        QVERIFY(popup->close());
        runDeferredDeletions();
    };
    for (int i = 0; i < kWarmUps; ++i)
        detachAndClose();
    // The list of X fails while windows go.
    QTRY_VERIFY_WITH_TIMEOUT(windowCountOfX() > 0, kPatienceMs);
    const Holdings before = Holdings::now();
    QVERIFY(before.windowsOfX > 0);
    QVERIFY(before.threads > 0);
    QVERIFY(before.files > 0);

    for (int i = 0; i < kRounds; ++i)
        detachAndClose();

    QCOMPARE(stage.interface.windowsAskedFor, kWarmUps + kRounds);
    QTRY_VERIFY_WITH_TIMEOUT(windowCountOfX() > 0, kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(Holdings::now(), before, kPatienceMs);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestReserve>(argc, argv);
}

#include "tst_reserve.moc"
