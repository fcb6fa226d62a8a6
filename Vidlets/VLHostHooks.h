// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLHOSTHOOKS_H
#define VLHOSTHOOKS_H

#include "VLInterface.h"
#include <Vidlets/VidletsExport.h>

#include <QList>
#include <QPointer>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QWindow>

#include <functional>
#include <memory>

class QKeyEvent;
class QObject;
class QPoint;
class QWidget;

namespace Vidlets {

class VLIndex;
class VLManager;
class VLWidget;

/// What a tip belongs to, where that is less than a widget or no widget at all.
struct VLTipAnchor
{
    /// In global coordinates at the time of the request. It goes with the reference widget, or with
    /// the window where the reference is none. A null one stands for the whole reference.
    QRect zone;
    /// The window of a reference that is no widget; null else.
    QPointer<QWindow> window;
    /// Whether a key asked for it, so that no modifiers need be held.
    bool isCalled = false;
    /// Whether the tip goes in the middle of the zone, over whatever is there.
    bool isCentred = false;
};

/**
 * What helpers of a host need to know and to do beyond the public classes.
 *
 * Internal: the header is not installed, and only libraries of the project call it. As long as
 * nobody does, nothing of the library behaves otherwise. All on the user-interface thread.
 */
class VIDLETS_EXPORT VLHostHooks final
{
public:
    /// Takes a message in place of the interface.
    using MessageSink = std::function<void(VLMessageType, const QString&)>;
    /// Tells whether a key is somebody else's business, so that it does not take the tip away.
    using KeyFilter = std::function<bool(QObject* receiver, QKeyEvent* event)>;

    /// Is told that the tip that is up is another one, or that there is one or none now.
    using TipWatcher = std::function<void()>;

    VLHostHooks() = delete;

    /// Returns the manager of @p interface; null while its constructor runs.
    static VLManager* managerOf(const VLInterface* interface);

    /**
     * Shows the content for @p key as VLManager::show() does, with the zone of @p anchor in the
     * place of the reference: for the safe zone, for ckSteadyHover and for ckKeepOffReference.
     *
     * An empty key is not looked up: it is answered as one without content. While the tip that is
     * up is held, requests are dealt with by leaving it alone.
     *
     * @return Whether the request is dealt with.
     */
    static bool show(VLManager* manager, const QString& key, const QPoint& position,
                     QObject* reference, const VLTipAnchor& anchor);

    /// Hides the tip that is up at once; pinned ones stay.
    static void hide(VLManager* manager);

    /// Ends a fade of the popup, with all of it to be seen: for one that is to stay.
    static void endFade(VLManager* manager);

    /// Returns the widget that the popup belongs to; null where it is gone or was none.
    static QWidget* control(VLManager* manager);
    /// Returns the rectangle, in global coordinates, of what the tip that is up belongs to; a null
    /// one where there is no tip or where it belongs to nothing that has a place.
    static QRect zone(VLManager* manager);
    /// Returns the window of what the tip that is up belongs to; null where there is none.
    static QWindow* controlWindow(VLManager* manager);

    /// Keeps the tip that is up, or no longer so: while it is held, neither the pointer nor the
    /// timer, a key or the wheel hides it, and no request replaces it. Ends with the tip.
    static void hold(VLManager* manager, bool on);
    /// Returns whether there is a tip up that is held.
    static bool isHeld(VLManager* manager);

    /// Keys for which @p filter says yes hide no tip of @p manager. An empty one takes it away.
    static void setKeyFilter(VLManager* manager, const KeyFilter& filter);

    /// Returns what the filter of @p manager, which may be null, says.
    static bool isKeyTaken(VLManager* manager, QObject* receiver, QKeyEvent* event);

    /// Has @p watcher called each time a tip of @p manager has come up, has got other content, has
    /// gone, or was pinned. An empty one takes it away.
    static void setTipWatcher(VLManager* manager, const TipWatcher& watcher);
    /// Calls the watcher of @p manager, which may be null.
    static void tellOfTip(VLManager* manager);

    /// Until it is called with null, managers that are being built on this thread hand messages to
    /// @p sink, which stays the caller's.
    static void collectEarlyMessages(MessageSink* sink);
    /// Returns what collectEarlyMessages() was called with last, or null.
    static MessageSink* earlyMessageSink();

    /// Returns the living tips that the user has pinned, the oldest first.
    static QList<VLWidget*> reservedTips(VLManager* manager);

    /// Retrieves what is up anew, in the languages that are set now, pinned tips included, and puts
    /// each in the place of what was. What has no content any more stays.
    static void showAnew(VLManager* manager);

    /// Retrieves what is up anew as far as its key is one of @p keys, pinned tips included. What
    /// has no content any more is hidden, but a pinned tip stays as it is.
    static void renewTips(VLManager* manager, const QStringList& keys);

    /// Hands @p index, which @p manager uses, over to it: it reads its settings from now on, and
    /// goes with it.
    static void giveIndex(VLManager* manager, std::unique_ptr<VLIndex> index);

    /**
     * Makes what the first tip needs, a step at each call: the popup, its view and engine, then the
     * scene of a package. No window is mapped.
     *
     * @return Whether there is a step left.
     */
    static bool warmUp(VLManager* manager);

    /// Deletes all popups and pinned tips of the program at once, whoever owns them: for its end,
    /// after which no window could go any more.
    static void discardTips();
};

} // namespace Vidlets

#endif
