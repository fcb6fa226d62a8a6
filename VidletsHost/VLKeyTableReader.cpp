// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableReader.h"

#include <Vidlets/VLContentNames.h>

#include <QDateTime>
#include <QFile>
#include <QIODevice>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace Vidlets {

using namespace ContentNames;

namespace {

constexpr qint64 kNsPerMs = 1'000'000;
// A file that is written to all the time is taken as it is at last.
constexpr int kMaxPasses = 3;
// Far above what any content needs: hosts with ckGuardContent pass over what is longer.
constexpr qint64 kMaxGuardedBytes = qint64(256) * 1024 * 1024;

/// Hands a file to an XML reader and to a scanner.
class SharedDevice final : public QIODevice
{
public:
    SharedDevice(QFile& file, VLKeyTableScanner& scanner, const std::atomic<bool>* isCancelled)
        : m_file(file)
        , m_scanner(scanner)
        , m_isCancelled(isCancelled)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool atEnd() const override
    {
        return isCancelled() || m_file.atEnd();
    }

    qint64 size() const override
    {
        return m_file.size();
    }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        if (isCancelled())
            return -1;
        const qint64 size = m_file.read(data, maxSize);
        m_scanner.feed(data, size);
        return size;
    }

    qint64 writeData(const char* /*data*/, qint64 /*maxSize*/) override
    {
        return -1;
    }

private:
    bool isCancelled() const
    {
        return m_isCancelled && m_isCancelled->load(std::memory_order_relaxed);
    }

    QFile& m_file;
    VLKeyTableScanner& m_scanner;
    const std::atomic<bool>* m_isCancelled;
};

bool holdsMarkup(const QXmlStreamEntityDeclarations& entities)
{
    return std::any_of(
        entities.cbegin(), entities.cend(),
        [](const QXmlStreamEntityDeclaration& entity) { return entity.value().contains(u'<'); });
}

/// Whether in each text of this encoding a byte is a character of ASCII exactly if it looks so.
bool isOverAscii(const QString& encoding)
{
    static const QRegularExpression pattern(
        u"^(utf-?8|(us-)?ascii|latin-?\\d+|iso[-_ ]?8859[-_]\\d+(:\\d+)?|windows-125\\d|cp125\\d|"
        "koi8-[ru])$"_s,
        QRegularExpression::CaseInsensitiveOption);
    return pattern.match(encoding).hasMatch();
}

} // namespace

VLKeyTableReader::VLKeyTableReader(const QString& path, Keys keys,
                                   const std::atomic<bool>* isCancelled)
    : m_path(path)
    , m_keys(keys)
    , m_isCancelled(isCancelled)
{
}

VLKeyTableFile VLKeyTableReader::read()
{
    return read(nullptr);
}

VLKeyTableFile VLKeyTableReader::read(QList<VLSearchText>* texts)
{
    m_hasTexts = texts;
    for (int pass = 0; pass < kMaxPasses; ++pass) {
        readOnce();
        if (texts)
            *texts = finishTexts();
        if (m_file.stamp == VLIndexHooks::stampAt(m_path))
            return m_file;
    }
    // Looked at again at each lookup.
    m_file.isSettled = false;
    return m_file;
}

void VLKeyTableReader::readOnce()
{
    m_scanner = VLKeyTableScanner();
    m_file = VLKeyTableFile();
    m_rootKey.clear();
    m_encoding.clear();
    m_depth = 0;
    m_hasMarkupEntity = false;
    m_isInStep = true;
    m_isRow = false;
    m_places.clear();
    m_collector = VLSearchCollector();
    m_texts.clear();
    m_childCount = 0;
    m_nestedCount = 0;

    QFile file(m_path);
    QString reason;
    const bool isOpen = VLIndexHooks::open(file, m_file.stamp, reason);
    const qint64 changedNs = qMax(m_file.stamp.modifiedNs, m_file.stamp.changedNs);
    const qint64 ageNs = QDateTime::currentMSecsSinceEpoch() * kNsPerMs - changedNs;
    m_file.isSettled = ageNs > VLIndexHooks::settledAfterMs * kNsPerMs;
    if (!isOpen) {
        const bool isThere = m_file.stamp != VLFileStamp();
        m_file.state = isThere ? VLKeyTableState::Broken : VLKeyTableState::Absent;
        if (isThere)
            m_file.problem.text = reason;
        return;
    }

    SharedDevice device(file, m_scanner, m_isCancelled);
    QXmlStreamReader xml(&device);
    readDocument(xml);
    judge(xml);
    finishRows();
}

