// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "ObjectCensus.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLXmlElement.h>
#include <Vidlets/VLXmlParser.h>

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QPointer>
#include <QTextStream>

#include <memory>
#include <vector>

using namespace Vidlets;

namespace {

/// An index that counts its calls of clear() and shows its update flag.
class ProbeIndex : public VLIndex
{
public:
    using VLIndex::isInUpdate;
    using VLIndex::VLIndex;

    bool clear() override
    {
        ++clearCount;
        return VLIndex::clear();
    }

    int clearCount = 0;
};

QString str(const char* text)
{
    return QString::fromUtf8(text);
}

/// An index that records each file under a second path too, which leads back to the package's root
/// on its way.
class DetouringIndex : public VLIndex
{
public:
    using VLIndex::VLIndex;

    void indexControlFile(const QString& file, const QString& root) override
    {
        VLIndex::indexControlFile(file, root);
        VLIndex::indexControlFile(root + str("/self") + file.mid(root.size()), root);
    }
};

/// Packages on disk and an index over them. What the index hands out goes with this object.
class Fixture
{
public:
    explicit Fixture()
    {
        index = std::make_unique<ProbeIndex>(&context, QStringList());
    }

    /// Writes a control file and indexes it under its package's root. Returns its path.
    QString add(const char* package, const char* fileName, const QByteArray& content)
    {
        const QString path = files.writeControlFile(str(package), str(fileName), content);
        index->indexControlFile(path, files.path(str(package)));
        return path;
    }

    VLXmlElement* find(const char* key, const QLocale& locale = QLocale::c())
    {
        VLXmlElement* root = nullptr;
        VLXmlElement* element = index->retrieve(str(key), locale, foundPath, foundDepth, root);
        return keep(element, root);
    }

    VLXmlElement* load(const char* key, const QString& location,
                       const QLocale& locale = QLocale::c())
    {
        VLXmlElement* root = nullptr;
        VLXmlElement* element = index->load(str(key), location, locale, root);
        return keep(element, root);
    }

    /// The value of @p attribute on the content for @p key; null where there is no content.
    QString value(const char* key, const char* attribute, const QLocale& locale = QLocale::c())
    {
        const VLXmlElement* element = find(key, locale);
        return element ? element->attribute(str(attribute)) : QString();
    }

    /// The keys of the index, without the trees that are read for them.
    QStringList keys() const
    {
        const ObjectCensus census;
        const QStringList result = index->keys();
        census.deleteLiving<VLXmlElement>();
        return result;
    }

    QStringList roots(const char* package) const
    {
        return index->componentPathsForPackageNamed(str(package));
    }

    PackageBuilder files;
    VLContext context{nullptr};
    std::unique_ptr<ProbeIndex> index;
    QString foundPath;
    int foundDepth = 0;

private:
    VLXmlElement* keep(VLXmlElement* element, VLXmlElement* root)
    {
        // Without a result the root may be the address of a deleted object.
        if (element)
            m_trees.push_back(std::unique_ptr<VLXmlElement>(root));
        return element;
    }

    std::vector<std::unique_ptr<VLXmlElement>> m_trees;
};

QByteArray tips(const QByteArray& inner, const QByteArray& rootAttributes = {})
{
    return "<vidlets" + (rootAttributes.isEmpty() ? QByteArray() : ' ' + rootAttributes) + ">\n"
        + inner + "\n</vidlets>\n";
}

QByteArray tip(const QByteArray& key, const QByteArray& value)
{
    return "<vidlet key=\"" + key + "\" value=\"" + value + "\"/>";
}

} // namespace

class TestVLIndex : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    // The index as it comes
    void index_isPlainObjectWithoutParent();
    void indexedLocations_areEqual_whenBothFieldsAre();
    void hooks_areTrueAndChangeNothing();
    void setup_callsClear_bySetting_data();
    void setup_callsClear_bySetting();
    void setup_callsClear_withoutSetting();
    void updateFlag_isSetBetweenStartAndEnd();
    void updateFlag_changesNoLookup();

    // The settings store
    void context_isGivenStore();
    void context_isNewStoreOfTheIndex_whenNoneWasGiven();
    void context_isNewStoreOfTheIndex_whenGivenOneDied();
    void context_isSameStore_inConstForm();
    void context_givesDefaults_whenGivenOneDied();
    void destructor_leavesGivenStoreAlone();

    // Retrieval
    void retrieve_leavesArguments_whenIndexIsEmpty();
    void retrieve_leavesPathAndDepth_whenKeyIsMissing();
    void retrieve_givesTipOfRoot();
    void retrieve_givesDirectoryAndDepth();
    void retrieve_prefersFileIndexedLast();
    void retrieve_searchesStoredFilesLast();
    void retrieve_choosesFileByLocale_data();
    void retrieve_choosesFileByLocale();
    void retrieve_goesOn_whenKeyStandsTwiceInFile();
    void retrieve_passesOverFiles_data();
    void retrieve_passesOverFiles();
    void retrieve_readsEditedFileAnew();
    void retrieve_matchesKeyExactly_data();
    void retrieve_matchesKeyExactly();
    void retrieve_findsTipsUnderRootOnly_data();
    void retrieve_findsTipsUnderRootOnly();
    void retrieve_buildsSubtreeInFull();
    void retrieve_keepsAttributesOfRoot();
    void retrieve_servesKey_whenFileBreaksAfterIt();
    void retrieve_isNull_whenFileBreaksInsideTagBeforeKey();
    void retrieve_givesDeletedObjects_whenFileBreaksInsideLaterTag_data();
    void retrieve_givesDeletedObjects_whenFileBreaksInsideLaterTag();

    // Loading one file
    void load_comparesLocales_data();
    void load_comparesLocales();
    void load_leavesDeletedRoot_whenLocaleDiffers();
    void load_leavesRoot_whenFileGivesNoRoot_data();
    void load_leavesRoot_whenFileGivesNoRoot();
    void load_clearsRoot_whenKeyIsNotThereOnce_data();
    void load_clearsRoot_whenKeyIsNotThereOnce();
    void load_deletesTree_whenItGivesNothing_data();
    void load_deletesTree_whenItGivesNothing();
    void load_setsLocationAsHandedIn();
    void load_overwritesReservedAttributes();
    void load_setsPackageName();
    void load_setsNullPackageName_outsidePackages();

    // Entries of a host
    void store_addsAtTheEnd();
    void store_isTrueAndAddsNothing_whenEqualEntryIsThere();
    void store_addsEntry_whenDepthDiffers();
    void store_mapsNoPackage();

    // Keys
    void keys_areEmpty_whenIndexIsEmpty();
    void keys_areInSearchThenDocumentOrder();
    void keys_holdDuplicates_forTwoLocales();
    void keys_areOfTipsUnderRootOnly();
    void keys_passOverFilesThatAreGone();
    void keys_holdTipsBeforeFault_whenFileIsBroken();
    void keys_leaveTreesAllocated();
    void keys_endProcess_whenRootIsNoLongerOfControlFile();

    // Control files
    void indexControlFile_setsDepth_data();
    void indexControlFile_setsDepth();
    void indexControlFile_looksAtFirstTag_data();
    void indexControlFile_looksAtFirstTag();
    void indexControlFile_looksAtFirstTag_inPiecesOfLongLine_data();
    void indexControlFile_looksAtFirstTag_inPiecesOfLongLine();
    void indexControlFile_doesNotParse();
    void indexControlFile_recordsNothing_whenFileIsMissing();
    void indexControlFile_recordsNothing_outsideRoot_data();
    void indexControlFile_recordsNothing_outsideRoot();
    void indexControlFile_takesRootBehindLink();
    void indexControlFile_findsDepthOnTheDisk_whenScanLeadsThroughLink();
    void scan_recordsOneRoot_forFilesOfOnePackage();
    void indexControlFile_neverEnds_inSiblingOfLikeName();
    void indexControlFile_leavesOneEntry_whenCalledTwice();
    void indexControlFile_addsEntry_whenRootDiffers();
    void indexControlFile_mapsNothing_whenEqualEntryWasStored();
    void indexControlFile_keepsOneRoot_forTwoFiles();
    void indexControlFile_keepsRootsInOrder_forPackageInTwoDataPaths();
    void mapControlFile_recordsRootOnce();
    void mapControlFile_recordsRootUnderNullName_outsidePackages();

    // Package names
    void packageName_isTakenFromPath_data();
    void packageName_isTakenFromPath();
    void packageName_goesByExtensionSetting();

    // Data of a key
    void keyData_isMergedIntoTip();
    void keyData_isMergedByRecord_data();
    void keyData_isMergedByRecord();
    void keyData_doesNotCopyName();
    void keyData_cannotReplaceReservedAttributes();
    void keyData_leavesElement_whenThereIsNone_data();
    void keyData_leavesElement_whenThereIsNone();
    void keyData_isReadAnewForEachElement();
    void keyData_deletesTreeOfRecord();
    void keyData_leavesTreeAllocated_withoutRecord();

    // Paths to components
    void componentPaths_endWithExtraPath();
    void componentPaths_areEmpty_forUnknownPackage();
    void componentPaths_areEmpty_withoutElement();
    void componentPaths_followSearch_data();
    void componentPaths_followSearch();
    void componentPaths_areInSearchOrder();
    void componentPaths_keepDuplicates();
    void componentPaths_useNoSearch_withoutParentElement();
    void componentPaths_useSearchOfDirectParentOnly();
    void componentPaths_addCategory_data();
    void componentPaths_addCategory();

    // Filter of elements
    void elementFilter_answersByTag_data();
    void elementFilter_answersByTag();
};

