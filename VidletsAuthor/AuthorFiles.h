// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORFILES_H
#define AUTHORFILES_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// The only way of the tools for authors to the files of a package: regular files alone are opened,
/// so that neither a pipe nor a device keeps them waiting.
namespace Vidlets::AuthorFiles {

enum class Kind {
    File,
    Directory,
    Link,
    Other
};

struct Entry
{
    /// As it can be shown; see isNamed.
    QString name;
    Kind kind = Kind::Other;
    /// Whether the name is UTF-8: any other is found by neither Qt nor the library.
    bool isNamed = true;
};

/// Above that a file is not read as text.
inline constexpr qint64 kMaxTextBytes = qint64(64) * 1024 * 1024;

/// Returns the path of @p name in @p directory. What lies in the current directory, ".", has no
/// "./" before it, so that one file has one path, however it was come to.
QString join(const QString& directory, const QString& name);

/// Returns whether the clean @p path is @p directory or lies below it; ".", too, is a directory.
bool isBelow(const QString& directory, const QString& path);

/// Returns what leads from @p directory to the clean @p path below it.
QString below(const QString& directory, const QString& path);

/// Returns what the directory @p path holds, by name; nothing where it cannot be read.
std::optional<QList<Entry>> list(const QString& path);

/// Returns the folders below @p root and itself; no link is followed.
QStringList foldersBelow(const QString& root);

/// Returns the content of the regular file @p path; nothing where it is none, cannot be read or is
/// larger than @p limit bytes, with the @p reason as the end of a sentence.
std::optional<QByteArray> read(const QString& path, QString& reason, qint64 limit = kMaxTextBytes);

} // namespace Vidlets::AuthorFiles

#endif
