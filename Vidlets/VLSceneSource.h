// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSCENESOURCE_H
#define VLSCENESOURCE_H

#include "VLContentRoots.h"

#include <QString>
#include <QStringList>
#include <QUrl>

/**
 * What can be told from the text of files that scenes are made of.
 *
 * Internal to the library. Pure functions, for any thread.
 */
namespace Vidlets::SceneSource {

/// Returns whether @p address, which counts from @p base, is that of a file that may not be read:
/// one outside of @p roots, one that is no regular file, or a vector picture that names others.
bool leadsOut(const QString& address, const QUrl& base, const VLContentRoots& roots);

/// Returns the addresses in the program or text @p text that a document would load by itself, and
/// that lead to a file outside of @p roots: pictures, backgrounds and style sheets. They count from
/// @p base. One that hides its letters counts as outside. It goes by what such text looks like, and
/// may miss some.
QStringList strayAddresses(const QString& text, const QUrl& base, const VLContentRoots& roots);

/// Returns what the program @p path spells that it may not have, without its lines of comment: such
/// addresses, which count from it, each outer one of the scheme "file", each outer one at all where
/// a Canvas loads pictures, and "Qt.openUrlExternally" where that is not called by the scene
/// itself. Gives @p path for one that cannot be read without harm.
QStringList strayAddressesInFile(const QString& path, const VLContentRoots& roots);

/// Returns whether a program @p path can be read to its end without harm: it is a regular file of a
/// sensible size, or none at all.
bool isReadable(const QString& path);

/// Returns whether the qmldir file @p path asks for native code, or cannot be read without harm.
bool namesPlugin(const QString& path);

/// Returns whether a module may open files, databases or connections by ways of its own: all but
/// those of Qt that are known to open none. @p modulePath, the path of a file in its directory, is
/// relative to where Qt keeps its modules.
bool reachesOut(const QString& modulePath);

} // namespace Vidlets::SceneSource

#endif
