// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLTipCaller.h"

#include "VLFocusRing.h"
#include "VLHostInterface.h"
#include "VLHostInterfacePrivate.h"
#include "VLKeyFinder.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLHostHooks.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLSettings.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QMenuBar>
#include <QQuickItem>
#include <QQuickWindow>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr Qt::KeyboardModifiers kModifiers =
    Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;

bool isModifier(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
        return true;
    default:
        return false;
    }
}

/// What a press and its release have in common: with Shift in between, the same key has two names.
quint64 identityOf(const QKeyEvent* event)
{
    constexpr quint64 kNamed = quint64(1) << 32;
    const quint32 code = event->nativeScanCode();
    return code ? code : kNamed | quint32(event->key());
}

bool isPlain(const QKeyEvent* event, int key)
{
    return event->key() == key && !(event->modifiers() & kModifiers);
}

/// The item behind @p item or in front of it; null where there is none but @p root.
QQuickItem* nextInChain(QQuickItem& item, const QQuickItem& root, bool isForward)
{
    QQuickItem* next = item.nextItemInFocusChain(isForward);
    if (next == &root)
        next = next->nextItemInFocusChain(isForward);
    return next == &root ? nullptr : next;
}

/// Shift and Tab are told of as a key of their own.
int keyOf(const QKeyEvent* event)
{
    return event->key() == Qt::Key_Backtab ? int(Qt::Key_Tab) : event->key();
}

bool matches(const QKeyEvent* event, QKeyCombination wanted)
{
    if (keyOf(event) != wanted.key())
        return false;
    const Qt::KeyboardModifiers held = event->modifiers() & kModifiers;
    if (held == wanted.keyboardModifiers())
        return true;
    // A sign such as "?" may need Shift by itself.
    const int key = wanted.key();
    const bool isSign =
        key > Qt::Key_Space && key < Qt::Key_Escape && !(key >= Qt::Key_A && key <= Qt::Key_Z);
    return isSign
        && (held & ~Qt::KeyboardModifiers(Qt::ShiftModifier)) == wanted.keyboardModifiers();
}

/// Windows get a key before the widgets and the items in them do.
bool isReceiver(const QObject* object)
{
    return object->isWidgetType() || object->isWindowType();
}

} // namespace

VLTipCaller::VLTipCaller(VLHostInterface* interface)
    : m_interface(interface)
    , m_manager(interface->manager())
    , m_outside(QApplication::focusWidget())
{
    VLHostHooks::setKeyFilter(m_manager, [this](QObject* receiver, QKeyEvent* event) {
        return isTaken(receiver, event);
    });
    connect(qApp, &QApplication::focusChanged, this, &VLTipCaller::focusChanged);
    connect(qApp, &QGuiApplication::focusObjectChanged, this, &VLTipCaller::checkFocusLater);
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &VLTipCaller::checkFocusLater);
}

VLTipCaller::~VLTipCaller()
{
    setEnabled(false);
    if (m_manager)
        VLHostHooks::setKeyFilter(m_manager, {});
}

bool VLTipCaller::isEnabled() const
{
    return m_isEnabled;
}

void VLTipCaller::setEnabled(bool enabled)
{
    if (m_isEnabled == enabled)
        return;
    m_isEnabled = enabled;
    m_matched = 0;
    m_down.clear();
    if (!enabled && (m_called || m_scene))
        closeTip();
}

QKeySequence VLTipCaller::showSequence() const
{
    return m_sequence;
}

void VLTipCaller::setShowSequence(const QKeySequence& sequence)
{
    m_sequence = sequence;
    m_matched = 0;
}

bool VLTipCaller::filter(QObject* object, QEvent* event)
{
    if (!m_isEnabled)
        return false;
    switch (event->type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return isReceiver(object) && filterKey(static_cast<QKeyEvent*>(event));
    case QEvent::InputMethod:
        return m_scene && isReceiver(object) && !isWithinTip(object);
    case QEvent::MouseButtonPress:
        if ((m_called || m_scene) && isReceiver(object) && !isWithinTip(object))
            closeTip();
        return false;
    case QEvent::MouseMove:
        // A menu lights up what is under the pointer.
        if (m_called && QApplication::activePopupWidget())
            checkFocusLater();
        return false;
    case QEvent::Hide:
        if (!event->spontaneous() && m_manager && object == m_manager->widget())
            tipEnded();
        return false;
    case QEvent::ApplicationDeactivate:
        // What is let go of now is somebody else's business.
        m_down.clear();
        m_matched = 0;
        return false;
    default:
        return false;
    }
}

