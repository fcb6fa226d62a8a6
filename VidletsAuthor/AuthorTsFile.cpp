// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorTsFile.h"

#include <QHash>
#include <QXmlStreamReader>
#include <QtEndian>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

using Message = AuthorTsMessage;

// Between the variants of a translation for places of different width.
constexpr QChar kVariantMark(0x9c);

constexpr std::array kStates{std::pair{"unfinished"_L1, Message::State::Unfinished},
                             std::pair{"vanished"_L1, Message::State::Vanished},
                             std::pair{"obsolete"_L1, Message::State::Obsolete}};

/// The text of an element, in which some signs are elements of their own.
QString readText(QXmlStreamReader& reader)
{
    QString text;
    while (!reader.atEnd() && reader.readNext() != QXmlStreamReader::EndElement) {
        if (reader.isCharacters()) {
            text += reader.text();
        } else if (reader.isStartElement()) {
            const QString value = reader.attributes().value("value"_L1).toString();
            const bool isHex = value.startsWith(u'x');
            if (reader.name() == "byte"_L1)
                text += QChar(isHex ? value.mid(1).toUShort(nullptr, 16) : value.toUShort());
            reader.skipCurrentElement();
        }
    }
    return text;
}

/// The forms or variants of a translation, or its text.
QStringList readForms(QXmlStreamReader& reader, bool isNumerus, bool hasVariants)
{
    if (!isNumerus && !hasVariants)
        return {readText(reader)};
    QStringList forms;
    while (reader.readNextStartElement()) {
        const bool isVaried = isNumerus && reader.attributes().value("variants"_L1) == "yes"_L1;
        forms.append(isVaried ? readForms(reader, false, true).join(kVariantMark)
                              : readText(reader));
    }
    return isNumerus ? forms : QStringList{forms.join(kVariantMark)};
}

void readTranslation(QXmlStreamReader& reader, Message& message)
{
    const QXmlStreamAttributes attributes = reader.attributes();
    const QStringView type = attributes.value("type"_L1);
    const auto found = std::find_if(kStates.cbegin(), kStates.cend(),
                                    [type](const auto& state) { return state.first == type; });
    message.state = found == kStates.cend() ? Message::State::Finished : found->second;
    message.translations =
        readForms(reader, message.isNumerus, attributes.value("variants"_L1) == "yes"_L1);
}

Message readMessage(QXmlStreamReader& reader, const QString& context)
{
    Message message;
    message.context = context;
    message.position = {reader.lineNumber(), 1};
    message.id = reader.attributes().value("id"_L1).toString();
    message.isNumerus = reader.attributes().value("numerus"_L1) == "yes"_L1;
    const QHash<QString, QString*> texts{{u"source"_s, &message.source},
                                         {u"oldsource"_s, &message.oldSource},
                                         {u"comment"_s, &message.comment},
                                         {u"oldcomment"_s, &message.oldComment},
                                         {u"extracomment"_s, &message.extraComment},
                                         {u"translatorcomment"_s, &message.translatorComment},
                                         {u"userdata"_s, &message.userData}};
    while (reader.readNextStartElement()) {
        const QString name = reader.name().toString();
        if (QString* text = texts.value(name))
            *text = readText(reader);
        else if (name == "translation"_L1)
            readTranslation(reader, message);
        else if (name.startsWith("extra-"_L1))
            message.extras.append({name, readText(reader)});
        else
            reader.skipCurrentElement();
    }
    return message;
}

void readContext(QXmlStreamReader& reader, QList<Message>& messages)
{
    QString name;
    while (reader.readNextStartElement()) {
        if (reader.name() == "name"_L1)
            name = readText(reader);
        else if (reader.name() == "message"_L1)
            messages.append(readMessage(reader, name));
        else
            reader.skipCurrentElement();
    }
}

/// Moves on to the root.
void readHead(QXmlStreamReader& reader, QStringList& comments)
{
    while (!reader.atEnd() && !reader.isStartElement()) {
        if (reader.isComment())
            comments.append(u"<!--%1-->"_s.arg(reader.text()));
        reader.readNext();
    }
}

