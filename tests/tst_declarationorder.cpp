// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include "VirtualTable.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLStyledRectangleComponent.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoController.h>
#include <Vidlets/VLVideoFrameCache.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QMetaMethod>
#include <QMetaProperty>

using namespace Vidlets;

using SlotNumbers = QList<std::ptrdiff_t>;

namespace {

/// Opens protected operations, so that their places can be seen.
class OpenFrameCache : public VLVideoFrameCache
{
public:
    using VLVideoFrameCache::disconnectNotify;
};

class OpenVideoSource : public VLVideoSource
{
public:
    using VLVideoSource::loadSource;
    using VLVideoSource::run;
};

class OpenFFmpegSource : public VLVideoSourceFFMPEG
{
public:
    using VLVideoSourceFFMPEG::loadSource;
    using VLVideoSourceFFMPEG::run;
};

// A destructor takes two places.
constexpr std::ptrdiff_t kLastSlotOfDestructor = 1;

QByteArray kindOf(const QMetaMethod& method)
{
    const QByteArray access = method.access() == QMetaMethod::Private ? "private " : "";
    switch (method.methodType()) {
    case QMetaMethod::Signal:
        return access + "signal";
    case QMetaMethod::Slot:
        return access + "slot";
    default:
        return access + "method";
    }
}

void addVirtualOperationsOfVideo()
{
    QTest::newRow("VLVideoFrame") << SlotNumbers{kLastSlotOfDestructor,
                                                 virtualSlot(&VLVideoFrame::devType),
                                                 virtualSlot(&VLVideoFrame::paintEngine)};
    QTest::newRow("VLVideoFrameCache") << SlotNumbers{
        virtualSlot(&OpenFrameCache::disconnectNotify), virtualSlot(&VLVideoFrameCache::addFrame),
        virtualSlot(&VLVideoFrameCache::frame), virtualSlot(&VLVideoFrameCache::length)};
    QTest::newRow("VLVideoSourceChange")
        << SlotNumbers{kLastSlotOfDestructor, virtualSlot(&VLVideoSourceChange::changeMask),
                       virtualSlot(&VLVideoSourceChange::apply)};
    QTest::newRow("VLVideoSourceSourceChange")
        << SlotNumbers{kLastSlotOfDestructor, virtualSlot(&::VLVideoSourceSourceChange::changeMask),
                       virtualSlot(&::VLVideoSourceSourceChange::apply)};
}

void addVirtualOperationsOfSources()
{
    QTest::newRow("VLVideoSource") << SlotNumbers{virtualSlot(&OpenVideoSource::run),
                                                  virtualSlot(&VLVideoSource::close),
                                                  virtualSlot(&VLVideoSource::isOpen),
                                                  virtualSlot(&VLVideoSource::getTime),
                                                  virtualSlot(&VLVideoSource::changeSetAction),
                                                  virtualSlot(&VLVideoSource::changeSetPosition),
                                                  virtualSlot(&VLVideoSource::changeSetSource),
                                                  virtualSlot(&VLVideoSource::duration),
                                                  virtualSlot(&VLVideoSource::timeBase),
                                                  virtualSlot(&VLVideoSource::frameRate),
                                                  virtualSlot(&VLVideoSource::frameWidth),
                                                  virtualSlot(&VLVideoSource::frameHeight),
                                                  virtualSlot(&OpenVideoSource::loadSource)};
    QTest::newRow("VLVideoSourceFFMPEG")
        << SlotNumbers{virtualSlot(&OpenFFmpegSource::run),
                       virtualSlot(&VLVideoSourceFFMPEG::close),
                       virtualSlot(&VLVideoSourceFFMPEG::isOpen),
                       virtualSlot(&VLVideoSourceFFMPEG::getTime),
                       virtualSlot(&VLVideoSourceFFMPEG::changeSetAction),
                       virtualSlot(&VLVideoSourceFFMPEG::changeSetPosition),
                       virtualSlot(&VLVideoSourceFFMPEG::changeSetSource),
                       virtualSlot(&VLVideoSourceFFMPEG::duration),
                       virtualSlot(&VLVideoSourceFFMPEG::timeBase),
                       virtualSlot(&VLVideoSourceFFMPEG::frameRate),
                       virtualSlot(&VLVideoSourceFFMPEG::frameWidth),
                       virtualSlot(&VLVideoSourceFFMPEG::frameHeight),
                       virtualSlot(&OpenFFmpegSource::loadSource),
                       virtualSlot(&VLVideoSourceFFMPEG::position),
                       virtualSlot(&VLVideoSourceFFMPEG::progress)};
}

void addMethodsOfPopup()
{
    QTest::newRow("VLView") << &VLView::staticMetaObject
                            << QByteArrayList{
                                   "signal stayOpenChanged()",
                                   "signal reservedChanged()",
                                   "signal contentChanged()",
                                   "signal contentSizeChanged()",
                                   "signal documentationAvailableChanged()",
                                   "signal resourceDirectoryChanged()",
                                   "slot handleWarnings(QList<QQmlError>)",
                                   "slot statusHasChanged(QQuickView::Status)",
                                   "slot loadQML(QString)",
                                   "slot resetState()",
                                   "slot managerContextSettingDidChange(Vidlets::contextKey)",
                                   "method setItemCursor(QObject*,QString,QString)",
                                   "method debugLog(QString)",
                                   "method openExternalResource(QString)",
                                   "method interpolate(QString)",
                                   "method setOverrideCursor(QString)",
                                   "method restoreOverrideCursor()",
                                   "method translate(QString,QString)",
                                   "method findResource(QString)",
                                   "method getScaledSize(int)"};
    QTest::newRow("VLWidget")
        << &VLWidget::staticMetaObject
        << QByteArrayList{"slot showWithContent(QObject*,QPoint,Vidlets::VLXmlElement*,QString)",
                          "slot reposition()",
                          "slot hideAnimated()",
                          "slot hideAnimationFinished()",
                          "slot showAnimated()",
                          "slot setTimer()",
                          "slot contentReservedChanged()",
                          "slot contentResized()",
                          "slot findVisibleGeometry(QRect,bool*)",
                          "slot findVisibleGeometry(QRect)",
                          "private slot refWidgetDestroyed(QObject*)"};
}

void addMethodsOfThreads()
{
    QTest::newRow("VLVideoSource")
        << &VLVideoSource::staticMetaObject
        << QByteArrayList{"signal frameReady()",         "signal sourceChanged()",
                          "signal streamEnded()",        "signal sourceLoaded()",
                          "signal actionChanged()",      "signal positionChanged()",
                          "signal loadProgressChanged()"};
    QTest::newRow("VLVideoSourceFFMPEG")
        << &VLVideoSourceFFMPEG::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLVideoController")
        << &VLVideoController::staticMetaObject
        << QByteArrayList{"signal displayFrame()",    "signal stateChanged()",
                          "signal positionChanged()", "signal widthChanged()",
                          "signal heightChanged()",   "signal loadProgressChanged()",
                          "slot streamEnded()",       "slot sourceLoaded()"};
}

void addMethodsOfItems()
{
    QTest::newRow("VLStyledRectangleComponent")
        << &VLStyledRectangleComponent::staticMetaObject
        << QByteArrayList{"signal elementChanged()", "signal textColorChanged()",
                          "signal toolTipStyleChanged()"};
    QTest::newRow("VLVideoComponent") << &VLVideoComponent::staticMetaObject
                                      << QByteArrayList{"signal sourceChanged()",
                                                        "signal stateChanged()",
                                                        "signal positionChanged()",
                                                        "signal progressChanged()",
                                                        "signal heightChanged()",
                                                        "signal searchPathChanged()",
                                                        "signal scrubbingChanged()",
                                                        "signal contentHeightChanged()",
                                                        "signal contentWidthChanged()",
                                                        "signal loadProgressChanged()",
                                                        "slot frameReady()",
                                                        "slot play()",
                                                        "slot pause()",
                                                        "slot sourceChangedState()",
                                                        "slot rewindToStart()",
                                                        "slot controllerPositionChanged()"};
}

} // namespace

