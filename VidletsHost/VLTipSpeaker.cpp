// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLTipSpeaker.h"

#include "VLAccess.h"
#include "VLTipAccessible.h"
#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLHostHooks.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QHeaderView>

namespace Vidlets {

namespace {

void send(QObject* object, QAccessible::Event type)
{
    QAccessibleEvent event(object, type);
    QAccessible::updateAccessibility(&event);
}

void announce(QObject* object, const QString& text)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent event(object, text);
    QAccessible::updateAccessibility(&event);
#else
    Q_UNUSED(object)
    Q_UNUSED(text)
#endif
}

/// What a screen reader knows the control by: neither viewports nor the headers of item views are
/// anything of their own to it.
QWidget* spokenWidget(QWidget* control)
{
    QWidget* widget = control;
    while (widget) {
        auto* area = qobject_cast<QAbstractScrollArea*>(widget->parentWidget());
        const bool isPart = area
            && (area->viewport() == widget
                || (qobject_cast<QHeaderView*>(widget) && qobject_cast<QAbstractItemView*>(area)));
        if (!isPart)
            break;
        widget = area;
    }
    return widget;
}

} // namespace

VLTipSpeaker::VLTipSpeaker(VLAccess& access, VLManager* manager)
    : m_access(access)
    , m_manager(manager)
{
    VLTipAccessible::beginServing();
    VLHostHooks::setTipWatcher(manager, [this] { followTip(); });
    // Of a tip that is up already. What to say is for a derived access, which is not whole yet.
    QMetaObject::invokeMethod(this, &VLTipSpeaker::followTip, Qt::QueuedConnection);
}

VLTipSpeaker::~VLTipSpeaker()
{
    if (m_manager)
        VLHostHooks::setTipWatcher(m_manager, {});
    fallSilent();
    VLTipAccessible::stopServing();
}

void VLTipSpeaker::setEnabled(bool enabled)
{
    m_enabled = enabled;
    followTip();
}

void VLTipSpeaker::followTip()
{
    VLWidget* popup = m_enabled && m_manager ? m_manager->widget() : nullptr;
    const VLXmlElement* content =
        popup && popup->isVisible() && popup->view() ? popup->view()->content() : nullptr;
    if (!content) {
        fallSilent();
        return;
    }
    QWidget* control = spokenWidget(VLHostHooks::control(m_manager));
    const QString key = content->attribute(ContentNames::keyAttribute());
    if (key != m_key || control != m_control)
        fallSilent();
    speak(popup, control, key);
}

void VLTipSpeaker::speak(VLWidget* popup, QWidget* control, const QString& key)
{
    const QString text = m_access.spokenText(*popup->view()->content());
    if (m_isSpeaking && text == m_text)
        return;
    // What the host has said meanwhile stays.
    if (control && (!m_isSpeaking || control->accessibleDescription() == m_text))
        describe(control, text);
    m_isSpeaking = true;
    m_key = key;
    m_text = text;
    send(popup, QAccessible::NameChanged);
    send(popup, QAccessible::DescriptionChanged);
    if (!text.isEmpty())
        announce(control ? static_cast<QObject*>(control) : popup, text);
}

void VLTipSpeaker::describe(QWidget* control, const QString& text)
{
    if (!m_control) {
        m_control = control;
        m_oldDescription = control->accessibleDescription();
    }
    // Tells of the change by itself.
    control->setAccessibleDescription(text.isEmpty() ? m_oldDescription : text);
}

void VLTipSpeaker::fallSilent()
{
    if (m_control && !m_text.isEmpty() && m_control->accessibleDescription() == m_text)
        m_control->setAccessibleDescription(m_oldDescription);
    m_control = nullptr;
    m_oldDescription.clear();
    m_key.clear();
    m_text.clear();
    m_isSpeaking = false;
}

} // namespace Vidlets
