// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What a host gains that has its content guarded, beside the outcome of each broken file.

#include "ObjectCensus.h"
#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>

#include <memory>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr auto kGoodFile = "<vidlets>\n<vidlet key=\"open\" title=\"t\"/>\n</vidlets>\n";
constexpr auto kBrokenFile = "<vidlets>\n<vidlet key=\"open\"/>\n<vidlet key=\"bad\">&x;</vidlet>";

VLContext& guarded(VLContext& context)
{
    context.set(ckGuardContent, true);
    return context;
}

/// A host with guarded content and a package "tips", which is searched when the object is made.
class GuardedHost
{
public:
    explicit GuardedHost(const QByteArray& controlFile = kGoodFile)
        : file(packages.writeControlFile(u"tips.vidlets"_s, u"tips.xml"_s, controlFile))
        , index(&guarded(context), {})
        , interface(context, {packages.dataPath()}, &index)
        , manager(&interface, context, {packages.dataPath()}, &index)
    {
    }

    /// Whether the index finds @p key; the tree goes at once.
    bool finds(const QString& key = u"open"_s)
    {
        QString path;
        int depth = 0;
        VLXmlElement* root = nullptr;
        const bool isFound = index.retrieve(key, QLocale(u"en_US"_s), path, depth, root);
        delete root;
        return isFound;
    }

    /// Writes the control file anew. Gives whether that worked.
    bool rewrite(const QByteArray& content) const
    {
        QFile target(file);
        return target.open(QIODevice::WriteOnly) && target.write(content) == content.size();
    }

    /// The warnings, with paths below the data path alone.
    QStringList warnings() const
    {
        QStringList list = interface.messages(VLMessageWarning);
        list.replaceInStrings(packages.dataPath() + u'/', QString());
        return list;
    }

    PackageBuilder packages;
    QString file;
    VLContext context;
    VLIndex index;
    RecordingInterface interface;
    VLManager manager;
};

/// Gives the files of @p path the time of an hour ago, as ones have that nobody is writing.
bool makeOld(const QString& path)
{
    QFile file(path);
    constexpr qint64 kOneHourSecs = 3600;
    return file.open(QIODevice::ReadWrite)
        && file.setFileTime(QDateTime::currentDateTime().addSecs(-kOneHourSecs),
                            QFileDevice::FileModificationTime);
}

} // namespace

class TestGuardedContent : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void brokenFile_isWarnedOfOnce_untilItChanges();
    void mendedFile_isFoundAgain();
    void brokenFile_leavesNothingAllocated_data();
    void brokenFile_leavesNothingAllocated();
    void lookup_leavesRootNull_whenNothingIsFound();
    void keys_leaveNothingAllocated();
    void keys_listOtherFiles_whenOneIsBroken();
    void keyTwice_costsThatKeyAlone();
    void keyDataTwice_costsThatKeyAlone();
    void keyData_isPassedOver_whenBroken();
    void siblingWithLikeName_isRefused();
    void linkedControlFile_keepsItsDepth();
    void hugeFile_isNotSearched_behindWhatIsRead();
    void fifo_isNotOpened_atScanAndLookup();
    void device_isNotOpened_whenRecorded();
    void unknownPackage_isWarnedOf_whenSearchNamesIt();
    void guard_canBeTurnedOnLater();
    void resource_isWarnedOf_whenNotFound();
    void dataPath_isWarnedOf_whenNoDirectoryOrWithoutPackage();
    void earlyWarning_reachesOverride_whenEventLoopRuns();
    void earlyWarning_goesByLevelThenInForce();
    void earlyWarning_isLoggedOnce_withoutOverride();
    void ampersand_isExplained_whenItStandsAlone();
    void fileInControl_isWarnedOf_whenNoControlFile_data();
    void fileInControl_isWarnedOf_whenNoControlFile();
    void scene_isWarnedOf_withPlaceOfTip_whenNotFound();
    void earlyWarning_isDropped_whenInterfaceDiesBefore();
    void earlyWarning_isNotRepeated_withoutGuard();
    void interpolation_givesSameResult_whenItEnds_data();
    void interpolation_givesSameResult_whenItEnds();
    void interpolation_leavesVariableInsideItself_data();
    void interpolation_leavesVariableInsideItself();
    void interpolation_isCutOff_whenItGrowsWithoutBound();
    void interpolation_comesToAnEnd_whenItOnlyTakesTime();
};

