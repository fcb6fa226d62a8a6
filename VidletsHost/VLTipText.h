// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLTIPTEXT_H
#define VLTIPTEXT_H

#include <QString>
#include <QStringList>

namespace Vidlets {

class VLManager;
class VLXmlElement;

/**
 * The words of a tip as its scene shows them: with the host's variables filled in, without markup,
 * and with each run of white space as one blank.
 *
 * Internal to the host kit. A manager may be null, and then variables stay.
 */
namespace TipText {

/// The attribute with what a tip says in short.
QString summaryAttribute();

/// @p source, a text of a tip, with its variables as they stand.
QString plain(const QString& source);

QString title(const VLXmlElement& tip, VLManager* manager);

/// The attribute "summary" of @p tip, its character data, and that of all elements in it, each as
/// sentences of their own.
QString text(const VLXmlElement& tip, VLManager* manager);

/// Title, shortcut and text, each as sentences of their own.
QString spoken(const VLXmlElement& tip, VLManager* manager);

/// @p parts without the empty ones, each ended, as a screen reader runs them together else.
QString asSentences(const QStringList& parts);

} // namespace TipText

} // namespace Vidlets

#endif
