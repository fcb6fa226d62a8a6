// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HostInterface.h"
#include "ItemKeys.h"
#include "Popups.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeWidget>

namespace {

/// Each control here asks for the one tip of the package.
void fill(QMainWindow& window)
{
    const QString key = QStringLiteral("greeting");
    QMenu* menu = window.menuBar()->addMenu(QStringLiteral("&Menu"));
    menu->addAction(QStringLiteral("Rest the pointer here"))->setObjectName(key);
    auto* tabs = new QTabWidget(&window);
    auto* tree = new QTreeWidget;
    tree->setHeaderLabel(QStringLiteral("On this header"));
    tree->headerItem()->setData(0, kKeyRole, key);
    auto* item = new QTreeWidgetItem(tree, {QStringLiteral("Or on this row")});
    item->setData(0, kKeyRole, key);
    tabs->addTab(tree, QStringLiteral("On this tab"));
    tabs->tabBar()->setTabData(0, key);
    window.setCentralWidget(tabs);
}

void addPinMenu(QMainWindow& window)
{
    QMenu* menu = window.menuBar()->addMenu(QStringLiteral("&Pinned tips"));
    QAction* onTop = menu->addAction(QStringLiteral("Keep on &top"));
    onTop->setCheckable(true);
    QObject::connect(onTop, &QAction::toggled, &window, [](bool checked) {
        if (Vidlets::VLManager* manager = vidletsManager())
            manager->setStayOnTop(checked);
    });
}

void addTipsMenu(QMainWindow& window, Vidlets::VLInterface& vidlets)
{
    QMenu* menu = window.menuBar()->addMenu(QStringLiteral("&Tips"));
    QObject::connect(menu->addAction(QStringLiteral("&Never")), &QAction::triggered, &vidlets,
                     [&vidlets] { vidlets.context().set(Vidlets::ckDisabled, true); });
    QObject::connect(menu->addAction(QStringLiteral("Only with &Shift")), &QAction::triggered,
                     &vidlets, [&vidlets] {
                         vidlets.context().set(Vidlets::ckDisabled, false);
                         vidlets.context().set(Vidlets::ckRequiredModifiers,
                                               static_cast<int>(Qt::ShiftModifier));
                     });
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    fill(window);

    VLContext context;
    context.set(Vidlets::ckInstallEventFilter, true);
    context.set(Vidlets::ckMessageLevel, Vidlets::VLMessageInformation);
    int result = 0;
    {
        HostInterface vidlets(context, {QStringLiteral(EXAMPLE_PACKAGES)}, &window);
        connectScenesToSettings(vidlets);
        addPinMenu(window);
        addTipsMenu(window, vidlets);
        window.resize(480, 320);
        window.show();
        result = QApplication::exec();
        deletePinnedTips();
    }
    // No event loop follows that would delete the popup.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return result;
}
