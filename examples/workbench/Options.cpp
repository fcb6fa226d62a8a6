// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Options.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

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

int readMilliseconds(const QCommandLineParser& parser, const QCommandLineOption& option)
{
    bool isNumber = false;
    const int milliseconds = parser.value(option).toInt(&isNumber);
    if (!isNumber) {
        qCritical("workbench: --stay needs a number of milliseconds");
        std::exit(EXIT_FAILURE);
    }
    return milliseconds;
}

} // namespace

Options readOptions(const QCoreApplication& application)
{
    const auto noFilter = flag("no-filter", "Forward events from a filter of the program's own.");
    const auto simple = flag("simple", "Start with simple tooltips.");
    const auto dark = flag("dark", "Use dark colours.");
    const auto noTips = flag("no-tips", "Start with rich tooltips switched off.");
    auto locale = valued("locale", "Locale of the content, such as en_US.", "name");
    auto stay = valued("stay", "Time until a popup fades after the pointer has left.", "ms");
    const auto geometry =
        valued("geometry-file", "Write a line per control that has a key: key x y w h.", "file");
    const auto popup = valued("popup-file", "Write the popups that are up, line by line.", "file");
    locale.setDefaultValue(u"en_US"_s);
    stay.setDefaultValue(QString::number(Options().stayMs));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QCoreApplication::translate("Options", "A sketching tool with rich tooltips."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({noFilter, simple, dark, noTips, locale, stay, geometry, popup});
    parser.addPositionalArgument(
        u"data-path"_s,
        QCoreApplication::translate("Options", "Directories with packages (*.vidlets)."),
        u"[data-path...]"_s);
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
    options.hasOwnFilter = parser.isSet(noFilter);
    options.isSimple = parser.isSet(simple);
    options.isDark = parser.isSet(dark);
    options.hasNoTips = parser.isSet(noTips);
    return options;
}

} // namespace Workbench
