// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include <Vidlets/VLXmlElement.h>

#include <QJSEngine>
#include <QPointer>
#include <QRandomGenerator>
#include <QSignalSpy>

#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

VLXmlElement* addChild(QObject* parent, const QString& tagName)
{
    auto* element = new VLXmlElement(parent);
    element->setTagName(tagName);
    return element;
}

/// A script engine that sees @p element as "element", without owning it.
std::unique_ptr<QJSEngine> engineFor(VLXmlElement* element)
{
    auto engine = std::make_unique<QJSEngine>();
    QJSEngine::setObjectOwnership(element, QJSEngine::CppOwnership);
    engine->globalObject().setProperty(u"element"_s, engine->newQObject(element));
    return engine;
}

/// Far more levels than calls fit on a stack.
constexpr int kVeryDeepLevels = 200'000;

/// Elements with the tag name "a", each the only child of the one before; gives the innermost.
VLXmlElement* nest(VLXmlElement* root, int levels)
{
    VLXmlElement* innermost = root;
    for (int level = 0; level < levels; ++level)
        innermost = addChild(innermost, u"a"_s);
    return innermost;
}

/// A tree that branches as @p generator has it, with few names and some objects that are no
/// elements.
void grow(QObject* parent, QRandomGenerator& generator, int levels)
{
    constexpr int kMaxChildren = 4;
    const int children = levels == 0 ? 0 : generator.bounded(kMaxChildren);
    for (int child = 0; child < children; ++child) {
        const QString name = QString(QChar(u'a' + generator.bounded(3)));
        if (generator.bounded(5) == 0) {
            auto* other = new QObject(parent);
            other->setObjectName(name);
            grow(other, generator, levels - 1);
        } else {
            grow(addChild(parent, name), generator, levels - 1);
        }
    }
}

} // namespace

class TestVLXmlElement : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    // Construction and destruction
    void newElement_isEmpty();
    void constructor_takesParent();
    void constructor_takesAttributesByQualifiedName();
    void constructor_keepsLastValue_whenAttributeIsGivenTwice();
    void destructor_deletesSubtree();
    void destructor_leavesParentWithoutTheChild();

    // By the meta-object
    void newInstance_makesElement_withEachConstructor();
    void metaType_isPointerToObject();

    // Attributes
    void attribute_isNull_whenAbsent();
    void attribute_isEmpty_whenSetToEmpty();
    void attribute_isFoundByExactName_data();
    void attribute_isFoundByExactName();
    void setAttribute_replacesValue();
    void setAttribute_emitsNothing();
    void attributeNames_areSorted();
    void attributeNames_areEmpty_withoutAttributes();

    // Properties
    void tagName_isObjectName();
    void setTagName_emits_alsoWhenUnchanged();
    void setTagNameSpace_emits_alsoWhenUnchanged();
    void setContent_replacesAndEmits_alsoWhenUnchanged();
    void appendContent_joinsWithoutSeparatorAndEmitsEachTime();
    void contentProperty_isReadOnly();
    void tagNameProperties_areWritable();

    // Children
    void childElement_findsDirectChild();
    void childElement_findsGrandchild_whenNoChildHasTheName();
    void childElement_prefersChildOverEarlierGrandchild();
    void childElement_searchesSubtreesInTurn();
    void childElement_isNull_whenNothingMatches();
    void childElement_isCaseSensitive();
    void childElement_passesOverOtherObjects();
    void childElementList_givesNestedMatchesInDocumentOrder();
    void childElementList_givesAllDescendants_whenNameIsEmpty_data();
    void childElementList_givesAllDescendants_whenNameIsEmpty();
    void childElementList_includesOtherObjects();
    void childElementList_isEmpty_whenNothingMatches();
    void childElement_takesFirstOfAnyName_whenNameIsNull();
    void childElement_takesNameless_whenNameIsEmpty();
    void childElement_agreesWithQt_data();
    void childElement_agreesWithQt();

    // Deep trees
    void deepTree_isSearchedToTheEnd();
    void deepTree_isListedInDocumentOrder();
    void deepTree_isWrittenAsText_whenIndentIsHeldBack();
    void deepTree_isWrittenAsText_withEachIndent();
    void deepTree_isDeleted();

    // Text
    void toXml_writesLeafOnOneLineWithoutText();
    void toXml_sortsAttributes();
    void toXml_indentsByTwo_data();
    void toXml_indentsByTwo();
    void toXml_writesChildrenInOrder();
    void toXml_leavesOutNamespace();
    void toXml_passesOverOtherObjects();
    void toXml_escapesNothing();
    void toXml_fillsPlaceMarkersInNamesAndValues_data();
    void toXml_fillsPlaceMarkersInNamesAndValues();
    void toXml_fillsPlaceMarkersInClosingTag();
    void toXml_doesNotIndent_whenIndentIsNegative();

    // From the scene
    void script_readsElement_data();
    void script_readsElement();
    void script_cannotWriteContent();
    void script_appendsContent();
    void script_cannotCallPlainFunctions_data();
    void script_cannotCallPlainFunctions();
};

