// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLWidgetPrivate.h"

#include "VLContentNames.h"
#include "VLContentTree.h"
#include "VLManagerSettings.h"
#include "VLSettings.h"
#include "VLView.h"
#include "VLWidget.h"
#include "VLXmlElement.h"

#include <QApplication>
#include <QCursor>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QQmlContext>
#include <QResizeEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr Qt::WindowFlags kHostWindowFlags =
    Qt::WindowTitleHint | Qt::CustomizeWindowHint | Qt::WindowCloseButtonHint;
constexpr Qt::WindowFlags kFloatingFlags = Qt::Tool | kHostWindowFlags;

/// The window that the window system has for @p widget, or 0. The widget itself may still name one
/// that it had before a change of flags.
WId nativeWindowOf(const QWidget* widget)
{
    QWindow* window = widget->windowHandle();
    return window && window->handle() ? window->winId() : 0;
}

/// Unlike QWidget::isAncestorOf() this goes on beyond the windows in between.
bool isWithin(const QObject* object, const QObject* ancestor)
{
    while (object && object != ancestor)
        object = object->parent();
    return object;
}

} // namespace

VLWidgetPrivate::VLWidgetPrivate(VLWidget* popup)
    : m_popup(popup)
    , m_hover(popup)
    , m_surface(popup)
{
}

VLWidgetPrivate& VLWidgetPrivate::of(VLWidget* popup)
{
    return *popup->d;
}

VLHoverKeeper& VLWidgetPrivate::hoverOf(VLWidget* popup)
{
    return popup->d->m_hover;
}

VLHoverKeeper& VLWidgetPrivate::hover()
{
    return m_hover;
}

VLPopupSurface& VLWidgetPrivate::surface()
{
    return m_surface;
}

QWidget* VLWidgetPrivate::reference() const
{
    return m_reference;
}

void VLWidgetPrivate::setReference(QWidget* widget)
{
    // The end of a control whose tip is gone must not hide the tip of another.
    if (m_hover.isOn())
        forgetReferences();
    m_reference = widget;
    m_anchor = m_requested;
    m_held = false;
    m_surface.setReference(widget, anchorWindow());
    if (!widget)
        return;
    // Kept: made anew at every show; the slot does no harm when it runs more often.
    connect(widget, &QObject::destroyed, m_popup, &VLWidget::refWidgetDestroyed);
    m_connected.removeAll(nullptr);
    if (!m_connected.contains(widget))
        m_connected.append(widget);
}

void VLWidgetPrivate::beginRequest(const VLTipAnchor& anchor, const QPoint& position,
                                   const QWidget* widget)
{
    QPoint origin;
    if (widget)
        origin = widget->mapToGlobal(QPoint());
    else if (anchor.window)
        origin = anchor.window->mapToGlobal(QPoint());
    m_requested = Anchor{anchor.zone.translated(-origin), widget ? nullptr : anchor.window.data(),
                         anchor.isCentred};
    m_requestPosition = position;
}

void VLWidgetPrivate::endRequest()
{
    m_requested.reset();
}

bool VLWidgetPrivate::isSameZoneRequested() const
{
    if (!m_requested)
        return true;
    return m_anchor && m_anchor->zone == m_requested->zone
        && m_anchor->window == m_requested->window;
}

bool VLWidgetPrivate::isOutsideOfZoneRequested() const
{
    return m_requested && !zone().isNull() && !zone().contains(m_requestPosition);
}

QRect VLWidgetPrivate::zone() const
{
    if (!m_anchor || m_anchor->zone.isNull())
        return QRect();
    QPoint origin;
    if (m_reference)
        origin = m_reference->mapToGlobal(QPoint());
    else if (m_anchor->window)
        origin = m_anchor->window->mapToGlobal(QPoint());
    return m_anchor->zone.translated(origin);
}

QWindow* VLWidgetPrivate::anchorWindow() const
{
    return m_anchor ? m_anchor->window.data() : nullptr;
}

void VLWidgetPrivate::setHeld(bool held)
{
    if (m_held == held)
        return;
    m_held = held;
    if (held) {
        m_popup->m_timer->stop();
        m_hover.revive();
    } else if (m_popup->isVisible()) {
        m_popup->checkMousePosition(QCursor::pos());
    }
}

bool VLWidgetPrivate::isHeld() const
{
    return m_held;
}

void VLWidgetPrivate::forgetReferences()
{
    for (const QPointer<QWidget>& widget : std::as_const(m_connected)) {
        if (widget)
            disconnect(widget, &QObject::destroyed, m_popup, &VLWidget::refWidgetDestroyed);
    }
    m_connected.clear();
}

