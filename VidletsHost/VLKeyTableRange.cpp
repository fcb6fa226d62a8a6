// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableRange.h"

#include "VLKeyTableScanner.h"
#include <Vidlets/VLXmlElement.h>

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QStringEncoder>

using namespace Qt::StringLiterals;

namespace Vidlets::KeyTableRange {

namespace {

QByteArray encoded(const QString& text, VLKeyTableUnit unit)
{
    switch (unit) {
    case VLKeyTableUnit::LittleWord:
        return QStringEncoder(QStringEncoder::Utf16LE).encode(text);
    case VLKeyTableUnit::BigWord:
        return QStringEncoder(QStringEncoder::Utf16BE).encode(text);
    default:
        return text.toUtf8();
    }
}

/// Appends @p length bytes from @p start on. Returns whether they are all there.
bool appendPart(QByteArray& document, QFile& file, qint64 start, qint64 length)
{
    // Memory for all of it is taken before anything is read.
    if (length > file.size() - start)
        return false;
    const QByteArray part = file.seek(start) ? file.read(length) : QByteArray();
    document += part;
    return part.size() == length;
}

Result opened(QFile& file, const Source& source)
{
    VLFileStamp stamp;
    QString reason;
    if (!VLIndexHooks::open(file, stamp, reason))
        return {stamp == VLFileStamp() ? Outcome::Absent : Outcome::Changed, nullptr};
    return {stamp == source.stamp ? Outcome::Found : Outcome::Changed, nullptr};
}

/// Keeps @p root if it has exactly one element.
Result judged(std::unique_ptr<VLXmlElement> root)
{
    if (!root || root->children().size() != 1)
        return {Outcome::Unlike, nullptr};
    // Read in parts or not, a root has no text.
    root->setContent(QString());
    return {Outcome::Found, std::move(root)};
}

} // namespace

Result read(const Source& source, const VLKeyTableRow& row, const QString& key)
{
    if (source.unit == VLKeyTableUnit::None || row.length == 0)
        return readWhole(source, key);
    QFile file(source.path);
    Result result = opened(file, source);
    if (result.outcome != Outcome::Found)
        return result;

    QByteArray document;
    VLKeyTableChecksum checksum;
    const bool isAllThere = appendPart(document, file, 0, source.headLength)
        && appendPart(document, file, row.start, row.length);
    checksum.add(document.constData(), document.size());
    if (!isAllThere || checksum.value() != row.checksum)
        return {Outcome::Changed, nullptr};

    document += encoded(u"</%1>"_s.arg(source.rootTag), source.unit);
    QBuffer buffer(&document);
    buffer.open(QIODevice::ReadOnly);
    XmlReport report;
    std::unique_ptr<VLXmlElement> root = VLIndexHooks::parse(buffer, key, report);
    if (!report.fault.isNull())
        return {Outcome::Unlike, nullptr};
    return judged(std::move(root));
}

Result readWhole(const Source& source, const QString& key)
{
    QFile file(source.path);
    Result result = opened(file, source);
    if (result.outcome != Outcome::Found)
        return result;
    XmlReport report;
    return judged(VLIndexHooks::parse(file, key, report));
}

} // namespace Vidlets::KeyTableRange
