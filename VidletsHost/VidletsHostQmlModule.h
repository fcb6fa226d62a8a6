// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VIDLETSHOSTQMLMODULE_H
#define VIDLETSHOSTQMLMODULE_H

#include <VidletsHost/VidletsHostExport.h>

/**
 * Registers the types of the QML module "com.larkspan.vidlets.host", version 1.0.
 *
 * The QML type system calls it when a scene imports the module; a host calls nothing.
 */
VIDLETSHOST_EXPORT void qml_register_types_com_larkspan_vidlets_host();

#endif
