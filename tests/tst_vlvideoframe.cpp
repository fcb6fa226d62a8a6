// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include <Vidlets/VLVideoFrame.h>

#include <limits>
#include <memory>
#include <type_traits>

using namespace Vidlets;

namespace {

QImage redImage()
{
    QImage image(4, 3, QImage::Format_RGB32);
    image.fill(Qt::red);
    return image;
}

} // namespace

class TestVLVideoFrame : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void newFrame_isNullWithStampZero();
    void frame_isImage();
    void frame_sharesPixelsOfImage();
    void frame_hasSizeAndFormat_whenMadeBySize();
    void stamp_isConvertedOverUnsignedRange_data();
    void stamp_isConvertedOverUnsignedRange();
    void copy_sharesPixelsAndTakesStamp();
    void copy_detaches_whenItIsWritten();
    void assignment_sharesPixelsAndTakesStamp();
    void assignment_doesNothing_whenAssignedToItself();
    void setPts_storesAnyNumber_data();
    void setPts_storesAnyNumber();
};

void TestVLVideoFrame::newFrame_isNullWithStampZero()
{
    const VLVideoFrame frame;
    QVERIFY(frame.isNull());
    QCOMPARE(frame.pts(), 0.0);
}

void TestVLVideoFrame::frame_isImage()
{
    static_assert(std::is_base_of_v<QImage, VLVideoFrame>);
    static_assert(std::has_virtual_destructor_v<VLVideoFrame>);
    // It goes with its pixels through a pointer to the base too.
    const std::unique_ptr<QImage> image = std::make_unique<VLVideoFrame>(redImage(), 1);
    QCOMPARE(*image, redImage());
}

void TestVLVideoFrame::frame_sharesPixelsOfImage()
{
    const QImage image = redImage();
    const VLVideoFrame frame(image, 7);
    QCOMPARE(frame.constBits(), image.constBits());
    QCOMPARE(frame.pts(), 7.0);
}

void TestVLVideoFrame::frame_hasSizeAndFormat_whenMadeBySize()
{
    const VLVideoFrame frame(5, 6, QImage::Format_ARGB32, 8);
    QCOMPARE(frame.size(), QSize(5, 6));
    QCOMPARE(frame.format(), QImage::Format_ARGB32);
    QCOMPARE(frame.pts(), 8.0);
}

void TestVLVideoFrame::stamp_isConvertedOverUnsignedRange_data()
{
    QTest::addColumn<quint64>("stamp");
    QTest::addColumn<double>("expectedPts");
    QTest::newRow("zero") << quint64(0) << 0.0;
    QTest::newRow("one") << quint64(1) << 1.0;
    QTest::newRow("top bit alone") << quint64(0x8000000000000000) << 9223372036854775808.0;
    QTest::newRow("greatest") << std::numeric_limits<quint64>::max() << 18446744073709551616.0;
}

void TestVLVideoFrame::stamp_isConvertedOverUnsignedRange()
{
    QFETCH(quint64, stamp);
    QTEST(VLVideoFrame(redImage(), stamp).pts(), "expectedPts");
    QTEST(VLVideoFrame(2, 2, QImage::Format_RGB32, stamp).pts(), "expectedPts");
}

void TestVLVideoFrame::copy_sharesPixelsAndTakesStamp()
{
    VLVideoFrame original(redImage(), 0);
    original.setPts(1.25);
    const VLVideoFrame copy(original);
    QCOMPARE(copy.constBits(), std::as_const(original).constBits());
    QCOMPARE(copy.pts(), 1.25);
}

void TestVLVideoFrame::copy_detaches_whenItIsWritten()
{
    const VLVideoFrame original(redImage(), 1);
    VLVideoFrame copy(original);
    copy.fill(Qt::blue);
    copy.setPts(2.0);
    QCOMPARE(QImage(original), redImage());
    QCOMPARE(original.pts(), 1.0);
}

void TestVLVideoFrame::assignment_sharesPixelsAndTakesStamp()
{
    const VLVideoFrame original(redImage(), 3);
    VLVideoFrame target(9, 9, QImage::Format_RGB32, 4);
    VLVideoFrame& result = (target = original);
    QCOMPARE(&result, &target);
    QCOMPARE(std::as_const(target).constBits(), original.constBits());
    QCOMPARE(target.pts(), 3.0);
}

void TestVLVideoFrame::assignment_doesNothing_whenAssignedToItself()
{
    VLVideoFrame frame(redImage(), 5);
    const uchar* pixels = std::as_const(frame).constBits();
    const VLVideoFrame& same = frame;
    frame = same;
    QCOMPARE(std::as_const(frame).constBits(), pixels);
    QCOMPARE(QImage(frame), redImage());
    QCOMPARE(frame.pts(), 5.0);
}

void TestVLVideoFrame::setPts_storesAnyNumber_data()
{
    QTest::addColumn<double>("pts");
    QTest::newRow("fraction") << 0.04;
    QTest::newRow("negative") << -3.5;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
}

void TestVLVideoFrame::setPts_storesAnyNumber()
{
    QFETCH(double, pts);
    VLVideoFrame frame;
    frame.setPts(pts);
    QCOMPARE(frame.pts(), pts);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLVideoFrame>(argc, argv);
}

#include "tst_vlvideoframe.moc"
