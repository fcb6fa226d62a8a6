// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSCENEACCESSIBLE_H
#define VLSCENEACCESSIBLE_H

#include <QAccessible>
#include <QAccessibleObject>
#include <QList>
#include <QPointer>
#include <QRect>
#include <QString>

class QQuickItem;
class QWindow;

namespace Vidlets {

class VLView;
class VLWidget;

/**
 * The view of a popup as screen readers see it: between the popup and the items of its scene.
 *
 * Qt takes a view for a window of its own wherever it lies, so that no way would lead from an item
 * up to the tip. Internal to the host kit. Qt owns it.
 */
class VLSceneAccessible final : public QAccessibleObject
{
public:
    explicit VLSceneAccessible(VLView* view);

    QWindow* window() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int index) const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;
    QString text(QAccessible::Text kind) const override;
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;

private:
    VLView* view() const;
    VLWidget* popup() const;
    /// Those that have a role, but not what lies in one of them.
    QList<QQuickItem*> items() const;

    /// Found once; it lasts as long as its view.
    mutable QPointer<VLWidget> m_popup;
};

} // namespace Vidlets

#endif
