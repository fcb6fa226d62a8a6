// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLXmlElement.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMap>
#include <QMetaProperty>
#include <QPointer>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QRegularExpression>
#include <QResizeEvent>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QUrl>

#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

using Attributes = QMap<QString, QString>;

namespace {

/// A host that translates by putting text and context together.
class TranslatingInterface : public RecordingInterface
{
public:
    using RecordingInterface::RecordingInterface;

    QString translateString(const QString& text, const QString& context) override
    {
        return context + u'/' + text;
    }
};

QString tipsPackage()
{
    return u"tips.vidlets"_s;
}

/// A view with everything around it. All messages are recorded.
struct ViewSetup
{
    ViewSetup()
    {
        packages.writeTip(tipsPackage(), u"tips.xml"_s, u"k"_s);
    }

    VLView& build()
    {
        context.set(ckMessageLevel, VLMessageDebug);
        manager =
            std::make_unique<VLManager>(&host, context, QStringList{packages.dataPath()}, &index);
        host.recordedMessages.clear();
        view = std::make_unique<VLView>(manager.get(), nullptr);
        return *view;
    }
    /// Gives the view content of the package, below the root.
    VLXmlElement* setContent(const Attributes& attributes = {})
    {
        auto* content = new VLXmlElement(&root);
        setAttributes(content, attributes);
        content->setAttribute(u"VLPackagName"_s, u"tips"_s);
        view->setContent(content);
        return content;
    }
    static void setAttributes(VLXmlElement* element, const Attributes& attributes)
    {
        for (auto it = attributes.cbegin(); it != attributes.cend(); ++it)
            element->setAttribute(it.key(), it.value());
    }
    QString writeScene(const QString& name, const QByteArray& content)
    {
        return packages.write(tipsPackage() + u'/' + name, content);
    }
    QStringList messages() const
    {
        return host.messages(VLMessageDebug);
    }

    PackageBuilder packages;
    VLContext context{nullptr};
    /// Has a manager of its own, which stays idle.
    TranslatingInterface host{context};
    VLIndex index{nullptr, {}};
    std::unique_ptr<VLManager> manager;
    /// Above the content; outlives the view.
    VLXmlElement root;
    std::unique_ptr<VLView> view;
};

QByteArray plainScene()
{
    return "import QtQuick\n\nItem { width: 120; height: 80 }\n";
}

QString errorText(const QString& format, const QQmlError& error)
{
    return format.arg(QString::number(error.line()), QString::number(error.column()),
                      error.description());
}

QQmlError makeError(int line, int column, const QString& description)
{
    QQmlError error;
    error.setUrl(QUrl(u"file:///a/scene.qml"_s));
    error.setLine(line);
    error.setColumn(column);
    error.setDescription(description);
    return error;
}

/// Counts the events of one type that reach an object.
class EventCounter : public QObject
{
public:
    EventCounter(QObject* object, QEvent::Type type)
        : m_type(type)
    {
        object->installEventFilter(this);
    }

    bool eventFilter(QObject* /*object*/, QEvent* event) override
    {
        if (event->type() == m_type)
            ++count;
        return false;
    }

    int count = 0;

private:
    QEvent::Type m_type;
};

} // namespace

class TestVLView : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    // Hides that of the base.

    // Construction
    void constructor_setsInitialState();
    void constructor_makesFramelessWindow_thatFollowsTheScene();
    void constructor_takesParentWindow();
    void constructor_givesEngineNoNames();
    void constructor_connectsWarningsOfEngine();
    void constructor_doesNotConnectStatus();
    void constructor_doesNotConnectSettings();

    // Content and properties
    void content_hasMetaTypeOfElement();
    void setContent_replacesPointerAlone();
    void contentProperty_replacesPointerAlone();
    void destructor_deletesContent_butNothingAboveIt();
    void destructor_isHarmless_whenThereIsNoContent();
    void destructor_emptiesSceneBeforeContentGoes();
    void setStayOpen_emitsOnEveryCall();
    void setReserved_emitsOnChangeAlone();
    void packageRoot_isWorkingDirectory_byDefault();
    void setPackageRoot_storesAbsolutePath();
    void setPackageRoot_emitsNothing();
    void setViewPos_movesWindow();
    void documentationAvailable_followsSetting_data();
    void documentationAvailable_followsSetting();

    // Paths of the package
    void categoryPath_prefersElementToParentToSettingToDefault_data();
    void categoryPath_prefersElementToParentToSettingToDefault();
    void categoryPath_looksOneLevelUpOnly();
    void categoryPath_usesDefault_whenParentIsNoElement_data();
    void categoryPath_usesDefault_whenParentIsNoElement();
    void categoryPath_isNull_whenThereIsNoContent();
    void resourceDirectory_isCategoryByAttributeResource_data();
    void resourceDirectory_isCategoryByAttributeResource();
    void resourceDirectory_isEmpty_whenThereIsNoContent();
    void findComponent_returnsFirstCandidateThatExists();
    void findComponent_joinsRelativePath();
    void findComponent_findsDirectories_whenRelativePathIsEmpty();
    void findComponent_usesAbsoluteCategory();
    void findComponent_returnsCategory_whenNothingExists_data();
    void findComponent_returnsCategory_whenNothingExists();
    void findComponent_returnsAbsolutePath_whenCandidateIsRelative();
    void findComponent_returnsNull_whenThereIsNoContent();
    void findResource_findsFile_data();
    void findResource_findsFile();
    void findResource_returnsCategory_whenFileIsMissing();
    void uiRootFilePath_picksScene_data();
    void uiRootFilePath_picksScene();
    void uiRootFilePath_isRelativeDefault_whenPackageHasNoScene_data();
    void uiRootFilePath_isRelativeDefault_whenPackageHasNoScene();

    // The scene
    void loadQML_loadsFile();
    void loadQML_announcesSize_withoutEvent();
    void loadQML_loadsFile_whenPathHasSpecialCharacters();
    void loadQML_keepsScene_whenFileIsTheSame();
    void loadQML_replacesScene_whenFileIsAnother();
    void loadQML_keepsScene_whenFileIsMissing();
    void loadQML_reportsRelativePathAsGiven();
    void loadQML_dropsSceneAndStaysUsable_whenFileBreaks();
    void handleWarnings_reportsEachInOrder();
    void handleWarnings_reportsNothing_byDefault();
    void sceneWarning_isReported();
    void statusHasChanged_reportsErrorsOfView();
    void statusHasChanged_isSilent_whenStatusIsNoError_data();
    void statusHasChanged_isSilent_whenStatusIsNoError();
    void resetState_setsStateOfRootObject();
    void resetState_isHarmless_whenThereIsNoScene();
    void managerContextSettingDidChange_tellsOfDocumentationAlone_data();
    void managerContextSettingDidChange_tellsOfDocumentationAlone();
    void managerContextSettingDidChange_canBeInvokedByName();

    // Services for the scene
    void setItemCursor_mapsShape_data();
    void setItemCursor_mapsShape();
    void setItemCursor_unsetsCursor_whenShapeIsEmpty();
    void setItemCursor_doesNothing_whenObjectIsNoItem();
    void setOverrideCursor_mapsShape_data();
    void setOverrideCursor_mapsShape();
    void restoreOverrideCursor_undoesOne();
    void debugLog_sendsDebugMessage();
    void openExternalResource_asksHost();
    void interpolate_usesVariablesOfManager();
    void getScaledSize_usesScaleOfManager();
    void translate_asksHost();
    void translate_returnsText_whenThereIsNoInterface();
    void translate_returnsText_whenThereIsNoManager();
    void services_areHarmless_whenManagerIsGone();
    void scene_reachesAllOfTheView();

    // Size
    void resizeEvent_emitsContentSizeChanged();
    void resizeEvent_repaints();
    void resizeEvent_leavesBaseClassOut();
    void window_followsSizeOfScene();
};

