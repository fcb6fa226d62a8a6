// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ControlTitle.h"

#include <Vidlets/VLInterface.h>

#include <QApplication>
#include <QCursor>
#include <QEvent>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

constexpr int kIndentPx = 6;

} // namespace

ControlTitle::ControlTitle(QWidget* parent)
    : QLabel(parent)
{
    setIndent(kIndentPx);
    // A long title must not widen the window.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    // The pointer enters all widgets around a control before the control itself.
    m_settled.setSingleShot(true);
    m_settled.setInterval(0);
    connect(&m_settled, &QTimer::timeout, this, &ControlTitle::update);
}

void ControlTitle::attach(Vidlets::VLInterface& vidlets)
{
    m_vidlets = &vidlets;
    QApplication::instance()->installEventFilter(this);
}

bool ControlTitle::eventFilter(QObject* object, QEvent* event)
{
    const bool isNews = event->type() == QEvent::Enter || event->type() == QEvent::Leave;
    if (isNews && object->isWidgetType()) {
        m_settled.start();
    }
    return QLabel::eventFilter(object, event);
}

// The parts of a control, such as the field of a spin box, have no key of their own.
QString ControlTitle::keyUnderPointer() const
{
    QWidget* widget = QApplication::widgetAt(QCursor::pos());
    QString key;
    while (widget && key.isEmpty() && !widget->isWindow()) {
        key = m_vidlets->keyForObject(widget);
        widget = widget->parentWidget();
    }
    return key;
}

void ControlTitle::update()
{
    if (!m_vidlets) {
        return;
    }
    const QString key = keyUnderPointer();
    if (key == m_key) {
        return;
    }
    // Only now: unless the tip is up its file is read, and each reading leaves a little memory.
    m_key = key;
    setText(key.isEmpty() ? QString() : m_vidlets->vidletAttribute(key, u"title"_s, QString()));
}

} // namespace Workbench

#include "moc_ControlTitle.cpp"
