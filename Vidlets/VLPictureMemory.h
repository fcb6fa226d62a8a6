// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLPICTUREMEMORY_H
#define VLPICTUREMEMORY_H

#include <QImage>

/**
 * Memory for pictures that goes back to the system with each of them.
 *
 * What the heap gets back it may keep for the thread that asked for it, and each clip has a thread
 * of its own. Internal to the library. Any thread may call it.
 */
namespace Vidlets::PictureMemory {

/// Returns a picture of Format_RGB32 that is not filled yet, with @p bytesPerLine from row to row
/// and @p spareBytes behind the last; a null image where there is no memory for it.
QImage picture(const QSize& size, qsizetype bytesPerLine, qsizetype spareBytes);

} // namespace Vidlets::PictureMemory

#endif