void TestVLView::constructor_setsInitialState()
{
    ViewSetup setup;
    VLView& view = setup.build();
    QCOMPARE(view.manager(), setup.manager.get());
    QVERIFY(!view.content());
    QVERIFY(!std::as_const(view).content());
    QVERIFY(!view.stayOpen());
    QVERIFY(!view.reserved());
    QVERIFY(!view.parent());
    QVERIFY(view.source().isEmpty());
    QVERIFY(!view.rootObject());
    QVERIFY(setup.host.recordedMessages.isEmpty());
}

void TestVLView::constructor_makesFramelessWindow_thatFollowsTheScene()
{
    ViewSetup setup;
    const VLView& view = setup.build();
    QCOMPARE(int(view.flags()), 2048);
    QCOMPARE(view.resizeMode(), QQuickView::SizeViewToRootObject);
}

void TestVLView::constructor_takesParentWindow()
{
    ViewSetup setup;
    setup.build();
    QWindow window;
    const VLView child(setup.manager.get(), &window);
    QCOMPARE(static_cast<const QWindow&>(child).parent(), &window);
}

void TestVLView::constructor_givesEngineNoNames()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QStringList names{u"vidlet"_s, u"dataLocation"_s, u"vidletView"_s};
    for (const QString& name : names)
        QVERIFY(!view.rootContext()->contextProperty(name).isValid());
    QCOMPARE(view.engine()->importPathList(), QQmlEngine().importPathList());
}

void TestVLView::constructor_connectsWarningsOfEngine()
{
    ViewSetup setup;
    const VLView& view = setup.build();
    Q_EMIT view.engine()->warnings({makeError(3, 7, u"broken"_s)});
    QCOMPARE(setup.messages(), QStringList{u"QML Warning 3:7:broken"_s});
}

void TestVLView::constructor_doesNotConnectStatus()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QString scene = setup.writeScene(u"broken.qml"_s, "import QtQuick\nItem {");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"broken\\.qml:2:"_s));
    view.loadQML(scene);
    QCOMPARE(view.status(), QQuickView::Error);
    QVERIFY(setup.host.recordedMessages.isEmpty());
}

void TestVLView::constructor_doesNotConnectSettings()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QSignalSpy spy(&view, &VLView::documentationAvailableChanged);
    setup.manager->context().set(ckDocumentationEnabled, true);
    QCOMPARE(spy.count(), 0);
}

void TestVLView::content_hasMetaTypeOfElement()
{
    const QMetaObject& type = VLView::staticMetaObject;
    const QMetaProperty property = type.property(type.indexOfProperty("content"));
    QCOMPARE(property.metaType(), QMetaType::fromType<VLXmlElement*>());
}

void TestVLView::setContent_replacesPointerAlone()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QSignalSpy spy(&view, &VLView::contentChanged);
    const QPointer<VLXmlElement> old = setup.setContent();
    VLXmlElement* content = setup.setContent();
    QVERIFY(old);
    QCOMPARE(view.content(), content);
    QCOMPARE(std::as_const(view).content(), content);
    view.setContent(nullptr);
    QVERIFY(!view.content());
    QCOMPARE(spy.count(), 0);
}

void TestVLView::contentProperty_replacesPointerAlone()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QSignalSpy spy(&view, &VLView::contentChanged);
    const QPointer<VLXmlElement> old = setup.setContent();
    auto* content = new VLXmlElement(&setup.root);
    QVERIFY(view.setProperty("content", QVariant::fromValue(content)));
    QVERIFY(old);
    QCOMPARE(view.content(), content);
    QCOMPARE(view.property("content").value<VLXmlElement*>(), content);
    QCOMPARE(spy.count(), 0);
}

void TestVLView::destructor_deletesContent_butNothingAboveIt()
{
    ViewSetup setup;
    setup.build();
    auto* parent = new VLXmlElement(&setup.root);
    const QPointer<VLXmlElement> content = new VLXmlElement(parent);
    const QPointer<VLXmlElement> inside = new VLXmlElement(content);
    setup.view->setContent(content);
    setup.view.reset();
    QVERIFY(!content);
    QVERIFY(!inside);
    QCOMPARE(setup.root.children(), QObjectList{parent});
    QVERIFY(parent->children().isEmpty());
}

void TestVLView::destructor_isHarmless_whenThereIsNoContent()
{
    ViewSetup setup;
    const QPointer<VLView> view = &setup.build();
    setup.view.reset();
    QVERIFY(!view);
    QVERIFY(setup.host.recordedMessages.isEmpty());
}

void TestVLView::destructor_emptiesSceneBeforeContentGoes()
{
    ViewSetup setup;
    VLView& view = setup.build();
    VLXmlElement* content = setup.setContent({{u"title"_s, u"A tip"_s}});
    view.rootContext()->setContextProperty(u"vidlet"_s, content);
    view.rootContext()->setContextProperty(u"vidletView"_s, &view);
    view.loadQML(setup.writeScene(u"scene.qml"_s,
                                  "import QtQuick\nItem {\n"
                                  "    property string title: vidlet.attribute(\"title\")\n"
                                  "    Component.onDestruction: vidletView.debugLog(\"end of \" + "
                                  "vidlet.attribute(\"title\"))\n"
                                  "}\n"));
    QVERIFY(view.rootObject());
    connect(content, &QObject::destroyed, this,
            [&setup] { setup.host.handleMessage(VLMessageDebug, u"content gone"_s); });

    setup.view.reset();

    QCOMPARE(setup.messages(), (QStringList{u"end of A tip"_s, u"content gone"_s}));
}

