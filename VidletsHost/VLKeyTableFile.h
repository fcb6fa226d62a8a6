// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEFILE_H
#define VLKEYTABLEFILE_H

#include <Vidlets/VLIndexHooks.h>

#include <QList>
#include <QString>
#include <QStringList>

namespace Vidlets {

/// What the tag of a row is in its control file.
enum class VLKeyTableRowKind : quint8 {
    Tip,    ///< The one tip of its key.
    Hidden, ///< The key is in the file, and no lookup finds it there.
    Nested  ///< The one tag within the root that is built for every key; its row has no key.
};

/// Where a tip stands in its control file. Internal to the host kit.
struct VLKeyTableRow
{
    QString key;
    /// In bytes from the start of the file; 0 where only a pass over the whole file finds the tip.
    qint64 start = 0;
    qint64 length = 0;
    /// Of the head of the file and the bytes of the tip.
    quint32 checksum = 0;
    VLKeyTableRowKind kind = VLKeyTableRowKind::Tip;

    friend bool operator==(const VLKeyTableRow& left, const VLKeyTableRow& right)
    {
        return left.key == right.key && left.start == right.start && left.length == right.length
            && left.checksum == right.checksum && left.kind == right.kind;
    }
};

/// A fault of a file; the line is 0 where it is of the file as a whole.
struct VLKeyTableProblem
{
    XmlPosition position;
    /// Null where there is none.
    QString text;
};

/// Whom a control file serves.
enum class VLKeyTableState : quint8 {
    Absent,   ///< There is no such file: a lookup passes over it without a word.
    Broken,   ///< Nobody: the file cannot be read, or is not to be.
    Survived, ///< It breaks between two tips: hosts without ckGuardContent.
    Foreign,  ///< Well-formed, and its root is a tip: hosts without ckGuardContent.
    Whole     ///< Each host.
};

/// How the bytes of a control file are read.
enum class VLKeyTableUnit : quint8 {
    None,       ///< Not in parts.
    Byte,       ///< One byte for each character of ASCII.
    LittleWord, ///< Two bytes, the lower one first.
    BigWord     ///< Two bytes, the higher one first.
};

/// What one pass over a control file gives. Internal to the host kit; a value.
struct VLKeyTableFile
{
    VLFileStamp stamp;
    VLKeyTableState state = VLKeyTableState::Absent;
    /// Whether the file had been left alone for so long that no later change can have its stamp.
    bool isSettled = false;
    /// Whether its head marks it as a control file; only where that was looked at.
    bool isIndexed = false;
    VLKeyTableUnit unit = VLKeyTableUnit::None;
    /// From the start of the file to the end of the root's start tag, in bytes.
    qint64 headLength = 0;
    /// The qualified name of the root.
    QString rootTag;
    /// The locale that the root names.
    QString locale;
    /// In the order of the file; a key is in one row at most.
    QList<VLKeyTableRow> rows;
    /// The keys that VLIndex::keys() lists for the file; only where they were asked for.
    QStringList listedKeys;
    VLKeyTableProblem problem;
};

} // namespace Vidlets

#endif
