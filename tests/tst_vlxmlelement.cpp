// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include <Vidlets/VLXmlElement.h>

#include <QJSEngine>
#include <QMetaProperty>
#include <QPointer>
#include <QSignalSpy>

#include <memory>

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
    engine->globalObject().setProperty(QStringLiteral("element"), engine->newQObject(element));
    return engine;
}

} // namespace

class TestVLXmlElement : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void newElement_isEmpty();
    void constructor_takesParent();
    void constructor_takesAttributesByQualifiedName();
    void constructor_keepsLastValue_whenAttributeIsGivenTwice();
    void destructor_deletesSubtree();
    void destructor_leavesParentWithoutTheChild();

    void constructors_areInDeclaredOrder();
    void newInstance_makesElement_withEachConstructor();
    void methods_areInDeclaredOrder();
    void properties_areInDeclaredOrder();
    void properties_areDescribed_data();
    void properties_areDescribed();
    void classInfo_registersElementForQml();
    void metaType_isPointerToObject();

    void attribute_isNull_whenAbsent();
    void attribute_isEmpty_whenSetToEmpty();
    void attribute_isFoundByExactName_data();
    void attribute_isFoundByExactName();
    void setAttribute_replacesValue();
    void setAttribute_emitsNothing();
    void attributeNames_areSorted();
    void attributeNames_areEmpty_withoutAttributes();

    void tagName_isObjectName();
    void setTagName_emits_alsoWhenUnchanged();
    void setTagNameSpace_emits_alsoWhenUnchanged();
    void setContent_replacesAndEmits_alsoWhenUnchanged();
    void appendContent_joinsWithoutSeparatorAndEmitsEachTime();
    void contentProperty_isReadOnly();
    void tagNameProperties_areWritable();

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
    attributes.append(QStringLiteral("plain"), QStringLiteral("1"));
    attributes += QXmlStreamAttribute(QStringLiteral("urn:example"), QStringLiteral("local"),
                                      QStringLiteral("2"));
    attributes.append(QStringLiteral("p:prefixed"), QStringLiteral("3"));

    const VLXmlElement element(nullptr, attributes);

    QCOMPARE(element.attribute(QStringLiteral("plain")), QStringLiteral("1"));
    QCOMPARE(element.attribute(QStringLiteral("p:prefixed")), QStringLiteral("3"));
    QVERIFY(!element.hasAttribute(QStringLiteral("prefixed")));
    QCOMPARE(element.attributeNames().size(), 3);
}

void TestVLXmlElement::constructor_keepsLastValue_whenAttributeIsGivenTwice()
{
    QXmlStreamAttributes attributes;
    attributes.append(QStringLiteral("a"), QStringLiteral("first"));
    attributes.append(QStringLiteral("a"), QStringLiteral("last"));
    const VLXmlElement element(nullptr, attributes);
    QCOMPARE(element.attribute(QStringLiteral("a")), QStringLiteral("last"));
    QCOMPARE(element.attributeNames().size(), 1);
}

void TestVLXmlElement::destructor_deletesSubtree()
{
    auto root = std::make_unique<VLXmlElement>();
    const QPointer<VLXmlElement> child = addChild(root.get(), QStringLiteral("child"));
    const QPointer<VLXmlElement> grandchild = addChild(child, QStringLiteral("grandchild"));
    root.reset();
    QVERIFY(child.isNull());
    QVERIFY(grandchild.isNull());
}

void TestVLXmlElement::destructor_leavesParentWithoutTheChild()
{
    VLXmlElement root;
    delete addChild(&root, QStringLiteral("child"));
    QVERIFY(root.children().isEmpty());
}

void TestVLXmlElement::constructors_areInDeclaredOrder()
{
    const QMetaObject& type = VLXmlElement::staticMetaObject;
    QCOMPARE(type.constructorCount(), 3);
    QCOMPARE(type.constructor(0).methodSignature(), "VLXmlElement(QObject*,QXmlStreamAttributes)");
    QCOMPARE(type.constructor(1).methodSignature(), "VLXmlElement(QObject*)");
    QCOMPARE(type.constructor(2).methodSignature(), "VLXmlElement()");
}