void TestVLView::setStayOpen_emitsOnEveryCall()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QSignalSpy spy(&view, &VLView::stayOpenChanged);
    view.setStayOpen(true);
    view.setStayOpen(true);
    QVERIFY(view.stayOpen());
    QCOMPARE(spy.count(), 2);
    view.setStayOpen(false);
    view.setStayOpen(false);
    QVERIFY(!view.stayOpen());
    QCOMPARE(spy.count(), 4);
}

void TestVLView::setReserved_emitsOnChangeAlone()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QSignalSpy spy(&view, &VLView::reservedChanged);
    view.setReserved(false);
    QCOMPARE(spy.count(), 0);
    view.setReserved(true);
    view.setReserved(true);
    QVERIFY(view.reserved());
    QCOMPARE(spy.count(), 1);
    view.setReserved(false);
    QVERIFY(!view.reserved());
    QCOMPARE(spy.count(), 2);
}

void TestVLView::packageRoot_isWorkingDirectory_byDefault()
{
    ViewSetup setup;
    QCOMPARE(setup.build().packageRoot(), QDir(QString()));
    QCOMPARE(setup.view->packageRoot().absolutePath(), QDir::currentPath());
}

void TestVLView::setPackageRoot_storesAbsolutePath()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.setPackageRoot(QDir(u"some/package.vidlets"_s));
    QCOMPARE(view.packageRoot().path(), QDir::currentPath() + u"/some/package.vidlets"_s);

    // Absolute, but not canonical: a link stays one.
    const QString link = setup.packages.path(u"link"_s);
    QVERIFY(QFile::link(setup.packages.path(tipsPackage()), link));
    view.setPackageRoot(QDir(link));
    QCOMPARE(view.packageRoot().path(), link);
}

void TestVLView::setPackageRoot_emitsNothing()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QSignalSpy spy(&view, &VLView::resourceDirectoryChanged);
    setup.setContent({{u"resource"_s, u"one"_s}});
    view.setPackageRoot(QDir(setup.packages.path(tipsPackage())));
    setup.setContent({{u"resource"_s, u"two"_s}});
    setup.manager->context().set(ckResourceDirectory, u"three"_s);
    QCOMPARE(spy.count(), 0);
}

void TestVLView::setViewPos_movesWindow()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.setViewPos(31, 47);
    QCOMPARE(view.position(), QPoint(31, 47));
}

void TestVLView::documentationAvailable_followsSetting_data()
{
    QTest::addColumn<bool>("isSet");
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<bool>("available");
    QTest::newRow("not set") << false << QVariant() << false;
    QTest::newRow("invalid") << true << QVariant() << false;
    QTest::newRow("false") << true << QVariant(false) << false;
    QTest::newRow("true") << true << QVariant(true) << true;
    QTest::newRow("number") << true << QVariant(1) << true;
}

void TestVLView::documentationAvailable_followsSetting()
{
    QFETCH(bool, isSet);
    QFETCH(QVariant, setting);
    QFETCH(bool, available);
    ViewSetup setup;
    VLView& view = setup.build();
    if (isSet)
        setup.manager->context().set(ckDocumentationEnabled, setting);
    QCOMPARE(view.documentationAvailable(), available);
    QCOMPARE(view.property("documentationAvailable"), QVariant(available));
}

void TestVLView::categoryPath_prefersElementToParentToSettingToDefault_data()
{
    // An invalid value means that there is none.
    QTest::addColumn<QVariant>("element");
    QTest::addColumn<QVariant>("parent");
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<QString>("expected");
    const QVariant none;
    const QVariant empty{u""_s};
    const QVariant element{u"of the element"_s};
    const QVariant parent{u"of the parent"_s};
    const QVariant setting{u"of the setting"_s};
    const auto row = [](const char* name, const QVariant& inElement, const QVariant& inParent,
                        const QVariant& inSettings, const QVariant& expected) {
        QTest::newRow(name) << inElement << inParent << inSettings << expected.toString();
    };
    row("all", element, parent, setting, element);
    row("element alone", element, none, none, element);
    row("no element", none, parent, setting, parent);
    row("parent alone", none, parent, none, parent);
    row("setting alone", none, none, setting, setting);
    row("none", none, none, none, u"default"_s);
    row("element empty", empty, parent, setting, setting);
    row("element empty, no setting", empty, parent, none, u"default"_s);
    row("parent empty", none, empty, setting, setting);
    row("parent empty, no setting", none, empty, none, u"default"_s);
    row("setting empty", none, none, empty, empty);
    row("setting a number", none, none, 5, u"5"_s);
}

void TestVLView::categoryPath_prefersElementToParentToSettingToDefault()
{
    QFETCH(QVariant, element);
    QFETCH(QVariant, parent);
    QFETCH(QVariant, setting);
    const QString name = u"ui"_s;
    ViewSetup setup;
    VLView& view = setup.build();
    VLXmlElement* content = setup.setContent();
    if (element.isValid())
        content->setAttribute(name, element.toString());
    if (parent.isValid())
        setup.root.setAttribute(name, parent.toString());
    if (setting.isValid())
        setup.manager->context().set(ckUiFile, setting);
    QTEST(view.categoryPath(name, u"default"_s, ckUiFile), "expected");
}

void TestVLView::categoryPath_looksOneLevelUpOnly()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.root.setAttribute(u"ui"_s, u"of the root"_s);
    auto* between = new VLXmlElement(&setup.root);
    view.setContent(new VLXmlElement(between));
    QCOMPARE(view.categoryPath(u"ui"_s, u"default"_s, ckUiFile), u"default"_s);
}

void TestVLView::categoryPath_usesDefault_whenParentIsNoElement_data()
{
    QTest::addColumn<bool>("hasParent");
    QTest::newRow("plain object as the parent") << true;
    QTest::newRow("no parent") << false;
}

void TestVLView::categoryPath_usesDefault_whenParentIsNoElement()
{
    QFETCH(bool, hasParent);
    QObject parent;
    parent.setProperty("ui", u"of the object"_s);
    ViewSetup setup;
    VLView& view = setup.build();
    view.setContent(new VLXmlElement(hasParent ? &parent : nullptr));
    QCOMPARE(view.categoryPath(u"ui"_s, u"default"_s, ckUiFile), u"default"_s);
}

