// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "BarePopup.h"

#include <QHBoxLayout>
#include <QQuickItem>

BarePopup::BarePopup()
    : m_view(new QQuickView)
{
    m_window.setWindowFlags(Qt::Tool | Qt::FramelessWindowHint);
    m_view->setFlags(Qt::FramelessWindowHint);
    auto* layout = new QHBoxLayout(&m_window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(QWidget::createWindowContainer(m_view, &m_window));
}

BarePopup::~BarePopup()
{
    m_view->setSource(QUrl());
}

void BarePopup::show(const QUrl& scene, const QPoint& position)
{
    m_view->setSource(QUrl());
    m_view->setSource(scene);
    m_window.setFixedSize(m_view->rootObject()->size().toSize());
    m_window.move(position);
    showLoaded();
}

void BarePopup::showLoaded()
{
    m_window.show();
    m_window.raise();
}

QWidget& BarePopup::window()
{
    return m_window;
}

const QWidget& BarePopup::window() const
{
    return m_window;
}

QQuickView* BarePopup::view() const
{
    return m_view;
}
