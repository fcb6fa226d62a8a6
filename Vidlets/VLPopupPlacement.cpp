// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLPopupPlacement.h"

#include <algorithm>
#include <array>

namespace Vidlets::PopupPlacement {

namespace {

constexpr QSize kExtraPixel(1, 1);

/// The nearest to @p wanted that keeps @p length pixels within the area from @p first to @p last.
int clamped(int wanted, int length, int first, int last)
{
    return std::max(first, std::min(wanted, last - length + 1));
}

/// The places around @p blocked, the best first. Those for which there is no room overlap it.
std::array<QRect, 4> placesAround(const QRect& blocked, const QRect& area, const QRect& wanted,
                                  const KeepOff& keepOff)
{
    const QSize size = wanted.size();
    const QPoint near(keepOff.offset.width(), keepOff.offset.height());
    const auto place = [&area, &size](int x, int y) {
        return QRect(QPoint(clamped(x, size.width(), area.left(), area.right()),
                            clamped(y, size.height(), area.top(), area.bottom())),
                     size);
    };
    const QPoint before =
        keepOff.pointer - near - QPoint(size.width(), size.height()) + QPoint(1, 1);
    const QPoint behind = keepOff.pointer + near;
    const QRect below = place(wanted.x(), std::max(behind.y(), blocked.bottom() + 1));
    const QRect above = place(wanted.x(), std::min(before.y(), blocked.top() - size.height()));
    const QRect right = place(std::max(behind.x(), blocked.right() + 1), wanted.y());
    const QRect left = place(std::min(before.x(), blocked.left() - size.width()), wanted.y());
    if (keepOff.rightToLeft)
        return {below, above, left, right};
    return {below, above, right, left};
}

std::optional<QPoint> freePlace(const QRect& blocked, const QRect& area, const QRect& wanted,
                                const KeepOff& keepOff)
{
    for (const QRect& place : placesAround(blocked, area, wanted, keepOff)) {
        if (area.contains(place) && !place.intersects(blocked))
            return place.topLeft();
    }
    return std::nullopt;
}

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

QPoint besidePointer(const QRect& area, const QSize& size, const KeepOff& keepOff)
{
    const int x = keepOff.rightToLeft
        ? keepOff.pointer.x() - keepOff.offset.width() - size.width() + 1
        : keepOff.pointer.x() + keepOff.offset.width();
    const QRect wanted(QPoint(x, keepOff.pointer.y() + keepOff.offset.height()), size);
    const QRect fitted = fitInto(area, wanted).geometry;
    const QRect pointer(keepOff.pointer, QSize(1, 1));
    const auto besideOf = [&](const QRect& blocked) {
        return freePlace(blocked, area, wanted, keepOff);
    };

    const bool coversPointer = fitted.intersects(pointer);
    std::optional<QPoint> position;
    if (coversPointer || fitted.intersects(keepOff.control))
        position = besideOf(keepOff.control.united(pointer));
    if (!position && coversPointer)
        position = besideOf(pointer);
    return position.value_or(fitted.topLeft());
}

QPoint around(const QRect& area, const QSize& size, const QPoint& middle)
{
    QRect wanted(QPoint(), size);
    wanted.moveCenter(middle);
    return fitInto(area, wanted).geometry.topLeft();
}

Placement place(const Request& request)
{
    if (request.middle || request.keepOff) {
        const QSize size = request.sceneSize + QSize(0, -request.titleOffset) + kExtraPixel;
        const QPoint position = request.middle
            ? around(request.area, size, *request.middle)
            : besidePointer(request.area, size, *request.keepOff);
        return {position, size, position != request.framePosition};
    }
    const Fit fit = fitInto(request.area, QRect(request.framePosition, request.sceneSize));
    QRect window = fit.geometry;
    // Kept: the bottom stays, so the rectangle grows by the height of the title.
    window.setTop(window.top() + request.titleOffset);
    // Kept: one pixel more than the scene in each direction.
    return {window.topLeft(), window.size() + kExtraPixel, fit.moved};
}

} // namespace Vidlets::PopupPlacement
