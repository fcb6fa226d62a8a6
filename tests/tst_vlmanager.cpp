// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHelpEvent>
#include <QPointer>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QWindow>

#include <cstdlib>
#include <functional>
#include <memory>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// An index that writes down how it is called, and otherwise works as its base does.
class RecordingIndex : public VLIndex
{
public:
    RecordingIndex()
        : VLIndex(nullptr, {})
    {
    }

    bool open() override
    {
        record(u"open"_s);
        return openResult && VLIndex::open();
    }
    bool setup() override
    {
        record(u"setup"_s);
        return VLIndex::setup();
    }
    bool clear() override
    {
        record(u"clear"_s);
        return VLIndex::clear();
    }
    bool close() override
    {
        record(u"close"_s);
        return VLIndex::close();
    }
    bool remove() override
    {
        record(u"remove"_s);
        return VLIndex::remove();
    }
    void startUpdate() override
    {
        record(u"startUpdate"_s);
        VLIndex::startUpdate();
    }
    void endUpdate() override
    {
        record(u"endUpdate"_s);
        VLIndex::endUpdate();
    }
    bool store(VLXmlElement* element, const QLocale& locale, const QString& location,
               int depth) override
    {
        record(u"store"_s);
        return VLIndex::store(element, locale, location, depth);
    }
    QList<QString> keys() override
    {
        record(u"keys"_s);
        return keysToGive.isEmpty() ? VLIndex::keys() : keysToGive;
    }
    VLXmlElement* retrieve(const QString& key, const QLocale& locale, QString& path, int& depth,
                           VLXmlElement*& root) override
    {
        record(u"retrieve %1 %2"_s.arg(key, locale.name()));
        return VLIndex::retrieve(key, locale, path, depth, root);
    }
    void indexControlFile(const QString& file, const QString& root) override
    {
        controlFiles += file;
        packagePaths += root;
        record(u"indexControlFile"_s);
        VLIndex::indexControlFile(file, root);
    }

    QStringList calls;
    QStringList controlFiles;
    QStringList packagePaths;
    QStringList keysToGive;
    bool openResult = true;
    /// Run at each call, with its name.
    std::function<void(const QString& call)> onCall;

private:
    void record(const QString& call)
    {
        calls += call;
        if (onCall)
            onCall(call);
    }
};

/// A manager with everything around it.
struct ManagerSetup
{
    /// Builds the manager on the data path of the packages, or on @p paths.
    VLManager& build(const QStringList& paths)
    {
        manager = std::make_unique<VLManager>(&host, context, paths, &index);
        return *manager;
    }
    VLManager& build()
    {
        return build({packages.dataPath()});
    }
    /// Has all messages recorded.
    void listen()
    {
        context.set(ckMessageLevel, VLMessageDebug);
    }
    QStringList sortedControlFiles() const
    {
        QStringList files = index.controlFiles;
        files.sort();
        return files;
    }

    PackageBuilder packages;
    VLContext context{nullptr};
    /// Has a manager of its own, which stays idle.
    RecordingInterface host{context};
    RecordingIndex index;
    std::unique_ptr<VLManager> manager;
};

QByteArray controlFileContent()
{
    return "<vidlets><vidlet key=\"k\"/></vidlets>";
}

QByteArray localizedContent(const QByteArray& locale, const QByteArray& title)
{
    return "<vidlets locale=\"" + locale + "\"><vidlet key=\"k\" title=\"" + title
        + "\"/></vidlets>";
}

/// Retrieves @p key and gives the title of what was found, or a null string; frees the tree.
QString retrievedTitle(VLManager& manager, const QString& key)
{
    QString path;
    int depth = 0;
    VLXmlElement* root = nullptr;
    const VLXmlElement* element = manager.retrieve(key, path, depth, root);
    if (!element)
        return QString();
    const std::unique_ptr<VLXmlElement> owner(root);
    return element->attribute(u"title"_s);
}

/// Keeps the processor busy for that long.
void spendMs(qint64 ms)
{
    QElapsedTimer timer;
    timer.start();
    while (!timer.hasExpired(ms)) { }
}

/// The number in the one message that matches @p pattern, or -1.
double capturedSeconds(const QStringList& messages, const QString& pattern)
{
    const QRegularExpression expression(QRegularExpression::anchoredPattern(pattern));
    for (const QString& message : messages) {
        const QRegularExpressionMatch match = expression.match(message);
        if (match.hasMatch())
            return match.captured(1).toDouble();
    }
    return -1.0;
}

QString secondsPattern()
{
    return u"(\\d+(?:\\.\\d{1,5}\\d*)?(?:e[+-]\\d+)?)"_s;
}

bool sendToolTipEvent(QWidget* widget)
{
    QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), widget->mapToGlobal(QPoint(1, 1)));
    return QCoreApplication::sendEvent(widget, &event);
}

bool makeLink(const QString& target, const QString& link)
{
    return QFile::link(target, link);
}

} // namespace

class TestVLManager : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    // Hides that of the base.

    // Construction
    void constructor_storesInterfaceAndIndex();
    void constructor_makesIndexOnItsSettings_whenIndexIsNull();
    void constructor_keepsStoreOfGivenIndex();
    void constructor_opensGivenIndexBeforeAnythingElse();
    void constructor_scans_whenOpenOfIndexFails();
    void constructor_callsOnlyOpenAndIndexControlFile();
    void constructor_makesNoWindow();
    void constructor_works_whenInterfaceIsNull();
    void constructor_copiesSettings();
    void constructor_setsAlwaysShowToolTips_onPresentTopLevelWidgets();
    void constructor_leavesToolTipAttribute_whenSettingIsAbsent();
    void constructor_setsToolTipAttributeBeforeTheScan();
    void constructor_readsToolTipSettingFromHost_andFilterSettingFromCopy();
    void constructor_installsEventFilterAfterTheScan();

    // Event filter
    void toolTipEvent_isIgnored_whenFilterIsNotInstalled();
    void eventFilter_isNotInstalled_whenSettingChangesLater();
    void directCalls_work_whenFilterIsNotInstalled();

    // Destruction
    void destructor_removesEventFilter();
    void destructor_clearsToolTipAttribute_whoeverSetIt();
    void destructor_isHarmless_whenNoPopupWasMade();
    void destructor_releasesPopupByDeferredDeletion();
    void destructor_leavesReservedWindowAlive();
    void destructor_leavesIndexAlive_data();
    void destructor_leavesIndexAlive();

    // Messages
    void handleMessage_filtersByLevel_data();
    void handleMessage_filtersByLevel();
    void handleMessage_passesTypeAndTextUnchanged();
    void handleMessage_readsLevelOnEachCall();
    void handleMessage_isHarmless_whenInterfaceIsNull();

    // Scale, keys and position
    void realScaleValue_isOne_byDefault();
    void getScaledSize_multipliesAndTruncates_data();
    void getScaledSize_multipliesAndTruncates();
    void getScaledSize_ignoresLaterChangeOfSetting();
    void keyForObject_asksHost();
    void tooltipPosition_addsOffset_data();
    void tooltipPosition_addsOffset();
    void tooltipPosition_readsOffsetOnEachCall();

    // Data paths
    void scan_sendsMessagesInOrder();
    void scan_sendsDurationInSeconds();
    void scan_takesPathsInOrder();
    void loadDataPath_doesNothing_whenListIsEmpty();
    void loadDataPath_isSilent_whenPathIsNoDirectory_data();
    void loadDataPath_isSilent_whenPathIsNoDirectory();
    void loadDataPath_sendsMessage_whenPathHasNoPackages();
    void loadDataPath_sendsAbsolutePath_whenPathIsRelative();
    void loadDataPath_scansTwice_whenPathIsThereTwice();
    void loadDataPath_addsPackages_withoutDuration();
    void loadDataPath_passesOver_data();
    void loadDataPath_passesOver();
    void loadDataPath_ignoresLinkToPackage();
    void loadDataPath_matchesExtensionWithoutCase();
    void loadDataPath_usesChangedExtension();
    void loadDataPath_readsExtensionForEachPath();
    void loadDataPath_givesCanonicalPaths_whenPathIsLink();
    void searchPaths_givesListOfConstructor();

    // Packages
    void loadPackage_indexesOnlyFilesDirectlyInControlDirectory();
    void loadPackage_matchesFileNamesWithoutCase();
    void loadPackage_ignoresLinkToControlFile();
    void loadPackage_ignoresHiddenControlFile();
    void loadPackage_ignoresDirectoryNamedLikeControlFile();
    void loadPackage_findsNothing_whenControlDirectoryIsMissing();
    void loadPackage_usesChangedControlDirectory_data();
    void loadPackage_usesChangedControlDirectory();
    void loadPackage_usesAbsoluteControlDirectory();
    void loadPackage_givesCanonicalPaths_whenControlDirectoryIsLink();
    void indexControFile_forwardsArguments();
    void keys_areThoseOfIndex();

    // Retrieval and locales
    void retrieve_fillsOutputArguments();
    void retrieve_asksForBothLocales_data();
    void retrieve_asksForBothLocales();
    void retrieve_takesFirstLocale_whenBothHaveKey();
    void retrieve_takesFallback_whenOnlyItHasKey();
    void retrieve_returnsNullSilently_whenNobodyHasKey();
    void retrieve_sendsDurationInSeconds();
    void currentLocale_followsSettings_data();
    void currentLocale_followsSettings();
    void currentLocale_isThatOfSystem_whenNothingIsSet();

    // Variables
    void interpolate_replacesReferences_data();
    void interpolate_replacesReferences();
    void interpolate_usesGlobalProperties_whenNoMapIsGiven();
    void interpolate_usesGivenMapAlone();
    void setGlobalProperty_overwrites();
    void interpolate_neverFinishes_whenValueContainsItsOwnReference();

    // External resources
    void openExternalResource_tellsTypesApart_data();
    void openExternalResource_tellsTypesApart();
    void openExternalResource_obeysGates_data();
    void openExternalResource_obeysGates();
    void openExternalResource_returnsAnswerOfHost();
};

