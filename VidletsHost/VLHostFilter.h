// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLHOSTFILTER_H
#define VLHOSTFILTER_H

#include <QObject>

class QEvent;
class QHelpEvent;

namespace Vidlets {

class VLHostInterfacePrivate;

/**
 * Watches the events of the application, and turns them into calls of the interface and of its
 * manager.
 *
 * Internal to the host kit. The interface owns it, and takes it down first.
 */
class VLHostFilter final : public QObject
{
public:
    explicit VLHostFilter(VLHostInterfacePrivate& record);
    ~VLHostFilter() override;

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    Q_DISABLE_COPY_MOVE(VLHostFilter)

    bool showTip(QObject* object, const QHelpEvent* event);

    VLHostInterfacePrivate& m_record;
};

} // namespace Vidlets

#endif
