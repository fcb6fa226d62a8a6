// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HostStage.h"
#include "PopupStage.h"
#include "VidletsTest.h"
#include <Vidlets/VLManager.h>
#include <Vidlets/VLXmlElement.h>

#include <QAccessible>
#include <QAccessibleWidget>
#include <QAction>
#include <QHeaderView>
#include <QHelpEvent>
#include <QPointer>
#include <QQuickItem>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolBar>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

#include <memory>

#include <VidletsHost/VLAccess.h>
#include <private/qguiapplication_p.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr auto kContent = R"(<vidlets locale="en_US">
  <vidlet key="open" title="Open
      a %(thing)s" shortcut="Ctrl+O">
    <p><![CDATA[Choose
      a  <b>%(thing)s</b><br/>
      &amp; look.]]></p>
    <link>All about files</link>
  </vidlet>
  <vidlet key="save" title="Save" summary="Keeps all!">Writes the file.</vidlet>
  <vidlet key="bare"/>
</vidlets>
)";

constexpr auto kGerman = R"(<vidlets locale="de_DE">
  <vidlet key="open" title="Öffnen"/>
</vidlets>
)";

constexpr auto kSpokenOpen = "Open a file. Ctrl+O. Choose a file & look. All about files";

constexpr auto kScene = R"(import QtQuick

Item {
    id: root

    property string shownTitle: vidlet ? vidlet.attribute("title") : ""
    property int presses: 0

    width: 200
    height: 80

    Item {
        Text {
            objectName: "link"
            y: 10
            text: "a link"
            Accessible.role: Accessible.Link
            Accessible.name: text
            Accessible.onPressAction: ++root.presses
        }
    }

    Item {
        objectName: "group"
        y: 40
        width: 100
        height: 30
        Accessible.role: Accessible.Grouping
        Accessible.name: "group"

        Item {
            objectName: "button"
            width: 50
            height: 30
            Accessible.role: Accessible.Button
            Accessible.name: "inner"
        }
    }

    Item {
        visible: false
        Accessible.role: Accessible.Button
        Accessible.name: "unseen"
    }
}
)";

struct SentEvent
{
    QObject* object;
    QAccessible::Event type;
};

QList<SentEvent> sentEvents;

void keepEvent(QAccessibleEvent* event)
{
    sentEvents.append({event->object(), event->type()});
}

/// As if a screen reader were there.
QPlatformAccessibility* accessibility()
{
    return QGuiApplicationPrivate::platformIntegration()->accessibility();
}

/// How often @p type was sent for @p object since the last call.
int timesSent(const QObject* object, QAccessible::Event type)
{
    int result = 0;
    for (const SentEvent& event : std::as_const(sentEvents)) {
        if (event.object == object && event.type == type)
            ++result;
    }
    sentEvents.clear();
    return result;
}

/// As a pointer does that rests at @p place.
void pointAt(QWidget* widget, const QPoint& place)
{
    QHelpEvent event(QEvent::ToolTip, place, widget->mapToGlobal(place));
    QCoreApplication::sendEvent(widget, &event);
}

class LoudAccess : public VLAccess
{
public:
    using VLAccess::VLAccess;

    QString spokenText(const VLXmlElement& content) override
    {
        ++questions;
        return content.attribute(u"title"_s).toUpper();
    }

    int questions = 0;
};

class LoudInterface : public VLHostInterface
{
public:
    using VLHostInterface::VLHostInterface;

protected:
    VLAccess* createAccess() override
    {
        return new LoudAccess(this);
    }
};

/// The stage with the content of this test.
class SpokenStage : public HostStage
{
public:
    SpokenStage()
    {
        packages.write(u"tips.vidlets/ui/VidletUI.qml"_s, kScene);
        packages.writeControlFile(u"tips.vidlets"_s, u"en.xml"_s, kContent);
        packages.writeControlFile(u"tips.vidlets"_s, u"de.xml"_s, kGerman);
        build<VLHostInterface>();
        save = new QPushButton(u"Save"_s, window->centralWidget());
        save->setGeometry(10, 100, 120, 40);
        save->show();
        sentEvents.clear();
    }