void TestVLXmlElement::newInstance_makesElement_withEachConstructor()
{
    QObject parent;
    QXmlStreamAttributes attributes;
    attributes.append(QStringLiteral("a"), QStringLiteral("1"));
    const QMetaObject& type = VLXmlElement::staticMetaObject;

    const QObject* full =
        type.newInstance(Q_ARG(QObject*, &parent), Q_ARG(QXmlStreamAttributes, attributes));
    const QObject* child = type.newInstance(Q_ARG(QObject*, &parent));
    const std::unique_ptr<QObject> lone(type.newInstance());

    QCOMPARE(parent.children().size(), 2);
    QVERIFY(qobject_cast<const VLXmlElement*>(full)->hasAttribute(QStringLiteral("a")));
    QCOMPARE(child->parent(), &parent);
    QVERIFY(qobject_cast<VLXmlElement*>(lone.get()));
    QVERIFY(!lone->parent());
}

void TestVLXmlElement::methods_areInDeclaredOrder()
{
    const QMetaObject& type = VLXmlElement::staticMetaObject;
    QList<QByteArray> signatures;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i) {
        const QMetaMethod method = type.method(i);
        const bool isSignal = method.methodType() == QMetaMethod::Signal;
        signatures += (isSignal ? "signal " : "") + method.methodSignature();
    }
    const QList<QByteArray> expected{"signal tagNameChanged()",
                                     "signal tagNameSpaceChanged()",
                                     "signal contentChanged()",
                                     "childElement(QString)",
                                     "childElementList(QString)",
                                     "attribute(QString)",
                                     "hasAttribute(QString)",
                                     "appendContent(QString)",
                                     "toXml(int)",
                                     "toXml()"};
    QCOMPARE(signatures, expected);
}

void TestVLXmlElement::properties_areInDeclaredOrder()
{
    const QMetaObject& type = VLXmlElement::staticMetaObject;
    QList<QByteArray> names;
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i)
        names += type.property(i).name();
    QCOMPARE(names, (QList<QByteArray>{"tagName", "tagNameSpace", "content"}));
}

void TestVLXmlElement::properties_areDescribed_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("isWritable");
    QTest::addColumn<QByteArray>("notifySignal");
    QTest::newRow("tagName") << QByteArray("tagName") << true << QByteArray("tagNameChanged()");
    QTest::newRow("tagNameSpace") << QByteArray("tagNameSpace") << true
                                  << QByteArray("tagNameSpaceChanged()");
    QTest::newRow("content") << QByteArray("content") << false << QByteArray("contentChanged()");
}

void TestVLXmlElement::properties_areDescribed()
{
    QFETCH(QByteArray, name);
    const QMetaObject& type = VLXmlElement::staticMetaObject;
    const QMetaProperty property = type.property(type.indexOfProperty(name.constData()));
    QCOMPARE(property.metaType(), QMetaType::fromType<QString>());
    QVERIFY(property.isReadable());
    QTEST(property.isWritable(), "isWritable");
    QTEST(property.notifySignal().methodSignature(), "notifySignal");
}

void TestVLXmlElement::classInfo_registersElementForQml()
{
    const QMetaObject& type = VLXmlElement::staticMetaObject;
    QCOMPARE(type.className(), "Vidlets::VLXmlElement");
    const int index = type.indexOfClassInfo("QML.Element");
    QVERIFY(index >= type.classInfoOffset());
    QCOMPARE(type.classInfo(index).value(), "auto");
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
    QVERIFY(element.attribute(QStringLiteral("a")).isNull());
    QVERIFY(!element.hasAttribute(QStringLiteral("a")));
}

void TestVLXmlElement::attribute_isEmpty_whenSetToEmpty()
{
    VLXmlElement element;
    element.setAttribute(QStringLiteral("a"), QStringLiteral(""));
    QVERIFY(element.attribute(QStringLiteral("a")).isEmpty());
    QVERIFY(!element.attribute(QStringLiteral("a")).isNull());
    QVERIFY(element.hasAttribute(QStringLiteral("a")));
}

