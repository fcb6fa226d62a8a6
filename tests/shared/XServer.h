// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef XSERVER_H
#define XSERVER_H

#include <QPoint>
#include <QString>
#include <QStringList>
#include <QWidget>

/// The X window of @p popup. A widget may still name the one that it had before a change of flags.
WId windowOfX(const QWidget* popup);

/// What a program that asks the X server prints; empty where it fails, since windows come and go.
QString answerOf(const QString& program, const QStringList& arguments);

/// Whether keys of the X server go to @p window. It may be active already, as Qt has it, and the
/// server still about to give it the keyboard.
bool hasKeyboardOfX(const QWidget* window);

/// Where the X server has @p window, within the frame that the window manager put around it; an
/// impossible place as long as there is none.
QPoint positionOnScreenOfX(const QWidget* window);

#endif
