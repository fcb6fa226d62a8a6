// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AccessStage.h"
#include "PointerDriver.h"
#include "PopupStage.h"
#include "VidletsTest.h"
#include "XServer.h"
#include <Vidlets/VLHostHooks.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>

#include <QApplication>
#include <QDialog>
#include <QMenuBar>
#include <QQuickItem>
#include <QQuickView>
#include <QQuickWidget>
#include <QTimer>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 15000;
const QPoint kDesktop(1260, 780);

/// Presses keys as a user does. A key arrives when the loop next runs.
bool press(const char* key)
{
    return PointerDriver::pressKey(QString::fromLatin1(key));
}

constexpr auto kItems = R"(import QtQuick
import com.larkspan.vidlets.host

FocusScope {
    width: 160
    height: 140
    focus: true

    Rectangle {
        objectName: "one"
        Vidlet.key: "cell"
        y: 40
        width: 160
        height: 60
    }
    Rectangle { objectName: "two"; Vidlet.key: "data"; width: 80; height: 30 }
    Rectangle { objectName: "three"; y: 110; width: 80; height: 30 }
}
)";

/// Says in "acted" which of its items got the focus.
constexpr auto kSceneWithFocus = R"(import QtQuick

Rectangle {
    id: root

    property string shownKey: vidlet ? vidlet.attribute("key") : ""
    property string acted

    width: 160
    height: 90

    FocusScope {
        focus: true

        Rectangle {
            width: 100
            height: 25
            focus: true
            activeFocusOnTab: true
            Keys.onSpacePressed: root.acted = "first"
        }
        Rectangle {
            y: 30
            width: 100
            height: 25
            activeFocusOnTab: true
            Keys.onSpacePressed: root.acted = "second"
        }
    }
}
)";

/// A stage with the pointer out of the way.
class Stage : public AccessStage
{
public:
    Stage()
    {
        if (!PointerDriver::moveTo(kDesktop))
            qFatal("The pointer did not move");
    }

    /// Calls the tip of @p widget, and waits for the one of @p key.
    void call(QWidget* widget, const QString& key)
    {
        widget->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), widget);
        QVERIFY(press("shift+F1"));
        QTRY_COMPARE_WITH_TIMEOUT(shownKey(), key, kPatienceMs);
    }

    /// Rests the pointer on @p widget until its tip is up.
    void restOn(const QWidget* widget, const QString& key)
    {
        QVERIFY(PointerDriver::moveTo(globalRect(widget).center()));
        QTRY_COMPARE_WITH_TIMEOUT(shownKey(), key, kPatienceMs);
    }

    void enter()
    {
        QVERIFY(press("F6"));
        QTRY_COMPARE_WITH_TIMEOUT(focusInTip(), u"link"_s, kPatienceMs);
    }

    bool isUp() const
    {
        return tip();
    }

    /// Waits until the pad has got all that was pressed.
    void waitForKeys()
    {
        QVERIFY(press("a"));
        QTRY_VERIFY_WITH_TIMEOUT(pad->keys.endsWith(u"-A"_s), kPatienceMs);
    }

    QRect tipRect() const
    {
        return {positionOnScreenOfX(tip()), tip()->size()};
    }
};

/// A scene of the host's, in a widget named "dialog" or a window of its own.
class ItemHost
{
public:
    ItemHost(Stage& stage, bool isInWidget)
    {
        const QUrl source = QUrl::fromLocalFile(stage.packages.dataPath() + u"/host.qml"_s);
        if (isInWidget) {
            widget = std::make_unique<QQuickWidget>(source, stage.window.centralWidget());
            widget->setObjectName(u"dialog"_s);
            widget->move(430, 180);
            widget->show();
            widget->setFocus();
            scene = widget->quickWindow();
            root = widget->rootObject();
        } else {
            window = std::make_unique<QQuickView>(source);
            window->setPosition(300, 200);
            window->show();
            window->requestActivate();
            scene = window.get();
            root = window->rootObject();
        }
    }

    void focus(const QString& name) const
    {
        root->findChild<QQuickItem*>(name)->forceActiveFocus();
    }

    QQuickWindow* scene = nullptr;

private:
    std::unique_ptr<QQuickWidget> widget;
    std::unique_ptr<QQuickView> window;
    QQuickItem* root = nullptr;
};

} // namespace

