// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipThreads.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>

using namespace Qt::StringLiterals;

int sleepsOfClipThreads()
{
    int sleeps = 0;
    const QDir tasks(u"/proc/self/task"_s);
    const QStringList ids = tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& id : ids) {
        QFile file(tasks.filePath(id + u"/status"_s));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray status = file.readAll();
        if (!status.contains("FFMPEG\n") && !status.contains("Controller\n"))
            continue;
        const QByteArray tag = "\nvoluntary_ctxt_switches:";
        const qsizetype start = status.indexOf(tag) + tag.size();
        sleeps += status.mid(start, status.indexOf('\n', start) - start).trimmed().toInt();
    }
    return sleeps;
}
