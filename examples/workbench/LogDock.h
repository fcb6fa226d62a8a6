// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_LOGDOCK_H
#define WORKBENCH_LOGDOCK_H

#include <QDockWidget>

class QPlainTextEdit;

namespace Workbench {

/// What the library has to say, one line per message.
class LogDock : public QDockWidget
{
    Q_OBJECT

public:
    explicit LogDock(QWidget* parent = nullptr);

public Q_SLOTS:
    void append(const QString& label, const QString& message);

private:
    QPlainTextEdit* m_lines;
};

} // namespace Workbench

#endif
