// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_MAINWINDOW_H
#define WORKBENCH_MAINWINDOW_H

#include "Brush.h"

#include <QMainWindow>

class QActionGroup;
class QKeySequence;
class QMenu;
class QToolBar;

namespace Vidlets {
class VLKeyTableIndex;
}

namespace Workbench {

class BrushPanel;
class Canvas;
class ControlTitle;
class LogDock;
class SearchField;
class WorkbenchInterface;

/// The window of the sketching tool. Each action's object name is its key.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    MainWindow();

    /// Brings in what needs the library. @p vidlets must go before this window does.
    void attach(WorkbenchInterface& vidlets, Vidlets::VLKeyTableIndex& index);

private:
    QAction* makeAction(const QString& name, const QString& text, const QKeySequence& shortcut);
    QAction* makeToolAction(const QString& name, const QString& text, const QKeySequence& shortcut,
                            Tool tool);
    void makeFileActions();
    void makeEditActions();
    void makeToolActions();
    void makeViewActions();
    void makeBrushPanel();
    void makeToolBar();
    void addSearchField(QToolBar* bar);
    void makeStatusBar();
    void makeWindowMenu(WorkbenchInterface& vidlets);
    void saveSheet();
    void publishBrush(WorkbenchInterface& vidlets) const;

    Canvas* m_canvas;
    BrushPanel* m_brushPanel = nullptr;
    ControlTitle* m_controlTitle;
    LogDock* m_log;
    SearchField* m_search = nullptr;
    QActionGroup* m_tools;
    QMenu* m_viewMenu = nullptr;
};

} // namespace Workbench

#endif
