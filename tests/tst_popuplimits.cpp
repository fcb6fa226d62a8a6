// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PointerDriver.h"
#include "PopupStage.h"
#include "VidletsTest.h"

#include <QDialog>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

QMap<int, QVariant> watching()
{
    return {{ckInstallEventFilter, true}, {ckHideDuration, 0}};
}

/// Where the tip of the stage is not over its control.
QPoint tipPlace()
{
    return {300, 300};
}

/// Counts the presses that reach a window.
class PressCounter : public QObject
{
public:
    explicit PressCounter(QObject* window)
    {
        window->installEventFilter(this);
    }
    bool eventFilter(QObject* object, QEvent* event) override
    {
        m_count += event->type() == QEvent::MouseButtonPress ? 1 : 0;
        return QObject::eventFilter(object, event);
    }
    int count() const
    {
        return m_count;
    }

private:
    int m_count = 0;
};

} // namespace

/// What a popup does at the borders of the application: beside its windows, and over dialogs.
class TestPopupLimits : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void popup_stays_whenPointerLeavesWindowsUnseen();
    void click_reachesPopup_unlessDialogBlocksApplication_data();
    void click_reachesPopup_unlessDialogBlocksApplication();
    void show_dealsWithRequest_whenSceneIsMissing();
};

void TestPopupLimits::popup_stays_whenPointerLeavesWindowsUnseen()
{
    PopupStage stage(watching());
    QVERIFY(PointerDriver::moveTo(stage.control.mapToGlobal(stage.control.rect().center())));
    QTRY_VERIFY(stage.control.underMouse());
    QVERIFY(stage.manager->show(u"open"_s, tipPlace(), &stage.control));
    QTRY_VERIFY(stage.popup()->isVisible());
    QVERIFY(!stage.timer()->isActive());

    QVERIFY(PointerDriver::moveTo(PopupStage::farAway()));
    QTRY_VERIFY(!stage.control.underMouse());
    QVERIFY(!stage.timer()->isActive());

    // The next move that is seen is what starts the timer.
    stage.popup()->checkMousePosition(PopupStage::farAway());
    QVERIFY(stage.timer()->isActive());
}

void TestPopupLimits::click_reachesPopup_unlessDialogBlocksApplication_data()
{
    QTest::addColumn<Qt::WindowModality>("modality");
    QTest::addColumn<bool>("isReached");
    QTest::newRow("application") << Qt::ApplicationModal << false;
    QTest::newRow("window") << Qt::WindowModal << true;
}

void TestPopupLimits::click_reachesPopup_unlessDialogBlocksApplication()
{
    QFETCH(const Qt::WindowModality, modality);
    QFETCH(const bool, isReached);
    PopupStage stage(watching());
    QDialog dialog(&stage.control);
    dialog.setWindowModality(modality);
    dialog.setGeometry(600, 100, 120, 80);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(stage.manager->show(u"open"_s, tipPlace(), &dialog));
    QVERIFY(QTest::qWaitForWindowExposed(stage.popup()));

    const PressCounter inPopup(stage.view());
    const PressCounter inDialog(dialog.windowHandle());
    QVERIFY(PointerDriver::moveTo(stage.popup()->geometry().center()));
    QVERIFY(PointerDriver::click());
    QTRY_VERIFY(!isReached || inPopup.count() > 0);
    // Presses come in their order: after this one the first is no longer on its way.
    QVERIFY(PointerDriver::moveTo(dialog.geometry().center()));
    QVERIFY(PointerDriver::click());
    QTRY_VERIFY(inDialog.count() > 0);
    QCOMPARE(inPopup.count() > 0, isReached);
}

void TestPopupLimits::show_dealsWithRequest_whenSceneIsMissing()
{
    PopupStage stage(watching());
    stage.packages.writeControlFile(u"tips.vidlets"_s, u"more.xml"_s,
                                    "<vidlets><vidlet key=\"lost\" ui=\"ui/none.qml\"/></vidlets>");
    stage.rescan();
    stage.control.setToolTip(u"ordinary"_s);
    QVERIFY(stage.manager->show(u"lost"_s, tipPlace(), &stage.control));
    QVERIFY(stage.popup()->isVisible());
    QVERIFY(!stage.scene());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestPopupLimits>(argc, argv);
}

#include "tst_popuplimits.moc"
