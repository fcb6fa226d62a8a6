// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QFile>
#include <QFileInfo>

#include <VidletsAuthor/AuthorCheck.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

QList<AuthorFinding> checked(const QStringList& paths)
{
    AuthorCheck check;
    QString reason;
    for (const QString& path : paths) {
        if (!check.add(path, reason))
            qWarning().noquote() << reason;
    }
    return check.run();
}

/// The findings of one rule as "file:line".
QStringList places(const QList<AuthorFinding>& findings, const QString& rule)
{
    QStringList result;
    for (const AuthorFinding& finding : findings) {
        if (finding.rule == rule)
            result.append(
                u"%1:%2"_s.arg(QFileInfo(finding.file).fileName()).arg(finding.position.line));
    }
    return result;
}

} // namespace

class TestAuthorCheck : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void add_isFalse_whenThereIsNothing();
    void run_isInOrderOfPathAndLine();
    void set_goesBeforeSettingsOfPackage();
    void run_comesToEnd_whenFilesAreNasty();
    void run_comesToEnd_whenKeyDataIsFifo();
    void locales_areWantedOfPackage();
    void suppression_holdsForRulesOfSeveralFiles();
};

void TestAuthorCheck::add_isFalse_whenThereIsNothing()
{
    AuthorCheck check;
    QString reason;

    QVERIFY(!check.add(u"/nowhere/at/all"_s, reason));
    QVERIFY(!reason.isEmpty());
    QVERIFY(!check.add(QString(), reason));
    QVERIFY(!check.add(u"/dev/null"_s, reason));
}

void TestAuthorCheck::run_isInOrderOfPathAndLine()
{
    PackageBuilder files;
    files.writeControlFile(u"B.vidlets"_s, u"b.xml"_s, "<vidlets><vidlet/></vidlets>");
    files.writeControlFile(u"A.vidlets"_s, u"b.xml"_s,
                           "<vidlets>\n<vidlet/>\n\n<vidlet/></vidlets>");

    const QStringList expected{u"b.xml:2"_s, u"b.xml:4"_s, u"b.xml:1"_s};
    QCOMPARE(places(checked({files.dataPath()}), u"key-missing"_s), expected);
}

void TestAuthorCheck::set_goesBeforeSettingsOfPackage()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s, "<vidlets><vidlet/></vidlets>");
    files.writeControlFile(u"B.vidlets"_s, u"b.xml"_s, "<vidlets><vidlet/></vidlets>");
    files.write(u"A.vidlets/.vidletscheck.toml"_s, "[rules]\nkey-missing = \"off\"\n");
    QCOMPARE(places(checked({files.dataPath()}), u"key-missing"_s), QStringList{u"b.xml:1"_s});

    AuthorCheck check;
    QString reason;
    QVERIFY(check.add(files.dataPath(), reason));
    QVERIFY(check.set(u"key-missing=note"_s, reason));

    const QList<AuthorFinding> findings = check.run();
    QCOMPARE(places(findings, u"key-missing"_s).size(), 2);
    for (const AuthorFinding& finding : findings)
        QVERIFY(finding.rule != "key-missing"_L1 || finding.severity == AuthorSeverity::Note);
}

void TestAuthorCheck::run_comesToEnd_whenFilesAreNasty()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);
    const QByteArray control = QFile::encodeName(files.path(u"A.vidlets/Control/"_s));
    QCOMPARE(::mkfifo((control + "fifo.xml").constData(), 0600), 0);
    QCOMPARE(::symlink("loop.xml", (control + "loop.xml").constData()), 0);
    QCOMPARE(::symlink("/dev/zero", (control + "zero.xml").constData()), 0);
    QCOMPARE(::symlink("..", (control + "up").constData()), 0);
    const int handle = ::open((control + "caf\xe9.xml").constData(), O_CREAT | O_WRONLY, 0600);
    QVERIFY(handle >= 0);
    ::close(handle);
    QFile huge(files.path(u"A.vidlets/Control/huge.xml"_s));
    QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(qint64(100) * 1024 * 1024 * 1024));

    const QStringList ignored = places(checked({files.dataPath()}), u"file-ignored"_s);
    // QTemporaryDir would leave it behind.
    QCOMPARE(::unlink((control + "caf\xe9.xml").constData()), 0);

    QCOMPARE(ignored.size(), 6);
    QVERIFY(ignored.contains(u"huge.xml:0"_s));
}

void TestAuthorCheck::run_comesToEnd_whenKeyDataIsFifo()
{
    PackageBuilder files;
    files.writeTip(u"A.vidlets"_s, u"a.xml"_s, u"a"_s);
    const QByteArray fifo = QFile::encodeName(files.path(u"A.vidlets/.vidletscheck.toml"_s));
    QCOMPARE(::mkfifo(fifo.constData(), 0600), 0);

    QCOMPARE(places(checked({files.dataPath()}), u"settings-broken"_s),
             QStringList{u".vidletscheck.toml:0"_s});
}

void TestAuthorCheck::locales_areWantedOfPackage()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets locale=\"en_US\"><vidlet key=\"a\"/></vidlets>");
    AuthorCheck check;
    QString reason;
    QVERIFY(check.add(files.dataPath(), reason));
    check.setLocales({u"de_DE"_s});

    const QList<AuthorFinding> findings = check.run();

    QCOMPARE(places(findings, u"locale-gap"_s), QStringList{u"a.xml:1"_s});
    QVERIFY(findings.constFirst().message.contains("de_DE"_L1));
}

void TestAuthorCheck::suppression_holdsForRulesOfSeveralFiles()
{
    PackageBuilder files;
    files.writeControlFile(u"A.vidlets"_s, u"a.xml"_s,
                           "<vidlets>\n<!-- vidlets-check: off resource-missing -->\n"
                           "<vidlet key=\"a\"><p s=\"a.png\"/></vidlet>\n"
                           "<vidlet key=\"b\"><p s=\"b.png\"/></vidlet>\n</vidlets>");

    QCOMPARE(places(checked({files.dataPath()}), u"resource-missing"_s), QStringList{u"a.xml:4"_s});
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorCheck>(argc, argv);
}

#include "tst_authorcheck.moc"
