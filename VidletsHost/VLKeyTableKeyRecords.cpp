// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableKeyRecords.h"

#include <Vidlets/VLContentNames.h>
#include <Vidlets/VLIndexHooks.h>

#include <QFile>
#include <QXmlStreamReader>

namespace Vidlets {

using namespace ContentNames;

namespace {

size_t numberOf(const QXmlStreamReader& xml, size_t seed)
{
    size_t number = qHash(xml.qualifiedName(), seed);
    const QXmlStreamAttributes attributes = xml.attributes();
    for (const QXmlStreamAttribute& attribute : attributes)
        number = qHashMulti(number, attribute.qualifiedName(), attribute.value());
    return number;
}

} // namespace

VLKeyTableKeyRecords VLKeyTableKeyRecords::read(const QString& path,
                                                const std::atomic<bool>& isStopped)
{
    VLKeyTableKeyRecords result;
    QFile file(path);
    VLFileStamp stamp;
    QString reason;
    if (path.isEmpty() || !VLIndexHooks::open(file, stamp, reason))
        return result;
    QXmlStreamReader xml(&file);
    int depth = 0;
    while (!xml.atEnd() && !isStopped) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::EndElement)
            --depth;
        if (token != QXmlStreamReader::StartElement)
            continue;
        ++depth;
        // What else stands right below the root may take the place of any record.
        if (depth == 2 && xml.qualifiedName() == kKeyDataTag) {
            const QString key = xml.attributes().value(nameAttribute()).toString();
            result.m_records[key] = numberOf(xml, result.m_records.value(key));
        } else if (depth <= 2) {
            result.m_frame = numberOf(xml, result.m_frame);
        }
    }
    result.m_frame = qHashMulti(result.m_frame, int(xml.error()), depth > 0);
    return result;
}

QSet<QString> VLKeyTableKeyRecords::differences(const VLKeyTableKeyRecords& left,
                                                const VLKeyTableKeyRecords& right)
{
    // A file that has come or gone has another frame, too, and so has one that breaks.
    if (left.m_frame != right.m_frame)
        return left.keys() + right.keys();
    QSet<QString> keys;
    for (auto it = left.m_records.cbegin(); it != left.m_records.cend(); ++it) {
        const auto other = right.m_records.constFind(it.key());
        if (other == right.m_records.cend() || *other != it.value())
            keys.insert(it.key());
    }
    for (auto it = right.m_records.cbegin(); it != right.m_records.cend(); ++it) {
        if (!left.m_records.contains(it.key()))
            keys.insert(it.key());
    }
    return keys;
}

QSet<QString> VLKeyTableKeyRecords::keys() const
{
    return QSet<QString>(m_records.keyBegin(), m_records.keyEnd());
}

} // namespace Vidlets
