// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "HoverForwarder.h"

#include <Vidlets/VLInterface.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>

namespace Workbench {

namespace {

// Tips that the user has kept are windows in their own right and stay.
void hidePopups()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        auto* popup = qobject_cast<Vidlets::VLWidget*>(window);
        if (popup && !popup->view()->reserved()) {
            popup->hide();
        }
    }
}

} // namespace

HoverForwarder::HoverForwarder(Vidlets::VLInterface& vidlets)
    : m_vidlets(vidlets)
{
}

bool HoverForwarder::eventFilter(QObject* object, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
        return m_vidlets.mouseButtonEventFilter(object, static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
        return m_vidlets.mouseMoveEventFilter(object, static_cast<QMouseEvent*>(event));
    case QEvent::ToolTip:
        return showTip(object, *static_cast<QHelpEvent*>(event));
    case QEvent::ApplicationDeactivate:
        hidePopups();
        return false;
    default:
        return false;
    }
}

bool HoverForwarder::showTip(QObject* object, const QHelpEvent& event)
{
    const QString key = m_vidlets.keyForObject(object);
    return m_vidlets.show(key, event.globalPos(), object);
}

} // namespace Workbench

#include "moc_HoverForwarder.cpp"
