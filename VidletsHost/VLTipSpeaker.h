// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLTIPSPEAKER_H
#define VLTIPSPEAKER_H

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

namespace Vidlets {

class VLAccess;
class VLManager;
class VLWidget;

/**
 * Has screen readers say the tip that is up: as the accessible description of its control, as an
 * announcement where Qt has those, and as a tooltip that can be walked.
 *
 * Internal to the host kit; the access owns it.
 */
class VLTipSpeaker final : public QObject
{
public:
    /// @p access is asked for what to say.
    VLTipSpeaker(VLAccess& access, VLManager* manager);
    ~VLTipSpeaker() override;

    void setEnabled(bool enabled);

private:
    Q_DISABLE_COPY_MOVE(VLTipSpeaker)

    void followTip();
    void speak(VLWidget* popup, QWidget* control, const QString& key);
    void describe(QWidget* control, const QString& text);
    void fallSilent();

    VLAccess& m_access;
    QPointer<VLManager> m_manager;
    bool m_enabled = true;
    bool m_isSpeaking = false;
    /// Of the tip that is spoken.
    QString m_key;
    QString m_text;
    /// What is described, and what it was described by before.
    QPointer<QWidget> m_control;
    QString m_oldDescription;
};

} // namespace Vidlets

#endif
