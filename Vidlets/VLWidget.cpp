// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLWidget.h"

#include "VLContentNames.h"
#include "VLContext.h"
#include "VLManager.h"
#include "VLManagerSettings.h"
#include "VLNumbers.h"
#include "VLPopupPlacement.h"
#include "VLSettings.h"
#include "VLView.h"
#include "VLWidgetPrivate.h"
#include "VLXmlElement.h"

#include <QApplication>
#include <QCursor>
#include <QDir>
#include <QFileInfo>
#include <QPropertyAnimation>
#include <QQuickItem>
#include <QScopedValueRollback>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr qreal kFadeInStartOpacity = 0.1;

void startFade(QPropertyAnimation* animation, qreal from, qreal to, int durationMs)
{
    animation->setDuration(durationMs);
    animation->setStartValue(from);
    animation->setEndValue(to);
    animation->start(QAbstractAnimation::KeepWhenStopped);
}

QSize truncatedSizeOf(const QQuickItem* item)
{
    const QRectF bounds = item->boundingRect();
    return {truncatedToInt32(bounds.width()), truncatedToInt32(bounds.height())};
}

} // namespace

VLWidget::VLWidget(VLManager* manager, QWidget* parent)
    : QWidget(parent)
    , m_animation(new QPropertyAnimation(this))
    , m_timer(new QTimer(this))
    , m_manager(manager)
    , d(std::make_unique<VLWidgetPrivate>(this))
{
    m_animation->setPropertyName("windowOpacity");
    m_animation->setTargetObject(d->surface().fadeTarget());
    m_timer->setSingleShot(true);
    if (!Settings::keepPopupWindowFlags(settingsOf(m_manager)))
        setWindowFlags(d->surface().windowFlags());
    connect(m_timer, &QTimer::timeout, this, &VLWidget::hideAnimated);
    m_timer->stop();
}

VLWidget::~VLWidget()
{
    // The popup itself and the widgets inside it die later than this, and must not call back then.
    d->forgetReferences();
    d->hover().endWatch();
    setView(nullptr);
}

void VLWidget::setView(VLView* view)
{
    // At once: the content must not outlive the popup until some later turn of the event loop.
    delete m_view;
    m_view = view;
    if (!m_view)
        return;
    connect(m_view, &VLView::reservedChanged, this, &VLWidget::contentReservedChanged);
    connect(m_view, &VLView::contentSizeChanged, this, &VLWidget::contentResized);
    m_view->setViewPos(0, 0);
}

void VLWidget::SetContainerWidget(QWidget* widget)
{
    m_containerWidget = widget;
}

void VLWidget::checkMousePosition(const QPoint& pos)
{
    // Nothing to stop and nothing to start: what lies at a point takes the window system a while to
    // tell, on each move of the pointer.
    if (!m_timer->isActive() && !d->hidesByItself())
        return;
    if (isSafe(pos)) {
        if (m_timer->isActive())
            m_timer->stop();
        return;
    }
    // A running timer counts from the moment the pointer first left the zone.
    if (!m_timer->isActive())
        setTimer();
}

bool VLWidget::isSafe(const QPoint& pos)
{
    const VLPopupSurface::PointerWindow pointer = d->surface().pointerWindow();
    if (pointer == VLPopupSurface::PointerWindow::Popup)
        return true;
    if (pointer == VLPopupSurface::PointerWindow::Elsewhere)
        return false;
    const QSize margin = Settings::safeZoneMarginPx(settingsOf(m_manager));
    const QRect frame(mapToGlobal(QPoint(0, 0)), frameGeometry().size());
    return frame.adjusted(-margin.width(), -margin.height(), margin.width(), margin.height())
               .contains(pos)
        || d->isOverReference(pos);
}

VLView* VLWidget::view()
{
    return m_view;
}

VLManager* VLWidget::manager()
{
    return m_manager;
}

QWidget* VLWidget::referenceWidget()
{
    return m_referenceWidget;
}

void VLWidget::showWithContent(QObject* reference, const QPoint& pos, VLXmlElement* content,
                               const QString& rootPath)
{
    if (!content)
        return;

    m_referenceWidget =
        reference && reference->isWidgetType() ? static_cast<QWidget*>(reference) : nullptr;
    d->setReference(m_referenceWidget);
    d->hover().beginTip();

    d->putContent(content, rootPath);
    // After the content: the choice of the scene reads its attributes.
    const QFileInfo scene(m_view->uiRootFilePath());

    d->setWantedPosition(pos);
    move(pos);
    d->holdPosition(pos);
    if (isVisible())
        reposition();

    d->loadScene(scene.absoluteFilePath(), rootPath);
    showAnimated();
    VLHostHooks::tellOfTip(m_manager);
}

