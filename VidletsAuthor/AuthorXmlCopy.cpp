// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorXmlCopy.h"

#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

QString startOf(const QXmlStreamReader& reader)
{
    QString result = u'<' + reader.qualifiedName().toString();
    const QXmlStreamAttributes attributes = reader.attributes();
    for (const QXmlStreamAttribute& attribute : attributes) {
        QString value = AuthorXmlCopy::protectedText(attribute.value().toString());
        // Readers make blanks of them, where they are not spelt out.
        value.replace(u'\n', "&#xa;"_L1).replace(u'\t', "&#x9;"_L1).replace(u'\r', "&#xd;"_L1);
        result += u" %1=\"%2\""_s.arg(attribute.qualifiedName(), value);
    }
    return result;
}

/// Without a step into each element, since a file may have any number of them in each other.
QString takeElement(QXmlStreamReader& reader)
{
    QString result;
    qsizetype depth = 0;
    bool isStartOpen = false;
    do {
        const bool isEmpty = isStartOpen && reader.isEndElement();
        if (isStartOpen && !isEmpty)
            result += u'>';
        isStartOpen = reader.isStartElement();
        if (isStartOpen) {
            result += startOf(reader);
            ++depth;
        } else if (reader.isEndElement()) {
            result += isEmpty ? u"/>"_s : u"</%1>"_s.arg(reader.qualifiedName());
            --depth;
        } else if (reader.isCharacters()) {
            result +=
                AuthorXmlCopy::protectedText(reader.text().toString()).replace(u'\r', "&#xd;"_L1);
        } else {
            result += AuthorXmlCopy::take(reader);
        }
    } while (depth > 0 && !reader.atEnd() && reader.readNext() != QXmlStreamReader::Invalid);
    return result;
}

} // namespace

QString AuthorXmlCopy::protectedText(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        if (code == u'&')
            result += "&amp;"_L1;
        else if (code == u'<')
            result += "&lt;"_L1;
        else if (code == u'>')
            result += "&gt;"_L1;
        else if (code == u'"')
            result += "&quot;"_L1;
        else if (code == u'\'')
            result += "&apos;"_L1;
        else if (code > 0x7f && character.isSpace())
            result += u"&#x%1;"_s.arg(code, 0, 16);
        else
            result += character;
    }
    return result;
}

QString AuthorXmlCopy::take(QXmlStreamReader& reader)
{
    if (reader.isComment())
        return u"<!--%1-->"_s.arg(reader.text());
    if (reader.isProcessingInstruction())
        return u"<?%1 %2?>"_s.arg(reader.processingInstructionTarget(),
                                  reader.processingInstructionData());
    return reader.isStartElement() ? takeElement(reader) : QString();
}

bool AuthorXmlCopy::nextChild(QXmlStreamReader& reader, QStringList& kept)
{
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement())
            return true;
        if (reader.isEndElement())
            return false;
        if (const QString part = take(reader); !part.isEmpty())
            kept.append(part);
    }
    return false;
}

} // namespace Vidlets
