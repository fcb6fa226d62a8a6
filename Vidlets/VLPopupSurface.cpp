// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLPopupSurface.h"

#include "VLView.h"
#include "VLWidget.h"

#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QScopedValueRollback>
#include <QScreen>
#include <QTimer>
#include <QVersionNumber>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// Further than any screen reaches, and safe to count with.
constexpr QRect kWithoutLimit(-1'000'000, -1'000'000, 2'000'000, 2'000'000);
constexpr auto kOpacityProperty = "windowOpacity";

bool isWayland()
{
    return QGuiApplication::platformName().startsWith("wayland"_L1);
}

/// Whether a popup that is up can be moved and resized as any other window.
bool canReposition()
{
    return QLibraryInfo::version() >= QVersionNumber(6, 8);
}

QWindow* topLevelOf(QWindow* window)
{
    while (window && window->parent())
        window = window->parent();
    return window;
}

/// The window that the pointer is in, from what the widgets remember.
QWindow* windowUnderPointer()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (const QWidget* widget : widgets) {
        if (widget->isVisible() && widget->underMouse())
            return widget->windowHandle();
    }
    return nullptr;
}

/// The top-level widget that @p window belongs to; null for one that holds no widgets.
QWidget* widgetOf(const QWindow* window)
{
    if (!window)
        return nullptr;
    const QWidgetList widgets = QApplication::topLevelWidgets();
    const auto found =
        std::find_if(widgets.cbegin(), widgets.cend(),
                     [window](const QWidget* widget) { return widget->windowHandle() == window; });
    return found == widgets.cend() ? nullptr : *found;
}

} // namespace

VLPopupSurface::VLPopupSurface(VLWidget* popup)
    : m_popup(popup)
    , m_active(isWayland())
{
    if (!m_active)
        return;
    m_fade.setProperty(kOpacityProperty, 1.0);
    m_pointerWindow = windowUnderPointer();
    m_knowsPointer = m_pointerWindow != nullptr;
    QCoreApplication::instance()->installEventFilter(this);
}

void VLPopupSurface::setReference(QWidget* widget, QWindow* window)
{
    m_reference = widget;
    m_referenceWindow = topLevelOf(window);
    // Two controls may be at the same place, each in its own window.
    if (isPlacedByCompositor() && m_popup->isVisible() && !isInReferenceWindow())
        mapAnewLater();
}

bool VLPopupSurface::isInReferenceWindow() const
{
    const QWindow* window = m_popup->windowHandle();
    return !window || window->transientParent() == referenceWindow();
}

void VLPopupSurface::joinReferenceWindow()
{
    QWindow* window = m_popup->windowHandle();
    if (!window)
        return;
    QWindow* parent = referenceWindow();
    m_parentWindow = parent;
    // The view within came up before, as a window of nobody. Where a dialog is modal Qt looks at it
    // once more only when the popup turns from a blocked window into a free one.
    window->setTransientParent(nullptr);
    window->setTransientParent(parent);
    // A popup must be gone before the window that it is a child of: compositors end the connection
    // of a program that breaks this rule.
    disconnect(m_parentConnection);
    if (!m_active || !parent)
        return;
    unblockView();
    m_parentConnection = connect(parent, &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible && isPlacedByCompositor())
            m_popup->hide();
    });
}

/// What came up beside a modal dialog stays blocked, and newer versions of Qt take a tooltip's
/// window for one that never is: they do not look at the view within again.
void VLPopupSurface::unblockView()
{
    VLView* view = m_popup->view();
    if (!QGuiApplication::modalWindow() || !view || !view->isVisible())
        return;
    view->hide();
    view->show();
}

Qt::WindowFlags VLPopupSurface::windowFlags() const
{
    // A tool window would come up in the middle of the screen and take the focus.
    return (m_active ? Qt::ToolTip : Qt::Tool) | Qt::FramelessWindowHint;
}

QRect VLPopupSurface::availableArea(const QScreen* screen) const
{
    if (!m_active)
        return screen->availableGeometry();
    if ((!m_reference && !m_referenceWindow) || !isPlacedByCompositor())
        return kWithoutLimit;
    // Places are counted from the window of the control. Only one that fills the screen tells where
    // that is. Of another one it is known how far it can be from the edges, which is where at the
    // latest a popup leaves the screen; the compositor moves what does so before.
    const QRect frame =
        m_reference ? m_reference->window()->frameGeometry() : m_referenceWindow->frameGeometry();
    if (isScreenFilled())
        return frame;
    const QSize room = (screen->size() - frame.size()).expandedTo(QSize(0, 0));
    return frame.adjusted(-room.width(), -room.height(), room.width(), room.height());
}

/// Whether the window of the control fills the screen.
bool VLPopupSurface::isScreenFilled() const
{
    if (const QWidget* window = m_reference ? m_reference->window() : nullptr)
        return window->isMaximized() || window->isFullScreen();
    return m_referenceWindow
        && (m_referenceWindow->windowStates() & (Qt::WindowMaximized | Qt::WindowFullScreen));
}

QObject* VLPopupSurface::fadeTarget()
{
    if (m_active)
        return &m_fade;
    return m_popup;
}

qreal VLPopupSurface::opacity()
{
    return fadeTarget()->property(kOpacityProperty).toReal();
}

void VLPopupSurface::setOpacity(qreal opacity)
{
    fadeTarget()->setProperty(kOpacityProperty, opacity);
}

