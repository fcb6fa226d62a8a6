// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "SettingsMenu.h"

#include <Vidlets/VLContext.h>

#include <QActionGroup>

#include <VidletsHost/VLHostInterface.h>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

// What the library does while a setting has no value.
constexpr int kPresetStayMs = 3000;
constexpr int kPresetFadeInMs = 0;
constexpr int kPresetFadeOutMs = 300;
const QLatin1String kPresetLocale("en_US");

} // namespace

SettingsMenu::SettingsMenu(Vidlets::VLHostInterface& vidlets, QWidget* parent)
    : QMenu(tr("&Settings"), parent)
    , m_vidlets(vidlets)
{
    addSwitches();
    addSeparator();
    addLanguage();
    addPinnedTips();
    addTimes();
    addModifier();
    addMessageLevel();
}

void SettingsMenu::addSwitch(const QString& text, int key, const QVariant& on, const QVariant& off,
                             const QVariant& preset)
{
    QAction* action = addAction(text);
    action->setCheckable(true);
    action->setChecked(m_vidlets.context().get(key, preset) == on);
    connect(action, &QAction::toggled, this,
            [this, key, on, off](bool isOn) { m_vidlets.context().set(key, isOn ? on : off); });
}

void SettingsMenu::addChoices(const QString& title, int key, const QVariant& preset,
                              const QList<Choice>& choices)
{
    QMenu* menu = addMenu(title);
    auto* group = new QActionGroup(menu);
    const QVariant current = m_vidlets.context().get(key, preset);
    for (const Choice& choice : choices) {
        QAction* action = group->addAction(menu->addAction(choice.text));
        action->setCheckable(true);
        action->setChecked(choice.value == current);
        connect(action, &QAction::triggered, this,
                [this, key, value = choice.value] { m_vidlets.context().set(key, value); });
    }
}

void SettingsMenu::addSwitches()
{
    addSwitch(tr("&Rich tooltips"), Vidlets::ckDisabled, false, true, false);
    addSwitch(tr("&Simple tooltips"), Vidlets::ckSimpleTooltips, true, false, false);
    addSwitch(tr("&Fallback tip"), Vidlets::ckFallbackKey, u"workbench.fallback"_s, QString(),
              QString());
    addSwitch(tr("Open &links"), Vidlets::ckExternalLinksEnabled, true, false, true);
    addSwitch(tr("Open &documentation"), Vidlets::ckDocumentationEnabled, true, false, true);
}

// Each language in its own words: who has landed in the wrong one must find the way back.
void SettingsMenu::addLanguage()
{
    addChoices(tr("La&nguage"), Vidlets::ckLocale, kPresetLocale,
               {{u"&English"_s, u"en_US"_s},
                {u"&Deutsch"_s, u"de_DE"_s},
                {u"\u0627\u0644\u0639\u0631\u0628\u064a\u0629 (&A)"_s, u"ar_EG"_s}});
}

void SettingsMenu::addPinnedTips()
{
    QMenu* menu = addMenu(tr("&Pinned tips"));
    auto* group = new QActionGroup(menu);
    const auto addPlace = [this, menu, group](const QString& text, Qt::DockWidgetArea area) {
        QAction* action = group->addAction(menu->addAction(text));
        action->setCheckable(true);
        action->setChecked(m_vidlets.pinnedArea() == area);
        connect(action, &QAction::triggered, this, [this, area] { m_vidlets.setPinnedArea(area); });
    };
    addPlace(tr("In a &window"), Qt::NoDockWidgetArea);
    addPlace(tr("In the &dock"), Qt::LeftDockWidgetArea);
}

void SettingsMenu::addTimes()
{
    addChoices(tr("S&tay"), Vidlets::ckStayDuration, kPresetStayMs,
               {{tr("Half a second"), 500},
                {tr("One second"), 1000},
                {tr("Three seconds"), 3000},
                {tr("Ten seconds"), 10000},
                {tr("Until a click"), 0}});
    const QList<Choice> fades = {
        {tr("None"), 0}, {tr("150 ms"), 150}, {tr("300 ms"), 300}, {tr("One second"), 1000}};
    addChoices(tr("Fade &in"), Vidlets::ckShowDuration, kPresetFadeInMs, fades);
    addChoices(tr("Fade o&ut"), Vidlets::ckHideDuration, kPresetFadeOutMs, fades);
}

void SettingsMenu::addModifier()
{
    addChoices(tr("Required &key"), Vidlets::ckRequiredModifiers, 0,
               {{tr("None"), 0},
                {tr("Shift"), static_cast<int>(Qt::ShiftModifier)},
                {tr("Ctrl"), static_cast<int>(Qt::ControlModifier)}});
}

void SettingsMenu::addMessageLevel()
{
    addChoices(tr("&Messages"), Vidlets::ckMessageLevel,
               static_cast<int>(Vidlets::VLMessageWarning),
               {{tr("Errors"), static_cast<int>(Vidlets::VLMessageError)},
                {tr("Warnings"), static_cast<int>(Vidlets::VLMessageWarning)},
                {tr("Information"), static_cast<int>(Vidlets::VLMessageInformation)},
                {tr("Debug"), static_cast<int>(Vidlets::VLMessageDebug)}});
}

} // namespace Workbench

#include "moc_SettingsMenu.cpp"
