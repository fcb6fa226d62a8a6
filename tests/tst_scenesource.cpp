// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"
#include <Vidlets/VLContentRoots.h>
#include <Vidlets/VLSceneSource.h>
#include <Vidlets/VLVectorPicture.h>

#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QUrl>

using namespace Qt::StringLiterals;

using namespace Vidlets;

class TestSceneSource : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void strayAddresses_areFound_whenItLeadsOut_data();
    void strayAddresses_areFound_whenItLeadsOut();
    void namesPlugin_tells_whenLineAsksForOne_data();
    void namesPlugin_tells_whenLineAsksForOne();
    void program_isRefused_whenItSpellsWhatItMayNotHave_data();
    void program_isRefused_whenItSpellsWhatItMayNotHave();
    void strayAddresses_endSoon_whenTextIsMadeToTakeLong();
    void reachesOut_tellsModulesApart();
    void isReadable_fails_whenFileWouldNotEnd();
    void vectorPicture_reachesOut_whenItNamesOthers_data();
    void vectorPicture_reachesOut_whenItNamesOthers();
    void roots_contain_whatLiesBelow_data();
    void roots_contain_whatLiesBelow();
    void roots_endTheirSearch_whenLinksLeadInCircle();
};

void TestSceneSource::strayAddresses_areFound_whenItLeadsOut_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stray");
    QTest::newRow("plain text") << u"a file of ![text]"_s << QString();
    QTest::newRow("own picture") << u"<img src='a.png'> <img src=\"b/c.png\">"_s << QString();
    QTest::newRow("remote picture") << u"<img src='http://a.test/a.png'>"_s << QString();
    QTest::newRow("absolute path") << u"<img src='/etc/a.png'>"_s << u"/etc/a.png"_s;
    QTest::newRow("capitals") << u"<IMG alt=x SRC = FILE:///etc/a.png>"_s << u"FILE:///etc/a.png"_s;
    QTest::newRow("escaped quotes") << u"\"<img src=\\\"../../a.png\\\">\""_s << u"../../a.png"_s;
    QTest::newRow("Markdown") << u"x ![a](/etc/a.png \"t\")"_s << u"/etc/a.png"_s;
    QTest::newRow("Markdown by name") << u"![a][b]\n\n[b]: /etc/a.png"_s << u"/etc/a.png"_s;
    QTest::newRow("bracket in a quote") << u"<img alt='>' src='/etc/a.png'>"_s << u"/etc/a.png"_s;
    QTest::newRow("hidden letters") << u"<img src='&#102;x'>"_s << u"&#102;x"_s;
    QTest::newRow("style sheet") << u"<link rel=s href='/etc/a.css'>"_s << u"/etc/a.css"_s;
    QTest::newRow("background") << u"<p style='background-image: url(/etc/a.png)'>"_s
                                << u"/etc/a.png"_s;
    QTest::newRow("own Markdown") << u"x ![a](a.png)"_s << QString();
    QTest::newRow("in a program") << u"loadImage('file:///etc/a.png')"_s << u"file:///etc/a.png"_s;
    QTest::newRow("beginning alone") << u"loadImage('file:///' + found)"_s << QString();
    QTest::newRow("second of two")
        << u"<img src='a.png'><img src='/etc/b.png'>"_s << u"/etc/b.png"_s;
}

void TestSceneSource::strayAddresses_areFound_whenItLeadsOut()
{
    QFETCH(const QString, text);
    QFETCH(const QString, stray);
    PackageBuilder packages;
    const QString root = packages.packageRoot(u"a.vidlets"_s);
    const VLContentRoots roots(QStringList{root});
    const QUrl base = QUrl::fromLocalFile(root + u"/ui/A.qml"_s);
    packages.packageRoot(u"a.vidlets/ui"_s);
    const QStringList strays = stray.isEmpty() ? QStringList() : QStringList(stray);
    // Only programs have addresses outside of markup.
    if (!text.startsWith("loadImage"_L1))
        QCOMPARE(SceneSource::strayAddresses(text, base, roots), strays);
    const QString file = packages.write(u"a.vidlets/ui/A.qml"_s, text.toUtf8());
    QCOMPARE(SceneSource::strayAddressesInFile(file, roots), strays);
}

