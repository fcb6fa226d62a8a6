// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLPINNEDTIPS_H
#define VLPINNEDTIPS_H

#include <QList>
#include <QPointer>
#include <QtGlobal>

class QDockWidget;
class QEvent;
class QMainWindow;
class QObject;
class QWidget;

namespace Vidlets {

class VLManager;
class VLWidget;

/**
 * The tips that the user has pinned: where each goes, and what becomes of it.
 *
 * Internal to the host kit. A tip belongs to its window: to its dock, which belongs to the main
 * window, or to the control's window as a tool window. The list here only knows them.
 */
class VLPinnedTips final
{
public:
    explicit VLPinnedTips(VLManager* manager);

    Qt::DockWidgetArea area() const;
    void setArea(Qt::DockWidgetArea area);

    /// Returns the widget that takes the tip which is being pinned, or null for a window of its
    /// own.
    QWidget* makeRoom();
    /// Returns those that are not closed, the oldest first.
    QList<VLWidget*> tips() const;
    void closeAll();
    /// Takes all of them down, as soon as the event loop gets to it.
    void discard();

    /// Sees which windows close.
    void watch(QObject* object, const QEvent* event);

private:
    Q_DISABLE_COPY_MOVE(VLPinnedTips)

    QWidget* makeDock(QMainWindow* window);
    void noteClosed(const QWidget* window);
    static QMainWindow* mainWindowOf(const QWidget* control);
    static QWidget* windowOf(VLWidget* tip);
    static void settle(QDockWidget* dock, QMainWindow* window, Qt::DockWidgetArea area);

    const QPointer<VLManager> m_manager;
    Qt::DockWidgetArea m_area = Qt::NoDockWidgetArea;
    /// The window whose close event is on its way; only compared.
    const QObject* m_closing = nullptr;
    /// What is closed and not deleted yet.
    QList<QPointer<VLWidget>> m_closed;
};

} // namespace Vidlets

#endif
