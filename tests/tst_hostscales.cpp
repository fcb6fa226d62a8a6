// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "HostStage.h"
#include "VidletsTest.h"

#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QQuickItem>
#include <QScreen>

#include <cstdio>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kPatienceMs = 15000;
constexpr QSize kSceneSize(120, 60);

constexpr QRgb kGround = qRgb(255, 0, 255);
constexpr QRgb kLine = qRgb(0, 0, 0);

/// The software renderer draws rectangles in whole units of the scene.
constexpr auto kRenderer = "rhi";
/// The graphics driver makes code of its own, in which unwinding hangs, and is unloaded with memory
/// still allocated, which no suppression can name then.
constexpr auto kNoLeakCheck = "detect_leaks=0:fast_unwind_on_malloc=1";

/// A line of one pixel of the screen, whatever the scale: drawn anew at another scale it would run
/// into its neighbours.
constexpr auto kLineScene = R"(import QtQuick

Rectangle {
    property real pixel: 1

    width: 120
    height: 60
    color: "#ff00ff"

    Rectangle {
        x: 4 * parent.pixel
        width: parent.pixel
        height: parent.height
        color: "black"
        antialiasing: false
    }
}
)";

/// What of @p picture has the colours of the tip's scene.
QRect areaOfScene(const QImage& picture)
{
    QRect area;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if ((picture.pixel(x, y) | 0xFF000000U) == kGround)
                area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

QImage pictureOf(QScreen* screen)
{
    return screen->grabWindow(0).toImage().convertToFormat(QImage::Format_RGB32);
}

/// Whether the fifth column, and no other near it, is the line.
bool isSharp(const QImage& picture, const QRect& area)
{
    const int y = area.center().y();
    for (int column = 0; column < 9; ++column) {
        const QRgb expected = column == 4 ? kLine : kGround;
        if ((picture.pixel(area.left() + column, y) | 0xFF000000U) != expected)
            return false;
    }
    return true;
}

/// Puts the stage's window on @p screen, shows the tip of its button, and says how it came out.
int reportTip(HostStage& stage, QScreen* screen)
{
    stage.window->move(screen->availableGeometry().topLeft() + QPoint(20, 40));
    if (!QTest::qWaitFor([&] { return stage.window->screen() == screen; }, kPatienceMs))
        qFatal("The window is not on its screen");
    stage.packages.write(u"tips.vidlets/ui/VidletUI.qml"_s, kLineScene);
    VLWidget* tip = stage.showTip();
    tip->view()->rootObject()->setProperty("pixel", 1 / tip->view()->devicePixelRatio());
    QImage picture;
    QRect area;
    const auto isOnScreen = [&] {
        picture = pictureOf(screen);
        area = areaOfScene(picture);
        return !area.isEmpty() && isSharp(picture, area);
    };
    const bool sharp = QTest::qWaitFor(isOnScreen, kPatienceMs);
    std::printf("%d %d %s %s", area.width(), area.height(), sharp ? "sharp" : "blurred",
                tip->screen() == screen ? "there" : "elsewhere");
    return EXIT_SUCCESS;
}

QByteArray expectedReport(double scale)
{
    return QByteArray::number(qRound(kSceneSize.width() * scale)) + ' '
        + QByteArray::number(qRound(kSceneSize.height() * scale)) + " sharp there";
}

/// Lets @p name have @p value for child processes, until it goes.
class EnvironmentChange
{
public:
    EnvironmentChange(const char* name, const QByteArray& value)
        : m_name(name)
    {
        qputenv(name, value);
    }
    ~EnvironmentChange()
    {
        qunsetenv(m_name);
    }

private:
    Q_DISABLE_COPY_MOVE(EnvironmentChange)

    const char* m_name;
};

bool setMonitor(const QString& name, const QString& geometry, const QString& output)
{
    return QProcess::execute(u"xrandr"_s, {u"--setmonitor"_s, name, geometry, output}) == 0;
}

} // namespace

class TestHostScales : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    void initTestCase();
    void tip_isSharp_andOfItsSize_data();
    void tip_isSharp_andOfItsSize();
    void tip_isOnScreenOfControl_atItsScale_data();
    void tip_isOnScreenOfControl_atItsScale();
};

void TestHostScales::initTestCase()
{
    QVERIFY(setMonitor(u"left"_s, u"640/169x800/211+0+0"_s, u"screen"_s));
    QVERIFY(setMonitor(u"right"_s, u"640/169x800/211+640+0"_s, u"none"_s));
}

void TestHostScales::tip_isSharp_andOfItsSize_data()
{
    QTest::addColumn<double>("scale");
    QTest::newRow("1") << 1.0;
    QTest::newRow("1.5") << 1.5;
    QTest::newRow("2") << 2.0;
}

void TestHostScales::tip_isSharp_andOfItsSize()
{
    QFETCH(const double, scale);
    const EnvironmentChange renderer("QT_QUICK_BACKEND", kRenderer);
    const EnvironmentChange addresses("ASAN_OPTIONS", kNoLeakCheck);
    const EnvironmentChange leaks("LSAN_OPTIONS", kNoLeakCheck);
    const EnvironmentChange factor("QT_SCALE_FACTOR", QByteArray::number(scale));
    const ChildResult result = runInChildProcess(u"primary"_s);
    QVERIFY2(result.exitCode == EXIT_SUCCESS, result.standardError.constData());
    QCOMPARE(result.standardOutput, expectedReport(scale));
}

void TestHostScales::tip_isOnScreenOfControl_atItsScale_data()
{
    QTest::addColumn<QString>("screen");
    QTest::addColumn<double>("scale");
    QTest::newRow("left") << u"left"_s << 1.0;
    QTest::newRow("right") << u"right"_s << 2.0;
}

void TestHostScales::tip_isOnScreenOfControl_atItsScale()
{
    QFETCH(const QString, screen);
    QFETCH(const double, scale);
    const EnvironmentChange renderer("QT_QUICK_BACKEND", kRenderer);
    const EnvironmentChange addresses("ASAN_OPTIONS", kNoLeakCheck);
    const EnvironmentChange leaks("LSAN_OPTIONS", kNoLeakCheck);
    const EnvironmentChange factors("QT_SCREEN_SCALE_FACTORS", "left=1;right=2");
    const ChildResult result = runInChildProcess(screen);
    QVERIFY2(result.exitCode == EXIT_SUCCESS, result.standardError.constData());
    QCOMPARE(result.standardOutput, expectedReport(scale));
}

int TestHostScales::runChild(const QString& name)
{
    HostStage stage;
    stage.window->resize(200, 120);
    if (name == u"primary"_s)
        return reportTip(stage, QGuiApplication::primaryScreen());
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (QScreen* screen : screens) {
        if (screen->name() == name)
            return reportTip(stage, screen);
    }
    qFatal("There is no such screen");
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestHostScales>(argc, argv);
}

#include "tst_hostscales.moc"
