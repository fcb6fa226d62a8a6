// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PopupStage.h"
#include "VidletsTest.h"
#include "XServer.h"

#include <QCursor>
#include <QDir>
#include <QFile>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QQmlEngine>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <qpa/qplatformwindow.h>
#include <qpa/qwindowsysteminterface.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kEndlessMs = 600000;
const QPoint kPointer(400, 300);
const QPoint kTipPosition(435, 330);

QString openKey()
{
    return u"open"_s;
}

QString saveKey()
{
    return u"save"_s;
}

QString unknownKey()
{
    return u"unknown"_s;
}

/// Counts the events of one type that reach an object.
class EventCounter : public QObject
{
public:
    EventCounter(QObject* watched, QEvent::Type type)
        : m_type(type)
    {
        watched->installEventFilter(this);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == m_type)
            ++count;
        return QObject::eventFilter(object, event);
    }

    int count = 0;

private:
    QEvent::Type m_type;
};

// One at a time: events share the point of their device.
QMouseEvent mouseEvent(QEvent::Type type, const QPointF& globalPosition)
{
    return QMouseEvent(type, QPointF(), globalPosition, Qt::LeftButton, Qt::LeftButton,
                       Qt::NoModifier);
}

/// Holds keyboard modifiers down for the length of a scope.
class HeldModifiers
{
public:
    HeldModifiers(QWidget* widget, Qt::KeyboardModifiers modifiers)
        : m_widget(widget)
    {
        QTest::keyEvent(QTest::Press, widget, Qt::Key_F35, modifiers);
    }
    ~HeldModifiers()
    {
        QTest::keyEvent(QTest::Release, m_widget, Qt::Key_F35, Qt::NoModifier);
    }

private:
    Q_DISABLE_COPY_MOVE(HeldModifiers)

    QWidget* m_widget;
};

/// A tree of two with the tip below its root, as an index hands it out.
IndexAnswer newAnswer(const QString& key, const QString& path = u"/"_s)
{
    auto* root = new VLXmlElement;
    root->setTagName(u"vidlets"_s);
    VLXmlElement* element = PopupStage::newContent(key);
    element->setParent(root);
    return {element, root, path, 1};
}

/// The window system says that @p window is at @p geometry, whatever was asked for.
void report(QWindow* window, const QRect& geometry)
{
    window->handle()->QPlatformWindow::setGeometry(geometry);
    QWindowSystemInterface::handleGeometryChange<QWindowSystemInterface::SynchronousDelivery>(
        window, geometry);
}

} // namespace

class TestShow : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    // The gates
    void show_sendsMessage_evenWhenDisabled();
    void show_refusesWithoutPopup_whenDisabled();
    void show_comparesModifiersExactly_data();
    void show_comparesModifiersExactly();

    // The popup
    void show_makesPopup_withoutContent();
    void initializeTooltipWindow_composesPopup();
    void initializeTooltipWindow_doesNothing_whenPopupExists();

    // Retrieval
    void show_showsContentBesidePointer();
    void show_worksWithoutReference();
    void show_treatsReferenceThatIsNoWidgetAsNone();
    void show_leavesTipAlone_whenKeyIsOnShow();
    void show_retrievesAgain_whenKeyIsNoLongerOnShow();
    void show_triesBothLocales_whenKeyIsUnknown();
    void show_looksUpEmptyKey();
    void show_returnsFalse_whenUnknownAndHidden();

    // Fallback
    void show_showsFallback_inFallbackLocaleAlone();
    void show_triesFallbackInDefaultLocale();
    void show_looksForFallback_unlessNull_data();
    void show_looksForFallback_unlessNull();
    void show_keepsOpenFallback();

    // Content
    void show_hasNothingToShow_whenRootIsNull();
    void show_leavesTipAlone_whenElementIsOnShow();
    void show_letsSceneGoBeforeOldTreeDies();
    void show_deletesOldElement_whenItHasNoParent();
    void show_doesNotHideBetweenTwoTips();
    void show_endsAtItsSize_whenToldOfTheOneBefore();
    void show_yieldsToWindowSystem_thatInsistsOnSize();
    void show_goesToOrigin_soonAfterAnotherTip_data();
    void show_goesToOrigin_soonAfterAnotherTip();
    void show_asksHostForShortcut_data();
    void show_asksHostForShortcut();
    void show_keepsShortcut_whenHostGivesEmptyOne();
    void show_asksForShortcutOfRequestedKey_whenFallbackIsShown();
    void show_climbsToPackageRoot_data();
    void show_climbsToPackageRoot();
    void show_givesCanonicalPackageRoot();
    void show_raisesPopup();

    // Nothing to show, popup visible
    void show_decidesOverOpenTip_whenKeyIsUnknown_data();
    void show_decidesOverOpenTip_whenKeyIsUnknown();
    void show_hidesOpenTipAtOnce_withoutFade();

    // Events
    void eventFilter_isHarmless_withoutPopup_data();
    void eventFilter_isHarmless_withoutPopup();
    void eventFilter_handlesEventTypes_data();
    void eventFilter_handlesEventTypes();
    void eventFilter_asksForTip_onToolTip();
    void eventFilter_swallowsToolTip_onlyWhenDealtWith();
    void eventFilter_hidesStayOpenPopup_onApplicationDeactivate();
    void mouseMoveEventFilter_followsPointer_whenVisible();
    void mouseMoveEventFilter_doesNothing_whenHidden();
    void mouseMoveEventFilter_roundsHalvesAwayFromZero_data();
    void mouseMoveEventFilter_roundsHalvesAwayFromZero();
    void mouseButtonEventFilter_hidesOnlyOutside_data();
    void mouseButtonEventFilter_hidesOnlyOutside();
    void mouseButtonEventFilter_hidesAtOnce_duringFade();
    void mouseButtonEventFilter_activatesPopup_whenStayOpen();
    void filter_isInstalledOnApplication_whenSettingAsksForIt_data();
    void filter_isInstalledOnApplication_whenSettingAsksForIt();
};

