// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QDirIterator>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <array>

#include <VidletsAuthor/AuthorControlReader.h>
#include <VidletsAuthor/AuthorReport.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;
using Kind = AuthorControlReader::Kind;

namespace {

/// Places that xmllint refuses, by file.
using Refusals = QHash<QString, QSet<qint64>>;

QString schemaOf(Kind kind)
{
    return QStringLiteral(SCHEMAS)
        + (kind == Kind::ControlFile ? u"/control.xsd"_s : u"/keydata.xsd"_s);
}

/// What xmllint says of the files: of a file that is not well-formed the first line, of any other
/// each line that the schema does not allow.
Refusals refusedBy(Kind kind, const QStringList& files)
{
    QProcess xmllint;
    xmllint.start(u"xmllint"_s,
                  QStringList{u"--noout"_s, u"--nonet"_s, u"--schema"_s, schemaOf(kind)} + files);
    if (!xmllint.waitForFinished())
        qFatal("xmllint: %s", qPrintable(xmllint.errorString()));
    static const QRegularExpression place(
        u"^(/[^:\\n]+):(\\d+): (parser|namespace|element|I/O)?.*"_s,
        QRegularExpression::MultilineOption);
    Refusals refusals;
    QSet<QString> broken;
    QRegularExpressionMatchIterator it =
        place.globalMatch(QString::fromUtf8(xmllint.readAllStandardError()));
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        const QString file = match.captured(1);
        if (match.captured(3) == "namespace"_L1 || broken.contains(file))
            continue;
        if (match.captured(3) == "parser"_L1) {
            if (!match.captured(0).contains("parser error"_L1))
                continue;
            broken.insert(file);
        }
        refusals[file].insert(match.captured(2).toLongLong());
    }
    return refusals;
}

QList<AuthorFinding> findingsIn(Kind kind, const QByteArray& bytes)
{
    AuthorFindings findings;
    AuthorControlReader(kind, u"file"_s, bytes, findings).read();
    return findings.all();
}

/// For a failure: the lines that are missing among the findings in a file.
QByteArray told(const QSet<qint64>& lines, const QList<AuthorFinding>& findings,
                const QByteArray& content)
{
    QByteArray text;
    for (const qint64 line : lines)
        text += "missing: " + QByteArray::number(line) + '\n';
    return text + AuthorReport::text(findings) + content.left(1000);
}

QByteArray controlFile()
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<!-- A comment -->\n"
           "<vidlets locale=\"en_US\" search=\"Other\">\n"
           "  <vidlet key=\"tool.pen\" title=\"Pen\" shortcut=\"P\">\n"
           "    <p>Draws freehand, just as you move. &amp; more.</p>\n"
           "    <![CDATA[ <b>x</b> ]]>\n"
           "    <clip source=\"pen.mp4\"/>\n"
           "  </vidlet>\n"
           "\n"
           "  <vidlet\n"
           "      key=\"tool.line\"\n"
           "      title=\"Line\"\n"
           "      ui=\"ui/Line.qml\">\n"
           "    <p>Draws\n"
           "    a line.</p>\n"
           "    <?note for later?>\n"
           "  </vidlet>\n"
           "  <vidlet key=\"tool.lines\"/>\n"
           "  <group><p>Beside the tips.</p></group>\n"
           "</vidlets>\n";
}

QByteArray keyData()
{
    return "<vidletkeys>\n"
           "  <key name=\"tool.pen\" title=\"Pen\"/>\n"
           "  <key\n"
           "    name=\"tool.line\"\n"
           "    title=\"Line\">\n"
           "    <more>of it</more>\n"
           "  </key>\n"
           "  <key name=\"tool.lines\">&lt;&#65;</key>\n"
           "</vidletkeys>\n";
}