void TestGuardedContent::brokenFile_isWarnedOfOnce_untilItChanges()
{
    GuardedHost host(kBrokenFile);
    for (int i = 0; i < 3; ++i)
        QVERIFY(!host.finds());
    const QString warning = u"tips.vidlets/Control/tips.xml:3:21: Entity 'x' not declared."_s;
    QCOMPARE(host.warnings(), QStringList{warning});

    QVERIFY(host.rewrite("<vidlets>\n"));
    QVERIFY(!host.finds());
    QVERIFY(!host.finds());
    QCOMPARE(host.warnings().size(), 2);
    QVERIFY(host.warnings().constLast().startsWith(u"tips.vidlets/Control/tips.xml:2:"_s));

    // The same bytes, and a time of their own.
    QVERIFY(makeOld(host.file));
    QVERIFY(!host.finds());
    QCOMPARE(host.warnings().size(), 3);
}

void TestGuardedContent::mendedFile_isFoundAgain()
{
    // As long as the good one, and written within the resolution of most clocks.
    QByteArray broken(kGoodFile);
    broken.replace("title=", "title:");
    GuardedHost host(broken);
    QVERIFY(!host.finds());
    QVERIFY(host.rewrite(kGoodFile));
    QVERIFY(host.finds());
    QVERIFY(host.rewrite(broken));
    QVERIFY(!host.finds());
}

void TestGuardedContent::brokenFile_leavesNothingAllocated_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("in the tip") << QByteArray("<vidlets><vidlet key=\"open\"><a><b>");
    QTest::newRow("behind the tip") << QByteArray("<vidlets><vidlet key=\"open\"><a/></vidlet><");
    QTest::newRow("behind the root") << QByteArray("<vidlets><vidlet key=\"open\"/></vidlets><");
    QTest::newRow("key twice") << QByteArray(
        "<vidlets><vidlet key=\"open\"/><vidlet key=\"open\"/></vidlets>");
    QTest::newRow("another root") << QByteArray("<!-- <vidlets> --><vidlet key=\"open\"/>");
    QTest::newRow("another locale")
        << QByteArray("<vidlets locale=\"de\"><vidlet key=\"open\"/></vidlets>");
    QTest::newRow("tips below another tag")
        << QByteArray("<vidlets><a><vidlet key=\"open\"/></a></vidlets>");
}

void TestGuardedContent::brokenFile_leavesNothingAllocated()
{
    QFETCH(QByteArray, content);
    GuardedHost host(content);
    const ObjectCensus census;
    QVERIFY(!host.finds());
    host.index.keys();
    QVERIFY(census.living<VLXmlElement>().isEmpty());
}

void TestGuardedContent::lookup_leavesRootNull_whenNothingIsFound()
{
    GuardedHost host("<vidlets locale=\"de\"><vidlet key=\"open\"/></vidlets>");
    VLXmlElement unrelated;
    VLXmlElement* root = &unrelated;
    QVERIFY(!host.index.load(u"open"_s, host.file, QLocale(u"en_US"_s), root));
    QVERIFY(!root);
}

void TestGuardedContent::keys_leaveNothingAllocated()
{
    GuardedHost host;
    const ObjectCensus census;
    QCOMPARE(host.index.keys(), QStringList{u"open"_s});
    QVERIFY(census.living<VLXmlElement>().isEmpty());
}

void TestGuardedContent::keys_listOtherFiles_whenOneIsBroken()
{
    GuardedHost host;
    const QString broken =
        host.packages.writeControlFile(u"tips.vidlets"_s, u"broken.xml"_s, kBrokenFile);
    const QString empty = host.packages.writeControlFile(u"tips.vidlets"_s, u"empty.xml"_s, "");
    for (const QString& file : {broken, empty})
        host.index.store(nullptr, QLocale(), file, 2);
    QCOMPARE(host.index.keys(), QStringList{u"open"_s});
    QCOMPARE(host.warnings().size(), 2);
    QCOMPARE(host.warnings().constLast(),
             u"tips.vidlets/Control/empty.xml:1:0: Premature end of document."_s);
}