void TestShow::show_sendsMessage_evenWhenDisabled()
{
    PopupStage stage({{ckMessageLevel, VLMessageInformation}, {ckDisabled, true}});
    stage.interface.recordedMessages.clear();
    stage.manager->show(openKey(), kPointer, &stage.control);
    QCOMPARE(stage.interface.messages(VLMessageInformation),
             QStringList{u"looking for Vidlet for key:open"_s});
}

void TestShow::show_refusesWithoutPopup_whenDisabled()
{
    PopupStage stage({{ckDisabled, true}});
    QVERIFY(!stage.manager->show(openKey(), kPointer, &stage.control));
    QVERIFY(!stage.manager->widget());
    QVERIFY(stage.index.requests.isEmpty());

    stage.set(ckDisabled, false);
    QVERIFY(stage.manager->show(openKey(), kPointer, &stage.control));
}

void TestShow::show_comparesModifiersExactly_data()
{
    QTest::addColumn<Qt::KeyboardModifiers>("required");
    QTest::addColumn<Qt::KeyboardModifiers>("held");
    QTest::addColumn<bool>("shown");
    const Qt::KeyboardModifiers none;
    const Qt::KeyboardModifiers both = Qt::ShiftModifier | Qt::ControlModifier;
    QTest::newRow("none required") << none << none << true;
    QTest::newRow("none required, one held")
        << none << Qt::KeyboardModifiers(Qt::ShiftModifier) << true;
    QTest::newRow("not held") << Qt::KeyboardModifiers(Qt::ShiftModifier) << none << false;
    QTest::newRow("held") << Qt::KeyboardModifiers(Qt::ShiftModifier)
                          << Qt::KeyboardModifiers(Qt::ShiftModifier) << true;
    QTest::newRow("another one held") << Qt::KeyboardModifiers(Qt::ShiftModifier)
                                      << Qt::KeyboardModifiers(Qt::AltModifier) << false;
    QTest::newRow("one too many") << Qt::KeyboardModifiers(Qt::ShiftModifier) << both << false;
    QTest::newRow("one of two") << both << Qt::KeyboardModifiers(Qt::ShiftModifier) << false;
    QTest::newRow("both") << both << both << true;
}

void TestShow::show_comparesModifiersExactly()
{
    QFETCH(Qt::KeyboardModifiers, required);
    QFETCH(Qt::KeyboardModifiers, held);
    QFETCH(bool, shown);
    PopupStage stage({{ckRequiredModifiers, required.toInt()}});
    const HeldModifiers modifiers(&stage.control, held);
    QCOMPARE(QGuiApplication::keyboardModifiers(), held);

    QCOMPARE(stage.manager->show(openKey(), kPointer, &stage.control), shown);
    QCOMPARE(stage.manager->widget() != nullptr, shown);
}

void TestShow::show_makesPopup_withoutContent()
{
    PopupStage stage;
    QVERIFY(!stage.manager->widget());
    QVERIFY(!stage.manager->show(unknownKey(), kPointer, &stage.control));
    QVERIFY(stage.manager->widget());
    QVERIFY(!stage.manager->widget()->isVisible());
    QVERIFY(stage.manager->widget()->view()->engine());
    QVERIFY(!stage.manager->widget()->view()->content());
}

void TestShow::initializeTooltipWindow_composesPopup()
{
    PopupStage stage;
    stage.manager->initializeTooltipWindow();
    VLWidget* popup = stage.manager->widget();
    QVERIFY(popup);
    QVERIFY(!popup->parent());
    QCOMPARE(popup->manager(), stage.manager.get());
    QVERIFY(!popup->isVisible());
    QVERIFY(popup->view());
    QCOMPARE(popup->view()->manager(), stage.manager.get());

    const auto* layout = qobject_cast<QHBoxLayout*>(popup->layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->count(), 1);
    const QWidget* container = layout->itemAt(0)->widget();
    QCOMPARE(container->parentWidget(), popup);
    QCOMPARE(container->metaObject()->className(), "QWindowContainer");

    // The popup knows its container: it gives it the size of the scene.
    stage.showContent();
    popup->contentResized();
    QCOMPARE(container->minimumSize(), QSize(120, 80));
}

