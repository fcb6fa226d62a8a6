// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef CHILDPROCESS_H
#define CHILDPROCESS_H

#include <QByteArray>
#include <QString>

/// How a process ended, and what it wrote.
struct ChildResult
{
    bool finished = false; ///< False where it had to be killed after the time limit.
    bool crashed = false;
    int exitCode = 0;
    QByteArray standardOutput;
    QByteArray standardError;
};

/// Runs the scenario @p name of this test program in a process of its own; see
/// VidletsTest::runChild().
ChildResult runInChildProcess(const QString& name, int timeoutMs = 60000);

#endif