/**
 * The order of declarations is part of the interface: hosts that were built against an older
 * library find virtual operations, signals and properties by their number.
 */
class TestDeclarationOrder : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void virtualOperations_followEachOther_data();
    void virtualOperations_followEachOther();
    void methods_areInDeclaredOrder_data();
    void methods_areInDeclaredOrder();
    void properties_areInDeclaredOrder_data();
    void properties_areInDeclaredOrder();
    void constructors_areInDeclaredOrder();
    void baseClass_isFixed_data();
    void baseClass_isFixed();
    void qmlElement_isMarkedInClassInfo_data();
    void qmlElement_isMarkedInClassInfo();
};

void TestDeclarationOrder::virtualOperations_followEachOther_data()
{
    QTest::addColumn<SlotNumbers>("slotNumbers");

    QTest::newRow("VLInterface") << SlotNumbers{virtualSlot(&VLInterface::createWindow),
                                                virtualSlot(&VLInterface::keyForObject),
                                                virtualSlot(&VLInterface::openExternalResource),
                                                virtualSlot(&VLInterface::handleMessage),
                                                virtualSlot(&VLInterface::translateString),
                                                virtualSlot(&VLInterface::shortCutForObject)};
    QTest::newRow("VLIndex") << SlotNumbers{virtualSlot(&VLIndex::open),
                                            virtualSlot(&VLIndex::setup),
                                            virtualSlot(&VLIndex::clear),
                                            virtualSlot(&VLIndex::close),
                                            virtualSlot(&VLIndex::remove),
                                            virtualSlot(&VLIndex::retrieve),
                                            virtualSlot(&VLIndex::store),
                                            virtualSlot(&VLIndex::startUpdate),
                                            virtualSlot(&VLIndex::endUpdate),
                                            virtualSlot(&VLIndex::keys),
                                            virtualSlot(&VLIndex::indexControlFile)};
    addVirtualOperationsOfVideo();
    addVirtualOperationsOfSources();
}

