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

/// Returns @p picture with 32 bits a pixel, in memory of its own; a null image where there is none.
QImage copyOf(const QImage& picture);

} // namespace Vidlets::PictureMemory

#endif
