// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSCENETEXT_H
#define AUTHORSCENETEXT_H

#include "AuthorFinding.h"

namespace Vidlets {

/// A string in a scene.
struct AuthorLiteral
{
    /// As written, without the quotation marks.
    QString text;
    XmlPosition position;
};

/// A word, a string or a single sign of a scene.
struct AuthorToken
{
    enum class Kind {
        Word,
        Literal,
        Sign
    };

    bool is(QLatin1StringView sign) const
    {
        return kind != Kind::Literal && text == sign;
    }

    Kind kind = Kind::Sign;
    /// Part of the scene's text; of a string without its quotation marks.
    QStringView text;
    XmlPosition position;
    /// Where it ends in the scene's text.
    qsizetype end = 0;
    /// Whether it is the first of its line.
    bool startsLine = false;
};

/**
 * The strings and comments of a QML or JavaScript file, told apart without a grammar.
 *
 * What it reads need be no valid program: it always comes to an end, in time that grows with the
 * length of the text.
 */
class AuthorSceneText
{
public:
    /// What else is wanted of a text.
    enum class Wanted {
        Literals,
        Tokens
    };

    /// @p text has to stay.
    explicit AuthorSceneText(const QString& text, Wanted wanted = Wanted::Literals);

    const QList<AuthorLiteral>& literals() const
    {
        return m_literals;
    }
    /// All but comments; empty unless they were wanted.
    const QList<AuthorToken>& tokens() const
    {
        return m_tokens;
    }
    /// The comments that switch rules off, each with the statement or object behind it.
    const QList<AuthorSuppression>& suppressions() const
    {
        return m_suppressions;
    }

private:
    /// A suppression whose statement is being read.
    struct OpenStatement
    {
        qsizetype suppression;
        int depth;
    };

    void readNext();
    void readString(QChar quote);
    void readPattern();
    void readComment(qsizetype end, qsizetype textEnd);
    void readCode(QChar character);
    void beginToken();
    void skipWord();
    void endToken(AuthorToken::Kind kind, qsizetype begin, qsizetype end, XmlPosition position);
    void endStatements(int depth);
    void advance();
    void skipTo(qsizetype end);
    bool mayBeginPattern() const;
    bool isContinued() const;
    bool goesOn();

    const QString& m_text;
    const Wanted m_wanted;
    qsizetype m_at = 0;
    XmlPosition m_position{1, 1};
    /// Where the character before the present one stands.
    XmlPosition m_last{1, 1};
    /// Where the next character stands that is none of a comment, as it was last looked for.
    qsizetype m_next = -1;
    int m_depth = 0;
    /// The last character that is neither white space nor in a comment; null at the start.
    QChar m_significant;
    QList<AuthorLiteral> m_literals;
    QList<AuthorToken> m_tokens;
    QList<AuthorSuppression> m_suppressions;
    QList<qsizetype> m_pending;
    QList<OpenStatement> m_open;
};

} // namespace Vidlets

#endif
