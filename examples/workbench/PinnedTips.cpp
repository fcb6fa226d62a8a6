// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PinnedTips.h"

#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QAbstractAnimation>
#include <QApplication>
#include <QDockWidget>
#include <QMainWindow>
#include <QQuickItem>
#include <QScrollArea>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

// Room for the frame of the dock's contents.
constexpr int kDockFramePx = 4;

// A fade that has begun would go on until nothing can be seen of the pinned tip.
void endFade(Vidlets::VLWidget& tip)
{
    const auto fades = tip.findChildren<QAbstractAnimation*>(Qt::FindDirectChildrenOnly);
    for (QAbstractAnimation* fade : fades) {
        fade->stop();
    }
    tip.setWindowOpacity(1.0);
}

// The library takes the title of a window of its own from this property, which content lacks.
void giveTitle(Vidlets::VLWidget& tip)
{
    Vidlets::VLXmlElement* content = tip.view()->content();
    content->setProperty("title", content->attribute(u"title"_s));
}

void fitToScene(Vidlets::VLWidget& tip)
{
    const QQuickItem* scene = tip.view()->rootObject();
    if (!scene) {
        return;
    }
    const QSize size = scene->size().toSize();
    tip.layout()->itemAt(0)->widget()->setFixedSize(size);
    tip.setFixedSize(size);
}

// The popup fixes the size of the window it lies in at that of its scene. In a dock this would be
// our main window, so from here on the tip changes its own size alone.
void leaveWindowAlone(Vidlets::VLWidget& tip)
{
    QObject::disconnect(tip.view(), &Vidlets::VLView::contentSizeChanged, &tip,
                        &Vidlets::VLWidget::contentResized);
    QObject::connect(tip.view(), &Vidlets::VLView::contentSizeChanged, &tip,
                     [&tip] { fitToScene(tip); });
}

} // namespace

PinnedTips::PinnedTips(QMainWindow& window)
    : m_window(window)
{
}

PinnedTips::~PinnedTips()
{
    for (const QPointer<Vidlets::VLWidget>& tip : std::as_const(m_tips)) {
        delete tip.data();
    }
}

PinnedTips::Place PinnedTips::place() const
{
    return m_place;
}

void PinnedTips::setPlace(Place place)
{
    m_place = place;
}

QWidget* PinnedTips::makeRoom()
{
    Vidlets::VLWidget* tip = findNewTip();
    if (!tip) {
        return nullptr;
    }
    m_tips.append(tip);
    endFade(*tip);
    if (m_onTop) {
        // The tip has its new window only when this call is over.
        QMetaObject::invokeMethod(
            tip, [this, tip] { keepOnTop(tip->manager()); }, Qt::QueuedConnection);
    }
    if (m_place == Place::Dock) {
        return makeDock(*tip);
    }
    giveTitle(*tip);
    return nullptr;
}

void PinnedTips::raise()
{
    for (const QPointer<QDockWidget>& dock : std::as_const(m_docks)) {
        if (dock) {
            dock->raise();
        }
    }
    Vidlets::VLWidget* tip = findLivingTip();
    // A pinned tip may outlive the interface, and then has no manager.
    if (tip && tip->manager()) {
        tip->manager()->raise();
    }
}

void PinnedTips::setOnTop(bool isOnTop)
{
    m_onTop = isOnTop;
    if (Vidlets::VLWidget* tip = findLivingTip()) {
        keepOnTop(tip->manager());
    }
}

void PinnedTips::keepOnTop(Vidlets::VLManager* manager) const
{
    if (manager) {
        manager->setStayOnTop(m_onTop);
    }
}

Vidlets::VLWidget* PinnedTips::findNewTip() const
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        auto* tip = qobject_cast<Vidlets::VLWidget*>(window);
        if (tip && tip->view()->reserved() && !m_tips.contains(tip)) {
            return tip;
        }
    }
    return nullptr;
}

// Any of them leads to the manager, which knows them all.
Vidlets::VLWidget* PinnedTips::findLivingTip() const
{
    for (const QPointer<Vidlets::VLWidget>& tip : m_tips) {
        if (tip) {
            return tip;
        }
    }
    return nullptr;
}

// The library moves the window of what it is given to the place of the tip. So the dock begins as a
// window of its own, which nobody sees, and takes its place beside the paper when that is done.
QWidget* PinnedTips::makeDock(Vidlets::VLWidget& tip)
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    auto* scroller = new QScrollArea;
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setWidgetResizable(true);
    scroller->setWidget(page);

    auto* dock = new QDockWidget(&m_window);
    dock->setAttribute(Qt::WA_DeleteOnClose);
    dock->setWidget(scroller);
    dock->setFloating(true);
    QObject::connect(page, &QWidget::windowTitleChanged, dock, &QWidget::setWindowTitle);
    leaveWindowAlone(tip);
    const int width = tip.width() + kDockFramePx;
    QMetaObject::invokeMethod(
        dock, [this, dock, width] { settle(*dock, width); }, Qt::QueuedConnection);
    return page;
}

void PinnedTips::settle(QDockWidget& dock, int width)
{
    m_window.addDockWidget(Qt::LeftDockWidgetArea, &dock);
    dock.setFloating(false);
    m_docks.removeAll(nullptr);
    for (const QPointer<QDockWidget>& other : std::as_const(m_docks)) {
        if (!other->isFloating()) {
            m_window.tabifyDockWidget(other, &dock);
            break;
        }
    }
    m_docks.append(&dock);
    dock.show();
    dock.raise();
    m_window.resizeDocks({&dock}, {width}, Qt::Horizontal);
}

} // namespace Workbench
