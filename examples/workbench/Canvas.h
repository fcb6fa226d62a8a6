// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_CANVAS_H
#define WORKBENCH_CANVAS_H

#include "Brush.h"

#include <QImage>
#include <QUndoStack>
#include <QWidget>

namespace Workbench {

/**
 * The sheet of paper.
 *
 * A stroke grows on a transparent layer over the sheet and is laid on it as a whole when the
 * button goes up, so that a half transparent stroke that crosses itself has no darker spots.
 */
class Canvas : public QWidget
{
    Q_OBJECT

public:
    explicit Canvas(QWidget* parent = nullptr);

    const Brush& brush() const;
    QUndoStack* undoStack();
    bool save(const QString& file) const;

    /// Puts @p patch, a cut-out in device pixels, back on the sheet at @p position.
    void putPatch(const QPoint& position, const QImage& patch);

    QSize sizeHint() const override;

public Q_SLOTS:
    void setTool(Workbench::Tool tool);
    void setColor(const QColor& color);
    void setBrushSize(int sizePx);
    void setOpacity(int percent);
    void setSmoothing(int percent);
    void setMirrored(bool mirrored);
    void setGridVisible(bool visible);
    void clear();

Q_SIGNALS:
    void brushChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void extendStroke(const QPointF& position);
    void drawOnLayer(const QPointF& from, const QPointF& to);
    void drawShape(QPainter& painter, const QPointF& from, const QPointF& to) const;
    void paintGrid(QPainter& painter) const;
    void finishStroke();
    void commit(const QImage& changedSheet, const QRect& devicePixels, const QString& text);
    bool isFreehand() const;
    qreal layerOpacity() const;
    QRect touchedDevicePixels() const;
    QTransform mirror() const;

    QUndoStack m_undoStack;
    Brush m_brush;
    Tool m_tool = Tool::Pen;
    QImage m_sheet;
    QImage m_layer;
    QRectF m_touched;
    QPointF m_start;
    QPointF m_last;
    bool m_isDrawing = false;
    bool m_isMirrored = false;
    bool m_isGridVisible = false;
};

} // namespace Workbench

#endif
