// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLHoverKeeper.h"

#include "VLManagerSettings.h"
#include "VLSettings.h"
#include "VLView.h"
#include "VLWidget.h"
#include "VLWidgetPrivate.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPropertyAnimation>
#include <QWindow>

#include <chrono>

namespace Vidlets {

namespace {

/// Often enough to see that the pointer has gone, seldom enough to cost nothing.
constexpr std::chrono::milliseconds kWatchInterval(100);

/// A key that does nothing by itself is part of a key press to come, or of a click.
bool isModifier(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
        return true;
    default:
        return false;
    }
}

/// Whether @p window is @p outer or lies in it.
bool isWithin(const QWindow* window, const QWindow* outer)
{
    return window && (window == outer || isWithin(window->parent(), outer));
}

bool hasOwnToolTip(const QWidget* widget)
{
    return widget && !widget->toolTip().isEmpty();
}

} // namespace

VLHoverKeeper::VLHoverKeeper(VLWidget* popup)
    : m_popup(popup)
{
    m_watch.setInterval(kWatchInterval);
    connect(&m_watch, &QTimer::timeout, this, &VLHoverKeeper::followPointer);
}

bool VLHoverKeeper::isOn() const
{
    return !m_retired && Settings::steadyHover(settingsOf(m_popup->m_manager));
}

bool VLHoverKeeper::isOverControl(const QPoint& position) const
{
    const QWidget* under = surface().widgetAt(position);
    const QWidget* owner = control();
    if (owner) {
        // A zone may lie in a gap between the widget that was asked and those around it.
        const bool isGap = under == owner->window() && !m_popup->d->zone().isNull();
        return under && (under == owner || owner->isAncestorOf(under) || isGap);
    }
    if (const QWindow* window = m_popup->d->anchorWindow())
        return isWithin(window, surface().windowAt(position));
    // A host without widgets: nobody but it knows where the control ends.
    return !under && surface().windowAt(position);
}

bool VLHoverKeeper::isTipOf(const QWidget* requester) const
{
    const bool isControl = requester == control() && m_popup->d->isSameZoneRequested();
    return !isOn() || isControl || isPartOfTip(requester);
}

bool VLHoverKeeper::isPartOfTip(const QWidget* requester) const
{
    if (!isOn() || !requester || !m_popup->isVisible() || hasOwnToolTip(requester))
        return false;
    const QWidget* owner = control();
    const bool isPart = requester != owner && owner && owner->isAncestorOf(requester)
        && !m_popup->d->isOutsideOfZoneRequested();
    return isPart || isWithinPopup(requester);
}

bool VLHoverKeeper::staysWithoutContent(const QString& key, const QPoint& position,
                                        const QWidget* requester)
{
    // A tip that fades away is no answer: the request goes on to the widget's parent, which may be
    // the control itself.
    if (m_popup->isVisible() && !isFadingOut()) {
        // What lies between the control and its tip, and asks for nothing, does not cost the tip.
        const bool isElsewhere = isAround(requester)
            || (requester == control() && m_popup->d->isOutsideOfZoneRequested());
        const bool isInBetween =
            key.isEmpty() && isElsewhere && !hasOwnToolTip(requester) && m_popup->isSafe(position);
        if (isPartOfTip(requester) || isInBetween)
            return true;
    }
    m_popup->hideAnimated();
    return false;
}

/// Whether the control lies within @p requester, which may be null.
bool VLHoverKeeper::isAround(const QWidget* requester) const
{
    return !requester || !control() || requester->isAncestorOf(control());
}

void VLHoverKeeper::beginTip()
{
    if (!isOn())
        return;
    m_pointer.reset();
    m_popup->m_timer->stop();
    endFade();
    if (m_popup->m_view->stayOpen())
        m_popup->m_view->setStayOpen(false);
    // The window system learns to which window a popup belongs when the popup comes up.
    if (m_popup->isVisible() && !surface().isInReferenceWindow())
        m_popup->hide();
}

