// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLQuickHover.h"

#include "VLHostInterface.h"
#include "VLHostInterfacePrivate.h"
#include "VLItemFinder.h"
#include <Vidlets/VLHostHooks.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLSettings.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QApplication>
#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickWidget>
#include <QStyle>
#include <QStyleHints>
#include <QTouchEvent>

#include <utility>

namespace Vidlets {

namespace {

/// How long the pointer rests for a tip that follows another, as Qt has it.
constexpr int kAwakeDelayMs = 20;
/// What a scene does itself with a press that is held comes first.
constexpr int kAfterSceneMs = 20;

bool isOfTouch(const QMouseEvent* event)
{
    return event->device() && event->device()->type() == QInputDevice::DeviceType::TouchScreen;
}

} // namespace

VLQuickHover::VLQuickHover(VLHostInterfacePrivate& record)
    : m_record(record)
{
    for (QTimer* timer : {&m_wakeUp, &m_fallAsleep, &m_hold})
        timer->setSingleShot(true);
    connect(&m_wakeUp, &QTimer::timeout, this, &VLQuickHover::showForPointer);
    connect(&m_hold, &QTimer::timeout, this, &VLQuickHover::showForFinger);
}

VLQuickHover::~VLQuickHover()
{
    follow(nullptr);
}

void VLQuickHover::watch(QObject* object, const QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseMove:
        pointerMoved(object, static_cast<const QMouseEvent*>(event));
        break;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        pointerPressed(object, static_cast<const QMouseEvent*>(event));
        break;
    case QEvent::KeyPress:
    case QEvent::Wheel:
        m_wakeUp.stop();
        m_fallAsleep.stop();
        break;
    case QEvent::Leave:
    case QEvent::Hide:
        pointerLeft(object);
        break;
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        touched(object, static_cast<const QTouchEvent*>(event));
        break;
    default:
        break;
    }
}

bool VLQuickHover::isOfFinger(const QObject* object, const QMouseEvent* event)
{
    return isOfTouch(event) && qobject_cast<const QQuickWidget*>(object);
}

/// Tips are no hosts of tips. What a QQuickWidget draws off the screen is told to itself as well.
VLQuickHover::Scene VLQuickHover::sceneOf(QObject* object)
{
    Scene scene;
    if (object->isWidgetType()) {
        scene.widget = qobject_cast<QQuickWidget*>(object);
    } else if (object->isWindowType() && !qobject_cast<VLView*>(object)) {
        auto* window = qobject_cast<QQuickWindow*>(object);
        if (window && !QQuickRenderControl::renderWindowFor(window))
            scene.window = window;
    }
    return scene;
}

void VLQuickHover::pointerMoved(QObject* object, const QMouseEvent* event)
{
    if (!object->isWindowType())
        return;
    const Scene scene = sceneOf(object);
    if (!scene.window || isOfTouch(event))
        return;
    m_wakeUp.stop();
    if (event->buttons() != Qt::NoButton)
        return;
    m_pointerWindow = scene.window;
    m_pointer = event->globalPosition().toPoint();
    const int asked = m_record.preferences->showDelay();
    const int delayMs =
        asked >= 0 ? asked : QApplication::style()->styleHint(QStyle::SH_ToolTip_WakeUpDelay);
    m_wakeUp.start(m_fallAsleep.isActive() ? qMin(delayMs, kAwakeDelayMs) : delayMs);
}

void VLQuickHover::pointerPressed(QObject* object, const QMouseEvent* event)
{
    m_wakeUp.stop();
    m_fallAsleep.stop();
    // The manager sees to presses on widgets itself.
    if (object->isWindowType() && sceneOf(object).window && !isOfTouch(event))
        dismiss();
}

void VLQuickHover::pointerLeft(const QObject* object)
{
    if (object == m_pointerWindow)
        m_wakeUp.stop();
}

void VLQuickHover::touched(QObject* object, const QTouchEvent* event)
{
    switch (event->type()) {
    case QEvent::TouchBegin:
        touchBegan(object, event);
        break;
    case QEvent::TouchUpdate:
        touchMoved(event);
        break;
    default:
        m_hold.stop();
        break;
    }
}

void VLQuickHover::touchBegan(QObject* object, const QTouchEvent* event)
{
    const VLWidget* tip = m_record.manager->widget();
    const bool isInTip = tip && (object == tip->windowHandle() || qobject_cast<VLView*>(object));
    // Windows are told before what is in them.
    if (object->isWindowType() && !isInTip)
        dismiss();
    const Scene scene = sceneOf(object);
    if (!scene.isThere())
        return;
    m_wakeUp.stop();
    m_hold.stop();
    if (event->pointCount() != 1)
        return;
    m_touched = scene;
    m_finger = event->points().constFirst().globalPosition().toPoint();
    m_touchDevice = event->pointingDevice();
    m_hold.start(QGuiApplication::styleHints()->mousePressAndHoldInterval() + kAfterSceneMs);
}