/// One slip of the hand, or two.
QByteArray damaged(QByteArray bytes, QRandomGenerator& random)
{
    constexpr std::array<const char*, 6> words{
        "<vidlet key=\"tool.pen\"/>", "<vidlet>", "key=", "</p>", "xmlns=\"a\"", "<!--"};
    const QByteArray characters("<>&\"'/=- \n\x01\xff;:ax!?\0]", 21);
    const int slips = random.bounded(3) == 0 ? 2 : 1;
    for (int i = 0; i < slips; ++i) {
        const qsizetype at = random.bounded(static_cast<int>(bytes.size()));
        const char character = characters.at(random.bounded(static_cast<int>(characters.size())));
        switch (random.bounded(5)) {
        case 0:
            bytes.remove(at, 1);
            break;
        case 1:
            bytes.insert(at, character);
            break;
        case 2:
            bytes[at] = character;
            break;
        case 3:
            bytes.remove(at, random.bounded(1, 20));
            break;
        default:
            bytes.insert(at, words.at(static_cast<std::size_t>(random.bounded(6))));
            break;
        }
    }
    return bytes;
}

} // namespace

class TestAuthorSchemas : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void schema_takesWhatCheckTakes_data();
    void schema_takesWhatCheckTakes();
    void check_findsWhatXmllintRefuses_data();
    void check_findsWhatXmllintRefuses();
    void check_findsWhatXmllintRefuses_inKnownCases_data();
    void check_findsWhatXmllintRefuses_inKnownCases();
    void check_opensNoOtherFile();
    void check_staysSmall_whenEntitiesGrow();
};

void TestAuthorSchemas::schema_takesWhatCheckTakes_data()
{
    QTest::addColumn<QString>("directory");

    QTest::newRow("template") << QStringLiteral(TEMPLATE);
    QTest::newRow("examples") << QStringLiteral(EXAMPLES);
}

void TestAuthorSchemas::schema_takesWhatCheckTakes()
{
    QFETCH(const QString, directory);
    QStringList files;
    QDirIterator it(directory, {u"*.xml"_s}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        if (file.contains("/Control/"_L1))
            files.append(file);
    }
    QVERIFY(!files.isEmpty());

    QCOMPARE(refusedBy(Kind::ControlFile, files).keys(), QStringList());
}

void TestAuthorSchemas::check_findsWhatXmllintRefuses_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QByteArray>("whole");

    QTest::newRow("control file") << Kind::ControlFile << controlFile();
    QTest::newRow("key data") << Kind::KeyData << keyData();
}

void TestAuthorSchemas::check_findsWhatXmllintRefuses()
{
    QFETCH(const Kind, kind);
    QFETCH(const QByteArray, whole);
    constexpr int kFiles = 600;
    QRandomGenerator random(7);
    PackageBuilder files;
    QHash<QString, QByteArray> contents;
    for (int i = 0; i < kFiles; ++i) {
        const QByteArray content = i == 0 ? whole : damaged(whole, random);
        contents.insert(files.write(u"f%1.xml"_s.arg(i), content), content);
    }
    const Refusals refusals = refusedBy(kind, contents.keys());
    QVERIFY(refusals.size() > kFiles / 2);
    QVERIFY(!refusals.contains(files.path(u"f0.xml"_s)));

    for (auto it = contents.cbegin(); it != contents.cend(); ++it) {
        const QList<AuthorFinding> findings = findingsIn(kind, it.value());
        QSet<qint64> lines = refusals.value(it.key());
        for (const AuthorFinding& finding : findings)
            lines.remove(finding.position.line);
        QVERIFY2(lines.isEmpty(), told(lines, findings, it.value()).constData());
    }
}

