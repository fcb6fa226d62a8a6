// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ProcessFigures.h"

#include <QByteArrayList>
#include <QFile>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace ProcessFigures {

namespace {

constexpr double kMicrosecondsPerSecond = 1e6;

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec)
        + static_cast<double>(time.tv_usec) / kMicrosecondsPerSecond;
}

double usedSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

} // namespace

double residentBytes()
{
    malloc_trim(0);
    QFile file(u"/proc/self/statm"_s);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("There is no /proc/self/statm");
    const double pages = file.readAll().split(' ').value(1).toDouble();
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE));
}

double processorSeconds()
{
    return usedSeconds(RUSAGE_SELF);
}

double childProcessorSeconds()
{
    return usedSeconds(RUSAGE_CHILDREN);
}

} // namespace ProcessFigures
