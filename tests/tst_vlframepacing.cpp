// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include <Vidlets/VLFramePacing.h>

#include <QDateTime>
#include <QTimeZone>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr quint64 kNowhere = std::numeric_limits<quint64>::max();

/// A moment of an ordinary day.
QDateTime atTime(const QString& time, int day = 10)
{
    return QDateTime(QDate(2026, 6, day), QTime::fromString(time, u"HH:mm:ss.zzz"_s),
                     QTimeZone::utc());
}

} // namespace

class TestVLFramePacing : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void delay_followsFrameTimes_data();
    void delay_followsFrameTimes();
    void delay_isNoNumber_whenThereIsNoFrameRate_data();
    void delay_isNoNumber_whenThereIsNoFrameRate();
    void delay_isInfinite_whenFrameRateIsZeroAndFramesWereNotFetched();
    void sleep_isWholeMilliseconds_data();
    void sleep_isWholeMilliseconds();
};

void TestVLFramePacing::delay_followsFrameTimes_data()
{
    QTest::addColumn<quint64>("position");
    QTest::addColumn<quint64>("shownPosition");
    QTest::addColumn<double>("frameRate");
    QTest::addColumn<QDateTime>("lastShown");
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<double>("expectedSeconds");

    const QDateTime noon = atTime(u"12:00:00.000"_s);
    const auto row = [](const char* name, quint64 position, quint64 shownPosition, double frameRate,
                        const QDateTime& lastShown, const QDateTime& now, double expectedSeconds) {
        QTest::newRow(name) << position << shownPosition << frameRate << lastShown << now
                            << expectedSeconds;
    };
    row("the item keeps up", 7, 6, 25.0, noon, noon.addMSecs(40), 0.04);
    row("a late item does not shorten it", 7, 6, 25.0, noon, noon.addMSecs(400), 0.04);
    row("a late thread does not shorten it", 7, 7, 25.0, noon, noon.addSecs(3), 0.04);
    row("a millisecond is enough", 9, 6, 25.0, noon, noon.addMSecs(1), 0.04);
    row("same millisecond, nothing to be fetched", 7, 7, 25.0, noon, noon, 0.04);
    row("same millisecond, one to be fetched", 7, 6, 25.0, noon, noon, 0.04);
    row("same millisecond, three to be fetched", 9, 6, 25.0, noon, noon, 0.12);
    row("nothing shown yet, one to be fetched", 1, 0, 20.0, QDateTime(), noon, 0.05);
    row("nothing shown yet, five to be fetched", 5, 0, 20.0, QDateTime(), noon, 0.25);
    row("nothing shown yet, none to be fetched", 0, 0, 20.0, QDateTime(), noon, 0.05);
    row("moved to the start", 0, kNowhere, 20.0, noon, noon, 0.05);
    row("shown ahead of the position", 3, 4, 1.0, noon, noon.addMSecs(1), 0x1p64 - 1e3);
    row("over midnight", 7, 6, 25.0, atTime(u"23:59:59.990"_s), atTime(u"00:00:00.030"_s, 11),
        0.04);
    row("the same time a day later", 9, 6, 25.0, noon, noon.addDays(1), 0.04);
    row("the clock went back by a second", 7, 6, 25.0, noon, noon.addSecs(-1), 1e6 + 0.04);
    row("the clock went back by an hour", 7, 6, 25.0, noon, noon.addSecs(-3600), 3.6e9 + 0.04);
    row("the clock went back by a day", 7, 6, 25.0, noon, noon.addDays(-1), 8.64e10);
    row("one frame an hour", 7, 6, 1.0 / 3600.0, noon, noon.addSecs(1), 3600.0);
    row("negative rate", 7, 6, -25.0, noon, noon.addMSecs(40), 0.0);
    row("infinite rate", 7, 6, kInfinity, noon, noon.addMSecs(40), 0.0);
}

void TestVLFramePacing::delay_followsFrameTimes()
{
    QFETCH(quint64, position);
    QFETCH(quint64, shownPosition);
    QFETCH(double, frameRate);
    QFETCH(QDateTime, lastShown);
    QFETCH(QDateTime, now);

    const double seconds =
        VLFramePacing::delaySeconds({position, shownPosition, frameRate, lastShown, now});

    QTEST(seconds, "expectedSeconds");
}

void TestVLFramePacing::delay_isNoNumber_whenThereIsNoFrameRate_data()
{
    QTest::addColumn<quint64>("position");
    QTest::addColumn<double>("frameRate");
    QTest::newRow("zero, all frames fetched") << quint64(7) << 0.0;
    QTest::newRow("not a number, all frames fetched") << quint64(7) << kNotANumber;
    QTest::newRow("not a number, one to be fetched") << quint64(8) << kNotANumber;
}

void TestVLFramePacing::delay_isNoNumber_whenThereIsNoFrameRate()
{
    QFETCH(quint64, position);
    QFETCH(double, frameRate);
    const QDateTime noon = atTime(u"12:00:00.000"_s);
    QVERIFY(
        std::isnan(VLFramePacing::delaySeconds({position, 7, frameRate, noon, noon.addMSecs(40)})));
}

void TestVLFramePacing::delay_isInfinite_whenFrameRateIsZeroAndFramesWereNotFetched()
{
    const QDateTime noon = atTime(u"12:00:00.000"_s);
    QCOMPARE(VLFramePacing::delaySeconds({8, 7, 0.0, noon, noon.addMSecs(40)}), kInfinity);
}

void TestVLFramePacing::sleep_isWholeMilliseconds_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<quint64>("expectedMs");
    QTest::newRow("nothing") << 0.0 << quint64(0);
    QTest::newRow("below a millisecond") << 0.0009 << quint64(0);
    QTest::newRow("a frame at 25 Hz") << 0.04 << quint64(40);
    QTest::newRow("a frame at 30 Hz") << 1.0 / 30.0 << quint64(33);
    QTest::newRow("a frame at 60 Hz") << 1.0 / 60.0 << quint64(16);
    QTest::newRow("an hour") << 3600.0 << quint64(3600000);
    QTest::newRow("beyond 32 bits") << 8.64e10 << quint64(86400000000000);
    QTest::newRow("beyond 63 bits") << 1.5e16 << quint64(15000000000000000000U);
    QTest::newRow("beyond 64 bits") << 2e16 << quint64(0);
    QTest::newRow("infinite") << kInfinity << quint64(0);
    QTest::newRow("not a number") << kNotANumber << (quint64(1) << 63U);
    QTest::newRow("negative") << -0.0025 << kNowhere - 1;
    QTest::newRow("negative, infinite") << -kInfinity << (quint64(1) << 63U);
}

void TestVLFramePacing::sleep_isWholeMilliseconds()
{
    QFETCH(double, seconds);
    QFETCH(quint64, expectedMs);
    QCOMPARE(VLFramePacing::sleepMs(seconds), static_cast<unsigned long>(expectedMs));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLFramePacing>(argc, argv);
}

#include "tst_vlframepacing.moc"
