// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_HOVERFORWARDER_H
#define WORKBENCH_HOVERFORWARDER_H

#include <QObject>

class QHelpEvent;

namespace Vidlets {
class VLInterface;
}

namespace Workbench {

/**
 * Forwards the application's events, for a host that does not want the library to watch them.
 *
 * Install it on the application object.
 */
class HoverForwarder : public QObject
{
    Q_OBJECT

public:
    explicit HoverForwarder(Vidlets::VLInterface& vidlets);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    bool showTip(QObject* object, const QHelpEvent& event);

    Vidlets::VLInterface& m_vidlets;
};

} // namespace Workbench

#endif
