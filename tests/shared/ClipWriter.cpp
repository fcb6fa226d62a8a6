// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ClipWriter.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>

using namespace Qt::StringLiterals;

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
    const QStringList arguments = QStringList{u"-nostdin"_s, u"-loglevel"_s, u"error"_s, u"-y"_s}
        + ffmpegArguments + QStringList{filePath};
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(u"ffmpeg"_s, arguments);
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0 || !QFileInfo::exists(filePath))
        qFatal("ffmpeg %s: %s %s", qPrintable(arguments.join(u' ')),
               qPrintable(process.errorString()), process.readAll().constData());
    return filePath;
}

QString ClipWriter::testClip(const QString& fileName, const QString& codec, const QSize& size,
                             int fps, int frames, const QStringList& extraArguments)
{
    const QString pattern =
        u"testsrc=size=%1x%2:rate=%3"_s.arg(size.width()).arg(size.height()).arg(fps);
    return write(fileName,
                 QStringList{u"-f"_s, u"lavfi"_s, u"-i"_s, pattern, u"-frames:v"_s,
                             QString::number(frames), u"-c:v"_s, codec}
                     + extraArguments);
}

QString ClipWriter::imageClip(const QString& fileName, const QString& codec,
                              const QList<QImage>& images, int fps,
                              const QStringList& extraArguments)
{
    for (qsizetype i = 0; i < images.size(); ++i) {
        const QString filePath = path(u"%1-%2.png"_s.arg(fileName).arg(i));
        if (!images.at(i).save(filePath))
            qFatal("Could not write %s", qPrintable(filePath));
    }
    return write(fileName,
                 QStringList{u"-framerate"_s, QString::number(fps), u"-i"_s,
                             path(fileName + u"-%d.png"_s), u"-c:v"_s, codec}
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
