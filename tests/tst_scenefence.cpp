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

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QImage>
#include <QLibraryInfo>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScopeGuard>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include <algorithm>
#include <memory>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr auto kPictureSize = 37;

/// Stands in for the desktop, which a test must not bother.
class Desktop : public QObject
{
    Q_OBJECT

public:
    Desktop()
    {
        for (const QString& scheme : schemes())
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~Desktop() override
    {
        for (const QString& scheme : schemes())
            QDesktopServices::unsetUrlHandler(scheme);
    }
    Q_DISABLE_COPY_MOVE(Desktop)

    QStringList opened;

public Q_SLOTS:
    void open(const QUrl& url)
    {
        opened += url.toString();
    }

private:
    static QStringList schemes()
    {
        return {u"http"_s, u"https"_s, u"mailto"_s, u"file"_s, u"odd"_s};
    }
};

/// Keeps what Qt writes to the log of a font that it does not get, which it may do at any time from
/// then on.
class FontSilence
{
public:
    FontSilence()
    {
        ofTests = qInstallMessageHandler(handle);
    }
    ~FontSilence()
    {
        qInstallMessageHandler(ofTests);
    }
    Q_DISABLE_COPY_MOVE(FontSilence)

private:
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        if (!text.contains("Unable to load font"_L1))
            ofTests(type, context, text);
    }

    static inline QtMessageHandler ofTests = nullptr;
};

/// A view on one evil package, a directory outside of it with things to take, and a server.
class EvilStage
{
public:
    explicit EvilStage(bool isConfined = true)
        : outside(QDir::cleanPath(packages.path(u"../outside"_s)))
    {
        context.set(ckConfineContent, isConfined);
        packages.writeTip(u"evil.vidlets"_s, u"tips.xml"_s, u"k"_s);
        packages.write(u"../outside/Outside.qml"_s,
                       "import QtQuick\nItem { property bool isOutside: true }\n");
        packages.write(u"../outside/outside.js"_s, "var canary = 'canary';\n");
        packages.write(u"../outside/outside.mjs"_s, "export var canary = 'canary';\n");
        packages.write(u"../outside/canary.txt"_s, "canary");
        savePicture(QDir(outside).filePath(u"canary.png"_s));
        packages.packageRoot(u"evil.vidlets/ui"_s);
        savePicture(packages.path(u"evil.vidlets/ui/good.png"_s));
        QFile::link(outside, packages.path(u"evil.vidlets/ui/link"_s));
        server.listen(QHostAddress::LocalHost);
        manager =
            std::make_unique<VLManager>(&host, context, QStringList{packages.dataPath()}, &index);
        view = std::make_unique<VLView>(manager.get(), nullptr);
        // The host is told of it, and the log of a test stays empty.
        view->engine()->setOutputWarningsToStandardError(false);
    }

    /// Puts the addresses of this stage in the place of DIR, OUT, NET and PKG.
    QByteArray filled(QByteArray text) const
    {
        text.replace("DIR", outside.toUtf8());
        text.replace("OUT", "file://" + outside.toUtf8());
        text.replace("NET", "http://127.0.0.1:" + QByteArray::number(server.serverPort()));
        text.replace("PKG", "file://" + packages.path(u"evil.vidlets"_s).toUtf8());
        return text;
    }
    /// Loads a scene around another file with @p body, whose errors go to the engine alone.
    void load(const QByteArray& body, const QByteArray& imports = QByteArray())
    {
        const QByteArray number = QByteArray::number(++m_scenes);
        write(u"ui/Evil%1.qml"_s.arg(m_scenes),
              "import QtQuick\n" + imports
                  + "\nItem { id: scene; width: 50; height: 50\nproperty var leak: null\n" + body
                  + "\n}\n");
        write(u"ui/Scene%1.qml"_s.arg(m_scenes),
              "import QtQuick\nLoader { source: 'Evil" + number
                  + ".qml'; property var leak: item ? item.leak : null }\n");
        view->loadQML(packages.path(u"evil.vidlets/ui/Scene%1.qml"_s.arg(m_scenes)));
    }
    void write(const QString& path, const QByteArray& content)
    {
        packages.write(u"evil.vidlets/"_s + path, filled(content));
    }
    QVariant leak() const
    {
        return view->rootObject() ? view->rootObject()->property("leak") : QVariant();
    }
    QStringList warnings() const
    {
        return host.messages(VLMessageWarning);
    }
    /// The warnings of the fence alone: guarded content is told of a scene that fails, too.
    QStringList refusals() const
    {
        QStringList list = warnings();
        list.removeIf([](const QString& text) { return !text.startsWith("Kept "_L1); });
        return list;
    }
    /// Whether the first to connect to the server is the test itself.
    bool isServerUntouched()
    {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, server.serverPort());
        if (!socket.waitForConnected() || !server.waitForNewConnection(5000))
            return false;
        const std::unique_ptr<QTcpSocket> first(server.nextPendingConnection());
        return first && first->peerPort() == socket.localPort() && !server.hasPendingConnections();
    }
    static void savePicture(const QString& path)
    {
        QImage picture(kPictureSize, kPictureSize, QImage::Format_RGB32);
        picture.fill(Qt::red);
        picture.save(path);
    }

    PackageBuilder packages;
    QString outside;
    VLContext context{nullptr};
    RecordingInterface host{context};
    VLIndex index{nullptr, {}};
    QTcpServer server;
    std::unique_ptr<VLManager> manager;
    VLXmlElement tree;
    std::unique_ptr<VLView> view;

