// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLVIDEOFRAME_H
#define VLVIDEOFRAME_H

#include <Vidlets/VidletsExport.h>

#include <QImage>

namespace Vidlets {

/**
 * One decoded picture with its presentation stamp.
 *
 * A value: copies share the pixels until one of them is written, so frames travel between threads
 * at the cost of a reference count. Playing goes by the frame's place in the cache; nothing in it
 * reads the stamp.
 */
class VIDLETS_EXPORT VLVideoFrame : public QImage
{
public:
    /// Makes a null picture with the stamp 0.0.
    VLVideoFrame();
    /// Shares the pixels of @p image. The whole unsigned range of @p pts is taken as positive.
    VLVideoFrame(const QImage& image, quint64 pts);
    /// Makes a picture of @p width by @p height pixels with undefined content.
    VLVideoFrame(int width, int height, QImage::Format format, quint64 pts);
    /// Shares the pixels of @p other.
    VLVideoFrame(const VLVideoFrame& other);
    ~VLVideoFrame() override;

    /// Shares the pixels of @p other.
    VLVideoFrame& operator=(const VLVideoFrame& other);

    /// Returns the presentation stamp, in seconds where it comes from a video source.
    double pts() const;
    /// Sets the presentation stamp.
    void setPts(double pts);

private:
    double m_pts = 0.0;
};

} // namespace Vidlets

#endif