class TestVLAccess : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void sequence_showsTip_ofButton_besideIt();
    void sequence_showsTip_ofNearestAncestorWithContent();
    void sequence_showsTip_ofCurrentCell_besideIt();
    void sequence_showsTip_ofView_whenCellHasNone();
    void sequence_showsTip_ofCurrentTab();
    void sequence_showsTip_ofMenuItem_whileMenuIsOpen();
    void sequence_showsTip_ofItem_data();
    void sequence_showsTip_ofItem();
    void sequence_showsTip_ofWidget_whoseItemHasNone();
    void sequence_showsTip_ofEntryOfMenuBar();
    void sequence_showsTip_inModalDialog();
    void sequence_isHandedOn_whenThereIsNothingToShow();
    void sequence_isHandedOn_whenTipsAreOff();
    void sequence_asksForNoModifiers();
    void sequence_maySpanSeveralKeys();
    void sequence_empty_showsNothing();
    void setShowSequence_replacesDefault();
    void sequence_agreesWithKeyAt_ofHost();

    void showTip_isBesideControl_data();
    void showTip_isBesideControl();
    void showTip_isInTheMiddle_whenControlIsHidden();
    void showTip_showsNothing_withoutContent();

    void calledTip_stays_whereverPointerGoes();
    void calledTip_stays_atOtherKeys();
    void calledTip_goes_atSequence();
    void calledTip_goes_withFocus();
    void calledTip_goes_withCurrentCell();
    void calledTip_goes_withMenuItem();
    void calledTip_goes_atClickOutside();
    void calledTip_stays_atClickOnIt();
    void hoveredTip_staysAtSequence_untilEsc();

    void esc_closesTip_andIsNotHandedOn_data();
    void esc_closesTip_andIsNotHandedOn();
    void esc_isHandedOn_withoutTip();
    void esc_leavesDialogAndMenu();
    void esc_held_closesNothingElse();
    void modifiers_hideNothing();

    void f6_leadsIntoTip_andEscBack();
    void f6_leadsIntoHoveredTip_whichStays();
    void f6_showsWhichItemHasFocus();
    void f6_leadsOut_leavingTip();
    void f6_isHandedOn_withoutTip();
    void tab_walksTip_bothWays();
    void return_acts();
    void keys_reachSceneAlone_inside();
    void focus_movesBehindTip_withoutHidingIt();
    void clickOutside_closesTip_fromInside();
    void otherWindow_takesFocusFromTip();
    void otherWindow_takesFocusFromTip_thatWasActive();
    void f6_beginsWhereSceneSays();
    void f6_worksInModalDialog();
    void f6_worksWhileMenuIsOpen();
    void pinning_fromInside_givesFocusBack();
    void hidingTip_fromInside_givesFocusBack();

    void setEnabled_false_leavesKeysAlone();
    void setEnabled_false_takesCalledTipAway();
    void interface_mayGo_whileFocusIsInside();
};

void TestVLAccess::sequence_showsTip_ofButton_besideIt()
{
    Stage stage;
    stage.call(stage.open, u"open"_s);
    const QRect control = AccessStage::globalRect(stage.open);
    const QPoint expected(control.left(), control.bottom() + 1);
    QTRY_COMPARE_WITH_TIMEOUT(stage.tipRect().topLeft(), expected, kPatienceMs);
    QVERIFY(VLHostHooks::isHeld(stage.interface->manager()));
    QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), stage.open, kPatienceMs);
    QCOMPARE(stage.shortcuts, 0);
}

void TestVLAccess::sequence_showsTip_ofNearestAncestorWithContent()
{
    Stage stage;
    // It has a key, but the packages know nothing of it.
    stage.inner->setObjectName(u"unknown"_s);
    stage.call(stage.inner, u"group"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!stage.tipRect().intersects(AccessStage::globalRect(stage.group)),
                             kPatienceMs);
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    stage.inner->setObjectName(QString());
    stage.call(stage.inner, u"group"_s);
}

void TestVLAccess::sequence_showsTip_ofCurrentCell_besideIt()
{
    Stage stage;
    stage.table->setCurrentCell(0, 1);
    stage.call(stage.table, u"cell"_s);
    const QRect cell = AccessStage::globalRect(
        stage.table->viewport(), stage.table->visualRect(stage.table->model()->index(0, 1)));
    const QPoint expected(cell.left(), cell.bottom() + 1);
    QTRY_COMPARE_WITH_TIMEOUT(stage.tipRect().topLeft(), expected, kPatienceMs);
    QCOMPARE(VLHostHooks::zone(stage.interface->manager()), cell);
}

void TestVLAccess::sequence_showsTip_ofView_whenCellHasNone()
{
    Stage stage;
    stage.table->setCurrentCell(1, 1);
    stage.call(stage.table, u"table"_s);
    QCOMPARE(VLHostHooks::zone(stage.interface->manager()), AccessStage::globalRect(stage.table));
}