void TestVLView::categoryPath_isNull_whenThereIsNoContent()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.manager->context().set(ckUiFile, u"of the setting"_s);
    QVERIFY(view.categoryPath(u"ui"_s, u"default"_s, ckUiFile).isNull());
}

void TestVLView::resourceDirectory_isCategoryByAttributeResource_data()
{
    QTest::addColumn<Attributes>("attributes");
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<QString>("expected");
    const QString resource = u"resource"_s;
    const QString resources = u"resources"_s;
    QTest::newRow("default") << Attributes() << QVariant() << u"Resources"_s;
    QTest::newRow("attribute") << Attributes{{resource, u"res"_s}} << QVariant(u"of the setting"_s)
                               << u"res"_s;
    QTest::newRow("attribute of findResource")
        << Attributes{{resources, u"res"_s}} << QVariant() << u"Resources"_s;
    QTest::newRow("setting") << Attributes() << QVariant(u"of the setting"_s)
                             << u"of the setting"_s;
}

void TestVLView::resourceDirectory_isCategoryByAttributeResource()
{
    QFETCH(Attributes, attributes);
    QFETCH(QVariant, setting);
    QFETCH(QString, expected);
    ViewSetup setup;
    VLView& view = setup.build();
    // A directory that is there makes no difference.
    setup.packages.write(tipsPackage() + u"/Resources/file"_s, "x");
    setup.setContent(attributes);
    if (setting.isValid())
        setup.manager->context().set(ckResourceDirectory, setting);
    QCOMPARE(view.resourceDirectoryPath(), expected);
    QCOMPARE(view.property("resourceDirectory"), QVariant(expected));
}

void TestVLView::resourceDirectory_isEmpty_whenThereIsNoContent()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.manager->context().set(ckResourceDirectory, u"of the setting"_s);
    QCOMPARE(view.property("resourceDirectory"), QVariant(QString()));
}

void TestVLView::findComponent_returnsFirstCandidateThatExists()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.index.context().set(ckExtraComponentPath, setup.packages.path(u"extra"_s));
    setup.setContent();
    const auto find = [&view] {
        return view.findComponent(u"part"_s, ckUiFile, u"a/b"_s, QString());
    };
    const QString second = setup.packages.write(u"extra/a/b"_s, "x");
    QCOMPARE(find(), second);
    const QString first = setup.packages.write(tipsPackage() + u"/a/b"_s, "x");
    QCOMPARE(find(), first);
}

void TestVLView::findComponent_joinsRelativePath()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.index.context().set(ckExtraComponentPath, setup.packages.path(u"extra"_s));
    // The directory alone does not count when a file in it is asked for.
    setup.packages.packageRoot(tipsPackage() + u"/parts"_s);
    const QString file = setup.packages.write(u"extra/parts/sub/file"_s, "x");
    setup.setContent({{u"part"_s, u"parts"_s}});
    QCOMPARE(view.findComponent(u"part"_s, ckUiFile, QString(), u"sub/file"_s), file);
    QCOMPARE(view.findComponent(u"part"_s, ckUiFile, QString(), u"sub"_s), QFileInfo(file).path());
}

void TestVLView::findComponent_findsDirectories_whenRelativePathIsEmpty()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.setContent();
    const QString directory = setup.packages.packageRoot(tipsPackage() + u"/parts"_s);
    QCOMPARE(view.findComponent(u"part"_s, ckUiFile, u"parts"_s, u""_s), directory);
    // An empty category leaves the package root itself.
    QCOMPARE(view.findComponent(u"part"_s, ckUiFile, QString(), QString()),
             setup.packages.path(tipsPackage()));
}

void TestVLView::findComponent_usesAbsoluteCategory()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QString file = setup.packages.write(u"elsewhere/file"_s, "x");
    setup.setContent({{u"part"_s, file}});
    QCOMPARE(view.findComponent(u"part"_s, ckUiFile, QString(), QString()), file);
}

void TestVLView::findComponent_returnsCategory_whenNothingExists_data()
{
    QTest::addColumn<QString>("package");
    QTest::addColumn<QString>("relativePath");
    QTest::newRow("no file, no relative path") << u"tips"_s << QString();
    QTest::newRow("no file, relative path") << u"tips"_s << u"file"_s;
    QTest::newRow("no candidates") << u"other"_s << u"file"_s;
}

void TestVLView::findComponent_returnsCategory_whenNothingExists()
{
    QFETCH(QString, package);
    QFETCH(QString, relativePath);
    ViewSetup setup;
    VLView& view = setup.build();
    setup.setContent()->setAttribute(u"VLPackagName"_s, package);
    QCOMPARE(view.findComponent(u"part"_s, ckUiFile, u"parts"_s, relativePath), u"parts"_s);
}

void TestVLView::findComponent_returnsAbsolutePath_whenCandidateIsRelative()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.setContent()->setAttribute(u"VLPackagName"_s, QString());
    const QString file = setup.packages.write(u"extra/file"_s, "x");
    const QString before = QDir::currentPath();
    const auto restore = qScopeGuard([&before] { QDir::setCurrent(before); });
    QVERIFY(QDir::setCurrent(setup.packages.dataPath()));
    setup.index.context().set(ckExtraComponentPath, u"extra"_s);
    QCOMPARE(view.findComponent(u"part"_s, ckUiFile, QString(), u"file"_s), file);
    QCOMPARE(view.findComponent(u"part"_s, ckUiFile, QString(), QString()), QFileInfo(file).path());
}

void TestVLView::findComponent_returnsNull_whenThereIsNoContent()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.index.context().set(ckExtraComponentPath, setup.packages.dataPath());
    QVERIFY(view.findComponent(u"part"_s, ckUiFile, u"tips.vidlets"_s, QString()).isNull());
}

void TestVLView::findResource_findsFile_data()
{
    QTest::addColumn<Attributes>("element");
    QTest::addColumn<Attributes>("parent");
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<QString>("directory");
    const Attributes none;
    const Attributes resources{{u"resources"_s, u"res"_s}};
    const Attributes resource{{u"resource"_s, u"res"_s}};
    QTest::newRow("default") << none << none << QVariant() << u"Resources"_s;
    QTest::newRow("attribute") << resources << none << QVariant() << u"res"_s;
    QTest::newRow("attribute of the parent") << none << resources << QVariant() << u"res"_s;
    QTest::newRow("attribute of resourceDirectory")
        << resource << none << QVariant() << u"Resources"_s;
    QTest::newRow("setting") << none << none << QVariant(u"set"_s) << u"set"_s;
}

