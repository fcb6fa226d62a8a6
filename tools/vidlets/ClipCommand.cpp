// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Command.h"

#include <QCommandLineParser>

#include <array>
#include <csignal>
#include <cstdio>

#include <VidletsAuthor/AuthorClipMaker.h>
#include <VidletsAuthor/AuthorFinding.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

constexpr double kMaxRate = 60.0;
constexpr qint64 kMemoryLimitBytes = qint64(256) * 1024 * 1024;

volatile std::sig_atomic_t stopSignal = 0;

extern "C" void noteSignal(int number)
{
    stopSignal = number;
}

/// The signals by which a user stops a program, which here has something to tidy up first.
void watchSignals()
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        // Whoever has the program go on without a terminal ignores one of them.
        if (std::signal(number, noteSignal) == SIG_IGN)
            std::signal(number, SIG_IGN);
    }
}

void writeBar(double share)
{
    constexpr int kWidth = 40;
    const QByteArray done(static_cast<int>(share * kWidth), '#');
    const QByteArray line = "\r[" + done.leftJustified(kWidth) + "] "
        + QByteArray::number(static_cast<int>(share * 100.0)).rightJustified(3) + " %";
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
    std::fflush(stderr);
}

void clearBar()
{
    std::fputs("\r\033[K", stderr);
}

bool readOrder(const QCommandLineParser& parser, AuthorClipOrder& order, QString& reason)
{
    const std::array times{std::pair{u"from"_s, &order.from}, std::pair{u"to"_s, &order.to}};
    for (const auto& [name, target] : times) {
        if (!parser.isSet(name))
            continue;
        const auto seconds = AuthorClipMaker::secondsOf(parser.value(name));
        if (!seconds) {
            reason = u"\"%1\" is no time such as 1.5 or 2:03.25."_s.arg(parser.value(name));
            return false;
        }
        *target = *seconds;
    }
    if (parser.isSet(u"size"_s)) {
        const auto size = AuthorClipMaker::sizeOf(parser.value(u"size"_s));
        if (!size) {
            reason = u"\"%1\" is no size such as 320x180."_s.arg(parser.value(u"size"_s));
            return false;
        }
        order.size = *size;
    }
    if (parser.isSet(u"fps"_s)) {
        order.fps = parser.value(u"fps"_s).toDouble();
        // Also for what is no number.
        if (!(order.fps >= 1.0 && order.fps <= kMaxRate)) {
            reason = u"\"%1\" is no rate from 1 to 60."_s.arg(parser.value(u"fps"_s));
            return false;
        }
    }
    return true;
}

QString tell(const QString& path, const AuthorClipCost& cost)
{
    constexpr double kMegabyte = 1'000'000.0;
    // All at once, since a name may have a "%2" in it.
    return u"%1: %2 of %3 x %4, %5 a second; %6 MB on disk, %7 MB in memory\n"_s.arg(
        printable(path), counted(cost.pictures, u"picture"_s), QString::number(cost.size.width()),
        QString::number(cost.size.height()), QString::number(cost.rate, 'g', 4),
        QString::number(double(cost.fileBytes) / kMegabyte, 'f', 2),
        QString::number(double(cost.memoryBytes) / kMegabyte, 'f', 1));
}

Command::ExitCode report(const AuthorClipMaker& maker, const QString& in)
{
    QString text = tell(in, maker.before()) + tell(maker.out(), maker.after());
    if (maker.after().memoryBytes > kMemoryLimitBytes)
        text +=
            u"A host with safeguards shows no more than 256 MiB of it: make it shorter by --from "
            "and --to, or smaller by --size and --fps.\n"_s;
    Command::print(text.toUtf8());
    return Command::Fine;
}

Command::ExitCode make(const AuthorClipOrder& order)
{
    watchSignals();
    const bool hasTerminal = Command::isWatched();
    AuthorClipMaker maker(order);
    const AuthorClipMaker::Outcome outcome = maker.make([hasTerminal](double share) {
        if (hasTerminal)
            writeBar(share);
        return stopSignal == 0;
    });
    if (hasTerminal)
        clearBar();
    switch (outcome) {
    case AuthorClipMaker::Outcome::Made:
        return report(maker, order.in);
    case AuthorClipMaker::Outcome::Refused:
        return Command::wrongUse(maker.reason());
    case AuthorClipMaker::Outcome::Failed:
        break;
    case AuthorClipMaker::Outcome::Stopped:
        // So that a shell knows of it.
        std::signal(stopSignal, SIG_DFL);
        std::raise(stopSignal);
        return Command::Found;
    }
    Command::wrongUse(maker.reason());
    return Command::Found;
}

} // namespace

Command::ExitCode runClip(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Makes a clip out of the recording IN, by the program ffmpeg: without sound and reordered "
        "pictures, upright, of even size, at a constant rate. Tells what it takes before and "
        "after.\n"
        "Ends with 1 where ffmpeg fails. T is a time such as 1.5 or 2:03.25; the picture at --to "
        "is the first one left out."_s);
    parser.addPositionalArgument(u"IN"_s, u"A recording that ffmpeg can read."_s, u"IN"_s);
    parser.addOptions({
        {{u"o"_s, u"output"_s},
         u"The clip, which ends in .mp4 (H.264) or .webm (VP8); a file of this name is replaced, "
         "but never IN. By default a new file beside IN."_s,
         u"OUT"_s},
        {u"size"_s, u"Brings it to this size in pixels; odd ones become even."_s, u"WxH"_s},
        {u"fps"_s, u"Gives it N pictures a second, at most 60."_s, u"N"_s},
        {u"from"_s, u"Begins with the picture at this time."_s, u"T"_s},
        {u"to"_s, u"Ends before the picture at this time."_s, u"T"_s},
    });
    Command::ExitCode code = Command::Fine;
    if (!Command::parse(parser, u"clip"_s, arguments, code))
        return code;
    const QStringList recordings = parser.positionalArguments();
    if (recordings.size() != 1)
        return Command::wrongUse(u"\"vidlets clip\" makes one clip: vidlets clip IN."_s);
    AuthorClipOrder order;
    order.in = recordings.constFirst();
    order.out = parser.value(u"output"_s);
    QString reason;
    if (!readOrder(parser, order, reason))
        return Command::wrongUse(reason);
    if (parser.isSet(u"output"_s) && order.out.isEmpty())
        return Command::wrongUse(u"The clip has no name."_s);
    return make(order);
}
