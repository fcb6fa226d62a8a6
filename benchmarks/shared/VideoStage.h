// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VIDEOSTAGE_H
#define VIDEOSTAGE_H

#include "ClipWriter.h"
#include "PackageBuilder.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>
#include <Vidlets/VLView.h>

#include <QWidget>

#include <memory>

/// A control on the screen and a popup for it whose scene holds a video item without a clip.
class VideoStage
{
public:
    /// The clips are "first.mp4" and "tiny.mp4", of kClipSizePx and kFramesPerSecond.
    explicit VideoStage(int frames, float scale = 1.0F);
    ~VideoStage();

    /// Shows the popup with a new scene and waits for its first frame.
    void showScene();
    /// Sets the source of the item to the first clip.
    void setClip();
    /// Replaces the clip, so that its frames are released: they would outlive the item.
    void releaseClip();

    Vidlets::VLView* view() const;
    Vidlets::VLVideoComponent* item() const;
    Vidlets::VLVideoSource* source() const;

    static constexpr int kFramesPerSecond = 30;
    static constexpr int kTinyFrames = 10;
    static QSize clipSizePx();

private:
    PackageBuilder m_packages;
    ClipWriter m_clips;
    QWidget m_control;
    VLContext m_context;
    Vidlets::VLInterface m_host;
    std::unique_ptr<Vidlets::VLManager> m_manager;
    int m_shows = 0;
};

#endif
