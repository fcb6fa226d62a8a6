// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "PointerDriver.h"
#include "PopupStage.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QElapsedTimer>
#include <QMainWindow>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QQuickWidget>
#include <QRegularExpression>
#include <QStyle>
#include <QStyleHints>

#include <functional>
#include <memory>

#include <VidletsHost/VLHostInterface.h>
#include <VidletsHost/VLPreferences.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 15000;
/// Longer than the style has a pointer rest, for what is not to happen.
constexpr int kLongRestMs = 1200;
/// Longer than the style's own.
constexpr int kLongDelayMs = 1500;
/// Timers may be early by a twentieth.
constexpr double kEarliest = 0.9;
constexpr QPoint kFarAway(1260, 20);
constexpr QSize kSceneSize(400, 300);

constexpr auto kTip = R"(import QtQuick

Rectangle {
    property string shownKey: vidlet ? vidlet.attribute("key") : ""

    width: 120
    height: 60
    color: "steelblue"
}
)";

/// The import is without a version, and the items tell their names to the test.
constexpr auto kItems = R"(import QtQuick
import com.larkspan.vidlets.host

Rectangle {
    id: root

    property int clicks: 0

    width: 400
    height: 300
    color: "white"

    Rectangle {
        objectName: "open"
        Vidlet.key: "open"
        x: 20; y: 20; width: 100; height: 40
        color: "red"

        Text {
            objectName: "label"
            text: "Open"
            x: 10; y: 10
        }
    }
    Rectangle {
        objectName: "save"
        Vidlet.key: "save"
        x: 140; y: 20; width: 100; height: 40
        color: "green"
        MouseArea {
            anchors.fill: parent
            onClicked: ++root.clicks
        }
    }
    Rectangle {
        objectName: "none"
        Vidlet.key: ""
        x: 260; y: 20; width: 100; height: 40
        color: "blue"
    }
    Rectangle {
        objectName: "group"
        Vidlet.key: "group"
        x: 20; y: 100; width: 200; height: 150
        color: "gray"

        Rectangle {
            objectName: "inner"
            Vidlet.key: "inner"
            x: 10; y: 10; width: 50; height: 50
            color: "yellow"
        }
        Rectangle {
            objectName: "exempt"
            Vidlet.key: ""
            x: 70; y: 10; width: 50; height: 50
            color: "orange"
        }
        Rectangle {
            objectName: "undecided"
            Vidlet.key: undefined
            x: 130; y: 10; width: 50; height: 50
            color: "pink"
        }
    }
    Item {
        objectName: "place"
        x: 240; y: 100; width: 100; height: 100
    }
}
)";

/// There for good, as the screen of a machine is.
QPointingDevice* touchScreen()
{
    static QPointingDevice* const device = QTest::createTouchDevice();
    return device;
}

/// The ways in which a host shows items.
enum class Way {
    Window,
    View,
    Widget,
    Container
};

/// A host of one scene, with the kit.
class Host
{
public:
    explicit Host(Way way, const QByteArray& items = kItems);
    ~Host();

    QQuickItem* item(const QString& name) const;
    QPoint centerOf(const QString& name) const;
    QRect rectOf(const QString& name) const;
    /// Adds what @p qml describes, on top of all else.
    QQuickItem* add(const QByteArray& qml);
    /// Where the item is for QTest.
    QPoint fingerOn(const QString& name) const;
    /// Holds a finger on the item until its tip is up.
    void hold(const QString& name);
    void lift(const QString& name);
    /// The key of the tip; empty while none is up.
    QString shownKey() const;
    QRect tip() const;

    PackageBuilder packages;
    VLContext context;
    std::unique_ptr<VLHostInterface> interface;
    /// The scene's, on the screen or off it.
    QQuickWindow* window = nullptr;
    QQuickItem* root = nullptr;
    /// The widget, where there is one.
    QWidget* widget = nullptr;
    /// What takes touches.
    std::function<QTest::QTouchEventSequence()> touch;

private:
    void makeWindow(const QByteArray& items);
    void makeView();
    void makeWidget();
    void makeContainer();
    void settle();

    QString m_scene;
    QPoint m_position;
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<QWidget> m_outer;
};

