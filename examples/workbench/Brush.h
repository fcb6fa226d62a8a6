// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_BRUSH_H
#define WORKBENCH_BRUSH_H

#include <QColor>

namespace Workbench {

enum class Tool {
    Pen,
    Line,
    Rectangle,
    Ellipse,
    Eraser
};

constexpr int kMinimumBrushSizePx = 1;
constexpr int kMaximumBrushSizePx = 64;

struct Brush
{
    QColor color = QColor(0x1f, 0x4e, 0x8c);
    int sizePx = 6;
    int opacityPercent = 100;
    int smoothingPercent = 40;
};

} // namespace Workbench

#endif
