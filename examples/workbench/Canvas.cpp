// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Canvas.h"

#include "PaintCommand.h"

#include <QMouseEvent>
#include <QPainter>

namespace Workbench {

namespace {

constexpr QSize kPreferredSize(760, 520);
constexpr int kGridStepPx = 20;
constexpr int kUndoLimit = 100;
// Full smoothing would never reach the pointer.
constexpr qreal kStrongestSmoothing = 0.92;

QColor paper()
{
    return QColor(0xfd, 0xfc, 0xf9);
}

QImage emptyLayer(const QImage& sheet)
{
    QImage layer(sheet.size(), QImage::Format_ARGB32_Premultiplied);
    layer.setDevicePixelRatio(sheet.devicePixelRatio());
    layer.fill(Qt::transparent);
    return layer;
}

} // namespace

Canvas::Canvas(QWidget* parent)
    : QWidget(parent)
{
    m_undoStack.setUndoLimit(kUndoLimit);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setCursor(Qt::CrossCursor);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

const Brush& Canvas::brush() const
{
    return m_brush;
}

QUndoStack* Canvas::undoStack()
{
    return &m_undoStack;
}

bool Canvas::save(const QString& file) const
{
    return m_sheet.save(file, "PNG");
}

void Canvas::putPatch(const QPoint& position, const QImage& patch)
{
    QImage pixels = patch;
    pixels.setDevicePixelRatio(1.0);
    const qreal ratio = m_sheet.devicePixelRatio();
    m_sheet.setDevicePixelRatio(1.0);
    {
        QPainter painter(&m_sheet);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(position, pixels);
    }
    m_sheet.setDevicePixelRatio(ratio);
    update();
}

QSize Canvas::sizeHint() const
{
    return kPreferredSize;
}

void Canvas::setTool(Tool tool)
{
    m_tool = tool;
}

void Canvas::setColor(const QColor& color)
{
    m_brush.color = color;
    Q_EMIT brushChanged();
}

void Canvas::setBrushSize(int sizePx)
{
    m_brush.sizePx = qBound(kMinimumBrushSizePx, sizePx, kMaximumBrushSizePx);
    Q_EMIT brushChanged();
}

void Canvas::setOpacity(int percent)
{
    m_brush.opacityPercent = percent;
    Q_EMIT brushChanged();
}

void Canvas::setSmoothing(int percent)
{
    m_brush.smoothingPercent = percent;
    Q_EMIT brushChanged();
}

void Canvas::setMirrored(bool mirrored)
{
    m_isMirrored = mirrored;
}

void Canvas::setGridVisible(bool visible)
{
    m_isGridVisible = visible;
    update();
}

void Canvas::clear()
{
    QImage blank = m_sheet;
    blank.fill(paper());
    commit(blank, m_sheet.rect(), tr("Clear"));
}

void Canvas::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.drawImage(0, 0, m_sheet);
    if (m_isDrawing) {
        painter.setOpacity(layerOpacity());
        painter.drawImage(0, 0, m_layer);
        painter.setOpacity(1.0);
    }
    if (m_isGridVisible) {
        paintGrid(painter);
    }
}

void Canvas::resizeEvent(QResizeEvent*)
{
    const qreal ratio = devicePixelRatioF();
    const QSize needed = (QSizeF(size()) * ratio).toSize().expandedTo(m_sheet.size());
    if (needed == m_sheet.size()) {
        return;
    }
    QImage sheet(needed, QImage::Format_ARGB32_Premultiplied);
    sheet.setDevicePixelRatio(ratio);
    sheet.fill(paper());
    QPainter(&sheet).drawImage(0, 0, m_sheet);
    m_sheet = sheet;
}

void Canvas::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        return;
    }
    m_isDrawing = true;
    m_layer = emptyLayer(m_sheet);
    m_touched = QRectF();
    m_start = event->position();
    m_last = m_start;
    drawOnLayer(m_start, m_start);
}

