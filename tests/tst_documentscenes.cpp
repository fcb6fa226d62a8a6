// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipWriter.h"
#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QPointer>
#include <QQuickItem>

#include <memory>

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

/// A host on a copy of a package that the author guide shows, with its picture and its clip.
class GuideStage
{
public:
    explicit GuideStage(const QString& package)
        : m_package(package)
    {
        const QDir source(sourceTree() + u"/examples/first-tip/packages/"_s + package);
        QDirIterator files(source.path(), QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString file = files.next();
            write(source.relativeFilePath(file), contentOf(file));
        }
        const QString player =
            sourceTree() + u"/examples/workbench/packages/Workbench.vidlets/ui/VideoPlayer.qml"_s;
        write(u"ui/VideoPlayer.qml"_s, contentOf(player));
        ClipWriter clips;
        clips.testClip(u"pen.mp4"_s, u"libx264"_s, {160, 90}, 25, 10, {u"-bf"_s, u"0"_s});
        write(u"Resources/pen.mp4"_s, clips.readBytes(u"pen.mp4"_s));
        QImage(8, 8, QImage::Format_RGB32)
            .save(m_packages.path(package + u"/Resources/pen.png"_s), "PNG");

        const QStringList dataPaths = {m_packages.dataPath()};
        m_index = std::make_unique<VLIndex>(&m_context, dataPaths);
        m_host = std::make_unique<RecordingInterface>(m_context, dataPaths, m_index.get());
    }
    ~GuideStage()
    {
        // A pinned tip uses the manager to its end, one that is not goes by itself.
        if (m_popup && m_popup->view()->reserved())
            delete m_popup;
        m_host.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    /// Shows the tip of the package. Gives its scene.
    QQuickItem* show()
    {
        m_host->show(u"tool.pen"_s, QPoint(20, 20), nullptr);
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows) {
            if (auto* popup = qobject_cast<VLWidget*>(window))
                m_popup = popup;
        }
        return m_popup ? m_popup->view()->rootObject() : nullptr;
    }
    VLView* view() const
    {
        return m_popup->view();
    }

private:
    void write(const QString& name, const QByteArray& content)
    {
        m_packages.write(m_package + u'/' + name, content);
    }

    const QString m_package;
    PackageBuilder m_packages;
    VLContext m_context{nullptr};
    std::unique_ptr<VLIndex> m_index;
    std::unique_ptr<RecordingInterface> m_host;
    QPointer<VLWidget> m_popup;
};

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
    GuideStage stage(u"First.vidlets"_s);
    QQuickItem* scene = stage.show();
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
    GuideStage stage(u"Pieces.vidlets"_s);
    QQuickItem* scene = stage.show();
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