void TestVLXmlElement::attribute_isFoundByExactName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::newRow("same") << QStringLiteral("title") << true;
    QTest::newRow("other case") << QStringLiteral("Title") << false;
    QTest::newRow("beginning") << QStringLiteral("tit") << false;
    QTest::newRow("with blank") << QStringLiteral("title ") << false;
    QTest::newRow("empty") << QString() << false;
}

void TestVLXmlElement::attribute_isFoundByExactName()
{
    VLXmlElement element;
    element.setAttribute(QStringLiteral("title"), QStringLiteral("value"));
    QFETCH(QString, name);
    QFETCH(bool, found);
    QCOMPARE(element.hasAttribute(name), found);
    QCOMPARE(element.attribute(name), found ? QStringLiteral("value") : QString());
}

void TestVLXmlElement::setAttribute_replacesValue()
{
    VLXmlElement element;
    element.setAttribute(QStringLiteral("a"), QStringLiteral("1"));
    element.setAttribute(QStringLiteral("a"), QStringLiteral("2"));
    QCOMPARE(element.attribute(QStringLiteral("a")), QStringLiteral("2"));
    QCOMPARE(element.attributeNames(), QList<QString>{QStringLiteral("a")});
}

void TestVLXmlElement::setAttribute_emitsNothing()
{
    VLXmlElement element;
    const QSignalSpy tagName(&element, &VLXmlElement::tagNameChanged);
    const QSignalSpy tagNameSpace(&element, &VLXmlElement::tagNameSpaceChanged);
    const QSignalSpy content(&element, &VLXmlElement::contentChanged);
    element.setAttribute(QStringLiteral("a"), QStringLiteral("1"));
    QCOMPARE(tagName.count() + tagNameSpace.count() + content.count(), 0);
}

void TestVLXmlElement::attributeNames_areSorted()
{
    VLXmlElement element;
    for (const char* name : {"b", "a", "B", "a1"})
        element.setAttribute(QString::fromLatin1(name), QString());
    QCOMPARE(element.attributeNames(),
             (QList<QString>{QStringLiteral("B"), QStringLiteral("a"), QStringLiteral("a1"),
                             QStringLiteral("b")}));
}

void TestVLXmlElement::attributeNames_areEmpty_withoutAttributes()
{
    const VLXmlElement element;
    QCOMPARE(element.attributeNames(), QList<QString>());
}

void TestVLXmlElement::tagName_isObjectName()
{
    VLXmlElement element;
    element.setTagName(QStringLiteral("p:title"));
    QCOMPARE(element.objectName(), QStringLiteral("p:title"));
    element.setObjectName(QStringLiteral("text"));
    QCOMPARE(element.getTagName(), QStringLiteral("text"));
}

void TestVLXmlElement::setTagName_emits_alsoWhenUnchanged()
{
    VLXmlElement element;
    const QSignalSpy spy(&element, &VLXmlElement::tagNameChanged);
    element.setTagName(QStringLiteral("title"));
    element.setTagName(QStringLiteral("title"));
    QCOMPARE(spy.count(), 2);
    QCOMPARE(element.getTagName(), QStringLiteral("title"));
}

void TestVLXmlElement::setTagNameSpace_emits_alsoWhenUnchanged()
{
    VLXmlElement element;
    const QSignalSpy spy(&element, &VLXmlElement::tagNameSpaceChanged);
    element.setTagNameSpace(QStringLiteral("urn:example"));
    element.setTagNameSpace(QStringLiteral("urn:example"));
    QCOMPARE(spy.count(), 2);
    QCOMPARE(element.getTagNameSpace(), QStringLiteral("urn:example"));
}

void TestVLXmlElement::setContent_replacesAndEmits_alsoWhenUnchanged()
{
    VLXmlElement element;
    element.appendContent(QStringLiteral("old"));
    const QSignalSpy spy(&element, &VLXmlElement::contentChanged);
    element.setContent(QStringLiteral("new"));
    element.setContent(QStringLiteral("new"));
    QCOMPARE(spy.count(), 2);
    QCOMPARE(element.content(), QStringLiteral("new"));
}