private:
    int m_scenes = 0;
};

} // namespace

class TestSceneFence : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void scene_isKeptFromIt_whenItReachesOut_data();
    void scene_isKeptFromIt_whenItReachesOut();
    void refusedAddress_isNoFaultOfScene_whenContentIsGuardedToo();
    void textSetLater_isEmptied_whenItShowsOuterPicture_data();
    void textSetLater_isEmptied_whenItShowsOuterPicture();
    void textSetLater_stays_whenItShowsOwnPicture();
    void contentInAnyForm_losesPicture_whenItLeadsOut_data();
    void contentInAnyForm_losesPicture_whenItLeadsOut();
    void warnings_end_whenSceneFindsEverNewAddresses();
    void refusedLoader_isWarnedOfOnce_whenContentIsGuardedToo();
    void host_isNotHeldUp_whenWorkerIsBusy();
    void host_lives_whenFileIsNotRegular_data();
    void host_lives_whenFileIsNotRegular();
    void scene_isLeftOut_whenItIsNotRegular();
    void scene_getsPackage_whenItsDirectoryComesLater();
    void scene_isKeptFromModule_whenItReachesOut();
    void scene_getsIt_whenFenceIsOpen_data();
    void scene_getsIt_whenFenceIsOpen();
    void scene_getsItsOwnFiles_withoutWarning();
    void scene_isBound_whenSettingComesLater();
    void warning_comesOnce_perAddressAndScene();
    void warning_comesOnce_whenContentIsGuardedToo_data();
    void warning_comesOnce_whenContentIsGuardedToo();
    void attribute_isRefused_whenItLeadsOut_data();
    void attribute_isRefused_whenItLeadsOut();
    void refusedScene_isWarnedOfOnce_whenContentIsGuardedToo_data();
    void refusedScene_isWarnedOfOnce_whenContentIsGuardedToo();
    void content_losesAddress_whenItLeadsOut();
    void locator_isRefused_whenSchemeIsNotHarmless();
    void locator_reachesOverride_whateverItIs();
};

