// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef POPUPSTAGE_H
#define POPUPSTAGE_H

#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QList>
#include <QMap>
#include <QPointer>
#include <QPropertyAnimation>
#include <QStringList>
#include <QTimer>
#include <QVariant>
#include <QWidget>

#include <functional>
#include <memory>

/// Shows @p window and waits until it is on the screen. Tries again where it does not come up: a
/// window manager that is still starting may miss a window. Gives whether it is there.
bool bringUp(QWidget* window);

/// What an index answers to a request.
struct IndexAnswer
{
    Vidlets::VLXmlElement* element = nullptr;
    Vidlets::VLXmlElement* root = nullptr;
    QString path;
    int depth = 1;
};

/// An index that writes down what it is asked, and can be given answers of the test's own.
class RecordingIndex : public Vidlets::VLIndex
{
public:
    explicit RecordingIndex(VLContext* context);
    /// Deletes the trees that it handed out and that nobody has deleted: the element on show goes
    /// with its popup, what is above it does not.
    ~RecordingIndex() override;

    Vidlets::VLXmlElement* retrieve(const QString& key, const QLocale& locale, QString& path,
                                    int& depth, Vidlets::VLXmlElement*& root) override;

    /// The requests in the form "key@locale".
    QStringList requests;
    /// Answers in place of the control files where it is set.
    std::function<IndexAnswer(const QString& key)> answer;

private:
    QList<QPointer<Vidlets::VLXmlElement>> m_trees;
};

/// A manager whose protected operations a test can call.
class OpenManager : public Vidlets::VLManager
{
public:
    using VLManager::eventFilter;
    using VLManager::initializeTooltipWindow;
    using VLManager::VLManager;
};

/**
 * A manager with all that it needs around it, and a control on the screen to ask for popups.
 *
 * There is one package "tips" with the keys "open" and "save", whose scene is 120 by 80 pixels. Its
 * root object tells in "shownKey", "shownShortcut" and "shownLocation" what it was given, starts in
 * the state "open", and counts in "resets" how often it left that for the empty one. The pointer
 * rests far from the control.
 */
class PopupStage
{
public:
    explicit PopupStage(const QMap<int, QVariant>& settings = {});
    ~PopupStage();

    /// Changes a setting that the manager reads.
    void set(int key, const QVariant& value);
    /// Has the manager find the control files written since.
    void rescan();
    /// Puts @p qml in place of the scene.
    void writeScene(const char* qml);

    /// A content element for VLWidget::showWithContent(), in the package "tips".
    static Vidlets::VLXmlElement* newContent(const QString& key);
    /// Shows new content with the key "open" for the control at (300, 300). Gives the content.
    Vidlets::VLXmlElement* showContent();

    /// Has the manager show its tip for @p key at pointer(). Gives the popup, which need not be on
    /// the screen yet.
    Vidlets::VLWidget* showTip(const QString& key, QObject* reference);
    /// The same for the control.
    Vidlets::VLWidget* showTip(const QString& key = QStringLiteral("open"));
    /// Shows the tip for @p key and waits until it is on the screen. Gives the popup.
    Vidlets::VLWidget* bringUpTip(const QString& key, QObject* reference);
    Vidlets::VLWidget* bringUpTip(const QString& key);
    /// Brings up the tip for @p key and detaches its popup, which goes with the stage unless it has
    /// gone before. Gives it.
    Vidlets::VLWidget* detach(const QString& key, QObject* reference);
    Vidlets::VLWidget* detach(const QString& key);

    /// The popup of the manager; made if need be.
    Vidlets::VLWidget* popup();
    Vidlets::VLView* view();
    /// The root object of the scene.
    QObject* scene();
    QTimer* timer();
    QPropertyAnimation* animation();
    /// Takes a running fade to its end.
    void finishFade();

    static QPoint farAway();
    /// Where tips are asked for, far from the edges of the screen.
    static QPoint pointer();

    PackageBuilder packages;
    QString packageRoot;
    VLContext context;
    RecordingIndex index;
    RecordingInterface interface;
    std::unique_ptr<OpenManager> manager;
    QWidget control;

private:
    Q_DISABLE_COPY_MOVE(PopupStage)

    /// The popups that were shown; the manager's own may be one of them.
    QList<QPointer<Vidlets::VLWidget>> m_shown;
};

#endif
