// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Command.h"

#include <QCommandLineParser>
#include <QHash>

#include <VidletsAuthor/AuthorCheck.h>
#include <VidletsAuthor/AuthorReport.h>
#include <VidletsAuthor/AuthorRules.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

using Format = QByteArray (*)(const QList<AuthorFinding>& findings);

const QHash<QString, Format>& formats()
{
    static const QHash<QString, Format> all{{u"text"_s, AuthorReport::text},
                                            {u"json"_s, AuthorReport::json},
                                            {u"sarif"_s, AuthorReport::sarif},
                                            {u"junit"_s, AuthorReport::junit}};
    return all;
}

Command::ExitCode explain(const QString& rule)
{
    const QString page = AuthorRules::page(rule);
    if (page.isNull())
        return Command::wrongUse(u"There is no rule \"%1\"."_s.arg(rule));
    // The page begins with its licence, which is of no interest here.
    const qsizetype title = page.indexOf("\n# "_L1);
    Command::print(page.mid(title + 1).toUtf8());
    return Command::Fine;
}

void tellOfWait(qsizetype scenes)
{
    if (Command::isWatched())
        Command::printError("Waiting for qmllint, which looks at "
                            + counted(scenes, u"scene"_s).toUtf8() + "...\n");
}

Command::ExitCode check(const QCommandLineParser& parser, Format report)
{
    AuthorCheck check;
    QString reason;
    const QStringList assignments = parser.values(u"set"_s);
    for (const QString& assignment : assignments) {
        if (!check.set(assignment, reason))
            return Command::wrongUse(reason);
    }
    const QStringList paths = parser.positionalArguments();
    if (paths.isEmpty())
        return Command::wrongUse(u"What is to be checked? vidlets check PATH..."_s);
    for (const QString& path : paths) {
        if (!check.add(path, reason))
            return Command::wrongUse(reason);
    }
    QStringList locales;
    if (!Command::readLocales(parser.values(u"locale"_s), locales, reason))
        return Command::wrongUse(reason);
    check.setLocales(locales);
    check.setOnWait(tellOfWait);
    const QList<AuthorFinding> findings = check.run();
    Command::print(report(findings));
    return AuthorReport::isFailed(findings) ? Command::Found : Command::Fine;
}

} // namespace

Command::ExitCode runCheck(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Looks for faults in packages, in all packages of data paths, and in key data files.\n"
        "Ends with 0 where there is neither error nor warning, with 1 where there is one, and with "
        "2 "
        "where it cannot be told what to check."_s);
    parser.addPositionalArgument(u"PATH"_s, u"A package, a data path or a key data file."_s,
                                 u"PATH..."_s);
    parser.addOptions({
        {u"format"_s, u"How to report: text, json, sarif or junit."_s, u"FORMAT"_s, u"text"_s},
        {u"set"_s, u"Has RULE weigh as \"error\", \"warning\", \"note\" or \"off\"."_s,
         u"RULE=SEVERITY"_s},
        {u"explain"_s, u"Tells of a rule, and checks nothing."_s, u"RULE"_s},
        {u"locale"_s, u"Wants tips for this locale too."_s, u"LOCALE"_s},
    });
    Command::ExitCode code = Command::Fine;
    if (!Command::parse(parser, u"check"_s, arguments, code))
        return code;
    if (parser.isSet(u"explain"_s))
        return explain(parser.value(u"explain"_s));
    const Format report = formats().value(parser.value(u"format"_s));
    if (!report)
        return Command::wrongUse(
            u"\"%1\" is not text, json, sarif or junit."_s.arg(parser.value(u"format"_s)));
    return check(parser, report);
}
