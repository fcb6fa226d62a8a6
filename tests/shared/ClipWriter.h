// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef CLIPWRITER_H
#define CLIPWRITER_H

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/**
 * Writes media files with the command "ffmpeg", in a temporary directory that goes with the object.
 *
 * A clip that cannot be written ends the process: no test makes sense without it.
 */
class ClipWriter
{
public:
    ClipWriter();

    /// The path of @p fileName in the directory.
    QString path(const QString& fileName) const;

    /// Runs "ffmpeg" with @p ffmpegArguments and @p fileName as its output. Returns the file's
    /// path.
    QString write(const QString& fileName, const QStringList& ffmpegArguments);

    /// Writes a moving test pattern of @p frames pictures with the encoder @p codec. @p
    /// extraArguments are options of the output. Returns the file's path.
    QString testClip(const QString& fileName, const QString& codec, const QSize& size = {160, 90},
                     int fps = 25, int frames = 10, const QStringList& extraArguments = {});

    /// Writes @p images, all of one size, with the encoder @p codec. @p extraArguments are options
    /// of the output. Returns the file's path.
    QString imageClip(const QString& fileName, const QString& codec, const QList<QImage>& images,
                      int fps = 25, const QStringList& extraArguments = {});

    /// Writes @p content as it is. Returns the file's path.
    QString writeBytes(const QString& fileName, const QByteArray& content);

    /// The content of @p fileName.
    QByteArray readBytes(const QString& fileName) const;

private:
    QTemporaryDir m_directory;
};

#endif