void TestAuthorSchemas::check_findsWhatXmllintRefuses_inKnownCases_data()
{
    QTest::addColumn<QByteArray>("content");

    const auto tip = [](const QByteArray& inner) {
        return "<vidlets>\n<vidlet key=\"a\">\n" + inner + "\n</vidlet>\n</vidlets>\n";
    };
    QTest::newRow("no content") << QByteArray();
    QTest::newRow("white space alone") << QByteArray("\n\n \n");
    QTest::newRow("comment left open") << tip("<!-- \n\n");
    QTest::newRow("CDATA left open") << tip("<![CDATA[ \n\n");
    QTest::newRow("string left open") << tip("<p a=\"\n\n");
    QTest::newRow("ampersand at the end of a line") << tip("a & \n b");
    QTest::newRow("unknown entity") << tip("\n&nbsp;");
    QTest::newRow("NUL") << tip(QByteArray("\n\0", 2));
    QTest::newRow("declaration") << QByteArray("<?xml version='1.0' encodng='utf-8'?>\n") + tip("");
    QTest::newRow("unknown encoding")
        << QByteArray("\n<?xml version='1.0' encoding='none'?>\n") + tip("");
    QTest::newRow("unknown encoding in the right place")
        << QByteArray("<?xml version='1.0' encoding='none'?>\n") + tip("");
    QTest::newRow("wrong byte") << tip("\n\xe4");
    QTest::newRow("wrong byte behind a slip") << tip("<p>\n</q>\n\xe4");
    QTest::newRow("slip behind a wrong byte") << tip("\xe4\n\n<p>\n</q>\n");
    QTest::newRow("deep") << tip(QByteArray("<a>\n").repeated(300)
                                 + QByteArray("</a>\n").repeated(300));
    QTest::newRow("second root") << tip("") + "\n<vidlets/>";
    QTest::newRow("foreign root, in several lines") << QByteArray("<tips\n a='b'\n/>");
    QTest::newRow("namespace") << QByteArray("<vidlets\n xmlns='urn:a'\n/>");
    QTest::newRow("prefix") << QByteArray("<x:vidlets\n xmlns:x='urn:a'\n/>");
    QTest::newRow("missing key in several lines")
        << QByteArray("<vidlets>\n<vidlet\n\n/></vidlets>");
    QTest::newRow("key twice in several lines")
        << QByteArray("<vidlets>\n<vidlet key='a'/><vidlet\n key='a'\n/></vidlets>");
    QTest::newRow("missing key, nested")
        << QByteArray("<vidlets>\n<group>\n<vidlet\n/></group></vidlets>");
    QTest::newRow("undeclared prefix") << tip("<x:p/>\n<q>");
    QTest::newRow("attribute twice") << tip("\n<p a='1'\n a='2'/>");
    QTest::newRow("entity with a slip")
        << "<!DOCTYPE vidlets [<!ENTITY e '<p>'>]>\n" + tip("\n&e;");
    QTest::newRow("entity within itself")
        << "<!DOCTYPE vidlets [\n<!ENTITY e '&f;'>\n<!ENTITY f '&e;'>]>\n" + tip("\n&e;");
    QTest::newRow("wide characters") << QByteArray::fromHex("fffe3c00610000") + tip("");
}

void TestAuthorSchemas::check_findsWhatXmllintRefuses_inKnownCases()
{
    QFETCH(const QByteArray, content);
    PackageBuilder files;
    const QString file = files.write(u"file.xml"_s, content);
    QSet<qint64> lines = refusedBy(Kind::ControlFile, {file}).value(file);
    QVERIFY(!lines.isEmpty());

    const QList<AuthorFinding> findings = findingsIn(Kind::ControlFile, content);

    for (const AuthorFinding& finding : findings)
        lines.remove(finding.position.line);
    QVERIFY2(lines.isEmpty(), told(lines, findings, content).constData());
}

/// A pipe that nobody writes to would keep it waiting.
void TestAuthorSchemas::check_opensNoOtherFile()
{
    PackageBuilder files;
    files.write(u"directory/file"_s, {});
    const QByteArray pipe = QFile::encodeName(files.path(u"directory/pipe"_s));
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);

    for (const QByteArray& document :
         {"<!DOCTYPE vidlets SYSTEM '" + pipe + "'>\n<vidlets/>",
          "<!DOCTYPE vidlets [<!ENTITY e SYSTEM '" + pipe + "'>]>\n<vidlets>&e;</vidlets>",
          "<!DOCTYPE vidlets [<!ENTITY % e SYSTEM '" + pipe + "'> %e;]>\n<vidlets/>"})
        findingsIn(Kind::ControlFile, document);
}

void TestAuthorSchemas::check_staysSmall_whenEntitiesGrow()
{
    QByteArray document = "<!DOCTYPE vidlets [\n<!ENTITY e0 'laugh'>\n";
    constexpr int kLevels = 30;
    for (int i = 1; i < kLevels; ++i) {
        const QByteArray inner = "&e" + QByteArray::number(i - 1) + ";";
        document += "<!ENTITY e" + QByteArray::number(i) + " '" + inner.repeated(10) + "'>\n";
    }
    document += "]>\n<vidlets>&e29;<p a='&e29;'/></vidlets>";

    QVERIFY(!findingsIn(Kind::ControlFile, document).isEmpty());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorSchemas>(argc, argv);
}

#include "tst_authorschemas.moc"