int TestVLIndex::runChild(const QString& name)
{
    // The path comes from the parent, which cleans up after a process that it has to end.
    const QDir directory(name.section(u':', 1));
    VLIndex index(nullptr, {});
    QTextStream out(stdout);
    if (name.startsWith(str("sibling:"))) {
        out << "begin" << Qt::endl;
        index.indexControlFile(directory.filePath(str("A.vidlets2/Control/a.xml")),
                               directory.filePath(str("A.vidlets")));
        out << "end" << Qt::endl;
        return EXIT_SUCCESS;
    }
    if (name.startsWith(str("keys:"))) {
        index.store(nullptr, QLocale::c(), directory.filePath(str("a.xml")), 2);
        out << "begin" << Qt::endl;
        index.keys();
        out << "end" << Qt::endl;
        return EXIT_SUCCESS;
    }
    return VidletsTest::runChild(name);
}

void TestVLIndex::index_isPlainObjectWithoutParent()
{
    const VLIndex index(nullptr, {});
    QVERIFY(!index.parent());
}

void TestVLIndex::indexedLocations_areEqual_whenBothFieldsAre()
{
    const IndexedLocation location{str("a"), 2};
    QVERIFY(location == (IndexedLocation{str("a"), 2}));
    QVERIFY(location != (IndexedLocation{str("a"), 3}));
    QVERIFY(location != (IndexedLocation{str("A"), 2}));
    QCOMPARE(IndexedLocation().depth, 0);
}

void TestVLIndex::hooks_areTrueAndChangeNothing()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    QVERIFY(fixture.index->open());
    QVERIFY(fixture.index->setup());
    QVERIFY(fixture.index->clear());
    QVERIFY(fixture.index->close());
    QVERIFY(fixture.index->remove());
    QCOMPARE(fixture.value("k", "value"), str("1"));
    QCOMPARE(fixture.roots("A").size(), 1);
}

void TestVLIndex::setup_callsClear_bySetting_data()
{
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<int>("calls");
    QTest::newRow("true") << QVariant(true) << 1;
    QTest::newRow("false") << QVariant(false) << 0;
    QTest::newRow("invalid") << QVariant() << 0;
}

void TestVLIndex::setup_callsClear_bySetting()
{
    QFETCH(QVariant, setting);
    Fixture fixture;
    fixture.context.set(ckClearIndexOnSetup, setting);
    QVERIFY(fixture.index->setup());
    QTEST(fixture.index->clearCount, "calls");
}

void TestVLIndex::setup_callsClear_withoutSetting()
{
    Fixture fixture;
    QVERIFY(fixture.index->setup());
    QCOMPARE(fixture.index->clearCount, 1);
}

void TestVLIndex::updateFlag_isSetBetweenStartAndEnd()
{
    Fixture fixture;
    QVERIFY(!fixture.index->isInUpdate());
    fixture.index->startUpdate();
    QVERIFY(fixture.index->isInUpdate());
    fixture.index->startUpdate();
    fixture.index->endUpdate();
    QVERIFY(!fixture.index->isInUpdate());
}

void TestVLIndex::updateFlag_changesNoLookup()
{
    Fixture fixture;
    fixture.index->startUpdate();
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    QCOMPARE(fixture.value("k", "value"), str("1"));
    QCOMPARE(fixture.keys(), QStringList{str("k")});
}

void TestVLIndex::context_isGivenStore()
{
    VLContext context(nullptr);
    VLIndex index(&context, {});
    QCOMPARE(&index.context(), &context);
}

void TestVLIndex::context_isNewStoreOfTheIndex_whenNoneWasGiven()
{
    VLIndex index(nullptr, {});
    VLContext& context = index.context();
    QCOMPARE(context.parent(), &index);
    QCOMPARE(context.keys(), QList<int>());
    QCOMPARE(&index.context(), &context);
}

void TestVLIndex::context_isNewStoreOfTheIndex_whenGivenOneDied()
{
    auto given = std::make_unique<VLContext>(nullptr);
    given->set(ckPackageExtension, str("tips"));
    VLIndex index(given.get(), {});
    given.reset();
    QCOMPARE(index.context().parent(), &index);
    QCOMPARE(index.context().keys(), QList<int>());
}

void TestVLIndex::context_isSameStore_inConstForm()
{
    VLContext given(nullptr);
    const VLIndex withStore(&given, {});
    QCOMPARE(&withStore.context(), &given);
    const VLIndex withoutStore(nullptr, {});
    const VLContext& made = withoutStore.context();
    QCOMPARE(&withoutStore.context(), &made);
    QCOMPARE(made.parent(), &withoutStore);
}

void TestVLIndex::context_givesDefaults_whenGivenOneDied()
{
    PackageBuilder files;
    auto given = std::make_unique<VLContext>(nullptr);
    given->set(ckPackageExtension, str("tips"));
    VLIndex index(given.get(), {});
    const QString root = files.packageRoot(str("A.vidlets"));
    QVERIFY(index.packageNameForLocation(root).isNull());
    given.reset();
    QCOMPARE(index.packageNameForLocation(root), str("A"));
}

void TestVLIndex::destructor_leavesGivenStoreAlone()
{
    auto* context = new VLContext(nullptr);
    const QPointer<VLContext> guard(context);
    std::make_unique<VLIndex>(context, QStringList()).reset();
    QVERIFY(guard);
    delete context;
}

void TestVLIndex::retrieve_leavesArguments_whenIndexIsEmpty()
{
    VLIndex index(nullptr, {});
    VLXmlElement before;
    VLXmlElement* root = &before;
    QString path = str("before");
    int depth = 17;
    QVERIFY(!index.retrieve(str("k"), QLocale::c(), path, depth, root));
    QCOMPARE(root, &before);
    QCOMPARE(path, str("before"));
    QCOMPARE(depth, 17);
}

void TestVLIndex::retrieve_leavesPathAndDepth_whenKeyIsMissing()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    fixture.foundPath = str("before");
    fixture.foundDepth = 17;
    QVERIFY(!fixture.find("other"));
    QCOMPARE(fixture.foundPath, str("before"));
    QCOMPARE(fixture.foundDepth, 17);
}

void TestVLIndex::retrieve_givesTipOfRoot()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("j", "0") + tip("k", "1") + tip("l", "2")));
    VLXmlElement* root = nullptr;
    const VLXmlElement* element = fixture.index->retrieve(str("k"), QLocale::c(), fixture.foundPath,
                                                          fixture.foundDepth, root);
    const std::unique_ptr<VLXmlElement> owner(root);
    QVERIFY(element);
    QCOMPARE(element->getTagName(), str("vidlet"));
    QCOMPARE(element->attribute(str("value")), str("1"));
    QCOMPARE(element->parent(), root);
    QCOMPARE(root->getTagName(), str("vidlets"));
    QVERIFY(!root->parent());
    QCOMPARE(root->children().size(), 1);
}

