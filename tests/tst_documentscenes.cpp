// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipStage.h"
#include "ClipWriter.h"
#include "VidletsTest.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QQuickItem>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

QString sourceTree()
{
    return QStringLiteral(SOURCE_TREE);
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Could not read %s", qPrintable(path));
    return file.readAll();
}

QByteArray asPng(const QImage& image)
{
    QBuffer buffer;
    image.save(&buffer, "PNG");
    return buffer.data();
}

/// Shows the tip of a copy of @p package, which the author guide shows, with its picture and its
/// clip. Gives its scene, or null.
QQuickItem* show(ClipStage& stage, const QString& package)
{
    const QDir source(sourceTree() + u"/examples/first-tip/packages/"_s + package);
    QDirIterator files(source.path(), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next();
        stage.write(source.relativeFilePath(file), contentOf(file));
    }
    const QString player =
        sourceTree() + u"/examples/workbench/packages/Workbench.vidlets/ui/VideoPlayer.qml"_s;
    stage.write(u"ui/VideoPlayer.qml"_s, contentOf(player));
    ClipWriter clips;
    clips.testClip(u"pen.mp4"_s, u"libx264"_s, {160, 90}, 25, 10, {u"-bf"_s, u"0"_s});
    stage.addClip(u"pen.mp4"_s, clips.readBytes(u"pen.mp4"_s));
    stage.write(u"Resources/pen.png"_s, asPng(QImage(8, 8, QImage::Format_RGB32)));

    if (!stage.showPopup(u"tool.pen"_s, QPoint(20, 20), nullptr))
        return nullptr;
    return stage.view()->rootObject();
}

} // namespace

/// The packages that the author guide shows do what it says.
class TestDocumentScenes : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void firstTip_showsTextAndPlaysClip();
    void pieces_showPictureAndPlayClipAndPin();
};

void TestDocumentScenes::firstTip_showsTextAndPlaysClip()
{
    const QString package = u"First.vidlets"_s;
    ClipStage stage(package);
    QQuickItem* scene = show(stage, package);
    QVERIFY(scene);
    QVERIFY(scene->height() > 30);
    QStringList texts;
    const QList<QObject*> children = scene->findChildren<QObject*>();
    for (const QObject* child : children)
        texts += child->property("text").toString();
    QVERIFY(texts.contains(u"Pen (P)"_s));
    QVERIFY(texts.contains(u"Draws freehand, just as you move."_s));
    auto* clip = scene->findChild<VLVideoComponent*>();
    QVERIFY(clip);
    QTRY_COMPARE(clip->progress(), 1.0);
    QVERIFY(clip->isVisible());
}

void TestDocumentScenes::pieces_showPictureAndPlayClipAndPin()
{
    const QString package = u"Pieces.vidlets"_s;
    ClipStage stage(package);
    QQuickItem* scene = show(stage, package);
    QVERIFY(scene);
    QTRY_COMPARE(scene->findChild<QQuickItem*>(u"resource"_s)->width(), 8.0);
    auto* clip = scene->findChild<VLVideoComponent*>();
    QVERIFY(clip);
    QTRY_COMPARE(clip->progress(), 1.0);
    const qreal height = scene->height();
    QVERIFY(QMetaObject::invokeMethod(scene->findChild<QQuickItem*>(u"keep"_s), "keep"));
    QVERIFY(stage.view()->reserved());
    QVERIFY(stage.view()->stayOpen());
    QCOMPARE(scene->height(), height);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestDocumentScenes>(argc, argv);
}

#include "tst_documentscenes.moc"
