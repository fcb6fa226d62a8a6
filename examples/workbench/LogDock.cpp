// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "LogDock.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QTime>

namespace Workbench {

namespace {

constexpr int kKeptLines = 2000;

} // namespace

LogDock::LogDock(QWidget* parent)
    : QDockWidget(tr("Messages"), parent)
    , m_lines(new QPlainTextEdit(this))
{
    setObjectName(QStringLiteral("log"));
    m_lines->setReadOnly(true);
    m_lines->setMaximumBlockCount(kKeptLines);
    m_lines->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_lines->setPlaceholderText(tr("Choose Settings > Messages to see more here."));
    setWidget(m_lines);
}

void LogDock::append(const QString& label, const QString& message)
{
    const QString time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz"));
    m_lines->appendPlainText(QStringLiteral("%1  %2  ").arg(time, label.leftJustified(11))
                             + message);
}

} // namespace Workbench

#include "moc_LogDock.cpp"
