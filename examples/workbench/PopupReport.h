// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_POPUPREPORT_H
#define WORKBENCH_POPUPREPORT_H

#include <QObject>
#include <QString>

namespace Workbench {

/**
 * Writes a file that tells a script which popup is up: a line "key window", with the number that
 * the window has in the window system, once the popup has painted a frame. The file is empty while
 * there is none.
 *
 * Install it on the application object.
 */
class PopupReport : public QObject
{
    Q_OBJECT

public:
    explicit PopupReport(const QString& file);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void write();

    QString m_file;
};

} // namespace Workbench

#endif