void TestVLIndex::retrieve_givesDirectoryAndDepth()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    QVERIFY(fixture.find("k"));
    QCOMPARE(fixture.foundPath, fixture.files.path(str("A.vidlets/Control")));
    QCOMPARE(fixture.foundDepth, 2);
}

void TestVLIndex::retrieve_prefersFileIndexedLast()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "first")));
    fixture.add("B.vidlets", "a.xml", tips(tip("k", "last")));
    QCOMPARE(fixture.value("k", "value"), str("last"));
}

void TestVLIndex::retrieve_searchesStoredFilesLast()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "indexed")));
    const QString stored =
        fixture.files.write(str("stored.xml"), tips(tip("k", "stored") + tip("l", "stored")));
    fixture.index->store(nullptr, QLocale::c(), stored, 7);
    QCOMPARE(fixture.value("k", "value"), str("indexed"));
    QCOMPARE(fixture.value("l", "value"), str("stored"));
    QCOMPARE(fixture.foundDepth, 7);
    QCOMPARE(fixture.foundPath, fixture.files.dataPath());
}

void TestVLIndex::retrieve_choosesFileByLocale_data()
{
    QTest::addColumn<bool>("wantedIsFirst");
    QTest::newRow("wanted one is searched first") << true;
    QTest::newRow("wanted one is searched last") << false;
}

void TestVLIndex::retrieve_choosesFileByLocale()
{
    QFETCH(bool, wantedIsFirst);
    Fixture fixture;
    const QByteArray german = tips(tip("k", "de"), "locale=\"de_DE\"");
    const QByteArray french = tips(tip("k", "fr"), "locale=\"fr_FR\"");
    fixture.add("A.vidlets", "a.xml", wantedIsFirst ? french : german);
    fixture.add("A.vidlets", "b.xml", wantedIsFirst ? german : french);
    const VLXmlElement* element = fixture.find("k", QLocale(str("de_DE")));
    QVERIFY(element);
    QCOMPARE(element->attribute(str("value")), str("de"));
    const auto* root = qobject_cast<VLXmlElement*>(element->parent());
    QCOMPARE(root->attribute(str("locale")), str("de_DE"));
}

void TestVLIndex::retrieve_goesOn_whenKeyStandsTwiceInFile()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "once")));
    fixture.add("A.vidlets", "b.xml", tips(tip("k", "twice") + tip("j", "0") + tip("k", "twice")));
    QCOMPARE(fixture.value("k", "value"), str("once"));
}

void TestVLIndex::retrieve_passesOverFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("gone") << QByteArray();
    QTest::newRow("other root") << QByteArray("<other>" + tip("k", "x") + "</other>");
    QTest::newRow("prefixed root")
        << QByteArray("<p:vidlets xmlns:p=\"urn:p\">" + tip("k", "x") + "</p:vidlets>");
    QTest::newRow("no tip") << QByteArray("<vidlets/>");
    QTest::newRow("other locale") << tips(tip("k", "x"), "locale=\"fr_FR\"");
}

void TestVLIndex::retrieve_passesOverFiles()
{
    QFETCH(QByteArray, content);
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "good")));
    const QString path = fixture.add("A.vidlets", "b.xml", tips(tip("k", "first")));
    QCOMPARE(fixture.value("k", "value"), str("first"));

    QVERIFY(QFile::remove(path));
    if (!content.isEmpty())
        fixture.files.writeControlFile(str("A.vidlets"), str("b.xml"), content);

    QCOMPARE(fixture.value("k", "value"), str("good"));
}

void TestVLIndex::retrieve_readsEditedFileAnew()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    QVERIFY(!fixture.find("new"));
    fixture.files.writeControlFile(str("A.vidlets"), str("a.xml"), tips(tip("new", "2")));
    QVERIFY(!fixture.find("k"));
    QCOMPARE(fixture.value("new", "value"), str("2"));
}

void TestVLIndex::retrieve_matchesKeyExactly_data()
{
    QTest::addColumn<QByteArray>("asked");
    QTest::addColumn<QString>("value");
    QTest::newRow("same") << QByteArray("Save") << str("1");
    QTest::newRow("other case") << QByteArray("save") << QString();
    QTest::newRow("beginning") << QByteArray("Sav") << QString();
    QTest::newRow("list, whole") << QByteArray("a, b") << str("2");
    QTest::newRow("list, part") << QByteArray("a") << QString();
    QTest::newRow("special signs") << QByteArray("<&\">") << str("3");
    QTest::newRow("empty, for the tip without a key") << QByteArray() << str("4");
}

void TestVLIndex::retrieve_matchesKeyExactly()
{
    QFETCH(QByteArray, asked);
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml",
                tips(tip("Save", "1") + tip("a, b", "2") + tip("&lt;&amp;&quot;&gt;", "3")
                     + "<vidlet value=\"4\"/>"));
    QTEST(fixture.value(asked.constData(), "value"), "value");
}

void TestVLIndex::retrieve_findsTipsUnderRootOnly_data()
{
    QTest::addColumn<QByteArray>("inner");
    QTest::newRow("in a group") << QByteArray("<group>" + tip("k", "1") + "</group>");
    QTest::newRow("in another tip")
        << QByteArray("<vidlet key=\"j\">" + tip("k", "1") + "</vidlet>");
    QTest::newRow("other case") << QByteArray("<Vidlet key=\"k\"/>");
    QTest::newRow("prefixed") << QByteArray("<p:vidlet xmlns:p=\"urn:p\" key=\"k\"/>");
    QTest::newRow("prefixed key") << QByteArray("<vidlet xmlns:p=\"urn:p\" p:key=\"k\"/>");
}

void TestVLIndex::retrieve_findsTipsUnderRootOnly()
{
    QFETCH(QByteArray, inner);
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(inner));
    QVERIFY(!fixture.find("k"));
}

void TestVLIndex::retrieve_buildsSubtreeInFull()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml",
                tips("<vidlet key=\"k\"><any a=\"1\">text<vidlets/><vidlet key=\"other\"/></any>"
                     "</vidlet>"));
    VLXmlElement* element = fixture.find("k");
    QVERIFY(element);
    QCOMPARE(element->children().size(), 1);
    VLXmlElement* any = element->childElement(str("any"));
    QCOMPARE(any->toXml(), str("<any a=\"1\">\n  <vidlets/>\n  <vidlet key=\"other\"/>\n</any>"));
    QCOMPARE(any->content(), str("text"));
}

void TestVLIndex::retrieve_keepsAttributesOfRoot()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1"), "ui=\"x.qml\" own=\"2\""));
    const VLXmlElement* element = fixture.find("k");
    QVERIFY(element);
    const auto* root = qobject_cast<VLXmlElement*>(element->parent());
    QCOMPARE(root->attributeNames(), (QStringList{str("own"), str("ui")}));
    QVERIFY(!element->hasAttribute(str("ui")));
}

void TestVLIndex::retrieve_servesKey_whenFileBreaksAfterIt()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", "<vidlets>\n" + tip("k", "1") + "\n& " + tip("l", "2"));
    QCOMPARE(fixture.value("k", "value"), str("1"));
    QVERIFY(!fixture.find("l"));
}

void TestVLIndex::retrieve_isNull_whenFileBreaksInsideTagBeforeKey()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", "<vidlets><vidlet key=\"j\"></wrong>" + tip("k", "1"));
    const ObjectCensus census;
    VLXmlElement before;
    VLXmlElement* root = &before;
    QVERIFY(!fixture.index->retrieve(str("k"), QLocale::c(), fixture.foundPath, fixture.foundDepth,
                                     root));
    QVERIFY(!root);
    QCOMPARE(census.living<VLXmlElement>(), QList<VLXmlElement*>{&before});
}

void TestVLIndex::retrieve_givesDeletedObjects_whenFileBreaksInsideLaterTag_data()
{
    QTest::addColumn<QByteArray>("rest");
    QTest::newRow("skipped tag") << QByteArray(tip("k", "1") + "<vidlet key=\"l\"></wrong>");
    QTest::newRow("tag inside a skipped one") << QByteArray(tip("k", "1") + "<group><a>");
    QTest::newRow("tag inside the wanted one") << QByteArray("<vidlet key=\"k\"><a>");
    QTest::newRow("wanted tag itself") << QByteArray("<vidlet key=\"k\">");
}

