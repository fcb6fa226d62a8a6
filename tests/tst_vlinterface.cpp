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
        return QStringLiteral("vidletstest");
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
        return {QStringLiteral("of the index")};
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
        packages.writeScene(QStringLiteral("tips.vidlets"));
        packages.writeControlFile(QStringLiteral("tips.vidlets"), QStringLiteral("tips.xml"),
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
        interface->show(QStringLiteral("k"), QPoint(200, 100), reference);
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

    void messageTypes_haveFixedNumbers();
    void resourceTypes_haveFixedNumbers();

    void constructor_hasNoParent();
    void constructor_scansBeforeItReturns();
    void constructor_givesNoKeys_whenThereAreNoDataPaths();
    void constructor_takesGivenIndex();
    void constructor_logsMessagesThroughTheDefault_whenHandleMessageIsOverridden();
    void destructor_deletesManagerFirst();
    void destructor_releasesPopupByDeferredDeletion();
    void destructor_leavesGivenIndexAlive();

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
    host.packages.writeTip(QStringLiteral("late.vidlets"), QStringLiteral("late.xml"),
                           QStringLiteral("late"));
    QCOMPARE(interface.keys(), QStringList{QStringLiteral("k")});
    QVERIFY(!findPopup());
}

void TestVLInterface::constructor_givesNoKeys_whenThereAreNoDataPaths()
{
    VLContext context(nullptr);
    VLInterface interface(context, {}, nullptr);
    QVERIFY(interface.keys().isEmpty());
    QCOMPARE(interface.vidletAttribute(QStringLiteral("k"), QStringLiteral("title"),
                                       QStringLiteral("none")),
             QStringLiteral("none"));
    QVERIFY(!interface.show(QStringLiteral("k"), QPoint(), nullptr));
}

void TestVLInterface::constructor_takesGivenIndex()
{
    EmptyIndex index;
    VLContext context(nullptr);
    VLInterface interface(context, {}, &index);
    QCOMPARE(interface.keys(), QStringList{QStringLiteral("of the index")});
}

void TestVLInterface::constructor_logsMessagesThroughTheDefault_whenHandleMessageIsOverridden()
{
    PackageBuilder packages;
    const QString file = packages.writeTip(QStringLiteral("tips.vidlets"),
                                           QStringLiteral("tips.xml"), QStringLiteral("k"));
    const QString package = packages.path(QStringLiteral("tips.vidlets"));
    VLContext context(nullptr);
    context.set(ckMessageLevel, VLMessageInformation);

    const QStringList lines{
        QStringLiteral("Information:indexing packages (*.vidlets) in %1 ").arg(packages.dataPath()),
        QStringLiteral("Information:indexing control files in %1").arg(package),
        QStringLiteral("Information:looking for control files in :%1/Control").arg(package),
        QStringLiteral("Information:found control file :%1").arg(file)};
    for (const QString& line : lines)
        QTest::ignoreMessage(QtDebugMsg, qPrintable(line));
    QTest::ignoreMessage(
        QtDebugMsg,
        QRegularExpression(QStringLiteral("^Information:Indexed packages in [0-9.e-]+ seconds$")));

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
    QTest::newRow("name") << QStringLiteral("Save button, 2");
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
    QTest::newRow("plain") << QStringLiteral("vidletstest:topic")
                           << QUrl(QStringLiteral("vidletstest:topic"));
    QTest::newRow("what only tolerant parsing takes")
        << QStringLiteral("vidletstest://host/a b%")
        << QUrl(QStringLiteral("vidletstest://host/a%20b%25"), QUrl::StrictMode);
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
                                               QStringLiteral("vidletstest:topic")));
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
    const QString text = QStringLiteral("text");
    row("error", 100, text, QStringLiteral("ERROR:text"));
    row("warning", 200, text, QStringLiteral("Warning:text"));
    row("information", 300, text, QStringLiteral("Information:text"));
    row("debug", 400, text, QStringLiteral("DEBUG:text"));
    row("unknown number", 250, text, QStringLiteral("250:text"));
    row("zero", 0, text, QStringLiteral("0:text"));
    row("negative number", -7, text, QStringLiteral("-7:text"));
    row("blanks", 100, QStringLiteral(" a  b "), QStringLiteral("ERROR: a  b "));
    row("quotes", 100, QStringLiteral("a \"b\""), QStringLiteral("ERROR:a \"b\""));
    row("beyond ASCII", 100, QStringLiteral("gr\u00fcn \u2713"),
        QStringLiteral("ERROR:gr\u00fcn \u2713"));
    row("place marks", 100, QStringLiteral("%1 %2 %s %d"), QStringLiteral("ERROR:%1 %2 %s %d"));
    row("empty", 100, QString(), QStringLiteral("ERROR:"));
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
    interface.handleMessage(VLMessageDebug, QStringLiteral("text"));
}

