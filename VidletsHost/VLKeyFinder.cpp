// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyFinder.h"

#include "VLHostInterface.h"
#include "VLItemFinder.h"

#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QQuickItem>
#include <QQuickWidget>
#include <QTabBar>
#include <QToolButton>
#include <QVariant>
#include <QWidget>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets::KeyFinder {

namespace {

constexpr auto kKeyProperty = "vidletKey";

/// @p rect of @p widget in global coordinates. No part of a widget reaches beyond it.
QRect globalRect(const QWidget* widget, const QRect& rect)
{
    const QRect visible = rect & widget->rect();
    return {widget->mapToGlobal(visible.topLeft()), visible.size()};
}

Found foundIn(const QString& key, const QWidget* widget, const QRect& rect)
{
    if (key.isEmpty())
        return {};
    return {key, globalRect(widget, rect)};
}

/// The scroll area that shows its contents in @p widget, or null.
QAbstractScrollArea* areaOf(const QWidget* widget)
{
    auto* area = qobject_cast<QAbstractScrollArea*>(widget->parentWidget());
    return area && area->viewport() == widget ? area : nullptr;
}

/// Whether the user takes @p widget for its parent, as it has no name of its own.
bool countsAsParent(const QWidget* widget)
{
    const QWidget* parent = widget->parentWidget();
    if (!parent || widget->isWindow() || !ownKey(widget).isEmpty())
        return false;
    // Qt names the parts of its own controls, but not these.
    if (qobject_cast<const QLineEdit*>(widget))
        return qobject_cast<const QComboBox*>(parent)
            || qobject_cast<const QAbstractSpinBox*>(parent)
            || widget->objectName().startsWith("qt_"_L1);
    const auto* dock = qobject_cast<const QDockWidget*>(parent);
    if (dock && dock->titleBarWidget() == widget)
        return true;
    return areaOf(widget) || qobject_cast<const QHeaderView*>(widget)
        || qobject_cast<const QTabBar*>(widget);
}

/// What the user takes @p widget for.
const QWidget* namedWidget(const QWidget* widget)
{
    while (countsAsParent(widget))
        widget = widget->parentWidget();
    return widget;
}

QString keyOfPart(const QWidget* widget, int index)
{
    const QString name = ownKey(namedWidget(widget));
    return name.isEmpty() ? QString() : u"%1.%2"_s.arg(name, QString::number(index));
}

/// A menu or a menu bar.
template <typename Menu> Found findMenuItem(const Menu* menu, const QPoint& position)
{
    const QAction* action = menu->actionAt(position);
    return action ? foundIn(keyOf(action), menu, menu->actionGeometry(const_cast<QAction*>(action)))
                  : Found();
}

/// The action that a tool button stands for; a mere menu has one, too.
const QAction* actionOf(const QToolButton* button)
{
    const QAction* action = button->defaultAction();
    return action || !button->menu() || !ownKey(button).isEmpty() ? action
                                                                  : button->menu()->menuAction();
}

Found findUsedAction(const QWidget* widget, const QPoint& position)
{
    if (const auto* button = qobject_cast<const QToolButton*>(widget))
        return foundIn(keyOf(actionOf(button)), button, button->rect());
    if (const auto* menu = qobject_cast<const QMenu*>(widget))
        return findMenuItem(menu, position);
    if (const auto* bar = qobject_cast<const QMenuBar*>(widget))
        return findMenuItem(bar, position);
    return {};
}

Found findTab(const QTabBar* bar, const QPoint& position)
{
    const int index = bar->tabAt(position);
    if (index < 0)
        return {};
    const QString key = bar->tabData(index).toString();
    return foundIn(key.isEmpty() ? keyOfPart(bar, index) : key, bar, bar->tabRect(index));
}

Found findSection(const QHeaderView* header, const QPoint& position)
{
    const int section = header->logicalIndexAt(position);
    if (section < 0 || !header->model())
        return {};
    const bool isHorizontal = header->orientation() == Qt::Horizontal;
    QString key = header->model()->headerData(section, header->orientation(), KeyRole).toString();
    if (key.isEmpty() && isHorizontal)
        key = keyOfPart(header, section);
    const int start = header->sectionViewportPosition(section);
    const int length = header->sectionSize(section);
    const QWidget* viewport = header->viewport();
    return foundIn(key, viewport,
                   isHorizontal ? QRect(start, 0, length, viewport->height())
                                : QRect(0, start, viewport->width(), length));
}

Found findCell(const QAbstractItemView* view, const QPoint& position)
{
    const QModelIndex index = view->indexAt(position);
    if (!index.isValid())
        return {};
    // The branches of a tree are beside the rectangle of their item.
    const QRect rect = view->visualRect(index) | QRect(position, QSize(1, 1));
    return foundIn(index.data(KeyRole).toString(), view->viewport(), rect);
}

Found findPart(const QWidget* widget, const QPoint& position)
{
    if (const auto* bar = qobject_cast<const QTabBar*>(widget))
        return findTab(bar, position);
    QAbstractScrollArea* area = areaOf(widget);
    // A header is an item view as well, of which all cells are hidden.
    if (const auto* header = qobject_cast<const QHeaderView*>(area))
        return findSection(header, position);
    if (const auto* view = qobject_cast<const QAbstractItemView*>(area))
        return findCell(view, position);
    return {};
}

/// What is left of a dock beside its contents.
QRect titleBar(const QDockWidget* dock)
{
    if (const QWidget* title = dock->titleBarWidget())
        return title->geometry();
    const QWidget* contents = dock->widget();
    if (!contents)
        return dock->rect();
    if (dock->features() & QDockWidget::DockWidgetVerticalTitleBar)
        return {0, 0, contents->x(), dock->height()};
    return {0, 0, dock->width(), contents->y()};
}

Found findWidget(const QWidget* widget)
{
    const QWidget* named = namedWidget(widget);
    const auto* dock = qobject_cast<const QDockWidget*>(named);
    return foundIn(ownKey(named), named, dock ? titleBar(dock) : named->rect());
}

const QAction* actionAmong(const QList<QAction*>& actions, const QString& key)
{
    const auto found =
        std::find_if(actions.cbegin(), actions.cend(), [&key](const QAction* action) {
            return !action->shortcut().isEmpty() && keyOf(action) == key;
        });
    return found == actions.cend() ? nullptr : *found;
}

/// Actions need not be children of the window that they are used in.
const QAction* actionWithin(const QWidget* window, const QString& key)
{
    if (const QAction* action = actionAmong(window->findChildren<QAction*>(), key))
        return action;
    if (const QAction* action = actionAmong(window->actions(), key))
        return action;
    const QWidgetList widgets = window->findChildren<QWidget*>();
    for (const QWidget* widget : widgets) {
        if (const QAction* action = actionAmong(widget->actions(), key))
            return action;
    }
    return nullptr;
}

} // namespace

