// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QDesktopServices>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QUrl>

#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

/// Takes the URLs of one scheme in place of the desktop.
class UrlHandler : public QObject
{
    Q_OBJECT

public:
    UrlHandler()
    {
        QDesktopServices::setUrlHandler(scheme(), this, "open");
    }
    ~UrlHandler() override
    {
        QDesktopServices::unsetUrlHandler(scheme());
    }
    static QString scheme()
    {
        return u"vidletstest"_s;
    }

    QList<QUrl> urls;

public Q_SLOTS:
    void open(const QUrl& url)
    {
        urls += url;
    }

private:
    Q_DISABLE_COPY_MOVE(UrlHandler)
};

namespace {

/// An index that has no content, and writes down what it is asked for.
class EmptyIndex : public VLIndex
{
public:
    EmptyIndex()
        : VLIndex(nullptr, {})
    {
    }

    VLXmlElement* retrieve(const QString& key, const QLocale& /*locale*/, QString& /*path*/,
                           int& /*depth*/, VLXmlElement*& /*root*/) override
    {
        keysAskedFor += key;
        return nullptr;
    }
    QList<QString> keys() override
    {
        return {u"of the index"_s};
    }

    QStringList keysAskedFor;
};

VLWidget* findPopup()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        if (auto* popup = qobject_cast<VLWidget*>(widget))
            return popup;
    }
    return nullptr;
}

/// A host of the plain class with a package that has content for the key "k".
class PlainHost
{
public:
    PlainHost()
    {
        packages.writeScene(u"tips.vidlets"_s);
        packages.writeControlFile(u"tips.vidlets"_s, u"tips.xml"_s,
                                  "<vidlets><vidlet key=\"k\" title=\"A title\"/></vidlets>");
        // A popup that stays until a test has it hidden.
        context.set(ckStayDuration, 0);
        context.set(ckHideDuration, 0);
    }
    ~PlainHost()
    {
        interface.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        // The popup owned the element alone, not the root above it.
        delete m_root;
    }

    VLInterface& build()
    {
        interface =
            std::make_unique<VLInterface>(context, QStringList{packages.dataPath()}, nullptr);
        return *interface;
    }
    /// Shows the content; gives the popup.
    VLWidget* show(QObject* reference = nullptr)
    {
        interface->show(u"k"_s, QPoint(200, 100), reference);
        VLWidget* popup = findPopup();
        if (popup && popup->view()->content())
            m_root = popup->view()->content()->parent();
        return popup;
    }

    PackageBuilder packages;
    VLContext context{nullptr};
    std::unique_ptr<VLInterface> interface;

private:
    Q_DISABLE_COPY_MOVE(PlainHost)

    QPointer<QObject> m_root;
};

/// The translation file that has "Hallo" for "Hello", in any context.
QByteArray translationFile()
{
    return QByteArray::fromHex("3cb86418caef9c95cd211cbf60a1bddd"
                               "4200000008004ec32f00000000"
                               "6900000010"
                               "030000000a00480061006c006c006f01");
}

QMouseEvent mouseEvent(QEvent::Type type, const QPoint& position)
{
    const bool isMove = type == QEvent::MouseMove;
    return QMouseEvent(type, position, position, isMove ? Qt::NoButton : Qt::LeftButton,
                       isMove ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
}

} // namespace

