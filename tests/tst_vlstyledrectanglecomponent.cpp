// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include <Vidlets/VLStyledRectangleComponent.h>

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QQuickWindow>
#include <QRect>
#include <QSignalSpy>
#include <QToolTip>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// Where the item's own corner is in the pictures, and how large they are, in pixels.
constexpr int kMarginPx = 5;
constexpr int kPictureSizePx = 30;

/// What a picture shows where nothing was painted.
QColor untouched()
{
    return Qt::white;
}

QImage paint(VLStyledRectangleComponent& item, const QPen& pen)
{
    QImage picture(kPictureSizePx, kPictureSizePx, QImage::Format_RGB32);
    picture.fill(untouched());
    QPainter painter(&picture);
    painter.translate(kMarginPx, kMarginPx);
    painter.setPen(pen);
    item.paint(&painter);
    return picture;
}

/// An empty picture with @p filled, in the item's coordinates, in @p color, and in that @p inner.
QImage expected(const QRect& filled, const QColor& color, const QRect& inner = QRect(),
                const QColor& innerColor = QColor())
{
    QImage picture(kPictureSizePx, kPictureSizePx, QImage::Format_RGB32);
    picture.fill(untouched());
    QPainter painter(&picture);
    painter.translate(kMarginPx, kMarginPx);
    painter.fillRect(filled, color);
    painter.fillRect(inner, innerColor);
    return picture;
}

/// Gives the application and its tooltips colours that nothing else has, and takes them back.
class ColouredPalettes
{
public:
    ColouredPalettes()
    {
        QPalette application = m_application;
        setInGroups(application, QPalette::Window, window(), Qt::darkGray);
        setInGroups(application, QPalette::WindowText, windowText(), Qt::lightGray);
        setInGroups(application, QPalette::ToolTipBase, Qt::magenta, Qt::magenta);
        QGuiApplication::setPalette(application);
        QPalette toolTip = m_toolTip;
        setInGroups(toolTip, QPalette::ToolTipBase, toolTipBase(), toolTipBase());
        QToolTip::setPalette(toolTip);
    }
    ~ColouredPalettes()
    {
        QToolTip::setPalette(m_toolTip);
        QGuiApplication::setPalette(m_application);
    }
    Q_DISABLE_COPY_MOVE(ColouredPalettes)

    static QColor window()
    {
        return Qt::red;
    }
    static QColor windowText()
    {
        return Qt::green;
    }
    static QColor toolTipBase()
    {
        return Qt::blue;
    }

private:
    static void setInGroups(QPalette& palette, QPalette::ColorRole role, const QColor& active,
                            const QColor& others)
    {
        palette.setColor(QPalette::All, role, others);
        palette.setColor(QPalette::Active, role, active);
    }

    const QPalette m_application = QGuiApplication::palette();
    const QPalette m_toolTip = QToolTip::palette();
};

} // namespace

class TestVLStyledRectangleComponent : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void constructor_setsInitialState();
    void constructor_takesParent();

    void setElement_emitsOnEveryCall_whenNameIsKnown();
    void setElement_changesNothing_whenNameIsUnknown_data();
    void setElement_changesNothing_whenNameIsUnknown();
    void setToolTipStyle_emitsBothSignalsInOrder_onEveryCall();
    void textColor_isBlack_inToolTipStyle();
    void textColor_isActiveTextColorOfApplication_inPlainStyle();
    void setters_doNotRepaint();

    void paint_fillsRectangle_data();
    void paint_fillsRectangle();
    void paint_isSame_forBothElements();
    void paint_leavesPenAlone();
    void paint_usesSolidBrush_inPlainStyle();
    void paint_usesBrushOfCurrentGroup_inToolTipStyle();
};

void TestVLStyledRectangleComponent::constructor_setsInitialState()
{
    VLStyledRectangleComponent item;
    QCOMPARE(item.element(), u"PE_Widget"_s);
    QVERIFY(!item.toolTipStyle());
    QVERIFY(item.flags().testFlag(QQuickItem::ItemHasContents));
    QVERIFY(!item.parentItem());
    QVERIFY(!item.parent());
}

