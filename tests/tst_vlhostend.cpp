// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "ClipWriter.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QApplication>
#include <QFile>
#include <QMainWindow>
#include <QPointer>
#include <QPushButton>
#include <QQuickItem>
#include <QTimer>

#include <memory>

#include <VidletsHost/VLAccess.h>
#include <VidletsHost/VLHostInterface.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

// Each scenario is a program of its own: it brings a tip up and pins another, with a clip playing
// in each, and then ends in the order of its name.

namespace {

constexpr int kPatienceMs = 20000;

// A clip stops where its decoding does, and is asked for once the item has a window.
constexpr auto kScene = R"(import QtQuick
import com.larkspan.vidlets.qml

Item {
    width: 160
    height: 90

    VLVideoComponent {
        id: clip
        anchors.fill: parent
    }
    Timer {
        interval: 40
        running: true
        repeat: true
        onTriggered: {
            if (clip.source === "")
                clip.source = "clip.webm";
            clip.state = 2;
        }
    }
}
)";

/// The parts of a program, on the heap so that each can go when a scenario wants it to.
class Program
{
public:
    Program(int& argc, char** argv, Qt::DockWidgetArea area);

    /// Waits until a tip is pinned and another is up, and both play. Gives whether they do.
    bool fill() const;

    std::unique_ptr<QApplication> application;
    std::unique_ptr<PackageBuilder> packages;
    VLContext context;
    std::unique_ptr<QMainWindow> window;
    std::unique_ptr<VLHostInterface> interface;
    QPushButton* button;

private:
    VLWidget* showTip(const QString& key) const;
};

Program::Program(int& argc, char** argv, Qt::DockWidgetArea area)
    : application(std::make_unique<QApplication>(argc, argv))
    , packages(std::make_unique<PackageBuilder>())
    , window(std::make_unique<QMainWindow>())
    , button(new QPushButton(window.get()))
{
    QFile clip(qEnvironmentVariable("VIDLETS_TEST_CLIP"));
    if (!clip.open(QIODevice::ReadOnly))
        qFatal("There is no clip");
    packages->write(u"tips.vidlets/ui/VidletUI.qml"_s, kScene);
    packages->write(u"tips.vidlets/Resources/clip.webm"_s, clip.readAll());
    packages->writeControlFile(u"tips.vidlets"_s, u"tips.xml"_s,
                               R"(<vidlets><vidlet key="one"/><vidlet key="two"/></vidlets>)");
    context.set(ckStayDuration, 0);
    interface = std::make_unique<VLHostInterface>(context, QStringList{packages->dataPath()});
    interface->setPinnedArea(area);
    window->setGeometry(200, 100, 500, 400);
    window->show();
}

bool waitFor(const std::function<bool()>& condition)
{
    return QTest::qWaitFor(condition, kPatienceMs);
}

VLWidget* Program::showTip(const QString& key) const
{
    if (!interface->show(key, QPoint(300, 200), button))
        return nullptr;
    VLWidget* tip = interface->manager()->widget();
    const auto isPlaying = [tip] {
        const QQuickItem* scene = tip->view()->rootObject();
        const auto* clip = scene ? scene->findChild<VLVideoComponent*>() : nullptr;
        return clip && clip->state() == VLVideoComponent::playingState && clip->position() > 0;
    };
    return waitFor(isPlaying) ? tip : nullptr;
}

bool Program::fill() const
{
    const QPointer<VLWidget> pinned = showTip(u"one"_s);
    if (!pinned)
        return false;
    pinned->view()->setReserved(true);
    return showTip(u"two"_s) && waitFor([&pinned] { return pinned->isVisible(); })
        && interface->pinnedTips().size() == 1 && interface->access();
}

void end(Program& program, const QString& order)
{
    if (order == "interface first"_L1) {
        program.interface.reset();
        program.window.reset();
        program.application.reset();
    } else if (order == "interface first, loop runs on"_L1) {
        program.interface.reset();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        program.window.reset();
        program.application.reset();
    } else if (order == "windows first"_L1) {
        program.window.reset();
        program.interface.reset();
        program.application.reset();
    } else if (order == "interface after application"_L1) {
        program.window.reset();
        program.application.reset();
        program.interface.reset();
    } else if (order == "child of window"_L1) {
        program.interface.release()->setParent(program.window.get());
        program.window.reset();
        program.application.reset();
    } else if (order == "child of application"_L1) {
        program.interface.release()->setParent(program.application.get());
        program.window.reset();
        program.application.reset();
    } else if (order == "never"_L1) {
        // Held here, so that it does not count as lost.
        static QObject* forgotten = program.interface.release();
        forgotten->setObjectName(u"forgotten"_s);
        program.window.reset();
        program.application.reset();
    } else if (order == "window closed by user"_L1) {
        QTimer::singleShot(0, program.window.get(), &QWidget::close);
        QApplication::exec();
        program.application.reset();
        program.interface.reset();
    }
}

int runScenario(int argc, char** argv)
{
    const QString name = QString::fromUtf8(argv[2]);
    const bool isDocked = name.startsWith("docked "_L1);
    Program program(argc, argv, isDocked ? Qt::RightDockWidgetArea : Qt::NoDockWidgetArea);
    if (!program.fill())
        qFatal("The tips did not come up");
    end(program, isDocked ? name.mid(static_cast<qsizetype>(qstrlen("docked "))) : name);
    return EXIT_SUCCESS;
}

/// The lines that a process has written, but for what is said about the surroundings.
QByteArray complaintsOf(const ChildResult& result)
{
    QByteArray complaints;
    const QList<QByteArray> lines = result.standardError.split('\n');
    for (const QByteArray& line : lines) {
        if (!line.isEmpty() && !line.startsWith("QStandardPaths: XDG_RUNTIME_DIR"))
            complaints += line + '\n';
    }
    return complaints;
}

} // namespace

class TestVLHostEnd : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void program_endsCleanly_data();
    void program_endsCleanly();

private:
    ClipWriter m_clips;
};

void TestVLHostEnd::initTestCase()
{
    const QString clip = m_clips.testClip(u"clip.webm"_s, u"libvpx"_s, {160, 90}, 25, 200);
    qputenv("VIDLETS_TEST_CLIP", QFile::encodeName(clip));
}

void TestVLHostEnd::program_endsCleanly_data()
{
    QTest::addColumn<QString>("name");
    for (const char* order : {"interface first", "interface first, loop runs on", "windows first",
                              "interface after application", "child of window",
                              "child of application", "never", "window closed by user"}) {
        QTest::newRow(order) << QString::fromLatin1(order);
        QTest::addRow("docked %s", order) << u"docked "_s + QString::fromLatin1(order);
    }
}

void TestVLHostEnd::program_endsCleanly()
{
    QFETCH(const QString, name);
    const ChildResult result = runInChildProcess(name);
    const QByteArray complaints = complaintsOf(result);
    QVERIFY2(result.finished, "hangs");
    QVERIFY2(!result.crashed, complaints.constData());
    QVERIFY2(complaints.isEmpty(), complaints.constData());
    QCOMPARE(result.exitCode, 0);
}

int main(int argc, char** argv)
{
    // A scenario makes its application object by itself.
    if (argc == 3 && qstrcmp(argv[1], "--child") == 0)
        return runScenario(argc, argv);
    return runVidletsTest<TestVLHostEnd>(argc, argv);
}

#include "tst_vlhostend.moc"