void VLQuickHover::touchMoved(const QTouchEvent* event)
{
    if (!m_hold.isActive())
        return;
    const QPoint way = event->points().constFirst().globalPosition().toPoint() - m_finger;
    if (event->pointCount() != 1
        || way.manhattanLength() >= QGuiApplication::styleHints()->startDragDistance())
        m_hold.stop();
}

void VLQuickHover::showForPointer()
{
    // As for widgets, the window has to be the one that the user works in.
    const bool isWanted = m_pointerWindow
        && (m_pointerWindow->isActive()
            || Settings::alwaysShowToolTips(m_record.manager->context()));
    if (!isWanted)
        return;
    if (show({qobject_cast<QQuickWindow*>(m_pointerWindow), nullptr}, m_pointer))
        m_fallAsleep.start(QApplication::style()->styleHint(QStyle::SH_ToolTip_FallAsleepDelay));
}

void VLQuickHover::showForFinger()
{
    const QPointer<VLQuickHover> guard(this);
    if (!m_touched.isThere() || !show(m_touched, m_finger) || !guard)
        return;
    VLHostHooks::hold(m_record.manager, true);
    m_touchContent = contentUp();
    cancelTouch();
}

/// Who holds a button to learn what it does does not want it to be done.
void VLQuickHover::cancelTouch() const
{
    QQuickWindow* window = m_touched.window;
    if (const auto* widget = static_cast<const QQuickWidget*>(m_touched.widget.data()))
        window = widget->quickWindow();
    if (!window || !m_touchDevice)
        return;
    QTouchEvent cancel(QEvent::TouchCancel, m_touchDevice);
    QCoreApplication::sendEvent(window, &cancel);
}

/// Gives whether there is a tip up for what is at @p globalPos.
bool VLQuickHover::show(const Scene& scene, const QPoint& globalPos)
{
    const auto* widget = static_cast<const QQuickWidget*>(scene.widget.data());
    const QPointer<QQuickItem> item =
        ItemFinder::itemAt(widget ? widget->quickWindow() : scene.window.data(), globalPos);
    QObject* object = item;
    if (widget)
        object = scene.widget;
    VLTipAnchor anchor;
    anchor.window = scene.window;
    const QString key =
        object ? m_record.interface->keyAt(object, globalPos, &anchor.zone) : QString();
    if (!key.isEmpty())
        endTouchTip();
    if (!VLHostHooks::show(m_record.manager, key, globalPos, object, anchor) || key.isEmpty())
        return false;
    follow(item);
    return contentUp();
}

void VLQuickHover::followItemIn(QObject* widget, const QPoint& globalPos)
{
    const auto* scene = qobject_cast<QQuickWidget*>(widget);
    if (scene && contentUp())
        follow(ItemFinder::itemAt(scene->quickWindow(), globalPos));
}

void VLQuickHover::follow(QQuickItem* item)
{
    if (item && item == m_item && m_itemContent == contentUp())
        return;
    for (const QMetaObject::Connection& connection : std::exchange(m_itemConnections, {}))
        disconnect(connection);
    m_item = item;
    m_itemContent = item ? contentUp() : nullptr;
    if (!item)
        return;
    const auto hide = [this] {
        if (m_itemContent && contentUp() == m_itemContent)
            VLHostHooks::hide(m_record.manager);
    };
    m_itemConnections += {
        connect(item, &QObject::destroyed, this, hide),
        connect(item, &QQuickItem::windowChanged, this, hide),
        connect(item, &QQuickItem::visibleChanged, this,
                [this, hide] {
                    if (!m_item || !m_item->isVisible())
                        hide();
                }),
    };
}

void VLQuickHover::endTouchTip()
{
    if (m_touchContent && contentUp() == m_touchContent)
        VLHostHooks::hold(m_record.manager, false);
    m_touchContent = nullptr;
}

/// What a press beside a tip does to it.
void VLQuickHover::dismiss()
{
    VLWidget* tip = m_record.manager->widget();
    if (!tip || !tip->isVisible())
        return;
    if (tip->view()->stayOpen())
        tip->activateWindow();
    else
        tip->hide();
}

/// The content of the tip that is up, or null.
VLXmlElement* VLQuickHover::contentUp() const
{
    VLWidget* tip = m_record.manager->widget();
    return tip && tip->isVisible() ? tip->view()->content() : nullptr;
}

} // namespace Vidlets