    template <typename Interface> void build()
    {
        interface.reset();
        interface = std::make_unique<Interface>(context, QStringList{packages.dataPath()});
        interface->setGlobalProperty(u"thing"_s, u"file"_s);
        interface->access();
    }

    QAccessibleInterface* accessibleTip()
    {
        return QAccessible::queryAccessibleInterface(interface->manager()->widget());
    }

    QPointer<QPushButton> save;
};

} // namespace

class TestVLTipSpeaker : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void popup_isToolTip_withTitleAndText();
    void popup_isNoToolTip_whenPinned_data();
    void popup_isNoToolTip_whenPinned();
    void popup_leadsToItems_andBack();
    void popup_finds_itemAtPoint();
    void item_isPressed();
    void description_isSpokenText_whileTipIsUp();
    void description_isThatOfHost_whenItIsSetMeanwhile();
    void description_isEmptyAgain_whenHostClearsIt();
    void description_follows_keyOfSameControl();
    void description_follows_control();
    void description_follows_language();
    void description_staysThatOfHost_whenLanguageChanges();
    void description_ends_whenTipIsPinned();
    void description_ends_withAccess();
    void description_isLeft_whenThereIsNothingToSay();
    void description_ofItem_isThatOfView();
    void description_ofTab_isThatOfBar();
    void description_ofAction_isThatOfToolBarButton();
    void setEnabled_false_givesDescriptionBack();
    void access_describesTip_thatIsUpAlready();
    void spokenText_isAskedOfHost();
    void tip_withoutControl_isNamed();
    void controlDies_whileDescribed();
};

void TestVLTipSpeaker::initTestCase()
{
    QAccessible::installUpdateHandler(keepEvent);
    accessibility()->setActive(true);
}

void TestVLTipSpeaker::cleanupTestCase()
{
    accessibility()->setActive(false);
    QAccessible::installUpdateHandler(nullptr);
}

void TestVLTipSpeaker::popup_isToolTip_withTitleAndText()
{
    SpokenStage stage;
    VLWidget* tip = stage.showTip();
    QAccessibleInterface* popup = stage.accessibleTip();
    QVERIFY(popup);
    QCOMPARE(popup->role(), QAccessible::ToolTip);
    QCOMPARE(popup->text(QAccessible::Name), u"Open a file"_s);
    QCOMPARE(popup->text(QAccessible::Description), u"Choose a file & look. All about files"_s);
    QVERIFY(timesSent(tip, QAccessible::NameChanged) > 0);
    stage.showTip(u"save"_s);
    QCOMPARE(popup->text(QAccessible::Name), u"Save"_s);
    QCOMPARE(popup->text(QAccessible::Description), u"Keeps all! Writes the file."_s);
    QVERIFY(timesSent(tip, QAccessible::DescriptionChanged) > 0);
}

void TestVLTipSpeaker::popup_isNoToolTip_whenPinned_data()
{
    QTest::addColumn<Qt::DockWidgetArea>("area");
    QTest::addColumn<QAccessible::Role>("role");
    QTest::newRow("window") << Qt::NoDockWidgetArea << QAccessible::Window;
    QTest::newRow("dock") << Qt::RightDockWidgetArea << QAccessible::Grouping;
}

void TestVLTipSpeaker::popup_isNoToolTip_whenPinned()
{
    QFETCH(const Qt::DockWidgetArea, area);
    QFETCH(const QAccessible::Role, role);
    SpokenStage stage;
    stage.interface->setPinnedArea(area);
    VLWidget* tip = stage.pin();
    QTRY_VERIFY(tip->isVisible());
    QAccessibleInterface* pinned = QAccessible::queryAccessibleInterface(tip);
    QCOMPARE(pinned->role(), role);
    QCOMPARE(pinned->text(QAccessible::Name), u"Open a file"_s);
    QCOMPARE(pinned->childCount(), 1);
}

