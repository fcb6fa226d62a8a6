// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HostStage.h"
#include "VidletsTest.h"
#include <Vidlets/VLManager.h>

#include <QHelpEvent>
#include <QProperty>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStyle>

#include <memory>

#include <VidletsHost/VLPreferences.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 15000;

/// A scene as a package has it that is also for hosts without the kit.
constexpr auto kCarefulScene = R"(import QtQuick

Rectangle {
    id: root

    property string shownTitle: vidlet ? vidlet.attribute("title") : ""
    property QtObject preferences: null
    property bool isStill: preferences ? preferences.reducedMotion : false
    property real scale_: preferences ? preferences.textScale : 1

    width: 120
    height: 60

    Component.onCompleted: {
        const component = Qt.createComponent("HostPreferences.qml");
        if (component.status === Component.Ready)
            preferences = component.createObject(root);
    }
}
)";

constexpr auto kHostPreferences = R"(import QtQml
import com.larkspan.vidlets.host 1.0

QtObject {
    readonly property bool reducedMotion: VidletPreferences.reducedMotion
    readonly property real textScale: VidletPreferences.textScale
}
)";

constexpr auto kReader = R"(import QtQml
import com.larkspan.vidlets.host

QtObject {
    property bool reducedMotion: VidletPreferences.reducedMotion
    property real textScale: VidletPreferences.textScale
    property bool highContrast: VidletPreferences.highContrast
    property int showDelay: VidletPreferences.showDelay

    function write() { VidletPreferences.textScale = 3 }
}
)";

std::unique_ptr<QObject> make(QQmlEngine& engine, const QByteArray& qml)
{
    QQmlComponent component(&engine);
    component.setData(qml, QUrl(u"scene.qml"_s));
    std::unique_ptr<QObject> object(component.create());
    if (!object)
        qFatal("%s", qPrintable(component.errorString()));
    return object;
}

QVariant shown(VLWidget* tip, const char* property)
{
    const QQuickItem* scene = tip->view()->rootObject();
    return scene ? scene->property(property) : QVariant();
}

void askForTip(QWidget* control)
{
    const QPoint position = control->rect().center();
    QHelpEvent event(QEvent::ToolTip, position, control->mapToGlobal(position));
    QCoreApplication::sendEvent(control, &event);
}

bool isTipUp(const HostStage& stage)
{
    const VLWidget* tip = stage.interface->manager()->widget();
    return tip && tip->isVisible();
}

} // namespace

class TestVLPreferences : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void preferences_askForNothing_byDefault();
    void setters_tellOfChanges_once();
    void textScale_staysWithinLimits();
    void properties_areBindable();
    void scene_obeysPreferencesOfItsInterface();
    void scene_worksWithoutModule();
    void singleton_followsPreferences();
    void singleton_isReadOnly();
    void singleton_comesBeforeInterface_andOutlivesIt();
    void showDelay_holdsTipsOfWidgetsBack();
    void showDelay_letsGo_whenControlIsHidden();
    void showDelay_isForgotten_atPress();
    void showDelay_shorterThanStyle_changesNothing();
    void showDelay_doesNotHoldBackOtherToolTips();
};

void TestVLPreferences::preferences_askForNothing_byDefault()
{
    const VLPreferences preferences;
    QVERIFY(!preferences.reducedMotion());
    QCOMPARE(preferences.textScale(), 1.0);
    QVERIFY(!preferences.highContrast());
    QCOMPARE(preferences.showDelay(), -1);
}

void TestVLPreferences::setters_tellOfChanges_once()
{
    VLPreferences preferences;
    QSignalSpy motion(&preferences, &VLPreferences::reducedMotionChanged);
    QSignalSpy scale(&preferences, &VLPreferences::textScaleChanged);
    QSignalSpy contrast(&preferences, &VLPreferences::highContrastChanged);
    QSignalSpy delay(&preferences, &VLPreferences::showDelayChanged);
    for (int i = 0; i < 2; ++i) {
        preferences.setReducedMotion(true);
        preferences.setTextScale(2.0);
        preferences.setHighContrast(true);
        preferences.setShowDelay(100);
    }
    QCOMPARE(motion.size(), 1);
    QCOMPARE(scale.size(), 1);
    QCOMPARE(contrast.size(), 1);
    QCOMPARE(delay.size(), 1);
}

void TestVLPreferences::textScale_staysWithinLimits()
{
    VLPreferences preferences;
    preferences.setTextScale(0.1);
    QCOMPARE(preferences.textScale(), 0.5);
    preferences.setTextScale(10.0);
    QCOMPARE(preferences.textScale(), 4.0);
    preferences.setShowDelay(-100);
    QCOMPARE(preferences.showDelay(), -1);
}

void TestVLPreferences::properties_areBindable()
{
    VLPreferences preferences;
    QProperty<bool> host(false);
    preferences.bindableReducedMotion().setBinding([&host] { return host.value(); });
    host = true;
    QVERIFY(preferences.reducedMotion());
}

void TestVLPreferences::scene_obeysPreferencesOfItsInterface()
{
    HostStage stage;
    // One that was made before.
    VLContext context;
    VLHostInterface other(context, {});
    other.preferences()->setTextScale(3.0);
    stage.packages.write(u"tips.vidlets/ui/VidletUI.qml"_s, kCarefulScene);
    stage.packages.write(u"tips.vidlets/ui/HostPreferences.qml"_s, kHostPreferences);
    stage.interface->preferences()->setTextScale(2.0);
    VLWidget* tip = stage.showTip();
    QTRY_COMPARE(shown(tip, "scale_"), QVariant(2.0));
    QCOMPARE(shown(tip, "isStill"), QVariant(false));
    stage.interface->preferences()->setReducedMotion(true);
    QCOMPARE(shown(tip, "isStill"), QVariant(true));
}