Host::Host(Way way, const QByteArray& items)
{
    // Qt takes a pointer that comes back to where it last saw it for one that has not moved.
    static int hosts = 0;
    m_position = QPoint(300 + ++hosts, 150);
    packages.write(u"tips.vidlets/ui/VidletUI.qml"_s, kTip);
    for (const char* key : {"open", "save", "group", "inner", "extra", "quick"})
        packages.writeTip(u"tips.vidlets"_s, QString::fromLatin1(key) + u".xml"_s,
                          QString::fromLatin1(key));
    m_scene = packages.write(u"scenes/Main.qml"_s, items);
    context.set(ckStayDuration, 0.1F);
    context.set(ckHideDuration, 0);
    context.set(ckShowDuration, 0);
    interface = std::make_unique<VLHostInterface>(context, QStringList{packages.dataPath()});
    if (!PointerDriver::moveTo(kFarAway))
        qFatal("The pointer did not move");
    switch (way) {
    case Way::Window:
        makeWindow(items);
        break;
    case Way::View:
        makeView();
        break;
    case Way::Widget:
        makeWidget();
        break;
    case Way::Container:
        makeContainer();
        break;
    }
    settle();
}

Host::~Host()
{
    interface.reset();
    m_window.reset();
    m_outer.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void Host::makeWindow(const QByteArray& items)
{
    m_engine = std::make_unique<QQmlEngine>();
    QQmlComponent component(m_engine.get());
    component.setData(items, QUrl(u"Main.qml"_s));
    root = qobject_cast<QQuickItem*>(component.create());
    if (!root)
        qFatal("%s", qPrintable(component.errorString()));
    m_window = std::make_unique<QQuickWindow>();
    root->setParent(m_window->contentItem());
    root->setParentItem(m_window->contentItem());
    window = m_window.get();
}

void Host::makeView()
{
    auto view = std::make_unique<QQuickView>(QUrl::fromLocalFile(m_scene));
    window = view.get();
    root = view->rootObject();
    m_window = std::move(view);
}

void Host::makeWidget()
{
    auto outer = std::make_unique<QMainWindow>();
    auto* quick = new QQuickWidget(QUrl::fromLocalFile(m_scene), outer.get());
    quick->setObjectName(u"quick"_s);
    quick->setAttribute(Qt::WA_AcceptTouchEvents);
    quick->setFixedSize(kSceneSize);
    outer->setCentralWidget(quick);
    window = quick->quickWindow();
    root = quick->rootObject();
    widget = quick;
    m_outer = std::move(outer);
}

void Host::makeContainer()
{
    auto outer = std::make_unique<QMainWindow>();
    auto* view = new QQuickView(QUrl::fromLocalFile(m_scene));
    window = view;
    root = view->rootObject();
    QWidget* container = QWidget::createWindowContainer(view);
    container->setFixedSize(kSceneSize);
    outer->setCentralWidget(container);
    m_outer = std::move(outer);
}

void Host::settle()
{
    if (m_outer) {
        m_outer->setWindowFlag(Qt::FramelessWindowHint);
        if (!bringUp(m_outer.get()))
            qFatal("The window did not come up");
        // One without a frame is placed by the window manager as it comes up.
        m_outer->move(m_position);
        m_outer->activateWindow();
        if (!QTest::qWaitForWindowActive(m_outer.get()))
            qFatal("The window did not become active");
        if (!widget && !QTest::qWaitForWindowExposed(window))
            qFatal("The scene did not come up");
    } else {
        window->setFlag(Qt::FramelessWindowHint);
        window->setGeometry(QRect(m_position, kSceneSize));
        window->show();
        window->requestActivate();
        if (!QTest::qWaitForWindowActive(window))
            qFatal("The window did not become active");
    }
    if (widget)
        touch = [this] { return QTest::touchEvent(m_outer->windowHandle(), touchScreen()); };
    else
        touch = [this] { return QTest::touchEvent(window, touchScreen()); };
    // Once the window manager has it in its place.
    if (!QTest::qWaitFor(
            [this] { return rectOf(u"open"_s).topLeft() == m_position + QPoint(20, 20); },
            kPatienceMs))
        qFatal("The window is not in its place");
}

QQuickItem* Host::item(const QString& name) const
{
    auto* item = root->findChild<QQuickItem*>(name);
    if (!item)
        qFatal("There is no item %s", qPrintable(name));
    return item;
}

QRect Host::rectOf(const QString& name) const
{
    const QQuickItem* found = item(name);
    return QRectF(found->mapToGlobal(QPointF()), found->size()).toRect();
}

QPoint Host::centerOf(const QString& name) const
{
    return rectOf(name).center();
}

QPoint Host::fingerOn(const QString& name) const
{
    const QQuickItem* found = item(name);
    return found->mapToScene(QPointF(found->width() / 2, found->height() / 2)).toPoint();
}

void Host::hold(const QString& name)
{
    touch().press(0, fingerOn(name));
    QTRY_COMPARE_WITH_TIMEOUT(shownKey(), name, kPatienceMs);
}

void Host::lift(const QString& name)
{
    touch().release(0, fingerOn(name));
}

QQuickItem* Host::add(const QByteArray& qml)
{
    QQmlComponent component(qmlEngine(root));
    component.setData("import QtQuick\nimport com.larkspan.vidlets.host\n" + qml, QUrl());
    auto* added = qobject_cast<QQuickItem*>(component.create());
    if (!added)
        qFatal("%s", qPrintable(component.errorString()));
    added->setParent(root);
    added->setParentItem(root);
    return added;
}

QString Host::shownKey() const
{
    const VLWidget* popup = interface->manager()->widget();
    if (!popup || !popup->isVisible())
        return QString();
    const QQuickItem* scene = const_cast<VLWidget*>(popup)->view()->rootObject();
    return scene ? scene->property("shownKey").toString() : QString();
}

QRect Host::tip() const
{
    return interface->manager()->widget()->frameGeometry();
}

void addWays()
{
    QTest::addColumn<Way>("way");
    QTest::newRow("window") << Way::Window;
    QTest::newRow("view") << Way::View;
    QTest::newRow("widget") << Way::Widget;
    QTest::newRow("container") << Way::Container;
}

} // namespace

