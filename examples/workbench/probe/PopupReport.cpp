// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PopupReport.h"

#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QApplication>
#include <QEvent>
#include <QQuickItem>
#include <QSaveFile>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

// What a delegate makes is no QObject child of the scene, so the search goes by items.
template <typename Predicate>
const QQuickItem* findItem(const QQuickItem* item, const Predicate& isWanted)
{
    if (!item->isVisible()) {
        return nullptr;
    }
    if (isWanted(item)) {
        return item;
    }
    const QList<QQuickItem*> children = item->childItems();
    for (const QQuickItem* child : children) {
        if (const QQuickItem* found = findItem(child, isWanted)) {
            return found;
        }
    }
    return nullptr;
}

bool isClip(const QQuickItem* item)
{
    return qobject_cast<const Vidlets::VLVideoComponent*>(item);
}

bool isPin(const QQuickItem* item)
{
    return item->objectName() == "pin"_L1 && item->isEnabled();
}

QString placeOf(const QQuickItem& item, qreal ratio)
{
    const QRectF place = item.mapRectToScene(item.boundingRect());
    const QRect pixels = QRectF(place.topLeft() * ratio, place.size() * ratio).toRect();
    return u"%1 %2 %3 %4"_s.arg(pixels.x())
        .arg(pixels.y())
        .arg(pixels.width())
        .arg(pixels.height());
}

QString stateOf(Vidlets::VLWidget& popup)
{
    if (!popup.view()->reserved()) {
        return u"tip"_s;
    }
    return popup.isWindow() ? u"window"_s : u"dock"_s;
}

// A popup in a dock shares its window with all else in there. The widget itself may still tell the
// number of the window that it had before its flags were changed.
WId windowOf(Vidlets::VLWidget& popup)
{
    const bool hasWindow = popup.isWindow() && popup.windowHandle();
    return hasWindow ? popup.windowHandle()->winId() : popup.view()->winId();
}

QString localeOf(const Vidlets::VLXmlElement& content)
{
    const auto* file = qobject_cast<const Vidlets::VLXmlElement*>(content.parent());
    return file ? file->attribute(u"locale"_s) : QString();
}

QString linesFor(Vidlets::VLWidget& popup)
{
    const Vidlets::VLXmlElement* content = popup.view()->content();
    const QQuickItem* scene = popup.view()->rootObject();
    if (!content || !scene) {
        return QString();
    }
    const QString key = content->attribute(u"key"_s);
    const QString state = stateOf(popup);
    QString lines = u"%1 %2 %3 %4\n"_s.arg(state, key).arg(windowOf(popup)).arg(localeOf(*content));
    const qreal ratio = popup.view()->devicePixelRatio();
    if (const QQuickItem* clip = findItem(scene, isClip)) {
        lines += u"%1-clip %2 %3\n"_s.arg(state, key, placeOf(*clip, ratio));
    }
    if (const QQuickItem* pin = findItem(scene, isPin)) {
        lines += u"%1-pin %2 %3 %4\n"_s.arg(state, key, placeOf(*pin, ratio),
                                            pin->property("label").toString());
    }
    return lines;
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
    QByteArray lines;
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget* widget : widgets) {
        auto* popup = qobject_cast<Vidlets::VLWidget*>(widget);
        if (popup && popup->isVisible()) {
            lines += linesFor(*popup).toUtf8();
        }
    }
    if (lines == m_written) {
        return;
    }
    QSaveFile file(m_file);
    if (!file.open(QIODevice::WriteOnly) || file.write(lines) < 0 || !file.commit()) {
        qWarning("workbench: cannot write %ls", qUtf16Printable(m_file));
        return;
    }
    m_written = lines;
}

} // namespace Workbench

#include "moc_PopupReport.cpp"
