// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PointerDriver.h"

#include <QProcess>
#include <QString>
#include <QStringList>

namespace {

bool run(const QStringList& arguments)
{
    return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
}

QStringList moveArguments(const QPoint& position)
{
    return {QStringLiteral("mousemove"), QStringLiteral("--sync"), QString::number(position.x()),
            QString::number(position.y())};
}

} // namespace

bool PointerDriver::moveTo(const QPoint& position)
{
    return run(moveArguments(position + QPoint(1, 1))) && run(moveArguments(position));
}

bool PointerDriver::click()
{
    return run({QStringLiteral("click"), QStringLiteral("1")});
}
