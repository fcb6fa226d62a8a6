// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSEARCHQUERY_H
#define VLSEARCHQUERY_H

#include "VLSearchFold.h"
#include "VLSearchText.h"

#include <QList>
#include <QString>

namespace Vidlets {

/**
 * The words that a user looks for.
 *
 * All of them must be in a tip, in whichever of its texts; the last may be the beginning of a word.
 * The first 256 characters of the input count. Nothing in it is syntax. Internal to the host kit.
 * One is used on one thread.
 */
class VLSearchQuery
{
public:
    struct Term
    {
        QString word;
        /// Whether words that begin so count, too.
        bool isPrefix = false;
    };

    /// Where a tip has the words, the best first.
    enum Place : int {
        AllInTitle,
        SomeInTitle,
        SomeInName, ///< In the shortcut or the key.
        InText,
        Nowhere ///< The tip lacks one of them.
    };

    explicit VLSearchQuery(const QString& input);

    /// Returns the words, each once; none where the input has none.
    const QList<Term>& terms() const
    {
        return m_terms;
    }

    /// Returns where @p text has the words.
    Place placeIn(const VLSearchText& text);

    /// Returns an excerpt of @p text as HTML with what was found in it; see VLSearchHit.
    QString snippet(const VLSearchText& text);

private:
    /// The words that are in a text, as bits.
    QList<bool> found(const QString& text);
    bool matches(const QString& word) const;
    QList<VLSearchFold::Word> matchesIn(const QString& text);

    VLSearchFold m_fold;
    QList<Term> m_terms;
};

} // namespace Vidlets

#endif
