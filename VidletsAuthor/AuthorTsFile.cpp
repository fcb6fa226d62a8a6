// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorTsFile.h"

#include "AuthorXmlCopy.h"

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
QString readText(QXmlStreamReader& reader, QStringList& kept)
{
    QString text;
    while (!reader.atEnd() && reader.readNext() != QXmlStreamReader::EndElement) {
        if (reader.isCharacters()) {
            text += reader.text();
        } else if (reader.isComment()) {
            kept.append(AuthorXmlCopy::take(reader));
        } else if (reader.isStartElement()) {
            const QString value = reader.attributes().value("value"_L1).toString();
            const bool isHex = value.startsWith(u'x');
            if (reader.name() == "byte"_L1)
                text += QChar(
                    QStringView(value).sliced(isHex ? 1 : 0).toUShort(nullptr, isHex ? 16 : 10));
            reader.skipCurrentElement();
        }
    }
    return text;
}

/// The forms or variants of a translation, or its text.
QStringList readForms(QXmlStreamReader& reader, QStringList& kept, bool isNumerus, bool hasVariants)
{
    if (!isNumerus && !hasVariants)
        return {readText(reader, kept)};
    QStringList forms;
    while (AuthorXmlCopy::nextChild(reader, kept)) {
        const bool isVaried = isNumerus && reader.attributes().value("variants"_L1) == "yes"_L1;
        forms.append(isVaried ? readForms(reader, kept, false, true).join(kVariantMark)
                              : readText(reader, kept));
    }
    return isNumerus ? forms : QStringList{forms.join(kVariantMark)};
}

void readTranslation(QXmlStreamReader& reader, Message& message, QStringList& kept)
{
    const QXmlStreamAttributes attributes = reader.attributes();
    const QStringView type = attributes.value("type"_L1);
    const auto found = std::find_if(kStates.cbegin(), kStates.cend(),
                                    [type](const auto& state) { return state.first == type; });
    message.state = found == kStates.cend() ? Message::State::Finished : found->second;
    message.translations =
        readForms(reader, kept, message.isNumerus, attributes.value("variants"_L1) == "yes"_L1);
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
    QStringList kept;
    const auto keepBefore = [&message, &kept](const QString& name) {
        for (const QString& part : std::as_const(kept))
            message.inside.append({name, part});
        kept.clear();
    };
    while (AuthorXmlCopy::nextChild(reader, kept)) {
        const QString name = reader.qualifiedName().toString();
        QString* text = texts.value(name);
        if (name == "location"_L1) {
            reader.skipCurrentElement();
            continue;
        }
        if (text)
            *text = readText(reader, kept);
        else if (name == "translation"_L1)
            readTranslation(reader, message, kept);
        else if (name.startsWith("extra-"_L1))
            message.extras.append({name, readText(reader, kept)});
        else {
            kept.append(AuthorXmlCopy::take(reader));
            continue;
        }
        keepBefore(name);
    }
    keepBefore(QString());
    return message;
}

void readContext(QXmlStreamReader& reader, AuthorTsFile& file, const QStringList& above)
{
    AuthorTsContext context;
    context.above = above;
    QStringList kept;
    bool isFirst = true;
    while (AuthorXmlCopy::nextChild(reader, kept)) {
        if (reader.qualifiedName() == "name"_L1) {
            context.name = readText(reader, kept);
        } else if (reader.qualifiedName() == "message"_L1) {
            Message message = readMessage(reader, context.name);
            (isFirst ? context.inside : message.above) = kept;
            kept.clear();
            isFirst = false;
            file.messages.append(message);
        } else {
            kept.append(AuthorXmlCopy::take(reader));
        }
    }
    (isFirst ? context.inside : context.below) = kept;
    file.contexts.append(context);
}

/// Moves on to the root.
void readHead(QXmlStreamReader& reader, QStringList& comments)
{
    while (!reader.atEnd() && !reader.isStartElement()) {
        if (reader.isComment() || reader.isProcessingInstruction())
            comments.append(AuthorXmlCopy::take(reader));
        reader.readNext();
    }
}

/// Signs that no XML file may have become elements.
QString protectedText(const QString& text)
{
    const auto isControl = [](QChar character) {
        return character.unicode() < 0x20 && character != u'\n' && character != u'\t';
    };
    QString known = AuthorXmlCopy::protectedText(text);
    if (std::none_of(known.cbegin(), known.cend(), isControl))
        return known;
    QString result;
    for (const QChar character : std::as_const(known)) {
        if (isControl(character))
            result += u"<byte value=\"x%1\"/>"_s.arg(character.unicode(), 0, 16);
        else
            result += character;
    }
    return result;
}

/// What stands between elements, each part on its own line.
QString partsOf(const QStringList& parts, const QString& indent)
{
    QString result;
    for (const QString& part : parts)
        result += indent + part + u'\n';
    return result;
}

