// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsHostQmlModule.h"

#include "VLKeyAttached.h"
#include "VLPreferencesReader.h"

#include <QtQml/qqml.h>
#include <QtQml/qqmlmoduleregistration.h>

namespace {

constexpr const char* kModuleUri = "com.larkspan.vidlets.host";
constexpr int kMajorVersion = 1;
constexpr int kMinorVersion = 0;

} // namespace

void qml_register_types_com_larkspan_vidlets_host()
{
    qmlRegisterTypesAndRevisions<Vidlets::VLKeyAttached>(kModuleUri, kMajorVersion);
    qmlRegisterTypesAndRevisions<Vidlets::VLPreferencesReader>(kModuleUri, kMajorVersion);
    qmlRegisterModule(kModuleUri, kMajorVersion, kMinorVersion);
}

namespace {

// Runs when the library is loaded, so that a host may load its scenes before it builds the
// interface, or after; undone at unload. Being a static object with a constructor is its purpose.
// clazy:excludeall=non-pod-global-static
const QQmlModuleRegistration moduleRegistration(kModuleUri,
                                                qml_register_types_com_larkspan_vidlets_host);

} // namespace
