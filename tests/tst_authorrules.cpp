// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VidletsTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <iterator>

#include <VidletsAuthor/AuthorCheck.h>
#include <VidletsAuthor/AuthorReport.h>
#include <VidletsAuthor/AuthorRules.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

/// A part of a rule's page as it is read by people, laid into a directory.
class Example
{
public:
    Example(const QString& page, const QString& heading)
    {
        const qsizetype begin = page.indexOf(u"\n## %1\n"_s.arg(heading));
        if (begin < 0)
            return;
        const qsizetype end = page.indexOf("\n## "_L1, begin + 1);
        const QString part = page.mid(begin, end < 0 ? -1 : end - begin);
        static const QRegularExpression block(u"(?:`([^`\\n]+)`:\\n\\n)?```(\\w+)\\n(.*?)\\n?```"_s,
                                              QRegularExpression::DotMatchesEverythingOption);
        QRegularExpressionMatchIterator it = block.globalMatch(part);
        while (it.hasNext()) {
            const QRegularExpressionMatch match = it.next();
            m_isWhole = lay(match.captured(1), match.captured(2), match.captured(3) + u'\n');
            if (!m_isWhole)
                return;
        }
        static const QRegularExpression command(u"Checked by `vidlets check ([^`]+)`"_s);
        const QRegularExpressionMatch match = command.match(part);
        m_paths = match.hasMatch() ? match.captured(1).split(u' ') : QStringList{u"."_s};
    }
    bool isWhole() const
    {
        return m_isWhole;
    }
    QList<AuthorFinding> findings() const
    {
        AuthorCheck check;
        QString reason;
        for (const QString& path : m_paths) {
            if (!check.add(QDir(m_directory.path()).filePath(path), reason))
                qWarning().noquote() << reason;
        }
        return check.run();
    }

private:
    bool lay(const QString& name, const QString& language, const QString& content) const
    {
        if (language == "sh"_L1) {
            QProcess shell;
            shell.setWorkingDirectory(m_directory.path());
            // Readers have the program installed.
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert(u"PATH"_s,
                               QFileInfo(QStringLiteral(PROGRAM)).path() + u':'
                                   + environment.value(u"PATH"_s));
            shell.setProcessEnvironment(environment);
            shell.start(u"bash"_s, {u"-ec"_s, content});
            return shell.waitForFinished() && shell.exitCode() == 0;
        }
        const QString path = m_directory.filePath(name);
        QFile file(path);
        return !name.isEmpty() && QDir().mkpath(QFileInfo(path).path())
            && file.open(QIODevice::WriteOnly) && file.write(content.toUtf8()) > 0;
    }

    QTemporaryDir m_directory;
    QStringList m_paths;
    bool m_isWhole = false;
};

bool hasRule(const QList<AuthorFinding>& findings, const QString& rule)
{
    return std::any_of(findings.cbegin(), findings.cend(),
                       [&rule](const AuthorFinding& finding) { return finding.rule == rule; });
}

} // namespace

class TestAuthorRules : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void all_isInOrder();
    void find_isNull_whenThereIsNoSuchRule();
    void page_isNull_whenThereIsNoSuchRule();
    void page_tellsSummaryAndSeverity_data();
    void page_tellsSummaryAndSeverity();
    void index_listsEachRule();
    void wrongExample_isFound_data();
    void wrongExample_isFound();
    void rightExample_isFine_data();
    void rightExample_isFine();

private:
    static void addRules();
};

void TestAuthorRules::addRules()
{
    QTest::addColumn<QString>("rule");

    for (const AuthorRule& rule : AuthorRules::all())
        QTest::newRow(rule.id.data()) << QString(rule.id);
}

void TestAuthorRules::all_isInOrder()
{
    QStringList names;
    for (const AuthorRule& rule : AuthorRules::all())
        names.append(rule.id);
    QStringList sorted = names;
    sorted.sort();
    sorted.removeDuplicates();

    QCOMPARE(names, sorted);
}

void TestAuthorRules::find_isNull_whenThereIsNoSuchRule()
{
    QVERIFY(AuthorRules::find(u"xml-broken"));
    QVERIFY(!AuthorRules::find(u"xml-brokem"));
    QVERIFY(!AuthorRules::find(u""));
}

void TestAuthorRules::page_isNull_whenThereIsNoSuchRule()
{
    QVERIFY(AuthorRules::page(u"README"_s).isNull());
    QVERIFY(AuthorRules::page(u"../xml-broken"_s).isNull());
}

void TestAuthorRules::page_tellsSummaryAndSeverity_data()
{
    addRules();
}

void TestAuthorRules::page_tellsSummaryAndSeverity()
{
    QFETCH(const QString, rule);
    const AuthorRule* known = AuthorRules::find(rule);
    QVERIFY(known);

    const QString page = AuthorRules::page(rule);

    QVERIFY(page.contains(u"\n# %1\n"_s.arg(rule)));
    const QString summary =
        u"Finds %1. Default severity: %2.\n"_s.arg(known->summary, severityName(known->severity));
    QVERIFY2(page.contains(summary), qPrintable(summary));
}

void TestAuthorRules::index_listsEachRule()
{
    QFile index(QStringLiteral(RULES "/README.md"));
    QVERIFY(index.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(index.readAll()).split(u'\n');
    QStringList listed;
    std::copy_if(lines.cbegin(), lines.cend(), std::back_inserter(listed),
                 [](const QString& line) { return line.startsWith("| ["_L1); });
    QStringList expected;
    for (const AuthorRule& rule : AuthorRules::all())
        expected.append(
            u"| [%1](%1.md) | %2 | %3 |"_s.arg(rule.id, severityName(rule.severity), rule.summary));

    QCOMPARE(listed, expected);
}

void TestAuthorRules::wrongExample_isFound_data()
{
    addRules();
}

void TestAuthorRules::wrongExample_isFound()
{
    QFETCH(const QString, rule);
    const Example example(AuthorRules::page(rule), u"Wrong"_s);
    QVERIFY(example.isWhole());

    const QList<AuthorFinding> findings = example.findings();

    QVERIFY2(hasRule(findings, rule), AuthorReport::text(findings).constData());
}

void TestAuthorRules::rightExample_isFine_data()
{
    addRules();
}

void TestAuthorRules::rightExample_isFine()
{
    QFETCH(const QString, rule);
    const Example example(AuthorRules::page(rule), u"Right"_s);
    QVERIFY(example.isWhole());

    const QList<AuthorFinding> findings = example.findings();

    QVERIFY2(!hasRule(findings, rule), AuthorReport::text(findings).constData());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorRules>(argc, argv);
}

#include "tst_authorrules.moc"
