// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_OPTIONS_H
#define WORKBENCH_OPTIONS_H

#include <QString>
#include <QStringList>

#include <optional>

class QCoreApplication;

namespace Workbench {

/// What the command line asks for.
struct Options
{
    QStringList dataPaths;
    QString locale;
    QString geometryFile;
    QString popupFile;
    int stayMs = 3000;
    /// Where the option is absent the library's own default holds.
    std::optional<int> messageLevel;
    bool isSimple = false;
    bool isDark = false;
    bool hasNoTips = false;
    bool hasNoSafeguards = false;
};

/// Reads the arguments; prints help or a complaint and ends the program where that is called for.
Options readOptions(const QCoreApplication& application);

} // namespace Workbench

#endif
