// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VideoStage.h"

#include "ClipLoader.h"
#include "FrameWatch.h"
#include "Report.h"
#include <Vidlets/VLWidget.h>

#include <QFile>
#include <QQuickItem>
#include <QWindow>

namespace {

const QString kPackage = QStringLiteral("Clips.vidlets");

QByteArray scene()
{
    return "import QtQuick\n"
           "import com.larkspan.vidlets.qml\n\n"
           "Item {\n"
           "    width: 640\n"
           "    height: 360\n\n"
           "    VLVideoComponent { anchors.fill: parent }\n"
           "}\n";
}

} // namespace

VideoStage::VideoStage(int frames, float scale)
    : m_host(m_context, {}, nullptr)
{
    for (const char* key : {"even", "odd"}) {
        const QString name = QString::fromLatin1(key);
        m_packages.writeTip(kPackage, name + QStringLiteral(".xml"), name);
    }
    m_packages.write(kPackage + QStringLiteral("/ui/VidletUI.qml"), scene());
    const auto addClip = [this](const QString& name, int length) {
        const QString clip =
            m_clips.testClip(name, QStringLiteral("libx264"), clipSizePx(), kFramesPerSecond,
                             length, {QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p")});
        m_packages.write(kPackage + QStringLiteral("/Resources/") + name, m_clips.readBytes(name));
        QFile::remove(clip);
    };
    addClip(QStringLiteral("first.mp4"), frames);
    addClip(QStringLiteral("tiny.mp4"), kTinyFrames);

    m_control.setGeometry(100, 100, 200, 100);
    m_control.show();
    waitUntil([this] { return m_control.windowHandle()->isExposed(); }, "the control");

    m_context.set(Vidlets::ckScale, scale);
    // The pointer is elsewhere, and the popup is to stay.
    m_context.set(Vidlets::ckStayDuration, 0);
    m_manager = std::make_unique<Vidlets::VLManager>(&m_host, m_context,
                                                     QStringList{m_packages.dataPath()}, nullptr);
}

VideoStage::~VideoStage() = default;

void VideoStage::showScene()
{
    const QString key = ++m_shows % 2 == 0 ? QStringLiteral("even") : QStringLiteral("odd");
    Report::verify(m_manager->show(key, QPoint(110, 110), &m_control), "the key has a tip");
    FrameWatch frames;
    frames.watch(view());
    view()->update();
    frames.waitForFirst();
    Report::verify(item() && source(), "the scene holds a video item");
}

void VideoStage::setClip()
{
    item()->setSource(QStringLiteral("first.mp4"));
}

void VideoStage::releaseClip()
{
    bool isReplaced = false;
    const auto connection = QObject::connect(
        source(), &Vidlets::VLVideoSource::streamEnded, item(), [this, &isReplaced] {
            isReplaced = source()->source().fileName() == QLatin1String("tiny.mp4")
                && source()->loadedFrameCount() <= kTinyFrames;
        });
    item()->setSource(QStringLiteral("tiny.mp4"));
    waitUntil([&isReplaced] { return isReplaced; }, "the tiny clip");
    QObject::disconnect(connection);
    waitUntilDecoded(*source(), 1);
}

Vidlets::VLView* VideoStage::view() const
{
    return m_manager->widget()->view();
}

Vidlets::VLVideoComponent* VideoStage::item() const
{
    return view()->rootObject()->findChild<Vidlets::VLVideoComponent*>();
}

Vidlets::VLVideoSource* VideoStage::source() const
{
    return item()->findChild<Vidlets::VLVideoSourceFFMPEG*>();
}

QSize VideoStage::clipSizePx()
{
    return {640, 360};
}