void TestVLView::findResource_findsFile()
{
    QFETCH(Attributes, element);
    QFETCH(Attributes, parent);
    QFETCH(QVariant, setting);
    QFETCH(QString, directory);
    ViewSetup setup;
    VLView& view = setup.build();
    setup.setContent(element);
    ViewSetup::setAttributes(&setup.root, parent);
    if (setting.isValid())
        setup.manager->context().set(ckResourceDirectory, setting);
    const QStringList directories{u"Resources"_s, u"res"_s, u"set"_s};
    for (const QString& name : directories)
        setup.packages.write(u"%1/%2/clip/a"_s.arg(tipsPackage(), name), "x");
    QCOMPARE(view.findResource(u"clip/a"_s),
             setup.packages.path(u"%1/%2/clip/a"_s.arg(tipsPackage(), directory)));
}

void TestVLView::findResource_returnsCategory_whenFileIsMissing()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.packages.packageRoot(tipsPackage() + u"/Resources"_s);
    setup.setContent();
    QCOMPARE(view.findResource(u"clip"_s), u"Resources"_s);
    setup.setContent({{u"resources"_s, u"res"_s}});
    QCOMPARE(view.findResource(u"clip"_s), u"res"_s);
}

void TestVLView::uiRootFilePath_picksScene_data()
{
    QTest::addColumn<bool>("simple");
    QTest::addColumn<Attributes>("element");
    QTest::addColumn<Attributes>("parent");
    QTest::addColumn<bool>("withSettings");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char* name, bool simple, const Attributes& element,
                        const Attributes& parent, bool withSettings, const QString& expected) {
        QTest::newRow(name) << simple << element << parent << withSettings << expected;
    };
    const Attributes none;
    const Attributes both{{u"ui"_s, u"own.qml"_s}, {u"simple"_s, u"ownsimple.qml"_s}};
    const QString own = u"own.qml"_s;
    const QString ownSimple = u"ownsimple.qml"_s;
    row("default", false, none, none, false, u"ui/VidletUI.qml"_s);
    row("setting", false, none, none, true, u"set.qml"_s);
    row("attribute", false, both, none, true, own);
    row("attribute of the parent", false, none, both, true, own);
    row("simple, default", true, none, none, false, u"ui/SimpleTooltip.qml"_s);
    row("simple, setting", true, none, none, true, u"setsimple.qml"_s);
    row("simple, attribute", true, both, none, true, ownSimple);
    row("simple, attribute of the parent", true, none, both, true, ownSimple);
}

void TestVLView::uiRootFilePath_picksScene()
{
    QFETCH(bool, simple);
    QFETCH(Attributes, element);
    QFETCH(Attributes, parent);
    QFETCH(bool, withSettings);
    QFETCH(QString, expected);
    ViewSetup setup;
    VLView& view = setup.build();
    VLContext& settings = setup.manager->context();
    setup.setContent(element);
    ViewSetup::setAttributes(&setup.root, parent);
    if (simple)
        settings.set(ckSimpleTooltips, true);
    if (withSettings) {
        settings.set(ckUiFile, u"set.qml"_s);
        settings.set(ckSimpleUiFile, u"setsimple.qml"_s);
    }
    const QStringList names{u"ui/VidletUI.qml"_s, u"ui/SimpleTooltip.qml"_s,
                            u"set.qml"_s,         u"setsimple.qml"_s,
                            u"own.qml"_s,         u"ownsimple.qml"_s};
    for (const QString& name : names)
        setup.writeScene(name, plainScene());
    QCOMPARE(view.uiRootFilePath(), setup.packages.path(tipsPackage() + u'/' + expected));
}

void TestVLView::uiRootFilePath_isRelativeDefault_whenPackageHasNoScene_data()
{
    QTest::addColumn<bool>("simple");
    QTest::addColumn<QString>("expected");
    QTest::newRow("main") << false << u"ui/VidletUI.qml"_s;
    QTest::newRow("simple") << true << u"ui/SimpleTooltip.qml"_s;
}

void TestVLView::uiRootFilePath_isRelativeDefault_whenPackageHasNoScene()
{
    QFETCH(bool, simple);
    ViewSetup setup;
    VLView& view = setup.build();
    setup.setContent();
    setup.manager->context().set(ckSimpleTooltips, simple);
    QTEST(view.uiRootFilePath(), "expected");
}

void TestVLView::loadQML_loadsFile()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QString scene = setup.writeScene(u"scene.qml"_s, plainScene());
    view.loadQML(scene);
    QCOMPARE(view.source(), QUrl::fromLocalFile(scene));
    QCOMPARE(view.status(), QQuickView::Ready);
    QVERIFY(view.rootObject());
    QVERIFY(setup.host.recordedMessages.isEmpty());
}

void TestVLView::loadQML_announcesSize_withoutEvent()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QSignalSpy sizes(&view, &VLView::contentSizeChanged);
    EventCounter resizes(&view, QEvent::Resize);

    view.loadQML(setup.writeScene(u"scene.qml"_s, plainScene()));

    // A resize that did not take place would reach the event filters of the host.
    QCOMPARE(resizes.count, 0);
    QCOMPARE(sizes.count(), 1);
}

void TestVLView::loadQML_loadsFile_whenPathHasSpecialCharacters()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QString scene = setup.writeScene(u"a b#c%20?.qml"_s, plainScene());
    view.loadQML(scene);
    QCOMPARE(view.source().toLocalFile(), scene);
    QVERIFY(view.rootObject());
}

void TestVLView::loadQML_keepsScene_whenFileIsTheSame()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QString scene = setup.writeScene(u"scene.qml"_s, plainScene());
    view.loadQML(scene);
    const QPointer<QQuickItem> root = view.rootObject();
    setup.writeScene(u"scene.qml"_s, "import QtQuick\nRectangle { width: 7 }\n");
    view.loadQML(scene);
    QVERIFY(root);
    QCOMPARE(view.rootObject(), root);
    QCOMPARE(root->width(), 120.0);
}

void TestVLView::loadQML_replacesScene_whenFileIsAnother()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.loadQML(setup.writeScene(u"scene.qml"_s, plainScene()));
    const QPointer<QQuickItem> root = view.rootObject();
    view.loadQML(
        setup.writeScene(u"other.qml"_s, "import QtQuick\nItem { width: 7; height: 7 }\n"));
    QVERIFY(!root);
    QCOMPARE(view.rootObject()->width(), 7.0);
}

