// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSearchQuery.h"

#include <QTextBoundaryFinder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr qsizetype kMaxInput = 256;
constexpr qsizetype kSnippetLength = 120;
// Of the snippet, before the first word that was found.
constexpr qsizetype kLead = 40;

bool meets(const VLSearchQuery::Term& term, const QString& word)
{
    return term.isPrefix ? word.startsWith(term.word) : word == term.word;
}

QList<bool> either(QList<bool> left, const QList<bool>& right)
{
    for (qsizetype i = 0; i < left.size(); ++i)
        left[i] = left.at(i) || right.at(i);
    return left;
}

bool hasAll(const QList<bool>& found)
{
    return !found.contains(false);
}

/// The nearest place from @p index on, or before it, where a line could be broken, at most
/// @p limit away. Where there is none, @p text is cut between two characters.
qsizetype breakNear(const QString& text, qsizetype index, bool isForward, qsizetype limit)
{
    if (index <= 0 || index >= text.size())
        return qBound(qsizetype(0), index, text.size());
    // A long text is not looked through for it.
    const qsizetype start = qMax(qsizetype(0), index - limit);
    const QStringView part =
        QStringView(text).sliced(start).first(qMin(text.size() - start, 2 * limit));
    for (const auto type : {QTextBoundaryFinder::Word, QTextBoundaryFinder::Grapheme}) {
        QTextBoundaryFinder finder(type, part.data(), part.size());
        finder.setPosition(index - start);
        if (finder.isAtBoundary())
            return index;
        const qsizetype place = isForward ? finder.toNextBoundary() : finder.toPreviousBoundary();
        if (place > 0 && place < part.size())
            return start + place;
    }
    return index;
}

/// @p text from @p start to @p end as HTML, with @p marked in bold.
QString asHtml(const QString& text, qsizetype start, qsizetype end,
               const QList<VLSearchFold::Word>& marked)
{
    QString html = start > 0 ? u"…"_s : QString();
    qsizetype done = start;
    for (const VLSearchFold::Word& word : marked) {
        if (word.start < done || word.start + word.length > end)
            continue;
        html += text.sliced(done, word.start - done).toHtmlEscaped() + "<b>"_L1
            + text.sliced(word.start, word.length).toHtmlEscaped() + "</b>"_L1;
        done = word.start + word.length;
    }
    html += text.sliced(done, end - done).toHtmlEscaped();
    return end < text.size() ? html + u"…"_s : html;
}

/// Neighbours that overlap, as those of scripts without blanks do, in one.
QList<VLSearchFold::Word> joined(const QList<VLSearchFold::Word>& words)
{
    QList<VLSearchFold::Word> result;
    for (const VLSearchFold::Word& word : words) {
        const bool overlaps =
            !result.isEmpty() && word.start < result.constLast().start + result.constLast().length;
        if (!overlaps) {
            result.append(word);
            continue;
        }
        VLSearchFold::Word& last = result.last();
        last.length = qMax(last.length, word.start + word.length - last.start);
    }
    return result;
}

} // namespace

VLSearchQuery::VLSearchQuery(const QString& input)
{
    const QList<VLSearchFold::Word> words = m_fold.words(input.left(kMaxInput));
    for (qsizetype i = 0; i < words.size(); ++i) {
        const VLSearchFold::Word& word = words.at(i);
        if (word.isTail)
            continue;
        // A letter of a script without blanks is a word of the text together with the next one.
        const bool isLast = i + 1 == words.size();
        const Term term{word.text, isLast || word.ideographs == 1};
        const auto isSame = [&term](const Term& other) {
            return other.word == term.word && other.isPrefix == term.isPrefix;
        };
        if (std::none_of(m_terms.cbegin(), m_terms.cend(), isSame))
            m_terms.append(term);
    }
}

VLSearchQuery::Place VLSearchQuery::placeIn(const VLSearchText& text)
{
    const QList<bool> inTitle = found(text.title);
    if (hasAll(inTitle))
        return AllInTitle;
    const QList<bool> inName = either(found(text.shortcut), found(text.key));
    if (!hasAll(either(either(inTitle, inName), found(text.text))))
        return Nowhere;
    if (inTitle.contains(true))
        return SomeInTitle;
    return inName.contains(true) ? SomeInName : InText;
}

QList<bool> VLSearchQuery::found(const QString& text)
{
    QList<bool> result(m_terms.size(), false);
    const QList<VLSearchFold::Word> words = m_fold.words(text);
    for (const VLSearchFold::Word& word : words) {
        for (qsizetype i = 0; i < m_terms.size(); ++i)
            result[i] = result.at(i) || meets(m_terms.at(i), word.text);
    }
    return result;
}

bool VLSearchQuery::matches(const QString& word) const
{
    return std::any_of(m_terms.cbegin(), m_terms.cend(),
                       [&word](const Term& term) { return meets(term, word); });
}

QList<VLSearchFold::Word> VLSearchQuery::matchesIn(const QString& text)
{
    QList<VLSearchFold::Word> words = m_fold.words(text);
    const auto isOther = [this](const VLSearchFold::Word& word) { return !matches(word.text); };
    words.erase(std::remove_if(words.begin(), words.end(), isOther), words.end());
    return joined(words);
}

QString VLSearchQuery::snippet(const VLSearchText& text)
{
    for (const QString& source : {text.text, text.title, text.shortcut, text.key}) {
        const QList<VLSearchFold::Word> marked = matchesIn(source);
        if (marked.isEmpty())
            continue;
        const VLSearchFold::Word& first = marked.constFirst();
        const qsizetype start = breakNear(source, first.start - kLead, true, kLead);
        // What was found is whole, however long it is.
        const qsizetype end = qMax(first.start + first.length,
                                   breakNear(source, start + kSnippetLength, false, kLead));
        return asHtml(source, start, end, marked);
    }
    return QString();
}

} // namespace Vidlets