QString escaped(const QString& text)
{
    QString result;
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        const bool isPlain = code == u'\n' || code == u'\t';
        if (code < 0x20 && !isPlain)
            result += u"<byte value=\"x%1\"/>"_s.arg(code, 0, 16);
        else if (code > 0x7f && character.isSpace())
            result += u"&#x%1;"_s.arg(code, 0, 16);
        else
            result += character;
    }
    return result;
}

/// For text and attributes alike.
QString protectedText(const QString& text)
{
    QString result = text;
    result.replace(u'&', "&amp;"_L1).replace(u'<', "&lt;"_L1).replace(u'>', "&gt;"_L1);
    result.replace(u'"', "&quot;"_L1).replace(u'\'', "&apos;"_L1);
    return escaped(result);
}

QString variantsOf(const QString& text, const QString& indent)
{
    QString result;
    for (const QString& variant : text.split(kVariantMark))
        result +=
            u"%1    <lengthvariant>%2</lengthvariant>\n"_s.arg(indent, protectedText(variant));
    return u"\n%1%2"_s.arg(result, indent);
}

/// The content of an element with a translation, with the end of its start tag.
QString contentOf(const QString& text, const QString& indent)
{
    return text.contains(kVariantMark) ? u" variants=\"yes\">"_s + variantsOf(text, indent)
                                       : u'>' + protectedText(text);
}

QString translationOf(const Message& message)
{
    QString result = u"        <translation"_s;
    for (const auto& [name, state] : kStates) {
        if (state == message.state)
            result += u" type=\"%1\""_s.arg(name);
    }
    if (!message.isNumerus)
        return result + contentOf(message.translations.value(0), u"        "_s)
            + u"</translation>\n"_s;
    result += u'>';
    for (const QString& form : message.translations)
        result +=
            u"\n            <numerusform%1</numerusform>"_s.arg(contentOf(form, u"            "_s));
    return result + u"\n        </translation>\n"_s;
}

void appendText(QString& result, const QString& name, const QString& text)
{
    if (!text.isEmpty())
        result += u"        <%1>%2</%1>\n"_s.arg(name, protectedText(text));
}

QString messageOf(const Message& message)
{
    QString result = u"    <message"_s;
    if (!message.id.isEmpty())
        result += u" id=\"%1\""_s.arg(protectedText(message.id));
    result += message.isNumerus ? u" numerus=\"yes\">\n"_s : u">\n"_s;
    for (const AuthorTsLocation& location : message.locations)
        result += u"        <location filename=\"%1\" line=\"%2\"/>\n"_s.arg(
            protectedText(location.file), QString::number(location.line));
    result += u"        <source>%1</source>\n"_s.arg(protectedText(message.source));
    appendText(result, u"oldsource"_s, message.oldSource);
    appendText(result, u"comment"_s, message.comment);
    appendText(result, u"oldcomment"_s, message.oldComment);
    appendText(result, u"extracomment"_s, message.extraComment);
    appendText(result, u"translatorcomment"_s, message.translatorComment);
    result += translationOf(message);
    appendText(result, u"userdata"_s, message.userData);
    for (const auto& [name, value] : message.extras)
        appendText(result, name, value);
    return result + u"    </message>\n"_s;
}

// The hash by which QTranslator finds a text.
quint32 hashOf(const QByteArray& text)
{
    quint32 hash = 0;
    for (const char character : text) {
        hash = (hash << 4U) + static_cast<quint8>(character);
        const quint32 high = hash & 0xf0000000U;
        if (high != 0)
            hash ^= high >> 24U;
        hash &= ~high;
    }
    return hash == 0 ? 1 : hash;
}

void appendNumber(QByteArray& bytes, quint32 number)
{
    std::array<char, sizeof number> big{};
    qToBigEndian(number, big.data());
    bytes.append(big.data(), big.size());
}

void appendBlock(QByteArray& bytes, quint8 tag, const QByteArray& content)
{
    bytes.append(static_cast<char>(tag));
    appendNumber(bytes, static_cast<quint32>(content.size()));
    bytes.append(content);
}

QByteArray wide(const QString& text)
{
    QByteArray bytes;
    for (const QChar character : text) {
        bytes.append(static_cast<char>(character.unicode() >> 8U));
        bytes.append(static_cast<char>(character.unicode() & 0xffU));
    }
    return bytes;
}

