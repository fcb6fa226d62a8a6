// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLPreferencesReader.h"

#include "VLHostInterfacePrivate.h"
#include <Vidlets/VLView.h>

#include <QList>
#include <QQmlEngine>

namespace Vidlets {

namespace {

/// All that live.
QList<VLPreferencesReader*>& readers()
{
    static QList<VLPreferencesReader*> all;
    return all;
}

/// What the scenes of @p engine are to obey; null where there is no interface for them.
VLPreferences* preferencesFor(const QQmlEngine* engine)
{
    // The engine of a view is its child.
    const auto* view = qobject_cast<VLView*>(engine->parent());
    return VLHostInterfacePrivate::preferencesOf(view ? view->manager() : nullptr);
}

} // namespace

VLPreferencesReader::VLPreferencesReader(VLPreferences* source)
{
    readers().append(this);
    if (source)
        follow(source);
}

VLPreferencesReader::~VLPreferencesReader()
{
    readers().removeAll(this);
}

VLPreferencesReader* VLPreferencesReader::create(QQmlEngine* engine, QJSEngine* /*scriptEngine*/)
{
    return new VLPreferencesReader(preferencesFor(engine));
}

void VLPreferencesReader::offer(VLPreferences* preferences)
{
    const QList<VLPreferencesReader*> all = readers();
    for (VLPreferencesReader* reader : all) {
        if (!reader->m_source)
            reader->follow(preferences);
    }
}

void VLPreferencesReader::follow(VLPreferences* source)
{
    m_source = source;
    const auto take = [this, source](auto signal, auto& property, auto getter) {
        const auto copy = [source, &property, getter] { property = (source->*getter)(); };
        connect(source, signal, this, copy);
        copy();
    };
    take(&VLPreferences::reducedMotionChanged, m_reducedMotion, &VLPreferences::reducedMotion);
    take(&VLPreferences::textScaleChanged, m_textScale, &VLPreferences::textScale);
    take(&VLPreferences::highContrastChanged, m_highContrast, &VLPreferences::highContrast);
    take(&VLPreferences::showDelayChanged, m_showDelay, &VLPreferences::showDelay);
}

bool VLPreferencesReader::reducedMotion() const
{
    return m_reducedMotion;
}

qreal VLPreferencesReader::textScale() const
{
    return m_textScale;
}

bool VLPreferencesReader::highContrast() const
{
    return m_highContrast;
}

int VLPreferencesReader::showDelay() const
{
    return m_showDelay;
}

QBindable<bool> VLPreferencesReader::bindableReducedMotion() const
{
    return &m_reducedMotion;
}

QBindable<qreal> VLPreferencesReader::bindableTextScale() const
{
    return &m_textScale;
}

QBindable<bool> VLPreferencesReader::bindableHighContrast() const
{
    return &m_highContrast;
}

QBindable<int> VLPreferencesReader::bindableShowDelay() const
{
    return &m_showDelay;
}

} // namespace Vidlets

#include "moc_VLPreferencesReader.cpp"