void TestVLView::loadQML_keepsScene_whenFileIsMissing()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QString scene = setup.writeScene(u"scene.qml"_s, plainScene());
    view.loadQML(scene);
    const QPointer<QQuickItem> root = view.rootObject();
    const QString missing = setup.packages.path(u"no such.qml"_s);
    view.loadQML(missing);
    // The file of the present scene may go too.
    QVERIFY(QFile::remove(scene));
    view.loadQML(scene);
    QVERIFY(root);
    QCOMPARE(view.rootObject(), root);
    QCOMPARE(view.source(), QUrl::fromLocalFile(scene));
    QCOMPARE(setup.messages(),
             (QStringList{u"Can't find :"_s + missing, u"Can't find :"_s + scene}));
    QCOMPARE(setup.host.recordedMessages.size(), 2);
}

void TestVLView::loadQML_reportsRelativePathAsGiven()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.setContent();
    view.loadQML(view.uiRootFilePath());
    QCOMPARE(setup.messages(), QStringList{u"Can't find :ui/VidletUI.qml"_s});
    QVERIFY(view.source().isEmpty());
}

void TestVLView::loadQML_dropsSceneAndStaysUsable_whenFileBreaks()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.loadQML(setup.writeScene(u"scene.qml"_s, plainScene()));
    const QPointer<QQuickItem> root = view.rootObject();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"broken\\.qml:2:"_s));
    view.loadQML(setup.writeScene(u"broken.qml"_s, "import QtQuick\nItem {"));
    QVERIFY(!root);
    QVERIFY(!view.rootObject());
    // The view stays usable.
    view.loadQML(setup.packages.path(tipsPackage() + u"/scene.qml"_s));
    QVERIFY(view.rootObject());
}

void TestVLView::handleWarnings_reportsEachInOrder()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.handleWarnings({makeError(12, 3, u"second %1 is first"_s), makeError(1, 100, u"other"_s),
                         makeError(1, 100, u"other"_s)});
    QCOMPARE(setup.messages(),
             (QStringList{u"QML Warning 12:3:second %1 is first"_s, u"QML Warning 1:100:other"_s,
                          u"QML Warning 1:100:other"_s}));
    QCOMPARE(setup.host.recordedMessages.size(), 3);
    view.handleWarnings({});
    QCOMPARE(setup.host.recordedMessages.size(), 3);
}

void TestVLView::handleWarnings_reportsNothing_byDefault()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.manager->context().set(ckMessageLevel, VLMessageWarning);
    view.handleWarnings({makeError(1, 2, u"text"_s)});
    QVERIFY(setup.host.recordedMessages.isEmpty());
}

void TestVLView::sceneWarning_isReported()
{
    ViewSetup setup;
    VLView& view = setup.build();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"scene\\.qml:3"_s));
    view.loadQML(
        setup.writeScene(u"scene.qml"_s, "import QtQuick\nItem {\n    width: nonsense\n}\n"));
    QCOMPARE(setup.messages().size(), 1);
    const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        u"QML Warning 3:\\d+:ReferenceError: nonsense is not defined"_s));
    QVERIFY2(pattern.match(setup.messages().first()).hasMatch(),
             qPrintable(setup.messages().first()));
    QVERIFY(view.rootObject());
}

void TestVLView::statusHasChanged_reportsErrorsOfView()
{
    ViewSetup setup;
    VLView& view = setup.build();
    // An error in a type that the scene uses makes two entries.
    setup.writeScene(u"Part.qml"_s, "import QtQuick\nItem {\n    nonsense: 1\n}\n");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"scene\\.qml:3:"_s));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Part\\.qml:3:"_s));
    view.loadQML(setup.writeScene(u"scene.qml"_s, "import QtQuick\nItem {\n    Part {}\n}\n"));
    const QList<QQmlError> errors = view.errors();
    QCOMPARE(errors.size(), 2);

    view.statusHasChanged(QQuickView::Error);

    const QString format = u"Error %1:%2:%3"_s;
    QCOMPARE(setup.messages(),
             (QStringList{errorText(format, errors.at(0)), errorText(format, errors.at(1))}));
    QVERIFY(setup.messages().last().startsWith(u"Error 3:5:"_s));
    QCOMPARE(setup.host.recordedMessages.size(), 2);
}

void TestVLView::statusHasChanged_isSilent_whenStatusIsNoError_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("null") << int(QQuickView::Null);
    QTest::newRow("ready") << int(QQuickView::Ready);
    QTest::newRow("loading") << int(QQuickView::Loading);
}

void TestVLView::statusHasChanged_isSilent_whenStatusIsNoError()
{
    QFETCH(int, status);
    ViewSetup setup;
    VLView& view = setup.build();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"broken\\.qml:2:"_s));
    view.loadQML(setup.writeScene(u"broken.qml"_s, "import QtQuick\nItem {"));
    QVERIFY(!view.errors().isEmpty());
    view.statusHasChanged(static_cast<QQuickView::Status>(status));
    QVERIFY(setup.host.recordedMessages.isEmpty());
}

void TestVLView::resetState_setsStateOfRootObject()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.loadQML(setup.writeScene(u"scene.qml"_s,
                                  "import QtQuick\nItem {\n    state: \"open\"\n"
                                  "    states: State { name: \"open\" }\n}\n"));
    QCOMPARE(view.rootObject()->state(), u"open"_s);
    view.resetState();
    QCOMPARE(view.rootObject()->state(), QString());
}

void TestVLView::resetState_isHarmless_whenThereIsNoScene()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.resetState();
    QVERIFY(!view.rootObject());
    QVERIFY(setup.host.recordedMessages.isEmpty());
}

void TestVLView::managerContextSettingDidChange_tellsOfDocumentationAlone_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("signalCount");
    QTest::newRow("ckDocumentationEnabled") << int(ckDocumentationEnabled) << 1;
    QTest::newRow("ckSimpleTooltips") << int(ckSimpleTooltips) << 0;
    QTest::newRow("ckExternalLinksEnabled") << int(ckExternalLinksEnabled) << 0;
    QTest::newRow("ckResourceDirectory") << int(ckResourceDirectory) << 0;
    QTest::newRow("ckScale") << int(ckScale) << 0;
    QTest::newRow("none of the keys") << 0 << 0;
}

