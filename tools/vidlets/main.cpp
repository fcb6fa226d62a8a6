// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Command.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

#include <VidletsAuthor/AuthorControlFile.h>
#include <VidletsAuthor/AuthorFinding.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace Command {

void print(const QByteArray& text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

void printError(const QByteArray& text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stderr);
}

bool isWatched()
{
    return isatty(STDERR_FILENO) == 1;
}

ExitCode wrongUse(const QString& reason)
{
    printError("vidlets: " + Vidlets::printable(reason).toUtf8() + '\n');
    return WrongUse;
}

bool parse(QCommandLineParser& parser, const QString& name, const QStringList& arguments,
           ExitCode& code)
{
    const QCommandLineOption help({u"h"_s, u"help"_s}, u"Shows this help."_s);
    parser.addOption(help);
    const bool isParsed = parser.parse(QStringList{u"vidlets "_s + name} + arguments);
    if (!isParsed) {
        code = wrongUse(parser.errorText());
        return false;
    }
    if (!parser.isSet(help))
        return true;
    // The parser names the program alone.
    QString text = parser.helpText();
    const qsizetype end = text.indexOf(u'\n');
    text.replace(0, end,
                 text.left(end).replace(QRegularExpression(u"^Usage: \\S+"_s),
                                        u"Usage: vidlets %1"_s.arg(name)));
    print(text.toUtf8());
    code = Fine;
    return false;
}

bool readLocales(const QStringList& values, QStringList& locales, QString& reason)
{
    for (const QString& value : values) {
        // What it does not know Qt takes for "C", which nobody speaks.
        const QString name = QLocale(value).name();
        if (name == "C"_L1) {
            reason = u"There is no locale \"%1\"."_s.arg(value);
            return false;
        }
        if (Vidlets::isOfOtherTerritory(value)) {
            reason = u"There is no locale \"%1\"; \"%2\" would be taken for it."_s.arg(value, name);
            return false;
        }
        if (!locales.contains(name))
            locales.append(name);
    }
    return true;
}

void writeGraveMessage(QtMsgType type, const QMessageLogContext& /*context*/,
                       const QString& message)
{
    if (type == QtFatalMsg || type == QtCriticalMsg)
        wrongUse(message);
}

} // namespace Command

namespace {

std::unique_ptr<QCoreApplication> makePlainApplication(int& argc, char** argv)
{
    return std::make_unique<QCoreApplication>(argc, argv);
}

struct Subcommand
{
    QLatin1StringView name;
    QLatin1StringView summary;
    Command::ExitCode (*run)(const QStringList& arguments);
    std::unique_ptr<QCoreApplication> (*makeApplication)(int& argc,
                                                         char** argv) = makePlainApplication;
};

constexpr std::array kSubcommands{
    Subcommand{"check"_L1, "looks for faults in packages"_L1, runCheck},
    Subcommand{"clip"_L1, "makes a clip out of a recording"_L1, runClip},
    Subcommand{"gallery"_L1, "draws all tips into pictures and a page"_L1, runGallery,
               makeGalleryApplication},
    Subcommand{"new"_L1, "makes a package that works at once"_L1, runNew},
    Subcommand{"preview"_L1, "shows tips as users see them, while they are edited"_L1, runPreview,
               makePreviewApplication},
    Subcommand{"strings"_L1, "collects texts for translators"_L1, runStrings},
};

const Subcommand* find(const QString& name)
{
    const auto* found =
        std::find_if(kSubcommands.cbegin(), kSubcommands.cend(),
                     [&name](const Subcommand& command) { return command.name == name; });
    return found == kSubcommands.cend() ? nullptr : found;
}

QByteArray help()
{
    QString text = u"Usage: vidlets COMMAND [options]\n\nFor authors of packages of rich tips.\n\n"
                   "Commands:\n"_s;
    for (const Subcommand& command : kSubcommands)
        text += u"  %1  %2\n"_s.arg(QString(command.name).leftJustified(8), command.summary);
    text +=
        u"\nOptions:\n  -h, --help     Shows this help.\n  -v, --version  Shows the version.\n\n"
        "\"vidlets COMMAND --help\" tells more of a command.\n"_s;
    return text.toUtf8();
}

} // namespace

int main(int argc, char* argv[])
{
    // Which application it is depends on the command, and Qt reads the arguments with it.
    const Subcommand* command = argc > 1 ? find(QString::fromLocal8Bit(argv[1])) : nullptr;
    const std::unique_ptr<QCoreApplication> application =
        command ? command->makeApplication(argc, argv) : makePlainApplication(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty())
        return Command::wrongUse(u"Which command? \"vidlets --help\" lists them."_s);
    const QString name = arguments.takeFirst();
    if (name == "--help"_L1 || name == "-h"_L1 || name == "help"_L1) {
        Command::print(help());
        return Command::Fine;
    }
    if (name == "--version"_L1 || name == "-v"_L1) {
        Command::print("vidlets " VIDLETS_VERSION "\n");
        return Command::Fine;
    }
    if (command)
        return command->run(arguments);
    return Command::wrongUse(
        u"There is no command \"%1\". \"vidlets --help\" lists them."_s.arg(name));
}
