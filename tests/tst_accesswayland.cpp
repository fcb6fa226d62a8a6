// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AccessStage.h"
#include "CompositorScreen.h"
#include "PointerDriver.h"
#include "VidletsTest.h"
#include <Vidlets/VLHostHooks.h>
#include <Vidlets/VLManager.h>

#include <QApplication>
#include <QDialog>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 15000;
constexpr int kShortMs = 50;
const QPoint kCorner(1270, 790);
const QColor kSceneColor(0xc0, 0x30, 0x90);

/// Presses keys as a user does. The compositor hands them on to the program.
bool press(const char* key)
{
    return PointerDriver::pressKey(QString::fromLatin1(key));
}

/// A stage that fills the screen, so that what it calls global is a place on the screen.
class Stage : public AccessStage
{
public:
    Stage()
    {
        window.showFullScreen();
        if (!QTest::qWaitFor([this] { return window.size() == window.screen()->size(); },
                             kPatienceMs)
            || !QTest::qWaitFor([this] { return window.isActiveWindow(); }, kPatienceMs)
            || !CompositorScreen::movePointerTo(kCorner))
            qFatal("The window does not fill the screen");
        pad->setFocus();
    }

    /// Calls the tip of @p widget, and waits for the one of @p key.
    void call(QWidget* widget, const QString& key)
    {
        widget->setFocus();
        QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), widget, kPatienceMs);
        QVERIFY(press("shift+F1"));
        QTRY_COMPARE_WITH_TIMEOUT(shownKey(), key, kPatienceMs);
    }

    /// Rests the pointer on the button until its tip is up. Qt gives up a request for a tip when an
    /// activation comes in between, as that of the window before may; the next move brings another.
    void restOnOpen()
    {
        constexpr int kTries = 5;
        const QPoint middle = globalRect(open).center();
        bool isUp = false;
        for (int i = 0; i < kTries && !isUp; ++i) {
            QVERIFY(CompositorScreen::movePointerTo(middle + QPoint(i, 0)));
            isUp =
                QTest::qWaitFor([this] { return shownKey() == "open"_L1; }, kPatienceMs / kTries);
        }
        QVERIFY(isUp);
    }

    void enter()
    {
        QVERIFY(press("F6"));
        QTRY_COMPARE_WITH_TIMEOUT(focusInTip(), u"link"_s, kPatienceMs);
    }

    void close()
    {
        QVERIFY(press("Escape"));
        QTRY_VERIFY_WITH_TIMEOUT(!tip(), kPatienceMs);
    }

    /// Walks one item on and uses it.
    void useButton()
    {
        QVERIFY(press("Tab"));
        QTRY_COMPARE_WITH_TIMEOUT(focusInTip(), u"button"_s, kPatienceMs);
        QVERIFY(press("Return"));
        QTRY_COMPARE_WITH_TIMEOUT(acted(), u"button"_s, kPatienceMs);
    }

    /// Waits until the pad has got all that was pressed.
    void waitForKeys()
    {
        QVERIFY(press("a"));
        QTRY_VERIFY_WITH_TIMEOUT(pad->keys.endsWith(u"-A"_s), kPatienceMs);
    }
};

/// Waits until the scene begins at @p place on the screen. By the clock of each picture.
bool sceneComesTo(const QPoint& place)
{
    return QTest::qWaitFor(
        [&place] {
            QTest::qWait(kShortMs);
            const QRect scene = CompositorScreen::placeOf(kSceneColor);
            return !scene.isNull() && scene.bottomRight() == place + QPoint(159, 89);
        },
        kPatienceMs);
}

} // namespace

class TestAccessWayland : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void sequence_showsTip_belowControl();
    void sequence_showsTip_belowCell();
    void hoveredTip_staysAtSequence_untilEsc();
    void esc_isNotHandedOn();
    void f6_leadsIntoTip_andEscBack();
    void f6_worksInModalDialog();
};

void TestAccessWayland::sequence_showsTip_belowControl()
{
    Stage stage;
    stage.call(stage.open, u"open"_s);
    const QRect control = AccessStage::globalRect(stage.open);
    QVERIFY(sceneComesTo(QPoint(control.left(), control.bottom() + 1)));
    QVERIFY(press("Tab"));
    QTRY_VERIFY_WITH_TIMEOUT(!stage.tip(), kPatienceMs);
}

void TestAccessWayland::sequence_showsTip_belowCell()
{
    Stage stage;
    stage.table->setCurrentCell(0, 1);
    stage.call(stage.table, u"cell"_s);
    const QRect cell = AccessStage::globalRect(
        stage.table->viewport(), stage.table->visualRect(stage.table->model()->index(0, 1)));
    QVERIFY(sceneComesTo(QPoint(cell.left(), cell.bottom() + 1)));
}

void TestAccessWayland::hoveredTip_staysAtSequence_untilEsc()
{
    Stage stage;
    stage.interface->context().set(ckStayDuration, 1);
    stage.restOnOpen();
    QVERIFY(press("shift+F1"));
    QTRY_VERIFY_WITH_TIMEOUT(VLHostHooks::isHeld(stage.interface->manager()), kPatienceMs);
    QVERIFY(CompositorScreen::movePointerTo(kCorner));
    stage.waitForKeys();
    QTest::qWait(500);
    QCOMPARE(stage.shownKey(), u"open"_s);
    stage.close();
}

void TestAccessWayland::esc_isNotHandedOn()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.close();
    stage.waitForKeys();
    QCOMPARE(stage.pad->keys, QStringList({u"+A"_s, u"-A"_s}));
    QCOMPARE(stage.shortcuts, 0);
}

void TestAccessWayland::f6_leadsIntoTip_andEscBack()
{
    Stage stage;
    stage.call(stage.pad, u"pad"_s);
    stage.enter();
    stage.useButton();
    QVERIFY(press("shift+Tab"));
    QTRY_COMPARE_WITH_TIMEOUT(stage.focusInTip(), u"link"_s, kPatienceMs);
    stage.close();
    QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), stage.pad, kPatienceMs);
    stage.waitForKeys();
    QCOMPARE(stage.pad->keys, QStringList({u"+A"_s, u"-A"_s}));
}

void TestAccessWayland::f6_worksInModalDialog()
{
    Stage stage;
    QDialog dialog(&stage.window);
    dialog.setObjectName(u"dialog"_s);
    dialog.setModal(true);
    dialog.resize(200, 100);
    KeyPad pad(&dialog);
    pad.resize(100, 40);
    dialog.show();
    QTRY_VERIFY_WITH_TIMEOUT(dialog.isActiveWindow(), kPatienceMs);
    stage.call(&pad, u"dialog"_s);
    stage.enter();
    stage.useButton();
    stage.close();
    QVERIFY(dialog.isVisible());
    QTRY_COMPARE_WITH_TIMEOUT(QApplication::focusWidget(), &pad, kPatienceMs);
    QCOMPARE(pad.keys, QStringList());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAccessWayland>(argc, argv);
}

#include "tst_accesswayland.moc"
