// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "RememberingIndex.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLSafeguards.h>

#include <QApplication>
#include <QPushButton>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);

    QPushButton button(u"Rest the pointer here"_s);
    button.setObjectName(u"greeting"_s);
    button.resize(320, 120);

    const QStringList dataPaths = {QStringLiteral(EXAMPLE_PACKAGES)};
    VLContext context;
    Vidlets::useSafeguards(context);
    context.set(Vidlets::ckInstallEventFilter, true);
    RememberingIndex index(&context, dataPaths);
    Vidlets::VLInterface vidlets(context, dataPaths, &index);

    button.show();
    return QApplication::exec();
}
