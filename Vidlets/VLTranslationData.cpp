// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLTranslationData.h"

#include <QBitArray>
#include <QList>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <optional>

namespace Vidlets::TranslationData {

namespace {

constexpr std::array<char, 16> kMagic{'\x3C', '\xB8', '\x64', '\x18', '\xCA', '\xEF',
                                      '\x9C', '\x95', '\xCD', '\x21', '\x1C', '\xBF',
                                      '\x60', '\xA1', '\xBD', '\xDD'};

// What stands in front of a section: its tag and its length.
constexpr qsizetype kSectionHeadBytes = 5;
// A hash and the offset of its message.
constexpr qsizetype kHashBytes = 8;
constexpr qsizetype kOffsetBytes = 4;

enum SectionTag : quint8 {
    ContextsTag = 0x2F,
    HashesTag = 0x42,
    MessagesTag = 0x69,
    DependenciesTag = 0x96
};

enum MessageTag : quint8 {
    EndTag = 1,
    TranslationTag = 3,
    ObsoleteTag = 5,
    SourceTextTag = 6,
    ContextTag = 7,
    CommentTag = 8
};

struct Section
{
    quint8 tag;
    QByteArray content;
};

/// Numbers in a block of bytes, of which none outside the block is read.
class Block
{
public:
    explicit Block(const QByteArray& bytes)
        : m_bytes(bytes)
    {
    }

    qsizetype size() const
    {
        return m_bytes.size();
    }
    bool holds(qsizetype offset, qsizetype count) const
    {
        return offset >= 0 && count >= 0 && offset <= size() && count <= size() - offset;
    }
    template <typename Number> Number at(qsizetype offset) const
    {
        // The compiler must not take a file without bytes for one that is read.
        Number number = 0;
        for (qsizetype i = 0; i < qsizetype(sizeof(Number)); ++i)
            number = static_cast<Number>((quint64(number) << 8U) | quint8(m_bytes.at(offset + i)));
        return number;
    }

private:
    QByteArray m_bytes;
};

/// Splits a file into its sections. Nothing where it is none or a section reaches beyond the end.
std::optional<QList<Section>> sectionsOf(const QByteArray& file)
{
    QList<Section> sections;
    const Block block(file);
    if (!file.startsWith(QByteArray::fromRawData(kMagic.data(), kMagic.size())))
        return std::nullopt;
    qsizetype offset = kMagic.size();
    // As QTranslator does it: what is too short for a section, or has no tag or length, is the end.
    while (block.size() - offset > kSectionHeadBytes) {
        const auto tag = block.at<quint8>(offset);
        const qsizetype length = block.at<quint32>(offset + 1);
        offset += kSectionHeadBytes;
        if (tag == 0 || length == 0)
            break;
        if (!block.holds(offset, length))
            return std::nullopt;
        sections.append({tag, file.mid(offset, length)});
        offset += length;
    }
    return sections;
}

/// Whether each chain of contexts ends within the section. No byte is walked over twice, since
/// chains may run into each other.
bool areContextsSound(const QByteArray& contexts)
{
    constexpr qsizetype kEntryBytes = 2;
    const Block block(contexts);
    if (!block.holds(0, kEntryBytes))
        return false;
    const qsizetype slotCount = block.at<quint16>(0);
    const qsizetype chains = kEntryBytes + slotCount * kEntryBytes;
    if (slotCount == 0 || !block.holds(0, chains))
        return false;

    QBitArray visited(block.size());
    for (qsizetype slot = 0; slot < slotCount; ++slot) {
        const qsizetype entry = block.at<quint16>(kEntryBytes + slot * kEntryBytes);
        if (entry == 0)
            continue;
        qsizetype offset = chains + entry * kEntryBytes;
        for (;;) {
            // The last chain ends with the section, without a mark; checked() adds it.
            if (offset == block.size())
                break;
            if (!block.holds(offset, 1))
                return false;
            if (visited.testBit(offset))
                break;
            visited.setBit(offset);
            const qsizetype length = block.at<quint8>(offset);
            if (length == 0)
                break;
            offset += 1 + length;
        }
    }
    return true;
}

/// Where the record of a message at @p offset goes on, itself if it ends there; -1 where it leaves
/// the section.
qsizetype nextField(const Block& messages, qsizetype offset)
{
    switch (messages.at<quint8>(offset)) {
    case TranslationTag:
    case SourceTextTag:
    case ContextTag:
    case CommentTag: {
        if (!messages.holds(offset + 1, kOffsetBytes))
            return -1;
        const qsizetype length = messages.at<quint32>(offset + 1);
        const qsizetype text = offset + 1 + kOffsetBytes;
        return messages.holds(text, length) ? text + length : -1;
    }
    case ObsoleteTag:
        return messages.holds(offset + 1, kOffsetBytes) ? offset + 1 + kOffsetBytes : -1;
    default:
        // EndTag, or one at which the lookup gives up.
        return offset;
    }
}

bool areMessagesSound(const QByteArray& hashes, const QByteArray& messages)
{
    const Block table(hashes);
    const Block block(messages);
    if (table.size() % kHashBytes != 0)
        return false;
    QBitArray visited(block.size());
    for (qsizetype entry = 0; entry < table.size(); entry += kHashBytes) {
        qsizetype offset = table.at<quint32>(entry + kOffsetBytes);
        if (offset > block.size())
            return false;
        // The end of the section ends a record too.
        while (offset < block.size() && !visited.testBit(offset)) {
            visited.setBit(offset);
            const qsizetype next = nextField(block, offset);
            if (next < 0)
                return false;
            if (next == offset)
                break;
            offset = next;
        }
    }
    return true;
}

void appendSection(QByteArray& file, quint8 tag, const QByteArray& content)
{
    if (content.isEmpty())
        return;
    std::array<char, kSectionHeadBytes> head{};
    head[0] = static_cast<char>(tag);
    qToBigEndian(static_cast<quint32>(content.size()), &head[1]);
    file.append(head.data(), head.size());
    file.append(content);
}

} // namespace

QByteArray checked(const QByteArray& file)
{
    QByteArray contexts;
    QByteArray hashes;
    QByteArray messages;
    const std::optional<QList<Section>> sections = sectionsOf(file);
    if (!sections)
        return QByteArray();
    // Of several with one tag the last counts.
    for (const Section& section : *sections) {
        if (section.tag == ContextsTag)
            contexts = section.content;
        else if (section.tag == HashesTag)
            hashes = section.content;
        else if (section.tag == MessagesTag)
            messages = section.content;
    }
    if (!contexts.isEmpty() && !areContextsSound(contexts))
        return QByteArray();
    // One that was cut off before its first text would turn all texts into empty ones.
    if (hashes.isEmpty() || !areMessagesSound(hashes, messages))
        return QByteArray();

    if (!contexts.isEmpty())
        contexts.append('\0');
    QByteArray result(kMagic.data(), kMagic.size());
    appendSection(result, ContextsTag, contexts);
    appendSection(result, HashesTag, hashes);
    appendSection(result, MessagesTag, messages);
    return result;
}

bool hasDependencies(const QByteArray& file)
{
    const std::optional<QList<Section>> sections = sectionsOf(file);
    return sections
        && std::any_of(sections->cbegin(), sections->cend(),
                       [](const Section& section) { return section.tag == DependenciesTag; });
}

} // namespace Vidlets::TranslationData
