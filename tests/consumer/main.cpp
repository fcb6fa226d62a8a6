// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLStyledRectangleComponent.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoController.h>
#include <Vidlets/VLVideoFrame.h>
#include <Vidlets/VLVideoFrameCache.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>
#include <Vidlets/VLXmlParser.h>
#include <Vidlets/VidletsQmlModule.h>

#include <QApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

int failures = 0;

void expect(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "failed: %s\n", what);
    ++failures;
}

void touchContent()
{
    VLXmlElement element;
    element.setTagName(u"vidlet"_s);
    expect(element.toXml() == u"<vidlet/>"_s, "VLXmlElement");
    const VLXmlParser parser;
}

void touchVideo()
{
    VLVideoFrameCache cache(u"clip"_s);
    cache.addFrame(VLVideoFrame(2, 2, QImage::Format_RGB32, 7));
    expect(cache.length() == 1 && cache.frame(0).pts() == 7.0, "VLVideoFrameCache");

    VLVideoSourceFFMPEG source;
    VLVideoController controller(&source);
    expect(controller.state() == VLVideoController::StatePaused, "VLVideoController");
    const VLVideoComponent item;
    expect(item.state() == VLVideoComponent::pausedState, "VLVideoComponent");
}

void touchHost()
{
    VLContext context;
    context.set(ckScale, 2.0);
    VLIndex index(&context, {});
    VLInterface interface(context, {}, &index);
    expect(interface.keys().isEmpty(), "VLInterface");

    VLManager manager(&interface, context, {}, &index);
    expect(manager.getScaledSize(10) == 20, "VLManager");
    VLWidget popup(&manager);
    popup.setView(new VLView(&manager));
    expect(popup.view()->manager() == &manager, "VLView");

    VLStyledRectangleComponent rectangle;
    expect(!rectangle.toolTipStyle(), "VLStyledRectangleComponent");
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    touchContent();
    touchVideo();
    touchHost();
    qml_register_types_com_larkspan_vidlets_qml();
    return failures;
}
