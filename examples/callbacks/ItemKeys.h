// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef ITEMKEYS_H
#define ITEMKEYS_H

#include <QAbstractItemView>
#include <QMenu>
#include <QTabBar>

/// Where an item of a view, or a section of its header, has its key.
constexpr int kKeyRole = Qt::UserRole;

/// @name The key of what the pointer is on in a widget with several items; empty where that is
/// none.
/// @{
QString keyInMenu(const QMenu& menu);
QString keyInTabBar(const QTabBar& tabs);
/// @p view may be a header: that is a view as well.
QString keyInView(const QAbstractItemView& view);
/// @}

#endif
