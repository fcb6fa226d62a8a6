// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorSceneText.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

bool isOfWord(QChar character)
{
    return character.isLetterOrNumber() || character == u'_' || character == u'$';
}

/// Where the next character is that is neither white space nor in a comment.
qsizetype nextSignificant(const QString& text, qsizetype at)
{
    while (at < text.size()) {
        const QStringView rest = QStringView(text).sliced(at);
        qsizetype end = at;
        if (rest.front().isSpace())
            end = at + 1;
        else if (rest.startsWith("//"_L1))
            end = text.indexOf(u'\n', at);
        else if (rest.startsWith("/*"_L1))
            end = text.indexOf("*/"_L1, at + 2) + 2;
        if (end == at)
            return at;
        // What is left open ends with the text.
        at = end < at ? text.size() : end;
    }
    return at;
}

/// Whether no statement begins in the way in which @p line does.
bool continuesStatement(QStringView line)
{
    if (line.isEmpty() || line.startsWith("++"_L1) || line.startsWith("--"_L1))
        return false;
    for (const QLatin1StringView word : {"else"_L1, "catch"_L1, "finally"_L1}) {
        if (line.startsWith(word))
            return line.size() == word.size() || !isOfWord(line.at(word.size()));
    }
    return u"?:|&.,+-*%=^{"_s.contains(line.front());
}

} // namespace

AuthorSceneText::AuthorSceneText(const QString& text, Wanted wanted)
    : m_text(text)
    , m_wanted(wanted)
{
    while (m_at < m_text.size())
        readNext();
}

void AuthorSceneText::readNext()
{
    const QChar character = m_text.at(m_at);
    const QChar next = m_at + 1 < m_text.size() ? m_text.at(m_at + 1) : QChar();
    if (character == u'/' && next == u'/') {
        const qsizetype end = m_text.indexOf(u'\n', m_at);
        readComment(end < 0 ? m_text.size() : end, end < 0 ? m_text.size() : end);
    } else if (character == u'/' && next == u'*') {
        const qsizetype end = m_text.indexOf("*/"_L1, m_at + 2);
        readComment(end < 0 ? m_text.size() : end + 2, end < 0 ? m_text.size() : end);
    } else if (character == u'"' || character == u'\'' || character == u'`') {
        beginToken();
        readString(character);
    } else if (character == u'/' && mayBeginPattern()) {
        beginToken();
        readPattern();
    } else {
        readCode(character);
    }
}

void AuthorSceneText::readString(QChar quote)
{
    AuthorLiteral literal{QString(), m_position};
    advance();
    const qsizetype begin = m_at;
    while (m_at < m_text.size()) {
        const QChar character = m_text.at(m_at);
        // A string that is left open ends with its line.
        if (character == quote || (character == u'\n' && quote != u'`'))
            break;
        if (character == u'\\' && m_at + 1 < m_text.size())
            advance();
        advance();
    }
    literal.text = m_text.mid(begin, m_at - begin);
    m_literals.append(literal);
    m_significant = quote;
    const qsizetype end = m_at;
    if (m_at < m_text.size() && m_text.at(m_at) == quote)
        advance();
    endToken(AuthorToken::Kind::Literal, begin, end, literal.position);
}

void AuthorSceneText::readPattern()
{
    const qsizetype begin = m_at;
    const XmlPosition position = m_position;
    bool isInClass = false;
    for (advance(); m_at < m_text.size() && m_text.at(m_at) != u'\n'; advance()) {
        const QChar character = m_text.at(m_at);
        if (character == u'\\' && m_at + 1 < m_text.size())
            advance();
        else if (character == u'[')
            isInClass = true;
        else if (character == u']')
            isInClass = false;
        else if (character == u'/' && !isInClass)
            break;
    }
    m_significant = u'/';
    if (m_at < m_text.size() && m_text.at(m_at) == u'/') {
        advance();
        m_significant = u'x';
    }
    endToken(AuthorToken::Kind::Sign, begin, m_at, position);
}

