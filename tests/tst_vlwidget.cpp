// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "PopupStage.h"
#include "VidletsTest.h"

#include <QCursor>
#include <QDir>
#include <QEvent>
#include <QEventLoop>
#include <QFile>
#include <QLayout>
#include <QQmlContext>
#include <QQuickItem>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <cmath>
#include <limits>
#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

// Long enough to be running whenever a test looks; such a fade is ended by hand.
constexpr int kEndlessMs = 600000;
constexpr int kPopupFlags = 2059;
const QSize kSceneSize(120, 80);
const QSize kPopupSize(121, 81);

bool isOpacity(const VLWidget* popup, qreal opacity)
{
    // The window keeps its opacity in 255 steps.
    return std::abs(popup->windowOpacity() - opacity) < 0.005;
}

QPoint centerOf(const QWidget& widget)
{
    return widget.mapToGlobal(widget.rect().center());
}

/// Calls back for each event of one type that reaches an object.
class EventWatcher : public QObject
{
public:
    EventWatcher(QObject* watched, QEvent::Type type, std::function<void()> action)
        : m_type(type)
        , m_action(std::move(action))
    {
        watched->installEventFilter(this);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == m_type)
            m_action();
        return QObject::eventFilter(object, event);
    }

private:
    QEvent::Type m_type;
    std::function<void()> m_action;
};

} // namespace

class TestVLWidget : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    // Construction and ownership
    void popup_isFramelessToolWindow();
    void popup_keepsFlags_whenSettingAsksForIt();
    void popup_readsFlagSettingAtEachConstruction();
    void popup_hasOneLinearFadeAndOneSingleShotTimer();
    void popup_hasNoViewAndNoReference_whenNew();
    void destructor_deletesViewAndContent();
    void destructor_isHarmless_whenReferenceIsPopupItself_data();
    void destructor_isHarmless_whenReferenceIsPopupItself();
    void destructor_cutsOffEarlierReferences();
    void popup_livesOn_whenManagerIsGone();
    void popup_livesOn_whenManagerIsGone_inNestedEventLoop();
    void setView_deletesOldViewAtOnce();
    void setView_placesViewAtOrigin();
    void setView_followsReservedAndSizeOfView();

    // showWithContent
    void showWithContent_changesNothing_whenContentIsNull();
    void showWithContent_storesReferenceOnlyIfWidget();
    void showWithContent_setsPackageRoot();
    void showWithContent_deletesOldContent();
    void showWithContent_keepsContent_whenGivenAgain();
    void showWithContent_choosesSceneByNewContent();
    void showWithContent_movesPopup();
    void showWithContent_repositions_whenVisible();
    void showWithContent_setsContextNames();
    void showWithContent_setsContextNamesBeforeSceneLoads();
    void showWithContent_keepsSceneAlive_whenFileIsSame();
    void showWithContent_showsPopup_whenSceneIsMissing();
    void showWithContent_leavesTimerRunning_whenVisible();
    void showWithContent_letsFadeOutGoOn();

    // Showing
    void show_leadsToShownOrCounting_data();
    void show_leadsToShownOrCounting();
    void showAnimated_showsAtOnce_withoutDuration();
    void showAnimated_fadesIn_withDuration();
    void showAnimated_doesNothing_whenVisible();
    void endOfFadeIn_leavesPopupVisible();
    void showEvent_repositions();

    // Hiding
    void hideAnimated_doesNothing_whenHidden();
    void hideAnimated_hidesAtOnce_withoutDuration_data();
    void hideAnimated_hidesAtOnce_withoutDuration();
    void hideAnimated_fadesOut_withDuration();
    void hideAnimated_startsAtPresentOpacity();
    void hideAnimated_takesDefaultDuration();
    void hideAnimated_isDropped_duringFadeIn();
    void hideAnimated_isDropped_duringFadeOut();
    void endOfFadeOut_resetsStateAndHides();
    void hide_duringFadeOut_letsAnimationRunOutUnseen();
    void hide_doesNotResetState();
    void hide_leavesTimerRunningIntoNextShow();

    // Timer
    void setTimer_takesStayDuration_data();
    void setTimer_takesStayDuration();
    void setTimer_neverFires_whenStayDurationIsBeyondNumbers_data();
    void setTimer_neverFires_whenStayDurationIsBeyondNumbers();
    void setTimer_startsAnew_whenRunning();
    void setTimer_stops_whenStayOpen();
    void timeout_hidesPopup();
    void timeout_isDropped_duringFadeIn();
    void stayOpen_doesNotStopRunningTimer();

    // Pointer
    void checkMousePosition_startsTimer_whenUnsafe();
    void checkMousePosition_startsNoTimer_whenUnsafeButStaying_data();
    void checkMousePosition_startsNoTimer_whenUnsafeButStaying();
    void checkMousePosition_doesNotRestartTimer();
    void checkMousePosition_stopsTimer_whenSafe();
    void checkMousePosition_armsTimerWithoutEffect_duringFadeOut();
    void isSafe_includesEdgesOfGrownFrame_data();
    void isSafe_includesEdgesOfGrownFrame();
    void isSafe_takesDefaultMargin();
    void isSafe_holdsOverReference_farFromPopup();
    void isSafe_failsOverChildOfReference_farFromPopup();
    void isSafe_holdsOverNoWidget_withoutReference();

    // Geometry
    void findVisibleGeometry_movesIntoArea_data();
    void findVisibleGeometry_movesIntoArea();
    void findVisibleGeometry_takesPopupsScreen_withoutLivingReference();
    void findVisibleGeometry_takesScreenOfReference();
    void reposition_movesOnlyWhenOutside();
    void reposition_movesHostWindow_whenPopupIsNoWindow();
    void contentResized_doesNothing_withoutViewOrScene();
    void contentResized_addsOnePixelToPopupAlone();
    void contentResized_truncatesSizeOfScene();
    void contentResized_sizesPopupAlone_withoutContainer();
    void contentResized_followsScene();
    void contentResized_fitsPopupToScreen();
    void contentResized_addsHeightOfTitle_whenDecorated();
    void contentResized_sizesOnlyContainer_whenHiddenChild();
    void contentResized_isNotReentered();

    // Death of the reference
    void referenceDestroyed_hidesAndResets();
    void referenceDestroyed_hides_whenReferenceIsAnEarlierOne();
    void referenceDestroyed_isHarmless_afterManyShows();
    void referenceDestroyed_leavesPopupUsable();
};

int TestVLWidget::runChild(const QString& name)
{
    if (name != u"second screen"_s)
        return VidletsTest::runChild(name);

    const QList<QScreen*> screens = QGuiApplication::screens();
    if (screens.size() != 2)
        return 2;
    PopupStage stage;
    stage.control.setScreen(screens.at(1));
    stage.control.move(screens.at(1)->geometry().topLeft());
    stage.showContent();
    const QRect area = screens.at(1)->availableGeometry();
    const QRect onFirst(screens.at(0)->geometry().topLeft(), QSize(50, 40));
    if (area.intersects(onFirst))
        return 3;
    return stage.popup()->findVisibleGeometry(onFirst) == QRect(area.topLeft(), onFirst.size()) ? 0
                                                                                                : 4;
}

