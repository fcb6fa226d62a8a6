// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include <Vidlets/VLContext.h>

#include <QApplication>
#include <QPushButton>

#include <VidletsHost/VLHostInterface.h>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    // The object name is the key of the tip.
    QPushButton button(u"Rest the pointer here"_s);
    button.setObjectName(u"greeting"_s);
    button.resize(320, 120);
    button.show();
    VLContext context;
    const Vidlets::VLHostInterface vidlets(context, {QStringLiteral(MINIMAL_PACKAGES)});
    return QApplication::exec();
}
