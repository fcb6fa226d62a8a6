// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLVECTORPICTURE_H
#define VLVECTORPICTURE_H

#include <QByteArray>
#include <QString>
#include <QUrl>

/**
 * What vector pictures load when they are drawn: an SVG may name other pictures and style sheets,
 * which its reader opens without asking.
 *
 * Internal to the library. Pure functions, for any thread. Each goes by the bytes, since a reader
 * does too, whatever the name of a file says.
 */
namespace Vidlets::VectorPicture {

/// Returns whether the picture file @p path is a vector picture that names anything outside of
/// itself, or one that nothing can be told of, since it is packed or very large.
bool fileReachesOut(const QString& path);

/// Returns the same of a picture that an address of the scheme "data" holds.
bool dataReachesOut(const QUrl& url);

/// Returns the same of @p content.
bool reachesOut(const QByteArray& content);

} // namespace Vidlets::VectorPicture

#endif
