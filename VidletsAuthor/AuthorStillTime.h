// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORSTILLTIME_H
#define AUTHORSTILLTIME_H

#include <QAnimationDriver>
#include <QVariantAnimation>

namespace Vidlets {

/**
 * A clock for animations and for timers of QML that goes only when it is told to, so that a picture
 * of a scene does not depend on how fast the machine is.
 *
 * One at a time, on the user-interface thread. Animations go by it as long as it lives.
 */
class AuthorStillTime : public QAnimationDriver
{
    Q_OBJECT

public:
    AuthorStillTime();
    ~AuthorStillTime() override;

    /// Lets @p stepMs milliseconds pass at once.
    void pass(int stepMs);

    void advance() override;
    qint64 elapsed() const override;

private:
    Q_DISABLE_COPY_MOVE(AuthorStillTime)

    qint64 m_elapsedMs = 0;
    /// Timers of QML go by the clock of the machine while nothing else moves.
    QVariantAnimation m_motion;
};

} // namespace Vidlets

#endif