void TestVLXmlElement::newElement_isEmpty()
{
    VLXmlElement element;
    QVERIFY(!element.parent());
    QCOMPARE(element.getTagName(), QString());
    QCOMPARE(element.getTagNameSpace(), QString());
    QCOMPARE(element.content(), QString());
    QCOMPARE(element.attributeNames(), QList<QString>());
    QVERIFY(element.children().isEmpty());
}

void TestVLXmlElement::constructor_takesParent()
{
    QObject parent;
    auto* element = new VLXmlElement(&parent);
    QCOMPARE(element->parent(), &parent);
    QCOMPARE(element->attributeNames(), QList<QString>());
}

void TestVLXmlElement::constructor_takesAttributesByQualifiedName()
{
    QXmlStreamAttributes attributes;
    attributes.append(u"plain"_s, u"1"_s);
    attributes += QXmlStreamAttribute(u"urn:example"_s, u"local"_s, u"2"_s);
    attributes.append(u"p:prefixed"_s, u"3"_s);

    const VLXmlElement element(nullptr, attributes);

    QCOMPARE(element.attribute(u"plain"_s), u"1"_s);
    QCOMPARE(element.attribute(u"p:prefixed"_s), u"3"_s);
    QVERIFY(!element.hasAttribute(u"prefixed"_s));
    QCOMPARE(element.attributeNames().size(), 3);
}

void TestVLXmlElement::constructor_keepsLastValue_whenAttributeIsGivenTwice()
{
    QXmlStreamAttributes attributes;
    attributes.append(u"a"_s, u"first"_s);
    attributes.append(u"a"_s, u"last"_s);
    const VLXmlElement element(nullptr, attributes);
    QCOMPARE(element.attribute(u"a"_s), u"last"_s);
    QCOMPARE(element.attributeNames().size(), 1);
}

void TestVLXmlElement::destructor_deletesSubtree()
{
    auto root = std::make_unique<VLXmlElement>();
    const QPointer<VLXmlElement> child = addChild(root.get(), u"child"_s);
    const QPointer<VLXmlElement> grandchild = addChild(child, u"grandchild"_s);
    root.reset();
    QVERIFY(child.isNull());
    QVERIFY(grandchild.isNull());
}

void TestVLXmlElement::destructor_leavesParentWithoutTheChild()
{
    VLXmlElement root;
    delete addChild(&root, u"child"_s);
    QVERIFY(root.children().isEmpty());
}

void TestVLXmlElement::newInstance_makesElement_withEachConstructor()
{
    QObject parent;
    QXmlStreamAttributes attributes;
    attributes.append(u"a"_s, u"1"_s);
    const QMetaObject& type = VLXmlElement::staticMetaObject;

    const QObject* full =
        type.newInstance(Q_ARG(QObject*, &parent), Q_ARG(QXmlStreamAttributes, attributes));
    const QObject* child = type.newInstance(Q_ARG(QObject*, &parent));
    const std::unique_ptr<QObject> lone(type.newInstance());

    QCOMPARE(parent.children().size(), 2);
    QVERIFY(qobject_cast<const VLXmlElement*>(full)->hasAttribute(u"a"_s));
    QCOMPARE(child->parent(), &parent);
    QVERIFY(qobject_cast<VLXmlElement*>(lone.get()));
    QVERIFY(!lone->parent());
}

