// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipStage.h"

#include <Vidlets/VLXmlElement.h>

#include <QCoreApplication>
#include <QEvent>
#include <QFileInfo>

using namespace Qt::StringLiterals;

using namespace Vidlets;

ClipStage::ClipStage(const QString& package, const QMap<int, QVariant>& settings)
    : m_package(package)
{
    for (auto it = settings.cbegin(); it != settings.cend(); ++it)
        m_context.set(it.key(), it.value());
}

ClipStage::~ClipStage()
{
    // The items of a scene end their threads while the manager is still there.
    m_view.reset();
    // A pinned tip uses the manager to its end, one that is not goes with it.
    if (m_popup && m_popup->view()->reserved())
        delete m_popup;
    m_manager.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    // A view deletes its content alone, and what is above it is nobody's.
    delete m_root;
}

void ClipStage::addTip(const QString& key)
{
    m_packages.writeTip(m_package, key + u".xml"_s, key);
}

void ClipStage::addClip(const QString& name, const QByteArray& content)
{
    write(u"Resources/"_s + name, content);
}

QString ClipStage::write(const QString& name, const QByteArray& content)
{
    return m_packages.write(m_package + u'/' + name, content);
}

QString ClipStage::resource(const QString& name) const
{
    return m_packages.path(m_package + u"/Resources/"_s + name);
}

void ClipStage::openView()
{
    openManager();
    m_view = std::make_unique<VLView>(m_manager.get(), nullptr);
    auto* content = new VLXmlElement;
    content->setAttribute(u"VLPackagName"_s, QFileInfo(m_package).completeBaseName());
    m_view->setContent(content);
}

bool ClipStage::showPopup(const QString& key, const QPoint& position, QObject* reference)
{
    openManager();
    const bool isShown = m_manager->show(key, position, reference);
    m_popup = m_manager->widget();
    if (isShown)
        m_root = m_popup->view()->content()->parent();
    return isShown;
}

VLView* ClipStage::view() const
{
    if (m_view)
        return m_view.get();
    return m_popup ? m_popup->view() : nullptr;
}

VLVideoController* ClipStage::controllerOf(const VLVideoComponent* item)
{
    return item->findChild<VLVideoController*>();
}

VLVideoSourceFFMPEG* ClipStage::sourceOf(const VLVideoComponent* item)
{
    return item->findChild<VLVideoSourceFFMPEG*>();
}

void ClipStage::openManager()
{
    if (m_manager)
        return;
    m_manager = std::make_unique<VLManager>(&m_host, m_context, QStringList{m_packages.dataPath()},
                                            &m_index);
}
