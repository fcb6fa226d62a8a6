// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLFOCUSRING_H
#define VLFOCUSRING_H

#include <QPointer>
#include <QQuickItem>
#include <QQuickPaintedItem>

class QPainter;

namespace Vidlets {

/**
 * A line around the item of a scene that has the keyboard.
 *
 * The items of a window that is not the active one have no active focus, by which they would show
 * it themselves; one that does is left alone. Internal to the host kit.
 */
class VLFocusRing final : public QQuickPaintedItem
{
public:
    /// A ring that lies above all of @p scene, the root item of a window, and belongs to it.
    explicit VLFocusRing(QQuickItem* scene);

    /// Goes around @p item from now on, wherever that moves. None is shown for a null one.
    void follow(QQuickItem* item);

    void paint(QPainter* painter) override;

private:
    Q_DISABLE_COPY_MOVE(VLFocusRing)

    void place();

    QPointer<QQuickItem> m_item;
};

} // namespace Vidlets

#endif
