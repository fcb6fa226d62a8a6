// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"
#include "VirtualTable.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>
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

} // namespace

/**
 * The order of declarations is a promise: hosts that were built against an older library find
 * virtual operations, signals and properties by their number.
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

    QTest::newRow("VLVideoFrame") << SlotNumbers{kLastSlotOfDestructor,
                                                 virtualSlot(&VLVideoFrame::devType),
                                                 virtualSlot(&VLVideoFrame::paintEngine)};
    QTest::newRow("VLVideoFrameCache") << SlotNumbers{
        virtualSlot(&OpenFrameCache::disconnectNotify), virtualSlot(&VLVideoFrameCache::addFrame),
        virtualSlot(&VLVideoFrameCache::frame), virtualSlot(&VLVideoFrameCache::length)};
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
    QTest::newRow("VLVideoSourceChange")
        << SlotNumbers{kLastSlotOfDestructor, virtualSlot(&VLVideoSourceChange::changeMask),
                       virtualSlot(&VLVideoSourceChange::apply)};
    QTest::newRow("VLVideoSourceSourceChange")
        << SlotNumbers{kLastSlotOfDestructor, virtualSlot(&::VLVideoSourceSourceChange::changeMask),
                       virtualSlot(&::VLVideoSourceSourceChange::apply)};
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
                               << QByteArrayList{"settingDidChange(VLContextKey)",
                                                 "settingWillChange(VLContextKey)"};
    QTest::newRow("VLInterface") << &VLInterface::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLManager") << &VLManager::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLVideoSource")
        << &VLVideoSource::staticMetaObject
        << QByteArrayList{"frameReady()",         "sourceChanged()", "streamEnded()",
                          "sourceLoaded()",       "actionChanged()", "positionChanged()",
                          "loadProgressChanged()"};
    QTest::newRow("VLVideoSourceFFMPEG")
        << &VLVideoSourceFFMPEG::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLIndex") << &VLIndex::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLXmlElement") << &VLXmlElement::staticMetaObject
                                  << QByteArrayList{"tagNameChanged()",
                                                    "tagNameSpaceChanged()",
                                                    "contentChanged()",
                                                    "childElement(QString)",
                                                    "childElementList(QString)",
                                                    "attribute(QString)",
                                                    "hasAttribute(QString)",
                                                    "appendContent(QString)",
                                                    "toXml(int)",
                                                    "toXml()"};
    QTest::newRow("VLView") << &VLView::staticMetaObject
                            << QByteArrayList{"stayOpenChanged()",
                                              "reservedChanged()",
                                              "contentChanged()",
                                              "contentSizeChanged()",
                                              "documentationAvailableChanged()",
                                              "resourceDirectoryChanged()",
                                              "handleWarnings(QList<QQmlError>)",
                                              "statusHasChanged(QQuickView::Status)",
                                              "loadQML(QString)",
                                              "resetState()",
                                              "managerContextSettingDidChange(Vidlets::contextKey)",
                                              "setItemCursor(QObject*,QString,QString)",
                                              "debugLog(QString)",
                                              "openExternalResource(QString)",
                                              "interpolate(QString)",
                                              "setOverrideCursor(QString)",
                                              "restoreOverrideCursor()",
                                              "translate(QString,QString)",
                                              "findResource(QString)",
                                              "getScaledSize(int)"};
    QTest::newRow("VLWidget")
        << &VLWidget::staticMetaObject
        << QByteArrayList{"showWithContent(QObject*,QPoint,Vidlets::VLXmlElement*,QString)",
                          "reposition()",
                          "hideAnimated()",
                          "hideAnimationFinished()",
                          "showAnimated()",
                          "setTimer()",
                          "contentReservedChanged()",
                          "contentResized()",
                          "findVisibleGeometry(QRect,bool*)",
                          "findVisibleGeometry(QRect)",
                          "refWidgetDestroyed(QObject*)"};
}

void TestDeclarationOrder::methods_areInDeclaredOrder()
{
    QFETCH(const QMetaObject*, type);
    QByteArrayList signatures;
    for (int i = type->methodOffset(); i < type->methodCount(); ++i)
        signatures += type->method(i).methodSignature();
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
    QTest::newRow("VLManager") << &VLManager::staticMetaObject << QByteArrayList{};
    QTest::newRow("VLWidget") << &VLWidget::staticMetaObject << QByteArrayList{};
}

void TestDeclarationOrder::properties_areInDeclaredOrder()
{
    QFETCH(const QMetaObject*, type);
    QByteArrayList properties;
    for (int i = type->propertyOffset(); i < type->propertyCount(); ++i) {
        const QMetaProperty property = type->property(i);
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

void TestDeclarationOrder::qmlElement_isMarkedInClassInfo()
{
    const QMetaObject& type = VLXmlElement::staticMetaObject;
    const int index = type.indexOfClassInfo("QML.Element");
    QVERIFY(index >= 0);
    QCOMPARE(type.classInfo(index).value(), "auto");
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestDeclarationOrder>(argc, argv);
}

#include "tst_declarationorder.moc"