int TestVLManager::runChild(const QString& name)
{
    if (name != u"selfReference"_s)
        return VidletsTest::runChild(name);

    // A limit in processor time ends what never finishes, however slow the machine is.
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const rlim_t seconds = static_cast<rlim_t>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) + 3;
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    const rlimit processorSeconds{seconds, RLIM_INFINITY};
    setrlimit(RLIMIT_CPU, &processorSeconds);

    VLContext context(nullptr);
    VLManager manager(nullptr, context, {}, nullptr);
    manager.setGlobalProperty(u"self"_s, u"%(self)s"_s);
    manager.interpolate(u"%(self)s"_s);
    return EXIT_SUCCESS;
}

void TestVLManager::constructor_storesInterfaceAndIndex()
{
    ManagerSetup setup;
    VLManager& manager = setup.build();
    QCOMPARE(manager.interface(), &setup.host);
    QCOMPARE(manager.index(), &setup.index);
    QVERIFY(!manager.parent());
    QCOMPARE(&std::as_const(manager).context(), &manager.context());
}

void TestVLManager::constructor_makesIndexOnItsSettings_whenIndexIsNull()
{
    PackageBuilder packages;
    packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    VLContext context(nullptr);
    VLManager manager(nullptr, context, {packages.dataPath()}, nullptr);
    QVERIFY(manager.index());
    QCOMPARE(&manager.index()->context(), &manager.context());
    QCOMPARE(manager.keys(), QStringList{u"k"_s});
}

void TestVLManager::constructor_keepsStoreOfGivenIndex()
{
    ManagerSetup setup;
    VLContext storeOfIndex(nullptr);
    VLIndex index(&storeOfIndex, {});
    VLManager manager(&setup.host, setup.context, {}, &index);
    QCOMPARE(&manager.index()->context(), &storeOfIndex);
}

void TestVLManager::constructor_opensGivenIndexBeforeAnythingElse()
{
    ManagerSetup setup;
    setup.listen();
    setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    qsizetype messagesAtOpen = -1;
    setup.index.onCall = [&](const QString& call) {
        if (call == u"open"_s)
            messagesAtOpen = setup.host.recordedMessages.size();
    };
    setup.build();
    QCOMPARE(messagesAtOpen, 0);
    QCOMPARE(setup.index.calls.first(), u"open"_s);
}

void TestVLManager::constructor_scans_whenOpenOfIndexFails()
{
    ManagerSetup setup;
    setup.index.openResult = false;
    const QString file = setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    setup.build();
    QCOMPARE(setup.index.controlFiles, QStringList{file});
}

void TestVLManager::constructor_callsOnlyOpenAndIndexControlFile()
{
    ManagerSetup setup;
    setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    setup.build();
    setup.manager.reset();
    QCOMPARE(setup.index.calls, (QStringList{u"open"_s, u"indexControlFile"_s}));
}

void TestVLManager::constructor_makesNoWindow()
{
    ManagerSetup setup;
    QVERIFY(!setup.build().widget());
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
    QVERIFY(QGuiApplication::allWindows().isEmpty());
}

void TestVLManager::constructor_works_whenInterfaceIsNull()
{
    PackageBuilder packages;
    packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    VLContext context(nullptr);
    context.set(ckMessageLevel, VLMessageDebug);
    RecordingIndex index;
    VLManager manager(nullptr, context, {packages.dataPath()}, &index);
    QVERIFY(!manager.interface());
    QCOMPARE(index.controlFiles.size(), 1);
}

void TestVLManager::constructor_copiesSettings()
{
    ManagerSetup setup;
    setup.context.set(ckLocale, u"de_DE"_s);
    VLManager& manager = setup.build();
    QVERIFY(&manager.context() != &setup.context);
    QCOMPARE(manager.currentLocale(), QLocale(u"de_DE"_s));

    setup.context.set(ckLocale, u"fr_FR"_s);
    QCOMPARE(manager.currentLocale(), QLocale(u"de_DE"_s));
    manager.context().set(ckLocale, u"es_ES"_s);
    QCOMPARE(manager.currentLocale(), QLocale(u"es_ES"_s));
    QCOMPARE(setup.context.get(ckLocale, QString()), QVariant(u"fr_FR"_s));
}

void TestVLManager::constructor_setsAlwaysShowToolTips_onPresentTopLevelWidgets()
{
    ManagerSetup setup;
    setup.context.set(ckAlwaysShowToolTips, true);
    QWidget first;
    QWidget second;
    QWidget child(&second);
    setup.build();
    const QWidget later;
    QVERIFY(first.testAttribute(Qt::WA_AlwaysShowToolTips));
    QVERIFY(second.testAttribute(Qt::WA_AlwaysShowToolTips));
    QVERIFY(!child.testAttribute(Qt::WA_AlwaysShowToolTips));
    QVERIFY(!later.testAttribute(Qt::WA_AlwaysShowToolTips));
}

void TestVLManager::constructor_leavesToolTipAttribute_whenSettingIsAbsent()
{
    ManagerSetup setup;
    const QWidget plain;
    QWidget marked;
    marked.setAttribute(Qt::WA_AlwaysShowToolTips);
    setup.build();
    QVERIFY(!plain.testAttribute(Qt::WA_AlwaysShowToolTips));
    QVERIFY(marked.testAttribute(Qt::WA_AlwaysShowToolTips));
}

