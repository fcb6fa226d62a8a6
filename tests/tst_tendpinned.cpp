// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PopupStage.h"
#include "VidletsTest.h"
#include "XServer.h"

#include <QLabel>
#include <QQuickItem>
#include <QScreen>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

const QSize kSceneSize(120, 80);
const QSize kLarger(300, 200);
const QSize kSmaller(60, 40);
constexpr int kPatienceMs = 15000;

void resizeScene(VLWidget& popup, const QSize& size)
{
    popup.view()->rootObject()->setSize(size);
}

/// A tip that has just been pinned, as a window of its own or in one of the host's.
class Pinned
{
public:
    explicit Pinned(QWidget* window = nullptr)
        : stage({{ckTendPinned, true}})
    {
        stage.interface.windowToGive = window;
        if (!stage.manager->show(u"open"_s, QPoint(400, 300), &stage.control))
            qFatal("The tip did not come up");
        popup.reset(stage.popup());
        if (!QTest::qWaitForWindowExposed(popup.get()))
            qFatal("The tip did not appear");
        popup->view()->content()->setAttribute(u"title"_s, u"How to open"_s);
        popup->view()->setReserved(true);
    }

    PopupStage stage;
    std::unique_ptr<VLWidget> popup;
};

} // namespace

class TestTendPinned : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void window_carriesTitleOfTip();
    void window_isAsLargeAsScene();
    void window_staysInPlace_whenSceneGrowsAtOnce();
    void window_followsScene_onTheScreen();
    void hostWindow_followsScene();
    void hostWindow_keepsRoomForItsOwn();
    void partOfHostWindow_leavesWindowToHost();
};

void TestTendPinned::window_carriesTitleOfTip()
{
    const Pinned pinned;
    QVERIFY(pinned.popup->isWindow());
    QCOMPARE(pinned.popup->windowTitle(), u"How to open"_s);
}

void TestTendPinned::window_isAsLargeAsScene()
{
    const Pinned pinned;
    QVERIFY(QTest::qWaitForWindowExposed(pinned.popup.get()));
    QCOMPARE(pinned.popup->size(), kSceneSize);
    for (const QSize& size : {kLarger, kSmaller}) {
        resizeScene(*pinned.popup, size);
        QTRY_COMPARE_WITH_TIMEOUT(pinned.popup->size(), size, kPatienceMs);
        QCOMPARE(pinned.popup->minimumSize(), size);
        QCOMPARE(pinned.popup->maximumSize(), size);
        QTRY_COMPARE_WITH_TIMEOUT(pinned.popup->view()->size(), size, kPatienceMs);
    }
}

void TestTendPinned::window_staysInPlace_whenSceneGrowsAtOnce()
{
    const Pinned pinned;
    const VLWidget* popup = pinned.popup.get();
    const QPoint place = popup->pos();
    // Before the window manager has put its frame around it.
    resizeScene(*pinned.popup, kLarger);
    QTRY_VERIFY_WITH_TIMEOUT(popup->frameGeometry() != popup->geometry(), kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(popup->size(), kLarger, kPatienceMs);
    // The scene stays where it was, and the frame goes around it.
    QTRY_COMPARE_WITH_TIMEOUT(popup->geometry().topLeft(), place, kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(positionOnScreenOfX(popup), place, kPatienceMs);
}

void TestTendPinned::window_followsScene_onTheScreen()
{
    const Pinned pinned;
    QVERIFY(QTest::qWaitForWindowExposed(pinned.popup.get()));
    const QRect area = pinned.popup->screen()->availableGeometry();
    pinned.popup->move(area.right() - 200, area.bottom() - 150);
    QTRY_VERIFY_WITH_TIMEOUT(pinned.popup->frameGeometry() != pinned.popup->geometry(),
                             kPatienceMs);
    // A window that is still being moved would end where the move takes it.
    QTRY_COMPARE_WITH_TIMEOUT(positionOnScreenOfX(pinned.popup.get()),
                              pinned.popup->geometry().topLeft(), kPatienceMs);
    resizeScene(*pinned.popup, kLarger);
    QTRY_COMPARE_WITH_TIMEOUT(pinned.popup->size(), kLarger, kPatienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(area.contains(pinned.popup->frameGeometry()), kPatienceMs);
}

void TestTendPinned::hostWindow_followsScene()
{
    QWidget window;
    const Pinned pinned(&window);
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_COMPARE_WITH_TIMEOUT(window.size(), kSceneSize, kPatienceMs);
    QCOMPARE(window.windowTitle(), u"How to open"_s);
    for (const QSize& size : {kLarger, kSmaller}) {
        resizeScene(*pinned.popup, size);
        QTRY_COMPARE_WITH_TIMEOUT(window.size(), size, kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(pinned.popup->geometry(), QRect(QPoint(), size), kPatienceMs);
    }
}

void TestTendPinned::hostWindow_keepsRoomForItsOwn()
{
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    layout->setContentsMargins(5, 5, 5, 5);
    layout->setSpacing(0);
    auto* head = new QLabel;
    head->setFixedSize(50, 30);
    layout->addWidget(head);
    const Pinned pinned(&window);
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    resizeScene(*pinned.popup, kLarger);
    QTRY_COMPARE_WITH_TIMEOUT(window.size(), kLarger + QSize(10, 40), kPatienceMs);
}

void TestTendPinned::partOfHostWindow_leavesWindowToHost()
{
    QWidget window;
    window.resize(700, 500);
    QWidget side(&window);
    side.setGeometry(0, 0, 400, 400);
    QVERIFY(bringUp(&window));
    const Pinned pinned(&side);
    resizeScene(*pinned.popup, kLarger);
    QTRY_COMPARE_WITH_TIMEOUT(pinned.popup->size(), kLarger, kPatienceMs);
    QCOMPARE(window.size(), QSize(700, 500));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestTendPinned>(argc, argv);
}

#include "tst_tendpinned.moc"
