// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ProcessState.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStringList>

#include <malloc.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

long long residentBytes()
{
    malloc_trim(0);
    QFile file(u"/proc/self/statm"_s);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("There is no /proc/self/statm");
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

long long entries(const QString& directory)
{
    return QDir(directory)
        .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot)
        .size();
}

long long windowsOnDisplay()
{
    QProcess process;
    process.start(u"xwininfo"_s, {u"-root"_s, u"-tree"_s});
    if (!process.waitForFinished() || process.exitCode() != 0)
        qFatal("xwininfo: %s", qPrintable(process.errorString()));
    return process.readAll().count("\n     ");
}

} // namespace

void ProcessState::take()
{
    // First, since the questions below allocate.
    AllocationCounter::take(memory);
    resident = residentBytes();
    const struct mallinfo2 info = mallinfo2();
    allocatorUse = static_cast<long long>(info.uordblks) + static_cast<long long>(info.hblkhd);
    threads = entries(u"/proc/self/task"_s);
    descriptors = entries(u"/proc/self/fd"_s);
    windows = windowsOnDisplay();
}