void TestVLTipSpeaker::popup_leadsToItems_andBack()
{
    SpokenStage stage;
    VLWidget* tip = stage.showTip();
    QAccessibleInterface* popup = stage.accessibleTip();
    QCOMPARE(popup->childCount(), 1);
    QAccessibleInterface* scene = popup->child(0);
    QVERIFY(scene);
    QCOMPARE(scene->object(), tip->view());
    QCOMPARE(popup->indexOfChild(scene), 0);
    QCOMPARE(popup->indexOfChild(popup), -1);
    QCOMPARE(scene->parent(), popup);
    QCOMPARE(scene->window(), tip->view());
    QVERIFY(!scene->state().invisible);
    QCOMPARE(scene->rect().size(), tip->view()->size());
    QCOMPARE(scene->childCount(), 2);
    QVERIFY(!scene->child(2));
    QAccessibleInterface* link = scene->child(0);
    QCOMPARE(link->role(), QAccessible::Link);
    QCOMPARE(link->text(QAccessible::Name), u"a link"_s);
    QCOMPARE(link->parent(), scene);
    QCOMPARE(scene->indexOfChild(scene->child(1)), 1);
    QCOMPARE(scene->child(1)->childCount(), 1);
    QCOMPARE(scene->child(1)->child(0)->text(QAccessible::Name), u"inner"_s);
}

void TestVLTipSpeaker::popup_finds_itemAtPoint()
{
    SpokenStage stage;
    VLWidget* tip = stage.showTip();
    QAccessibleInterface* popup = stage.accessibleTip();
    QTRY_COMPARE(tip->size(), QSize(201, 81));
    const QPoint onButton = tip->mapToGlobal(QPoint(20, 55));
    QAccessibleInterface* scene = popup->childAt(onButton.x(), onButton.y());
    QCOMPARE(scene, popup->child(0));
    QCOMPARE(scene->childAt(onButton.x(), onButton.y())->text(QAccessible::Name), u"inner"_s);
    const QPoint onGround = tip->mapToGlobal(QPoint(190, 5));
    QVERIFY(!scene->childAt(onGround.x(), onGround.y()));
    QVERIFY(!popup->childAt(onGround.x() + 500, onGround.y()));
    auto* link = tip->view()->rootObject()->findChild<QQuickItem*>(u"link"_s);
    link->forceActiveFocus();
    QVERIFY(!popup->focusChild());
    // A request that comes while the window manager is busy with another window gets lost.
    QTRY_VERIFY((tip->view()->requestActivate(), popup->focusChild()));
    QCOMPARE(popup->focusChild()->object(), link);
}

void TestVLTipSpeaker::item_isPressed()
{
    SpokenStage stage;
    VLWidget* tip = stage.showTip();
    QAccessibleInterface* link = stage.accessibleTip()->child(0)->child(0);
    QVERIFY(link->actionInterface());
    link->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(tip->view()->rootObject()->property("presses").toInt(), 1);
}

void TestVLTipSpeaker::description_isSpokenText_whileTipIsUp()
{
    SpokenStage stage;
    stage.open->setAccessibleDescription(u"Old"_s);
    sentEvents.clear();
    stage.showTip();
    QCOMPARE(stage.open->accessibleDescription(), QLatin1String(kSpokenOpen));
    QCOMPARE(timesSent(stage.open, QAccessible::DescriptionChanged), 1);
    QAccessibleInterface* button = QAccessible::queryAccessibleInterface(stage.open);
    QCOMPARE(button->text(QAccessible::Description), QLatin1String(kSpokenOpen));
    stage.interface->hideTip();
    QCOMPARE(stage.open->accessibleDescription(), u"Old"_s);
    QCOMPARE(timesSent(stage.open, QAccessible::DescriptionChanged), 1);
}

void TestVLTipSpeaker::description_isThatOfHost_whenItIsSetMeanwhile()
{
    SpokenStage stage;
    stage.open->setAccessibleDescription(u"Old"_s);
    stage.showTip();
    stage.open->setAccessibleDescription(u"New"_s);
    stage.showTip(); // As each event for the tip does that is up.
    QCOMPARE(stage.open->accessibleDescription(), u"New"_s);
    stage.interface->hideTip();
    QCOMPARE(stage.open->accessibleDescription(), u"New"_s);
}