void TestVLXmlElement::metaType_isPointerToObject()
{
    const QMetaType type = QMetaType::fromType<VLXmlElement*>();
    QCOMPARE(type.name(), "Vidlets::VLXmlElement*");
    QVERIFY(type.flags() & QMetaType::PointerToQObject);
    QCOMPARE(type.metaObject(), &VLXmlElement::staticMetaObject);
}

void TestVLXmlElement::attribute_isNull_whenAbsent()
{
    const VLXmlElement element;
    QVERIFY(element.attribute(u"a"_s).isNull());
    QVERIFY(!element.hasAttribute(u"a"_s));
}

void TestVLXmlElement::attribute_isEmpty_whenSetToEmpty()
{
    VLXmlElement element;
    element.setAttribute(u"a"_s, u""_s);
    QVERIFY(element.attribute(u"a"_s).isEmpty());
    QVERIFY(!element.attribute(u"a"_s).isNull());
    QVERIFY(element.hasAttribute(u"a"_s));
}

void TestVLXmlElement::attribute_isFoundByExactName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::newRow("same") << u"title"_s << true;
    QTest::newRow("other case") << u"Title"_s << false;
    QTest::newRow("beginning") << u"tit"_s << false;
    QTest::newRow("with blank") << u"title "_s << false;
    QTest::newRow("empty") << QString() << false;
}

void TestVLXmlElement::attribute_isFoundByExactName()
{
    VLXmlElement element;
    element.setAttribute(u"title"_s, u"value"_s);
    QFETCH(QString, name);
    QFETCH(bool, found);
    QCOMPARE(element.hasAttribute(name), found);
    QCOMPARE(element.attribute(name), found ? u"value"_s : QString());
}

void TestVLXmlElement::setAttribute_replacesValue()
{
    VLXmlElement element;
    element.setAttribute(u"a"_s, u"1"_s);
    element.setAttribute(u"a"_s, u"2"_s);
    QCOMPARE(element.attribute(u"a"_s), u"2"_s);
    QCOMPARE(element.attributeNames(), QList<QString>{u"a"_s});
}

void TestVLXmlElement::setAttribute_emitsNothing()
{
    VLXmlElement element;
    const QSignalSpy tagName(&element, &VLXmlElement::tagNameChanged);
    const QSignalSpy tagNameSpace(&element, &VLXmlElement::tagNameSpaceChanged);
    const QSignalSpy content(&element, &VLXmlElement::contentChanged);
    element.setAttribute(u"a"_s, u"1"_s);
    QCOMPARE(tagName.count() + tagNameSpace.count() + content.count(), 0);
}

void TestVLXmlElement::attributeNames_areSorted()
{
    VLXmlElement element;
    for (const char* name : {"b", "a", "B", "a1"})
        element.setAttribute(QString::fromLatin1(name), QString());
    QCOMPARE(element.attributeNames(), (QList<QString>{u"B"_s, u"a"_s, u"a1"_s, u"b"_s}));
}

void TestVLXmlElement::attributeNames_areEmpty_withoutAttributes()
{
    const VLXmlElement element;
    QCOMPARE(element.attributeNames(), QList<QString>());
}

void TestVLXmlElement::tagName_isObjectName()
{
    VLXmlElement element;
    element.setTagName(u"p:title"_s);
    QCOMPARE(element.objectName(), u"p:title"_s);
    element.setObjectName(u"text"_s);
    QCOMPARE(element.getTagName(), u"text"_s);
}

void TestVLXmlElement::setTagName_emits_alsoWhenUnchanged()
{
    VLXmlElement element;
    const QSignalSpy spy(&element, &VLXmlElement::tagNameChanged);
    element.setTagName(u"title"_s);
    element.setTagName(u"title"_s);
    QCOMPARE(spy.count(), 2);
    QCOMPARE(element.getTagName(), u"title"_s);
}

void TestVLXmlElement::setTagNameSpace_emits_alsoWhenUnchanged()
{
    VLXmlElement element;
    const QSignalSpy spy(&element, &VLXmlElement::tagNameSpaceChanged);
    element.setTagNameSpace(u"urn:example"_s);
    element.setTagNameSpace(u"urn:example"_s);
    QCOMPARE(spy.count(), 2);
    QCOMPARE(element.getTagNameSpace(), u"urn:example"_s);
}

