// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORCLIPREADER_H
#define AUTHORCLIPREADER_H

#include <QSize>
#include <QString>

namespace Vidlets {

/// What a file of a clip holds, and what the library makes of it.
struct AuthorClip
{
    /// Returns what the pictures take in memory when all of them are there.
    qint64 memoryBytes() const;

    /// Why there is no clip, as the end of a sentence; empty where there is one.
    QString fault;
    /// The name of its codec, as people know it.
    QString codec;
    /// Whether the codec is one that every host plays.
    bool isUsualCodec = false;
    bool hasSound = false;
    QSize size;
    /// The pictures per second that the file names; 0 where it names none.
    double rate = 0.0;
    /// Whether the pictures come at that rate.
    bool isSteady = true;
    /// The pictures that the library gives.
    qint64 pictures = 0;
    /// Those that it never gives, since the decoder still holds them when the file ends.
    qint64 lost = 0;
    /// The parts of the file that give no picture, since they are damaged.
    qint64 damaged = 0;
};

/**
 * Reads clips as the library does: one packet after the other, on one thread, and without asking
 * the decoder for what it still holds at the end.
 *
 * Nothing but the file itself is opened, and only if it is a regular one. The work on a file has a
 * limit; what lies behind that is counted, but not decoded.
 */
namespace AuthorClipReader {

AuthorClip read(const QString& path);

} // namespace AuthorClipReader

} // namespace Vidlets

#endif
