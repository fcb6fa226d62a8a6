// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "VidletsTest.h"

#include <QJSEngine>

#include <VidletsAuthor/AuthorWatchdog.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

constexpr std::chrono::milliseconds kPatience(100);

} // namespace

class TestAuthorWatchdog : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    void endlessScript_isInterrupted();
    void end_isFalse_whenScriptWasShort();
    void engine_mayGoFirst();
    void program_ends_whenNothingElseHelps();
};

int TestAuthorWatchdog::runChild(const QString& name)
{
    AuthorWatchdog watchdog(kPatience);
    watchdog.setFile(name);
    watchdog.begin();
    for (;;) { }
}

void TestAuthorWatchdog::endlessScript_isInterrupted()
{
    QJSEngine first;
    QJSEngine second;
    AuthorWatchdog watchdog(kPatience);
    watchdog.watch(&first);
    watchdog.watch(&second);

    watchdog.begin();
    QVERIFY(second.evaluate(u"while (true) {}"_s).isError());

    QVERIFY(watchdog.end());
    QVERIFY(!watchdog.end());
    QCOMPARE(first.evaluate(u"1 + 1"_s).toInt(), 2);
    QCOMPARE(second.evaluate(u"1 + 1"_s).toInt(), 2);
}

void TestAuthorWatchdog::end_isFalse_whenScriptWasShort()
{
    QJSEngine engine;
    AuthorWatchdog watchdog;
    watchdog.watch(&engine);
    watchdog.begin();

    QCOMPARE(engine.evaluate(u"1 + 1"_s).toInt(), 2);

    QVERIFY(!watchdog.end());
}

void TestAuthorWatchdog::engine_mayGoFirst()
{
    QJSEngine stays;
    AuthorWatchdog watchdog(kPatience);
    watchdog.watch(&stays);
    {
        QJSEngine goes;
        watchdog.watch(&goes);
    }

    watchdog.begin();

    QVERIFY(stays.evaluate(u"while (true) {}"_s).isError());
    QVERIFY(watchdog.end());
}

void TestAuthorWatchdog::program_ends_whenNothingElseHelps()
{
    const ChildResult result = runInChildProcess(u"a.qml"_s);

    QVERIFY(result.finished);
    QVERIFY(!result.crashed);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.standardError.contains("\"a.qml\" keeps the program"),
             result.standardError.constData());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorWatchdog>(argc, argv);
}

#include "tst_authorwatchdog.moc"
