// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QProcess>
#include <QProcessEnvironment>

using namespace Qt::StringLiterals;

namespace {

struct Outcome
{
    int code = -1;
    QByteArray out;
    QByteArray err;
};

Outcome run(const QStringList& arguments)
{
    QProcess process;
    // What is loaded before a test for its own sake is none of the program's business.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"LD_PRELOAD"_s);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PROGRAM), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

class TestAuthorProgram : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void wrongUse_endsWithTwo_data();
    void wrongUse_endsWithTwo();
    void help_isThereForEachCommand();
    void new_makesPackageWithoutFaults();
    void check_endsWithOne_whenThereIsWarning();
    void explain_showsPage();
};

void TestAuthorProgram::wrongUse_endsWithTwo_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("no command") << QStringList();
    QTest::newRow("unknown command") << QStringList{u"verify"_s};
    QTest::newRow("unknown option") << QStringList{u"check"_s, u"--nonsense"_s, u"."_s};
    QTest::newRow("unknown format") << QStringList{u"check"_s, u"--format"_s, u"yaml"_s, u"."_s};
    QTest::newRow("unknown rule") << QStringList{u"check"_s, u"--set"_s, u"no-rule=off"_s, u"."_s};
    QTest::newRow("unknown severity")
        << QStringList{u"check"_s, u"--set"_s, u"key-blank=x"_s, u"."_s};
    QTest::newRow("unknown rule to explain")
        << QStringList{u"check"_s, u"--explain"_s, u"no-rule"_s};
    QTest::newRow("no path") << QStringList{u"check"_s};
    QTest::newRow("missing path") << QStringList{u"check"_s, u"/nowhere"_s};
    QTest::newRow("new without directory") << QStringList{u"new"_s};
    QTest::newRow("new with two") << QStringList{u"new"_s, u"/nowhere/A.vidlets"_s,
                                                 u"/nowhere/B.vidlets"_s};
}

void TestAuthorProgram::wrongUse_endsWithTwo()
{
    QFETCH(const QStringList, arguments);

    const Outcome outcome = run(arguments);

    QCOMPARE(outcome.code, 2);
    QVERIFY(outcome.out.isEmpty());
    QCOMPARE(outcome.err.count('\n'), 1);
}

void TestAuthorProgram::help_isThereForEachCommand()
{
    for (const QStringList& arguments :
         {QStringList{u"--help"_s}, QStringList{u"check"_s, u"--help"_s},
          QStringList{u"new"_s, u"-h"_s}}) {
        const Outcome outcome = run(arguments);
        QCOMPARE(outcome.code, 0);
        QVERIFY(outcome.out.startsWith("Usage: vidlets "));
        QVERIFY(outcome.err.isEmpty());
    }
}

void TestAuthorProgram::new_makesPackageWithoutFaults()
{
    PackageBuilder files;
    const QString package = files.path(u"First.vidlets"_s);
    const Outcome made = run({u"new"_s, package});
    QCOMPARE(made.err, QByteArray());
    QCOMPARE(made.code, 0);

    const Outcome checked = run({u"check"_s, package});

    QCOMPARE(checked.out, QByteArray());
    QCOMPARE(checked.code, 0);
    QCOMPARE(run({u"new"_s, package}).code, 2);
}

void TestAuthorProgram::check_endsWithOne_whenThereIsWarning()
{
    PackageBuilder files;
    files.packageRoot(u"A.vidlets"_s);

    QCOMPARE(run({u"check"_s, files.dataPath()}).code, 1);
    const Outcome outcome =
        run({u"check"_s, u"--set"_s, u"package-empty=note"_s, files.dataPath()});
    QCOMPARE(outcome.code, 0);
    QVERIFY(outcome.out.contains("[package-empty]"));
}

void TestAuthorProgram::explain_showsPage()
{
    const Outcome outcome = run({u"check"_s, u"--explain"_s, u"key-blank"_s});

    QCOMPARE(outcome.code, 0);
    QVERIFY(outcome.out.startsWith("# key-blank\n"));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorProgram>(argc, argv);
}

#include "tst_authorprogram.moc"
