// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// A host whose windows are scenes of Qt Quick.

#include <Vidlets/VLContext.h>

#include <QApplication>
#include <QQmlApplicationEngine>
#include <QUrl>

#include <VidletsHost/VLHostInterface.h>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    // Tips are widgets: a QGuiApplication is not enough.
    QApplication application(argc, argv);
    const QString folder = QStringLiteral(QUICK_FOLDER);
    VLContext context;
    const Vidlets::VLHostInterface vidlets(context, {folder + u"/packages"_s});
    const QQmlApplicationEngine engine(QUrl::fromLocalFile(folder + u"/Main.qml"_s));
    return engine.rootObjects().isEmpty() ? EXIT_FAILURE : QApplication::exec();
}
