// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipWriter.h"
#include "PackageBuilder.h"
#include "PointerDriver.h"
#include "VidletsTest.h"
#include <Vidlets/VLWidget.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPixmap>
#include <QProcess>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTableWidget>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <memory>

#include <VidletsAuthor/AuthorPreviewStage.h>
#include <VidletsAuthor/AuthorPreviewWindow.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

constexpr int kLongMs = 15000;
constexpr QRgb kRed = qRgb(255, 0, 0);
constexpr QRgb kBlue = qRgb(0, 0, 255);

QByteArray scene(const QByteArray& color, const QByteArray& more = QByteArray())
{
    return "import QtQuick\nimport com.larkspan.vidlets.qml 1.0\nRectangle {\n"
           "    width: vidletView.getScaledSize(200)\n"
           "    height: vidletView.getScaledSize(100)\n    color: \""
        + color + "\"\n" + more + "}\n";
}

/// A package, and the window that shows it.
class Preview
{
public:
    Preview()
    {
        files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                               "<vidlets>\n<vidlet key=\"one\" title=\"One\"/>\n"
                               "<vidlet key=\"two\" title=\"Two\"/>\n</vidlets>\n");
        writeScene(scene("red"));
    }

    QString writeScene(const QByteArray& content)
    {
        return files.write(u"A.vidlets/ui/VidletUI.qml"_s, content);
    }

    bool open(const QString& key = QString(), const QString& editor = QString())
    {
        QString reason;
        const auto list = AuthorTipList::read(files.dataPath(), reason);
        if (!list)
            return false;
        window = std::make_unique<AuthorPreviewWindow>(files.dataPath(), *list, editor);
        window->show();
        return QTest::qWaitForWindowActive(window.get(), kLongMs) && window->choose(key);
    }

    template <typename Widget> Widget* find(const char* name) const
    {
        return window->findChild<Widget*>(QString::fromLatin1(name));
    }

    AuthorPreviewStage* stage() const
    {
        return window->findChild<AuthorPreviewStage*>();
    }

    QWidget* room() const
    {
        return find<QScrollArea>("area")->widget();
    }

    /// As the screen has it, since the scene is drawn into a window of its own.
    QRgb color(const QPoint& place = QPoint(5, 5)) const
    {
        if (!room() || !room()->isVisible())
            return 0;
        const QPoint at = room()->mapToGlobal(place);
        const QPixmap pixel = window->screen()->grabWindow(0, at.x(), at.y(), 1, 1);
        return pixel.toImage().pixel(0, 0);
    }

    /// The row of the tree whose text contains @p text.
    QModelIndex row(const QString& text) const
    {
        const QAbstractItemModel* model = find<QTreeView>("tree")->model();
        const QModelIndexList rows =
            model->match(model->index(0, 0), Qt::DisplayRole, text, 1,
                         Qt::MatchContains | Qt::MatchRecursive | Qt::MatchWrap);
        return rows.value(0);
    }

    static bool click(const QPoint& global)
    {
        return PointerDriver::moveTo(global) && PointerDriver::click();
    }

    bool clickRow(const QString& text) const
    {
        // What check finds moves the rows below it when it comes.
        if (!QTest::qWaitFor([this] { return row(u"["_s).isValid(); }, kLongMs))
            return false;
        auto* tree = find<QTreeView>("tree");
        const QModelIndex index = row(text);
        if (!index.isValid())
            return false;
        tree->scrollTo(index);
        const QRect rect = tree->visualRect(index);
        return click(tree->viewport()->mapToGlobal(rect.topLeft() + QPoint(20, rect.height() / 2)));
    }

    static bool clickMiddle(const QWidget* widget)
    {
        return click(widget->mapToGlobal(widget->rect().center()));
    }

    /// Clicks the box itself, not the room beside its text.
    static bool clickBox(const QWidget* box)
    {
        return click(box->mapToGlobal(QPoint(9, box->height() / 2)));
    }

    /// Makes an editor that notes what it was called with. Returns its command.
    QString editor()
    {
        const QString script = files.write(
            u"editor"_s, "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$(dirname \"$0\")/called\"\n");
        QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return script + u" %f +%l"_s;
    }

    QStringList editorCall() const
    {
        QFile file(files.path(u"called"_s));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    PackageBuilder files;
    std::unique_ptr<AuthorPreviewWindow> window;
};

