// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipLoader.h"

#include "FrameWatch.h"
#include "Report.h"

#include <QUrl>

namespace {

// A decoder holds some pictures back, and at the end of the file they are not asked for.
constexpr int kWithheldFrames = 8;
constexpr double kNsPerSecond = 1e9;

} // namespace

void waitUntilDecoded(Vidlets::VLVideoSource& source, quint64 atLeastFrames)
{
    // Idle again means that the thread queues no more actions of its own: it does so without a
    // lock, and the next clip would come in between.
    waitUntil(
        [&source, atLeastFrames] {
            return source.loadedFrameCount() >= atLeastFrames
                && source.action() == Vidlets::VLVideoSource::ActionIdle;
        },
        "the end of a clip");
}

ClipLoader::ClipLoader()
    : m_ownSource(std::make_unique<Vidlets::VLVideoSourceFFMPEG>(nullptr))
    , m_source(*m_ownSource)
{
    follow();
    m_source.start(QThread::InheritPriority);
}

ClipLoader::ClipLoader(Vidlets::VLVideoSource& source)
    : m_source(source)
{
    follow();
}

void ClipLoader::follow()
{
    m_clock.start();
    connect(
        &m_source, &Vidlets::VLVideoSource::sourceChanged, this,
        [this] { m_startNs = m_clock.nsecsElapsed(); }, Qt::DirectConnection);
    connect(
        &m_source, &Vidlets::VLVideoSource::streamEnded, this,
        [this] { m_endNs = m_clock.nsecsElapsed(); }, Qt::DirectConnection);
}

double ClipLoader::load(const QString& path, int frames)
{
    m_endNs = 0;
    Report::verify(m_source.setSource(QUrl::fromLocalFile(path)), "the source takes the clip");
    waitUntil([this] { return m_endNs != 0; }, "the end of a clip");
    waitUntilDecoded(m_source, 1);
    Report::verify(frameCount() + kWithheldFrames >= static_cast<quint64>(frames),
                   "the clip is decoded to its end");
    return static_cast<double>(m_endNs - m_startNs) / kNsPerSecond;
}

quint64 ClipLoader::frameCount()
{
    return m_source.loadedFrameCount();
}
