// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "TreeText.h"
#include "VidletsTest.h"
#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLXmlElement.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringEncoder>

#include <VidletsHost/VLKeyTableRange.h>
#include <VidletsHost/VLKeyTableReader.h>
#include <VidletsHost/VLKeyTableScanner.h>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

using Kind = VLKeyTableRowKind;
using State = VLKeyTableState;

KeyTableRange::Source sourceOf(const QString& path, const VLKeyTableFile& file)
{
    return {path, file.stamp, file.unit, file.headLength, file.rootTag};
}

const VLKeyTableRow* rowOf(const VLKeyTableFile& file, const QString& key)
{
    for (const VLKeyTableRow& row : file.rows) {
        if (row.key == key && row.kind != Kind::Nested)
            return &row;
    }
    return nullptr;
}

QStringList keysOf(const VLKeyTableFile& file, Kind kind)
{
    QStringList keys;
    for (const VLKeyTableRow& row : file.rows) {
        if (row.kind == kind)
            keys.append(row.key);
    }
    return keys;
}

QByteArray inEncoding(const QString& text, QStringConverter::Encoding encoding, bool withMark)
{
    QStringEncoder encoder(
        encoding, withMark ? QStringConverter::Flag::WriteBom : QStringConverter::Flag::Default);
    return encoder(text);
}

} // namespace

class TestVLKeyTableReader : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void read_givesRowsInOrderOfFile();
    void read_givesBytesOfTip_data();
    void read_givesBytesOfTip();
    void read_sharesOutTips_whenFileTakesManyPieces();
    void read_hidesKey_whenItStandsTwice();
    void read_countsNestedRoots();
    void read_judgesFile_data();
    void read_judgesFile();
    void read_refusesWhatIsNoRegularFile();
    void read_passesOverAbsentFile();
    void read_survivesCutAnywhere();
    void read_listsKeys_whenAskedTo();
    void read_takesDeepNesting();
    void range_givesSameTreeAsWholeFile_data();
    void range_givesSameTreeAsWholeFile();
    void range_tellsOfChange();
    void scanner_givesSameChildren_howeverBytesAreCut();

private:
    QString write(const QByteArray& content)
    {
        return m_files->writeControlFile(u"P.vidlets"_s, u"a.xml"_s, content);
    }
    VLKeyTableFile read(const QByteArray& content)
    {
        return VLKeyTableReader(write(content)).read();
    }

    std::unique_ptr<PackageBuilder> m_files = std::make_unique<PackageBuilder>();
};

void TestVLKeyTableReader::read_givesRowsInOrderOfFile()
{
    const VLKeyTableFile file =
        read("<vidlets locale='de' search='X'>\n"
             " <other key='o'/><vidlet key='b'><vidlet key='in'/></vidlet>\n"
             " <vidlet key='a'/><x:vidlet xmlns:x='u' key='p'/>\n"
             " <vidlet/></vidlets>\n");
    QCOMPARE(file.state, State::Whole);
    QCOMPARE(file.locale, u"de"_s);
    QCOMPARE(file.rootTag, u"vidlets"_s);
    QCOMPARE(keysOf(file, Kind::Tip), QStringList({u"b"_s, u"a"_s, QString()}));
    QVERIFY(file.problem.text.isNull());
    QVERIFY(file.stamp != VLFileStamp());
}