void VLKeyTableReader::readDocument(QXmlStreamReader& xml)
{
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartDocument:
            m_encoding = xml.documentEncoding().toString();
            break;
        case QXmlStreamReader::DTD:
            m_hasMarkupEntity = holdsMarkup(xml.entityDeclarations());
            break;
        case QXmlStreamReader::StartElement:
            ++m_depth;
            readStartTag(xml);
            break;
        case QXmlStreamReader::Characters:
            if (m_hasTexts)
                m_collector.addText(xml.text());
            break;
        case QXmlStreamReader::EndElement:
            --m_depth;
            if (m_hasTexts)
                m_collector.close();
            if (m_depth == 1)
                readEndOfChild();
            break;
        default:
            break;
        }
    }
}

void VLKeyTableReader::readStartTag(const QXmlStreamReader& xml)
{
    if (m_depth == 1)
        readRoot(xml);
    else if (m_depth == 2)
        readChild(xml);
    if (m_hasTexts && m_depth > 1)
        m_collector.open(xml.attributes());
}

void VLKeyTableReader::readRoot(const QXmlStreamReader& xml)
{
    const QXmlStreamAttributes attributes = xml.attributes();
    m_file.rootTag = xml.qualifiedName().toString();
    m_file.locale = attributes.value(localeAttribute()).toString();
    m_rootKey = attributes.value(keyAttribute()).toString();
    m_rootPosition = {xml.lineNumber(), xml.columnNumber()};
    m_file.unit = canReadParts() ? m_scanner.unit() : VLKeyTableUnit::None;
    m_file.headLength = m_scanner.headLength();
}

void VLKeyTableReader::readChild(const QXmlStreamReader& xml)
{
    const QStringView tag = xml.qualifiedName();
    const bool isTip = tag == kTipTag;
    const bool isNested = tag == kControlFileTag;
    m_row = VLKeyTableRow();
    // Where a tip is the root, its first child stands for it, whichever that is.
    m_isRow = m_file.rootTag == kTipTag || isTip || isNested;
    if (!isTip && !isNested)
        return;
    const QXmlStreamAttributes attributes = xml.attributes();
    m_row.key = attributes.value(keyAttribute()).toString();
    if (isNested)
        m_row.kind = VLKeyTableRowKind::Nested;
    if (m_keys == Keys::List && attributes.hasAttribute(keyAttribute()))
        m_file.listedKeys.append(m_row.key);
}

void VLKeyTableReader::readEndOfChild()
{
    VLKeyTableScanner::Child child;
    if (m_scanner.takeChild(child)) {
        m_row.start = child.start;
        m_row.length = child.length;
        m_row.checksum = child.checksum;
    } else {
        m_isInStep = false;
    }
    if (!std::exchange(m_isRow, false))
        return;
    ++m_childCount;
    if (m_file.rootTag == kTipTag) {
        if (m_childCount == 1) {
            m_file.rows = {m_row};
            takeText();
        }
        return;
    }
    if (m_row.kind == VLKeyTableRowKind::Nested) {
        if (++m_nestedCount == 1)
            m_nested = m_row;
        return;
    }
    Place& place = m_places[m_row.key];
    if (++place.count == 1) {
        place.row = m_file.rows.size();
        m_file.rows.append(m_row);
        takeText();
    } else {
        m_file.rows[place.row].kind = VLKeyTableRowKind::Hidden;
    }
}

