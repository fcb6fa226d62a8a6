// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLITEMFINDER_H
#define VLITEMFINDER_H

#include "VLKeyFinder.h"

#include <QPoint>

#include <optional>

class QQuickItem;
class QQuickWindow;

/**
 * What lies under the pointer in a scene of Qt Quick.
 *
 * Internal to the host kit. Nothing here keeps anything, and no event is sent.
 */
namespace Vidlets::ItemFinder {

/// Returns the item of @p window that the user takes @p globalPos for: the uppermost one there that
/// shows something, takes part in hovering or has a key. Items that are invisible, transparent or
/// clipped away are passed over. Null where there is none.
QQuickItem* itemAt(const QQuickWindow* window, const QPoint& globalPos);

/// Returns what @p item, which the pointer at @p globalPos is over and which may be null, counts
/// as: itself or what it lies in. Nothing where none of them has a key, and an empty key where the
/// nearest has that.
std::optional<KeyFinder::Found> find(const QQuickItem* item, const QPoint& globalPos);

} // namespace Vidlets::ItemFinder

#endif
