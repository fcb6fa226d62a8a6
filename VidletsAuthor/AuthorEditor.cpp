// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorEditor.h"

#include <QDesktopServices>
#include <QProcess>
#include <QRegularExpression>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace Vidlets {

AuthorPlace AuthorEditor::placeIn(const QString& message)
{
    static const QRegularExpression pattern(u"^(/[^\\n]*?):(\\d+):(\\d+): "_s);
    static const QRegularExpression wholeFile(u"^(/[^\\n]*?): "_s);
    const QRegularExpressionMatch match = pattern.match(message);
    if (match.hasMatch())
        return {match.captured(1), match.captured(2).toInt(), match.captured(3).toInt()};
    return {wholeFile.match(message).captured(1), 0, 0};
}

QStringList AuthorEditor::commandLine(const QString& command, const AuthorPlace& place)
{
    QStringList result = QProcess::splitCommand(command);
    bool isNamed = false;
    for (QString& part : result) {
        isNamed = isNamed || part.contains("%f"_L1);
        // The name of the file comes last, since it may hold the others.
        part.replace("%l"_L1, QString::number(qMax(1, place.line)));
        part.replace("%c"_L1, QString::number(qMax(1, place.column)));
        part.replace("%f"_L1, place.file);
    }
    if (!isNamed && !result.isEmpty())
        result.append(place.file);
    return result;
}

bool AuthorEditor::open(const QString& command, const AuthorPlace& place)
{
    QStringList line = commandLine(command, place);
    if (line.isEmpty())
        return QDesktopServices::openUrl(QUrl::fromLocalFile(place.file));
    const QString program = line.takeFirst();
    return QProcess::startDetached(program, line);
}

} // namespace Vidlets
