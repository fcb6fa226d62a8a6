// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "BadContentTest.h"

#include "ChildProcess.h"
#include "ObjectCensus.h"

#include <QFile>
#include <QLocale>
#include <QQuickItem>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

#include <algorithm>

#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

class Unprivileged
{
public:
    explicit Unprivileged(bool wanted)
        : m_active(wanted && geteuid() == 0)
    {
        constexpr uid_t kNobody = 65534;
        if (m_active && seteuid(kNobody) != 0)
            qFatal("The rights of root could not be given up");
    }
    ~Unprivileged()
    {
        if (m_active && seteuid(getuid()) != 0)
            qFatal("The rights of root could not be taken back");
    }

private:
    Q_DISABLE_COPY_MOVE(Unprivileged)

    bool m_active;
};

/// A directory for temporary files: a process that ends in the middle leaves its own behind, and
/// they go with this.
class Scratch
{
public:
    Scratch()
        : m_before(qgetenv("TMPDIR"))
    {
        qputenv("TMPDIR", QFile::encodeName(m_directory.path()));
    }
    ~Scratch()
    {
        if (m_before.isEmpty())
            qunsetenv("TMPDIR");
        else
            qputenv("TMPDIR", m_before);
    }

private:
    Q_DISABLE_COPY_MOVE(Scratch)

    QTemporaryDir m_directory;
    QByteArray m_before;
};

const BadCase& caseNamed(const BadCases& cases, const QString& name)
{
    const auto found = std::find_if(cases.cbegin(), cases.cend(), [&name](const BadCase& badCase) {
        return badCase.name == name;
    });
    if (found == cases.cend())
        qFatal("There is no case %s", qPrintable(name));
    return *found;
}

void checkEndOfProcess(const BadCase& badCase)
{
    const Scratch scratch;
    const ChildResult result = runInChildProcess(badCase.name);
    QVERIFY(result.finished);
    QVERIFY(result.crashed);
    QVERIFY2(result.standardOutput.startsWith("begin\n"), result.standardError.constData());
    QVERIFY(!result.standardOutput.contains("\nend\n"));
    QVERIFY2(result.standardError.contains("ASSERT"), result.standardError.constData());
}

void checkNotFound(BadPackage& package)
{
    QVERIFY(!package.show(badKey()));
    QVERIFY(!package.stage.popup()->isVisible());
}

/// Shows by the addresses alone that what was found has gone: nobody may look into it.
void checkStaleResult(BadPackage& package)
{
    const ObjectCensus census;
    VLXmlElement* root = nullptr;
    const VLXmlElement* element =
        package.stage.index.load(badKey(), package.controlFile(), QLocale(u"en_US"_s), root);
    QVERIFY(element);
    QVERIFY(root);
    QVERIFY(!census.isAlive(element));
    QVERIFY(!census.isAlive(root));
    QVERIFY(census.living<VLXmlElement>().isEmpty());
}

void checkShown(BadPackage& package, const BadCase& badCase)
{
    if (!badCase.warning.isEmpty())
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(badCase.warning));
    QVERIFY(package.show(badKey()));
    QVERIFY(package.stage.popup()->isVisible());
    QCOMPARE(package.stage.view()->content()->attribute(u"key"_s), badKey());
    if (badCase.outcome == BadCase::Outcome::ShownEmpty)
        QVERIFY(!package.stage.scene());
    else
        QCOMPARE(package.stage.scene()->property("shownKey").toString(), badKey());
    if (!badCase.message.isEmpty()) {
        const QStringList messages = package.stage.interface.messages(VLMessageDebug);
        QVERIFY2(!messages.filter(QRegularExpression(badCase.message)).isEmpty(),
                 qPrintable(messages.join(u'\n')));
    }
    if (badCase.examination) {
        const QString finding = badCase.examination(package);
        QVERIFY2(finding.isEmpty(), qPrintable(finding));
    }
}

void checkOutcome(BadPackage& package, const BadCase& badCase)
{
    switch (badCase.outcome) {
    case BadCase::Outcome::Shown:
    case BadCase::Outcome::ShownEmpty:
        checkShown(package, badCase);
        break;
    case BadCase::Outcome::NotFound:
        checkNotFound(package);
        break;
    case BadCase::Outcome::KeysEndProcess:
        QVERIFY(!package.show(badKey()));
        break;
    case BadCase::Outcome::Stale:
        checkStaleResult(package);
        break;
    case BadCase::Outcome::EndsProcess:
        break;
    }
}

/// The key of a good tip in another file of the bad package.
QString neighbourKey()
{
    return u"neighbour"_s;
}

void checkGuardedOutcome(BadPackage& package, const BadCase& badCase)
{
    BadCase guarded = badCase;
    if (badCase.isShownIfGuarded)
        guarded.outcome = BadCase::Outcome::Shown;
    else if (badCase.isRefused || badCase.endsProcess())
        guarded.outcome = BadCase::Outcome::NotFound;
    if (badCase.guardedExamination)
        guarded.examination = badCase.guardedExamination;
    checkOutcome(package, guarded);
}

/// One warning, however often the file is met.
void checkWarnings(BadPackage& package, const BadCase& badCase)
{
    package.stage.manager->keys();
    package.show(u"none"_s);
    package.stage.manager->keys();
    QStringList warnings = package.stage.interface.messages(VLMessageWarning);
    // The good file may have gone with the package.
    warnings.removeIf([](const QString& warning) { return warning.contains("/good.xml"_L1); });
    const QByteArray list = warnings.join(u'\n').toUtf8();
    QVERIFY2(warnings.size() == (badCase.guardedWarning.isEmpty() ? 0 : 1), list.constData());
    if (!warnings.isEmpty()) {
        const QRegularExpression pattern(badCase.guardedWarning);
        QVERIFY2(pattern.match(warnings.constFirst()).hasMatch(), list.constData());
    }
}

