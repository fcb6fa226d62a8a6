// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORTIPPAINTER_H
#define AUTHORTIPPAINTER_H

#include "AuthorLook.h"
#include "AuthorStillTime.h"
#include "AuthorTipHost.h"
#include "AuthorWatchdog.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QImage>
#include <QQmlError>

#include <memory>

class QQuickItem;

namespace Vidlets {

class VLVideoComponent;
class VLXmlElement;

/// A tip as it was drawn.
struct AuthorTipPicture
{
    /// Null where it failed.
    QImage image;
    QString title;
    /// Why it failed; null where it has not.
    QString failure;
    /// What was said on the way, by the library and by the QML engine.
    QStringList warnings;
    /// The paths of the clips that it has.
    QStringList clips;
};

/**
 * Draws tips as they are a few seconds after they have come up, always the same: animations and
 * timers go by a clock of their own, and clips stand at their first picture.
 *
 * Wants the application to run on the platform "offscreen" with the software renderer. One at a
 * time.
 */
class AuthorTipPainter
{
public:
    AuthorTipPainter(const AuthorTipPlaces& places, const AuthorLook& look);
    ~AuthorTipPainter();

    /// Draws the tip @p key of the package at the canonical path @p root.
    AuthorTipPicture draw(const QString& root, const QString& key);

private:
    Q_DISABLE_COPY_MOVE(AuthorTipPainter)

    void settle();
    void waitUntilLoaded();
    void layOut();
    QImage drawWhole();
    bool isLoading(QQuickItem* item);
    bool isClipLoading(VLVideoComponent* clip);
    void stopClip(VLVideoComponent* clip);
    void showFirstPictures(QQuickItem* item);
    QStringList clips(QQuickItem* item) const;
    void addClips(const VLXmlElement* element, QStringList& paths) const;
    VLView* view() const;

    AuthorStillTime m_time;
    QWidget m_control;
    std::unique_ptr<AuthorTipSession> m_session;
    QList<QQmlError> m_errors;
    /// Until when a clip without pictures may still get some. Compared only.
    QHash<const VLVideoComponent*, QDeadlineTimer> m_idleClips;
    std::unique_ptr<AuthorWatchdog> m_watchdog;
};

} // namespace Vidlets

#endif
