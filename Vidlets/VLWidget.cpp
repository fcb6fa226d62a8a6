// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLWidget.h"

#include "VLContentNames.h"
#include "VLContext.h"
#include "VLManager.h"
#include "VLNumbers.h"
#include "VLSettings.h"
#include "VLView.h"
#include "VLXmlElement.h"

#include <QApplication>
#include <QCursor>
#include <QDir>
#include <QFileInfo>
#include <QPropertyAnimation>
#include <QQmlContext>
#include <QQuickItem>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr qreal kFadeInStartOpacity = 0.1;
constexpr int kExtraPixel = 1;
constexpr qint64 kMappingLimitMs = 500;
constexpr Qt::WindowFlags kPopupFlags = Qt::Tool | Qt::FramelessWindowHint;
constexpr Qt::WindowFlags kHostWindowFlags =
    Qt::WindowTitleHint | Qt::CustomizeWindowHint | Qt::WindowCloseButtonHint;
constexpr Qt::WindowFlags kFloatingFlags = Qt::Tool | kHostWindowFlags;

} // namespace

VLWidget::VLWidget(VLManager* manager, QWidget* parent)
    : QWidget(parent)
    , m_animation(new QPropertyAnimation(this))
    , m_timer(new QTimer(this))
    , m_manager(manager)
{
    m_animation->setPropertyName("windowOpacity");
    m_animation->setTargetObject(this);
    m_timer->setSingleShot(true);
    if (!Settings::keepPopupWindowFlags(m_manager->context()))
        setWindowFlags(kPopupFlags);
    connect(m_timer, &QTimer::timeout, this, &VLWidget::hideAnimated);
    m_timer->stop();
}

VLWidget::~VLWidget()
{
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
    // Only compared: the pointer may belong to a widget that is gone. Where there is no reference
    // widget, a point over no widget of the application counts as one over it.
    if (QApplication::widgetAt(pos) == m_referenceWidget)
        return true;

    const QSize margin = Settings::safeZoneMarginPx(m_manager->context());
    const QRect frame(mapToGlobal(QPoint(0, 0)), frameGeometry().size());
    return frame.adjusted(-margin.width(), -margin.height(), margin.width(), margin.height())
        .contains(pos);
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

    m_referenceWidget = nullptr;
    if (reference && reference->isWidgetType()) {
        m_referenceWidget = static_cast<QWidget*>(reference);
        // Made anew at every show and never undone: the slot does no harm when it runs more often.
        connect(m_referenceWidget, &QObject::destroyed, this, &VLWidget::refWidgetDestroyed);
    }
    m_livingReference = m_referenceWidget;

    m_view->setPackageRoot(QDir(rootPath));
    VLXmlElement* old = m_view->content();
    if (old && old != content) {
        m_view->setContent(nullptr);
        delete old;
    }
    m_view->setContent(content);
    // After the content: the choice of the scene reads its attributes.
    const QFileInfo scene(m_view->uiRootFilePath());

    move(pos);
    if (isVisible())
        reposition();

    QQmlContext* context = m_view->rootContext();
    context->setContextProperty(u"vidlet"_s, content);
    context->setContextProperty(u"dataLocation"_s, QVariant(rootPath));
    context->setContextProperty(u"vidletView"_s, m_view);
    m_view->loadQML(scene.absoluteFilePath());
    showAnimated();
}

void VLWidget::reposition()
{
    const QWidget* framed = window();
    if (!isWindow() && m_containerWidget)
        framed = m_containerWidget->window();

    bool moved = false;
    const QRect geometry = findVisibleGeometry(framed->frameGeometry(), &moved);
    if (moved)
        window()->move(geometry.topLeft());
}

void VLWidget::hideAnimated()
{
    if (!isVisible() || m_animation->state() != QAbstractAnimation::Stopped)
        return;

    const int durationMs = Settings::hideDurationMs(m_manager->context());
    if (durationMs == 0) {
        hideAnimationFinished();
        return;
    }
    prepareFade(windowOpacity(), 0.0, durationMs);
    // Connected during a hide only, so that the end of a fade-in hides nothing.
    connect(m_animation, &QAbstractAnimation::finished, this, &VLWidget::hideAnimationFinished);
    m_animation->start(QAbstractAnimation::KeepWhenStopped);
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

    const int durationMs = Settings::showDurationMs(m_manager->context());
    if (durationMs == 0) {
        setWindowOpacity(1.0);
        show();
        return;
    }
    setWindowOpacity(kFadeInStartOpacity);
    show();
    contentResized();
    prepareFade(kFadeInStartOpacity, 1.0, durationMs);
    m_animation->start(QAbstractAnimation::KeepWhenStopped);
}

void VLWidget::prepareFade(qreal from, qreal to, int durationMs)
{
    m_animation->setDuration(durationMs);
    m_animation->setStartValue(from);
    m_animation->setEndValue(to);
}

void VLWidget::setTimer()
{
    m_timer->stop();
    if (m_view && m_view->stayOpen())
        return;
    const float delayMs = Settings::stayDurationMs(m_manager->context());
    if (delayMs > 0.0F)
        m_timer->start(truncatedToInt32(static_cast<double>(delayMs)));
}

void VLWidget::contentReservedChanged()
{
    if (!m_view->reserved())
        return;
    QWidget* window = nullptr;
    if (!m_manager->reserve(this, window))
        return;

    const QPoint position = pos();
    if (window)
        dockInto(window, position);
    else
        floatAt(position);
}

