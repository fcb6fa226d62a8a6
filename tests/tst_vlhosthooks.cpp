// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PointerDriver.h"
#include "PopupStage.h"
#include "VidletsTest.h"
#include "XServer.h"
#include <Vidlets/VLHostHooks.h>

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 15000;
constexpr int kStayMs = 200;
const QSize kPopupSize(121, 81);

/// A large control of which each quarter may be asked for a tip of its own.
class Stage : public PopupStage
{
public:
    explicit Stage(const QMap<int, QVariant>& settings = {})
        : PopupStage(settings)
    {
        set(ckSteadyHover, true);
        set(ckKeepOffReference, true);
        set(ckStayDuration, kStayMs);
        set(ckHideDuration, 0);
        control.setGeometry(100, 100, 600, 400);
        const auto isInPlace = [this] { return control.geometry() == QRect(100, 100, 600, 400); };
        if (!QTest::qWaitForWindowExposed(&control) || !QTest::qWaitFor(isInPlace, kPatienceMs))
            qFatal("The control did not come to its place");
    }

    bool request(const QString& key, const QRect& zone)
    {
        return VLHostHooks::show(manager.get(), key, zone.center(), &control, {zone, nullptr});
    }

    /// Rests the pointer on @p zone and brings its tip up.
    void bringUp(const QString& key, const QRect& zone)
    {
        QVERIFY(PointerDriver::moveTo(zone.center()));
        QVERIFY(request(key, zone));
        QTRY_VERIFY_WITH_TIMEOUT(popup()->windowHandle()->isExposed(), kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(popup()->size(), kPopupSize, kPatienceMs);
    }

    QRect tip()
    {
        return {positionOnScreenOfX(popup()), popup()->size()};
    }

    static QRect left()
    {
        return {120, 120, 100, 30};
    }
    static QRect right()
    {
        return {560, 120, 100, 30};
    }
};

} // namespace

class TestVLHostHooks : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void managerOf_isThatOfInterface();

    void zone_isKeptFree_notTheControl();
    void zone_ofSameKey_getsTipAnew();
    void zone_thatIsAskedAgain_leavesTipAlone();
    void zone_thatPointerLeaves_losesTip_withinControl();
    void zone_thatPointerIsIn_keepsTip();
    void zone_movesWithControl();
    void zone_endsWithRequestWithout();
    void partOutsideOfZone_losesTip();
    void partWithinZone_keepsTip();
    void window_withoutWidgets_isKeptFreeAndOwnsTip();
    void window_withoutWidgets_keepsTip_whilePointerIsInZone();
    void window_thatHides_takesTipAlong();

    void emptyKey_isNotLookedUp();
    void emptyKey_showsNoFallback();
    void emptyKey_hidesTipOfOtherZone();

    void hold_keepsTip_whereverPointerGoes();
    void hold_keepsTip_whenOthersAreAskedFor();
    void hold_keepsTip_whenKeyIsPressed();
    void hold_endsWithTip();
    void hold_takesPointerUp_whenItEnds();
    void hide_hidesAtOnce();

    void keyFilter_decidesWhichKeysHide_data();
    void keyFilter_decidesWhichKeysHide();

    void tipWatcher_isToldOfEachTip();
};

void TestVLHostHooks::managerOf_isThatOfInterface()
{
    VLContext context;
    const VLInterface interface(context, {}, nullptr);
    QCOMPARE(VLHostHooks::managerOf(&interface)->interface(), &interface);
}

void TestVLHostHooks::zone_isKeptFree_notTheControl()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    QTRY_VERIFY_WITH_TIMEOUT(stage.control.geometry().contains(stage.tip()), kPatienceMs);
    QVERIFY(!stage.tip().intersects(Stage::left()));
    QCOMPARE(VLHostHooks::zone(stage.manager.get()), Stage::left());
    QCOMPARE(VLHostHooks::controlWindow(stage.manager.get()), stage.control.windowHandle());
}

