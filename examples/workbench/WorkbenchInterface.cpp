// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "WorkbenchInterface.h"

#include <QAction>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QMainWindow>
#include <QToolButton>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

QString labelFor(Vidlets::VLMessageType type)
{
    switch (type) {
    case Vidlets::VLMessageError:
        return u"Error"_s;
    case Vidlets::VLMessageWarning:
        return u"Warning"_s;
    case Vidlets::VLMessageInformation:
        return u"Information"_s;
    case Vidlets::VLMessageDebug:
        return u"Debug"_s;
    }
    return QString::number(type);
}

QAction* actionOf(const QObject* object)
{
    const auto* button = qobject_cast<const QToolButton*>(object);
    return button ? button->defaultAction() : nullptr;
}

} // namespace

WorkbenchInterface::WorkbenchInterface(VLContext& context, const QStringList& dataPaths,
                                       QMainWindow* window)
    // The packages are read in here, before this class is complete: what the library has to say
    // meanwhile goes to Qt's log and not to handleMessage() below.
    : Vidlets::VLInterface(context, dataPaths, nullptr)
    , m_dataPaths(dataPaths)
    , m_window(window)
    , m_pinnedTips(*window)
{
}

PinnedTips& WorkbenchInterface::pinnedTips()
{
    return m_pinnedTips;
}

QWidget* WorkbenchInterface::createWindow()
{
    return m_pinnedTips.makeRoom();
}

QString WorkbenchInterface::keyForObject(QObject* object)
{
    const QVariant key = object->property(kKeyProperty);
    if (key.isValid()) {
        return key.toString();
    }
    if (const QAction* action = actionOf(object)) {
        return action->objectName();
    }
    // Qt names the parts of its own widgets like this; they have no tips.
    if (!object->isWidgetType() || object->objectName().startsWith("qt_"_L1)) {
        return QString();
    }
    return object->objectName();
}

bool WorkbenchInterface::openExternalResource(Vidlets::VLExternalResourceType type,
                                              const QString& resource)
{
    switch (type) {
    case Vidlets::VLResourceUrl:
        handleMessage(Vidlets::VLMessageInformation, tr("Opening %1").arg(resource));
        return VLInterface::openExternalResource(type, resource);
    case Vidlets::VLResourcePath:
        return openPackageFile(resource);
    case Vidlets::VLResourceDocumentation:
        return openPackageFile(u"docs/%1.html"_s.arg(resource));
    }
    return false;
}

void WorkbenchInterface::handleMessage(Vidlets::VLMessageType type, const QString& message)
{
    Q_EMIT messageRaised(labelFor(type), message);
}

// Users rebind shortcuts: the tip names the one that is bound now, not the one its author knew.
QString WorkbenchInterface::shortCutForObject(const QString& key, QObject* object,
                                              const QString& shortcut)
{
    const QAction* action = actionOf(object);
    if (!action) {
        action = m_window->findChild<QAction*>(key);
    }
    return action ? action->shortcut().toString(QKeySequence::NativeText) : shortcut;
}

bool WorkbenchInterface::openPackageFile(const QString& relativePath)
{
    const QString file = findPackageFile(relativePath);
    if (file.isEmpty()) {
        handleMessage(Vidlets::VLMessageWarning, tr("No package has %1").arg(relativePath));
        return false;
    }
    handleMessage(Vidlets::VLMessageInformation, tr("Opening %1").arg(file));
    return QDesktopServices::openUrl(QUrl::fromLocalFile(file));
}

// A locator comes from content, so it must not lead out of the package ("../").
QString WorkbenchInterface::findPackageFile(const QString& relativePath) const
{
    for (const QString& dataPath : m_dataPaths) {
        const QFileInfoList packages =
            QDir(dataPath).entryInfoList({u"*.vidlets"_s}, QDir::Dirs | QDir::NoDotAndDotDot);
        for (const QFileInfo& package : packages) {
            const QString root = package.canonicalFilePath() + u'/';
            QString file = QFileInfo(root + relativePath).canonicalFilePath();
            if (file.startsWith(root)) {
                return file;
            }
        }
    }
    return QString();
}

} // namespace Workbench

#include "moc_WorkbenchInterface.cpp"
