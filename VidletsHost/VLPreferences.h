// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLPREFERENCES_H
#define VLPREFERENCES_H

#include <QBindable>
#include <QObject>
#include <QProperty>

#include <VidletsHost/VidletsHostExport.h>

namespace Vidlets {

/**
 * What the user prefers of the look of tips, for scenes to obey.
 *
 * A host sets it; scenes read it as the singleton "VidletPreferences" of the QML module
 * com.larkspan.vidlets.host, and cannot write it. One that is for hosts without the kit as well
 * keeps the import in a file of its own, makes that by Qt.createComponent(), and does without where
 * the component is not ready; no warning comes of it. VLHostInterface makes and owns it. On the
 * user-interface thread.
 */
class VIDLETSHOST_EXPORT VLPreferences : public QObject
{
    Q_OBJECT

    /// Whether nothing is to move by itself: no animation, and no clip that plays unasked.
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY reducedMotionChanged BINDABLE
                   bindableReducedMotion)
    /// By how much text is larger than usual; 1 by default, at least 0.5 and at most 4.
    Q_PROPERTY(qreal textScale READ textScale NOTIFY textScaleChanged BINDABLE bindableTextScale)
    /// Whether colours are to be as far apart as possible.
    Q_PROPERTY(bool highContrast READ highContrast NOTIFY highContrastChanged BINDABLE
                   bindableHighContrast)
    /// Milliseconds that the pointer rests before a tip comes up; -1, the default, for what the
    /// style of the application says. For widgets a delay shorter than the style's changes nothing.
    Q_PROPERTY(int showDelay READ showDelay NOTIFY showDelayChanged BINDABLE bindableShowDelay)

public:
    /// Makes preferences that ask for nothing. @p parent may be null.
    explicit VLPreferences(QObject* parent = nullptr);
    ~VLPreferences() override;

    /// Returns the property reducedMotion.
    bool reducedMotion() const;
    /// Sets the property reducedMotion.
    void setReducedMotion(bool reduced);
    /// Returns the property for bindings.
    QBindable<bool> bindableReducedMotion();

    /// Returns the property textScale.
    qreal textScale() const;
    /// Sets the property textScale, kept within its limits.
    void setTextScale(qreal scale);
    /// Returns the property for bindings.
    QBindable<qreal> bindableTextScale();

    /// Returns the property highContrast.
    bool highContrast() const;
    /// Sets the property highContrast.
    void setHighContrast(bool high);
    /// Returns the property for bindings.
    QBindable<bool> bindableHighContrast();

    /// Returns the property showDelay, in milliseconds.
    int showDelay() const;
    /// Sets the property showDelay, in milliseconds.
    void setShowDelay(int delayMs);
    /// Returns the property for bindings.
    QBindable<int> bindableShowDelay();

Q_SIGNALS:
    /// The property reducedMotion changed.
    void reducedMotionChanged();
    /// The property textScale changed.
    void textScaleChanged();
    /// The property highContrast changed.
    void highContrastChanged();
    /// The property showDelay changed.
    void showDelayChanged();

private:
    Q_DISABLE_COPY_MOVE(VLPreferences)

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VLPreferences, bool, m_reducedMotion, false,
                                         &VLPreferences::reducedMotionChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VLPreferences, qreal, m_textScale, 1.0,
                                         &VLPreferences::textScaleChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VLPreferences, bool, m_highContrast, false,
                                         &VLPreferences::highContrastChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VLPreferences, int, m_showDelay, -1,
                                         &VLPreferences::showDelayChanged)
};

} // namespace Vidlets

#endif