void TestGuardedContent::keyTwice_costsThatKeyAlone()
{
    GuardedHost host("<vidlets>\n<vidlet key=\"open\"/>\n <vidlet\nkey=\"open\"/>\n"
                     "<vidlet key=\"save\"/></vidlets>");
    QVERIFY(!host.finds());
    QVERIFY(host.finds(u"save"_s));
    host.index.keys();
    QCOMPARE(host.warnings(),
             QStringList{u"tips.vidlets/Control/tips.xml:3:2: the key \"open\" stands twice in the "
                         "file"_s});
}

void TestGuardedContent::keyDataTwice_costsThatKeyAlone()
{
    GuardedHost host;
    const QString path = host.packages.write(
        u"keys.xml"_s,
        "<vidletkeys>\n<key name=\"open\" title=\"1\"/>\n<key name=\"open\" title=\"2\"/>\n"
        "<key name=\"save\" title=\"3\"/></vidletkeys>");
    host.context.set(ckKeyDataFile, path);
    VLXmlElement element;
    host.index.loadKeyData(u"open"_s, &element);
    QVERIFY(!element.hasAttribute(u"title"_s));
    host.index.loadKeyData(u"save"_s, &element);
    QCOMPARE(element.attribute(u"title"_s), u"3"_s);
    QCOMPARE(host.warnings(),
             QStringList{u"keys.xml:3:1: the key \"open\" stands twice in the file"_s});
}

void TestGuardedContent::keyData_isPassedOver_whenBroken()
{
    GuardedHost host;
    const QString path = host.packages.write(
        u"keys.xml"_s, "<vidletkeys>\n<key name=\"open\" title=\"new\"/>\n</vidletkeys>\nmore");
    host.context.set(ckKeyDataFile, path);
    const ObjectCensus census;
    for (int i = 0; i < 2; ++i)
        QVERIFY(host.finds());
    QCOMPARE(host.warnings().size(), 1);
    QVERIFY(host.warnings().constFirst().startsWith(u"keys.xml:4:"_s));
    QVERIFY(census.living<VLXmlElement>().isEmpty());
}

void TestGuardedContent::siblingWithLikeName_isRefused()
{
    GuardedHost host;
    const QString root = host.packages.packageRoot(u"tips.vidlets"_s);
    const QString file = host.packages.write(u"tips.vidlets2/Control/new.xml"_s,
                                             "<vidlets><vidlet key=\"new\"/></vidlets>");
    host.index.indexControlFile(file, root);
    QVERIFY(!host.finds(u"new"_s));
    QCOMPARE(host.warnings(),
             QStringList{u"tips.vidlets2/Control/new.xml: not below the package tips.vidlets"_s});
}

void TestGuardedContent::linkedControlFile_keepsItsDepth()
{
    GuardedHost host;
    const QString root = host.packages.packageRoot(u"tips.vidlets"_s);
    host.packages.write(u"tips.vidlets/deep/down/new.xml"_s,
                        "<vidlets><vidlet key=\"new\"/></vidlets>");
    QVERIFY(QFile::link(root + u"/deep/down"_s, root + u"/short"_s));
    host.index.indexControlFile(root + u"/short/new.xml"_s, root);
    QString path;
    int depth = 0;
    VLXmlElement* tree = nullptr;
    QVERIFY(host.index.retrieve(u"new"_s, QLocale(u"en_US"_s), path, depth, tree));
    delete tree;
    QCOMPARE(depth, 2);
}

void TestGuardedContent::hugeFile_isNotSearched_behindWhatIsRead()
{
    constexpr qint64 kFarBehind = qint64(257) * 1024 * 1024;
    PackageBuilder packages;
    const QString path = packages.writeControlFile(u"tips.vidlets"_s, u"huge.xml"_s, {});
    QFile huge(path);
    QVERIFY(huge.open(QIODevice::WriteOnly) && huge.seek(kFarBehind));
    QVERIFY(huge.write("\n<vidlets><vidlet key=\"far\"/></vidlets>") > 0 && huge.flush());
    VLContext context;
    RecordingInterface interface(guarded(context), {packages.dataPath()});

    QTRY_COMPARE(interface.messages(VLMessageWarning),
                 QStringList{path + u":1:1: no control file: it holds no tag"_s});
}

