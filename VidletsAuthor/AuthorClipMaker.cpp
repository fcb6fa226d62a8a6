// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorClipMaker.h"

#include "AuthorClipReader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <algorithm>
#include <cmath>
#include <cstdio>

#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif
#include <csignal>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr double kMaxRate = 60.0;
constexpr double kLeastMeanRate = 10.0;
constexpr int kMaxSidePx = 4096;
constexpr qint64 kPictureBytesPerPixel = 4;
constexpr int kLookMs = 100;
/// How far before its first picture a clip is looked for, so that the place is found in spite of
/// times that a file has a little wrong.
constexpr double kLeadSeconds = 10.0;

bool isWebm(const QString& path)
{
    return path.endsWith(".webm"_L1, Qt::CaseInsensitive);
}

/// ffmpeg takes "name:" at the beginning for a kind of address.
QString fileArgument(const QString& path)
{
    return u"file:"_s + QFileInfo(path).absoluteFilePath();
}

QString number(double value)
{
    return QString::number(value, 'f', 6);
}

/// What "30000/1001" stands for; false for no rate.
bool readFraction(const QString& text, qint64& numerator, qint64& denominator)
{
    numerator = text.section(u'/', 0, 0).toLongLong();
    denominator = text.section(u'/', 1, 1).toLongLong();
    return numerator > 0 && denominator > 0;
}

/// A process that ends with this one, even where this one is killed.
void bindToThis(QProcess& process)
{
#ifdef Q_OS_LINUX
    const pid_t parent = getpid();
    process.setChildProcessModifier([parent] {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(1);
    });
#else
    Q_UNUSED(process)
#endif
}

/// Whether two names lead to one file, be it through links of either kind.
bool isSameFile(const QString& first, const QString& second)
{
    struct stat one = {};
    struct stat other = {};
    return stat(QFile::encodeName(first).constData(), &one) == 0
        && stat(QFile::encodeName(second).constData(), &other) == 0 && one.st_dev == other.st_dev
        && one.st_ino == other.st_ino;
}

/// As a program that creates a file by itself would have left it.
void giveUsualPermissions(const QString& path)
{
    const mode_t mask = umask(0);
    umask(mask);
    constexpr mode_t kReadWriteForAll = 0666;
    chmod(QFile::encodeName(path).constData(), kReadWriteForAll & ~mask);
}

QStringList encoder(const QString& path)
{
    if (isWebm(path))
        return {u"-c:v"_s,           u"libvpx"_s, u"-crf"_s,          u"10"_s, u"-b:v"_s, u"2M"_s,
                u"-lag-in-frames"_s, u"0"_s,      u"-auto-alt-ref"_s, u"0"_s};
    return {u"-c:v"_s, u"libx264"_s, u"-crf"_s,      u"20"_s,
            u"-bf"_s,  u"0"_s,       u"-movflags"_s, u"+faststart"_s};
}

} // namespace

AuthorClipMaker::AuthorClipMaker(const AuthorClipOrder& order, const QStringList& programs)
    : m_order(order)
    , m_programs(programs)
    , m_out(order.out)
{
}

std::optional<double> AuthorClipMaker::secondsOf(const QString& text)
{
    static const QRegularExpression pattern(
        u"^(?:(?:(\\d{1,4}):)?(\\d{1,5}):)?(\\d{1,7}(?:\\.\\d{0,9})?)$"_s);
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    constexpr double kSecondsPerMinute = 60.0;
    constexpr double kSecondsPerHour = 3600.0;
    return match.captured(1).toDouble() * kSecondsPerHour
        + match.captured(2).toDouble() * kSecondsPerMinute + match.captured(3).toDouble();
}

std::optional<QSize> AuthorClipMaker::sizeOf(const QString& text)
{
    static const QRegularExpression pattern(u"^(\\d{1,5})x(\\d{1,5})$"_s);
    const QRegularExpressionMatch match = pattern.match(text);
    const QSize size(match.captured(1).toInt() / 2 * 2, match.captured(2).toInt() / 2 * 2);
    if (!match.hasMatch() || size.isEmpty() || qMax(size.width(), size.height()) > kMaxSidePx)
        return std::nullopt;
    return size;
}