void TestVLXmlElement::setContent_replacesAndEmits_alsoWhenUnchanged()
{
    VLXmlElement element;
    element.appendContent(u"old"_s);
    const QSignalSpy spy(&element, &VLXmlElement::contentChanged);
    element.setContent(u"new"_s);
    element.setContent(u"new"_s);
    QCOMPARE(spy.count(), 2);
    QCOMPARE(element.content(), u"new"_s);
}

void TestVLXmlElement::appendContent_joinsWithoutSeparatorAndEmitsEachTime()
{
    VLXmlElement element;
    QStringList seen;
    connect(&element, &VLXmlElement::contentChanged, this,
            [&element, &seen] { seen += element.content(); });
    element.appendContent(u" one\n"_s);
    element.appendContent(u"two "_s);
    QCOMPARE(seen, (QStringList{u" one\n"_s, u" one\ntwo "_s}));
}

void TestVLXmlElement::contentProperty_isReadOnly()
{
    VLXmlElement element;
    element.setContent(u"text"_s);
    QVERIFY(!element.setProperty("content", u"other"_s));
    QCOMPARE(element.property("content"), QVariant(u"text"_s));
}

void TestVLXmlElement::tagNameProperties_areWritable()
{
    VLXmlElement element;
    QVERIFY(element.setProperty("tagName", u"title"_s));
    QVERIFY(element.setProperty("tagNameSpace", u"urn:example"_s));
    QCOMPARE(element.getTagName(), u"title"_s);
    QCOMPARE(element.getTagNameSpace(), u"urn:example"_s);
    QCOMPARE(element.property("tagName"), QVariant(u"title"_s));
    QCOMPARE(element.property("tagNameSpace"), QVariant(u"urn:example"_s));
}

void TestVLXmlElement::childElement_findsDirectChild()
{
    VLXmlElement root;
    addChild(&root, u"other"_s);
    VLXmlElement* wanted = addChild(&root, u"wanted"_s);
    addChild(&root, u"wanted"_s);
    QCOMPARE(root.childElement(u"wanted"_s), wanted);
}

void TestVLXmlElement::childElement_findsGrandchild_whenNoChildHasTheName()
{
    VLXmlElement root;
    VLXmlElement* wanted = addChild(addChild(&root, u"child"_s), u"wanted"_s);
    QCOMPARE(root.childElement(u"wanted"_s), wanted);
}

void TestVLXmlElement::childElement_prefersChildOverEarlierGrandchild()
{
    VLXmlElement root;
    addChild(addChild(&root, u"child"_s), u"wanted"_s);
    VLXmlElement* wanted = addChild(&root, u"wanted"_s);
    QCOMPARE(root.childElement(u"wanted"_s), wanted);
}

void TestVLXmlElement::childElement_searchesSubtreesInTurn()
{
    VLXmlElement root;
    VLXmlElement* first = addChild(&root, u"child"_s);
    VLXmlElement* wanted = addChild(addChild(first, u"deeper"_s), u"wanted"_s);
    addChild(addChild(&root, u"child"_s), u"wanted"_s);
    QCOMPARE(root.childElement(u"wanted"_s), wanted);
}

void TestVLXmlElement::childElement_isNull_whenNothingMatches()
{
    VLXmlElement root;
    root.setTagName(u"wanted"_s);
    addChild(&root, u"child"_s);
    QVERIFY(!root.childElement(u"wanted"_s));
}

void TestVLXmlElement::childElement_isCaseSensitive()
{
    VLXmlElement root;
    addChild(&root, u"Wanted"_s);
    QVERIFY(!root.childElement(u"wanted"_s));
}

void TestVLXmlElement::childElement_passesOverOtherObjects()
{
    VLXmlElement root;
    QObject other(&root);
    other.setObjectName(u"wanted"_s);
    QVERIFY(!root.childElement(u"wanted"_s));
    VLXmlElement* wanted = addChild(&other, u"wanted"_s);
    QCOMPARE(root.childElement(u"wanted"_s), wanted);
}

