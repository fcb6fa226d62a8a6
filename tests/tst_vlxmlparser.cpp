// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "ObjectCensus.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"
#include <Vidlets/VLXmlElement.h>
#include <Vidlets/VLXmlParser.h>

#include <QFile>
#include <QHash>
#include <QPointer>
#include <QXmlStreamReader>

#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// What answeringFilter() says for each tag, and what it was asked.
struct Answers
{
    QHash<QString, int> flags; ///< FilterChildren for tags that are not in here.
    QStringList asked;
    QList<QXmlStreamAttributes> attributes;
};

int answeringFilter(const QString& tag, const QXmlStreamAttributes& attributes, void* userData)
{
    auto* answers = static_cast<Answers*>(userData);
    answers->asked += tag;
    answers->attributes += attributes;
    return answers->flags.value(tag, FilterChildren);
}

QList<QObject*> parseFile(VLXmlParser& parser, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Could not open %s", qPrintable(path));
    return parser.parse(file);
}

/// The top-level element of one well-formed document, which goes with this object.
class Document
{
public:
    explicit Document(const QByteArray& xml, Answers* answers = nullptr)
    {
        PackageBuilder files;
        VLXmlParser parser(answers ? answeringFilter : nullptr, answers);
        m_elements = parseFile(parser, files.write(u"document.xml"_s, xml));
    }
    ~Document()
    {
        qDeleteAll(m_elements);
    }
    Q_DISABLE_COPY_MOVE(Document)

    qsizetype size() const
    {
        return m_elements.size();
    }
    VLXmlElement* root() const
    {
        return qobject_cast<VLXmlElement*>(m_elements.value(0));
    }
    VLXmlElement* child(const char* name) const
    {
        return root()->childElement(QString::fromLatin1(name));
    }

private:
    QList<QObject*> m_elements;
};

QStringList tagNames(const QObjectList& elements)
{
    QStringList names;
    for (const QObject* element : elements)
        names += element->objectName();
    return names;
}

/// A parse of a file that breaks; prints one line on standard output.
struct BrokenParse
{
    explicit BrokenParse(const QByteArray& xml, Answers* answers = nullptr)
        : parser(std::make_unique<VLXmlParser>(answers ? answeringFilter : nullptr, answers))
    {
        PackageBuilder files;
        elements = parseFile(*parser, files.write(u"broken.xml"_s, xml));
        root = qobject_cast<VLXmlElement*>(elements.value(0));
    }

    std::unique_ptr<VLXmlParser> parser;
    QList<QObject*> elements;
    QPointer<VLXmlElement> root;
};

} // namespace

