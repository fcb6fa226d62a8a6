// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef KNOWNREMAINS_H
#define KNOWNREMAINS_H

#include "AllocationCounter.h"
#include <Vidlets/VLIndex.h>

#include <QSize>
#include <QString>

/**
 * What is left allocated on purpose, each part measured by itself: by a call of the one operation
 * that leaves it, or by making the same objects anew.
 */
namespace KnownRemains {

/// The record of a controller that has gone.
AllocationCounter::Remains controllerRecord();
/// The records of a source that has gone.
AllocationCounter::Remains sourceRecords();
/// The room of a source's queue after one clip.
AllocationCounter::Remains orderQueue();
/// The URL of a clip, the name of its cache and that of its file.
AllocationCounter::Remains clipNames(const QString& clipPath);
/// The cache of a clip with its frames, the picture that the decoder writes into, and what Qt keeps
/// of the decoder's thread for as long as one of its objects lives.
AllocationCounter::Remains cachedFrames(const QSize& size, int frames);
/// The buffer that pictures are converted into.
AllocationCounter::Remains pictureBuffer(const QSize& size);
/// The scaler that converts them.
AllocationCounter::Remains scaler(const QSize& size);

/// The connection of a popup to the control that it is shown for: one more at each show.
AllocationCounter::Remains connection();
/// The connection of a scene's engine to the view that it is given by name: one
/// more at each show.
AllocationCounter::Remains sceneName();
/// The root above the content of a tip.
AllocationCounter::Remains contentRoot(Vidlets::VLIndex& index, const QString& key);

} // namespace KnownRemains

#endif