void TestGuardedContent::fifo_isNotOpened_atScanAndLookup()
{
    GuardedHost host;
    const QString fifo = host.packages.path(u"tips.vidlets/Control/pipe.xml"_s);
    QCOMPARE(mkfifo(QFile::encodeName(fifo).constData(), S_IRWXU), 0);
    host.manager.loadDataPath({host.packages.dataPath()});
    // Would wait for a writer for ever.
    host.index.indexControlFile(fifo, host.packages.packageRoot(u"tips.vidlets"_s));
    QVERIFY(!host.finds(u"new"_s));
    QVERIFY(host.warnings().isEmpty());

    host.index.store(nullptr, QLocale(), fifo, 2);
    QVERIFY(!host.finds(u"new"_s));
    QVERIFY(host.finds());
    QCOMPARE(host.warnings(), QStringList{u"tips.vidlets/Control/pipe.xml: not a regular file"_s});
}

void TestGuardedContent::device_isNotOpened_whenRecorded()
{
    GuardedHost host;
    host.index.store(nullptr, QLocale(), u"/dev/zero"_s, 2);
    host.index.store(nullptr, QLocale(), host.packages.dataPath(), 2);
    QVERIFY(!host.finds(u"new"_s));
    QCOMPARE(host.index.keys(), QStringList{u"open"_s});
    const QStringList expected{u"/dev/zero: not a regular file"_s,
                               host.packages.dataPath() + u": not a regular file"_s};
    QCOMPARE(host.interface.messages(VLMessageWarning), expected);
}

void TestGuardedContent::unknownPackage_isWarnedOf_whenSearchNamesIt()
{
    GuardedHost host("<!-- -->\n<vidlets search=\", tips;none\"><vidlet key=\"open\"/></vidlets>");
    QVERIFY(host.finds());
    QVERIFY(host.finds());
    QCOMPARE(
        host.warnings(),
        QStringList{u"tips.vidlets/Control/tips.xml:2:30: \"search\" names the unknown package "
                    "\"none\""_s});
}

void TestGuardedContent::guard_canBeTurnedOnLater()
{
    GuardedHost host;
    host.context.set(ckGuardContent, false);
    QVERIFY(host.rewrite(""));
    host.context.set(ckGuardContent, true);
    QVERIFY(!host.finds());
    QCOMPARE(host.warnings().size(), 1);
}

void TestGuardedContent::resource_isWarnedOf_whenNotFound()
{
    GuardedHost host;
    const QString resource = host.packages.write(u"tips.vidlets/Resources/a.png"_s, "x");
    QString path;
    int depth = 0;
    VLXmlElement* root = nullptr;
    VLXmlElement* tip = host.index.retrieve(u"open"_s, QLocale(u"en_US"_s), path, depth, root);
    QVERIFY(tip);
    const QPointer<VLXmlElement> left(root);
    {
        VLView view(&host.manager);
        view.setContent(tip);
        QCOMPARE(view.findResource(u"a.png"_s), resource);
        for (int i = 0; i < 2; ++i)
            QCOMPARE(view.findResource(u"b.png"_s), u"Resources"_s);
    }
    // With ckReleaseClips it has gone with the tip.
    delete left;
    QCOMPARE(
        host.warnings(),
        QStringList{u"tips.vidlets/Control/tips.xml:2:1: the resource \"b.png\" is not found"_s});
}

void TestGuardedContent::dataPath_isWarnedOf_whenNoDirectoryOrWithoutPackage()
{
    GuardedHost host;
    const QString file = host.packages.write(u"file"_s, "x");
    const QString missing = host.packages.path(u"missing"_s);
    const QString empty = QFileInfo(host.packages.write(u"empty/file"_s, "x")).path();
    for (int i = 0; i < 2; ++i)
        host.manager.loadDataPath({file, missing, empty});
    const QStringList expected{u"file: not a directory, so no data path"_s,
                               u"missing: not a directory, so no data path"_s,
                               u"empty: holds no package (*.vidlets)"_s};
    QCOMPARE(host.warnings(), expected);
}

void TestGuardedContent::ampersand_isExplained_whenItStandsAlone()
{
    GuardedHost host(
        "<vidlets>\n<vidlet key=\"open\">Gr\xc3\xbc\xc3\x9f & Kuss</vidlet>\n</vidlets>\n");
    QVERIFY(!host.finds());
    QCOMPARE(host.warnings().size(), 1);
    const QString warning = host.warnings().constFirst();
    QVERIFY2(warning.startsWith("tips.vidlets/Control/tips.xml:2:26: "_L1), qPrintable(warning));
    QVERIFY2(warning.endsWith(" \"&\" is written \"&amp;\"."_L1), qPrintable(warning));
}