void TestVLAccess::sequence_showsTip_ofCurrentTab()
{
    Stage stage;
    stage.call(stage.tabs, u"tabs.0"_s);
    QCOMPARE(VLHostHooks::zone(stage.interface->manager()),
             AccessStage::globalRect(stage.tabs, stage.tabs->tabRect(0)));
    QVERIFY(press("Right"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    stage.call(stage.tabs, u"data"_s);
}

void TestVLAccess::sequence_showsTip_ofMenuItem_whileMenuIsOpen()
{
    Stage stage;
    QVERIFY(press("alt+f"));
    QTRY_VERIFY_WITH_TIMEOUT(stage.file->isVisible(), kPatienceMs);
    stage.file->setActiveAction(stage.item);
    QVERIFY(QTest::qWaitForWindowExposed(stage.file));
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"item"_s, kPatienceMs);
    QVERIFY(stage.file->isVisible());
    const QRect zone = AccessStage::globalRect(stage.file, stage.file->actionGeometry(stage.item));
    QCOMPARE(VLHostHooks::zone(stage.interface->manager()), zone);
    QTRY_VERIFY_WITH_TIMEOUT(!stage.tipRect().intersects(zone), kPatienceMs);
    stage.file->close();
}

void TestVLAccess::sequence_showsTip_ofItem_data()
{
    QTest::addColumn<bool>("isInWidget");
    QTest::newRow("in a widget") << true;
    QTest::newRow("in a window") << false;
}

void TestVLAccess::sequence_showsTip_ofItem()
{
    QFETCH(const bool, isInWidget);
    Stage stage;
    stage.packages.write(u"host.qml"_s, kItems);
    const ItemHost host(stage, isInWidget);
    QTRY_VERIFY_WITH_TIMEOUT(host.scene->activeFocusItem(), kPatienceMs);
    host.focus(u"one"_s);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"cell"_s, kPatienceMs);
    // The focus moves on within the scene.
    host.focus(u"two"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"data"_s, kPatienceMs);
    stage.enter();
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(host.scene->activeFocusItem(), kPatienceMs);
}

void TestVLAccess::sequence_showsTip_ofWidget_whoseItemHasNone()
{
    Stage stage;
    stage.packages.write(u"host.qml"_s, kItems);
    const ItemHost host(stage, true);
    QTRY_VERIFY_WITH_TIMEOUT(host.scene->activeFocusItem(), kPatienceMs);
    // "one" lies in the middle, and is another control.
    host.focus(u"three"_s);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"dialog"_s, kPatienceMs);
}

void TestVLAccess::sequence_showsTip_ofEntryOfMenuBar()
{
    Stage stage;
    QMenuBar* bar = stage.window.menuBar();
    QVERIFY(press("alt"));
    QTRY_COMPARE_WITH_TIMEOUT(bar->activeAction(), stage.file->menuAction(), kPatienceMs);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"file"_s, kPatienceMs);
    QCOMPARE(VLHostHooks::zone(stage.interface->manager()),
             AccessStage::globalRect(bar, bar->actionGeometry(stage.file->menuAction())));
    stage.enter();
    QCOMPARE(bar->activeAction(), stage.file->menuAction());
}

void TestVLAccess::sequence_showsTip_inModalDialog()
{
    Stage stage;
    QDialog dialog(&stage.window);
    dialog.setObjectName(u"dialog"_s);
    dialog.setModal(true);
    dialog.resize(200, 100);
    QLineEdit line(&dialog);
    dialog.show();
    QTRY_VERIFY_WITH_TIMEOUT(hasKeyboardOfX(&dialog), kPatienceMs);
    stage.call(&line, u"dialog"_s);
}

void TestVLAccess::sequence_isHandedOn_whenThereIsNothingToShow()
{
    Stage stage;
    stage.pad->setObjectName(u"unknown"_s);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shortcuts, 1, kPatienceMs);
    QVERIFY(!stage.isUp());
    // What would be shown to the pointer is shown to the keyboard.
    stage.interface->context().set(ckFallbackKey, u"open"_s);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"open"_s, kPatienceMs);
    QCOMPARE(stage.shortcuts, 1);
}

void TestVLAccess::sequence_asksForNoModifiers()
{
    Stage stage;
    stage.interface->context().set(ckRequiredModifiers, int(Qt::ControlModifier));
    stage.call(stage.open, u"open"_s);
}