VLTipCaller::Action VLTipCaller::actionFor(const QKeyEvent* event) const
{
    if (event->isAutoRepeat() && !m_down.value(identityOf(event), true))
        return Action::Swallow;
    if (tip() && isPlain(event, Qt::Key_Escape))
        return Action::Close;
    if (tip() && isPlain(event, Qt::Key_F6))
        return m_scene ? Action::Leave : Action::Enter;
    const Action action = actionOfSequence(event);
    if (action != Action::None)
        return action;
    return m_scene ? Action::Forward : Action::None;
}

VLTipCaller::Action VLTipCaller::actionOfSequence(const QKeyEvent* event) const
{
    if (m_sequence.isEmpty() || isModifier(event->key()))
        return Action::None;
    int next = m_matched;
    if (!matches(event, m_sequence[uint(next)]))
        next = 0;
    if (!matches(event, m_sequence[uint(next)]))
        return Action::None;
    if (next + 1 < m_sequence.count())
        return Action::Advance;
    // Where there is nothing to show, the key is the host's.
    return tip() || findCallable() ? Action::Call : Action::None;
}

/// For what takes tips away at any key.
bool VLTipCaller::isTaken(const QObject* receiver, const QKeyEvent* event) const
{
    return m_isEnabled && isReceiver(receiver) && actionFor(event) != Action::None;
}

bool VLTipCaller::filterKey(QKeyEvent* event)
{
    if (event->type() == QEvent::KeyRelease)
        return released(event);
    const Action action = actionFor(event);
    const bool isPress = event->type() == QEvent::KeyPress;
    if (action == Action::None) {
        if (isPress && !isModifier(event->key()))
            m_matched = 0;
        if (isPress && m_called)
            checkFocusLater();
        return false;
    }
    // Without it, what is a shortcut in the host would never come as a key.
    event->accept();
    if (isPress)
        pressed(event, action);
    return true;
}

void VLTipCaller::pressed(const QKeyEvent* event, Action action)
{
    const int matched = std::exchange(m_matched, 0);
    m_down.insert(identityOf(event), action == Action::Forward);
    switch (action) {
    case Action::Advance:
        m_matched = matches(event, m_sequence[uint(matched)]) ? matched + 1 : 1;
        break;
    case Action::Call:
        callTip();
        break;
    case Action::Close:
        closeTip();
        break;
    case Action::Enter:
        enterTip();
        break;
    case Action::Leave:
        leaveTip();
        break;
    case Action::Forward:
        if (isModifier(event->key()))
            m_matched = matched;
        forward(event);
        break;
    case Action::Swallow:
    case Action::None:
        break;
    }
}

bool VLTipCaller::released(const QKeyEvent* event)
{
    const auto found = m_down.constFind(identityOf(event));
    if (found == m_down.constEnd()) {
        if (m_called)
            checkFocusLater();
        return false;
    }
    const bool isForScene = *found;
    if (!event->isAutoRepeat())
        m_down.erase(found);
    if (isForScene && m_scene)
        forward(event);
    return true;
}

std::optional<VLTipCaller::Callable> VLTipCaller::findCallable() const
{
    if (Settings::disabled(m_interface->context()))
        return std::nullopt;
    const QList<FocusFinder::Place> places = FocusFinder::places();
    std::optional<Callable> keyed;
    for (const FocusFinder::Place& place : places) {
        std::optional<Callable> callable = callableAt(place);
        if (!callable)
            continue;
        if (VLHostInterfacePrivate::hasContent(m_interface, callable->key))
            return callable;
        if (!keyed)
            keyed = callable;
    }
    // As for the pointer, which gets the fallback where there is nothing else.
    const QString fallback = Settings::fallbackKey(m_interface->context());
    return keyed && VLHostInterfacePrivate::hasContent(m_interface, fallback) ? keyed
                                                                              : std::nullopt;
}

