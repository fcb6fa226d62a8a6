// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef PACKAGEBUILDER_H
#define PACKAGEBUILDER_H

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/**
 * A data path with packages, in a temporary directory that goes with the object.
 *
 * All paths that it gives are canonical.
 */
class PackageBuilder
{
public:
    PackageBuilder();

    /// The data path.
    QString dataPath() const;
    /// The path of @p relativePath below the data path.
    QString path(const QString& relativePath) const;

    /// The root of the package @p package, given with its extension; made if need be.
    QString packageRoot(const QString& package);

    /// Writes @p content to @p relativePath below the data path, with the directories above it.
    /// Returns the file's path.
    QString write(const QString& relativePath, const QByteArray& content);

    /// Writes a control file into the directory "Control" of @p package. Returns its path.
    QString writeControlFile(const QString& package, const QString& fileName,
                             const QByteArray& content);

    /// Writes a control file with one tip for @p key. @p tipXml stands inside the tip.
    QString writeTip(const QString& package, const QString& fileName, const QString& key,
                     const QByteArray& tipXml = QByteArray());

    /// Writes a main scene of that size, in pixels, into @p package. Returns its path.
    QString writeScene(const QString& package, int width = 120, int height = 80);

private:
    QTemporaryDir m_directory;
    QString m_root;
};

#endif