void TestVLManager::constructor_setsToolTipAttributeBeforeTheScan()
{
    ManagerSetup setup;
    setup.context.set(ckAlwaysShowToolTips, true);
    setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    const QWidget widget;
    QStringList seen;
    setup.index.onCall = [&](const QString& call) {
        if (widget.testAttribute(Qt::WA_AlwaysShowToolTips))
            seen += call;
    };
    setup.build();
    QCOMPARE(seen, QStringList{u"indexControlFile"_s});
}

void TestVLManager::constructor_readsToolTipSettingFromHost_andFilterSettingFromCopy()
{
    ManagerSetup setup;
    setup.index.onCall = [&setup](const QString&) {
        setup.context.set(ckAlwaysShowToolTips, true);
        setup.context.set(ckInstallEventFilter, true);
    };
    QWidget widget;
    setup.build();
    QVERIFY(widget.testAttribute(Qt::WA_AlwaysShowToolTips));
    sendToolTipEvent(&widget);
    QVERIFY(setup.host.objectsAskedForKey.isEmpty());
}

void TestVLManager::constructor_installsEventFilterAfterTheScan()
{
    ManagerSetup setup;
    setup.context.set(ckInstallEventFilter, true);
    setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    QWidget widget;
    qsizetype askedDuringScan = -1;
    setup.index.onCall = [&](const QString& call) {
        if (call != u"indexControlFile"_s)
            return;
        sendToolTipEvent(&widget);
        askedDuringScan = setup.host.objectsAskedForKey.size();
    };
    setup.build();
    QCOMPARE(askedDuringScan, 0);

    setup.index.onCall = nullptr;
    sendToolTipEvent(&widget);
    QCOMPARE(setup.host.objectsAskedForKey, QList<QPointer<QObject>>{&widget});
}

void TestVLManager::toolTipEvent_isIgnored_whenFilterIsNotInstalled()
{
    ManagerSetup setup;
    setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    VLManager& manager = setup.build();
    QWidget widget;
    widget.setObjectName(u"k"_s);
    sendToolTipEvent(&widget);
    QVERIFY(setup.host.objectsAskedForKey.isEmpty());
    QVERIFY(!manager.widget());
}

void TestVLManager::eventFilter_isNotInstalled_whenSettingChangesLater()
{
    ManagerSetup setup;
    VLManager& manager = setup.build();
    manager.context().set(ckInstallEventFilter, true);
    QWidget widget;
    sendToolTipEvent(&widget);
    QVERIFY(setup.host.objectsAskedForKey.isEmpty());
}

void TestVLManager::directCalls_work_whenFilterIsNotInstalled()
{
    ManagerSetup setup;
    setup.packages.writeScene(u"a.vidlets"_s);
    setup.packages.writeControlFile(u"a.vidlets"_s, u"a.xml"_s, localizedContent("", "A title"));
    VLManager& manager = setup.build();
    QCOMPARE(manager.keys(), QStringList{u"k"_s});
    QVERIFY(manager.show(u"k"_s, QPoint(10, 10), nullptr));
    QVERIFY(manager.widget()->isVisible());
    QCOMPARE(manager.vidletAttribute(u"k"_s, u"title"_s, QString()), u"A title"_s);

    // By default the view owns the element alone, not the root above it.
    const QPointer<QObject> root = manager.widget()->view()->content()->parent();
    setup.manager.reset();
    runDeferredDeletions();
    delete root;
}

void TestVLManager::destructor_removesEventFilter()
{
    ManagerSetup setup;
    setup.context.set(ckInstallEventFilter, true);
    QWidget widget;
    setup.build();
    setup.manager.reset();
    sendToolTipEvent(&widget);
    QVERIFY(setup.host.objectsAskedForKey.isEmpty());
}

void TestVLManager::destructor_clearsToolTipAttribute_whoeverSetIt()
{
    ManagerSetup setup;
    setup.build();
    QWidget parent;
    parent.setAttribute(Qt::WA_AlwaysShowToolTips);
    QWidget child(&parent);
    child.setAttribute(Qt::WA_AlwaysShowToolTips);
    setup.manager.reset();
    QVERIFY(!parent.testAttribute(Qt::WA_AlwaysShowToolTips));
    QVERIFY(child.testAttribute(Qt::WA_AlwaysShowToolTips));
}

