// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorFinding.h"

#include "AuthorRules.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr std::array kSeverityNames{"off"_L1, "note"_L1, "warning"_L1, "error"_L1};

bool isBefore(XmlPosition left, XmlPosition right)
{
    return left.line != right.line ? left.line < right.line : left.column < right.column;
}

constexpr qint64 kNoEnd = std::numeric_limits<qint64>::max();

/// Both ends are included.
struct Range
{
    XmlPosition begin;
    XmlPosition end;
};

QList<Range> rangesOf(const AuthorSuppression& suppression)
{
    QList<Range> ranges{{{suppression.firstLine, 0}, {suppression.lastLine, kNoEnd}}};
    if (suppression.begin.line > 0) {
        const bool isOpen = suppression.end.line == 0;
        ranges.append({suppression.begin, isOpen ? XmlPosition{kNoEnd, kNoEnd} : suppression.end});
    }
    return ranges;
}

/// In order and without overlaps, so that files full of comments stay cheap.
QList<Range> merged(QList<Range> ranges)
{
    std::sort(ranges.begin(), ranges.end(), [](const Range& left, const Range& right) {
        return isBefore(left.begin, right.begin);
    });
    QList<Range> result;
    for (const Range& range : std::as_const(ranges)) {
        if (result.isEmpty() || isBefore(result.constLast().end, range.begin))
            result.append(range);
        else if (isBefore(result.constLast().end, range.end))
            result.last().end = range.end;
    }
    return result;
}

bool isIn(const QList<Range>& ranges, XmlPosition position)
{
    const auto behind = std::upper_bound(
        ranges.cbegin(), ranges.cend(), position,
        [](XmlPosition wanted, const Range& range) { return isBefore(wanted, range.begin); });
    return behind != ranges.cbegin() && !isBefore((behind - 1)->end, position);
}

} // namespace

QString severityName(AuthorSeverity severity)
{
    return kSeverityNames.at(static_cast<std::size_t>(severity));
}

std::optional<AuthorSeverity> severityNamed(QStringView name)
{
    const auto found = std::find(kSeverityNames.cbegin(), kSeverityNames.cend(), name);
    if (found == kSeverityNames.cend())
        return std::nullopt;
    return static_cast<AuthorSeverity>(found - kSeverityNames.cbegin());
}

QString printable(const QString& text)
{
    // Also the signs by which a part of a line is shown in another place.
    static const QRegularExpression steering(
        u"[\\p{Cc}\\x{2028}\\x{2029}\\x{202a}-\\x{202e}\\x{2066}-\\x{2069}]"_s);
    QString result;
    qsizetype end = 0;
    QRegularExpressionMatchIterator it = steering.globalMatch(text);
    while (it.hasNext()) {
        const qsizetype at = it.next().capturedStart();
        const char16_t code = text.at(at).unicode();
        result += QStringView(text).sliced(end, at - end);
        if (code == u'\n')
            result += R"(\n)"_L1;
        else if (code < 0x100)
            result += u"\\x%1"_s.arg(code, 2, 16, QLatin1Char('0'));
        else
            result += u"\\u%1"_s.arg(code, 4, 16, QLatin1Char('0'));
        end = at + 1;
    }
    return end == 0 ? text : result + text.mid(end);
}

QString counted(qsizetype count, const QString& noun)
{
    return QString::number(count) + u' ' + noun + (count == 1 ? QString() : u"s"_s);
}

QStringList suppressedRules(const QString& comment)
{
    static const QRegularExpression pattern(
        u"^\\s*vidlets-check:\\s*off\\s+([\\w-]+(?:[\\s,]+[\\w-]+)*)\\s*$"_s);
    static const QRegularExpression separators(u"[\\s,]+"_s);
    // No rule has a name as long as that, and the pattern need not look at a book.
    constexpr qsizetype kMaxLength = 4096;
    if (comment.size() > kMaxLength)
        return {};
    const QRegularExpressionMatch match = pattern.match(comment);
    return match.hasMatch() ? match.captured(1).split(separators, Qt::SkipEmptyParts)
                            : QStringList();
}

void AuthorFindings::add(const QString& file, XmlPosition position, const QString& rule,
                         const QString& message, const QString& help)
{
    const AuthorRule* known = AuthorRules::find(rule);
    Q_ASSERT_X(known, "AuthorFindings::add", qPrintable(rule));
    m_findings.append({file, position, rule, known->severity, message,
                       help.isEmpty() ? QString(known->help) : help});
}

void AuthorFindings::suppress(const QString& file, const AuthorSuppression& suppression)
{
    m_suppressions.append({file, suppression});
}

QList<AuthorFinding> AuthorFindings::unsuppressed() const
{
    QHash<QString, QList<Range>> ranges;
    for (const FileSuppression& entry : m_suppressions) {
        for (const QString& rule : entry.suppression.rules)
            ranges[rule + u' ' + entry.file] += rangesOf(entry.suppression);
    }
    for (QList<Range>& list : ranges)
        list = merged(list);
    QList<AuthorFinding> result;
    for (const AuthorFinding& finding : m_findings) {
        const auto found = ranges.constFind(finding.rule + u' ' + finding.file);
        if (found == ranges.cend() || !isIn(*found, finding.position))
            result.append(finding);
    }
    return result;
}

} // namespace Vidlets