QWidget* ownerOf(const QRect& zone, QWidget* widget)
{
    QWidget* owner = widget;
    while (owner && !QRect(owner->mapToGlobal(QPoint()), owner->size()).contains(zone))
        owner = owner->isWindow() ? nullptr : owner->parentWidget();
    return owner ? owner : widget;
}

QString ownKey(const QObject* object)
{
    QString key = object->property(kKeyProperty).toString();
    if (!key.isEmpty())
        return key;
    const QString name = object->objectName();
    return name.startsWith("qt_"_L1) ? QString() : name;
}

QString keyOf(const QAction* action)
{
    if (!action)
        return QString();
    const QString key = ownKey(action);
    const auto* menu = action->menu<QMenu*>();
    return key.isEmpty() && menu ? ownKey(menu) : key;
}

const QAction* findAction(const QString& key, QObject* object)
{
    const QWidget* window =
        object && object->isWidgetType() ? static_cast<const QWidget*>(object)->window() : nullptr;
    // A menu is a window of its own.
    while (window) {
        if (const QAction* action = actionWithin(window, key))
            return action;
        window = window->parentWidget() ? window->parentWidget()->window() : nullptr;
    }
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget* other : windows) {
        if (const QAction* action = actionWithin(other, key))
            return action;
    }
    return nullptr;
}

Found find(QObject* object, const QPoint& globalPos)
{
    if (const auto* item = qobject_cast<QQuickItem*>(object))
        return ItemFinder::find(item, globalPos).value_or(Found());
    if (!object || !object->isWidgetType())
        return {};
    const auto* widget = static_cast<const QWidget*>(object);
    const QPoint position = widget->mapFromGlobal(globalPos);
    if (const auto* scene = qobject_cast<const QQuickWidget*>(widget)) {
        const QQuickItem* item = ItemFinder::itemAt(scene->quickWindow(), globalPos);
        if (const auto found = ItemFinder::find(item, globalPos))
            return *found;
    }
    Found found = findUsedAction(widget, position);
    if (found.key.isEmpty())
        found = findPart(widget, position);
    return found.key.isEmpty() ? findWidget(widget) : found;
}

} // namespace Vidlets::KeyFinder