void TestSceneSource::namesPlugin_tells_whenLineAsksForOne_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isNamed");
    QTest::newRow("none") << QByteArray("module a\nPart 1.0 Part.qml\n") << false;
    QTest::newRow("plain") << QByteArray("module a\nplugin evil\n") << true;
    QTest::newRow("optional") << QByteArray("module a\r\n  optional\tplugin evil lib") << true;
    QTest::newRow("after a blank of another kind")
        << QByteArray("module a\n\xc2\xa0plugin evil\n") << true;
    QTest::newRow("before a blank of another kind") << QByteArray("module a\nplugin\xe3\x80\x80"
                                                                  "evil\n")
                                                    << true;
    QTest::newRow("optional, other blanks") << QByteArray("optional\xe2\x80\xafplugin\xc2\x85"
                                                          "evil\n")
                                            << true;
    QTest::newRow("after a line separator")
        << QByteArray("# a\nmodule a\xe2\x80\xa8plugin evil\n") << true;
    QTest::newRow("after a carriage return") << QByteArray("module a\rplugin evil\n") << true;
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbfplugin evil\n") << true;
    QTest::newRow("word within") << QByteArray("plugins 1.0 plugins.qml\n") << false;
    QTest::newRow("comment") << QByteArray("# plugin\n") << false;
}

void TestSceneSource::namesPlugin_tells_whenLineAsksForOne()
{
    QFETCH(const QByteArray, content);
    PackageBuilder packages;
    const QString file = packages.write(u"a.vidlets/qmldir"_s, content);
    QTEST(SceneSource::namesPlugin(file), "isNamed");
}

void TestSceneSource::program_isRefused_whenItSpellsWhatItMayNotHave_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("stray");
    const auto row = [](const char* name, const QString& program, const QString& stray,
                        const QString& file = u"A.qml"_s) {
        QTest::newRow(name) << file << program << stray;
    };
    row("comment", u"  // see file:///usr/share/doc/x\nItem {}"_s, QString());
    row("address in code", u"x = 'file:///usr/share/doc/x'"_s, u"file:///usr/share/doc/x"_s);
    row("canvas by steps", u"loadImage('../../a.png')"_s, u"../../a.png"_s);
    row("canvas by name", u"property string u: \"/etc/a.png\"\nctx.drawImage(u, 0, 0)"_s,
        u"/etc/a.png"_s);
    row("canvas, hidden slash", u"loadImage('\\/etc/a.png')"_s, u"/etc/a.png"_s);
    row("canvas, own picture", u"loadImage('a.png'); x = ' / '; y = ''"_s, QString());
    row("steps without a canvas", u"x = '../../a.png'"_s, QString());
    const QString desktop = u"Qt.openUrlExternally"_s;
    row("desktop called by scene", u"onClicked: Qt.openUrlExternally(link)"_s, QString());
    row("desktop later", u"Qt.callLater(Qt.openUrlExternally, link)"_s, desktop);
    row("desktop by promise", u"Promise.resolve(link).then(Qt.openUrlExternally)"_s, desktop);
    row("desktop by text", u"new Function(\"Qt.openUrlExternally('a:b')\")()"_s, desktop);
    row("desktop in a module", u"export function f(a) { Qt.openUrlExternally(a) }"_s, desktop,
        u"a.mjs"_s);
}

void TestSceneSource::program_isRefused_whenItSpellsWhatItMayNotHave()
{
    QFETCH(const QString, file);
    QFETCH(const QString, program);
    QFETCH(const QString, stray);
    PackageBuilder packages;
    const QString path = packages.write(u"a.vidlets/ui/"_s + file, program.toUtf8());
    const VLContentRoots roots(QStringList{packages.path(u"a.vidlets"_s)});
    const QStringList strays = stray.isEmpty() ? QStringList() : QStringList(stray);
    QCOMPARE(SceneSource::strayAddressesInFile(path, roots), strays);
}

