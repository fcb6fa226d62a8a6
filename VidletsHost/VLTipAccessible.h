// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLTIPACCESSIBLE_H
#define VLTIPACCESSIBLE_H

#include <QAccessibleWidget>
#include <QPoint>
#include <QString>

namespace Vidlets {

class VLWidget;

/**
 * A popup as screen readers see it: a tooltip, named by its title and described by its text, with
 * the view of its scene as its only child. One that is pinned is a part of the desktop like others.
 *
 * Internal to the host kit. Qt owns it.
 */
class VLTipAccessible final : public QAccessibleWidget
{
public:
    explicit VLTipAccessible(VLWidget* popup);

    /// Makes interfaces for popups and for their views from now on, until each call has been undone
    /// by stopServing().
    static void beginServing();
    static void stopServing();

    QAccessible::Role role() const override;
    QString text(QAccessible::Text kind) const override;
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;

private:
    VLWidget* popup() const;
};

} // namespace Vidlets

#endif
