// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSceneAccessible.h"

#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QApplication>
#include <QQuickItem>

namespace Vidlets {

namespace {

void addItemsBelow(const QQuickItem* parent, QList<QQuickItem*>& items)
{
    const QList<QQuickItem*> children = parent->childItems();
    for (QQuickItem* child : children) {
        if (!child->isVisible())
            continue;
        // There is an interface for those alone that have a role.
        if (QAccessible::queryAccessibleInterface(child))
            items += child;
        else
            addItemsBelow(child, items);
    }
}

} // namespace

VLSceneAccessible::VLSceneAccessible(VLView* view)
    : QAccessibleObject(view)
{
}

QWindow* VLSceneAccessible::window() const
{
    return view();
}

QAccessibleInterface* VLSceneAccessible::parent() const
{
    QObject* above = popup();
    return QAccessible::queryAccessibleInterface(above ? above : QCoreApplication::instance());
}

QAccessibleInterface* VLSceneAccessible::child(int index) const
{
    return QAccessible::queryAccessibleInterface(items().value(index));
}

int VLSceneAccessible::childCount() const
{
    return static_cast<int>(items().size());
}

int VLSceneAccessible::indexOfChild(const QAccessibleInterface* child) const
{
    auto* item = child ? qobject_cast<QQuickItem*>(child->object()) : nullptr;
    return static_cast<int>(items().indexOf(item));
}

QAccessibleInterface* VLSceneAccessible::childAt(int x, int y) const
{
    const QList<QQuickItem*> all = items();
    // The last ones lie on top.
    for (auto item = all.crbegin(); item != all.crend(); ++item) {
        QAccessibleInterface* child = QAccessible::queryAccessibleInterface(*item);
        if (!child->rect().contains(x, y))
            continue;
        QAccessibleInterface* inner = child->childAt(x, y);
        return inner ? inner : child;
    }
    return nullptr;
}

QAccessibleInterface* VLSceneAccessible::focusChild() const
{
    const VLView* scene = view();
    return scene ? QAccessible::queryAccessibleInterface(scene->activeFocusItem()) : nullptr;
}

QString VLSceneAccessible::text(QAccessible::Text /*kind*/) const
{
    return QString();
}

QRect VLSceneAccessible::rect() const
{
    const VLView* scene = view();
    return scene ? QRect(scene->mapToGlobal(QPoint()), scene->size()) : QRect();
}

QAccessible::Role VLSceneAccessible::role() const
{
    return QAccessible::Grouping;
}

QAccessible::State VLSceneAccessible::state() const
{
    QAccessible::State result;
    const VLView* scene = view();
    result.invisible = !scene || !scene->isVisible();
    return result;
}

VLView* VLSceneAccessible::view() const
{
    return qobject_cast<VLView*>(object());
}

VLWidget* VLSceneAccessible::popup() const
{
    VLView* scene = view();
    if (m_popup || !scene)
        return m_popup;
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        auto* candidate = qobject_cast<VLWidget*>(widget);
        if (candidate && candidate->view() == scene)
            m_popup = candidate;
    }
    return m_popup;
}

QList<QQuickItem*> VLSceneAccessible::items() const
{
    QList<QQuickItem*> result;
    if (const VLView* scene = view())
        addItemsBelow(scene->contentItem(), result);
    return result;
}

} // namespace Vidlets
