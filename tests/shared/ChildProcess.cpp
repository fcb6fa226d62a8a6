// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"

#include <QCoreApplication>
#include <QProcess>

using namespace Qt::StringLiterals;

ChildResult runInChildProcess(const QString& name, int timeoutMs)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {u"--child"_s, name});
    ChildResult result;
    result.finished = process.waitForFinished(timeoutMs);
    if (!result.finished) {
        process.kill();
        process.waitForFinished();
    }
    result.crashed = process.exitStatus() == QProcess::CrashExit;
    result.exitCode = process.exitCode();
    result.standardOutput = process.readAllStandardOutput();
    result.standardError = process.readAllStandardError();
    return result;
}