AuthorClipMaker::Outcome AuthorClipMaker::make(const Progress& progress)
{
    if (!findPrograms() || !checkPlaces())
        return Outcome::Refused;
    const Outcome probed = probe(progress);
    if (probed != Outcome::Made)
        return probed;
    // In the directory of the clip, so that it can be renamed, and with its suffix, by which the
    // container is chosen.
    const QString beside = m_out.isEmpty() ? m_order.in : m_out;
    QTemporaryFile temporary(QFileInfo(beside).absoluteDir().filePath(
        isWebm(m_out) ? u".vidlets-XXXXXX.webm"_s : u".vidlets-XXXXXX.mp4"_s));
    if (!temporary.open())
        return refuse(u"Nothing can be written to the directory of \"%1\"."_s.arg(beside));
    const Outcome encoded = encode(temporary.fileName(), progress);
    return encoded == Outcome::Made ? deliver(temporary.fileName()) : encoded;
}

bool AuthorClipMaker::findPrograms()
{
    m_ffmpeg = QStandardPaths::findExecutable(u"ffmpeg"_s, m_programs);
    m_ffprobe = QStandardPaths::findExecutable(u"ffprobe"_s, m_programs);
    if (!m_ffmpeg.isEmpty() && !m_ffprobe.isEmpty())
        return true;
    refuse(u"Clips are made by the program ffmpeg, which is not installed: on Debian, \"apt "
           "install ffmpeg\" as root."_s);
    return false;
}

bool AuthorClipMaker::checkPlaces()
{
    const QFileInfo in(m_order.in);
    const bool hasSuffix =
        m_out.isEmpty() || isWebm(m_out) || m_out.endsWith(".mp4"_L1, Qt::CaseInsensitive);
    if (!in.exists())
        refuse(u"There is no \"%1\"."_s.arg(m_order.in));
    else if (!in.isFile() || !in.isReadable())
        refuse(u"\"%1\" is no file that can be read."_s.arg(m_order.in));
    else if (!hasSuffix)
        refuse(u"The name of a clip ends in \".mp4\" or \".webm\", not as in \"%1\"."_s.arg(m_out));
    else if (!m_out.isEmpty() && !QFileInfo(m_out).absoluteDir().exists())
        refuse(u"There is no directory for \"%1\"."_s.arg(m_out));
    else if (QFileInfo(m_out).isDir())
        refuse(u"\"%1\" is a directory."_s.arg(m_out));
    else if (isSameFile(m_order.in, m_out))
        // A clip has less in it than its recording, of which there may be no other.
        refuse(u"\"%1\" is the recording itself, which the clip would replace."_s.arg(m_out));
    else if (m_order.to >= 0.0 && m_order.to <= qMax(m_order.from, 0.0))
        refuse(u"The clip would end before it begins."_s);
    return m_reason.isEmpty();
}

AuthorClipMaker::Outcome AuthorClipMaker::probe(const Progress& progress)
{
    QByteArray description;
    double share = 0.0;
    const QStringList arguments{
        u"-v"_s,
        u"error"_s,
        u"-protocol_whitelist"_s,
        u"file"_s,
        u"-select_streams"_s,
        u"V:0"_s,
        u"-count_packets"_s,
        u"-show_entries"_s,
        u"stream=width,height,r_frame_rate,avg_frame_rate,nb_read_packets:format=duration"_s,
        u"-of"_s,
        u"json"_s,
        fileArgument(m_order.in)};
    const RunResult result = run(
        m_ffprobe, arguments, [&description](const QByteArray& output) { description += output; },
        progress, share);
    if (result == RunResult::Stopped)
        return Outcome::Stopped;
    if (result == RunResult::Done && takeOver(description))
        return Outcome::Made;
    return fail(u"There are no moving pictures in \"%1\" that ffmpeg can read."_s.arg(m_order.in));
}

