// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PopupStage.h"
#include "VidletsTest.h"
#include "XServer.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 15000;

/// A stage whose tips keep off a control of @p geometry, with the tip that was asked for at @p
/// pointer.
class Stage : public PopupStage
{
public:
    Stage(const QRect& geometry, const QPoint& pointer,
          Qt::LayoutDirection direction = Qt::LeftToRight)
        : PopupStage({{ckKeepOffReference, true}, {ckStayDuration, 0}})
    {
        control.setGeometry(geometry);
        control.setLayoutDirection(direction);
        const auto isInPlace = [this, &geometry] { return control.geometry() == geometry; };
        if (!QTest::qWaitFor(isInPlace, kPatienceMs))
            qFatal("The control did not come to its place");
        if (!manager->show(u"open"_s, pointer, &control))
            qFatal("The tip did not come up");
    }

    QRect tip()
    {
        return {positionOnScreenOfX(popup()), popup()->size()};
    }
};

} // namespace

class TestKeepOff : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void tip_leavesControlFree_data();
    void tip_leavesControlFree();
    void tip_leavesControlFree_whenSceneGrows();
    void tip_goesToTheLeft_inRightToLeftControl();
    void tip_leavesPointerFree_whereControlFillsScreen();
    void tip_leavesNextControlFree();
    void pinnedTip_staysWhereItIs();
};

void TestKeepOff::tip_leavesControlFree_data()
{
    QTest::addColumn<QRect>("control");
    QTest::addColumn<QPoint>("pointer");
    QTest::addColumn<QRect>("expected");
    const QSize size(121, 81);
    QTest::newRow("below as ever")
        << QRect(100, 100, 150, 60) << QPoint(120, 140) << QRect(QPoint(155, 170), size);
    QTest::newRow("below a high one")
        << QRect(100, 100, 400, 300) << QPoint(120, 140) << QRect(QPoint(155, 400), size);
    QTest::newRow("above") << QRect(100, 600, 400, 190) << QPoint(120, 640)
                           << QRect(QPoint(155, 519), size);
    QTest::newRow("at the side") << QRect(100, 20, 400, 770) << QPoint(120, 640)
                                 << QRect(QPoint(500, 670), size);
}

void TestKeepOff::tip_leavesControlFree()
{
    QFETCH(const QRect, control);
    QFETCH(const QPoint, pointer);
    QFETCH(const QRect, expected);
    Stage stage(control, pointer);
    QTRY_COMPARE_WITH_TIMEOUT(stage.tip(), expected, kPatienceMs);
    QVERIFY(!stage.tip().intersects(control));
}

void TestKeepOff::tip_leavesControlFree_whenSceneGrows()
{
    const QRect control(100, 300, 400, 60);
    Stage stage(control, QPoint(120, 320));
    QTRY_COMPARE_WITH_TIMEOUT(stage.tip(), QRect(155, 360, 121, 81), kPatienceMs);
    stage.view()->rootObject()->setHeight(500);
    // Below and above have no room for it any more.
    QTRY_COMPARE_WITH_TIMEOUT(stage.tip().size(), QSize(121, 501), kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(!stage.tip().intersects(control), kPatienceMs);
    QVERIFY(QGuiApplication::primaryScreen()->availableGeometry().contains(stage.tip()));
    stage.view()->rootObject()->setHeight(80);
    QTRY_COMPARE_WITH_TIMEOUT(stage.tip(), QRect(155, 360, 121, 81), kPatienceMs);
}

void TestKeepOff::tip_goesToTheLeft_inRightToLeftControl()
{
    Stage stage(QRect(400, 100, 150, 60), QPoint(500, 140), Qt::RightToLeft);
    QTRY_COMPARE_WITH_TIMEOUT(stage.tip(), QRect(500 - 35 - 120, 170, 121, 81), kPatienceMs);
}

void TestKeepOff::tip_leavesPointerFree_whereControlFillsScreen()
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    const QPoint pointer = screen.bottomRight() - QPoint(10, 10);
    Stage stage(screen, pointer);
    QTRY_COMPARE_WITH_TIMEOUT(stage.tip().size(), QSize(121, 81), kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(screen.contains(stage.tip()), kPatienceMs);
    QVERIFY(!stage.tip().contains(pointer));
}

void TestKeepOff::tip_leavesNextControlFree()
{
    Stage stage(QRect(100, 100, 150, 60), QPoint(120, 140));
    QWidget other;
    other.setWindowFlag(Qt::FramelessWindowHint);
    other.setGeometry(600, 100, 400, 300);
    QVERIFY(bringUp(&other));
    QTRY_COMPARE_WITH_TIMEOUT(other.geometry(), QRect(600, 100, 400, 300), kPatienceMs);
    QVERIFY(stage.manager->show(u"save"_s, QPoint(620, 140), &other));
    QTRY_COMPARE_WITH_TIMEOUT(stage.tip(), QRect(655, 400, 121, 81), kPatienceMs);
}

void TestKeepOff::pinnedTip_staysWhereItIs()
{
    Stage stage(QRect(100, 100, 150, 60), QPoint(120, 140));
    const std::unique_ptr<VLWidget> pinned(stage.popup());
    QVERIFY(QTest::qWaitForWindowExposed(pinned.get()));
    pinned->view()->setReserved(true);
    QVERIFY(QTest::qWaitForWindowExposed(pinned.get()));
    const auto isSettled = [&pinned] {
        return pinned->frameGeometry() != pinned->geometry()
            && positionOnScreenOfX(pinned.get()) == pinned->geometry().topLeft();
    };
    // Before the window manager has answered, a change of size would undo a move.
    QTRY_VERIFY_WITH_TIMEOUT(isSettled(), kPatienceMs);
    pinned->move(110, 110);
    QTRY_VERIFY_WITH_TIMEOUT(isSettled(), kPatienceMs);
    QCOMPARE(pinned->pos(), QPoint(110, 110));
    pinned->view()->rootObject()->setWidth(200);
    QTRY_VERIFY_WITH_TIMEOUT(pinned->width() >= 200, kPatienceMs);
    QCOMPARE(pinned->pos(), QPoint(110, 110));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestKeepOff>(argc, argv);
}

#include "tst_keepoff.moc"