void TestShow::initializeTooltipWindow_doesNothing_whenPopupExists()
{
    PopupStage stage;
    stage.manager->initializeTooltipWindow();
    const QPointer<VLWidget> popup = stage.manager->widget();
    const QPointer<VLView> view = popup->view();
    stage.manager->initializeTooltipWindow();
    QCOMPARE(stage.manager->widget(), popup.data());
    QCOMPARE(popup->view(), view.data());
}

void TestShow::show_showsContentBesidePointer()
{
    PopupStage stage;
    QVERIFY(stage.manager->show(openKey(), kPointer, &stage.control));
    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.popup()->pos(), kTipPosition);
    QCOMPARE(stage.popup()->referenceWidget(), &stage.control);
    QCOMPARE(stage.scene()->property("shownKey").toString(), openKey());
    QCOMPARE(stage.scene()->property("shownLocation").toString(), stage.packageRoot);
    QCOMPARE(stage.index.requests, QStringList{u"open@en_US"_s});
}

void TestShow::show_worksWithoutReference()
{
    PopupStage stage;
    QVERIFY(stage.manager->show(openKey(), kPointer, nullptr));
    QVERIFY(stage.popup()->isVisible());
    QVERIFY(!stage.popup()->referenceWidget());
    QCOMPARE(stage.interface.shortcutRequests.size(), 1);
    QVERIFY(!stage.interface.shortcutRequests.first().object);
}

void TestShow::show_treatsReferenceThatIsNoWidgetAsNone()
{
    PopupStage stage;
    QObject reference;
    QVERIFY(stage.manager->show(openKey(), kPointer, &reference));
    QVERIFY(!stage.popup()->referenceWidget());
    QCOMPARE(stage.popup()->pos(), kTipPosition);
    // The host is told of it all the same.
    QCOMPARE(stage.interface.shortcutRequests.first().object, &reference);
}

void TestShow::show_leavesTipAlone_whenKeyIsOnShow()
{
    PopupStage stage;
    stage.manager->show(openKey(), kPointer, &stage.control);
    const QPointer<VLXmlElement> content = stage.view()->content();
    const QPointer<QObject> scene = stage.scene();
    stage.index.requests.clear();

    QVERIFY(stage.manager->show(openKey(), kPointer + QPoint(50, 50), &stage.control));

    QVERIFY(stage.index.requests.isEmpty());
    QCOMPARE(stage.view()->content(), content.data());
    QVERIFY(scene);
    QCOMPARE(stage.popup()->pos(), kTipPosition);
}

void TestShow::show_retrievesAgain_whenKeyIsNoLongerOnShow()
{
    PopupStage stage;
    stage.manager->show(openKey(), kPointer, &stage.control);
    const QPointer<VLXmlElement> content = stage.view()->content();
    stage.popup()->hide();

    QVERIFY(stage.manager->show(openKey(), kPointer + QPoint(50, 50), &stage.control));

    QCOMPARE(stage.index.requests.size(), 2);
    QVERIFY(!content);
    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.popup()->pos(), kTipPosition + QPoint(50, 50));
}

void TestShow::show_triesBothLocales_whenKeyIsUnknown()
{
    PopupStage stage({{ckLocale, u"de_DE"_s}, {ckFallbackLocale, u"fr_FR"_s}});
    QVERIFY(!stage.manager->show(unknownKey(), kPointer, &stage.control));
    QCOMPARE(stage.index.requests, (QStringList{u"unknown@de_DE"_s, u"unknown@fr_FR"_s}));
}

void TestShow::show_looksUpEmptyKey()
{
    PopupStage stage;
    stage.packages.writeControlFile(u"tips.vidlets"_s, u"empty.xml"_s,
                                    "<vidlets>\n<vidlet key=\"\"/>\n</vidlets>\n");
    stage.rescan();
    stage.control.setObjectName(QString());
    QHelpEvent event(QEvent::ToolTip, QPoint(), kPointer);
    QVERIFY(stage.manager->eventFilter(&stage.control, &event));
    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.index.requests, QStringList{u"@en_US"_s});
}

void TestShow::show_returnsFalse_whenUnknownAndHidden()
{
    PopupStage stage;
    QVERIFY(!stage.manager->show(unknownKey(), kPointer, nullptr));
    stage.manager->show(openKey(), kPointer, &stage.control);
    const QPointer<VLXmlElement> content = stage.view()->content();
    stage.popup()->hide();
    QVERIFY(!stage.manager->show(unknownKey(), kPointer, nullptr));
    QVERIFY(!stage.popup()->isVisible());
    QCOMPARE(stage.view()->content(), content.data());
}

void TestShow::show_showsFallback_inFallbackLocaleAlone()
{
    PopupStage stage({{ckLocale, u"de_DE"_s},
                      {ckFallbackLocale, u"fr_FR"_s},
                      {ckFallbackKey, saveKey()},
                      {ckMessageLevel, VLMessageInformation}});
    stage.interface.recordedMessages.clear();

    QVERIFY(stage.manager->show(unknownKey(), kPointer, &stage.control));

    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.view()->content()->attribute(u"key"_s), saveKey());
    QCOMPARE(stage.index.requests,
             (QStringList{u"unknown@de_DE"_s, u"unknown@fr_FR"_s, u"save@fr_FR"_s}));
    // The time of this lookup is not told.
    QCOMPARE(stage.interface.messages(VLMessageInformation),
             QStringList{u"looking for Vidlet for key:unknown"_s});
}

