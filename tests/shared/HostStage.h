// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef HOSTSTAGE_H
#define HOSTSTAGE_H

#include "PackageBuilder.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>

#include <QMainWindow>
#include <QPointer>
#include <QPushButton>

#include <memory>

#include <VidletsHost/VLHostInterface.h>

/**
 * A host of one main window with a button "open", and the host kit with a package for it.
 *
 * The package "tips" has the keys "open" and "save", in English and in German; the scene is 120 by
 * 60 pixels, and has the title of its tip in "shownTitle".
 */
class HostStage
{
public:
    HostStage();
    ~HostStage();

    /// Shows the tip for @p key beside @p control, and waits until it is on the screen.
    Vidlets::VLWidget* showTip(const QString& key, QWidget* control);
    Vidlets::VLWidget* showTip(const QString& key = QStringLiteral("open"));
    /// Shows the tip for @p key and has its scene pin it.
    Vidlets::VLWidget* pin(const QString& key, QWidget* control);
    Vidlets::VLWidget* pin(const QString& key = QStringLiteral("open"));

    static QString titleShownBy(Vidlets::VLWidget* tip);

    PackageBuilder packages;
    VLContext context;
    std::unique_ptr<Vidlets::VLHostInterface> interface;
    std::unique_ptr<QMainWindow> window;
    /// A child of the window.
    QPointer<QPushButton> open;

private:
    Q_DISABLE_COPY_MOVE(HostStage)
};

#endif
