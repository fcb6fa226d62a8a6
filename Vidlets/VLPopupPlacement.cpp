// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLPopupPlacement.h"

namespace Vidlets::PopupPlacement {

namespace {

constexpr QSize kExtraPixel(1, 1);

} // namespace

Fit fitInto(const QRect& area, QRect geometry)
{
    bool moved = false;
    if (geometry.top() < area.top()) {
        geometry.moveTop(area.top());
        moved = true;
    }
    if (geometry.left() < area.left()) {
        geometry.moveLeft(area.left());
        moved = true;
    }
    // Bottom and right come last, so they win where the rectangle is too large for the area.
    if (geometry.bottom() > area.bottom()) {
        geometry.moveBottom(area.bottom());
        moved = true;
    }
    if (geometry.right() > area.right()) {
        geometry.moveRight(area.right());
        moved = true;
    }
    return {geometry, moved};
}

Placement place(const Request& request)
{
    const Fit fit = fitInto(request.area, QRect(request.framePosition, request.sceneSize));
    QRect window = fit.geometry;
    // Kept: the bottom stays, so the rectangle grows by the height of the title.
    window.setTop(window.top() + request.titleOffset);
    // Kept: one pixel more than the scene in each direction.
    return {window.topLeft(), window.size() + kExtraPixel, fit.moved};
}

} // namespace Vidlets::PopupPlacement
