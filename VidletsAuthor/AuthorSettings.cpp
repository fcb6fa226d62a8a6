// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorSettings.h"

#include "AuthorEncoding.h"
#include "AuthorFiles.h"
#include "AuthorRules.h"

#include <QFileInfo>

#include <algorithm>
#include <string_view>

namespace {

struct ParserSlip
{
};

[[noreturn]] void throwParserSlip()
{
    throw ParserSlip();
}

} // namespace

// The parser asserts what some malformed texts do not fulfil. That must neither end the program nor
// lead it astray in a build without assertions, so it is tested in each build, and thrown as the
// parser's own errors are.
#undef NDEBUG
#define TOML_ASSERT(condition) ((condition) ? static_cast<void>(0) : throwParserSlip())
#define TOML_EXCEPTIONS 1
#define TOML_HEADER_ONLY 1
#include <toml++/toml.h>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// What hosts with safeguards give a clip.
constexpr qint64 kClipMemoryLimitBytes = qint64(256) * 1024 * 1024;
constexpr qint64 kMaxSettingsBytes = qint64(1024) * 1024;

QString text(std::string_view view)
{
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

XmlPosition placeOf(const toml::source_position& position)
{
    return {static_cast<qint64>(position.line), static_cast<qint64>(position.column)};
}

struct ParsedText
{
    toml::table root;
    /// Empty where the text could be read.
    QString fault;
    /// In line 0 where the parser slipped, since it does not say where.
    XmlPosition place;
};

ParsedText parsed(std::string_view content)
{
    try {
        return {toml::parse(content), QString(), {}};
    } catch (const toml::parse_error& error) {
        return {{}, text(error.description()), placeOf(error.source().begin)};
    } catch (const ParserSlip&) {
        return {{}, u"there is a character in a wrong place"_s, {0, 1}};
    }
}

/// The parser's table of blanks beyond ASCII says nothing defined of letters. Settings need none,
/// and where comments and strings have them, any other character does as well.
QByteArray plain(const QByteArray& content)
{
    QByteArray result;
    result.reserve(content.size());
    for (const char32_t character : QString::fromUtf8(content).toUcs4())
        result.append(character < 0x80 ? static_cast<char>(character) : '?');
    return result;
}

/// Returns the line that the parser slips in: without it and the rest it does not.
qint64 lineOfSlip(const QByteArray& content)
{
    QList<qsizetype> lineEnds;
    for (qsizetype end = content.indexOf('\n'); end >= 0; end = content.indexOf('\n', end + 1))
        lineEnds.append(end + 1);
    const auto slipsBefore = [&content](qsizetype end) {
        const ParsedText result =
            parsed(std::string_view(content.constData(), static_cast<std::size_t>(end)));
        return !result.fault.isEmpty() && result.place.line == 0;
    };
    const auto found = std::partition_point(lineEnds.cbegin(), lineEnds.cend(),
                                            [&](qsizetype end) { return !slipsBefore(end); });
    return found - lineEnds.cbegin() + 1;
}

/// Reads the tables of one file.
class SettingsReader
{
public:
    SettingsReader(const QString& file, AuthorFindings& findings)
        : m_file(file)
        , m_findings(findings)
    {
    }

    void read(const toml::table& root)
    {
        for (const auto& [key, node] : root) {
            const toml::table* table = node.as_table();
            if (table && key.str() == "rules")
                readRules(*table);
            else if (table && key.str() == "clip-memory")
                readClipMemory(*table);
            else
                report(key, u"There is no setting \"%1\"."_s.arg(text(key.str())));
        }
    }

    QHash<QString, AuthorSeverity> rules;
    /// 0 where the file says nothing of it.
    qint64 clipMemoryLimitBytes = 0;

private:
    void readRules(const toml::table& table)
    {
        for (const auto& [key, node] : table) {
            const QString rule = text(key.str());
            const auto name = node.value<std::string_view>();
            const auto severity = name ? severityNamed(text(*name)) : std::nullopt;
            if (!AuthorRules::find(rule))
                report(key, u"There is no rule \"%1\"."_s.arg(rule));
            else if (!severity)
                report(key,
                       u"\"%1\" is not \"error\", \"warning\", \"note\" or \"off\"."_s.arg(rule));
            else
                rules.insert(rule, *severity);
        }
    }

    void readClipMemory(const toml::table& table)
    {
        for (const auto& [key, node] : table) {
            const auto limit = node.value_exact<int64_t>();
            if (key.str() != "limit")
                report(key, u"There is no setting \"%1\"."_s.arg(text(key.str())));
            else if (!limit || *limit <= 0)
                report(key, u"\"limit\" is no number of bytes above 0."_s);
            else
                clipMemoryLimitBytes = *limit;
        }
    }

    void report(const toml::key& key, const QString& message)
    {
        m_findings.add(m_file, placeOf(key.source().begin), u"settings-broken"_s, message);
    }

    const QString& m_file;
    AuthorFindings& m_findings;
};

} // namespace