QByteArray recordOf(const Message& message)
{
    enum Tag : quint8 {
        End = 1,
        Translation = 3,
        Source = 6,
        Context = 7,
        Comment = 8
    };
    QByteArray record;
    for (const QString& form : message.translations)
        appendBlock(record, Translation, wide(form));
    if (!message.comment.isEmpty())
        appendBlock(record, Comment, message.comment.toUtf8());
    appendBlock(record, Source, message.source.toUtf8());
    appendBlock(record, Context, message.context.toUtf8());
    record.append(static_cast<char>(End));
    return record;
}

} // namespace

bool AuthorTsMessage::isTranslated() const
{
    return std::any_of(translations.cbegin(), translations.cend(),
                       [](const QString& text) { return !text.isEmpty(); });
}

std::optional<AuthorTsFile> AuthorTsFile::read(const QByteArray& bytes, Fault& fault)
{
    QXmlStreamReader reader(bytes);
    AuthorTsFile file;
    readHead(reader, file.comments);
    if (!reader.hasError() && reader.name() != "TS"_L1) {
        fault = {{reader.lineNumber(), 1}, u"its root is not <TS>"_s};
        return std::nullopt;
    }
    file.language = reader.attributes().value("language"_L1).toString();
    file.sourceLanguage = reader.attributes().value("sourcelanguage"_L1).toString();
    while (reader.readNextStartElement()) {
        if (reader.name() == "context"_L1)
            readContext(reader, file.messages);
        else if (reader.name() == "message"_L1)
            file.messages.append(readMessage(reader, QString()));
        else
            reader.skipCurrentElement();
    }
    // What stands behind the root.
    while (!reader.atEnd())
        reader.readNext();
    if (!reader.hasError())
        return file;
    fault = {{reader.lineNumber(), std::max<qint64>(reader.columnNumber(), 1)},
             reader.errorString()};
    return std::nullopt;
}

QByteArray AuthorTsFile::write() const
{
    QString result = u"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"_s;
    for (const QString& comment : comments)
        result += comment + u'\n';
    result += u"<!DOCTYPE TS>\n<TS version=\"2.1\""_s;
    if (!language.isEmpty())
        result += u" language=\"%1\""_s.arg(protectedText(language));
    if (!sourceLanguage.isEmpty())
        result += u" sourcelanguage=\"%1\""_s.arg(protectedText(sourceLanguage));
    result += u">\n"_s;
    QStringList contexts;
    QHash<QString, QString> texts;
    for (const Message& message : messages) {
        if (!texts.contains(message.context))
            contexts.append(message.context);
        texts[message.context] += messageOf(message);
    }
    for (const QString& context : std::as_const(contexts))
        result += u"<context>\n    <name>%1</name>\n%2</context>\n"_s.arg(protectedText(context),
                                                                          texts.value(context));
    return (result + u"</TS>\n"_s).toUtf8();
}

QByteArray AuthorTsFile::compiled() const
{
    constexpr quint8 kLanguage = 0xa7;
    constexpr quint8 kHashes = 0x42;
    constexpr quint8 kMessages = 0x69;
    constexpr std::array<quint8, 16> kMagic{0x3c, 0xb8, 0x64, 0x18, 0xca, 0xef, 0x9c, 0x95,
                                            0xcd, 0x21, 0x1c, 0xbf, 0x60, 0xa1, 0xbd, 0xdd};
    QList<std::pair<quint32, quint32>> places;
    QByteArray records;
    for (const Message& message : messages) {
        if (message.isGone() || !message.isTranslated())
            continue;
        const quint32 hash = hashOf(message.source.toUtf8() + message.comment.toUtf8());
        places.append({hash, static_cast<quint32>(records.size())});
        records += recordOf(message);
    }
    std::sort(places.begin(), places.end());
    QByteArray hashes;
    for (const auto& [hash, offset] : std::as_const(places)) {
        appendNumber(hashes, hash);
        appendNumber(hashes, offset);
    }
    QByteArray result;
    for (const quint8 byte : kMagic)
        result.append(static_cast<char>(byte));
    if (!language.isEmpty())
        appendBlock(result, kLanguage, language.toUtf8());
    appendBlock(result, kHashes, hashes);
    appendBlock(result, kMessages, records);
    return result;
}

} // namespace Vidlets
