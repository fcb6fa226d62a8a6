// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLESCANNER_H
#define VLKEYTABLESCANNER_H

#include "VLKeyTableFile.h"

#include <QByteArray>
#include <QList>

namespace Vidlets {

/// A checksum over bytes that come in pieces; how they are cut does not matter.
class VLKeyTableChecksum
{
public:
    void add(const char* data, qsizetype size);
    quint32 value() const;
    /// Returns as much as 64 bits tell.
    quint64 longValue() const;

private:
    void mix(quint64 word);

    quint64 m_state = 0;
    /// Bytes that do not fill a word yet.
    quint64 m_rest = 0;
    int m_restBytes = 0;
};

/**
 * Finds where in the bytes of an XML file the children of the root stand.
 *
 * It runs beside an XML reader that gets the same bytes, and looks for nothing but the ends of
 * tags: what it says holds as far as the reader has found the document well-formed, and as long as
 * no entity holds markup. The reader itself counts characters of the decoded text, which lead to no
 * place in the file. Memory does not grow with the file as long as the children are taken.
 *
 * Internal to the host kit. A value; one is used on one thread.
 */
class VLKeyTableScanner
{
public:
    /// A child of the root.
    struct Child
    {
        qint64 start = 0;
        qint64 length = 0;
        /// Of the head and the child.
        quint32 checksum = 0;
    };

    /// Takes the next bytes of the file.
    void feed(const char* data, qsizetype size);

    /// Returns how the bytes are read; none before the first of them.
    VLKeyTableUnit unit() const
    {
        return m_unit;
    }
    /// Returns the length in bytes of what ends with the root's start tag; 0 before its end.
    qint64 headLength() const
    {
        return m_headLength;
    }
    /// Gives the children one after the other. Returns whether there was one.
    bool takeChild(Child& child);

private:
    enum class State : quint8 {
        Text,
        Open,
        StartTag,
        Quoted,
        EndTag,
        Bang,
        CommentOpen,
        Comment,
        CData,
        Instruction,
        DocumentType,
        DocumentTypeQuoted,
        Declaration,
        DeclarationBang
    };

    void scan(const uchar* units, qsizetype count);
    void step(uchar unit);
    void stepMarkup(uchar unit);
    void stepDocumentType(uchar unit);
    void skipUntil(uchar unit, uchar repeated, int times);
    void beginMarkup();
    void endStartTag();
    void endEndTag();
    void endChild();
    void addToChecksum();
    qint64 endOffset() const;

    VLKeyTableUnit m_unit = VLKeyTableUnit::None;
    bool m_isStarted = false;
    int m_unitBytes = 1;
    State m_state = State::Text;
    /// What goes on behind a comment or an instruction.
    State m_outer = State::Text;
    uchar m_quote = 0;
    uchar m_previous = 0;
    int m_matched = 0;
    bool m_isInSubset = false;
    int m_depth = 0;

    /// The piece that is being read, its place in the file, and the unit that it is read at.
    const char* m_data = nullptr;
    qint64 m_offset = 0;
    qsizetype m_index = 0;
    /// From where on the checksum lacks the bytes of the piece.
    qsizetype m_checksumFrom = 0;
    /// A unit that the last piece has cut in two.
    QByteArray m_cut;

    qint64 m_headLength = 0;
    qint64 m_markupStart = 0;
    qint64 m_childStart = 0;
    VLKeyTableChecksum m_checksum;
    VLKeyTableChecksum m_headChecksum;
    QList<Child> m_children;
};

} // namespace Vidlets

#endif