void TestSceneFence::scene_isKeptFromIt_whenItReachesOut_data()
{
    QTest::addColumn<QByteArray>("imports");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("named");

    const auto row = [](const char* name, const char* body, const char* named,
                        const char* imports = "") {
        QTest::newRow(name) << QByteArray(imports) << QByteArray(body) << QByteArray(named);
    };
    row("remote picture", "Image { source: 'NET/a.png' }", "NET/a.png");
    row("remote animation", "AnimatedImage { source: 'NET/a.gif' }", "NET/a.gif");
    row("remote border", "BorderImage { source: 'NET/a.sci' }", "NET/a.sci");
    row("remote scene", "Loader { source: 'NET/A.qml' }", "NET/A.qml");
    row("remote component", "property var c: Qt.createComponent('NET/A.qml')", "NET/A.qml");
    row("remote font", "FontLoader { source: 'NET/a.ttf' }", "NET/a.ttf");
    row("remote picture in styled text",
        "Text { textFormat: Text.StyledText; text: '<img src=\"NET/s.png\">' }", "NET/s.png");
    row("remote picture in rich text",
        "Text { textFormat: Text.RichText; text: '<img src=\"NET/r.png\">' }", "NET/r.png");
    row("remote picture in Markdown",
        "Text { textFormat: Text.MarkdownText; text: '![a](NET/m.png)' }", "NET/m.png");
    row("remote picture in edit",
        "TextEdit { textFormat: Text.RichText; text: '<img src=\"NET/e.png\">' }", "NET/e.png");
    row("remote picture on canvas",
        "Canvas { anchors.fill: parent; Component.onCompleted: loadImage('NET/c.png') }",
        "NET/c.png");
    row("request to network",
        "Component.onCompleted: { const r = new XMLHttpRequest; r.open('GET', 'NET/x'); r.send() }",
        "NET/x");
    row("post to network",
        "Component.onCompleted: { const r = new XMLHttpRequest; r.open('POST', 'NET/p');"
        " r.send('a') }",
        "NET/p");
    row("remote import", "", "NET/lib", "import 'NET/lib' as L");
    row("remote script import", "", "NET/a.js", "import 'NET/a.js' as L");

    row("outer picture",
        "Image { source: 'OUT/canary.png'; onStatusChanged: if (status === Image.Ready) "
        "scene.leak = implicitWidth }",
        "OUT/canary.png");
    row("outer picture put together",
        "Image { source: ['fi', 'le:DIR/canary.png'].join(''); onStatusChanged: if (status === "
        "Image.Ready) scene.leak = implicitWidth }",
        "OUT/canary.png");
    row("outer text put together",
        "Text { id: t; text: '<img src=\"' + ['fi', 'le:DIR/canary.png'].join('') + '\">' }",
        "DIR/canary.png");
    row("outer font", "FontLoader { source: '../../../outside/canary.ttf' }", "OUT/canary.ttf");
    row("outer picture by steps",
        "Image { source: '../../../outside/canary.png'; onStatusChanged: if (status === "
        "Image.Ready) scene.leak = implicitWidth; }",
        "OUT/canary.png");
    row("outer picture by link",
        "Image { source: 'link/canary.png'; onStatusChanged: if (status === Image.Ready) "
        "scene.leak = implicitWidth }",
        "link/canary.png");
    row("outer scene",
        "Loader { source: '../../../outside/Outside.qml'; onLoaded: scene.leak = 1 }",
        "OUT/Outside.qml");
    row("outer scene by link", "Loader { source: 'link/Outside.qml'; onLoaded: scene.leak = 1 }",
        "link/Outside.qml");
    row("outer picture in styled text",
        "Text { textFormat: Text.StyledText; text: '<img src=\"OUT/canary.png\">' }",
        "OUT/canary.png");
    row("outer picture in rich text by steps",
        "Text { textFormat: Text.RichText; text: '<img src=\"../../../outside/canary.png\">' }",
        "../../../outside/canary.png");
    row("outer picture in Markdown",
        "Text { textFormat: Text.MarkdownText; text: '![a](OUT/canary.png)' }", "OUT/canary.png");
    row("outer picture on canvas",
        "Canvas { anchors.fill: parent; Component.onCompleted: loadImage('OUT/canary.png');"
        " onImageLoaded: scene.leak = 1 }",
        "OUT/canary.png");
    row("outer directory", "L.Outside { Component.onCompleted: scene.leak = 1 }", "OUT/Outside.qml",
        "import '../../../outside' as L");
    row("outer script", "Component.onCompleted: leak = L.canary", "OUT/outside.js",
        "import '../../../outside/outside.js' as L");
    row("outer module script", "Component.onCompleted: leak = L.canary", "OUT/outside.mjs",
        "import '../../../outside/outside.mjs' as L");
    row("request to disk",
        "Component.onCompleted: { const r = new XMLHttpRequest; r.open('GET', "
        "'../../../outside/canary.txt', false); r.send(); if (r.responseText) leak = "
        "r.responseText }",
        "OUT/canary.txt");
    row("worker", "WorkerScript { source: 'worker.mjs'; onMessage: m => scene.leak = m.text }",
        "WorkerScript");
    row("page on desktop", "Component.onCompleted: Qt.openUrlExternally('http://evil.test/')",
        "http://evil.test/");
    row("odd scheme on desktop", "Component.onCompleted: Qt.openUrlExternally('odd:thing')",
        "odd:thing");
    row("program on desktop", "Component.onCompleted: Qt.openUrlExternally('evil.desktop')",
        "evil.desktop");
    row("plugin", "P.Thing {}", "plugged/qmldir", "import 'plugged' as P");
    row("plugin behind another blank", "P.Thing {}", "blank/qmldir", "import 'blank' as P");
    row("outer picture for fine points", "Image { source: 'fine.png' }", "fine@2x.png");
    row("outer texture in place of a picture", "Image { source: 'texture' }", "texture.ktx");
    row("vector picture with an outer one", "Image { source: 'outer.svg' }", "outer.svg");
    row("vector picture by another name", "Image { source: 'vector.png' }", "vector.png");
    row("vector picture in rich text",
        "Text { textFormat: Text.RichText; text: '<img src=\"outer.svg\">' }", "outer.svg");
    row("vector picture in the address",
        "Image { source: 'data:image/svg+xml,<svg><image href=\"/etc/a.png\"/></svg>' }",
        "a vector picture with outer addresses");
    row("compiled scene", "Loader { source: 'Compiled.qml'; onLoaded: scene.leak = 1 }",
        "Compiled.qmlc");
}