void TestVLXmlElement::appendContent_joinsWithoutSeparatorAndEmitsEachTime()
{
    VLXmlElement element;
    QStringList seen;
    connect(&element, &VLXmlElement::contentChanged, this,
            [&element, &seen] { seen += element.content(); });
    element.appendContent(QStringLiteral(" one\n"));
    element.appendContent(QStringLiteral("two "));
    QCOMPARE(seen, (QStringList{QStringLiteral(" one\n"), QStringLiteral(" one\ntwo ")}));
}

void TestVLXmlElement::contentProperty_isReadOnly()
{
    VLXmlElement element;
    element.setContent(QStringLiteral("text"));
    QVERIFY(!element.setProperty("content", QStringLiteral("other")));
    QCOMPARE(element.property("content"), QVariant(QStringLiteral("text")));
}

void TestVLXmlElement::tagNameProperties_areWritable()
{
    VLXmlElement element;
    QVERIFY(element.setProperty("tagName", QStringLiteral("title")));
    QVERIFY(element.setProperty("tagNameSpace", QStringLiteral("urn:example")));
    QCOMPARE(element.getTagName(), QStringLiteral("title"));
    QCOMPARE(element.getTagNameSpace(), QStringLiteral("urn:example"));
    QCOMPARE(element.property("tagName"), QVariant(QStringLiteral("title")));
    QCOMPARE(element.property("tagNameSpace"), QVariant(QStringLiteral("urn:example")));
}

void TestVLXmlElement::childElement_findsDirectChild()
{
    VLXmlElement root;
    addChild(&root, QStringLiteral("other"));
    VLXmlElement* wanted = addChild(&root, QStringLiteral("wanted"));
    addChild(&root, QStringLiteral("wanted"));
    QCOMPARE(root.childElement(QStringLiteral("wanted")), wanted);
}

void TestVLXmlElement::childElement_findsGrandchild_whenNoChildHasTheName()
{
    VLXmlElement root;
    VLXmlElement* wanted =
        addChild(addChild(&root, QStringLiteral("child")), QStringLiteral("wanted"));
    QCOMPARE(root.childElement(QStringLiteral("wanted")), wanted);
}

void TestVLXmlElement::childElement_prefersChildOverEarlierGrandchild()
{
    VLXmlElement root;
    addChild(addChild(&root, QStringLiteral("child")), QStringLiteral("wanted"));
    VLXmlElement* wanted = addChild(&root, QStringLiteral("wanted"));
    QCOMPARE(root.childElement(QStringLiteral("wanted")), wanted);
}

void TestVLXmlElement::childElement_searchesSubtreesInTurn()
{
    VLXmlElement root;
    VLXmlElement* first = addChild(&root, QStringLiteral("child"));
    VLXmlElement* wanted =
        addChild(addChild(first, QStringLiteral("deeper")), QStringLiteral("wanted"));
    addChild(addChild(&root, QStringLiteral("child")), QStringLiteral("wanted"));
    QCOMPARE(root.childElement(QStringLiteral("wanted")), wanted);
}

void TestVLXmlElement::childElement_isNull_whenNothingMatches()
{
    VLXmlElement root;
    root.setTagName(QStringLiteral("wanted"));
    addChild(&root, QStringLiteral("child"));
    QVERIFY(!root.childElement(QStringLiteral("wanted")));
}

void TestVLXmlElement::childElement_isCaseSensitive()
{
    VLXmlElement root;
    addChild(&root, QStringLiteral("Wanted"));
    QVERIFY(!root.childElement(QStringLiteral("wanted")));
}

void TestVLXmlElement::childElement_passesOverOtherObjects()
{
    VLXmlElement root;
    QObject other(&root);
    other.setObjectName(QStringLiteral("wanted"));
    QVERIFY(!root.childElement(QStringLiteral("wanted")));
    VLXmlElement* wanted = addChild(&other, QStringLiteral("wanted"));
    QCOMPARE(root.childElement(QStringLiteral("wanted")), wanted);
}

void TestVLXmlElement::childElementList_givesNestedMatchesInDocumentOrder()
{
    VLXmlElement root;
    QObject* first = addChild(&root, QStringLiteral("item"));
    QObject* nested = addChild(first, QStringLiteral("item"));
    QObject* deep = addChild(addChild(&root, QStringLiteral("group")), QStringLiteral("item"));
    QObject* last = addChild(&root, QStringLiteral("item"));
    QCOMPARE(root.childElementList(QStringLiteral("item")),
             (QList<QObject*>{first, nested, deep, last}));
}