void TestVLAccess::sequence_maySpanSeveralKeys()
{
    Stage stage;
    stage.interface->access()->setShowSequence(
        QKeySequence(Qt::CTRL | Qt::Key_K, QKeyCombination(Qt::Key_T)));
    QVERIFY(press("ctrl+k"));
    QVERIFY(press("x"));
    QVERIFY(press("t"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.pad->keys.filter(u"X"_s) + stage.pad->keys.filter(u"T"_s),
                              QStringList({u"+X"_s, u"-X"_s, u"+T"_s, u"-T"_s}), kPatienceMs);
    QVERIFY(!stage.isUp());
    QVERIFY(press("ctrl+k"));
    QVERIFY(press("t"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"pad"_s, kPatienceMs);
    QVERIFY(!stage.pad->keys.contains(u"+K"_s));
    QCOMPARE(stage.pad->keys.count(u"+T"_s), 1);
}

void TestVLAccess::sequence_empty_showsNothing()
{
    Stage stage;
    stage.interface->access()->setShowSequence(QKeySequence());
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shortcuts, 1, kPatienceMs);
    QVERIFY(!stage.isUp());
}

void TestVLAccess::setShowSequence_replacesDefault()
{
    Stage stage;
    VLAccess* access = stage.interface->access();
    QCOMPARE(access->showSequence(), QKeySequence(Qt::SHIFT | Qt::Key_F1));
    const QKeySequence sequence(Qt::CTRL | Qt::Key_Question);
    access->setShowSequence(sequence);
    QCOMPARE(access->showSequence(), sequence);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shortcuts, 1, kPatienceMs);
    QVERIFY(!stage.isUp());
    // The sign needs Shift on most keyboards.
    QVERIFY(press("ctrl+question"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"pad"_s, kPatienceMs);
}

namespace {

/// Gives a key of its own to each widget without content.
class OwnKeys : public VLHostInterface
{
public:
    using VLHostInterface::VLHostInterface;

    QString keyAt(QObject* object, const QPoint& globalPos, QRect* zone) override
    {
        if (object->objectName() != "mine"_L1)
            return VLHostInterface::keyAt(object, globalPos, zone);
        position = globalPos;
        return u"open"_s;
    }

    QPoint position;
};

} // namespace

void TestVLAccess::sequence_agreesWithKeyAt_ofHost()
{
    Stage stage;
    stage.interface.reset();
    OwnKeys interface(stage.context, {stage.packages.dataPath()});
    stage.pad->setObjectName(u"mine"_s);
    interface.access();
    QVERIFY(press("shift+F1"));
    QTRY_VERIFY_WITH_TIMEOUT(interface.manager()->widget(), kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(interface.manager()->widget()->isVisible(), kPatienceMs);
    QCOMPARE(interface.position, AccessStage::globalRect(stage.pad).center());
    // It has named no zone, so the tip is beside the whole of the widget.
    const QRect control = AccessStage::globalRect(stage.pad);
    QTRY_COMPARE_WITH_TIMEOUT(positionOnScreenOfX(interface.manager()->widget()),
                              QPoint(control.left(), control.bottom() + 1), kPatienceMs);
}

void TestVLAccess::showTip_isBesideControl_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("button") << u"open"_s;
    QTest::newRow("tab") << u"tabs.0"_s;
    QTest::newRow("entry of the menu bar") << u"file"_s;
}

void TestVLAccess::showTip_isBesideControl()
{
    QFETCH(const QString, key);
    Stage stage;
    stage.pad->setFocus();
    QTRY_COMPARE(QApplication::focusWidget(), stage.pad);
    QVERIFY(stage.interface->access()->showTip(key, &stage.window));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), key, kPatienceMs);
    QRect control = AccessStage::globalRect(stage.open);
    if (key == "tabs.0"_L1)
        control = AccessStage::globalRect(stage.tabs, stage.tabs->tabRect(0));
    else if (key == "file"_L1)
        control = AccessStage::globalRect(
            stage.window.menuBar(),
            stage.window.menuBar()->actionGeometry(stage.file->menuAction()));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.tipRect().intersects(control), kPatienceMs);
    QVERIFY(stage.tipRect().adjusted(-30, -30, 30, 30).intersects(control));
    // It is a called one.
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QCOMPARE(stage.shortcuts, 0);
    QCOMPARE(QApplication::focusWidget(), stage.pad);
}

void TestVLAccess::showTip_isInTheMiddle_whenControlIsHidden()
{
    Stage stage;
    stage.open->hide();
    QVERIFY(stage.interface->access()->showTip(u"open"_s, &stage.window));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"open"_s, kPatienceMs);
    const QPoint middle = AccessStage::globalRect(&stage.window).center();
    // The scene says its size when it is there.
    QTRY_COMPARE_WITH_TIMEOUT(stage.tipRect().center(), middle, kPatienceMs);
}

void TestVLAccess::showTip_showsNothing_withoutContent()
{
    Stage stage;
    VLAccess* access = stage.interface->access();
    QVERIFY(!access->showTip(u"nowhere"_s, &stage.window));
    QVERIFY(!access->showTip(QString(), &stage.window));
    QVERIFY(!access->showTip(u"open"_s, nullptr));
    access->setEnabled(false);
    QVERIFY(!access->showTip(u"open"_s, &stage.window));
    QVERIFY(!stage.isUp());
}