void TestShow::show_triesFallbackInDefaultLocale()
{
    PopupStage stage({{ckLocale, u"de_DE"_s}, {ckFallbackKey, saveKey()}});
    QVERIFY(stage.manager->show(unknownKey(), kPointer, &stage.control));
    QCOMPARE(stage.index.requests.last(), u"save@en_US"_s);
}

void TestShow::show_looksForFallback_unlessNull_data()
{
    QTest::addColumn<QVariant>("fallbackKey");
    QTest::addColumn<QStringList>("lookups");
    QTest::newRow("invalid") << QVariant() << QStringList();
    QTest::newRow("null") << QVariant(QString()) << QStringList();
    QTest::newRow("empty") << QVariant(u""_s) << QStringList{u"@en_US"_s};
    QTest::newRow("without content") << QVariant(u"none"_s) << QStringList{u"none@en_US"_s};
}

void TestShow::show_looksForFallback_unlessNull()
{
    QFETCH(QVariant, fallbackKey);
    PopupStage stage({{ckFallbackKey, fallbackKey}});
    QVERIFY(!stage.manager->show(unknownKey(), kPointer, &stage.control));
    QTEST(stage.index.requests.mid(2), "lookups");
    QVERIFY(!stage.popup()->isVisible());
}

void TestShow::show_keepsOpenFallback()
{
    PopupStage stage({{ckFallbackKey, saveKey()}});
    stage.manager->show(unknownKey(), kPointer, &stage.control);
    const QPointer<VLXmlElement> content = stage.view()->content();
    stage.index.requests.clear();

    QVERIFY(stage.manager->show(u"other"_s, kPointer + QPoint(200, 200), nullptr));

    QCOMPARE(stage.view()->content(), content.data());
    QCOMPARE(stage.popup()->pos(), kTipPosition);
    QCOMPARE(stage.index.requests, (QStringList{u"other@en_US"_s, u"other@en_US"_s}));
}

void TestShow::show_hasNothingToShow_whenRootIsNull()
{
    PopupStage stage;
    stage.index.answer = [](const QString& key) {
        return IndexAnswer{PopupStage::newContent(key), nullptr, u"/"_s, 1};
    };
    QVERIFY(!stage.manager->show(openKey(), kPointer, &stage.control));
    QVERIFY(!stage.popup()->isVisible());
    QVERIFY(!stage.view()->content());
    QVERIFY(stage.interface.shortcutRequests.isEmpty());
}

void TestShow::show_leavesTipAlone_whenElementIsOnShow()
{
    PopupStage stage;
    const IndexAnswer same = newAnswer(openKey());
    stage.index.answer = [&same](const QString&) { return same; };
    QVERIFY(stage.manager->show(openKey(), kPointer, &stage.control));
    const QPointer<QObject> scene = stage.scene();

    QVERIFY(stage.manager->show(saveKey(), kPointer + QPoint(50, 50), &stage.control));

    QCOMPARE(stage.view()->content(), same.element);
    QVERIFY(scene);
    QCOMPARE(stage.popup()->pos(), kTipPosition);
    QCOMPARE(stage.interface.shortcutRequests.size(), 1);

    // A hidden popup comes up again, with the tree that it has.
    stage.popup()->hide();
    QVERIFY(stage.manager->show(saveKey(), kPointer + QPoint(50, 50), &stage.control));
    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.view()->content(), same.element);
    QVERIFY(scene);
}

void TestShow::show_letsSceneGoBeforeOldTreeDies()
{
    PopupStage stage;
    stage.manager->show(openKey(), kPointer, &stage.control);
    const QPointer<VLXmlElement> element = stage.view()->content();
    const QPointer<QObject> root = element->parent();
    const QPointer<QObject> scene = stage.scene();
    bool sceneGone = false;
    bool contentGone = false;
    connect(root, &QObject::destroyed, this, [&] {
        sceneGone = !scene && stage.view()->source().isEmpty();
        contentGone = !stage.view()->content();
    });
    QSignalSpy contentSpy(stage.view(), &VLView::contentChanged);

    QVERIFY(stage.manager->show(saveKey(), kPointer, &stage.control));

    QVERIFY(!root);
    QVERIFY(!element);
    QVERIFY(sceneGone);
    QVERIFY(contentGone);
    QCOMPARE(contentSpy.count(), 0);
    QCOMPARE(stage.scene()->property("shownKey").toString(), saveKey());
}

void TestShow::show_deletesOldElement_whenItHasNoParent()
{
    PopupStage stage;
    VLXmlElement* old = stage.showContent();
    QSignalSpy destroyedSpy(old, &QObject::destroyed);
    QVERIFY(stage.manager->show(saveKey(), kPointer, &stage.control));
    QCOMPARE(destroyedSpy.count(), 1);
}