/// As many editors save: a new file takes the place of the old one.
bool saveByRename(const QString& path, const QByteArray& content)
{
    const QString fresh = path + u".new~"_s;
    QFile file(fresh);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        return false;
    file.close();
    return std::rename(QFile::encodeName(fresh).constData(), QFile::encodeName(path).constData())
        == 0;
}

} // namespace

class TestAuthorPreview : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void tip_isShownInWindow();
    void scene_isShownAnew_whenSaved_data();
    void scene_isShownAnew_whenSaved();
    void part_isShownAnew_whenSaved();
    void text_isShownAnew_whenSaved();
    void picture_isShownAnew_whenSaved();
    void clip_isShownAnew_whenSaved();
    void translation_isShownAnew_whenSaved();
    void translation_isShownAnew_whenDraftIsSaved();
    void keyAndScroll_stay_whenSaved();
    void newFile_bringsItsTips();
    void failingScene_showsPlace_andClickOpensEditor();
    void endlessScript_isInterrupted_andToldOf();
    void finding_isListedWithItsRule_andClickOpensEditor();
    void brokenFile_isToldOf_andShownOnceMended();
    void stage_isAsLargeAsScene();
    void clickedKey_isShown();
    void switches_changeLook();
    void scale_changesSize();
    void simple_andShortcut_reachScene();
    void variables_takeValues();
    void control_bringsUpPopup();
    void status_tellsCost();
    void filter_narrowsTree();
};

void TestAuthorPreview::tip_isShownInWindow()
{
    Preview preview;
    QVERIFY(preview.open(u"two"_s));

    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);
    QCOMPARE(preview.room()->size(), QSize(200, 100));
    QVERIFY(preview.stage()->problems().isEmpty());
}

void TestAuthorPreview::scene_isShownAnew_whenSaved_data()
{
    QTest::addColumn<bool>("renames");

    QTest::newRow("in place") << false;
    QTest::newRow("by a rename") << true;
}

void TestAuthorPreview::scene_isShownAnew_whenSaved()
{
    QFETCH(const bool, renames);
    Preview preview;
    QVERIFY(preview.open());
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    // Twice, since a file that has been replaced is another one to watch.
    for (const auto& [name, color] :
         {std::pair("blue", kBlue), std::pair("lime", qRgb(0, 255, 0))}) {
        const QString path = preview.files.path(u"A.vidlets/ui/VidletUI.qml"_s);
        if (renames)
            QVERIFY(saveByRename(path, scene(name)));
        else
            preview.writeScene(scene(name));
        QTRY_COMPARE_WITH_TIMEOUT(preview.color(), color, kLongMs);
    }
}

void TestAuthorPreview::part_isShownAnew_whenSaved()
{
    Preview preview;
    preview.files.write(u"A.vidlets/ui/Part.qml"_s,
                        "import QtQuick\nRectangle { width: 50; height: 50; color: \"red\" }\n");
    preview.writeScene(scene("white", "    Part { }\n"));
    QVERIFY(preview.open());
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    preview.files.write(u"A.vidlets/ui/Part.qml"_s,
                        "import QtQuick\nRectangle { width: 50; height: 50; color: \"blue\" }\n");

    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kBlue, kLongMs);
}

void TestAuthorPreview::text_isShownAnew_whenSaved()
{
    Preview preview;
    preview.writeScene("import QtQuick\nRectangle { width: 200; height: 100\n"
                       "    color: vidlet ? vidlet.attribute(\"ink\") || \"red\" : \"red\"\n}\n");
    QVERIFY(preview.open(u"two"_s));
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    preview.files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                                   "<vidlets>\n<vidlet key=\"one\" title=\"One\"/>\n"
                                   "<vidlet key=\"two\" ink=\"blue\"/>\n</vidlets>\n");

    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kBlue, kLongMs);
}

void TestAuthorPreview::picture_isShownAnew_whenSaved()
{
    const auto picture = [](QRgb color) {
        QImage image(40, 40, QImage::Format_RGB32);
        image.fill(color);
        return image;
    };
    Preview preview;
    preview.files.write(u"A.vidlets/Resources/dot.png"_s, "");
    const QString path = preview.files.path(u"A.vidlets/Resources/dot.png"_s);
    QVERIFY(picture(kRed).save(path));
    preview.writeScene(scene(
        "white", "    Image { source: \"file://\" + vidletView.findResource(\"dot.png\") }\n"));
    QVERIFY(preview.open());
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    QVERIFY(picture(kBlue).save(path));

    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kBlue, kLongMs);
}