void VLKeyTableReader::takeText()
{
    if (m_hasTexts)
        m_texts.append(m_collector.take());
}

/// The texts of those rows that lookups find by their key.
QList<VLSearchText> VLKeyTableReader::finishTexts()
{
    QList<VLSearchText> texts;
    for (qsizetype i = 0; i < m_texts.size() && i < m_file.rows.size(); ++i) {
        const VLKeyTableRow& row = m_file.rows.at(i);
        if (row.kind != VLKeyTableRowKind::Tip)
            continue;
        texts.append(m_texts.at(i));
        texts.last().key = row.key;
    }
    return texts;
}

/// Finds out whom the file serves, and what is wrong with it.
void VLKeyTableReader::judge(const QXmlStreamReader& xml)
{
    const bool isControlFile = m_file.rootTag == kControlFileTag;
    XmlReport report;
    if (xml.hasError()) {
        report.fault = xml.errorString();
        report.faultPosition = {xml.lineNumber(), xml.columnNumber()};
        locateFault(report);
        // Kept: with nothing but the root open, what came before the fault counts.
        const bool isSurvived = m_depth == 1 && (isControlFile || m_file.rootTag == kTipTag);
        m_file.state = isSurvived ? VLKeyTableState::Survived : VLKeyTableState::Broken;
    } else if (isControlFile) {
        const bool isTooLong = m_file.stamp.size > kMaxGuardedBytes;
        m_file.state = isTooLong ? VLKeyTableState::Survived : VLKeyTableState::Whole;
        return;
    } else {
        report.fault = u"the root is <%1>, not <%2>"_s.arg(m_file.rootTag, kControlFileTag);
        report.faultPosition = m_rootPosition;
        m_file.state =
            m_file.rootTag == kTipTag ? VLKeyTableState::Foreign : VLKeyTableState::Broken;
    }
    m_file.problem = {report.faultPosition, report.fault};
}

void VLKeyTableReader::locateFault(XmlReport& report) const
{
    QFile file(m_path);
    VLFileStamp stamp;
    QString reason;
    if (VLIndexHooks::open(file, stamp, reason))
        VLIndexHooks::explain(file.read(qMin(kMaxGuardedBytes, stamp.size)), report);
}

/// Makes the rows what lookups go by.
void VLKeyTableReader::finishRows()
{
    const bool servesNobody =
        m_file.state == VLKeyTableState::Absent || m_file.state == VLKeyTableState::Broken;
    const bool isForeign = m_file.rootTag == kTipTag;
    if (servesNobody || (isForeign && m_childCount != 1) || m_nestedCount > 1) {
        m_file.rows.clear();
        if (servesNobody)
            m_file.listedKeys.clear();
        return;
    }
    if (isForeign) {
        m_file.rows.first().key = m_rootKey;
        m_file.rows.first().kind = VLKeyTableRowKind::Tip;
    }
    if (m_nestedCount == 1 && !isForeign) {
        // It is built for every key, and so a second tag beside each tip.
        for (VLKeyTableRow& row : m_file.rows)
            row.kind = VLKeyTableRowKind::Hidden;
        m_nested.key.clear();
        m_file.rows.append(m_nested);
    }
    if (m_isInStep && m_file.unit != VLKeyTableUnit::None && m_file.headLength > 0)
        return;
    m_file.unit = VLKeyTableUnit::None;
    for (VLKeyTableRow& row : m_file.rows) {
        row.start = 0;
        row.length = 0;
    }
}

bool VLKeyTableReader::canReadParts() const
{
    if (m_hasMarkupEntity)
        return false;
    if (m_encoding.isEmpty() || m_scanner.unit() == VLKeyTableUnit::None)
        return m_scanner.unit() != VLKeyTableUnit::None;
    if (m_scanner.unit() == VLKeyTableUnit::Byte)
        return isOverAscii(m_encoding);
    return m_encoding.startsWith("utf-16"_L1, Qt::CaseInsensitive);
}

} // namespace Vidlets
