// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLHostInterface.h"

#include "VLHostInterfacePrivate.h"
#include "VLKeyFinder.h"
#include "VLMessageLog.h"

#include <QAction>
#include <QDesktopServices>
#include <QKeySequence>

#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

VLHostInterface::VLHostInterface(VLContext& context, const QStringList& dataPaths, VLIndex* index)
    : VLHostInterface(std::make_unique<VLHostInterfacePrivate>(context), dataPaths, index)
{
}

VLHostInterface::VLHostInterface(std::unique_ptr<VLHostInterfacePrivate> record,
                                 const QStringList& dataPaths, VLIndex* index)
    : VLInterface(record->beginBuild(), dataPaths, index ? index : record->makeIndex(dataPaths))
    , d(std::move(record))
{
    d->endBuild(this);
    QMetaObject::invokeMethod(
        this,
        [this] {
            access();
            d->sendEarlyMessages();
        },
        Qt::QueuedConnection);
}

VLHostInterface::~VLHostInterface()
{
    d->takeDown();
}

QString VLHostInterface::keyAt(QObject* object, const QPoint& globalPos, QRect* zone)
{
    const KeyFinder::Found found = KeyFinder::find(object, globalPos);
    if (zone)
        *zone = found.key.isEmpty() ? QRect() : found.zone;
    return found.key;
}

QWidget* VLHostInterface::createWindow()
{
    return d->pinnedTips->makeRoom();
}

bool VLHostInterface::openExternalResource(VLExternalResourceType type, const QString& resource)
{
    if (type != VLResourceDocumentation || d->documentationBase.isEmpty())
        return VLInterface::openExternalResource(type, resource);
    const QUrl url = d->documentationBase.resolved(QUrl(resource, QUrl::TolerantMode));
    // The one name without a "/" that leads out.
    if (!d->documentationBase.isParentOf(url))
        return false;
    return QDesktopServices::openUrl(url);
}

void VLHostInterface::handleMessage(VLMessageType type, const QString& message)
{
    if (!d->isSendingEarlyMessages)
        MessageLog::write(type, message);
    Q_EMIT messageRaised(type, message);
}

QString VLHostInterface::translateString(const QString& text, const QString& context)
{
    const QString translation = VLInterface::translateString(text, context);
    return translation.isEmpty() ? text : translation;
}

QString VLHostInterface::shortCutForObject(const QString& key, QObject* object,
                                           const QString& shortcut)
{
    const QAction* action = KeyFinder::findAction(key, object);
    return action ? action->shortcut().toString(QKeySequence::NativeText) : shortcut;
}

void VLHostInterface::setDocumentationBase(const QUrl& base)
{
    d->documentationBase = base;
    d->tellOfDocumentation();
    if (base.isEmpty())
        return;
    // What is resolved against a directory without one replaces its name.
    if (!base.path().endsWith(u'/'))
        d->documentationBase.setPath(base.path() + u'/');
}

QUrl VLHostInterface::documentationBase() const
{
    return d->documentationBase;
}

void VLHostInterface::setPinnedArea(Qt::DockWidgetArea area)
{
    d->pinnedTips->setArea(area);
}

Qt::DockWidgetArea VLHostInterface::pinnedArea() const
{
    return d->pinnedTips->area();
}

QList<VLWidget*> VLHostInterface::pinnedTips() const
{
    return d->pinnedTips->tips();
}

void VLHostInterface::closePinnedTips()
{
    d->pinnedTips->closeAll();
}

VLManager* VLHostInterface::manager() const
{
    return d->manager;
}

void VLHostInterface::hideTip()
{
    VLHostHooks::hide(d->manager);
}

void VLHostInterface::warmUp()
{
    d->warmUp();
}

VLAccess* VLHostInterface::access()
{
    if (!std::exchange(d->hasAskedForAccess, true))
        d->access.reset(createAccess());
    return d->access.get();
}

VLPreferences* VLHostInterface::preferences()
{
    return d->preferences.get();
}

VLAccess* VLHostInterface::createAccess()
{
    return new VLAccess(this);
}

} // namespace Vidlets

#include "moc_VLHostInterface.cpp"