void TestSceneFence::scene_isKeptFromIt_whenItReachesOut()
{
    QFETCH(const QByteArray, imports);
    QFETCH(const QByteArray, body);
    QFETCH(const QByteArray, named);

    qputenv("QML_XHR_ALLOW_FILE_READ", "1");
    const auto restore = qScopeGuard([] { qunsetenv("QML_XHR_ALLOW_FILE_READ"); });
    Desktop desktop;
    EvilStage stage;
    stage.write(u"ui/worker.mjs"_s,
                "import { canary } from 'OUT/outside.mjs'\n"
                "const r = new XMLHttpRequest; r.open('GET', 'NET/w'); r.send();\n"
                "Qt.openUrlExternally('http://evil.test/');\n"
                "WorkerScript.sendMessage({ text: canary });\n");
    stage.write(u"ui/evil.desktop"_s, "[Desktop Entry]\nExec=evil\n");
    stage.write(u"ui/plugged/qmldir"_s, "module plugged\nplugin evil\n");
    for (const QString& file : {u"ui/outer.svg"_s, u"ui/vector.png"_s})
        stage.write(file, "<svg><image xlink:href='DIR/canary.png'/></svg>");
    stage.write(u"ui/blank/qmldir"_s, "module blank\n\xc2\xa0plugin evil\n");
    EvilStage::savePicture(stage.packages.path(u"evil.vidlets/ui/fine.png"_s));
    for (const QString& link : {u"fine@2x.png"_s, u"texture.ktx"_s}) {
        QFile::link(stage.outside + u"/canary.png"_s,
                    stage.packages.path(u"evil.vidlets/ui/"_s + link));
    }
    stage.write(u"ui/Compiled.qml"_s, "import QtQuick\nItem {}\n");
    stage.write(u"ui/Compiled.qmlc"_s, "evil");
    const FontSilence silence;

    stage.load(body, imports);
    const QString expected = QString::fromUtf8(stage.filled(named));
    QTRY_VERIFY(!stage.refusals().isEmpty());
    QVERIFY2(stage.refusals().size() == 1, qPrintable(stage.refusals().join(u'\n')));
    QVERIFY2(stage.refusals().first().contains(expected), qPrintable(stage.refusals().first()));
    QVERIFY(stage.refusals().first().endsWith(u"/ui/Scene1.qml"_s));
    QVERIFY(stage.isServerUntouched());
    QVERIFY(!stage.leak().isValid() || stage.leak().isNull());
    QCOMPARE(desktop.opened, QStringList());
    QCOMPARE(stage.refusals().size(), 1);
}

void TestSceneFence::refusedAddress_isNoFaultOfScene_whenContentIsGuardedToo()
{
    EvilStage stage;
    stage.manager->context().set(ckGuardContent, true);
    stage.load("Image { source: 'NET/a.png'; onStatusChanged: if (status === Image.Error)"
               " scene.leak = 1 }");
    // The engine has told of its error by then.
    QTRY_COMPARE(stage.leak().toInt(), 1);
    QCOMPARE(stage.warnings().size(), 1);
    QVERIFY(stage.warnings().first().startsWith("Kept "_L1));
}

void TestSceneFence::textSetLater_isEmptied_whenItShowsOuterPicture_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("change");
    const QByteArray picture = "['<im', 'g sr', 'c=\"DIR', '/canary.png\">'].join('')";
    const QByteArray two = "['<im', 'g src=\"good.png\" sr', 'c=\"DIR', '/canary.png\">'].join('')";
    const QByteArray markdown = "['!', '[a [b] c](DIR', '/canary.png)'].join('')";
    const auto set = [](const QByteArray& value) { return "t.text = " + value; };
    QTest::newRow("rich") << QByteArray("Text { id: t; textFormat: Text.RichText }")
                          << set(picture);
    QTest::newRow("rich, two sources")
        << QByteArray("Text { id: t; textFormat: Text.RichText }") << set(two);
    QTest::newRow("styled") << QByteArray("Text { id: t; textFormat: Text.StyledText }")
                            << set(picture);
    QTest::newRow("styled, two sources")
        << QByteArray("Text { id: t; textFormat: Text.StyledText }") << set(two);
    QTest::newRow("automatic") << QByteArray("Text { id: t }") << set("'<b>a</b>' + " + picture);
    QTest::newRow("Markdown") << QByteArray("Text { id: t; textFormat: Text.MarkdownText }")
                              << set(markdown);
    QTest::newRow("format set later")
        << QByteArray("Text { id: t; textFormat: Text.PlainText }")
        << QByteArray("{ " + set(picture) + "; t.textFormat = Text.RichText }");
    QTest::newRow("put back at once")
        << QByteArray("Text { id: t; textFormat: Text.RichText; property string other;"
                      " onTextChanged: if (!t.text) t.text = other }")
        << QByteArray("{ t.other = " + picture + "; t.text = t.other }");
    QTest::newRow("edit") << QByteArray("TextEdit { id: t; textFormat: TextEdit.RichText }")
                          << set(picture);
    QTest::newRow("edit, inserted")
        << QByteArray("TextEdit { id: t; text: 'a'; textFormat: TextEdit.RichText }")
        << QByteArray("t.insert(0, " + picture + ")");
    QTest::newRow("edit, Markdown")
        << QByteArray("TextEdit { id: t; textFormat: TextEdit.MarkdownText }") << set(markdown);
    QTest::newRow("made later without an owner")
        << QByteArray("property Item t: null\n"
                      "Component { id: c; Text { textFormat: Text.RichText } }")
        << QByteArray("{ t = c.createObject(null); t.parent = scene; " + set(picture) + " }");
}

