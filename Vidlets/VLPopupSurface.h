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

    /// Remembers @p widget, which may be null, as the one that the popup belongs to.
    void setReference(QWidget* widget);

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
    /// The widget at @p position; no other window than that of @p reference is looked at where
    /// windows have no places.
    static QWidget* widgetAt(const QPoint& position, const QWidget* reference);

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
    void setParentWindow(QWindow* window);
    QWindow* referenceWindow() const;

    VLWidget* const m_popup;
    const bool m_active;
    /// Has the opacity of a popup whose window cannot have one.
    QObject m_fade;
    QPointer<QWidget> m_reference;
    /// The window that the pointer is in; null where it is in none of the application.
    QPointer<QWindow> m_pointerWindow;
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