void TestVLView::managerContextSettingDidChange_tellsOfDocumentationAlone()
{
    QFETCH(int, key);
    ViewSetup setup;
    VLView& view = setup.build();
    const QSignalSpy spy(&view, &VLView::documentationAvailableChanged);
    view.managerContextSettingDidChange(static_cast<contextKey>(key));
    QTEST(int(spy.count()), "signalCount");
}

void TestVLView::managerContextSettingDidChange_canBeInvokedByName()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QSignalSpy spy(&view, &VLView::documentationAvailableChanged);
    QVERIFY(QMetaObject::invokeMethod(&view, "managerContextSettingDidChange",
                                      Q_ARG(Vidlets::contextKey, ckDocumentationEnabled)));
    QCOMPARE(spy.count(), 1);
    // The key crosses a queued call too.
    QVERIFY(QMetaObject::invokeMethod(&view, "managerContextSettingDidChange", Qt::QueuedConnection,
                                      Q_ARG(Vidlets::contextKey, ckDocumentationEnabled)));
    QTRY_COMPARE(spy.count(), 2);
}

void TestVLView::setItemCursor_mapsShape_data()
{
    QTest::addColumn<QString>("shape");
    QTest::addColumn<int>("cursor");
    QTest::newRow("pointing hand") << u"PointingHandCursor"_s << 13;
    QTest::newRow("arrow") << u"ArrowCursor"_s << 0;
    QTest::newRow("text beam") << u"IBeamCursor"_s << 4;
    QTest::newRow("blank") << u"BlankCursor"_s << 10;
    QTest::newRow("other shape of Qt's") << u"WaitCursor"_s << 0;
    QTest::newRow("other case") << u"ibeamcursor"_s << 0;
    QTest::newRow("blank at the end") << u"IBeamCursor "_s << 0;
}

void TestVLView::setItemCursor_mapsShape()
{
    QFETCH(QString, shape);
    ViewSetup setup;
    VLView& view = setup.build();
    QQuickItem item;
    item.setCursor(Qt::SizeAllCursor);
    view.setItemCursor(&item, shape, QString());
    QTEST(int(item.cursor().shape()), "cursor");
    item.setCursor(Qt::SizeAllCursor);
    view.setItemCursor(&item, shape, u"any tag"_s);
    QTEST(int(item.cursor().shape()), "cursor");
}

void TestVLView::setItemCursor_unsetsCursor_whenShapeIsEmpty()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.loadQML(setup.writeScene(u"scene.qml"_s,
                                  "import QtQuick\nItem {\n    width: 100; height: 100\n"
                                  "    Item { anchors.fill: parent }\n}\n"));
    QQuickItem* below = view.rootObject();
    QQuickItem* item = below->childItems().first();
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.setItemCursor(below, u"PointingHandCursor"_s, QString());
    view.setItemCursor(item, u"IBeamCursor"_s, QString());
    QTest::mouseMove(&view, QPoint(50, 50));
    QTRY_COMPARE(view.cursor().shape(), Qt::IBeamCursor);

    // An item without a cursor of its own shows that of the item below, and no arrow.
    view.setItemCursor(item, QString(), u"tag"_s);
    QTest::mouseMove(&view, QPoint(51, 50));
    QTRY_COMPARE(view.cursor().shape(), Qt::PointingHandCursor);

    view.setItemCursor(item, u"unknown"_s, QString());
    QTest::mouseMove(&view, QPoint(52, 50));
    QTRY_COMPARE(view.cursor().shape(), Qt::ArrowCursor);
}

void TestVLView::setItemCursor_doesNothing_whenObjectIsNoItem()
{
    ViewSetup setup;
    VLView& view = setup.build();
    QObject object;
    const QStringList shapes{u"PointingHandCursor"_s, QString()};
    for (const QString& shape : shapes) {
        view.setItemCursor(&object, shape, QString());
        view.setItemCursor(nullptr, shape, QString());
    }
    QCOMPARE(view.cursor().shape(), Qt::ArrowCursor);
    QVERIFY(!QGuiApplication::overrideCursor());
    QVERIFY(object.dynamicPropertyNames().isEmpty());
}

void TestVLView::setOverrideCursor_mapsShape_data()
{
    setItemCursor_mapsShape_data();
    QTest::newRow("empty") << QString() << 0;
}

void TestVLView::setOverrideCursor_mapsShape()
{
    QFETCH(QString, shape);
    ViewSetup setup;
    VLView& view = setup.build();
    const auto restore = qScopeGuard([] {
        while (QGuiApplication::overrideCursor())
            QGuiApplication::restoreOverrideCursor();
    });
    view.setOverrideCursor(shape);
    QVERIFY(QGuiApplication::overrideCursor());
    QTEST(int(QGuiApplication::overrideCursor()->shape()), "cursor");
}

void TestVLView::restoreOverrideCursor_undoesOne()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.setOverrideCursor(u"IBeamCursor"_s);
    view.setOverrideCursor(u"BlankCursor"_s);
    view.restoreOverrideCursor();
    QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::IBeamCursor);
    view.restoreOverrideCursor();
    QVERIFY(!QGuiApplication::overrideCursor());
}

void TestVLView::debugLog_sendsDebugMessage()
{
    ViewSetup setup;
    setup.build().debugLog(u" 100 %1 "_s);
    QCOMPARE(setup.messages(), QStringList{u" 100 %1 "_s});
    QCOMPARE(setup.host.recordedMessages.size(), 1);
}

void TestVLView::openExternalResource_asksHost()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.host.openResult = false;
    view.openExternalResource(u"a/b"_s);
    QCOMPARE(setup.host.openedResources.size(), 1);
    QCOMPARE(setup.host.openedResources.first().type, VLResourcePath);
    QCOMPARE(setup.host.openedResources.first().locator, u"a/b"_s);
}

void TestVLView::interpolate_usesVariablesOfManager()
{
    ViewSetup setup;
    VLView& view = setup.build();
    setup.manager->setGlobalProperty(u"a"_s, u"A"_s);
    QCOMPARE(view.interpolate(u"%(a)s %(b)s"_s), u"A %(b)s"_s);
}

void TestVLView::getScaledSize_usesScaleOfManager()
{
    ViewSetup setup;
    setup.context.set(ckScale, 1.55);
    QCOMPARE(setup.build().getScaledSize(10), 15);
}

void TestVLView::translate_asksHost()
{
    ViewSetup setup;
    QCOMPARE(setup.build().translate(u"Hello"_s, u"Scene"_s), u"Scene/Hello"_s);
}

