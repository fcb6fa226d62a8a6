// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLTIPDELAY_H
#define VLTIPDELAY_H

#include <QElapsedTimer>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QTimer>
#include <QWidget>

class QEvent;
class QHelpEvent;

namespace Vidlets {

class VLHostInterfacePrivate;

/**
 * Holds requests for the tips of widgets back where they come sooner than the user wants them. How
 * long Qt waits before it asks is a matter of the style, which belongs to the host.
 *
 * Internal to the host kit.
 */
class VLTipDelay final : public QObject
{
public:
    explicit VLTipDelay(const VLHostInterfacePrivate& record);

    /// Sees the events of the application.
    void watch(const QObject* object, const QEvent* event);
    /// Whether @p request to @p widget, for the tip of @p key, is to go no further now. It is sent
    /// once more when its time has come, should the pointer still rest.
    bool holdsBack(QWidget* widget, const QHelpEvent* request, const QString& key);

private:
    Q_DISABLE_COPY_MOVE(VLTipDelay)

    bool isTipFor(const QString& key) const;
    void send();

    const VLHostInterfacePrivate& m_record;
    /// Since the pointer was last seen to move.
    QElapsedTimer m_rest;
    QTimer m_timer;
    QPointer<QWidget> m_widget;
    QPoint m_position;
    QPoint m_globalPos;
    bool m_isSending = false;
};

} // namespace Vidlets

#endif