class TestVLInterface : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    // Hides that of the base.

    // Numbers
    void messageTypes_haveFixedNumbers();
    void resourceTypes_haveFixedNumbers();

    // Construction and destruction
    void constructor_hasNoParent();
    void constructor_scansBeforeItReturns();
    void constructor_givesNoKeys_whenThereAreNoDataPaths();
    void constructor_takesGivenIndex();
    void constructor_logsMessagesThroughTheDefault_whenHandleMessageIsOverridden();
    void destructor_deletesManagerFirst();
    void destructor_releasesPopupByDeferredDeletion();
    void destructor_leavesGivenIndexAlive();

    // What a host may override
    void createWindow_returnsNull_byDefault();
    void keyForObject_returnsObjectName_byDefault_data();
    void keyForObject_returnsObjectName_byDefault();
    void toolTipEvent_looksUpEmptyKey_whenWidgetHasNoName();
    void openExternalResource_opensUrl_byDefault_data();
    void openExternalResource_opensUrl_byDefault();
    void openExternalResource_returnsFalse_whenDesktopRefuses();
    void openExternalResource_doesNothing_whenTypeIsNoUrl_data();
    void openExternalResource_doesNothing_whenTypeIsNoUrl();
    void handleMessage_writesLabelAndText_data();
    void handleMessage_writesLabelAndText();
    void handleMessage_filtersNothing();
    void translateString_returnsText_whenThereIsNoPopup();
    void translateString_usesTranslationOfContentOnShow();
    void shortCutForObject_returnsShortcut_byDefault();

    // What a host calls
    void context_isTheStoreThatTheLibraryReads();
    void context_isTheSame_whenInterfaceIsConst();
    void context_isIndependentOfTheStoreGiven();
    void overrides_areCalled_onceConstructed();
    void setGlobalProperty_setsVariableOfScenes();
    void keys_areThoseOfTheControlFiles();
    void show_showsContentAtPosition();
    void show_returnsFalse_whenThereIsNoContent();
    void show_passesReferenceOn();
    void mouseButtonEventFilter_hidesPopup();
    void mouseMoveEventFilter_hidesPopup_whenPointerIsFarAway();
    void vidletAttribute_readsContent();
};

void TestVLInterface::messageTypes_haveFixedNumbers()
{
    QCOMPARE(int(VLMessageError), 100);
    QCOMPARE(int(VLMessageWarning), 200);
    QCOMPARE(int(VLMessageInformation), 300);
    QCOMPARE(int(VLMessageDebug), 400);
}

void TestVLInterface::resourceTypes_haveFixedNumbers()
{
    QCOMPARE(int(VLResourceDocumentation), 1);
    QCOMPARE(int(VLResourceUrl), 2);
    QCOMPARE(int(VLResourcePath), 3);
}

void TestVLInterface::constructor_hasNoParent()
{
    PlainHost host;
    QVERIFY(!host.build().parent());
}

void TestVLInterface::constructor_scansBeforeItReturns()
{
    PlainHost host;
    VLInterface& interface = host.build();
    host.packages.writeTip(u"late.vidlets"_s, u"late.xml"_s, u"late"_s);
    QCOMPARE(interface.keys(), QStringList{u"k"_s});
    QVERIFY(!findPopup());
}

void TestVLInterface::constructor_givesNoKeys_whenThereAreNoDataPaths()
{
    VLContext context(nullptr);
    VLInterface interface(context, {}, nullptr);
    QVERIFY(interface.keys().isEmpty());
    QCOMPARE(interface.vidletAttribute(u"k"_s, u"title"_s, u"none"_s), u"none"_s);
    QVERIFY(!interface.show(u"k"_s, QPoint(), nullptr));
}

void TestVLInterface::constructor_takesGivenIndex()
{
    EmptyIndex index;
    VLContext context(nullptr);
    VLInterface interface(context, {}, &index);
    QCOMPARE(interface.keys(), QStringList{u"of the index"_s});
}

void TestVLInterface::constructor_logsMessagesThroughTheDefault_whenHandleMessageIsOverridden()
{
    PackageBuilder packages;
    const QString file = packages.writeTip(u"tips.vidlets"_s, u"tips.xml"_s, u"k"_s);
    const QString package = packages.path(u"tips.vidlets"_s);
    VLContext context(nullptr);
    context.set(ckMessageLevel, VLMessageInformation);

    const QStringList lines{
        u"Information:indexing packages (*.vidlets) in %1 "_s.arg(packages.dataPath()),
        u"Information:indexing control files in %1"_s.arg(package),
        u"Information:looking for control files in :%1/Control"_s.arg(package),
        u"Information:found control file :%1"_s.arg(file)};
    for (const QString& line : lines)
        QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    QTest::ignoreMessage(
        QtDebugMsg, QRegularExpression(u"^Information:Indexed packages in [0-9.e-]+ seconds$"_s));

    const RecordingInterface interface(context, {packages.dataPath()});
    QVERIFY(interface.recordedMessages.isEmpty());
}

