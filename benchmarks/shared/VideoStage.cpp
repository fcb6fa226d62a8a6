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

using namespace Qt::StringLiterals;

namespace {

const QString kPackage = u"Clips.vidlets"_s;

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
        m_packages.writeTip(kPackage, name + u".xml"_s, name);
    }
    m_packages.write(kPackage + u"/ui/VidletUI.qml"_s, scene());
    const auto addClip = [this](const QString& name, int length) {
        const QString clip = m_clips.testClip(name, u"libx264"_s, clipSizePx(), kFramesPerSecond,
                                              length, {u"-pix_fmt"_s, u"yuv420p"_s});
        m_packages.write(kPackage + u"/Resources/"_s + name, m_clips.readBytes(name));
        QFile::remove(clip);
    };
    addClip(u"first.mp4"_s, frames);
    addClip(u"tiny.mp4"_s, kTinyFrames);

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
    const QString key = ++m_shows % 2 == 0 ? u"even"_s : u"odd"_s;
    Report::verify(m_manager->show(key, QPoint(110, 110), &m_control), "the key has a tip");
    FrameWatch frames;
    frames.watch(view());
    view()->update();
    frames.waitForFirst();
    Report::verify(item() && source(), "the scene holds a video item");
}

void VideoStage::setClip()
{
    item()->setSource(u"first.mp4"_s);
}

void VideoStage::releaseClip()
{
    bool isReplaced = false;
    const auto connection = QObject::connect(
        source(), &Vidlets::VLVideoSource::streamEnded, item(), [this, &isReplaced] {
            isReplaced = source()->source().fileName() == "tiny.mp4"_L1
                && source()->loadedFrameCount() <= kTinyFrames;
        });
    item()->setSource(u"tiny.mp4"_s);
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