void TestVLAccess::calledTip_stays_whereverPointerGoes()
{
    Stage stage;
    stage.interface->context().set(ckStayDuration, 1);
    stage.call(stage.pad, u"pad"_s);
    QVERIFY(PointerDriver::moveTo(stage.tipRect().center()));
    QVERIFY(PointerDriver::moveTo(AccessStage::globalRect(stage.table).center()));
    // A control that would have a tip of its own.
    QVERIFY(PointerDriver::moveTo(AccessStage::globalRect(stage.open).center()));
    // Longer than it takes a tip to come up.
    QTest::qWait(1500);
    QVERIFY(PointerDriver::moveTo(kDesktop));
    stage.waitForKeys();
    QCOMPARE(stage.shownKey(), u"pad"_s);
}

void TestVLAccess::calledTip_stays_atOtherKeys()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.waitForKeys();
    QVERIFY(PointerDriver::moveTo(AccessStage::globalRect(stage.pad).center()));
    QVERIFY(PointerDriver::turnWheel());
    stage.waitForKeys();
    QCOMPARE(stage.shownKey(), u"pad"_s);
}

void TestVLAccess::calledTip_goes_atSequence()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    QVERIFY(press("shift+F1"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    stage.waitForKeys();
    QCOMPARE(stage.pad->keys, QStringList({u"+A"_s, u"-A"_s}));
}

void TestVLAccess::calledTip_goes_withFocus()
{
    Stage stage;
    stage.call(stage.open, u"open"_s);
    QVERIFY(press("Tab"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QVERIFY(QApplication::focusWidget() != stage.open);
}

void TestVLAccess::calledTip_goes_withCurrentCell()
{
    Stage stage;
    stage.table->setCurrentCell(0, 1);
    stage.call(stage.table, u"cell"_s);
    QVERIFY(press("Down"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QCOMPARE(stage.table->currentRow(), 1);
}

void TestVLAccess::calledTip_goes_withMenuItem()
{
    Stage stage;
    stage.file->popup(stage.window.mapToGlobal(QPoint(300, 200)));
    QVERIFY(QTest::qWaitForWindowExposed(stage.file));
    stage.file->setActiveAction(stage.item);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"item"_s, kPatienceMs);
    QVERIFY(press("Down"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QVERIFY(stage.file->isVisible());
    QVERIFY(stage.file->activeAction() != stage.item);
    stage.file->close();
}

void TestVLAccess::calledTip_goes_atClickOutside()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    // One that its scene keeps goes as well.
    stage.tip()->view()->setStayOpen(true);
    QVERIFY(PointerDriver::moveTo(AccessStage::globalRect(&stage.window).center()));
    QVERIFY(PointerDriver::click());
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
}

void TestVLAccess::calledTip_stays_atClickOnIt()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    QTRY_VERIFY_WITH_TIMEOUT(stage.tipRect().size().width() > 100, kPatienceMs);
    QVERIFY(PointerDriver::moveTo(stage.tipRect().center()));
    QVERIFY(PointerDriver::click());
    QVERIFY(PointerDriver::moveTo(kDesktop));
    // Wherever the click has taken the activation, Esc is for the tip.
    QTest::qWait(500);
    QCOMPARE(stage.shownKey(), u"pad"_s);
    stage.enter();
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), stage.pad, kPatienceMs);
}

void TestVLAccess::hoveredTip_staysAtSequence_untilEsc()
{
    Stage stage;
    stage.interface->context().set(ckStayDuration, 1);
    stage.restOn(stage.open, u"open"_s);
    QVERIFY(press("shift+F1"));
    QTRY_VERIFY_WITH_TIMEOUT(VLHostHooks::isHeld(stage.interface->manager()), kPatienceMs);
    QVERIFY(PointerDriver::moveTo(kDesktop));
    stage.waitForKeys();
    QTest::qWait(500);
    QCOMPARE(stage.shownKey(), u"open"_s);
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QCOMPARE(stage.shortcuts, 0);
}

void TestVLAccess::esc_closesTip_andIsNotHandedOn_data()
{
    QTest::addColumn<bool>("isHovered");
    QTest::addColumn<bool>("isSteady");
    QTest::newRow("hovered") << true << true;
    QTest::newRow("called") << false << true;
    QTest::newRow("hovered, hovering not steadily") << true << false;
    QTest::newRow("called, hovering not steadily") << false << false;
}

void TestVLAccess::esc_closesTip_andIsNotHandedOn()
{
    QFETCH(const bool, isHovered);
    QFETCH(const bool, isSteady);
    Stage stage;
    stage.interface->context().set(ckSteadyHover, isSteady);
    if (isHovered)
        stage.restOn(stage.open, u"open"_s);
    else
        stage.call(stage.pad, u"pad"_s);
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    stage.waitForKeys();
    QCOMPARE(stage.pad->keys, QStringList({u"+A"_s, u"-A"_s}));
    QCOMPARE(stage.shortcuts, 0);
}

void TestVLAccess::esc_isHandedOn_withoutTip()
{
    Stage stage;
    QVERIFY(press("Escape"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shortcuts, 1, kPatienceMs);
}

void TestVLAccess::esc_leavesDialogAndMenu()
{
    Stage stage;
    QDialog dialog(&stage.window);
    dialog.setObjectName(u"dialog"_s);
    dialog.setModal(true);
    dialog.resize(200, 100);
    dialog.show();
    QTRY_VERIFY_WITH_TIMEOUT(hasKeyboardOfX(&dialog), kPatienceMs);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"dialog"_s, kPatienceMs);
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QVERIFY(dialog.isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(hasKeyboardOfX(&dialog), kPatienceMs);
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!dialog.isVisible(), kPatienceMs);

    stage.file->popup(stage.window.mapToGlobal(QPoint(300, 200)));
    QVERIFY(QTest::qWaitForWindowExposed(stage.file));
    stage.file->setActiveAction(stage.item);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"item"_s, kPatienceMs);
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QVERIFY(stage.file->isVisible());
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.file->isVisible(), kPatienceMs);
}