void TestVLInterface::translateString_returnsText_whenThereIsNoPopup()
{
    PlainHost host;
    QCOMPARE(host.build().translateString(QStringLiteral("Hello"), QStringLiteral("Scene")),
             QStringLiteral("Hello"));
}

void TestVLInterface::translateString_usesTranslationOfContentOnShow()
{
    PlainHost host;
    host.context.set(ckLocale, QStringLiteral("de_DE"));
    host.packages.write(QStringLiteral("tips.vidlets/l10n/Vidlets_de_DE.qm"), translationFile());
    VLInterface& interface = host.build();
    host.show();
    QCOMPARE(interface.translateString(QStringLiteral("Hello"), QStringLiteral("Scene")),
             QStringLiteral("Hallo"));
    QCOMPARE(interface.translateString(QStringLiteral("Bye"), QStringLiteral("Scene")), QString());
}

void TestVLInterface::shortCutForObject_returnsShortcut_byDefault()
{
    PlainHost host;
    VLInterface& interface = host.build();
    QObject object;
    QCOMPARE(interface.shortCutForObject(QStringLiteral("k"), &object, QStringLiteral("Ctrl+S")),
             QStringLiteral("Ctrl+S"));
    QCOMPARE(interface.shortCutForObject(QStringLiteral("k"), nullptr, QString()), QString());
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
    host.context.set(ckTranslationStem, QStringLiteral("Tips"));
    VLInterface& interface = host.build();
    QVERIFY(&interface.context() != &host.context);
    QCOMPARE(interface.context().get(ckTranslationStem, QString()),
             QVariant(QStringLiteral("Tips")));

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
    interface.show(QStringLiteral("missing"), QPoint(), nullptr);
    QCOMPARE(interface.messages(VLMessageInformation),
             QStringList{QStringLiteral("looking for Vidlet for key:missing")});
}

void TestVLInterface::setGlobalProperty_setsVariableOfScenes()
{
    PlainHost host;
    VLInterface& interface = host.build();
    VLView* view = host.show()->view();
    const QString text = QStringLiteral("%(product)s");
    QCOMPARE(view->interpolate(text), text);
    interface.setGlobalProperty(QStringLiteral("product"), 12);
    QCOMPARE(view->interpolate(text), QStringLiteral("12"));
}

void TestVLInterface::keys_areThoseOfTheControlFiles()
{
    PlainHost host;
    QCOMPARE(host.build().keys(), QStringList{QStringLiteral("k")});
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
    QVERIFY(interface.show(QStringLiteral("k"), QPoint(200, 100), nullptr));
    QCOMPARE(findPopup(), popup);
}

void TestVLInterface::show_returnsFalse_whenThereIsNoContent()
{
    PlainHost host;
    QVERIFY(!host.build().show(QStringLiteral("missing"), QPoint(), nullptr));
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
    QVERIFY(interface.show(QStringLiteral("k"), QPoint(200, 100), &widget));
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
    const QString none = QStringLiteral("none");
    const auto attribute = [&](const QString& key, const QString& name) {
        return interface.vidletAttribute(key, name, none);
    };
    host.show();
    QCOMPARE(attribute(QStringLiteral("k"), QStringLiteral("title")), QStringLiteral("A title"));
    QCOMPARE(attribute(QStringLiteral("k"), QStringLiteral("missing")), none);
    QCOMPARE(attribute(QStringLiteral("missing"), QStringLiteral("title")), none);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLInterface>(argc, argv);
}

#include "tst_vlinterface.moc"