void TestVLStyledRectangleComponent::constructor_takesParent()
{
    VLStyledRectangleComponent parent;
    const VLStyledRectangleComponent child(&parent);
    QCOMPARE(child.parentItem(), &parent);
}

void TestVLStyledRectangleComponent::setElement_emitsOnEveryCall_whenNameIsKnown()
{
    VLStyledRectangleComponent item;
    QStringList seen;
    connect(&item, &VLStyledRectangleComponent::elementChanged, this,
            [&] { seen += item.element(); });

    item.setElement(u"PE_Frame"_s);
    item.setElement(u"PE_Frame"_s);
    item.setElement(u"PE_Widget"_s);
    item.setElement(u"PE_Widget"_s);

    QCOMPARE(seen, (QStringList{u"PE_Frame"_s, u"PE_Frame"_s, u"PE_Widget"_s, u"PE_Widget"_s}));
}

void TestVLStyledRectangleComponent::setElement_changesNothing_whenNameIsUnknown_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << u""_s;
    QTest::newRow("another element") << u"PE_FrameMenu"_s;
    QTest::newRow("lower case") << u"pe_widget"_s;
    QTest::newRow("blank at the end") << u"PE_Widget "_s;
    QTest::newRow("number") << u"41"_s;
}

void TestVLStyledRectangleComponent::setElement_changesNothing_whenNameIsUnknown()
{
    QFETCH(QString, name);
    VLStyledRectangleComponent item;
    item.setElement(u"PE_Frame"_s);
    QSignalSpy spy(&item, &VLStyledRectangleComponent::elementChanged);

    item.setElement(name);

    QCOMPARE(item.element(), u"PE_Frame"_s);
    QCOMPARE(spy.count(), 0);
}

void TestVLStyledRectangleComponent::setToolTipStyle_emitsBothSignalsInOrder_onEveryCall()
{
    VLStyledRectangleComponent item;
    QStringList order;
    connect(&item, &VLStyledRectangleComponent::toolTipStyleChanged, this,
            [&] { order += u"style "_s + (item.toolTipStyle() ? u'1' : u'0'); });
    connect(&item, &VLStyledRectangleComponent::textColorChanged, this,
            [&] { order += u"colour"_s; });

    item.setToolTipStyle(true);
    item.setToolTipStyle(true);
    item.setToolTipStyle(false);

    QCOMPARE(order,
             (QStringList{u"style 1"_s, u"colour"_s, u"style 1"_s, u"colour"_s, u"style 0"_s,
                          u"colour"_s}));
}

void TestVLStyledRectangleComponent::textColor_isBlack_inToolTipStyle()
{
    const ColouredPalettes palettes;
    VLStyledRectangleComponent item;
    item.setToolTipStyle(true);
    QCOMPARE(item.textColor(), QColor(Qt::black));
}

void TestVLStyledRectangleComponent::textColor_isActiveTextColorOfApplication_inPlainStyle()
{
    const ColouredPalettes palettes;
    VLStyledRectangleComponent item;
    QCOMPARE(item.textColor(), ColouredPalettes::windowText());
}

void TestVLStyledRectangleComponent::setters_doNotRepaint()
{
    const ColouredPalettes palettes;
    QQuickWindow window;
    window.resize(kPictureSizePx, kPictureSizePx);
    VLStyledRectangleComponent item;
    item.setParentItem(window.contentItem());
    item.setSize(QSizeF(kPictureSizePx, kPictureSizePx));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QPoint centre(kPictureSizePx / 2, kPictureSizePx / 2);
    QCOMPARE(window.grabWindow().pixelColor(centre), ColouredPalettes::window());

    item.setToolTipStyle(true);
    item.setElement(u"PE_Frame"_s);
    QCOMPARE(window.grabWindow().pixelColor(centre), ColouredPalettes::window());

    item.update();
    QCOMPARE(window.grabWindow().pixelColor(centre), ColouredPalettes::toolTipBase());
}

