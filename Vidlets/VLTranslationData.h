// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLTRANSLATIONDATA_H
#define VLTRANSLATIONDATA_H

#include <QByteArray>

/**
 * Compiled translations that come from nobody knows where.
 *
 * QTranslator goes by each offset and length in such a file without a look at its bounds, and loads
 * what other files it names. Internal to the library.
 */
namespace Vidlets::TranslationData {

/// Returns @p file with nothing in it but what a lookup without a number needs, each offset in
/// bounds, for QTranslator to load from memory; null where it is no translation file or a broken
/// one. The file's dependencies are among what is left out.
QByteArray checked(const QByteArray& file);

/// Returns whether @p file, from which checked() gave something, asks for other files.
bool hasDependencies(const QByteArray& file);

} // namespace Vidlets::TranslationData

#endif
