// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ColorButton.h"

#include <QColorDialog>
#include <QPainter>
#include <QPixmap>

namespace Workbench {

namespace {

constexpr QSize kSwatchSizePx(44, 16);

} // namespace

ColorButton::ColorButton(const QColor& color, QWidget* parent)
    : QToolButton(parent)
    , m_color(color)
{
    setIconSize(kSwatchSizePx);
    showColor();
    connect(this, &QToolButton::clicked, this, &ColorButton::pick);
}

void ColorButton::pick()
{
    const QColor color = QColorDialog::getColor(m_color, window(), tr("Brush colour"));
    if (!color.isValid()) {
        return;
    }
    m_color = color;
    showColor();
    Q_EMIT colorPicked(color);
}

void ColorButton::showColor()
{
    const qreal ratio = devicePixelRatioF();
    QPixmap swatch(kSwatchSizePx * ratio);
    swatch.setDevicePixelRatio(ratio);
    swatch.fill(Qt::transparent);
    {
        QPainter painter(&swatch);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_color);
        painter.drawRoundedRect(QRect(QPoint(0, 0), kSwatchSizePx), 3, 3);
    }
    setIcon(QIcon(swatch));
    setText(m_color.name());
}

} // namespace Workbench

#include "moc_ColorButton.cpp"