void TestVLKeyTableReader::read_givesBytesOfTip_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("tip");

    const QByteArray tip = "<vidlet key=\"k\" a='>'>x<b/>y</vidlet>";
    QTest::newRow("plain") << "<vidlets>" + tip + "</vidlets>" << tip;
    QTest::newRow("comment before")
        << "<!-- <vidlets> --><vidlets><!--<vidlet key='k'>-->" + tip + "</vidlets>" << tip;
    QTest::newRow("instruction") << "<?x <a> ' ?><vidlets><?y <b> ?>" + tip + "</vidlets>" << tip;
    QTest::newRow("character data")
        << "<vidlets><![CDATA[<vidlet>]] ]]>" + tip + "</vidlets>" << tip;
    QTest::newRow("line ends") << "<vidlets>\r\n\r\n" + tip + "\r\n</vidlets>\r\n" << tip;
    QTest::newRow("mark") << "\xef\xbb\xbf<vidlets>" + tip + "</vidlets>" << tip;
    QTest::newRow("wide letters") << QByteArray(
                                         "<vidlets a='\xc3\xa4\xf0\x9f\x98\x80'>\xe2\x82\xac")
            + tip + "</vidlets>" << tip;
    QTest::newRow("document type")
        << "<!DOCTYPE vidlets [<!-- ]> ' <a> --><?p ]> ?><!ENTITY e ']>'>"
           "<!ATTLIST vidlet z CDATA \">\">]>\n<vidlets>&e;"
            + tip + "</vidlets>"
        << tip;
    QTest::newRow("Latin-1") << "<?xml version='1.0' encoding='ISO-8859-1'?><vidlets a='\xe4'>"
            + tip
            + "</vidlets>" << tip;
    QTest::newRow("empty tag") << QByteArray("<vidlets><vidlet key='k'/></vidlets>")
                               << QByteArray("<vidlet key='k'/>");
    QTest::newRow("blanks in tags")
        << QByteArray("<vidlets \n><vidlet\n key='k'\n></vidlet \n></vidlets >")
        << QByteArray("<vidlet\n key='k'\n></vidlet \n>");
    QTest::newRow("slash before value")
        << QByteArray("<vidlets><vidlet key='k' a='/'><b/></vidlet></vidlets>")
        << QByteArray("<vidlet key='k' a='/'><b/></vidlet>");
    for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        const QString text =
            u"<vidlets a='\u4e3c\u3c00'>%1</vidlets>"_s.arg(QString::fromUtf8(tip));
        for (const bool withMark : {false, true}) {
            QTest::addRow("words %d %d", int(encoding), int(withMark))
                << inEncoding(text, encoding, withMark)
                << inEncoding(QString::fromUtf8(tip), encoding, false);
        }
    }
}

void TestVLKeyTableReader::read_givesBytesOfTip()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QByteArray, tip);
    const VLKeyTableFile file = read(content);
    QCOMPARE(file.problem.text, QString());
    const VLKeyTableRow* row = rowOf(file, u"k"_s);
    QVERIFY(row);
    QCOMPARE(content.mid(row->start, row->length), tip);
    VLKeyTableChecksum checksum;
    checksum.add(content.constData(), file.headLength);
    checksum.add(tip.constData(), tip.size());
    QCOMPARE(row->checksum, checksum.value());
}

void TestVLKeyTableReader::read_sharesOutTips_whenFileTakesManyPieces()
{
    QByteArray content = "<vidlets>";
    QList<QPair<qint64, qint64>> places;
    constexpr int kTips = 3000;
    for (int i = 0; i < kTips; ++i) {
        content += "\n<!-- <x> " + QByteArray(i % 7, 'c') + " -->";
        const qint64 start = content.size();
        content += "<vidlet key='k" + QByteArray::number(i) + "'>\xc3\xa4" + QByteArray(i % 13, '.')
            + "</vidlet>";
        places.append({start, content.size() - start});
    }
    content += "</vidlets>";
    const VLKeyTableFile file = read(content);
    QCOMPARE(file.rows.size(), kTips);
    for (int i = 0; i < kTips; ++i) {
        QCOMPARE(file.rows.at(i).key, u"k%1"_s.arg(i));
        QCOMPARE(file.rows.at(i).start, places.at(i).first);
        QCOMPARE(file.rows.at(i).length, places.at(i).second);
    }
}

void TestVLKeyTableReader::read_hidesKey_whenItStandsTwice()
{
    const VLKeyTableFile file =
        read("<vidlets><vidlet key='a'/><vidlet key='b'/><vidlet key='a'/></vidlets>");
    QCOMPARE(keysOf(file, Kind::Tip), QStringList(u"b"_s));
    QCOMPARE(keysOf(file, Kind::Hidden), QStringList(u"a"_s));
}

void TestVLKeyTableReader::read_countsNestedRoots()
{
    const VLKeyTableFile one =
        read("<vidlets><vidlet key='a'/><vidlets><vidlet key='b'/></vidlets></vidlets>");
    QCOMPARE(keysOf(one, Kind::Nested).size(), 1);
    QCOMPARE(keysOf(one, Kind::Hidden), QStringList(u"a"_s));
    QCOMPARE(keysOf(one, Kind::Tip), QStringList());
    const VLKeyTableFile two = read("<vidlets><vidlet key='a'/><vidlets/><vidlets/></vidlets>");
    QVERIFY(two.rows.isEmpty());
    QCOMPARE(two.state, State::Whole);
}

