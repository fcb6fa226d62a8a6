// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLHOVERKEEPER_H
#define VLHOVERKEEPER_H

#include "VLPopupSurface.h"

#include <QObject>
#include <QPoint>
#include <QString>
#include <QTimer>

#include <optional>

class QEvent;
class QKeyEvent;
class QWidget;

namespace Vidlets {

class VLWidget;

/**
 * Keeps a tip with its control, as long as ckSteadyHover is set: what counts as the control, which
 * requests leave its tip alone, and what takes the tip away.
 *
 * Internal to the library. Each popup owns one; while its tip is up the keeper watches the
 * application's events, none of which it holds back.
 */
class VLHoverKeeper final : public QObject
{
public:
    explicit VLHoverKeeper(VLWidget* popup);

    /// Whether a host wants tips to be kept with their controls, and the popup still is a tip.
    bool isOn() const;

    /// Whether the pointer at @p position is over the control or a part of it. Without a control,
    /// over its window, or, where that is not known, over any window of the application that holds
    /// no widgets.
    bool isOverControl(const QPoint& position) const;

    /// Whether the tip that is up is that of @p requester, which may be null: always so while off.
    bool isTipOf(const QWidget* requester) const;
    /// Whether @p requester is within the control and has no tooltip of its own, so that a request
    /// for it without content is none.
    bool isPartOfTip(const QWidget* requester) const;
    /// Answers a request for @p key at @p position without content: gives whether the tip that is
    /// up may stay, else begins to hide it.
    bool staysWithoutContent(const QString& key, const QPoint& position, const QWidget* requester);

    /// A new tip begins: nothing of the one before acts on it.
    void beginTip();
    /// The tip is asked for once more: back to full, should it be fading away.
    void revive();
    /// Ends a fade of either kind: back to full.
    void endFade();
    /// Ends a fade-in, so that a hide may begin; gives whether a hide may begin.
    bool makeWayForHide();

    /// The popup is about to come up, its window is there already.
    void beginWatch();
    /// The popup is gone.
    void endWatch();
    /// The popup is a tip no longer: nothing is kept from now on.
    void retire();

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    Q_DISABLE_COPY_MOVE(VLHoverKeeper)

    QWidget* control() const;
    VLPopupSurface& surface() const;
    bool isAround(const QWidget* requester) const;
    bool isWithinPopup(const QObject* object) const;
    bool isFadingOut() const;
    void followPointer();
    void keyPressed(QObject* receiver, QKeyEvent* event);
    void hideUnlessStaying();

    VLWidget* const m_popup;
    /// Runs while the tip is up.
    QTimer m_watch;
    /// The pointer as it was seen last; nothing for a tip that has not been looked at yet.
    std::optional<VLPopupSurface::Pointer> m_pointer;
    bool m_retired = false;
};

} // namespace Vidlets

#endif