void VLWidget::dockInto(QWidget* window, const QPoint& position)
{
    disconnect(m_timer, &QTimer::timeout, this, &VLWidget::hideAnimated);
    setParent(window, Qt::WindowFlags());
    if (!window->layout()) {
        auto* layout = new QVBoxLayout;
        layout->setContentsMargins(0, 0, 0, 0);
        window->setLayout(layout);
    }
    window->setWindowTitle(m_view->content()->attribute(ContentNames::titleAttribute()));
    window->layout()->addWidget(this);
    window->setWindowFlags(window->windowFlags() | kHostWindowFlags);
    contentResized();
    window->show();
    window->window()->move(position);
}

void VLWidget::floatAt(const QPoint& position)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setParent(m_livingReference ? m_livingReference->window() : nullptr, kFloatingFlags);
    setWindowModality(Qt::NonModal);
    // The property and not the attribute: the title stays empty unless somebody has set a dynamic
    // property of that name on the element.
    setWindowTitle(m_view->content()->property("title").toString());
    move(position);
    show();
}

void VLWidget::contentResized()
{
    if (!m_view || !m_view->rootObject() || m_resizing)
        return;
    m_resizing = true;

    const QRectF bounds = m_view->rootObject()->boundingRect();
    const QSize contentSize(truncatedToInt32(bounds.width()), truncatedToInt32(bounds.height()));
    if (!hasSizeFor(contentSize))
        takeContentSize(contentSize);
    if (m_containerWidget && !isWindow() && !isVisible()) {
        m_resizing = false;
        return;
    }

    QRect frame = window()->frameGeometry();
    const int titleOffset = frame.top() - window()->geometry().top();
    const bool mapping = isBeingMapped();
    if (mapping)
        frame.moveTopLeft(m_shownAt);
    bool moved = false;
    QRect fitted = findVisibleGeometry(QRect(frame.topLeft(), contentSize), &moved);
    // The bottom stays, so the rectangle grows by the height of the title.
    fitted.setTop(fitted.top() + titleOffset);
    if (moved)
        window()->move(fitted.topLeft());
    if (mapping)
        m_shownAt = fitted.topLeft();

    // kExtraPixel: one pixel more than the scene in each direction: intended, and for these two
    // alone.
    const QSize finalSize(fitted.width() + kExtraPixel, fitted.height() + kExtraPixel);
    setFixedSize(finalSize);
    window()->setFixedSize(finalSize);
    if (mapping)
        windowHandle()->setFramePosition(m_shownAt);
    m_resizing = false;
}

/**
 * Whether the window manager is still about to take the popup's window over.
 *
 * Meanwhile the window system may report the screen's origin as its position, and a change of size
 * that is sent then makes the window stay there. So the position goes out with it.
 */
bool VLWidget::isBeingMapped()
{
    if (!isWindow() || !isVisible() || !windowHandle())
        return false;
    const bool isAtOrigin = pos().isNull() || windowHandle()->position().isNull();
    if (!isAtOrigin)
        m_shownAt = pos();
    return !windowHandle()->isExposed() || (isAtOrigin && !m_sinceShow.hasExpired(kMappingLimitMs));
}

/// Whether popup and container are fixed at what they would be given anew, so that their window can
/// be spared a change of size back and forth.
bool VLWidget::hasSizeFor(const QSize& contentSize) const
{
    const QSize finalSize = contentSize + QSize(kExtraPixel, kExtraPixel);
    const auto isFixedAt = [](const QWidget* widget, const QSize& size) {
        return widget->minimumSize() == size && widget->maximumSize() == size
            && widget->size() == size;
    };
    return isFixedAt(this, finalSize) && m_containerWidget
        && isFixedAt(m_containerWidget, contentSize);
}

void VLWidget::takeContentSize(const QSize& contentSize)
{
    setMinimumSize(contentSize);
    setMaximumSize(contentSize);
    if (!m_containerWidget)
        return;
    m_containerWidget->setMinimumSize(contentSize);
    m_containerWidget->setMaximumSize(contentSize);
    m_containerWidget->setFixedSize(contentSize);
}

QRect VLWidget::findVisibleGeometry(QRect geometry, bool* move)
{
    const QRect area = referenceScreen()->availableGeometry();
    bool moved = false;
    if (geometry.top() < area.top()) {
        geometry.moveTop(area.top());
        moved = true;
    }
    if (geometry.left() < area.left()) {
        geometry.moveLeft(area.left());
        moved = true;
    }
    // Bottom and right come last, so they win where the rectangle is too large for the area.
    if (geometry.bottom() > area.bottom()) {
        geometry.moveBottom(area.bottom());
        moved = true;
    }
    if (geometry.right() > area.right()) {
        geometry.moveRight(area.right());
        moved = true;
    }
    if (move)
        *move = moved;
    return geometry;
}

QScreen* VLWidget::referenceScreen() const
{
    return m_livingReference ? m_livingReference->screen() : screen();
}

void VLWidget::showEvent(QShowEvent* /*event*/)
{
    if (!isSafe(QCursor::pos()))
        setTimer();
    reposition();
    m_shownAt = pos();
    m_sinceShow.start();
}

void VLWidget::hideEvent(QHideEvent* /*event*/)
{
    disconnect(m_animation, &QAbstractAnimation::finished, this, &VLWidget::hideAnimationFinished);
}

void VLWidget::refWidgetDestroyed(QObject* /*object*/)
{
    hideAnimationFinished();
}

} // namespace Vidlets

#include "moc_VLWidget.cpp"
