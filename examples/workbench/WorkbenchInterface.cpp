// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "WorkbenchInterface.h"

#include <Vidlets/VLManager.h>

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace Workbench {

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

WorkbenchInterface::WorkbenchInterface(VLContext& context, const QStringList& dataPaths,
                                       Vidlets::VLIndex* index)
    : Vidlets::VLHostInterface(context, dataPaths, index)
    , m_dataPaths(dataPaths)
{
}

void WorkbenchInterface::setPinnedOnTop(bool isOnTop)
{
    m_isPinnedOnTop = isOnTop;
    manager()->setStayOnTop(isOnTop);
}

QWidget* WorkbenchInterface::createWindow()
{
    if (m_isPinnedOnTop) {
        // The tip has its new window only when this call is over.
        QMetaObject::invokeMethod(
            this, [this] { manager()->setStayOnTop(m_isPinnedOnTop); }, Qt::QueuedConnection);
    }
    return VLHostInterface::createWindow();
}

bool WorkbenchInterface::openExternalResource(Vidlets::VLExternalResourceType type,
                                              const QString& resource)
{
    switch (type) {
    case Vidlets::VLResourceUrl:
        handleMessage(Vidlets::VLMessageInformation, tr("Opening %1").arg(resource));
        return VLHostInterface::openExternalResource(type, resource);
    case Vidlets::VLResourcePath:
        return openPackageFile(resource);
    case Vidlets::VLResourceDocumentation:
        return openPackageFile(u"docs/%1.html"_s.arg(resource));
    }
    return false;
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