void TestVLPreferences::scene_worksWithoutModule()
{
    HostStage stage;
    // A module that is not there, as ours is not in a host without the kit.
    stage.packages.write(u"tips.vidlets/ui/VidletUI.qml"_s, kCarefulScene);
    stage.packages.write(u"tips.vidlets/ui/HostPreferences.qml"_s,
                         QByteArray(kHostPreferences).replace("vidlets.host", "vidlets.none"));
    QStringList messages;
    connect(stage.interface.get(), &VLHostInterface::messageRaised, this,
            [&messages](VLMessageType /*type*/, const QString& text) { messages += text; });
    VLWidget* tip = stage.showTip();
    QTRY_COMPARE(shown(tip, "shownTitle"), QVariant(u"Open"_s));
    QCOMPARE(shown(tip, "isStill"), QVariant(false));
    QCOMPARE(messages, QStringList());
}

void TestVLPreferences::singleton_followsPreferences()
{
    VLContext context;
    VLHostInterface interface(context, {});
    interface.preferences()->setHighContrast(true);
    QQmlEngine engine;
    const auto reader = make(engine, kReader);
    QCOMPARE(reader->property("highContrast"), QVariant(true));
    QCOMPARE(reader->property("showDelay"), QVariant(-1));
    interface.preferences()->setShowDelay(50);
    interface.preferences()->setTextScale(1.5);
    QCOMPARE(reader->property("showDelay"), QVariant(50));
    QCOMPARE(reader->property("textScale"), QVariant(1.5));
}

void TestVLPreferences::singleton_isReadOnly()
{
    VLContext context;
    VLHostInterface interface(context, {});
    QQmlEngine engine;
    const auto reader = make(engine, kReader);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u".*read-only property.*"_s));
    QMetaObject::invokeMethod(reader.get(), "write");
    QCOMPARE(interface.preferences()->textScale(), 1.0);
    QCOMPARE(reader->property("textScale"), QVariant(1.0));
}

void TestVLPreferences::singleton_comesBeforeInterface_andOutlivesIt()
{
    QQmlEngine engine;
    const auto reader = make(engine, kReader);
    QCOMPARE(reader->property("textScale"), QVariant(1.0));
    VLContext context;
    auto interface = std::make_unique<VLHostInterface>(context, QStringList());
    interface->preferences()->setTextScale(2.0);
    QCOMPARE(reader->property("textScale"), QVariant(2.0));
    interface.reset();
    QCOMPARE(reader->property("textScale"), QVariant(2.0));
    interface = std::make_unique<VLHostInterface>(context, QStringList());
    QCOMPARE(reader->property("textScale"), QVariant(1.0));
}

void TestVLPreferences::showDelay_holdsTipsOfWidgetsBack()
{
    HostStage stage;
    const int styleMs = stage.open->style()->styleHint(QStyle::SH_ToolTip_WakeUpDelay);
    stage.interface->preferences()->setShowDelay(styleMs + 300);
    // Qt asks when the style's time is over.
    QTest::mouseMove(stage.open, QPoint(30, 20));
    askForTip(stage.open);
    QVERIFY(!isTipUp(stage));
    QTRY_VERIFY_WITH_TIMEOUT(isTipUp(stage), kPatienceMs);
}

void TestVLPreferences::showDelay_letsGo_whenControlIsHidden()
{
    HostStage stage;
    stage.interface->preferences()->setShowDelay(1000);
    QTest::mouseMove(stage.open, QPoint(30, 20));
    askForTip(stage.open);
    delete stage.open.data();
    QTest::qWait(1300);
    QVERIFY(!isTipUp(stage));
}

void TestVLPreferences::showDelay_isForgotten_atPress()
{
    HostStage stage;
    stage.interface->preferences()->setShowDelay(1000);
    QTest::mouseMove(stage.open, QPoint(30, 20));
    askForTip(stage.open);
    QTest::mouseClick(stage.open, Qt::LeftButton, Qt::NoModifier, QPoint(30, 20));
    QTest::qWait(1300);
    QVERIFY(!isTipUp(stage));
}

void TestVLPreferences::showDelay_shorterThanStyle_changesNothing()
{
    HostStage stage;
    stage.interface->preferences()->setShowDelay(0);
    askForTip(stage.open);
    QTRY_VERIFY_WITH_TIMEOUT(isTipUp(stage), kPatienceMs);
}

void TestVLPreferences::showDelay_doesNotHoldBackOtherToolTips()
{
    HostStage stage;
    stage.interface->preferences()->setShowDelay(5000);
    stage.open->setObjectName(QString());
    QTest::mouseMove(stage.open, QPoint(30, 20));
    const QPoint position = stage.open->rect().center();
    QHelpEvent event(QEvent::ToolTip, position, stage.open->mapToGlobal(position));
    // A widget without a tooltip refuses the request, which it has to see for that.
    QCoreApplication::sendEvent(stage.open, &event);
    QVERIFY(!event.isAccepted());
    // One that has a name, but no content, is no other.
    stage.open->setObjectName(u"unknown"_s);
    event.accept();
    QCoreApplication::sendEvent(stage.open, &event);
    QVERIFY(!event.isAccepted());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLPreferences>(argc, argv);
}

#include "tst_vlpreferences.moc"
