// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Command.h"

#include <QApplication>
#include <QCommandLineParser>

#include <algorithm>
#include <cstdlib>

#include <VidletsAuthor/AuthorPreviewWindow.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

QString noDisplay()
{
    return u"There is no display to show tips on."_s;
}

/// Qt aborts where it finds no display, which is neither a fault of the program nor a core's worth.
void handleStartMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type == QtFatalMsg)
        std::_Exit(Command::wrongUse(noDisplay()));
    Command::writeGraveMessage(type, context, message);
}

bool isHelp(const char* argument)
{
    return qstrcmp(argument, "--help") == 0 || qstrcmp(argument, "-h") == 0;
}

} // namespace

std::unique_ptr<QCoreApplication> makePreviewApplication(int& argc, char** argv)
{
    // A display that is named may not answer, and the help needs none.
    const bool hasDisplay = !qEnvironmentVariableIsEmpty("DISPLAY")
        || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
    if (!hasDisplay || std::any_of(argv, argv + argc, isHelp))
        return std::make_unique<QCoreApplication>(argc, argv);
    // What was compiled before is known by a time in seconds, and an author saves twice in one.
    qputenv("QML_DISABLE_DISK_CACHE", "1");
    // What Qt has to say of the environment is of no interest to authors.
    const QtMessageHandler before = qInstallMessageHandler(handleStartMessage);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(before);
    return application;
}

Command::ExitCode runPreview(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Shows tips as users see them, with what is wrong in them, and again with each file that "
        "is saved.\n"
        "The editor is VIDLETS_EDITOR, where that is set; in it \"%f\", \"%l\" and \"%c\" stand "
        "for file, line and column."_s);
    parser.addPositionalArgument(u"PATH"_s, u"A package or a data path."_s, u"PATH"_s);
    parser.addOptions({
        {u"key"_s, u"Begins with the tip KEY."_s, u"KEY"_s},
        {u"editor"_s, u"Opens places with this command instead."_s, u"COMMAND"_s},
    });
    Command::ExitCode code = Command::Fine;
    if (!Command::parse(parser, u"preview"_s, arguments, code))
        return code;
    const QStringList paths = parser.positionalArguments();
    if (paths.size() != 1)
        return Command::wrongUse(u"What is to be shown? vidlets preview PATH"_s);
    QString reason;
    const auto list = AuthorTipList::read(paths.constFirst(), reason);
    if (!list)
        return Command::wrongUse(reason);
    const QString key = parser.value(u"key"_s);
    const bool isKnown = key.isEmpty()
        || std::any_of(list->packages.cbegin(), list->packages.cend(),
                       [&key](const AuthorListedPackage& package) {
                           return std::any_of(
                               package.tips.cbegin(), package.tips.cend(),
                               [&key](const AuthorListedTip& tip) { return tip.key == key; });
                       });
    if (!isKnown)
        return Command::wrongUse(u"There is no tip \"%1\"."_s.arg(key));
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return Command::wrongUse(noDisplay());
    const QString editor = parser.isSet(u"editor"_s) ? parser.value(u"editor"_s)
                                                     : qEnvironmentVariable("VIDLETS_EDITOR");
    AuthorPreviewWindow window(paths.constFirst(), *list, editor);
    window.show();
    window.choose(key);
    QApplication::exec();
    return Command::Fine;
}