bool AuthorClipMaker::takeOver(const QByteArray& description)
{
    const QJsonObject root = QJsonDocument::fromJson(description).object();
    const QJsonObject stream = root.value("streams"_L1).toArray().at(0).toObject();
    m_before.size = QSize(stream.value("width"_L1).toInt(), stream.value("height"_L1).toInt());
    m_before.pictures = stream.value("nb_read_packets"_L1).toString().toLongLong();
    m_before.fileBytes = QFileInfo(m_order.in).size();
    m_before.memoryBytes =
        m_before.pictures * m_before.size.width() * m_before.size.height() * kPictureBytesPerPixel;
    m_duration = root.value("format"_L1).toObject().value("duration"_L1).toString().toDouble();
    if (m_before.size.isEmpty() || m_before.pictures == 0
        || !readFraction(stream.value("r_frame_rate"_L1).toString(), m_rateNumerator,
                         m_rateDenominator))
        return false;
    m_before.rate = double(m_rateNumerator) / double(m_rateDenominator);
    m_meanRate = m_before.rate;
    qint64 numerator = 0;
    qint64 denominator = 0;
    if (readFraction(stream.value("avg_frame_rate"_L1).toString(), numerator, denominator))
        m_meanRate = double(numerator) / double(denominator);
    constexpr double kSlack = 1.5;
    constexpr double kTolerance = 0.01;
    const auto pictures = double(m_before.pictures);
    const auto isBelied = [&](double rate) {
        return m_duration > 0.0
            && std::abs(m_duration * rate - pictures) > qMax(kSlack, kTolerance * pictures);
    };
    // Where pictures are few or slow, FFmpeg 7 counts the two fields of each.
    if (numerator > 0 && m_rateNumerator * denominator == 2 * numerator * m_rateDenominator
        && !isBelied(m_meanRate)) {
        m_rateNumerator = numerator;
        m_rateDenominator = denominator;
        m_before.rate = m_meanRate;
    }
    // Not every container tells of a mean that is worth anything.
    if (isBelied(m_before.rate))
        m_meanRate = pictures / m_duration;
    m_isSteady = std::abs(m_meanRate / m_before.rate - 1.0) < kTolerance;
    return true;
}

/// The rate of the clip: that of the recording, or the next one below that a clip may have.
QString AuthorClipMaker::rate() const
{
    if (m_order.fps > 0.0)
        return number(m_order.fps);
    if (m_before.rate <= kMaxRate || m_isSteady) {
        const auto divisor = static_cast<qint64>(std::ceil(m_before.rate / kMaxRate));
        return u"%1/%2"_s.arg(m_rateNumerator).arg(m_rateDenominator * divisor);
    }
    return QString::number(std::lround(std::clamp(m_meanRate, kLeastMeanRate, kMaxRate)));
}

QString AuthorClipMaker::filters() const
{
    QString cut;
    if (m_order.from >= 0.0 || m_order.to >= 0.0) {
        cut = u"trim=start=%1"_s.arg(number(qMax(m_order.from, 0.0)));
        if (m_order.to >= 0.0)
            cut += u":end=%1"_s.arg(number(m_order.to));
        cut += u',';
    }
    const QString pace = u"fps="_s + rate();
    // Where pictures stand for different times, the first one of the clip may begin before it. The
    // pace comes last as well: it says how long each picture lasts, which setpts takes away from
    // FFmpeg 7 on. An MP4 file ends before a last picture that lasts no time.
    QString chain = (m_isSteady ? QString() : pace + u',') + cut + u"setpts=PTS-STARTPTS,"_s + pace;
    if (!m_order.size.isEmpty())
        chain += u",scale=%1:%2"_s.arg(m_order.size.width()).arg(m_order.size.height());
    else
        // Pixels become square, and the edge of an odd size is cut off rather than all resampled.
        chain += u",scale='if(gt(sar,0),iw*sar,iw)':ih,crop='trunc(iw/2)*2':'trunc(ih/2)*2'"_s;
    return chain + u",setsar=1"_s;
}

QStringList AuthorClipMaker::arguments(const QString& temporary) const
{
    QStringList arguments{u"-nostdin"_s,  u"-v"_s,     u"error"_s, u"-nostats"_s,
                          u"-progress"_s, u"pipe:1"_s, u"-y"_s,    u"-protocol_whitelist"_s,
                          u"file,pipe"_s};
    // The times stay those of the recording, whose pictures are counted by them.
    arguments += QStringList{u"-copyts"_s, u"-start_at_zero"_s};
    if (m_order.from > kLeadSeconds)
        arguments +=
            QStringList{u"-noaccurate_seek"_s, u"-ss"_s, number(m_order.from - kLeadSeconds)};
    arguments += QStringList{u"-i"_s,          fileArgument(m_order.in),
                             u"-map"_s,        u"0:V:0"_s,
                             u"-an"_s,         u"-sn"_s,
                             u"-dn"_s,         u"-map_metadata"_s,
                             u"-1"_s,          u"-map_chapters"_s,
                             u"-1"_s,          u"-vf"_s,
                             filters(),        u"-fps_mode"_s,
                             u"passthrough"_s, u"-pix_fmt"_s,
                             u"yuv420p"_s};
    return arguments + encoder(m_out) + QStringList{fileArgument(temporary)};
}