void TestVLWidget::popup_isFramelessToolWindow()
{
    PopupStage stage;
    QCOMPARE(stage.popup()->windowFlags().toInt(), kPopupFlags);
}

void TestVLWidget::popup_keepsFlags_whenSettingAsksForIt()
{
    PopupStage stage({{ckKeepPopupWindowFlags, true}});
    QCOMPARE(stage.popup()->windowFlags(), QWidget().windowFlags());
}

void TestVLWidget::popup_readsFlagSettingAtEachConstruction()
{
    PopupStage stage;
    const VLWidget first(stage.manager.get(), nullptr);
    stage.set(ckKeepPopupWindowFlags, true);
    const VLWidget second(stage.manager.get(), nullptr);
    QCOMPARE(first.windowFlags().toInt(), kPopupFlags);
    QVERIFY(second.windowFlags().toInt() != kPopupFlags);
}

void TestVLWidget::popup_hasOneLinearFadeAndOneSingleShotTimer()
{
    PopupStage stage;
    const VLWidget popup(stage.manager.get(), nullptr);
    const auto animations = popup.findChildren<QPropertyAnimation*>();
    QCOMPARE(animations.size(), 1);
    QCOMPARE(animations.first()->propertyName(), QByteArray("windowOpacity"));
    QCOMPARE(animations.first()->targetObject(), &popup);
    QCOMPARE(animations.first()->easingCurve().type(), QEasingCurve::Linear);
    const auto timers = popup.findChildren<QTimer*>();
    QCOMPARE(timers.size(), 1);
    QVERIFY(timers.first()->isSingleShot());
    QVERIFY(!timers.first()->isActive());
}

void TestVLWidget::popup_hasNoViewAndNoReference_whenNew()
{
    PopupStage stage;
    VLWidget popup(stage.manager.get(), nullptr);
    QVERIFY(!popup.view());
    QVERIFY(!popup.referenceWidget());
    QCOMPARE(popup.manager(), stage.manager.get());
    QVERIFY(popup.isWindow());
    QVERIFY(!popup.isVisible());
}

void TestVLWidget::destructor_deletesViewAndContent()
{
    PopupStage stage;
    auto* popup = new VLWidget(stage.manager.get(), nullptr);
    const QPointer<VLView> view = new VLView(stage.manager.get(), nullptr);
    const QPointer<VLXmlElement> content = PopupStage::newContent(u"open"_s);
    view->setContent(content);
    popup->setView(view);

    delete popup;

    QVERIFY(!view);
    QVERIFY(!content);
}

void TestVLWidget::destructor_isHarmless_whenReferenceIsPopupItself_data()
{
    QTest::addColumn<bool>("inside");
    QTest::newRow("the popup") << false;
    QTest::newRow("a widget inside it") << true;
}

void TestVLWidget::destructor_isHarmless_whenReferenceIsPopupItself()
{
    QFETCH(const bool, inside);
    PopupStage stage;
    const QPointer<VLWidget> popup = stage.popup();
    QWidget* reference = inside ? popup->layout()->itemAt(0)->widget() : popup;
    popup->showWithContent(reference, QPoint(300, 300), PopupStage::newContent(u"open"_s),
                           stage.packageRoot);
    stage.showContent();

    delete popup;

    QVERIFY(!popup);
    QVERIFY(!stage.manager->widget());
}

void TestVLWidget::destructor_cutsOffEarlierReferences()
{
    PopupStage stage;
    auto first = std::make_unique<QWidget>();
    stage.popup()->showWithContent(first.get(), QPoint(300, 300), PopupStage::newContent(u"open"_s),
                                   stage.packageRoot);
    stage.showContent();
    // A widget that goes when the popup is no longer whole.
    connect(stage.popup(), &QObject::destroyed, &stage.control, [&first] { first.reset(); });

    delete stage.popup();

    QVERIFY(!first);
}

void TestVLWidget::popup_livesOn_whenManagerIsGone()
{
    PopupStage stage({{ckStayDuration, 0}, {ckHideDuration, 0}, {ckSafeZoneMargin, QSize(0, 0)}});
    stage.showContent();
    VLWidget* popup = stage.popup();
    QTimer* timer = stage.timer();
    QPropertyAnimation* animation = stage.animation();

    // The popup is deleted later; until then it may be asked for anything.
    stage.manager.reset();

    QVERIFY(!popup->manager());
    popup->setTimer();
    QCOMPARE(timer->interval(), 3000);
    QVERIFY(popup->isSafe(popup->pos() - QPoint(20, 20)));
    popup->checkMousePosition(PopupStage::farAway());
    QVERIFY(timer->isActive());
    popup->contentResized();
    popup->reposition();
    popup->view()->setReserved(true);
    QVERIFY(!popup->testAttribute(Qt::WA_DeleteOnClose));
    popup->hideAnimated();
    QCOMPARE(animation->duration(), 300);
    animation->setCurrentTime(300);
    QVERIFY(!popup->isVisible());
    popup->showAnimated();
    QVERIFY(isOpacity(popup, 1.0));
}

void TestVLWidget::popup_livesOn_whenManagerIsGone_inNestedEventLoop()
{
    PopupStage stage({{ckStayDuration, 1}, {ckHideDuration, 0}});
    QPointer<VLWidget> popup;
    bool wasHidden = false;
    QEventLoop outer;
    QTimer::singleShot(0, &outer, [&] {
        stage.showContent();
        popup = stage.popup();
        const QTimer* timer = stage.timer();
        QVERIFY(timer->isActive());
        stage.manager.reset();
        // As a dialog of the host would: the popup outlives its manager, and its timer fires.
        QEventLoop inner;
        connect(timer, &QTimer::timeout, &inner, &QEventLoop::quit, Qt::QueuedConnection);
        QTimer::singleShot(5000, &inner, &QEventLoop::quit);
        inner.exec();
        QVERIFY(popup);
        QVERIFY(!popup->manager());
        wasHidden = popup->findChild<QPropertyAnimation*>()->state() == QAbstractAnimation::Running;
        outer.quit();
    });
    outer.exec();

    QVERIFY(wasHidden);
    QTRY_VERIFY(!popup);
}

void TestVLWidget::setView_deletesOldViewAtOnce()
{
    PopupStage stage;
    VLWidget popup(stage.manager.get(), nullptr);
    const QPointer<VLView> first = new VLView(stage.manager.get(), nullptr);
    popup.setView(first);

    const QPointer<VLView> second = new VLView(stage.manager.get(), nullptr);
    popup.setView(second);
    QVERIFY(!first);
    QCOMPARE(popup.view(), second);

    popup.setView(nullptr);
    QVERIFY(!second);
    QVERIFY(!popup.view());
}

void TestVLWidget::setView_placesViewAtOrigin()
{
    PopupStage stage;
    VLWidget popup(stage.manager.get(), nullptr);
    auto* view = new VLView(stage.manager.get(), nullptr);
    view->setPosition(40, 50);
    popup.setView(view);
    QCOMPARE(view->position(), QPoint(0, 0));
}