void TestVLIndex::retrieve_givesDeletedObjects_whenFileBreaksInsideLaterTag()
{
    QFETCH(QByteArray, rest);
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", "<vidlets>" + rest);
    const ObjectCensus census;
    VLXmlElement* root = nullptr;

    const VLXmlElement* element = fixture.index->retrieve(str("k"), QLocale::c(), fixture.foundPath,
                                                          fixture.foundDepth, root);

    // Only the addresses may be looked at.
    QVERIFY(element);
    QVERIFY(root);
    QVERIFY(!census.isAlive(element));
    QVERIFY(!census.isAlive(root));
    QCOMPARE(census.living<VLXmlElement>(), QList<VLXmlElement*>());
    QCOMPARE(fixture.foundDepth, 2);
}

void TestVLIndex::load_comparesLocales_data()
{
    QTest::addColumn<QByteArray>("attribute");
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<bool>("found");
    const QLocale german(str("de_DE"));
    QLocale unusual(german);
    unusual.setNumberOptions(QLocale::RejectGroupSeparator);
    QTest::newRow("none") << QByteArray() << german << true;
    QTest::newRow("empty") << QByteArray("locale=\"\"") << german << true;
    QTest::newRow("same") << QByteArray("locale=\"de_DE\"") << german << true;
    QTest::newRow("other spelling") << QByteArray("locale=\"de-DE\"") << german << true;
    QTest::newRow("language with default territory")
        << QByteArray("locale=\"de\"") << german << true;
    QTest::newRow("language, other territory asked for")
        << QByteArray("locale=\"de\"") << QLocale(str("de_AT")) << false;
    QTest::newRow("other territory") << QByteArray("locale=\"de_AT\"") << german << false;
    QTest::newRow("other language") << QByteArray("locale=\"en_US\"") << german << false;
    QTest::newRow("other number options") << QByteArray("locale=\"de_DE\"") << unusual << false;
    QTest::newRow("no locale's name, C asked for")
        << QByteArray("locale=\"no locale\"") << QLocale::c() << true;
    QTest::newRow("prefixed attribute")
        << QByteArray("xmlns:p=\"urn:p\" p:locale=\"en_US\"") << german << true;
}

void TestVLIndex::load_comparesLocales()
{
    QFETCH(QByteArray, attribute);
    QFETCH(QLocale, locale);
    Fixture fixture;
    const QString path = fixture.files.write(str("a.xml"), tips(tip("k", "1"), attribute));
    QTEST(fixture.load("k", path, locale) != nullptr, "found");
}

void TestVLIndex::load_leavesDeletedRoot_whenLocaleDiffers()
{
    Fixture fixture;
    const QString path = fixture.files.write(str("a.xml"), tips(tip("k", "1"), "locale=\"fr_FR\""));
    const ObjectCensus census;
    VLXmlElement before;
    VLXmlElement* root = &before;

    QVERIFY(!fixture.index->load(str("k"), path, QLocale(str("de_DE")), root));

    QVERIFY(root);
    QVERIFY(root != &before);
    QVERIFY(!census.isAlive(root));
    QCOMPARE(census.living<VLXmlElement>(), QList<VLXmlElement*>{&before});
}

void TestVLIndex::load_leavesRoot_whenFileGivesNoRoot_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("missing file") << QByteArray();
    QTest::newRow("other root") << QByteArray("<other/>");
}

void TestVLIndex::load_leavesRoot_whenFileGivesNoRoot()
{
    QFETCH(QByteArray, content);
    Fixture fixture;
    const QString path = content.isEmpty() ? fixture.files.path(str("a.xml"))
                                           : fixture.files.write(str("a.xml"), content);
    VLXmlElement before;
    VLXmlElement* root = &before;
    QVERIFY(!fixture.index->load(str("k"), path, QLocale::c(), root));
    QCOMPARE(root, &before);
}

void TestVLIndex::load_clearsRoot_whenKeyIsNotThereOnce_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("not there") << tips(tip("j", "1"));
    QTest::newRow("twice") << tips(tip("k", "1") + tip("k", "2"));
    QTest::newRow("twice, other locale") << tips(tip("k", "1") + tip("k", "2"), "locale=\"fr_FR\"");
}

void TestVLIndex::load_clearsRoot_whenKeyIsNotThereOnce()
{
    QFETCH(QByteArray, content);
    Fixture fixture;
    const QString path = fixture.files.write(str("a.xml"), content);
    VLXmlElement before;
    VLXmlElement* root = &before;
    QVERIFY(!fixture.index->load(str("k"), path, QLocale::c(), root));
    QVERIFY(!root);
}

void TestVLIndex::load_deletesTree_whenItGivesNothing_data()
{
    load_clearsRoot_whenKeyIsNotThereOnce_data();
    QTest::newRow("other locale") << tips(tip("k", "1"), "locale=\"fr_FR\"");
}

void TestVLIndex::load_deletesTree_whenItGivesNothing()
{
    QFETCH(QByteArray, content);
    Fixture fixture;
    const QString path = fixture.files.write(str("a.xml"), content);
    const ObjectCensus census;
    VLXmlElement* root = nullptr;
    QVERIFY(!fixture.index->load(str("k"), path, QLocale::c(), root));
    QCOMPARE(census.living<VLXmlElement>(), QList<VLXmlElement*>());
}

void TestVLIndex::load_setsLocationAsHandedIn()
{
    Fixture fixture;
    fixture.files.writeControlFile(str("A.vidlets"), str("a.xml"), tips(tip("k", "1")));
    const QString path = fixture.files.path(str("A.vidlets")) + str("//Control/../Control/a.xml");
    const VLXmlElement* element = fixture.load("k", path);
    QVERIFY(element);
    QCOMPARE(element->attribute(str("VLLocation")), path);
}

void TestVLIndex::load_overwritesReservedAttributes()
{
    Fixture fixture;
    const QString path = fixture.add(
        "A.vidlets", "a.xml",
        tips("<vidlet key=\"k\" VLLocation=\"own\" VLPackagName=\"own\" VLPackageName=\"own\"/>"));
    const VLXmlElement* element = fixture.find("k");
    QVERIFY(element);
    QCOMPARE(element->attribute(str("VLLocation")), path);
    QCOMPARE(element->attribute(str("VLPackagName")), str("A"));
    QCOMPARE(element->attribute(str("VLPackageName")), str("own"));
}

void TestVLIndex::load_setsPackageName()
{
    Fixture fixture;
    fixture.add("A.b.vidlets", "a.xml", tips(tip("k", "1")));
    QCOMPARE(fixture.value("k", "VLPackagName"), str("A.b"));
}

void TestVLIndex::load_setsNullPackageName_outsidePackages()
{
    Fixture fixture;
    const QString path = fixture.files.write(str("Plain/a.xml"), tips(tip("k", "1")));
    const VLXmlElement* element = fixture.load("k", path);
    QVERIFY(element);
    QVERIFY(element->hasAttribute(str("VLPackagName")));
    QVERIFY(element->attribute(str("VLPackagName")).isNull());
}

void TestVLIndex::store_addsAtTheEnd()
{
    Fixture fixture;
    const QString a = fixture.files.write(str("a.xml"), tips(tip("a", "1")));
    const QString b = fixture.files.write(str("b.xml"), tips(tip("b", "1")));
    QVERIFY(fixture.index->store(nullptr, QLocale::c(), a, 2));
    QVERIFY(fixture.index->store(nullptr, QLocale::c(), b, 2));
    QCOMPARE(fixture.keys(), (QStringList{str("a"), str("b")}));
}

void TestVLIndex::store_isTrueAndAddsNothing_whenEqualEntryIsThere()
{
    Fixture fixture;
    const QString path = fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    VLXmlElement ignored;
    QVERIFY(fixture.index->store(&ignored, QLocale(str("de_DE")), path, 2));
    QCOMPARE(fixture.keys(), QStringList{str("k")});
}

