// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AccessStage.h"

#include "PopupStage.h"
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenuBar>
#include <QQuickItem>
#include <QShortcut>
#include <QTest>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr auto kScene = R"(import QtQuick

Rectangle {
    id: root

    property string shownKey: vidlet ? vidlet.attribute("key") : ""
    property string acted

    width: 160
    height: 90
    color: "#c03090"

    Column {
        Rectangle {
            objectName: "link"
            width: 100
            height: 25
            activeFocusOnTab: true
            color: activeFocus ? "#3050e0" : "#ffffff"
            Keys.onReturnPressed: root.acted += "link "
        }
        Rectangle {
            objectName: "button"
            width: 100
            height: 25
            activeFocusOnTab: true
            color: activeFocus ? "#3050e0" : "#ffffff"
            Keys.onSpacePressed: root.acted += "button "
        }
        Rectangle {
            objectName: "player"
            width: 100
            height: 25
            activeFocusOnTab: true
            color: activeFocus ? "#3050e0" : "#ffffff"
            Keys.onPressed: (event) => {
                if (event.key === Qt.Key_P) {
                    vidletView.reserved = true
                    event.accepted = true
                }
            }
            Keys.onReturnPressed: root.acted += "player "
        }
    }
}
)";

} // namespace

KeyPad::KeyPad(QWidget* parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
}

bool KeyPad::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease: {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Shift)
            return true;
        const QString sign = event->type() == QEvent::KeyPress ? u"+"_s : u"-"_s;
        keys += sign + QKeySequence(key).toString();
        return true;
    }
    case QEvent::FocusIn:
        focus += u"in"_s;
        break;
    case QEvent::FocusOut:
        focus += u"out"_s;
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

AccessStage::AccessStage()
{
    packages.write(u"tips.vidlets/ui/VidletUI.qml"_s, kScene);
    QByteArray tips;
    for (const char* key :
         {"pad", "open", "group", "cell", "table", "tabs.0", "data", "file", "item", "dialog"})
        tips += QByteArray("<vidlet key=\"") + key + "\"/>";
    packages.writeControlFile(u"tips.vidlets"_s, u"tips.xml"_s, "<vidlets>" + tips + "</vidlets>");
    context.set(ckHideDuration, 0);
    interface = std::make_unique<VLHostInterface>(context, QStringList{packages.dataPath()});
    makeWidgets();
    makeActions();
    // A move to where the pointer was seen last, by the stage before, would not count as one.
    static int stages = 0;
    stages = (stages + 3) % 60;
    window.setGeometry(200 + stages, 100, 640, 420);
    if (!bringUp(&window))
        qFatal("The window did not come up");
    window.activateWindow();
    // Some window systems do without being asked, and cannot be asked.
    if (!QTest::qWaitFor([this] { return window.isActiveWindow(); }))
        qFatal("The window did not become active");
    pad->setFocus();
    QCoreApplication::processEvents();
    pad->focus.clear();
}

AccessStage::~AccessStage()
{
    interface.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void AccessStage::makeWidgets()
{
    auto* page = new QWidget;
    window.setCentralWidget(page);
    pad = new KeyPad(page);
    pad->setObjectName(u"pad"_s);
    pad->setGeometry(10, 10, 120, 40);
    open = new QPushButton(u"Open"_s, page);
    open->setObjectName(u"open"_s);
    open->setGeometry(200, 10, 120, 40);
    group = new QGroupBox(u"Group"_s, page);
    group->setObjectName(u"group"_s);
    group->setGeometry(10, 80, 180, 80);
    inner = new QLineEdit(group);
    inner->setGeometry(10, 30, 120, 30);
    tabs = new QTabBar(page);
    tabs->setObjectName(u"tabs"_s);
    tabs->setGeometry(250, 80, 240, 40);
    tabs->addTab(u"First"_s);
    tabs->addTab(u"Second"_s);
    tabs->setTabData(1, u"data"_s);
    table = new QTableWidget(3, 3, page);
    table->setObjectName(u"table"_s);
    table->setGeometry(10, 180, 400, 160);
    auto* cell = new QTableWidgetItem(u"cell"_s);
    cell->setData(KeyRole, u"cell"_s);
    table->setItem(0, 1, cell);
}

void AccessStage::makeActions()
{
    file = window.menuBar()->addMenu(u"&File"_s);
    file->setObjectName(u"file"_s);
    item = file->addAction(u"Item"_s);
    item->setObjectName(u"item"_s);
    file->addAction(u"Nameless"_s);
    for (const QKeyCombination key :
         {QKeyCombination(Qt::Key_Escape), QKeyCombination(Qt::Key_F6), Qt::SHIFT | Qt::Key_F1}) {
        auto* shortcut = new QShortcut(key, &window);
        QObject::connect(shortcut, &QShortcut::activated, &window, [this] { ++shortcuts; });
    }
}

VLWidget* AccessStage::tip() const
{
    VLWidget* popup = interface->manager()->widget();
    return popup && popup->isVisible() && popup->windowHandle()->isExposed() ? popup : nullptr;
}

QString AccessStage::shownKey() const
{
    VLWidget* popup = tip();
    const QQuickItem* scene = popup ? popup->view()->rootObject() : nullptr;
    return scene ? scene->property("shownKey").toString() : QString();
}

QString AccessStage::focusInTip() const
{
    VLWidget* popup = interface->manager()->widget();
    const QQuickItem* focused = popup ? popup->view()->contentItem()->scopedFocusItem() : nullptr;
    return focused ? focused->objectName() : QString();
}

QString AccessStage::acted() const
{
    VLWidget* popup = interface->manager()->widget();
    const QQuickItem* scene = popup ? popup->view()->rootObject() : nullptr;
    return scene ? scene->property("acted").toString().trimmed() : QString();
}

QRect AccessStage::globalRect(const QWidget* widget, const QRect& rect)
{
    return {widget->mapToGlobal(rect.topLeft()), rect.size()};
}

QRect AccessStage::globalRect(const QWidget* widget)
{
    return globalRect(widget, widget->rect());
}
