// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Appearance.h"
#include "MainWindow.h"
#include "Options.h"
#include "WorkbenchInterface.h"
#include "probe/ControlReport.h"
#include "probe/PopupReport.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLSafeguards.h>

#include <QApplication>

#include <memory>

#include <VidletsHost/VLKeyTableIndex.h>

using namespace Qt::StringLiterals;

using namespace Workbench;

namespace {

void fillContext(VLContext& context, const Options& options)
{
    // The index goes by the host's own settings, and knows nothing of what the kit turns on.
    Vidlets::useSafeguards(context);
    if (options.hasNoSafeguards) {
        // The host kit turns on what the host leaves open.
        for (int key = Vidlets::ckReleaseClips; key <= Vidlets::ckTendPinned; ++key) {
            context.set(static_cast<Vidlets::contextKey>(key), false);
        }
    }
    // A tip may take the keyboard focus for itself; the window behind it must go on giving tips.
    context.set(Vidlets::ckAlwaysShowToolTips, true);
    context.set(Vidlets::ckDisabled, options.hasNoTips);
    context.set(Vidlets::ckDocumentationEnabled, true);
    context.set(Vidlets::ckLocale, options.locale);
    context.set(Vidlets::ckSimpleTooltips, options.isSimple);
    context.set(Vidlets::ckStayDuration, options.stayMs);
    if (options.messageLevel) {
        context.set(Vidlets::ckMessageLevel, *options.messageLevel);
    }
}

void writeMessages(const WorkbenchInterface& vidlets)
{
    QObject::connect(&vidlets, &WorkbenchInterface::messageRaised, &vidlets,
                     [](Vidlets::VLMessageType type, const QString& message) {
                         qDebug("%ls:%ls", qUtf16Printable(labelFor(type)),
                                qUtf16Printable(message));
                     });
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"workbench"_s);
    QApplication::setApplicationVersion(u"1.0"_s);
    const Options options = readOptions(application);
    if (options.isDark) {
        useDarkColors();
    }

    VLContext context;
    fillContext(context, options);
    // The window comes first: the library looks once, while it is built, at the windows there are.
    MainWindow window;
    Vidlets::VLKeyTableIndex index(&context, options.dataPaths);
    index.setLocaleChain(true);
    WorkbenchInterface vidlets(context, options.dataPaths, &index);
    if (options.messageLevel) {
        writeMessages(vidlets);
    }
    window.attach(vidlets, index);

    std::unique_ptr<ControlReport> controlReport;
    if (!options.geometryFile.isEmpty()) {
        controlReport = std::make_unique<ControlReport>(vidlets, window, options.geometryFile);
    }
    std::unique_ptr<PopupReport> popupReport;
    if (!options.popupFile.isEmpty()) {
        popupReport = std::make_unique<PopupReport>(options.popupFile);
        application.installEventFilter(popupReport.get());
    }

    window.show();
    return QApplication::exec();
}