void TestVLStyledRectangleComponent::paint_fillsRectangle_data()
{
    QTest::addColumn<bool>("toolTipStyle");
    QTest::addColumn<QSizeF>("size");
    QTest::addColumn<QRect>("filled");

    QTest::newRow("tooltip") << true << QSizeF(6, 4) << QRect(0, 0, 6, 4);
    QTest::newRow("tooltip, rounded") << true << QSizeF(6.4, 4.6) << QRect(0, 0, 6, 5);
    QTest::newRow("tooltip, no size") << true << QSizeF(0, 0) << QRect();
    QTest::newRow("plain") << false << QSizeF(6, 4) << QRect(-1, -1, 8, 6);
    QTest::newRow("plain, rounded") << false << QSizeF(6.4, 4.6) << QRect(-1, -1, 8, 7);
    QTest::newRow("plain, no size") << false << QSizeF(0, 0) << QRect(-1, -1, 2, 2);
}

void TestVLStyledRectangleComponent::paint_fillsRectangle()
{
    QFETCH(bool, toolTipStyle);
    QFETCH(QSizeF, size);
    QFETCH(QRect, filled);
    const ColouredPalettes palettes;
    VLStyledRectangleComponent item;
    item.setSize(size);
    item.setToolTipStyle(toolTipStyle);

    const QImage picture = paint(item, Qt::NoPen);

    const QColor color =
        toolTipStyle ? ColouredPalettes::toolTipBase() : ColouredPalettes::window();
    QCOMPARE(picture, expected(filled, color));
}

void TestVLStyledRectangleComponent::paint_isSame_forBothElements()
{
    VLStyledRectangleComponent widget;
    widget.setSize(QSizeF(6, 4));
    VLStyledRectangleComponent frame;
    frame.setSize(QSizeF(6, 4));
    frame.setElement(u"PE_Frame"_s);
    for (const bool toolTipStyle : {false, true}) {
        widget.setToolTipStyle(toolTipStyle);
        frame.setToolTipStyle(toolTipStyle);
        QCOMPARE(paint(widget, QPen(Qt::cyan)), paint(frame, QPen(Qt::cyan)));
    }
}

void TestVLStyledRectangleComponent::paint_leavesPenAlone()
{
    const ColouredPalettes palettes;
    VLStyledRectangleComponent item;
    item.setSize(QSizeF(6, 4));
    item.setToolTipStyle(true);

    // A line of one pixel lies around the filled part, on the far sides outside of the rectangle.
    const QImage picture = paint(item, QPen(Qt::cyan));

    QCOMPARE(
        picture,
        expected(QRect(0, 0, 7, 5), Qt::cyan, QRect(1, 1, 5, 3), ColouredPalettes::toolTipBase()));
}

void TestVLStyledRectangleComponent::paint_usesSolidBrush_inPlainStyle()
{
    const ColouredPalettes palettes;
    QPalette patterned = QGuiApplication::palette();
    patterned.setBrush(QPalette::All, QPalette::Window,
                       QBrush(ColouredPalettes::window(), Qt::Dense4Pattern));
    QGuiApplication::setPalette(patterned);
    VLStyledRectangleComponent item;
    QImage picture(kPictureSizePx, kPictureSizePx, QImage::Format_RGB32);
    QPainter painter(&picture);

    item.paint(&painter);

    QCOMPARE(painter.brush(), QBrush(ColouredPalettes::window(), Qt::SolidPattern));
    QCOMPARE(painter.pen(), QPen());
}

void TestVLStyledRectangleComponent::paint_usesBrushOfCurrentGroup_inToolTipStyle()
{
    const ColouredPalettes palettes;
    const QBrush brush(Qt::darkYellow, Qt::Dense4Pattern);
    QPalette toolTip = QToolTip::palette();
    toolTip.setBrush(QPalette::Disabled, QPalette::ToolTipBase, brush);
    toolTip.setCurrentColorGroup(QPalette::Disabled);
    QToolTip::setPalette(toolTip);
    VLStyledRectangleComponent item;
    item.setToolTipStyle(true);
    QImage picture(kPictureSizePx, kPictureSizePx, QImage::Format_RGB32);
    QPainter painter(&picture);

    item.paint(&painter);

    QCOMPARE(painter.brush(), brush);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLStyledRectangleComponent>(argc, argv);
}

#include "tst_vlstyledrectanglecomponent.moc"
