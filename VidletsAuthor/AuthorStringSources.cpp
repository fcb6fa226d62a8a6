// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorStringSources.h"

#include "AuthorSceneOutline.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// What a string in a program stands for.
QString decoded(QStringView literal)
{
    static const QRegularExpression escape(
        u"\\\\(?:u\\{([0-9A-Fa-f]{1,6})\\}|u([0-9A-Fa-f]{4})|x([0-9A-Fa-f]{2})|(\\n|.))"_s);
    static const QHash<QString, QString> signs{
        {u"n"_s, u"\n"_s}, {u"t"_s, u"\t"_s}, {u"r"_s, u"\r"_s}, {u"\n"_s, QString()},
        {u"b"_s, u"\b"_s}, {u"f"_s, u"\f"_s}, {u"v"_s, u"\v"_s}, {u"0"_s, QString(QChar(0))}};
    const QString text = literal.toString();
    QString result;
    qsizetype end = 0;
    QRegularExpressionMatchIterator it = escape.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        result += QStringView(text).sliced(end, match.capturedStart() - end);
        end = match.capturedEnd();
        const QString code = match.captured(1) + match.captured(2) + match.captured(3);
        const QString sign = match.captured(4);
        const char32_t character = code.toUInt(nullptr, 16);
        result += code.isEmpty() ? signs.value(sign, sign) : QString::fromUcs4(&character, 1);
    }
    return result + text.mid(end);
}

/// The string that is a whole argument of a call, if the one behind @p before is one.
const AuthorToken* literalArgument(const AuthorSceneOutline& scene, qsizetype before)
{
    const qsizetype token = before + 1;
    if (token >= scene.tokens().size())
        return nullptr;
    const AuthorToken& found = scene.tokens().at(token);
    const QStringView next = scene.at(token + 1);
    const bool isWhole = next == ","_L1 || next == ")"_L1;
    return found.kind == AuthorToken::Kind::Literal && isWhole ? &found : nullptr;
}

/// The first one from @p begin on that is one of @p signs and in no bracket; -1 without one.
qsizetype findSign(const AuthorSceneOutline& scene, qsizetype begin, qsizetype end,
                   QStringView signs)
{
    for (qsizetype token = begin; token < end; ++token) {
        const QStringView sign = scene.at(token);
        if (sign.size() == 1 && signs.contains(sign))
            return token;
        if (sign == "("_L1 || sign == "["_L1 || sign == "{"_L1)
            token = std::max(token, scene.partner(token));
    }
    return -1;
}

/// A string, or several one behind the other.
AuthorStringSources joinedSource(const AuthorSceneOutline& scene, qsizetype begin, qsizetype end)
{
    QString text;
    for (qsizetype token = begin; token < end; token += 2) {
        const AuthorToken& part = scene.tokens().at(token);
        const bool isLast = token + 1 == end;
        const bool isPart = part.kind == AuthorToken::Kind::Literal && !part.text.contains(u"${")
            && (isLast || scene.at(token + 1) == "+"_L1);
        if (!isPart || token + 2 == end)
            return {{}, 0, false};
        text += decoded(part.text);
    }
    return {{text}, scene.tokens().at(begin).position.line, begin < end};
}

/// What the tokens from @p begin to before @p end can be: strings put together, or chosen from.
AuthorStringSources sourcesIn(const AuthorSceneOutline& scene, qsizetype begin, qsizetype end,
                              int depth = 0)
{
    constexpr int kMaxDepth = 20;
    if (begin >= end || depth > kMaxDepth)
        return {{}, 0, false};
    if (scene.at(begin) == "("_L1 && scene.partner(begin) == end - 1)
        return sourcesIn(scene, begin + 1, end - 1, depth + 1);
    const qsizetype question = findSign(scene, begin, end, u"?");
    const bool isChoice =
        question >= 0 && scene.at(question + 1) != "?"_L1 && scene.at(question + 1) != "."_L1;
    if (!isChoice)
        return joinedSource(scene, begin, end);
    qsizetype colon = question;
    for (int open = 1; open > 0 && colon >= 0;) {
        colon = findSign(scene, colon + 1, end, u"?:");
        open += scene.at(colon) == "?"_L1 ? 1 : -1;
    }
    if (colon < 0)
        return {{}, 0, false};
    const AuthorStringSources first = sourcesIn(scene, question + 1, colon, depth + 1);
    const AuthorStringSources second = sourcesIn(scene, colon + 1, end, depth + 1);
    return {first.texts + second.texts, first.texts.isEmpty() ? second.line : first.line,
            first.isWhole && second.isWhole};
}

} // namespace

AuthorStringSources AuthorStringSources::ofCall(const AuthorSceneOutline& scene, qsizetype opener)
{
    const qsizetype closer = scene.partner(opener);
    const qsizetype comma = findSign(scene, opener + 1, closer, u",");
    return sourcesIn(scene, opener + 1, comma < 0 ? closer : comma);
}

QString AuthorStringSources::contextOfCall(const AuthorSceneOutline& scene, qsizetype opener)
{
    const qsizetype comma = findSign(scene, opener + 1, scene.partner(opener), u",");
    const AuthorToken* context = comma < 0 ? nullptr : literalArgument(scene, comma);
    return context ? decoded(context->text) : QString();
}

} // namespace Vidlets
