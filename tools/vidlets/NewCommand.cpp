// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Command.h"

#include <QCommandLineParser>

#include <VidletsAuthor/AuthorTemplate.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

Command::ExitCode runNew(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Makes the package DIR, whose name ends in \".vidlets\": texts, scenes, a player, a "
        "translation, a picture and a clip."_s);
    parser.addPositionalArgument(
        u"DIR"_s, u"The package; a directory that is there has to be empty."_s, u"DIR"_s);
    Command::ExitCode code = Command::Fine;
    if (!Command::parse(parser, u"new"_s, arguments, code))
        return code;
    const QStringList directories = parser.positionalArguments();
    if (directories.size() != 1)
        return Command::wrongUse(u"\"vidlets new\" makes one package: vidlets new DIR."_s);
    const QString source = AuthorTemplate::find();
    if (source.isNull())
        return Command::wrongUse(u"The template is not installed beside the program."_s);
    QString reason;
    if (!AuthorTemplate::create(source, directories.constFirst(), reason))
        return Command::wrongUse(reason);
    return Command::Fine;
}
