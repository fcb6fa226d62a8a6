// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_COLORBUTTON_H
#define WORKBENCH_COLORBUTTON_H

#include <QColor>
#include <QToolButton>

namespace Workbench {

/// A button in a colour of its own, which opens the colour dialog.
class ColorButton : public QToolButton
{
    Q_OBJECT

public:
    explicit ColorButton(const QColor& color, QWidget* parent = nullptr);

Q_SIGNALS:
    void colorPicked(const QColor& color);

private:
    void pick();
    void showColor();

    QColor m_color;
};

} // namespace Workbench

#endif