void TestSceneFence::textSetLater_isEmptied_whenItShowsOuterPicture()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QByteArray, change);
    EvilStage stage;
    stage.load(
        text + "\nfunction change() " + (change.startsWith('{') ? change : "{ " + change + " }")
        + "\nfunction length() { return t.getText ? t.getText(0, 9).length : t.text.length }");
    stage.view->show();
    QVERIFY(QTest::qWaitForWindowExposed(stage.view.get()));
    auto* scene = stage.view->rootObject()->property("item").value<QObject*>();
    QVERIFY(scene);
    QVERIFY(QMetaObject::invokeMethod(scene, "change"));
    QTRY_COMPARE(stage.refusals().size(), 1);
    QVERIFY(stage.refusals().first().contains("canary.png"_L1));
    QVariant length;
    QMetaObject::invokeMethod(scene, "length", Q_RETURN_ARG(QVariant, length));
    if (!text.contains("onTextChanged"))
        QCOMPARE(length.toInt(), 0);
    const QImage picture = stage.view->grabWindow();
    QVERIFY(!picture.isNull());
    for (int x = 0; x < picture.width(); ++x)
        QVERIFY(picture.pixelColor(x, qMin(20, picture.height() - 1)) != QColor(Qt::red));
}

void TestSceneFence::textSetLater_stays_whenItShowsOwnPicture()
{
    EvilStage stage;
    stage.load("Text { id: t; textFormat: Text.RichText }\nTextEdit { id: e; textFormat: "
               "TextEdit.RichText }\nText { id: p; textFormat: Text.PlainText }\n"
               "function change() { t.text = 'a <img src=\"good.png\">'; e.text = t.text;"
               " p.text = ['<im', 'g sr', 'c=\"DIR', '/canary.png\">'].join('') }\n"
               "function length() { return t.text.length * e.length * p.text.length }");
    stage.view->show();
    QVERIFY(QTest::qWaitForWindowExposed(stage.view.get()));
    auto* scene = stage.view->rootObject()->property("item").value<QObject*>();
    QVERIFY(QMetaObject::invokeMethod(scene, "change"));
    QVERIFY(!stage.view->grabWindow().isNull());
    QVariant length;
    QMetaObject::invokeMethod(scene, "length", Q_RETURN_ARG(QVariant, length));
    QVERIFY(length.toInt() > 0);
    QCOMPARE(stage.warnings(), QStringList());
}

void TestSceneFence::contentInAnyForm_losesPicture_whenItLeadsOut_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("rest");
    QTest::newRow("two sources") << u"<img src='good.png' src='DIR/canary.png'> a"_s
                                 << u"<img src='good.png' src=''> a"_s;
    QTest::newRow("blank in address")
        << u"<img src='a b/../../../../outside/canary.png'> a"_s << u"<img src=''> a"_s;
    QTest::newRow("nested brackets") << u"![a [b] c](DIR/canary.png) a"_s << u"![a [b] c]() a"_s;
    QTest::newRow("put together by taking out")
        << u"<img src='/zz'><img src='/t/zzmp/a.png'> a"_s << u"<img src=''><img src=''> a"_s;
    QTest::newRow("same letters elsewhere")
        << u"<img src='/'> <b>and/or</b>"_s << u"<img src=''> <b>and/or</b>"_s;
    QTest::newRow("hidden letters")
        << u"a <img src='&#47;etc/canary.png'>"_s << u"a <img src=''>"_s;
    QTest::newRow("hidden where nothing can be taken out")
        << u"a <img source=&#47;etc/canary.png?&amp;>"_s << QString();
}

void TestSceneFence::contentInAnyForm_losesPicture_whenItLeadsOut()
{
    QFETCH(const QString, text);
    QFETCH(const QString, rest);
    EvilStage stage;
    stage.packages.writeScene(u"evil.vidlets"_s);
    auto* content = new VLXmlElement(&stage.tree);
    content->setAttribute(u"VLPackagName"_s, u"evil"_s);
    auto* element = new VLXmlElement(content);
    element->setContent(QString::fromUtf8(stage.filled(text.toUtf8())));
    stage.view->setContent(content);
    QCOMPARE(element->content(), rest);
    QVERIFY(!stage.warnings().isEmpty());
}

void TestSceneFence::warnings_end_whenSceneFindsEverNewAddresses()
{
    EvilStage stage;
    stage.load("Component.onCompleted: { for (let i = 0; i < 1000; ++i) Qt.resolvedUrl('NET/' + i);"
               " leak = 1 }");
    QCOMPARE(stage.leak().toInt(), 1);
    QCOMPARE(stage.refusals().size(), 100);
    QCOMPARE(stage.warnings().size(), 101);
    QVERIFY(stage.warnings().last().startsWith("Keeping more from the scene "_L1));
}

