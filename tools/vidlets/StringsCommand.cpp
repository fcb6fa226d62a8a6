// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Command.h"

#include <QCommandLineParser>

#include <cstdio>

#include <VidletsAuthor/AuthorPackages.h>
#include <VidletsAuthor/AuthorStringsFiles.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

void take(AuthorStringsFiles& files, const QCommandLineParser& parser, const QStringList& locales)
{
    if (locales.isEmpty())
        files.addExisting();
    for (const QString& locale : locales)
        files.add(locale);
    if (parser.isSet(u"pseudo"_s))
        files.addPseudo();
    files.setCompiling(parser.isSet(u"release"_s));
}

void tell(const AuthorStringsFiles& files)
{
    for (const QString& line : files.report())
        Command::print(printable(line).toUtf8() + '\n');
    for (const QString& fault : files.faults())
        std::fprintf(stderr, "vidlets: %s\n", qUtf8Printable(printable(fault)));
}

/// What becomes of the files of a package, or of several.
struct Outcome
{
    bool isDone = true;
    bool isAnything = false;
};

void updateFiles(AuthorStringsFiles& files, const QCommandLineParser& parser,
                 const QStringList& locales, Outcome& outcome)
{
    take(files, parser, locales);
    outcome.isAnything = outcome.isAnything || !files.isEmpty();
    outcome.isDone = files.write() && outcome.isDone;
    tell(files);
}

void updatePackage(const AuthorPackage& package, const QCommandLineParser& parser,
                   const QStringList& locales, Outcome& outcome)
{
    AuthorStringsFiles usual(package);
    // Each one costs a walk over the package.
    constexpr qsizetype kMostDirectories = 100;
    if (usual.directories().size() > kMostDirectories) {
        outcome = {false, true};
        Command::wrongUse(u"%1: Translations are to lie in %2 directories, more than %3."_s.arg(
            package.path, QString::number(usual.directories().size()),
            QString::number(kMostDirectories)));
        return;
    }
    for (const QString& directory : usual.directories()) {
        if (directory == AuthorStrings::directoryFor(QString())) {
            updateFiles(usual, parser, locales, outcome);
        } else if (directory.startsWith(u'/') || directory.section(u'/', 0, 0) == ".."_L1) {
            outcome = {false, true};
            const QString line = u"%1: \"%2\", where translations are to lie, is no directory in "
                                 "the package. No files are written there."_s;
            Command::wrongUse(line.arg(package.path, directory));
        } else {
            AuthorStringsFiles files(package, directory);
            updateFiles(files, parser, locales, outcome);
        }
    }
}

Command::ExitCode update(const QCommandLineParser& parser, const AuthorPackages& packages,
                         const QStringList& locales)
{
    Outcome outcome;
    for (const AuthorPackage& package : packages.packages())
        updatePackage(package, parser, locales, outcome);
    if (!outcome.isAnything)
        return Command::wrongUse(u"There are no translations yet; --locale LOCALE begins one."_s);
    return outcome.isDone ? Command::Fine : Command::Found;
}

} // namespace

Command::ExitCode runStrings(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Collects the texts of a package, or of all packages of a data path, into the files of "
        "translations l10n/Vidlets_LOCALE.ts for Qt Linguist. Translations are kept, and texts "
        "that are gone are marked."_s);
    parser.addPositionalArgument(u"PATH"_s, u"A package or a data path."_s, u"PATH"_s);
    parser.addOptions({
        {u"locale"_s, u"Writes the file for this locale, instead of those that exist."_s,
         u"LOCALE"_s},
        {u"release"_s, u"Writes the compiled files too, which the library loads."_s},
        {u"pseudo"_s,
         u"Writes and compiles a file for the locale %1, in which each text is longer and has "
         "accents: what stays as it is on the screen is not translated."_s.arg(
             AuthorStrings::pseudoLocale())},
    });
    Command::ExitCode code = Command::Fine;
    if (!Command::parse(parser, u"strings"_s, arguments, code))
        return code;
    const QStringList paths = parser.positionalArguments();
    if (paths.size() != 1)
        return Command::wrongUse(u"Of which package? vidlets strings PATH"_s);
    QStringList locales;
    QString reason;
    if (!Command::readLocales(parser.values(u"locale"_s), locales, reason))
        return Command::wrongUse(reason);
    AuthorFindings findings;
    AuthorPackages packages(findings);
    if (!packages.add(paths.constFirst(), reason))
        return Command::wrongUse(reason);
    if (packages.packages().isEmpty())
        return Command::wrongUse(AuthorPackages::noneIn(paths.constFirst()));
    return update(parser, packages, locales);
}
