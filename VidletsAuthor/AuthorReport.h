// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORREPORT_H
#define AUTHORREPORT_H

#include "AuthorFinding.h"

/// What check found, in the forms that people and machines read.
namespace Vidlets::AuthorReport {

/// One line for each finding: place, severity, what is wrong, what to do and the rule.
QByteArray text(const QList<AuthorFinding>& findings);
/// An object with the list "findings".
QByteArray json(const QList<AuthorFinding>& findings);
/// A log in the Static Analysis Results Interchange Format, version 2.1.0.
QByteArray sarif(const QList<AuthorFinding>& findings);
/// A suite of tests as XML, one for each finding; errors and warnings fail it.
QByteArray junit(const QList<AuthorFinding>& findings);

/// Returns whether a finding is an error or a warning.
bool isFailed(const QList<AuthorFinding>& findings);

} // namespace Vidlets::AuthorReport

#endif
