// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORCLIPMAKER_H
#define AUTHORCLIPMAKER_H

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace Vidlets {

/// What an author wants of a clip.
struct AuthorClipOrder
{
    QString in;
    /// Empty for a new file beside the recording.
    QString out;
    /// In pixels, both even; empty for that of the recording.
    QSize size;
    /// In pictures a second; 0 for that of the recording.
    double fps = 0.0;
    /// In seconds; below 0 for begin and end of the recording.
    double from = -1.0;
    double to = -1.0;
};

/// What a recording or a clip takes.
struct AuthorClipCost
{
    QSize size;
    double rate = 0.0;
    qint64 pictures = 0;
    qint64 fileBytes = 0;
    qint64 memoryBytes = 0;
};

/**
 * Makes a clip that the library plays to its last picture out of a recording, by the program
 * ffmpeg.
 *
 * The clip appears under its name when it is whole. The programs that are started end with this
 * process, whatever ends it.
 */
class AuthorClipMaker
{
public:
    /// Is told how much is done, from 0 to 1; gives false to have the work given up.
    using Progress = std::function<bool(double share)>;

    enum class Outcome {
        Made,
        /// What was ordered makes no sense, or a program is missing.
        Refused,
        Failed,
        Stopped
    };

    /// @p programs are the directories in which ffmpeg is looked for; none for those of the path.
    explicit AuthorClipMaker(const AuthorClipOrder& order, const QStringList& programs = {});

    /// Makes the clip; the reason() tells why not.
    Outcome make(const Progress& progress);

    const QString& reason() const
    {
        return m_reason;
    }
    /// Returns the clip that was made.
    const QString& out() const
    {
        return m_out;
    }
    const AuthorClipCost& before() const
    {
        return m_before;
    }
    const AuthorClipCost& after() const
    {
        return m_after;
    }

    /// Returns the seconds that "1.5", "2:03" or "1:02:03.25" stands for; nothing for any other
    /// text.
    static std::optional<double> secondsOf(const QString& text);
    /// Returns the even size that "WxH" stands for; nothing for any other text.
    static std::optional<QSize> sizeOf(const QString& text);

private:
    enum class RunResult {
        Done,
        Failed,
        Stopped
    };
    using Reader = std::function<void(const QByteArray& output)>;

    bool findPrograms();
    bool checkPlaces();
    Outcome probe(const Progress& progress);
    bool takeOver(const QByteArray& description);
    Outcome encode(const QString& temporary, const Progress& progress);
    Outcome deliver(const QString& temporary);
    bool rename(const QString& temporary);
    RunResult run(const QString& program, const QStringList& arguments, const Reader& reader,
                  const Progress& progress, double& share);
    QStringList arguments(const QString& temporary) const;
    QString filters() const;
    QString rate() const;
    QStringList newNames() const;
    Outcome refuse(const QString& reason);
    Outcome fail(const QString& reason);

    const AuthorClipOrder m_order;
    const QStringList m_programs;
    QString m_ffmpeg;
    QString m_ffprobe;
    QString m_out;
    QString m_reason;
    /// The last lines that a program has written.
    QByteArray m_errors;
    AuthorClipCost m_before;
    AuthorClipCost m_after;
    /// Of the recording: how long it is in seconds, its rate as a fraction, and whether it keeps
    /// to it.
    double m_duration = 0.0;
    qint64 m_rateNumerator = 0;
    qint64 m_rateDenominator = 0;
    double m_meanRate = 0.0;
    bool m_isSteady = true;
};

} // namespace Vidlets

#endif
