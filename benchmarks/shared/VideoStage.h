// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VIDEOSTAGE_H
#define VIDEOSTAGE_H

#include "ClipStage.h"

#include <QWidget>

/// A control on the screen and a popup for it whose scene holds a video item without a clip.
class VideoStage : public ClipStage
{
public:
    /// The clips are "first.mp4" and "tiny.mp4", of kClipSizePx and kFramesPerSecond.
    explicit VideoStage(int frames, float scale = 1.0F);

    /// Shows the popup with a new scene and waits for its first frame.
    void showScene();
    /// Sets the source of the item to the first clip.
    void setClip();
    /// Replaces the clip, so that its frames are released: they would outlive the item.
    void releaseClip();

    Vidlets::VLVideoComponent* item() const;
    Vidlets::VLVideoSource* source() const;

    static constexpr int kFramesPerSecond = 30;
    static constexpr int kTinyFrames = 10;
    static QSize clipSizePx();

private:
    QWidget m_control;
    int m_shows = 0;
};

#endif
