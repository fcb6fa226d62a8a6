// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLItemFinder.h"

#include "VLKeyAttached.h"

#include <QList>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRectF>

#include <algorithm>

namespace Vidlets::ItemFinder {

namespace {

/// Layers that only hold other items lie over each other everywhere, and cover nothing.
bool isSomething(const QQuickItem* item)
{
    return item->flags().testFlag(QQuickItem::ItemHasContents) || item->acceptHoverEvents()
        || VLKeyAttached::keyOf(item).has_value();
}

QList<QQuickItem*> childrenInPaintOrder(const QQuickItem* item)
{
    QList<QQuickItem*> children = item->childItems();
    std::stable_sort(
        children.begin(), children.end(),
        [](const QQuickItem* one, const QQuickItem* other) { return one->z() < other->z(); });
    return children;
}

QQuickItem* uppermost(QQuickItem* item, const QPointF& scenePos)
{
    if (!item->isVisible() || item->opacity() <= 0.0)
        return nullptr;
    const bool isInside = item->contains(item->mapFromScene(scenePos));
    if (item->clip() && !isInside)
        return nullptr;
    const QList<QQuickItem*> children = childrenInPaintOrder(item);
    auto child = children.crbegin();
    // Those of a negative z are painted below the item itself.
    for (; child != children.crend() && (*child)->z() >= 0.0; ++child) {
        if (QQuickItem* found = uppermost(*child, scenePos))
            return found;
    }
    if (isInside && isSomething(item))
        return item;
    for (; child != children.crend(); ++child) {
        if (QQuickItem* found = uppermost(*child, scenePos))
            return found;
    }
    return nullptr;
}

QRectF sceneRect(const QQuickItem* item)
{
    return item->mapRectToScene(QRectF(0.0, 0.0, item->width(), item->height()));
}

/// What can be seen of @p rect, a part of the scene of @p item.
QRectF visiblePart(QRectF rect, const QQuickItem* item)
{
    for (const QQuickItem* parent = item->parentItem(); parent; parent = parent->parentItem()) {
        if (parent->clip())
            rect &= sceneRect(parent);
    }
    const QQuickWindow* window = item->window();
    return window ? rect & QRectF(QPointF(), window->size()) : rect;
}

QRect globalRect(const QRectF& rect, const QQuickItem* item)
{
    const QPointF topLeft = item->mapToGlobal(item->mapFromScene(rect.topLeft()));
    return QRectF(topLeft, rect.size()).toAlignedRect();
}

} // namespace

QQuickItem* itemAt(const QQuickWindow* window, const QPoint& globalPos)
{
    QQuickItem* root = window->contentItem();
    return uppermost(root, root->mapToScene(root->mapFromGlobal(globalPos)));
}

std::optional<KeyFinder::Found> find(const QQuickItem* item, const QPoint& globalPos)
{
    const QQuickItem* keyed = item;
    while (keyed && !VLKeyAttached::keyOf(keyed))
        keyed = keyed->parentItem();
    if (!keyed)
        return std::nullopt;
    KeyFinder::Found found;
    found.key = VLKeyAttached::keyOf(keyed).value_or(QString());
    found.zone = globalRect(visiblePart(sceneRect(keyed), keyed), keyed);
    // What lies in an item may reach beyond it.
    if (!found.zone.contains(globalPos))
        found.zone |= globalRect(visiblePart(sceneRect(item), item), item);
    return found;
}

} // namespace Vidlets::ItemFinder
