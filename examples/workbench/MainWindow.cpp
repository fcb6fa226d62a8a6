// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "MainWindow.h"

#include "BrushPanel.h"
#include "Canvas.h"
#include "ControlTitle.h"
#include "LogDock.h"
#include "PinnedTips.h"
#include "SettingsMenu.h"
#include "ToolIcons.h"
#include "WorkbenchInterface.h"

#include <QActionGroup>
#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

namespace Workbench {

namespace {

constexpr QSize kStartSize(1060, 680);
constexpr int kBrushStepPx = 2;
constexpr int kLogHeightPx = 90;
constexpr int kStatusMs = 4000;

} // namespace

MainWindow::MainWindow()
    : m_canvas(new Canvas)
    , m_controlTitle(new ControlTitle(this))
    , m_log(new LogDock(this))
    , m_tools(new QActionGroup(this))
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(tr("Workbench"));
    m_canvas->setObjectName(QStringLiteral("canvas"));
    setCentralWidget(m_canvas);

    makeFileActions();
    makeEditActions();
    makeToolActions();
    makeViewActions();
    makeBrushPanel();
    makeToolBar();
    makeStatusBar();

    addDockWidget(Qt::BottomDockWidgetArea, m_log);
    resize(kStartSize);
    resizeDocks({m_log}, {kLogHeightPx}, Qt::Vertical);
}

void MainWindow::attach(WorkbenchInterface& vidlets)
{
    connect(&vidlets, &WorkbenchInterface::messageRaised, m_log, &LogDock::append);
    menuBar()->addMenu(new SettingsMenu(vidlets, vidlets.pinnedTips(), this));
    makeWindowMenu(vidlets.pinnedTips());
    m_controlTitle->attach(vidlets);

    // Text variables of the tips.
    vidlets.setGlobalProperty(QStringLiteral("product"), windowTitle());
    vidlets.setGlobalProperty(QStringLiteral("undoLimit"), m_canvas->undoStack()->undoLimit());
    vidlets.setGlobalProperty(QStringLiteral("largestBrush"), kMaximumBrushSizePx);
    publishBrush(vidlets);
    connect(m_canvas, &Canvas::brushChanged, &vidlets, [this, &vidlets] { publishBrush(vidlets); });
}

QAction* MainWindow::makeAction(const QString& name, const QString& text,
                                const QKeySequence& shortcut)
{
    auto* action = new QAction(toolIcon(name), text, this);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    return action;
}

QAction* MainWindow::makeToolAction(const QString& name, const QString& text,
                                    const QKeySequence& shortcut, Tool tool)
{
    QAction* action = m_tools->addAction(makeAction(name, text, shortcut));
    action->setCheckable(true);
    connect(action, &QAction::triggered, m_canvas, [this, tool] { m_canvas->setTool(tool); });
    return action;
}

void MainWindow::makeFileActions()
{
    QMenu* menu = menuBar()->addMenu(tr("&File"));
    QAction* save = makeAction(QStringLiteral("file.save"), tr("&Save as PNG..."),
                               Qt::CTRL | Qt::SHIFT | Qt::Key_S);
    connect(save, &QAction::triggered, this, &MainWindow::saveSheet);
    QAction* quit = makeAction(QStringLiteral("file.quit"), tr("&Quit"), QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &MainWindow::close);
    menu->addActions({save, quit});
}

void MainWindow::makeEditActions()
{
    QMenu* menu = menuBar()->addMenu(tr("&Edit"));
    QUndoStack* stack = m_canvas->undoStack();

    QAction* undo = makeAction(QStringLiteral("edit.undo"), tr("&Undo"), QKeySequence::Undo);
    undo->setEnabled(false);
    connect(undo, &QAction::triggered, stack, &QUndoStack::undo);
    connect(stack, &QUndoStack::canUndoChanged, undo, &QAction::setEnabled);

    QAction* redo = makeAction(QStringLiteral("edit.redo"), tr("&Redo"), QKeySequence::Redo);
    redo->setEnabled(false);
    connect(redo, &QAction::triggered, stack, &QUndoStack::redo);
    connect(stack, &QUndoStack::canRedoChanged, redo, &QAction::setEnabled);

    QAction* clear =
        makeAction(QStringLiteral("edit.clear"), tr("&Clear"), Qt::CTRL | Qt::Key_Delete);
    connect(clear, &QAction::triggered, m_canvas, &Canvas::clear);
    menu->addActions({undo, redo, clear});
}

void MainWindow::makeToolActions()
{
    QMenu* menu = menuBar()->addMenu(tr("&Tools"));
    QAction* pen = makeToolAction(QStringLiteral("tool.pen"), tr("&Pen"), Qt::Key_P, Tool::Pen);
    pen->setChecked(true);
    makeToolAction(QStringLiteral("tool.line"), tr("&Line"), Qt::Key_L, Tool::Line);
    makeToolAction(QStringLiteral("tool.rectangle"), tr("&Rectangle"), Qt::Key_R, Tool::Rectangle);
    makeToolAction(QStringLiteral("tool.ellipse"), tr("&Ellipse"), Qt::SHIFT | Qt::Key_R,
                   Tool::Ellipse);
    makeToolAction(QStringLiteral("tool.eraser"), tr("E&raser"), Qt::Key_E, Tool::Eraser);
    menu->addActions(m_tools->actions());
}

