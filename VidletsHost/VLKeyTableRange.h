// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLERANGE_H
#define VLKEYTABLERANGE_H

#include "VLKeyTableFile.h"

#include <QString>

#include <memory>

namespace Vidlets {

class VLXmlElement;

/**
 * Reads one tip out of its control file.
 *
 * What is parsed are the head of the file, which has its encoding, its document type and the root's
 * start tag, then the bytes of the tip, then an end tag. All of it must be well-formed, have the
 * checksum of the row and give exactly one element for the key, else the file is not what it was.
 *
 * Internal to the host kit; used on the user-interface thread.
 */
namespace KeyTableRange {

enum class Outcome : quint8 {
    Found,
    Absent,  ///< There is no such file any more.
    Changed, ///< The file is another by now, and is to be read anew.
    Unlike   ///< The file is the same, and these bytes are not the tip.
};

struct Result
{
    Outcome outcome = Outcome::Absent;
    /// The root, with the tip as its one child and without text; null without a tip.
    std::unique_ptr<VLXmlElement> root;
};

/// What is needed of a file besides the row.
struct Source
{
    QString path;
    VLFileStamp stamp;
    VLKeyTableUnit unit = VLKeyTableUnit::None;
    qint64 headLength = 0;
    /// The qualified name of the root.
    QString rootTag;
};

/// Reads the tip of @p row for @p key.
Result read(const Source& source, const VLKeyTableRow& row, const QString& key);

/// Reads the whole file for @p key, as VLIndex::load() does where that is survived. The outcome is
/// Unlike where the file has no tip for the key.
Result readWhole(const Source& source, const QString& key);

} // namespace KeyTableRange

} // namespace Vidlets

#endif
