// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Popups.h"

#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QApplication>

Vidlets::VLManager* vidletsManager()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (auto* popup = qobject_cast<Vidlets::VLWidget*>(window))
            return popup->manager();
    }
    return nullptr;
}

void connectScenesToSettings(Vidlets::VLInterface& vidlets)
{
    const auto tellScenes = [](int key) {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows) {
            if (auto* popup = qobject_cast<Vidlets::VLWidget*>(window))
                popup->view()->managerContextSettingDidChange(
                    static_cast<Vidlets::contextKey>(key));
        }
    };
    QObject::connect(&vidlets.context(), &VLContext::settingDidChange, &vidlets, tellScenes);
}

void deletePinnedTips()
{
    // Found first and deleted then: what lies in a popup goes with it, and is in the list as well.
    QList<Vidlets::VLWidget*> pinned;
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        auto* popup = qobject_cast<Vidlets::VLWidget*>(widget);
        if (popup && popup->view()->reserved())
            pinned.append(popup);
    }
    qDeleteAll(pinned);
}
