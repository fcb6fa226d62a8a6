// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_TOOLICONS_H
#define WORKBENCH_TOOLICONS_H

#include <QIcon>
#include <QString>

namespace Workbench {

/// The icon for the action called @p name, in the text colour of the present palette. Empty for a
/// name that has none.
QIcon toolIcon(const QString& name);

} // namespace Workbench

#endif
