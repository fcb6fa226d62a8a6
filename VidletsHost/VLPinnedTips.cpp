// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLPinnedTips.h"

#include <Vidlets/VLHostHooks.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLWidget.h>

#include <QDockWidget>
#include <QEvent>
#include <QMainWindow>
#include <QScrollArea>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// Room for the frame of the dock's contents.
constexpr int kDockFramePx = 4;

/// Main windows save the places of their docks by name, and complain of those without. A name like
/// those of Qt's own parts is nobody's key.
constexpr auto kDockName = "qt_vidlets_pinned_"_L1;

/// The first dock of @p window in @p area that holds a pinned tip.
QDockWidget* neighbourOf(const QDockWidget* dock, const QMainWindow* window,
                         Qt::DockWidgetArea area)
{
    const auto others = window->findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QDockWidget* other : others) {
        if (other != dock && !other->isFloating() && other->objectName().startsWith(kDockName)
            && window->dockWidgetArea(other) == area)
            return other;
    }
    return nullptr;
}

} // namespace

VLPinnedTips::VLPinnedTips(VLManager* manager)
    : m_manager(manager)
{
}

Qt::DockWidgetArea VLPinnedTips::area() const
{
    return m_area;
}

void VLPinnedTips::setArea(Qt::DockWidgetArea area)
{
    m_area = area;
}

QWidget* VLPinnedTips::makeRoom()
{
    // One that has begun would go on until nothing can be seen of the pinned tip.
    VLHostHooks::endFade(m_manager);
    QMainWindow* window = mainWindowOf(VLHostHooks::control(m_manager));
    return window && m_area != Qt::NoDockWidgetArea ? makeDock(window) : nullptr;
}

QList<VLWidget*> VLPinnedTips::tips() const
{
    if (!m_manager)
        return {};
    QList<VLWidget*> result = VLHostHooks::reservedTips(m_manager);
    // A host may show one again that was closed.
    result.removeIf(
        [this](VLWidget* tip) { return m_closed.contains(tip) && !windowOf(tip)->isVisible(); });
    return result;
}

void VLPinnedTips::closeAll()
{
    const QList<VLWidget*> all = tips();
    // Closing one may close another.
    const QList<QPointer<VLWidget>> open(all.cbegin(), all.cend());
    for (const QPointer<VLWidget>& tip : open) {
        if (!tip)
            continue;
        QWidget* window = windowOf(tip);
        const bool goes = window->testAttribute(Qt::WA_DeleteOnClose);
        // One that is not on the screen yet does not hide when it closes.
        if (window->close() && goes)
            noteClosed(window);
    }
}

void VLPinnedTips::discard()
{
    const QList<VLWidget*> open = tips();
    for (VLWidget* tip : open) {
        QWidget* window = windowOf(tip);
        if (!window->testAttribute(Qt::WA_DeleteOnClose))
            continue;
        window->hide();
        window->deleteLater();
    }
}

void VLPinnedTips::watch(QObject* object, const QEvent* event)
{
    // The window of a widget is told the same.
    if (!object->isWidgetType())
        return;
    // Who refuses to close does not hide either, but may be hidden with its window later.
    if (event->type() == QEvent::Close) {
        m_closing = object;
    } else if (event->type() == QEvent::Hide && object == m_closing) {
        m_closing = nullptr;
        const auto* window = static_cast<QWidget*>(object);
        if (window->isHidden() && window->testAttribute(Qt::WA_DeleteOnClose))
            noteClosed(window);
    }
}

void VLPinnedTips::noteClosed(const QWidget* window)
{
    m_closed.removeAll(nullptr);
    const QList<VLWidget*> open = tips();
    for (VLWidget* tip : open) {
        if (windowOf(tip) == window)
            m_closed.append(tip);
    }
}

/// The main window that @p control, which may be null, is in: what is in a dialog stays with that.
QMainWindow* VLPinnedTips::mainWindowOf(const QWidget* control)
{
    for (const QWidget* widget = control; widget; widget = widget->parentWidget()) {
        if (auto* window = qobject_cast<QMainWindow*>(const_cast<QWidget*>(widget)))
            return window;
        const bool isPart = !widget->isWindow() || widget->windowType() == Qt::Popup
            || qobject_cast<const QDockWidget*>(widget);
        if (!isPart)
            return nullptr;
    }
    return nullptr;
}

/// What is closed when @p tip is: itself, its dock, or what a host has put it into.
QWidget* VLPinnedTips::windowOf(VLWidget* tip)
{
    if (tip->isWindow())
        return tip;
    for (QWidget* widget = tip->parentWidget(); widget; widget = widget->parentWidget()) {
        if (qobject_cast<QDockWidget*>(widget) && widget->objectName().startsWith(kDockName))
            return widget;
    }
    return tip->parentWidget();
}

/// The library moves the window of what it is given to the place of the tip. So the dock begins as
/// a window of its own, which nobody sees, and takes its place when that is done.
QWidget* VLPinnedTips::makeDock(QMainWindow* window)
{
    static int docks = 0;
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    auto* scroller = new QScrollArea;
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setWidgetResizable(true);
    scroller->setWidget(page);

    auto* dock = new QDockWidget(window);
    dock->setObjectName(kDockName + QString::number(++docks));
    dock->setAttribute(Qt::WA_DeleteOnClose);
    dock->setWidget(scroller);
    dock->setFloating(true);
    QObject::connect(page, &QWidget::windowTitleChanged, dock, &QWidget::setWindowTitle);
    const Qt::DockWidgetArea area = m_area;
    QMetaObject::invokeMethod(
        dock, [dock, window, area] { settle(dock, window, area); }, Qt::QueuedConnection);
    return page;
}

void VLPinnedTips::settle(QDockWidget* dock, QMainWindow* window, Qt::DockWidgetArea area)
{
    // The tip may have been closed meanwhile.
    auto* tip = dock->findChild<VLWidget*>();
    if (!tip)
        return;
    const int widthPx = tip->width() + kDockFramePx;
    QDockWidget* neighbour = neighbourOf(dock, window, area);
    window->addDockWidget(area, dock);
    dock->setFloating(false);
    if (neighbour)
        window->tabifyDockWidget(neighbour, dock);
    dock->show();
    dock->raise();
    if (area == Qt::LeftDockWidgetArea || area == Qt::RightDockWidgetArea)
        window->resizeDocks({dock}, {widthPx}, Qt::Horizontal);
    else
        window->resizeDocks({dock}, {tip->height() + kDockFramePx}, Qt::Vertical);
}

} // namespace Vidlets
