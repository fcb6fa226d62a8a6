// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef BAREPOPUP_H
#define BAREPOPUP_H

#include <QPoint>
#include <QQuickView>
#include <QUrl>
#include <QWidget>

/// What a popup is made of, and no more: a view in a window container.
class BarePopup
{
public:
    BarePopup();
    ~BarePopup();

    /// Shows @p scene, which is loaded anew, since that of a popup goes with its content.
    void show(const QUrl& scene, const QPoint& position);
    /// Shows the scene that is there.
    void showLoaded();

    QWidget& window();
    const QWidget& window() const;
    QQuickView* view() const;

private:
    Q_DISABLE_COPY_MOVE(BarePopup)

    QWidget m_window;
    QQuickView* m_view; ///< Owned by its container, and so by the window.
};

#endif