void TestVLManager::destructor_isHarmless_whenNoPopupWasMade()
{
    ManagerSetup setup;
    QVERIFY(!setup.build().widget());
    setup.manager.reset();
    runDeferredDeletions();
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void TestVLManager::destructor_releasesPopupByDeferredDeletion()
{
    ManagerSetup setup;
    VLManager& manager = setup.build();
    QVERIFY(!manager.show(u"missing"_s, QPoint(), nullptr));
    const QPointer<VLWidget> popup = manager.widget();
    QVERIFY(popup);
    setup.manager.reset();
    QVERIFY(popup);
    runDeferredDeletions();
    QVERIFY(!popup);
}

void TestVLManager::destructor_leavesReservedWindowAlive()
{
    ManagerSetup setup;
    VLManager& manager = setup.build();
    manager.show(u"missing"_s, QPoint(), nullptr);
    const QPointer<VLWidget> reserved = manager.widget();
    QWidget* window = nullptr;
    QVERIFY(manager.reserve(reserved, window));
    const QPointer<VLWidget> current = manager.widget();
    setup.manager.reset();
    runDeferredDeletions();
    QVERIFY(!current);
    QVERIFY(reserved);
    delete reserved;
}

void TestVLManager::destructor_leavesIndexAlive_data()
{
    QTest::addColumn<bool>("given");
    QTest::newRow("an index of the host's") << true;
    QTest::newRow("an index of its own") << false;
}

void TestVLManager::destructor_leavesIndexAlive()
{
    QFETCH(bool, given);
    VLContext context(nullptr);
    auto manager = std::make_unique<VLManager>(nullptr, context, QStringList(),
                                               given ? new VLIndex(nullptr, {}) : nullptr);
    const QPointer<VLIndex> index = manager->index();
    manager.reset();
    runDeferredDeletions();
    QVERIFY(index);
    QVERIFY(index->open());
    delete index;
}

void TestVLManager::handleMessage_filtersByLevel_data()
{
    QTest::addColumn<QVariant>("level");
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("passes");
    const auto row = [](const char* name, const QVariant& level, int type, bool passes) {
        QTest::newRow(name) << level << type << passes;
    };
    row("default, error", QVariant(), 100, true);
    row("default, warning", QVariant(), 200, true);
    row("default, between warning and information", QVariant(), 201, false);
    row("default, information", QVariant(), 300, false);
    row("default, debug", QVariant(), 400, false);
    row("99, error", 99, 100, false);
    row("99, more severe than an error", 99, 99, true);
    row("100, error", 100, 100, true);
    row("100, warning", 100, 200, false);
    row("300, information", 300, 300, true);
    row("300, debug", 300, 400, false);
    row("400, error", 400, 100, true);
    row("400, warning", 400, 200, true);
    row("400, information", 400, 300, true);
    row("400, debug", 400, 400, true);
    row("400, beyond debug", 400, 401, false);
    row("level as a string", u"300"_s, 300, true);
    row("level that is no number", u"all"_s, 100, false);
}

void TestVLManager::handleMessage_filtersByLevel()
{
    QFETCH(QVariant, level);
    QFETCH(int, type);
    ManagerSetup setup;
    if (level.isValid())
        setup.context.set(ckMessageLevel, level);
    VLManager& manager = setup.build({});
    setup.host.recordedMessages.clear();
    manager.handleMessage(static_cast<VLMessageType>(type), u"text"_s);
    QTEST(!setup.host.recordedMessages.isEmpty(), "passes");
}

void TestVLManager::handleMessage_passesTypeAndTextUnchanged()
{
    ManagerSetup setup;
    VLManager& manager = setup.build({});
    manager.handleMessage(static_cast<VLMessageType>(150), u" 100 %1 of\n%2 "_s);
    QCOMPARE(setup.host.recordedMessages.size(), 1);
    QCOMPARE(int(setup.host.recordedMessages.first().type), 150);
    QCOMPARE(setup.host.recordedMessages.first().text, u" 100 %1 of\n%2 "_s);
}

void TestVLManager::handleMessage_readsLevelOnEachCall()
{
    ManagerSetup setup;
    VLManager& manager = setup.build({});
    manager.handleMessage(VLMessageDebug, u"one"_s);
    manager.context().set(ckMessageLevel, VLMessageDebug);
    manager.handleMessage(VLMessageDebug, u"two"_s);
    manager.context().set(ckMessageLevel, VLMessageError);
    manager.handleMessage(VLMessageDebug, u"three"_s);
    QCOMPARE(setup.host.messages(VLMessageDebug), QStringList{u"two"_s});
}

void TestVLManager::handleMessage_isHarmless_whenInterfaceIsNull()
{
    VLContext context(nullptr);
    RecordingIndex index;
    VLManager manager(nullptr, context, {}, &index);
    manager.handleMessage(VLMessageError, u"text"_s);
    QVERIFY(!manager.interface());
}

void TestVLManager::realScaleValue_isOne_byDefault()
{
    ManagerSetup setup;
    QCOMPARE(setup.build().realScaleValue(), 1.0F);
}

void TestVLManager::getScaledSize_multipliesAndTruncates_data()
{
    QTest::addColumn<QVariant>("scale");
    QTest::addColumn<float>("realScale");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("scaled");
    const auto row = [](const char* name, const QVariant& scale, float realScale, int size,
                        int scaled) {
        QTest::newRow(name) << scale << realScale << size << scaled;
    };
    row("default", QVariant(), 1.0F, 10, 10);
    row("1.5", 1.5, 1.5F, 10, 15);
    row("1.55, not rounded", 1.55, 1.55F, 10, 15);
    row("1.99, not rounded", 1.99, 1.99F, 1, 1);
    row("0, size itself", 0, 0.0F, 10, 10);
    row("negative size, towards zero", 1.55, 1.55F, -10, -15);
    row("negative scale, towards zero", -1.55, -1.55F, 10, -15);
    row("multiplied as float", 0.29, 0.29F, 100, 29);
    row("beyond the precision of float", 1.0, 1.0F, 16777217, 16777216);
    row("given as int", 2, 2.0F, 10, 20);
    row("given as string", u"2.5"_s, 2.5F, 10, 25);
    row("no number, which reads as 0", u"large"_s, 0.0F, 10, 10);
}

void TestVLManager::getScaledSize_multipliesAndTruncates()
{
    QFETCH(QVariant, scale);
    QFETCH(int, size);
    ManagerSetup setup;
    if (scale.isValid())
        setup.context.set(ckScale, scale);
    VLManager& manager = setup.build();
    QTEST(manager.realScaleValue(), "realScale");
    QTEST(manager.getScaledSize(size), "scaled");
}

void TestVLManager::getScaledSize_ignoresLaterChangeOfSetting()
{
    ManagerSetup setup;
    setup.context.set(ckScale, 1.5);
    VLManager& manager = setup.build();
    manager.context().set(ckScale, 3.0);
    QCOMPARE(manager.getScaledSize(10), 15);
    QCOMPARE(manager.realScaleValue(), 1.5F);
}

void TestVLManager::keyForObject_asksHost()
{
    ManagerSetup setup;
    VLManager& manager = setup.build();
    QObject object;
    object.setObjectName(u"the key"_s);
    QCOMPARE(manager.keyForObject(&object), u"the key"_s);
    QCOMPARE(setup.host.objectsAskedForKey, QList<QPointer<QObject>>{&object});
}

void TestVLManager::tooltipPosition_addsOffset_data()
{
    QTest::addColumn<QVariant>("offset");
    QTest::addColumn<QPoint>("position");
    QTest::addColumn<QPoint>("expected");
    const auto row = [](const char* name, const QVariant& offset, const QPoint& position,
                        const QPoint& expected) {
        QTest::newRow(name) << offset << position << expected;
    };
    row("default", QVariant(), QPoint(100, 200), QPoint(135, 230));
    row("default, off the screen", QVariant(), QPoint(-500, 99999), QPoint(-465, 100029));
    row("set", QSize(1, 2), QPoint(100, 200), QPoint(101, 202));
    row("none", QSize(0, 0), QPoint(100, 200), QPoint(100, 200));
    row("negative", QSize(-10, -20), QPoint(100, 200), QPoint(90, 180));
    // What is no size reads as the invalid one.
    row("no size", u"wide"_s, QPoint(100, 200), QPoint(99, 199));
}

void TestVLManager::tooltipPosition_addsOffset()
{
    QFETCH(QVariant, offset);
    QFETCH(QPoint, position);
    ManagerSetup setup;
    if (offset.isValid())
        setup.context.set(ckTooltipOffset, offset);
    VLManager& manager = setup.build();
    QWidget widget;
    widget.setGeometry(300, 300, 50, 50);
    QTEST(manager.tooltipPosition(position, nullptr), "expected");
    QTEST(manager.tooltipPosition(position, &widget), "expected");
}

void TestVLManager::tooltipPosition_readsOffsetOnEachCall()
{
    ManagerSetup setup;
    VLManager& manager = setup.build();
    manager.context().set(ckTooltipOffset, QSize(3, 4));
    QCOMPARE(manager.tooltipPosition(QPoint(1, 1), nullptr), QPoint(4, 5));
}

void TestVLManager::scan_sendsMessagesInOrder()
{
    ManagerSetup setup;
    setup.listen();
    const QString file = setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    const QString data = setup.packages.dataPath();
    const QString package = setup.packages.path(u"a.vidlets"_s);
    setup.build();

    QStringList messages = setup.host.messages(VLMessageInformation);
    QCOMPARE(messages.size(), setup.host.recordedMessages.size());
    const QString last = messages.takeLast();
    QCOMPARE(messages,
             (QStringList{u"indexing packages (*.vidlets) in "_s + data + u' ',
                          u"indexing control files in "_s + package,
                          u"looking for control files in :"_s + package + u"/Control"_s,
                          u"found control file :"_s + file}));
    QVERIFY(capturedSeconds({last}, u"Indexed packages in "_s + secondsPattern() + u" seconds"_s)
            >= 0.0);
}

void TestVLManager::scan_sendsDurationInSeconds()
{
    ManagerSetup setup;
    setup.listen();
    setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    setup.index.onCall = [](const QString& call) {
        if (call == u"indexControlFile"_s)
            spendMs(20);
    };
    QElapsedTimer timer;
    timer.start();
    setup.build();
    const double limit = static_cast<double>(timer.elapsed()) / 1000.0;

    const double seconds =
        capturedSeconds(setup.host.messages(VLMessageInformation),
                        u"Indexed packages in "_s + secondsPattern() + u" seconds"_s);
    QVERIFY2(seconds >= 0.02, qPrintable(QString::number(seconds)));
    QVERIFY2(seconds <= limit, qPrintable(QString::number(seconds)));
}

void TestVLManager::scan_takesPathsInOrder()
{
    ManagerSetup setup;
    PackageBuilder more;
    const QString first = setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    const QString second = more.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    setup.build({more.dataPath(), setup.packages.dataPath()});
    QCOMPARE(setup.index.controlFiles, (QStringList{second, first}));
    QCOMPARE(setup.index.packagePaths,
             (QStringList{more.path(u"a.vidlets"_s), setup.packages.path(u"a.vidlets"_s)}));
}

void TestVLManager::loadDataPath_doesNothing_whenListIsEmpty()
{
    ManagerSetup setup;
    setup.listen();
    VLManager& manager = setup.build({});
    // The duration is told all the same.
    QCOMPARE(setup.host.recordedMessages.size(), 1);
    setup.host.recordedMessages.clear();
    manager.loadDataPath({});
    QVERIFY(setup.host.recordedMessages.isEmpty());
    QVERIFY(setup.index.controlFiles.isEmpty());
}

void TestVLManager::loadDataPath_isSilent_whenPathIsNoDirectory_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << u"nowhere"_s;
    QTest::newRow("file") << u"file.vidlets"_s;
    QTest::newRow("dead link") << u"dead"_s;
}

