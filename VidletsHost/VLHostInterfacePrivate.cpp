// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLHostInterfacePrivate.h"

#include "VLHostInterface.h"
#include "VLMessageLog.h"
#include "VLPreferencesReader.h"
#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLSafeguards.h>
#include <Vidlets/VLSettings.h>

#include <QCoreApplication>
#include <QScopedValueRollback>
#include <QTimer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// The safe way, but for what the host has decided itself.
VLContext safeguarded(VLContext& hostContext)
{
    VLContext context;
    useSafeguards(context);
    const QList<int> keys = hostContext.keys();
    for (const int key : keys)
        context.set(key, hostContext.get(key, QVariant()));
    context.set(ckInstallEventFilter, false);
    MessageLog::raiseLevel(context);
    return context;
}

/// Of all interfaces that live.
QList<VLHostInterfacePrivate*>& records()
{
    static QList<VLHostInterfacePrivate*> all;
    return all;
}

} // namespace

VLHostInterfacePrivate::VLHostInterfacePrivate(VLContext& hostContext)
    : preferences(std::make_unique<VLPreferences>())
    , m_context(safeguarded(hostContext))
    , m_earlySink([this](VLMessageType type, const QString& message) {
        MessageLog::write(type, message);
        m_earlyMessages.append({type, message});
    })
{
}

VLHostInterfacePrivate::~VLHostInterfacePrivate()
{
    records().removeAll(this);
}

VLPreferences* VLHostInterfacePrivate::preferencesOf(const VLManager* manager)
{
    const QList<VLHostInterfacePrivate*>& all = records();
    const auto found =
        std::find_if(all.cbegin(), all.cend(), [manager](const VLHostInterfacePrivate* record) {
            return !manager || record->manager == manager;
        });
    return found == all.cend() ? nullptr : (*found)->preferences.get();
}

VLContext& VLHostInterfacePrivate::beginBuild()
{
    VLHostHooks::collectEarlyMessages(&m_earlySink);
    return m_context;
}

VLIndex* VLHostInterfacePrivate::makeIndex(const QStringList& dataPaths)
{
    m_index = std::make_unique<VLKeyTableIndex>(&m_context, dataPaths);
    return m_index.get();
}

void VLHostInterfacePrivate::endBuild(VLHostInterface* owner)
{
    VLHostHooks::collectEarlyMessages(nullptr);
    interface = owner;
    manager = VLHostHooks::managerOf(owner);
    follow(qobject_cast<VLKeyTableIndex*>(manager->index()));
    if (m_index)
        VLHostHooks::giveIndex(manager, std::move(m_index));
    pinnedTips = std::make_unique<VLPinnedTips>(manager);
    quickHover = std::make_unique<VLQuickHover>(*this);
    tipDelay = std::make_unique<VLTipDelay>(*this);
    filter = std::make_unique<VLHostFilter>(*this);
    QObject::connect(&manager->context(), &VLContext::settingDidChange, &m_later,
                     [this](const VLContextKey& key) {
                         if (key == ckLocale || key == ckFallbackLocale)
                             showAnewLater();
                     });
    records().append(this);
    VLPreferencesReader::offer(preferences.get());
    // Once is enough, and the application forgets it when it goes.
    qRemovePostRoutine(&VLHostInterfacePrivate::endOfApplication);
    qAddPostRoutine(&VLHostInterfacePrivate::endOfApplication);
}

bool VLHostInterfacePrivate::hasContent(VLHostInterface* interface, const QString& key)
{
    return !key.isEmpty()
        && !interface->vidletAttribute(key, ContentNames::keyAttribute(), QString()).isNull();
}

/// Does what is to be done when content changes or is broken; a host's own index may be null here.
void VLHostInterfacePrivate::follow(VLKeyTableIndex* index)
{
    if (!index)
        return;
    QObject::connect(index, &VLKeyTableIndex::changed, &m_later,
                     [this](const QStringList& keys) { VLHostHooks::renewTips(manager, keys); });
    QObject::connect(index, &VLKeyTableIndex::problemFound, &m_later,
                     [this](const QString& file, int line, int column, const QString& text) {
                         tellOfProblem(file, line, column, text);
                     });
}

void VLHostInterfacePrivate::tellOfProblem(const QString& file, int line, int column,
                                           const QString& text)
{
    // The guard says the same by itself.
    if (Settings::guardContent(manager->index()->context()))
        return;
    const QString place = line > 0 ? u"%1:%2:%3"_s.arg(file).arg(line).arg(column) : file;
    manager->handleMessage(VLMessageWarning, u"%1: %2"_s.arg(place, text));
}

void VLHostInterfacePrivate::takeDown()
{
    filter.reset();
    tipDelay.reset();
    quickHover.reset();
    access.reset();
    pinnedTips->discard();
}

/// Whether the interface, the windows or nobody goes first: no window may outlive the application
/// object, and no clip may play in one. It is still whole here.
void VLHostInterfacePrivate::endOfApplication()
{
    const QList<VLHostInterfacePrivate*> living = records();
    for (VLHostInterfacePrivate* record : living)
        record->takeDown();
    VLHostHooks::discardTips();
}

void VLHostInterfacePrivate::showAnewLater()
{
    if (m_willShowAnew)
        return;
    m_willShowAnew = true;
    QMetaObject::invokeMethod(
        &m_later,
        [this] {
            m_willShowAnew = false;
            VLHostHooks::showAnew(manager);
        },
        Qt::QueuedConnection);
}

void VLHostInterfacePrivate::warmUp()
{
    // A step at a time, each when nothing else is waiting.
    QTimer::singleShot(0, &m_later, [this] {
        if (VLHostHooks::warmUp(manager))
            warmUp();
    });
}

void VLHostInterfacePrivate::tellOfDocumentation()
{
    VLContext& settings = manager->context();
    const bool isHostsBusiness = m_toldOfDocumentation
        ? settings.get(ckDocumentationEnabled, false).toBool() != *m_toldOfDocumentation
        : settings.contains(ckDocumentationEnabled) || documentationBase.isEmpty();
    if (isHostsBusiness)
        return;
    m_toldOfDocumentation = !documentationBase.isEmpty();
    settings.set(ckDocumentationEnabled, *m_toldOfDocumentation);
}

void VLHostInterfacePrivate::sendEarlyMessages()
{
    const QScopedValueRollback<bool> guard(isSendingEarlyMessages, true);
    const auto messages = std::exchange(m_earlyMessages, {});
    for (const auto& [type, text] : messages)
        interface->handleMessage(type, text);
}

} // namespace Vidlets