QString AuthorSettings::fileName()
{
    return u".vidletscheck.toml"_s;
}

void AuthorSettings::loadPackage(const QString& package, AuthorFindings& findings)
{
    const QString file = AuthorFiles::join(package, fileName());
    const QFileInfo info(file);
    if (!info.exists() && !info.isSymLink())
        return;
    QString reason;
    const auto content = AuthorFiles::read(file, reason, kMaxSettingsBytes);
    if (!content) {
        findings.add(file, {}, u"settings-broken"_s,
                     u"The settings are not followed: %1."_s.arg(reason));
        return;
    }
    // The parser decodes ahead of what it reads.
    const XmlPosition wrongByte = AuthorEncoding::firstInvalidByte(*content);
    if (wrongByte.line > 0) {
        findings.add(file, wrongByte, u"settings-broken"_s,
                     u"The settings are not followed: a byte is no UTF-8."_s);
        return;
    }
    const QByteArray settings = plain(*content);
    ParsedText result =
        parsed(std::string_view(settings.constData(), static_cast<std::size_t>(settings.size())));
    if (!result.fault.isEmpty()) {
        if (result.place.line == 0)
            result.place.line = lineOfSlip(settings);
        findings.add(file, result.place, u"settings-broken"_s,
                     u"The settings are not followed: %1."_s.arg(result.fault));
        return;
    }
    SettingsReader reader(file, findings);
    reader.read(result.root);
    m_packages.insert(package, reader.rules);
    if (reader.clipMemoryLimitBytes > 0)
        m_clipMemoryLimits.insert(package, reader.clipMemoryLimitBytes);
}

bool AuthorSettings::set(const QString& assignment, QString& reason)
{
    const QString rule = assignment.section(u'=', 0, 0);
    const auto severity = severityNamed(assignment.section(u'=', 1));
    if (!AuthorRules::find(rule)) {
        reason = u"There is no rule \"%1\"."_s.arg(rule);
        return false;
    }
    if (!severity) {
        reason = u"\"%1\" does not say RULE=error, warning, note or off."_s.arg(assignment);
        return false;
    }
    m_overall.insert(rule, *severity);
    return true;
}

qint64 AuthorSettings::clipMemoryLimitBytes(const QString& package) const
{
    return m_clipMemoryLimits.value(package, kClipMemoryLimitBytes);
}

AuthorSeverity AuthorSettings::severity(const QString& rule, const QString& package) const
{
    const auto overall = m_overall.constFind(rule);
    if (overall != m_overall.cend())
        return *overall;
    const AuthorRule* known = AuthorRules::find(rule);
    const auto standard = known ? known->severity : AuthorSeverity::Error;
    return m_packages.value(package).value(rule, standard);
}

} // namespace Vidlets
