// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableKeyData.h"

#include <Vidlets/VLContentNames.h>

#include <QFile>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace Vidlets {

using namespace ContentNames;

namespace {

/// Whether a tag within @p parentTag is one of those that the record of @p key is looked for among.
bool isCandidate(const QXmlStreamReader& xml, bool keepsAll, const QString& key)
{
    if (keepsAll || xml.qualifiedName() == kKeyDataFileTag)
        return true;
    return xml.qualifiedName() == kKeyDataTag && xml.attributes().value(nameAttribute()) == key;
}

VLKeyTableKeyData::Attributes withoutName(const QXmlStreamAttributes& attributes)
{
    VLKeyTableKeyData::Attributes result;
    for (const QXmlStreamAttribute& attribute : attributes) {
        if (attribute.qualifiedName() != nameAttribute())
            result.append({attribute.qualifiedName().toString(), attribute.value().toString()});
    }
    return result;
}

} // namespace

VLKeyTableProblem VLKeyTableKeyData::check(const QString& path)
{
    const VLFileStamp stamp = VLIndexHooks::stampAt(path);
    if (path == m_path && stamp == m_stamp)
        return {};
    m_path = path;
    m_stamp = stamp;
    m_isSurvived = false;
    return stamp == VLFileStamp() ? VLKeyTableProblem() : readWhole();
}

VLKeyTableKeyData::Attributes VLKeyTableKeyData::attributesFor(const QString& key) const
{
    QFile file(m_path);
    VLFileStamp stamp;
    QString reason;
    if (!m_isSurvived || !VLIndexHooks::open(file, stamp, reason))
        return {};
    QXmlStreamReader xml(&file);
    if (!xml.readNextStartElement())
        return {};
    // A record may be the root itself, and then whatever comes first in it stands for it.
    const bool keepsAll = xml.qualifiedName() == kKeyDataTag;
    if (!isCandidate(xml, false, key))
        return {};
    while (xml.readNextStartElement()) {
        if (isCandidate(xml, keepsAll, key))
            return withoutName(xml.attributes());
        xml.skipCurrentElement();
    }
    return {};
}

VLKeyTableProblem VLKeyTableKeyData::readWhole()
{
    QFile file(m_path);
    QString reason;
    if (!VLIndexHooks::open(file, m_stamp, reason))
        return {{}, reason};
    QXmlStreamReader xml(&file);
    QString rootTag;
    XmlPosition rootPosition;
    int depth = 0;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement && ++depth == 1 && rootTag.isNull()) {
            rootTag = xml.qualifiedName().toString();
            rootPosition = {xml.lineNumber(), xml.columnNumber()};
        } else if (token == QXmlStreamReader::EndElement) {
            --depth;
        }
    }
    // Kept: as long as the root was open, what came before a fault counts.
    m_isSurvived = !xml.hasError() || depth > 0;
    if (xml.hasError())
        return {{xml.lineNumber(), xml.columnNumber()}, xml.errorString()};
    if (rootTag != kKeyDataFileTag)
        return {rootPosition, u"the root is <%1>, not <%2>"_s.arg(rootTag, kKeyDataFileTag)};
    return {};
}

} // namespace Vidlets
