// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLFocusFinder.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QQuickItem>
#include <QQuickWidget>
#include <QQuickWindow>
#include <QTabBar>
#include <QWidget>

namespace Vidlets::FocusFinder {

namespace {

/// The widget that gets the keys. Null where a window without widgets gets them.
QWidget* focusWidget()
{
    if (QWidget* popup = QApplication::activePopupWidget())
        return popup->focusWidget() ? popup->focusWidget() : popup;
    QWidget* widget = QApplication::focusWidget();
    return widget ? widget : QApplication::activeWindow();
}

/// A scene may be a window, or lie in a widget, which has the focus then.
QQuickItem* focusItem()
{
    const QQuickWindow* scene = focusScene();
    return scene ? scene->activeFocusItem() : nullptr;
}

/// What @p widget shows in the current cell; nothing where there is none.
QModelIndex currentCell(const QWidget* widget)
{
    const auto* view = qobject_cast<const QAbstractItemView*>(widget);
    return view && !qobject_cast<const QHeaderView*>(view) ? view->currentIndex() : QModelIndex();
}

QAction* activeAction(const QWidget* widget)
{
    if (const auto* menu = qobject_cast<const QMenu*>(widget))
        return menu->activeAction();
    if (const auto* bar = qobject_cast<const QMenuBar*>(widget))
        return bar->activeAction();
    return nullptr;
}

QRect actionRect(const QWidget* widget, QAction* action)
{
    if (const auto* menu = qobject_cast<const QMenu*>(widget))
        return menu->actionGeometry(action);
    return qobject_cast<const QMenuBar*>(widget)->actionGeometry(action);
}

/// The point in @p widget that stands for it, given that @p inner, in global coordinates, stands
/// for what has the focus.
QPoint pointFor(const QWidget* widget, const QPoint& inner)
{
    if (qobject_cast<const QMenu*>(widget) || qobject_cast<const QMenuBar*>(widget)) {
        // The menu itself is what is left beside its items.
        QAction* action = activeAction(widget);
        return widget->mapToGlobal(action ? actionRect(widget, action).center() : QPoint(-1, -1));
    }
    // Whatever item lies in the middle is another control.
    if (qobject_cast<const QQuickWidget*>(widget))
        return widget->mapToGlobal(QPoint(-1, -1));
    return inner;
}

QPoint middleOf(const QWidget* widget)
{
    QRect rect = widget->visibleRegion().boundingRect();
    if (const auto* bar = qobject_cast<const QTabBar*>(widget))
        rect = bar->tabRect(bar->currentIndex());
    return widget->mapToGlobal(rect.center());
}

/// The current cell of @p widget, as far as it is to be seen.
void addCell(const QWidget* widget, QList<Place>& places)
{
    const QModelIndex cell = currentCell(widget);
    if (!cell.isValid())
        return;
    const auto* view = qobject_cast<const QAbstractItemView*>(widget);
    const QRect rect = view->visualRect(cell) & view->viewport()->rect();
    if (!rect.isEmpty())
        places.append({view->viewport(), view->viewport()->mapToGlobal(rect.center())});
}

void addWidgets(QWidget* focused, QList<Place>& places)
{
    addCell(focused, places);
    const QPoint middle = middleOf(focused);
    for (QWidget* widget = focused; widget; widget = widget->parentWidget()) {
        places.append({widget, pointFor(widget, middle)});
        // A menu belongs to what it was opened from.
        if (widget->isWindow() && widget->windowType() != Qt::Popup)
            break;
    }
}

/// The parts of @p widget that have keys of their own, then the widget.
void addParts(QWidget* widget, QList<Place>& places)
{
    const QRect visible = widget->visibleRegion().boundingRect();
    const auto addPart = [&](const QRect& rect) {
        if (visible.intersects(rect))
            places.append({widget, widget->mapToGlobal((visible & rect).center())});
    };
    if (const auto* bar = qobject_cast<const QMenuBar*>(widget)) {
        const QList<QAction*> actions = bar->actions();
        for (QAction* action : actions)
            addPart(bar->actionGeometry(action));
    } else if (const auto* tabs = qobject_cast<const QTabBar*>(widget)) {
        for (int tab = 0; tab < tabs->count(); ++tab)
            addPart(tabs->tabRect(tab));
    }
    addPart(visible);
}

} // namespace

bool Focus::operator==(const Focus& other) const
{
    return object == other.object && cell == other.cell && tab == other.tab
        && action == other.action;
}

QQuickWindow* focusScene()
{
    if (QApplication::activePopupWidget())
        return nullptr;
    if (const auto* widget = qobject_cast<QQuickWidget*>(QApplication::focusWidget()))
        return widget->quickWindow();
    return qobject_cast<QQuickWindow*>(QGuiApplication::focusWindow());
}

Focus current()
{
    Focus focus;
    if (QQuickItem* item = focusItem()) {
        focus.object = item;
        return focus;
    }
    QWidget* widget = focusWidget();
    focus.object = widget;
    if (!widget) {
        focus.object = QGuiApplication::focusObject();
        return focus;
    }
    focus.cell = currentCell(widget);
    if (const auto* bar = qobject_cast<const QTabBar*>(widget))
        focus.tab = bar->currentIndex();
    focus.action = activeAction(widget);
    return focus;
}

QList<Place> places()
{
    QList<Place> result;
    for (QQuickItem* item = focusItem(); item; item = item->parentItem())
        result.append({item, item->mapToGlobal(item->boundingRect().center()).toPoint()});
    if (QWidget* widget = focusWidget())
        addWidgets(widget, result);
    return result;
}

QList<Place> visiblePlaces(const QWidget* window)
{
    QList<Place> result;
    const QList<QWidget*> widgets = window->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        if (widget->window() == window && widget->isVisible())
            addParts(widget, result);
    }
    return result;
}

} // namespace Vidlets::FocusFinder
