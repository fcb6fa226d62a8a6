// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include <Vidlets/VLContext.h>

#include <QMetaEnum>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// Has a slot with the signature of the store's signals.
class KeyReceiver : public QObject
{
    Q_OBJECT

public:
    QList<int> keys;

public Q_SLOTS:
    void take(const VLContextKey& key)
    {
        keys += key;
    }
};

} // namespace

class TestVLContext : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void newStore_isEmpty();
    void get_returnsStoredValue();
    void get_returnsInvalidValue_whenInvalidValueWasStored();
    void set_acceptsAnyNumberAsKey();
    void set_emitsBothSignalsInOrder_onEveryCall();
    void get_givesOldThenNewValue_inTheTwoSignals();
    void copy_sharesValuesUntilOneIsWritten();
    void copy_hasNoParentAndNoConnections();
    void assignment_takesValuesWithoutSignals();
    void assignment_keepsValues_whenAssignedToItself();
    void keys_areInAscendingOrder();
    void contextKey_isRegisteredByName();
    void signals_reachQueuedSlot_whenConnectedByName_data();
    void signals_reachQueuedSlot_whenConnectedByName();
    void contextKey_hasFixedNumbers_data();
    void contextKey_hasFixedNumbers();
};

void TestVLContext::newStore_isEmpty()
{
    VLContext context(nullptr);
    QCOMPARE(context.get(ckLocale, u"de_DE"_s), QVariant(u"de_DE"_s));
    QVERIFY(!context.contains(ckLocale));
    QCOMPARE(context.keys(), QList<int>());
}

void TestVLContext::get_returnsStoredValue()
{
    VLContext context(nullptr);
    context.set(ckStayDuration, 17);
    QCOMPARE(context.get(ckStayDuration, 3000), QVariant(17));
    QCOMPARE(context.get(ckHideDuration, 300), QVariant(300));
}

void TestVLContext::get_returnsInvalidValue_whenInvalidValueWasStored()
{
    VLContext context(nullptr);
    context.set(ckLocale, QVariant());
    QVERIFY(context.contains(ckLocale));
    QVERIFY(!context.get(ckLocale, u"de_DE"_s).isValid());
}

void TestVLContext::set_acceptsAnyNumberAsKey()
{
    VLContext context(nullptr);
    context.set(-5, 1);
    context.set(99999, 2);
    QCOMPARE(context.keys(), (QList<int>{-5, 99999}));
}

void TestVLContext::set_emitsBothSignalsInOrder_onEveryCall()
{
    VLContext context(nullptr);
    QStringList order;
    connect(&context, &VLContext::settingWillChange, this,
            [&order](VLContextKey key) { order += u"will %1"_s.arg(key); });
    connect(&context, &VLContext::settingDidChange, this,
            [&order](VLContextKey key) { order += u"did %1"_s.arg(key); });

    context.set(ckScale, 2.0);
    context.set(ckScale, 2.0);

    const QStringList once{u"will 38"_s, u"did 38"_s};
    QCOMPARE(order, once + once);
}

void TestVLContext::get_givesOldThenNewValue_inTheTwoSignals()
{
    VLContext context(nullptr);
    context.set(ckScale, 1);
    QVariantList seen;
    const auto look = [&] { seen += context.get(ckScale, 0); };
    connect(&context, &VLContext::settingWillChange, this, look);
    connect(&context, &VLContext::settingDidChange, this, look);

    context.set(ckScale, 2);

    QCOMPARE(seen, (QVariantList{1, 2}));
}

void TestVLContext::copy_sharesValuesUntilOneIsWritten()
{
    VLContext original(nullptr);
    original.set(ckScale, 1);
    VLContext copy(original);
    QCOMPARE(copy.get(ckScale, 0), QVariant(1));

    copy.set(ckScale, 2);
    QCOMPARE(original.get(ckScale, 0), QVariant(1));
    original.set(ckScale, 3);
    QCOMPARE(copy.get(ckScale, 0), QVariant(2));
}

void TestVLContext::copy_hasNoParentAndNoConnections()
{
    QObject parent;
    VLContext original(&parent);
    QSignalSpy spy(&original, &VLContext::settingDidChange);
    VLContext copy(original);

    copy.set(ckScale, 2);

    QVERIFY(!copy.parent());
    QCOMPARE(spy.count(), 0);
}

void TestVLContext::assignment_takesValuesWithoutSignals()
{
    QObject parent;
    VLContext target(&parent);
    target.set(ckLocale, u"de_DE"_s);
    VLContext source(nullptr);
    source.set(ckScale, 2);
    QSignalSpy willSpy(&target, &VLContext::settingWillChange);
    QSignalSpy didSpy(&target, &VLContext::settingDidChange);

    target = source;

    QCOMPARE(target.keys(), QList<int>{ckScale});
    QCOMPARE(target.parent(), &parent);
    QCOMPARE(willSpy.count() + didSpy.count(), 0);
}