void VLHoverKeeper::revive()
{
    if (!isOn() || !isFadingOut())
        return;
    endFade();
    m_pointer.reset();
}

bool VLHoverKeeper::makeWayForHide()
{
    if (m_popup->m_animation->state() == QAbstractAnimation::Stopped)
        return true;
    if (!isOn() || isFadingOut())
        return false;
    m_popup->m_animation->stop();
    return true;
}

void VLHoverKeeper::beginWatch()
{
    if (!isOn() || !m_popup->isWindow())
        return;
    // As a part of the control's window the popup gets input while that window is modal.
    surface().joinReferenceWindow();
    m_pointer = surface().pointer();
    m_watch.start();
    QCoreApplication::instance()->installEventFilter(this);
}

void VLHoverKeeper::endWatch()
{
    m_watch.stop();
    QCoreApplication::instance()->removeEventFilter(this);
}

void VLHoverKeeper::retire()
{
    endWatch();
    m_retired = true;
}

bool VLHoverKeeper::eventFilter(QObject* object, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Leave:
        // Later, since the pointer enters the next window only then.
        if (object->isWindowType())
            QTimer::singleShot(0, this, &VLHoverKeeper::followPointer);
        break;
    case QEvent::ShortcutOverride:
        // The only event of a key that is a shortcut.
    case QEvent::KeyPress:
        // A window of Qt Quick hands the event on to its items.
        if (object->isWidgetType() || object->isWindowType())
            keyPressed(object, static_cast<QKeyEvent*>(event));
        break;
    case QEvent::Wheel:
        if ((object->isWidgetType() || object->isWindowType()) && !isWithinPopup(object))
            hideUnlessStaying();
        break;
    case QEvent::Hide:
        if (object == control() || (!control() && object == m_popup->d->anchorWindow()))
            m_popup->hide();
        break;
    default:
        break;
    }
    return false;
}

QWidget* VLHoverKeeper::control() const
{
    return m_popup->d->reference();
}

VLPopupSurface& VLHoverKeeper::surface() const
{
    return m_popup->d->surface();
}

bool VLHoverKeeper::isWithinPopup(const QObject* object) const
{
    if (object->isWidgetType()) {
        const auto* widget = static_cast<const QWidget*>(object);
        return widget == m_popup || m_popup->isAncestorOf(widget);
    }
    return object == m_popup->m_view || object == m_popup->windowHandle();
}

bool VLHoverKeeper::isFadingOut() const
{
    const QPropertyAnimation* animation = m_popup->m_animation;
    return animation->state() != QAbstractAnimation::Stopped
        && animation->endValue().toReal() == 0.0;
}

void VLHoverKeeper::endFade()
{
    if (m_popup->m_animation->state() == QAbstractAnimation::Stopped)
        return;
    disconnect(m_popup->m_animation, &QAbstractAnimation::finished, m_popup,
               &VLWidget::hideAnimationFinished);
    m_popup->m_animation->stop();
    surface().setOpacity(1.0);
}

/// A pointer that rests is left alone. One that moves outside of the application's windows, or so
/// fast that it skips the edge of one, sends no events.
void VLHoverKeeper::followPointer()
{
    if (!m_watch.isActive())
        return;
    const VLPopupSurface::Pointer pointer = surface().pointer();
    if (m_pointer == pointer)
        return;
    m_pointer = pointer;
    m_popup->checkMousePosition(pointer.position);
}

void VLHoverKeeper::keyPressed(QObject* receiver, QKeyEvent* event)
{
    if (VLHostHooks::isKeyTaken(m_popup->m_manager, receiver, event))
        return;
    const int key = event->key();
    if (key == Qt::Key_Escape)
        m_popup->hide();
    else if (!isModifier(key) && !isWithinPopup(receiver))
        hideUnlessStaying();
}

/// A tip that its scene keeps open stays while the user works beside it, as it does at a click.
void VLHoverKeeper::hideUnlessStaying()
{
    if (!m_popup->m_view->stayOpen() && !m_popup->d->isHeld())
        m_popup->hide();
}

} // namespace Vidlets
