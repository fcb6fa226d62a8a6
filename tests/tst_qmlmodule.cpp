// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include <Vidlets/VLStyledRectangleComponent.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLXmlElement.h>
#include <Vidlets/VidletsQmlModule.h>

#include <QDirIterator>
#include <QFile>
#include <QLibrary>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QResource>
#include <QtQml/qqml.h>

#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

QString qmldirPath()
{
    return u":/com.larkspan/vidlets/imports/com/larkspan/vidlets/qml/qmldir"_s;
}

int moduleTypeId(const char* qmlName)
{
    return qmlTypeId("com.larkspan.vidlets.qml", 1, 0, qmlName);
}

/// Makes the object that @p qml describes, in an engine of its own; null, with the reason in
/// @p error, where that fails.
struct Scene
{
    explicit Scene(const QByteArray& qml)
    {
        QQmlComponent component(&engine);
        component.setData(qml, QUrl(u"scene.qml"_s));
        error = component.errorString();
        if (component.isReady())
            object.reset(component.create());
    }

    QQmlEngine engine;
    std::unique_ptr<QObject> object;
    QString error;
};

} // namespace

class TestQmlModule : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void everyEngine_findsTypes_withoutAnyCall_data();
    void everyEngine_findsTypes_withoutAnyCall();
    void scene_usesTypesTogether();
    void stateNames_areKnown_whereTheyStandAloneBehindTheColon();
    void import_fails_whenVersionIsAnother_data();
    void import_fails_whenVersionIsAnother();
    void otherClasses_areNoTypes_data();
    void otherClasses_areNoTypes();
    void element_isMadeWithoutAttributesAndParent();
    void types_areRegisteredInOrder();
    void registrationFunction_isExported();
    void qmldir_isStoredByteForByte();
    void qmldir_isNotCompressed();
    void resource_holdsOneFile();
};

void TestQmlModule::everyEngine_findsTypes_withoutAnyCall_data()
{
    QTest::addColumn<QByteArray>("import");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<const QMetaObject*>("metaObject");

    for (const char* import :
         {"import com.larkspan.vidlets.qml 1.0", "import com.larkspan.vidlets.qml"}) {
        const auto row = [import](const char* type, const QMetaObject* metaObject) {
            QTest::addRow("%s, %s", import, type)
                << QByteArray(import) << QByteArray(type) << metaObject;
        };
        row("VLStyledRectangle", &VLStyledRectangleComponent::staticMetaObject);
        row("VLVideoComponent", &VLVideoComponent::staticMetaObject);
        row("VLXmlElement", &VLXmlElement::staticMetaObject);
    }
}

void TestQmlModule::everyEngine_findsTypes_withoutAnyCall()
{
    QFETCH(QByteArray, import);
    QFETCH(QByteArray, type);
    QFETCH(const QMetaObject*, metaObject);

    const Scene scene(import + "\n" + type + " {}\n");

    QVERIFY2(scene.object, qPrintable(scene.error));
    QVERIFY(metaObject->cast(scene.object.get()));
    QVERIFY(!scene.object->parent());
}

void TestQmlModule::scene_usesTypesTogether()
{
    const Scene scene("import com.larkspan.vidlets.qml 1.0\n"
                      "VLStyledRectangle {\n"
                      "    width: 50; height: 20; toolTipStyle: true; element: \"PE_Frame\"\n"
                      "    property int kind: VLVideoComponent.playingState\n"
                      "    property string text: xml.content\n"
                      "    property VLXmlElement xml: VLXmlElement { tagName: \"tip\" }\n"
                      "    VLVideoComponent {\n"
                      "        scrubbing: true; state: VLVideoComponent.pausedState\n"
                      "    }\n"
                      "}\n");

    QVERIFY2(scene.object, qPrintable(scene.error));
    auto* rectangle = qobject_cast<VLStyledRectangleComponent*>(scene.object.get());
    QVERIFY(rectangle);
    QCOMPARE(rectangle->size(), QSizeF(50, 20));
    QVERIFY(rectangle->toolTipStyle());
    QCOMPARE(rectangle->element(), u"PE_Frame"_s);
    QCOMPARE(rectangle->property("kind"), QVariant(2));
    auto* xml = rectangle->property("xml").value<VLXmlElement*>();
    QVERIFY(xml);
    QCOMPARE(xml->getTagName(), u"tip"_s);
    QCOMPARE(rectangle->childItems().size(), 1);
    auto* video = qobject_cast<VLVideoComponent*>(rectangle->childItems().constFirst());
    QVERIFY(video);
    QVERIFY(video->isScrubbing());
}

