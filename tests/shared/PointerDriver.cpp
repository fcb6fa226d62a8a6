// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PointerDriver.h"

#include <QProcess>
#include <QString>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

bool run(const QStringList& arguments)
{
    return QProcess::execute(u"xdotool"_s, arguments) == 0;
}

QStringList moveArguments(const QPoint& position)
{
    return {u"mousemove"_s, u"--sync"_s, QString::number(position.x()),
            QString::number(position.y())};
}

} // namespace

bool PointerDriver::moveTo(const QPoint& position)
{
    return run(moveArguments(position + QPoint(1, 1))) && run(moveArguments(position));
}

bool PointerDriver::click()
{
    return run({u"click"_s, u"1"_s});
}
