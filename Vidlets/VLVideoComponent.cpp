// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVideoComponent.h"

#include "VLClipSafeguards.h"
#include "VLManager.h"
#include "VLVideoController.h"
#include "VLVideoControllerPrivate.h"
#include "VLVideoSourceFFMPEG.h"
#include "VLVideoSourcePrivate.h"
#include "VLView.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QPainter>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace Vidlets {

VLVideoComponent::VLVideoComponent(QQuickPaintedItem* parent)
    : QQuickPaintedItem(parent)
    , m_source(new VLVideoSourceFFMPEG(this))
    , m_controller(new VLVideoController(m_source, this))
{
    connect(m_controller, &VLVideoController::displayFrame, this, &VLVideoComponent::frameReady);
    setFlag(QQuickItem::ItemHasContents, true);
    connect(m_controller, &VLVideoController::stateChanged, this,
            &VLVideoComponent::sourceChangedState);
    connect(m_controller, &VLVideoController::positionChanged, this,
            &VLVideoComponent::controllerPositionChanged);
    connect(m_controller, &VLVideoController::heightChanged, this,
            &VLVideoComponent::contentHeightChanged);
    connect(m_controller, &VLVideoController::widthChanged, this,
            &VLVideoComponent::contentWidthChanged);
    connect(m_controller, &VLVideoController::loadProgressChanged, this,
            &VLVideoComponent::loadProgressChanged);
    connect(this, &QQuickItem::windowChanged, this, &VLVideoComponent::followWindow);
    m_controller->start(QThread::InheritPriority);
    m_source->start(QThread::InheritPriority);
}

VLVideoComponent::~VLVideoComponent()
{
    // The base leaves its window when there is no item any more.
    disconnect(this, &QQuickItem::windowChanged, this, nullptr);
    readSafeguards();
    // With prompting both threads end at the same time.
    const bool release = VLVideoSourcePrivate::of(m_source)->safeguards().release;
    if (VLVideoSourcePrivate::of(m_source)->wakeUp.isPrompt())
        m_source->setShouldQuit();
    // The controller first, since it walks over the source's frames.
    m_controller->quit();
    m_source->quit();
    m_source->wait(QDeadlineTimer(QDeadlineTimer::Forever));
    m_controller->wait(QDeadlineTimer(QDeadlineTimer::Forever));
    VLVideoSourcePrivate::of(m_source)->sayWarnings();
    if (release)
        releaseRecords();
}

void VLVideoComponent::followWindow(QQuickWindow* window)
{
    // An item on its way out goes by the settings that it had.
    if (!window)
        return;
    const auto* view = qobject_cast<VLView*>(window);
    m_manager = view ? view->manager() : nullptr;
    applySafeguards(VLClipSafeguards::of(m_manager));
}

/// Reads what the settings ask for by now. Those of a manager that is gone hold on.
void VLVideoComponent::readSafeguards()
{
    if (m_manager)
        applySafeguards(VLClipSafeguards::of(m_manager));
}

void VLVideoComponent::applySafeguards(const VLClipSafeguards& safeguards)
{
    VLVideoSourcePrivate::of(m_source)->setSafeguards(safeguards, m_manager);
    VLVideoControllerPrivate::of(m_controller)->setPrompt(safeguards.prompt);
}

/// Has all that the two threads own go with them. A thread that was terminated may have left a lock
/// or a record half changed, so both keep their things.
void VLVideoComponent::releaseRecords()
{
    VLVideoSourcePrivate* source = VLVideoSourcePrivate::of(m_source);
    VLVideoControllerPrivate* controller = VLVideoControllerPrivate::of(m_controller);
    const bool isWhole = !source->wasTerminated && !controller->wasTerminated;
    source->isReleased = isWhole;
    controller->isReleased = isWhole;
}

/// The file of the clip @p name; null where there is none to open.
QString VLVideoComponent::fileOf(const QString& name) const
{
    const VLClipSafeguards safeguards = VLVideoSourcePrivate::of(m_source)->safeguards();
    // Kept: by default the name that stands in for a clip that is not found may be that of a file
    // in the working directory, which is opened then.
    const bool isStrict = safeguards.guard || safeguards.confine;
    QString path = isStrict ? m_view->searchResource(name).path : m_view->findResource(name);
    if (QFileInfo(path).isFile())
        return path;
    if (safeguards.guard && !path.isNull() && !name.isEmpty())
        ClipSafeguards::warn(m_manager, path, u"%1: not a regular file"_s.arg(path));
    return QString();
}

