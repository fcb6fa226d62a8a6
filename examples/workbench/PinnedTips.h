// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_PINNEDTIPS_H
#define WORKBENCH_PINNEDTIPS_H

#include <QList>
#include <QPointer>

class QDockWidget;
class QMainWindow;
class QWidget;

namespace Vidlets {
class VLManager;
class VLManager;
class VLWidget;
} // namespace Vidlets

namespace Workbench {

/**
 * The tips that the user has pinned: where they go, and what can be done with all of them.
 *
 * They need the library's manager, so they go together with this object.
 */
class PinnedTips
{
    Q_DISABLE_COPY_MOVE(PinnedTips)

public:
    enum class Place {
        Window,
        Dock
    };

    explicit PinnedTips(QMainWindow& window);
    ~PinnedTips();

    Place place() const;
    /// Holds for the tips that are pinned from now on.
    void setPlace(Place place);

    /// Takes in the tip that is being pinned. Returns the widget to move it into, or null for a tip
    /// that becomes a window of its own.
    QWidget* makeRoom();

    void raise();
    /// Holds for the tips that are pinned later, too.
    void setOnTop(bool isOnTop);

private:
    Vidlets::VLWidget* findNewTip() const;
    Vidlets::VLWidget* findLivingTip() const;
    void keepOnTop(Vidlets::VLManager* manager) const;
    QWidget* makeDock(Vidlets::VLWidget& tip);
    void settle(QDockWidget& dock, int width);

    QMainWindow& m_window;
    Place m_place = Place::Window;
    bool m_onTop = false;
    QList<QPointer<Vidlets::VLWidget>> m_tips;
    QList<QPointer<QDockWidget>> m_docks;
};

} // namespace Workbench

#endif
