// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorTemplate.h"

#include "AuthorPackages.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace Vidlets::AuthorTemplate {

namespace {

bool isUsable(const QString& directory, QString& reason)
{
    const QString absolute = QDir::cleanPath(QFileInfo(directory).absoluteFilePath());
    const QString name = QFileInfo(absolute).fileName();
    if (!name.endsWith(packageSuffix()) || name == packageSuffix()) {
        reason = u"The name of a package ends in \".vidlets\", as in \"First.vidlets\"."_s;
        return false;
    }
    static const QRegularExpression separators(u"[,;\\s]"_s);
    if (name.contains(separators)) {
        reason =
            u"\"search\" could not name \"%1\": blanks, commas and semicolons separate names."_s
                .arg(name);
        return false;
    }
    if (name.startsWith(u'.')) {
        reason = u"\"%1\" would be hidden: its name begins with a point."_s.arg(name);
        return false;
    }
    const QFileInfo info(absolute);
    if (info.isSymLink() || (info.exists() && !info.isDir())) {
        reason = u"\"%1\" is no directory."_s.arg(directory);
        return false;
    }
    const bool isEmpty = QDir(absolute).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System
                                                | QDir::NoDotAndDotDot);
    if (info.exists() && !isEmpty) {
        reason = u"\"%1\" is not empty."_s.arg(directory);
        return false;
    }
    return true;
}

bool copyFile(const QString& from, const QString& to)
{
    // What the system has installed may be for reading alone; what an author begins with is not.
    return QDir().mkpath(QFileInfo(to).path()) && QFile::copy(from, to)
        && QFile::setPermissions(
               to, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
}

} // namespace

QString find()
{
    const QString programs = QCoreApplication::applicationDirPath();
    for (const QLatin1StringView place : {"../share/vidlets/template"_L1, "template"_L1}) {
        const QFileInfo info(QDir(programs).filePath(place));
        if (info.isDir())
            return info.canonicalFilePath();
    }
    return QString();
}

bool create(const QString& source, const QString& directory, QString& reason)
{
    if (!isUsable(directory, reason))
        return false;
    const QDir from(source);
    const QDir to(directory);
    QDirIterator it(source, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    bool isAny = false;
    while (it.hasNext()) {
        const QString file = it.next();
        const QString target = to.filePath(from.relativeFilePath(file));
        if (!copyFile(file, target)) {
            reason = u"\"%1\" cannot be written."_s.arg(target);
            return false;
        }
        isAny = true;
    }
    if (!isAny)
        reason = u"There is no template: \"%1\" is empty."_s.arg(source);
    return isAny;
}

} // namespace Vidlets::AuthorTemplate