std::optional<VLTipCaller::Callable> VLTipCaller::callableAt(const FocusFinder::Place& place) const
{
    Callable callable{QString(), place.object, QRect(), nullptr, false};
    callable.key = m_interface->keyAt(place.object, place.position, &callable.zone);
    if (callable.key.isEmpty())
        return std::nullopt;
    if (place.object->isWidgetType()) {
        callable.reference = KeyFinder::ownerOf(callable.zone, static_cast<QWidget*>(place.object));
    } else if (QWidget* widget = QApplication::focusWidget()) {
        // The item is in a scene that the widget shows.
        callable.reference = widget;
    } else if (const auto* item = qobject_cast<QQuickItem*>(place.object)) {
        callable.window = item->window();
    }
    return callable;
}

bool VLTipCaller::show(const Callable& callable)
{
    VLTipAnchor anchor;
    anchor.zone = callable.zone;
    anchor.window = callable.window;
    anchor.isCalled = true;
    anchor.isCentred = callable.isCentred;
    return VLHostHooks::show(m_manager, callable.key, placeBeside(callable), callable.reference,
                             anchor);
}

/// The pointer may be anywhere: what stands for it is where a tip ends up that begins below the
/// control and at its edge.
QPoint VLTipCaller::placeBeside(const Callable& callable) const
{
    QRect rect = callable.zone;
    bool isRightToLeft = QGuiApplication::isRightToLeft();
    if (callable.reference->isWidgetType()) {
        const auto* widget = static_cast<const QWidget*>(callable.reference);
        const QRect visible = widget->visibleRegion().boundingRect();
        const QRect shown(widget->mapToGlobal(visible.topLeft()), visible.size());
        rect = shown.intersects(rect) ? shown & rect : (rect.isNull() ? shown : rect);
        isRightToLeft = widget->layoutDirection() == Qt::RightToLeft;
    }
    const QSize offset = Settings::tooltipOffsetPx(m_interface->context());
    const int x = isRightToLeft ? rect.right() + offset.width() : rect.left() - offset.width();
    return {x, rect.bottom() + 1 - offset.height()};
}

void VLTipCaller::callTip()
{
    if (tip() && (m_called || m_scene)) {
        closeTip();
        return;
    }
    if (!tip()) {
        const std::optional<Callable> callable = findCallable();
        if (!callable || !show(*callable) || !tip())
            return;
    }
    m_called = FocusFinder::current();
    watchScene();
    VLHostHooks::hold(m_manager, true);
}

/// The application is not told when the focus moves within a scene that lies in a widget.
void VLTipCaller::watchScene()
{
    disconnect(m_sceneWatch);
    if (const QQuickWindow* scene = FocusFinder::focusScene())
        m_sceneWatch = connect(scene, &QQuickWindow::activeFocusItemChanged, this,
                               &VLTipCaller::checkFocusLater);
}

bool VLTipCaller::call(const QString& key, QWidget* window)
{
    if (!m_isEnabled || key.isEmpty() || !window || !window->isVisible()
        || !VLHostInterfacePrivate::hasContent(m_interface, key))
        return false;
    closeTip();
    const std::optional<Callable> control = findControl(key, window);
    const QPoint middle = window->mapToGlobal(window->rect().center());
    const Callable alone{key, window, QRect(middle, QSize(1, 1)), nullptr, true};
    if (!show(control ? *control : alone) || !tip())
        return false;
    m_called = FocusFinder::current();
    watchScene();
    VLHostHooks::hold(m_manager, true);
    return true;
}

std::optional<VLTipCaller::Callable> VLTipCaller::findControl(const QString& key,
                                                              const QWidget* window) const
{
    const QList<FocusFinder::Place> places = FocusFinder::visiblePlaces(window);
    for (const FocusFinder::Place& place : places) {
        std::optional<Callable> callable = callableAt(place);
        if (callable && callable->key == key)
            return callable;
    }
    return std::nullopt;
}

