// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorLook.h"

#include <Vidlets/VLContext.h>

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QToolTip>

namespace Vidlets {

namespace {

const QColor kDarkWindow(0x2b, 0x2d, 0x31);
const QColor kDarkBase(0x1f, 0x21, 0x24);
const QColor kDarkButton(0x38, 0x3b, 0x40);
const QColor kLightWindow(0xef, 0xef, 0xef);
const QColor kLightBase(0xff, 0xff, 0xff);
const QColor kLightButton(0xe6, 0xe6, 0xe6);

struct Shades
{
    QColor window;
    QColor base;
    QColor button;
    QColor text;
    QColor faint;
    QColor accent;
};

/// Both are spelled out: what the style or the desktop would say differs between machines.
QPalette paletteOf(const Shades& shades)
{
    QPalette palette(shades.button, shades.window);
    palette.setColor(QPalette::Window, shades.window);
    palette.setColor(QPalette::WindowText, shades.text);
    palette.setColor(QPalette::Base, shades.base);
    palette.setColor(QPalette::AlternateBase, shades.window);
    palette.setColor(QPalette::Text, shades.text);
    palette.setColor(QPalette::Button, shades.button);
    palette.setColor(QPalette::ButtonText, shades.text);
    palette.setColor(QPalette::ToolTipBase, shades.button);
    palette.setColor(QPalette::ToolTipText, shades.text);
    palette.setColor(QPalette::PlaceholderText, shades.faint);
    palette.setColor(QPalette::Highlight, shades.accent);
    palette.setColor(QPalette::HighlightedText, shades.base);
    palette.setColor(QPalette::Link, shades.accent);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, shades.faint);
    return palette;
}

QPalette palette(bool isDark)
{
    const Shades dark{kDarkWindow,        kDarkBase,          kDarkButton,
                      {0xe8, 0xe9, 0xeb}, {0x83, 0x87, 0x8d}, {0x4f, 0x9c, 0xf0}};
    const Shades light{kLightWindow,       kLightBase,         kLightButton,
                       {0x1c, 0x1c, 0x1c}, {0x80, 0x80, 0x80}, {0x1f, 0x6f, 0xc8}};
    return paletteOf(isDark ? dark : light);
}

} // namespace

void AuthorLook::applyToApplication() const
{
    // The native styles of some platforms paint with the system's colours and ignore a palette.
    if (QApplication::style()->name() != QLatin1String("fusion"))
        QApplication::setStyle(QStringLiteral("Fusion"));
    const QPalette colors = palette(isDark);
    if (QApplication::palette() != colors) {
        QApplication::setPalette(colors);
        QToolTip::setPalette(colors);
    }
    const Qt::LayoutDirection direction = isRightToLeft ? Qt::RightToLeft : Qt::LeftToRight;
    if (QGuiApplication::layoutDirection() != direction)
        QGuiApplication::setLayoutDirection(direction);
}

void AuthorLook::applyToContext(VLContext& context) const
{
    context.set(ckLocale, locale);
    context.set(ckScale, static_cast<float>(scale));
    context.set(ckSimpleTooltips, isSimple);
}

} // namespace Vidlets
