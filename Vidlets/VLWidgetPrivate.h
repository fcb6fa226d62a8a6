// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLWIDGETPRIVATE_H
#define VLWIDGETPRIVATE_H

#include "VLHostHooks.h"
#include "VLHoverKeeper.h"
#include "VLPopupPlacement.h"
#include "VLPopupSurface.h"

#include <QList>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QWidget>

#include <optional>

class QWindow;

namespace Vidlets {

class VLWidget;
class VLXmlElement;

/**
 * What a popup needs to get along with the window system and with the widgets around it.
 *
 * Internal to the library. Each popup owns one.
 */
class VLWidgetPrivate final : public QObject
{
public:
    explicit VLWidgetPrivate(VLWidget* popup);

    static VLWidgetPrivate& of(VLWidget* popup);
    /// What keeps the tip of @p popup with its control.
    static VLHoverKeeper& hoverOf(VLWidget* popup);
    /// Keeps the window of @p popup above others, or no longer so, and shows it.
    static void setStaysOnTop(VLWidget* popup, bool on);

    /// How the popup's window meets the window system.
    VLPopupSurface& surface();

    /// Remembers @p widget, which may be null, as the one that the popup belongs to.
    void setReference(QWidget* widget);
    /// The widget that the popup belongs to; null where there is none, or none any more.
    QWidget* reference() const;
    VLHoverKeeper& hover();

    /// What is shown until endRequest() is for what @p anchor says, beside @p widget, which may be
    /// null, and was asked for at @p position.
    void beginRequest(const VLTipAnchor& anchor, const QPoint& position, const QWidget* widget);
    void endRequest();
    /// Whether what is asked for now is for the same zone as the tip. Who asks for none asks for
    /// the whole.
    bool isSameZoneRequested() const;
    /// Whether what is asked for now lies outside of the zone of the tip.
    bool isOutsideOfZoneRequested() const;
    /// The part of the control that the tip is for, in global coordinates. A null rectangle for all
    /// of it.
    QRect zone() const;
    /// The window of a control that is no widget; null for any other.
    QWindow* anchorWindow() const;

    /// Keeps the popup until it is hidden: neither the pointer nor a timer hides it.
    void setHeld(bool held);
    bool isHeld() const;

    /// Drops what setReference() has connected. To be called while the popup is still whole.
    void forgetReferences();
    /// Whether the popup goes after a while when the pointer is elsewhere.
    bool hidesByItself() const;
    /// Whether the widget at @p position is the one that the popup belongs to.
    bool isOverReference(const QPoint& position) const;
    /// The popup is wanted at @p position, beside the pointer.
    void setWantedPosition(const QPoint& position);
    /// What the popup is not to cover; nothing where it goes wherever it is put.
    std::optional<PopupPlacement::KeepOff> keepOff() const;
    /// Where the middle of the popup goes; nothing where it does not matter.
    std::optional<QPoint> middle() const;
    /// What a popup may cover of the screen that it belongs on.
    QRect availableArea() const;

    /// Gives the popup @p content, of the package at @p rootPath, and deletes what it had; the
    /// scene is loaded later.
    void putContent(VLXmlElement* content, const QString& rootPath);
    /// Loads @p scene, for the content of the package at @p rootPath.
    void loadScene(const QString& scene, const QString& rootPath);
    /// Puts @p content, which may be the present one, in the place of what is up. A null @p
    /// rootPath stands for the present package.
    void renewContent(VLXmlElement* content, const QString& rootPath);

    /// Whether the popup is a pinned window that follows its scene.
    bool isTended() const;
    /// Gives a pinned window the size of its scene.
    void followScene(const QSize& sceneSize);

    /// The popup leaves the tooltip cycle, into @p window or as a window of its own.
    void dockInto(QWidget* window, const QPoint& position);
    void floatAt(const QPoint& position);

    /// Holds on to the popup's place, from each show until its window is on the screen or hidden.
    void beginMapping();
    void endMapping();
    /// The popup was moved to @p position. A window that is not on the screen yet may already be
    /// said to be there, and then no event tells of the move.
    void holdPosition(const QPoint& position);
    /// Where the frame of the popup's window is, or is to be.
    QPoint framePosition() const;
    /// Says again where the popup goes, now to @p position, if its window is not there yet.
    void confirmPosition(const QPoint& position);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    Q_DISABLE_COPY_MOVE(VLWidgetPrivate)

    /// A zone that goes with its control.
    struct Anchor
    {
        /// Seen from the control, or from the window where the control is no widget.
        QRect zone;
        QPointer<QWindow> window;
        /// See VLTipAnchor.
        bool isCentred = false;
    };

    static void confirmTitledWindow(const QWidget* framed);
    void confirmSize();
    QRect visibleControl() const;
    QWidget* floatingParent() const;
    QString floatingTitle() const;
    void setTransientParentOfFloating();
    bool awaitsFrame();
    void renewView();

    VLWidget* const m_popup;
    VLHoverKeeper m_hover;
    bool m_pinned = false;
    /// Where the pointer was when the tip was asked for; nothing before the first time.
    std::optional<QPoint> m_pointer;
    VLPopupSurface m_surface;
    /// As long as it lives; the popup's own pointer keeps its value beyond that.
    QPointer<QWidget> m_reference;
    /// Nothing where the tip is for the whole of the reference.
    std::optional<Anchor> m_anchor;
    /// Nothing where nobody asks, or asks for the whole.
    std::optional<Anchor> m_requested;
    QPoint m_requestPosition;
    bool m_held = false;
    /// All that are connected to the popup, each once.
    QList<QPointer<QWidget>> m_connected;
    /// The popup's window, as long as its place is held.
    QPointer<QWindow> m_mapping;
    QPoint m_heldPosition;
    /// Whether the present size has been sent to the window system a second time.
    bool m_sizeSentAgain = false;
    /// The window of a pinned popup that waits for its frame before it follows its scene.
    QPointer<QWindow> m_unframed;
};

} // namespace Vidlets

#endif