void TestVLIndex::store_addsEntry_whenDepthDiffers()
{
    Fixture fixture;
    const QString a = fixture.files.write(str("a.xml"), tips(tip("a", "1")));
    const QString b = fixture.files.write(str("b.xml"), tips(tip("b", "1")));
    fixture.index->store(nullptr, QLocale::c(), a, 2);
    fixture.index->store(nullptr, QLocale::c(), b, 2);
    QVERIFY(fixture.index->store(nullptr, QLocale::c(), a, 3));
    QCOMPARE(fixture.keys(), (QStringList{str("a"), str("b"), str("a")}));
    QVERIFY(fixture.find("a"));
    QCOMPARE(fixture.foundDepth, 2);
}

void TestVLIndex::store_mapsNoPackage()
{
    Fixture fixture;
    const QString path =
        fixture.files.writeControlFile(str("A.vidlets"), str("a.xml"), tips(tip("k", "1")));
    fixture.index->store(nullptr, QLocale::c(), path, 2);
    QCOMPARE(fixture.roots("A"), QStringList());
}

void TestVLIndex::keys_areEmpty_whenIndexIsEmpty()
{
    PackageBuilder files;
    files.writeControlFile(str("A.vidlets"), str("a.xml"), tips(tip("k", "1")));
    VLIndex index(nullptr, {files.dataPath()});
    const ObjectCensus census;
    QCOMPARE(index.keys(), QStringList());
    QCOMPARE(census.madeCount(), 0);
}

void TestVLIndex::keys_areInSearchThenDocumentOrder()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("z", "1") + tip("a", "1") + tip("z", "2")));
    fixture.add("A.vidlets", "b.xml", tips(tip("m", "1") + "<vidlet/><vidlet key=\"\"/>"));
    QCOMPARE(fixture.keys(), (QStringList{str("m"), str(""), str("z"), str("a"), str("z")}));
}

void TestVLIndex::keys_holdDuplicates_forTwoLocales()
{
    Fixture fixture;
    fixture.add("A.vidlets", "de.xml", tips(tip("k", "1"), "locale=\"de_DE\""));
    fixture.add("A.vidlets", "fr.xml", tips(tip("k", "1"), "locale=\"fr_FR\""));
    QCOMPARE(fixture.keys(), (QStringList{str("k"), str("k")}));
}

void TestVLIndex::keys_areOfTipsUnderRootOnly()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml",
                tips("<vidlet key=\"k\"><vidlet key=\"inner\"/><text key=\"t\"/></vidlet>"
                     "<group key=\"g\"><vidlet key=\"grouped\"/></group>"));
    QCOMPARE(fixture.keys(), QStringList{str("k")});
}

void TestVLIndex::keys_passOverFilesThatAreGone()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("a", "1")));
    const QString path = fixture.add("A.vidlets", "b.xml", tips(tip("b", "1")));
    QVERIFY(QFile::remove(path));
    QCOMPARE(fixture.keys(), QStringList{str("a")});
}

void TestVLIndex::keys_holdTipsBeforeFault_whenFileIsBroken()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("a", "1")));
    fixture.add("A.vidlets", "b.xml", "<vidlets>" + tip("b", "1") + "<vidlet key=\"c\"><x>");
    QCOMPARE(fixture.keys(), (QStringList{str("b"), str("c"), str("a")}));
}

void TestVLIndex::keys_leaveTreesAllocated()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("a", "1") + "<vidlet key=\"b\"><x/></vidlet>"));
    const ObjectCensus census;
    fixture.index->keys();
    fixture.index->keys();
    // The root and two tips each time; the parts of the document itself have gone.
    const qsizetype count = census.living<VLXmlElement>().size();
    census.deleteLiving<VLXmlElement>();
    QCOMPARE(count, 6);
}

void TestVLIndex::keys_endProcess_whenRootIsNoLongerOfControlFile()
{
    PackageBuilder files;
    files.write(str("a.xml"), "<other/>");
    const ChildResult result = runInChildProcess(str("keys:") + files.dataPath());
    QVERIFY(result.finished);
    QVERIFY(result.crashed);
    QCOMPARE(result.standardOutput, "begin\n");
    QVERIFY(result.standardError.contains("ASSERT"));
}

void TestVLIndex::indexControlFile_setsDepth_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("depth");
    QTest::newRow("in the root") << str("A.vidlets/a.xml") << 1;
    QTest::newRow("in the control directory") << str("A.vidlets/Control/a.xml") << 2;
    QTest::newRow("in a directory below") << str("A.vidlets/Control/Sub/a.xml") << 3;
    QTest::newRow("by a detour") << str("A.vidlets/ui/../Control/a.xml") << 2;
}

void TestVLIndex::indexControlFile_setsDepth()
{
    QFETCH(QString, file);
    Fixture fixture;
    fixture.files.packageRoot(str("A.vidlets/ui"));
    fixture.files.write(QDir::cleanPath(file), tips(tip("k", "1")));
    fixture.index->indexControlFile(fixture.files.dataPath() + u'/' + file,
                                    fixture.files.path(str("A.vidlets")));
    QVERIFY(fixture.find("k"));
    QTEST(fixture.foundDepth, "depth");
}

void TestVLIndex::indexControlFile_looksAtFirstTag_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isControlFile");
    const auto row = [](const char* name, const char* content, bool isControlFile) {
        QTest::newRow(name) << QByteArray(content) << isControlFile;
    };
    row("plain", "<vidlets>\n</vidlets>", true);
    row("closed at once", "<vidlets/>", true);
    row("blanks before the end", "<vidlets  />", true);
    row("attribute", "<vidlets locale=\"de\">", true);
    row("attribute after a tabulator", "<vidlets\tlocale=\"de\">", true);
    row("behind a declaration", "<?xml version=\"1.0\"?><vidlets>", true);
    row("below a declaration", "<?xml version=\"1.0\"?>\r\n\r\n<vidlets>\r\n", true);
    row("document type", "<!DOCTYPE vidlets>\n<vidlets>", true);
    row("comment without a tag", "<!-- All of\n our tips. -->\n<vidlets>", true);
    row("comment with another tag", "<!-- see <tips> -->\n<vidlets>", false);
    row("comment with the tag, other root", "<!-- not <vidlets> -->\n<other/>", true);
    row("other root", "<other>\n<vidlets/>\n</other>", false);
    row("tip as root", "<vidlet key=\"k\"/>", false);
    row("other case", "<Vidlets>", false);
    row("longer name", "<vidlets2>", false);
    row("prefixed", "<p:vidlets xmlns:p=\"urn:p\">\n<vidlet key=\"k\"/>", false);
    row("prefixed, then the tag", "<p:x xmlns:p=\"urn:p\">\n<vidlets/>", true);
    row("line end after the name", "<vidlets\n  locale=\"de\">\n<vidlet key=\"k\"/>", false);
    row("line end after the first attribute", "<vidlets locale=\"de\"\n  ui=\"x\">", true);
    row("blank after the opening bracket", "< vidlets>\n<vidlet/>", false);
    row("tag beyond ASCII", "<\xC3\xA9lan>\n<vidlets>", true);
    row("name that goes on beyond ASCII", "<vidlets\xC3\xA9>", false);
    row("no tag", "plain text\n", false);
    row("empty", "", false);
}

void TestVLIndex::indexControlFile_looksAtFirstTag()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, isControlFile);
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", content);
    QCOMPARE(fixture.roots("A").size(), isControlFile ? 1 : 0);
}

void TestVLIndex::indexControlFile_looksAtFirstTag_inPiecesOfLongLine_data()
{
    QTest::addColumn<int>("bytesBefore");
    QTest::addColumn<bool>("isControlFile");
    // The tag has 9 bytes. A piece has 1024 at the most, in some releases of Qt one less.
    QTest::newRow("ends with the first piece") << 1014 << true;
    QTest::newRow("bracket in the second piece") << 1016 << false;
    QTest::newRow("name in two pieces") << 1019 << false;
    QTest::newRow("opening bracket ends the first piece") << 1022 << false;
    QTest::newRow("starts with the second piece") << 1024 << true;
    QTest::newRow("in the third piece") << 2100 << true;
}

void TestVLIndex::indexControlFile_looksAtFirstTag_inPiecesOfLongLine()
{
    QFETCH(int, bytesBefore);
    QFETCH(bool, isControlFile);
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml",
                "<!--" + QByteArray(bytesBefore - 7, '.') + "--><vidlets><vidlet/></vidlets>");
    QCOMPARE(fixture.roots("A").size(), isControlFile ? 1 : 0);
}

