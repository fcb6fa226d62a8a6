// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHOREDITOR_H
#define AUTHOREDITOR_H

#include <QString>
#include <QStringList>

namespace Vidlets {

/// A place in a file that an author may want to go to.
struct AuthorPlace
{
    QString file;
    /// From 1; 0 for the file as a whole.
    int line = 0;
    int column = 0;
};

/// The author's editor.
namespace AuthorEditor {

/// Reads a place from the beginning of what the library or the QML engine says: "FILE:LINE:COLUMN:
/// text". The file is empty where there is none.
AuthorPlace placeIn(const QString& message);

/// Returns the program of @p command with its arguments, in which "%f", "%l" and "%c" stand for the
/// file, the line and the column of @p place. The file comes last where none of them is there.
QStringList commandLine(const QString& command, const AuthorPlace& place);

/// Opens @p place by @p command, or, where that is empty, with what the desktop opens such files
/// with. Returns whether a program was started.
bool open(const QString& command, const AuthorPlace& place);

} // namespace AuthorEditor

} // namespace Vidlets

#endif
