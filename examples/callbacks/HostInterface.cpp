// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HostInterface.h"

#include "ItemKeys.h"

#include <QAction>
#include <QCoreApplication>
#include <QDebug>
#include <QDesktopServices>
#include <QMenu>
#include <QTabBar>
#include <QToolButton>
#include <QUrl>

using namespace Qt::StringLiterals;

QString HostInterface::keyForObject(QObject* object)
{
    const auto* button = qobject_cast<QToolButton*>(object);
    if (button && button->defaultAction())
        return button->defaultAction()->objectName();
    if (const auto* menu = qobject_cast<QMenu*>(object))
        return keyInMenu(*menu);
    if (const auto* tabs = qobject_cast<QTabBar*>(object))
        return keyInTabBar(*tabs);
    const auto* view = qobject_cast<QAbstractItemView*>(object->parent());
    if (view && object == view->viewport())
        return keyInView(*view);
    // Qt's names for the parts of a spin box and the like: the box itself is asked next.
    return object->objectName().startsWith("qt_"_L1) ? QString() : object->objectName();
}

QString HostInterface::shortCutForObject(const QString& key, QObject* object,
                                         const QString& shortcut)
{
    Q_UNUSED(object)
    const auto* action = m_window->findChild<QAction*>(key);
    return action ? action->shortcut().toString(QKeySequence::NativeText) : shortcut;
}

bool HostInterface::openExternalResource(Vidlets::VLExternalResourceType type,
                                         const QString& resource)
{
    if (type == Vidlets::VLResourceDocumentation)
        return QDesktopServices::openUrl(
            QUrl(u"https://example.org/manual/%1.html"_s.arg(resource)));
    return VLInterface::openExternalResource(type, resource);
}

void HostInterface::handleMessage(Vidlets::VLMessageType type, const QString& message)
{
    if (type <= Vidlets::VLMessageWarning)
        qWarning().noquote() << message;
    else
        qDebug().noquote() << message;
}

QString HostInterface::translateString(const QString& text, const QString& context)
{
    return QCoreApplication::translate(context.toUtf8().constData(), text.toUtf8().constData());
}

QWidget* HostInterface::createWindow()
{
    auto* window = new QWidget(m_window, Qt::Tool);
    window->setAttribute(Qt::WA_DeleteOnClose);
    return window;
}
