// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <QEvent>
#include <QRegularExpression>
#include <QWidget>
#include <QWindow>

#include <algorithm>

using namespace Qt::StringLiterals;

int VidletsTest::runChild(const QString& name)
{
    qCritical("There is no child scenario %s", qPrintable(name));
    return EXIT_FAILURE;
}

void VidletsTest::init()
{
    // The platform plugin "offscreen" says what it cannot do at each show of a popup.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support ).*"_s));
}

void VidletsTest::cleanup()
{
    runDeferredDeletions();
    // Menus and tooltips of Qt's own may go a turn of the event loop later.
    QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty());
    QTRY_VERIFY(QGuiApplication::allWindows().isEmpty());
}

void VidletsTest::runDeferredDeletions()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