void TestVLKeyTableReader::read_judgesFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("state");
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");

    const auto row = [](const char* name, const QByteArray& content, State state,
                        const QStringList& keys, int line, int column) {
        QTest::newRow(name) << content << int(state) << keys << line << column;
    };
    const QStringList a{u"a"_s};
    row("empty", "", State::Broken, {}, 1, 0);
    row("blank", "  \n", State::Broken, {}, 1, 0);
    row("no markup", "text", State::Broken, {}, 1, 1);
    row("behind root", "<vidlets><vidlet key='a'/></vidlets>\nx", State::Broken, {}, 2, 1);
    row("two roots", "<vidlets/><vidlets/>", State::Broken, {}, 1, 20);
    row("root cut", "<vidlets", State::Broken, {}, 1, 8);
    row("cut between tips", "<vidlets>\n<vidlet key='a'/>", State::Survived, a, 2, 17);
    row("cut in a start tag", "<vidlets>\n<vidlet key='a'/>\n<vidlet", State::Survived, a, 3, 7);
    row("cut in a tip", "<vidlets><vidlet key='a'/>\n<vidlet key='b'>", State::Broken, {}, 2, 16);
    row("cut in another tag", "<vidlets><vidlet key='a'/>\n<x>", State::Broken, {}, 2, 3);
    row("byte of no text", QByteArray("<vidlets><vidlet key='a'/>\0</vidlets>", 37),
        State::Survived, a, 1, 27);
    row("no such encoding", "<?xml version='1.0' encoding='nonsense'?><vidlets/>", State::Broken,
        {}, 1, 41);
    row("wrong bytes", "<vidlets>\n<vidlet key='a'>\xff</vidlet></vidlets>", State::Broken, {}, 2,
        17);
    row("other root", "<a><vidlet key='a'/></a>", State::Broken, {}, 1, 3);
    row("tip as root", "<vidlet key='a'><b/></vidlet>", State::Foreign, a, 1, 16);
    row("tip as root, two children", "<vidlet key='a'><b/><b/></vidlet>", State::Foreign, {}, 1,
        16);
    row("ampersand", "<vidlets>\n<vidlet key='a'/> & </vidlets>", State::Survived, a, 2, 20);
    row("undeclared prefix", "<vidlets><x:vidlet key='a'/></vidlets>", State::Survived, {}, 1, 28);
}

void TestVLKeyTableReader::read_judgesFile()
{
    QFETCH(const QByteArray, content);
    QFETCH(const int, state);
    QFETCH(const QStringList, keys);
    QFETCH(const int, line);
    QFETCH(const int, column);
    const VLKeyTableFile file = read(content);
    QCOMPARE(int(file.state), state);
    QCOMPARE(keysOf(file, Kind::Tip), keys);
    QVERIFY(!file.problem.text.isEmpty());
    QCOMPARE(file.problem.position.line, line);
    QCOMPARE(file.problem.position.column, column);
}

void TestVLKeyTableReader::read_refusesWhatIsNoRegularFile()
{
    const QString directory = m_files->packageRoot(u"P.vidlets"_s) + u"/Control/d.xml"_s;
    QVERIFY(QDir().mkpath(directory));
    const VLKeyTableFile file = VLKeyTableReader(directory).read();
    QCOMPARE(file.state, State::Broken);
    QVERIFY(!file.problem.text.isEmpty());
    QCOMPARE(file.problem.position.line, 0);
#ifdef Q_OS_UNIX
    const QString pipe = m_files->path(u"P.vidlets/Control/pipe.xml"_s);
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), S_IRUSR | S_IWUSR), 0);
    QCOMPARE(VLKeyTableReader(pipe).read().state, State::Broken);
#endif
}

void TestVLKeyTableReader::read_passesOverAbsentFile()
{
    const VLKeyTableFile file = VLKeyTableReader(m_files->path(u"none.xml"_s)).read();
    QCOMPARE(file.state, State::Absent);
    QVERIFY(file.problem.text.isNull());
}

void TestVLKeyTableReader::read_survivesCutAnywhere()
{
    const QByteArray content =
        "<?xml version='1.0'?><!DOCTYPE vidlets [<!ENTITY e 'x'>]><vidlets a='&e;'>"
        "<!-- c --><vidlet key='a'><![CDATA[ < ]]>&e;</vidlet><?p q?><vidlet key='b'/></vidlets>";
    const qsizetype endOfFirst = content.indexOf("<?p");
    for (qsizetype size = 0; size < content.size(); ++size) {
        const VLKeyTableFile file = read(content.left(size));
        QVERIFY(file.state == State::Broken || file.state == State::Survived);
        QVERIFY(!file.problem.text.isEmpty());
        if (file.state == State::Survived && size >= endOfFirst)
            QVERIFY(rowOf(file, u"a"_s));
    }
}

