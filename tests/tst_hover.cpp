// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "PointerDriver.h"
#include "PopupStage.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QFile>
#include <QHelpEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QProcess>
#include <QPushButton>
#include <QQuickItem>
#include <QTimer>
#include <QToolTip>

#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr auto kScene = R"(import QtQuick

Rectangle {
    property string shownKey: vidlet ? vidlet.attribute("key") : ""
    property string shownText: vidlet ? vidlet.childElement("text").content : ""

    width: 160
    height: 90
    color: "steelblue"
}
)";

constexpr auto kControlFile = R"(<vidlets>
  <vidlet key="open"><text>Opens a document</text></vidlet>
  <vidlet key="save"><text>Saves the document</text></vidlet>
</vidlets>
)";

const QPoint kOffset(35, 30);
const QPoint kOutsideOfAll(1250, 20);
const QPoint kOtherWindow(1100, 700);
const QSize kPopupSize(161, 91);
// Slow machines may take their time between a move of the pointer and its effect.
constexpr int kPatienceMs = 15000;
constexpr int kEndlessMs = 600000;
constexpr int kShortMs = 50;

VLWidget* popupOnScreen()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        auto* popup = qobject_cast<VLWidget*>(widget);
        if (popup && popup->isVisible())
            return popup;
    }
    return nullptr;
}

QLabel* ordinaryToolTip()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        auto* label = qobject_cast<QLabel*>(widget);
        if (label && label->isVisible() && label->windowType() == Qt::ToolTip)
            return label;
    }
    return nullptr;
}

QString shownText()
{
    VLWidget* popup = popupOnScreen();
    return popup && popup->view()->rootObject()
        ? popup->view()->rootObject()->property("shownText").toString()
        : QString();
}

/// Writes down the mouse events that reach the application, and where its popups come up.
class EventLog : public QObject
{
public:
    EventLog()
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::MouseMove)
            lastMove = static_cast<QMouseEvent*>(event)->globalPosition().toPoint();
        else if (event->type() == QEvent::MouseButtonRelease)
            ++releases;
        else if (event->type() == QEvent::Show && qobject_cast<VLWidget*>(object))
            popupShownAt = static_cast<VLWidget*>(object)->pos();
        return QObject::eventFilter(object, event);
    }

    QPoint lastMove;
    int releases = 0;
    /// Taken as the popup shows itself, since the window manager has its say later.
    QPoint popupShownAt;
};

/// What a host does that keeps its event filter to itself: it hands the events on.
class ForwardingFilter : public QObject
{
public:
    explicit ForwardingFilter(VLInterface& interface)
        : m_interface(interface)
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::ToolTip:
            return m_interface.show(object->objectName(),
                                    static_cast<QHelpEvent*>(event)->globalPos(), object);
        case QEvent::MouseMove:
            return m_interface.mouseMoveEventFilter(object, static_cast<QMouseEvent*>(event));
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
            return m_interface.mouseButtonEventFilter(object, static_cast<QMouseEvent*>(event));
        default:
            return QObject::eventFilter(object, event);
        }
    }

private:
    VLInterface& m_interface;
};

/// A host with a main window of four controls. The first two have tips, the others have none.
class Host
{
public:
    Host();
    ~Host();

    /// Moves the pointer within the window, and waits until the application has seen it.
    void moveTo(const QPoint& position) const;
    /// The middle of one of its controls.
    static QPoint centerOf(const QWidget& widget);

    PackageBuilder packages;
    VLContext context;
    RecordingIndex index;
    QWidget window;
    QPushButton open;
    QPushButton save;
    QPushButton ordinary;
    QPushButton plain;
    std::unique_ptr<VLInterface> interface;
    std::unique_ptr<ForwardingFilter> filter;
    std::unique_ptr<EventLog> log;

private:
    Q_DISABLE_COPY_MOVE(Host)
};