void TestGuardedContent::fileInControl_isWarnedOf_whenNoControlFile_data()
{
    const QString otherTag = u"no control file: its first tag is not <vidlets with an attribute or "
                             "the bracket on the same line"_s;
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("warning");
    QTest::newRow("empty") << QByteArray() << u"1:1: no control file: it holds no tag"_s;
    QTest::newRow("other root") << QByteArray("<tips><vidlet key=\"open\"/></tips>")
                                << u"1:1: "_s + otherTag;
    QTest::newRow("tag in a comment")
        << QByteArray("\n<!-- see <tips> -->\n<vidlets/>") << u"2:10: "_s + otherTag;
}

void TestGuardedContent::fileInControl_isWarnedOf_whenNoControlFile()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QString, warning);
    PackageBuilder packages;
    const QString file = packages.writeControlFile(u"tips.vidlets"_s, u"tips.xml"_s, content);
    VLContext context;
    RecordingInterface interface(guarded(context), {packages.dataPath()});
    QTRY_COMPARE(interface.messages(VLMessageWarning), QStringList{file + u':' + warning});
}

void TestGuardedContent::scene_isWarnedOf_withPlaceOfTip_whenNotFound()
{
    GuardedHost host("<vidlets>\n<vidlet key=\"close\"/>\n<vidlet key=\"open\"/>\n</vidlets>\n");
    // What is above the tip goes with it.
    host.manager.context().set(ckReleaseClips, true);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(host.manager.show(u"open"_s, QPoint(), nullptr));
        host.manager.widget()->hide();
    }
    QCOMPARE(host.warnings(),
             QStringList{u"tips.vidlets/Control/tips.xml:3:1: "
                         "the scene \"ui/VidletUI.qml\" is not found"_s});
}

void TestGuardedContent::earlyWarning_reachesOverride_whenEventLoopRuns()
{
    VLContext context;
    RecordingInterface interface(guarded(context), {u"/none"_s});
    QVERIFY(interface.recordedMessages.isEmpty());
    QTRY_COMPARE(interface.messages(VLMessageWarning),
                 QStringList{u"/none: not a directory, so no data path"_s});
    QCoreApplication::processEvents();
    QCOMPARE(interface.messages(VLMessageWarning).size(), 1);
}

void TestGuardedContent::earlyWarning_goesByLevelThenInForce()
{
    VLContext context;
    RecordingInterface quiet(guarded(context), {u"/none"_s});
    quiet.context().set(ckMessageLevel, VLMessageError);
    context.set(ckMessageLevel, VLMessageError);
    RecordingInterface loud(context, {u"/none"_s});
    loud.context().set(ckMessageLevel, VLMessageWarning);
    QTRY_COMPARE(loud.messages(VLMessageWarning).size(), 1);
    QVERIFY(quiet.recordedMessages.isEmpty());
}

void TestGuardedContent::earlyWarning_isLoggedOnce_withoutOverride()
{
    static QStringList lines;
    lines.clear();
    const QtMessageHandler former = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& line) { lines += line; });
    {
        VLContext context;
        context.set(ckMessageLevel, VLMessageError);
        VLInterface quiet(guarded(context), {u"/quiet"_s}, nullptr);
        // The level of the time of the repetition counts.
        quiet.context().set(ckMessageLevel, VLMessageWarning);
        context.set(ckMessageLevel, VLMessageWarning);
        const VLInterface loud(context, {u"/loud"_s}, nullptr);
        QCoreApplication::processEvents();
    }
    qInstallMessageHandler(former);
    const QStringList expected{u"Warning:/loud: not a directory, so no data path"_s,
                               u"Warning:/quiet: not a directory, so no data path"_s};
    QCOMPARE(lines, expected);
}

void TestGuardedContent::earlyWarning_isDropped_whenInterfaceDiesBefore()
{
    VLContext context;
    auto interface =
        std::make_unique<RecordingInterface>(guarded(context), QStringList{u"/none"_s});
    interface.reset();
    // Would reach an object that has gone.
    QCoreApplication::processEvents();
    QVERIFY(!interface);
}

void TestGuardedContent::earlyWarning_isNotRepeated_withoutGuard()
{
    VLContext context;
    context.set(ckGuardContent, false);
    RecordingInterface interface(context, {u"/none"_s});
    QCoreApplication::processEvents();
    QVERIFY(interface.messages(VLMessageWarning).isEmpty());
}

