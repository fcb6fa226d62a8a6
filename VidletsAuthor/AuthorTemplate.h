// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORTEMPLATE_H
#define AUTHORTEMPLATE_H

#include <QString>

/// The package that authors begin with.
namespace Vidlets::AuthorTemplate {

/// Returns the directory of the template that belongs to the running program: below the same prefix
/// as the program, so that an installed tree can be moved; null where there is none.
QString find();

/// Makes the package @p directory from the template @p source. False, with the @p reason as a
/// sentence, where the name is none for a package, or something is there that is no empty
/// directory, in which case nothing is changed, or where a file cannot be written.
bool create(const QString& source, const QString& directory, QString& reason);

} // namespace Vidlets::AuthorTemplate

#endif