void TestVLTipSpeaker::description_isEmptyAgain_whenHostClearsIt()
{
    SpokenStage stage;
    stage.open->setAccessibleDescription(u"Old"_s);
    stage.showTip();
    stage.open->setAccessibleDescription(QString());
    stage.interface->hideTip();
    QCOMPARE(stage.open->accessibleDescription(), QString());
}

void TestVLTipSpeaker::description_follows_keyOfSameControl()
{
    SpokenStage stage;
    stage.open->setAccessibleDescription(u"Old"_s);
    stage.showTip();
    stage.showTip(u"save"_s);
    QCOMPARE(stage.open->accessibleDescription(), u"Save. Keeps all! Writes the file."_s);
    stage.interface->hideTip();
    QCOMPARE(stage.open->accessibleDescription(), u"Old"_s);
}

void TestVLTipSpeaker::description_follows_control()
{
    SpokenStage stage;
    stage.open->setAccessibleDescription(u"Old"_s);
    stage.showTip();
    stage.showTip(u"open"_s, stage.save);
    QCOMPARE(stage.open->accessibleDescription(), u"Old"_s);
    QCOMPARE(stage.save->accessibleDescription(), QLatin1String(kSpokenOpen));
    stage.interface->hideTip();
    QCOMPARE(stage.save->accessibleDescription(), QString());
}

void TestVLTipSpeaker::description_follows_language()
{
    SpokenStage stage;
    stage.showTip();
    stage.interface->context().set(ckLocale, u"de_DE"_s);
    QTRY_COMPARE(stage.open->accessibleDescription(), u"Öffnen"_s);
    stage.interface->hideTip();
    QCOMPARE(stage.open->accessibleDescription(), QString());
}

void TestVLTipSpeaker::description_staysThatOfHost_whenLanguageChanges()
{
    SpokenStage stage;
    stage.showTip();
    stage.open->setAccessibleDescription(u"New"_s);
    stage.interface->context().set(ckLocale, u"de_DE"_s);
    QTRY_COMPARE(stage.accessibleTip()->text(QAccessible::Name), u"Öffnen"_s);
    QCOMPARE(stage.open->accessibleDescription(), u"New"_s);
    stage.interface->hideTip();
    QCOMPARE(stage.open->accessibleDescription(), u"New"_s);
}

void TestVLTipSpeaker::description_ends_whenTipIsPinned()
{
    SpokenStage stage;
    stage.open->setAccessibleDescription(u"Old"_s);
    stage.showTip();
    QCOMPARE(stage.open->accessibleDescription(), QLatin1String(kSpokenOpen));
    stage.interface->manager()->widget()->view()->setReserved(true);
    QCOMPARE(stage.open->accessibleDescription(), u"Old"_s);
}

void TestVLTipSpeaker::description_ends_withAccess()
{
    SpokenStage stage;
    stage.open->setAccessibleDescription(u"Old"_s);
    stage.showTip();
    stage.interface.reset();
    QCOMPARE(stage.open->accessibleDescription(), u"Old"_s);
}

void TestVLTipSpeaker::description_isLeft_whenThereIsNothingToSay()
{
    SpokenStage stage;
    stage.open->setAccessibleDescription(u"Old"_s);
    stage.showTip(u"bare"_s);
    QCOMPARE(stage.open->accessibleDescription(), u"Old"_s);
    stage.open->setAccessibleDescription(QString());
    stage.interface->hideTip();
    QCOMPARE(stage.open->accessibleDescription(), QString());
}

void TestVLTipSpeaker::description_ofItem_isThatOfView()
{
    SpokenStage stage;
    QTableWidget table(2, 2);
    auto* cell = new QTableWidgetItem(u"cell"_s);
    cell->setData(KeyRole, u"open"_s);
    table.setItem(1, 1, cell);
    table.setGeometry(200, 300, 300, 200);
    QVERIFY(bringUp(&table));
    const QPoint inside = table.visualItemRect(cell).center();
    pointAt(table.viewport(), inside);
    QCOMPARE(table.accessibleDescription(), QLatin1String(kSpokenOpen));
    stage.interface->hideTip();
    QCOMPARE(table.accessibleDescription(), QString());
    table.horizontalHeader()->setObjectName(u"head"_s);
    auto* title = new QTableWidgetItem(u"title"_s);
    title->setData(KeyRole, u"save"_s);
    table.setHorizontalHeaderItem(0, title);
    pointAt(table.horizontalHeader()->viewport(), QPoint(5, 5));
    QCOMPARE(table.accessibleDescription(), u"Save. Keeps all! Writes the file."_s);
    stage.interface->hideTip();
}