Q_DECLARE_METATYPE(Way)

class TestVLQuickHover : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void rest_showsTip_besideItem_data();
    void rest_showsTip_besideItem();
    void rest_showsTip_whenSceneIsOlderThanInterface();
    void rest_takesAsLongAsStyleSays();
    void rest_takesAsLongAsPreferencesSay();
    void rest_showsNothing_inWindowThatIsNotActive();
    void move_startsRestAnew();
    void press_hidesTip_data();
    void press_hidesTip();
    void press_endsRest();
    void key_hidesTip();
    void tip_goesWithItem_data();
    void tip_goesWithItem();
    void keyAt_findsItem_data();
    void keyAt_findsItem();
    void keyAt_findsUppermost_data();
    void keyAt_findsUppermost();
    void keyAt_givesPartThatIsSeen();
    void keyAt_givesPlaceOfTurnedItem();
    void keyAt_takesInWhatReachesBeyondItem();
    void keyAt_fallsBackToWidget_onlyWithoutKey();
    void key_ofWhatIsNoItem_isWarnedOf();
    void hold_showsTip_untilNextTouchElsewhere_data();
    void hold_showsTip_untilNextTouchElsewhere();
    void hold_keepsTip_whenPointerIsElsewhere();
    void hold_ofOtherItem_replacesTip();
    void hold_doesNotClick();
    void tap_showsNothing_andClicks();
    void hold_showsNothing_whenFingerMoves();
    void hold_showsNothing_withTwoFingers();
    void rest_replacesTipOfFinger();
    void interface_mayEnd_whileFingerIsHeld();
};

void TestVLQuickHover::rest_showsTip_besideItem_data()
{
    addWays();
}

