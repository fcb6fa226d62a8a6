// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLPOPUPSURFACE_H
#define VLPOPUPSURFACE_H

#include <QMetaObject>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QWidget>
#include <QWindow>

class QScreen;

namespace Vidlets {

class VLWidget;

/**
 * How a popup's window meets a window system that tells no program where its windows are.
 *
 * There the popup belongs to the window of its control, and the compositor puts it on the screen.
 * On every other window system each function gives what holds for any window, and nothing is
 * watched. Internal to the library. Each popup owns one.
 */
class VLPopupSurface final : public QObject
{
public:
    explicit VLPopupSurface(VLWidget* popup);

    /// Remembers @p widget, which may be null, as the one that the popup belongs to. @p window is
    /// the window of what is no widget.
    void setReference(QWidget* widget, QWindow* window);
    /// Whether the popup's window is a child of the reference's.
    bool isInReferenceWindow() const;
    /// Makes the popup's window, which is there but not up yet, a child of the reference's.
    void joinReferenceWindow();

    /// What the window of a popup is.
    Qt::WindowFlags windowFlags() const;
    /// What a popup may cover of @p screen, seen from where its places are counted.
    QRect availableArea(const QScreen* screen) const;

    /// The object whose property "windowOpacity" a fade changes.
    QObject* fadeTarget();
    qreal opacity();
    void setOpacity(qreal opacity);

    /// Where the pointer is, as far as windows tell; @c Unknown where places are asked instead.
    enum class PointerWindow {
        Unknown,
        Popup,
        Reference,
        Elsewhere
    };
    PointerWindow pointerWindow() const;
    /// What is known of the pointer, and changes with it: its place, and the window that it is in
    /// where its place is not told outside of windows.
    struct Pointer
    {
        QPoint position;
        const QWindow* window = nullptr;

        bool operator==(const Pointer& other) const
        {
            return position == other.position && window == other.window;
        }
    };
    Pointer pointer() const;
    /// What lies at @p position. Where windows have no places, only the reference's is looked at,
    /// or, without a reference, the one that the pointer is in.
    QWidget* widgetAt(const QPoint& position) const;
    /// The window that @p position is in, or the pointer where windows have no places.
    QWindow* windowAt(const QPoint& position) const;

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    Q_DISABLE_COPY_MOVE(VLPopupSurface)

    bool isPlacedByCompositor() const;
    bool filterPopup(QEvent* event);
    void beginMapping();
    void endMapping();
    void mapAnew();
    void mapAnewLater();
    void followPointer(QObject* object, QEvent::Type type);
    void revealView();
    void unblockView();
    QWindow* referenceWindow() const;
    bool isScreenFilled() const;

    VLWidget* const m_popup;
    const bool m_active;
    /// Has the opacity of a popup whose window cannot have one.
    QObject m_fade;
    QPointer<QWidget> m_reference;
    QPointer<QWindow> m_referenceWindow;
    /// The window that the pointer is in; null where it is in none of the application.
    QPointer<QWindow> m_pointerWindow;
    /// Whether any window has told of the pointer: one that it was in before the popup was made may
    /// not have.
    bool m_knowsPointer = false;
    /// The window that the popup is a child of.
    QPointer<QWindow> m_parentWindow;
    QMetaObject::Connection m_parentConnection;
    /// The popup's window, as long as it has not been revealed.
    QPointer<QWindow> m_unrevealed;
    /// What the compositor was told when the popup was mapped.
    QRect m_mappedGeometry;
    bool m_isMappingAnew = false;
    bool m_willMapAnew = false;
};

} // namespace Vidlets

#endif
