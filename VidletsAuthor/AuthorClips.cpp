// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorClips.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr int kMaxSidePx = 4096;
constexpr double kMaxRate = 60.0;
constexpr double kMebibyte = 1024.0 * 1024.0;

QString mebibytes(qint64 bytes)
{
    return QString::number(static_cast<double>(bytes) / kMebibyte, 'f', 1);
}

} // namespace

AuthorClips::AuthorClips(AuthorFindings& findings)
    : m_findings(findings)
{
}

bool AuthorClips::isClip(const QString& path)
{
    static const QSet<QString> suffixes{u"mp4"_s, u"m4v"_s, u"mov"_s, u"webm"_s,
                                        u"mkv"_s, u"avi"_s, u"ogv"_s};
    return suffixes.contains(path.section(u'.', -1).toLower());
}

void AuthorClips::check(const QString& path, qint64 memoryLimitBytes)
{
    const AuthorClip clip = AuthorClipReader::read(path);
    if (!clip.fault.isEmpty()) {
        add(path, u"clip-unreadable", u"The clip does not play: %1."_s.arg(clip.fault));
        return;
    }
    checkStream(path, clip);
    checkPictures(path, clip);
    checkRate(path, clip);
    checkMemory(path, clip, memoryLimitBytes);
}

void AuthorClips::checkStream(const QString& path, const AuthorClip& clip)
{
    if (!clip.isUsualCodec)
        add(path, u"clip-codec", u"The codec %1 is not known to every host."_s.arg(clip.codec));
    if (clip.hasSound)
        add(path, u"clip-audio", u"There is sound in the clip, which is never played."_s);
    if (clip.size.width() % 2 != 0 || clip.size.height() % 2 != 0)
        add(path, u"clip-odd-size",
            u"The clip has %1 x %2 pixels."_s.arg(clip.size.width()).arg(clip.size.height()));
    if (qMax(clip.size.width(), clip.size.height()) > kMaxSidePx)
        add(path, u"resource-huge",
            u"The clip has %1 x %2 pixels, more than %3 a side."_s.arg(clip.size.width())
                .arg(clip.size.height())
                .arg(kMaxSidePx));
}

void AuthorClips::checkPictures(const QString& path, const AuthorClip& clip)
{
    if (clip.lost > 0)
        add(path, u"clip-bframes",
            u"%1 of %2 pictures are lost: the decoder still holds them when the file ends."_s
                .arg(clip.lost)
                .arg(clip.pictures + clip.lost));
    if (clip.damaged > 0)
        add(path, u"clip-unreadable",
            u"The clip is damaged: %1 of its pictures cannot be decoded."_s.arg(clip.damaged));
}

void AuthorClips::checkRate(const QString& path, const AuthorClip& clip)
{
    if (clip.rate <= 0.0)
        add(path, u"clip-rate", u"The file does not tell how fast its pictures follow."_s);
    else if (!clip.isSteady)
        add(path, u"clip-rate",
            u"The rate changes: the clip is played at %1 pictures a second throughout."_s.arg(
                QString::number(clip.rate, 'g', 4)));
    else if (clip.rate > kMaxRate)
        add(path, u"clip-rate",
            u"The clip has %1 pictures a second, more than %2."_s.arg(
                QString::number(clip.rate, 'g', 4), QString::number(kMaxRate)));
}

void AuthorClips::checkMemory(const QString& path, const AuthorClip& clip, qint64 limitBytes)
{
    if (clip.memoryBytes() > limitBytes)
        add(path, u"clip-memory",
            u"%1 pictures of %2 x %3 pixels take %4 MiB in memory, more than %5."_s
                .arg(clip.pictures)
                .arg(clip.size.width())
                .arg(clip.size.height())
                .arg(mebibytes(clip.memoryBytes()), mebibytes(limitBytes)));
}

void AuthorClips::add(const QString& path, const char16_t* rule, const QString& message)
{
    m_findings.add(path, {}, QString::fromUtf16(rule), message);
}

} // namespace Vidlets
