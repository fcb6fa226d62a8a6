// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PointerDriver.h"
#include "VidletsTest.h"
#include "XServer.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QProcess>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <memory>

#include <VidletsHost/VLHostInterface.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 15000;

QString folder()
{
    return QStringLiteral(QUICK_FOLDER);
}

} // namespace

/// The example for Qt Quick: its program, and its scene in a program that looks into it.
class TestQuickExample : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void program_runs();
    void items_haveTips();
};

void TestQuickExample::program_runs()
{
#ifdef QUICK_PROGRAM
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QStringLiteral(QUICK_PROGRAM), QStringList());
    QVERIFY(program.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(
        answerOf(u"xdotool"_s, {u"search"_s, u"--name"_s, u"^Timer$"_s}).contains(u'\n'),
        kPatienceMs);
    QCOMPARE(program.state(), QProcess::Running);
    program.terminate();
    QVERIFY(program.waitForFinished());
    const QByteArray output = program.readAll();
    QVERIFY2(!output.contains("qml"), output.constData());
#else
    QSKIP("The examples are not built");
#endif
}

void TestQuickExample::items_haveTips()
{
    QVERIFY(PointerDriver::moveTo({1260, 20}));
    VLContext context;
    VLHostInterface interface(context, {folder() + u"/packages"_s});
    const auto engine =
        std::make_unique<QQmlApplicationEngine>(QUrl::fromLocalFile(folder() + u"/Main.qml"_s));
    QCOMPARE(engine->rootObjects().size(), 1);
    auto* window = qobject_cast<QQuickWindow*>(engine->rootObjects().constFirst());
    QVERIFY(window);
    window->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(window));
    for (const char* name : {"minutes", "volume", "repeat", "pause", "start"}) {
        const QString key = QString::fromLatin1(name);
        const auto* item = window->findChild<QQuickItem*>(key);
        QVERIFY2(item, name);
        const QPointF middle(item->width() / 2, item->height() / 2);
        QVERIFY(PointerDriver::moveTo(item->mapToGlobal(middle).toPoint()));
        const auto shown = [&interface]() -> QString {
            VLWidget* tip = interface.manager()->widget();
            const VLXmlElement* content =
                tip && tip->isVisible() ? tip->view()->content() : nullptr;
            return content ? content->attribute(u"key"_s) : QString();
        };
        QTRY_COMPARE_WITH_TIMEOUT(shown(), key, kPatienceMs);
    }
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestQuickExample>(argc, argv);
}

#include "tst_quickexample.moc"
