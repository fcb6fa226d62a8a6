// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// Names nothing of the library: loading it is all that the QML module needs.

#include <QApplication>
#include <QQmlComponent>
#include <QQmlEngine>

#include <memory>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import QtQuick\n"
                      "import com.larkspan.vidlets.qml 1.0\n"
                      "Item {\n"
                      "    VLStyledRectangle { toolTipStyle: true }\n"
                      "    VLVideoComponent { state: VLVideoComponent.pausedState }\n"
                      "    property var element: VLXmlElement { tagName: \"vidlet\" }\n"
                      "}\n",
                      QUrl());
    const std::unique_ptr<QObject> object(component.create());
    if (object)
        return EXIT_SUCCESS;
    qCritical("%s", qPrintable(component.errorString()));
    return EXIT_FAILURE;
}