void TestVLAccess::esc_held_closesNothingElse()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    const auto send = [&stage](QEvent::Type eventType, bool isRepeat) {
        QKeyEvent event(eventType, Qt::Key_Escape, Qt::NoModifier, QString(), isRepeat);
        QCoreApplication::sendEvent(stage.pad, &event);
    };
    stage.pad->keys.clear();
    send(QEvent::KeyPress, false);
    QVERIFY(!stage.isUp());
    send(QEvent::KeyRelease, true);
    send(QEvent::KeyPress, true);
    send(QEvent::KeyRelease, false);
    QCOMPARE(stage.pad->keys, QStringList());
    QCOMPARE(stage.shortcuts, 0);
    // The next one is the host's.
    send(QEvent::KeyPress, false);
    send(QEvent::KeyRelease, false);
    QCOMPARE(stage.pad->keys, QStringList{u"-Esc"_s});
    QCOMPARE(stage.shortcuts, 1);
}

void TestVLAccess::modifiers_hideNothing()
{
    Stage stage;
    stage.restOn(stage.open, u"open"_s);
    for (const char* key : {"shift", "ctrl", "alt", "super"}) {
        QVERIFY(press(key));
        QCoreApplication::processEvents();
    }
    QTest::qWait(300);
    QCOMPARE(stage.shownKey(), u"open"_s);
}

void TestVLAccess::f6_leadsIntoTip_andEscBack()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.pad->focus.clear();
    stage.enter();
    QCOMPARE(stage.pad->focus, QStringList{u"out"_s});
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), stage.pad, kPatienceMs);
    QCOMPARE(stage.pad->focus, QStringList({u"out"_s, u"in"_s}));
    QCOMPARE(stage.focusInTip(), QString());
    stage.waitForKeys();
    QCOMPARE(stage.pad->keys, QStringList({u"+A"_s, u"-A"_s}));
    QCOMPARE(stage.shortcuts, 0);
}

void TestVLAccess::f6_leadsIntoHoveredTip_whichStays()
{
    Stage stage;
    stage.interface->context().set(ckStayDuration, 1);
    stage.restOn(stage.open, u"open"_s);
    stage.enter();
    QVERIFY(PointerDriver::moveTo(kDesktop));
    QTest::qWait(500);
    QCOMPARE(stage.shownKey(), u"open"_s);
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), stage.pad, kPatienceMs);
}

void TestVLAccess::f6_showsWhichItemHasFocus()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    const QRgb ring = QGuiApplication::palette().color(QPalette::Highlight).rgb();
    // Along the line around the item, and along that around the next one.
    const auto isRinged = [&stage, ring](int item) {
        const QImage picture = stage.tip()->view()->grabWindow();
        return picture.pixel(50, item * 25 + 26) == ring
            && picture.pixel(101, item * 25 + 12) == ring;
    };
    QVERIFY(!isRinged(0));
    stage.enter();
    QTRY_VERIFY_WITH_TIMEOUT(isRinged(0), kPatienceMs);
    QVERIFY(press("Tab"));
    QTRY_VERIFY_WITH_TIMEOUT(isRinged(1), kPatienceMs);
    QVERIFY(!isRinged(0));
    QVERIFY(press("F6"));
    QTRY_VERIFY_WITH_TIMEOUT(!isRinged(1), kPatienceMs);
}

