// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_POPUPREPORT_H
#define WORKBENCH_POPUPREPORT_H

#include <QByteArray>
#include <QObject>
#include <QString>

#include <optional>

namespace Workbench {

/**
 * Writes a file that tells a script which popups are up, once they have painted a frame:
 *
 *     tip KEY WINDOW LOCALE      the popup at the pointer
 *     window KEY WINDOW LOCALE   one that is pinned, as a window of its own
 *     dock KEY WINDOW LOCALE     one that is pinned in the dock
 *     STATE-clip KEY X Y W H     where its scene shows a clip
 *     STATE-pin KEY X Y W H TEXT where its scene has a pin, and what that is called
 *
 * STATE is one of the first three words. Windows have the numbers of the window system, places are
 * within the window, in pixels of the screen, and LOCALE is that of the content. The file is empty
 * while there is no popup.
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
    /// What the file holds. A clip paints many frames a second, most of them with no news.
    std::optional<QByteArray> m_written;
};

} // namespace Workbench

#endif
