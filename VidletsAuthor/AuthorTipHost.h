// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORTIPHOST_H
#define AUTHORTIPHOST_H

#include "AuthorDrafts.h"
#include "AuthorTipIndex.h"
#include <Vidlets/VLContext.h>

#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <VidletsHost/VLHostInterface.h>

class QQmlError;

namespace Vidlets {

class VLView;

/// What there is to be looked at.
struct AuthorTipPlaces
{
    /// The directories with packages.
    QStringList dataPaths;
    /// The canonical paths of the packages whose tips are shown.
    QStringList roots;
};

/**
 * The host in which authors see their tips: its one control asks for the tip that the index has
 * been told of, and what goes wrong is kept for the author.
 *
 * All on the user-interface thread, with a QApplication.
 */
class AuthorTipHost : public VLHostInterface
{
    Q_OBJECT

public:
    /// @p index stays the caller's. @p control, which may be null, is the only thing that gets tips
    /// by hovering.
    AuthorTipHost(VLContext& context, const AuthorTipPlaces& places, AuthorTipIndex* index,
                  QWidget* control);
    ~AuthorTipHost() override;

    /// Has the tip come up at @p position, beside the control. Returns whether there is one.
    bool showTip(const QPoint& position);

    /// Returns the warnings that have come since the last call, each once.
    QStringList takeWarnings();

    /// Stands for the shortcut of the tip; an empty one leaves what the content says.
    void setShortcut(const QString& shortcut);
    /// Has texts translated by files that are not released yet, where they are newer.
    void setDrafting(bool on);
    /// Brings the tip up within @p room, a window that nobody sees yet and that the caller puts
    /// where it belongs. The scene does not learn of it. Returns the popup, which goes with the
    /// room; null where there is no tip.
    VLWidget* showTipIn(QWidget* room);

    QString keyAt(QObject* object, const QPoint& globalPos, QRect* zone) override;
    QWidget* createWindow() override;
    void handleMessage(VLMessageType type, const QString& message) override;
    QString shortCutForObject(const QString& key, QObject* object,
                              const QString& shortcut) override;
    QString translateString(const QString& text, const QString& context) override;

private:
    Q_DISABLE_COPY_MOVE(AuthorTipHost)

    QString draftFor(const QString& text, const QString& context);

    QPointer<QWidget> m_control;
    QPointer<QWidget> m_room;
    /// The one in the room.
    QPointer<VLWidget> m_popup;
    AuthorDrafts m_drafts;
    bool m_isDrafting = false;
    QString m_shortcut;
    QStringList m_warnings;
};

/// A host with what it needs to live, for one set of packages and one look.
class AuthorTipSession
{
public:
    /// Makes a host with every safeguard turned on. Settings are @p settings, where they say
    /// something. @p control stays the caller's.
    AuthorTipSession(const AuthorTipPlaces& places, const VLContext& settings, QWidget* control);
    ~AuthorTipSession();

    AuthorTipIndex& index();
    AuthorTipHost& host();

private:
    Q_DISABLE_COPY_MOVE(AuthorTipSession)

    // In this order: the host needs both to its end.
    VLContext m_context;
    AuthorTipIndex m_index;
    AuthorTipHost m_host;
};

/// Returns the error as authors know it from compilers: file, line, column, what is wrong.
QString describe(const QQmlError& error);

/// Returns why @p view shows nothing although it has a tip; null where it shows something.
QString failureOf(const VLView* view);

} // namespace Vidlets

#endif
