// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorSceneOutline.h"

#include <algorithm>
#include <initializer_list>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr qsizetype kNone = -1;
// What nobody writes takes no time that grows with its square.
constexpr qsizetype kMostTokensOfType = 16;
constexpr int kMostBrackets = 100;

bool isOneOf(QStringView word, std::initializer_list<QLatin1StringView> words)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool isModifier(QStringView word)
{
    return isOneOf(word, {"default"_L1, "readonly"_L1, "required"_L1, "final"_L1, "override"_L1});
}

/// Whether what stands before a line's end goes on in the next line.
bool isContinued(const AuthorToken& token)
{
    return token.kind == AuthorToken::Kind::Sign && token.text.size() == 1
        && u"(,=:[!&|?+-*%<>~^."_s.contains(token.text.front());
}

} // namespace

AuthorSceneOutline::AuthorSceneOutline(const QString& text)
    : m_text(text)
    , m_scene(m_text, AuthorSceneText::Wanted::Tokens)
{
    const qsizetype count = tokens().size();
    m_memberOf.reserve(count);
    m_around.reserve(count);
    for (qsizetype token = 0; token < count; ++token)
        read(token);
    for (qsizetype i = 0; i < m_members.size(); ++i)
        m_members[i].end = i + 1 < m_members.size() ? m_members.at(i + 1).first : count;
}

const AuthorSceneOutline::Member* AuthorSceneOutline::memberOf(qsizetype token) const
{
    const qsizetype member = m_memberOf.value(token, kNone);
    return member < 0 ? nullptr : &m_members.at(member);
}

QStringView AuthorSceneOutline::at(qsizetype token) const
{
    if (token < 0 || token >= tokens().size())
        return {};
    const AuthorToken& found = tokens().at(token);
    return found.kind == AuthorToken::Kind::Literal ? QStringView() : found.text;
}

std::optional<AuthorSceneOutline::Call> AuthorSceneOutline::innermostCall(qsizetype token) const
{
    int count = 0;
    for (qsizetype i = m_around.value(token, kNone); i >= 0 && ++count < kMostBrackets;
         i = m_around.at(i)) {
        if (at(i) != "("_L1)
            return std::nullopt;
        const bool isCall = i > 0 && tokens().at(i - 1).kind == AuthorToken::Kind::Word
            && !isOneOf(at(i - 1), {"if"_L1, "while"_L1, "switch"_L1, "return"_L1, "typeof"_L1});
        if (isCall)
            return Call{at(i - 1), i};
    }
    return std::nullopt;
}

bool AuthorSceneOutline::isInCallOf(qsizetype token, const QStringList& names) const
{
    int count = 0;
    for (qsizetype i = m_around.value(token, kNone); i >= 0 && ++count < kMostBrackets;
         i = m_around.at(i)) {
        if (at(i) == "("_L1 && names.contains(at(i - 1)))
            return true;
    }
    return false;
}

bool AuthorSceneOutline::calls(QStringView function) const
{
    for (qsizetype token = 0; token < tokens().size(); ++token) {
        if (at(token) == function && at(token + 1) == "("_L1)
            return true;
    }
    return false;
}

void AuthorSceneOutline::read(qsizetype token)
{
    if (isInObject() && beginsMember(token))
        beginMember(token);
    m_memberOf.append(m_members.size() - 1);
    m_around.append(m_open.isEmpty() ? kNone : m_open.constLast().token);
    const QStringView sign = at(token);
    if (isOneOf(sign, {"("_L1, "["_L1, "{"_L1})) {
        m_open.append({token, opensObject(token)});
    } else if (isOneOf(sign, {")"_L1, "]"_L1, "}"_L1}) && !m_open.isEmpty()) {
        const qsizetype opener = m_open.takeLast().token;
        m_partners.insert(opener, token);
        m_partners.insert(token, opener);
    }
}

bool AuthorSceneOutline::isInObject() const
{
    return m_open.isEmpty() || m_open.constLast().isObject;
}

/// Whether the token, which is directly within an object, is the first of a member.
bool AuthorSceneOutline::beginsMember(qsizetype token) const
{
    const AuthorToken& present = tokens().at(token);
    if (present.kind != AuthorToken::Kind::Word)
        return false;
    if (token == 0)
        return true;
    const AuthorToken& before = tokens().at(token - 1);
    if (before.is("{"_L1) || before.is(";"_L1))
        return true;
    if (isOneOf(present.text,
                {"in"_L1, "instanceof"_L1, "as"_L1, "else"_L1, "catch"_L1, "finally"_L1}))
        return false;
    return before.is("}"_L1) || (present.startsLine && !isContinued(before));
}

void AuthorSceneOutline::beginMember(qsizetype token)
{
    Member member;
    member.first = token;
    if (at(token) == "import"_L1)
        member.kind = Member::Kind::Import;
    else if (at(token) == "function"_L1)
        member.kind = Member::Kind::Function;
    nameMember(member);
    m_members.append(member);
}

void AuthorSceneOutline::nameMember(Member& member) const
{
    qsizetype token = member.first;
    if (member.kind == Member::Kind::Import)
        return;
    if (member.kind == Member::Kind::Function) {
        member.name = at(token + 1).toString();
        return;
    }
    while (isModifier(at(token)))
        ++token;
    if (at(token) == "property"_L1 && at(token + 1) != ":"_L1) {
        ++token;
        // With its module or the type of its items.
        while (at(token + 1) == "."_L1)
            token += 2;
        member.type = at(token).toString();
        if (at(token + 1) == "<"_L1) {
            const qsizetype last = token + kMostTokensOfType;
            while (token < last && at(token) != ">"_L1)
                ++token;
        }
        member.name = at(token + 1).toString();
        return;
    }
    member.name = at(token).toString();
    for (; at(token + 1) == "."_L1; token += 2)
        member.name += u'.' + at(token + 2).toString();
}

/// Whether the bracket at @p token holds members of an object, or objects.
bool AuthorSceneOutline::opensObject(qsizetype token) const
{
    if (!isInObject() || at(token) == "("_L1)
        return false;
    if (at(token) == "["_L1)
        return true;
    if (token == 0)
        return true;
    const AuthorToken& before = tokens().at(token - 1);
    return before.kind == AuthorToken::Kind::Word
        && !isOneOf(before.text, {"else"_L1, "try"_L1, "finally"_L1, "do"_L1});
}

} // namespace Vidlets
