// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PopupStage.h"
#include "VidletsTest.h"
#include <Vidlets/VLInterface.h>

#include <QCoreApplication>
#include <QEvent>
#include <QPushButton>
#include <QQuickItem>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// A host of the library alone that keeps what it is told.
class PlainInterface final : public VLInterface
{
public:
    PlainInterface(VLContext& context, const QStringList& dataPaths)
        : VLInterface(context, dataPaths, nullptr)
    {
    }

    void handleMessage(VLMessageType type, const QString& message) override
    {
        if (type <= VLMessageWarning || message.startsWith("QML"_L1))
            troubles += message;
    }

    QStringList troubles;
};

/// Also one that is no child of the scene's own.
const QQuickItem* itemNamed(const QString& name, const QQuickItem* parent)
{
    const QList<QQuickItem*> children = parent->childItems();
    for (const QQuickItem* child : children) {
        if (child->objectName() == name)
            return child;
        if (const QQuickItem* below = itemNamed(name, child))
            return below;
    }
    return nullptr;
}

} // namespace

/// The scenes of the workbench in a host without the host kit.
class TestPlainScenes : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void scenes_comeUp_withoutWarning_data();
    void scenes_comeUp_withoutWarning();
};

void TestPlainScenes::scenes_comeUp_withoutWarning_data()
{
    QTest::addColumn<bool>("isSimple");
    QTest::newRow("rich") << false;
    QTest::newRow("simple") << true;
}

void TestPlainScenes::scenes_comeUp_withoutWarning()
{
    QFETCH(const bool, isSimple);
    VLContext context;
    context.set(ckMessageLevel, int(VLMessageDebug));
    context.set(ckGuardContent, true);
    context.set(ckConfineContent, true);
    // Else what is above the tip in its file would stay allocated.
    context.set(ckReleaseClips, true);
    context.set(ckSimpleTooltips, isSimple);
    // Wherever the pointer is.
    context.set(ckStayDuration, 600000);
    auto interface =
        std::make_unique<PlainInterface>(context, QStringList{QStringLiteral(WORKBENCH_PACKAGES)});
    QPushButton button;
    button.setGeometry(100, 100, 100, 40);
    QVERIFY(bringUp(&button));
    QVERIFY(interface->show(u"tool.ellipse"_s, QPoint(150, 120), &button));
    VLWidget* tip = nullptr;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (auto* candidate = qobject_cast<VLWidget*>(window))
            tip = candidate;
    }
    QVERIFY(tip);
    QVERIFY(QTest::qWaitForWindowExposed(tip));
    const QQuickItem* scene = tip->view()->rootObject();
    QVERIFY(scene);
    QVERIFY(scene->width() > 50);
    if (!isSimple) {
        // Nobody has asked for less motion.
        const QQuickItem* clip = itemNamed(u"clip"_s, scene);
        QVERIFY(clip);
        QTRY_COMPARE_WITH_TIMEOUT(clip->property("state").toInt(), 2, 15000);
    }
    QCOMPARE(interface->troubles, QStringList());
    interface.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestPlainScenes>(argc, argv);
}

#include "tst_plainscenes.moc"
