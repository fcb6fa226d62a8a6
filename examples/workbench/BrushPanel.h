// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_BRUSHPANEL_H
#define WORKBENCH_BRUSHPANEL_H

#include "Brush.h"

#include <QDockWidget>

class QAction;
class QFormLayout;
class QHBoxLayout;
class QSlider;

namespace Workbench {

/// The dock with everything that belongs to the brush.
class BrushPanel : public QDockWidget
{
    Q_OBJECT

public:
    /// @p smaller and @p bigger get a button each beside the size.
    BrushPanel(const Brush& brush, QAction* smaller, QAction* bigger, QWidget* parent);

public Q_SLOTS:
    void stepSize(int stepPx);

Q_SIGNALS:
    void colorPicked(const QColor& color);
    void sizeChanged(int sizePx);
    void opacityChanged(int percent);
    void smoothingChanged(int percent);
    void mirroredChanged(bool mirrored);

private:
    QHBoxLayout* addRow(const QString& key, const QString& text);
    QSlider* addSlider(const QString& key, const QString& text, const QString& unit, int minimum,
                       int maximum, int value);
    void addSize(const Brush& brush, QAction* smaller, QAction* bigger);
    void addColor(const Brush& brush);
    void addMirror();

    QFormLayout* m_form;
    QSlider* m_size = nullptr;
};

} // namespace Workbench

#endif
