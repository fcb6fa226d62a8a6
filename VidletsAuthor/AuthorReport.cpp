// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorReport.h"

#include "AuthorRules.h"

#include <QDateTime>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>
#include <QXmlStreamWriter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets::AuthorReport {

namespace {

/// What is said of a whole file stands at its start: readers of reports pass over findings that
/// have no line.
XmlPosition placeOf(const AuthorFinding& finding)
{
    return {qMax<qint64>(finding.position.line, 1), qMax<qint64>(finding.position.column, 1)};
}

QString lineOf(const AuthorFinding& finding)
{
    const XmlPosition place = placeOf(finding);
    return printable(u"%1:%2:%3: %4: %5 %6 [%7]"_s.arg(
        finding.file, QString::number(place.line), QString::number(place.column),
        severityName(finding.severity), finding.message, finding.help, finding.rule));
}

/// SARIF's word for a severity.
QString levelOf(AuthorSeverity severity)
{
    return severity == AuthorSeverity::Off ? u"none"_s : severityName(severity);
}

QJsonObject message(const QString& text)
{
    return {{u"text"_s, text}};
}

QJsonObject sarifRule(const AuthorRule& rule)
{
    return {
        {u"id"_s, QString(rule.id)},
        {u"shortDescription"_s, message(rule.summary)},
        {u"help"_s, message(rule.help)},
        {u"defaultConfiguration"_s, QJsonObject{{u"level"_s, levelOf(rule.severity)}}},
    };
}

QJsonObject sarifLocation(const AuthorFinding& finding)
{
    // Viewers compare it with paths in a repository, which begin with no dot.
    const bool isHere = finding.file.startsWith("./"_L1);
    const QString file = isHere ? finding.file.mid(2) : finding.file;
    // A relative path is a relative reference, whose first part must not look like a scheme.
    const bool isAbsolute = QDir::isAbsolutePath(finding.file);
    const QByteArray uri =
        isAbsolute ? QUrl::fromLocalFile(file).toEncoded() : QUrl::toPercentEncoding(file, "/");
    const XmlPosition place = placeOf(finding);
    const QJsonObject location{
        {u"artifactLocation"_s, QJsonObject{{u"uri"_s, QString::fromLatin1(uri)}}},
        {u"region"_s, QJsonObject{{u"startLine"_s, place.line}, {u"startColumn"_s, place.column}}},
    };
    return {{u"physicalLocation"_s, location}};
}

QJsonObject sarifResult(const AuthorFinding& finding)
{
    const QList<AuthorRule>& rules = AuthorRules::all();
    return {
        {u"ruleId"_s, finding.rule},
        {u"ruleIndex"_s, static_cast<qint64>(AuthorRules::find(finding.rule) - rules.constData())},
        {u"level"_s, levelOf(finding.severity)},
        {u"message"_s, message(finding.message + u' ' + finding.help)},
        {u"locations"_s, QJsonArray{sarifLocation(finding)}},
    };
}

/// What XML cannot hold is left out: names of files may have any character.
QString forXml(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        const bool isControl =
            character.unicode() < 0x20 && character != u'\n' && character != u'\t';
        const bool isNone = character.unicode() == 0xfffe || character.unicode() == 0xffff;
        result += isControl || isNone ? QChar(QChar::ReplacementCharacter) : character;
    }
    return result;
}

bool isFailure(const AuthorFinding& finding)
{
    return finding.severity >= AuthorSeverity::Warning;
}

void writeSuiteTag(QXmlStreamWriter& writer, const QList<AuthorFinding>& findings)
{
    const auto failures = std::count_if(findings.cbegin(), findings.cend(), isFailure);
    writer.writeStartElement("testsuite"_L1);
    writer.writeAttribute("name"_L1, u"vidlets check"_s);
    writer.writeAttribute("package"_L1, u"vidlets"_s);
    writer.writeAttribute("id"_L1, u"0"_s);
    writer.writeAttribute("timestamp"_L1,
                          QDateTime::currentDateTimeUtc().toString(u"yyyy-MM-ddThh:mm:ss"_s));
    writer.writeAttribute("hostname"_L1, u"localhost"_s);
    // A run without findings is one test that has passed: readers take none for a failure.
    writer.writeAttribute("tests"_L1, QString::number(qMax<qsizetype>(findings.size(), 1)));
    writer.writeAttribute("failures"_L1, QString::number(failures));
    writer.writeAttribute("errors"_L1, u"0"_s);
    writer.writeAttribute("skipped"_L1, u"0"_s);
    writer.writeAttribute("time"_L1, u"0"_s);
}

