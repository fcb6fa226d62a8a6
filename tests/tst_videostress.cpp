// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipStage.h"
#include "ClipWriter.h"
#include "ThreadSpy.h"
#include "VidletsTest.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kStressTimeMs = 14000;
/// What an item may take to go, its two threads included.
constexpr qint64 kDeletionTimeMs = 1000;
constexpr std::size_t kMaxItems = 5;
constexpr int kClipFrames = 30;

/// The seed of this run: that of the environment, to repeat a run, or a new one.
quint32 chooseSeed()
{
    bool given = false;
    const int seed = qEnvironmentVariableIntValue("VIDLETS_STRESS_SEED", &given);
    return given ? static_cast<quint32>(seed) : QRandomGenerator::global()->generate();
}

/// The names of the threads of this process.
QStringList threads()
{
    QStringList result;
    const QDir directory(u"/proc/self/task"_s);
    for (const QString& id : directory.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(directory.filePath(id + u"/comm"_s));
        if (file.open(QIODevice::ReadOnly))
            result += QString::fromUtf8(file.readAll().trimmed());
    }
    result.sort();
    return result;
}

/// What the file descriptors of this process lead to.
QStringList openFiles()
{
    QStringList result;
    const QDir directory(u"/proc/self/fd"_s);
    for (const QString& number :
         directory.entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot))
        result += QFileInfo(directory.filePath(number)).symLinkTarget();
    result.sort();
    return result;
}

/// What of @p now was not there @p before. Less may be there: Qt ends idle threads of its own.
QStringList added(QStringList now, const QStringList& before)
{
    for (const QString& entry : before)
        now.removeOne(entry);
    return now;
}

QStringList clipNames()
{
    return {u"small.avi"_s,  u"fast.avi"_s,   u"large.avi"_s,
            u"broken.avi"_s, u"absent.avi"_s, QString()};
}

/// Puts a view on the screen, over a package of clips, good and bad ones.
void open(ClipStage& stage)
{
    ClipWriter clips;
    const auto add = [&](const QString& name, const QString& codec, const QSize& size, int fps) {
        clips.testClip(name, codec, size, fps, kClipFrames);
        stage.addClip(name, clips.readBytes(name));
    };
    add(u"small.avi"_s, u"mpeg4"_s, {64, 48}, 25);
    add(u"fast.avi"_s, u"mjpeg"_s, {48, 32}, 60);
    add(u"large.avi"_s, u"mpeg4"_s, {480, 270}, 30);
    stage.addClip(u"broken.avi"_s, "no clip at all");
    stage.addTip(u"k"_s);
    stage.openView();
    stage.view()->resize(320, 200);
    stage.view()->show();
}

std::unique_ptr<VLVideoComponent> newItem(const ClipStage& stage)
{
    auto item = std::make_unique<VLVideoComponent>();
    item->setParentItem(stage.view()->contentItem());
    item->setSize(QSizeF(160, 90));
    return item;
}

/// Loads a clip, plays it and has it end.
void playWholeClip(VLVideoComponent& item)
{
    item.setSource(u"small.avi"_s);
    QTRY_COMPARE(item.contentWidth(), 64.0);
    QTRY_VERIFY(item.loadProgress() == 1.0);
    // The decoding may end, and pause, at any time.
    QTRY_VERIFY(item.progress() >= 0.9 || (item.play(), false));
}

/// Items of a view and what befalls them.
class Crowd
{
public:
    Crowd(const ClipStage& stage, quint32 seed)
        : m_stage(stage)
        , m_random(seed)
    {
    }

