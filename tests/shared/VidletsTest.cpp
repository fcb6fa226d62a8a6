// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QWidget>
#include <QWindow>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Why the running test makes no sense with safeguards on; empty where it does, or where they are
/// off.
QByteArray safeguardException()
{
    const QString path = qEnvironmentVariable("VIDLETS_SAFEGUARD_EXCEPTIONS");
    if (path.isEmpty())
        return QByteArray();
    QFile list(path);
    if (!list.open(QIODevice::ReadOnly))
        return QByteArray();
    const QByteArray program =
        QFileInfo(QCoreApplication::applicationFilePath()).fileName().toUtf8();
    const QByteArray test = program + ' ' + QTest::currentTestFunction() + ' ';
    while (!list.atEnd()) {
        const QByteArray line = list.readLine().trimmed();
        if (line.startsWith(test))
            return line.mid(test.size());
    }
    return QByteArray();
}

/// Once a dock has found its place Qt keeps a window that stands for the desktop.
bool isAnyWindowLeft()
{
    const QWindowList windows = QGuiApplication::allWindows();
    return std::any_of(windows.cbegin(), windows.cend(),
                       [](const QWindow* window) { return window->type() != Qt::Desktop; });
}

} // namespace

int VidletsTest::runChild(const QString& name)
{
    qCritical("There is no child scenario %s", qPrintable(name));
    return EXIT_FAILURE;
}

void VidletsTest::init()
{
    const QByteArray exception = safeguardException();
    if (!exception.isEmpty()) {
        QTest::qSkip(exception.constData(), __FILE__, __LINE__);
        return;
    }
    // The platform plugin "offscreen" says what it cannot do at each show of a popup. With any
    // other one the user would see it.
    const bool isOffscreen = QGuiApplication::platformName() == "offscreen"_L1;
    QTest::failOnWarning(
        QRegularExpression(isOffscreen ? u"^(?!This plugin does not support ).*"_s : u".*"_s));
}

void VidletsTest::cleanup()
{
    runDeferredDeletions();
    // Menus and tooltips of Qt's own may go a turn of the event loop later.
    QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty());
    QTRY_VERIFY(!isAnyWindowLeft());
}

void VidletsTest::runDeferredDeletions()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
