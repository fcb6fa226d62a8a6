// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEWALK_H
#define VLKEYTABLEWALK_H

#include <Vidlets/VLIndexHooks.h>

#include <QList>
#include <QString>

/**
 * Where control files lie in data paths: what the walk of the manager comes across, in its order,
 * on any thread.
 *
 * Internal to the host kit.
 */
namespace Vidlets::KeyTableWalk {

struct Package
{
    /// The canonical path of the package.
    QString root;
    /// Where its control files lie if there is such a directory; absolute.
    QString controlPath;
};

/// A file that may be a control file.
struct File
{
    /// Both as the walk of the manager hands them to an index; the root is null where the file was
    /// not met in a data path.
    QString path;
    QString root;
    VLFileStamp stamp;
};

/// Returns the packages in @p dataPath.
QList<Package> packagesIn(const VLDataPath& dataPath);

/// Returns the files in the control directory @p directory, given canonically, of the package
/// @p root.
QList<File> filesIn(const QString& directory, const QString& root);

} // namespace Vidlets::KeyTableWalk

#endif
