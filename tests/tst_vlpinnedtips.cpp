// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HostStage.h"
#include "PopupStage.h"
#include "VidletsTest.h"
#include <Vidlets/VLManager.h>

#include <QDialog>
#include <QDockWidget>
#include <QMenu>
#include <QPointer>
#include <QPropertyAnimation>
#include <QQuickItem>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 15000;

QDockWidget* dockOf(const VLWidget* tip)
{
    for (QWidget* widget = tip->parentWidget(); widget; widget = widget->parentWidget()) {
        if (auto* dock = qobject_cast<QDockWidget*>(widget))
            return dock;
    }
    return nullptr;
}

/// Pins tips into a window that belongs to the host.
class OwnWindowInterface : public VLHostInterface
{
public:
    using VLHostInterface::VLHostInterface;

    QWidget* createWindow() override
    {
        return room;
    }

    QWidget* room = nullptr;
};

/// Asks the user whether to close, who says no.
class CloseRefuser : public QObject
{
public:
    bool eventFilter(QObject* /*object*/, QEvent* event) override
    {
        if (event->type() != QEvent::Close)
            return false;
        event->ignore();
        return true;
    }
};

} // namespace

class TestVLPinnedTips : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void window_isToolWindowOfControl_withTitleOfTip();
    void window_thatCloses_isDeletedAndTakenOffTheList();
    void window_goesWithWindowOfControl();

    void dock_takesTip_inItsArea_data();
    void dock_takesTip_inItsArea();
    void dock_leavesMainWindowWhereItIs();
    void dock_hasRoomForTip();
    void dock_followsScene_withoutTheWindow();
    void dock_thatCloses_isDeletedAndTakenOffTheList();
    void dock_joinsTheOneBefore();
    void dock_letsMainWindowSaveItsState();
    void dock_isNone_inDialog();
    void dock_isThatOfMainWindow_fromMenu();

    void tip_thatFadesAway_isPinnedWhole();
    void tips_areListed_oldestFirst();
    void closePinnedTips_closesAll_data();
    void closePinnedTips_closesAll();
    void closePinnedTips_closesWindowOfHost();
    void pinnedTips_keepsOne_thatRefusedToClose();
    void hideTip_leavesPinnedOnes();
    void interface_takesPinnedTipsAlong_data();
    void interface_takesPinnedTipsAlong();
};

void TestVLPinnedTips::window_isToolWindowOfControl_withTitleOfTip()
{
    HostStage stage;
    const VLWidget* tip = stage.pin();
    QVERIFY(tip->isWindow());
    QCOMPARE(tip->windowType(), Qt::Tool);
    QCOMPARE(tip->parentWidget(), stage.window.get());
    QCOMPARE(tip->windowTitle(), u"Open"_s);
    QCOMPARE(stage.interface->pinnedArea(), Qt::NoDockWidgetArea);
}

void TestVLPinnedTips::window_thatCloses_isDeletedAndTakenOffTheList()
{
    HostStage stage;
    const QPointer<VLWidget> tip = stage.pin();
    QCOMPARE(stage.interface->pinnedTips(), QList<VLWidget*>{tip});
    tip->close();
    QCOMPARE(stage.interface->pinnedTips(), QList<VLWidget*>{});
    QTRY_VERIFY(!tip);
}

void TestVLPinnedTips::window_goesWithWindowOfControl()
{
    HostStage stage;
    const QPointer<VLWidget> tip = stage.pin();
    stage.window.reset();
    QVERIFY(!tip);
    QCOMPARE(stage.interface->pinnedTips(), QList<VLWidget*>{});
}

void TestVLPinnedTips::dock_takesTip_inItsArea_data()
{
    QTest::addColumn<Qt::DockWidgetArea>("area");
    QTest::newRow("left") << Qt::LeftDockWidgetArea;
    QTest::newRow("right") << Qt::RightDockWidgetArea;
    QTest::newRow("bottom") << Qt::BottomDockWidgetArea;
}

void TestVLPinnedTips::dock_takesTip_inItsArea()
{
    QFETCH(const Qt::DockWidgetArea, area);
    HostStage stage;
    stage.interface->setPinnedArea(area);
    const VLWidget* tip = stage.pin();
    QDockWidget* dock = dockOf(tip);
    QVERIFY(dock);
    QTRY_VERIFY_WITH_TIMEOUT(dock->isVisible(), kPatienceMs);
    QVERIFY(!dock->isFloating());
    QCOMPARE(stage.window->dockWidgetArea(dock), area);
    QCOMPARE(dock->windowTitle(), u"Open"_s);
    QCOMPARE(stage.interface->pinnedTips(), QList<VLWidget*>{const_cast<VLWidget*>(tip)});
}

