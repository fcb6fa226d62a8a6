// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORENCODING_H
#define AUTHORENCODING_H

#include <Vidlets/VLXmlReport.h>

#include <QByteArray>
#include <QString>

/// How the bytes of a file of XML stand for characters.
namespace Vidlets::AuthorEncoding {

/// Returns whether @p bytes begin like UTF-16 or UTF-32.
bool isWide(const QByteArray& bytes);

/// Returns the place of the first byte that is no UTF-8; a line of 0 where there is none.
XmlPosition firstInvalidByte(const QByteArray& bytes);

/// Returns the place of the first of @p bytes that does not fit the @p encoding which they declare,
/// or UTF-8 where they declare none; a line of 0 where there is none, or another encoding than
/// UTF-8 and ASCII.
XmlPosition firstWrongByte(const QByteArray& bytes, QString& encoding);

} // namespace Vidlets::AuthorEncoding

#endif
