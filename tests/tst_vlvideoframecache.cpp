// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "VidletsTest.h"
#include <Vidlets/VLVideoFrameCache.h>

#include <limits>
#include <memory>
#include <type_traits>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

VLVideoFrame newFrame(double pts, QRgb color = qRgb(1, 2, 3))
{
    VLVideoFrame frame(4, 3, QImage::Format_RGB32, 0);
    frame.fill(color);
    frame.setPts(pts);
    return frame;
}

} // namespace

class TestVLVideoFrameCache : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    void newCache_isEmptyWithoutParent();
    void cache_hasNoMetaObjectOfItsOwn();
    void addFrame_appends();
    void addFrame_storesTwoEntries_whenGivenTheSameTwice();
    void addFrame_keepsOrderOfArrival_whenStampsFall();
    void frame_sharesPixelsWithWhatWasAdded();
    void frame_isNull_beyondTheLast_data();
    void frame_isNull_beyondTheLast();
    void frame_endsProcess_whenCacheIsEmpty();
    void frame_staysValid_whenCacheIsGone();
    void cache_goesThroughPointerToBase();
};

int TestVLVideoFrameCache::runChild(const QString& name)
{
    if (name != u"emptyCache"_s)
        return VidletsTest::runChild(name);
    VLVideoFrameCache cache(u"clip"_s);
    return cache.frame(0).isNull() ? EXIT_SUCCESS : EXIT_FAILURE;
}

void TestVLVideoFrameCache::newCache_isEmptyWithoutParent()
{
    VLVideoFrameCache cache(u"clip"_s);
    QCOMPARE(cache.length(), 0U);
    QVERIFY(!cache.parent());
    QCOMPARE(cache.objectName(), QString());
}

void TestVLVideoFrameCache::cache_hasNoMetaObjectOfItsOwn()
{
    const VLVideoFrameCache cache(u"clip"_s);
    QCOMPARE(cache.metaObject(), &QObject::staticMetaObject);
    static_assert(std::has_virtual_destructor_v<VLVideoFrameCache>);
}

void TestVLVideoFrameCache::addFrame_appends()
{
    VLVideoFrameCache cache(u"clip"_s);
    const VLVideoFrame first = newFrame(0.5);
    cache.addFrame(first);
    QCOMPARE(cache.length(), 1U);
    QCOMPARE(QImage(cache.frame(0)), QImage(first));
    QCOMPARE(cache.frame(0).pts(), 0.5);

    cache.addFrame(newFrame(0.75, qRgb(9, 8, 7)));
    QCOMPARE(cache.length(), 2U);
    QCOMPARE(cache.frame(0).pts(), 0.5);
    QCOMPARE(cache.frame(1).pts(), 0.75);
    QCOMPARE(cache.frame(1).pixel(0, 0), qRgb(9, 8, 7));
}

void TestVLVideoFrameCache::addFrame_storesTwoEntries_whenGivenTheSameTwice()
{
    VLVideoFrameCache cache(u"clip"_s);
    const VLVideoFrame frame = newFrame(1.0);
    cache.addFrame(frame);
    cache.addFrame(frame);
    QCOMPARE(cache.length(), 2U);
    QCOMPARE(cache.frame(0).constBits(), cache.frame(1).constBits());
}

void TestVLVideoFrameCache::addFrame_keepsOrderOfArrival_whenStampsFall()
{
    VLVideoFrameCache cache(u"clip"_s);
    const QList<double> stamps{3.0, 1.0, 2.0, 1.0};
    for (const double stamp : stamps)
        cache.addFrame(newFrame(stamp));
    for (qsizetype i = 0; i < stamps.size(); ++i)
        QCOMPARE(cache.frame(static_cast<quint64>(i)).pts(), stamps.at(i));
}

void TestVLVideoFrameCache::frame_sharesPixelsWithWhatWasAdded()
{
    VLVideoFrameCache cache(u"clip"_s);
    VLVideoFrame frame = newFrame(1.0);
    cache.addFrame(frame);
    QCOMPARE(cache.frame(0).constBits(), std::as_const(frame).constBits());

    // The writer detaches, and what is in the cache stays as it was.
    frame.fill(Qt::white);
    QCOMPARE(QImage(cache.frame(0)), QImage(newFrame(1.0)));
}

void TestVLVideoFrameCache::frame_isNull_beyondTheLast_data()
{
    QTest::addColumn<quint64>("index");
    QTest::newRow("next") << quint64(1);
    QTest::newRow("further") << quint64(1000);
    QTest::newRow("beyond 32 bits") << quint64(0x100000000);
    QTest::newRow("top bit") << quint64(0x8000000000000000);
    QTest::newRow("greatest") << std::numeric_limits<quint64>::max();
}

void TestVLVideoFrameCache::frame_isNull_beyondTheLast()
{
    QFETCH(quint64, index);
    VLVideoFrameCache cache(u"clip"_s);
    cache.addFrame(newFrame(1.0));
    const VLVideoFrame frame = cache.frame(index);
    QVERIFY(frame.isNull());
    QCOMPARE(frame.pts(), 0.0);
    QCOMPARE(cache.length(), 1U);
}

void TestVLVideoFrameCache::frame_endsProcess_whenCacheIsEmpty()
{
    const ChildResult result = runInChildProcess(u"emptyCache"_s);
    QVERIFY(result.finished);
    QVERIFY(result.crashed);
    QVERIFY2(result.standardError.contains("index out of range"), result.standardError.constData());
}

void TestVLVideoFrameCache::frame_staysValid_whenCacheIsGone()
{
    VLVideoFrame frame;
    {
        VLVideoFrameCache cache(u"clip"_s);
        cache.addFrame(newFrame(1.5));
        frame = cache.frame(0);
    }
    QCOMPARE(QImage(frame), QImage(newFrame(1.5)));
    QCOMPARE(frame.pts(), 1.5);
}

void TestVLVideoFrameCache::cache_goesThroughPointerToBase()
{
    const VLVideoFrame frame = newFrame(1.0);
    auto cache = std::make_unique<VLVideoFrameCache>(u"clip"_s);
    cache->addFrame(frame);
    QVERIFY(!frame.isDetached());

    std::unique_ptr<QObject> base = std::move(cache);
    base.reset();

    QVERIFY(frame.isDetached());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLVideoFrameCache>(argc, argv);
}

#include "tst_vlvideoframecache.moc"
