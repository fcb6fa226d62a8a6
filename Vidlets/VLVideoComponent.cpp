// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVideoComponent.h"

#include "VLVideoController.h"
#include "VLVideoSourceFFMPEG.h"
#include "VLView.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QPainter>
#include <QUrl>

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
    m_controller->start(QThread::InheritPriority);
    m_source->start(QThread::InheritPriority);
}

VLVideoComponent::~VLVideoComponent()
{
    // The controller first, since it walks over the source's frames.
    m_controller->quit();
    m_source->quit();
    m_source->wait(QDeadlineTimer(QDeadlineTimer::Forever));
    m_controller->wait(QDeadlineTimer(QDeadlineTimer::Forever));
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

    const QString path = m_view->findResource(name);
    m_sourceText = name;
    if (QFileInfo(path).isFile())
        m_controller->setSource(QUrl::fromLocalFile(path));
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
