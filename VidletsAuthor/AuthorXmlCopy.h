// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORXMLCOPY_H
#define AUTHORXMLCOPY_H

#include <QString>
#include <QStringList>

class QXmlStreamReader;

/// Takes parts of an XML file over as they are, for programs that write it anew.
namespace Vidlets::AuthorXmlCopy {

/// Returns @p text with its signs as they have to stand in a file. Line ends and other control
/// characters stay.
QString protectedText(const QString& text);

/**
 * Returns the comment, the processing instruction or the whole element at which @p reader is, and
 * moves it to its end; empty at anything else.
 *
 * Names keep their prefixes only if @p reader does not process namespaces.
 */
QString take(QXmlStreamReader& reader);

/// Moves @p reader to the next child of the element in which it is, and takes what stands in front
/// of it over to @p kept. False at the end of the element, and of what can be read.
bool nextChild(QXmlStreamReader& reader, QStringList& kept);

} // namespace Vidlets::AuthorXmlCopy

#endif