void TestDeclarationOrder::virtualOperations_followEachOther()
{
    QFETCH(SlotNumbers, slotNumbers);
    for (qsizetype i = 1; i < slotNumbers.size(); ++i)
        QCOMPARE(slotNumbers.at(i), slotNumbers.at(i - 1) + 1);
}

void TestDeclarationOrder::methods_areInDeclaredOrder_data()
{
    QTest::addColumn<const QMetaObject*>("type");
    QTest::addColumn<QByteArrayList>("signatures");

    QTest::newRow("VLContext") << &VLContext::staticMetaObject
                               << QByteArrayList{"signal settingDidChange(VLContextKey)",
                                                 "signal settingWillChange(VLContextKey)"};
    QTest::newRow("VLInterface") << &VLInterface::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLManager") << &VLManager::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLIndex") << &VLIndex::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLXmlElement") << &VLXmlElement::staticMetaObject
                                  << QByteArrayList{"signal tagNameChanged()",
                                                    "signal tagNameSpaceChanged()",
                                                    "signal contentChanged()",
                                                    "method childElement(QString)",
                                                    "method childElementList(QString)",
                                                    "method attribute(QString)",
                                                    "method hasAttribute(QString)",
                                                    "method appendContent(QString)",
                                                    "method toXml(int)",
                                                    "method toXml()"};
    addMethodsOfPopup();
    addMethodsOfThreads();
    addMethodsOfItems();
}

void TestDeclarationOrder::methods_areInDeclaredOrder()
{
    QFETCH(const QMetaObject*, type);
    QByteArrayList signatures;
    for (int i = type->methodOffset(); i < type->methodCount(); ++i)
        signatures += kindOf(type->method(i)) + ' ' + type->method(i).methodSignature();
    QTEST(signatures, "signatures");
}