void TestVLQuickHover::rest_showsTip_besideItem()
{
    QFETCH(const Way, way);
    Host host(way);
    const QRect open = host.rectOf(u"open"_s);
    QVERIFY(PointerDriver::moveTo(open.center()));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"open"_s, kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(host.interface->manager()->widget()->windowHandle()->isExposed(),
                             kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(!host.tip().intersects(open), kPatienceMs);
    QVERIFY(host.tip().adjusted(-40, -40, 40, 40).intersects(open));
    // Anywhere in the item it stays, and beyond it goes.
    QVERIFY(PointerDriver::moveTo(open.topLeft() + QPoint(2, 2)));
    QTest::qWait(kLongRestMs);
    QCOMPARE(host.shownKey(), u"open"_s);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"place"_s)));
    // A widget may have a tip of its own.
    QTRY_VERIFY_WITH_TIMEOUT(host.shownKey() != u"open"_s, kPatienceMs);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"save"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"save"_s, kPatienceMs);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"none"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), QString(), kPatienceMs);
}

void TestVLQuickHover::rest_showsTip_whenSceneIsOlderThanInterface()
{
    Host host(Way::View);
    host.interface.reset();
    host.interface =
        std::make_unique<VLHostInterface>(host.context, QStringList{host.packages.dataPath()});
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"open"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"open"_s, kPatienceMs);
}

void TestVLQuickHover::rest_takesAsLongAsStyleSays()
{
    Host host(Way::Window);
    const int delayMs = QApplication::style()->styleHint(QStyle::SH_ToolTip_WakeUpDelay);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"open"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"open"_s, kPatienceMs);
    QVERIFY2(double(timer.elapsed()) >= kEarliest * delayMs,
             qPrintable(QString::number(timer.elapsed())));
}

void TestVLQuickHover::rest_takesAsLongAsPreferencesSay()
{
    Host host(Way::Window);
    host.interface->preferences()->setShowDelay(kLongDelayMs);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"open"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"open"_s, kPatienceMs);
    QVERIFY2(double(timer.elapsed()) >= kEarliest * kLongDelayMs,
             qPrintable(QString::number(timer.elapsed())));
}

void TestVLQuickHover::rest_showsNothing_inWindowThatIsNotActive()
{
    Host host(Way::Window);
    QWidget other;
    other.setGeometry(20, 500, 100, 100);
    QVERIFY(bringUp(&other));
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"open"_s)));
    QTest::qWait(kLongRestMs);
    QCOMPARE(host.shownKey(), QString());
    // Unless the host wants them all the time.
    host.interface->context().set(ckAlwaysShowToolTips, true);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"save"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"save"_s, kPatienceMs);
}

void TestVLQuickHover::move_startsRestAnew()
{
    Host host(Way::Window);
    host.interface->preferences()->setShowDelay(kLongDelayMs);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"open"_s)));
    QElapsedTimer timer;
    timer.start();
    QTest::qWait(kLongDelayMs / 2);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"open"_s) + QPoint(5, 5)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"open"_s, kPatienceMs);
    QVERIFY(double(timer.elapsed()) >= kEarliest * (1.5 * kLongDelayMs));
}

void TestVLQuickHover::press_hidesTip_data()
{
    addWays();
}

void TestVLQuickHover::press_hidesTip()
{
    QFETCH(const Way, way);
    Host host(way);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"save"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"save"_s, kPatienceMs);
    QVERIFY(PointerDriver::click());
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), QString(), kPatienceMs);
    // It is the item's all the same.
    QTRY_COMPARE(host.root->property("clicks").toInt(), 1);
}

void TestVLQuickHover::press_endsRest()
{
    Host host(Way::Window);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"save"_s)));
    QTest::mouseMove(host.window, host.fingerOn(u"save"_s));
    QTest::mouseClick(host.window, Qt::LeftButton, Qt::NoModifier, host.fingerOn(u"save"_s));
    QTest::qWait(kLongRestMs);
    QCOMPARE(host.shownKey(), QString());
}

void TestVLQuickHover::key_hidesTip()
{
    Host host(Way::Window);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"save"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"save"_s, kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"Escape"_s));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), QString(), kPatienceMs);
}

void TestVLQuickHover::tip_goesWithItem_data()
{
    using Going = std::function<void(Host&)>;
    QTest::addColumn<Way>("way");
    QTest::addColumn<Going>("goes");
    const auto row = [](const char* title, const Going& goes) {
        QTest::addRow("%s, window", title) << Way::Window << goes;
        QTest::addRow("%s, widget", title) << Way::Widget << goes;
    };
    row("hidden", [](Host& host) { host.item(u"open"_s)->setVisible(false); });
    row("with its parent", [](Host& host) { host.root->setVisible(false); });
    row("deleted", [](Host& host) { delete host.item(u"open"_s); });
    row("taken out", [](Host& host) { host.item(u"open"_s)->setParentItem(nullptr); });
    QTest::newRow("window") << Way::Window << Going([](Host& host) { host.window->hide(); });
}