void TestAuthorPreview::clip_isShownAnew_whenSaved()
{
    const auto isReddish = [](QRgb color) { return qRed(color) > 180 && qBlue(color) < 90; };
    const auto isBluish = [](QRgb color) { return qBlue(color) > 180 && qRed(color) < 90; };
    const auto pictures = [](QRgb color) {
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(color);
        return QList<QImage>(5, image);
    };
    ClipWriter clips;
    const QString red = clips.imageClip(u"red.mp4"_s, u"libx264"_s, pictures(kRed), 25,
                                        {u"-bf"_s, u"0"_s, u"-pix_fmt"_s, u"yuv420p"_s});
    const QString blue = clips.imageClip(u"blue.mp4"_s, u"libx264"_s, pictures(kBlue), 25,
                                         {u"-bf"_s, u"0"_s, u"-pix_fmt"_s, u"yuv420p"_s});
    Preview preview;
    preview.files.write(u"A.vidlets/Resources/.keep"_s, "");
    const QString path = preview.files.path(u"A.vidlets/Resources/clip.mp4"_s);
    QVERIFY(QFile::copy(red, path));
    preview.writeScene(scene("white",
                             "    VLVideoComponent { id: clip; width: 64; height: 48\n"
                             "        Window.onWindowChanged: clip.source = \"clip.mp4\" }\n"));
    QVERIFY(preview.open());
    QTRY_VERIFY_WITH_TIMEOUT(isReddish(preview.color()), kLongMs);

    QVERIFY(saveByRename(path, clips.readBytes(u"blue.mp4"_s)));

    QTRY_VERIFY_WITH_TIMEOUT(isBluish(preview.color()), kLongMs);
    QVERIFY(!blue.isEmpty());
}

void TestAuthorPreview::translation_isShownAnew_whenSaved()
{
    const auto release = [](Preview& preview, const QByteArray& word) {
        const QString ts = preview.files.write(
            u"A.vidlets/l10n/Vidlets_de_DE.ts"_s,
            "<?xml version=\"1.0\"?><!DOCTYPE TS><TS version=\"2.1\" language=\"de_DE\"><context>"
            "<name>VidletUI</name><message><source>ink</source><translation>"
                + word + "</translation></message></context></TS>\n");
        return QProcess::execute(QStringLiteral(LRELEASE), {u"-silent"_s, ts}) == 0;
    };
    Preview preview;
    QVERIFY(release(preview, "red"));
    preview.writeScene("import QtQuick\nRectangle { width: 200; height: 100\n"
                       "    color: vidletView.translate(\"ink\", \"VidletUI\") || \"white\"\n}\n");
    QVERIFY(preview.open());
    preview.find<QComboBox>("locale")->setCurrentText(u"de_DE"_s);
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    QVERIFY(release(preview, "blue"));

    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kBlue, kLongMs);
    QCOMPARE(preview.find<QComboBox>("locale")->currentText(), u"de_DE"_s);
}

void TestAuthorPreview::translation_isShownAnew_whenDraftIsSaved()
{
    const auto save = [](Preview& preview, const QByteArray& word) {
        preview.files.write(
            u"A.vidlets/l10n/Vidlets_de_DE.ts"_s,
            "<?xml version=\"1.0\"?><!DOCTYPE TS><TS version=\"2.1\" language=\"de_DE\"><context>"
            "<name>VidletUI</name><message><source>ink</source><translation>"
                + word + "</translation></message></context></TS>\n");
    };
    Preview preview;
    save(preview, "red");
    preview.writeScene("import QtQuick\nRectangle { width: 200; height: 100\n"
                       "    color: vidletView.translate(\"ink\", \"VidletUI\") || \"white\"\n}\n");
    QVERIFY(preview.open());
    preview.find<QComboBox>("locale")->setCurrentText(u"de_DE"_s);
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    save(preview, "blue");
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kBlue, kLongMs);

    // Nothing is released on the way.
    QVERIFY(!QFile::exists(preview.files.path(u"A.vidlets/l10n/Vidlets_de_DE.qm"_s)));
}

