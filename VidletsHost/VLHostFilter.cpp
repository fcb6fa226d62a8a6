// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLHostFilter.h"

#include "VLHostInterface.h"
#include "VLHostInterfacePrivate.h"
#include "VLKeyFinder.h"
#include <Vidlets/VLHostHooks.h>

#include <QCoreApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QRect>
#include <QWidget>

namespace Vidlets {

namespace {

/// A request that a widget leaves alone goes on to its parent, which is not what the user points
/// at.
bool isUnderPointer(const QWidget* widget, const QPoint& globalPos)
{
    return !widget->childAt(widget->mapFromGlobal(globalPos));
}

} // namespace

VLHostFilter::VLHostFilter(VLHostInterfacePrivate& record)
    : m_record(record)
{
    QCoreApplication::instance()->installEventFilter(this);
}

// An event filter that dies takes itself off.
VLHostFilter::~VLHostFilter() = default;

bool VLHostFilter::eventFilter(QObject* object, QEvent* event)
{
    if (m_record.access && m_record.access->filter(object, event))
        return true;
    // Windows are told before their items, whose events need not be of the type that they say.
    if (!object->isWidgetType() && !object->isWindowType() && event->isPointerEvent())
        return false;
    m_record.quickHover->watch(object, event);
    m_record.tipDelay->watch(object, event);
    VLHostInterface* interface = m_record.interface;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
        if (VLQuickHover::isOfFinger(object, static_cast<QMouseEvent*>(event)))
            return false;
        return interface->mouseButtonEventFilter(object, static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
        return interface->mouseMoveEventFilter(object, static_cast<QMouseEvent*>(event));
    case QEvent::ToolTip:
        return showTip(object, static_cast<QHelpEvent*>(event));
    case QEvent::Close:
    case QEvent::Hide:
        m_record.pinnedTips->watch(object, event);
        return false;
    case QEvent::ApplicationDeactivate:
        interface->hideTip();
        return false;
    case QEvent::LanguageChange:
        // Each widget is told, too.
        if (object == QCoreApplication::instance())
            m_record.showAnewLater();
        return false;
    default:
        return false;
    }
}

bool VLHostFilter::showTip(QObject* object, const QHelpEvent* event)
{
    if (!object->isWidgetType()
        || !isUnderPointer(static_cast<QWidget*>(object), event->globalPos()))
        return false;
    VLTipAnchor anchor;
    const QString key = m_record.interface->keyAt(object, event->globalPos(), &anchor.zone);
    if (!key.isEmpty() && m_record.tipDelay->holdsBack(static_cast<QWidget*>(object), event, key))
        return true;
    if (!key.isEmpty())
        m_record.quickHover->endTouchTip();
    QWidget* owner = KeyFinder::ownerOf(anchor.zone, static_cast<QWidget*>(object));
    if (!VLHostHooks::show(m_record.manager, key, event->globalPos(), owner, anchor))
        return false;
    m_record.quickHover->followItemIn(object, event->globalPos());
    return true;
}

} // namespace Vidlets
