// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLPreferences.h"

#include <algorithm>

namespace Vidlets {

namespace {

constexpr qreal kSmallestScale = 0.5;
constexpr qreal kLargestScale = 4.0;
constexpr int kStyleDelay = -1;

} // namespace

VLPreferences::VLPreferences(QObject* parent)
    : QObject(parent)
{
}

VLPreferences::~VLPreferences() = default;

bool VLPreferences::reducedMotion() const
{
    return m_reducedMotion;
}

void VLPreferences::setReducedMotion(bool reduced)
{
    m_reducedMotion = reduced;
}

QBindable<bool> VLPreferences::bindableReducedMotion()
{
    return &m_reducedMotion;
}

qreal VLPreferences::textScale() const
{
    return m_textScale;
}

void VLPreferences::setTextScale(qreal scale)
{
    m_textScale = std::clamp(scale, kSmallestScale, kLargestScale);
}

QBindable<qreal> VLPreferences::bindableTextScale()
{
    return &m_textScale;
}

bool VLPreferences::highContrast() const
{
    return m_highContrast;
}

void VLPreferences::setHighContrast(bool high)
{
    m_highContrast = high;
}

QBindable<bool> VLPreferences::bindableHighContrast()
{
    return &m_highContrast;
}

int VLPreferences::showDelay() const
{
    return m_showDelay;
}

void VLPreferences::setShowDelay(int delayMs)
{
    m_showDelay = std::max(delayMs, kStyleDelay);
}

QBindable<int> VLPreferences::bindableShowDelay()
{
    return &m_showDelay;
}

} // namespace Vidlets

#include "moc_VLPreferences.cpp"