void TestAuthorPreview::keyAndScroll_stay_whenSaved()
{
    const auto flickable = [](const QByteArray& color) {
        return scene("white",
                     "    Flickable { objectName: \"flick\"; anchors.fill: parent\n"
                     "        contentHeight: column.height\n"
                     "        Column { id: column; width: 100\n"
                     "            Repeater { model: 40; Rectangle { width: 50; height: 20; "
                     "color: \""
                         + color + "\" } } } }\n");
    };
    Preview preview;
    preview.writeScene(flickable("red"));
    QVERIFY(preview.open(u"two"_s));
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);
    auto* flick = preview.stage()->scene()->findChild<QQuickItem*>(u"flick"_s);
    flick->setProperty("contentY", 333.0);

    preview.writeScene(flickable("blue"));

    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kBlue, kLongMs);
    flick = preview.stage()->scene()->findChild<QQuickItem*>(u"flick"_s);
    QCOMPARE(flick->property("contentY").toReal(), 333.0);
    QCOMPARE(preview.find<QTreeView>("tree")->currentIndex().data().toString(), u"two"_s);
}

void TestAuthorPreview::newFile_bringsItsTips()
{
    Preview preview;
    QVERIFY(preview.open(u"two"_s));

    preview.files.writeTip(u"A.vidlets"_s, u"b.xml"_s, u"three"_s);
    preview.files.writeTip(u"B.vidlets"_s, u"b.xml"_s, u"four"_s);

    QTRY_VERIFY_WITH_TIMEOUT(preview.row(u"three"_s).isValid(), kLongMs);
    QTRY_VERIFY_WITH_TIMEOUT(preview.row(u"four"_s).isValid(), kLongMs);
    QCOMPARE(preview.find<QTreeView>("tree")->currentIndex().data().toString(), u"two"_s);
    QVERIFY(preview.clickRow(u"three"_s));
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);
}

void TestAuthorPreview::failingScene_showsPlace_andClickOpensEditor()
{
    Preview preview;
    QVERIFY(preview.open(u"one"_s, preview.editor()));
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    const QByteArray broken = "import QtQuick\nItem {\n    tea\n}\n";
    // Where the slip is said to be differs from one Qt to another.
    PackageBuilder apart;
    QQmlEngine engine;
    const QList<QQmlError> errors =
        QQmlComponent(&engine, apart.write(u"Broken.qml"_s, broken)).errors();
    QVERIFY(!errors.isEmpty());
    const QString line = QString::number(errors.constFirst().line());
    const QString place = u":%1:%2: "_s.arg(line).arg(errors.constFirst().column());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"VidletUI.qml"_s + place));
    const QString path = preview.writeScene(broken);

    auto* problems = preview.find<QListWidget>("problems");
    QTRY_VERIFY_WITH_TIMEOUT(problems->isVisible() && problems->count() == 1, kLongMs);
    QVERIFY2(problems->item(0)->text().startsWith(path + place),
             qPrintable(problems->item(0)->text()));
    // The list has still to find its place.
    const auto clickFirst = [problems] {
        const QRect rect = problems->visualItemRect(problems->item(0));
        return Preview::click(problems->viewport()->mapToGlobal(rect.topLeft() + QPoint(20, 8)));
    };
    QTRY_VERIFY_WITH_TIMEOUT(clickFirst() && !preview.editorCall().isEmpty(), kLongMs);
    QCOMPARE(preview.editorCall(), QStringList({path, u'+' + line}));
}

void TestAuthorPreview::endlessScript_isInterrupted_andToldOf()
{
    Preview preview;
    QVERIFY(preview.open(u"one"_s));
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    const QString path = preview.writeScene(scene(
        "teal", "    Timer { interval: 1; running: true; onTriggered: { while (true) {} } }\n"));

    const auto tellsOfFile = [&preview, &path] {
        const QStringList problems = preview.stage()->problems();
        return std::any_of(problems.cbegin(), problems.cend(), [&path](const QString& problem) {
            return problem.startsWith(path + u':') && problem.contains("come to an end"_L1);
        });
    };
    QTRY_VERIFY_WITH_TIMEOUT(tellsOfFile(), 4 * kLongMs);
    preview.writeScene(scene("blue"));
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kBlue, kLongMs);
    QVERIFY2(preview.stage()->problems().isEmpty(),
             qPrintable(preview.stage()->problems().join(u'\n')));
}

