// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLPREFERENCESREADER_H
#define VLPREFERENCESREADER_H

#include "VLPreferences.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqml.h>

class QJSEngine;
class QQmlEngine;

namespace Vidlets {

/**
 * The preferences as the scenes of one engine see them, which they call "VidletPreferences": never
 * to be written, and there as long as the engine is, whatever becomes of the interface.
 *
 * Internal to the host kit. The scenes of tips see those of their interface, and all others those
 * of the interface that was made first.
 */
class VLPreferencesReader final : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(VidletPreferences)
    QML_SINGLETON

    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY reducedMotionChanged BINDABLE
                   bindableReducedMotion FINAL)
    Q_PROPERTY(
        qreal textScale READ textScale NOTIFY textScaleChanged BINDABLE bindableTextScale FINAL)
    Q_PROPERTY(bool highContrast READ highContrast NOTIFY highContrastChanged BINDABLE
                   bindableHighContrast FINAL)
    Q_PROPERTY(
        int showDelay READ showDelay NOTIFY showDelayChanged BINDABLE bindableShowDelay FINAL)

public:
    ~VLPreferencesReader() override;

    /// Makes the one of @p engine, which takes it.
    static VLPreferencesReader* create(QQmlEngine* engine, QJSEngine* scriptEngine);
    /// There is an interface with @p preferences now, for those who wait for one.
    static void offer(VLPreferences* preferences);

    bool reducedMotion() const;
    qreal textScale() const;
    bool highContrast() const;
    int showDelay() const;

    // What is bound to them cannot write them either.
    QBindable<bool> bindableReducedMotion() const;
    QBindable<qreal> bindableTextScale() const;
    QBindable<bool> bindableHighContrast() const;
    QBindable<int> bindableShowDelay() const;

Q_SIGNALS:
    void reducedMotionChanged();
    void textScaleChanged();
    void highContrastChanged();
    void showDelayChanged();

private:
    Q_DISABLE_COPY_MOVE(VLPreferencesReader)

    explicit VLPreferencesReader(VLPreferences* source);

    void follow(VLPreferences* source);

    /// Null while there is no interface; what it said last stays.
    QPointer<VLPreferences> m_source;

    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VLPreferencesReader, bool, m_reducedMotion, false,
                                         &VLPreferencesReader::reducedMotionChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VLPreferencesReader, qreal, m_textScale, 1.0,
                                         &VLPreferencesReader::textScaleChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VLPreferencesReader, bool, m_highContrast, false,
                                         &VLPreferencesReader::highContrastChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(VLPreferencesReader, int, m_showDelay, -1,
                                         &VLPreferencesReader::showDelayChanged)
};

} // namespace Vidlets

#endif
