// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VIDLETSQMLMODULE_H
#define VIDLETSQMLMODULE_H

#include <Vidlets/VidletsExport.h>

/**
 * Registers the types of the QML module "com.larkspan.vidlets.qml", version 1.0.
 *
 * The QML type system calls it when a scene imports the module; a host calls nothing.
 */
VIDLETS_EXPORT void qml_register_types_com_larkspan_vidlets_qml();

#endif