void TestVLXmlElement::childElementList_givesNestedMatchesInDocumentOrder()
{
    VLXmlElement root;
    QObject* first = addChild(&root, u"item"_s);
    QObject* nested = addChild(first, u"item"_s);
    QObject* deep = addChild(addChild(&root, u"group"_s), u"item"_s);
    QObject* last = addChild(&root, u"item"_s);
    QCOMPARE(root.childElementList(u"item"_s), (QList<QObject*>{first, nested, deep, last}));
}

void TestVLXmlElement::childElementList_givesAllDescendants_whenNameIsEmpty_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << u""_s;
}

void TestVLXmlElement::childElementList_givesAllDescendants_whenNameIsEmpty()
{
    VLXmlElement root;
    QObject* child = addChild(&root, u"child"_s);
    QObject* grandchild = addChild(child, u"grandchild"_s);
    QObject* second = addChild(&root, u"second"_s);
    QFETCH(QString, name);
    QCOMPARE(root.childElementList(name), (QList<QObject*>{child, grandchild, second}));
}

void TestVLXmlElement::childElementList_includesOtherObjects()
{
    VLXmlElement root;
    QObject other(&root);
    other.setObjectName(u"item"_s);
    QCOMPARE(root.childElementList(u"item"_s), QList<QObject*>{&other});
    QCOMPARE(root.childElementList(QString()), QList<QObject*>{&other});
}

void TestVLXmlElement::childElementList_isEmpty_whenNothingMatches()
{
    VLXmlElement root;
    addChild(&root, u"Item"_s);
    QCOMPARE(root.childElementList(u"item"_s), QList<QObject*>());
}

void TestVLXmlElement::childElement_takesFirstOfAnyName_whenNameIsNull()
{
    VLXmlElement root;
    VLXmlElement* first = addChild(&root, u"first"_s);
    addChild(&root, u"last"_s);
    QCOMPARE(root.childElement(QString()), first);
}

void TestVLXmlElement::childElement_takesNameless_whenNameIsEmpty()
{
    VLXmlElement root;
    addChild(&root, u"first"_s);
    VLXmlElement* nameless = addChild(&root, QString());
    QCOMPARE(root.childElement(u""_s), nameless);
}

void TestVLXmlElement::childElement_agreesWithQt_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 100; ++seed)
        QTest::addRow("tree %u", seed) << seed;
}

void TestVLXmlElement::childElement_agreesWithQt()
{
    QFETCH(quint32, seed);
    QRandomGenerator generator(seed);
    VLXmlElement root;
    grow(&root, generator, 6);
    for (const QString& name : {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u""_s, QString()}) {
        QCOMPARE(root.childElement(name), root.findChild<VLXmlElement*>(name));
        const QString listed = name.isEmpty() ? QString() : name;
        QCOMPARE(root.childElementList(name), root.findChildren<QObject*>(listed));
    }
}

void TestVLXmlElement::deepTree_isSearchedToTheEnd()
{
    VLXmlElement root;
    VLXmlElement* wanted = addChild(nest(&root, kVeryDeepLevels), u"wanted"_s);
    QCOMPARE(root.childElement(u"wanted"_s), wanted);
    QCOMPARE(root.childElement(u"missing"_s), nullptr);
}

void TestVLXmlElement::deepTree_isListedInDocumentOrder()
{
    VLXmlElement root;
    QObject* innermost = nest(&root, kVeryDeepLevels);
    QObject* last = addChild(&root, u"a"_s);
    const QList<QObject*> all = root.childElementList(QString());
    QCOMPARE(all.size(), kVeryDeepLevels + 1);
    QCOMPARE(all.at(kVeryDeepLevels - 1), innermost);
    QCOMPARE(all.constLast(), last);
    QCOMPARE(root.childElementList(u"a"_s), all);
}

/// The blanks of so many levels fit in no memory. An indent that stays below zero leaves them out
/// and nothing else, so this outline is as long as its tags; work by the square of the depth would
/// not end.
void TestVLXmlElement::deepTree_isWrittenAsText_whenIndentIsHeldBack()
{
    VLXmlElement root;
    root.setTagName(u"a"_s);
    nest(&root, kVeryDeepLevels);
    const QString expected =
        u"<a>\n"_s.repeated(kVeryDeepLevels) + u"<a/>"_s + u"\n</a>"_s.repeated(kVeryDeepLevels);
    // Not by QCOMPARE, which would print megabytes.
    QVERIFY(root.toXml(-2 * (kVeryDeepLevels + 1)) == expected);
}