void Canvas::mouseMoveEvent(QMouseEvent* event)
{
    if (m_isDrawing) {
        extendStroke(event->position());
    }
}

void Canvas::mouseReleaseEvent(QMouseEvent* event)
{
    if (m_isDrawing && event->button() == Qt::LeftButton) {
        finishStroke();
    }
}

void Canvas::extendStroke(const QPointF& position)
{
    if (!isFreehand()) {
        m_layer.fill(Qt::transparent);
        drawOnLayer(m_start, position);
        return;
    }
    const qreal lag = m_brush.smoothingPercent / 100.0 * kStrongestSmoothing;
    const QPointF next = position * (1.0 - lag) + m_last * lag;
    drawOnLayer(m_last, next);
    m_last = next;
}

void Canvas::drawOnLayer(const QPointF& from, const QPointF& to)
{
    QPainter painter(&m_layer);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor ink = m_tool == Tool::Eraser ? paper() : m_brush.color;
    painter.setPen(QPen(ink, m_brush.sizePx, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    drawShape(painter, from, to);

    const qreal reach = m_brush.sizePx + 1.0;
    const QRectF spot = QRectF(from, to).normalized().adjusted(-reach, -reach, reach, reach);
    m_touched |= spot;
    if (m_isMirrored) {
        painter.setTransform(mirror(), true);
        drawShape(painter, from, to);
        m_touched |= mirror().mapRect(spot);
    }
    update();
}

void Canvas::drawShape(QPainter& painter, const QPointF& from, const QPointF& to) const
{
    switch (m_tool) {
    case Tool::Pen:
    case Tool::Line:
    case Tool::Eraser:
        // A line of no length has no direction and is not painted everywhere.
        if (from == to) {
            painter.drawPoint(from);
        } else {
            painter.drawLine(from, to);
        }
        return;
    case Tool::Rectangle:
        painter.drawRect(QRectF(from, to).normalized());
        return;
    case Tool::Ellipse:
        painter.drawEllipse(QRectF(from, to).normalized());
        return;
    }
}

void Canvas::paintGrid(QPainter& painter) const
{
    painter.setPen(QColor(0, 0, 0, 28));
    for (int x = kGridStepPx; x < width(); x += kGridStepPx) {
        painter.drawLine(x, 0, x, height());
    }
    for (int y = kGridStepPx; y < height(); y += kGridStepPx) {
        painter.drawLine(0, y, width(), y);
    }
}

void Canvas::finishStroke()
{
    m_isDrawing = false;
    QImage sheet = m_sheet;
    {
        QPainter painter(&sheet);
        painter.setOpacity(layerOpacity());
        painter.drawImage(0, 0, m_layer);
    }
    m_layer = QImage();
    commit(sheet, touchedDevicePixels(), m_tool == Tool::Eraser ? tr("Erase") : tr("Draw"));
}

void Canvas::commit(const QImage& changedSheet, const QRect& devicePixels, const QString& text)
{
    if (devicePixels.isEmpty()) {
        update();
        return;
    }
    m_undoStack.push(new PaintCommand(this, devicePixels.topLeft(), m_sheet.copy(devicePixels),
                                      changedSheet.copy(devicePixels), text));
}

bool Canvas::isFreehand() const
{
    return m_tool == Tool::Pen || m_tool == Tool::Eraser;
}

qreal Canvas::layerOpacity() const
{
    return m_tool == Tool::Eraser ? 1.0 : m_brush.opacityPercent / 100.0;
}

QRect Canvas::touchedDevicePixels() const
{
    const qreal ratio = m_sheet.devicePixelRatio();
    const QRectF scaled(m_touched.topLeft() * ratio, m_touched.size() * ratio);
    return scaled.toAlignedRect() & m_sheet.rect();
}

QTransform Canvas::mirror() const
{
    return QTransform(-1, 0, 0, 1, width(), 0);
}

} // namespace Workbench

#include "moc_Canvas.cpp"