void TestSceneFence::refusedLoader_isWarnedOfOnce_whenContentIsGuardedToo()
{
    EvilStage stage;
    stage.manager->context().set(ckGuardContent, true);
    stage.load("Loader { source: 'NET/A.qml'; onStatusChanged: if (status === Loader.Error)"
               " scene.leak = 1; Component.onCompleted: scene.leak = 2 }");
    QTRY_VERIFY(!stage.leak().isNull());
    QCOMPARE(stage.warnings().size(), 1);
    QVERIFY(stage.warnings().first().startsWith("Kept "_L1));
}

void TestSceneFence::host_isNotHeldUp_whenWorkerIsBusy()
{
    EvilStage stage(false);
    stage.write(u"ui/worker.mjs"_s,
                "WorkerScript.onMessage = m => { WorkerScript.sendMessage(1);"
                " const end = Date.now() + 3000; while (Date.now() < end); }\n");
    stage.load("WorkerScript { id: w; source: 'worker.mjs'; onMessage: m => scene.leak = 1 }\n"
               "Timer { interval: 1; repeat: true; running: scene.leak === null;"
               " onTriggered: w.sendMessage(1) }");
    QTRY_COMPARE(stage.leak().toInt(), 1);
    stage.manager->context().set(ckConfineContent, true);
    // To wait for the worker each time would take as long as it computes.
    constexpr int kAddresses = 100;
    for (int i = 0; i < kAddresses; ++i) {
        stage.view->engine()->interceptUrl(QUrl(u"qrc:/a"_s),
                                           QQmlAbstractUrlInterceptor::UrlString);
    }
    const QObjectList children = stage.view->engine()->children();
    QVERIFY(std::any_of(children.cbegin(), children.cend(), [](const QObject* child) {
        const auto* thread = qobject_cast<const QThread*>(child);
        return thread && thread->inherits("QQuickWorkerScriptEngine") && thread->isRunning();
    }));
    QCOMPARE(stage.refusals().size(), 1);
}

void TestSceneFence::host_lives_whenFileIsNotRegular_data()
{
    QTest::addColumn<contextKey>("safeguard");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("body");
    for (const contextKey key : {ckConfineContent, ckGuardContent}) {
        QTest::addRow("picture %d", key)
            << key << u"fifo.png"_s << QByteArray("Image { source: 'fifo.png' }");
        QTest::addRow("loader %d", key)
            << key << u"Fifo.qml"_s << QByteArray("Loader { source: 'Fifo.qml' }");
        QTest::addRow("module %d", key) << key << u"qmldir"_s << QByteArray("Item {}");
    }
    QTest::newRow("picture for fine points")
        << ckConfineContent << u"good@2x.png"_s << QByteArray("Image { source: 'good.png' }");
}

void TestSceneFence::host_lives_whenFileIsNotRegular()
{
    QFETCH(const contextKey, safeguard);
    QFETCH(const QString, file);
    QFETCH(const QByteArray, body);
    EvilStage stage(false);
    stage.manager->context().set(safeguard, true);
    const QString fifo = stage.packages.path(u"evil.vidlets/ui/"_s + file);
    QCOMPARE(mkfifo(QFile::encodeName(fifo).constData(), 0700), 0);
    stage.load(body);
    QTRY_COMPARE(stage.refusals().size(), 1);
    QVERIFY2(stage.refusals().first().contains(file), qPrintable(stage.refusals().first()));
}

void TestSceneFence::scene_isLeftOut_whenItIsNotRegular()
{
    EvilStage stage(false);
    stage.manager->context().set(ckGuardContent, true);
    const QString fifo = stage.packages.path(u"evil.vidlets/ui/Fifo.qml"_s);
    QCOMPARE(mkfifo(QFile::encodeName(fifo).constData(), 0700), 0);
    stage.view->loadQML(fifo);
    QVERIFY(!stage.view->rootObject());
    QCOMPARE(stage.warnings(), QStringList(fifo + u": not a regular file of a sensible size"_s));
}

void TestSceneFence::scene_getsPackage_whenItsDirectoryComesLater()
{
    EvilStage stage;
    const QUrl shared = QUrl::fromLocalFile(stage.packages.path(u"../shared/a.png"_s));
    const auto intercepted = [&stage, &shared] {
        return stage.view->engine()->interceptUrl(shared, QQmlAbstractUrlInterceptor::UrlString);
    };
    stage.manager->context().set(ckExtraComponentPath, stage.packages.path(u"../shared"_s));
    stage.context.set(ckExtraComponentPath, stage.packages.path(u"../shared"_s));
    stage.index.context().set(ckExtraComponentPath, stage.packages.path(u"../shared"_s));
    QVERIFY(intercepted().isEmpty());
    QVERIFY(QDir().mkpath(stage.packages.path(u"../shared"_s)));
    QCOMPARE(intercepted(), shared);
}

