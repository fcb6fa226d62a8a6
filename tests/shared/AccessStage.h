// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef ACCESSSTAGE_H
#define ACCESSSTAGE_H

#include "PackageBuilder.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLWidget.h>

#include <QAction>
#include <QGroupBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QPushButton>
#include <QRect>
#include <QStringList>
#include <QTabBar>
#include <QTableWidget>
#include <QWidget>

#include <memory>

#include <VidletsHost/VLAccess.h>
#include <VidletsHost/VLHostInterface.h>

/// A widget that takes each key, and notes what becomes of it.
class KeyPad : public QWidget
{
public:
    explicit KeyPad(QWidget* parent);

    /// "+NAME" for each press, "-NAME" for each release, modifiers left out.
    QStringList keys;
    /// "in" and "out", with the focus.
    QStringList focus;

protected:
    bool event(QEvent* event) override;
};

/**
 * A host of one window with controls of all kinds for the keyboard, and the host kit.
 *
 * The keys "pad", "open", "group", "cell", "table", "tabs.0", "data", "file", "item", "dialog" have
 * tips. Their scene has a link, a button and a player, in this order, each of which says in the
 * property "acted" of the root that it was used; it has no room for more than 160 by 90 pixels.
 */
class AccessStage
{
public:
    AccessStage();
    ~AccessStage();

    /// The tip that is up, or null.
    Vidlets::VLWidget* tip() const;
    /// The key that the tip on the screen shows; empty where none is up.
    QString shownKey() const;
    /// The name of the item of the scene that has the focus; empty where none has.
    QString focusInTip() const;
    /// The items that were used.
    QString acted() const;

    static QRect globalRect(const QWidget* widget, const QRect& rect);
    static QRect globalRect(const QWidget* widget);

    PackageBuilder packages;
    VLContext context;
    std::unique_ptr<Vidlets::VLHostInterface> interface;
    QMainWindow window;
    KeyPad* pad = nullptr;
    QPushButton* open = nullptr;
    QGroupBox* group = nullptr;
    /// Without a name, in the group.
    QLineEdit* inner = nullptr;
    QTableWidget* table = nullptr;
    QTabBar* tabs = nullptr;
    QMenu* file = nullptr;
    QAction* item = nullptr;
    /// How often shortcuts of the window with Esc, F6 and Shift+F1 came.
    int shortcuts = 0;

private:
    Q_DISABLE_COPY_MOVE(AccessStage)

    void makeWidgets();
    void makeActions();
};

#endif
