// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorSettings.h"

#include "AuthorFiles.h"
#include "AuthorRules.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

#define TOML_EXCEPTIONS 0
#define TOML_HEADER_ONLY 1
#include <string_view>

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

/// The parser takes for granted that names have no other characters than names have, and would end
/// the process. Gives the line of the first such place; 0 where there is none. Comments may hold
/// what they like but control characters.
qint64 lineThatEndsParser(const QString& content)
{
    static const QRegularExpression wrong(
        u"[\\x{0}-\\x{8}\\x{b}\\x{c}\\x{e}-\\x{1f}\\x{7f}]|^[^#]*[^\\x{0}-\\x{7f}]|"
        "^[ \\t]*\\[(?![ \\t]*[\\w\"'-])"_s);
    const QStringList lines = content.split(u'\n');
    const auto found = std::find_if(lines.cbegin(), lines.cend(), [](const QString& line) {
        return wrong.match(line).hasMatch();
    });
    return found == lines.cend() ? 0 : found - lines.cbegin() + 1;
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
    const QString file = package + u'/' + fileName();
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
    const XmlPosition wrongByte = AuthorFiles::firstInvalidByte(*content);
    if (wrongByte.line > 0) {
        findings.add(file, wrongByte, u"settings-broken"_s,
                     u"The settings are not followed: a byte is no UTF-8."_s);
        return;
    }
    const qint64 wrongLine = lineThatEndsParser(QString::fromUtf8(*content));
    if (wrongLine > 0) {
        findings.add(file, {wrongLine, 1}, u"settings-broken"_s,
                     u"The settings are not followed: there is a character in a wrong place."_s);
        return;
    }
    const toml::parse_result result = toml::parse(
        std::string_view(content->constData(), static_cast<std::size_t>(content->size())));
    if (!result) {
        const toml::parse_error& error = result.error();
        findings.add(file, placeOf(error.source().begin), u"settings-broken"_s,
                     u"The settings are not followed: %1."_s.arg(text(error.description())));
        return;
    }
    SettingsReader reader(file, findings);
    reader.read(result.table());
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
