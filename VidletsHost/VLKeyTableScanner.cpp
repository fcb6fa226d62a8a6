// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLKeyTableScanner.h"

#include <QStringConverter>
#include <QVarLengthArray>
#include <QtEndian>

#include <cstring>
#include <optional>

namespace Vidlets {

namespace {

constexpr int kWordBytes = 8;
constexpr int kBitsPerByte = 8;
constexpr qsizetype kUsualPieceBytes = 8192;
constexpr uchar kNoAscii = 0xFF;
constexpr ushort kMaxAscii = 0x7F;

VLKeyTableUnit unitOf(const char* data, qsizetype size)
{
    const std::optional<QStringConverter::Encoding> encoding =
        QStringConverter::encodingForData(QByteArrayView(data, size), u'<');
    switch (encoding.value_or(QStringConverter::Utf8)) {
    case QStringConverter::Utf8:
        return VLKeyTableUnit::Byte;
    case QStringConverter::Utf16LE:
        return VLKeyTableUnit::LittleWord;
    case QStringConverter::Utf16BE:
        return VLKeyTableUnit::BigWord;
    default:
        return VLKeyTableUnit::None;
    }
}

} // namespace

void VLKeyTableChecksum::add(const char* data, qsizetype size)
{
    while (size > 0 && (m_restBytes > 0 || size < kWordBytes)) {
        m_rest |= quint64(uchar(*data)) << (m_restBytes * kBitsPerByte);
        ++data;
        --size;
        if (++m_restBytes < kWordBytes)
            continue;
        mix(m_rest);
        m_rest = 0;
        m_restBytes = 0;
    }
    for (; size >= kWordBytes; size -= kWordBytes, data += kWordBytes)
        mix(qFromLittleEndian<quint64>(data));
    if (size > 0)
        add(data, size);
}

void VLKeyTableChecksum::mix(quint64 word)
{
    constexpr quint64 kMultiplier = 0x9E3779B97F4A7C15;
    constexpr int kShift = 29;
    m_state = (m_state ^ word) * kMultiplier;
    m_state ^= m_state >> kShift;
}

quint32 VLKeyTableChecksum::value() const
{
    return quint32(longValue() >> 32);
}

quint64 VLKeyTableChecksum::longValue() const
{
    VLKeyTableChecksum end = *this;
    end.mix(m_rest);
    end.mix(quint64(m_restBytes));
    return end.m_state;
}

void VLKeyTableScanner::feed(const char* data, qsizetype size)
{
    if (size <= 0)
        return;
    if (!m_isStarted) {
        m_isStarted = true;
        m_unit = unitOf(data, size);
        m_unitBytes = m_unit == VLKeyTableUnit::Byte ? 1 : 2;
    }
    if (m_unit == VLKeyTableUnit::None)
        return;

    QByteArray joined;
    if (!m_cut.isEmpty()) {
        joined = m_cut + QByteArray(data, size);
        m_cut.clear();
        data = joined.constData();
        size = joined.size();
    }
    const qsizetype count = size / m_unitBytes;
    if (count * m_unitBytes < size)
        m_cut = QByteArray(data + count * m_unitBytes, size - count * m_unitBytes);
    m_data = data;
    m_checksumFrom = 0;
    if (m_unit == VLKeyTableUnit::Byte) {
        scan(reinterpret_cast<const uchar*>(data), count);
    } else {
        QVarLengthArray<uchar, kUsualPieceBytes> units(count);
        for (qsizetype i = 0; i < count; ++i) {
            const char* pair = data + i * 2;
            const auto unit = m_unit == VLKeyTableUnit::LittleWord ? qFromLittleEndian<ushort>(pair)
                                                                   : qFromBigEndian<ushort>(pair);
            units[i] = unit > kMaxAscii ? kNoAscii : uchar(unit);
        }
        scan(units.constData(), count);
    }
    m_offset += count * m_unitBytes;
    m_data = nullptr;
}

bool VLKeyTableScanner::takeChild(Child& child)
{
    if (m_children.isEmpty())
        return false;
    child = m_children.takeFirst();
    return true;
}

void VLKeyTableScanner::scan(const uchar* units, qsizetype count)
{
    m_index = 0;
    while (m_index < count) {
        if (m_state != State::Text && m_state != State::Quoted) {
            step(units[m_index++]);
            continue;
        }
        // Most of a file is text and values.
        const int wanted = m_state == State::Text ? '<' : m_quote;
        const auto* found =
            static_cast<const uchar*>(std::memchr(units + m_index, wanted, count - m_index));
        m_index = found ? found - units : count;
        if (!found)
            break;
        if (m_state == State::Text)
            beginMarkup();
        else
            m_state = State::StartTag;
        m_previous = 0;
        ++m_index;
    }
    addToChecksum();
    m_checksumFrom = 0;
}

/// Takes a unit that is neither text nor within a value; the index is behind it already.
void VLKeyTableScanner::step(uchar unit)
{
    switch (m_state) {
    case State::StartTag:
        if (unit == '"' || unit == '\'') {
            m_quote = unit;
            m_state = State::Quoted;
        } else if (unit == '>') {
            endStartTag();
        }
        m_previous = unit;
        break;
    case State::EndTag:
        if (unit == '>')
            endEndTag();
        break;
    case State::Comment:
        skipUntil(unit, '-', 2);
        break;
    case State::CData:
        skipUntil(unit, ']', 2);
        break;
    case State::Instruction:
        skipUntil(unit, '?', 1);
        break;
    case State::Open:
    case State::Bang:
    case State::CommentOpen:
        stepMarkup(unit);
        break;
    default:
        stepDocumentType(unit);
        break;
    }
}

/// Finds out what begins with a bracket.
void VLKeyTableScanner::stepMarkup(uchar unit)
{
    m_matched = 0;
    if (m_state == State::CommentOpen) {
        m_state = State::Comment;
    } else if (m_state == State::Open) {
        m_outer = State::Text;
        if (unit == '!') {
            m_state = State::Bang;
        } else if (unit == '?') {
            m_state = State::Instruction;
        } else if (unit == '/') {
            m_state = State::EndTag;
        } else {
            m_state = State::StartTag;
            if (m_depth == 1)
                m_childStart = m_markupStart;
        }
    } else if (unit == '-') {
        m_state = State::CommentOpen;
    } else if (unit == '[') {
        m_state = State::CData;
    } else {
        m_state = State::DocumentType;
        m_isInSubset = false;
    }
}

void VLKeyTableScanner::stepDocumentType(uchar unit)
{
    switch (m_state) {
    case State::DocumentTypeQuoted:
        if (unit == m_quote)
            m_state = State::DocumentType;
        return;
    case State::Declaration:
        m_matched = 0;
        m_outer = State::DocumentType;
        if (unit == '!')
            m_state = State::DeclarationBang;
        else
            m_state = unit == '?' ? State::Instruction : State::DocumentType;
        return;
    case State::DeclarationBang:
        m_state = unit == '-' ? State::CommentOpen : State::DocumentType;
        return;
    default:
        break;
    }
    if (unit == '"' || unit == '\'') {
        m_quote = unit;
        m_state = State::DocumentTypeQuoted;
    } else if (unit == '[' || unit == ']') {
        m_isInSubset = unit == '[';
    } else if (unit == '<') {
        m_state = State::Declaration;
    } else if (unit == '>' && !m_isInSubset) {
        m_state = State::Text;
    }
}

/// Ends what goes on until a bracket comes behind a unit that is there so many times.
void VLKeyTableScanner::skipUntil(uchar unit, uchar repeated, int times)
{
    if (unit == repeated)
        m_matched = qMin(m_matched + 1, times);
    else if (unit == '>' && m_matched == times)
        m_state = m_outer;
    else
        m_matched = 0;
}

void VLKeyTableScanner::beginMarkup()
{
    m_state = State::Open;
    m_markupStart = m_offset + m_index * m_unitBytes;
    if (m_depth != 1)
        return;
    // A child may begin here.
    m_checksum = m_headChecksum;
    m_checksumFrom = m_index;
}

void VLKeyTableScanner::endStartTag()
{
    m_state = State::Text;
    const bool isEmpty = m_previous == '/';
    if (m_depth == 0 && m_headLength == 0) {
        addToChecksum();
        m_headChecksum = m_checksum;
        m_headLength = endOffset();
    }
    if (!isEmpty)
        ++m_depth;
    else if (m_depth == 1)
        endChild();
}

void VLKeyTableScanner::endEndTag()
{
    m_state = State::Text;
    if (--m_depth == 1)
        endChild();
}

void VLKeyTableScanner::endChild()
{
    addToChecksum();
    m_children.append({m_childStart, endOffset() - m_childStart, m_checksum.value()});
}

void VLKeyTableScanner::addToChecksum()
{
    m_checksum.add(m_data + m_checksumFrom * m_unitBytes, (m_index - m_checksumFrom) * m_unitBytes);
    m_checksumFrom = m_index;
}

qint64 VLKeyTableScanner::endOffset() const
{
    return m_offset + m_index * m_unitBytes;
}

} // namespace Vidlets
