// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_CONTROLREPORT_H
#define WORKBENCH_CONTROLREPORT_H

#include <QObject>
#include <QTimer>

class QWidget;

namespace Vidlets {
class VLHostInterface;
}

namespace Workbench {

/**
 * Writes a file that tells a script where to rest the pointer: a line "key x y width height" per
 * visible control with a key, in pixels of the screen. The file is written anew whenever the
 * window moves or changes its size.
 */
class ControlReport : public QObject
{
    Q_OBJECT

public:
    ControlReport(Vidlets::VLHostInterface& vidlets, QWidget& window, const QString& file);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void write();
    QString lineFor(QWidget& control) const;

    Vidlets::VLHostInterface& m_vidlets;
    QWidget& m_window;
    QString m_file;
    QTimer m_settled;
};

} // namespace Workbench

#endif
