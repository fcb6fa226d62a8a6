// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorSceneTexts.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

using Kind = AuthorToken::Kind;

// What nobody writes takes no time that grows with its square.
constexpr qsizetype kMostTokens = 60;

/// Whether users read what is bound to the property @p name.
bool isVisibleName(QStringView name)
{
    return name == "text"_L1 || name == "title"_L1 || name == "placeholderText"_L1;
}

/// Whether @p text, as it is written, has something to translate: letters beside markup, variables
/// and escaped signs.
bool hasLetters(QStringView text)
{
    static const QRegularExpression rest(
        u"<[^<>]{0,1000}>|&\\w{1,32};|%\\([^()]{0,200}\\)s|%\\d|\\$\\{[^{}]{0,1000}\\}"
        "|\\\\u\\{?[0-9A-Fa-f]{1,6}\\}?|\\\\x[0-9A-Fa-f]{2}|\\\\."_s);
    QString visible = text.toString();
    visible.remove(rest);
    return std::any_of(visible.cbegin(), visible.cend(),
                       [](QChar character) { return character.isLetter(); });
}

/// Whether a variable is set there.
bool isAssignment(const AuthorSceneOutline& scene, qsizetype token)
{
    const QStringView next = scene.at(token + 1);
    return scene.at(token) == "="_L1 && next != "="_L1 && next != ">"_L1 && token > 1
        && scene.tokens().at(token - 1).kind == Kind::Word && scene.at(token - 2) != "."_L1
        && !isVisibleName(scene.at(token - 1));
}

} // namespace

AuthorSceneTexts::AuthorSceneTexts(const QString& path, const AuthorSceneOutline& scene,
                                   AuthorFindings& findings)
    : m_path(path)
    , m_scene(scene)
    , m_findings(findings)
    , m_functions{u"translate"_s, u"translated"_s}
{
    findTranslating();
}

void AuthorSceneTexts::check()
{
    static const QStringList foreign{u"qsTr"_s, u"qsTrId"_s, u"qsTranslate"_s};
    const auto add = [this](const AuthorToken& literal, const QString& message) {
        m_findings.add(m_path, literal.position, u"string-untranslated"_s,
                       message.arg(literal.text));
    };
    for (qsizetype token = 0; token < m_scene.tokens().size(); ++token) {
        const AuthorToken& literal = m_scene.tokens().at(token);
        if (literal.kind != Kind::Literal || !hasLetters(literal.text))
            continue;
        if (m_scene.isInCallOf(token, foreign))
            add(literal, u"\"%1\" is not translated: the library looks into files of its own."_s);
        else if (isShown(token) && !isFallback(token) && !isCompared(token))
            add(literal, u"\"%1\" is not translated."_s);
    }
}

void AuthorSceneTexts::findTranslating()
{
    for (const Member& member : m_scene.members()) {
        for (qsizetype token = member.first; token < member.end; ++token) {
            if (member.kind == Member::Kind::Function && isCall(token)
                && m_scene.at(token) == "translate"_L1)
                m_functions.insert(member.name);
        }
    }
    for (const Member& member : m_scene.members())
        findTranslated(member);
}

/// Finds the variables and properties that hold a translation.
void AuthorSceneTexts::findTranslated(const Member& member)
{
    QStringView assigned;
    for (qsizetype token = member.first; token < member.end; ++token) {
        const QStringView sign = m_scene.at(token);
        if (sign == ";"_L1 || sign == "{"_L1 || sign == "}"_L1)
            assigned = {};
        if (isAssignment(m_scene, token))
            assigned = m_scene.at(token - 1);
        if (!isCall(token))
            continue;
        if (!assigned.isEmpty())
            m_names.insert(assigned.toString());
        if (!member.type.isNull())
            m_names.insert(member.name);
    }
}

bool AuthorSceneTexts::isCall(qsizetype token) const
{
    return m_scene.at(token + 1) == "("_L1 && m_functions.contains(m_scene.at(token).toString());
}

