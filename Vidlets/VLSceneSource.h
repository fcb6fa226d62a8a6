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

/// Returns the addresses in the HTML or Markdown @p text that a document would load by itself, and
/// that lead to a file outside of @p roots: pictures, backgrounds and style sheets. They count from
/// @p base. One that hides its letters counts as outside.
QStringList strayAddresses(const QString& text, const QUrl& base, const VLContentRoots& roots);

/// The same for the text of the program @p path, which addresses in it count from, and in addition
/// each address of the scheme "file" in it.
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
