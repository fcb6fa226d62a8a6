// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORCLIPSTRIP_H
#define AUTHORCLIPSTRIP_H

#include <QImage>
#include <QSize>
#include <QString>

namespace Vidlets {

/// A clip as a strip of pictures, from its first to its last.
struct AuthorClipStrip
{
    /// Null where the clip cannot be opened.
    QImage image;
    /// Of the pictures that the library delivers.
    int frames = 0;
    QSize frameSize;
    double frameRate = 0.0;

    /// Decodes the clip @p path as the library does, and takes its pictures by number. Waits for
    /// the end of the clip; one that takes more memory than clips usually may is cut off.
    static AuthorClipStrip of(const QString& path);
};

} // namespace Vidlets

#endif
