// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSCENETEXT_H
#define VLSCENETEXT_H

#include "VLContentRoots.h"

#include <QString>
#include <QStringList>
#include <QUrl>

class QTextDocument;

/**
 * What texts load when they are shown.
 *
 * Internal to the library. Rich text and Markdown are read by the same parser that shows them, so
 * that both find the same. Pure functions for the user-interface thread.
 */
namespace Vidlets::SceneText {

/// How a text is read; the numbers are those of Text.textFormat.
enum Format {
    Plain = 0,
    Rich = 1,
    Auto = 2,
    Markdown = 3,
    Styled = 4
};

/// Returns the addresses that @p text, read as @p format, loads from files outside of @p roots.
/// They count from @p base.
QStringList strayAddresses(const QString& text, Format format, const QUrl& base,
                           const VLContentRoots& roots);

/// Returns the same for the pictures and backgrounds in @p document as it is.
QStringList strayAddresses(const QTextDocument& document, const QUrl& base,
                           const VLContentRoots& roots);

/**
 * Takes the addresses that lead out of @p text, whichever way it will be read.
 *
 * @param[out] strays What was taken.
 * @return What is around them; null where nothing less than the whole text would do.
 */
QString cleaned(const QString& text, const QUrl& base, const VLContentRoots& roots,
                QStringList& strays);

} // namespace Vidlets::SceneText

#endif