void TestSceneSource::strayAddresses_endSoon_whenTextIsMadeToTakeLong()
{
    const VLContentRoots roots;
    const QUrl base(u"file:///A.qml"_s);
    constexpr qsizetype kLength = 100'000;
    for (const QString& part : {u"<img \""_s, u"<img "_s, u"!["_s, u"<link "_s, u"\n["_s}) {
        const QString text = part.repeated(kLength / part.size()) + u"<img src='/etc/a'>"_s;
        QCOMPARE(SceneSource::strayAddresses(text, base, roots), QStringList(u"/etc/a"_s));
    }
}

void TestSceneSource::reachesOut_tellsModulesApart()
{
    const QStringList reaching = {u"Qt/labs/folderlistmodel/qmldir"_s,
                                  u"Qt/labs/wavefrontmesh/qmldir"_s,
                                  u"QtQuick/LocalStorage/qmldir"_s,
                                  u"QtQuick/LocalStorage.2/qmldir"_s,
                                  u"QtPositioning/qmldir"_s,
                                  u"QtQuick3D/Helpers/qmldir"_s,
                                  u"QtCore/qmldir"_s,
                                  u"org/other/qmldir"_s,
                                  u"qmldir"_s};
    for (const QString& module : reaching)
        QVERIFY2(SceneSource::reachesOut(module), qPrintable(module));
    const QStringList harmless = {u"QtQuick/qmldir"_s,
                                  u"QtQuick.2/qmldir"_s,
                                  u"QtQuick/Layouts/qmldir"_s,
                                  u"QtQuick/Window.2/qmldir"_s,
                                  u"QtQml/qmldir"_s,
                                  u"QtQml/Models.2/qmldir"_s,
                                  u"QtQuick/Controls/Basic/impl/qmldir"_s,
                                  u"QtQuick/Controls.2/qmldir"_s,
                                  u"com/larkspan/vidlets/host/qmldir"_s};
    for (const QString& module : harmless)
        QVERIFY2(!SceneSource::reachesOut(module), qPrintable(module));
}

void TestSceneSource::isReadable_fails_whenFileWouldNotEnd()
{
    PackageBuilder packages;
    const QString file = packages.write(u"a.vidlets/A.qml"_s, "Item {}");
    QVERIFY(SceneSource::isReadable(file));
    QVERIFY(SceneSource::isReadable(packages.path(u"a.vidlets/None.qml"_s)));
    QVERIFY(!SceneSource::isReadable(packages.path(u"a.vidlets"_s)));
    QVERIFY(!SceneSource::isReadable(u"/dev/null"_s));
    QVERIFY(SceneSource::namesPlugin(u"/dev/zero"_s));
    QVERIFY(QFile::resize(file, qint64(1) << 31));
    QVERIFY(!SceneSource::isReadable(file));
    QVERIFY(SceneSource::namesPlugin(file));
}

void TestSceneSource::vectorPicture_reachesOut_whenItNamesOthers_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("reaches");
    const auto row = [](const char* name, const QByteArray& content, bool reaches) {
        QTest::newRow(name) << content << reaches;
    };
    row("no picture", "href='/etc/a'", false);
    row("plain", "<?xml version='1.0' encoding='UTF-8'?><svg><path d='M0 0'/></svg>", false);
    row("within", "<svg><use xlink:href='#a'/><path style='fill:url(#b)'/></svg>", false);
    row("picture in it", "<svg><image href='data:image/png;base64,iVBORw0KGgo='/></svg>", false);
    row("outer", "\n <svg><image xlink:href=\"/etc/a.png\"/></svg>", true);
    row("mark first", "\xef\xbb\xbf<svg><image href = 'a.png'/></svg>", true);
    row("hidden", "<svg><image href='&#47;etc/a'/></svg>", true);
    row("entity", "<!DOCTYPE svg [<!ENTITY a 'href'>]><svg/>", true);
    row("style", "<svg><style>@import url(/etc/a.css)</style></svg>", true);
    row("background", "<svg><path style='fill: url(\"/etc/a\")'/></svg>", true);
    row("style sheet", "<?xml-stylesheet type='text/css' href='/etc/a.css'?><svg/>", true);
    row("other encoding", "<?xml version='1.0' encoding='utf-7'?><svg/>", true);
    row("wide", QByteArray("\xff\xfe<\0s\0", 6), true);
    row("other document", "<list><a href='/etc/a'/></list>", false);
    row("icon", QByteArray("\0\0\1\0\1\0", 6), false);
    row("font", QByteArray("\0\1\0\0\0", 5), false);
    row("clip", QByteArray("\0\0\0\x20 ftyp", 9), false);
    row("packed", "\x1f\x8b\x08", true);
    row("one in one",
        "<svg><image href='data:image/png;base64,"
            + QByteArray("<svg><image href='/etc/a'/></svg>").toBase64() + "'/></svg>",
        true);
}