void TestVLContext::assignment_keepsValues_whenAssignedToItself()
{
    VLContext context(nullptr);
    context.set(ckScale, 2);
    VLContext& alias = context;

    context = alias;

    QCOMPARE(context.get(ckScale, 0), QVariant(2));
}

void TestVLContext::keys_areInAscendingOrder()
{
    VLContext context(nullptr);
    context.set(38, 1);
    context.set(2, 1);
    QCOMPARE(context.keys(), (QList<int>{2, 38}));
}

void TestVLContext::contextKey_isRegisteredByName()
{
    const VLContext context(nullptr);
    QCOMPARE(QMetaType::fromName("Vidlets::contextKey"), QMetaType::fromType<contextKey>());
    QCOMPARE(QMetaType::fromType<contextKey>().name(), "Vidlets::contextKey");
}

void TestVLContext::signals_reachQueuedSlot_whenConnectedByName_data()
{
    QTest::addColumn<QByteArray>("signal");
    QTest::addColumn<bool>("isCopy");
    const QByteArray didChange(SIGNAL(settingDidChange(VLContextKey)));
    const QByteArray willChange(SIGNAL(settingWillChange(VLContextKey)));
    QTest::newRow("did change") << didChange << false;
    QTest::newRow("will change") << willChange << false;
    QTest::newRow("did change, of a copy") << didChange << true;
    QTest::newRow("will change, of a copy") << willChange << true;
}

void TestVLContext::signals_reachQueuedSlot_whenConnectedByName()
{
    QFETCH(QByteArray, signal);
    QFETCH(bool, isCopy);
    VLContext original(nullptr);
    VLContext copy(original);
    VLContext& context = isCopy ? copy : original;
    KeyReceiver receiver;
    QVERIFY(QObject::connect(&context, signal.constData(), &receiver, SLOT(take(VLContextKey)),
                             Qt::QueuedConnection));
    context.set(ckLocale, u"de_DE"_s);
    context.set(-5, 1);
    QVERIFY(receiver.keys.isEmpty());
    QTRY_COMPARE(receiver.keys, (QList<int>{ckLocale, -5}));
}

void TestVLContext::contextKey_hasFixedNumbers_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("number");
    QTest::newRow("ckStayDuration") << int(ckStayDuration) << 2;
    QTest::newRow("ckKeepPopupWindowFlags") << int(ckKeepPopupWindowFlags) << 3;
    QTest::newRow("ckPackageExtension") << int(ckPackageExtension) << 10;
    QTest::newRow("ckExtraComponentPath") << int(ckExtraComponentPath) << 11;
    QTest::newRow("ckUiFile") << int(ckUiFile) << 12;
    QTest::newRow("ckSimpleUiFile") << int(ckSimpleUiFile) << 13;
    QTest::newRow("ckResourceDirectory") << int(ckResourceDirectory) << 16;
    QTest::newRow("ckInstallEventFilter") << int(ckInstallEventFilter) << 17;
    QTest::newRow("ckSafeZoneMargin") << int(ckSafeZoneMargin) << 18;
    QTest::newRow("ckTooltipOffset") << int(ckTooltipOffset) << 19;
    QTest::newRow("ckSimpleTooltips") << int(ckSimpleTooltips) << 20;
    QTest::newRow("ckDocumentationEnabled") << int(ckDocumentationEnabled) << 21;
    QTest::newRow("ckExternalLinksEnabled") << int(ckExternalLinksEnabled) << 22;
    QTest::newRow("ckFallbackKey") << int(ckFallbackKey) << 23;
    QTest::newRow("ckFallbackLocale") << int(ckFallbackLocale) << 24;
    QTest::newRow("ckLocale") << int(ckLocale) << 25;
    QTest::newRow("ckDisabled") << int(ckDisabled) << 26;
    QTest::newRow("ckClearIndexOnSetup") << int(ckClearIndexOnSetup) << 27;
    QTest::newRow("ckAlwaysShowToolTips") << int(ckAlwaysShowToolTips) << 29;
    QTest::newRow("ckKeyDataFile") << int(ckKeyDataFile) << 30;
    QTest::newRow("ckRequiredModifiers") << int(ckRequiredModifiers) << 31;
    QTest::newRow("ckControlDirectory") << int(ckControlDirectory) << 32;
    QTest::newRow("ckTranslationDirectory") << int(ckTranslationDirectory) << 33;
    QTest::newRow("ckShowDuration") << int(ckShowDuration) << 34;
    QTest::newRow("ckHideDuration") << int(ckHideDuration) << 35;
    QTest::newRow("ckMessageLevel") << int(ckMessageLevel) << 36;
    QTest::newRow("ckTranslationStem") << int(ckTranslationStem) << 37;
    QTest::newRow("ckScale") << int(ckScale) << 38;
}

void TestVLContext::contextKey_hasFixedNumbers()
{
    QFETCH(int, key);
    QTEST(key, "number");
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLContext>(argc, argv);
}

#include "tst_vlcontext.moc"
