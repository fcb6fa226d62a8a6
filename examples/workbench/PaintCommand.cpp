// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PaintCommand.h"

#include "Canvas.h"

namespace Workbench {

PaintCommand::PaintCommand(Canvas* canvas, const QPoint& position, const QImage& before,
                           const QImage& after, const QString& text)
    : QUndoCommand(text)
    , m_canvas(canvas)
    , m_position(position)
    , m_before(before)
    , m_after(after)
{
}

void PaintCommand::undo()
{
    m_canvas->putPatch(m_position, m_before);
}

void PaintCommand::redo()
{
    m_canvas->putPatch(m_position, m_after);
}

} // namespace Workbench