void TestVLKeyTableReader::read_listsKeys_whenAskedTo()
{
    const QString path =
        write("<vidlets><vidlet key='b'/><vidlet/><vidlet key='a'/><x key='x'/><vidlet key='b'/>"
              "<vidlets key='n'><vidlet key='in'/></vidlets></vidlets>");
    const VLKeyTableFile file = VLKeyTableReader(path, VLKeyTableReader::Keys::List).read();
    QCOMPARE(file.listedKeys, QStringList({u"b"_s, u"a"_s, u"b"_s, u"n"_s}));
    QVERIFY(VLKeyTableReader(path).read().listedKeys.isEmpty());
}

void TestVLKeyTableReader::read_takesDeepNesting()
{
    constexpr int kDepth = 100'000;
    const QByteArray content = "<vidlets><vidlet key='a'>" + QByteArray("<b>").repeated(kDepth)
        + QByteArray("</b>").repeated(kDepth) + "</vidlet></vidlets>";
    const VLKeyTableFile file = read(content);
    QCOMPARE(file.state, State::Whole);
    QCOMPARE(file.rows.size(), 1);
    QCOMPARE(file.rows.constFirst().length, qint64(content.size() - 19));
    const QByteArray open = "<vidlets><vidlet key='a'>" + QByteArray("<b>").repeated(kDepth);
    QCOMPARE(read(open).state, State::Broken);
}

void TestVLKeyTableReader::range_givesSameTreeAsWholeFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("inParts");

    QTest::newRow("plain") << QByteArray("<vidlets b='1'> t <vidlet key='k'>x <b>y</b> z</vidlet>"
                                         "</vidlets>")
                           << true;
    QTest::newRow("namespaces") << QByteArray(
        "<vidlets xmlns='urn:a' xmlns:x='urn:x'><vidlet key='k' x:a='1'><x:b/>"
        "<c xmlns='urn:c'/></vidlet></vidlets>")
                                << true;
    QTest::newRow("document type")
        << QByteArray("<!DOCTYPE vidlets [<!ENTITY e 'ent'><!ATTLIST vidlet d CDATA 'dflt'>"
                      "<!ATTLIST vidlets locale CDATA 'de'>]>"
                      "<vidlets><vidlet key='k' a='&e;'>&e;&amp;</vidlet></vidlets>")
        << true;
    QTest::newRow("entity with markup")
        << QByteArray("<!DOCTYPE vidlets [<!ENTITY e '&#60;vidlet key=\"k\">x&#60;/vidlet>'>]>"
                      "<vidlets><vidlet key='o'/>&e;</vidlets>")
        << false;
    QTest::newRow("entity of a parameter")
        << QByteArray("<!DOCTYPE vidlets [<!ENTITY % p '<!ENTITY e \"&#38;#60;vidlet key=&#39;k"
                      "&#39;/>\">'>%p;]><vidlets><vidlet key='o'/>&e;</vidlets>")
        << false;
    QTest::newRow("outer document type")
        << QByteArray("<!DOCTYPE vidlets SYSTEM 'x.dtd'><vidlets><vidlet key='k'>a&none;b</vidlet>"
                      "</vidlets>")
        << true;
    QTest::newRow("Latin-1") << QByteArray(
        "<?xml version='1.0' encoding='latin1'?><vidlets a='\xe4'>\xf6<vidlet key='k'"
        ">\xfc</vidlet></vidlets>")
                             << true;
    QTest::newRow("bytes in pairs")
        << QByteArray("<?xml version='1.0' encoding='GB18030'?><vidlets><vidlet key='k'>\xc4\xe3"
                      "</vidlet></vidlets>")
        << false;
    QTest::newRow("words") << inEncoding(u"<vidlets a='\u20ac'> <vidlet key='k'>\u4e3c</vidlet>"
                                         "</vidlets>"_s,
                                         QStringConverter::Utf16BE, true)
                           << true;
    QTest::newRow("double words") << inEncoding(
        u"<vidlets><vidlet key='k'>\u4e3c</vidlet></vidlets>"_s, QStringConverter::Utf32LE, true)
                                  << false;
    QTest::newRow("line ends") << QByteArray("<vidlets>\r\n<vidlet key='k' a='x\r\ny'>\r\n x\r"
                                             "</vidlet>\r\n</vidlets>\r\n")
                               << true;
    QTest::newRow("cut") << QByteArray("<vidlets><vidlet key='k'>x</vidlet> y") << true;
    QTest::newRow("nested") << QByteArray("<vidlets> x <vidlets a='1'> y <vidlet key='k'/>"
                                          "<vidlet key='o'/></vidlets></vidlets>")
                            << true;
    QTest::newRow("tip as root") << QByteArray("<vidlet key='k' locale='x'> y <b>z</b> </vidlet>")
                                 << true;
}