void TestVLManager::loadDataPath_isSilent_whenPathIsNoDirectory()
{
    QFETCH(QString, name);
    ManagerSetup setup;
    setup.listen();
    setup.packages.write(u"file.vidlets"_s, "x");
    QVERIFY(makeLink(setup.packages.path(u"gone"_s), setup.packages.path(u"dead"_s)));
    VLManager& manager = setup.build({});
    setup.host.recordedMessages.clear();
    manager.loadDataPath({setup.packages.path(name)});
    QVERIFY(setup.host.recordedMessages.isEmpty());
    QVERIFY(setup.index.controlFiles.isEmpty());
}

void TestVLManager::loadDataPath_sendsMessage_whenPathHasNoPackages()
{
    ManagerSetup setup;
    setup.listen();
    VLManager& manager = setup.build({});
    setup.host.recordedMessages.clear();
    manager.loadDataPath({setup.packages.dataPath()});
    QCOMPARE(
        setup.host.messages(VLMessageInformation),
        QStringList{u"indexing packages (*.vidlets) in "_s + setup.packages.dataPath() + u' '});
    QCOMPARE(setup.host.recordedMessages.size(), 1);
}

void TestVLManager::loadDataPath_sendsAbsolutePath_whenPathIsRelative()
{
    ManagerSetup setup;
    setup.listen();
    const QString file = setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    const QString before = QDir::currentPath();
    const auto restore = qScopeGuard([&before] { QDir::setCurrent(before); });
    QVERIFY(QDir::setCurrent(setup.packages.dataPath()));
    setup.build({u"."_s});
    QCOMPARE(setup.index.controlFiles, QStringList{file});
    QCOMPARE(setup.host.messages(VLMessageInformation).first(),
             u"indexing packages (*.vidlets) in "_s + setup.packages.dataPath() + u' ');
}

void TestVLManager::loadDataPath_scansTwice_whenPathIsThereTwice()
{
    ManagerSetup setup;
    setup.listen();
    PackageBuilder more;
    const QString file = setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    const QString other = more.writeTip(u"b.vidlets"_s, u"b.xml"_s, u"l"_s);
    const QString data = setup.packages.dataPath();
    VLManager& manager = setup.build({data, data, more.dataPath()});
    QCOMPARE(setup.index.controlFiles, (QStringList{file, file, other}));
    const QStringList messages = setup.host.messages(VLMessageInformation);
    QCOMPARE(messages.size(), 13);
    QCOMPARE(messages.mid(0, 4), messages.mid(4, 4));
    // The index settles that it is there once.
    QCOMPARE(manager.keys(), (QStringList{u"l"_s, u"k"_s}));
}

void TestVLManager::loadDataPath_addsPackages_withoutDuration()
{
    ManagerSetup setup;
    setup.listen();
    const QString file = setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    VLManager& manager = setup.build({});
    setup.host.recordedMessages.clear();
    manager.loadDataPath({setup.packages.dataPath()});
    QCOMPARE(setup.index.controlFiles, QStringList{file});
    QCOMPARE(setup.host.messages(VLMessageInformation).size(), 4);
    QCOMPARE(setup.host.messages(VLMessageInformation).last(), u"found control file :"_s + file);
}

void TestVLManager::loadDataPath_passesOver_data()
{
    QTest::addColumn<QString>("controlFile");
    QTest::newRow("hidden package") << u".a.vidlets/Control/a.xml"_s;
    QTest::newRow("nothing but the extension") << u".vidlets/Control/a.xml"_s;
    QTest::newRow("other extension") << u"a.vidlet/Control/a.xml"_s;
    QTest::newRow("no extension") << u"vidlets/Control/a.xml"_s;
    QTest::newRow("extension within") << u"a.vidlets.old/Control/a.xml"_s;
    QTest::newRow("package further down") << u"more/a.vidlets/Control/a.xml"_s;
}

void TestVLManager::loadDataPath_passesOver()
{
    QFETCH(QString, controlFile);
    ManagerSetup setup;
    setup.listen();
    setup.packages.write(controlFile, controlFileContent());
    setup.packages.write(u"file.vidlets"_s, controlFileContent());
    setup.build();
    QVERIFY(setup.index.controlFiles.isEmpty());
    QCOMPARE(setup.host.messages(VLMessageInformation).size(), 2);
}

void TestVLManager::loadDataPath_ignoresLinkToPackage()
{
    ManagerSetup setup;
    PackageBuilder elsewhere;
    elsewhere.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    QVERIFY(makeLink(elsewhere.path(u"a.vidlets"_s), setup.packages.path(u"a.vidlets"_s)));
    setup.build();
    QVERIFY(setup.index.controlFiles.isEmpty());
}

void TestVLManager::loadDataPath_matchesExtensionWithoutCase()
{
    ManagerSetup setup;
    const QString file = setup.packages.writeTip(u"a.VIDLETS"_s, u"a.xml"_s, u"k"_s);
    setup.build();
    QCOMPARE(setup.index.controlFiles, QStringList{file});
}

void TestVLManager::loadDataPath_usesChangedExtension()
{
    ManagerSetup setup;
    setup.listen();
    setup.context.set(ckPackageExtension, u"tips"_s);
    setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    const QString file = setup.packages.writeTip(u"b.tips"_s, u"b.xml"_s, u"k"_s);
    setup.build();
    QCOMPARE(setup.index.controlFiles, QStringList{file});
    QCOMPARE(setup.host.messages(VLMessageInformation).first(),
             u"indexing packages (*.tips) in "_s + setup.packages.dataPath() + u' ');
}

void TestVLManager::loadDataPath_readsExtensionForEachPath()
{
    ManagerSetup setup;
    PackageBuilder more;
    const QString first = setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    const QString second = more.writeTip(u"b.tips"_s, u"b.xml"_s, u"k"_s);
    VLManager& manager = setup.build({});
    setup.index.onCall = [&manager](const QString&) {
        manager.context().set(ckPackageExtension, u"tips"_s);
    };
    manager.loadDataPath({setup.packages.dataPath(), more.dataPath()});
    QCOMPARE(setup.index.controlFiles, (QStringList{first, second}));
}

void TestVLManager::loadDataPath_givesCanonicalPaths_whenPathIsLink()
{
    ManagerSetup setup;
    setup.listen();
    PackageBuilder elsewhere;
    const QString file = elsewhere.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    const QString link = setup.packages.path(u"link"_s);
    QVERIFY(makeLink(elsewhere.dataPath(), link));
    setup.build({link});

    QCOMPARE(setup.index.controlFiles, QStringList{file});
    QCOMPARE(setup.index.packagePaths, QStringList{elsewhere.path(u"a.vidlets"_s)});
    const QStringList messages = setup.host.messages(VLMessageInformation);
    QCOMPARE(messages.mid(0, 4),
             (QStringList{u"indexing packages (*.vidlets) in "_s + link + u' ',
                          u"indexing control files in "_s + link + u"/a.vidlets"_s,
                          u"looking for control files in :"_s + link + u"/a.vidlets/Control"_s,
                          u"found control file :"_s + file}));
}

void TestVLManager::searchPaths_givesListOfConstructor()
{
    ManagerSetup setup;
    const QStringList paths{setup.packages.dataPath(), u"/no/such/path"_s,
                            setup.packages.dataPath()};
    VLManager& manager = setup.build(paths);
    PackageBuilder more;
    manager.loadDataPath({more.dataPath()});
    QCOMPARE(manager.searchPaths(), paths);
}

