// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "XServer.h"

#include <QProcess>
#include <QRegularExpression>
#include <QWindow>

#include <climits>

using namespace Qt::StringLiterals;

WId windowOfX(const QWidget* popup)
{
    return popup->windowHandle() ? popup->windowHandle()->winId() : 0;
}

QString answerOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitCode() != 0)
        return QString();
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

bool hasKeyboardOfX(const QWidget* window)
{
    const QString focus = answerOf(u"xdotool"_s, {u"getwindowfocus"_s});
    return window->isActiveWindow() && focus.toULongLong() == windowOfX(window);
}

QPoint positionOnScreenOfX(const QWidget* window)
{
    const WId id = windowOfX(window);
    const QString extents =
        answerOf(u"xprop"_s, {u"-id"_s, QString::number(id), u"_NET_FRAME_EXTENTS"_s});
    const QString answer = answerOf(u"xwininfo"_s, {u"-id"_s, QString::number(id)});
    const QRegularExpression corner(
        u"Absolute upper-left X: +(-?\\d+)\\s+Absolute upper-left Y: +(-?\\d+)"_s);
    const QRegularExpressionMatch match = corner.match(answer);
    if (!extents.contains(u'=') || !match.hasMatch())
        return {INT_MIN, INT_MIN};
    return {match.captured(1).toInt(), match.captured(2).toInt()};
}
