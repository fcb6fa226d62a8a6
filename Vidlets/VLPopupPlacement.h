// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLPOPUPPLACEMENT_H
#define VLPOPUPPLACEMENT_H

#include <QPoint>
#include <QRect>
#include <QSize>

#include <optional>

/**
 * Where a popup goes and how large it is, worked out from numbers alone: no screen, window or
 * pointer is asked here.
 *
 * Internal to the library. All in pixels and global coordinates.
 */
namespace Vidlets::PopupPlacement {

/// A rectangle that was fitted into an area.
struct Fit
{
    QRect geometry;
    /// Whether it had to be moved.
    bool moved = false;
};

/// What a tip is not to cover.
struct KeepOff
{
    /// The control that the tip belongs to; empty where there is none.
    QRect control;
    /// The pointer, as it was when the tip was asked for.
    QPoint pointer;
    /// How far from the pointer the tip goes.
    QSize offset;
    /// Whether the tip goes to the left of the pointer.
    bool rightToLeft = false;
};

/// What decides about the place of a popup.
struct Request
{
    QSize sceneSize;
    /// The top left corner of the frame that the window manager draws around the popup's window.
    QPoint framePosition;
    /// The top of the frame, seen from the top of the window within it: 0 without a title, negative
    /// with one.
    int titleOffset = 0;
    /// What the popup may cover of its screen.
    QRect area;
    /// Where it is set, the popup is placed anew by it, not where its frame is.
    std::optional<KeepOff> keepOff = std::nullopt;
    /// Where it is set, the middle of the popup goes there, and nothing else decides.
    std::optional<QPoint> middle = std::nullopt;
};

/// What becomes of a popup.
struct Placement
{
    /// Where the window is to be moved if @c moved is set.
    QPoint position;
    /// The size of the popup and of the window that it is in.
    QSize size;
    /// Whether the window is to be moved at all.
    bool moved = false;
};

/// Moves @p geometry into @p area without a change of its size. One that is too large ends flush
/// with the bottom and the right of the area.
Fit fitInto(const QRect& area, QRect geometry);

/// Where a popup of @p size goes in @p area: below the pointer and beside it, else below the
/// control, above it, or at one of its sides. One that covers the control wherever it goes leaves
/// the pointer free at least.
QPoint besidePointer(const QRect& area, const QSize& size, const KeepOff& keepOff);

/// Where a popup of @p size goes in @p area whose middle is wanted at @p middle.
QPoint around(const QRect& area, const QSize& size, const QPoint& middle);

/// Works out the place and the size of a popup whose scene has the size of @p request.
Placement place(const Request& request);

} // namespace Vidlets::PopupPlacement

#endif
