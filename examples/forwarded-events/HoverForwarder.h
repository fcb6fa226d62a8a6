// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef HOVERFORWARDER_H
#define HOVERFORWARDER_H

#include <Vidlets/VLInterface.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>

/// Gives the library the events that it needs, from a filter of the host's own.
class HoverForwarder : public QObject
{
    Q_OBJECT

public:
    explicit HoverForwarder(Vidlets::VLInterface& vidlets)
        : m_vidlets(vidlets)
    {
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
            return m_vidlets.mouseButtonEventFilter(object, static_cast<QMouseEvent*>(event));
        case QEvent::MouseMove:
            return m_vidlets.mouseMoveEventFilter(object, static_cast<QMouseEvent*>(event));
        case QEvent::ToolTip: {
            const QString key = m_vidlets.keyForObject(object);
            return m_vidlets.show(key, static_cast<QHelpEvent*>(event)->globalPos(), object);
        }
        case QEvent::ApplicationDeactivate:
            hidePopups();
            return false;
        default:
            return false;
        }
    }

private:
    // Tips that the user has kept are windows in their own right and stay.
    static void hidePopups()
    {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows) {
            auto* popup = qobject_cast<Vidlets::VLWidget*>(window);
            if (popup && !popup->view()->reserved())
                popup->hide();
        }
    }

    Vidlets::VLInterface& m_vidlets;
};

#endif