void VLTipCaller::closeTip()
{
    if (m_scene)
        leaveTip();
    if (m_manager)
        VLHostHooks::hide(m_manager);
    tipEnded();
}

void VLTipCaller::tipEnded()
{
    m_called.reset();
    disconnect(m_sceneWatch);
    if (m_scene)
        leaveTip();
}

void VLTipCaller::enterTip()
{
    m_scene = tip()->view();
    if (!m_called)
        m_called = FocusFinder::current();
    VLHostHooks::hold(m_manager, true);
    m_focusWindow = QGuiApplication::focusWindow();
    // A window without widgets has no widget to go back to.
    const bool isElsewhere =
        m_focusWindow && !isWithinTip(m_focusWindow) && !QApplication::focusWidget();
    m_origin = isElsewhere ? nullptr : m_outside.data();
    dimFocus();
    m_ringed = nullptr;
    m_ring = new VLFocusRing(m_scene->contentItem());
    // A scene may say where to begin.
    if (focusItem() != m_scene->contentItem() && focusItem()->activeFocusOnTab())
        showFocus();
    else
        walkScene(true);
    // A pinned tip is a window of its own.
    connect(m_scene, &VLView::reservedChanged, this, &VLTipCaller::tipEnded);
}

void VLTipCaller::leaveTip()
{
    if (!m_scene)
        return;
    disconnect(m_scene, &VLView::reservedChanged, this, &VLTipCaller::tipEnded);
    delete m_ring;
    for (QQuickItem* item = focusItem(); item != m_scene->contentItem(); item = item->parentItem())
        item->setFocus(false, Qt::OtherFocusReason);
    m_scene = nullptr;
    giveFocusBack();
}

/// As a menu does when it takes the keyboard. A menu bar would take it for the end of its own use.
void VLTipCaller::dimFocus()
{
    QWidget* widget = QApplication::focusWidget();
    if (!widget || QApplication::activePopupWidget() || qobject_cast<QMenuBar*>(widget)
        || isWithinTip(widget))
        return;
    m_dimmed = widget;
    QFocusEvent event(QEvent::FocusOut, Qt::PopupFocusReason);
    QCoreApplication::sendEvent(widget, &event);
}

