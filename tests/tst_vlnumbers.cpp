// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include <Vidlets/VLNumbers.h>

#include <climits>
#include <limits>

using namespace Vidlets;

class TestVLNumbers : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void truncatedToInt32_dropsFraction_data();
    void truncatedToInt32_dropsFraction();
    void truncatedToInt32_isSmallestNumber_whenResultDoesNotFit_data();
    void truncatedToInt32_isSmallestNumber_whenResultDoesNotFit();
};

void TestVLNumbers::truncatedToInt32_dropsFraction_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("expected");

    QTest::newRow("zero") << 0.0 << 0;
    QTest::newRow("negative zero") << -0.0 << 0;
    QTest::newRow("up to the next number") << 2.999 << 2;
    QTest::newRow("towards zero from below") << -2.999 << -2;
    QTest::newRow("less than one") << 0.999 << 0;
    QTest::newRow("largest") << 2147483647.0 << INT_MAX;
    QTest::newRow("largest with a fraction") << 2147483647.9 << INT_MAX;
    QTest::newRow("smallest") << -2147483648.0 << INT_MIN;
    QTest::newRow("smallest with a fraction") << -2147483648.9 << INT_MIN;
}

void TestVLNumbers::truncatedToInt32_dropsFraction()
{
    QFETCH(const double, value);
    QFETCH(const int, expected);

    QCOMPARE(truncatedToInt32(value), expected);
}

void TestVLNumbers::truncatedToInt32_isSmallestNumber_whenResultDoesNotFit_data()
{
    QTest::addColumn<double>("value");

    QTest::newRow("one too large") << 2147483648.0;
    QTest::newRow("one too small") << -2147483649.0;
    QTest::newRow("far too large") << 1e10;
    QTest::newRow("far too small") << -1e10;
    QTest::newRow("beyond 64 bits") << 1e300;
    QTest::newRow("infinity") << std::numeric_limits<double>::infinity();
    QTest::newRow("negative infinity") << -std::numeric_limits<double>::infinity();
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
}

void TestVLNumbers::truncatedToInt32_isSmallestNumber_whenResultDoesNotFit()
{
    QFETCH(const double, value);

    QCOMPARE(truncatedToInt32(value), INT_MIN);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLNumbers>(argc, argv);
}

#include "tst_vlnumbers.moc"
