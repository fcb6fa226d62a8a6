// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PointerDriver.h"
#include "VidletsTest.h"
#include "XServer.h"

#include <QProcess>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPatienceMs = 15000;

/// A program, of which is known what the X server knows of it.
class Program
{
public:
    explicit Program(const QString& path)
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(path, QStringList());
    }

    ~Program()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    Q_DISABLE_COPY_MOVE(Program)

    /// Its windows that are on the screen: one, and those of a tip.
    QStringList windows() const
    {
        const QString answer = answerOf(
            u"xdotool"_s,
            {u"search"_s, u"--onlyvisible"_s, u"--pid"_s, QString::number(m_process.processId())});
        return answer.split(u'\n', Qt::SkipEmptyParts);
    }

    /// The window that has the keyboard.
    static QString activeWindow()
    {
        return answerOf(u"xdotool"_s, {u"getactivewindow"_s}).trimmed();
    }

    QProcess* process()
    {
        return &m_process;
    }

private:
    QProcess m_process;
};

/// Rests the pointer at @p position within @p window.
void restAt(const QString& window, const QPoint& position)
{
    for (const int step : {4, 0}) {
        answerOf(u"xdotool"_s,
                 {u"mousemove"_s, u"--window"_s, window, QString::number(position.x() - step),
                  QString::number(position.y())});
    }
}

} // namespace

/// The programs of which README and guide consist, run as a user runs them.
class TestExamplePrograms : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void program_showsTip_andEnds_data();
    void program_showsTip_andEnds();
    void hostKit_showsTip_atItsSequence();

private:
    static void bringUp(Program& program, QString& window);
    static void close(Program& program);
};

void TestExamplePrograms::bringUp(Program& program, QString& window)
{
    QVERIFY(program.process()->waitForStarted());
    QTRY_COMPARE_WITH_TIMEOUT(program.windows().size(), 1, kPatienceMs);
    window = program.windows().value(0);
    QTRY_COMPARE_WITH_TIMEOUT(Program::activeWindow(), window, kPatienceMs);
}

/// Closes the window by the keyboard, with the tip still up.
void TestExamplePrograms::close(Program& program)
{
    // A key that comes while the window manager is busy with another window gets lost.
    bool hasEnded = false;
    for (int i = 0; i < 5 && !hasEnded; ++i) {
        QVERIFY(PointerDriver::pressKey(u"alt+F4"_s));
        hasEnded = program.process()->waitForFinished(kPatienceMs / 5);
    }
    QVERIFY(hasEnded);
    const QByteArray output = program.process()->readAll();
    QCOMPARE(program.process()->exitStatus(), QProcess::NormalExit);
    QVERIFY2(program.process()->exitCode() == EXIT_SUCCESS, output.constData());
    QVERIFY2(!output.contains("qml") && !output.contains("vidlets"), output.constData());
}

void TestExamplePrograms::program_showsTip_andEnds_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QPoint>("position");
    QTest::newRow("minimal") << QStringLiteral(MINIMAL_PROGRAM) << QPoint(160, 60);
    // The second section of the table's header.
    QTest::newRow("hostkit") << QStringLiteral(HOSTKIT_PROGRAM) << QPoint(170, 8);
}

void TestExamplePrograms::program_showsTip_andEnds()
{
    QFETCH(const QString, path);
    QFETCH(const QPoint, position);
    QVERIFY(PointerDriver::moveTo({1260, 20}));
    Program program(path);
    QString window;
    bringUp(program, window);
    restAt(window, position);
    QTRY_VERIFY_WITH_TIMEOUT(program.windows().size() > 1, kPatienceMs);
    close(program);
}

void TestExamplePrograms::hostKit_showsTip_atItsSequence()
{
    QVERIFY(PointerDriver::moveTo({1260, 20}));
    Program program(QStringLiteral(HOSTKIT_PROGRAM));
    QString window;
    bringUp(program, window);
    QVERIFY(PointerDriver::pressKey(u"ctrl+F1"_s));
    QTRY_VERIFY_WITH_TIMEOUT(program.windows().size() > 1, kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"Escape"_s));
    QTRY_COMPARE_WITH_TIMEOUT(program.windows().size(), 1, kPatienceMs);
    close(program);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestExamplePrograms>(argc, argv);
}

#include "tst_exampleprograms.moc"
