// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "MainWindow.h"

#include "BrushPanel.h"
#include "Canvas.h"
#include "ControlTitle.h"
#include "LogDock.h"
#include "SearchField.h"
#include "SettingsMenu.h"
#include "ToolIcons.h"
#include "WorkbenchInterface.h"
#include <Vidlets/VLManager.h>

#include <QActionGroup>
#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

using namespace Qt::StringLiterals;

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
    setObjectName(u"mainWindow"_s);
    setWindowTitle(tr("Workbench"));
    m_canvas->setObjectName(u"canvas"_s);
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

void MainWindow::attach(WorkbenchInterface& vidlets, Vidlets::VLKeyTableIndex& index)
{
    connect(&vidlets, &WorkbenchInterface::messageRaised, m_log,
            [this](Vidlets::VLMessageType type, const QString& message) {
                m_log->append(labelFor(type), message);
            });
    menuBar()->addMenu(new SettingsMenu(vidlets, this));
    makeWindowMenu(vidlets);
    m_controlTitle->attach(vidlets);
    m_search->attach(vidlets, index);

    // Text variables of the tips.
    vidlets.setGlobalProperty(u"product"_s, windowTitle());
    vidlets.setGlobalProperty(u"undoLimit"_s, m_canvas->undoStack()->undoLimit());
    vidlets.setGlobalProperty(u"largestBrush"_s, kMaximumBrushSizePx);
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
    QAction* save =
        makeAction(u"file.save"_s, tr("&Save as PNG..."), Qt::CTRL | Qt::SHIFT | Qt::Key_S);
    connect(save, &QAction::triggered, this, &MainWindow::saveSheet);
    QAction* quit = makeAction(u"file.quit"_s, tr("&Quit"), QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &MainWindow::close);
    menu->addActions({save, quit});
}

void MainWindow::makeEditActions()
{
    QMenu* menu = menuBar()->addMenu(tr("&Edit"));
    QUndoStack* stack = m_canvas->undoStack();

    QAction* undo = makeAction(u"edit.undo"_s, tr("&Undo"), QKeySequence::Undo);
    undo->setEnabled(false);
    connect(undo, &QAction::triggered, stack, &QUndoStack::undo);
    connect(stack, &QUndoStack::canUndoChanged, undo, &QAction::setEnabled);

    QAction* redo = makeAction(u"edit.redo"_s, tr("&Redo"), QKeySequence::Redo);
    redo->setEnabled(false);
    connect(redo, &QAction::triggered, stack, &QUndoStack::redo);
    connect(stack, &QUndoStack::canRedoChanged, redo, &QAction::setEnabled);

    QAction* clear = makeAction(u"edit.clear"_s, tr("&Clear"), Qt::CTRL | Qt::Key_Delete);
    connect(clear, &QAction::triggered, m_canvas, &Canvas::clear);
    menu->addActions({undo, redo, clear});
}

void MainWindow::makeToolActions()
{
    QMenu* menu = menuBar()->addMenu(tr("&Tools"));
    QAction* pen = makeToolAction(u"tool.pen"_s, tr("&Pen"), Qt::Key_P, Tool::Pen);
    pen->setChecked(true);
    makeToolAction(u"tool.line"_s, tr("&Line"), Qt::Key_L, Tool::Line);
    makeToolAction(u"tool.rectangle"_s, tr("&Rectangle"), Qt::Key_R, Tool::Rectangle);
    makeToolAction(u"tool.ellipse"_s, tr("&Ellipse"), Qt::SHIFT | Qt::Key_R, Tool::Ellipse);
    makeToolAction(u"tool.eraser"_s, tr("E&raser"), Qt::Key_E, Tool::Eraser);
    menu->addActions(m_tools->actions());
}

void MainWindow::makeViewActions()
{
    m_viewMenu = menuBar()->addMenu(tr("&View"));
    QAction* grid = makeAction(u"view.grid"_s, tr("&Grid"), Qt::CTRL | Qt::Key_G);
    grid->setCheckable(true);
    connect(grid, &QAction::toggled, m_canvas, &Canvas::setGridVisible);
    m_viewMenu->addAction(grid);
    m_viewMenu->addAction(m_log->toggleViewAction());
}

