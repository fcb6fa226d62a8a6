// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLTipDelay.h"

#include "VLHostInterface.h"
#include "VLHostInterfacePrivate.h"
#include <Vidlets/VLManager.h>
#include <Vidlets/VLSettings.h>
#include <Vidlets/VLWidget.h>

#include <QCoreApplication>
#include <QHelpEvent>
#include <QScopedValueRollback>
#include <QStyle>

namespace Vidlets {

VLTipDelay::VLTipDelay(const VLHostInterfacePrivate& record)
    : m_record(record)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &VLTipDelay::send);
}

void VLTipDelay::watch(const QObject* object, const QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseMove:
        m_rest.start();
        m_timer.stop();
        break;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::KeyPress:
    case QEvent::Wheel:
        m_timer.stop();
        break;
    case QEvent::Leave:
        if (object == m_widget)
            m_timer.stop();
        break;
    default:
        break;
    }
}

bool VLTipDelay::holdsBack(QWidget* widget, const QHelpEvent* request, const QString& key)
{
    const int delayMs = m_record.preferences->showDelay();
    const VLWidget* tip = m_record.manager->widget();
    // From one tip to the next it goes as fast as the style says.
    if (delayMs < 0 || m_isSending || (tip && tip->isVisible()))
        return false;
    const qint64 restMs = m_rest.isValid()
        ? m_rest.elapsed()
        : widget->style()->styleHint(QStyle::SH_ToolTip_WakeUpDelay, nullptr, widget);
    if (restMs >= delayMs || !isTipFor(key))
        return false;
    m_widget = widget;
    m_position = request->pos();
    m_globalPos = request->globalPos();
    m_timer.start(static_cast<int>(delayMs - restMs));
    return true;
}

/// What Qt itself may have to say is not held back.
bool VLTipDelay::isTipFor(const QString& key) const
{
    VLHostInterface* interface = m_record.interface;
    return VLHostInterfacePrivate::hasContent(interface, key)
        || VLHostInterfacePrivate::hasContent(interface,
                                              Settings::fallbackKey(interface->context()));
}

void VLTipDelay::send()
{
    if (!m_widget || !m_widget->isVisible())
        return;
    const QScopedValueRollback<bool> guard(m_isSending, true);
    QHelpEvent request(QEvent::ToolTip, m_position, m_globalPos);
    QCoreApplication::sendEvent(m_widget, &request);
}

} // namespace Vidlets