void TestSceneSource::vectorPicture_reachesOut_whenItNamesOthers()
{
    QFETCH(const QByteArray, content);
    QTEST(VectorPicture::reachesOut(content), "reaches");
    PackageBuilder packages;
    QTEST(VectorPicture::fileReachesOut(packages.write(u"a.vidlets/a.png"_s, content)), "reaches");
    const QUrl url = QUrl::fromEncoded("data:image/png;base64," + content.toBase64());
    QTEST(VectorPicture::dataReachesOut(url), "reaches");
}

void TestSceneSource::roots_contain_whatLiesBelow_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isInside");
    QTest::newRow("root") << u"a.vidlets"_s << true;
    QTest::newRow("file") << u"a.vidlets/file"_s << true;
    QTest::newRow("missing file") << u"a.vidlets/x/y/missing"_s << true;
    QTest::newRow("data path") << u"."_s << false;
    QTest::newRow("file beside") << u"beside"_s << false;
    QTest::newRow("like-named sibling") << u"a.vidletsx/file"_s << false;
    QTest::newRow("missing file beside") << u"b.vidlets/x/missing"_s << false;
    QTest::newRow("by steps") << u"a.vidlets/../beside"_s << false;
    QTest::newRow("by link") << u"a.vidlets/out/beside"_s << false;
    QTest::newRow("missing by link") << u"a.vidlets/out/missing"_s << false;
    QTest::newRow("dangling link") << u"a.vidlets/dangling"_s << false;
    QTest::newRow("link into it") << u"into/file"_s << true;
    QTest::newRow("resource") << u":/any"_s << true;
    QTest::newRow("nothing") << QString() << false;
}

void TestSceneSource::roots_contain_whatLiesBelow()
{
    QFETCH(const QString, path);
    QFETCH(const bool, isInside);
    PackageBuilder packages;
    packages.write(u"a.vidlets/file"_s, "a");
    packages.write(u"a.vidletsx/file"_s, "a");
    packages.write(u"beside"_s, "a");
    QVERIFY(QFile::link(packages.dataPath(), packages.path(u"a.vidlets/out"_s)));
    QVERIFY(QFile::link(u"/nowhere/at/all"_s, packages.path(u"a.vidlets/dangling"_s)));
    QVERIFY(QFile::link(packages.path(u"a.vidlets"_s), packages.path(u"into"_s)));
    const VLContentRoots roots(QStringList{packages.path(u"a.vidlets"_s)});
    const bool isRelative = !path.isEmpty() && !path.startsWith(u':');
    QCOMPARE(roots.contains(isRelative ? packages.dataPath() + u'/' + path : path), isInside);
}

void TestSceneSource::roots_endTheirSearch_whenLinksLeadInCircle()
{
    PackageBuilder packages;
    const QString root = packages.packageRoot(u"a.vidlets"_s);
    const QString one = packages.path(u"one"_s);
    const QString two = packages.path(u"two"_s);
    QVERIFY(QFile::link(two, one));
    QVERIFY(QFile::link(one, two));
    const VLContentRoots roots(QStringList{root});
    QVERIFY(!roots.contains(one));
    QVERIFY(!VLContentRoots().contains(root));
    const QString modules = QLibraryInfo::path(QLibraryInfo::QmlImportsPath);
    QVERIFY(roots.contains(modules + u"/QtQuick/qmldir"_s));
    QCOMPARE(roots.relativeToQt(modules + u"/QtQuick/qmldir"_s), u"QtQuick/qmldir"_s);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestSceneSource>(argc, argv);
}

#include "tst_scenesource.moc"
