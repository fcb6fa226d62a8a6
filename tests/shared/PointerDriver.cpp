// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PointerDriver.h"

#include <QPointF>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPatienceMs = 30000;

bool run(const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(u"xdotool"_s, arguments);
    // A display that has stopped to answer would hold up the test for ever.
    return process.waitForFinished(kPatienceMs) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
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

bool PointerDriver::flick(const QPoint& from, const QPoint& to, int pixelsPerSecond)
{
    constexpr int kStepsPerSecond = 100;
    const QPointF way = to - from;
    const double length = std::hypot(way.x(), way.y());
    const int steps = std::max(1, qRound(length * kStepsPerSecond / pixelsPerSecond));
    QStringList arguments;
    for (int step = 0; step <= steps; ++step) {
        const QPoint position = from + (way * step / steps).toPoint();
        arguments += {u"mousemove"_s, QString::number(position.x()), QString::number(position.y()),
                      u"sleep"_s, QString::number(1.0 / kStepsPerSecond)};
    }
    return run(arguments);
}

bool PointerDriver::click()
{
    return run({u"click"_s, u"1"_s});
}

bool PointerDriver::turnWheel()
{
    return run({u"click"_s, u"4"_s});
}

bool PointerDriver::type(const QString& words)
{
    return run({u"type"_s, u"--delay"_s, u"40"_s, words});
}

bool PointerDriver::pressKey(const QString& name)
{
    return run({u"key"_s, name});
}