void TestVLAccess::f6_leadsOut_leavingTip()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    QVERIFY(press("F6"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.focusInTip(), QString(), kPatienceMs);
    stage.waitForKeys();
    QCOMPARE(stage.pad->keys, QStringList({u"+A"_s, u"-A"_s}));
    QCOMPARE(stage.shownKey(), u"pad"_s);
}

void TestVLAccess::f6_isHandedOn_withoutTip()
{
    Stage stage;
    QVERIFY(press("F6"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shortcuts, 1, kPatienceMs);
}

void TestVLAccess::tab_walksTip_bothWays()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    for (const char* name : {"button", "player", "link", "button"}) {
        QVERIFY(press("Tab"));
        QTRY_COMPARE_WITH_TIMEOUT(stage.focusInTip(), QString::fromLatin1(name), kPatienceMs);
    }
    for (const char* name : {"link", "player", "button"}) {
        QVERIFY(press("shift+Tab"));
        QTRY_COMPARE_WITH_TIMEOUT(stage.focusInTip(), QString::fromLatin1(name), kPatienceMs);
    }
    QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), stage.pad, kPatienceMs);
    QCOMPARE(stage.shownKey(), u"pad"_s);
}

void TestVLAccess::return_acts()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    QVERIFY(press("Return"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.acted(), u"link"_s, kPatienceMs);
    QVERIFY(press("Tab"));
    // A button wants a space.
    QVERIFY(press("Return"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.acted(), u"link button"_s, kPatienceMs);
    QVERIFY(press("space"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.acted(), u"link button button"_s, kPatienceMs);
    QVERIFY(press("Tab"));
    QVERIFY(press("Return"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.acted(), u"link button button player"_s, kPatienceMs);
}

void TestVLAccess::keys_reachSceneAlone_inside()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    QVERIFY(press("x"));
    QVERIFY(press("ctrl+z"));
    QVERIFY(press("Down"));
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    stage.waitForKeys();
    QCOMPARE(stage.pad->keys, QStringList({u"+A"_s, u"-A"_s}));
}

void TestVLAccess::focus_movesBehindTip_withoutHidingIt()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    stage.open->setFocus();
    QVERIFY(press("Tab"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.focusInTip(), u"button"_s, kPatienceMs);
    QCOMPARE(stage.shownKey(), u"pad"_s);
}

void TestVLAccess::clickOutside_closesTip_fromInside()
{
    Stage stage;
    stage.call(stage.open, u"open"_s);
    stage.enter();
    QVERIFY(PointerDriver::moveTo(AccessStage::globalRect(stage.inner).center()));
    QVERIFY(PointerDriver::click());
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), stage.inner, kPatienceMs);
    QVERIFY(press("h"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.inner->text(), u"h"_s, kPatienceMs);
}

void TestVLAccess::otherWindow_takesFocusFromTip()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    QDialog dialog(&stage.window);
    QLineEdit line(&dialog);
    dialog.resize(200, 100);
    dialog.show();
    QTRY_VERIFY_WITH_TIMEOUT(hasKeyboardOfX(&dialog), kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    line.setFocus();
    QVERIFY(press("h"));
    QTRY_COMPARE_WITH_TIMEOUT(line.text(), u"h"_s, kPatienceMs);
}

void TestVLAccess::otherWindow_takesFocusFromTip_thatWasActive()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    QTRY_VERIFY_WITH_TIMEOUT(stage.tipRect().size().width() > 100, kPatienceMs);
    QVERIFY(PointerDriver::moveTo(stage.tipRect().center()));
    QVERIFY(PointerDriver::click());
    QVERIFY(PointerDriver::moveTo(kDesktop));
    stage.tip()->view()->requestActivate();
    QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::focusWindow(), stage.tip()->view(), kPatienceMs);
    stage.enter();
    QDialog dialog(&stage.window);
    QLineEdit line(&dialog);
    dialog.setModal(true);
    dialog.resize(200, 100);
    dialog.show();
    QTRY_VERIFY_WITH_TIMEOUT(hasKeyboardOfX(&dialog), kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    line.setFocus();
    QVERIFY(press("h"));
    QTRY_COMPARE_WITH_TIMEOUT(line.text(), u"h"_s, kPatienceMs);
}

