// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int kStartMs = 60000;

// The program, with its output in one channel, and ended with the test.
class Program
{
public:
    explicit Program(const QStringList& arguments)
    {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral(WORKBENCH_PROGRAM), arguments);
    }

    ~Program()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    Q_DISABLE_COPY_MOVE(Program)

    bool says(const QByteArray& text)
    {
        const QDeadlineTimer deadline(kStartMs);
        while (!m_output.contains(text)) {
            if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
                return false;
            }
            m_output += m_process.readAll();
        }
        return true;
    }

    bool end()
    {
        const bool isOver = m_process.waitForFinished(kStartMs);
        m_output += m_process.readAll();
        return isOver && m_process.exitStatus() == QProcess::NormalExit;
    }

    int exitCode() const
    {
        return m_process.exitCode();
    }

    QByteArray output() const
    {
        return m_output;
    }

private:
    QProcess m_process;
    QByteArray m_output;
};

} // namespace

class TestWorkbench : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void messages_nameControlFiles_whenLevelLetsThemPass_data();
    void messages_nameControlFiles_whenLevelLetsThemPass();
    void messages_endProgram_whenLevelIsUnknown();
    void help_tellsLevels();
};

void TestWorkbench::messages_nameControlFiles_whenLevelLetsThemPass_data()
{
    QTest::addColumn<QString>("level");
    QTest::newRow("name") << u"information"_s;
    QTest::newRow("name in capitals") << u"DEBUG"_s;
    QTest::newRow("number") << u"300"_s;
}

void TestWorkbench::messages_nameControlFiles_whenLevelLetsThemPass()
{
    QFETCH(const QString, level);
    Program program({u"--messages"_s, level});
    QVERIFY2(program.says("Information:found control file :"), program.output().constData());
}

void TestWorkbench::messages_endProgram_whenLevelIsUnknown()
{
    Program program({u"--messages"_s, u"chatter"_s});
    QVERIFY(program.end());
    QCOMPARE(program.exitCode(), EXIT_FAILURE);
    QVERIFY2(program.output().contains("--messages needs error, warning"),
             program.output().constData());
}

void TestWorkbench::help_tellsLevels()
{
    Program program({u"--help"_s});
    QVERIFY(program.end());
    QCOMPARE(program.exitCode(), EXIT_SUCCESS);
    QVERIFY2(program.output().contains("information (300)"), program.output().constData());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestWorkbench>(argc, argv);
}

#include "tst_workbench.moc"
