// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef SCENECONTEXT_H
#define SCENECONTEXT_H

#include <Vidlets/VLView.h>

#include <QtQml/qqmlregistration.h>

/// Has the type of "vidletView", which no scene can name, described for tools. Never compiled.
struct SceneView
{
    Q_GADGET
    QML_FOREIGN(Vidlets::VLView)
    QML_ANONYMOUS
};

#endif