void TestVLManager::loadPackage_indexesOnlyFilesDirectlyInControlDirectory()
{
    ManagerSetup setup;
    const QString package = u"a.vidlets"_s;
    const QString first =
        setup.packages.writeControlFile(package, u"a.xml"_s, controlFileContent());
    const QString second =
        setup.packages.writeControlFile(package, u"b.xml"_s, controlFileContent());
    setup.packages.writeControlFile(package, u"sub/c.xml"_s, controlFileContent());
    setup.packages.writeControlFile(package, u"d.xml.bak"_s, controlFileContent());
    setup.packages.writeControlFile(package, u"e.txt"_s, controlFileContent());
    setup.packages.write(u"a.vidlets/f.xml"_s, controlFileContent());
    VLManager& manager = setup.build({});
    manager.loadPackage(QFileInfo(setup.packages.path(package)));
    QCOMPARE(setup.sortedControlFiles(), (QStringList{first, second}));
}

void TestVLManager::loadPackage_matchesFileNamesWithoutCase()
{
    ManagerSetup setup;
    const QString file =
        setup.packages.writeControlFile(u"a.vidlets"_s, u"A.XML"_s, controlFileContent());
    setup.build();
    QCOMPARE(setup.index.controlFiles, QStringList{file});
}

void TestVLManager::loadPackage_ignoresLinkToControlFile()
{
    ManagerSetup setup;
    const QString file =
        setup.packages.writeControlFile(u"a.vidlets"_s, u"a.xml"_s, controlFileContent());
    QVERIFY(makeLink(file, setup.packages.path(u"a.vidlets/Control/link.xml"_s)));
    setup.build();
    QCOMPARE(setup.index.controlFiles, QStringList{file});
}

void TestVLManager::loadPackage_ignoresHiddenControlFile()
{
    ManagerSetup setup;
    setup.packages.writeControlFile(u"a.vidlets"_s, u".a.xml"_s, controlFileContent());
    setup.build();
    QVERIFY(setup.index.controlFiles.isEmpty());
}

void TestVLManager::loadPackage_ignoresDirectoryNamedLikeControlFile()
{
    ManagerSetup setup;
    setup.listen();
    setup.packages.writeControlFile(u"a.vidlets"_s, u"d.xml/a.xml"_s, controlFileContent());
    setup.build();
    QVERIFY(setup.index.controlFiles.isEmpty());
    // One directory was looked through.
    QCOMPARE(setup.host.messages(VLMessageInformation)
                 .filter(u"looking for control files in :"_s)
                 .size(),
             1);
}

void TestVLManager::loadPackage_findsNothing_whenControlDirectoryIsMissing()
{
    ManagerSetup setup;
    setup.listen();
    const QString package = setup.packages.packageRoot(u"a.vidlets"_s);
    VLManager& manager = setup.build({});
    setup.host.recordedMessages.clear();
    manager.loadPackage(QFileInfo(package));
    QCOMPARE(setup.host.messages(VLMessageInformation),
             (QStringList{u"indexing control files in "_s + package,
                          u"looking for control files in :"_s + package + u"/Control"_s}));
    QVERIFY(setup.index.controlFiles.isEmpty());
}

void TestVLManager::loadPackage_usesChangedControlDirectory_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("name") << u"Tips"_s;
    QTest::newRow("path") << u"more/Tips"_s;
    QTest::newRow("the package itself") << u"."_s;
}

void TestVLManager::loadPackage_usesChangedControlDirectory()
{
    QFETCH(QString, name);
    ManagerSetup setup;
    setup.context.set(ckControlDirectory, name);
    setup.packages.writeControlFile(u"a.vidlets"_s, u"a.xml"_s, controlFileContent());
    const QString file = QDir::cleanPath(
        setup.packages.write(u"a.vidlets/%1/b.xml"_s.arg(name), controlFileContent()));
    setup.packages.write(u"a.vidlets/%1/sub/c.xml"_s.arg(name), controlFileContent());
    setup.build();
    QCOMPARE(setup.index.controlFiles, QStringList{file});
    QCOMPARE(setup.index.packagePaths, QStringList{setup.packages.path(u"a.vidlets"_s)});
}

void TestVLManager::loadPackage_usesAbsoluteControlDirectory()
{
    ManagerSetup setup;
    PackageBuilder elsewhere;
    const QString file = elsewhere.write(u"tips/a.xml"_s, controlFileContent());
    setup.context.set(ckControlDirectory, elsewhere.path(u"tips"_s));
    setup.packages.writeControlFile(u"a.vidlets"_s, u"a.xml"_s, controlFileContent());
    setup.build();
    QCOMPARE(setup.index.controlFiles, QStringList{file});
    QCOMPARE(setup.index.packagePaths, QStringList{setup.packages.path(u"a.vidlets"_s)});
}

void TestVLManager::loadPackage_givesCanonicalPaths_whenControlDirectoryIsLink()
{
    ManagerSetup setup;
    PackageBuilder elsewhere;
    const QString file = elsewhere.write(u"tips/a.xml"_s, controlFileContent());
    const QString package = setup.packages.packageRoot(u"a.vidlets"_s);
    QVERIFY(makeLink(elsewhere.path(u"tips"_s), package + u"/Control"_s));
    setup.build();
    QCOMPARE(setup.index.controlFiles, QStringList{file});
    QCOMPARE(setup.index.packagePaths, QStringList{package});
}

void TestVLManager::indexControFile_forwardsArguments()
{
    ManagerSetup setup;
    VLManager& manager = setup.build({});
    manager.indexControFile(u"some/../file"_s, u"/a/root"_s);
    QCOMPARE(setup.index.controlFiles, QStringList{u"some/../file"_s});
    QCOMPARE(setup.index.packagePaths, QStringList{u"/a/root"_s});
}

void TestVLManager::keys_areThoseOfIndex()
{
    ManagerSetup setup;
    VLManager& manager = setup.build({});
    setup.index.keysToGive = {u"b"_s, u"a"_s, u"b"_s};
    QCOMPARE(manager.keys(), setup.index.keysToGive);
}

void TestVLManager::retrieve_fillsOutputArguments()
{
    ManagerSetup setup;
    setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    VLManager& manager = setup.build();
    QString path;
    int depth = -1;
    VLXmlElement* root = nullptr;
    const VLXmlElement* element = manager.retrieve(u"k"_s, path, depth, root);
    QVERIFY(element);
    const std::unique_ptr<VLXmlElement> owner(root);
    QCOMPARE(element->attribute(u"key"_s), u"k"_s);
    QCOMPARE(element->parent(), root);
    QCOMPARE(path, setup.packages.path(u"a.vidlets/Control"_s));
    QCOMPARE(depth, 2);

    VLXmlElement* secondRoot = nullptr;
    const VLXmlElement* second = manager.retrieve(u"k"_s, path, depth, secondRoot);
    const std::unique_ptr<VLXmlElement> secondOwner(secondRoot);
    QVERIFY(second != element);
}

void TestVLManager::retrieve_asksForBothLocales_data()
{
    QTest::addColumn<QVariant>("locale");
    QTest::addColumn<QVariant>("fallback");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    const auto row = [](const char* name, const QVariant& locale, const QVariant& fallback,
                        const QString& first, const QString& second) {
        QTest::newRow(name) << locale << fallback << first << second;
    };
    const QString english = u"en_US"_s;
    const QString german = u"de_DE"_s;
    const QString french = u"fr_FR"_s;
    row("none is set", QVariant(), QVariant(), english, english);
    row("locale is set", german, QVariant(), german, english);
    row("fallback is set", QVariant(), french, english, french);
    row("both are set", german, french, german, french);
    row("language alone", u"de"_s, QVariant(), german, english);
    row("unknown names", u"nonsense"_s, u"?"_s, u"C"_s, u"C"_s);
}

