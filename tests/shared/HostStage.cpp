// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HostStage.h"

#include "PopupStage.h"
#include <Vidlets/VLManager.h>

#include <QCoreApplication>
#include <QEvent>
#include <QQuickItem>
#include <QTest>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr auto kScene = R"(import QtQuick

Rectangle {
    property string shownTitle: vidlet ? vidlet.attribute("title") : ""
    property string word: vidletView ? vidletView.translate("Word", "Scene") : ""

    width: 120
    height: 60
    color: "steelblue"
}
)";

constexpr auto kEnglish = R"(<vidlets locale="en_US">
  <vidlet key="open" title="Open"/>
  <vidlet key="save" title="Save"/>
</vidlets>
)";

constexpr auto kGerman = R"(<vidlets locale="de_DE">
  <vidlet key="open" title="Öffnen"/>
</vidlets>
)";

} // namespace

HostStage::HostStage()
{
    packages.write(u"tips.vidlets/ui/VidletUI.qml"_s, kScene);
    packages.writeControlFile(u"tips.vidlets"_s, u"en.xml"_s, kEnglish);
    packages.writeControlFile(u"tips.vidlets"_s, u"de.xml"_s, kGerman);
    context.set(ckStayDuration, 0);
    context.set(ckHideDuration, 0);
    interface = std::make_unique<VLHostInterface>(context, QStringList{packages.dataPath()});
    window = std::make_unique<QMainWindow>();
    window->setGeometry(200, 100, 500, 400);
    auto* page = new QWidget;
    window->setCentralWidget(page);
    open = new QPushButton(u"Open"_s, page);
    open->setObjectName(u"open"_s);
    open->setGeometry(10, 10, 120, 40);
    if (!bringUp(window.get()))
        qFatal("The window did not come up");
}

HostStage::~HostStage()
{
    interface.reset();
    window.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

VLWidget* HostStage::showTip(const QString& key, QWidget* control)
{
    const QPoint position = control->mapToGlobal(control->rect().center());
    if (!interface->show(key, position, control))
        qFatal("There is no tip");
    VLWidget* tip = interface->manager()->widget();
    if (!QTest::qWaitForWindowExposed(tip))
        qFatal("The tip did not come up");
    return tip;
}

VLWidget* HostStage::showTip(const QString& key)
{
    return showTip(key, open);
}

VLWidget* HostStage::pin(const QString& key, QWidget* control)
{
    VLWidget* tip = showTip(key, control);
    tip->view()->setReserved(true);
    return tip;
}

VLWidget* HostStage::pin(const QString& key)
{
    return pin(key, open);
}

QString HostStage::titleShownBy(VLWidget* tip)
{
    const QQuickItem* scene = tip->view()->rootObject();
    return scene ? scene->property("shownTitle").toString() : QString();
}