void TestVLXmlElement::childElementList_givesAllDescendants_whenNameIsEmpty_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << QStringLiteral("");
}

void TestVLXmlElement::childElementList_givesAllDescendants_whenNameIsEmpty()
{
    VLXmlElement root;
    QObject* child = addChild(&root, QStringLiteral("child"));
    QObject* grandchild = addChild(child, QStringLiteral("grandchild"));
    QObject* second = addChild(&root, QStringLiteral("second"));
    QFETCH(QString, name);
    QCOMPARE(root.childElementList(name), (QList<QObject*>{child, grandchild, second}));
}

void TestVLXmlElement::childElementList_includesOtherObjects()
{
    VLXmlElement root;
    QObject other(&root);
    other.setObjectName(QStringLiteral("item"));
    QCOMPARE(root.childElementList(QStringLiteral("item")), QList<QObject*>{&other});
    QCOMPARE(root.childElementList(QString()), QList<QObject*>{&other});
}

void TestVLXmlElement::childElementList_isEmpty_whenNothingMatches()
{
    VLXmlElement root;
    addChild(&root, QStringLiteral("Item"));
    QCOMPARE(root.childElementList(QStringLiteral("item")), QList<QObject*>());
}

void TestVLXmlElement::toXml_writesLeafOnOneLineWithoutText()
{
    VLXmlElement element;
    element.setTagName(QStringLiteral("title"));
    element.setContent(QStringLiteral("some text"));
    QCOMPARE(element.toXml(), QStringLiteral("<title/>"));
}

void TestVLXmlElement::toXml_sortsAttributes()
{
    QXmlStreamAttributes attributes;
    attributes.append(QStringLiteral("b"), QStringLiteral("1"));
    attributes.append(QStringLiteral("a"), QStringLiteral("2"));
    VLXmlElement element(nullptr, attributes);
    element.setTagName(QStringLiteral("tag"));
    QCOMPARE(element.toXml(), QStringLiteral("<tag a=\"2\" b=\"1\"/>"));
}

void TestVLXmlElement::toXml_indentsByTwo_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0 << QStringLiteral("<a>\n  <b>\n    <c/>\n  </b>\n</a>");
    QTest::newRow("3") << 3 << QStringLiteral("   <a>\n     <b>\n       <c/>\n     </b>\n   </a>");
}

void TestVLXmlElement::toXml_indentsByTwo()
{
    VLXmlElement root;
    root.setTagName(QStringLiteral("a"));
    addChild(addChild(&root, QStringLiteral("b")), QStringLiteral("c"));
    QFETCH(int, index);
    QTEST(root.toXml(index), "text");
    if (index == 0)
        QTEST(root.toXml(), "text");
}

void TestVLXmlElement::toXml_writesChildrenInOrder()
{
    VLXmlElement root;
    root.setTagName(QStringLiteral("root"));
    addChild(&root, QStringLiteral("z"));
    addChild(&root, QStringLiteral("a"))->setAttribute(QStringLiteral("n"), QStringLiteral("1"));
    QCOMPARE(root.toXml(), QStringLiteral("<root>\n  <z/>\n  <a n=\"1\"/>\n</root>"));
}

void TestVLXmlElement::toXml_leavesOutNamespace()
{
    VLXmlElement element;
    element.setTagName(QStringLiteral("p:tag"));
    element.setTagNameSpace(QStringLiteral("urn:example"));
    QCOMPARE(element.toXml(), QStringLiteral("<p:tag/>"));
}

void TestVLXmlElement::toXml_passesOverOtherObjects()
{
    VLXmlElement root;
    root.setTagName(QStringLiteral("root"));
    QObject other(&root);
    addChild(&other, QStringLiteral("hidden"));
    QCOMPARE(root.toXml(), QStringLiteral("<root/>"));
}