void TestVLWidget::setView_followsReservedAndSizeOfView()
{
    PopupStage stage;
    stage.showContent();
    QTRY_COMPARE(stage.popup()->size(), kPopupSize);
    stage.popup()->setFixedSize(200, 200);
    Q_EMIT stage.view()->contentSizeChanged();
    QCOMPARE(stage.popup()->size(), kPopupSize);

    // Where it has become false nothing is detached, but the popup listens all the same.
    QVERIFY(!QObject::disconnect(stage.view(), &VLView::reservedChanged, &stage.control, nullptr));
    QVERIFY(QObject::disconnect(stage.view(), &VLView::reservedChanged, stage.popup(),
                                &VLWidget::contentReservedChanged));
}

void TestVLWidget::showWithContent_changesNothing_whenContentIsNull()
{
    PopupStage stage;
    const VLXmlElement* content = stage.showContent();
    const QPoint position = stage.popup()->pos();
    QWidget other;

    stage.popup()->showWithContent(&other, QPoint(10, 10), nullptr, u"elsewhere"_s);

    QCOMPARE(stage.popup()->referenceWidget(), &stage.control);
    QCOMPARE(stage.view()->content(), content);
    QCOMPARE(stage.popup()->pos(), position);
    QCOMPARE(stage.view()->packageRoot().path(), stage.packageRoot);
    QVERIFY(stage.popup()->isVisible());
}

void TestVLWidget::showWithContent_storesReferenceOnlyIfWidget()
{
    PopupStage stage;
    stage.showContent();
    QCOMPARE(stage.popup()->referenceWidget(), &stage.control);

    QObject noWidget;
    stage.popup()->showWithContent(&noWidget, QPoint(300, 300), stage.view()->content(),
                                   stage.packageRoot);
    QVERIFY(!stage.popup()->referenceWidget());

    stage.showContent();
    stage.popup()->showWithContent(nullptr, QPoint(300, 300), stage.view()->content(),
                                   stage.packageRoot);
    QVERIFY(!stage.popup()->referenceWidget());
}

void TestVLWidget::showWithContent_setsPackageRoot()
{
    PopupStage stage;
    stage.showContent();
    QCOMPARE(stage.view()->packageRoot().path(), stage.packageRoot);
}

void TestVLWidget::showWithContent_deletesOldContent()
{
    PopupStage stage;
    const QPointer<VLXmlElement> first = stage.showContent();
    const VLXmlElement* seenWhileDying = first;
    connect(first, &QObject::destroyed, this, [&] { seenWhileDying = stage.view()->content(); });

    VLXmlElement* second = stage.showContent();

    QVERIFY(!first);
    QVERIFY(!seenWhileDying);
    QCOMPARE(stage.view()->content(), second);
}

void TestVLWidget::showWithContent_keepsContent_whenGivenAgain()
{
    PopupStage stage;
    const QPointer<VLXmlElement> content = stage.showContent();
    stage.popup()->showWithContent(&stage.control, QPoint(310, 310), content, stage.packageRoot);
    QVERIFY(content);
    QCOMPARE(stage.view()->content(), content.data());
}

void TestVLWidget::showWithContent_choosesSceneByNewContent()
{
    PopupStage stage;
    stage.showContent();
    const QString other = stage.packages.write(u"tips.vidlets/ui/Other.qml"_s,
                                               "import QtQuick\nItem { width: 30; height: 20 }\n");
    VLXmlElement* content = PopupStage::newContent(u"save"_s);
    content->setAttribute(u"ui"_s, u"ui/Other.qml"_s);

    stage.popup()->showWithContent(&stage.control, QPoint(300, 300), content, stage.packageRoot);

    QCOMPARE(stage.view()->source(), QUrl::fromLocalFile(other));
    QTRY_COMPARE(stage.popup()->size(), QSize(31, 21));
}

void TestVLWidget::showWithContent_movesPopup()
{
    PopupStage stage;
    stage.popup()->showWithContent(&stage.control, QPoint(321, 234),
                                   PopupStage::newContent(u"open"_s), stage.packageRoot);
    QCOMPARE(stage.popup()->pos(), QPoint(321, 234));
    stage.popup()->showWithContent(&stage.control, QPoint(400, 200), stage.view()->content(),
                                   stage.packageRoot);
    QCOMPARE(stage.popup()->pos(), QPoint(400, 200));
}

void TestVLWidget::showWithContent_repositions_whenVisible()
{
    PopupStage stage;
    stage.showContent();
    QTRY_COMPARE(stage.popup()->size(), kPopupSize);
    const QRect area = stage.control.screen()->availableGeometry();

    stage.popup()->showWithContent(&stage.control, area.bottomRight(), stage.view()->content(),
                                   stage.packageRoot);

    QCOMPARE(stage.popup()->frameGeometry().bottomRight(), area.bottomRight());
}

void TestVLWidget::showWithContent_setsContextNames()
{
    PopupStage stage;
    // The path reaches the scene as it was given.
    const QString rootPath = stage.packageRoot + u"/../tips.vidlets/"_s;
    VLXmlElement* content = PopupStage::newContent(u"open"_s);

    stage.popup()->showWithContent(&stage.control, QPoint(300, 300), content, rootPath);

    const QQmlContext* names = stage.view()->rootContext();
    QCOMPARE(names->contextProperty(u"vidlet"_s).value<QObject*>(), content);
    QCOMPARE(names->contextProperty(u"dataLocation"_s), QVariant(rootPath));
    QCOMPARE(names->contextProperty(u"vidletView"_s).value<QObject*>(), stage.view());
}

void TestVLWidget::showWithContent_setsContextNamesBeforeSceneLoads()
{
    PopupStage stage;
    stage.packages.write(u"tips.vidlets/ui/Early.qml"_s, R"(import QtQuick
Item {
    property string seen
    width: 10
    height: 10
    Component.onCompleted: seen = vidlet.attribute("key") + "|" + dataLocation + "|" + vidletView.stayOpen
}
)");
    VLXmlElement* content = PopupStage::newContent(u"open"_s);
    content->setAttribute(u"ui"_s, u"ui/Early.qml"_s);

    stage.popup()->showWithContent(&stage.control, QPoint(300, 300), content, u"/r"_s);

    QCOMPARE(stage.scene()->property("seen").toString(), u"open|/r|false"_s);
}

void TestVLWidget::showWithContent_keepsSceneAlive_whenFileIsSame()
{
    PopupStage stage;
    stage.showContent();
    const QPointer<QObject> scene = stage.scene();
    QCOMPARE(scene->property("shownKey").toString(), u"open"_s);

    stage.popup()->showWithContent(&stage.control, QPoint(300, 300),
                                   PopupStage::newContent(u"save"_s), stage.packageRoot);

    QVERIFY(scene);
    QCOMPARE(stage.scene(), scene.data());
    QCOMPARE(scene->property("shownKey").toString(), u"save"_s);
}

void TestVLWidget::showWithContent_showsPopup_whenSceneIsMissing()
{
    PopupStage stage({{ckMessageLevel, VLMessageDebug}});
    stage.showContent();
    const QPointer<QObject> scene = stage.scene();
    stage.popup()->hide();
    VLXmlElement* content = PopupStage::newContent(u"save"_s);
    content->setAttribute(u"ui"_s, u"ui/Missing.qml"_s);

    stage.popup()->showWithContent(&stage.control, QPoint(300, 300), content, stage.packageRoot);

    QVERIFY(stage.popup()->isVisible());
    QVERIFY(scene);
    QCOMPARE(
        stage.interface.messages(VLMessageDebug),
        QStringList{u"Can't find :"_s + QDir::current().absoluteFilePath(u"ui/Missing.qml"_s)});
}

