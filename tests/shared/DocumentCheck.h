// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef DOCUMENTCHECK_H
#define DOCUMENTCHECK_H

#include <QString>
#include <QStringList>

/**
 * What the documents say about the sources, compared with the sources.
 *
 * @p root is the top of the source tree. Each operation returns its findings, one line each; none
 * means that all is well.
 */
namespace DocumentCheck {

/// Tests that docs/behaviour.md names, as `program: function`, and that do not exist.
QStringList unknownTests(const QString& root);

/// Keys of the settings store that docs/host-guide.md has no row for, and rows without such a key.
QStringList missingSettings(const QString& root);

/// Keys of the workbench's tips that docs/author-guide.md does not list.
QStringList missingWorkbenchKeys(const QString& root);

/// Pages that no chain of links leads to from README.md.
QStringList unlinkedPages(const QString& root);

/// Links to a file or a heading that is not there.
QStringList brokenLinks(const QString& root);

/// Blocks of code that stand in no example. Indentation and empty lines do not count.
QStringList unquotedBlocks(const QString& root);

/// Sources of examples in directories that are not built, so that what they hold may no longer
/// compile.
QStringList unbuiltExamples(const QString& root);

} // namespace DocumentCheck

#endif