/// Whether a literal is a text that users see, or a part of one.
bool AuthorSceneTexts::isShown(qsizetype token) const
{
    const Member* member = m_scene.memberOf(token);
    if (!member || member->kind == Member::Kind::Import || isIndexOrKey(token))
        return false;
    // What a function makes of its arguments is not known but for one.
    auto call = m_scene.innermostCall(token);
    for (int i = 0; i < 3 && call && call->name == "interpolate"_L1; ++i)
        call = m_scene.innermostCall(call->opener);
    if (call)
        return false;
    const bool isBound = isVisible(*member) && member->kind == Member::Kind::Property
        && (member->type.isNull() || member->type == "string"_L1 || member->type == "var"_L1);
    const bool isAssigned = m_scene.at(token - 1) == "="_L1 && m_scene.at(token - 2) != "="_L1
        && m_scene.at(token - 2) != "!"_L1 && isVisibleName(m_scene.at(token - 2));
    return isBound || isAssigned;
}

bool AuthorSceneTexts::isVisible(const Member& member) const
{
    QString name = member.name;
    // Also those of another object, as in "ToolTip.text".
    if (isVisibleName(QStringView(name).sliced(name.lastIndexOf(u'.') + 1)))
        return true;
    const Member* around = m_scene.memberOf(m_scene.around(member.first));
    if (around && around->name == "Accessible"_L1)
        name.prepend("Accessible."_L1);
    return name == "Accessible.name"_L1 || name == "Accessible.description"_L1;
}

bool AuthorSceneTexts::isIndexOrKey(qsizetype token) const
{
    const QStringView before = m_scene.at(token - 1);
    if (m_scene.at(token + 1) == ":"_L1 && (before == "{"_L1 || before == ","_L1))
        return true;
    if (before != "["_L1 || token < 2)
        return false;
    const AuthorToken& indexed = m_scene.tokens().at(token - 2);
    return indexed.kind == Kind::Literal || indexed.is(")"_L1) || indexed.is("]"_L1)
        || (indexed.kind == Kind::Word && !indexed.is("return"_L1));
}

/// Whether a literal stands in for a translation that is missing.
bool AuthorSceneTexts::isFallback(qsizetype token) const
{
    const qsizetype begin = beginOfSum(token);
    const QStringView sign = m_scene.at(begin - 1);
    // Two signs: "||" or "??".
    if ((sign == "|"_L1 || sign == "?"_L1) && m_scene.at(begin - 2) == sign)
        return isTranslationWithin(beginOfOperand(begin - 3), begin - 2);
    if (sign == "="_L1 && m_names.contains(m_scene.at(begin - 2).toString()))
        return true;
    return isFallbackOfChoice(begin);
}

/// Whether what begins there is chosen where a translation is not.
bool AuthorSceneTexts::isFallbackOfChoice(qsizetype begin) const
{
    const bool isSecond = m_scene.at(begin - 1) == ":"_L1;
    if (!isSecond && m_scene.at(begin - 1) != "?"_L1)
        return false;
    const qsizetype question = isSecond ? findBefore(begin - 1, u"?;,") : begin - 1;
    if (m_scene.at(question) != "?"_L1)
        return false;
    const qsizetype condition = findBefore(question, u"?:;,") + 1;
    if (!isTranslationWithin(condition, question))
        return false;
    if (isSecond)
        return isTranslationWithin(question + 1, begin - 1);
    const qsizetype colon = findBehind(begin, u":;,");
    return m_scene.at(colon) == ":"_L1
        && isTranslationWithin(colon + 1, findBehind(colon + 1, u":;,"));
}

bool AuthorSceneTexts::isCompared(qsizetype token) const
{
    const QStringView before = m_scene.at(token - 1);
    const bool isBehind = (before == "="_L1 && m_scene.at(token - 2) != ""_L1
                           && u"=!"_s.contains(m_scene.at(token - 2)))
        || before == "case"_L1;
    const bool isInFront = (m_scene.at(token + 1) == "="_L1 || m_scene.at(token + 1) == "!"_L1)
        && m_scene.at(token + 2) == "="_L1;
    return isBehind || isInFront;
}

