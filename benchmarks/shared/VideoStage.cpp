// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VideoStage.h"

#include "ClipLoader.h"
#include "ClipWriter.h"
#include "FrameWatch.h"
#include "Report.h"

#include <QQuickItem>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {

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
    // The pointer is elsewhere, and the popup is to stay.
    : ClipStage(u"Clips.vidlets"_s, {{Vidlets::ckScale, scale}, {Vidlets::ckStayDuration, 0}})
{
    addTip(u"even"_s);
    addTip(u"odd"_s);
    write(u"ui/VidletUI.qml"_s, scene());
    ClipWriter clips;
    const auto add = [this, &clips](const QString& name, int length) {
        clips.testClip(name, u"libx264"_s, clipSizePx(), kFramesPerSecond, length,
                       {u"-pix_fmt"_s, u"yuv420p"_s});
        addClip(name, clips.readBytes(name));
    };
    add(u"first.mp4"_s, frames);
    add(u"tiny.mp4"_s, kTinyFrames);

    m_control.setGeometry(100, 100, 200, 100);
    m_control.show();
    waitUntil([this] { return m_control.windowHandle()->isExposed(); }, "the control");
}

void VideoStage::showScene()
{
    const QString key = ++m_shows % 2 == 0 ? u"even"_s : u"odd"_s;
    Report::verify(showPopup(key, QPoint(110, 110), &m_control), "the key has a tip");
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

Vidlets::VLVideoComponent* VideoStage::item() const
{
    return view()->rootObject()->findChild<Vidlets::VLVideoComponent*>();
}

Vidlets::VLVideoSource* VideoStage::source() const
{
    return sourceOf(item());
}

QSize VideoStage::clipSizePx()
{
    return {640, 360};
}