void TestVLWidget::showWithContent_leavesTimerRunning_whenVisible()
{
    PopupStage stage({{ckStayDuration, kEndlessMs}});
    stage.showContent();
    const int id = stage.timer()->timerId();
    QVERIFY(stage.timer()->isActive());

    stage.showContent();

    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.timer()->timerId(), id);
}

void TestVLWidget::showWithContent_letsFadeOutGoOn()
{
    PopupStage stage({{ckHideDuration, kEndlessMs}});
    stage.showContent();
    stage.popup()->hideAnimated();
    stage.animation()->setCurrentTime(kEndlessMs / 2);

    const VLXmlElement* content = stage.showContent();

    QCOMPARE(stage.view()->content(), content);
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Running);
    QCOMPARE(stage.animation()->endValue().toReal(), 0.0);
    QVERIFY(stage.popup()->windowOpacity() < 0.6);
    stage.finishFade();
    QVERIFY(!stage.popup()->isVisible());
}

void TestVLWidget::show_leadsToShownOrCounting_data()
{
    QTest::addColumn<bool>("pointerOverControl");
    QTest::addColumn<bool>("stayOpen");
    QTest::addColumn<int>("stayDurationMs");
    QTest::addColumn<int>("showDurationMs");
    QTest::addColumn<bool>("counting");
    for (const int fadeMs : {0, kEndlessMs}) {
        const char* fade = fadeMs == 0 ? "at once" : "with fade-in";
        QTest::addRow("pointer safe, %s", fade) << true << false << kEndlessMs << fadeMs << false;
        QTest::addRow("stay-open, %s", fade) << false << true << kEndlessMs << fadeMs << false;
        QTest::addRow("no stay duration, %s", fade) << false << false << 0 << fadeMs << false;
        QTest::addRow("pointer away, %s", fade) << false << false << kEndlessMs << fadeMs << true;
    }
}

void TestVLWidget::show_leadsToShownOrCounting()
{
    QFETCH(bool, pointerOverControl);
    QFETCH(bool, stayOpen);
    QFETCH(int, stayDurationMs);
    QFETCH(int, showDurationMs);
    PopupStage stage({{ckStayDuration, stayDurationMs}, {ckShowDuration, showDurationMs}});
    stage.view()->setStayOpen(stayOpen);
    if (pointerOverControl)
        QCursor::setPos(centerOf(stage.control));

    stage.showContent();

    QVERIFY(stage.popup()->isVisible());
    QTEST(stage.timer()->isActive(), "counting");
    QCOMPARE(stage.animation()->state(),
             showDurationMs > 0 ? QAbstractAnimation::Running : QAbstractAnimation::Stopped);
}

void TestVLWidget::showAnimated_showsAtOnce_withoutDuration()
{
    PopupStage stage;
    stage.popup()->setWindowOpacity(0.3);
    stage.showContent();
    QVERIFY(stage.popup()->isVisible());
    QVERIFY(isOpacity(stage.popup(), 1.0));
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Stopped);
}

void TestVLWidget::showAnimated_fadesIn_withDuration()
{
    PopupStage stage({{ckShowDuration, kEndlessMs}});
    stage.showContent();
    QVERIFY(stage.popup()->isVisible());
    QVERIFY(isOpacity(stage.popup(), 0.1));
    QCOMPARE(stage.popup()->size(), kPopupSize);
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Running);
    QCOMPARE(stage.animation()->duration(), kEndlessMs);
    QCOMPARE(stage.animation()->startValue().toReal(), 0.1);
    QCOMPARE(stage.animation()->endValue().toReal(), 1.0);

    stage.animation()->setCurrentTime(kEndlessMs / 2);
    QVERIFY(isOpacity(stage.popup(), 0.55));
}

void TestVLWidget::showAnimated_doesNothing_whenVisible()
{
    PopupStage stage;
    stage.showContent();
    stage.set(ckShowDuration, kEndlessMs);
    stage.popup()->setWindowOpacity(0.4);

    stage.popup()->showAnimated();

    QVERIFY(isOpacity(stage.popup(), 0.4));
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Stopped);
}

void TestVLWidget::endOfFadeIn_leavesPopupVisible()
{
    PopupStage stage({{ckShowDuration, kEndlessMs}, {ckStayDuration, kEndlessMs}});
    stage.showContent();
    stage.finishFade();
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Stopped);
    QVERIFY(stage.popup()->isVisible());
    QVERIFY(isOpacity(stage.popup(), 1.0));
    QVERIFY(stage.timer()->isActive());
}

void TestVLWidget::showEvent_repositions()
{
    PopupStage stage;
    const QRect area = stage.control.screen()->availableGeometry();
    stage.popup()->resize(50, 40);
    stage.popup()->move(area.topLeft() - QPoint(30, 20));
    stage.popup()->show();
    QCOMPARE(stage.popup()->pos(), area.topLeft());
}

void TestVLWidget::hideAnimated_doesNothing_whenHidden()
{
    PopupStage stage;
    stage.showContent();
    stage.popup()->hide();
    stage.popup()->hideAnimated();
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Stopped);

    // Had it left a connection, the end of this fade-in would hide the popup.
    stage.set(ckShowDuration, kEndlessMs);
    stage.popup()->showAnimated();
    stage.finishFade();
    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.scene()->property("resets").toInt(), 0);
}

void TestVLWidget::hideAnimated_hidesAtOnce_withoutDuration_data()
{
    QTest::addColumn<bool>("counting");
    QTest::newRow("timer running") << true;
    QTest::newRow("timer stopped") << false;
}

void TestVLWidget::hideAnimated_hidesAtOnce_withoutDuration()
{
    QFETCH(bool, counting);
    PopupStage stage({{ckHideDuration, 0}, {ckStayDuration, counting ? kEndlessMs : 0}});
    stage.showContent();

    stage.popup()->hideAnimated();

    QVERIFY(!stage.popup()->isVisible());
    QCOMPARE(stage.timer()->isActive(), counting);
    QCOMPARE(stage.scene()->property("resets").toInt(), 1);
}

void TestVLWidget::hideAnimated_fadesOut_withDuration()
{
    PopupStage stage({{ckHideDuration, kEndlessMs}, {ckStayDuration, kEndlessMs}});
    stage.showContent();
    QVERIFY(stage.timer()->isActive());

    stage.popup()->hideAnimated();

    QVERIFY(stage.popup()->isVisible());
    QVERIFY(!stage.timer()->isActive());
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Running);
    QCOMPARE(stage.animation()->duration(), kEndlessMs);
    QCOMPARE(stage.animation()->startValue().toReal(), 1.0);
    QCOMPARE(stage.animation()->endValue().toReal(), 0.0);
    stage.animation()->setCurrentTime(kEndlessMs / 4);
    QVERIFY(isOpacity(stage.popup(), 0.75));
    QCOMPARE(stage.scene()->property("resets").toInt(), 0);
}

