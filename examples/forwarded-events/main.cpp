// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HoverForwarder.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLSafeguards.h>

#include <QApplication>
#include <QPushButton>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);

    QPushButton button(u"Rest the pointer here, or press F1 or the button"_s);
    button.setObjectName(u"greeting"_s);
    button.setShortcut(Qt::Key_F1);
    button.resize(480, 120);

    // Without ckInstallEventFilter: what the library gets to see is the host's decision.
    VLContext context;
    Vidlets::useSafeguards(context);
    const QStringList dataPaths = {QStringLiteral(EXAMPLE_PACKAGES)};
    Vidlets::VLInterface vidlets(context, dataPaths, nullptr);

    HoverForwarder forwarder(vidlets);
    application.installEventFilter(&forwarder);

    QObject::connect(&button, &QPushButton::clicked, &vidlets, [&vidlets, &button] {
        // A tip can be asked for without any event as well.
        vidlets.show(u"greeting"_s, QCursor::pos(), &button);
    });

    button.show();
    return QApplication::exec();
}
