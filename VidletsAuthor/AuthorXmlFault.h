// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORXMLFAULT_H
#define AUTHORXMLFAULT_H

#include <Vidlets/VLXmlReport.h>

#include <QByteArray>
#include <QList>
#include <QString>

namespace Vidlets {

/**
 * A place that keeps a file from being well-formed, by a second reader.
 *
 * The library's reader lets a few faults pass, and tells the place of others where they begin. The
 * second one is that of xmllint and of most editors.
 */
struct AuthorXmlFault
{
    enum class Kind {
        Broken,
        Encoding,
        AfterRoot
    };

    XmlPosition position;
    Kind kind = Kind::Broken;
    QString message;
};

namespace AuthorXmlFaults {

/// Returns the first fault, before it the first of those that do not end the reading by themselves;
/// nothing where the file is well-formed. Opens no other file.
QList<AuthorXmlFault> in(const QByteArray& bytes);

} // namespace AuthorXmlFaults

} // namespace Vidlets

#endif