AuthorClipMaker::Outcome AuthorClipMaker::encode(const QString& temporary, const Progress& progress)
{
    const double begin = qMax(m_order.from, 0.0);
    const double end = m_order.to >= 0.0 && (m_duration <= 0.0 || m_order.to < m_duration)
        ? m_order.to
        : m_duration;
    double share = 0.0;
    const auto reader = [&share, begin, end](const QByteArray& output) {
        static const QRegularExpression time(u"out_time_us=(\\d+)"_s);
        constexpr double kMicrosecondsPerSecond = 1'000'000.0;
        QRegularExpressionMatchIterator it = time.globalMatch(QString::fromLatin1(output));
        while (it.hasNext() && end > begin) {
            const double done = it.next().captured(1).toDouble() / kMicrosecondsPerSecond;
            share = qBound(0.0, done / (end - begin), 1.0);
        }
    };
    switch (run(m_ffmpeg, arguments(temporary), reader, progress, share)) {
    case RunResult::Done:
        return Outcome::Made;
    case RunResult::Stopped:
        return Outcome::Stopped;
    case RunResult::Failed:
        break;
    }
    const QString line = QString::fromLocal8Bit(m_errors.trimmed()).section(u'\n', -1);
    return fail(line.isEmpty() ? u"ffmpeg has failed."_s : u"ffmpeg has failed: %1"_s.arg(line));
}

AuthorClipMaker::RunResult AuthorClipMaker::run(const QString& program,
                                                const QStringList& arguments, const Reader& reader,
                                                const Progress& progress, double& share)
{
    QProcess process;
    bindToThis(process);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments, QIODevice::ReadOnly);
    m_errors.clear();
    const auto takeOutput = [this, &process, &reader] {
        constexpr qsizetype kMaxErrors = 4096;
        reader(process.readAllStandardOutput());
        m_errors = (m_errors + process.readAllStandardError()).right(kMaxErrors);
    };
    while (process.state() != QProcess::NotRunning && !process.waitForFinished(kLookMs)) {
        takeOutput();
        if (!progress(share)) {
            process.kill();
            process.waitForFinished();
            return RunResult::Stopped;
        }
    }
    takeOutput();
    if (!progress(share))
        return RunResult::Stopped;
    const bool isDone = process.error() != QProcess::FailedToStart
        && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return isDone ? RunResult::Done : RunResult::Failed;
}

/// Gives the clip its name, if it is one that the library plays to the end.
AuthorClipMaker::Outcome AuthorClipMaker::deliver(const QString& temporary)
{
    const AuthorClip clip = AuthorClipReader::read(temporary);
    if (!clip.fault.isEmpty())
        return fail(m_order.from >= 0.0 || m_order.to >= 0.0
                        ? u"There is no picture between the times that were given."_s
                        : u"ffmpeg has made no clip: %1."_s.arg(clip.fault));
    if (clip.lost > 0 || clip.damaged > 0)
        return fail(u"ffmpeg has made a clip whose last pictures would be lost."_s);
    m_after.size = clip.size;
    m_after.rate = clip.rate;
    m_after.pictures = clip.pictures;
    m_after.memoryBytes = clip.memoryBytes();
    m_after.fileBytes = QFileInfo(temporary).size();
    giveUsualPermissions(temporary);
    return rename(temporary) ? Outcome::Made : refuse(u"\"%1\" cannot be written."_s.arg(m_out));
}

bool AuthorClipMaker::rename(const QString& temporary)
{
    if (!m_out.isEmpty())
        return std::rename(QFile::encodeName(temporary).constData(),
                           QFile::encodeName(m_out).constData())
            == 0;
    const QStringList names = newNames();
    for (const QString& name : names) {
        // Nothing that is there is replaced.
        if (!QFileInfo(name).isSymLink() && QFile::rename(temporary, name)) {
            m_out = name;
            return true;
        }
    }
    m_out = names.constFirst();
    return false;
}

/// The names that a file beside the recording may have, the best one first.
QStringList AuthorClipMaker::newNames() const
{
    constexpr int kMaxNames = 100;
    const QFileInfo in(m_order.in);
    const QString stem = in.path() + u'/' + in.completeBaseName();
    QStringList names{stem + u".mp4"_s};
    for (int i = 2; i < kMaxNames; ++i)
        names.append(u"%1-%2.mp4"_s.arg(stem).arg(i));
    return names;
}

AuthorClipMaker::Outcome AuthorClipMaker::refuse(const QString& reason)
{
    m_reason = reason;
    return Outcome::Refused;
}

AuthorClipMaker::Outcome AuthorClipMaker::fail(const QString& reason)
{
    m_reason = reason;
    return Outcome::Failed;
}

} // namespace Vidlets