Host::Host()
    : index(&context)
    , open(u"Open"_s, &window)
    , save(u"Save"_s, &window)
    , ordinary(u"Ordinary"_s, &window)
    , plain(u"Plain"_s, &window)
{
    QFETCH_GLOBAL(bool, installsFilter);
    const QString package = u"tips.vidlets"_s;
    packages.write(package + u"/ui/VidletUI.qml"_s, kScene);
    packages.writeControlFile(package, u"tips.xml"_s, kControlFile);

    window.setWindowFlag(Qt::FramelessWindowHint);
    window.setGeometry(50, 50, 900, 600);
    window.setMouseTracking(true);
    open.setObjectName(u"open"_s);
    open.setGeometry(100, 100, 120, 40);
    save.setObjectName(u"save"_s);
    save.setGeometry(600, 100, 120, 40);
    ordinary.setObjectName(u"ordinary"_s);
    ordinary.setToolTip(u"An ordinary tooltip"_s);
    ordinary.setGeometry(100, 450, 120, 40);
    plain.setObjectName(u"plain"_s);
    plain.setGeometry(600, 450, 120, 40);

    context.set(ckInstallEventFilter, installsFilter);
    context.set(ckTooltipOffset, QSize(kOffset.x(), kOffset.y()));
    // A test that waits for the end of one of them shortens it.
    context.set(ckStayDuration, kEndlessMs);
    context.set(ckHideDuration, kEndlessMs);
    interface = std::make_unique<VLInterface>(context, QStringList{packages.dataPath()}, &index);
    if (!installsFilter)
        filter = std::make_unique<ForwardingFilter>(*interface);

    if (!PointerDriver::moveTo(kOutsideOfAll))
        qFatal("The pointer cannot be driven");
    if (!bringUp(&window))
        qFatal("The window did not come up");
    window.activateWindow();
    if (!QTest::qWaitForWindowActive(&window))
        qFatal("The window did not become active");
    log = std::make_unique<EventLog>();
    // A move to where the pointer was seen last, by the host before, would not count as one; so
    // each host begins at a place of its own.
    static int hosts = 0;
    ++hosts;
    moveTo(QPoint(60 + hosts, 60));
}

void Host::moveTo(const QPoint& position) const
{
    log->lastMove = QPoint();
    QVERIFY(PointerDriver::moveTo(position));
    QTRY_COMPARE_WITH_TIMEOUT(log->lastMove, position, kPatienceMs);
}

Host::~Host()
{
    QToolTip::hideText();
    // The index clears the trees away, so the popup has to be gone before it.
    filter.reset();
    interface.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QPoint Host::centerOf(const QWidget& widget)
{
    return widget.mapToGlobal(widget.rect().center());
}

/// Rests the pointer on the first control until its tip is there.
void restOnOpen(const Host& host)
{
    host.moveTo(Host::centerOf(host.open));
    QTRY_COMPARE_WITH_TIMEOUT(shownText(), u"Opens a document"_s, kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(popupOnScreen()->size(), kPopupSize, kPatienceMs);
}

/// The hide timer of the popup that is on the screen.
const QTimer* hideTimer()
{
    return popupOnScreen()->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
}

} // namespace

class TestHover : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    void initTestCase_data();

    void rest_showsContentBesidePointer();
    void move_withinSafeZone_keepsPopup();
    void move_away_hidesPopup();
    void move_backInTime_keepsPopup();
    void click_elsewhere_hidesPopupAtOnce();
    void click_insidePopup_keepsPopup();
    void rest_onOtherControl_replacesContent();
    void rest_onUnknownControl_showsOrdinaryToolTip();
    void rest_onUnknownControl_fadesOpenPopup();
    void deactivation_hidesPopup_whenFilterIsInstalled();
};

int TestHover::runChild(const QString& name)
{
    if (name != u"other application"_s)
        return VidletsTest::runChild(name);
    QWidget window;
    window.setWindowFlag(Qt::FramelessWindowHint);
    window.setGeometry(QRect(kOtherWindow - QPoint(50, 50), QSize(100, 100)));
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        return EXIT_FAILURE;
    QFile output;
    if (!output.open(stdout, QIODevice::WriteOnly) || output.write("ready\n") < 0)
        return EXIT_FAILURE;
    output.close();
    return QApplication::exec();
}

void TestHover::initTestCase_data()
{
    QTest::addColumn<bool>("installsFilter");
    QTest::newRow("library's filter") << true;
    QTest::newRow("host's filter") << false;
}

void TestHover::rest_showsContentBesidePointer()
{
    Host host;
    restOnOpen(host);
    QVERIFY(popupOnScreen());
    QCOMPARE(host.log->popupShownAt, Host::centerOf(host.open) + kOffset);
    QCOMPARE(popupOnScreen()->referenceWidget(), &host.open);
    // The pointer is over the control, so nothing counts down.
    QVERIFY(!hideTimer()->isActive());
    QVERIFY(!ordinaryToolTip());
}