void TestDeclarationOrder::properties_areInDeclaredOrder_data()
{
    QTest::addColumn<const QMetaObject*>("type");
    QTest::addColumn<QByteArrayList>("properties");

    QTest::newRow("VLXmlElement") << &VLXmlElement::staticMetaObject
                                  << QByteArrayList{
                                         "QString tagName writable tagNameChanged",
                                         "QString tagNameSpace writable tagNameSpaceChanged",
                                         "QString content read-only contentChanged"};
    QTest::newRow("VLView")
        << &VLView::staticMetaObject
        << QByteArrayList{"bool stayOpen writable stayOpenChanged",
                          "bool reserved writable reservedChanged",
                          "Vidlets::VLXmlElement* content writable contentChanged",
                          "bool documentationAvailable read-only documentationAvailableChanged",
                          "QString resourceDirectory read-only "};
    QTest::newRow("VLVideoSource") << &VLVideoSource::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLVideoSourceFFMPEG")
        << &VLVideoSourceFFMPEG::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLVideoController") << &VLVideoController::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLIndex") << &VLIndex::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLManager") << &VLManager::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLWidget") << &VLWidget::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLStyledRectangleComponent")
        << &VLStyledRectangleComponent::staticMetaObject
        << QByteArrayList{"QString element writable elementChanged",
                          "QColor textColor read-only textColorChanged",
                          "bool toolTipStyle writable toolTipStyleChanged"};
    QTest::newRow("VLVideoComponent")
        << &VLVideoComponent::staticMetaObject
        << QByteArrayList{"QString source writable sourceChanged",
                          "Vidlets::VLVideoComponent::VideoState state writable stateChanged",
                          "qlonglong position writable positionChanged",
                          "double progress writable progressChanged",
                          "QString searchPath writable searchPathChanged",
                          "bool scrubbing writable scrubbingChanged",
                          "double contentHeight read-only contentHeightChanged",
                          "double contentWidth read-only contentWidthChanged",
                          "double loadProgress read-only loadProgressChanged"};
}

void TestDeclarationOrder::properties_areInDeclaredOrder()
{
    QFETCH(const QMetaObject*, type);
    QByteArrayList properties;
    for (int i = type->propertyOffset(); i < type->propertyCount(); ++i) {
        const QMetaProperty property = type->property(i);
        QVERIFY(property.isReadable() && property.isDesignable());
        QVERIFY(property.isScriptable() && property.isStored());
        properties += QByteArrayList{property.typeName(), property.name(),
                                     property.isWritable() ? "writable" : "read-only",
                                     property.notifySignal().name()}
                          .join(' ');
    }
    QTEST(properties, "properties");
}

void TestDeclarationOrder::constructors_areInDeclaredOrder()
{
    const QMetaObject& type = VLXmlElement::staticMetaObject;
    QByteArrayList signatures;
    for (int i = 0; i < type.constructorCount(); ++i)
        signatures += type.constructor(i).methodSignature();
    QCOMPARE(signatures,
             (QByteArrayList{"VLXmlElement(QObject*,QXmlStreamAttributes)",
                             "VLXmlElement(QObject*)", "VLXmlElement()"}));
}

void TestDeclarationOrder::baseClass_isFixed_data()
{
    QTest::addColumn<const QMetaObject*>("type");
    QTest::addColumn<const QMetaObject*>("base");
    QTest::newRow("VLIndex") << &VLIndex::staticMetaObject << &QObject::staticMetaObject;
    QTest::newRow("VLVideoController")
        << &VLVideoController::staticMetaObject << &QThread::staticMetaObject;
}

void TestDeclarationOrder::baseClass_isFixed()
{
    QFETCH(const QMetaObject*, type);
    // The numbers of a class go on where those of its base class end.
    QTEST(type->superClass(), "base");
}

void TestDeclarationOrder::qmlElement_isMarkedInClassInfo_data()
{
    QTest::addColumn<const QMetaObject*>("type");
    QTest::addColumn<QByteArray>("className");
    QTest::addColumn<QByteArray>("value");
    const auto row = [](const QMetaObject& type, const char* className, const char* value) {
        QTest::newRow(className) << &type << QByteArray(className) << QByteArray(value);
    };
    row(VLXmlElement::staticMetaObject, "Vidlets::VLXmlElement", "auto");
    row(VLVideoComponent::staticMetaObject, "Vidlets::VLVideoComponent", "auto");
    row(VLStyledRectangleComponent::staticMetaObject, "Vidlets::VLStyledRectangleComponent",
        "VLStyledRectangle");
}

void TestDeclarationOrder::qmlElement_isMarkedInClassInfo()
{
    QFETCH(const QMetaObject*, type);
    QTEST(QByteArray(type->className()), "className");
    const int index = type->indexOfClassInfo("QML.Element");
    QVERIFY(index >= type->classInfoOffset());
    QTEST(QByteArray(type->classInfo(index).value()), "value");
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestDeclarationOrder>(argc, argv);
}

#include "tst_declarationorder.moc"