void TestVLInterface::destructor_deletesManagerFirst()
{
    PlainHost host;
    host.build();
    const QPointer<VLManager> manager = host.show()->manager();
    QVERIFY(manager);
    bool wasGone = false;
    connect(host.interface.get(), &QObject::destroyed, this, [&] { wasGone = manager.isNull(); });
    host.interface.reset();
    QVERIFY(wasGone);
}

void TestVLInterface::destructor_releasesPopupByDeferredDeletion()
{
    PlainHost host;
    host.build();
    const QPointer<VLWidget> popup = host.show();
    host.interface.reset();
    QVERIFY(popup);
    runDeferredDeletions();
    QVERIFY(!popup);
}

void TestVLInterface::destructor_leavesGivenIndexAlive()
{
    VLContext context(nullptr);
    const QPointer<VLIndex> index = new EmptyIndex;
    delete new VLInterface(context, {}, index);
    runDeferredDeletions();
    QVERIFY(index);
    delete index;
}

void TestVLInterface::createWindow_returnsNull_byDefault()
{
    PlainHost host;
    QVERIFY(!host.build().createWindow());
}

void TestVLInterface::keyForObject_returnsObjectName_byDefault_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("name") << u"Save button, 2"_s;
    QTest::newRow("no name") << QString();
}

void TestVLInterface::keyForObject_returnsObjectName_byDefault()
{
    QFETCH(QString, name);
    PlainHost host;
    QObject object;
    object.setObjectName(name);
    QCOMPARE(host.build().keyForObject(&object), name);
}

void TestVLInterface::toolTipEvent_looksUpEmptyKey_whenWidgetHasNoName()
{
    EmptyIndex index;
    VLContext context(nullptr);
    context.set(ckInstallEventFilter, true);
    const VLInterface interface(context, {}, &index);
    QWidget widget;
    QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), QPoint(1, 1));
    QCoreApplication::sendEvent(&widget, &event);
    // Once for each of the two locales.
    QCOMPARE(index.keysAskedFor, (QStringList{QString(), QString()}));
}

void TestVLInterface::openExternalResource_opensUrl_byDefault_data()
{
    QTest::addColumn<QString>("resource");
    QTest::addColumn<QUrl>("url");
    QTest::newRow("plain") << u"vidletstest:topic"_s << QUrl(u"vidletstest:topic"_s);
    QTest::newRow("what only tolerant parsing takes")
        << u"vidletstest://host/a b%"_s << QUrl(u"vidletstest://host/a%20b%25"_s, QUrl::StrictMode);
}

void TestVLInterface::openExternalResource_opensUrl_byDefault()
{
    QFETCH(QString, resource);
    QFETCH(QUrl, url);
    PlainHost host;
    const UrlHandler handler;
    QVERIFY(host.build().openExternalResource(VLResourceUrl, resource));
    QCOMPARE(handler.urls, QList<QUrl>{url});
    // Parsing that refuses the text gives equal parts, but no valid URL.
    QVERIFY(handler.urls.first().isValid());
}

void TestVLInterface::openExternalResource_returnsFalse_whenDesktopRefuses()
{
    PlainHost host;
    QVERIFY(!host.build().openExternalResource(VLResourceUrl, QString()));
}

void TestVLInterface::openExternalResource_doesNothing_whenTypeIsNoUrl_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("documentation") << int(VLResourceDocumentation);
    QTest::newRow("path") << int(VLResourcePath);
    QTest::newRow("none of the types") << 4;
}

void TestVLInterface::openExternalResource_doesNothing_whenTypeIsNoUrl()
{
    QFETCH(int, type);
    PlainHost host;
    const UrlHandler handler;
    QVERIFY(!host.build().openExternalResource(static_cast<VLExternalResourceType>(type),
                                               u"vidletstest:topic"_s));
    QVERIFY(handler.urls.isEmpty());
}

