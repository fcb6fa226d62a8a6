// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef CLIPLOADER_H
#define CLIPLOADER_H

#include <Vidlets/VLVideoSourceFFMPEG.h>

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <atomic>
#include <memory>

/// Runs the event loop until @p source has decoded the clip that it was given, to the end.
void waitUntilDecoded(Vidlets::VLVideoSource& source, quint64 atLeastFrames);

/**
 * Decodes clips into a cache, one after the other.
 *
 * One source does for all of them: a source that is destroyed leaves its frames allocated, while
 * the next clip replaces those of the one before.
 */
class ClipLoader : public QObject
{
public:
    ClipLoader();
    /// Decodes with @p source, which is running.
    explicit ClipLoader(Vidlets::VLVideoSource& source);

    /// Decodes the clip at @p path, which has @p frames, to its end. Gives the seconds that it
    /// took, without the wait for the thread to notice. The clip must not be the one before.
    double load(const QString& path, int frames);

    /// The number of frames in the cache.
    quint64 frameCount();

private:
    void follow();

    const std::unique_ptr<Vidlets::VLVideoSource> m_ownSource; ///< Null where it is another's.
    Vidlets::VLVideoSource& m_source;
    QElapsedTimer m_clock;
    std::atomic<qint64> m_startNs = 0;
    std::atomic<qint64> m_endNs = 0;
};

#endif
