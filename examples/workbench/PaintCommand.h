// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_PAINTCOMMAND_H
#define WORKBENCH_PAINTCOMMAND_H

#include <QImage>
#include <QPoint>
#include <QUndoCommand>

namespace Workbench {

class Canvas;

/// One step of the drawing. Keeps the changed part of the picture alone, before and after.
class PaintCommand : public QUndoCommand
{
public:
    PaintCommand(Canvas* canvas, const QPoint& position, const QImage& before, const QImage& after,
                 const QString& text);

    void undo() override;
    void redo() override;

private:
    Canvas* m_canvas;
    QPoint m_position;
    QImage m_before;
    QImage m_after;
};

} // namespace Workbench

#endif
