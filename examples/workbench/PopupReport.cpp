// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PopupReport.h"

#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QApplication>
#include <QEvent>
#include <QSaveFile>

namespace Workbench {

namespace {

QString lineFor(Vidlets::VLWidget& popup)
{
    const Vidlets::VLXmlElement* content = popup.view()->content();
    if (!content) {
        return QString();
    }
    return QStringLiteral("%1 %2\n")
        .arg(content->attribute(QStringLiteral("key")))
        .arg(popup.winId());
}

} // namespace

PopupReport::PopupReport(const QString& file)
    : m_file(file)
{
    write();
}

bool PopupReport::eventFilter(QObject* object, QEvent* event)
{
    auto* popup = qobject_cast<Vidlets::VLWidget*>(object);
    if (popup && event->type() == QEvent::Show) {
        connect(popup->view(), &QQuickWindow::frameSwapped, this, &PopupReport::write,
                Qt::UniqueConnection);
    }
    if (popup && event->type() == QEvent::Hide) {
        // The popup counts as visible until the event is over.
        QMetaObject::invokeMethod(this, &PopupReport::write, Qt::QueuedConnection);
    }
    return QObject::eventFilter(object, event);
}

void PopupReport::write()
{
    QSaveFile file(m_file);
    if (!file.open(QIODevice::WriteOnly)) {
        qWarning("workbench: cannot write %ls", qUtf16Printable(m_file));
        return;
    }
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        auto* popup = qobject_cast<Vidlets::VLWidget*>(window);
        if (popup && popup->isVisible()) {
            file.write(lineFor(*popup).toUtf8());
        }
    }
    file.commit();
}

} // namespace Workbench

#include "moc_PopupReport.cpp"
