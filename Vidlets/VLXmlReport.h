// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLXMLREPORT_H
#define VLXMLREPORT_H

#include <QList>
#include <QString>

namespace Vidlets {

/// A place in a text file; both numbers count from 1.
struct XmlPosition
{
    qint64 line = 0;
    qint64 column = 0;
};

/// What a guarded parse tells beside its elements. Internal to the library.
struct XmlReport
{
    /// Why the document is not well-formed, in the reader's words; null where it is.
    QString fault;
    XmlPosition faultPosition;
    /// How many tags were open at the fault.
    qsizetype openTags = 0;
    /// The qualified name of the root, built or not; null where there is none.
    QString rootTag;
    /// Where its start tag ends.
    XmlPosition rootPosition;
    /// Where the root was built: its place, then those of the children that were built for it.
    QList<XmlPosition> positions;
};

} // namespace Vidlets

#endif
