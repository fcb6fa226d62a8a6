// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include <Vidlets/VLContext.h>

#include <QApplication>

#include <cstdlib>

#include <VidletsHost/VLAccess.h>
#include <VidletsHost/VLHostInterface.h>
#include <VidletsHost/VLPreferences.h>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    VLContext context;
    Vidlets::VLHostInterface interface(context, {});
    const bool isWhole = interface.manager() && interface.access()->isEnabled()
        && !interface.preferences()->reducedMotion()
        && interface.context().get(Vidlets::ckGuardContent, false).toBool();
    return isWhole ? EXIT_SUCCESS : EXIT_FAILURE;
}