void TestVLTipSpeaker::description_ofTab_isThatOfBar()
{
    SpokenStage stage;
    QTabWidget tabs;
    tabs.addTab(new QWidget, u"one"_s);
    tabs.addTab(new QWidget, u"two"_s);
    tabs.tabBar()->setTabData(1, u"save"_s);
    tabs.setGeometry(200, 300, 300, 200);
    QVERIFY(bringUp(&tabs));
    pointAt(tabs.tabBar(), tabs.tabBar()->tabRect(1).center());
    QCOMPARE(tabs.tabBar()->accessibleDescription(), u"Save. Keeps all! Writes the file."_s);
    stage.interface->hideTip();
    QCOMPARE(tabs.tabBar()->accessibleDescription(), QString());
}

void TestVLTipSpeaker::description_ofAction_isThatOfToolBarButton()
{
    SpokenStage stage;
    QToolBar* bar = stage.window->addToolBar(u"bar"_s);
    QAction* action = bar->addAction(u"Save"_s);
    action->setObjectName(u"save"_s);
    QWidget* button = bar->widgetForAction(action);
    QTRY_VERIFY(button->isVisible());
    pointAt(button, button->rect().center());
    QCOMPARE(button->accessibleDescription(), u"Save. Keeps all! Writes the file."_s);
    stage.interface->hideTip();
}

void TestVLTipSpeaker::setEnabled_false_givesDescriptionBack()
{
    SpokenStage stage;
    stage.open->setAccessibleDescription(u"Old"_s);
    stage.showTip();
    stage.interface->access()->setEnabled(false);
    QCOMPARE(stage.open->accessibleDescription(), u"Old"_s);
    stage.showTip(u"save"_s);
    QCOMPARE(stage.open->accessibleDescription(), u"Old"_s);
    stage.interface->access()->setEnabled(true);
    QCOMPARE(stage.open->accessibleDescription(), u"Save. Keeps all! Writes the file."_s);
}

void TestVLTipSpeaker::access_describesTip_thatIsUpAlready()
{
    SpokenStage stage;
    stage.interface.reset();
    stage.interface =
        std::make_unique<LoudInterface>(stage.context, QStringList{stage.packages.dataPath()});
    stage.interface->show(u"save"_s, QPoint(300, 200), stage.open);
    QCOMPARE(stage.open->accessibleDescription(), QString());
    stage.interface->access();
    QTRY_COMPARE(stage.open->accessibleDescription(), u"SAVE"_s);
}

void TestVLTipSpeaker::spokenText_isAskedOfHost()
{
    SpokenStage stage;
    stage.build<LoudInterface>();
    stage.showTip(u"save"_s);
    QCOMPARE(stage.open->accessibleDescription(), u"SAVE"_s);
    QVERIFY(dynamic_cast<LoudAccess*>(stage.interface->access())->questions > 0);
}

void TestVLTipSpeaker::tip_withoutControl_isNamed()
{
    SpokenStage stage;
    QVERIFY(stage.interface->show(u"save"_s, QPoint(300, 200), nullptr));
    QCOMPARE(stage.accessibleTip()->text(QAccessible::Name), u"Save"_s);
    stage.interface->hideTip();
}

void TestVLTipSpeaker::controlDies_whileDescribed()
{
    SpokenStage stage;
    stage.showTip(u"open"_s, stage.save);
    delete stage.save;
    QTRY_VERIFY(!stage.interface->manager()->widget()->isVisible());
    stage.showTip();
    QCOMPARE(stage.open->accessibleDescription(), QLatin1String(kSpokenOpen));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLTipSpeaker>(argc, argv);
}

#include "tst_vltipspeaker.moc"
