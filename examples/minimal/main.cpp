// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLSafeguards.h>

#include <QApplication>
#include <QPushButton>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);

    // The object name is the key of the tip.
    QPushButton button(u"Rest the pointer here"_s);
    button.setObjectName(u"greeting"_s);
    button.resize(320, 120);

    // Let the library watch the application for tooltip events, with all safeguards on.
    VLContext context;
    Vidlets::useSafeguards(context);
    context.set(Vidlets::ckInstallEventFilter, true);
    context.set(Vidlets::ckAlwaysShowToolTips, true);

    // A data path is a directory that holds packages. The interface goes before the application.
    const QStringList dataPaths = {QStringLiteral(MINIMAL_PACKAGES)};
    Vidlets::VLInterface vidlets(context, dataPaths, nullptr);

    button.show();
    return QApplication::exec();
}