void TestVLView::translate_returnsText_whenThereIsNoInterface()
{
    VLContext context(nullptr);
    VLIndex index(nullptr, {});
    VLManager manager(nullptr, context, {}, &index);
    const VLView view(&manager, nullptr);
    QCOMPARE(view.translate(u"Hello"_s, u"Scene"_s), u"Hello"_s);
}

void TestVLView::translate_returnsText_whenThereIsNoManager()
{
    const VLView view(nullptr, nullptr);
    QVERIFY(!view.manager());
    QCOMPARE(view.translate(u"Hello"_s, u"Scene"_s), u"Hello"_s);
}

void TestVLView::services_areHarmless_whenManagerIsGone()
{
    ViewSetup setup;
    setup.context.set(ckScale, 2.0);
    setup.context.set(ckDocumentationEnabled, true);
    setup.context.set(ckResourceDirectory, u"media"_s);
    VLView& view = setup.build();
    setup.packages.write(tipsPackage() + u"/media/a.txt"_s, "a");
    setup.setContent();
    QVERIFY(view.findResource(u"a.txt"_s).endsWith(u"/media/a.txt"_s));

    setup.manager.reset();

    QVERIFY(!view.manager());
    QCOMPARE(view.getScaledSize(10), 10);
    QCOMPARE(view.interpolate(u"%(name)s"_s), u"%(name)s"_s);
    QCOMPARE(view.translate(u"text"_s, u"context"_s), u"text"_s);
    QCOMPARE(view.findResource(u"a.txt"_s), u"Resources"_s);
    QCOMPARE(view.resourceDirectoryPath(), u"Resources"_s);
    QCOMPARE(view.uiRootFilePath(), u"ui/VidletUI.qml"_s);
    QVERIFY(!view.documentationAvailable());
    view.debugLog(u"text"_s);
    view.openExternalResource(u"https://example.org"_s);
    view.loadQML(u"/missing.qml"_s);
    view.handleWarnings({makeError(1, 2, u"fault"_s)});
    QCOMPARE(setup.messages(), QStringList());
}

void TestVLView::scene_reachesAllOfTheView()
{
    ViewSetup setup;
    setup.context.set(ckScale, 2);
    VLView& view = setup.build();
    setup.manager->context().set(ckDocumentationEnabled, true);
    setup.manager->setGlobalProperty(u"a"_s, u"A"_s);
    const QString clip = setup.packages.write(tipsPackage() + u"/Resources/clip"_s, "x");
    setup.setContent({{u"title"_s, u"A tip"_s}});
    view.rootContext()->setContextProperty(u"vidletView"_s, &view);
    view.loadQML(
        setup.writeScene(u"scene.qml"_s,
                         "import QtQuick\nItem {\n"
                         "    id: scene\n"
                         "    property string result\n"
                         "    Component.onCompleted: {\n"
                         "        vidletView.setItemCursor(scene, \"IBeamCursor\", \"tag\");\n"
                         "        vidletView.openExternalResource(\"topic\");\n"
                         "        vidletView.stayOpen = true;\n"
                         "        vidletView.reserved = true;\n"
                         "        result = [vidletView.content.attribute(\"title\"),\n"
                         "                  vidletView.documentationAvailable,\n"
                         "                  vidletView.resourceDirectory,\n"
                         "                  vidletView.interpolate(\"%(a)s\"),\n"
                         "                  vidletView.translate(\"Hello\", \"Scene\"),\n"
                         "                  vidletView.findResource(\"clip\"),\n"
                         "                  vidletView.getScaledSize(4)].join(\",\");\n"
                         "        vidletView.debugLog(\"done\");\n"
                         "    }\n}\n"));
    QVERIFY(view.rootObject());
    QCOMPARE(view.rootObject()->property("result").toString(),
             u"A tip,true,Resources,A,Scene/Hello,%1,8"_s.arg(clip));
    QCOMPARE(view.rootObject()->cursor().shape(), Qt::IBeamCursor);
    QCOMPARE(setup.host.openedResources.size(), 1);
    QVERIFY(view.stayOpen());
    QVERIFY(view.reserved());
    QCOMPARE(setup.messages(), QStringList{u"done"_s});
}

void TestVLView::resizeEvent_emitsContentSizeChanged()
{
    ViewSetup setup;
    VLView& view = setup.build();
    const QSignalSpy spy(&view, &VLView::contentSizeChanged);
    QResizeEvent event(QSize(20, 20), QSize(10, 10));
    QCoreApplication::sendEvent(&view, &event);
    QCOMPARE(spy.count(), 1);
    QResizeEvent sameSize(QSize(20, 20), QSize(20, 20));
    QCoreApplication::sendEvent(&view, &sameSize);
    QCOMPARE(spy.count(), 2);
}

void TestVLView::resizeEvent_repaints()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.loadQML(setup.writeScene(u"scene.qml"_s, plainScene()));
    QSignalSpy frames(&view, &QQuickWindow::frameSwapped);
    view.show();
    QTRY_VERIFY(frames.count() > 0);
    // Empties the queue, so that the next frame is that of the event.
    QCoreApplication::processEvents();
    frames.clear();
    QResizeEvent event(view.size(), view.size());
    QCoreApplication::sendEvent(&view, &event);
    QTRY_VERIFY(frames.count() > 0);
}

void TestVLView::resizeEvent_leavesBaseClassOut()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.loadQML(setup.writeScene(u"scene.qml"_s, plainScene()));
    // In this mode the base class would have the scene follow.
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    const QSizeF before = view.rootObject()->size();
    const QSignalSpy spy(&view, &VLView::contentSizeChanged);
    view.resize(333, 222);
    QResizeEvent event(QSize(333, 222), before.toSize());
    QCoreApplication::sendEvent(&view, &event);
    QVERIFY(spy.count() > 0);
    QCOMPARE(view.rootObject()->size(), before);
}

void TestVLView::window_followsSizeOfScene()
{
    ViewSetup setup;
    VLView& view = setup.build();
    view.loadQML(setup.writeScene(u"scene.qml"_s, plainScene()));
    QCOMPARE(view.size(), QSize(120, 80));
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const QSignalSpy spy(&view, &VLView::contentSizeChanged);
    view.rootObject()->setWidth(200);
    QTRY_COMPARE(view.size(), QSize(200, 80));
    QTRY_VERIFY(spy.count() > 0);
    // Not the other way round.
    view.resize(50, 50);
    QTRY_COMPARE(view.size(), QSize(50, 50));
    QCOMPARE(view.rootObject()->size(), QSizeF(200, 80));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLView>(argc, argv);
}

#include "tst_vlview.moc"
