// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLStyledRectangleComponent.h"

#include <QBrush>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QStyle>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

QString widgetElement()
{
    return u"PE_Widget"_s;
}

QString frameElement()
{
    return u"PE_Frame"_s;
}

} // namespace

VLStyledRectangleComponent::VLStyledRectangleComponent(QQuickPaintedItem* parent)
    : QQuickPaintedItem(parent)
    , m_element(widgetElement())
{
    setFlag(QQuickItem::ItemHasContents, true);
}

VLStyledRectangleComponent::~VLStyledRectangleComponent() = default;

QString VLStyledRectangleComponent::element()
{
    return m_element;
}

QColor VLStyledRectangleComponent::textColor()
{
    if (m_toolTipStyle)
        return Qt::black;
    return QGuiApplication::palette().color(QPalette::Active, QPalette::WindowText);
}

bool VLStyledRectangleComponent::toolTipStyle()
{
    return m_toolTipStyle;
}

void VLStyledRectangleComponent::setElement(const QString& name)
{
    if (name == widgetElement())
        m_primitiveElement = QStyle::PE_Widget;
    else if (name == frameElement())
        m_primitiveElement = QStyle::PE_Frame;
    else
        return;
    m_element = name;
    Q_EMIT elementChanged();
}

void VLStyledRectangleComponent::setToolTipStyle(bool on)
{
    m_toolTipStyle = on;
    Q_EMIT toolTipStyleChanged();
    Q_EMIT textColorChanged();
}

void VLStyledRectangleComponent::paint(QPainter* painter)
{
    QRectF bounds = boundingRect();
    if (m_toolTipStyle) {
        painter->setBrush(QToolTip::palette().brush(QPalette::ToolTipBase));
    } else {
        bounds.adjust(-1, -1, 1, 1);
        painter->setBrush(
            QBrush(QGuiApplication::palette().color(QPalette::Active, QPalette::Window),
                   Qt::SolidPattern));
    }
    const QRect rectangle = bounds.toRect();
    painter->drawRects(&rectangle, 1);
}

} // namespace Vidlets

#include "moc_VLStyledRectangleComponent.cpp"
