// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <VidletsAuthor/AuthorFinding.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

class TestAuthorFinding : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void severity_goesByItsName();
    void suppressedRules_areListed();
    void unsuppressed_leavesOutRanges();
    void counted_isInThePlural_butForOne();
};

void TestAuthorFinding::severity_goesByItsName()
{
    for (const auto severity : {AuthorSeverity::Off, AuthorSeverity::Note, AuthorSeverity::Warning,
                                AuthorSeverity::Error})
        QCOMPARE(severityNamed(severityName(severity)), severity);
    QVERIFY(!severityNamed(u"Error"));
    QVERIFY(!severityNamed(u""));
}

void TestAuthorFinding::suppressedRules_areListed()
{
    const QStringList expected{u"key-blank"_s, u"key-twice"_s};
    QCOMPARE(suppressedRules(u" vidlets-check: off key-blank, key-twice "_s), expected);
    QCOMPARE(suppressedRules(u" vidlets-check: off "_s), QStringList());
    QCOMPARE(suppressedRules(u" vidlets-check: on key-blank"_s), QStringList());
    QCOMPARE(suppressedRules(u"say vidlets-check: off key-blank"_s), QStringList());
}

void TestAuthorFinding::unsuppressed_leavesOutRanges()
{
    AuthorFindings findings;
    for (int line = 1; line <= 6; ++line)
        findings.add(u"a"_s, {line, 5}, u"key-blank"_s, u"m"_s);
    findings.add(u"b"_s, {3, 5}, u"key-blank"_s, u"m"_s);
    findings.add(u"a"_s, {3, 5}, u"key-twice"_s, u"m"_s);
    findings.suppress(u"a"_s, {{u"key-blank"_s}, 2, 2, {3, 5}, {4, 4}});
    findings.suppress(u"a"_s, {{u"key-blank"_s}, 6, 6, {}, {}});

    QStringList left;
    const QList<AuthorFinding> rest = findings.unsuppressed();
    for (const AuthorFinding& finding : rest)
        left.append(
            u"%1%2%3"_s.arg(finding.file).arg(finding.position.line).arg(finding.rule.right(5)));

    const QStringList expected{u"a1blank"_s, u"a4blank"_s, u"a5blank"_s, u"b3blank"_s,
                               u"a3twice"_s};
    QCOMPARE(left, expected);
}

void TestAuthorFinding::counted_isInThePlural_butForOne()
{
    QCOMPARE(counted(0, u"tip"_s), u"0 tips"_s);
    QCOMPARE(counted(1, u"tip"_s), u"1 tip"_s);
    QCOMPARE(counted(2, u"tip"_s), u"2 tips"_s);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorFinding>(argc, argv);
}

#include "tst_authorfinding.moc"
