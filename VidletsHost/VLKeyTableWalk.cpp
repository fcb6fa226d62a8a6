// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableWalk.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace Vidlets::KeyTableWalk {

QList<Package> packagesIn(const VLDataPath& dataPath)
{
    const QDir dir(dataPath.path);
    const QFileInfoList entries = dir.entryInfoList(
        {u"*.%1"_s.arg(dataPath.extension)},
        QDir::Dirs | QDir::NoSymLinks | QDir::Readable | QDir::NoDotAndDotDot, QDir::NoSort);
    QList<Package> packages;
    packages.reserve(entries.size());
    for (const QFileInfo& entry : entries) {
        const QDir package(entry.absoluteFilePath());
        packages.append(
            {entry.canonicalFilePath(), package.absoluteFilePath(dataPath.controlDirectory)});
    }
    return packages;
}

QList<File> filesIn(const QString& directory, const QString& root)
{
    const QStringList names = QDir(directory).entryList(
        {u"*.xml"_s}, QDir::Files | QDir::NoSymLinks | QDir::Readable | QDir::NoDotAndDotDot,
        QDir::NoSort);
    QList<File> files;
    files.reserve(names.size());
    for (const QString& name : names) {
        const QString path = directory.endsWith(u'/') ? directory + name : directory + u'/' + name;
        const VLFileStamp stamp = VLIndexHooks::stampAt(path);
        if (stamp != VLFileStamp())
            files.append({path, root, stamp});
    }
    return files;
}

} // namespace Vidlets::KeyTableWalk