void TestVLIndex::indexControlFile_doesNotParse()
{
    Fixture fixture;
    const ObjectCensus census;
    fixture.add("A.vidlets", "a.xml", "<vidlets><<<");
    QCOMPARE(fixture.roots("A").size(), 1);
    QCOMPARE(census.living<VLXmlElement>(), QList<VLXmlElement*>());
}

void TestVLIndex::indexControlFile_recordsNothing_whenFileIsMissing()
{
    Fixture fixture;
    const QString root = fixture.files.packageRoot(str("A.vidlets"));
    fixture.files.packageRoot(str("A.vidlets/Control"));
    fixture.index->indexControlFile(root + str("/Control/a.xml"), root);
    QCOMPARE(fixture.roots("A"), QStringList());
}

void TestVLIndex::indexControlFile_recordsNothing_outsideRoot_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("other package") << str("B.vidlets/Control/a.xml");
    QTest::newRow("way through a link") << str("link/Control/a.xml");
    QTest::newRow("way that leads inside") << str("B.vidlets/../A.vidlets/Control/a.xml");
}

void TestVLIndex::indexControlFile_recordsNothing_outsideRoot()
{
    QFETCH(QString, file);
    Fixture fixture;
    const QString root = fixture.files.packageRoot(str("A.vidlets"));
    fixture.files.write(str("A.vidlets/Control/a.xml"), tips(tip("k", "1")));
    fixture.files.write(str("B.vidlets/Control/a.xml"), tips(tip("k", "1")));
    QVERIFY(QFile::link(root, fixture.files.path(str("link"))));
    const QString path = fixture.files.dataPath() + u'/' + file;
    QVERIFY(QFile::exists(path));

    fixture.index->indexControlFile(path, root);

    QVERIFY(!fixture.find("k"));
    QCOMPARE(fixture.roots("A"), QStringList());
}

void TestVLIndex::indexControlFile_takesRootBehindLink()
{
    Fixture fixture;
    fixture.files.write(str("A.vidlets/Control/a.xml"), tips(tip("k", "1")));
    const QString link = fixture.files.path(str("B.vidlets"));
    QVERIFY(QFile::link(fixture.files.path(str("A.vidlets")), link));

    fixture.index->indexControlFile(link + str("/Control/a.xml"), link);

    QVERIFY(fixture.find("k"));
    QCOMPARE(fixture.foundDepth, 2);
    // Paths are kept as they are handed in.
    QCOMPARE(fixture.roots("B"), QStringList{link});
}

void TestVLIndex::indexControlFile_findsDepthOnTheDisk_whenScanLeadsThroughLink()
{
    Fixture fixture;
    const QString root = fixture.files.packageRoot(str("A.vidlets"));
    fixture.files.writeControlFile(str("A.vidlets"), str("a.xml"), tips(tip("k", "1")));
    QVERIFY(QFile::link(root, root + str("/self")));
    DetouringIndex index(&fixture.context, {});
    const VLInterface host(fixture.context, {fixture.files.dataPath()}, &index);

    QString path;
    int depth = 0;
    VLXmlElement* tree = nullptr;
    QVERIFY(index.retrieve(str("k"), QLocale::c(), path, depth, tree));
    const std::unique_ptr<VLXmlElement> owned(tree);
    QCOMPARE(path, root + str("/self/Control"));
    QCOMPARE(depth, 2);
}

void TestVLIndex::scan_recordsOneRoot_forFilesOfOnePackage()
{
    Fixture fixture;
    for (const char* package : {"A.vidlets", "B.vidlets"}) {
        for (const char* file : {"a.xml", "b.xml", "c.xml"})
            fixture.files.writeControlFile(str(package), str(file), tips(tip("k", "1")));
    }
    const QStringList dataPath{fixture.files.dataPath()};
    const VLInterface host(fixture.context, dataPath, fixture.index.get());
    const VLInterface second(fixture.context, dataPath, fixture.index.get());
    QCOMPARE(fixture.roots("A"), QStringList{fixture.files.path(str("A.vidlets"))});
    QCOMPARE(fixture.roots("B"), QStringList{fixture.files.path(str("B.vidlets"))});
    QCOMPARE(fixture.keys().size(), 6);
}

void TestVLIndex::indexControlFile_neverEnds_inSiblingOfLikeName()
{
    constexpr int kTimeLimitMs = 3000;
    PackageBuilder files;
    files.packageRoot(str("A.vidlets"));
    files.write(str("A.vidlets2/Control/a.xml"), tips(tip("k", "1")));
    const ChildResult result = runInChildProcess(str("sibling:") + files.dataPath(), kTimeLimitMs);
    QVERIFY(!result.finished);
    QCOMPARE(result.standardOutput, "begin\n");
}

void TestVLIndex::indexControlFile_leavesOneEntry_whenCalledTwice()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("a", "1")));
    fixture.add("A.vidlets", "b.xml", tips(tip("b", "1")));
    fixture.add("A.vidlets", "a.xml", tips(tip("a", "1")));
    QCOMPARE(fixture.keys(), (QStringList{str("b"), str("a")}));
    QCOMPARE(fixture.roots("A").size(), 1);
}

void TestVLIndex::indexControlFile_addsEntry_whenRootDiffers()
{
    Fixture fixture;
    const QString path = fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    fixture.index->indexControlFile(path, fixture.files.dataPath());
    QCOMPARE(fixture.keys(), (QStringList{str("k"), str("k")}));
    QVERIFY(fixture.find("k"));
    QCOMPARE(fixture.foundDepth, 3);
}

void TestVLIndex::indexControlFile_mapsNothing_whenEqualEntryWasStored()
{
    Fixture fixture;
    const QString path = fixture.files.path(str("A.vidlets/Control/a.xml"));
    fixture.index->store(nullptr, QLocale::c(), path, 2);
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    QCOMPARE(fixture.keys(), QStringList{str("k")});
    QCOMPARE(fixture.roots("A"), QStringList());
}

void TestVLIndex::indexControlFile_keepsOneRoot_forTwoFiles()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("a", "1")));
    fixture.add("A.vidlets", "b.xml", tips(tip("b", "1")));
    QCOMPARE(fixture.keys(), (QStringList{str("b"), str("a")}));
    QCOMPARE(fixture.roots("A"), QStringList{fixture.files.path(str("A.vidlets"))});
}

void TestVLIndex::indexControlFile_keepsRootsInOrder_forPackageInTwoDataPaths()
{
    Fixture fixture;
    fixture.add("z/A.vidlets", "a.xml", tips(tip("a", "1")));
    fixture.add("y/A.vidlets", "a.xml", tips(tip("a", "1")));
    QCOMPARE(fixture.roots("A"),
             (QStringList{fixture.files.path(str("z/A.vidlets")),
                          fixture.files.path(str("y/A.vidlets"))}));
}

void TestVLIndex::mapControlFile_recordsRootOnce()
{
    Fixture fixture;
    const QString root = fixture.files.packageRoot(str("A.vidlets"));
    fixture.index->mapControlFile(str("not used"), root);
    fixture.index->mapControlFile(QString(), root);
    QCOMPARE(fixture.roots("A"), QStringList{root});
}

void TestVLIndex::mapControlFile_recordsRootUnderNullName_outsidePackages()
{
    Fixture fixture;
    fixture.index->mapControlFile(QString(), fixture.files.dataPath());
    QCOMPARE(fixture.index->componentPathsForPackageNamed(QString()),
             QStringList{fixture.files.dataPath()});
}

void TestVLIndex::packageName_isTakenFromPath_data()
{
    QTest::addColumn<QString>("location");
    QTest::addColumn<QString>("name");
    QTest::newRow("package itself") << str("A.vidlets") << str("A");
    QTest::newRow("file below") << str("A.vidlets/Control/a.xml") << str("A");
    QTest::newRow("missing file below") << str("A.vidlets/x/y/z") << str("A");
    QTest::newRow("further dot") << str("B.c.vidlets/a.xml") << str("B.c");
    QTest::newRow("package in a package") << str("A.vidlets/In.vidlets/a.xml") << str("In");
    QTest::newRow("file with the extension") << str("A.vidlets/file.vidlets") << str("A");
    QTest::newRow("missing directory with the extension")
        << str("A.vidlets/gone.vidlets/a.xml") << str("A");
    QTest::newRow("extension in capitals") << str("D.VIDLETS/a.xml") << QString();
    QTest::newRow("longer extension") << str("E.vidlets2/a.xml") << QString();
    QTest::newRow("extension alone") << str(".vidlets/a.xml") << str("");
    QTest::newRow("no package") << str("Plain/a.xml") << QString();
}

