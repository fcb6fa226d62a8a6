// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSCENEOUTLINE_H
#define AUTHORSCENEOUTLINE_H

#include "AuthorSceneText.h"

#include <QHash>

#include <optional>

namespace Vidlets {

/**
 * What a scene is made of, as far as it can be told without a grammar: the members of its objects
 * (bindings, declarations, functions, imports) and the brackets within.
 *
 * What it reads need be no valid program.
 */
class AuthorSceneOutline
{
public:
    struct Member
    {
        enum class Kind {
            Import,
            Function,
            /// A declaration or binding, be it of an object.
            Property
        };
        Kind kind = Kind::Property;
        /// The tokens from the first to before the end; those of objects within are others' too.
        qsizetype first = 0;
        qsizetype end = 0;
        /// What is declared or bound, such as "Accessible.name"; of an object, its type.
        QString name;
        /// The type that a property is declared with; null for what is declared elsewhere.
        QString type;
    };

    /// A call of a function.
    struct Call
    {
        QStringView name;
        /// The opening bracket.
        qsizetype opener = 0;
    };

    explicit AuthorSceneOutline(const QString& text);

    const QList<AuthorToken>& tokens() const
    {
        return m_scene.tokens();
    }
    const QList<AuthorSuppression>& suppressions() const
    {
        return m_scene.suppressions();
    }
    const QString& text() const
    {
        return m_text;
    }
    const QList<Member>& members() const
    {
        return m_members;
    }
    /// Returns the member that the token belongs to, null before the first one.
    const Member* memberOf(qsizetype token) const;
    /// Returns the bracket around @p token, -1 for none.
    qsizetype around(qsizetype token) const
    {
        return m_around.value(token, -1);
    }
    /// Returns the sign or word at @p token, an empty one for a string and beyond the ends.
    QStringView at(qsizetype token) const;
    /// Returns the bracket that belongs to the one at @p token, -1 where there is none.
    qsizetype partner(qsizetype token) const
    {
        return m_partners.value(token, -1);
    }
    /// Returns whether @p function is called anywhere.
    bool calls(QStringView function) const;
    /// Returns the innermost call whose arguments @p token is part of.
    std::optional<Call> innermostCall(qsizetype token) const;
    /// Returns whether an argument of a call of one of @p names, at any depth, holds @p token.
    bool isInCallOf(qsizetype token, const QStringList& names) const;

private:
    struct Bracket
    {
        qsizetype token;
        /// Whether members of an object may stand directly within it.
        bool isObject;
    };

    void read(qsizetype token);
    bool beginsMember(qsizetype token) const;
    void beginMember(qsizetype token);
    void nameMember(Member& member) const;
    bool opensObject(qsizetype token) const;
    bool isInObject() const;

    const QString m_text;
    const AuthorSceneText m_scene;
    QList<Member> m_members;
    /// For each token the number of its member, -1 for none.
    QList<qsizetype> m_memberOf;
    /// For each token the bracket around it, -1 for none.
    QList<qsizetype> m_around;
    QHash<qsizetype, qsizetype> m_partners;
    QList<Bracket> m_open;
};

} // namespace Vidlets

#endif