void TestShow::show_doesNotHideBetweenTwoTips()
{
    PopupStage stage;
    stage.manager->show(openKey(), kPointer, &stage.control);
    const EventCounter hides(stage.popup(), QEvent::Hide);
    const EventCounter shows(stage.popup(), QEvent::Show);

    QVERIFY(stage.manager->show(saveKey(), kPointer + QPoint(20, 10), &stage.control));

    QCOMPARE(hides.count, 0);
    QCOMPARE(shows.count, 0);
    QCOMPARE(stage.popup()->pos(), kTipPosition + QPoint(20, 10));
}

void TestShow::show_endsAtItsSize_whenToldOfTheOneBefore()
{
    PopupStage stage;
    QVERIFY(stage.manager->show(openKey(), kPointer, &stage.control));
    QVERIFY(QTest::qWaitForWindowExposed(stage.popup()));
    const QSize size = stage.popup()->minimumSize();
    const QRect late(stage.popup()->pos(), size + QSize(60, 30));

    report(stage.popup()->windowHandle(), late);

    QTRY_COMPARE(stage.popup()->size(), size);
    QTRY_COMPARE(stage.popup()->windowHandle()->size(), size);
}

void TestShow::show_yieldsToWindowSystem_thatInsistsOnSize()
{
    PopupStage stage;
    QVERIFY(stage.manager->show(openKey(), kPointer, &stage.control));
    QVERIFY(QTest::qWaitForWindowExposed(stage.popup()));
    const QRect late(stage.popup()->pos(), stage.popup()->minimumSize() + QSize(60, 30));

    report(stage.popup()->windowHandle(), late);
    QCOMPARE(stage.popup()->size(), stage.popup()->minimumSize());
    const QRect later = late.adjusted(0, 0, 1, 0);
    report(stage.popup()->windowHandle(), later);

    QCOMPARE(stage.popup()->size(), later.size());
}

void TestShow::show_goesToOrigin_soonAfterAnotherTip_data()
{
    QTest::addColumn<bool>("exposed");
    QTest::addColumn<bool>("isSaidToBeThere");
    QTest::newRow("other tip is on the screen") << true << false;
    QTest::newRow("other tip is on its way to the screen") << false << false;
    QTest::newRow("other tip on its way is said to be at the origin") << false << true;
}

void TestShow::show_goesToOrigin_soonAfterAnotherTip()
{
    QFETCH(const bool, exposed);
    QFETCH(const bool, isSaidToBeThere);
    PopupStage stage({{ckTooltipOffset, QSize(0, 0)}});
    QVERIFY(stage.manager->show(openKey(), kPointer, &stage.control));
    if (isSaidToBeThere) {
        QWindowSystemInterface::handleGeometryChange<QWindowSystemInterface::SynchronousDelivery>(
            stage.popup()->windowHandle(), QRect(QPoint(0, 0), stage.popup()->size()));
        QCOMPARE(stage.popup()->pos(), QPoint(0, 0));
    }
    if (exposed)
        QVERIFY(QTest::qWaitForWindowExposed(stage.popup()));

    QVERIFY(stage.manager->show(saveKey(), QPoint(0, 0), &stage.control));

    QCOMPARE(stage.popup()->pos(), QPoint(0, 0));
    QVERIFY(QTest::qWaitForWindowExposed(stage.popup()));
    QTRY_COMPARE(positionOnScreenOfX(stage.popup()), QPoint(0, 0));
    QTRY_COMPARE(stage.popup()->pos(), QPoint(0, 0));
}

void TestShow::show_asksHostForShortcut_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("ofContent");
    QTest::addColumn<QString>("ofHost");
    QTest::addColumn<QString>("shown");
    QTest::newRow("content's own") << openKey() << "Ctrl+O" << QString() << "Ctrl+O";
    QTest::newRow("replaced") << openKey() << "Ctrl+O"
                              << "F3"
                              << "F3";
    QTest::newRow("added") << saveKey() << QString() << "F2"
                           << "F2";
}

void TestShow::show_asksHostForShortcut()
{
    QFETCH(QString, key);
    QFETCH(QString, ofHost);
    PopupStage stage;
    stage.interface.shortcutToGive = ofHost;
    QVERIFY(stage.manager->show(key, kPointer, &stage.control));
    QCOMPARE(stage.interface.shortcutRequests.size(), 1);
    QCOMPARE(stage.interface.shortcutRequests.first().key, key);
    QCOMPARE(stage.interface.shortcutRequests.first().object, &stage.control);
    QTEST(stage.interface.shortcutRequests.first().shortcut, "ofContent");
    // Written before the scene loads.
    QTEST(stage.scene()->property("shownShortcut").toString(), "shown");
}

void TestShow::show_keepsShortcut_whenHostGivesEmptyOne()
{
    PopupStage stage;
    stage.interface.shortcutToGive = u""_s;
    stage.manager->show(openKey(), kPointer, &stage.control);
    QCOMPARE(stage.view()->content()->attribute(u"shortcut"_s), u"Ctrl+O"_s);

    stage.manager->show(saveKey(), kPointer, &stage.control);
    QVERIFY(!stage.view()->content()->hasAttribute(u"shortcut"_s));
}

