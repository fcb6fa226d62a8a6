// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PointerDriver.h"
#include "VidletsTest.h"

#include <QFile>
#include <QHash>
#include <QProcess>
#include <QRect>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPatienceMs = 60000;

int call(const QStringList& arguments)
{
    return QProcess::execute(u"xdotool"_s, arguments);
}

/// The program on the display, with its window active and the pointer out of the way.
class Program
{
public:
    explicit Program(const QStringList& arguments)
    {
        PointerDriver::moveTo({1270, 790});
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.start(QStringLiteral(WORKBENCH_PROGRAM),
                        QStringList{u"--popup-file"_s, file(u"popups"_s), u"--geometry-file"_s,
                                    file(u"controls"_s)}
                            + arguments);
        call({u"search"_s, u"--sync"_s, u"--onlyvisible"_s, u"--name"_s, u"^Workbench$"_s,
              u"windowactivate"_s, u"--sync"_s});
    }

    ~Program()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    Q_DISABLE_COPY_MOVE(Program)

    /// The lines of a file that the program writes.
    QStringList lines(const QString& name) const
    {
        QFile report(file(name));
        return report.open(QIODevice::ReadOnly)
            ? QString::fromUtf8(report.readAll()).split(u'\n', Qt::SkipEmptyParts)
            : QStringList();
    }

    /// The first line that begins with @p start, word by word.
    QStringList line(const QString& name, const QString& start) const
    {
        const QStringList all = lines(name);
        for (const QString& each : all) {
            if (each.startsWith(start + u' '))
                return each.split(u' ');
        }
        return {};
    }

    /// The key of the tip that is up.
    QString tip() const
    {
        return line(u"popups"_s, u"tip"_s).value(1);
    }

    /// Where the window of the tip is on the screen.
    QRect tipRect() const
    {
        QProcess process;
        process.start(u"xdotool"_s,
                      {u"getwindowgeometry"_s, u"--shell"_s, line(u"popups"_s, u"tip"_s).value(2)});
        process.waitForFinished();
        QHash<QByteArray, int> values;
        const QList<QByteArray> output = process.readAllStandardOutput().split('\n');
        for (const QByteArray& each : output) {
            const qsizetype sign = each.indexOf('=');
            if (sign > 0)
                values.insert(each.first(sign), each.sliced(sign + 1).toInt());
        }
        return {values.value("X"), values.value("Y"), values.value("WIDTH"),
                values.value("HEIGHT")};
    }

    QRect control(const QString& key) const
    {
        const QStringList words = line(u"controls"_s, key);
        return {words.value(1).toInt(), words.value(2).toInt(), words.value(3).toInt(),
                words.value(4).toInt()};
    }

private:
    QString file(const QString& name) const
    {
        return m_directory.filePath(name);
    }

    QTemporaryDir m_directory;
    QProcess m_process;
};

bool type(const QString& words)
{
    return call({u"type"_s, u"--delay"_s, u"40"_s, words}) == 0;
}

} // namespace

class TestWorkbenchSearch : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void enter_showsTip_atItsControl();
    void down_goesOnToTheNext();
    void escape_endsSearch();
};

void TestWorkbenchSearch::enter_showsTip_atItsControl()
{
    const Program program({});
    QTRY_VERIFY_WITH_TIMEOUT(program.control(u"tool.eraser"_s).isValid(), kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"ctrl+k"_s) && type(u"erase"_s));
    QVERIFY(PointerDriver::pressKey(u"Return"_s));
    QTRY_COMPARE_WITH_TIMEOUT(program.tip(), u"tool.eraser"_s, kPatienceMs);
    const QRect beside = program.control(u"tool.eraser"_s).adjusted(-40, -40, 40, 40);
    QTRY_VERIFY_WITH_TIMEOUT(program.tipRect().intersects(beside), kPatienceMs);
}

void TestWorkbenchSearch::down_goesOnToTheNext()
{
    const Program program({});
    QTRY_VERIFY_WITH_TIMEOUT(program.control(u"tool.eraser"_s).isValid(), kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"ctrl+k"_s) && type(u"undo"_s));
    QVERIFY(PointerDriver::pressKey(u"Down"_s) && PointerDriver::pressKey(u"Return"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!program.tip().isEmpty(), kPatienceMs);
    QVERIFY(program.tip() != u"edit.undo"_s);
}

void TestWorkbenchSearch::escape_endsSearch()
{
    const Program program({});
    QTRY_VERIFY_WITH_TIMEOUT(program.control(u"tool.eraser"_s).isValid(), kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"ctrl+k"_s) && type(u"erase"_s));
    QVERIFY(PointerDriver::pressKey(u"Escape"_s) && PointerDriver::pressKey(u"Return"_s));
    // What is typed next is a search of its own.
    QVERIFY(type(u"undo"_s) && PointerDriver::pressKey(u"Return"_s));
    QTRY_COMPARE_WITH_TIMEOUT(program.tip(), u"edit.undo"_s, kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"Escape"_s));
    QTRY_VERIFY_WITH_TIMEOUT(program.tip().isEmpty(), kPatienceMs);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestWorkbenchSearch>(argc, argv);
}

#include "tst_workbenchsearch.moc"