void TestVLXmlElement::deepTree_isWrittenAsText_withEachIndent()
{
    constexpr int kLevels = 3000;
    VLXmlElement root;
    root.setTagName(u"a"_s);
    nest(&root, kLevels);
    const QStringList lines = root.toXml().split(u'\n');
    QCOMPARE(lines.size(), 2 * kLevels + 1);
    for (qsizetype level = 0; level < kLevels; ++level) {
        const QString indent(2 * level, u' ');
        QVERIFY(lines.at(level) == indent + u"<a>"_s);
        QVERIFY(lines.at(qsizetype(2) * kLevels - level) == indent + u"</a>"_s);
    }
    QVERIFY(lines.at(kLevels) == QString(qsizetype(2) * kLevels, u' ') + u"<a/>"_s);
}

void TestVLXmlElement::deepTree_isDeleted()
{
    auto root = std::make_unique<VLXmlElement>();
    const QPointer<VLXmlElement> innermost = nest(root.get(), kVeryDeepLevels);
    root.reset();
    QVERIFY(!innermost);
}

void TestVLXmlElement::toXml_writesLeafOnOneLineWithoutText()
{
    VLXmlElement element;
    element.setTagName(u"title"_s);
    element.setContent(u"some text"_s);
    QCOMPARE(element.toXml(), u"<title/>"_s);
}

void TestVLXmlElement::toXml_sortsAttributes()
{
    QXmlStreamAttributes attributes;
    attributes.append(u"b"_s, u"1"_s);
    attributes.append(u"a"_s, u"2"_s);
    VLXmlElement element(nullptr, attributes);
    element.setTagName(u"tag"_s);
    QCOMPARE(element.toXml(), u"<tag a=\"2\" b=\"1\"/>"_s);
}

void TestVLXmlElement::toXml_indentsByTwo_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0 << u"<a>\n  <b>\n    <c/>\n  </b>\n</a>"_s;
    QTest::newRow("3") << 3 << u"   <a>\n     <b>\n       <c/>\n     </b>\n   </a>"_s;
}

void TestVLXmlElement::toXml_indentsByTwo()
{
    VLXmlElement root;
    root.setTagName(u"a"_s);
    addChild(addChild(&root, u"b"_s), u"c"_s);
    QFETCH(int, index);
    QTEST(root.toXml(index), "text");
    if (index == 0)
        QTEST(root.toXml(), "text");
}

void TestVLXmlElement::toXml_writesChildrenInOrder()
{
    VLXmlElement root;
    root.setTagName(u"root"_s);
    addChild(&root, u"z"_s);
    addChild(&root, u"a"_s)->setAttribute(u"n"_s, u"1"_s);
    QCOMPARE(root.toXml(), u"<root>\n  <z/>\n  <a n=\"1\"/>\n</root>"_s);
}

void TestVLXmlElement::toXml_leavesOutNamespace()
{
    VLXmlElement element;
    element.setTagName(u"p:tag"_s);
    element.setTagNameSpace(u"urn:example"_s);
    QCOMPARE(element.toXml(), u"<p:tag/>"_s);
}

void TestVLXmlElement::toXml_passesOverOtherObjects()
{
    VLXmlElement root;
    root.setTagName(u"root"_s);
    QObject other(&root);
    addChild(&other, u"hidden"_s);
    QCOMPARE(root.toXml(), u"<root/>"_s);
}

void TestVLXmlElement::toXml_escapesNothing()
{
    VLXmlElement element;
    element.setTagName(u"tag"_s);
    element.setAttribute(u"a"_s, u"\"<&>'\n"_s);
    QCOMPARE(element.toXml(), u"<tag a=\"\"<&>'\n\"/>"_s);
}

