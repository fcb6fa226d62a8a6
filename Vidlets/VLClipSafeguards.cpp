// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLClipSafeguards.h"

#include "VLContext.h"
#include "VLManager.h"
#include "VLSettings.h"

#include <QDateTime>
#include <QFileInfo>
#include <QHash>
#include <QObject>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

struct FileState
{
    friend bool operator==(const FileState& left, const FileState& right)
    {
        return left.size == right.size && left.changed == right.changed;
    }

    qint64 size = 0;
    QDateTime changed;
};

/// The warnings that a manager has said, each with the state of the file it was about.
class SaidWarnings : public QObject // clazy:exclude=missing-qobject-macro
{
public:
    explicit SaidWarnings(VLManager* manager)
        : QObject(manager)
    {
        setObjectName(nameOfAll());
    }
    static SaidWarnings* of(VLManager* manager)
    {
        auto* known = manager->findChild<QObject*>(nameOfAll(), Qt::FindDirectChildrenOnly);
        return known ? static_cast<SaidWarnings*>(known) : new SaidWarnings(manager);
    }
    /// Returns whether it was said of that state before.
    bool record(const QString& text, const FileState& state)
    {
        const auto said = m_states.constFind(text);
        if (said != m_states.constEnd() && said.value() == state)
            return true;
        m_states.insert(text, state);
        return false;
    }

private:
    static QString nameOfAll()
    {
        return u"SaidClipWarnings"_s;
    }

    QHash<QString, FileState> m_states;
};

} // namespace

VLClipSafeguards VLClipSafeguards::of(const VLManager* manager)
{
    if (!manager)
        return {};
    const VLContext& settings = manager->context();
    return {Settings::releaseClips(settings), Settings::promptClips(settings),
            Settings::guardContent(settings), Settings::confineContent(settings),
            Settings::clipMemoryLimitBytes(settings)};
}

namespace ClipSafeguards {

// Files in which all of a clip lies. Playlists, patterns of names and devices are none, nor are
// containers whose streams come up only while they are read.
const char* containers()
{
    return "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi,ogg,gif,apng,ivf,mjpeg,yuv4mpegpipe,wav,"
           "png_pipe,jpeg_pipe,webp_pipe";
}

// The sound of a clip is not played, but its properties are looked for while the clip is opened:
// without a decoder that takes until the end of the file.
const char* codecs()
{
    return "h264,hevc,vp8,libvpx,vp9,libvpx-vp9,av1,libdav1d,libaom-av1,theora,mpeg4,msmpeg4v2,"
           "msmpeg4,mpeg1video,mpeg2video,mjpeg,h263,gif,png,apng,webp,ffv1,huffyuv,ffvhuff,"
           "utvideo,qtrle,prores,dnxhd,rawvideo,wrapped_avframe,"
           "aac,mp3,mp3float,mp2,mp2float,ac3,eac3,vorbis,opus,libopus,flac,alac,"
           "pcm_u8,pcm_s16le,pcm_s16be,pcm_s24le,pcm_s32le,pcm_f32le,pcm_alaw,pcm_mulaw";
}

const char* protocols()
{
    return "file";
}

void warn(VLManager* manager, const QString& file, const QString& text)
{
    if (!manager)
        return;
    const QFileInfo info(file);
    if (!SaidWarnings::of(manager)->record(text, {info.size(), info.lastModified()}))
        manager->handleMessage(VLMessageWarning, text);
}

} // namespace ClipSafeguards

} // namespace Vidlets
