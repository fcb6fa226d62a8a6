// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYFINDER_H
#define VLKEYFINDER_H

#include <QPoint>
#include <QRect>
#include <QString>

class QAction;
class QObject;
class QWidget;

/**
 * What lies under the pointer: which key it has, and how far it reaches.
 *
 * Internal to the host kit. Nothing here keeps anything, and no event is sent.
 */
namespace Vidlets::KeyFinder {

/// What has a tip.
struct Found
{
    /// Empty where there is none.
    QString key;
    /// In global coordinates.
    QRect zone;
};

/// Returns what is at @p globalPos in @p object, a widget or a Qt Quick item. All else has nothing.
Found find(QObject* object, const QPoint& globalPos);

/// Returns the widget that @p zone, in global coordinates, is a part of: what is asked for a tip,
/// @p widget, may be a part of that itself, as the line edit in a spin box is.
QWidget* ownerOf(const QRect& zone, QWidget* widget);

/// Returns the key of @p object by itself: its property "vidletKey", then its name, unless Qt has
/// given that.
QString ownKey(const QObject* object);

/// Returns the key of @p action, which may be null; that of its menu where it has none.
QString keyOf(const QAction* action);

/// Returns the action that @p key belongs to and that has a shortcut: one of the window of
/// @p object, which may be null, else one of any other window. Null where there is none.
const QAction* findAction(const QString& key, QObject* object);

} // namespace Vidlets::KeyFinder

#endif