void TestVLPinnedTips::dock_leavesMainWindowWhereItIs()
{
    HostStage stage;
    QTRY_VERIFY_WITH_TIMEOUT(stage.window->pos() != stage.window->geometry().topLeft(),
                             kPatienceMs);
    const QPoint before = stage.window->pos();
    stage.interface->setPinnedArea(Qt::RightDockWidgetArea);
    const VLWidget* tip = stage.pin();
    QTRY_VERIFY_WITH_TIMEOUT(tip->isVisible(), kPatienceMs);
    QCOMPARE(stage.window->pos(), before);
    QVERIFY(stage.window->minimumSize() != stage.window->maximumSize());
}

void TestVLPinnedTips::dock_hasRoomForTip()
{
    HostStage stage;
    stage.interface->setPinnedArea(Qt::RightDockWidgetArea);
    const VLWidget* tip = stage.pin();
    QTRY_VERIFY_WITH_TIMEOUT(tip->isVisible(), kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(tip->visibleRegion().boundingRect(), tip->rect(), kPatienceMs);
    QCOMPARE(tip->size(), QSize(120, 60));
}

void TestVLPinnedTips::dock_followsScene_withoutTheWindow()
{
    HostStage stage;
    stage.interface->setPinnedArea(Qt::RightDockWidgetArea);
    VLWidget* tip = stage.pin();
    QTRY_VERIFY_WITH_TIMEOUT(tip->isVisible(), kPatienceMs);
    const QSize before = stage.window->size();
    tip->view()->rootObject()->setSize(QSize(140, 100));
    QTRY_COMPARE_WITH_TIMEOUT(tip->size(), QSize(140, 100), kPatienceMs);
    QCOMPARE(stage.window->size(), before);
}

void TestVLPinnedTips::dock_thatCloses_isDeletedAndTakenOffTheList()
{
    HostStage stage;
    stage.interface->setPinnedArea(Qt::RightDockWidgetArea);
    const QPointer<VLWidget> tip = stage.pin();
    const QPointer<QDockWidget> dock = dockOf(tip);
    QTRY_VERIFY_WITH_TIMEOUT(dock->isVisible(), kPatienceMs);
    dock->close();
    QCOMPARE(stage.interface->pinnedTips(), QList<VLWidget*>{});
    QTRY_VERIFY(!dock);
    QVERIFY(!tip);
}

void TestVLPinnedTips::dock_joinsTheOneBefore()
{
    HostStage stage;
    stage.interface->setPinnedArea(Qt::RightDockWidgetArea);
    QDockWidget* first = dockOf(stage.pin(u"open"_s));
    QTRY_VERIFY_WITH_TIMEOUT(first->isVisible(), kPatienceMs);
    QDockWidget* second = dockOf(stage.pin(u"save"_s));
    QTRY_VERIFY_WITH_TIMEOUT(second->isVisible(), kPatienceMs);
    QCOMPARE(stage.window->tabifiedDockWidgets(first), QList<QDockWidget*>{second});
    QCOMPARE(stage.interface->pinnedTips().size(), 2);
}

void TestVLPinnedTips::dock_letsMainWindowSaveItsState()
{
    HostStage stage;
    stage.interface->setPinnedArea(Qt::RightDockWidgetArea);
    const VLWidget* tip = stage.pin();
    QTRY_VERIFY_WITH_TIMEOUT(tip->isVisible(), kPatienceMs);
    // A dock without a name would warn.
    QVERIFY(!stage.window->saveState().isEmpty());
    QCOMPARE(stage.interface->keyAt(dockOf(tip), QPoint(), nullptr), QString());
}

void TestVLPinnedTips::dock_isNone_inDialog()
{
    HostStage stage;
    stage.interface->setPinnedArea(Qt::RightDockWidgetArea);
    QDialog dialog(stage.window.get());
    QPushButton button(&dialog);
    dialog.resize(200, 100);
    QVERIFY(bringUp(&dialog));
    const VLWidget* tip = stage.pin(u"open"_s, &button);
    QVERIFY(tip->isWindow());
    QCOMPARE(tip->parentWidget(), &dialog);
}

void TestVLPinnedTips::dock_isThatOfMainWindow_fromMenu()
{
    HostStage stage;
    stage.interface->setPinnedArea(Qt::RightDockWidgetArea);
    QMenu menu(stage.window.get());
    menu.addAction(u"Open"_s);
    menu.popup(QPoint(300, 300));
    const VLWidget* tip = stage.pin(u"open"_s, &menu);
    menu.close();
    QVERIFY(dockOf(tip));
    QTRY_COMPARE_WITH_TIMEOUT(tip->window(), stage.window.get(), kPatienceMs);
}

void TestVLPinnedTips::tip_thatFadesAway_isPinnedWhole()
{
    HostStage stage;
    stage.interface->context().set(ckHideDuration, 600000);
    VLWidget* tip = stage.showTip();
    tip->hideAnimated();
    tip->findChild<QPropertyAnimation*>()->setCurrentTime(300000);
    QVERIFY(tip->windowOpacity() < 0.9);
    tip->view()->setReserved(true);
    QCOMPARE(tip->windowOpacity(), 1.0);
    QVERIFY(tip->isVisible());
}

void TestVLPinnedTips::tips_areListed_oldestFirst()
{
    HostStage stage;
    VLWidget* first = stage.pin(u"save"_s);
    VLWidget* second = stage.pin(u"open"_s);
    const QList<VLWidget*> expected{first, second};
    QCOMPARE(stage.interface->pinnedTips(), expected);
}

void TestVLPinnedTips::closePinnedTips_closesAll_data()
{
    QTest::addColumn<Qt::DockWidgetArea>("area");
    QTest::newRow("windows") << Qt::NoDockWidgetArea;
    QTest::newRow("docks") << Qt::RightDockWidgetArea;
}

void TestVLPinnedTips::closePinnedTips_closesAll()
{
    QFETCH(const Qt::DockWidgetArea, area);
    HostStage stage;
    stage.interface->setPinnedArea(area);
    const QPointer<VLWidget> first = stage.pin(u"save"_s);
    const QPointer<VLWidget> second = stage.pin(u"open"_s);
    // The second dock is not even on the screen yet.
    stage.interface->closePinnedTips();
    QCOMPARE(stage.interface->pinnedTips(), QList<VLWidget*>{});
    QTRY_VERIFY(!first && !second);
    QTRY_VERIFY(stage.window->findChildren<QDockWidget*>().isEmpty());
}

void TestVLPinnedTips::pinnedTips_keepsOne_thatRefusedToClose()
{
    HostStage stage;
    stage.interface->setPinnedArea(Qt::RightDockWidgetArea);
    VLWidget* tip = stage.pin();
    auto* dock = stage.window->findChild<QDockWidget*>();
    QVERIFY(dock);
    QTRY_VERIFY(!dock->isFloating());
    CloseRefuser refuser;
    dock->installEventFilter(&refuser);
    QVERIFY(!dock->close());
    dock->removeEventFilter(&refuser);

    stage.window->hide();
    QCOMPARE(stage.interface->pinnedTips(), QList<VLWidget*>{tip});
    stage.window->show();
    QCOMPARE(stage.interface->pinnedTips(), QList<VLWidget*>{tip});
}

void TestVLPinnedTips::closePinnedTips_closesWindowOfHost()
{
    HostStage stage;
    OwnWindowInterface interface(stage.context, {stage.packages.dataPath()});
    QWidget room;
    interface.room = &room;
    QVERIFY(interface.show(u"open"_s, QPoint(400, 300), stage.open));
    const QPointer<VLWidget> tip = interface.manager()->widget();
    QVERIFY(QTest::qWaitForWindowExposed(tip));
    tip->view()->setReserved(true);
    QVERIFY(QTest::qWaitForWindowExposed(&room));
    QCOMPARE(interface.pinnedTips(), QList<VLWidget*>{tip});
    interface.closePinnedTips();
    QVERIFY(!room.isVisible());
    QVERIFY(tip);
}

void TestVLPinnedTips::hideTip_leavesPinnedOnes()
{
    HostStage stage;
    const VLWidget* pinned = stage.pin(u"save"_s);
    stage.interface->context().set(ckHideDuration, 600000);
    const VLWidget* tip = stage.showTip(u"open"_s);
    stage.interface->hideTip();
    QVERIFY(!tip->isVisible());
    QVERIFY(pinned->isVisible());
}

void TestVLPinnedTips::interface_takesPinnedTipsAlong_data()
{
    closePinnedTips_closesAll_data();
}

void TestVLPinnedTips::interface_takesPinnedTipsAlong()
{
    QFETCH(const Qt::DockWidgetArea, area);
    HostStage stage;
    stage.interface->setPinnedArea(area);
    const QPointer<VLWidget> tip = stage.pin();
    QTRY_VERIFY_WITH_TIMEOUT(tip->isVisible(), kPatienceMs);
    stage.interface.reset();
    QTRY_VERIFY(!tip);
    QVERIFY(stage.window->findChildren<QDockWidget*>().isEmpty());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLPinnedTips>(argc, argv);
}

#include "tst_vlpinnedtips.moc"
