// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLSafeguards.h>

#include <QSignalSpy>
#include <QVariant>

namespace {

constexpr int kFirstSafeguard = 1000;

} // namespace

class TestVLSafeguards : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void contextKey_hasItsNumber_data();
    void contextKey_hasItsNumber();
    void useSafeguards_turnsEachOn_data();
    void useSafeguards_turnsEachOn();
    void useSafeguards_leavesOtherSettingsAlone();
    void useSafeguards_tellsOfEachChange();
};

void TestVLSafeguards::contextKey_hasItsNumber_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("number");
    QTest::newRow("release clips") << int(Vidlets::ckReleaseClips) << 1000;
    QTest::newRow("clip memory limit") << int(Vidlets::ckClipMemoryLimit) << 1001;
    QTest::newRow("prompt clips") << int(Vidlets::ckPromptClips) << 1002;
    QTest::newRow("guard content") << int(Vidlets::ckGuardContent) << 1003;
    QTest::newRow("confine content") << int(Vidlets::ckConfineContent) << 1004;
    QTest::newRow("steady hover") << int(Vidlets::ckSteadyHover) << 1005;
    QTest::newRow("keep off reference") << int(Vidlets::ckKeepOffReference) << 1006;
    QTest::newRow("tend pinned") << int(Vidlets::ckTendPinned) << 1007;
}

void TestVLSafeguards::contextKey_hasItsNumber()
{
    QFETCH(int, key);
    QTEST(key, "number");
}

void TestVLSafeguards::useSafeguards_turnsEachOn_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("release clips") << 1000 << QVariant(true);
    QTest::newRow("clip memory limit") << 1001 << QVariant(qint64(268435456));
    QTest::newRow("prompt clips") << 1002 << QVariant(true);
    QTest::newRow("guard content") << 1003 << QVariant(true);
    QTest::newRow("confine content") << 1004 << QVariant(true);
    QTest::newRow("steady hover") << 1005 << QVariant(true);
    QTest::newRow("keep off reference") << 1006 << QVariant(true);
    QTest::newRow("tend pinned") << 1007 << QVariant(true);
}

void TestVLSafeguards::useSafeguards_turnsEachOn()
{
    QFETCH(int, key);
    VLContext context;
    QVERIFY(!context.contains(key));
    Vidlets::useSafeguards(context);
    const QVariant value = context.get(key, QVariant());
    QTEST(value, "value");
}

void TestVLSafeguards::useSafeguards_leavesOtherSettingsAlone()
{
    VLContext context;
    context.set(Vidlets::ckStayDuration, 5);
    Vidlets::useSafeguards(context);
    QCOMPARE(context.keys(), QList<int>({2, 1000, 1001, 1002, 1003, 1004, 1005, 1006, 1007}));
    QCOMPARE(context.get(Vidlets::ckStayDuration, 0), QVariant(5));
}

void TestVLSafeguards::useSafeguards_tellsOfEachChange()
{
    VLContext context;
    QSignalSpy changes(&context, &VLContext::settingDidChange);
    Vidlets::useSafeguards(context);
    QCOMPARE(changes.size(), 8);
    QCOMPARE(changes.first().first().toInt(), kFirstSafeguard);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLSafeguards>(argc, argv);
}

#include "tst_vlsafeguards.moc"