void TestAuthorPreview::finding_isListedWithItsRule_andClickOpensEditor()
{
    Preview preview;
    const QString path = preview.files.writeControlFile(
        u"A.vidlets"_s, u"a.xml"_s, "<vidlets>\n<vidlet key=\"one\"/>\n<vidlet/>\n</vidlets>\n");
    QVERIFY(preview.open(u"one"_s, preview.editor()));

    QTRY_VERIFY_WITH_TIMEOUT(preview.row(u"[key-missing]"_s).isValid(), kLongMs);
    QVERIFY(preview.clickRow(u"[key-missing]"_s));

    QTRY_COMPARE_WITH_TIMEOUT(preview.editorCall(), QStringList({path, u"+3"_s}), kLongMs);
}

void TestAuthorPreview::brokenFile_isToldOf_andShownOnceMended()
{
    Preview preview;
    QVERIFY(preview.open(u"one"_s));
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    const QString path = preview.files.writeControlFile(
        u"A.vidlets"_s, u"a.xml"_s, "<vidlets>\n<vidlet key=\"one\">&</vidlet>\n</vidlets>\n");
    QTRY_VERIFY_WITH_TIMEOUT(preview.stage()->problems().join(u'\n').contains(path + u":2:"_s),
                             kLongMs);

    preview.files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                                   "<vidlets>\n<vidlet key=\"one\"/>\n</vidlets>\n");
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);
    QVERIFY(preview.stage()->problems().isEmpty());
}

void TestAuthorPreview::stage_isAsLargeAsScene()
{
    Preview preview;
    preview.writeScene(scene(
        "red", "    Timer { interval: 200; running: true; onTriggered: parent.height = 260 }\n"));
    QVERIFY(preview.open());

    QTRY_COMPARE_WITH_TIMEOUT(preview.room()->size(), QSize(200, 260), kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(QPoint(100, 255)), kRed, kLongMs);
}

void TestAuthorPreview::clickedKey_isShown()
{
    Preview preview;
    preview.files.write(u"A.vidlets/ui/Blue.qml"_s, scene("blue"));
    preview.files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                                   "<vidlets>\n<vidlet key=\"one\"/>\n"
                                   "<vidlet key=\"two\" ui=\"ui/Blue.qml\"/>\n</vidlets>\n");
    QVERIFY(preview.open());
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    QVERIFY(preview.clickRow(u"two"_s));

    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kBlue, kLongMs);
}

void TestAuthorPreview::switches_changeLook()
{
    Preview preview;
    preview.writeScene("import QtQuick\nRectangle { width: 200; height: 100\n"
                       "    SystemPalette { id: colors }\n    color: colors.window\n"
                       "    Rectangle { width: 20; height: 20; color: \"red\"\n"
                       "        x: Qt.application.layoutDirection === Qt.RightToLeft ? 180 : 0 }\n"
                       "}\n");
    QVERIFY(preview.open());
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);
    QTRY_VERIFY_WITH_TIMEOUT(qGray(preview.color({100, 50})) > 200, kLongMs);

    QVERIFY(Preview::clickBox(preview.find<QCheckBox>("dark")));
    QTRY_VERIFY_WITH_TIMEOUT(qGray(preview.color({100, 50})) < 100, kLongMs);
    QVERIFY(Preview::clickBox(preview.find<QCheckBox>("rightToLeft")));
    QTRY_COMPARE_WITH_TIMEOUT(preview.color({195, 5}), kRed, kLongMs);

    // For the tests that follow.
    QVERIFY(Preview::clickBox(preview.find<QCheckBox>("rightToLeft")));
    QVERIFY(Preview::clickBox(preview.find<QCheckBox>("dark")));
    QTRY_VERIFY_WITH_TIMEOUT(qGray(preview.color({100, 50})) > 200, kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);
}

void TestAuthorPreview::scale_changesSize()
{
    Preview preview;
    QVERIFY(preview.open());
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    auto* scale = preview.find<QComboBox>("scale");
    scale->setCurrentIndex(scale->findData(2.0));

    QTRY_VERIFY_WITH_TIMEOUT(preview.room() && preview.room()->size() == QSize(400, 200), kLongMs);
    QTRY_COMPARE_WITH_TIMEOUT(preview.color({390, 190}), kRed, kLongMs);
}

