// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "LogDock.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QTime>

using namespace Qt::StringLiterals;

namespace Workbench {

namespace {

constexpr int kKeptLines = 2000;

} // namespace

LogDock::LogDock(QWidget* parent)
    : QDockWidget(tr("Messages"), parent)
    , m_lines(new QPlainTextEdit(this))
{
    setObjectName(u"log"_s);
    m_lines->setReadOnly(true);
    m_lines->setMaximumBlockCount(kKeptLines);
    m_lines->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_lines->setPlaceholderText(tr("Choose Settings > Messages to see more here."));
    setWidget(m_lines);
}

void LogDock::append(const QString& label, const QString& message)
{
    const QString time = QTime::currentTime().toString(u"HH:mm:ss.zzz"_s);
    m_lines->appendPlainText(u"%1  %2  "_s.arg(time, label.leftJustified(11)) + message);
}

} // namespace Workbench

#include "moc_LogDock.cpp"