void TestVLQuickHover::tip_goesWithItem()
{
    using Going = std::function<void(Host&)>;
    QFETCH(const Way, way);
    QFETCH(const Going, goes);
    Host host(way);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"open"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"open"_s, kPatienceMs);
    goes(host);
    QTRY_COMPARE(host.shownKey(), QString());
}

void TestVLQuickHover::keyAt_findsItem_data()
{
    QTest::addColumn<Way>("way");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("zone");
    const auto row = [](const char* title, const QString& name, const QString& key,
                        const QString& zone) {
        QTest::addRow("%s, window", title) << Way::Window << name << key << zone;
        QTest::addRow("%s, widget", title) << Way::Widget << name << key << zone;
    };
    row("item", u"open"_s, u"open"_s, u"open"_s);
    row("child", u"label"_s, u"open"_s, u"open"_s);
    row("empty key", u"none"_s, QString(), QString());
    row("child with a key of its own", u"inner"_s, u"inner"_s, u"inner"_s);
    row("child with an empty key", u"exempt"_s, QString(), QString());
    row("child with an undefined key", u"undecided"_s, u"group"_s, u"group"_s);
}

void TestVLQuickHover::keyAt_findsItem()
{
    QFETCH(const Way, way);
    QFETCH(const QString, name);
    QFETCH(const QString, key);
    QFETCH(const QString, zone);
    const Host host(way);
    QRect found(1, 2, 3, 4);
    QObject* object = host.item(name);
    QCOMPARE(host.interface->keyAt(object, host.centerOf(name), &found), key);
    QCOMPARE(found, key.isEmpty() ? QRect() : host.rectOf(zone));
    QCOMPARE(host.interface->keyAt(object, host.centerOf(name), nullptr), key);
    if (host.widget) {
        QCOMPARE(host.interface->keyAt(host.widget, host.centerOf(name), &found), key);
        QCOMPARE(found, key.isEmpty() ? QRect() : host.rectOf(zone));
    }
}

void TestVLQuickHover::keyAt_findsUppermost_data()
{
    QTest::addColumn<QByteArray>("added");
    QTest::addColumn<QString>("key");
    const QByteArray place = "x: 20; y: 20; width: 100; height: 40;";
    const auto row = [&place](const char* title, const QByteArray& type, const QByteArray& more,
                              const QString& key) {
        QTest::newRow(title) << QByteArray(type + " { " + place + ' ' + more + " }") << key;
    };
    // "quick" is the widget's own.
    row("covered", "Rectangle", "", u"quick"_s);
    row("covered by another with a key", "Rectangle", "Vidlet.key: 'extra'", u"extra"_s);
    row("covered by a layer", "Item", "", u"open"_s);
    row("covered by a layer with a key", "Item", "Vidlet.key: 'extra'", u"extra"_s);
    row("covered by what hovers", "MouseArea", "hoverEnabled: true", u"quick"_s);
    row("covered by what only clicks", "MouseArea", "", u"open"_s);
    row("invisible", "Rectangle", "Vidlet.key: 'extra'; visible: false", u"open"_s);
    row("transparent", "Rectangle", "Vidlet.key: 'extra'; opacity: 0", u"open"_s);
    row("half transparent", "Rectangle", "Vidlet.key: 'extra'; opacity: 0.5", u"extra"_s);
    row("disabled", "Rectangle", "Vidlet.key: 'extra'; enabled: false", u"extra"_s);
    row("covered by what is disabled", "Rectangle", "enabled: false", u"quick"_s);
    row("below", "Rectangle", "Vidlet.key: 'extra'; z: -1", u"open"_s);
    row("clipped away", "Item",
        "Item { clip: true; width: 10; height: 40;"
        " Rectangle { Vidlet.key: 'extra'; width: 100; height: 40 } }",
        u"open"_s);
    row("reaching out", "Item",
        "Item { width: 10; height: 40;"
        " Rectangle { Vidlet.key: 'extra'; width: 100; height: 40 } }",
        u"extra"_s);
    row("in a parent of no opacity", "Item",
        "opacity: 0; Rectangle { Vidlet.key: 'extra'; width: 100; height: 40 }", u"open"_s);
    row("below its parent", "Rectangle",
        "Vidlet.key: 'open'; Rectangle { Vidlet.key: 'extra'; z: -1; anchors.fill: parent }",
        u"open"_s);
    row("of a higher z", "Item",
        "Rectangle { Vidlet.key: 'extra'; z: 2; width: 100; height: 40 }"
        "Rectangle { Vidlet.key: 'open'; z: 1; width: 100; height: 40 }",
        u"extra"_s);
}