void TestVLKeyTableReader::range_givesSameTreeAsWholeFile()
{
    QFETCH(const QByteArray, content);
    QFETCH(const bool, inParts);
    const QString path = write(content);
    const VLKeyTableFile file = VLKeyTableReader(path).read();
    QCOMPARE(file.unit != VLKeyTableUnit::None, inParts);
    const VLKeyTableRow* row = rowOf(file, u"k"_s);
    if (!row) {
        QVERIFY(!file.rows.isEmpty());
        row = &file.rows.constLast();
    }
    QCOMPARE(row->length > 0, inParts);

    using namespace KeyTableRange;
    const KeyTableRange::Result part = KeyTableRange::read(sourceOf(path, file), *row, u"k"_s);
    const KeyTableRange::Result whole = readWhole(sourceOf(path, file), u"k"_s);
    QCOMPARE(whole.outcome, Outcome::Found);
    QCOMPARE(part.outcome, Outcome::Found);
    QCOMPARE(textOfTree(part.root.get()), textOfTree(whole.root.get()));
    QCOMPARE(part.root->content(), QString());
}

void TestVLKeyTableReader::range_tellsOfChange()
{
    using namespace KeyTableRange;
    const QByteArray content = "<vidlets><vidlet key='k'>x</vidlet></vidlets>";
    const QString path = write(content);
    const VLKeyTableFile file = VLKeyTableReader(path).read();
    KeyTableRange::Source source = sourceOf(path, file);
    const VLKeyTableRow row = file.rows.constFirst();
    QCOMPARE(KeyTableRange::read(source, row, u"o"_s).outcome, Outcome::Unlike);

    // The stamp alone, the bytes alone, and the file.
    source.stamp.modifiedNs -= 1;
    QCOMPARE(KeyTableRange::read(source, row, u"k"_s).outcome, Outcome::Changed);
    write(QByteArray(content).replace(">x<", ">y<"));
    source.stamp = VLIndexHooks::stampAt(path);
    QCOMPARE(KeyTableRange::read(source, row, u"k"_s).outcome, Outcome::Changed);
    write("");
    source.stamp = VLIndexHooks::stampAt(path);
    QCOMPARE(KeyTableRange::read(source, row, u"k"_s).outcome, Outcome::Changed);
    QVERIFY(QFile::remove(path));
    QCOMPARE(KeyTableRange::read(source, row, u"k"_s).outcome, Outcome::Absent);
}

void TestVLKeyTableReader::scanner_givesSameChildren_howeverBytesAreCut()
{
    const QString text =
        u"<!DOCTYPE a [<!-- ' --><!ENTITY e \"'>\">]><a b='>'><?p ? ?><c/><!-- - --"
        ">\u00e4<d e=\"'/\">x</d ><![CDATA[]]]></a></f></a>"_s;
    for (const auto encoding :
         {QStringConverter::Utf8, QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        const QByteArray content = inEncoding(text, encoding, true);
        VLKeyTableScanner whole;
        whole.feed(content.constData(), content.size());
        QVERIFY(whole.headLength() > 0);
        QList<VLKeyTableScanner::Child> wanted;
        for (VLKeyTableScanner::Child child; whole.takeChild(child);)
            wanted.append(child);
        QCOMPARE(wanted.size(), 2);
        for (qsizetype size = 4; size < content.size(); ++size) {
            VLKeyTableScanner scanner;
            for (qsizetype from = 0; from < content.size(); from += size)
                scanner.feed(content.constData() + from, qMin(size, content.size() - from));
            QCOMPARE(scanner.headLength(), whole.headLength());
            VLKeyTableScanner::Child child;
            for (const VLKeyTableScanner::Child& other : std::as_const(wanted)) {
                QVERIFY(scanner.takeChild(child));
                QCOMPARE(child.start, other.start);
                QCOMPARE(child.length, other.length);
                QCOMPARE(child.checksum, other.checksum);
            }
            QVERIFY(!scanner.takeChild(child));
        }
    }
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestVLKeyTableReader>(argc, argv);
}

#include "tst_vlkeytablereader.moc"