void VLTipCaller::giveFocusBack()
{
    QWidget* dimmed = std::exchange(m_dimmed, nullptr);
    QWidget* origin = std::exchange(m_origin, nullptr);
    if (dimmed && dimmed == QApplication::focusWidget()) {
        QFocusEvent event(QEvent::FocusIn, Qt::PopupFocusReason);
        QCoreApplication::sendEvent(dimmed, &event);
    }
    // A click on the tip may have taken it away.
    if (origin && isWithinTip(QGuiApplication::focusWindow())) {
        origin->activateWindow();
        origin->setFocus(Qt::OtherFocusReason);
    }
#if QT_CONFIG(accessibility)
    if (origin && QAccessible::isActive()) {
        QAccessibleEvent event(origin, QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
#endif
}

/// What nobody in the scene wants goes no further, but Tab walks it, and Return is as good as a
/// space.
void VLTipCaller::forward(const QKeyEvent* event)
{
    const Qt::KeyboardModifiers held = event->modifiers() & kModifiers;
    const bool isBack = event->key() == Qt::Key_Backtab || held == Qt::ShiftModifier;
    const bool isWalk = keyOf(event) == Qt::Key_Tab && event->type() == QEvent::KeyPress
        && !(held & ~Qt::KeyboardModifiers(Qt::ShiftModifier));
    if (isWalk && wouldLeadOut(!isBack)) {
        walkScene(!isBack);
        return;
    }
    const std::unique_ptr<QKeyEvent> copy(event->clone());
    if (sendToScene(copy.get())) {
        // Which may have moved it.
        showFocus();
        return;
    }
    switch (event->key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        if (isWalk)
            walkScene(!isBack);
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!held && !event->isAutoRepeat()) {
            QKeyEvent space(event->type(), Qt::Key_Space, Qt::NoModifier, u" "_s);
            sendToScene(&space);
        }
        break;
    default:
        break;
    }
}

/**
 * Gives whether the scene has made use of it.
 *
 * Its window would give keys to the item with the active focus, which there is none of while the
 * window is not the active one.
 */
bool VLTipCaller::sendToScene(QKeyEvent* event)
{
    // What the key leads to may take the scene away.
    QPointer<QQuickItem> item = focusItem();
    while (item) {
        event->accept();
        QCoreApplication::sendEvent(item, event);
        if (event->isAccepted())
            return true;
        if (item)
            item = item->parentItem();
    }
    return !m_scene;
}

/// The innermost item of the scene with the focus, whether the window is the active one or not; the
/// root item where there is none.
QQuickItem* VLTipCaller::focusItem() const
{
    QQuickItem* item = m_scene ? m_scene->contentItem() : nullptr;
    while (item && item->isFocusScope() && item->scopedFocusItem())
        item = item->scopedFocusItem();
    return item;
}

/// Whether the scene would give a Tab away: newer versions of Qt lead from the last item of a scene
/// to the window that it is embedded in. An editor may want the Tab itself.
bool VLTipCaller::wouldLeadOut(bool isForward) const
{
    QQuickItem* item = focusItem();
    if (QT_VERSION < QT_VERSION_CHECK(6, 7, 0) || !item
        || item->flags().testFlag(QQuickItem::ItemAcceptsInputMethod))
        return false;
    QQuickItem* root = m_scene->contentItem();
    const QQuickItem* next = nextInChain(*item, *root, isForward);
    return !next || next == nextInChain(*root, *root, isForward);
}

void VLTipCaller::walkScene(bool isForward)
{
    if (!m_scene)
        return;
    if (QQuickItem* next = nextInChain(*focusItem(), *m_scene->contentItem(), isForward))
        next->forceActiveFocus(isForward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    showFocus();
}

/// Shows which item has the focus, and tells screen readers, where the item does not itself.
void VLTipCaller::showFocus()
{
    QQuickItem* item = focusItem();
    if (!m_ring || !m_scene || item == m_ringed)
        return;
    m_ringed = item;
    const bool isRoot = item == m_scene->contentItem();
    m_ring->follow(isRoot ? nullptr : item);
#if QT_CONFIG(accessibility)
    if (!isRoot && !item->hasActiveFocus() && QAccessible::isActive()) {
        QAccessibleEvent event(item, QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
#endif
}

/// The tip that is up, or null.
VLWidget* VLTipCaller::tip() const
{
    VLWidget* popup = m_manager ? m_manager->widget() : nullptr;
    return popup && popup->isVisible() ? popup : nullptr;
}

bool VLTipCaller::isWithinTip(const QObject* object) const
{
    VLWidget* popup = tip();
    if (!popup || !object)
        return false;
    if (object->isWidgetType()) {
        const auto* widget = static_cast<const QWidget*>(object);
        return widget == popup || popup->isAncestorOf(widget);
    }
    const auto* item = qobject_cast<const QQuickItem*>(object);
    const QObject* window = item ? item->window() : object;
    return window == popup->view() || window == popup->windowHandle();
}

void VLTipCaller::focusChanged(QWidget* /*old*/, QWidget* now)
{
    if (now && !isWithinTip(now))
        m_outside = now;
    checkFocusLater();
}

/// A turn later, since the focus goes from one window to another by way of none.
void VLTipCaller::checkFocusLater()
{
    if (m_willCheck || !m_called)
        return;
    m_willCheck = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_willCheck = false;
            checkFocus();
        },
        Qt::QueuedConnection);
}

void VLTipCaller::checkFocus()
{
    QWindow* window = QGuiApplication::focusWindow();
    if (!m_called || !tip() || !window || isWithinTip(window))
        return;
    if (m_scene) {
        // As long as its window has the keyboard for the window system, the scene keeps it.
        if (window != m_focusWindow)
            closeTip();
        return;
    }
    const FocusFinder::Focus focus = FocusFinder::current();
    if (focus.object && !isWithinTip(focus.object) && !(focus == *m_called))
        closeTip();
}

} // namespace Vidlets