void TestVLManager::retrieve_asksForBothLocales()
{
    QFETCH(QVariant, locale);
    QFETCH(QVariant, fallback);
    QFETCH(QString, first);
    QFETCH(QString, second);
    ManagerSetup setup;
    if (locale.isValid())
        setup.context.set(ckLocale, locale);
    if (fallback.isValid())
        setup.context.set(ckFallbackLocale, fallback);
    VLManager& manager = setup.build();
    setup.index.calls.clear();
    QVERIFY(retrievedTitle(manager, u"k"_s).isNull());
    QCOMPARE(setup.index.calls, (QStringList{u"retrieve k "_s + first, u"retrieve k "_s + second}));
}

void TestVLManager::retrieve_takesFirstLocale_whenBothHaveKey()
{
    ManagerSetup setup;
    const QString package = u"a.vidlets"_s;
    setup.packages.writeControlFile(package, u"de.xml"_s, localizedContent("de_DE", "Titel"));
    setup.packages.writeControlFile(package, u"en.xml"_s, localizedContent("en_US", "Title"));
    VLManager& manager = setup.build();
    manager.context().set(ckLocale, u"de_DE"_s);
    manager.context().set(ckFallbackLocale, u"en_US"_s);
    setup.index.calls.clear();
    QCOMPARE(retrievedTitle(manager, u"k"_s), u"Titel"_s);
    QCOMPARE(setup.index.calls, QStringList{u"retrieve k de_DE"_s});

    manager.context().set(ckLocale, u"en_US"_s);
    manager.context().set(ckFallbackLocale, u"de_DE"_s);
    QCOMPARE(retrievedTitle(manager, u"k"_s), u"Title"_s);
}

void TestVLManager::retrieve_takesFallback_whenOnlyItHasKey()
{
    ManagerSetup setup;
    setup.listen();
    setup.packages.writeControlFile(u"a.vidlets"_s, u"fr.xml"_s,
                                    localizedContent("fr_FR", "Titre"));
    setup.context.set(ckLocale, u"de_DE"_s);
    setup.context.set(ckFallbackLocale, u"fr_FR"_s);
    VLManager& manager = setup.build();
    setup.host.recordedMessages.clear();
    QCOMPARE(retrievedTitle(manager, u"k"_s), u"Titre"_s);
    QCOMPARE(setup.host.recordedMessages.size(), 1);
}

void TestVLManager::retrieve_returnsNullSilently_whenNobodyHasKey()
{
    ManagerSetup setup;
    setup.listen();
    setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    VLManager& manager = setup.build();
    setup.host.recordedMessages.clear();
    QString path = u"as it was"_s;
    int depth = 17;
    VLXmlElement* root = nullptr;
    QVERIFY(!manager.retrieve(u"missing"_s, path, depth, root));
    QCOMPARE(path, u"as it was"_s);
    QCOMPARE(depth, 17);
    QVERIFY(setup.host.recordedMessages.isEmpty());
}

void TestVLManager::retrieve_sendsDurationInSeconds()
{
    ManagerSetup setup;
    setup.listen();
    setup.packages.writeTip(u"a.vidlets"_s, u"a.xml"_s, u"k"_s);
    VLManager& manager = setup.build();
    setup.host.recordedMessages.clear();
    setup.index.onCall = [](const QString&) { spendMs(20); };
    QElapsedTimer timer;
    timer.start();
    retrievedTitle(manager, u"k"_s);
    const double limit = static_cast<double>(timer.elapsed()) / 1000.0;

    const QStringList messages = setup.host.messages(VLMessageInformation);
    QCOMPARE(messages.size(), 1);
    const double seconds =
        capturedSeconds(messages, u"Retrieved k in "_s + secondsPattern() + u" seconds"_s);
    QVERIFY2(seconds >= 0.02, qPrintable(messages.first()));
    QVERIFY2(seconds <= limit, qPrintable(messages.first()));
}

void TestVLManager::currentLocale_followsSettings_data()
{
    QTest::addColumn<QVariant>("locale");
    QTest::addColumn<QVariant>("fallback");
    QTest::addColumn<QLocale>("expected");
    const auto row = [](const char* name, const QVariant& locale, const QVariant& fallback,
                        const QString& expected) {
        QTest::newRow(name) << locale << fallback << QLocale(expected);
    };
    const QString german = u"de_DE"_s;
    const QString french = u"fr_FR"_s;
    row("locale alone", german, QVariant(), german);
    row("fallback alone", QVariant(), french, french);
    row("both", german, french, german);
    row("locale empty", QString(), french, french);
    row("language alone", u"de"_s, QVariant(), german);
    row("unknown name", u"nonsense"_s, french, u"C"_s);
}

void TestVLManager::currentLocale_followsSettings()
{
    QFETCH(QVariant, locale);
    QFETCH(QVariant, fallback);
    ManagerSetup setup;
    VLManager& manager = setup.build();
    if (locale.isValid())
        manager.context().set(ckLocale, locale);
    if (fallback.isValid())
        manager.context().set(ckFallbackLocale, fallback);
    QTEST(manager.currentLocale(), "expected");
}

void TestVLManager::currentLocale_isThatOfSystem_whenNothingIsSet()
{
    const QLocale before;
    const auto restore = qScopeGuard([&before] { QLocale::setDefault(before); });
    // The default locale of the application has no say.
    QLocale::setDefault(QLocale(u"ja_JP"_s));
    ManagerSetup setup;
    VLManager& manager = setup.build();
    QCOMPARE(manager.currentLocale(), QLocale::system());
    manager.context().set(ckLocale, QString());
    manager.context().set(ckFallbackLocale, QString());
    QCOMPARE(manager.currentLocale(), QLocale::system());
}

void TestVLManager::interpolate_replacesReferences_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char* name, const QString& text, const QString& expected) {
        QTest::newRow(name) << text << expected;
    };
    const auto unchanged = [&row](const char* name, const QString& text) { row(name, text, text); };
    row("reference alone", u"%(a)s"_s, u"A"_s);
    row("within text", u"x %(a)s y"_s, u"x A y"_s);
    row("twice", u"%(a)s%(a)s"_s, u"AA"_s);
    row("known and unknown", u"%(a)s %(z)s"_s, u"A %(z)s"_s);
    row("unknown and known", u"%(z)s %(a)s"_s, u"%(z)s A"_s);
    row("all characters of a name", u"%(-_aZ09)s"_s, u"name"_s);
    row("number", u"%(number)s"_s, u"42"_s);
    row("truth value", u"%(yes)s"_s, u"true"_s);
    row("empty value", u"[%(empty)s]"_s, u"[]"_s);
    row("value with a reference", u"%(toA)s"_s, u"<A>"_s);
    row("value with a reference to such a value", u"%(toToA)s"_s, u"<A>!"_s);
    row("value with an unknown reference", u"%(toUnknown)s %(a)s"_s, u"%(z)s A"_s);
    row("reference that a value completes", u"%(open)sa)s"_s, u"A"_s);
    row("scan does not go back", u"%(%(nameOfA)s)s"_s, u"%(a)s"_s);
    row("percent before", u"%%(a)s"_s, u"%A"_s);
    row("s after", u"%(a)ss"_s, u"As"_s);
    row("lines", u"%(a)s\n%(a)s"_s, u"A\nA"_s);
    unchanged("empty text", u""_s);
    unchanged("no reference", u"plain text 100 %"_s);
    unchanged("unknown name", u"%(z)s"_s);
    unchanged("other case", u"%(A)s"_s);
    unchanged("invalid value", u"%(invalid)s"_s);
    unchanged("null string", u"%(null)s"_s);
    unchanged("value without a string form", u"%(list)s"_s);
    unchanged("no s", u"%(a) b"_s);
    unchanged("other letter than s", u"%(a)d"_s);
    unchanged("capital S", u"%(a)S"_s);
    unchanged("blank in the name", u"%(a b)s"_s);
    unchanged("letter beyond ASCII", u"%(\u00e4)s"_s);
    unchanged("empty name", u"%()s"_s);
    unchanged("no parentheses", u"%a s"_s);
}

