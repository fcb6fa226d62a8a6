// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Appearance.h"

#include <QApplication>
#include <QPalette>
#include <QToolTip>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

const QColor kWindow(0x2b, 0x2d, 0x31);
const QColor kBase(0x1f, 0x21, 0x24);
const QColor kButton(0x38, 0x3b, 0x40);
const QColor kText(0xe8, 0xe9, 0xeb);
const QColor kFaintText(0x83, 0x87, 0x8d);
const QColor kAccent(0x4f, 0x9c, 0xf0);

QPalette darkPalette()
{
    QPalette palette(kButton, kWindow);
    palette.setColor(QPalette::Window, kWindow);
    palette.setColor(QPalette::WindowText, kText);
    palette.setColor(QPalette::Base, kBase);
    palette.setColor(QPalette::AlternateBase, kWindow);
    palette.setColor(QPalette::Text, kText);
    palette.setColor(QPalette::Button, kButton);
    palette.setColor(QPalette::ButtonText, kText);
    palette.setColor(QPalette::ToolTipBase, kButton);
    palette.setColor(QPalette::ToolTipText, kText);
    palette.setColor(QPalette::PlaceholderText, kFaintText);
    palette.setColor(QPalette::Highlight, kAccent);
    palette.setColor(QPalette::HighlightedText, kBase);
    palette.setColor(QPalette::Link, kAccent);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, kFaintText);
    }
    return palette;
}

} // namespace

void useDarkColors()
{
    // The native styles of some platforms paint with the system's colours and ignore a palette.
    QApplication::setStyle(u"Fusion"_s);
    QApplication::setPalette(darkPalette());
    QToolTip::setPalette(darkPalette());
}

} // namespace Workbench