void TestQmlModule::stateNames_areKnown_whereTheyStandAloneBehindTheColon()
{
    // They begin with a small letter: the compiler of QML sees to the first, scripts to the rest.
    const Scene scene("import QtQml 2.0\n"
                      "import com.larkspan.vidlets.qml 1.0\n"
                      "VLVideoComponent {\n"
                      "    state: VLVideoComponent.pausedState\n"
                      "    property int alone: VLVideoComponent.playingState\n"
                      "    property var untyped: VLVideoComponent.playingState\n"
                      "    property bool compared: state === VLVideoComponent.pausedState\n"
                      "    property bool inScript: called() === undefined\n"
                      "    function called() { return VLVideoComponent.playingState }\n"
                      "}\n");

    QVERIFY2(scene.object, qPrintable(scene.error));
    QCOMPARE(scene.object->property("alone"), QVariant(2));
    QVERIFY(!scene.object->property("untyped").isValid());
    QCOMPARE(scene.object->property("compared"), QVariant(false));
    QCOMPARE(scene.object->property("inScript"), QVariant(true));
}

void TestQmlModule::import_fails_whenVersionIsAnother_data()
{
    QTest::addColumn<QByteArray>("version");
    QTest::newRow("minor too high") << QByteArray("1.1");
    QTest::newRow("major too high") << QByteArray("2.0");
    QTest::newRow("major too low") << QByteArray("0.9");
}

void TestQmlModule::import_fails_whenVersionIsAnother()
{
    QFETCH(QByteArray, version);
    const Scene scene("import com.larkspan.vidlets.qml " + version + "\nVLStyledRectangle {}\n");
    QVERIFY(!scene.object);
    QVERIFY2(scene.error.contains(u"com.larkspan.vidlets.qml"_s), qPrintable(scene.error));
}

void TestQmlModule::otherClasses_areNoTypes_data()
{
    QTest::addColumn<QByteArray>("type");
    // The base of the items is known to the module, without a name.
    QTest::newRow("base of the items") << QByteArray("QQuickItem");
    QTest::newRow("its name elsewhere") << QByteArray("Item");
    QTest::newRow("class of the rectangle") << QByteArray("VLStyledRectangleComponent");
    QTest::newRow("view") << QByteArray("VLView");
    QTest::newRow("popup") << QByteArray("VLWidget");
    QTest::newRow("settings") << QByteArray("VLContext");
    QTest::newRow("source") << QByteArray("VLVideoSourceFFMPEG");
    QTest::newRow("controller") << QByteArray("VLVideoController");
}

void TestQmlModule::otherClasses_areNoTypes()
{
    QFETCH(QByteArray, type);
    const Scene scene("import com.larkspan.vidlets.qml 1.0\n" + type + " {}\n");
    QVERIFY(!scene.object);
    QVERIFY2(scene.error.contains(QString::fromLatin1(type) + u" is not a type"_s),
             qPrintable(scene.error));
    QCOMPARE(moduleTypeId(type.constData()), -1);
}

void TestQmlModule::element_isMadeWithoutAttributesAndParent()
{
    const Scene scene("import com.larkspan.vidlets.qml 1.0\nVLXmlElement {}\n");
    const auto* element = qobject_cast<VLXmlElement*>(scene.object.get());
    QVERIFY(element);
    QVERIFY(!element->parent());
    QVERIFY(element->attributeNames().isEmpty());
}

void TestQmlModule::types_areRegisteredInOrder()
{
    const int rectangle = moduleTypeId("VLStyledRectangle");
    const int video = moduleTypeId("VLVideoComponent");
    const int element = moduleTypeId("VLXmlElement");
    QVERIFY(rectangle >= 0);
    // The one without a name lies between.
    QCOMPARE(video, rectangle + 2);
    QCOMPARE(element, video + 1);
}

void TestQmlModule::registrationFunction_isExported()
{
    QLibrary library(u"VidletsSDbin"_s, 1);
    const QFunctionPointer function =
        library.resolve("_Z43qml_register_types_com_larkspan_vidlets_qmlv");
    QVERIFY2(function, qPrintable(library.errorString()));
    QVERIFY(function == &qml_register_types_com_larkspan_vidlets_qml);
}

void TestQmlModule::qmldir_isStoredByteForByte()
{
    QFile file(qmldirPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(),
             QByteArray("module com.larkspan.vidlets.qml\r\n"
                        "linktarget VidletsSDbinplugin\r\n"
                        "optional plugin VidletsSDbinplugin\r\n"
                        "classname com_larkspan_vidlets_qmlPlugin\r\n"
                        "typeinfo VidletsSDbin.qmltypes\r\n"
                        "prefer :/com.larkspan/vidlets/imports/com/larkspan/vidlets/qml/\r\n"
                        "\r\n"));
}

void TestQmlModule::qmldir_isNotCompressed()
{
    const QResource resource(qmldirPath());
    QVERIFY(resource.isValid());
    QCOMPARE(resource.compressionAlgorithm(), QResource::NoCompression);
    QCOMPARE(resource.size(), resource.uncompressedSize());
}

void TestQmlModule::resource_holdsOneFile()
{
    QStringList files;
    QDirIterator iterator(u":/com.larkspan"_s, QDir::Files | QDir::Hidden,
                          QDirIterator::Subdirectories);
    while (iterator.hasNext())
        files += iterator.next();
    QCOMPARE(files, QStringList{qmldirPath()});
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestQmlModule>(argc, argv);
}

#include "tst_qmlmodule.moc"
