// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLInterface.h"

#include "VLManager.h"
#include "VLSettings.h"

#include <QDebug>
#include <QDesktopServices>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

QString messageLabel(VLMessageType type)
{
    switch (type) {
    case VLMessageError:
        return u"ERROR"_s;
    case VLMessageWarning:
        return u"Warning"_s;
    case VLMessageInformation:
        return u"Information"_s;
    case VLMessageDebug:
        return u"DEBUG"_s;
    }
    return QString::number(type);
}

/// Whether the desktop shows what @p url leads to, and runs nothing.
bool isHarmless(const QUrl& url)
{
    const QString scheme = url.scheme();
    return scheme == "https"_L1 || scheme == "http"_L1 || scheme == "mailto"_L1;
}

} // namespace

class VLInterfacePrivate
{
public:
    VLManager* manager = nullptr;
};

VLInterface::VLInterface(VLContext& context, const QStringList& dataPaths, VLIndex* index)
    : QObject(nullptr)
    , d(std::make_unique<VLInterfacePrivate>())
{
    d->manager = new VLManager(this, context, dataPaths, index);
}

VLInterface::~VLInterface()
{
    delete d->manager;
}

VLManager* VLInterface::ownManager() const
{
    return d->manager;
}

QWidget* VLInterface::createWindow()
{
    return nullptr;
}

QString VLInterface::keyForObject(QObject* object)
{
    return object->objectName();
}

bool VLInterface::openExternalResource(VLExternalResourceType type, const QString& resource)
{
    if (type != VLResourceUrl)
        return false;
    const QUrl url(resource, QUrl::TolerantMode);
    if (Settings::confineContent(context()) && !isHarmless(url)) {
        d->manager->handleMessage(VLMessageWarning, u"Did not open %1"_s.arg(resource));
        return false;
    }
    return QDesktopServices::openUrl(url);
}

void VLInterface::handleMessage(VLMessageType type, const QString& message)
{
    // The scan is over before there is a manager.
    if (d->manager && d->manager->isRepeating())
        return;
    const QString line = u"%1:%2"_s.arg(messageLabel(type), message);
    qDebug("%s", line.toUtf8().constData());
}

QString VLInterface::translateString(const QString& text, const QString& context)
{
    return d->manager->translateString(text, context);
}

QString VLInterface::shortCutForObject(const QString& /*key*/, QObject* /*object*/,
                                       const QString& shortcut)
{
    return shortcut;
}

VLContext& VLInterface::context()
{
    return d->manager->context();
}

const VLContext& VLInterface::context() const
{
    return std::as_const(*d->manager).context();
}

void VLInterface::setGlobalProperty(const QString& name, const QVariant& value)
{
    d->manager->setGlobalProperty(name, value);
}

QStringList VLInterface::keys()
{
    return d->manager->keys();
}

bool VLInterface::show(const QString& key, const QPoint& position, QObject* reference)
{
    return d->manager->show(key, position, reference);
}

bool VLInterface::mouseButtonEventFilter(QObject* object, QMouseEvent* event)
{
    return d->manager->mouseButtonEventFilter(object, event);
}

bool VLInterface::mouseMoveEventFilter(QObject* object, QMouseEvent* event)
{
    return d->manager->mouseMoveEventFilter(object, event);
}

QString VLInterface::vidletAttribute(const QString& key, const QString& attribute,
                                     const QString& defaultValue)
{
    return d->manager->vidletAttribute(key, attribute, defaultValue);
}

} // namespace Vidlets

#include "moc_VLInterface.cpp"
