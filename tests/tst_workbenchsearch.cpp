// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PointerDriver.h"
#include "VidletsTest.h"
#include "XServer.h"

#include <QFile>
#include <QHash>
#include <QProcess>
#include <QRect>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPatienceMs = 60000;

QString xdotool(const QStringList& arguments)
{
    return answerOf(u"xdotool"_s, arguments);
}

/// Where the window with the number @p id is on the screen, without its frame.
QRect rectOf(const QString& id)
{
    const QStringList output =
        answerOf(u"xwininfo"_s, {u"-id"_s, id}).split(u'\n', Qt::SkipEmptyParts);
    QHash<QString, int> values;
    for (const QString& line : output)
        values.insert(line.section(u':', 0, 0).simplified(), line.section(u':', 1).toInt());
    return {values.value(u"Absolute upper-left X"_s), values.value(u"Absolute upper-left Y"_s),
            values.value(u"Width"_s), values.value(u"Height"_s)};
}

/// The program on the display, with the pointer out of the way.
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

    QRect tipRect() const
    {
        return rectOf(line(u"popups"_s, u"tip"_s).value(2));
    }

    /// Whether the window is there with its controls, and X gives it the keys.
    bool hasKeyboard() const
    {
        if (!control(u"tool.eraser"_s).isValid())
            return false;
        const QString id = window();
        if (id.isEmpty())
            return false;
        xdotool({u"windowactivate"_s, id});
        return xdotool({u"getwindowfocus"_s}).trimmed() == id;
    }

    QRect windowRect() const
    {
        return rectOf(window());
    }

    QRect control(const QString& key) const
    {
        const QStringList words = line(u"controls"_s, key);
        return {words.value(1).toInt(), words.value(2).toInt(), words.value(3).toInt(),
                words.value(4).toInt()};
    }

private:
    static QString window()
    {
        return xdotool({u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^Workbench$"_s})
            .section(u'\n', 0, 0);
    }

    QString file(const QString& name) const
    {
        return m_directory.filePath(name);
    }

    QTemporaryDir m_directory;
    QProcess m_process;
};

/// Shows the tip that is listed first. What has been typed may be looked up only when the words of
/// all tips are known, so the key may come too early.
bool enter(const Program& program)
{
    for (int i = 0; i < 10; ++i) {
        if (!PointerDriver::pressKey(u"Return"_s))
            return false;
        if (QTest::qWaitFor([&program] { return !program.tip().isEmpty(); }, 6000))
            return true;
    }
    return false;
}

} // namespace

class TestWorkbenchSearch : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void enter_showsTip_atItsControl();
    void enter_showsTip_inTheMiddle_withoutControl();
    void down_goesOnToTheNext();
    void escape_endsSearch();
};

void TestWorkbenchSearch::enter_showsTip_atItsControl()
{
    const Program program({});
    QTRY_VERIFY_WITH_TIMEOUT(program.hasKeyboard(), kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"ctrl+k"_s) && PointerDriver::type(u"erase"_s));
    QVERIFY(enter(program));
    QTRY_COMPARE_WITH_TIMEOUT(program.tip(), u"tool.eraser"_s, kPatienceMs);
    const QRect beside = program.control(u"tool.eraser"_s).adjusted(-40, -40, 40, 40);
    QTRY_VERIFY_WITH_TIMEOUT(program.tipRect().intersects(beside), kPatienceMs);
}

void TestWorkbenchSearch::enter_showsTip_inTheMiddle_withoutControl()
{
    const Program program({});
    QTRY_VERIFY_WITH_TIMEOUT(program.hasKeyboard(), kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"ctrl+k"_s) && PointerDriver::type(u"nothing written"_s));
    QVERIFY(enter(program));
    QTRY_COMPARE_WITH_TIMEOUT(program.tip(), u"workbench.fallback"_s, kPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(program.tipRect().center(), program.windowRect().center(),
                              kPatienceMs);
}

void TestWorkbenchSearch::down_goesOnToTheNext()
{
    const Program program({});
    QTRY_VERIFY_WITH_TIMEOUT(program.hasKeyboard(), kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"ctrl+k"_s) && PointerDriver::type(u"undo"_s));
    QVERIFY(PointerDriver::pressKey(u"Down"_s) && enter(program));
    QVERIFY(program.tip() != u"edit.undo"_s);
}

void TestWorkbenchSearch::escape_endsSearch()
{
    const Program program({});
    QTRY_VERIFY_WITH_TIMEOUT(program.hasKeyboard(), kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"ctrl+k"_s) && PointerDriver::type(u"erase"_s));
    QVERIFY(PointerDriver::pressKey(u"Escape"_s) && PointerDriver::pressKey(u"Return"_s));
    // What is typed next is a search of its own.
    QVERIFY(PointerDriver::type(u"undo"_s) && enter(program));
    QTRY_COMPARE_WITH_TIMEOUT(program.tip(), u"edit.undo"_s, kPatienceMs);
    QVERIFY(PointerDriver::pressKey(u"Escape"_s));
    QTRY_VERIFY_WITH_TIMEOUT(program.tip().isEmpty(), kPatienceMs);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestWorkbenchSearch>(argc, argv);
}

#include "tst_workbenchsearch.moc"