VLPopupSurface::PointerWindow VLPopupSurface::pointerWindow() const
{
    if (!isPlacedByCompositor())
        return PointerWindow::Unknown;
    QWindow* window = topLevelOf(m_pointerWindow);
    if (!window)
        return m_knowsPointer ? PointerWindow::Elsewhere : PointerWindow::Unknown;
    if (window == m_popup->windowHandle())
        return PointerWindow::Popup;
    // Which window a popup belongs to that was shown for none is the compositor's secret.
    if (!m_parentWindow)
        return PointerWindow::Unknown;
    return window == m_parentWindow ? PointerWindow::Reference : PointerWindow::Elsewhere;
}

VLPopupSurface::Pointer VLPopupSurface::pointer() const
{
    return {QCursor::pos(), m_pointerWindow};
}

QWidget* VLPopupSurface::widgetAt(const QPoint& position) const
{
    if (!m_active)
        return QApplication::widgetAt(position);
    // All windows claim to be at the same place.
    QWidget* window = m_reference ? m_reference->window() : widgetOf(windowAt(position));
    if (!window)
        return nullptr;
    const QPoint local = window->mapFromGlobal(position);
    if (!window->rect().contains(local))
        return nullptr;
    QWidget* child = window->childAt(local);
    return child ? child : window;
}

QWindow* VLPopupSurface::windowAt(const QPoint& position) const
{
    return m_active ? topLevelOf(m_pointerWindow) : QGuiApplication::topLevelAt(position);
}

bool VLPopupSurface::isPlacedByCompositor() const
{
    return m_active && m_popup->isWindow() && m_popup->windowType() == Qt::ToolTip;
}

bool VLPopupSurface::eventFilter(QObject* object, QEvent* event)
{
    if (object == m_popup)
        return filterPopup(event);
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::Leave:
        if (object->isWindowType())
            followPointer(object, event->type());
        break;
    case QEvent::Expose:
        if (object == m_unrevealed && m_unrevealed->isExposed())
            revealView();
        break;
    default:
        break;
    }
    return false;
}

/// Gives whether the popup is to hear nothing of @p event.
bool VLPopupSurface::filterPopup(QEvent* event)
{
    if (event->spontaneous())
        return false;
    switch (event->type()) {
    case QEvent::Show:
        beginMapping();
        return m_isMappingAnew;
    case QEvent::Hide:
        endMapping();
        return m_isMappingAnew;
    case QEvent::Move:
    case QEvent::Resize:
        if (!canReposition() && isPlacedByCompositor() && m_popup->isVisible())
            mapAnewLater();
        return false;
    default:
        return false;
    }
}

/// Sent before the popup's window is mapped: what the compositor is to know has to be there now.
void VLPopupSurface::beginMapping()
{
    m_unrevealed = m_popup->window()->windowHandle();
    if (!isPlacedByCompositor() || !m_unrevealed)
        return;
    m_popup->contentResized();
    m_popup->reposition();
    joinReferenceWindow();
    m_mappedGeometry = m_popup->geometry();
}

void VLPopupSurface::endMapping()
{
    m_unrevealed = nullptr;
}

/// A popup keeps its window once it is up. Nor can it be moved, and one that grew could leave the
/// screen.
void VLPopupSurface::mapAnewLater()
{
    if (m_willMapAnew)
        return;
    m_willMapAnew = true;
    QTimer::singleShot(0, this, &VLPopupSurface::mapAnew);
}

void VLPopupSurface::mapAnew()
{
    m_willMapAnew = false;
    if (!isPlacedByCompositor() || !m_popup->isVisible())
        return;
    const QRect geometry = m_popup->geometry();
    const bool grew = geometry.width() > m_mappedGeometry.width()
        || geometry.height() > m_mappedGeometry.height();
    const bool moved = geometry.topLeft() != m_mappedGeometry.topLeft();
    if (isInReferenceWindow() && (canReposition() || (!grew && !moved)))
        return;
    // For the popup itself it stays up: neither its timer nor its fade are touched.
    const QScopedValueRollback<bool> guard(m_isMappingAnew, true);
    m_popup->hide();
    m_popup->show();
}

void VLPopupSurface::followPointer(QObject* object, QEvent::Type type)
{
    auto* window = static_cast<QWindow*>(object);
    m_knowsPointer = true;
    if (type == QEvent::Enter)
        m_pointerWindow = window;
    else if (m_pointerWindow == window)
        m_pointerWindow = nullptr;
    else
        return;
    if (!isPlacedByCompositor() || !m_popup->isVisible())
        return;
    // A turn later: who leaves one window for another is told so in two events. No move comes from
    // a pointer that is in no window of the application, so this is the last that is heard of it.
    QTimer::singleShot(0, this, [this] {
        if (isPlacedByCompositor() && m_popup->isVisible())
            m_popup->checkMousePosition(QCursor::pos());
    });
}

/**
 * Of windows that come up together Qt may expose only the outer one, and the inner one then never
 * paints. So it is shown once more. Its first picture appears with the next one of the outer
 * window.
 */
void VLPopupSurface::revealView()
{
    m_unrevealed = nullptr;
    QTimer::singleShot(0, this, [this] {
        VLView* view = m_popup->view();
        if (!view || !m_popup->isVisible() || view->isExposed())
            return;
        connect(view, &QQuickWindow::frameSwapped, m_popup, qOverload<>(&QWidget::update),
                static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
        view->hide();
        view->show();
        m_popup->update();
    });
}

QWindow* VLPopupSurface::referenceWindow() const
{
    if (!m_reference)
        return m_referenceWindow;
    QWindow* window = m_reference->window()->windowHandle();
    // The popup's own border may be asked for a tip like any other widget.
    return window == m_popup->windowHandle() ? m_parentWindow.data() : window;
}

} // namespace Vidlets
