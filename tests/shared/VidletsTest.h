// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VIDLETSTEST_H
#define VIDLETSTEST_H

#include <QApplication>
#include <QFile>
#include <QObject>
#include <QString>
#include <QTemporaryDir>
#include <QTest>

/**
 * The base of all test classes.
 *
 * A warning that a test has not announced with QTest::ignoreMessage() fails it, QML's warnings
 * included, and so does a top-level widget or window that a test leaves behind.
 */
class VidletsTest : public QObject
{
    Q_OBJECT

public:
    /**
     * A scenario that ends the process, for ChildProcess: a test program that is started with
     * "--child NAME" runs this instead of its tests.
     *
     * @return The exit code of the process, should it come to a regular end.
     */
    virtual int runChild(const QString& name);

private Q_SLOTS:
    void init();
    void cleanup();

protected:
    /// Runs the deferred deletions that are due, as the event loop would.
    static void runDeferredDeletions();
};

/// The main() of a test program.
template <typename Test> int runVidletsTest(int argc, char** argv)
{
    // What hosts keep from one start to the next would let one run depend on the one before.
    const QTemporaryDir cache;
    const QByteArray first = argc > 1 ? argv[1] : "";
    if (first != "--child")
        qputenv("XDG_CACHE_HOME", QFile::encodeName(cache.path()));
    QApplication application(argc, argv);
    Test test;
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() == 3 && arguments.at(1) == QStringLiteral("--child"))
        return test.runChild(arguments.at(2));
    return QTest::qExec(&test, argc, argv);
}

#endif
