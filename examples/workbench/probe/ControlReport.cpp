// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ControlReport.h"

#include <QEvent>
#include <QSaveFile>
#include <QWidget>

#include <VidletsHost/VLHostInterface.h>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

// Moves come in bursts while a window manager places the window.
constexpr int kSettleMs = 100;

} // namespace

ControlReport::ControlReport(Vidlets::VLHostInterface& vidlets, QWidget& window,
                             const QString& file)
    : m_vidlets(vidlets)
    , m_window(window)
    , m_file(file)
{
    m_settled.setSingleShot(true);
    m_settled.setInterval(kSettleMs);
    connect(&m_settled, &QTimer::timeout, this, &ControlReport::write);
    window.installEventFilter(this);
}

bool ControlReport::eventFilter(QObject* object, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Show:
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::LayoutRequest:
        m_settled.start();
        break;
    default:
        break;
    }
    return QObject::eventFilter(object, event);
}

void ControlReport::write()
{
    QSaveFile file(m_file);
    if (!file.open(QIODevice::WriteOnly)) {
        qWarning("workbench: cannot write %ls", qUtf16Printable(m_file));
        return;
    }
    const QList<QWidget*> controls = m_window.findChildren<QWidget*>();
    for (QWidget* control : controls) {
        file.write(lineFor(*control).toUtf8());
    }
    file.commit();
}

QString ControlReport::lineFor(QWidget& control) const
{
    const QRect whole(control.mapToGlobal(QPoint()), control.size());
    QRect zone;
    const QString key = m_vidlets.keyAt(&control, whole.center(), &zone);
    // What is a part of another control counts as that.
    if (key.isEmpty() || zone != whole || control.visibleRegion().isEmpty()) {
        return QString();
    }
    const qreal ratio = control.devicePixelRatioF();
    const QPoint corner = (QPointF(control.mapToGlobal(QPoint(0, 0))) * ratio).toPoint();
    const QSize size = (QSizeF(control.size()) * ratio).toSize();
    return u"%1 %2 %3 %4 %5\n"_s.arg(key)
        .arg(corner.x())
        .arg(corner.y())
        .arg(size.width())
        .arg(size.height());
}

} // namespace Workbench

#include "moc_ControlReport.cpp"