void TestVLWidget::hideAnimated_startsAtPresentOpacity()
{
    PopupStage stage({{ckHideDuration, kEndlessMs}});
    stage.showContent();
    stage.popup()->setWindowOpacity(0.5);
    stage.popup()->hideAnimated();
    QCOMPARE(stage.animation()->startValue().toReal(), stage.popup()->windowOpacity());
    QVERIFY(isOpacity(stage.popup(), 0.5));
}

void TestVLWidget::hideAnimated_takesDefaultDuration()
{
    PopupStage stage;
    stage.showContent();
    stage.popup()->hideAnimated();
    QCOMPARE(stage.animation()->duration(), 300);
    QTRY_VERIFY(!stage.popup()->isVisible());
}

void TestVLWidget::hideAnimated_isDropped_duringFadeIn()
{
    PopupStage stage({{ckShowDuration, kEndlessMs}});
    stage.showContent();

    stage.popup()->hideAnimated();

    QCOMPARE(stage.animation()->endValue().toReal(), 1.0);
    stage.finishFade();
    QVERIFY(stage.popup()->isVisible());
}

void TestVLWidget::hideAnimated_isDropped_duringFadeOut()
{
    PopupStage stage({{ckHideDuration, kEndlessMs}});
    stage.showContent();
    stage.popup()->hideAnimated();
    stage.animation()->setCurrentTime(kEndlessMs / 2);

    stage.popup()->hideAnimated();

    QCOMPARE(stage.animation()->currentTime(), kEndlessMs / 2);
    QCOMPARE(stage.animation()->startValue().toReal(), 1.0);
    stage.finishFade();
    QVERIFY(!stage.popup()->isVisible());
    QCOMPARE(stage.scene()->property("resets").toInt(), 1);
}

void TestVLWidget::endOfFadeOut_resetsStateAndHides()
{
    PopupStage stage({{ckHideDuration, kEndlessMs}});
    stage.showContent();
    stage.popup()->hideAnimated();
    stage.finishFade();
    QVERIFY(!stage.popup()->isVisible());
    QCOMPARE(stage.scene()->property("resets").toInt(), 1);

    // The end of the next fade must not hide the popup again.
    stage.scene()->setProperty("state", u"open"_s);
    stage.set(ckShowDuration, kEndlessMs);
    stage.showContent();
    stage.finishFade();
    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.scene()->property("resets").toInt(), 1);
}

void TestVLWidget::hide_duringFadeOut_letsAnimationRunOutUnseen()
{
    PopupStage stage({{ckHideDuration, kEndlessMs}});
    stage.showContent();
    stage.popup()->hideAnimated();

    stage.popup()->hide();
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Running);

    stage.finishFade();
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Stopped);
    QCOMPARE(stage.scene()->property("resets").toInt(), 0);
    QVERIFY(isOpacity(stage.popup(), 0.0));
}

void TestVLWidget::hide_doesNotResetState()
{
    PopupStage stage;
    stage.showContent();
    stage.popup()->hide();
    QCOMPARE(stage.scene()->property("resets").toInt(), 0);
}

void TestVLWidget::hide_leavesTimerRunningIntoNextShow()
{
    PopupStage stage({{ckStayDuration, kEndlessMs}});
    stage.showContent();
    const int id = stage.timer()->timerId();
    stage.popup()->hide();
    QVERIFY(stage.timer()->isActive());

    QCursor::setPos(centerOf(stage.control));
    stage.showContent();

    QCOMPARE(stage.timer()->timerId(), id);
    stage.popup()->checkMousePosition(centerOf(stage.control));
    QVERIFY(!stage.timer()->isActive());
}

void TestVLWidget::setTimer_takesStayDuration_data()
{
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<int>("intervalMs");
    QTest::newRow("whole") << QVariant(1500) << 1500;
    QTest::newRow("truncated") << QVariant(1500.9) << 1500;
    QTest::newRow("text") << QVariant(u"250"_s) << 250;
    QTest::newRow("below one") << QVariant(0.5) << 0;
    QTest::newRow("zero") << QVariant(0) << -1;
    QTest::newRow("negative") << QVariant(-5) << -1;
    QTest::newRow("no number") << QVariant() << -1;
}

void TestVLWidget::setTimer_takesStayDuration()
{
    QFETCH(QVariant, setting);
    QFETCH(int, intervalMs);
    PopupStage stage;
    stage.popup()->setTimer();
    QVERIFY(stage.timer()->isActive());
    QCOMPARE(stage.timer()->interval(), 3000);

    stage.set(ckStayDuration, setting);
    stage.popup()->setTimer();

    QCOMPARE(stage.timer()->isActive(), intervalMs >= 0);
    if (intervalMs >= 0)
        QCOMPARE(stage.timer()->interval(), intervalMs);
}

void TestVLWidget::setTimer_neverFires_whenStayDurationIsBeyondNumbers_data()
{
    QTest::addColumn<double>("setting");
    QTest::newRow("one too many") << 2147483648.0;
    QTest::newRow("many") << 1e10;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
}

void TestVLWidget::setTimer_neverFires_whenStayDurationIsBeyondNumbers()
{
    QFETCH(double, setting);
    PopupStage stage;
    stage.popup();
    stage.set(ckStayDuration, setting);
    QTest::ignoreMessage(QtWarningMsg,
                         "QObject::startTimer: Timers cannot have negative intervals");

    stage.popup()->setTimer();

    QCOMPARE(stage.timer()->interval(), std::numeric_limits<int>::min());
    QCOMPARE(stage.timer()->remainingTime(), -1);
}

void TestVLWidget::setTimer_startsAnew_whenRunning()
{
    PopupStage stage({{ckStayDuration, kEndlessMs}});
    stage.popup()->setTimer();
    stage.set(ckStayDuration, 2 * kEndlessMs);
    stage.popup()->setTimer();
    QVERIFY(stage.timer()->remainingTime() > kEndlessMs);
}

void TestVLWidget::setTimer_stops_whenStayOpen()
{
    PopupStage stage;
    stage.popup()->setTimer();
    stage.view()->setStayOpen(true);
    stage.popup()->setTimer();
    QVERIFY(!stage.timer()->isActive());
}

void TestVLWidget::timeout_hidesPopup()
{
    PopupStage stage({{ckStayDuration, 1}, {ckHideDuration, 1}});
    stage.showContent();
    QTRY_VERIFY(!stage.popup()->isVisible());
    QCOMPARE(stage.scene()->property("resets").toInt(), 1);
}

void TestVLWidget::timeout_isDropped_duringFadeIn()
{
    PopupStage stage({{ckStayDuration, 1}, {ckShowDuration, kEndlessMs}});
    stage.showContent();
    QVERIFY(stage.timer()->isActive());
    QTRY_VERIFY(!stage.timer()->isActive());
    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.animation()->endValue().toReal(), 1.0);

    stage.set(ckStayDuration, kEndlessMs);
    stage.popup()->checkMousePosition(PopupStage::farAway());
    QVERIFY(stage.timer()->isActive());
}