void checkNeighbour(BadPackage& package)
{
    VLXmlElement* root = nullptr;
    const VLXmlElement* neighbour = package.stage.index.load(
        neighbourKey(), package.path(u"Control/good.xml"_s), QLocale(u"en_US"_s), root);
    QVERIFY(neighbour);
    delete root;
}

void checkGoodTip(BadPackage& package)
{
    const QString key = u"open"_s;
    QVERIFY(package.show(key));
    QVERIFY(package.stage.popup()->isVisible());
    const QObject* scene = package.stage.scene();
    QVERIFY(scene);
    QCOMPARE(scene->property("shownKey").toString(), key);
    QCOMPARE(scene->property("shownLocation").toString(), package.stage.packageRoot);
    QTRY_COMPARE(package.stage.view()->size(), QSize(120, 80));
}

} // namespace

BadCase::BadCase(const QString& caseName)
    : name(caseName)
{
}

BadCase& BadCase::has(const Step& step)
{
    before += step;
    return *this;
}

BadCase& BadCase::afterTheScan(const Step& step)
{
    after += step;
    return *this;
}

BadCase& BadCase::forAnOrdinaryUser()
{
    isUnprivileged = true;
    return *this;
}

BadCase& BadCase::isShown()
{
    outcome = Outcome::Shown;
    return *this;
}

BadCase& BadCase::isShownEmpty()
{
    outcome = Outcome::ShownEmpty;
    return *this;
}

BadCase& BadCase::isNotFound()
{
    outcome = Outcome::NotFound;
    return *this;
}

BadCase& BadCase::isStale()
{
    outcome = Outcome::Stale;
    return *this;
}

BadCase& BadCase::endsTheLookup()
{
    outcome = Outcome::EndsProcess;
    return *this;
}

BadCase& BadCase::endsTheListOfKeys()
{
    outcome = Outcome::KeysEndProcess;
    return *this;
}

BadCase& BadCase::where(const Examination& newExamination)
{
    examination = newExamination;
    return *this;
}

BadCase& BadCase::tellsTheHost(const char* pattern)
{
    message = QString::fromLatin1(pattern);
    return *this;
}

BadCase& BadCase::warns(const char* pattern)
{
    warning = QString::fromLatin1(pattern);
    return *this;
}

BadCase& BadCase::whereGuarded(const Examination& newExamination)
{
    guardedExamination = newExamination;
    return *this;
}

BadCase& BadCase::isRefusedAt(int line)
{
    isRefused = true;
    guardedWarning = u"/Control/bad\\.xml:%1:\\d+: "_s.arg(line);
    return *this;
}

BadCase& BadCase::isGuardedShown()
{
    isShownIfGuarded = true;
    return *this;
}

BadCase& BadCase::isWarnedOf(const char* pattern)
{
    guardedWarning = QString::fromLatin1(pattern);
    return *this;
}

bool BadCase::endsProcess() const
{
    return outcome == Outcome::EndsProcess || outcome == Outcome::KeysEndProcess;
}

void BadCase::arrange(BadPackage& package) const
{
    for (const Step& step : before)
        step(package);
    package.stage.rescan();
    for (const Step& step : after)
        step(package);
}

int BadContentTest::runChild(const QString& name)
{
    const BadCases cases = allCases();
    const BadCase& badCase = caseNamed(cases, name);
    BadPackage package;
    badCase.arrange(package);
    QTextStream out(stdout);
    out << "begin" << Qt::endl;
    if (badCase.outcome == BadCase::Outcome::KeysEndProcess)
        package.stage.manager->keys();
    else
        package.show(badKey());
    out << "end" << Qt::endl;
    return EXIT_SUCCESS;
}

void BadContentTest::addRows(const BadCases& cases)
{
    QTest::addColumn<QString>("name");
    for (const BadCase& badCase : cases)
        QTest::addRow("%s", qPrintable(badCase.name)) << badCase.name;
}

void BadContentTest::runRow(const BadCases& cases)
{
    QFETCH(QString, name);
    const BadCase& badCase = caseNamed(cases, name);
    if (badCase.endsProcess())
        checkEndOfProcess(badCase);
    if (QTest::currentTestFailed())
        return;

    const Unprivileged rights(badCase.isUnprivileged);
    BadPackage package;
    // The process is to live on here, so the content that ends it stays away.
    if (badCase.outcome != BadCase::Outcome::EndsProcess)
        badCase.arrange(package);
    checkOutcome(package, badCase);
    if (!QTest::currentTestFailed())
        checkGoodTip(package);
}

void BadContentTest::runGuardedRow(const BadCases& cases)
{
    QFETCH(QString, name);
    const BadCase& badCase = caseNamed(cases, name);
    const Unprivileged rights(badCase.isUnprivileged);
    BadPackage package(true);
    package.write(u"Control/good.xml"_s, Content::fileWith("<vidlet key=\"neighbour\"/>"));
    badCase.arrange(package);
    checkGuardedOutcome(package, badCase);
    if (!QTest::currentTestFailed())
        checkWarnings(package, badCase);
    QFile neighbour(package.path(u"Control/good.xml"_s));
    if (!QTest::currentTestFailed() && neighbour.open(QIODevice::ReadOnly))
        checkNeighbour(package);
    if (!QTest::currentTestFailed())
        checkGoodTip(package);
}

QStringList BadContentTest::filesWithoutCase(const QString& folder, const BadCases& cases)
{
    QStringList names = brokenFileNames(folder);
    for (const BadCase& badCase : cases)
        names.removeAll(QString(badCase.name).replace(u' ', u'-'));
    return names;
}
