// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipWriter.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>

ClipWriter::ClipWriter()
{
    if (!m_directory.isValid())
        qFatal("There is no temporary directory: %s", qPrintable(m_directory.errorString()));
}

QString ClipWriter::path(const QString& fileName) const
{
    return m_directory.filePath(fileName);
}

QString ClipWriter::write(const QString& fileName, const QStringList& ffmpegArguments)
{
    const QString filePath = path(fileName);
    const QStringList arguments =
        QStringList{QStringLiteral("-nostdin"), QStringLiteral("-loglevel"),
                    QStringLiteral("error"), QStringLiteral("-y")}
        + ffmpegArguments + QStringList{filePath};
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("ffmpeg"), arguments);
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0 || !QFileInfo::exists(filePath))
        qFatal("ffmpeg %s: %s %s", qPrintable(arguments.join(QLatin1Char(' '))),
               qPrintable(process.errorString()), process.readAll().constData());
    return filePath;
}

QString ClipWriter::testClip(const QString& fileName, const QString& codec, const QSize& size,
                             int fps, int frames, const QStringList& extraArguments)
{
    const QString pattern =
        QStringLiteral("testsrc=size=%1x%2:rate=%3").arg(size.width()).arg(size.height()).arg(fps);
    return write(fileName,
                 QStringList{QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                             pattern, QStringLiteral("-frames:v"), QString::number(frames),
                             QStringLiteral("-c:v"), codec}
                     + extraArguments);
}

QString ClipWriter::imageClip(const QString& fileName, const QString& codec,
                              const QList<QImage>& images, int fps,
                              const QStringList& extraArguments)
{
    for (qsizetype i = 0; i < images.size(); ++i) {
        const QString filePath = path(QStringLiteral("%1-%2.png").arg(fileName).arg(i));
        if (!images.at(i).save(filePath))
            qFatal("Could not write %s", qPrintable(filePath));
    }
    return write(fileName,
                 QStringList{QStringLiteral("-framerate"), QString::number(fps),
                             QStringLiteral("-i"), path(fileName + QStringLiteral("-%d.png")),
                             QStringLiteral("-c:v"), codec}
                     + extraArguments);
}

QString ClipWriter::writeBytes(const QString& fileName, const QByteArray& content)
{
    const QString filePath = path(fileName);
    QFile file(filePath);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("Could not write %s", qPrintable(filePath));
    return filePath;
}

QByteArray ClipWriter::readBytes(const QString& fileName) const
{
    QFile file(path(fileName));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Could not read %s", qPrintable(file.fileName()));
    return file.readAll();
}