void TestVLWidget::stayOpen_doesNotStopRunningTimer()
{
    PopupStage stage({{ckStayDuration, kEndlessMs}});
    stage.showContent();
    stage.view()->setStayOpen(true);
    QVERIFY(stage.timer()->isActive());
}

void TestVLWidget::checkMousePosition_startsTimer_whenUnsafe()
{
    PopupStage stage({{ckStayDuration, 0}});
    stage.showContent();
    QVERIFY(!stage.timer()->isActive());
    stage.set(ckStayDuration, kEndlessMs);

    stage.popup()->checkMousePosition(PopupStage::farAway());

    QVERIFY(stage.timer()->isActive());
    QCOMPARE(stage.timer()->interval(), kEndlessMs);
}

void TestVLWidget::checkMousePosition_startsNoTimer_whenUnsafeButStaying_data()
{
    QTest::addColumn<bool>("stayOpen");
    QTest::addColumn<int>("stayDurationMs");
    QTest::newRow("stay-open") << true << kEndlessMs;
    QTest::newRow("no stay duration") << false << 0;
}

void TestVLWidget::checkMousePosition_startsNoTimer_whenUnsafeButStaying()
{
    QFETCH(bool, stayOpen);
    QFETCH(int, stayDurationMs);
    PopupStage stage({{ckStayDuration, stayDurationMs}});
    stage.view()->setStayOpen(stayOpen);
    stage.showContent();
    stage.popup()->checkMousePosition(PopupStage::farAway());
    QVERIFY(!stage.timer()->isActive());
    QVERIFY(stage.popup()->isVisible());
}

void TestVLWidget::checkMousePosition_doesNotRestartTimer()
{
    PopupStage stage({{ckStayDuration, kEndlessMs}});
    stage.showContent();
    stage.set(ckStayDuration, 2 * kEndlessMs);
    stage.popup()->checkMousePosition(PopupStage::farAway());
    QCOMPARE(stage.timer()->interval(), kEndlessMs);
}

void TestVLWidget::checkMousePosition_stopsTimer_whenSafe()
{
    PopupStage stage({{ckStayDuration, kEndlessMs}});
    stage.showContent();
    QVERIFY(stage.timer()->isActive());
    stage.popup()->checkMousePosition(centerOf(*stage.popup()));
    QVERIFY(!stage.timer()->isActive());
    QVERIFY(stage.popup()->isVisible());
}

void TestVLWidget::checkMousePosition_armsTimerWithoutEffect_duringFadeOut()
{
    PopupStage stage({{ckStayDuration, 1}, {ckHideDuration, kEndlessMs}});
    stage.showContent();
    QTRY_COMPARE(stage.animation()->state(), QAbstractAnimation::Running);
    QVERIFY(!stage.timer()->isActive());

    stage.popup()->checkMousePosition(PopupStage::farAway());
    QVERIFY(stage.timer()->isActive());
    QTRY_VERIFY(!stage.timer()->isActive());
    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.animation()->state(), QAbstractAnimation::Running);

    stage.popup()->checkMousePosition(PopupStage::farAway());
    stage.finishFade();
    QTRY_VERIFY(!stage.timer()->isActive());
    QCOMPARE(stage.scene()->property("resets").toInt(), 1);
}

void TestVLWidget::isSafe_includesEdgesOfGrownFrame_data()
{
    // Which edge of the grown frame, -1 for left and top, and how far beyond it.
    QTest::addColumn<int>("horizontal");
    QTest::addColumn<int>("vertical");
    QTest::addColumn<QPoint>("beyond");
    QTest::addColumn<bool>("safe");
    for (const int x : {-1, 0, 1}) {
        for (const int y : {-1, 0, 1}) {
            QTest::addRow("on %d %d", x, y) << x << y << QPoint() << true;
            if (x != 0)
                QTest::addRow("beside %d %d", x, y) << x << y << QPoint(x, 0) << false;
            if (y != 0)
                QTest::addRow("beyond %d %d", x, y) << x << y << QPoint(0, y) << false;
        }
    }
}

void TestVLWidget::isSafe_includesEdgesOfGrownFrame()
{
    QFETCH(int, horizontal);
    QFETCH(int, vertical);
    QFETCH(QPoint, beyond);
    PopupStage stage({{ckSafeZoneMargin, QSize(30, 7)}});
    stage.showContent();
    stage.popup()->contentResized();
    QCOMPARE(stage.popup()->size(), kPopupSize);
    const QRect zone = QRect(QPoint(300, 300), kPopupSize).adjusted(-30, -7, 30, 7);
    QPoint point = zone.center();
    if (horizontal != 0)
        point.setX(horizontal < 0 ? zone.left() : zone.right());
    if (vertical != 0)
        point.setY(vertical < 0 ? zone.top() : zone.bottom());
    QTEST(stage.popup()->isSafe(point + beyond), "safe");
}

void TestVLWidget::isSafe_takesDefaultMargin()
{
    PopupStage stage;
    stage.showContent();
    QVERIFY(stage.popup()->isSafe(QPoint(280, 280)));
    QVERIFY(!stage.popup()->isSafe(QPoint(279, 280)));
    QVERIFY(!stage.popup()->isSafe(QPoint(280, 279)));
}

void TestVLWidget::isSafe_holdsOverReference_farFromPopup()
{
    PopupStage stage;
    stage.popup()->showWithContent(&stage.control, QPoint(800, 600),
                                   PopupStage::newContent(u"open"_s), stage.packageRoot);
    QVERIFY(stage.popup()->isSafe(centerOf(stage.control)));
    const QRect control(stage.control.mapToGlobal(QPoint(0, 0)), stage.control.size());
    QVERIFY(stage.popup()->isSafe(control.bottomRight()));
    QVERIFY(!stage.popup()->isSafe(control.bottomRight() + QPoint(1, 0)));
}

void TestVLWidget::isSafe_failsOverChildOfReference_farFromPopup()
{
    PopupStage stage;
    QWidget child(&stage.control);
    child.setGeometry(0, 0, 20, 20);
    child.show();
    stage.popup()->showWithContent(&stage.control, QPoint(800, 600),
                                   PopupStage::newContent(u"open"_s), stage.packageRoot);
    QVERIFY(!stage.popup()->isSafe(centerOf(child)));
}

void TestVLWidget::isSafe_holdsOverNoWidget_withoutReference()
{
    PopupStage stage;
    stage.popup()->showWithContent(nullptr, QPoint(800, 600), PopupStage::newContent(u"open"_s),
                                   stage.packageRoot);
    QVERIFY(stage.popup()->isSafe(QPoint(500, 50)));
    QVERIFY(!stage.popup()->isSafe(centerOf(stage.control)));
}