void MainWindow::makeViewActions()
{
    m_viewMenu = menuBar()->addMenu(tr("&View"));
    QAction* grid = makeAction(QStringLiteral("view.grid"), tr("&Grid"), Qt::CTRL | Qt::Key_G);
    grid->setCheckable(true);
    connect(grid, &QAction::toggled, m_canvas, &Canvas::setGridVisible);
    m_viewMenu->addAction(grid);
    m_viewMenu->addAction(m_log->toggleViewAction());
}

void MainWindow::makeBrushPanel()
{
    QAction* smaller =
        makeAction(QStringLiteral("brush.smaller"), tr("&Smaller brush"), Qt::CTRL | Qt::Key_Minus);
    QAction* bigger =
        makeAction(QStringLiteral("brush.bigger"), tr("&Bigger brush"), Qt::CTRL | Qt::Key_Plus);
    addActions({smaller, bigger});
    m_brushPanel = new BrushPanel(m_canvas->brush(), smaller, bigger, this);
    addDockWidget(Qt::RightDockWidgetArea, m_brushPanel);
    m_viewMenu->addAction(m_brushPanel->toggleViewAction());

    connect(smaller, &QAction::triggered, this, [this] { m_brushPanel->stepSize(-kBrushStepPx); });
    connect(bigger, &QAction::triggered, this, [this] { m_brushPanel->stepSize(kBrushStepPx); });
    connect(m_brushPanel, &BrushPanel::colorPicked, m_canvas, &Canvas::setColor);
    connect(m_brushPanel, &BrushPanel::sizeChanged, m_canvas, &Canvas::setBrushSize);
    connect(m_brushPanel, &BrushPanel::opacityChanged, m_canvas, &Canvas::setOpacity);
    connect(m_brushPanel, &BrushPanel::smoothingChanged, m_canvas, &Canvas::setSmoothing);
    connect(m_brushPanel, &BrushPanel::mirroredChanged, m_canvas, &Canvas::setMirrored);
}

void MainWindow::makeToolBar()
{
    QToolBar* bar = addToolBar(tr("Tools"));
    bar->setObjectName(QStringLiteral("toolBar"));
    bar->setMovable(false);
    for (const QLatin1String name :
         {QLatin1String("file.save"), QLatin1String(), QLatin1String("edit.undo"),
          QLatin1String("edit.redo"), QLatin1String("edit.clear"), QLatin1String(),
          QLatin1String("tool.pen"), QLatin1String("tool.line"), QLatin1String("tool.rectangle"),
          QLatin1String("tool.ellipse"), QLatin1String("tool.eraser"), QLatin1String(),
          QLatin1String("view.grid")}) {
        if (name.isEmpty()) {
            bar->addSeparator();
        } else {
            bar->addAction(findChild<QAction*>(name));
        }
    }
}

// An ordinary tooltip goes on working beside the rich ones.
void MainWindow::makeStatusBar()
{
    auto* paper = new QLabel(tr("Paper: endless"));
    paper->setToolTip(tr("The sheet grows with the window. This is an ordinary tooltip."));
    statusBar()->setObjectName(QStringLiteral("statusBar"));
    statusBar()->addWidget(m_controlTitle, 1);
    statusBar()->addPermanentWidget(paper);
}

void MainWindow::makeWindowMenu(PinnedTips& pinnedTips)
{
    QMenu* menu = menuBar()->addMenu(tr("&Window"));
    QAction* raise = menu->addAction(tr("&Raise pinned"));
    connect(raise, &QAction::triggered, this, [&pinnedTips] { pinnedTips.raise(); });
    QAction* keep = menu->addAction(tr("&Keep pinned on top"));
    keep->setCheckable(true);
    connect(keep, &QAction::toggled, this, [&pinnedTips](bool isOn) { pinnedTips.setOnTop(isOn); });
}

void MainWindow::saveSheet()
{
    const QString file = QFileDialog::getSaveFileName(
        this, tr("Save as PNG"), QStringLiteral("sketch.png"), tr("Pictures (*.png)"));
    if (file.isEmpty()) {
        return;
    }
    const QString outcome = m_canvas->save(file) ? tr("Saved %1") : tr("Could not write %1");
    statusBar()->showMessage(outcome.arg(file), kStatusMs);
}

void MainWindow::publishBrush(WorkbenchInterface& vidlets) const
{
    const Brush& brush = m_canvas->brush();
    vidlets.setGlobalProperty(QStringLiteral("brushSize"), brush.sizePx);
    vidlets.setGlobalProperty(QStringLiteral("brushOpacity"), brush.opacityPercent);
    vidlets.setGlobalProperty(QStringLiteral("brushSmoothing"), brush.smoothingPercent);
    vidlets.setGlobalProperty(QStringLiteral("brushColor"), brush.color.name());
}

} // namespace Workbench

#include "moc_MainWindow.cpp"