void writeCase(QXmlStreamWriter& writer, const AuthorFinding& finding)
{
    writer.writeStartElement("testcase"_L1);
    writer.writeAttribute("name"_L1, finding.rule);
    writer.writeAttribute("classname"_L1, forXml(finding.file));
    writer.writeAttribute("time"_L1, u"0"_s);
    if (isFailure(finding)) {
        writer.writeStartElement("failure"_L1);
        writer.writeAttribute("message"_L1, forXml(finding.message));
        writer.writeAttribute("type"_L1, severityName(finding.severity));
        writer.writeCharacters(forXml(lineOf(finding)));
        writer.writeEndElement();
    }
    writer.writeEndElement();
}

} // namespace

QByteArray text(const QList<AuthorFinding>& findings)
{
    QString result;
    for (const AuthorFinding& finding : findings)
        result += lineOf(finding) + u'\n';
    return result.toUtf8();
}

QByteArray json(const QList<AuthorFinding>& findings)
{
    QJsonArray list;
    for (const AuthorFinding& finding : findings) {
        list.append(QJsonObject{
            {u"file"_s, finding.file},
            {u"line"_s, placeOf(finding).line},
            {u"column"_s, placeOf(finding).column},
            {u"rule"_s, finding.rule},
            {u"severity"_s, severityName(finding.severity)},
            {u"message"_s, finding.message},
            {u"help"_s, finding.help},
        });
    }
    return QJsonDocument(QJsonObject{{u"findings"_s, list}}).toJson();
}

QByteArray sarif(const QList<AuthorFinding>& findings)
{
    QJsonArray rules;
    for (const AuthorRule& rule : AuthorRules::all())
        rules.append(sarifRule(rule));
    QJsonArray results;
    for (const AuthorFinding& finding : findings)
        results.append(sarifResult(finding));
    const QJsonObject driver{
        {u"name"_s, u"vidlets"_s},
        {u"version"_s, QLatin1StringView(VIDLETS_VERSION)},
        {u"rules"_s, rules},
    };
    const QJsonObject run{
        {u"tool"_s, QJsonObject{{u"driver"_s, driver}}},
        {u"columnKind"_s, u"utf16CodeUnits"_s},
        {u"results"_s, results},
    };
    const QJsonObject log{
        // Services that take reports up ask for it.
        {u"$schema"_s, u"https://json.schemastore.org/sarif-2.1.0.json"_s},
        {u"version"_s, u"2.1.0"_s},
        {u"runs"_s, QJsonArray{run}},
    };
    return QJsonDocument(log).toJson();
}

// There is no one schema of these reports: what is written is what the strictest of them ask for.
QByteArray junit(const QList<AuthorFinding>& findings)
{
    QByteArray result;
    QXmlStreamWriter writer(&result);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writer.writeStartElement("testsuites"_L1);
    writeSuiteTag(writer, findings);
    writer.writeEmptyElement("properties"_L1);
    for (const AuthorFinding& finding : findings)
        writeCase(writer, finding);
    if (findings.isEmpty()) {
        writer.writeEmptyElement("testcase"_L1);
        writer.writeAttribute("name"_L1, u"check"_s);
        writer.writeAttribute("classname"_L1, u"vidlets"_s);
        writer.writeAttribute("time"_L1, u"0"_s);
    }
    QString notes;
    for (const AuthorFinding& finding : findings) {
        if (!isFailure(finding))
            notes += lineOf(finding) + u'\n';
    }
    writer.writeTextElement("system-out"_L1, forXml(notes));
    writer.writeTextElement("system-err"_L1, QString());
    writer.writeEndDocument();
    return result;
}

bool isFailed(const QList<AuthorFinding>& findings)
{
    return std::any_of(findings.cbegin(), findings.cend(), isFailure);
}

} // namespace Vidlets::AuthorReport
