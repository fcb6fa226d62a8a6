// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ItemKeys.h"

#include <QCursor>
#include <QHeaderView>

QString keyInMenu(const QMenu& menu)
{
    const QAction* action = menu.actionAt(menu.mapFromGlobal(QCursor::pos()));
    return action ? action->objectName() : QString();
}

QString keyInTabBar(const QTabBar& tabs)
{
    return tabs.tabData(tabs.tabAt(tabs.mapFromGlobal(QCursor::pos()))).toString();
}

QString keyInView(const QAbstractItemView& view)
{
    const QPoint pos = view.viewport()->mapFromGlobal(QCursor::pos());
    if (const auto* header = qobject_cast<const QHeaderView*>(&view)) {
        const int section = header->logicalIndexAt(pos);
        return header->model()->headerData(section, header->orientation(), kKeyRole).toString();
    }
    return view.indexAt(pos).data(kKeyRole).toString();
}