void TestVLIndex::packageName_isTakenFromPath()
{
    Fixture fixture;
    for (const char* package : {"A.vidlets/Control", "B.c.vidlets", "A.vidlets/In.vidlets",
                                "D.VIDLETS", "E.vidlets2", ".vidlets", "Plain"})
        fixture.files.packageRoot(str(package));
    fixture.files.write(str("A.vidlets/file.vidlets"), "a file");
    QFETCH(QString, location);
    QFETCH(QString, name);
    const QString result = fixture.index->packageNameForLocation(fixture.files.path(location));
    QCOMPARE(result, name);
    QCOMPARE(result.isNull(), name.isNull());
}

void TestVLIndex::packageName_goesByExtensionSetting()
{
    Fixture fixture;
    const QString oldRoot = fixture.files.packageRoot(str("A.vidlets"));
    const QString newRoot = fixture.files.packageRoot(str("A.vidlets/B.tips"));
    fixture.context.set(ckPackageExtension, str("tips"));
    QVERIFY(fixture.index->packageNameForLocation(oldRoot).isNull());
    QCOMPARE(fixture.index->packageNameForLocation(newRoot), str("B"));
    fixture.index->mapControlFile(QString(), oldRoot);
    QCOMPARE(fixture.roots("A"), QStringList());
}

void TestVLIndex::keyData_isMergedIntoTip()
{
    Fixture fixture;
    fixture.context.set(ckKeyDataFile,
                        fixture.files.write(str("keys.xml"),
                                            "<vidletkeys>\n"
                                            "  <key name=\"j\" value=\"other\"/>\n"
                                            "  <key name=\"k\" value=\"data\" more=\"new\"/>\n"
                                            "</vidletkeys>\n"));
    fixture.add("A.vidlets", "a.xml", tips("<vidlet key=\"k\" value=\"tip\" own=\"kept\"/>"));
    QCOMPARE(fixture.value("k", "value"), str("data"));
    QCOMPARE(fixture.value("k", "more"), str("new"));
    QCOMPARE(fixture.value("k", "own"), str("kept"));
}

void TestVLIndex::keyData_isMergedByRecord_data()
{
    QTest::addColumn<QByteArray>("inner");
    QTest::addColumn<QString>("value");
    QTest::newRow("first of two records")
        << QByteArray("<key name=\"k\" value=\"1\"/><key name=\"k\" value=\"2\"/>") << str("1");
    QTest::newRow("record with content")
        << QByteArray("<key name=\"k\" value=\"1\">text<key name=\"k\" value=\"2\"/></key>")
        << str("1");
    QTest::newRow("record among other tags")
        << QByteArray("<x name=\"k\" value=\"2\"/><key name=\"k\" value=\"1\"/>") << str("1");
    QTest::newRow("record in a group")
        << QByteArray("<x><key name=\"k\" value=\"1\"/></x><key name=\"k\" a=\"\"/>") << str("tip");
    QTest::newRow("other case of the key")
        << QByteArray("<key name=\"K\" value=\"1\"/><key name=\"k\" a=\"\"/>") << str("tip");
    QTest::newRow("empty value") << QByteArray("<key name=\"k\" value=\"\"/>") << str("");
    QTest::newRow("fault after the record")
        << QByteArray("<key name=\"k\" value=\"1\"/>&") << str("1");
    QTest::newRow("fault inside a later record")
        << QByteArray("<key name=\"k\" value=\"1\"/><key name=\"l\"></x>") << str("1");
}

void TestVLIndex::keyData_isMergedByRecord()
{
    QFETCH(QByteArray, inner);
    Fixture fixture;
    fixture.context.set(
        ckKeyDataFile,
        fixture.files.write(str("keys.xml"), "<vidletkeys>" + inner + "</vidletkeys>"));
    VLXmlElement element;
    element.setAttribute(str("value"), str("tip"));
    const ObjectCensus census;
    fixture.index->loadKeyData(str("k"), &element);
    QTEST(element.attribute(str("value")), "value");
    QCOMPARE(census.living<VLXmlElement>(), QList<VLXmlElement*>());
}

void TestVLIndex::keyData_doesNotCopyName()
{
    Fixture fixture;
    fixture.context.set(
        ckKeyDataFile,
        fixture.files.write(str("keys.xml"), "<vidletkeys><key name=\"k\" a=\"1\"/></vidletkeys>"));
    VLXmlElement plain;
    fixture.index->loadKeyData(str("k"), &plain);
    QCOMPARE(plain.attributeNames(), QStringList{str("a")});
    VLXmlElement named;
    named.setAttribute(str("name"), str("own"));
    fixture.index->loadKeyData(str("k"), &named);
    QCOMPARE(named.attribute(str("name")), str("own"));
}

void TestVLIndex::keyData_cannotReplaceReservedAttributes()
{
    Fixture fixture;
    fixture.context.set(ckKeyDataFile,
                        fixture.files.write(str("keys.xml"),
                                            "<vidletkeys><key name=\"k\" VLLocation=\"x\" "
                                            "VLPackagName=\"x\"/></vidletkeys>"));
    const QString path = fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    QCOMPARE(fixture.value("k", "VLLocation"), path);
    QCOMPARE(fixture.value("k", "VLPackagName"), str("A"));
}

void TestVLIndex::keyData_leavesElement_whenThereIsNone_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no file named") << QString() << QByteArray();
    QTest::newRow("missing file") << str("keys.xml") << QByteArray();
    QTest::newRow("directory") << str(".") << QByteArray();
    QTest::newRow("no record") << str("keys.xml")
                               << QByteArray("<vidletkeys><key name=\"j\" a=\"1\"/></vidletkeys>");
    QTest::newRow("other root") << str("keys.xml")
                                << QByteArray("<other><key name=\"k\" a=\"1\"/></other>");
    QTest::newRow("record deeper down")
        << str("keys.xml")
        << QByteArray("<vidletkeys><x><key name=\"k\" a=\"1\"/></x></vidletkeys>");
}

void TestVLIndex::keyData_leavesElement_whenThereIsNone()
{
    QFETCH(QString, fileName);
    QFETCH(QByteArray, content);
    Fixture fixture;
    // An attempt to open a file without a name would be warned of, and so fail this test.
    QString path;
    if (!fileName.isEmpty())
        path = content.isEmpty() ? fixture.files.path(fileName)
                                 : fixture.files.write(fileName, content);
    fixture.context.set(ckKeyDataFile, path);
    const ObjectCensus census;
    VLXmlElement element;
    element.setAttribute(str("a"), str("own"));

    fixture.index->loadKeyData(str("k"), &element);

    QCOMPARE(element.attributeNames(), QStringList{str("a")});
    QCOMPARE(element.attribute(str("a")), str("own"));
    for (VLXmlElement* other : census.living<VLXmlElement>()) {
        if (other != &element)
            delete other;
    }
}

void TestVLIndex::keyData_isReadAnewForEachElement()
{
    Fixture fixture;
    const QByteArray before = "<vidletkeys><key name=\"k\" a=\"1\"/></vidletkeys>";
    fixture.context.set(ckKeyDataFile, fixture.files.write(str("keys.xml"), before));
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    QCOMPARE(fixture.value("k", "a"), str("1"));
    fixture.files.write(str("keys.xml"), QByteArray(before).replace("a=\"1\"", "a=\"2\""));
    QCOMPARE(fixture.value("k", "a"), str("2"));
}

void TestVLIndex::keyData_deletesTreeOfRecord()
{
    Fixture fixture;
    fixture.context.set(
        ckKeyDataFile,
        fixture.files.write(str("keys.xml"),
                            "<vidletkeys><key name=\"k\" a=\"1\"/><key name=\"k\"><x/></key>"
                            "</vidletkeys>"));
    VLXmlElement element;
    const ObjectCensus census;
    fixture.index->loadKeyData(str("k"), &element);
    QCOMPARE(element.attribute(str("a")), str("1"));
    QCOMPARE(census.living<VLXmlElement>(), QList<VLXmlElement*>());
}