void TestVLHostHooks::zone_ofSameKey_getsTipAnew()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    QTRY_VERIFY_WITH_TIMEOUT(stage.tip().left() < 400, kPatienceMs);
    stage.bringUp(u"open"_s, Stage::right());
    QTRY_VERIFY_WITH_TIMEOUT(stage.tip().left() > 500, kPatienceMs);
    QVERIFY(stage.popup()->isVisible());
}

void TestVLHostHooks::zone_thatIsAskedAgain_leavesTipAlone()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    const VLXmlElement* content = stage.view()->content();
    const qsizetype asked = stage.index.requests.size();
    QVERIFY(stage.request(u"open"_s, Stage::left()));
    QCOMPARE(stage.index.requests.size(), asked);
    QCOMPARE(stage.view()->content(), content);
}

void TestVLHostHooks::zone_thatPointerLeaves_losesTip_withinControl()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    const QPoint beyond(640, 460);
    QVERIFY(stage.control.geometry().contains(beyond));
    QVERIFY(!stage.popup()->isSafe(beyond));
    QVERIFY(PointerDriver::moveTo(beyond));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.popup()->isVisible(), kPatienceMs);
}

void TestVLHostHooks::zone_thatPointerIsIn_keepsTip()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    // Longer than the tip would live.
    for (int x = 1; x <= 3; ++x) {
        QVERIFY(PointerDriver::moveTo(Stage::left().topLeft() + QPoint(x, 1)));
        QTest::qWait(kStayMs);
        QVERIFY(stage.popup()->isVisible());
        QVERIFY(!stage.timer()->isActive());
    }
}

void TestVLHostHooks::zone_movesWithControl()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    stage.control.move(110, 105);
    const QRect expected = Stage::left().translated(10, 5);
    QTRY_COMPARE_WITH_TIMEOUT(VLHostHooks::zone(stage.manager.get()), expected, kPatienceMs);
}

void TestVLHostHooks::zone_endsWithRequestWithout()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    QVERIFY(stage.manager->show(u"save"_s, Stage::right().center(), &stage.control));
    QCOMPARE(VLHostHooks::zone(stage.manager.get()), stage.control.geometry());
}

void TestVLHostHooks::partOutsideOfZone_losesTip()
{
    Stage stage;
    QWidget part(&stage.control);
    part.setGeometry(Stage::right().translated(-100, -100));
    part.show();
    stage.bringUp(u"open"_s, Stage::left());
    const QPoint position = Stage::right().center();
    QVERIFY(!VLHostHooks::show(stage.manager.get(), u"nothing"_s, position, &part,
                               {Stage::right(), nullptr}));
    QVERIFY(!stage.popup()->isVisible());
}

void TestVLHostHooks::partWithinZone_keepsTip()
{
    Stage stage;
    QWidget part(&stage.control);
    part.setGeometry(Stage::left().adjusted(5, 5, -5, -5).translated(-100, -100));
    part.show();
    stage.bringUp(u"open"_s, Stage::left());
    QVERIFY(VLHostHooks::show(stage.manager.get(), u"nothing"_s, Stage::left().center(), &part,
                              {Stage::left().adjusted(5, 5, -5, -5), nullptr}));
    QVERIFY(stage.popup()->isVisible());
}

