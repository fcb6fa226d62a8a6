// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "CompositorScreen.h"

#include "PointerDriver.h"

#include <QProcess>

using namespace Qt::StringLiterals;

namespace {

bool moveIntoCorner()
{
    // More than any screen is wide, and against the corner the way is shorter than told.
    const QStringList arguments = {u"mousemove_relative"_s, u"--"_s, u"-4000"_s, u"-4000"_s};
    return QProcess::execute(u"xdotool"_s, arguments) == 0;
}

QRect placeIn(const QImage& image, QRgb color)
{
    QRect place;
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (line[x] == color)
                place |= QRect(x, y, 1, 1);
        }
    }
    return place;
}

} // namespace

QImage CompositorScreen::picture()
{
    QProcess process;
    process.start(u"import"_s, {u"-window"_s, u"root"_s, u"-silent"_s, u"ppm:-"_s});
    if (!process.waitForFinished() || process.exitCode() != 0)
        return QImage();
    return QImage::fromData(process.readAllStandardOutput(), "ppm")
        .convertToFormat(QImage::Format_RGB32);
}

QRect CompositorScreen::placeOf(const QColor& color)
{
    return placeIn(picture(), color.rgb());
}

bool CompositorScreen::movePointerTo(const QPoint& position)
{
    static const bool isInStep = moveIntoCorner();
    return isInStep && PointerDriver::moveTo(position);
}
