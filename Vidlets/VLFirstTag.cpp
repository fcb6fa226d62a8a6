// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLFirstTag.h"

#include <QIODevice>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace Vidlets::FirstTag {

namespace {

// A line is classified in pieces of this size, so that a file without line ends stays harmless.
constexpr qint64 kMaxLineBytes = 1024;

const QRegularExpression& tagPattern()
{
    // Compiled once: that takes longer than all the rest of a file's share in a scan.
    static const QRegularExpression pattern(u"<(\\w+)\\s*(\\w|>|/>)"_s);
    return pattern;
}

} // namespace

QString in(QIODevice& device, qint64 limit)
{
    while (device.pos() < limit) {
        const QByteArray line = device.readLine(kMaxLineBytes);
        if (line.isEmpty())
            break;
        const QRegularExpressionMatch match = tagPattern().match(QString::fromUtf8(line));
        if (match.hasMatch())
            return match.captured(1);
    }
    return QString();
}

XmlPosition placeIn(QIODevice& device)
{
    for (XmlPosition place{1, 1}; !device.atEnd(); ++place.line) {
        const QRegularExpressionMatch match =
            tagPattern().match(QString::fromUtf8(device.readLine()));
        if (match.hasMatch())
            return {place.line, match.capturedStart() + 1};
    }
    return {1, 1};
}

} // namespace Vidlets::FirstTag