/// Kept: by default the clip before stays whole where there is no file for the next. @p mayPlay
/// tells of one that has not been stopped.
void VLVideoComponent::releaseClip(bool mayPlay)
{
    VLVideoSourcePrivate* source = VLVideoSourcePrivate::of(m_source);
    if (!source->safeguards().release)
        return;
    if (mayPlay)
        m_controller->setSource(QUrl());
    source->unload();
}

QString VLVideoComponent::source() const
{
    return m_sourceText;
}

void VLVideoComponent::setSource(const QString& name)
{
    if (name.isEmpty()) {
        m_controller->setSource(QUrl(name));
        m_sourceText = name;
    }
    // Without a view there is nothing to find a file with, and the name is dropped.
    if (!window())
        return;
    m_view = qobject_cast<VLView*>(window());
    if (!m_view)
        return;
    readSafeguards();

    const QString path = fileOf(name);
    m_sourceText = name;
    if (!path.isNull())
        m_controller->setSource(QUrl::fromLocalFile(path));
    else
        releaseClip(!name.isEmpty());
    // The picture on screen stays until the next repaint: none is asked for here.
    m_frame = VLVideoFrame();
}

VLVideoComponent::VideoState VLVideoComponent::state() const
{
    switch (m_controller->state()) {
    case VLVideoController::StatePaused:
        return pausedState;
    case VLVideoController::StatePlaying:
        return playingState;
    }
    return resetState;
}

void VLVideoComponent::setState(VideoState state)
{
    switch (state) {
    case resetState:
        m_controller->streamEnded();
        break;
    case pausedState:
        m_controller->pause();
        break;
    case playingState:
        m_controller->play();
        break;
    }
}

qlonglong VLVideoComponent::position() const
{
    return static_cast<qlonglong>(m_controller->position());
}

void VLVideoComponent::setPosition(qlonglong position)
{
    m_controller->setPosition(static_cast<quint64>(position));
}

double VLVideoComponent::progress() const
{
    return m_controller->progress();
}

void VLVideoComponent::setProgress(double progress)
{
    m_controller->setProgress(progress);
}

QString VLVideoComponent::searchPath() const
{
    return m_searchPath;
}

void VLVideoComponent::setSearchPath(const QString& path)
{
    m_searchPath = path;
    Q_EMIT searchPathChanged();
}

bool VLVideoComponent::isScrubbing() const
{
    return m_controller->isScrubbing();
}

void VLVideoComponent::setScrubbing(bool scrubbing)
{
    m_controller->setScrubbing(scrubbing);
}

double VLVideoComponent::contentHeight() const
{
    return m_controller->frameHeight();
}

double VLVideoComponent::contentWidth() const
{
    return m_controller->frameWidth();
}

double VLVideoComponent::loadProgress() const
{
    return m_controller->loadProgress();
}

void VLVideoComponent::paint(QPainter* painter)
{
    // Qt warns of scaling nothing.
    if (m_frame.isNull())
        return;
    if (m_view && m_view->getScaledSize(1) != 1) {
        const int width = m_view->getScaledSize(m_frame.width());
        const int height = m_view->getScaledSize(m_frame.height());
        painter->drawImage(
            QPoint(0, 0),
            m_frame.scaled(width, height, Qt::IgnoreAspectRatio, Qt::FastTransformation));
        return;
    }
    painter->drawImage(QPoint(0, 0), m_frame);
}

void VLVideoComponent::frameReady()
{
    const VLVideoFrame frame = m_controller->currentFrame();
    if (frame.isNull())
        return;
    m_frame = frame;
    if (m_frame.height() != m_lastHeight) {
        Q_EMIT heightChanged();
        m_lastHeight = m_frame.height();
    }
    const double progress = m_controller->progress();
    if (progress != m_lastProgress) {
        m_lastProgress = progress;
        Q_EMIT progressChanged();
        Q_EMIT positionChanged();
    }
    update(QRect());
}

void VLVideoComponent::play()
{
    m_controller->play();
}

void VLVideoComponent::pause()
{
    m_controller->pause();
}

void VLVideoComponent::sourceChangedState()
{
    Q_EMIT stateChanged();
}

void VLVideoComponent::rewindToStart()
{
    m_controller->pause();
    m_controller->setProgress(0.0);
    Q_EMIT progressChanged();
    Q_EMIT positionChanged();
}

void VLVideoComponent::controllerPositionChanged()
{
    m_lastProgress = m_controller->progress();
    Q_EMIT positionChanged();
    Q_EMIT progressChanged();
}

} // namespace Vidlets

#include "moc_VLVideoComponent.cpp"
