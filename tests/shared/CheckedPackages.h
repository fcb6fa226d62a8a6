// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef CHECKEDPACKAGES_H
#define CHECKEDPACKAGES_H

#include <QList>
#include <QString>
#include <QStringList>

#include <VidletsAuthor/AuthorFinding.h>

/// What is found in all that @p paths lead to; warns of those that lead nowhere.
QList<Vidlets::AuthorFinding> checked(const QStringList& paths);

/// The findings of one rule as "file:line".
QStringList places(const QList<Vidlets::AuthorFinding>& findings, const QString& rule);

#endif