class TestVLXmlParser : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    // Numbers
    void flags_haveFixedNumbers();

    // Whole documents
    void parse_buildsWholeDocument_withoutFilter();
    void parse_givesRootWithoutParent();
    void parse_leavesFileOpen();
    void parse_takesFileByPointer();
    void parse_readsFromPositionOfFile();
    void parse_keepsDocumentOrder();
    void parse_keepsWhiteSpaceInContent();
    void parse_joinsTextAroundOtherNodes_data();
    void parse_joinsTextAroundOtherNodes();
    void parse_takesCdataAsText();
    void parse_resolvesReferences_data();
    void parse_resolvesReferences();
    void parse_dropsUnresolvedEntityReference();
    void parse_keepsPrefixesAndNamespaces();
    void parse_leavesNamespaceEmpty_withoutOne();
    void parse_trimsNamespace();
    void parse_takesNamespaceDeclarationsAsNoAttributes();
    void parse_readsOtherEncodings();

    // The filter
    void filter_getsQualifiedNameAndAttributes();
    void filter_isAskedFromTheRoot_inEachParse();
    void filter_decidesByFlagsInOrder_data();
    void filter_decidesByFlagsInOrder();
    void filter_isNotAsked_insideSkippedSubtree();
    void filter_isNotAsked_belowKeptElement();
    void filter_isAskedAgain_afterSkippedAndKeptSiblings();
    void droppedRoot_leavesChildWithoutOwner();
    void droppedRoot_givesEmptyListWithoutMessage();
    void droppedTag_takesItsTextAlong();
    void skippedTag_takesItsTextAlong();
    void skippedSubtree_makesNoElements();

    // Several files
    void parser_readsSeveralFiles();
    void parser_deletesNothing_afterWholeFile();
    void laterParse_dropsOpenElementsWithoutDeletingThem();
    void laterParse_startsFiltering_afterBrokenFile();

    // Broken files
    void brokenFile_givesOneLine_data();
    void brokenFile_givesOneLine();
    void brokenFile_givesChildrenBeforeFault_whichOutliveParser_data();
    void brokenFile_givesChildrenBeforeFault_whichOutliveParser();
    void brokenFile_givesRootThatDiesWithParser_whenChildIsOpen_data();
    void brokenFile_givesRootThatDiesWithParser_whenChildIsOpen();
    void brokenFile_keepsTextUpToFault();
    void destructor_passesOverElementsThatAreGone();
    void brokenFile_endsProcess_withoutOpenElement_data();
    void brokenFile_endsProcess_withoutOpenElement();

    // Single steps
    void startElement_buildsBelowInnermostElement();
    void startElement_trimsNames();
    void startElement_isTrue_whenTagIsDroppedOrSkipped();
    void endElement_restoresStateOfEnclosingElement();
    void characters_goToInnermostElement();
    void ignorableWhitespace_isTakenAsCharacters();
    void characters_areTrueAndGoNowhere_withoutElement();
};

namespace {

/// Files that break, by the name of the test row.
QHash<QString, QByteArray> brokenDocuments()
{
    return {{u"premature end"_s, "<root>\n  <a/>\n"},
            {u"wrong end tag"_s, "<root>\n  <a></b>\n</root>\n"},
            {u"missing quote"_s, "<root>\n\n <a key=\"1/>\n</root>\n"},
            {u"undeclared prefix"_s, "<root><p:a/></root>"},
            {u"undeclared entity"_s, "<root>&nothing;</root>"},
            {u"attribute twice"_s, "<root><a b=\"1\" b=\"2\"/></root>"}};
}

/// The line for @p path, with the position that a reader of its own finds.
QByteArray expectedReport(const QString& path, const QByteArray& shownName)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Could not open %s", qPrintable(path));
    QXmlStreamReader reader(&file);
    while (!reader.atEnd())
        reader.readNext();
    return "\nError parsing " + shownName + " file (line " + QByteArray::number(reader.lineNumber())
        + ", column " + QByteArray::number(reader.columnNumber())
        + "): the file contains invalid xml. Check for unexpected elements, unclosed tags, "
          "missing quotes or spaces, or other formatting errors.\n";
}

} // namespace