void TestVLWidget::findVisibleGeometry_movesIntoArea_data()
{
    // Offsets of the four edges from those of the area; positive is to the right and down.
    QTest::addColumn<QMargins>("outside");
    QTest::addColumn<int>("horizontal");
    QTest::addColumn<int>("vertical");
    QTest::newRow("inside") << QMargins() << 0 << 0;
    QTest::newRow("left") << QMargins(1, 0, 0, 0) << -1 << 0;
    QTest::newRow("top") << QMargins(0, 1, 0, 0) << 0 << -1;
    QTest::newRow("right") << QMargins(0, 0, 1, 0) << 1 << 0;
    QTest::newRow("bottom") << QMargins(0, 0, 0, 1) << 0 << 1;
    QTest::newRow("top left") << QMargins(70, 90, 0, 0) << -1 << -1;
    QTest::newRow("top right") << QMargins(0, 90, 70, 0) << 1 << -1;
    QTest::newRow("bottom left") << QMargins(70, 0, 0, 90) << -1 << 1;
    QTest::newRow("bottom right") << QMargins(0, 0, 70, 90) << 1 << 1;
    // Where both sides are outside, the right and the bottom win.
    QTest::newRow("too wide") << QMargins(50, 0, 30, 0) << 1 << 0;
    QTest::newRow("too high") << QMargins(0, 50, 0, 30) << 0 << 1;
    QTest::newRow("too large") << QMargins(20, 20, 20, 20) << 1 << 1;
    QTest::newRow("too wide, flush left") << QMargins(0, 0, 1, 0) << 1 << 0;
}

void TestVLWidget::findVisibleGeometry_movesIntoArea()
{
    QFETCH(QMargins, outside);
    QFETCH(int, horizontal);
    QFETCH(int, vertical);
    PopupStage stage;
    stage.showContent();
    const QRect area = stage.control.screen()->availableGeometry();
    // Touches each edge that it does not cross, so that one pixel decides.
    const bool tooWide = outside.left() > 0 && outside.right() > 0;
    const bool tooHigh = outside.top() > 0 && outside.bottom() > 0;
    const QSize size(tooWide ? area.width() + outside.left() + outside.right() : 200,
                     tooHigh ? area.height() + outside.top() + outside.bottom() : 100);
    QRect geometry(area.topLeft(), size);
    if (outside.right() > 0)
        geometry.moveRight(area.right() + outside.right());
    if (outside.left() > 0)
        geometry.moveLeft(area.left() - outside.left());
    if (outside.bottom() > 0)
        geometry.moveBottom(area.bottom() + outside.bottom());
    if (outside.top() > 0)
        geometry.moveTop(area.top() - outside.top());
    QRect expected = geometry;
    if (horizontal != 0)
        expected.moveLeft(horizontal < 0 ? area.left() : area.right() - size.width() + 1);
    if (vertical != 0)
        expected.moveTop(vertical < 0 ? area.top() : area.bottom() - size.height() + 1);

    bool moved = horizontal == 0 && vertical == 0;
    QCOMPARE(stage.popup()->findVisibleGeometry(geometry, &moved), expected);
    QCOMPARE(moved, horizontal != 0 || vertical != 0);
    QCOMPARE(stage.popup()->findVisibleGeometry(geometry), expected);
}

void TestVLWidget::findVisibleGeometry_takesPopupsScreen_withoutLivingReference()
{
    PopupStage stage;
    const QRect area = stage.popup()->screen()->availableGeometry();
    const QRect outside(area.topLeft() - QPoint(10, 10), QSize(50, 50));
    const QRect inside(area.topLeft(), outside.size());
    QCOMPARE(stage.popup()->findVisibleGeometry(outside), inside);

    auto* reference = new QWidget;
    stage.popup()->showWithContent(reference, QPoint(300, 300), PopupStage::newContent(u"open"_s),
                                   stage.packageRoot);
    delete reference;
    QCOMPARE(stage.popup()->findVisibleGeometry(outside), inside);
}

void TestVLWidget::findVisibleGeometry_takesScreenOfReference()
{
    QTemporaryDir directory;
    QFile screens(directory.filePath(u"screens.json"_s));
    QVERIFY(screens.open(QIODevice::WriteOnly));
    screens.write(R"({"screens": [
        {"name": "a", "x": 0, "y": 0, "width": 800, "height": 600, "logicalDpi": 96,
         "logicalBaseDpi": 96, "dpr": 1},
        {"name": "b", "x": 900, "y": 100, "width": 700, "height": 500, "logicalDpi": 96,
         "logicalBaseDpi": 96, "dpr": 1}]})");
    screens.close();
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screens.fileName().toUtf8());
    const ChildResult result = runInChildProcess(u"second screen"_s);
    qputenv("QT_QPA_PLATFORM", platform);
    QVERIFY2(result.finished && !result.crashed, result.standardError.constData());
    QCOMPARE(result.exitCode, 0);
}

void TestVLWidget::reposition_movesOnlyWhenOutside()
{
    PopupStage stage;
    stage.showContent();
    QTRY_COMPARE(stage.popup()->size(), kPopupSize);
    const QRect area = stage.control.screen()->availableGeometry();

    const QPoint flush =
        area.bottomRight() - QPoint(kPopupSize.width(), kPopupSize.height()) + QPoint(1, 1);
    for (const QPoint& inside : {area.topLeft(), flush}) {
        stage.popup()->move(inside);
        int moves = 0;
        const EventWatcher watcher(stage.popup(), QEvent::Move, [&moves] { ++moves; });
        stage.popup()->reposition();
        QCOMPARE(stage.popup()->pos(), inside);
        QCOMPARE(moves, 0);
    }
    stage.popup()->move(flush + QPoint(1, 1));
    stage.popup()->reposition();
    QCOMPARE(stage.popup()->pos(), flush);
}

void TestVLWidget::reposition_movesHostWindow_whenPopupIsNoWindow()
{
    QWidget host;
    PopupStage stage;
    stage.showContent();
    host.setWindowFlag(Qt::FramelessWindowHint);
    host.resize(300, 200);
    stage.popup()->setParent(&host, Qt::WindowFlags());
    const QRect area = stage.control.screen()->availableGeometry();
    host.move(area.topLeft() - QPoint(40, 30));
    stage.popup()->move(5, 6);

    stage.popup()->reposition();

    QCOMPARE(host.pos(), area.topLeft());
    QCOMPARE(stage.popup()->pos(), QPoint(5, 6));
    stage.popup()->setParent(nullptr, Qt::Tool);
}

void TestVLWidget::contentResized_doesNothing_withoutViewOrScene()
{
    PopupStage stage;
    VLWidget bare(stage.manager.get(), nullptr);
    const QSize size = bare.size();
    bare.contentResized();
    QCOMPARE(bare.size(), size);
    QCOMPARE(bare.minimumSize(), QSize(0, 0));

    stage.popup()->contentResized();
    QCOMPARE(stage.popup()->minimumSize(), QSize(0, 0));
}

void TestVLWidget::contentResized_addsOnePixelToPopupAlone()
{
    PopupStage stage;
    stage.showContent();
    QTRY_COMPARE(stage.popup()->size(), kPopupSize);
    QCOMPARE(stage.popup()->minimumSize(), kPopupSize);
    QCOMPARE(stage.popup()->maximumSize(), kPopupSize);
    const QWidget* container = stage.popup()->layout()->itemAt(0)->widget();
    QCOMPARE(container->minimumSize(), kSceneSize);
    QCOMPARE(container->maximumSize(), kSceneSize);
    QTRY_COMPARE(container->size(), kSceneSize);
}