void TestSceneFence::scene_isKeptFromModule_whenItReachesOut()
{
    EvilStage stage;
    const QString modules = QLibraryInfo::path(QLibraryInfo::QmlImportsPath);
    if (!QFileInfo::exists(modules + u"/QtMultimedia/qmldir"_s)) {
        QTest::qSkip("There is no module here that opens files.", __FILE__, __LINE__);
        return;
    }
    stage.load("MediaPlayer { Component.onCompleted: scene.leak = 1 }", "import QtMultimedia");
    QTRY_COMPARE(stage.refusals().size(), 1);
    QVERIFY(stage.refusals().first().contains("QtMultimedia/qmldir"_L1));
    QVERIFY(stage.leak().isNull());
}

void TestSceneFence::scene_getsIt_whenFenceIsOpen_data()
{
    QTest::addColumn<QByteArray>("imports");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("picture")
        << QByteArray()
        << QByteArray("Image { source: 'OUT/canary.png'; Component.onCompleted: if (status === "
                      "Image.Ready) scene.leak = implicitWidth }");
    QTest::newRow("script") << QByteArray("import '../../../outside/outside.js' as L")
                            << QByteArray("Component.onCompleted: leak = L.canary");
    QTest::newRow("worker")
        << QByteArray()
        << QByteArray("WorkerScript { source: 'worker.mjs'; onMessage: m => scene.leak = m.text }");
    QTest::newRow("canvas")
        << QByteArray()
        << QByteArray(
               "Canvas { anchors.fill: parent; Component.onCompleted: loadImage('OUT/canary.png');"
               " onImageLoaded: scene.leak = 1 }");
}

void TestSceneFence::scene_getsIt_whenFenceIsOpen()
{
    QFETCH(const QByteArray, imports);
    QFETCH(const QByteArray, body);
    EvilStage stage(false);
    stage.write(u"ui/worker.mjs"_s,
                "import { canary } from 'OUT/outside.mjs'\n"
                "WorkerScript.sendMessage({ text: canary });\n");
    stage.load(body, imports);
    QTRY_VERIFY(stage.leak().isValid() && !stage.leak().isNull());
    QCOMPARE(stage.warnings(), QStringList());
}

void TestSceneFence::scene_getsItsOwnFiles_withoutWarning()
{
    EvilStage stage;
    stage.write(u"ui/parts/Part.qml"_s, "import QtQuick\nItem { property int number: 3 }\n");
    stage.write(u"ui/parts/qmldir"_s, "module parts\nPart 1.0 Part.qml\n");
    stage.write(u"ui/sum.js"_s, "function sum(a, b) { return a + b }\n");
    stage.load("Image { id: a; source: 'good.png' }\n"
               "Image { id: b; source: 'PKG/ui/good.png' }\n"
               "Text { textFormat: Text.RichText; text: '<img src=\"good.png\">' }\n"
               "Text { textFormat: Text.StyledText; text: '<img src=\"../ui/good.png\">' }\n"
               "Loader { id: c; source: 'parts/Part.qml' }\n"
               "P.Part { id: d }\n"
               "Component.onCompleted: leak = J.sum(a.implicitWidth + b.implicitWidth,"
               " c.item.number + d.number)",
               "import QtQuick.Layouts\nimport 'parts' as P\nimport 'sum.js' as J");
    QTRY_COMPARE(stage.leak().toInt(), 2 * kPictureSize + 6);
    QCOMPARE(stage.warnings(), QStringList());
}

void TestSceneFence::scene_isBound_whenSettingComesLater()
{
    EvilStage stage(false);
    stage.load("Image { id: image; onStatusChanged: if (status === Image.Ready) scene.leak = 1 }\n"
               "function reach(url) { image.source = url }");
    QVERIFY(stage.view->rootObject());
    stage.manager->context().set(ckConfineContent, true);
    QMetaObject::invokeMethod(stage.view->rootObject()->property("item").value<QObject*>(), "reach",
                              Q_ARG(QVariant, QString::fromUtf8(stage.filled("OUT/canary.png"))));
    QCOMPARE(stage.warnings().size(), 1);
    QVERIFY(stage.leak().isNull());
}

void TestSceneFence::warning_comesOnce_perAddressAndScene()
{
    EvilStage stage;
    const QByteArray two = "Image { source: '../../../outside/canary.png' }\n"
                           "Image { source: '../../../outside/canary.png' }";
    stage.load(two);
    QCOMPARE(stage.warnings().size(), 1);
    stage.load(two);
    QCOMPARE(stage.warnings().size(), 2);
}

void TestSceneFence::warning_comesOnce_whenContentIsGuardedToo_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::newRow("remote") << QByteArray("NET/i.png");
    QTest::newRow("outside") << QByteArray("../../../outside/canary.png");
}

void TestSceneFence::warning_comesOnce_whenContentIsGuardedToo()
{
    QFETCH(const QByteArray, source);
    EvilStage stage;
    stage.manager->context().set(ckGuardContent, true);
    stage.load("Image { source: '" + source + "'; onStatusChanged: leak = status }");
    constexpr int kImageError = 3;
    QTRY_COMPARE(stage.leak().toInt(), kImageError);
    // The reader complains of what it was given in place of the picture.
    QCoreApplication::processEvents();
    QCOMPARE(stage.warnings().size(), 1);
    QVERIFY(stage.warnings().constFirst().startsWith("Kept "_L1));
}