bool VLWidgetPrivate::hidesByItself() const
{
    const bool staysOpen = m_held || (m_popup->m_view && m_popup->m_view->stayOpen());
    return !staysOpen && Settings::stayDurationMs(settingsOf(m_popup->m_manager)) > 0.0F;
}

bool VLWidgetPrivate::isOverReference(const QPoint& position) const
{
    // The window system takes several round trips to tell what lies at a point, on each move of the
    // pointer. One pixel more, since it may round the edges of a scaled widget in its own way.
    const QRect part = zone();
    if (!part.isNull()) {
        if (!part.adjusted(-1, -1, 1, 1).contains(position))
            return false;
    } else if (m_reference && !m_reference->isWindow()
               && !m_reference->rect()
                       .adjusted(-1, -1, 1, 1)
                       .contains(m_reference->mapFromGlobal(position))) {
        return false;
    }
    if (m_hover.isOn() || m_anchor)
        return m_hover.isOverControl(position);
    // Only compared: the pointer may belong to a widget that is gone. Where there is no reference
    // widget, a point over no widget of the application counts as one over it.
    return m_surface.widgetAt(position) == m_popup->m_referenceWidget;
}

void VLWidgetPrivate::setWantedPosition(const QPoint& position)
{
    const QSize offset = Settings::tooltipOffsetPx(settingsOf(m_popup->m_manager));
    m_pointer = position - QPoint(offset.width(), offset.height());
}

std::optional<PopupPlacement::KeepOff> VLWidgetPrivate::keepOff() const
{
    const VLContext& settings = settingsOf(m_popup->m_manager);
    if (m_pinned || !m_pointer || !m_popup->isWindow() || !Settings::keepOffReference(settings))
        return std::nullopt;
    PopupPlacement::KeepOff keepOff;
    keepOff.pointer = *m_pointer;
    keepOff.offset = Settings::tooltipOffsetPx(settings);
    const QWidget* direction = m_reference ? m_reference.data() : m_popup;
    keepOff.rightToLeft = direction->layoutDirection() == Qt::RightToLeft;
    keepOff.control = visibleControl();
    return keepOff;
}

std::optional<QPoint> VLWidgetPrivate::middle() const
{
    if (m_pinned || !m_popup->isWindow() || !m_anchor || !m_anchor->isCentred)
        return std::nullopt;
    return zone().center();
}

/// A control may be scrolled out of sight in part.
QRect VLWidgetPrivate::visibleControl() const
{
    QRect visible;
    if (m_reference) {
        const QRect bounds = m_reference->visibleRegion().boundingRect();
        visible = QRect(m_reference->mapToGlobal(bounds.topLeft()), bounds.size());
    } else if (const QWindow* window = anchorWindow()) {
        visible = QRect(window->mapToGlobal(QPoint()), window->size());
    }
    const QRect part = zone();
    if (part.isNull())
        return m_reference ? visible : QRect();
    // What a host calls a zone may lie beside the widget that was asked.
    return part.intersects(visible) ? part.intersected(visible) : part;
}

QRect VLWidgetPrivate::availableArea() const
{
    // The user may have taken a pinned window to another screen.
    if (isTended())
        return m_popup->window()->screen()->availableGeometry();
    const QScreen* screen = m_popup->screen();
    if (m_reference)
        screen = m_reference->screen();
    else if (const QWindow* window = anchorWindow())
        screen = window->screen();
    return m_surface.availableArea(screen);
}

void VLWidgetPrivate::putContent(VLXmlElement* content, const QString& rootPath)
{
    VLView* view = m_popup->m_view;
    view->setPackageRoot(QDir(rootPath));
    VLXmlElement* old = view->content();
    if (old && old != content) {
        view->setContent(nullptr);
        if (Settings::releaseClips(settingsOf(m_popup->m_manager)))
            deleteTreeOf(old);
        else
            delete old;
    }
    view->setContent(content);
}

void VLWidgetPrivate::loadScene(const QString& scene, const QString& rootPath)
{
    VLView* view = m_popup->m_view;
    QQmlContext* context = view->rootContext();
    context->setContextProperty(u"vidlet"_s, view->content());
    context->setContextProperty(u"dataLocation"_s, QVariant(rootPath));
    // Each time leaves a connection to the view with the engine.
    if (!Settings::releaseClips(settingsOf(m_popup->m_manager))
        || context->contextProperty(u"vidletView"_s).value<QObject*>() != view)
        context->setContextProperty(u"vidletView"_s, view);
    view->loadQML(scene);
}