void TestVLQuickHover::keyAt_findsUppermost()
{
    QFETCH(const QByteArray, added);
    QFETCH(const QString, key);
    Host host(Way::Widget);
    // Free of the child in its middle.
    const QPoint position = host.rectOf(u"open"_s).bottomRight() - QPoint(5, 5);
    host.add(added);
    QCOMPARE(host.interface->keyAt(host.widget, position, nullptr), key);
}

void TestVLQuickHover::keyAt_givesPartThatIsSeen()
{
    Host host(Way::Window);
    QQuickItem* frame = host.add(R"(Item {
        clip: true; x: 300; y: 200; width: 60; height: 50
        Rectangle { objectName: "long"; Vidlet.key: "extra"; x: -20; y: 10; width: 100; height: 100 }
    })");
    QRect zone;
    const QPoint position = frame->mapToGlobal(QPointF(30, 30)).toPoint();
    QCOMPARE(host.interface->keyAt(host.item(u"long"_s), position, &zone), u"extra"_s);
    QCOMPARE(zone, QRect(frame->mapToGlobal(QPointF(0, 10)).toPoint(), QSize(60, 40)));
}

void TestVLQuickHover::keyAt_givesPlaceOfTurnedItem()
{
    Host host(Way::Window);
    QQuickItem* turned = host.add(R"(Rectangle {
        Vidlet.key: "extra"; x: 100; y: 100; width: 100; height: 20; rotation: 90
    })");
    QRect zone;
    const QPoint position = turned->mapToGlobal(QPointF(50, 10)).toPoint();
    QCOMPARE(host.interface->keyAt(turned, position, &zone), u"extra"_s);
    const QPoint corner = host.window->contentItem()->mapToGlobal(QPointF(140, 60)).toPoint();
    QCOMPARE(zone, QRect(corner, QSize(20, 100)));
}

void TestVLQuickHover::keyAt_takesInWhatReachesBeyondItem()
{
    Host host(Way::Window);
    QQuickItem* group = host.add(R"(Item {
        Vidlet.key: "extra"; x: 300; y: 200
        Rectangle { objectName: "part"; width: 50; height: 30 }
    })");
    QRect zone;
    const QPoint position = group->mapToGlobal(QPointF(30, 20)).toPoint();
    QCOMPARE(host.interface->keyAt(host.item(u"part"_s), position, &zone), u"extra"_s);
    QCOMPARE(zone, host.rectOf(u"part"_s));
}

void TestVLQuickHover::keyAt_fallsBackToWidget_onlyWithoutKey()
{
    const Host host(Way::Widget);
    QRect zone;
    QCOMPARE(host.interface->keyAt(host.widget, host.centerOf(u"place"_s), &zone), u"quick"_s);
    QCOMPARE(zone, QRect(host.widget->mapToGlobal(QPoint()), host.widget->size()));
    QCOMPARE(host.interface->keyAt(host.widget, host.centerOf(u"none"_s), &zone), QString());
    QCOMPARE(zone, QRect());
}

void TestVLQuickHover::key_ofWhatIsNoItem_isWarnedOf()
{
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import QtQml\nimport com.larkspan.vidlets.host\n"
                      "QtObject { Vidlet.key: 'open' }",
                      QUrl(u"Main.qml"_s));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u".*Vidlet.key is for items.*"_s));
    const std::unique_ptr<QObject> object(component.create());
    QVERIFY(object);
}

void TestVLQuickHover::hold_showsTip_untilNextTouchElsewhere_data()
{
    addWays();
}