    /// Does one thing to one item, or makes one.
    void act()
    {
        ++m_actions;
        if (m_items.empty() || (m_items.size() < kMaxItems && below(6) == 0)) {
            m_items.push_back(newItem(m_stage));
            return;
        }
        const auto index = static_cast<std::size_t>(below(static_cast<int>(m_items.size())));
        VLVideoComponent& item = *m_items.at(index);
        switch (below(12)) {
        case 0:
            remove(index);
            break;
        case 1:
        case 2:
            item.setSource(clipNames().at(below(static_cast<int>(clipNames().size()))));
            break;
        case 3:
        case 4:
            item.play();
            break;
        case 5:
            item.pause();
            break;
        case 6:
            item.setPosition(below(2 * kClipFrames) - kClipFrames / 2);
            break;
        case 7:
            scrub(item);
            break;
        case 8:
            item.rewindToStart();
            break;
        case 9:
            item.setState(static_cast<VLVideoComponent::VideoState>(below(3)));
            break;
        case 10:
            m_stage.view()->grabWindow();
            break;
        default:
            letPlay(item);
            break;
        }
        QCoreApplication::processEvents();
    }
    void removeAll()
    {
        while (!m_items.empty())
            remove(0);
    }
    int actions() const
    {
        return m_actions;
    }
    int deletions() const
    {
        return m_deletions;
    }
    qint64 longestDeletionMs() const
    {
        return m_longestDeletionMs;
    }

private:
    int below(int limit)
    {
        return m_random.bounded(limit);
    }
    void scrub(VLVideoComponent& item)
    {
        item.setScrubbing(!item.isScrubbing());
        for (int i = 0; i < 10; ++i) {
            item.setProgress(m_random.generateDouble());
            QCoreApplication::processEvents();
        }
    }
    static void letPlay(VLVideoComponent& item)
    {
        ThreadSpy spy(ClipStage::controllerOf(&item), &VLVideoController::displayFrame);
        spy.wait(60);
    }
    void remove(std::size_t index)
    {
        const auto place = m_items.begin() + static_cast<std::ptrdiff_t>(index);
        std::unique_ptr<VLVideoComponent> item = std::move(*place);
        m_items.erase(place);
        ++m_deletions;
        QElapsedTimer timer;
        timer.start();
        item.reset();
        m_longestDeletionMs = std::max(m_longestDeletionMs, timer.elapsed());
    }

    const ClipStage& m_stage;
    QRandomGenerator m_random;
    std::vector<std::unique_ptr<VLVideoComponent>> m_items;
    int m_actions = 0;
    int m_deletions = 0;
    qint64 m_longestDeletionMs = 0;
};

} // namespace

/// Many items at once, each with two threads, and a host that does with them what it likes.
class TestVideoStress : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void items_goQuicklyAndLeaveNothing_whateverIsDoneToThem();
};

void TestVideoStress::items_goQuicklyAndLeaveNothing_whateverIsDoneToThem()
{
    ClipStage stage;
    open(stage);
    QVERIFY(QTest::qWaitForWindowExposed(stage.view()));
    // What is made once for the process, by whomever, is there after that.
    playWholeClip(*newItem(stage));
    stage.view()->grabWindow();
    const QStringList threadsBefore = threads();
    const QStringList filesBefore = openFiles();

    const quint32 seed = chooseSeed();
    qInfo("VIDLETS_STRESS_SEED=%d", static_cast<int>(seed));
    Crowd crowd(stage, seed);
    for (const QDeadlineTimer deadline(kStressTimeMs); !deadline.hasExpired();)
        crowd.act();
    crowd.removeAll();

    qInfo("%d actions, %d deletions, the longest in %d ms", crowd.actions(), crowd.deletions(),
          static_cast<int>(crowd.longestDeletionMs()));
    QVERIFY(crowd.deletions() > 0);
    QVERIFY(crowd.longestDeletionMs() < kDeletionTimeMs);
    QTRY_COMPARE(added(threads(), threadsBefore), QStringList());
    // A clip that is being decoded when its item goes stays open, and nothing else does.
    QStringList left = added(openFiles(), filesBefore);
    QVERIFY(left.size() <= crowd.deletions());
    left.removeIf([resources = stage.resource({})](const QString& path) {
        return path.startsWith(resources);
    });
    QCOMPARE(left, QStringList());

    const QStringList filesAfter = openFiles();
    playWholeClip(*newItem(stage));
    QTRY_COMPARE(added(openFiles(), filesAfter), QStringList());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVideoStress>(argc, argv);
}

#include "tst_videostress.moc"
