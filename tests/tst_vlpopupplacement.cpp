// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include <Vidlets/VLPopupPlacement.h>

#include <QRect>

using namespace Vidlets;

namespace {

// A screen to the right of another, with a panel along its top.
const QRect kArea(1000, 30, 800, 570);
const QSize kScene(120, 80);
constexpr int kTitle = -20;

} // namespace

class TestVLPopupPlacement : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void fitInto_movesIntoArea_data();
    void fitInto_movesIntoArea();
    void place_fitsSceneAndAddsAPixel_data();
    void place_fitsSceneAndAddsAPixel();
    void besidePointer_leavesControlFree_data();
    void besidePointer_leavesControlFree();
    void place_keepsOffWhereverFrameIs();
    void place_goesAroundMiddle_data();
    void place_goesAroundMiddle();
};

void TestVLPopupPlacement::fitInto_movesIntoArea_data()
{
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<QRect>("expected");
    QTest::addColumn<bool>("moved");

    const auto row = [](const char* name, const QRect& geometry, const QRect& expected) {
        QTest::newRow(name) << geometry << expected << (geometry != expected);
    };
    row("inside", {1100, 100, 200, 100}, {1100, 100, 200, 100});
    row("as large as the area", kArea, kArea);
    row("flush with top and left", {1000, 30, 200, 100}, {1000, 30, 200, 100});
    row("flush with bottom and right", {1600, 500, 200, 100}, {1600, 500, 200, 100});
    row("above", {1100, 29, 200, 100}, {1100, 30, 200, 100});
    row("to the left", {999, 100, 200, 100}, {1000, 100, 200, 100});
    row("below", {1100, 501, 200, 100}, {1100, 500, 200, 100});
    row("to the right", {1601, 100, 200, 100}, {1600, 100, 200, 100});
    row("beyond the top left corner", {0, 0, 200, 100}, {1000, 30, 200, 100});
    row("beyond the bottom right corner", {1900, 900, 200, 100}, {1600, 500, 200, 100});
    row("too wide", {1100, 100, 900, 100}, {900, 100, 900, 100});
    row("too wide, from the left", {500, 100, 900, 100}, {900, 100, 900, 100});
    row("too high", {1100, 100, 200, 600}, {1100, 0, 200, 600});
    row("too large", {1000, 30, 900, 600}, {900, 0, 900, 600});
    row("empty, inside", {1100, 100, 0, 0}, {1100, 100, 0, 0});
    // There and back again: it comes out where it was, and was moved all the same.
    QTest::newRow("too high, flush with the bottom already")
        << QRect(1100, 0, 200, 600) << QRect(1100, 0, 200, 600) << true;
}

void TestVLPopupPlacement::fitInto_movesIntoArea()
{
    QFETCH(const QRect, geometry);
    QFETCH(const QRect, expected);
    QFETCH(const bool, moved);

    const PopupPlacement::Fit fit = PopupPlacement::fitInto(kArea, geometry);

    QCOMPARE(fit.geometry, expected);
    QCOMPARE(fit.moved, moved);
}

void TestVLPopupPlacement::place_fitsSceneAndAddsAPixel_data()
{
    QTest::addColumn<QSize>("scene");
    QTest::addColumn<QPoint>("frame");
    QTest::addColumn<int>("titleOffset");
    QTest::addColumn<QRect>("window");
    QTest::addColumn<bool>("moved");

    QTest::newRow("inside") << kScene << QPoint(1100, 100) << 0 << QRect(1100, 100, 121, 81)
                            << false;
    // The extra pixel is not part of what is fitted.
    QTest::newRow("flush with bottom and right")
        << kScene << QPoint(1680, 520) << 0 << QRect(1680, 520, 121, 81) << false;
    QTest::newRow("over bottom and right")
        << kScene << QPoint(1681, 521) << 0 << QRect(1680, 520, 121, 81) << true;
    QTest::newRow("over top and left")
        << kScene << QPoint(990, 10) << 0 << QRect(1000, 30, 121, 81) << true;
    QTest::newRow("too large") << QSize(900, 600) << QPoint(1100, 100) << 0
                               << QRect(900, 0, 901, 601) << true;
    QTest::newRow("empty") << QSize(0, 0) << QPoint(1100, 100) << 0 << QRect(1100, 100, 1, 1)
                           << false;
    QTest::newRow("with a title") << kScene << QPoint(1100, 100) << kTitle
                                  << QRect(1100, 80, 121, 101) << false;
    QTest::newRow("with a title, over the top")
        << kScene << QPoint(1100, 10) << kTitle << QRect(1100, 10, 121, 101) << true;
    QTest::newRow("with a title, over the bottom")
        << kScene << QPoint(1100, 590) << kTitle << QRect(1100, 500, 121, 101) << true;
}

void TestVLPopupPlacement::place_fitsSceneAndAddsAPixel()
{
    QFETCH(const QSize, scene);
    QFETCH(const QPoint, frame);
    QFETCH(const int, titleOffset);
    QFETCH(const QRect, window);
    QFETCH(const bool, moved);

    const PopupPlacement::Placement placement =
        PopupPlacement::place({scene, frame, titleOffset, kArea});

    QCOMPARE(QRect(placement.position, placement.size), window);
    QCOMPARE(placement.moved, moved);
}