void TestVLManager::interpolate_replacesReferences()
{
    QFETCH(QString, text);
    const QMap<QString, QVariant> variables{{u"a"_s, u"A"_s},
                                            {u"-_aZ09"_s, u"name"_s},
                                            {u"number"_s, 42},
                                            {u"yes"_s, true},
                                            {u"empty"_s, u""_s},
                                            {u"null"_s, QString()},
                                            {u"invalid"_s, QVariant()},
                                            {u"list"_s, QVariantList{1, 2}},
                                            {u"toA"_s, u"<%(a)s>"_s},
                                            {u"toToA"_s, u"%(toA)s!"_s},
                                            {u"toUnknown"_s, u"%(z)s"_s},
                                            {u"open"_s, u"%("_s},
                                            {u"nameOfA"_s, u"a"_s},
                                            {u"a b"_s, u"blank"_s},
                                            {u"\u00e4"_s, u"umlaut"_s},
                                            {QString(), u"nameless"_s}};
    ManagerSetup setup;
    VLManager& manager = setup.build();
    QTEST(manager.interpolate(text, variables), "expected");
}

void TestVLManager::interpolate_usesGlobalProperties_whenNoMapIsGiven()
{
    ManagerSetup setup;
    VLManager& manager = setup.build();
    QCOMPARE(manager.interpolate(u"%(a)s"_s), u"%(a)s"_s);
    manager.setGlobalProperty(u"a"_s, u"%(b)s"_s);
    manager.setGlobalProperty(u"b"_s, 5);
    QCOMPARE(manager.interpolate(u"%(a)s"_s), u"5"_s);
}

void TestVLManager::interpolate_usesGivenMapAlone()
{
    ManagerSetup setup;
    VLManager& manager = setup.build();
    manager.setGlobalProperty(u"a"_s, u"A"_s);
    QCOMPARE(manager.interpolate(u"%(a)s"_s, {}), u"%(a)s"_s);
}

void TestVLManager::setGlobalProperty_overwrites()
{
    ManagerSetup setup;
    VLManager& manager = setup.build();
    manager.setGlobalProperty(u"a"_s, u"old"_s);
    const QString before = manager.interpolate(u"%(a)s"_s);
    manager.setGlobalProperty(u"a"_s, u"new"_s);
    QCOMPARE(before, u"old"_s);
    QCOMPARE(manager.interpolate(u"%(a)s"_s), u"new"_s);
    manager.setGlobalProperty(u"a"_s, QVariant());
    QCOMPARE(manager.interpolate(u"%(a)s"_s), u"%(a)s"_s);
}

void TestVLManager::interpolate_neverFinishes_whenValueContainsItsOwnReference()
{
    const ChildResult result = runInChildProcess(u"selfReference"_s);
    QVERIFY(result.finished);
    QVERIFY(result.crashed);
}

void TestVLManager::openExternalResource_tellsTypesApart_data()
{
    QTest::addColumn<QString>("resource");
    QTest::addColumn<int>("type");
    const auto row = [](const char* name, const QString& resource, VLExternalResourceType type) {
        QTest::newRow(name) << resource << int(type);
    };
    row("web address", u"https://example.org/a?b#c"_s, VLResourceUrl);
    row("file URL", u"file:///a/b"_s, VLResourceUrl);
    row("scheme without a slash", u"mailto:someone@example.org"_s, VLResourceUrl);
    row("scheme of nobody", u"topic:brush"_s, VLResourceUrl);
    row("drive letter, which reads as a scheme", u"C:/a/b"_s, VLResourceUrl);
    row("absolute path", u"/a/b"_s, VLResourcePath);
    row("relative path", u"a/b"_s, VLResourcePath);
    row("slash alone", u"/"_s, VLResourcePath);
    row("slash at the end", u"a/"_s, VLResourcePath);
    row("URL that only tolerant parsing takes", u"http://example.org/a b"_s, VLResourcePath);
    row("such a URL without a slash", u"topic:a b"_s, VLResourceDocumentation);
    row("host that no parsing takes", u"http://exa mple.org/a"_s, VLResourcePath);
    row("bare word", u"brush"_s, VLResourceDocumentation);
    row("words", u"the brush"_s, VLResourceDocumentation);
    row("anchor", u"brush#size"_s, VLResourceDocumentation);
    row("backslash", u"a\\b"_s, VLResourceDocumentation);
    row("nothing before the colon", u":brush"_s, VLResourceDocumentation);
    row("empty", u""_s, VLResourceDocumentation);
}

void TestVLManager::openExternalResource_tellsTypesApart()
{
    QFETCH(QString, resource);
    ManagerSetup setup;
    VLManager& manager = setup.build();
    QVERIFY(manager.openExternalResource(resource));
    QCOMPARE(setup.host.openedResources.size(), 1);
    QTEST(int(setup.host.openedResources.first().type), "type");
    QCOMPARE(setup.host.openedResources.first().locator, resource);
}

void TestVLManager::openExternalResource_obeysGates_data()
{
    QTest::addColumn<QString>("resource");
    QTest::addColumn<QVariant>("links");
    QTest::addColumn<QVariant>("documentation");
    QTest::addColumn<bool>("opened");
    const auto row = [](const char* name, const QString& resource, const QVariant& links,
                        const QVariant& documentation, bool opened) {
        QTest::newRow(name) << resource << links << documentation << opened;
    };
    const QString url = u"topic:brush"_s;
    const QString path = u"a/b"_s;
    const QString word = u"brush"_s;
    row("URL, none set", url, QVariant(), QVariant(), true);
    row("URL, links off", url, false, QVariant(), false);
    row("URL, links off and documentation on", url, false, true, false);
    row("URL, links on and documentation off", url, true, false, true);
    row("path, none set", path, QVariant(), QVariant(), true);
    row("path, links off", path, false, QVariant(), false);
    row("path, links off and documentation on", path, false, true, false);
    row("path, links on and documentation off", path, true, false, true);
    row("documentation, none set", word, QVariant(), QVariant(), true);
    row("documentation, links off", word, false, QVariant(), true);
    row("documentation off", word, QVariant(), false, false);
    row("documentation off and links on", word, true, false, false);
    row("documentation on and links off", word, false, true, true);
}

void TestVLManager::openExternalResource_obeysGates()
{
    QFETCH(QString, resource);
    QFETCH(QVariant, links);
    QFETCH(QVariant, documentation);
    QFETCH(bool, opened);
    ManagerSetup setup;
    VLManager& manager = setup.build();
    if (links.isValid())
        manager.context().set(ckExternalLinksEnabled, links);
    if (documentation.isValid())
        manager.context().set(ckDocumentationEnabled, documentation);
    QCOMPARE(manager.openExternalResource(resource), opened);
    QCOMPARE(setup.host.openedResources.size(), opened ? 1 : 0);
}

void TestVLManager::openExternalResource_returnsAnswerOfHost()
{
    ManagerSetup setup;
    setup.host.openResult = false;
    VLManager& manager = setup.build();
    const QStringList resources{u"topic:brush"_s, u"a/b"_s, u"brush"_s};
    for (const QString& resource : resources)
        QVERIFY(!manager.openExternalResource(resource));
    QCOMPARE(setup.host.openedResources.size(), 3);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLManager>(argc, argv);
}

#include "tst_vlmanager.moc"
