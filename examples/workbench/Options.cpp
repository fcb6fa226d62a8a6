// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Options.h"

#include <Vidlets/VLInterface.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

#include <array>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

QCommandLineOption flag(const char* name, const char* help)
{
    return QCommandLineOption(QLatin1String(name), QCoreApplication::translate("Options", help));
}

QCommandLineOption valued(const char* name, const char* help, const char* value)
{
    QCommandLineOption option = flag(name, help);
    option.setValueName(QLatin1String(value));
    return option;
}

// A program from the build tree has its packages beside it.
QString ownPackages()
{
    const QDir program(QCoreApplication::applicationDirPath());
    for (const QLatin1String candidate :
         {"packages"_L1, "../share/vidlets/workbench/packages"_L1}) {
        if (program.exists(candidate)) {
            return QDir::cleanPath(program.absoluteFilePath(candidate));
        }
    }
    return QStringLiteral(WORKBENCH_PACKAGES);
}

[[noreturn]] void endWith(const char* complaint)
{
    qCritical("workbench: %s", complaint);
    std::exit(EXIT_FAILURE);
}

int readMilliseconds(const QCommandLineParser& parser, const QCommandLineOption& option)
{
    bool isNumber = false;
    const int milliseconds = parser.value(option).toInt(&isNumber);
    if (!isNumber) {
        endWith("--stay needs a number of milliseconds");
    }
    return milliseconds;
}

struct LevelName
{
    QLatin1String name;
    Vidlets::VLMessageType level;
};

constexpr std::array kLevelNames = {
    LevelName{"error"_L1, Vidlets::VLMessageError},
    LevelName{"warning"_L1, Vidlets::VLMessageWarning},
    LevelName{"information"_L1, Vidlets::VLMessageInformation},
    LevelName{"debug"_L1, Vidlets::VLMessageDebug},
};

// A host may have types of its own between the named ones, so each number is a level.
std::optional<int> readMessageLevel(const QCommandLineParser& parser,
                                    const QCommandLineOption& option)
{
    if (!parser.isSet(option)) {
        return std::nullopt;
    }
    const QString value = parser.value(option);
    for (const LevelName& candidate : kLevelNames) {
        if (value.compare(candidate.name, Qt::CaseInsensitive) == 0) {
            return candidate.level;
        }
    }
    bool isNumber = false;
    const int level = value.toInt(&isNumber);
    if (!isNumber) {
        endWith("--messages needs error, warning, information, debug or a number");
    }
    return level;
}

void describeProgram(QCommandLineParser& parser)
{
    parser.setApplicationDescription(
        QCoreApplication::translate("Options", "A sketching tool with rich tooltips."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(
        u"data-path"_s,
        QCoreApplication::translate("Options", "Directories with packages (*.vidlets)."),
        u"[data-path...]"_s);
}

} // namespace

Options readOptions(const QCoreApplication& application)
{
    const auto simple = flag("simple", "Start with simple tooltips.");
    const auto dark = flag("dark", "Use dark colours.");
    const auto noTips = flag("no-tips", "Start with rich tooltips switched off.");
    const auto noSafeguards =
        flag("no-safeguards", "Leave all safeguards off, as the library does by itself.");
    auto locale = valued("locale", "Locale of the content, such as en_US.", "name");
    auto stay = valued("stay", "Time until a popup fades after the pointer has left.", "ms");
    const auto messages =
        valued("messages",
               "Pass messages up to this level on, and write them to standard error as well: "
               "error (100), warning (200), information (300), debug (400) or another number.",
               "level");
    const auto geometry =
        valued("geometry-file", "Write a line per control that has a key: key x y w h.", "file");
    const auto popup = valued("popup-file", "Write the popups that are up, line by line.", "file");
    locale.setDefaultValue(u"en_US"_s);
    stay.setDefaultValue(QString::number(Options().stayMs));

    QCommandLineParser parser;
    describeProgram(parser);
    parser.addOptions(
        {simple, dark, noTips, noSafeguards, locale, stay, messages, geometry, popup});
    parser.process(application);

    Options options;
    options.dataPaths = parser.positionalArguments();
    if (options.dataPaths.isEmpty()) {
        options.dataPaths.append(ownPackages());
    }
    options.locale = parser.value(locale);
    options.geometryFile = parser.value(geometry);
    options.popupFile = parser.value(popup);
    options.stayMs = readMilliseconds(parser, stay);
    options.messageLevel = readMessageLevel(parser, messages);
    options.isSimple = parser.isSet(simple);
    options.isDark = parser.isSet(dark);
    options.hasNoTips = parser.isSet(noTips);
    options.hasNoSafeguards = parser.isSet(noSafeguards);
    return options;
}

} // namespace Workbench