void TestVLPopupPlacement::besidePointer_leavesControlFree_data()
{
    QTest::addColumn<QRect>("control");
    QTest::addColumn<QPoint>("pointer");
    QTest::addColumn<bool>("rightToLeft");
    QTest::addColumn<QPoint>("expected");

    const auto row = [](const char* name, const QRect& control, const QPoint& pointer,
                        const QPoint& expected, bool rightToLeft = false) {
        QTest::newRow(name) << control << pointer << rightToLeft << expected;
    };
    // The area is 1000..1799 by 30..599, the tip 120 by 80, 35 and 30 away from the pointer.
    row("below and beside", {1100, 100, 60, 20}, {1130, 110}, {1165, 140});
    row("below and beside, right to left", {1300, 100, 60, 20}, {1330, 110}, {1176, 140}, true);
    row("beside a narrow control", {1100, 100, 40, 300}, {1120, 120}, {1155, 150});
    row("below a high control", {1100, 100, 200, 100}, {1120, 110}, {1155, 200});
    row("below, moved in from the right", {1700, 100, 90, 20}, {1780, 110}, {1680, 140});
    row("below, moved in from the left", {1010, 100, 90, 20}, {1020, 110}, {1000, 140}, true);
    row("above", {1100, 550, 200, 40}, {1120, 570}, {1155, 461});
    row("above, moved in from the left", {1000, 550, 200, 40}, {1020, 570}, {1000, 461}, true);
    row("above, with just the room", {1100, 110, 200, 480}, {1120, 120}, {1155, 30});
    row("at the right", {1000, 40, 600, 550}, {1100, 300}, {1600, 330});
    row("at the right, near its edge", {1000, 40, 600, 550}, {1590, 580}, {1625, 520});
    row("at the left, right to left", {1200, 40, 400, 550}, {1500, 300}, {1080, 330}, true);
    row("at the left, where the right has no room", {1200, 40, 590, 550}, {1300, 300}, {1080, 330});
    row("no side has room", {1000, 30, 800, 570}, {1200, 200}, {1235, 230});
    row("no side has room, off the pointer", {1000, 30, 800, 570}, {1790, 590}, {1680, 481});
    row("no control", {}, {1200, 200}, {1235, 230});
    row("no control, in the corner", {}, {1790, 590}, {1680, 481});
}

void TestVLPopupPlacement::besidePointer_leavesControlFree()
{
    QFETCH(const QRect, control);
    QFETCH(const QPoint, pointer);
    QFETCH(const bool, rightToLeft);
    QFETCH(const QPoint, expected);
    const QSize offset(35, 30);

    const QPoint position =
        PopupPlacement::besidePointer(kArea, kScene, {control, pointer, offset, rightToLeft});

    QCOMPARE(position, expected);
    QVERIFY(!QRect(position, kScene).contains(pointer));
}

void TestVLPopupPlacement::place_keepsOffWhereverFrameIs()
{
    const PopupPlacement::KeepOff keepOff{{1100, 100, 200, 100}, {1120, 110}, {35, 30}, false};
    PopupPlacement::Request request{kScene, QPoint(1155, 140), 0, kArea, keepOff};
    PopupPlacement::Placement placement = PopupPlacement::place(request);
    QCOMPARE(QRect(placement.position, placement.size), QRect(1155, 200, 121, 81));
    QVERIFY(placement.moved);

    request.framePosition = placement.position;
    placement = PopupPlacement::place(request);
    QCOMPARE(placement.position, request.framePosition);
    QVERIFY(!placement.moved);

    // Grown beyond the bottom: above is no room, so to the right.
    request.sceneSize = QSize(150, 450);
    placement = PopupPlacement::place(request);
    QCOMPARE(placement.position, QPoint(1300, 140));
    QVERIFY(placement.moved);
}

void TestVLPopupPlacement::place_goesAroundMiddle_data()
{
    QTest::addColumn<QPoint>("middle");
    QTest::addColumn<QPoint>("expected");

    QTest::newRow("with room") << QPoint(1400, 300) << QPoint(1340, 260);
    QTest::newRow("near the top left corner") << QPoint(1010, 40) << kArea.topLeft();
    QTest::newRow("near the bottom right corner") << QPoint(1790, 590) << QPoint(1679, 519);
}

void TestVLPopupPlacement::place_goesAroundMiddle()
{
    QFETCH(const QPoint, middle);
    QFETCH(const QPoint, expected);
    PopupPlacement::KeepOff keepOff;
    keepOff.control = QRect(middle, QSize(1, 1));
    keepOff.pointer = middle;

    const PopupPlacement::Placement placement =
        PopupPlacement::place({kScene, {1100, 100}, 0, kArea, keepOff, middle});

    QCOMPARE(placement.position, expected);
    QCOMPARE(placement.size, kScene + QSize(1, 1));
    QVERIFY(placement.moved);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLPopupPlacement>(argc, argv);
}

#include "tst_vlpopupplacement.moc"
