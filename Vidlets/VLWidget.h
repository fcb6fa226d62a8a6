// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLWIDGET_H
#define VLWIDGET_H

#include <Vidlets/VidletsExport.h>

#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QWidget>

#include <memory>

class QPropertyAnimation;
class QTimer;

namespace Vidlets {

class VLHoverKeeper;
class VLManager;
class VLView;
class VLWidgetPrivate;
class VLXmlElement;

/**
 * The popup: a frameless window around a view that keeps itself on the screen, follows the size of
 * its scene, fades in and out, and hides some time after the pointer has left the zone around it.
 *
 * VLManager makes the current popup and drives it. When the scene asks for it, the popup leaves the
 * tooltip cycle and becomes a window of its own, which is deleted when it is closed, or part of a
 * window of the host. Everything runs on the user-interface thread. Sizes and positions are in
 * pixels, positions in global coordinates.
 */
class VIDLETS_EXPORT VLWidget : public QWidget
{
    Q_OBJECT

public:
    /// Makes a hidden popup without a view. @p manager stays the caller's. A popup that outlives it
    /// goes on with the default of each setting.
    explicit VLWidget(VLManager* manager, QWidget* parent = nullptr);

    /// Deletes the view, and with it the content.
    ~VLWidget() override;

    /// Replaces the view; deletes the old one at once. Takes ownership of @p view, which may be
    /// null.
    void setView(VLView* view);

    /// Stores the window container of the view, a child of the popup. The name begins with a
    /// capital, and keeps it.
    void SetContainerWidget(QWidget* widget);

    /// Follows the pointer: stops the hide timer when @p pos is safe, else starts it unless it
    /// runs.
    void checkMousePosition(const QPoint& pos);

    /// Returns whether the popup stays while the pointer is at @p pos: over the reference widget,
    /// or in the popup's frame grown by ckSafeZoneMargin, edges included. Without a reference
    /// widget, a point over no widget of the application counts as well.
    bool isSafe(const QPoint& pos);

    /// Returns the view, or null.
    VLView* view();
    /// Returns the manager, or null once it is gone.
    VLManager* manager();
    /// Returns the control that the popup belongs to, or null. It is not owned. When the control
    /// dies, the pointer stays as it is until the next showWithContent().
    QWidget* referenceWidget();

public Q_SLOTS:
    /**
     * Shows @p content, of the package at @p rootPath, for @p reference at @p pos.
     *
     * The view takes ownership of @p content and deletes the content it had. Does nothing where
     * @p content is null. @p reference may be null or no widget, and stays the caller's.
     */
    void showWithContent(QObject* reference, const QPoint& pos, Vidlets::VLXmlElement* content,
                         const QString& rootPath);

    /// Brings the popup's window back on to the screen.
    void reposition();

    /// Begins to hide, over ckHideDuration. No effect while hidden or during a fade.
    void hideAnimated();

    /// Ends a hide: resets the scene's state and hides the popup.
    void hideAnimationFinished();

    /// Begins to show, over ckShowDuration. No effect while visible.
    void showAnimated();

    /// Starts the hide timer anew with ckStayDuration, unless the scene asked for the popup to
    /// stay.
    void setTimer();

    /// Takes the popup out of the tooltip cycle if its view is reserved and the manager still holds
    /// the popup as the current one.
    void contentReservedChanged();

    /// Takes over the size of the scene's root object, and fits the popup to the screen.
    void contentResized();

    /**
     * Moves @p geometry into the available area of the screen, without resizing it.
     *
     * A rectangle larger than the area ends flush with its bottom and right. @p move, which may be
     * null, tells whether it was moved. The screen is the reference widget's, or the popup's own
     * where there is none.
     *
     * @return The rectangle where it lies then.
     */
    QRect findVisibleGeometry(QRect geometry, bool* move = nullptr);

protected:
    /// Starts the hide timer if the pointer is elsewhere, and brings the popup on to the screen.
    void showEvent(QShowEvent* event) override;
    /// Drops the end of a fade-out that is under way.
    void hideEvent(QHideEvent* event) override;

private Q_SLOTS:
    void refWidgetDestroyed(QObject* object);

private:
    Q_DISABLE_COPY_MOVE(VLWidget)

    friend class VLHoverKeeper;
    friend class VLWidgetPrivate;

    /// Owned.
    VLView* m_view = nullptr;
    QWidget* m_referenceWidget = nullptr;
    QWidget* m_containerWidget = nullptr;
    /// The one animation of both fades.
    QPropertyAnimation* m_animation;
    /// The hide timer.
    QTimer* m_timer;
    /// Null once the manager is gone, which a popup may outlive.
    QPointer<VLManager> m_manager;
    /// True while contentResized() runs, since its size changes lead back to it.
    bool m_resizing = false;
    const std::unique_ptr<VLWidgetPrivate> d;
};

} // namespace Vidlets

#endif
