// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVideoFrame.h"

namespace Vidlets {

VLVideoFrame::VLVideoFrame() = default;

VLVideoFrame::VLVideoFrame(const QImage& image, quint64 pts)
    : QImage(image)
    , m_pts(static_cast<double>(pts))
{
}

VLVideoFrame::VLVideoFrame(int width, int height, QImage::Format format, quint64 pts)
    : QImage(width, height, format)
    , m_pts(static_cast<double>(pts))
{
}

VLVideoFrame::VLVideoFrame(const VLVideoFrame& other) = default;

VLVideoFrame::~VLVideoFrame() = default;

VLVideoFrame& VLVideoFrame::operator=(const VLVideoFrame& other)
{
    if (this == &other)
        return *this;
    QImage::operator=(other);
    m_pts = other.m_pts;
    return *this;
}

double VLVideoFrame::pts() const
{
    return m_pts;
}

void VLVideoFrame::setPts(double pts)
{
    m_pts = pts;
}

} // namespace Vidlets