void MainWindow::makeBrushPanel()
{
    QAction* smaller =
        makeAction(u"brush.smaller"_s, tr("&Smaller brush"), Qt::CTRL | Qt::Key_Minus);
    QAction* bigger = makeAction(u"brush.bigger"_s, tr("&Bigger brush"), Qt::CTRL | Qt::Key_Plus);
    addActions({smaller, bigger});
    m_brushPanel = new BrushPanel(m_canvas->brush(), smaller, bigger, this);
    addDockWidget(Qt::RightDockWidgetArea, m_brushPanel);
    m_brushPanel->toggleViewAction()->setText(tr("&Brush"));
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
    bar->setObjectName(u"toolBar"_s);
    bar->setMovable(false);
    for (const QLatin1String name :
         {"file.save"_L1, QLatin1String(), "edit.undo"_L1, "edit.redo"_L1, "edit.clear"_L1,
          QLatin1String(), "tool.pen"_L1, "tool.line"_L1, "tool.rectangle"_L1, "tool.ellipse"_L1,
          "tool.eraser"_L1, QLatin1String(), "view.grid"_L1}) {
        if (name.isEmpty()) {
            bar->addSeparator();
        } else {
            bar->addAction(findChild<QAction*>(name));
        }
    }
    addSearchField(bar);
}

void MainWindow::addSearchField(QToolBar* bar)
{
    auto* space = new QWidget;
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(space);
    m_search = new SearchField;
    bar->addWidget(m_search);
    QAction* search = makeAction(u"view.search"_s, tr("&Search tips"), Qt::CTRL | Qt::Key_K);
    connect(search, &QAction::triggered, m_search, [this] {
        m_search->setFocus(Qt::ShortcutFocusReason);
        m_search->selectAll();
    });
    m_viewMenu->addAction(search);
}

// An ordinary tooltip goes on working beside the rich ones.
void MainWindow::makeStatusBar()
{
    auto* paper = new QLabel(tr("Paper: endless"));
    paper->setToolTip(tr("The sheet grows with the window. This is an ordinary tooltip."));
    statusBar()->setObjectName(u"statusBar"_s);
    statusBar()->addWidget(m_controlTitle, 1);
    statusBar()->addPermanentWidget(paper);
}

void MainWindow::makeWindowMenu(WorkbenchInterface& vidlets)
{
    QMenu* menu = menuBar()->addMenu(tr("&Window"));
    QAction* raise = menu->addAction(tr("&Raise pinned"));
    connect(raise, &QAction::triggered, &vidlets, [&vidlets] { vidlets.manager()->raise(); });
    QAction* keep = menu->addAction(tr("&Keep pinned on top"));
    keep->setCheckable(true);
    connect(keep, &QAction::toggled, &vidlets, &WorkbenchInterface::setPinnedOnTop);
}

void MainWindow::saveSheet()
{
    const QString file = QFileDialog::getSaveFileName(this, tr("Save as PNG"), u"sketch.png"_s,
                                                      tr("Pictures (*.png)"));
    if (file.isEmpty()) {
        return;
    }
    const QString outcome = m_canvas->save(file) ? tr("Saved %1") : tr("Could not write %1");
    statusBar()->showMessage(outcome.arg(file), kStatusMs);
}

void MainWindow::publishBrush(WorkbenchInterface& vidlets) const
{
    const Brush& brush = m_canvas->brush();
    vidlets.setGlobalProperty(u"brushSize"_s, brush.sizePx);
    vidlets.setGlobalProperty(u"brushOpacity"_s, brush.opacityPercent);
    vidlets.setGlobalProperty(u"brushSmoothing"_s, brush.smoothingPercent);
    vidlets.setGlobalProperty(u"brushColor"_s, brush.color.name());
}

} // namespace Workbench

#include "moc_MainWindow.cpp"