void VLWidget::reposition()
{
    if (const auto middle = d->middle()) {
        move(PopupPlacement::around(d->availableArea(), frameGeometry().size(), *middle));
        return;
    }
    if (const auto keepOff = d->keepOff()) {
        move(PopupPlacement::besidePointer(d->availableArea(), frameGeometry().size(), *keepOff));
        return;
    }
    const QWidget* framed = window();
    if (!isWindow() && m_containerWidget)
        framed = m_containerWidget->window();

    bool moved = false;
    const QRect geometry = findVisibleGeometry(framed->frameGeometry(), &moved);
    if (!moved)
        return;
    window()->move(geometry.topLeft());
    d->holdPosition(geometry.topLeft());
}

void VLWidget::hideAnimated()
{
    if (!isVisible() || !d->hover().makeWayForHide())
        return;

    const int durationMs = Settings::hideDurationMs(settingsOf(m_manager));
    if (durationMs == 0) {
        hideAnimationFinished();
        return;
    }
    // Connected during a hide only, so that the end of a fade-in hides nothing.
    connect(m_animation, &QAbstractAnimation::finished, this, &VLWidget::hideAnimationFinished);
    startFade(m_animation, d->surface().opacity(), 0.0, durationMs);
    m_timer->stop();
}

void VLWidget::hideAnimationFinished()
{
    if (m_view)
        m_view->resetState();
    hide();
}

void VLWidget::showAnimated()
{
    if (isVisible())
        return;

    const int durationMs = Settings::showDurationMs(settingsOf(m_manager));
    if (durationMs == 0) {
        d->surface().setOpacity(1.0);
        show();
        return;
    }
    d->surface().setOpacity(kFadeInStartOpacity);
    show();
    contentResized();
    startFade(m_animation, kFadeInStartOpacity, 1.0, durationMs);
}

void VLWidget::setTimer()
{
    m_timer->stop();
    if (d->hidesByItself()) {
        const float delayMs = Settings::stayDurationMs(settingsOf(m_manager));
        m_timer->start(truncatedToInt32(static_cast<double>(delayMs)));
    }
}

void VLWidget::contentReservedChanged()
{
    if (!m_view || !m_view->reserved() || !m_manager)
        return;
    QWidget* window = nullptr;
    if (!m_manager->reserve(this, window))
        return;

    const QPoint position = pos();
    if (window)
        d->dockInto(window, position);
    else
        d->floatAt(position);
}

void VLWidget::contentResized()
{
    if (!m_view || !m_view->rootObject() || m_resizing)
        return;
    const QScopedValueRollback<bool> guard(m_resizing, true);

    const QSize sceneSize = truncatedSizeOf(m_view->rootObject());
    if (m_containerWidget) {
        m_containerWidget->setFixedSize(sceneSize);
    }
    if (d->isTended()) {
        d->followScene(sceneSize);
        return;
    }
    if (m_containerWidget) {
        // Kept: no extra pixel here.
        if (!isWindow() && !isVisible()) {
            setFixedSize(sceneSize);
            return;
        }
    }

    QWidget* framed = window();
    const int titleOffset = framed->frameGeometry().top() - framed->geometry().top();
    const PopupPlacement::Placement placement =
        PopupPlacement::place({sceneSize, d->framePosition(), titleOffset, d->availableArea(),
                               d->keepOff(), d->middle()});
    if (placement.moved)
        framed->move(placement.position);
    setFixedSize(placement.size);
    framed->setFixedSize(placement.size);
    d->confirmPosition(placement.position);
}

QRect VLWidget::findVisibleGeometry(QRect geometry, bool* move)
{
    const PopupPlacement::Fit fit = PopupPlacement::fitInto(d->availableArea(), geometry);
    if (move)
        *move = fit.moved;
    return fit.geometry;
}

void VLWidget::showEvent(QShowEvent* /*event*/)
{
    // Where the pointer is takes the window system a while to tell.
    if ((m_timer->isActive() || d->hidesByItself()) && !isSafe(QCursor::pos()))
        setTimer();
    reposition();
    d->beginMapping();
    d->hover().beginWatch();
    if (d->isTended())
        contentResized();
}

void VLWidget::hideEvent(QHideEvent* /*event*/)
{
    d->endMapping();
    d->hover().endWatch();
    d->setHeld(false);
    disconnect(m_animation, &QAbstractAnimation::finished, this, &VLWidget::hideAnimationFinished);
    VLHostHooks::tellOfTip(m_manager);
}

void VLWidget::refWidgetDestroyed(QObject* /*object*/)
{
    hideAnimationFinished();
}

} // namespace Vidlets

#include "moc_VLWidget.cpp"