void TestVLInterface::handleMessage_writesLabelAndText_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("line");
    const auto row = [](const char* name, int type, const QString& message, const QString& line) {
        QTest::newRow(name) << type << message << line;
    };
    const QString text = u"text"_s;
    row("error", 100, text, u"ERROR:text"_s);
    row("warning", 200, text, u"Warning:text"_s);
    row("information", 300, text, u"Information:text"_s);
    row("debug", 400, text, u"DEBUG:text"_s);
    row("unknown number", 250, text, u"250:text"_s);
    row("zero", 0, text, u"0:text"_s);
    row("negative number", -7, text, u"-7:text"_s);
    row("blanks", 100, u" a  b "_s, u"ERROR: a  b "_s);
    row("quotes", 100, u"a \"b\""_s, u"ERROR:a \"b\""_s);
    row("beyond ASCII", 100, u"gr\u00fcn \u2713"_s, u"ERROR:gr\u00fcn \u2713"_s);
    row("place marks", 100, u"%1 %2 %s %d"_s, u"ERROR:%1 %2 %s %d"_s);
    row("empty", 100, QString(), u"ERROR:"_s);
}

void TestVLInterface::handleMessage_writesLabelAndText()
{
    QFETCH(int, type);
    QFETCH(QString, message);
    QFETCH(QString, line);
    PlainHost host;
    VLInterface& interface = host.build();
    QTest::ignoreMessage(QtDebugMsg, line.toUtf8().constData());
    interface.handleMessage(static_cast<VLMessageType>(type), message);
}

void TestVLInterface::handleMessage_filtersNothing()
{
    PlainHost host;
    host.context.set(ckMessageLevel, 0);
    VLInterface& interface = host.build();
    QTest::ignoreMessage(QtDebugMsg, "DEBUG:text");
    interface.handleMessage(VLMessageDebug, u"text"_s);
}

void TestVLInterface::translateString_returnsText_whenThereIsNoPopup()
{
    PlainHost host;
    QCOMPARE(host.build().translateString(u"Hello"_s, u"Scene"_s), u"Hello"_s);
}

void TestVLInterface::translateString_usesTranslationOfContentOnShow()
{
    PlainHost host;
    host.context.set(ckLocale, u"de_DE"_s);
    host.packages.write(u"tips.vidlets/l10n/Vidlets_de_DE.qm"_s, translationFile());
    VLInterface& interface = host.build();
    host.show();
    QCOMPARE(interface.translateString(u"Hello"_s, u"Scene"_s), u"Hallo"_s);
    QCOMPARE(interface.translateString(u"Bye"_s, u"Scene"_s), QString());
}

void TestVLInterface::shortCutForObject_returnsShortcut_byDefault()
{
    PlainHost host;
    VLInterface& interface = host.build();
    QObject object;
    QCOMPARE(interface.shortCutForObject(u"k"_s, &object, u"Ctrl+S"_s), u"Ctrl+S"_s);
    QCOMPARE(interface.shortCutForObject(u"k"_s, nullptr, QString()), QString());
}

void TestVLInterface::context_isTheStoreThatTheLibraryReads()
{
    PlainHost host;
    VLInterface& interface = host.build();
    VLWidget* popup = host.show();
    QCOMPARE(&interface.context(), &popup->manager()->context());
    interface.context().set(ckDocumentationEnabled, true);
    QVERIFY(popup->view()->documentationAvailable());
}

void TestVLInterface::context_isTheSame_whenInterfaceIsConst()
{
    PlainHost host;
    VLInterface& interface = host.build();
    QCOMPARE(&std::as_const(interface).context(), &interface.context());
}

void TestVLInterface::context_isIndependentOfTheStoreGiven()
{
    PlainHost host;
    host.context.set(ckTranslationStem, u"Tips"_s);
    VLInterface& interface = host.build();
    QVERIFY(&interface.context() != &host.context);
    QCOMPARE(interface.context().get(ckTranslationStem, QString()), QVariant(u"Tips"_s));

    QSignalSpy spy(&interface.context(), &VLContext::settingDidChange);
    host.context.set(ckDisabled, true);
    QCOMPARE(spy.count(), 0);
    QVERIFY(host.show()->isVisible());
}