void TestVLXmlElement::toXml_fillsPlaceMarkersInNamesAndValues_data()
{
    QTest::addColumn<QString>("tagName");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("attribute name, by its value")
        << u"tag"_s << u"a%2"_s << u"v"_s << u"<tag av=\"v\"/>"_s;
    QTest::newRow("value, by the closing mark")
        << u"tag"_s << u"a"_s << u"50%4"_s << u"<tag a=\"50/\"/>"_s;
    QTest::newRow("value with the lowest marker, which alone is filled")
        << u"tag"_s << u"a"_s << u"%1"_s << u"<tag a=\"/\"%4>"_s;
    QTest::newRow("value with a higher marker, which stays")
        << u"tag"_s << u"a"_s << u"%5"_s << u"<tag a=\"%5\"/>"_s;
    QTest::newRow("tag name, by the attributes")
        << u"t%3"_s << u"a"_s << u"v"_s << u"<t a=\"v\" a=\"v\"/>"_s;
}

void TestVLXmlElement::toXml_fillsPlaceMarkersInNamesAndValues()
{
    QFETCH(QString, tagName);
    QFETCH(QString, name);
    QFETCH(QString, value);
    VLXmlElement element;
    element.setTagName(tagName);
    element.setAttribute(name, value);
    QTEST(element.toXml(), "text");
}

void TestVLXmlElement::toXml_fillsPlaceMarkersInClosingTag()
{
    VLXmlElement root;
    root.setTagName(u"t%4"_s);
    addChild(&root, u"c"_s);
    // The closing mark of an element with children is empty; the closing tag has no fourth value.
    QCOMPARE(root.toXml(), u"<t>\n  <c/>\n</t%4>"_s);
}

void TestVLXmlElement::toXml_doesNotIndent_whenIndentIsNegative()
{
    VLXmlElement root;
    root.setTagName(u"a"_s);
    addChild(addChild(&root, u"b"_s), u"c"_s);
    QCOMPARE(root.toXml(-3), u"<a>\n<b>\n <c/>\n</b>\n</a>"_s);
}

void TestVLXmlElement::script_readsElement_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QVariant>("result");
    const auto row = [](const char* name, const char* script, const QVariant& result) {
        QTest::newRow(name) << QString::fromLatin1(script) << result;
    };
    row("tag name", "element.tagName", u"tip"_s);
    row("content", "element.content", u"text"_s);
    row("attribute", "element.attribute('a')", u"1"_s);
    row("missing attribute", "element.attribute('b')", u""_s);
    row("hasAttribute", "element.hasAttribute('a')", true);
    row("child", "element.childElement('child').tagName", u"child"_s);
    row("missing child", "element.childElement('missing') === null", true);
    row("list", "element.childElementList('').length", 1);
    row("toXml", "element.childElement('child').toXml()", u"<child/>"_s);
    row("toXml with indent", "element.childElement('child').toXml(1)", u" <child/>"_s);
}

void TestVLXmlElement::script_readsElement()
{
    VLXmlElement element;
    element.setTagName(u"tip"_s);
    element.setContent(u"text"_s);
    element.setAttribute(u"a"_s, u"1"_s);
    addChild(&element, u"child"_s);
    const auto engine = engineFor(&element);
    QFETCH(QString, script);
    QTEST(engine->evaluate(script).toVariant(), "result");
}

void TestVLXmlElement::script_cannotWriteContent()
{
    VLXmlElement element;
    element.setContent(u"text"_s);
    const auto engine = engineFor(&element);
    const QJSValue result = engine->evaluate(u"'use strict'; element.content = 'other'"_s);
    QVERIFY(result.isError());
    QCOMPARE(element.content(), u"text"_s);
}

void TestVLXmlElement::script_appendsContent()
{
    VLXmlElement element;
    element.setContent(u"one"_s);
    const auto engine = engineFor(&element);
    QVERIFY(!engine->evaluate(u"element.appendContent('two')"_s).isError());
    QCOMPARE(element.content(), u"onetwo"_s);
}

void TestVLXmlElement::script_cannotCallPlainFunctions_data()
{
    QTest::addColumn<QString>("function");
    for (const char* name : {"attributeNames", "setAttribute", "setContent", "setTagName",
                             "setTagNameSpace", "getTagName", "getTagNameSpace"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestVLXmlElement::script_cannotCallPlainFunctions()
{
    VLXmlElement element;
    const auto engine = engineFor(&element);
    QFETCH(QString, function);
    const QJSValue kind = engine->evaluate(u"typeof element.%1"_s.arg(function));
    QCOMPARE(kind.toString(), u"undefined"_s);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLXmlElement>(argc, argv);
}

#include "tst_vlxmlelement.moc"
