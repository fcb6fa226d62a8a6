// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef COMMAND_H
#define COMMAND_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

class QCoreApplication;
class QCommandLineParser;

/// What the subcommands of the program have in common.
namespace Command {

/// The exit codes; notes alone are no fault.
enum ExitCode {
    Fine = 0,
    Found = 1,
    WrongUse = 2
};

void print(const QByteArray& text);
/// Writes @p text on standard error, as it is.
void printError(const QByteArray& text);
/// Returns whether somebody looks on as standard error is written.
bool isWatched();
/// Says on standard error why the command is not carried out.
ExitCode wrongUse(const QString& reason);

/**
 * Reads the arguments of the subcommand @p name, which come without it.
 *
 * @return Whether the subcommand has to go on; else @p code is what the program ends with.
 */
bool parse(QCommandLineParser& parser, const QString& name, const QStringList& arguments,
           ExitCode& code);

/// Reads the values of "--locale", each of which becomes a name as the library has it in files.
/// False, with the @p reason, where one is no locale.
bool readLocales(const QStringList& values, QStringList& locales, QString& reason);

/// A handler of Qt's messages that lets only those through that end the program or break it.
void writeGraveMessage(QtMsgType type, const QMessageLogContext& context, const QString& message);

} // namespace Command

/// Makes an application that draws without a display, always in the same way. @p argc has to stay.
std::unique_ptr<QCoreApplication> makeGalleryApplication(int& argc, char** argv);
/// Makes an application with windows, or a plain one where there is no display.
std::unique_ptr<QCoreApplication> makePreviewApplication(int& argc, char** argv);

/// "vidlets check".
Command::ExitCode runCheck(const QStringList& arguments);
/// "vidlets clip".
Command::ExitCode runClip(const QStringList& arguments);
/// "vidlets gallery". Wants the application of makeGalleryApplication().
Command::ExitCode runGallery(const QStringList& arguments);
/// "vidlets new".
Command::ExitCode runNew(const QStringList& arguments);
/// "vidlets preview". Wants the application of makePreviewApplication().
Command::ExitCode runPreview(const QStringList& arguments);
/// "vidlets strings".
Command::ExitCode runStrings(const QStringList& arguments);

#endif
