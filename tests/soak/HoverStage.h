// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef HOVERSTAGE_H
#define HOVERSTAGE_H

#include "ClipWriter.h"
#include "PackageBuilder.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLWidget.h>

#include <QList>
#include <QPushButton>
#include <QSize>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>

/// Waits for @p condition, with events running; ends the process where it does not come true.
void waitUntil(const std::function<bool()>& condition, const char* what);

/**
 * A host with 50 controls on the screen, of which every tenth has a tip with a clip.
 *
 * All tips have as many elements, attributes and characters, so that it makes no difference to
 * memory which one is up.
 */
class HoverStage
{
public:
    static constexpr int kControls = 50;
    static constexpr int kClipEvery = 10;
    static constexpr int kClipFrames = 10;
    static QSize clipSize();
    static bool hasClip(int hover);

    explicit HoverStage(bool safeguarded);

    /// Rests on the control whose turn it is, until its tip is on the screen and its clip decoded,
    /// and has the tip go again; each way to go has its turns, a tip that follows at once included.
    void hover(int number);
    /// Has the first tip come and go, and all that is due run: the state to compare.
    void rest();
    /// Runs all that is due.
    void settle();
    /// Rests on the control whose turn it is, reserves the popup and closes it.
    void pin(int number);

    QString clipPath() const;
    Vidlets::VLIndex& index();
    static QString keyOf(int number);
    /// How many tips have come so far, and how many of them with a clip.
    int shows() const;
    int clipShows() const;

private:
    void writePackage();
    void showTip(int number);
    void playClip();
    void click();
    void moveAway();
    void waitForUnmapping();
    Vidlets::VLWidget* popup() const;

    ClipWriter m_clips;
    PackageBuilder m_packages;
    QWidget m_window;
    QList<QPushButton*> m_controls;
    VLContext m_settings{nullptr};
    Vidlets::VLIndex m_index{nullptr, {}};
    std::unique_ptr<Vidlets::VLInterface> m_interface;
    Vidlets::VLManager* m_manager = nullptr;
    int m_shows = 0;
    int m_clipShows = 0;
    /// Keeps the event loop turning where nothing happens on the display.
    QTimer m_pulse;
};

#endif