int TestVLXmlParser::runChild(const QString& name)
{
    // The path comes from the parent, which cleans up also where this process is ended.
    const QString path = name.section(u':', 1);
    if (name.startsWith(u"parse:"_s)) {
        const ObjectCensus census;
        qsizetype rootCount = 0;
        {
            VLXmlParser parser;
            rootCount = parseFile(parser, path).size();
        }
        census.deleteLiving<VLXmlElement>();
        return rootCount == 1 ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    if (name.startsWith(u"dropRoot:"_s)) {
        Answers answers;
        answers.flags.insert(u"root"_s, NoElement | SkipChildren);
        VLXmlParser parser(answeringFilter, &answers);
        return parseFile(parser, path).isEmpty() ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    return VidletsTest::runChild(name);
}

void TestVLXmlParser::flags_haveFixedNumbers()
{
    QCOMPARE(int(FilterChildren), 1);
    QCOMPARE(int(KeepChildren), 2);
    QCOMPARE(int(NoElement), 4);
    QCOMPARE(int(SkipChildren), 8);
}

void TestVLXmlParser::parse_buildsWholeDocument_withoutFilter()
{
    const Document document("<root a=\"1\"><b><c d=\"2\"/></b><e/></root>");
    QCOMPARE(document.size(), 1);
    QCOMPARE(document.root()->toXml(),
             u"<root a=\"1\">\n  <b>\n    <c d=\"2\"/>\n  </b>\n  <e/>\n</root>"_s);
}

void TestVLXmlParser::parse_givesRootWithoutParent()
{
    const Document document("<root><a/></root>");
    QVERIFY(!document.root()->parent());
    QCOMPARE(document.child("a")->parent(), document.root());
}

void TestVLXmlParser::parse_leavesFileOpen()
{
    PackageBuilder files;
    QFile file(files.write(u"document.xml"_s, "<root/>"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    VLXmlParser parser;
    qDeleteAll(parser.parse(file));
    QVERIFY(file.isOpen());
}

void TestVLXmlParser::parse_takesFileByPointer()
{
    PackageBuilder files;
    QFile file(files.write(u"document.xml"_s, "<root/>"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    VLXmlParser parser;
    const QList<QObject*> elements = parser.parse(&file);
    QCOMPARE(tagNames(elements), QStringList{u"root"_s});
    qDeleteAll(elements);
}

void TestVLXmlParser::parse_readsFromPositionOfFile()
{
    PackageBuilder files;
    QFile file(files.write(u"document.xml"_s, "rubbish<root/>"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    file.skip(7);
    VLXmlParser parser;
    const QList<QObject*> elements = parser.parse(file);
    QCOMPARE(tagNames(elements), QStringList{u"root"_s});
    qDeleteAll(elements);
}

void TestVLXmlParser::parse_keepsDocumentOrder()
{
    const Document document("<root><c/><a/><b/><a/></root>");
    QCOMPARE(tagNames(document.root()->children()), (QStringList{u"c"_s, u"a"_s, u"b"_s, u"a"_s}));
}

void TestVLXmlParser::parse_keepsWhiteSpaceInContent()
{
    const Document document("<root>\n  <a> x </a>\n\t<b>\n</b>tail\n</root>\n");
    QCOMPARE(document.root()->content(), u"\n  \n\ttail\n"_s);
    QCOMPARE(document.child("a")->content(), u" x "_s);
    QCOMPARE(document.child("b")->content(), u"\n"_s);
}

void TestVLXmlParser::parse_joinsTextAroundOtherNodes_data()
{
    QTest::addColumn<QByteArray>("between");
    QTest::newRow("comment") << QByteArray("<!-- a <tag/> -->");
    QTest::newRow("processing instruction") << QByteArray("<?do something?>");
    QTest::newRow("element") << QByteArray("<child>inner</child>");
    QTest::newRow("CDATA section") << QByteArray("<![CDATA[]]>");
}

void TestVLXmlParser::parse_joinsTextAroundOtherNodes()
{
    QFETCH(QByteArray, between);
    const Document document("<root>left" + between + "right</root>");
    QCOMPARE(document.root()->content(), u"leftright"_s);
}

void TestVLXmlParser::parse_takesCdataAsText()
{
    const Document document("<root>a<![CDATA[<b> & </b>]]>c</root>");
    QCOMPARE(document.root()->content(), u"a<b> & </b>c"_s);
    QVERIFY(document.root()->children().isEmpty());
}

void TestVLXmlParser::parse_resolvesReferences_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QString>("read");
    QTest::newRow("predefined entities") << QByteArray("&lt;&gt;&amp;&quot;&apos;") << u"<>&\"'"_s;
    QTest::newRow("decimal") << QByteArray("&#65;") << u"A"_s;
    QTest::newRow("hexadecimal") << QByteArray("&#x20AC;") << u"\u20AC"_s;
    QTest::newRow("declared entity") << QByteArray("&own;") << u"of the file"_s;
}

void TestVLXmlParser::parse_resolvesReferences()
{
    QFETCH(QByteArray, written);
    const Document document("<!DOCTYPE root [<!ENTITY own \"of the file\">]>\n<root a=\"" + written
                            + "\">" + written + "</root>");
    QTEST(document.root()->content(), "read");
    QTEST(document.root()->attribute(u"a"_s), "read");
}

void TestVLXmlParser::parse_dropsUnresolvedEntityReference()
{
    // The reader reports an entity whose text lies in another file by a token of its own.
    const Document document("<!DOCTYPE root [<!ENTITY far SYSTEM \"far.ent\">]>\n"
                            "<root>left&far;right</root>");
    QCOMPARE(document.root()->content(), u"leftright"_s);
}

void TestVLXmlParser::parse_keepsPrefixesAndNamespaces()
{
    const Document document("<p:root xmlns:p=\"urn:p\" xmlns=\"urn:default\" p:a=\"1\" a=\"2\">"
                            "<b/></p:root>");
    QCOMPARE(document.root()->getTagName(), u"p:root"_s);
    QCOMPARE(document.root()->getTagNameSpace(), u"urn:p"_s);
    QCOMPARE(document.root()->attribute(u"p:a"_s), u"1"_s);
    QCOMPARE(document.root()->attribute(u"a"_s), u"2"_s);
    QCOMPARE(document.child("b")->getTagNameSpace(), u"urn:default"_s);
}

void TestVLXmlParser::parse_leavesNamespaceEmpty_withoutOne()
{
    const Document document("<root/>");
    QVERIFY(document.root()->getTagNameSpace().isEmpty());
}

void TestVLXmlParser::parse_trimsNamespace()
{
    const Document document("<p:root xmlns:p=\"  urn:p \"/>");
    QCOMPARE(document.root()->getTagNameSpace(), u"urn:p"_s);
}

void TestVLXmlParser::parse_takesNamespaceDeclarationsAsNoAttributes()
{
    const Document document("<p:root xmlns:p=\"urn:p\" xmlns=\"urn:default\"/>");
    QCOMPARE(document.root()->attributeNames(), QList<QString>());
}

void TestVLXmlParser::parse_readsOtherEncodings()
{
    const Document document("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><root>\xE9</root>");
    QCOMPARE(document.root()->content(), u"\u00E9"_s);
}

void TestVLXmlParser::filter_getsQualifiedNameAndAttributes()
{
    Answers answers;
    const Document document("<p:root xmlns:p=\"urn:p\" p:a=\"1\"><b c=\"2\"/></p:root>", &answers);
    QCOMPARE(answers.asked, (QStringList{u"p:root"_s, u"b"_s}));
    QCOMPARE(answers.attributes.at(0).value(u"p:a"_s), u"1"_s);
    QCOMPARE(answers.attributes.at(1).value(u"c"_s), u"2"_s);
}

void TestVLXmlParser::filter_isAskedFromTheRoot_inEachParse()
{
    PackageBuilder files;
    const QString path = files.write(u"document.xml"_s, "<root><a/></root>");
    Answers answers;
    VLXmlParser parser(answeringFilter, &answers);
    qDeleteAll(parseFile(parser, path));
    qDeleteAll(parseFile(parser, path));
    const QStringList once{u"root"_s, u"a"_s};
    QCOMPARE(answers.asked, once + once);
}

void TestVLXmlParser::filter_decidesByFlagsInOrder_data()
{
    QTest::addColumn<int>("flags");
    QTest::addColumn<bool>("isBuilt");
    QTest::addColumn<bool>("asksForChildren");
    QTest::addColumn<bool>("buildsChildren");
    QTest::newRow("0") << 0 << true << true << true;
    QTest::newRow("filter") << 1 << true << true << true;
    QTest::newRow("keep") << 2 << true << false << true;
    QTest::newRow("keep before filter") << 3 << true << false << true;
    QTest::newRow("drop") << 4 << false << true << true;
    QTest::newRow("drop, filter") << 5 << false << true << true;
    QTest::newRow("drop, keep") << 6 << false << false << true;
    QTest::newRow("drop, keep before filter") << 7 << false << false << true;
    QTest::newRow("skip") << 8 << true << false << false;
    QTest::newRow("skip before filter") << 9 << true << false << false;
    QTest::newRow("skip before keep") << 10 << true << false << false;
    QTest::newRow("skip before both") << 11 << true << false << false;
    QTest::newRow("drop, skip") << 12 << false << false << false;
    QTest::newRow("drop, skip before filter") << 13 << false << false << false;
    QTest::newRow("drop, skip before keep") << 14 << false << false << false;
    QTest::newRow("all") << 15 << false << false << false;
}

void TestVLXmlParser::filter_decidesByFlagsInOrder()
{
    QFETCH(int, flags);
    QFETCH(bool, isBuilt);
    QFETCH(bool, asksForChildren);
    QFETCH(bool, buildsChildren);
    Answers answers;
    answers.flags.insert(u"x"_s, flags);
    const ObjectCensus census;

    const Document document("<root><x><child><grandchild/></child></x></root>", &answers);

    // A child of a dropped tag has no owner, so it is looked for among all elements that live.
    QStringList built{u"root"_s};
    if (isBuilt)
        built += u"x"_s;
    const QStringList inner{u"child"_s, u"grandchild"_s};
    if (buildsChildren)
        built += inner;
    QStringList living;
    for (const VLXmlElement* element : census.living<VLXmlElement>())
        living += element->getTagName();
    QList<VLXmlElement*> ownerless = census.living<VLXmlElement>();
    ownerless.removeIf([&document](const VLXmlElement* element) {
        return element->parent() || element == document.root();
    });
    qDeleteAll(ownerless);

    QCOMPARE(living, built);
    QCOMPARE(ownerless.size(), !isBuilt && buildsChildren ? 1 : 0);
    const QStringList outer{u"root"_s, u"x"_s};
    QCOMPARE(answers.asked, asksForChildren ? outer + inner : outer);
}

void TestVLXmlParser::filter_isNotAsked_insideSkippedSubtree()
{
    Answers answers;
    answers.flags.insert(u"skipped"_s, NoElement | SkipChildren);
    const Document document("<root><skipped><a><b/></a><skipped/></skipped></root>", &answers);
    QCOMPARE(answers.asked, (QStringList{u"root"_s, u"skipped"_s}));
    QVERIFY(document.root()->children().isEmpty());
}

void TestVLXmlParser::filter_isNotAsked_belowKeptElement()
{
    Answers answers;
    answers.flags.insert(u"kept"_s, KeepChildren);
    answers.flags.insert(u"inner"_s, NoElement | SkipChildren);
    const Document document("<root><kept><inner><inner/></inner></kept></root>", &answers);
    QCOMPARE(answers.asked, (QStringList{u"root"_s, u"kept"_s}));
    QCOMPARE(document.child("kept")->childElementList(u"inner"_s).size(), 2);
}

void TestVLXmlParser::filter_isAskedAgain_afterSkippedAndKeptSiblings()
{
    Answers answers;
    answers.flags.insert(u"skipped"_s, NoElement | SkipChildren);
    answers.flags.insert(u"kept"_s, FilterChildren | KeepChildren);
    const Document document(
        "<root><skipped><a/></skipped><kept><b/></kept><skipped/><kept><c/></kept></root>",
        &answers);
    QCOMPARE(answers.asked,
             (QStringList{u"root"_s, u"skipped"_s, u"kept"_s, u"skipped"_s, u"kept"_s}));
    QCOMPARE(document.root()->toXml(),
             u"<root>\n  <kept>\n    <b/>\n  </kept>\n  <kept>\n    <c/>\n"
             "  </kept>\n</root>"_s);
}

void TestVLXmlParser::droppedRoot_leavesChildWithoutOwner()
{
    Answers answers;
    answers.flags.insert(u"root"_s, NoElement);
    const ObjectCensus census;

    const Document document("<root><child/></root>", &answers);

    const QList<VLXmlElement*> elements = census.living<VLXmlElement>();
    QCOMPARE(elements.size(), 1);
    const std::unique_ptr<VLXmlElement> child(elements.first());
    QCOMPARE(child->getTagName(), u"child"_s);
    QVERIFY(!child->parent());
    QCOMPARE(document.size(), 0);
}

void TestVLXmlParser::droppedRoot_givesEmptyListWithoutMessage()
{
    PackageBuilder files;
    const QString path = files.write(u"document.xml"_s, "<root a=\"1\"><a>text</a></root>");
    const ChildResult result = runInChildProcess(u"dropRoot:"_s + path);
    QVERIFY(result.finished && !result.crashed);
    QCOMPARE(result.exitCode, EXIT_SUCCESS);
    QCOMPARE(result.standardOutput, QByteArray());
}

void TestVLXmlParser::droppedTag_takesItsTextAlong()
{
    Answers answers;
    answers.flags.insert(u"dropped"_s, NoElement);
    const Document document("<root>a<dropped>b</dropped>c</root>", &answers);
    QCOMPARE(document.root()->content(), u"ac"_s);
}

void TestVLXmlParser::skippedTag_takesItsTextAlong()
{
    Answers answers;
    answers.flags.insert(u"skipped"_s, SkipChildren);
    const Document document("<root>a<skipped>b<c>d</c>e</skipped>f</root>", &answers);
    QCOMPARE(document.root()->content(), u"af"_s);
    // Only what is inside is passed over: the tag itself is built, and takes its own text.
    QCOMPARE(document.child("skipped")->content(), u"be"_s);
}

void TestVLXmlParser::skippedSubtree_makesNoElements()
{
    Answers answers;
    answers.flags.insert(u"skipped"_s, NoElement | SkipChildren);
    int withoutSubtree = 0;
    {
        const ObjectCensus census;
        const Document document("<root/>", &answers);
        withoutSubtree = census.madeCount();
    }
    const ObjectCensus census;
    const Document document("<root><skipped><a/><b><c/></b></skipped></root>", &answers);
    QCOMPARE(census.madeCount(), withoutSubtree);
}

void TestVLXmlParser::parser_readsSeveralFiles()
{
    PackageBuilder files;
    VLXmlParser parser;
    const QList<QObject*> first = parseFile(parser, files.write(u"1.xml"_s, "<one><a/></one>"));
    const QList<QObject*> second = parseFile(parser, files.write(u"2.xml"_s, "<two><b/></two>"));
    QCOMPARE(tagNames(first + second), (QStringList{u"one"_s, u"two"_s}));
    qDeleteAll(first + second);
}

void TestVLXmlParser::parser_deletesNothing_afterWholeFile()
{
    PackageBuilder files;
    auto parser = std::make_unique<VLXmlParser>();
    const QList<QObject*> elements =
        parseFile(*parser, files.write(u"document.xml"_s, "<root><a/></root>"));
    const QPointer<QObject> root = elements.first();
    parser.reset();
    QVERIFY(root);
    delete root.data();
}

void TestVLXmlParser::laterParse_dropsOpenElementsWithoutDeletingThem()
{
    PackageBuilder files;
    BrokenParse broken("<root><child>");
    QVERIFY(broken.root);
    qDeleteAll(parseFile(*broken.parser, files.write(u"document.xml"_s, "<other/>")));
    broken.parser.reset();
    QVERIFY(broken.root);
    delete broken.root.data();
}

void TestVLXmlParser::laterParse_startsFiltering_afterBrokenFile()
{
    PackageBuilder files;
    Answers answers;
    answers.flags.insert(u"kept"_s, KeepChildren);
    BrokenParse broken("<kept><a><b>", &answers);
    answers.asked.clear();
    const std::unique_ptr<VLXmlElement> root(broken.root.data());

    qDeleteAll(parseFile(*broken.parser, files.write(u"document.xml"_s, "<c/>")));

    QCOMPARE(answers.asked, QStringList{u"c"_s});
}

void TestVLXmlParser::brokenFile_givesOneLine_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("fileName");
    const QHash<QString, QByteArray> documents = brokenDocuments();
    for (auto it = documents.cbegin(); it != documents.cend(); ++it)
        QTest::newRow(qPrintable(it.key())) << it.value() << u"broken.xml"_s;
    QTest::newRow("file name beyond ASCII") << QByteArray("<root>") << u"br\u00FCchig.xml"_s;
}

void TestVLXmlParser::brokenFile_givesOneLine()
{
    QFETCH(QByteArray, xml);
    QFETCH(QString, fileName);
    PackageBuilder files;
    const QString path = files.write(fileName, xml);

    const ChildResult result = runInChildProcess(u"parse:"_s + path);

    QVERIFY(result.finished && !result.crashed);
    QCOMPARE(result.exitCode, EXIT_SUCCESS);
    QCOMPARE(result.standardOutput, expectedReport(path, fileName.toUtf8()));
    QVERIFY(!result.standardError.contains("Error parsing"));
}

void TestVLXmlParser::brokenFile_givesChildrenBeforeFault_whichOutliveParser_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::newRow("cut off") << QByteArray("<root><a/><b>text</b>");
    QTest::newRow("wrong end tag") << QByteArray("<root><a/><b>text</b></other>");
    QTest::newRow("stray sign") << QByteArray("<root><a/><b>text</b>& </root>");
    QTest::newRow("broken start tag") << QByteArray("<root><a/><b>text</b><c d=></root>");
}

void TestVLXmlParser::brokenFile_givesChildrenBeforeFault_whichOutliveParser()
{
    QFETCH(QByteArray, xml);
    BrokenParse broken(xml);
    QCOMPARE(broken.elements.size(), 1);
    QVERIFY(!broken.root->parent());

    broken.parser.reset();

    QVERIFY(broken.root);
    const std::unique_ptr<VLXmlElement> root(broken.root.data());
    QCOMPARE(tagNames(root->children()), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(root->childElement(u"b"_s)->content(), u"text"_s);
}

void TestVLXmlParser::brokenFile_givesRootThatDiesWithParser_whenChildIsOpen_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QStringList>("children");
    const QString a = u"a"_s;
    QTest::newRow("child") << QByteArray("<root><a/><child>") << QStringList{a, u"child"_s};
    QTest::newRow("grandchild") << QByteArray("<root><a/><child><b>") << QStringList{a, u"child"_s};
    QTest::newRow("dropped tag") << QByteArray("<root><a/><dropped>") << QStringList{a};
    QTest::newRow("skipped tag") << QByteArray("<root><a/><skipped>") << QStringList{a};
    QTest::newRow("tag inside a skipped one")
        << QByteArray("<root><a/><skipped><b>") << QStringList{a};
}

void TestVLXmlParser::brokenFile_givesRootThatDiesWithParser_whenChildIsOpen()
{
    Answers answers;
    answers.flags.insert(u"dropped"_s, NoElement);
    answers.flags.insert(u"skipped"_s, NoElement | SkipChildren);
    QFETCH(QByteArray, xml);
    BrokenParse broken(xml, &answers);
    QVERIFY(broken.root);
    QTEST(tagNames(broken.root->children()), "children");
    const QPointer<QObject> child = broken.root->children().first();

    broken.parser.reset();

    QVERIFY(!broken.root);
    QVERIFY(!child);
}

void TestVLXmlParser::brokenFile_keepsTextUpToFault()
{
    const BrokenParse broken("<root>left<child>inner</wrong></root>");
    QCOMPARE(broken.root->content(), u"left"_s);
    QCOMPARE(broken.root->childElement(u"child"_s)->content(), u"inner"_s);
}

void TestVLXmlParser::destructor_passesOverElementsThatAreGone()
{
    const ObjectCensus census;
    BrokenParse broken("<root><child><grandchild>");
    delete broken.root.data();
    broken.parser.reset();
    QCOMPARE(census.living<VLXmlElement>(), QList<VLXmlElement*>());
}

void TestVLXmlParser::brokenFile_endsProcess_withoutOpenElement_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("white space") << QByteArray(" \n");
    QTest::newRow("declaration alone") << QByteArray("<?xml version=\"1.0\"?>\n");
    QTest::newRow("no XML") << QByteArray("plain text");
    QTest::newRow("second root") << QByteArray("<root/><root/>");
}

void TestVLXmlParser::brokenFile_endsProcess_withoutOpenElement()
{
    QFETCH(QByteArray, xml);
    PackageBuilder files;
    const QString path = files.write(u"broken.xml"_s, xml);

    const ChildResult result = runInChildProcess(u"parse:"_s + path);

    QVERIFY(result.finished);
    QVERIFY(result.crashed);
    QCOMPARE(result.standardOutput, expectedReport(path, "broken.xml"));
    QVERIFY(result.standardError.contains("ASSERT"));
}

// After a file that broke inside a child, the parser stands inside the root. That is where the
// operations that take single tokens can be watched.

void TestVLXmlParser::startElement_buildsBelowInnermostElement()
{
    BrokenParse broken("<root><child>");
    QXmlStreamAttributes attributes;
    attributes.append(u"a"_s, u"1"_s);

    QVERIFY(broken.parser->startElement(QString(), u"new"_s, u"new"_s, attributes));
    QVERIFY(broken.parser->startElement(QString(), u"inner"_s, u"inner"_s, {}));

    QCOMPARE(broken.root->toXml(),
             u"<root>\n  <child/>\n  <new a=\"1\">\n    <inner/>\n  </new>\n"
             "</root>"_s);
}

void TestVLXmlParser::startElement_trimsNames()
{
    BrokenParse broken("<root><child>");
    QVERIFY(broken.parser->startElement(u" urn:p\n"_s, u"b"_s, u"\tp:b "_s, {}));
    const auto* element = broken.root->childElement(u"p:b"_s);
    QVERIFY(element);
    QCOMPARE(element->getTagNameSpace(), u"urn:p"_s);
}

void TestVLXmlParser::startElement_isTrue_whenTagIsDroppedOrSkipped()
{
    Answers answers;
    answers.flags.insert(u"skipped"_s, NoElement | SkipChildren);
    BrokenParse broken("<root><child>", &answers);
    answers.asked.clear();
    const QString skipped = u"skipped"_s;
    QVERIFY(broken.parser->startElement(QString(), skipped, skipped, {}));
    QVERIFY(broken.parser->startElement(QString(), skipped, skipped, {}));
    QCOMPARE(answers.asked, QStringList{skipped});
    QCOMPARE(broken.root->children().size(), 1);
}

void TestVLXmlParser::endElement_restoresStateOfEnclosingElement()
{
    Answers answers;
    const QString kept = u"kept"_s;
    const QString other = u"other"_s;
    answers.flags.insert(kept, KeepChildren);
    BrokenParse broken("<root><child>", &answers);
    answers.asked.clear();

    QVERIFY(broken.parser->startElement(QString(), kept, kept, {}));
    QVERIFY(broken.parser->startElement(QString(), other, other, {}));
    QVERIFY(broken.parser->endElement());
    QVERIFY(broken.parser->startElement(QString(), other, other, {}));
    QVERIFY(broken.parser->endElement());
    QCOMPARE(answers.asked, QStringList{kept});
    QVERIFY(broken.parser->endElement());
    QVERIFY(broken.parser->startElement(QString(), other, other, {}));
    QCOMPARE(answers.asked, (QStringList{kept, other}));
}

void TestVLXmlParser::characters_goToInnermostElement()
{
    BrokenParse broken("<root>a<child>b");
    QVERIFY(broken.parser->characters(u" c"_s));
    QCOMPARE(broken.root->content(), u"a c"_s);
}

void TestVLXmlParser::ignorableWhitespace_isTakenAsCharacters()
{
    BrokenParse broken("<root>a<child>b");
    QVERIFY(broken.parser->ignorableWhitespace(u" \n"_s));
    QCOMPARE(broken.root->content(), u"a \n"_s);
}

void TestVLXmlParser::characters_areTrueAndGoNowhere_withoutElement()
{
    BrokenParse broken("<root>a<child>b");
    delete broken.root.data();
    QVERIFY(broken.parser->characters(u"c"_s));
    QVERIFY(broken.parser->ignorableWhitespace(u" "_s));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLXmlParser>(argc, argv);
}

#include "tst_vlxmlparser.moc"
