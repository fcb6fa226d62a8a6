// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLTextExpansion.h"

#include <algorithm>
#include <iterator>

namespace Vidlets {

namespace {

constexpr qsizetype kMaxBytes = qsizetype(1024) * 1024;
// Leaves room for values within values many levels deep.
constexpr qsizetype kMaxExpandedLength = 4 * kMaxBytes;

// "%(" and ")s", around the name.
constexpr qsizetype kOpeningLength = 2;
constexpr qsizetype kMarkerLength = 4;

bool isNameCharacter(QChar character)
{
    const char16_t code = character.unicode();
    return (code >= u'a' && code <= u'z') || (code >= u'A' && code <= u'Z')
        || (code >= u'0' && code <= u'9') || code == u'-' || code == u'_';
}

/// How many bytes a character takes as UTF-8; each half of a pair takes half of the pair's.
qsizetype bytesOf(QChar character)
{
    const char16_t code = character.unicode();
    if (code < 0x80)
        return 1;
    return code < 0x800 || character.isSurrogate() ? 2 : 3;
}

} // namespace

VLTextExpansion::VLTextExpansion(const QString& text, const QMap<QString, QVariant>& variables)
    : m_variables(variables)
{
    pushPending(text);
    while (!m_pending.isEmpty() && !m_isCutOff) {
        const QString name = nameAtFront();
        const QString value = name.isEmpty() ? QString() : m_variables.value(name).toString();
        while (!m_expansions.isEmpty() && m_expansions.constLast().rest >= m_pending.size())
            m_expansions.removeLast();
        if (value.isNull())
            takeFront(name.isEmpty() ? 1 : name.size() + kMarkerLength);
        else
            replaceFront(name, value);
    }
}

void VLTextExpansion::pushPending(const QString& text)
{
    m_pending.reserve(m_pending.size() + text.size());
    std::copy(text.crbegin(), text.crend(), std::back_inserter(m_pending));
}

/// The name in the reference that the pending text begins with; null where it begins with none.
QString VLTextExpansion::nameAtFront() const
{
    const auto front = m_pending.crbegin();
    const auto end = m_pending.crend();
    if (m_pending.size() <= kMarkerLength || front[0] != u'%' || front[1] != u'(')
        return QString();
    const auto nameBegin = front + kOpeningLength;
    const auto nameEnd =
        std::find_if(nameBegin, end, [](QChar character) { return !isNameCharacter(character); });
    if (nameEnd == nameBegin || end - nameEnd < 2 || nameEnd[0] != u')' || nameEnd[1] != u's')
        return QString();
    QString name;
    std::copy(nameBegin, nameEnd, std::back_inserter(name));
    return name;
}

bool VLTextExpansion::isBeingExpanded(const QString& name) const
{
    return std::any_of(m_expansions.cbegin(), m_expansions.cend(),
                       [&name](const Expansion& expansion) { return expansion.name == name; });
}

void VLTextExpansion::replaceFront(const QString& name, const QString& value)
{
    const qsizetype length = name.size() + kMarkerLength;
    if (isBeingExpanded(name)) {
        if (!m_recursiveNames.contains(name))
            m_recursiveNames.append(name);
        takeFront(length);
        return;
    }
    m_pending.resize(m_pending.size() - length);
    // A reference may end behind the value in which it begins: what it brings belongs to both.
    for (Expansion& expansion : m_expansions)
        expansion.rest = qMin(expansion.rest, m_pending.size());
    m_expansions.append({name, m_pending.size()});
    m_expandedLength += value.size();
    m_isCutOff = m_expandedLength > kMaxExpandedLength;
    if (!m_isCutOff)
        pushPending(value);
}

/// Moves characters to the result, as far as they fit.
void VLTextExpansion::takeFront(qsizetype count)
{
    for (; count > 0; --count) {
        const QChar character = m_pending.constLast();
        // A pair stays together.
        const qsizetype bytes = bytesOf(character) * (character.isHighSurrogate() ? 2 : 1);
        if (m_resultBytes + bytes > kMaxBytes) {
            m_isCutOff = true;
            return;
        }
        m_resultBytes += bytesOf(character);
        m_result.append(character);
        m_pending.removeLast();
    }
}

} // namespace Vidlets
