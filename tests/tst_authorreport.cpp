// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <VidletsAuthor/AuthorReport.h>
#include <VidletsAuthor/AuthorRules.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

QList<AuthorFinding> some()
{
    return {
        {u"./a b/<x>&\x01.xml"_s,
         {3, 7},
         u"key-blank"_s,
         AuthorSeverity::Error,
         u"It is \"wrong\"."_s,
         u"Mend it."_s},
        {u"a"_s, {}, u"package-empty"_s, AuthorSeverity::Note, u"Nothing."_s, u"Add."_s},
    };
}

} // namespace

class TestAuthorReport : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void text_isOneLineForEach();
    void text_givesTerminalNothingToObey();
    void json_hasAllMembers();
    void sarif_namesRuleAndPlace();
    void junit_isWellFormed();
    void junit_isValid();
    void isFailed_leavesNotesAlone();
};

void TestAuthorReport::text_isOneLineForEach()
{
    QCOMPARE(AuthorReport::text(some()),
             QByteArray("./a b/<x>&\\x01.xml:3:7: error: It is \"wrong\". Mend it. [key-blank]\n"
                        "a:1:1: note: Nothing. Add. [package-empty]\n"));
    QVERIFY(AuthorReport::text({}).isEmpty());
}

/// Names of files may have any character, and would forge findings, colours and directions.
void TestAuthorReport::text_givesTerminalNothingToObey()
{
    QList<AuthorFinding> findings = some();
    findings[0].file = u"a\nb:1:1: error: Forged. [key-twice]\x1b[31m\u202e\u009b\u2028.xml"_s;
    findings[0].message = u"\"caf\u00e9 \u4e2d\"\x07 it is."_s;

    const QByteArray text = AuthorReport::text(findings);

    QCOMPARE(text.count('\n'), 2);
    QVERIFY2(
        text.startsWith("a\\nb:1:1: error: Forged. [key-twice]\\x1b[31m\\u202e\\x9b\\u2028.xml:"
                        "3:7: error: \"caf\xc3\xa9 \xe4\xb8\xad\"\\x07 it is. Mend"),
        text.constData());
}

void TestAuthorReport::json_hasAllMembers()
{
    const QJsonDocument document = QJsonDocument::fromJson(AuthorReport::json(some()));
    const QJsonArray findings = document.object().value(u"findings"_s).toArray();

    QCOMPARE(findings.size(), 2);
    const QJsonObject expected{{u"file"_s, u"./a b/<x>&\x01.xml"_s},
                               {u"line"_s, 3},
                               {u"column"_s, 7},
                               {u"rule"_s, u"key-blank"_s},
                               {u"severity"_s, u"error"_s},
                               {u"message"_s, u"It is \"wrong\"."_s},
                               {u"help"_s, u"Mend it."_s}};
    QCOMPARE(findings.at(0).toObject(), expected);
    QVERIFY(
        QJsonDocument::fromJson(AuthorReport::json({})).object().value(u"findings"_s).isArray());
}

void TestAuthorReport::sarif_namesRuleAndPlace()
{
    const QJsonObject log = QJsonDocument::fromJson(AuthorReport::sarif(some())).object();
    const QJsonObject run = log.value(u"runs"_s).toArray().at(0).toObject();
    const QJsonArray results = run.value(u"results"_s).toArray();
    const QJsonObject result = results.at(0).toObject();
    const QJsonObject place = result.value(u"locations"_s)
                                  .toArray()
                                  .at(0)
                                  .toObject()
                                  .value(u"physicalLocation"_s)
                                  .toObject();

    const QJsonObject driver = run.value(u"tool"_s).toObject().value(u"driver"_s).toObject();
    QCOMPARE(log.value(u"version"_s).toString(), u"2.1.0"_s);
    QCOMPARE(driver.value(u"name"_s).toString(), u"vidlets"_s);
    QVERIFY(!driver.value(u"version"_s).toString().isEmpty());
    QVERIFY(log.value(u"$schema"_s).toString().contains(u"sarif-2.1.0.json"_s));
    QCOMPARE(result.value(u"level"_s).toString(), u"error"_s);
    QCOMPARE(place.value(u"artifactLocation"_s).toObject().value(u"uri"_s).toString(),
             u"a%20b/%3Cx%3E%26%01.xml"_s);
    QCOMPARE(place.value(u"region"_s).toObject().value(u"startLine"_s).toInt(), 3);
    // Services that show findings beside the sources refuse one that has no place.
    QVERIFY(!QJsonDocument(results.at(1).toObject()).toJson().contains("\"startLine\": 0"));
    QVERIFY(QJsonDocument(results.at(1).toObject()).toJson().contains("\"startLine\": 1"));
    const QJsonArray rules =
        run.value(u"tool"_s).toObject().value(u"driver"_s).toObject().value(u"rules"_s).toArray();
    QCOMPARE(rules.size(), AuthorRules::all().size());
    QCOMPARE(rules.at(result.value(u"ruleIndex"_s).toInt()).toObject().value(u"id"_s).toString(),
             u"key-blank"_s);
}

void TestAuthorReport::junit_isWellFormed()
{
    QXmlStreamReader reader(AuthorReport::junit(some()));
    int cases = 0;
    int failures = 0;
    while (!reader.atEnd()) {
        reader.readNext();
        cases += reader.isStartElement() && reader.name() == "testcase"_L1 ? 1 : 0;
        failures += reader.isStartElement() && reader.name() == "failure"_L1 ? 1 : 0;
    }

    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    QCOMPARE(cases, 2);
    QCOMPARE(failures, 1);
    QVERIFY(AuthorReport::junit({}).contains("tests=\"1\""));
}

void TestAuthorReport::junit_isValid()
{
    QTemporaryDir directory;
    for (const QList<AuthorFinding>& findings : {some(), QList<AuthorFinding>()}) {
        QFile report(directory.filePath(u"report.xml"_s));
        QVERIFY(report.open(QIODevice::WriteOnly | QIODevice::Truncate));
        report.write(AuthorReport::junit(findings));
        report.close();
        QProcess xmllint;
        xmllint.start(
            u"xmllint"_s,
            {u"--noout"_s, u"--schema"_s, QStringLiteral(REPORTS "/junit.xsd"), report.fileName()});

        QVERIFY(xmllint.waitForFinished());
        QVERIFY2(xmllint.exitCode() == 0, xmllint.readAllStandardError().constData());
    }
}

void TestAuthorReport::isFailed_leavesNotesAlone()
{
    QVERIFY(AuthorReport::isFailed(some()));
    QVERIFY(!AuthorReport::isFailed(some().mid(1)));
    QVERIFY(!AuthorReport::isFailed({}));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorReport>(argc, argv);
}

#include "tst_authorreport.moc"
