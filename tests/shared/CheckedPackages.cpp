// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "CheckedPackages.h"

#include <QDebug>
#include <QFileInfo>

#include <VidletsAuthor/AuthorCheck.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

QList<AuthorFinding> checked(const QStringList& paths)
{
    AuthorCheck check;
    QString reason;
    for (const QString& path : paths) {
        if (!check.add(path, reason))
            qWarning().noquote() << reason;
    }
    return check.run();
}

QStringList places(const QList<AuthorFinding>& findings, const QString& rule)
{
    QStringList result;
    for (const AuthorFinding& finding : findings) {
        if (finding.rule == rule)
            result.append(
                u"%1:%2"_s.arg(QFileInfo(finding.file).fileName()).arg(finding.position.line));
    }
    return result;
}
