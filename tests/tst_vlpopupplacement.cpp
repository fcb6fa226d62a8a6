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

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLPopupPlacement>(argc, argv);
}

#include "tst_vlpopupplacement.moc"
