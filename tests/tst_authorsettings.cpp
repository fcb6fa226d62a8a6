// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <VidletsAuthor/AuthorSettings.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

/// The findings as "line", of a package with these settings.
QStringList linesOf(const QByteArray& content)
{
    PackageBuilder files;
    files.write(u"A.vidlets/.vidletscheck.toml"_s, content);
    AuthorFindings findings;
    AuthorSettings settings;
    settings.loadPackage(files.path(u"A.vidlets"_s), findings);
    QStringList lines;
    for (const AuthorFinding& finding : findings.all())
        lines.append(QString::number(finding.position.line));
    return lines;
}

} // namespace

class TestAuthorSettings : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void severity_isDefault_untilSet();
    void loadPackage_holdsForPackageAlone();
    void loadPackage_takesLimitOfClips();
    void loadPackage_reportsLine_whenBroken();
};

void TestAuthorSettings::severity_isDefault_untilSet()
{
    AuthorSettings settings;
    QString reason;
    QCOMPARE(settings.severity(u"xml-broken"_s, QString()), AuthorSeverity::Error);

    QVERIFY(settings.set(u"xml-broken=note"_s, reason));

    QCOMPARE(settings.severity(u"xml-broken"_s, u"any"_s), AuthorSeverity::Note);
    QVERIFY(!settings.set(u"xml-broken=loud"_s, reason));
    QVERIFY(!settings.set(u"xml-broken"_s, reason));
    QVERIFY(!settings.set(u"no-rule=note"_s, reason));
    QVERIFY(reason.contains("no-rule"_L1));
}

void TestAuthorSettings::loadPackage_holdsForPackageAlone()
{
    PackageBuilder files;
    files.write(u"A.vidlets/.vidletscheck.toml"_s, "[rules]\nxml-broken = \"note\"\n");
    AuthorFindings findings;
    AuthorSettings settings;
    settings.loadPackage(files.path(u"A.vidlets"_s), findings);

    QCOMPARE(settings.severity(u"xml-broken"_s, files.path(u"A.vidlets"_s)), AuthorSeverity::Note);
    QCOMPARE(settings.severity(u"xml-broken"_s, files.path(u"B.vidlets"_s)), AuthorSeverity::Error);
    QCOMPARE(findings.all().size(), 0);
}

void TestAuthorSettings::loadPackage_takesLimitOfClips()
{
    PackageBuilder files;
    files.write(u"A.vidlets/.vidletscheck.toml"_s, "[clip-memory]\nlimit = 1000\n");
    AuthorFindings findings;
    AuthorSettings settings;
    settings.loadPackage(files.path(u"A.vidlets"_s), findings);

    QCOMPARE(settings.clipMemoryLimitBytes(files.path(u"A.vidlets"_s)), 1000);
    QCOMPARE(settings.clipMemoryLimitBytes(files.path(u"B.vidlets"_s)), 256 * 1024 * 1024);
    QCOMPARE(findings.all().size(), 0);
}

void TestAuthorSettings::loadPackage_reportsLine_whenBroken()
{
    QCOMPARE(linesOf("[clip-memory]\nlimit = 0\nlimits = 1\n").join(u' '), u"2 3"_s);
    QCOMPARE(linesOf("[clip-memory]\nlimit = 1.5\n").join(u' '), u"2"_s);
    QCOMPARE(linesOf("clip-memory = 3\n").join(u' '), u"1"_s);
    QCOMPARE(
        linesOf("[rules]\nno-rule = \"off\"\nxml-broken = \"loud\"\nxml-depth = 3\n").join(u' '),
        u"2 3 4"_s);
    QCOMPARE(linesOf("\n[no-table]\n").join(u' '), u"2"_s);
    QCOMPARE(linesOf("[rules]\nreso\xef\xbb\xbfurce\n").join(u' '), u"2"_s);
    QCOMPARE(linesOf("# caf\xc3\xa9\n[rules]\n").size(), 0);
    QCOMPARE(linesOf("[[rules]]\n").join(u' '), u"1"_s);
    QCOMPARE(linesOf("\n[\n").join(u' '), u"2"_s);
    QCOMPARE(linesOf("\n[.rules]\n").join(u' '), u"2"_s);
    QCOMPARE(linesOf(QByteArray("[rules]\n\na = 3\0\0{\n", 17)).join(u' '), u"3"_s);
    QCOMPARE(linesOf("rules = 1\n").join(u' '), u"1"_s);
    QCOMPARE(linesOf("[rules]\n\nxml-broken = \n").join(u' '), u"3"_s);
    QCOMPARE(linesOf("[rules]\n\nxml-broken = \"off\" caf\xc3\xa9\n").join(u' '), u"3"_s);
    QCOMPARE(linesOf("[rules]\nxml-broken = \"caf\xc3\xa9\"\n").join(u' '), u"2"_s);
    QCOMPARE(linesOf("rules = { xml-broken = \"off\" } # caf\xc3\xa9\n").size(), 0);
    QCOMPARE(linesOf("[rules]\n\"caf\xc3\xa9\" = \"off\"\n").join(u' '), u"2"_s);
    QCOMPARE(linesOf("sour\xd1\xa0\t = [\n").join(u' '), u"1"_s);
    QCOMPARE(linesOf("\xef\xbb\xbf[rules]\nxml-broken = \"off\"\n").size(), 0);
    QCOMPARE(linesOf("[rules]\n\xff\n").join(u' '), u"2"_s);
    QCOMPARE(linesOf("a = " + QByteArray(100'000, '[')).size(), 1);
    QCOMPARE(linesOf(QByteArray()).size(), 0);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorSettings>(argc, argv);
}

#include "tst_authorsettings.moc"
