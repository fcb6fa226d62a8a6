// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorSceneRules.h"

#include "AuthorSceneGuards.h"
#include "AuthorSceneTexts.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

using Member = AuthorSceneOutline::Member;
using Kind = AuthorToken::Kind;

bool isLiteral(const AuthorToken& token)
{
    return token.kind == Kind::Literal;
}

} // namespace

AuthorSceneRules::AuthorSceneRules(const QString& path, const AuthorSceneOutline& scene,
                                   AuthorFindings& findings)
    : m_path(path)
    , m_scene(scene)
    , m_findings(findings)
{
}

void AuthorSceneRules::check()
{
    AuthorSceneGuards(m_path, m_scene, m_findings).check();
    checkNetwork();
    for (qsizetype token = 0; token < m_scene.tokens().size(); ++token) {
        if (!isLiteral(m_scene.tokens().at(token)))
            continue;
        checkAddress(token);
        checkAbsolutePath(token);
        checkReference(token);
    }
    AuthorSceneTexts(m_path, m_scene, m_findings).check();
}

void AuthorSceneRules::checkNetwork()
{
    for (const Member& member : m_scene.members()) {
        if (member.kind == Member::Kind::Import)
            checkImport(member);
    }
    for (qsizetype token = 0; token < m_scene.tokens().size(); ++token) {
        const QStringView word = m_scene.at(token);
        if (word == "XMLHttpRequest"_L1 || word == "WebSocket"_L1)
            add(token, u"scene-network", u"\"%1\" reaches out to the network."_s.arg(word));
    }
}

void AuthorSceneRules::checkImport(const Member& member)
{
    static const QStringList modules{u"QtWebSockets"_s, u"QtWebEngine"_s, u"QtWebView"_s,
                                     u"QtNetwork"_s,    u"QtLocation"_s,  u"QtMqtt"_s};
    const qsizetype name = member.first + 1;
    if (modules.contains(m_scene.at(name)))
        add(name, u"scene-network",
            u"The module \"%1\" reaches out to the network."_s.arg(m_scene.at(name)));
}

void AuthorSceneRules::checkAddress(qsizetype token)
{
    static const QRegularExpression address(u"^\\s{0,100}(https?|ftps?|wss?):"_s,
                                            QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression loaded(
        u"\\b(src|background)\\s{0,8}=\\s{0,8}\\\\?[\"']?\\s{0,8}(https?|ftps?):"
        "|\\burl\\(\\s{0,8}\\\\?[\"']?(https?|ftps?):"_s,
        QRegularExpression::CaseInsensitiveOption);
    // The names of languages are spelled like addresses, which nobody loads.
    static const QRegularExpression language(
        u"^http://www\\.w3\\.org/(1999/(xhtml|xlink)|2000/svg|XML/1998/namespace|2000/xmlns/"
        "|1998/Math/MathML|2001/XMLSchema(-instance)?)$"_s);
    const QString text = m_scene.tokens().at(token).text.toString();
    const bool isLoaded = loaded.match(text).hasMatch()
        || (address.match(text).hasMatch() && !isOpened(token) && !language.match(text).hasMatch());
    if (isLoaded)
        add(token, u"scene-network", u"An address in the network is loaded."_s);
}

/// Whether a property is declared with the literal alone.
bool AuthorSceneRules::isWholeProperty(qsizetype token) const
{
    const Member* member = m_scene.memberOf(token);
    if (!member || member->type.isNull() || m_scene.at(token - 1) != ":"_L1
        || m_scene.at(token - 2) != member->name)
        return false;
    // Brackets behind the last binding of an object count as part of it.
    qsizetype behind = token + 1;
    while (behind < member->end && (m_scene.at(behind) == "}"_L1 || m_scene.at(behind) == ";"_L1))
        ++behind;
    return behind == member->end;
}

/// Likewise of a variable.
bool AuthorSceneRules::isWholeVariable(qsizetype token) const
{
    const QStringView word = m_scene.at(token - 3);
    const QStringView next = m_scene.at(token + 1);
    return m_scene.at(token - 1) == "="_L1 && (next == ";"_L1 || next == "}"_L1)
        && (word == "const"_L1 || word == "let"_L1 || word == "var"_L1);
}

/// Whether an address is only handed to the host, directly or by a name.
bool AuthorSceneRules::isOpened(qsizetype token)
{
    static const QStringList opening{u"openExternalResource"_s, u"openUrlExternally"_s};
    if (m_scene.isInCallOf(token, opening))
        return true;
    if (!isWholeProperty(token) && !isWholeVariable(token))
        return false;
    if (m_uses.isEmpty()) {
        for (qsizetype i = 0; i < m_scene.tokens().size(); ++i) {
            const AuthorToken& word = m_scene.tokens().at(i);
            if (word.kind == Kind::Word)
                ++(m_scene.isInCallOf(i, opening) ? m_uses[word.text].opened
                                                  : m_uses[word.text].others);
        }
    }
    const Uses uses = m_uses.value(m_scene.at(token - 2));
    // One is where it is named.
    return uses.opened > 0 && uses.others == 1;
}

void AuthorSceneRules::checkAbsolutePath(qsizetype token)
{
    static const QRegularExpression path(
        u"^(file:/*[^/\\s]|/[\\w.~@-]+/[\\w.~@-]|[A-Za-z]:[\\\\/])"_s,
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    // What is appended to something else is relative to it.
    if (m_scene.at(token - 1) == "+"_L1)
        return;
    const AuthorToken& literal = m_scene.tokens().at(token);
    const bool isPath =
        !literal.text.contains(u'\n') && path.match(literal.text.toString()).hasMatch();
    if (isPath && !literal.text.contains(u"${"))
        add(token, u"scene-absolute-path",
            u"\"%1\" is there on some computers only."_s.arg(literal.text));
}

/// Reports a scene that another one loads and that is not there.
void AuthorSceneRules::checkReference(qsizetype token)
{
    static const QRegularExpression name(u"^[^\\s/:][^\\s:]*\\.qml$"_s);
    static const QStringList loading{u"createComponent"_s, u"setSource"_s};
    const AuthorToken& literal = m_scene.tokens().at(token);
    const bool isPart = m_scene.at(token - 1) == "+"_L1 || m_scene.at(token + 1) == "+"_L1;
    if (isPart || literal.text.contains(u'$') || !name.match(literal.text.toString()).hasMatch())
        return;
    const Member* member = m_scene.memberOf(token);
    const bool isSource = member && member->name == "source"_L1;
    const QString file = QFileInfo(m_path).path() + u'/' + literal.text.toString();
    if ((isSource || m_scene.isInCallOf(token, loading)) && !QFileInfo(file).isFile())
        add(token, u"scene-missing", u"There is no scene \"%1\" here."_s.arg(literal.text));
}

void AuthorSceneRules::add(qsizetype token, const char16_t* rule, const QString& message,
                           const QString& help)
{
    m_findings.add(m_path, m_scene.tokens().at(token).position, QString::fromUtf16(rule), message,
                   help);
}

} // namespace Vidlets