void TestVLHostHooks::window_withoutWidgets_isKeptFreeAndOwnsTip()
{
    Stage stage;
    QQuickWindow window;
    window.setFlag(Qt::FramelessWindowHint);
    window.setGeometry(720, 100, 400, 300);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QRect zone(740, 120, 200, 60);
    QVERIFY(VLHostHooks::show(stage.manager.get(), u"open"_s, QPoint(745, 125),
                              window.contentItem(), {zone, &window}));
    QTRY_VERIFY_WITH_TIMEOUT(stage.popup()->windowHandle()->isExposed(), kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(stage.popup()->size(), kPopupSize, kPatienceMs);
    QCOMPARE(stage.popup()->windowHandle()->transientParent(), &window);
    QCOMPARE(VLHostHooks::controlWindow(stage.manager.get()), &window);
    QCOMPARE(VLHostHooks::zone(stage.manager.get()), zone);
    QTRY_VERIFY_WITH_TIMEOUT(!stage.tip().intersects(zone), kPatienceMs);
}

void TestVLHostHooks::window_withoutWidgets_keepsTip_whilePointerIsInZone()
{
    Stage stage;
    QQuickWindow window;
    window.setFlag(Qt::FramelessWindowHint);
    window.setGeometry(720, 100, 400, 300);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QRect zone(740, 120, 200, 60);
    QVERIFY(PointerDriver::moveTo(zone.center()));
    QVERIFY(VLHostHooks::show(stage.manager.get(), u"open"_s, zone.center(), window.contentItem(),
                              {zone, &window}));
    QTRY_VERIFY_WITH_TIMEOUT(stage.popup()->windowHandle()->isExposed(), kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(stage.popup()->size(), kPopupSize, kPatienceMs);
    QVERIFY(stage.popup()->isSafe(zone.topLeft()));
    QVERIFY(!stage.popup()->isSafe(QPoint(1100, 380)));
    QVERIFY(PointerDriver::moveTo(QPoint(1100, 380)));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.popup()->isVisible(), kPatienceMs);
}

void TestVLHostHooks::window_thatHides_takesTipAlong()
{
    Stage stage;
    QQuickWindow window;
    window.setGeometry(720, 100, 400, 300);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(VLHostHooks::show(stage.manager.get(), u"open"_s, QPoint(745, 125),
                              window.contentItem(), {QRect(740, 120, 200, 60), &window}));
    QTRY_VERIFY_WITH_TIMEOUT(stage.popup()->windowHandle()->isExposed(), kPatienceMs);
    window.hide();
    QVERIFY(!stage.popup()->isVisible());
}

void TestVLHostHooks::emptyKey_isNotLookedUp()
{
    Stage stage;
    QVERIFY(!stage.request(QString(), Stage::left()));
    QCOMPARE(stage.index.requests, QStringList());
}

void TestVLHostHooks::emptyKey_showsNoFallback()
{
    Stage stage;
    stage.set(ckFallbackKey, u"save"_s);
    QVERIFY(!stage.request(QString(), Stage::left()));
    QVERIFY(!stage.manager->widget());
    // A key without content does.
    QVERIFY(stage.request(u"nothing"_s, Stage::left()));
    QTRY_VERIFY_WITH_TIMEOUT(stage.popup()->windowHandle()->isExposed(), kPatienceMs);
}

void TestVLHostHooks::emptyKey_hidesTipOfOtherZone()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    QVERIFY(!VLHostHooks::show(stage.manager.get(), QString(), Stage::right().center(),
                               &stage.control, {}));
    QVERIFY(!stage.popup()->isVisible());
}

void TestVLHostHooks::hold_keepsTip_whereverPointerGoes()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    VLHostHooks::hold(stage.manager.get(), true);
    QVERIFY(VLHostHooks::isHeld(stage.manager.get()));
    QVERIFY(PointerDriver::moveTo(PopupStage::farAway()));
    stage.popup()->checkMousePosition(PopupStage::farAway());
    QVERIFY(!stage.timer()->isActive());
    QTest::qWait(3 * kStayMs);
    QVERIFY(stage.popup()->isVisible());
}

void TestVLHostHooks::hold_keepsTip_whenOthersAreAskedFor()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    VLHostHooks::hold(stage.manager.get(), true);
    QVERIFY(stage.request(u"save"_s, Stage::right()));
    QVERIFY(stage.request(QString(), Stage::right()));
    QCOMPARE(stage.scene()->property("shownKey").toString(), u"open"_s);
    VLHostHooks::hold(stage.manager.get(), false);
    QVERIFY(stage.request(u"save"_s, Stage::right()));
    QCOMPARE(stage.scene()->property("shownKey").toString(), u"save"_s);
}