void TestVLWidget::contentResized_truncatesSizeOfScene()
{
    PopupStage stage;
    stage.showContent();
    QTRY_COMPARE(stage.popup()->size(), kPopupSize);
    auto* root = stage.view()->rootObject();
    root->setSize(QSizeF(99.9, 49.9));
    stage.popup()->contentResized();
    QCOMPARE(stage.popup()->size(), QSize(100, 50));
}

void TestVLWidget::contentResized_sizesPopupAlone_withoutContainer()
{
    PopupStage stage;
    stage.showContent();
    QTRY_COMPARE(stage.popup()->size(), kPopupSize);
    const QWidget* container = stage.popup()->layout()->itemAt(0)->widget();
    stage.popup()->SetContainerWidget(nullptr);
    stage.view()->rootObject()->setSize(QSizeF(99, 49));
    stage.popup()->contentResized();
    QCOMPARE(stage.popup()->size(), QSize(100, 50));
    QCOMPARE(container->maximumSize(), kSceneSize);
}

void TestVLWidget::contentResized_followsScene()
{
    PopupStage stage;
    stage.showContent();
    QTRY_COMPARE(stage.popup()->size(), kPopupSize);
    stage.view()->rootObject()->setSize(QSizeF(240, 160));
    QTRY_COMPARE(stage.popup()->size(), QSize(241, 161));
    stage.view()->rootObject()->setSize(QSizeF(60, 40));
    QTRY_COMPARE(stage.popup()->size(), QSize(61, 41));
}

void TestVLWidget::contentResized_fitsPopupToScreen()
{
    PopupStage stage;
    stage.showContent();
    QTRY_COMPARE(stage.popup()->size(), kPopupSize);
    const QRect area = stage.control.screen()->availableGeometry();
    const QRect content(area.bottomRight() - QPoint(199, 99), QSize(200, 100));
    stage.popup()->move(content.topLeft() + QPoint(40, 30));

    stage.view()->rootObject()->setSize(content.size());
    stage.popup()->contentResized();

    // What is fitted is the scene; the pixel more lies beyond.
    QCOMPARE(stage.popup()->pos(), content.topLeft());
    QCOMPARE(stage.popup()->size(), content.size() + QSize(1, 1));
}

void TestVLWidget::contentResized_addsHeightOfTitle_whenDecorated()
{
    PopupStage stage({{ckKeepPopupWindowFlags, true}});
    stage.showContent();
    QVERIFY(QTest::qWaitForWindowExposed(stage.popup()));
    const auto titleHeight = [&stage] {
        return stage.popup()->geometry().top() - stage.popup()->frameGeometry().top();
    };
    QTRY_VERIFY(titleHeight() > 0);

    stage.popup()->contentResized();

    QCOMPARE(stage.popup()->size(), kPopupSize + QSize(0, titleHeight()));
}

void TestVLWidget::contentResized_sizesOnlyContainer_whenHiddenChild()
{
    QWidget host;
    PopupStage stage;
    stage.showContent();
    QTRY_COMPARE(stage.popup()->size(), kPopupSize);
    stage.popup()->setParent(&host, Qt::WindowFlags());
    const QSize hostSize = host.size();
    const QWidget* container = stage.popup()->layout()->itemAt(0)->widget();

    stage.view()->rootObject()->setSize(QSizeF(90, 70));
    stage.popup()->contentResized();
    QCOMPARE(stage.popup()->minimumSize(), QSize(90, 70));
    QCOMPARE(stage.popup()->maximumSize(), QSize(90, 70));
    QCOMPARE(container->maximumSize(), QSize(90, 70));
    QCOMPARE(host.size(), hostSize);
    QCOMPARE(host.minimumSize(), QSize(0, 0));

    // The guard is released on this way too.
    stage.view()->rootObject()->setSize(QSizeF(50, 30));
    stage.popup()->contentResized();
    QCOMPARE(container->maximumSize(), QSize(50, 30));
    stage.popup()->setParent(nullptr, Qt::Tool);
}

void TestVLWidget::contentResized_isNotReentered()
{
    PopupStage stage;
    stage.showContent();
    QTRY_COMPARE(stage.popup()->size(), kPopupSize);
    QList<QSize> minimaAfterInnerCall;
    const EventWatcher watcher(stage.popup(), QEvent::Resize, [&] {
        stage.view()->rootObject()->setSize(QSizeF(333, 222));
        stage.popup()->contentResized();
        minimaAfterInnerCall += stage.popup()->minimumSize();
    });

    stage.view()->rootObject()->setSize(QSizeF(200, 150));
    stage.popup()->contentResized();

    QVERIFY(!minimaAfterInnerCall.isEmpty());
    QVERIFY(!minimaAfterInnerCall.contains(QSize(333, 222)));
    QVERIFY(!minimaAfterInnerCall.contains(QSize(334, 223)));
    QCOMPARE(stage.popup()->size(), QSize(201, 151));
}

void TestVLWidget::referenceDestroyed_hidesAndResets()
{
    PopupStage stage;
    auto* reference = new QWidget;
    stage.popup()->showWithContent(reference, QPoint(300, 300), PopupStage::newContent(u"open"_s),
                                   stage.packageRoot);
    delete reference;

    QVERIFY(!stage.popup()->isVisible());
    QCOMPARE(stage.scene()->property("resets").toInt(), 1);
    // Compared, never followed.
    QCOMPARE(quintptr(stage.popup()->referenceWidget()), quintptr(reference));
}

void TestVLWidget::referenceDestroyed_hides_whenReferenceIsAnEarlierOne()
{
    PopupStage stage;
    auto* reference = new QWidget;
    stage.popup()->showWithContent(reference, QPoint(300, 300), PopupStage::newContent(u"open"_s),
                                   stage.packageRoot);
    stage.showContent();
    QVERIFY(stage.popup()->isVisible());
    QCOMPARE(stage.popup()->referenceWidget(), &stage.control);

    delete reference;

    QVERIFY(!stage.popup()->isVisible());
    QCOMPARE(stage.popup()->referenceWidget(), &stage.control);
}

void TestVLWidget::referenceDestroyed_isHarmless_afterManyShows()
{
    PopupStage stage;
    auto* reference = new QWidget;
    for (int i = 0; i < 3; ++i) {
        stage.popup()->showWithContent(reference, QPoint(300, 300),
                                       PopupStage::newContent(u"open"_s), stage.packageRoot);
    }
    delete reference;
    QVERIFY(!stage.popup()->isVisible());
    QCOMPARE(stage.scene()->property("resets").toInt(), 1);
}

void TestVLWidget::referenceDestroyed_leavesPopupUsable()
{
    PopupStage stage;
    auto* reference = new QWidget;
    stage.popup()->showWithContent(reference, QPoint(300, 300), PopupStage::newContent(u"open"_s),
                                   stage.packageRoot);
    delete reference;

    // All of this looks for the reference, or for its screen.
    stage.popup()->showAnimated();
    stage.popup()->checkMousePosition(PopupStage::farAway());
    stage.popup()->reposition();
    stage.popup()->contentResized();
    QVERIFY(stage.popup()->isVisible());

    stage.showContent();
    QCOMPARE(stage.popup()->referenceWidget(), &stage.control);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLWidget>(argc, argv);
}

#include "tst_vlwidget.moc"
