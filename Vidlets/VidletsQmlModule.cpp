// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsQmlModule.h"

#include "VLStyledRectangleComponent.h"
#include "VLVideoComponent.h"
#include "VLXmlElement.h"

#include <QQuickItem>
#include <QtQml/qqml.h>
#include <QtQml/qqmlmoduleregistration.h>

namespace {

constexpr const char* kModuleUri = "com.larkspan.vidlets.qml";
constexpr int kMajorVersion = 1;
constexpr int kMinorVersion = 0;

} // namespace

void qml_register_types_com_larkspan_vidlets_qml()
{
    qmlRegisterTypesAndRevisions<Vidlets::VLStyledRectangleComponent>(kModuleUri, kMajorVersion);
    // The base of the two items, so that the module knows their properties.
    qmlRegisterAnonymousType<QQuickItem>(kModuleUri, kMajorVersion);
    qmlRegisterTypesAndRevisions<Vidlets::VLVideoComponent>(kModuleUri, kMajorVersion);
    qmlRegisterTypesAndRevisions<Vidlets::VLXmlElement>(kModuleUri, kMajorVersion);
    qmlRegisterModule(kModuleUri, kMajorVersion, kMinorVersion);
}

namespace {

// Runs when the library is loaded, so that a host calls nothing for the module; undone at unload.
// Being a static object with a constructor is its purpose.
// clazy:excludeall=non-pod-global-static
const QQmlModuleRegistration moduleRegistration(kModuleUri,
                                                qml_register_types_com_larkspan_vidlets_qml);

} // namespace

// The generated initialiser of the resource, in this unit so that it runs after the registration.
#include "qrc_vidlets.cpp"