void VLWidgetPrivate::renewContent(VLXmlElement* content, const QString& rootPath)
{
    VLView* view = m_popup->m_view;
    // The same scene would stay alive, with all that it has translated before.
    view->setSource(QUrl());
    const QString root = rootPath.isNull() ? view->packageRoot().absolutePath() : rootPath;
    putContent(content, root);
    loadScene(QFileInfo(view->uiRootFilePath()).absoluteFilePath(), root);
    if (!m_pinned) {
        VLHostHooks::tellOfTip(m_popup->m_manager);
        return;
    }
    if (m_popup->isWindow())
        m_popup->setWindowTitle(floatingTitle());
    else
        m_popup->parentWidget()->setWindowTitle(content->attribute(ContentNames::titleAttribute()));
}

bool VLWidgetPrivate::isTended() const
{
    return m_pinned && Settings::tendPinned(settingsOf(m_popup->m_manager));
}

void VLWidgetPrivate::followScene(const QSize& sceneSize)
{
    if (awaitsFrame())
        return;
    m_popup->setFixedSize(sceneSize);
    if (m_popup->isWindow()) {
        const PopupPlacement::Fit fit =
            PopupPlacement::fitInto(availableArea(), m_popup->frameGeometry());
        if (fit.moved)
            m_popup->move(fit.geometry.topLeft());
        return;
    }
    // A part of a host's larger window is laid out by the host. A hidden one takes no room yet.
    QWidget* window = m_popup->parentWidget();
    if (window->isWindow() && window->layout() && !m_popup->isHidden())
        window->setFixedSize(window->layout()->totalSizeHint());
}

/// Whether the window is on its way to the screen. The window manager has yet to put its frame
/// around it, and a change of size meanwhile would take it elsewhere: the scene is looked at again
/// once it has.
bool VLWidgetPrivate::awaitsFrame()
{
    QWindow* window = m_popup->isWindow() ? m_popup->windowHandle() : nullptr;
    if (!window || !window->isVisible() || window->isExposed())
        return false;
    m_unframed = window;
    window->installEventFilter(this);
    return true;
}

void VLWidgetPrivate::dockInto(QWidget* window, const QPoint& position)
{
    m_hover.retire();
    m_pinned = true;
    m_held = false;
    disconnect(m_popup->m_timer, &QTimer::timeout, m_popup, &VLWidget::hideAnimated);
    m_popup->setParent(window, Qt::WindowFlags());
    if (!window->layout()) {
        auto* layout = new QVBoxLayout;
        layout->setContentsMargins(0, 0, 0, 0);
        window->setLayout(layout);
    }
    const VLXmlElement* content = m_popup->m_view->content();
    window->setWindowTitle(content ? content->attribute(ContentNames::titleAttribute())
                                   : QString());
    window->layout()->addWidget(m_popup);
    window->setWindowFlags(window->windowFlags() | kHostWindowFlags);
    m_popup->contentResized();
    window->show();
    window->window()->move(position);
}

void VLWidgetPrivate::floatAt(const QPoint& position)
{
    m_hover.retire();
    m_pinned = true;
    m_held = false;
    m_popup->setAttribute(Qt::WA_DeleteOnClose);
    m_popup->setParent(floatingParent(), kFloatingFlags);
    m_popup->setWindowModality(Qt::NonModal);
    m_popup->setWindowTitle(floatingTitle());
    m_popup->move(position);
    setTransientParentOfFloating();
    m_popup->show();
}

/// A parent widget brings its window along. A control that is no widget has only the window.
void VLWidgetPrivate::setTransientParentOfFloating()
{
    QWindow* owner = anchorWindow();
    if (m_popup->parentWidget() || !owner)
        return;
    while (owner->parent())
        owner = owner->parent();
    m_popup->winId();
    m_popup->windowHandle()->setTransientParent(owner);
}

QString VLWidgetPrivate::floatingTitle() const
{
    const VLXmlElement* content = m_popup->m_view->content();
    if (!content)
        return QString();
    if (isTended())
        return content->attribute(ContentNames::titleAttribute());
    // Kept: the property and not the attribute, so the title stays empty unless somebody has set a
    // dynamic property of that name on the element.
    return content->property("title").toString();
}

/// The window that a popup of its own belongs to. None where that would be the popup itself: its
/// border and what lies in it can be asked for tips like any other widget.
QWidget* VLWidgetPrivate::floatingParent() const
{
    QWidget* window = m_reference ? m_reference->window() : nullptr;
    return isWithin(window, m_popup) ? nullptr : window;
}