void TestAuthorPreview::simple_andShortcut_reachScene()
{
    Preview preview;
    preview.files.write(u"A.vidlets/ui/SimpleTooltip.qml"_s,
                        "import QtQuick\nRectangle { width: 60; height: 30; color: \"blue\"\n"
                        "    property string keys: vidlet ? vidlet.attribute(\"shortcut\") : \"\"\n"
                        "}\n");
    QVERIFY(preview.open());
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    QVERIFY(Preview::clickBox(preview.find<QCheckBox>("simple")));
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kBlue, kLongMs);
    QCOMPARE(preview.room()->size(), QSize(60, 30));
    QVERIFY(Preview::clickMiddle(preview.find<QLineEdit>("shortcut")));
    QVERIFY(PointerDriver::pressKey(u"F"_s));

    QTRY_COMPARE_WITH_TIMEOUT(preview.stage()->scene()->property("keys").toString().toUpper(),
                              u"F"_s, kLongMs);
}

void TestAuthorPreview::variables_takeValues()
{
    Preview preview;
    preview.files.writeControlFile(
        u"A.vidlets"_s, u"a.xml"_s,
        "<vidlets>\n<vidlet key=\"one\"><p>%(ink)s</p></vidlet>\n</vidlets>\n");
    preview.writeScene("import QtQuick\nRectangle { width: 200; height: 100\n"
                       "    readonly property string ink: vidlet ? "
                       "vidletView.interpolate(vidlet.childElement(\"p\").content) : \"\"\n"
                       "    color: ink === \"blue\" ? \"blue\" : \"red\"\n}\n");
    QVERIFY(preview.open());
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    auto* variables = preview.find<QTableWidget>("variables");
    QVERIFY(variables->isVisible());
    QCOMPARE(variables->item(0, 0)->text(), u"ink"_s);
    variables->item(0, 1)->setText(u"blue"_s);

    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kBlue, kLongMs);
}

void TestAuthorPreview::control_bringsUpPopup()
{
    const auto popup = [] {
        const QWidgetList widgets = QApplication::topLevelWidgets();
        const auto found =
            std::find_if(widgets.cbegin(), widgets.cend(), [](const QWidget* widget) {
                return qobject_cast<const VLWidget*>(widget) && widget->isVisible();
            });
        return found == widgets.cend() ? nullptr : *found;
    };
    Preview preview;
    QVERIFY(preview.open());
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);
    QVERIFY(!popup());

    const auto* control = preview.find<QToolButton>("control");
    QVERIFY(PointerDriver::moveTo(control->mapToGlobal(control->rect().center())));
    QTRY_VERIFY_WITH_TIMEOUT(popup() != nullptr, kLongMs);

    // What is shown in the window stays there.
    QVERIFY(preview.room()->isVisible());
    QVERIFY(preview.room()->findChild<VLWidget*>());
}

void TestAuthorPreview::status_tellsCost()
{
    Preview preview;
    QVERIFY(preview.open());
    QTRY_COMPARE_WITH_TIMEOUT(preview.color(), kRed, kLongMs);

    const auto* status = preview.find<QLabel>("status");
    static const QRegularExpression pattern(
        u"^Lookup [\\d.]+ ms   Load [\\d.]+ ms   First picture [\\d.]+ ms   Clips 0.0 MB$"_s);
    QTRY_VERIFY_WITH_TIMEOUT(pattern.match(status->text()).hasMatch(), kLongMs);
    QVERIFY(preview.stage()->cost().firstPictureMs >= preview.stage()->cost().loadMs);
}

void TestAuthorPreview::filter_narrowsTree()
{
    Preview preview;
    QVERIFY(preview.open());
    QVERIFY(preview.row(u"one"_s).isValid());

    QVERIFY(Preview::clickMiddle(preview.find<QLineEdit>("filter")));
    for (const char* key : {"t", "w"})
        QVERIFY(PointerDriver::pressKey(QString::fromLatin1(key)));

    QTRY_VERIFY_WITH_TIMEOUT(!preview.row(u"one"_s).isValid(), kLongMs);
    QVERIFY(preview.row(u"two"_s).isValid());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorPreview>(argc, argv);
}

#include "tst_authorpreview.moc"