/// Likewise between contexts, where Qt's own tools indent what they keep for others.
QString rootPartsOf(const QStringList& parts)
{
    QString result;
    for (const QString& part : parts)
        result += (part.startsWith("<extra-"_L1) ? u"    "_s : QString()) + part + u'\n';
    return result;
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

/// Names and lines of the elements of a message, in their order.
using Lines = QList<std::pair<QString, QString>>;

void appendText(Lines& lines, const QString& name, const QString& text)
{
    if (!text.isEmpty())
        lines.append({name, u"        <%1>%2</%1>\n"_s.arg(name, protectedText(text))});
}

/// With what stands in front of each line; of lines that are gone, at the end.
QString joined(const Lines& lines, QList<std::pair<QString, QString>> inside)
{
    QString result;
    for (const auto& [name, line] : lines) {
        const auto isInFront = [&name = name](const auto& part) { return part.first == name; };
        for (const auto& part : std::as_const(inside))
            result += isInFront(part) ? partsOf({part.second}, u"        "_s) : QString();
        inside.removeIf(isInFront);
        result += line;
    }
    for (const auto& part : std::as_const(inside))
        result += partsOf({part.second}, u"        "_s);
    return result;
}

QString messageOf(const Message& message)
{
    QString result = partsOf(message.above, u"    "_s) + u"    <message"_s;
    if (!message.id.isEmpty())
        result += u" id=\"%1\""_s.arg(protectedText(message.id));
    result += message.isNumerus ? u" numerus=\"yes\">\n"_s : u">\n"_s;
    for (const AuthorTsLocation& location : message.locations)
        result += u"        <location filename=\"%1\" line=\"%2\"/>\n"_s.arg(
            protectedText(location.file), QString::number(location.line));
    const QString source = u"        <source>%1</source>\n"_s.arg(protectedText(message.source));
    Lines lines{{u"source"_s, source}};
    appendText(lines, u"oldsource"_s, message.oldSource);
    appendText(lines, u"comment"_s, message.comment);
    appendText(lines, u"oldcomment"_s, message.oldComment);
    appendText(lines, u"extracomment"_s, message.extraComment);
    appendText(lines, u"translatorcomment"_s, message.translatorComment);
    lines.append({u"translation"_s, translationOf(message)});
    appendText(lines, u"userdata"_s, message.userData);
    for (const auto& [name, value] : message.extras)
        appendText(lines, name, value);
    return result + joined(lines, message.inside) + u"    </message>\n"_s;
}

QString contextsOf(const AuthorTsFile& file)
{
    QString result;
    QStringList names;
    QHash<QString, AuthorTsContext> known;
    for (const AuthorTsContext& context : file.contexts) {
        if (!known.contains(context.name))
            names.append(context.name);
        // One may stand in a file several times.
        AuthorTsContext& all = known[context.name];
        all.above += context.above;
        all.inside += context.inside;
        all.below += context.below;
    }
    QHash<QString, QString> texts;
    for (const Message& message : file.messages) {
        if (!known.contains(message.context) && !texts.contains(message.context))
            names.append(message.context);
        texts[message.context] += messageOf(message);
    }
    for (const QString& name : std::as_const(names)) {
        const AuthorTsContext context = known.value(name);
        const QString content = partsOf(context.inside, u"    "_s) + texts.value(name)
            + partsOf(context.below, u"    "_s);
        result += rootPartsOf(context.above);
        if (!content.isEmpty())
            result += u"<context>\n    <name>%1</name>\n%2</context>\n"_s.arg(protectedText(name),
                                                                              content);
    }
    return result;
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
    // So that what is kept keeps its prefixes.
    reader.setNamespaceProcessing(false);
    AuthorTsFile file;
    readHead(reader, file.comments);
    if (!reader.hasError() && reader.qualifiedName() != "TS"_L1) {
        fault = {{reader.lineNumber(), 1}, u"its root is not <TS>"_s};
        return std::nullopt;
    }
    file.readRoot(reader);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isComment() || reader.isProcessingInstruction())
            file.behind.append(AuthorXmlCopy::take(reader));
    }
    if (!reader.hasError())
        return file;
    fault = {{reader.lineNumber(), std::max<qint64>(reader.columnNumber(), 1)},
             reader.errorString()};
    return std::nullopt;
}

void AuthorTsFile::readRoot(QXmlStreamReader& reader)
{
    const QXmlStreamAttributes present = reader.attributes();
    for (const QXmlStreamAttribute& attribute : present) {
        const QString name = attribute.qualifiedName().toString();
        if (name == "language"_L1)
            language = attribute.value().toString();
        else if (name == "sourcelanguage"_L1)
            sourceLanguage = attribute.value().toString();
        else if (name != "version"_L1)
            attributes.append({name, attribute.value().toString()});
    }
    while (AuthorXmlCopy::nextChild(reader, below)) {
        if (reader.qualifiedName() == "context"_L1) {
            readContext(reader, *this, std::exchange(below, {}));
        } else if (reader.qualifiedName() == "message"_L1) {
            messages.append(readMessage(reader, QString()));
            messages.last().above = std::exchange(below, {});
        } else {
            below.append(AuthorXmlCopy::take(reader));
        }
    }
}

QByteArray AuthorTsFile::write() const
{
    QString result = u"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"_s + partsOf(comments, {})
        + u"<!DOCTYPE TS>\n<TS version=\"2.1\""_s;
    if (!language.isEmpty())
        result += u" language=\"%1\""_s.arg(protectedText(language));
    if (!sourceLanguage.isEmpty())
        result += u" sourcelanguage=\"%1\""_s.arg(protectedText(sourceLanguage));
    for (const auto& [name, value] : attributes)
        result += u" %1=\"%2\""_s.arg(name, protectedText(value));
    result += u">\n"_s;
    result += contextsOf(*this);
    return (result + rootPartsOf(below) + u"</TS>\n"_s + partsOf(behind, {})).toUtf8();
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
