// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLTIPCALLER_H
#define VLTIPCALLER_H

#include "VLFocusFinder.h"

#include <QHash>
#include <QKeySequence>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <QWindow>

#include <optional>

class QKeyEvent;
class QQuickItem;

namespace Vidlets {

class VLFocusRing;
class VLHostInterface;
class VLManager;
class VLView;
class VLWidget;

/**
 * Calls tips at the keyboard's request, and takes the keyboard into them.
 *
 * Keys are taken from the application's filter, before any window sees them, and those that are
 * meant for the scene of a tip are handed to its items. So it is the same on each window system,
 * over dialogs and while a menu has the keyboard: the window of a tip is never made the active one,
 * which not every window system allows. Internal to the host kit; VLAccess owns it.
 */
class VLTipCaller final : public QObject
{
public:
    explicit VLTipCaller(VLHostInterface* interface);
    ~VLTipCaller() override;

    bool isEnabled() const;
    void setEnabled(bool enabled);

    QKeySequence showSequence() const;
    void setShowSequence(const QKeySequence& sequence);

    /// Calls the tip for @p key, in @p window. Returns whether it is up.
    bool call(const QString& key, QWidget* window);

    /// Gives whether @p event goes no further.
    bool filter(QObject* object, QEvent* event);

private:
    Q_DISABLE_COPY_MOVE(VLTipCaller)

    /// What is to be done at the press of a key.
    enum class Action {
        /// The key is somebody else's.
        None,
        /// The key has been dealt with.
        Swallow,
        /// A key of the show sequence, with more to come.
        Advance,
        Call,
        Close,
        Enter,
        Leave,
        Forward
    };

    /// A tip that can be called.
    struct Callable
    {
        QString key;
        QObject* reference;
        QRect zone;
        QWindow* window;
        /// Whether the tip goes in the middle of the zone.
        bool isCentred;
    };

    Action actionFor(const QKeyEvent* event) const;
    Action actionOfSequence(const QKeyEvent* event) const;
    bool isTaken(const QObject* receiver, const QKeyEvent* event) const;
    bool filterKey(QKeyEvent* event);
    void pressed(const QKeyEvent* event, Action action);
    bool released(const QKeyEvent* event);

    std::optional<Callable> findCallable() const;
    std::optional<Callable> callableAt(const FocusFinder::Place& place) const;
    bool show(const Callable& callable);
    QPoint placeBeside(const Callable& callable) const;
    std::optional<Callable> findControl(const QString& key, const QWidget* window) const;
    void callTip();
    void watchScene();
    void closeTip();
    void tipEnded();

    void enterTip();
    void leaveTip();
    void dimFocus();
    void giveFocusBack();
    void forward(const QKeyEvent* event);
    bool sendToScene(QKeyEvent* event);
    QQuickItem* focusItem() const;
    bool wouldLeadOut(bool isForward) const;
    void walkScene(bool isForward);
    void showFocus();

    VLWidget* tip() const;
    bool isWithinTip(const QObject* object) const;
    void focusChanged(QWidget* old, QWidget* now);
    void checkFocusLater();
    void checkFocus();

    VLHostInterface* const m_interface;
    const QPointer<VLManager> m_manager;
    bool m_isEnabled = true;
    QKeySequence m_sequence{Qt::SHIFT | Qt::Key_F1};
    /// How many keys of the sequence have been pressed.
    int m_matched = 0;
    /// The keys that are down and were taken; whether each was for the scene.
    QHash<quint64, bool> m_down;

    /// What had the focus when the tip that is up was called; nothing where it was not.
    std::optional<FocusFinder::Focus> m_called;
    bool m_willCheck = false;
    /// To the scene that had it, if any.
    QMetaObject::Connection m_sceneWatch;

    /// The scene that has the keyboard; null while none has.
    QPointer<VLView> m_scene;
    /// Shows which of its items has the focus; a child of it.
    QPointer<VLFocusRing> m_ring;
    /// The item that it was put around last.
    QPointer<QQuickItem> m_ringed;
    /// The window that has the focus for the window system meanwhile.
    QPointer<QWindow> m_focusWindow;
    /// The last widget with the focus that is not within the tip.
    QPointer<QWidget> m_outside;
    /// Where the focus is to go back to.
    QPointer<QWidget> m_origin;
    /// Has been told that its focus is gone.
    QPointer<QWidget> m_dimmed;
};

} // namespace Vidlets

#endif
