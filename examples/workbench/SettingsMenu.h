// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_SETTINGSMENU_H
#define WORKBENCH_SETTINGSMENU_H

#include <QList>
#include <QMenu>
#include <QVariant>

namespace Vidlets {
class VLHostInterface;
}

namespace Workbench {

/// Changes the library's settings while it runs. Each takes effect at the next tip.
class SettingsMenu : public QMenu
{
    Q_OBJECT

public:
    SettingsMenu(Vidlets::VLHostInterface& vidlets, QWidget* parent);

private:
    struct Choice
    {
        QString text;
        QVariant value;
    };

    void addSwitch(const QString& text, int key, const QVariant& on, const QVariant& off,
                   const QVariant& preset);
    void addChoices(const QString& title, int key, const QVariant& preset,
                    const QList<Choice>& choices);
    void addSwitches();
    void addLanguage();
    void addPinnedTips();
    void addTimes();
    void addModifier();
    void addMessageLevel();

    Vidlets::VLHostInterface& m_vidlets;
};

} // namespace Workbench

#endif