void TestShow::show_asksForShortcutOfRequestedKey_whenFallbackIsShown()
{
    PopupStage stage({{ckFallbackKey, openKey()}});
    stage.manager->show(unknownKey(), kPointer, &stage.control);
    QCOMPARE(stage.interface.shortcutRequests.first().key, unknownKey());
    QCOMPARE(stage.interface.shortcutRequests.first().shortcut, u"Ctrl+O"_s);
}

void TestShow::show_climbsToPackageRoot_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<QString>("root");
    QTest::newRow("none") << 1 << "/a/b/c";
    QTest::newRow("one") << 2 << "/a/b";
    QTest::newRow("two") << 3 << "/a";
}

void TestShow::show_climbsToPackageRoot()
{
    QFETCH(int, depth);
    QFETCH(QString, root);
    PopupStage stage;
    const QString base = stage.packages.dataPath();
    QVERIFY(QDir().mkpath(base + u"/a/b/c"_s));
    stage.index.answer = [&](const QString& key) {
        IndexAnswer answer = newAnswer(key, base + u"/a/b/c"_s);
        answer.depth = depth;
        return answer;
    };
    QVERIFY(stage.manager->show(openKey(), kPointer, &stage.control));
    QCOMPARE(stage.scene()->property("shownLocation").toString(), base + root);
    QCOMPARE(stage.view()->packageRoot().path(), base + root);
}

void TestShow::show_givesCanonicalPackageRoot()
{
    PopupStage stage;
    const QString link = stage.packages.path(u"link"_s);
    QVERIFY(QFile::link(stage.packageRoot, link));
    stage.index.answer = [&](const QString& key) { return newAnswer(key, link); };
    QVERIFY(stage.manager->show(openKey(), kPointer, &stage.control));
    QCOMPARE(stage.view()->packageRoot().path(), stage.packageRoot);
}

void TestShow::show_raisesPopup()
{
    PopupStage stage;
    stage.manager->show(openKey(), kPointer, &stage.control);
    const EventCounter raises(stage.popup(), QEvent::ZOrderChange);
    stage.manager->show(openKey(), kPointer, &stage.control);
    QCOMPARE(raises.count, 0);
    stage.manager->show(saveKey(), kPointer, &stage.control);
    QCOMPARE(raises.count, 1);
}

void TestShow::show_decidesOverOpenTip_whenKeyIsUnknown_data()
{
    QTest::addColumn<QString>("reference");
    QTest::addColumn<QPoint>("position");
    QTest::addColumn<bool>("kept");
    const QPoint inZone = kTipPosition - QPoint(20, 20);
    const QPoint outside = kTipPosition - QPoint(21, 20);
    const auto addRows = [&](const char* reference, bool keptInZone) {
        QTest::addRow("%s, in the zone", reference)
            << QString::fromLatin1(reference) << inZone << keptInZone;
        QTest::addRow("%s, outside", reference)
            << QString::fromLatin1(reference) << outside << false;
    };
    addRows("none", true);
    addRows("no widget", true);
    addRows("no tooltip", true);
    addRows("tooltip", false);
}

void TestShow::show_decidesOverOpenTip_whenKeyIsUnknown()
{
    QFETCH(QString, reference);
    QFETCH(QPoint, position);
    QFETCH(bool, kept);
    PopupStage stage({{ckHideDuration, kEndlessMs}});
    stage.manager->show(openKey(), kPointer, &stage.control);
    QWidget widget;
    if (reference == u"tooltip"_s)
        widget.setToolTip(u"an ordinary one"_s);
    QObject noWidget;
    QObject* asking = &widget;
    if (reference == u"none"_s)
        asking = nullptr;
    else if (reference == u"no widget"_s)
        asking = &noWidget;

    QCOMPARE(stage.manager->show(unknownKey(), position, asking), kept);

    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.animation()->state() == QAbstractAnimation::Running, !kept);
    QCOMPARE(stage.view()->content()->attribute(u"key"_s), openKey());
}

void TestShow::show_hidesOpenTipAtOnce_withoutFade()
{
    PopupStage stage({{ckHideDuration, 0}});
    stage.manager->show(openKey(), kPointer, &stage.control);
    QVERIFY(!stage.manager->show(unknownKey(), PopupStage::farAway(), &stage.control));
    QVERIFY(!stage.popup()->isVisible());
    QCOMPARE(stage.scene()->property("resets").toInt(), 1);
}

void TestShow::eventFilter_isHarmless_withoutPopup_data()
{
    QTest::addColumn<QEvent::Type>("type");
    QTest::newRow("press") << QEvent::MouseButtonPress;
    QTest::newRow("release") << QEvent::MouseButtonRelease;
    QTest::newRow("move") << QEvent::MouseMove;
    QTest::newRow("deactivation") << QEvent::ApplicationDeactivate;
}

void TestShow::eventFilter_isHarmless_withoutPopup()
{
    QFETCH(QEvent::Type, type);
    PopupStage stage;
    QMouseEvent mouse = mouseEvent(type, kPointer);
    QEvent plain(type);
    QEvent& event = type == QEvent::ApplicationDeactivate ? plain : mouse;
    QVERIFY(!stage.manager->eventFilter(&stage.control, &event));
    QVERIFY(!stage.manager->widget());
}