void TestVLIndex::keyData_leavesTreeAllocated_withoutRecord()
{
    Fixture fixture;
    fixture.context.set(ckKeyDataFile,
                        fixture.files.write(str("keys.xml"), "<vidletkeys own=\"1\"/>"));
    VLXmlElement element;
    const ObjectCensus census;
    fixture.index->loadKeyData(str("k"), &element);
    const QList<VLXmlElement*> left = census.living<VLXmlElement>();
    QCOMPARE(left.size(), 1);
    QCOMPARE(left.first()->getTagName(), str("vidletkeys"));
    census.deleteLiving<VLXmlElement>();
}

void TestVLIndex::componentPaths_endWithExtraPath()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    fixture.context.set(ckExtraComponentPath, str("extra"));
    QCOMPARE(fixture.roots("A"), (QStringList{fixture.files.path(str("A.vidlets")), str("extra")}));
    QCOMPARE(fixture.roots("unknown"), QStringList{str("extra")});
    fixture.context.set(ckExtraComponentPath, QString());
    QCOMPARE(fixture.roots("A"), QStringList{fixture.files.path(str("A.vidlets"))});
}

void TestVLIndex::componentPaths_areEmpty_forUnknownPackage()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    QCOMPARE(fixture.roots("a"), QStringList());
    QCOMPARE(fixture.roots("A.vidlets"), QStringList());
    fixture.files.packageRoot(str("B.vidlets"));
    QCOMPARE(fixture.roots("B"), QStringList());
}

void TestVLIndex::componentPaths_areEmpty_withoutElement()
{
    Fixture fixture;
    fixture.context.set(ckExtraComponentPath, str("extra"));
    QCOMPARE(fixture.index->componentPathsForElement(nullptr, str("ui")), QStringList());
}

void TestVLIndex::componentPaths_followSearch_data()
{
    QTest::addColumn<QString>("search");
    QTest::addColumn<QStringList>("packages");
    const QString a = str("A.vidlets");
    const QString b = str("B.vidlets");
    const QString none = str("none");
    QTest::newRow("empty") << QString() << QStringList();
    QTest::newRow("one") << str("A") << QStringList{a};
    QTest::newRow("comma and blank") << str("A, B") << QStringList{a, b};
    QTest::newRow("order as written") << str("B A") << QStringList{b, a};
    QTest::newRow("semicolon") << str("A;B") << QStringList{a, b};
    QTest::newRow("run of separators") << str("A ;,\t\n, B") << QStringList{a, b};
    QTest::newRow("leading separator") << str(",A") << QStringList{none, a};
    QTest::newRow("trailing separator") << str("A ") << QStringList{a, none};
    QTest::newRow("separator alone") << str(";") << QStringList{none, none};
    QTest::newRow("unknown name") << str("A,X,B") << QStringList{a, b};
    QTest::newRow("other case") << str("a") << QStringList();
    QTest::newRow("name with extension") << str("A.vidlets") << QStringList();
    QTest::newRow("same name twice") << str("A A") << QStringList{a, a};
}

void TestVLIndex::componentPaths_followSearch()
{
    QFETCH(QString, search);
    QFETCH(QStringList, packages);
    Fixture fixture;
    for (const char* directory : {"A.vidlets", "B.vidlets", "none"})
        fixture.index->mapControlFile(QString(), fixture.files.packageRoot(str(directory)));
    VLXmlElement root;
    root.setAttribute(str("search"), search);
    auto* element = new VLXmlElement(&root);
    element->setAttribute(str("VLPackagName"), str("own"));

    QStringList expected;
    for (const QString& package : packages)
        expected += fixture.files.path(package);
    QCOMPARE(fixture.index->componentPathsForElement(element, QString()), expected);
}

void TestVLIndex::componentPaths_areInSearchOrder()
{
    Fixture fixture;
    fixture.add("z/B.vidlets", "a.xml", tips(tip("j", "1")));
    fixture.add("a/B.vidlets", "a.xml", tips(tip("j", "1")));
    fixture.add("z/A.vidlets", "a.xml", tips(tip("k", "1"), "search=\"B\""));
    fixture.add("a/A.vidlets", "a.xml", tips(tip("j", "1")));
    fixture.context.set(ckExtraComponentPath, str("extra"));
    const VLXmlElement* element = fixture.find("k");
    QVERIFY(element);
    const PackageBuilder& files = fixture.files;
    QCOMPARE(
        fixture.index->componentPathsForElement(element, QString()),
        (QStringList{files.path(str("z/A.vidlets")), files.path(str("a/A.vidlets")), str("extra"),
                     files.path(str("z/B.vidlets")), files.path(str("a/B.vidlets"))}));
}

void TestVLIndex::componentPaths_keepDuplicates()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1"), "search=\"A\""));
    const QString root = fixture.files.path(str("A.vidlets"));
    QCOMPARE(fixture.index->componentPathsForElement(fixture.find("k"), QString()),
             (QStringList{root, root}));
}

void TestVLIndex::componentPaths_useNoSearch_withoutParentElement()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    QObject parent;
    parent.setProperty("search", str("A"));
    for (QObject* owner : {static_cast<QObject*>(nullptr), &parent}) {
        const auto element = std::make_unique<VLXmlElement>(owner);
        element->setAttribute(str("search"), str("A"));
        element->setAttribute(str("VLPackagName"), str("own"));
        QCOMPARE(fixture.index->componentPathsForElement(element.get(), str("ui")), QStringList());
    }
}

void TestVLIndex::componentPaths_useSearchOfDirectParentOnly()
{
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1")));
    VLXmlElement root;
    root.setAttribute(str("search"), str("A"));
    auto* tipElement = new VLXmlElement(&root);
    auto* inner = new VLXmlElement(tipElement);
    QCOMPARE(fixture.index->componentPathsForElement(tipElement, QString()).size(), 1);
    QCOMPARE(fixture.index->componentPathsForElement(inner, QString()), QStringList());
}

void TestVLIndex::componentPaths_addCategory_data()
{
    QTest::addColumn<QString>("category");
    QTest::addColumn<QString>("added");
    QTest::addColumn<bool>("isAbsolute");
    QTest::newRow("empty") << QString() << QString() << false;
    QTest::newRow("file") << str("ui/VidletUI.qml") << str("/ui/VidletUI.qml") << false;
    QTest::newRow("directory") << str("Resources") << str("/Resources") << false;
    QTest::newRow("absolute") << str("/elsewhere/x.qml") << str("/elsewhere/x.qml") << true;
}

void TestVLIndex::componentPaths_addCategory()
{
    QFETCH(QString, category);
    QFETCH(QString, added);
    QFETCH(bool, isAbsolute);
    Fixture fixture;
    fixture.add("A.vidlets", "a.xml", tips(tip("k", "1"), "search=\"B\""));
    fixture.add("B.vidlets", "a.xml", tips(tip("j", "1")));
    const QStringList paths = fixture.index->componentPathsForElement(fixture.find("k"), category);
    const QString a = isAbsolute ? QString() : fixture.files.path(str("A.vidlets"));
    const QString b = isAbsolute ? QString() : fixture.files.path(str("B.vidlets"));
    QCOMPARE(paths, (QStringList{a + added, b + added}));
}

void TestVLIndex::elementFilter_answersByTag_data()
{
    QTest::addColumn<QString>("tag");
    QTest::addColumn<int>("answer");
    QTest::newRow("root") << str("vidlets") << int(FilterChildren);
    QTest::newRow("tip") << str("vidlet") << int(FilterChildren);
    QTest::newRow("other") << str("text") << int(NoElement);
    QTest::newRow("other case") << str("Vidlet") << int(NoElement);
    QTest::newRow("prefixed") << str("p:vidlet") << int(NoElement);
}

void TestVLIndex::elementFilter_answersByTag()
{
    QFETCH(QString, tag);
    QTEST(VLIndex::indexDataShouldGenerateElement(tag, {}, nullptr), "answer");
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLIndex>(argc, argv);
}

#include "tst_vlindex.moc"