void VLWidgetPrivate::setStaysOnTop(VLWidget* popup, bool on)
{
    VLWidgetPrivate* d = popup->d.get();
    Qt::WindowFlags flags = popup->windowFlags();
    flags.setFlag(Qt::WindowStaysOnTopHint, on);

    // The scene stays as large as it is, and so does the window around it.
    const QScopedValueRollback<bool> guard(popup->m_resizing, true);
    const WId before = nativeWindowOf(popup);
    popup->setWindowFlags(flags);
    // A change of flags hides the window.
    popup->show();
    if (before && nativeWindowOf(popup) != before)
        d->renewView();
}

/// The view's window goes with the popup's without Qt noticing: the popup would be empty.
void VLWidgetPrivate::renewView()
{
    VLView* view = m_popup->m_view;
    if (!view)
        return;
    view->destroy();
    view->installEventFilter(this);
    view->show();
}

/**
 * Until the window manager has taken the popup's window over, the window system may report the
 * screen's origin as its position, and a change of size that is sent then makes the window stay
 * there. So the position is kept here meanwhile, and goes out with each change.
 *
 * A window with a title is placed by its frame, which nobody knows before the window manager has
 * drawn it: such a one is sent again to where it was sent before, and only from the origin.
 */
void VLWidgetPrivate::beginMapping()
{
    endMapping();
    if (!m_popup->isWindow() || !(m_popup->windowFlags() & Qt::FramelessWindowHint))
        return;
    m_mapping = m_popup->windowHandle();
    if (!m_mapping)
        return;
    m_heldPosition = m_popup->pos();
    m_sizeSentAgain = false;
    m_mapping->installEventFilter(this);
    m_popup->installEventFilter(this);
}

void VLWidgetPrivate::endMapping()
{
    if (m_mapping)
        m_mapping->removeEventFilter(this);
    m_mapping = nullptr;
}

void VLWidgetPrivate::holdPosition(const QPoint& position)
{
    if (m_mapping)
        m_heldPosition = position;
}

QPoint VLWidgetPrivate::framePosition() const
{
    return m_mapping ? m_heldPosition : m_popup->window()->frameGeometry().topLeft();
}

void VLWidgetPrivate::confirmPosition(const QPoint& position)
{
    m_sizeSentAgain = false;
    if (!m_mapping) {
        confirmTitledWindow(m_popup->window());
        return;
    }
    m_heldPosition = position;
    m_mapping->setFramePosition(position);
}

/// The widget still knows where it was sent when its window has already been told of the origin.
void VLWidgetPrivate::confirmTitledWindow(const QWidget* framed)
{
    QWindow* window = framed->windowHandle();
    const bool mapping = window && window->isVisible() && !window->isExposed();
    if (mapping && window->position().isNull() && framed->testAttribute(Qt::WA_Moved))
        window->setPosition(framed->pos());
}

/**
 * A window manager that lets go of one tip's window while the next one is shown in it may say last
 * which size the window had before, and then nothing else would ever come. Sent again once, since a
 * window manager that wants another size has the last word.
 */
void VLWidgetPrivate::confirmSize()
{
    const QSize size = m_popup->minimumSize();
    const bool isFixed = m_popup->isWindow() && size == m_popup->maximumSize();
    if (m_sizeSentAgain || !isFixed || m_popup->windowType() == Qt::ToolTip
        || m_popup->size() == size)
        return;
    m_sizeSentAgain = true;
    m_popup->resize(size);
}

bool VLWidgetPrivate::eventFilter(QObject* object, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Expose:
        if (object == m_mapping && m_mapping->isExposed())
            endMapping();
        if (object == m_unframed && m_unframed->isExposed()) {
            m_unframed->removeEventFilter(this);
            m_unframed = nullptr;
            m_popup->contentResized();
        }
        break;
    case QEvent::Move:
        // What the window system reports is what must not be believed yet.
        if (object == m_popup && m_mapping && !event->spontaneous())
            m_heldPosition = m_popup->pos();
        break;
    case QEvent::Resize:
        if (object == m_popup && event->spontaneous())
            confirmSize();
        // Qt tells a new window of its size though it has not changed; a pinned window with a title
        // would grow by it.
        if (object == m_popup->m_view) {
            object->removeEventFilter(this);
            const auto* resize = static_cast<QResizeEvent*>(event);
            return resize->size() == resize->oldSize();
        }
        break;
    default:
        break;
    }
    return false;
}

} // namespace Vidlets
