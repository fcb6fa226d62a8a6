// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ToolIcons.h"

#include <QGuiApplication>
#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

// The icons are drawn on a grid of 24 by 24, at several times that size so that they stay crisp on
// dense screens.
constexpr int kGridSize = 24;
constexpr int kPixelsPerUnit = 4;
constexpr qreal kLineWidth = 1.8;

using Drawer = void (*)(QPainter&);

void drawPen(QPainter& painter)
{
    QPainterPath path(QPointF(4, 20));
    path.lineTo(5.5, 14.5);
    path.lineTo(16, 4);
    path.lineTo(20, 8);
    path.lineTo(9.5, 18.5);
    path.closeSubpath();
    painter.drawPath(path);
    painter.drawLine(QPointF(13.5, 6.5), QPointF(17.5, 10.5));
}

void drawLine(QPainter& painter)
{
    painter.drawLine(QPointF(5, 19), QPointF(19, 5));
}

void drawRectangle(QPainter& painter)
{
    painter.drawRect(QRectF(4, 6, 16, 12));
}

void drawEllipse(QPainter& painter)
{
    painter.drawEllipse(QRectF(3.5, 6, 17, 12));
}

void drawEraser(QPainter& painter)
{
    painter.drawPolygon(QPolygonF({{3.5, 15}, {13, 5.5}, {20, 12.5}, {13.5, 19}, {7.5, 19}}));
    painter.drawLine(QPointF(8.5, 10), QPointF(15.5, 17));
}

void drawUndo(QPainter& painter)
{
    QPainterPath path(QPointF(5, 9));
    path.lineTo(14, 9);
    path.cubicTo(21.5, 9, 21.5, 19, 14, 19);
    path.lineTo(9, 19);
    painter.drawPath(path);
    painter.drawPolyline(QPolygonF({{9, 4.5}, {4.5, 9}, {9, 13.5}}));
}

void drawRedo(QPainter& painter)
{
    painter.translate(kGridSize, 0);
    painter.scale(-1, 1);
    drawUndo(painter);
}

void drawClear(QPainter& painter)
{
    painter.drawRect(QRectF(5, 4, 14, 16));
    painter.drawLine(QPointF(9, 9.5), QPointF(15, 15.5));
    painter.drawLine(QPointF(15, 9.5), QPointF(9, 15.5));
}

void drawSave(QPainter& painter)
{
    painter.drawLine(QPointF(12, 3.5), QPointF(12, 14.5));
    painter.drawPolyline(QPolygonF({{7.5, 10.5}, {12, 15}, {16.5, 10.5}}));
    painter.drawPolyline(QPolygonF({{4, 15}, {4, 20}, {20, 20}, {20, 15}}));
}

void drawGrid(QPainter& painter)
{
    painter.drawRect(QRectF(4, 4, 16, 16));
    for (const qreal at : {9.3, 14.6}) {
        painter.drawLine(QPointF(at, 4), QPointF(at, 20));
        painter.drawLine(QPointF(4, at), QPointF(20, at));
    }
}

void drawMinus(QPainter& painter)
{
    painter.drawLine(QPointF(6, 12), QPointF(18, 12));
}

void drawPlus(QPainter& painter)
{
    drawMinus(painter);
    painter.drawLine(QPointF(12, 6), QPointF(12, 18));
}

Drawer drawerFor(const QString& name)
{
    static const QHash<QString, Drawer> drawers = {
        {u"tool.pen"_s, drawPen},
        {u"tool.line"_s, drawLine},
        {u"tool.rectangle"_s, drawRectangle},
        {u"tool.ellipse"_s, drawEllipse},
        {u"tool.eraser"_s, drawEraser},
        {u"edit.undo"_s, drawUndo},
        {u"edit.redo"_s, drawRedo},
        {u"edit.clear"_s, drawClear},
        {u"file.save"_s, drawSave},
        {u"view.grid"_s, drawGrid},
        {u"brush.smaller"_s, drawMinus},
        {u"brush.bigger"_s, drawPlus},
    };
    return drawers.value(name, nullptr);
}

QPixmap draw(Drawer drawer, const QColor& color)
{
    QPixmap pixmap(QSize(kGridSize, kGridSize) * kPixelsPerUnit);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(kPixelsPerUnit, kPixelsPerUnit);
    painter.setPen(QPen(color, kLineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    drawer(painter);
    return pixmap;
}

} // namespace

QIcon toolIcon(const QString& name)
{
    const Drawer drawer = drawerFor(name);
    if (!drawer) {
        return QIcon();
    }
    const QPalette palette = QGuiApplication::palette();
    QIcon icon(draw(drawer, palette.color(QPalette::Active, QPalette::ButtonText)));
    icon.addPixmap(draw(drawer, palette.color(QPalette::Disabled, QPalette::ButtonText)),
                   QIcon::Disabled);
    return icon;
}

} // namespace Workbench