void TestHover::move_withinSafeZone_keepsPopup()
{
    Host host;
    restOnOpen(host);
    QVERIFY(popupOnScreen());
    const QRect frame = popupOnScreen()->frameGeometry();
    for (const QPoint& position : {frame.bottomRight() + QPoint(15, 15), frame.center()}) {
        host.moveTo(position);
        QVERIFY(popupOnScreen());
        QVERIFY(!hideTimer()->isActive());
    }
}

void TestHover::move_away_hidesPopup()
{
    Host host;
    restOnOpen(host);
    QVERIFY(popupOnScreen());
    host.interface->context().set(ckStayDuration, kShortMs);
    host.interface->context().set(ckHideDuration, kShortMs);
    host.moveTo(Host::centerOf(host.plain) + QPoint(0, 60));
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
}

void TestHover::move_backInTime_keepsPopup()
{
    Host host;
    restOnOpen(host);
    QVERIFY(popupOnScreen());
    const QPoint inside = popupOnScreen()->frameGeometry().center();
    host.moveTo(inside + QPoint(0, 200));
    QVERIFY(hideTimer()->isActive());
    host.moveTo(inside);
    QVERIFY(!hideTimer()->isActive());
    QVERIFY(popupOnScreen());
}

void TestHover::click_elsewhere_hidesPopupAtOnce()
{
    Host host;
    restOnOpen(host);
    QVERIFY(popupOnScreen());
    host.moveTo(popupOnScreen()->frameGeometry().center() + QPoint(0, 200));
    QVERIFY(PointerDriver::click());
    // Neither the stay nor the fade would end in this time.
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
}

void TestHover::click_insidePopup_keepsPopup()
{
    Host host;
    restOnOpen(host);
    QVERIFY(popupOnScreen());
    host.moveTo(popupOnScreen()->frameGeometry().center());
    QVERIFY(PointerDriver::click());
    QTRY_VERIFY_WITH_TIMEOUT(host.log->releases > 0, kPatienceMs);
    QVERIFY(popupOnScreen());
}

void TestHover::rest_onOtherControl_replacesContent()
{
    Host host;
    restOnOpen(host);
    const VLWidget* popup = popupOnScreen();
    QVERIFY(popup);
    host.moveTo(Host::centerOf(host.save));
    QTRY_COMPARE_WITH_TIMEOUT(shownText(), u"Saves the document"_s, kPatienceMs);
    QCOMPARE(popupOnScreen(), popup);
    QTRY_COMPARE(popup->pos(), Host::centerOf(host.save) + kOffset);
}

void TestHover::rest_onUnknownControl_showsOrdinaryToolTip()
{
    const Host host;
    host.moveTo(Host::centerOf(host.ordinary));
    QTRY_VERIFY_WITH_TIMEOUT(ordinaryToolTip(), kPatienceMs);
    QCOMPARE(ordinaryToolTip()->text(), host.ordinary.toolTip());
    QVERIFY(!popupOnScreen());
}

void TestHover::rest_onUnknownControl_fadesOpenPopup()
{
    Host host;
    restOnOpen(host);
    QVERIFY(popupOnScreen());
    host.interface->context().set(ckHideDuration, kShortMs);
    host.moveTo(Host::centerOf(host.ordinary));
    QTRY_VERIFY_WITH_TIMEOUT(ordinaryToolTip(), kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(!popupOnScreen(), kPatienceMs);
}

void TestHover::deactivation_hidesPopup_whenFilterIsInstalled()
{
    QFETCH_GLOBAL(bool, installsFilter);
    Host host;
    restOnOpen(host);
    QVERIFY(popupOnScreen());
    QProcess other;
    other.start(QCoreApplication::applicationFilePath(), {u"--child"_s, u"other application"_s});
    QTRY_VERIFY_WITH_TIMEOUT(other.canReadLine(), kPatienceMs);

    QVERIFY(PointerDriver::moveTo(kOtherWindow));
    QVERIFY(PointerDriver::click());
    QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::applicationState(), Qt::ApplicationInactive,
                              kPatienceMs);

    // A host with a filter of its own has no way to hand this event on.
    QCOMPARE(popupOnScreen() == nullptr, installsFilter);
    other.kill();
    QVERIFY(other.waitForFinished());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestHover>(argc, argv);
}

#include "tst_hover.moc"
