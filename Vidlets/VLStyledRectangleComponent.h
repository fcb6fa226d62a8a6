// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSTYLEDRECTANGLECOMPONENT_H
#define VLSTYLEDRECTANGLECOMPONENT_H

#include <Vidlets/VidletsExport.h>

#include <QColor>
#include <QQuickPaintedItem>
#include <QString>
#include <QStyle>
#include <QtQml/qqmlregistration.h>

namespace Vidlets {

/**
 * The QML item `VLStyledRectangle`: a background in the colours of the application or of its
 * tooltips.
 *
 * No setter asks for a repaint. The setters run on the user-interface thread, the painting is the
 * scene graph's.
 */
class VIDLETS_EXPORT VLStyledRectangleComponent : public QQuickPaintedItem
{
    Q_OBJECT
    QML_NAMED_ELEMENT(VLStyledRectangle)

    /// "PE_Widget", the default, or "PE_Frame". Both look the same; other names are ignored.
    Q_PROPERTY(QString element READ element WRITE setElement NOTIFY elementChanged)
    /// The colour for text on the rectangle: black in the style of tooltips, else the
    /// application's.
    Q_PROPERTY(QColor textColor READ textColor NOTIFY textColorChanged)
    /// Whether the rectangle has the colours of tooltips. False by default.
    Q_PROPERTY(bool toolTipStyle READ toolTipStyle WRITE setToolTipStyle NOTIFY toolTipStyleChanged)

public:
    /// Makes a rectangle in the application's colours. @p parent may be null.
    explicit VLStyledRectangleComponent(QQuickPaintedItem* parent = nullptr);
    ~VLStyledRectangleComponent() override;

    /// Returns the property element.
    QString element();
    /// Returns the property textColor.
    QColor textColor();
    /// Returns the property toolTipStyle.
    bool toolTipStyle();

    /// Sets the property; for a known name the signal is sent also when it stays the same.
    void setElement(const QString& name);
    /// Sets the property; both signals are sent also when it stays the same.
    void setToolTipStyle(bool on);

    /// Draws the rectangle: that of the item in the style of tooltips, else one that is larger by
    /// one unit on each side.
    void paint(QPainter* painter) override;

Q_SIGNALS:
    /// The element was set.
    void elementChanged();
    /// The style was set.
    void textColorChanged();
    /// The style was set.
    void toolTipStyleChanged();

private:
    Q_DISABLE_COPY_MOVE(VLStyledRectangleComponent)

    /// A QStyle::PrimitiveElement that follows the element's name. Only stored: no style draws.
    int m_primitiveElement = QStyle::PE_Widget;
    QString m_element;
    bool m_toolTipStyle = false;
};

} // namespace Vidlets

#endif