void TestShow::eventFilter_handlesEventTypes_data()
{
    QTest::addColumn<QEvent::Type>("type");
    QTest::addColumn<bool>("visible");
    QTest::addColumn<bool>("counting");
    QTest::newRow("press") << QEvent::MouseButtonPress << false << false;
    QTest::newRow("release") << QEvent::MouseButtonRelease << false << false;
    QTest::newRow("double click") << QEvent::MouseButtonDblClick << true << false;
    QTest::newRow("move") << QEvent::MouseMove << true << true;
    QTest::newRow("deactivation") << QEvent::ApplicationDeactivate << false << false;
    QTest::newRow("activation") << QEvent::ApplicationActivate << true << false;
    QTest::newRow("window deactivation") << QEvent::WindowDeactivate << true << false;
    QTest::newRow("leave") << QEvent::Leave << true << false;
    QTest::newRow("what's this") << QEvent::WhatsThis << true << false;
}

void TestShow::eventFilter_handlesEventTypes()
{
    QFETCH(QEvent::Type, type);
    // No stay duration while it is shown, so that only the event can start the timer.
    PopupStage stage({{ckHideDuration, kEndlessMs}, {ckStayDuration, 0}});
    stage.manager->show(openKey(), kPointer, &stage.control);
    stage.set(ckStayDuration, kEndlessMs);
    QMouseEvent mouse = mouseEvent(type, PopupStage::farAway());
    QEvent plain(type);
    const bool isMouse = type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease
        || type == QEvent::MouseButtonDblClick || type == QEvent::MouseMove;
    QEvent& event = isMouse ? mouse : plain;

    QVERIFY(!stage.manager->eventFilter(&stage.control, &event));

    QTEST(stage.popup()->isVisible(), "visible");
    QTEST(stage.timer()->isActive(), "counting");
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Stopped);
}

void TestShow::eventFilter_asksForTip_onToolTip()
{
    PopupStage stage;
    QHelpEvent event(QEvent::ToolTip, QPoint(3, 4), kPointer);
    QVERIFY(stage.manager->eventFilter(&stage.control, &event));
    QCOMPARE(stage.interface.objectsAskedForKey.size(), 1);
    QCOMPARE(stage.interface.objectsAskedForKey.first(), &stage.control);
    QCOMPARE(stage.popup()->pos(), kTipPosition);
    QCOMPARE(stage.popup()->referenceWidget(), &stage.control);
}

void TestShow::eventFilter_swallowsToolTip_onlyWhenDealtWith()
{
    PopupStage stage;
    QHelpEvent event(QEvent::ToolTip, QPoint(), kPointer);
    stage.control.setObjectName(unknownKey());
    QVERIFY(!stage.manager->eventFilter(&stage.control, &event));
    stage.control.setObjectName(openKey());
    QVERIFY(stage.manager->eventFilter(&stage.control, &event));
    stage.set(ckDisabled, true);
    QVERIFY(!stage.manager->eventFilter(&stage.control, &event));
}

void TestShow::eventFilter_hidesStayOpenPopup_onApplicationDeactivate()
{
    PopupStage stage({{ckHideDuration, kEndlessMs}});
    stage.manager->show(openKey(), kPointer, &stage.control);
    stage.view()->setStayOpen(true);
    QEvent event(QEvent::ApplicationDeactivate);
    QVERIFY(!stage.manager->eventFilter(qApp, &event));
    QVERIFY(!stage.popup()->isVisible());
    QCOMPARE(stage.scene()->property("resets").toInt(), 0);
}

void TestShow::mouseMoveEventFilter_followsPointer_whenVisible()
{
    PopupStage stage({{ckStayDuration, kEndlessMs}});
    stage.manager->show(openKey(), kPointer, &stage.control);
    QVERIFY(stage.timer()->isActive());

    // Which object the pointer moves over does not matter.
    QMouseEvent inside = mouseEvent(QEvent::MouseMove, kTipPosition + QPoint(10, 10));
    QVERIFY(!stage.manager->mouseMoveEventFilter(nullptr, &inside));
    QVERIFY(!stage.timer()->isActive());
    QMouseEvent outside = mouseEvent(QEvent::MouseMove, PopupStage::farAway());
    QVERIFY(!stage.manager->mouseMoveEventFilter(stage.popup(), &outside));
    QVERIFY(stage.timer()->isActive());
}

void TestShow::mouseMoveEventFilter_doesNothing_whenHidden()
{
    PopupStage stage({{ckStayDuration, 0}});
    stage.manager->show(openKey(), kPointer, &stage.control);
    stage.popup()->hide();
    stage.set(ckStayDuration, kEndlessMs);
    QMouseEvent outside = mouseEvent(QEvent::MouseMove, PopupStage::farAway());
    QVERIFY(!stage.manager->mouseMoveEventFilter(&stage.control, &outside));
    QVERIFY(!stage.timer()->isActive());
}

