// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef WORKBENCH_CONTROLTITLE_H
#define WORKBENCH_CONTROLTITLE_H

#include <QLabel>
#include <QPointer>
#include <QTimer>

namespace Vidlets {
class VLInterface;
}

namespace Workbench {

/// Shows the title of the tip for the control under the pointer, before there is a tip.
class ControlTitle : public QLabel
{
    Q_OBJECT

public:
    explicit ControlTitle(QWidget* parent = nullptr);

    /// Begins to follow the pointer.
    void attach(Vidlets::VLInterface& vidlets);

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QString keyUnderPointer() const;
    void update();

    QPointer<Vidlets::VLInterface> m_vidlets;
    QTimer m_settled;
    QString m_key;
};

} // namespace Workbench

#endif
