// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLHOSTINTERFACEPRIVATE_H
#define VLHOSTINTERFACEPRIVATE_H

#include "VLAccess.h"
#include "VLHostFilter.h"
#include "VLKeyTableIndex.h"
#include "VLPinnedTips.h"
#include "VLPreferences.h"
#include "VLQuickHover.h"
#include "VLTipDelay.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLHostHooks.h>
#include <Vidlets/VLInterface.h>

#include <QList>
#include <QObject>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>
#include <optional>

namespace Vidlets {

class VLHostInterface;
class VLIndex;
class VLManager;

/**
 * What VLHostInterface consists of, and how it is put together and taken apart.
 *
 * Internal to the host kit. It exists before the interface does, since the scan in the constructor
 * of the base class is its business already.
 */
class VLHostInterfacePrivate final
{
public:
    explicit VLHostInterfacePrivate(VLContext& hostContext);
    ~VLHostInterfacePrivate();

    /// Returns the preferences of the interface with @p manager. For a null one those of the
    /// interface that was made first; null where there is none.
    static VLPreferences* preferencesOf(const VLManager* manager);

    /// Returns whether the packages have something for @p key; nothing is shown in its place here.
    static bool hasContent(VLHostInterface* interface, const QString& key);

    /// Begins to keep what the manager says while it is being built. Gives the settings for it.
    VLContext& beginBuild();
    /// Makes the index of a host that has none of its own; it is owned by the record until the
    /// manager is there.
    VLIndex* makeIndex(const QStringList& dataPaths);
    /// The base class is there: makes all that hangs on it.
    void endBuild(VLHostInterface* owner);
    /// Takes down what touches windows and the application. May be called more than once.
    void takeDown();

    /// Retrieves what is up anew in the next turn of the event loop, however often it is called
    /// until then.
    void showAnewLater();
    /// Makes what the first tip needs while the event loop is idle.
    void warmUp();

    /// Has scenes know whether there is documentation, as long as the host does not say so itself.
    void tellOfDocumentation();

    /// Hands out what the manager said early; the log has it already.
    void sendEarlyMessages();

    VLHostInterface* interface = nullptr;
    VLManager* manager = nullptr;
    QUrl documentationBase;
    bool hasAskedForAccess = false;
    /// Whether handleMessage() gets what the log has already.
    bool isSendingEarlyMessages = false;

    std::unique_ptr<VLPreferences> preferences;
    std::unique_ptr<VLPinnedTips> pinnedTips;
    std::unique_ptr<VLQuickHover> quickHover;
    std::unique_ptr<VLTipDelay> tipDelay;
    std::unique_ptr<VLAccess> access;
    std::unique_ptr<VLHostFilter> filter;

private:
    Q_DISABLE_COPY_MOVE(VLHostInterfacePrivate)

    static void endOfApplication();
    void follow(VLKeyTableIndex* index);
    void tellOfProblem(const QString& file, int line, int column, const QString& text);

    /// What is to be done later, and goes with the record.
    QObject m_later;
    bool m_willShowAnew = false;
    /// What scenes were told of documentation; nothing before that.
    std::optional<bool> m_toldOfDocumentation;
    VLContext m_context;
    std::unique_ptr<VLKeyTableIndex> m_index;
    VLHostHooks::MessageSink m_earlySink;
    QList<QPair<VLMessageType, QString>> m_earlyMessages;
};

} // namespace Vidlets

#endif