void TestShow::mouseMoveEventFilter_roundsHalvesAwayFromZero_data()
{
    // How far beyond the left or the right edge of the safe zone, whose left edge is negative.
    QTest::addColumn<bool>("left");
    QTest::addColumn<qreal>("beyond");
    QTest::addColumn<bool>("counting");
    QTest::newRow("right, below half") << false << 0.4 << false;
    QTest::newRow("right, half") << false << 0.5 << true;
    QTest::newRow("left, below half") << true << 0.4 << false;
    QTest::newRow("left, half") << true << 0.5 << true;
}

void TestShow::mouseMoveEventFilter_roundsHalvesAwayFromZero()
{
    QFETCH(bool, left);
    QFETCH(qreal, beyond);
    PopupStage stage({{ckStayDuration, 0}, {ckTooltipOffset, QSize(0, 0)}});
    stage.manager->show(openKey(), QPoint(2, 300), &stage.control);
    stage.popup()->contentResized();
    QCOMPARE(stage.popup()->frameGeometry(), QRect(2, 300, 121, 81));
    stage.set(ckStayDuration, kEndlessMs);
    const qreal x = left ? -18 - beyond : 142 + beyond;

    QMouseEvent event = mouseEvent(QEvent::MouseMove, QPointF(x, 320));
    stage.manager->mouseMoveEventFilter(&stage.control, &event);

    QTEST(stage.timer()->isActive(), "counting");
}

void TestShow::mouseButtonEventFilter_hidesOnlyOutside_data()
{
    QTest::addColumn<QString>("object");
    QTest::addColumn<bool>("visible");
    QTest::newRow("none") << "none" << true;
    QTest::newRow("no widget") << "no widget" << true;
    QTest::newRow("popup") << "popup" << true;
    QTest::newRow("inside the popup") << "container" << true;
    QTest::newRow("another window") << "another window" << false;
    QTest::newRow("reference") << "reference" << false;
}

void TestShow::mouseButtonEventFilter_hidesOnlyOutside()
{
    QFETCH(QString, object);
    PopupStage stage({{ckHideDuration, kEndlessMs}});
    stage.manager->show(openKey(), kPointer, &stage.control);
    QObject noWidget;
    QWidget window;
    const QMap<QString, QObject*> objects{
        {u"none"_s, nullptr},
        {u"no widget"_s, &noWidget},
        {u"popup"_s, stage.popup()},
        {u"container"_s, stage.popup()->layout()->itemAt(0)->widget()},
        {u"another window"_s, &window},
        {u"reference"_s, &stage.control}};
    QMouseEvent event = mouseEvent(QEvent::MouseButtonPress, kPointer);

    QVERIFY(!stage.manager->mouseButtonEventFilter(objects.value(object), &event));

    QTEST(stage.popup()->isVisible(), "visible");
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Stopped);
    QCOMPARE(stage.scene()->property("resets").toInt(), 0);

    // A hidden popup is left alone.
    stage.popup()->hide();
    stage.view()->setStayOpen(true);
    QVERIFY(!stage.manager->mouseButtonEventFilter(objects.value(object), &event));
    QVERIFY(!stage.popup()->isVisible());
}

void TestShow::mouseButtonEventFilter_hidesAtOnce_duringFade()
{
    PopupStage stage({{ckHideDuration, kEndlessMs}});
    stage.manager->show(openKey(), kPointer, &stage.control);
    stage.popup()->hideAnimated();
    QMouseEvent event = mouseEvent(QEvent::MouseButtonRelease, kPointer);
    stage.manager->mouseButtonEventFilter(&stage.control, &event);
    QVERIFY(!stage.popup()->isVisible());
}

void TestShow::mouseButtonEventFilter_activatesPopup_whenStayOpen()
{
    PopupStage stage;
    stage.manager->show(openKey(), kPointer, &stage.control);
    stage.view()->setStayOpen(true);
    QVERIFY(QTest::qWaitForWindowExposed(stage.popup()));
    stage.control.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&stage.control));
    QVERIFY(!stage.popup()->isActiveWindow());

    QMouseEvent event = mouseEvent(QEvent::MouseButtonPress, kPointer);
    QVERIFY(!stage.manager->mouseButtonEventFilter(&stage.control, &event));

    QVERIFY(stage.popup()->isVisible());
    QTRY_VERIFY(stage.popup()->isActiveWindow());
}

void TestShow::filter_isInstalledOnApplication_whenSettingAsksForIt_data()
{
    QTest::addColumn<bool>("installed");
    QTest::newRow("installed") << true;
    QTest::newRow("not installed") << false;
}

void TestShow::filter_isInstalledOnApplication_whenSettingAsksForIt()
{
    QFETCH(bool, installed);
    PopupStage stage({{ckInstallEventFilter, installed}});
    QHelpEvent event(QEvent::ToolTip, QPoint(), kPointer);
    QCoreApplication::sendEvent(&stage.control, &event);
    QCOMPARE(stage.manager->widget() != nullptr, installed);

    // Asked directly, the manager works either way.
    QVERIFY(stage.manager->show(saveKey(), kPointer, &stage.control));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestShow>(argc, argv);
}

#include "tst_show.moc"
