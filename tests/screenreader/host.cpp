// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include <Vidlets/VLContext.h>
#include <Vidlets/VLHostHooks.h>
#include <Vidlets/VLManager.h>

#include <QApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSocketNotifier>
#include <QWidget>

#include <cstdio>
#include <iostream>
#include <string>

#include <VidletsHost/VLHostInterface.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// Tells what a tip has opened instead of opening it.
class TellingInterface final : public VLHostInterface
{
public:
    using VLHostInterface::VLHostInterface;

    bool openExternalResource(VLExternalResourceType /*type*/, const QString& resource) override
    {
        std::printf("opened %s\n", qPrintable(resource));
        std::fflush(stdout);
        return true;
    }
};

/// Brings the tip of @p control up to stay, as from the keyboard.
void call(VLHostInterface& vidlets, QWidget* control)
{
    VLTipAnchor anchor;
    anchor.zone = QRect(control->mapToGlobal(QPoint()), control->size());
    VLHostHooks::show(vidlets.manager(), control->objectName(), anchor.zone.bottomLeft(), control,
                      anchor);
    VLHostHooks::hold(vidlets.manager(), true);
}

/// A line is the name of a control whose tip is to come up, or empty for none.
void obey(VLHostInterface& vidlets, const QWidget& window)
{
    std::string line;
    std::getline(std::cin, line);
    if (auto* control = window.findChild<QWidget*>(QString::fromStdString(line)))
        call(vidlets, control);
    else
        vidlets.hideTip();
}

} // namespace

/// A host of two buttons, for a screen reader: screen-reader-host DATA-PATH
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    VLContext context;
    context.set(ckDocumentationEnabled, true);
    context.set(ckStayDuration, 300);
    TellingInterface vidlets(context, {QString::fromLocal8Bit(argv[1])});
    vidlets.setGlobalProperty(u"brushSize"_s, 6);

    QWidget window;
    window.setWindowTitle(u"Host"_s);
    auto* layout = new QHBoxLayout(&window);
    for (const auto& key : {u"tool.pen"_s, u"tool.ellipse"_s}) {
        auto* button = new QPushButton(key);
        button->setObjectName(key);
        button->setAccessibleName(key);
        button->setAccessibleDescription(u"What the host says"_s);
        layout->addWidget(button);
    }
    window.setGeometry(300, 200, 400, 80);
    window.show();

    QSocketNotifier orders(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&orders, &QSocketNotifier::activated, &window,
                     [&vidlets, &window] { obey(vidlets, window); });
    return QApplication::exec();
}