void AuthorSceneText::readComment(qsizetype end, qsizetype textEnd)
{
    constexpr qsizetype kMarkLength = 2;
    AuthorSuppression suppression;
    suppression.rules =
        suppressedRules(m_text.mid(m_at + kMarkLength, textEnd - m_at - kMarkLength));
    suppression.firstLine = m_position.line;
    skipTo(end);
    suppression.lastLine = m_last.line;
    if (suppression.rules.isEmpty())
        return;
    m_pending.append(m_suppressions.size());
    m_suppressions.append(suppression);
}

void AuthorSceneText::readCode(QChar character)
{
    if (character == u'\n' && !isContinued() && !goesOn())
        endStatements(m_depth);
    if (character.isSpace()) {
        advance();
        return;
    }
    if (character == u'}' || character == u')' || character == u']') {
        // What stands behind the last statement of a block has none to switch off.
        m_pending.clear();
        endStatements(m_depth);
        --m_depth;
    } else {
        beginToken();
    }
    if (character == u'{' || character == u'(' || character == u'[')
        ++m_depth;
    const qsizetype begin = m_at;
    const XmlPosition position = m_position;
    const bool isWord = isOfWord(character);
    if (isWord)
        skipWord();
    else
        advance();
    m_significant = m_text.at(m_at - 1);
    endToken(isWord ? AuthorToken::Kind::Word : AuthorToken::Kind::Sign, begin, m_at, position);
    if (character == u';')
        endStatements(m_depth);
}

void AuthorSceneText::skipWord()
{
    while (m_at < m_text.size() && isOfWord(m_text.at(m_at)))
        advance();
}

void AuthorSceneText::endToken(AuthorToken::Kind kind, qsizetype begin, qsizetype end,
                               XmlPosition position)
{
    if (m_wanted != Wanted::Tokens)
        return;
    const bool startsLine =
        m_tokens.isEmpty() || m_tokens.constLast().position.line < position.line;
    m_tokens.append(
        {kind, QStringView(m_text).sliced(begin, end - begin), position, m_at, startsLine});
}

/// The statement of the comments before the present character begins here.
void AuthorSceneText::beginToken()
{
    for (const qsizetype index : std::as_const(m_pending)) {
        m_suppressions[index].begin = m_position;
        m_open.append({index, m_depth});
    }
    m_pending.clear();
}

/// Ends the statements that began at @p depth or deeper, with the character before the present one.
void AuthorSceneText::endStatements(int depth)
{
    while (!m_open.isEmpty() && m_open.constLast().depth >= depth)
        m_suppressions[m_open.takeLast().suppression].end = m_last;
}

void AuthorSceneText::advance()
{
    m_last = m_position;
    if (m_text.at(m_at) == u'\n')
        m_position = {m_position.line + 1, 1};
    else
        ++m_position.column;
    ++m_at;
}

void AuthorSceneText::skipTo(qsizetype end)
{
    while (m_at < end)
        advance();
}

/// Whether a slash is no division.
bool AuthorSceneText::mayBeginPattern() const
{
    return m_significant.isNull() || u"(,=:[!&|?{};+-*%<>~^"_s.contains(m_significant);
}

/// Whether a statement goes on in the next line.
bool AuthorSceneText::isContinued() const
{
    return !m_significant.isNull() && u"(,=:[!&|?+-*%<>~^.{"_s.contains(m_significant);
}

/// Whether what is behind the present line's end is still part of a statement with a suppression.
bool AuthorSceneText::goesOn()
{
    if (m_open.isEmpty() || m_open.constLast().depth < m_depth)
        return false;
    // Once for all the lines that are empty.
    if (m_next < m_at)
        m_next = nextSignificant(m_text, m_at);
    return continuesStatement(QStringView(m_text).sliced(m_next));
}

} // namespace Vidlets
