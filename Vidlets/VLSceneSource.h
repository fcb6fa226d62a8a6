// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSCENESOURCE_H
#define VLSCENESOURCE_H

#include "VLContentRoots.h"

#include <QString>
#include <QUrl>

/**
 * What can be told from the text of files that scenes are made of.
 *
 * Internal to the library. Pure functions, for any thread.
 */
namespace Vidlets::SceneSource {

/// Returns the first address in @p text that leads to a file outside of @p roots: one of the scheme
/// "file" anywhere, or the one of a picture in HTML or Markdown, which counts from @p base. Null
/// where there is none.
QString strayAddress(const QString& text, const QUrl& base, const VLContentRoots& roots);

/// The same for the file @p path, which addresses in it count from.
QString strayAddressInFile(const QString& path, const VLContentRoots& roots);

/// Returns whether the qmldir file @p path asks for native code.
bool namesPlugin(const QString& path);

/// Returns whether a module of Qt opens files, databases or connections by ways of its own.
/// @p modulePath is relative to where Qt keeps its modules.
bool reachesOut(const QString& modulePath);

} // namespace Vidlets::SceneSource

#endif