void TestSceneFence::attribute_isRefused_whenItLeadsOut_data()
{
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<QString>("value");
    const QStringList attributes = {u"ui"_s, u"simple"_s, u"resources"_s, u"l10n_name"_s};
    for (const QString& attribute : attributes) {
        QTest::addRow("absolute %s", qPrintable(attribute)) << attribute << u"DIR/canary.png"_s;
        QTest::addRow("by steps %s", qPrintable(attribute))
            << attribute << u"../../outside/canary.png"_s;
        QTest::addRow("by link %s", qPrintable(attribute)) << attribute << u"ui/link/canary.png"_s;
    }
}

void TestSceneFence::attribute_isRefused_whenItLeadsOut()
{
    QFETCH(const QString, attribute);
    QFETCH(const QString, value);
    EvilStage stage;
    auto* content = new VLXmlElement(&stage.tree);
    content->setAttribute(attribute, QString::fromUtf8(stage.filled(value.toUtf8())));
    content->setAttribute(u"VLPackagName"_s, u"evil"_s);
    stage.view->setContent(content);

    const QString found = stage.view->findComponent(attribute, ckUiFile, QString(), QString());
    QVERIFY2(!QFileInfo::exists(found), qPrintable(found));
    QCOMPARE(stage.warnings().size(), 1);
    QVERIFY(stage.warnings().first().contains(u"canary.png"_s));
}

void TestSceneFence::refusedScene_isWarnedOfOnce_whenContentIsGuardedToo_data()
{
    QTest::addColumn<QString>("scene");
    QTest::newRow("absolute") << u"DIR/Outside.qml"_s;
    QTest::newRow("by steps") << u"../../outside/Outside.qml"_s;
    QTest::newRow("absolute, not there") << u"DIR/None.qml"_s;
}

void TestSceneFence::refusedScene_isWarnedOfOnce_whenContentIsGuardedToo()
{
    QFETCH(const QString, scene);
    EvilStage stage;
    stage.context.set(ckGuardContent, true);
    stage.manager->context().set(ckGuardContent, true);
    auto* content = new VLXmlElement(&stage.tree);
    content->setAttribute(u"ui"_s, QString::fromUtf8(stage.filled(scene.toUtf8())));
    content->setAttribute(u"VLPackagName"_s, u"evil"_s);
    stage.view->setContent(content);

    // As the popup does.
    stage.view->loadQML(QFileInfo(stage.view->uiRootFilePath()).absoluteFilePath());
    QCOMPARE(stage.warnings().size(), 1);
    QVERIFY(stage.warnings().first().startsWith(u"Kept "_s));
    QVERIFY(!stage.view->rootObject());
}

void TestSceneFence::content_losesAddress_whenItLeadsOut()
{
    EvilStage stage;
    stage.packages.writeScene(u"evil.vidlets"_s);
    auto* content = new VLXmlElement(&stage.tree);
    content->setAttribute(u"VLPackagName"_s, u"evil"_s);
    content->setAttribute(u"title"_s, u"<img src='/etc/a.png'>"_s);
    auto* text = new VLXmlElement(content);
    text->setContent(QString::fromUtf8(
        stage.filled("See file:///etc, <img src=\"OUT/canary.png\"> and <img src='good.png'>.")));
    stage.view->setContent(content);

    QCOMPARE(content->attribute(u"title"_s), u"<img src=''>"_s);
    QCOMPARE(text->content(), u"See file:///etc, <img src=\"\"> and <img src='good.png'>."_s);
    QCOMPARE(stage.warnings().size(), 2);
}

void TestSceneFence::locator_isRefused_whenSchemeIsNotHarmless()
{
    Desktop desktop;
    EvilStage stage;
    stage.host.context().set(ckConfineContent, true);
    auto& plain = static_cast<VLInterface&>(stage.host);
    const auto open = [&plain](const QString& url) {
        return plain.VLInterface::openExternalResource(VLResourceUrl, url);
    };
    QVERIFY(open(u"https://good.test/"_s));
    QVERIFY(open(u"http://good.test/"_s));
    QVERIFY(open(u"mailto:someone@good.test"_s));
    QCOMPARE(stage.warnings(), QStringList());
    QVERIFY(!open(u"file:///etc/passwd"_s));
    QVERIFY(!open(u"odd:thing"_s));
    QCOMPARE(desktop.opened.size(), 3);
    QCOMPARE(stage.warnings(),
             QStringList({u"Did not open file:///etc/passwd"_s, u"Did not open odd:thing"_s}));
}

void TestSceneFence::locator_reachesOverride_whateverItIs()
{
    EvilStage stage;
    stage.view->openExternalResource(u"file:///etc/passwd"_s);
    QCOMPARE(stage.host.openedResources.size(), 1);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestSceneFence>(argc, argv);
}

#include "tst_scenefence.moc"
