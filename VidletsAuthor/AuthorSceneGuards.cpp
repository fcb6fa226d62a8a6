// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorSceneGuards.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

using Kind = AuthorToken::Kind;

// What nobody writes takes no time that grows with its square.
constexpr qsizetype kMostTokens = 1000;
constexpr int kMostBrackets = 100;

} // namespace

AuthorSceneGuards::AuthorSceneGuards(const QString& path, const AuthorSceneOutline& scene,
                                     AuthorFindings& findings)
    : m_path(path)
    , m_scene(scene)
    , m_findings(findings)
    , m_names{u"vidlet"_s}
{
    findNames();
}

void AuthorSceneGuards::check()
{
    for (qsizetype token = 0; token < m_scene.tokens().size(); ++token) {
        const Member* member = m_scene.memberOf(token);
        if (member != m_member) {
            m_member = member;
            m_isTested = false;
            m_constants.clear();
            m_nullEnd = 0;
        }
        if (m_scene.tokens().at(token).kind == Kind::Literal)
            checkTemplate(token);
        else if (isName(token))
            checkName(token);
    }
}

void AuthorSceneGuards::findNames()
{
    for (const Member& member : m_scene.members()) {
        if (member.name == "id"_L1)
            m_ids.insert(m_scene.at(member.first + 2).toString());
        constexpr qsizetype kLeast = 5;
        if (member.end - member.first < kLeast)
            continue;
        // Brackets behind the last binding of an object count as part of it.
        qsizetype last = member.end - 1;
        while (last > member.first && (m_scene.at(last) == "}"_L1 || m_scene.at(last) == ";"_L1))
            --last;
        if (!member.type.isNull() && m_scene.at(last) == "vidlet"_L1
            && m_scene.at(last - 1) == ":"_L1)
            m_names.insert(member.name);
    }
}

bool AuthorSceneGuards::isName(qsizetype token) const
{
    const AuthorToken& present = m_scene.tokens().at(token);
    if (present.kind != Kind::Word)
        return false;
    const QString name = present.text.toString();
    // The member of another object may have the same name.
    if (m_scene.at(token - 1) != "."_L1)
        return m_names.contains(name) || m_constants.contains(name);
    return m_names.contains(name) && name != "vidlet"_L1 && m_scene.at(token - 3) != "."_L1
        && m_ids.contains(m_scene.at(token - 2).toString());
}

void AuthorSceneGuards::checkName(qsizetype token)
{
    const QStringView next = m_scene.at(token + 1);
    if (next == "."_L1 || next == "["_L1) {
        if (!isTested(token))
            add(token, m_scene.at(token));
        return;
    }
    if (isNoTest(token))
        return;
    if (!isTested(token) && next == "?"_L1)
        beginChoice(token + 1);
    else if (token >= m_nullBegin)
        m_nullEnd = 0;
    m_isTested = true;
}

bool AuthorSceneGuards::isTested(qsizetype token) const
{
    const bool isNull = token >= m_nullBegin && token < m_nullEnd;
    return (m_member && m_isTested && !isNull) || isInTry(token);
}

bool AuthorSceneGuards::isInTry(qsizetype token) const
{
    int count = 0;
    for (qsizetype i = m_scene.around(token); i >= 0 && ++count < kMostBrackets;
         i = m_scene.around(i)) {
        if (m_scene.at(i) == "{"_L1 && m_scene.at(i - 1) == "try"_L1)
            return true;
    }
    return false;
}

/// Whether the element is merely handed on, to the log or to a constant.
bool AuthorSceneGuards::isNoTest(qsizetype token)
{
    const auto call = m_scene.innermostCall(token);
    if (call && m_scene.at(call->opener - 2) == "."_L1
        && m_scene.at(call->opener - 3) == "console"_L1) {
        const QStringView before = m_scene.at(token - 1);
        const QStringView next = m_scene.at(token + 1);
        return (before == "("_L1 || before == ","_L1) && (next == ")"_L1 || next == ","_L1);
    }
    const bool isConstant = m_scene.at(token - 1) == "="_L1 && m_scene.at(token - 3) == "const"_L1
        && (m_scene.at(token + 1) == ";"_L1 || m_scene.at(token + 1) == "}"_L1);
    if (isConstant)
        m_constants.insert(m_scene.at(token - 2).toString());
    return isConstant;
}

/// Finds what is chosen where the element in front of @p question is null.
void AuthorSceneGuards::beginChoice(qsizetype question)
{
    static const QSet<QString> before{u":"_s, u"="_s, u"("_s, u","_s, u"return"_s};
    const QStringView next = m_scene.at(question + 1);
    // With a comparison in front it would be the other way round; "!" likewise.
    if (!before.contains(m_scene.at(question - 2).toString()) || next == "."_L1 || next == "?"_L1)
        return;
    const auto isComparing = [](QStringView sign) {
        return sign == "="_L1 || sign == "!"_L1 || sign == "<"_L1 || sign == ">"_L1;
    };
    if (m_scene.at(question - 2) == "="_L1 && isComparing(m_scene.at(question - 3)))
        return;
    int open = 1;
    m_nullBegin = 0;
    qsizetype token = question + 1;
    for (; token < m_member->end && token - question < kMostTokens; ++token) {
        const AuthorToken& present = m_scene.tokens().at(token);
        const QStringView sign = m_scene.at(token);
        if (sign == ")"_L1 || sign == "]"_L1 || sign == "}"_L1 || sign == ";"_L1 || sign == ","_L1
            || (present.startsLine && present.kind == Kind::Word))
            break;
        if (sign == "("_L1 || sign == "["_L1 || sign == "{"_L1)
            token = std::max(token, m_scene.partner(token));
        else if (sign == "?"_L1 && m_scene.at(token + 1) != "."_L1)
            ++open;
        else if (sign == ":"_L1 && --open == 0)
            m_nullBegin = token + 1;
    }
    m_nullEnd = m_nullBegin > 0 ? token : 0;
}

/// The programs within a string, in which nothing else is known than the names.
void AuthorSceneGuards::checkTemplate(qsizetype token)
{
    const QStringView text = m_scene.tokens().at(token).text;
    qsizetype begin = text.indexOf(u"${");
    if (begin < 0 || text.data()[-1] != u'`')
        return;
    while (begin >= 0) {
        begin += 2;
        qsizetype end = begin;
        for (int open = 1; end < text.size(); ++end) {
            open += text.at(end) == u'{' ? 1 : text.at(end) == u'}' ? -1 : 0;
            if (open == 0)
                break;
        }
        checkCode(token, text.sliced(begin, end - begin));
        begin = text.indexOf(u"${", end);
    }
}

void AuthorSceneGuards::checkCode(qsizetype token, QStringView code)
{
    static const QRegularExpression name(u"(?<![\\w$.])(\\w+)\\s*(\\?\\.|[.\\[]|)"_s);
    const QString text = code.toString();
    QRegularExpressionMatchIterator it = name.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        const QString word = match.captured(1);
        if (!m_names.contains(word) && !m_constants.contains(word))
            continue;
        const bool isAsked = match.captured(2) == "."_L1 || match.captured(2) == "["_L1;
        if (!isAsked)
            m_isTested = true;
        else if (!isTested(token))
            add(token, word);
    }
}

void AuthorSceneGuards::add(qsizetype token, QStringView name)
{
    m_findings.add(m_path, m_scene.tokens().at(token).position, u"scene-unguarded"_s,
                   u"\"%1\" may be null here."_s.arg(name));
}

} // namespace Vidlets