/// Also where there is too much to look at.
bool AuthorSceneTexts::isTranslationWithin(qsizetype begin, qsizetype end) const
{
    for (qsizetype token = std::max<qsizetype>(begin, 0); token < end; ++token) {
        const bool isWord = m_scene.tokens().at(token).kind == Kind::Word;
        if (token - begin > kMostTokens
            || (isWord && (isCall(token) || m_names.contains(m_scene.at(token).toString()))))
            return true;
    }
    return false;
}

/// The first token of the texts put together, or in brackets, that @p token is part of.
qsizetype AuthorSceneTexts::beginOfSum(qsizetype token) const
{
    for (qsizetype i = 0; i < kMostTokens; ++i) {
        const QStringView before = m_scene.at(token - 1);
        const bool isBracket = before == "("_L1 && !m_scene.innermostCall(token);
        if (isBracket)
            --token;
        else if (before == "+"_L1)
            token = beginOfOperand(token - 2);
        else
            break;
    }
    return token;
}

/// The first token of the operand that ends with @p token: a name or string, with what is called.
qsizetype AuthorSceneTexts::beginOfOperand(qsizetype token) const
{
    for (qsizetype i = 0; i < kMostTokens && token > 0; ++i) {
        const QStringView sign = m_scene.at(token);
        if (sign == ")"_L1 || sign == "]"_L1) {
            token = std::max<qsizetype>(m_scene.partner(token), 0);
            const AuthorToken& called = m_scene.tokens().at(std::max<qsizetype>(token - 1, 0));
            if (called.kind != Kind::Word && !called.is(")"_L1) && !called.is("]"_L1))
                return token;
            --token;
        } else if (m_scene.at(token - 1) == "."_L1) {
            token -= m_scene.at(token - 2) == "?"_L1 ? 3 : 2;
        } else {
            return token;
        }
    }
    return std::max<qsizetype>(token, 0);
}

/// The last of @p signs before @p token that is in the same bracket, or where that begins, or the
/// member.
qsizetype AuthorSceneTexts::findBefore(qsizetype token, QStringView signs) const
{
    const Member* member = m_scene.memberOf(token);
    const qsizetype first = member ? member->first : 0;
    for (qsizetype i = 0; i < kMostTokens && token > first; ++i) {
        --token;
        const QStringView sign = m_scene.at(token);
        const bool isEnd = sign == "("_L1 || sign == "["_L1 || sign == "{"_L1;
        if (isEnd || (sign.size() == 1 && signs.contains(sign) && !isPairedQuestion(token)))
            return token;
        if (sign == ")"_L1 || sign == "]"_L1 || sign == "}"_L1)
            token = std::max<qsizetype>(m_scene.partner(token), 0);
    }
    return token;
}

/// Whether a question mark is part of "?." or "??".
bool AuthorSceneTexts::isPairedQuestion(qsizetype token) const
{
    const QStringView next = m_scene.at(token + 1);
    return m_scene.at(token) == "?"_L1
        && (next == "."_L1 || next == "?"_L1 || m_scene.at(token - 1) == "?"_L1);
}

/// The first of @p signs from @p token on that is in the same bracket, or where the bracket ends.
qsizetype AuthorSceneTexts::findBehind(qsizetype token, QStringView signs) const
{
    const qsizetype count = m_scene.tokens().size();
    for (qsizetype i = 0; i < kMostTokens && token < count; ++i, ++token) {
        const QStringView sign = m_scene.at(token);
        const bool isEnd = sign == ")"_L1 || sign == "]"_L1 || sign == "}"_L1;
        if (isEnd || (sign.size() == 1 && signs.contains(sign)))
            return token;
        if (sign == "("_L1 || sign == "["_L1 || sign == "{"_L1)
            token = std::max(token, m_scene.partner(token));
    }
    return token;
}

} // namespace Vidlets