void TestVLInterface::overrides_areCalled_onceConstructed()
{
    VLContext context(nullptr);
    RecordingInterface interface(context);
    interface.context().set(ckMessageLevel, VLMessageInformation);
    interface.show(u"missing"_s, QPoint(), nullptr);
    QCOMPARE(interface.messages(VLMessageInformation),
             QStringList{u"looking for Vidlet for key:missing"_s});
}

void TestVLInterface::setGlobalProperty_setsVariableOfScenes()
{
    PlainHost host;
    VLInterface& interface = host.build();
    VLView* view = host.show()->view();
    const QString text = u"%(product)s"_s;
    QCOMPARE(view->interpolate(text), text);
    interface.setGlobalProperty(u"product"_s, 12);
    QCOMPARE(view->interpolate(text), u"12"_s);
}

void TestVLInterface::keys_areThoseOfTheControlFiles()
{
    PlainHost host;
    QCOMPARE(host.build().keys(), QStringList{u"k"_s});
}

void TestVLInterface::show_showsContentAtPosition()
{
    PlainHost host;
    VLInterface& interface = host.build();
    const VLWidget* popup = host.show();
    QVERIFY(popup);
    QVERIFY(popup->isVisible());
    QCOMPARE(popup->pos(), QPoint(235, 130));
    // On show already.
    QVERIFY(interface.show(u"k"_s, QPoint(200, 100), nullptr));
    QCOMPARE(findPopup(), popup);
}

void TestVLInterface::show_returnsFalse_whenThereIsNoContent()
{
    PlainHost host;
    QVERIFY(!host.build().show(u"missing"_s, QPoint(), nullptr));
    QVERIFY(!findPopup()->isVisible());
}

void TestVLInterface::show_passesReferenceOn()
{
    PlainHost host;
    VLInterface& interface = host.build();
    QWidget widget;
    const QPointer<VLWidget> popup = host.show();
    popup->hide();
    QPointer<QObject> oldRoot = popup->view()->content()->parent();
    QVERIFY(interface.show(u"k"_s, QPoint(200, 100), &widget));
    QCOMPARE(popup->referenceWidget(), &widget);
    // New content came, and the old tree went.
    QVERIFY(!oldRoot);
    host.show();
}

void TestVLInterface::mouseButtonEventFilter_hidesPopup()
{
    PlainHost host;
    VLInterface& interface = host.build();
    VLWidget* popup = host.show();
    QWidget elsewhere;
    QMouseEvent event = mouseEvent(QEvent::MouseButtonPress, QPoint(700, 500));
    QVERIFY(!interface.mouseButtonEventFilter(popup, &event));
    QVERIFY(popup->isVisible());
    QVERIFY(!interface.mouseButtonEventFilter(&elsewhere, &event));
    QVERIFY(!popup->isVisible());
}

void TestVLInterface::mouseMoveEventFilter_hidesPopup_whenPointerIsFarAway()
{
    PlainHost host;
    VLInterface& interface = host.build();
    QWidget control;
    VLWidget* popup = host.show(&control);
    interface.context().set(ckStayDuration, 1);
    QMouseEvent event = mouseEvent(QEvent::MouseMove, QPoint(7000, 5000));
    QVERIFY(!interface.mouseMoveEventFilter(nullptr, &event));
    QTRY_VERIFY(!popup->isVisible());
}

void TestVLInterface::vidletAttribute_readsContent()
{
    PlainHost host;
    VLInterface& interface = host.build();
    const QString none = u"none"_s;
    const auto attribute = [&](const QString& key, const QString& name) {
        return interface.vidletAttribute(key, name, none);
    };
    host.show();
    QCOMPARE(attribute(u"k"_s, u"title"_s), u"A title"_s);
    QCOMPARE(attribute(u"k"_s, u"missing"_s), none);
    QCOMPARE(attribute(u"missing"_s, u"title"_s), none);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLInterface>(argc, argv);
}

#include "tst_vlinterface.moc"
