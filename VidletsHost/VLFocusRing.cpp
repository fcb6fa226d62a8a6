// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLFocusRing.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QQuickWindow>

namespace Vidlets {

namespace {

constexpr qreal kAboveAll = 1'000'000;
constexpr int kInnerPx = 2;
constexpr int kOuterPx = 4;

} // namespace

VLFocusRing::VLFocusRing(QQuickItem* scene)
    : QQuickPaintedItem(scene)
{
    setZ(kAboveAll);
    setVisible(false);
    connect(scene->window(), &QQuickWindow::afterAnimating, this, &VLFocusRing::place);
}

void VLFocusRing::follow(QQuickItem* item)
{
    m_item = item;
    place();
}

void VLFocusRing::place()
{
    const bool isWanted = m_item && m_item->isVisible() && !m_item->hasActiveFocus();
    setVisible(isWanted);
    if (!isWanted)
        return;
    // As far as there is room. The root item of a tip has no size of its own.
    const QRectF room(QPointF(), window()->size());
    const QRectF around = m_item->mapRectToItem(parentItem(), m_item->boundingRect())
                              .adjusted(-kOuterPx, -kOuterPx, kOuterPx, kOuterPx);
    const QRectF rect = around & room;
    setPosition(rect.topLeft());
    setSize(rect.size());
}

/// Two colours, one of which stands out against whatever is below.
void VLFocusRing::paint(QPainter* painter)
{
    const QPalette palette = QGuiApplication::palette();
    const QRectF rect = boundingRect();
    const qreal half = kOuterPx / 2.0;
    painter->setPen(QPen(palette.color(QPalette::HighlightedText), kOuterPx));
    painter->drawRect(rect.adjusted(half, half, -half, -half));
    painter->setPen(QPen(palette.color(QPalette::Highlight), kInnerPx));
    painter->drawRect(rect.adjusted(half, half, -half, -half));
}

} // namespace Vidlets
