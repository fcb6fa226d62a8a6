// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORPREVIEWSTAGE_H
#define AUTHORPREVIEWSTAGE_H

#include "AuthorEditor.h"
#include "AuthorLook.h"
#include "AuthorTipHost.h"
#include "AuthorWatchdog.h"

#include <QElapsedTimer>
#include <QList>
#include <QMap>
#include <QPointF>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>

class QLabel;
class QListWidget;
class QQmlError;
class QQuickItem;
class QScrollArea;
class QToolButton;

namespace Vidlets {

/// What showing a tip has cost.
struct AuthorTipCost
{
    double lookupMs = 0.0;
    double loadMs = 0.0;
    /// From the request to the first picture on the screen; below 0 as long as there is none.
    double firstPictureMs = -1.0;
    /// Bytes of the pictures of all clips.
    qint64 clipBytes = 0;
};

/**
 * Shows one tip within a window, in the library's own popup, and again each time that something of
 * it changes. A control beside it brings the tip up as users meet it, below the resting pointer.
 */
class AuthorPreviewStage : public QWidget
{
    Q_OBJECT

public:
    explicit AuthorPreviewStage(QWidget* parent = nullptr);
    ~AuthorPreviewStage() override;

    /// Takes over where tips are looked for, and begins anew at the next renew().
    void setPlaces(const AuthorTipPlaces& places);
    /// Chooses the tip @p key of the package at the canonical path @p root; shown by renew().
    void setTip(const QString& root, const QString& key);
    /// Takes over how it looks; shown by renew().
    void setLook(const AuthorLook& look);
    /// Stands for the shortcut of the tip; shown by renew().
    void setShortcut(const QString& shortcut);
    /// Gives a text variable a value; shown by renew().
    void setVariable(const QString& name, const QString& value);
    /// Has the next renew() begin with a host that has read nothing yet.
    void forget();

    /// Shows the tip as it is by now. What is scrolled stays so.
    void renew();

    /// Returns what the tip has cost.
    AuthorTipCost cost() const;
    /// Returns what went wrong, as it is shown.
    QStringList problems() const;
    /// Returns the names of the text variables that the tip refers to.
    QStringList variables() const;
    /// Returns the scene on show, null where there is none.
    QQuickItem* scene() const;

Q_SIGNALS:
    /// What cost() gives has changed.
    void costChanged();
    /// The user wants to see this place.
    void placeActivated(const Vidlets::AuthorPlace& place);

private:
    Q_DISABLE_COPY_MOVE(AuthorPreviewStage)

    void begin();
    void showFirst();
    void showAgain();
    void dropScenes();
    void dropScene(VLWidget* popup);
    void adoptRoom(QWidget* room);
    void watchEngines();
    void breathe();
    void collectProblems();
    void addProblem(const QString& text);
    void addErrors(const QList<QQmlError>& errors);
    void pictureShown();
    void fitToScene();
    QList<QPointF> scrollPositions() const;
    void restoreScrollPositions() const;
    QList<QQuickItem*> flickables() const;
    VLView* view() const;

    AuthorTipPlaces m_places;
    AuthorLook m_look;
    QString m_root;
    QString m_key;
    QString m_shortcut;
    QMap<QString, QString> m_variables;

    AuthorWatchdog m_watchdog;
    /// As long as it fires, no script has been running for long.
    QTimer m_breath;
    QToolButton* m_control;
    QLabel* m_title;
    QListWidget* m_problems;
    QScrollArea* m_area;
    /// The next show begins with a new one.
    std::unique_ptr<AuthorTipSession> m_session;
    /// What the session was made with.
    AuthorLook m_sessionLook;
    QPointer<QWidget> m_room;
    QPointer<VLWidget> m_popup;
    QElapsedTimer m_sinceRequest;
    AuthorTipCost m_cost;
    QList<QPointF> m_scrollPositions;
};

} // namespace Vidlets

#endif