void TestVLHostHooks::hold_keepsTip_whenKeyIsPressed()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    VLHostHooks::hold(stage.manager.get(), true);
    QTest::keyClick(&stage.control, Qt::Key_A);
    QVERIFY(stage.popup()->isVisible());
    VLHostHooks::hold(stage.manager.get(), false);
    QTest::keyClick(&stage.control, Qt::Key_A);
    QVERIFY(!stage.popup()->isVisible());
}

void TestVLHostHooks::hold_endsWithTip()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    VLHostHooks::hold(stage.manager.get(), true);
    stage.popup()->hide();
    stage.bringUp(u"open"_s, Stage::left());
    QVERIFY(!VLHostHooks::isHeld(stage.manager.get()));
    QVERIFY(PointerDriver::moveTo(PopupStage::farAway()));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.popup()->isVisible(), kPatienceMs);
}

void TestVLHostHooks::hold_takesPointerUp_whenItEnds()
{
    Stage stage;
    stage.bringUp(u"open"_s, Stage::left());
    VLHostHooks::hold(stage.manager.get(), true);
    QVERIFY(PointerDriver::moveTo(PopupStage::farAway()));
    QTRY_COMPARE_WITH_TIMEOUT(QCursor::pos(), PopupStage::farAway(), kPatienceMs);
    VLHostHooks::hold(stage.manager.get(), false);
    QTRY_VERIFY_WITH_TIMEOUT(!stage.popup()->isVisible(), kPatienceMs);
}

void TestVLHostHooks::hide_hidesAtOnce()
{
    Stage stage;
    stage.set(ckHideDuration, 600000);
    stage.bringUp(u"open"_s, Stage::left());
    VLHostHooks::hide(stage.manager.get());
    QVERIFY(!stage.popup()->isVisible());
}

void TestVLHostHooks::keyFilter_decidesWhichKeysHide_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<bool>("staysUp");
    QTest::newRow("taken") << Qt::Key_F6 << true;
    QTest::newRow("other") << Qt::Key_F7 << false;
}

void TestVLHostHooks::keyFilter_decidesWhichKeysHide()
{
    QFETCH(const Qt::Key, key);
    QFETCH(const bool, staysUp);
    Stage stage;
    VLHostHooks::setKeyFilter(stage.manager.get(), [](QObject* /*receiver*/, QKeyEvent* event) {
        return event->key() == Qt::Key_F6;
    });
    stage.bringUp(u"open"_s, Stage::left());
    QTest::keyClick(&stage.control, key);
    QCOMPARE(stage.popup()->isVisible(), staysUp);
}

void TestVLHostHooks::tipWatcher_isToldOfEachTip()
{
    Stage stage;
    VLManager* manager = stage.manager.get();
    // What is up at each call.
    QStringList keys;
    VLHostHooks::setTipWatcher(manager, [manager, &keys] {
        VLWidget* popup = manager->widget();
        keys += popup->isVisible() ? popup->view()->content()->attribute(u"key"_s) : u"none"_s;
    });
    QVERIFY(stage.request(u"open"_s, Stage::left()));
    QCOMPARE(keys, QStringList(u"open"_s));
    QVERIFY(stage.request(u"save"_s, Stage::right()));
    QCOMPARE(keys, QStringList({u"open"_s, u"save"_s}));
    VLHostHooks::showAnew(manager);
    QCOMPARE(keys, QStringList({u"open"_s, u"save"_s, u"save"_s}));
    VLHostHooks::hide(manager);
    QCOMPARE(keys.size(), 4);
    QCOMPARE(keys.last(), u"none"_s);
    VLHostHooks::setTipWatcher(manager, {});
    QVERIFY(stage.request(u"open"_s, Stage::left()));
    QCOMPARE(keys.size(), 4);
    VLHostHooks::tellOfTip(nullptr);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLHostHooks>(argc, argv);
}

#include "tst_vlhosthooks.moc"