void TestVLXmlElement::toXml_escapesNothing()
{
    VLXmlElement element;
    element.setTagName(QStringLiteral("tag"));
    element.setAttribute(QStringLiteral("a"), QStringLiteral("\"<&>'\n"));
    QCOMPARE(element.toXml(), QStringLiteral("<tag a=\"\"<&>'\n\"/>"));
}

void TestVLXmlElement::toXml_fillsPlaceMarkersInNamesAndValues_data()
{
    QTest::addColumn<QString>("tagName");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("attribute name, by its value")
        << QStringLiteral("tag") << QStringLiteral("a%2") << QStringLiteral("v")
        << QStringLiteral("<tag av=\"v\"/>");
    QTest::newRow("value, by the closing mark")
        << QStringLiteral("tag") << QStringLiteral("a") << QStringLiteral("50%4")
        << QStringLiteral("<tag a=\"50/\"/>");
    QTest::newRow("value with the lowest marker, which alone is filled")
        << QStringLiteral("tag") << QStringLiteral("a") << QStringLiteral("%1")
        << QStringLiteral("<tag a=\"/\"%4>");
    QTest::newRow("value with a higher marker, which stays")
        << QStringLiteral("tag") << QStringLiteral("a") << QStringLiteral("%5")
        << QStringLiteral("<tag a=\"%5\"/>");
    QTest::newRow("tag name, by the attributes")
        << QStringLiteral("t%3") << QStringLiteral("a") << QStringLiteral("v")
        << QStringLiteral("<t a=\"v\" a=\"v\"/>");
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
    root.setTagName(QStringLiteral("t%4"));
    addChild(&root, QStringLiteral("c"));
    // The closing mark of an element with children is empty; the closing tag has no fourth value.
    QCOMPARE(root.toXml(), QStringLiteral("<t>\n  <c/>\n</t%4>"));
}

void TestVLXmlElement::script_readsElement_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QVariant>("result");
    const auto row = [](const char* name, const char* script, const QVariant& result) {
        QTest::newRow(name) << QString::fromLatin1(script) << result;
    };
    row("tag name", "element.tagName", QStringLiteral("tip"));
    row("content", "element.content", QStringLiteral("text"));
    row("attribute", "element.attribute('a')", QStringLiteral("1"));
    row("missing attribute", "element.attribute('b')", QStringLiteral(""));
    row("hasAttribute", "element.hasAttribute('a')", true);
    row("child", "element.childElement('child').tagName", QStringLiteral("child"));
    row("missing child", "element.childElement('missing') === null", true);
    row("list", "element.childElementList('').length", 1);
    row("toXml", "element.childElement('child').toXml()", QStringLiteral("<child/>"));
    row("toXml with indent", "element.childElement('child').toXml(1)", QStringLiteral(" <child/>"));
}

void TestVLXmlElement::script_readsElement()
{
    VLXmlElement element;
    element.setTagName(QStringLiteral("tip"));
    element.setContent(QStringLiteral("text"));
    element.setAttribute(QStringLiteral("a"), QStringLiteral("1"));
    addChild(&element, QStringLiteral("child"));
    const auto engine = engineFor(&element);
    QFETCH(QString, script);
    QTEST(engine->evaluate(script).toVariant(), "result");
}

void TestVLXmlElement::script_cannotWriteContent()
{
    VLXmlElement element;
    element.setContent(QStringLiteral("text"));
    const auto engine = engineFor(&element);
    const QJSValue result =
        engine->evaluate(QStringLiteral("'use strict'; element.content = 'other'"));
    QVERIFY(result.isError());
    QCOMPARE(element.content(), QStringLiteral("text"));
}

void TestVLXmlElement::script_appendsContent()
{
    VLXmlElement element;
    element.setContent(QStringLiteral("one"));
    const auto engine = engineFor(&element);
    QVERIFY(!engine->evaluate(QStringLiteral("element.appendContent('two')")).isError());
    QCOMPARE(element.content(), QStringLiteral("onetwo"));
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
    const QJSValue kind = engine->evaluate(QStringLiteral("typeof element.%1").arg(function));
    QCOMPARE(kind.toString(), QStringLiteral("undefined"));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLXmlElement>(argc, argv);
}

#include "tst_vlxmlelement.moc"
