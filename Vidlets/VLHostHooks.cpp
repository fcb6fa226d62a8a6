// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLHostHooks.h"

#include "VLHostState.h"
#include "VLIndex.h"
#include "VLManager.h"
#include "VLView.h"
#include "VLWidget.h"
#include "VLWidgetPrivate.h"
#include "VLXmlElement.h"

#include <QApplication>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QSignalBlocker>
#include <QUrl>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

thread_local VLHostHooks::MessageSink* earlySink = nullptr;

/// The popup of @p manager while its tip is up, else null.
VLWidget* visiblePopup(VLManager* manager)
{
    VLWidget* popup = manager->widget();
    return popup && popup->isVisible() ? popup : nullptr;
}

/// Makes a @p scene without content and lets it go again: its types, and what they bring along, are
/// there from then on. What it says about the lack of content is of no interest.
void makeOnce(const QString& scene, VLView* view)
{
    QQmlEngine* engine = view->engine();
    const QSignalBlocker blocker(engine);
    const bool wasLoud = engine->outputWarningsToStandardError();
    engine->setOutputWarningsToStandardError(false);
    {
        QObject nothing;
        VLXmlElement content;
        QQmlContext context(engine);
        context.setContextProperty(u"vidlet"_s, &content);
        context.setContextProperty(u"vidletView"_s, &nothing);
        context.setContextProperty(u"dataLocation"_s, QString());
        QQmlComponent component(engine, QUrl::fromLocalFile(scene));
        const std::unique_ptr<QObject> root(component.create(&context));
    }
    engine->setOutputWarningsToStandardError(wasLoud);
}

} // namespace

VLManager* VLHostHooks::managerOf(const VLInterface* interface)
{
    return interface->ownManager();
}

bool VLHostHooks::show(VLManager* manager, const QString& key, const QPoint& position,
                       QObject* reference, const VLTipAnchor& anchor)
{
    return isHeld(manager) || manager->showAnchored(key, position, reference, anchor);
}

void VLHostHooks::hide(VLManager* manager)
{
    if (VLWidget* popup = manager->widget())
        popup->hideAnimationFinished();
}

void VLHostHooks::endFade(VLManager* manager)
{
    if (VLWidget* popup = manager->widget())
        VLWidgetPrivate::hoverOf(popup).endFade();
}

QWidget* VLHostHooks::control(VLManager* manager)
{
    VLWidget* popup = manager->widget();
    return popup ? VLWidgetPrivate::of(popup).reference() : nullptr;
}

QRect VLHostHooks::zone(VLManager* manager)
{
    VLWidget* popup = visiblePopup(manager);
    if (!popup)
        return QRect();
    const VLWidgetPrivate& d = VLWidgetPrivate::of(popup);
    const QRect zone = d.zone();
    const QWidget* control = d.reference();
    if (!zone.isNull() || !control)
        return zone;
    return {control->mapToGlobal(QPoint()), control->size()};
}

QWindow* VLHostHooks::controlWindow(VLManager* manager)
{
    VLWidget* popup = visiblePopup(manager);
    if (!popup)
        return nullptr;
    const VLWidgetPrivate& d = VLWidgetPrivate::of(popup);
    const QWidget* control = d.reference();
    return control ? control->window()->windowHandle() : d.anchorWindow();
}

void VLHostHooks::hold(VLManager* manager, bool on)
{
    if (VLWidget* popup = visiblePopup(manager))
        VLWidgetPrivate::of(popup).setHeld(on);
}

bool VLHostHooks::isHeld(VLManager* manager)
{
    VLWidget* popup = visiblePopup(manager);
    return popup && VLWidgetPrivate::of(popup).isHeld();
}

void VLHostHooks::setKeyFilter(VLManager* manager, const KeyFilter& filter)
{
    manager->hostState().keyFilter = filter;
}

bool VLHostHooks::isKeyTaken(VLManager* manager, QObject* receiver, QKeyEvent* event)
{
    if (!manager)
        return false;
    const KeyFilter& filter = manager->hostState().keyFilter;
    return filter && filter(receiver, event);
}

void VLHostHooks::setTipWatcher(VLManager* manager, const TipWatcher& watcher)
{
    manager->hostState().tipWatcher = watcher;
}

void VLHostHooks::tellOfTip(VLManager* manager)
{
    if (!manager)
        return;
    // It may be taken away while it runs.
    const TipWatcher watcher = manager->hostState().tipWatcher;
    if (watcher)
        watcher();
}

void VLHostHooks::collectEarlyMessages(MessageSink* sink)
{
    earlySink = sink;
}

VLHostHooks::MessageSink* VLHostHooks::earlyMessageSink()
{
    return earlySink;
}

QList<VLWidget*> VLHostHooks::reservedTips(VLManager* manager)
{
    return manager->reservedTips();
}

void VLHostHooks::showAnew(VLManager* manager)
{
    manager->showAnew();
}

void VLHostHooks::renewTips(VLManager* manager, const QStringList& keys)
{
    manager->renewTips(keys);
}

void VLHostHooks::giveIndex(VLManager* manager, std::unique_ptr<VLIndex> index)
{
    manager->keepIndex(std::move(index));
}

bool VLHostHooks::warmUp(VLManager* manager)
{
    if (!manager->widget()) {
        manager->initializeTooltipWindow();
        return true;
    }
    const QString scene = manager->anyScene();
    VLView* view = manager->widget()->view();
    // The window system's side of both windows, which stay hidden.
    manager->widget()->winId();
    view->create();
    if (!scene.isEmpty() && view->source().isEmpty())
        makeOnce(scene, view);
    return false;
}

void VLHostHooks::discardTips()
{
    // One may take others along.
    const QWidgetList widgets = QApplication::allWidgets();
    QList<QPointer<VLWidget>> tips;
    for (QWidget* widget : widgets) {
        if (auto* tip = qobject_cast<VLWidget*>(widget))
            tips.append(tip);
    }
    for (const QPointer<VLWidget>& tip : std::as_const(tips))
        delete tip;
}

} // namespace Vidlets