void TestVLAccess::f6_worksInModalDialog()
{
    Stage stage;
    QDialog dialog(&stage.window);
    dialog.setObjectName(u"dialog"_s);
    dialog.resize(200, 100);
    KeyPad pad(&dialog);
    pad.resize(100, 40);
    // With a loop of its own, as hosts do.
    QTimer::singleShot(0, &dialog, [&] {
        QTRY_VERIFY_WITH_TIMEOUT(hasKeyboardOfX(&dialog), kPatienceMs);
        stage.call(&pad, u"dialog"_s);
        stage.enter();
        QVERIFY(press("Tab"));
        QTRY_COMPARE_WITH_TIMEOUT(stage.focusInTip(), u"button"_s, kPatienceMs);
        QVERIFY(press("Return"));
        QTRY_COMPARE_WITH_TIMEOUT(stage.acted(), u"button"_s, kPatienceMs);
        QVERIFY(press("Escape"));
        QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
        QVERIFY(dialog.isVisible());
        QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), &pad, kPatienceMs);
        QCOMPARE(pad.keys, QStringList());
        dialog.accept();
    });
    QTimer::singleShot(4 * kPatienceMs, &dialog, &QDialog::reject);
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
}

void TestVLAccess::f6_beginsWhereSceneSays()
{
    Stage stage;
    stage.packages.write(u"tips.vidlets/ui/VidletUI.qml"_s, kSceneWithFocus);
    stage.call(stage.pad, u"pad"_s);
    QVERIFY(press("F6"));
    QVERIFY(press("space"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.acted(), u"first"_s, kPatienceMs);
}

void TestVLAccess::sequence_isHandedOn_whenTipsAreOff()
{
    Stage stage;
    stage.interface->context().set(ckDisabled, true);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shortcuts, 1, kPatienceMs);
}

void TestVLAccess::f6_worksWhileMenuIsOpen()
{
    Stage stage;
    QVERIFY(press("alt+f"));
    QTRY_VERIFY_WITH_TIMEOUT(stage.file->isVisible(), kPatienceMs);
    QVERIFY(QTest::qWaitForWindowExposed(stage.file));
    stage.file->setActiveAction(stage.item);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"item"_s, kPatienceMs);
    stage.enter();
    QVERIFY(press("Tab"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.focusInTip(), u"button"_s, kPatienceMs);
    QVERIFY(press("Return"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.acted(), u"button"_s, kPatienceMs);
    QVERIFY(stage.file->isVisible());
    QVERIFY(press("Escape"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    QVERIFY(stage.file->isVisible());
    QCOMPARE(stage.file->activeAction(), stage.item);
    // The menu has the keyboard again.
    QVERIFY(press("Down"));
    QTRY_VERIFY_WITH_TIMEOUT(stage.file->activeAction() != stage.item, kPatienceMs);
    stage.file->close();
}

void TestVLAccess::pinning_fromInside_givesFocusBack()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    QVERIFY(press("shift+Tab"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.focusInTip(), u"player"_s, kPatienceMs);
    stage.pad->focus.clear();
    QVERIFY(press("p"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.interface->pinnedTips().size(), 1, kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(stage.pad->focus.contains(u"in"_s), kPatienceMs);
    stage.window.activateWindow();
    QTRY_VERIFY_WITH_TIMEOUT(hasKeyboardOfX(&stage.window), kPatienceMs);
    stage.waitForKeys();
}

void TestVLAccess::hidingTip_fromInside_givesFocusBack()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    stage.interface->hideTip();
    QCOMPARE(stage.focusInTip(), QString());
    stage.waitForKeys();
    // The next one begins as a hovered one.
    stage.restOn(stage.open, u"open"_s);
    QVERIFY(!VLHostHooks::isHeld(stage.interface->manager()));
}

void TestVLAccess::setEnabled_false_leavesKeysAlone()
{
    Stage stage;
    VLAccess* access = stage.interface->access();
    QVERIFY(access->isEnabled());
    access->setEnabled(false);
    QVERIFY(!access->isEnabled());
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shortcuts, 1, kPatienceMs);
    QVERIFY(!stage.isUp());
    stage.restOn(stage.open, u"open"_s);
    QVERIFY(press("F6"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shortcuts, 2, kPatienceMs);
    QCOMPARE(stage.focusInTip(), QString());
    QVERIFY(press("Escape"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shortcuts, 3, kPatienceMs);
    access->setEnabled(true);
    QVERIFY(press("shift+F1"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.shownKey(), u"pad"_s, kPatienceMs);
}

void TestVLAccess::setEnabled_false_takesCalledTipAway()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    stage.interface->access()->setEnabled(false);
    QTRY_VERIFY_WITH_TIMEOUT(!stage.isUp(), kPatienceMs);
    stage.waitForKeys();
}

void TestVLAccess::interface_mayGo_whileFocusIsInside()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    stage.interface.reset();
    stage.waitForKeys();
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLAccess>(argc, argv);
}

#include "tst_vlaccess.moc"
