// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HostInterface.h"
#include "ItemKeys.h"
#include "Popups.h"
#include <Vidlets/VLSafeguards.h>

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

/// Each control here asks for the one tip of the package.
void fill(QMainWindow& window)
{
    const QString key = u"greeting"_s;
    QMenu* menu = window.menuBar()->addMenu(u"&Menu"_s);
    menu->addAction(u"Rest the pointer here"_s)->setObjectName(key);
    auto* tabs = new QTabWidget(&window);
    auto* tree = new QTreeWidget;
    tree->setHeaderLabel(u"On this header"_s);
    tree->headerItem()->setData(0, kKeyRole, key);
    auto* item = new QTreeWidgetItem(tree, {u"Or on this row"_s});
    item->setData(0, kKeyRole, key);
    tabs->addTab(tree, u"On this tab"_s);
    tabs->tabBar()->setTabData(0, key);
    window.setCentralWidget(tabs);
}

void addPinMenu(QMainWindow& window)
{
    QMenu* menu = window.menuBar()->addMenu(u"&Pinned tips"_s);
    QAction* onTop = menu->addAction(u"Keep on &top"_s);
    onTop->setCheckable(true);
    QObject::connect(onTop, &QAction::toggled, &window, [](bool checked) {
        if (Vidlets::VLManager* manager = vidletsManager())
            manager->setStayOnTop(checked);
    });
}

void addTipsMenu(QMainWindow& window, Vidlets::VLInterface& vidlets)
{
    QMenu* menu = window.menuBar()->addMenu(u"&Tips"_s);
    QObject::connect(menu->addAction(u"&Never"_s), &QAction::triggered, &vidlets,
                     [&vidlets] { vidlets.context().set(Vidlets::ckDisabled, true); });
    QObject::connect(menu->addAction(u"Only with &Shift"_s), &QAction::triggered, &vidlets,
                     [&vidlets] {
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
    Vidlets::useSafeguards(context);
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
