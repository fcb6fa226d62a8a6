// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSCENECALL_H
#define VLSCENECALL_H

#include "VLManager.h"

#include <QPointer>

namespace Vidlets {

/**
 * A call from a scene, for as long as the host deals with it.
 *
 * The host may open a dialog of its own meanwhile, and with it a loop in which events go on. The
 * scene has to stay, or the process ends when its code goes on. Internal to the library, on the
 * user-interface thread; the manager may go during the call.
 */
class VLSceneCall
{
public:
    /// @p manager may be null.
    explicit VLSceneCall(VLManager* manager);
    ~VLSceneCall();

private:
    Q_DISABLE_COPY_MOVE(VLSceneCall)

    const QPointer<VLManager> m_manager;
};

} // namespace Vidlets

#endif