void TestVLQuickHover::hold_showsTip_untilNextTouchElsewhere()
{
    QFETCH(const Way, way);
    Host host(way);
    host.hold(u"open"_s);
    QCOMPARE(host.shownKey(), u"open"_s);
    QVERIFY(!host.tip().intersects(host.rectOf(u"open"_s)));
    host.lift(u"open"_s);
    QTest::qWait(kLongRestMs);
    QCOMPARE(host.shownKey(), u"open"_s);
    // In the tip the finger acts on that.
    QWindow* view = host.interface->manager()->widget()->view();
    QTest::touchEvent(view, touchScreen()).press(1, QPoint(5, 5));
    QTest::touchEvent(view, touchScreen()).release(1, QPoint(5, 5));
    QCOMPARE(host.shownKey(), u"open"_s);
    host.touch().press(0, host.fingerOn(u"place"_s));
    QTRY_COMPARE(host.shownKey(), QString());
    host.lift(u"place"_s);
}

void TestVLQuickHover::hold_keepsTip_whenPointerIsElsewhere()
{
    Host host(Way::View);
    host.hold(u"open"_s);
    host.lift(u"open"_s);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"place"_s)));
    QTest::qWait(kLongRestMs);
    QCOMPARE(host.shownKey(), u"open"_s);
}

void TestVLQuickHover::hold_ofOtherItem_replacesTip()
{
    Host host(Way::View);
    host.hold(u"open"_s);
    host.lift(u"open"_s);
    host.hold(u"save"_s);
    host.lift(u"save"_s);
    QCOMPARE(host.shownKey(), u"save"_s);
}

void TestVLQuickHover::hold_doesNotClick()
{
    Host host(Way::View);
    host.hold(u"save"_s);
    host.lift(u"save"_s);
    QTest::qWait(100);
    QCOMPARE(host.root->property("clicks").toInt(), 0);
    // What the finger does next is as ever.
    host.touch().press(0, host.fingerOn(u"save"_s));
    host.lift(u"save"_s);
    QTRY_COMPARE(host.root->property("clicks").toInt(), 1);
}

void TestVLQuickHover::tap_showsNothing_andClicks()
{
    Host host(Way::View);
    host.touch().press(0, host.fingerOn(u"save"_s));
    host.lift(u"save"_s);
    QTest::qWait(kLongRestMs);
    QCOMPARE(host.shownKey(), QString());
    QCOMPARE(host.root->property("clicks").toInt(), 1);
}

void TestVLQuickHover::hold_showsNothing_whenFingerMoves()
{
    Host host(Way::View);
    host.touch().press(0, host.fingerOn(u"open"_s));
    host.touch().move(0, host.fingerOn(u"open"_s) + QPoint(30, 0));
    QTest::qWait(kLongRestMs);
    QCOMPARE(host.shownKey(), QString());
    host.lift(u"open"_s);
}

void TestVLQuickHover::hold_showsNothing_withTwoFingers()
{
    Host host(Way::View);
    host.touch().press(0, host.fingerOn(u"open"_s));
    host.touch().stationary(0).press(1, host.fingerOn(u"save"_s));
    QTest::qWait(kLongRestMs);
    QCOMPARE(host.shownKey(), QString());
    host.touch().release(0, host.fingerOn(u"open"_s)).release(1, host.fingerOn(u"save"_s));
}

void TestVLQuickHover::rest_replacesTipOfFinger()
{
    Host host(Way::View);
    host.hold(u"open"_s);
    host.lift(u"open"_s);
    QVERIFY(PointerDriver::moveTo(host.centerOf(u"save"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), u"save"_s, kPatienceMs);
    QVERIFY(PointerDriver::moveTo(kFarAway));
    QTRY_COMPARE_WITH_TIMEOUT(host.shownKey(), QString(), kPatienceMs);
}

void TestVLQuickHover::interface_mayEnd_whileFingerIsHeld()
{
    Host host(Way::View);
    host.touch().press(0, host.fingerOn(u"open"_s));
    host.interface.reset();
    QTest::qWait(kLongRestMs);
    host.lift(u"open"_s);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLQuickHover>(argc, argv);
}

#include "tst_vlquickhover.moc"
