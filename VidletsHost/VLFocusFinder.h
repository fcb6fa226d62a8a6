// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLFOCUSFINDER_H
#define VLFOCUSFINDER_H

#include <QAction>
#include <QList>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPoint>
#include <QPointer>

QT_BEGIN_NAMESPACE
class QQuickWindow;
class QWidget;
QT_END_NAMESPACE

/**
 * What has the keyboard, down to the item, and where to ask for its key.
 *
 * Internal to the host kit. Nothing here keeps anything, and no event is sent.
 */
namespace Vidlets::FocusFinder {

/// What the user is at with the keyboard.
struct Focus
{
    bool operator==(const Focus& other) const;

    /// A widget, or an item of Qt Quick. Null where the application has no focus.
    QPointer<QObject> object;
    /// The current cell of an item view.
    QPersistentModelIndex cell;
    /// The current tab of a tab bar, else -1.
    int tab = -1;
    /// The item that is lit up in a menu or a menu bar.
    QPointer<QAction> action;
};

/// A point that stands for an object, as if the pointer were there. In global coordinates.
struct Place
{
    QObject* object;
    QPoint position;
};

/// Returns the scene that has the keyboard, in a window of its own or in a widget; null where none
/// has.
QQuickWindow* focusScene();

/// Returns what has the focus now. A menu that is open goes before the widget with the focus.
Focus current();

/// Returns where to ask for the key of what has the focus, then of its ancestors, up to the window.
QList<Place> places();

/// Returns where to ask for the keys of what is to be seen in @p window: each widget, and each
/// entry of a menu bar and tab of a tab bar.
QList<Place> visiblePlaces(const QWidget* window);

} // namespace Vidlets::FocusFinder

#endif