void TestGuardedContent::interpolation_givesSameResult_whenItEnds_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text :
         {"", "plain", "%(a)s", "a%(a)s%(b)sb", "%(none)s", "%(null)s", "%(empty)s", "%(a)", "%()s",
          "%(%(a)s", "%%(a)s", "%(nested)s %(nested)s", "%(open)sa)s", "%(half)sa)s.", "%(ä)s",
          "%(a)s%(nested)s%(a)s", "%(-_9)s", "%(deep)s%(empty)s)s"})
        QTest::addRow("%s", text) << QString::fromUtf8(text);
}

void TestGuardedContent::interpolation_givesSameResult_whenItEnds()
{
    QFETCH(QString, text);
    const QMap<QString, QVariant> variables{
        {u"a"_s, u"Ä"_s},
        {u"b"_s, 12},
        {u"null"_s, QVariant()},
        {u"empty"_s, u""_s},
        {u"open"_s, u"%("_s},
        {u"half"_s, u"x%("_s},
        {u"-_9"_s, u"n"_s},
        {u"nested"_s, u"[%(a)s%(b)s%(none)s]"_s},
        {u"deep"_s, u"%(nested)s%(open)snested"_s},
    };
    GuardedHost host;
    const QString result = host.manager.interpolate(text, variables);
    host.manager.context().set(ckGuardContent, false);
    QCOMPARE(result, host.manager.interpolate(text, variables));
    QVERIFY(host.warnings().isEmpty());
}

void TestGuardedContent::interpolation_leavesVariableInsideItself_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("directly") << u"a %(self)s b"_s << u"a <%(self)s> b"_s;
    QTest::newRow("by way of another") << u"%(one)s"_s << u"1 2 %(one)s"_s;
    QTest::newRow("by way of the text around it") << u"%(open)sopen)s"_s << u"%(open)s"_s;
    QTest::newRow("twice in turn") << u"%(self)s%(self)s"_s << u"<%(self)s><%(self)s>"_s;
}

void TestGuardedContent::interpolation_leavesVariableInsideItself()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    GuardedHost host;
    host.manager.setGlobalProperty(u"self"_s, u"<%(self)s>"_s);
    host.manager.setGlobalProperty(u"one"_s, u"1 %(two)s"_s);
    host.manager.setGlobalProperty(u"two"_s, u"2 %(one)s"_s);
    host.manager.setGlobalProperty(u"open"_s, u"%("_s);
    for (int i = 0; i < 2; ++i)
        QCOMPARE(host.manager.interpolate(text), expected);
    QCOMPARE(host.warnings().size(), 1);
    QVERIFY(host.warnings().constFirst().endsWith(u"contains itself"_s));
}

void TestGuardedContent::interpolation_isCutOff_whenItGrowsWithoutBound()
{
    constexpr int kMebibyte = 1024 * 1024;
    GuardedHost host;
    host.manager.setGlobalProperty(u"v0"_s, u"0123456789abcdeé"_s);
    for (int i = 1; i < 30; ++i) {
        const QString value = u"%(v%1)s"_s.arg(i - 1).repeated(2);
        host.manager.setGlobalProperty(u"v%1"_s.arg(i), value);
    }
    for (int i = 0; i < 2; ++i) {
        const QString result = host.manager.interpolate(u"%(v29)s"_s);
        QVERIFY(result.startsWith(u"0123456789abcdeé0123456789"_s));
        const qsizetype bytes = result.toUtf8().size();
        QVERIFY(bytes <= kMebibyte);
        QVERIFY(bytes > kMebibyte - 4);
    }
    QCOMPARE(host.warnings().size(), 1);
    const QString fits(kMebibyte, u'x');
    QCOMPARE(host.manager.interpolate(fits), fits);
}

void TestGuardedContent::interpolation_comesToAnEnd_whenItOnlyTakesTime()
{
    GuardedHost host;
    host.manager.setGlobalProperty(u"v0"_s, u""_s);
    for (int i = 1; i < 60; ++i) {
        const QString value = u"%(v%1)s"_s.arg(i - 1).repeated(2);
        host.manager.setGlobalProperty(u"v%1"_s.arg(i), value);
    }
    QCOMPARE(host.manager.interpolate(u"a%(v59)sb"_s), u"a"_s);
    QCOMPARE(host.warnings().size(), 1);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestGuardedContent>(argc, argv);
}

#include "tst_guardedcontent.moc"
