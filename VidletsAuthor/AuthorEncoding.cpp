// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorEncoding.h"

#include <QByteArrayView>
#include <QRegularExpression>
#include <QStringConverter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets::AuthorEncoding {

namespace {

/// The encoding that a file says it has, UTF-8 where it says nothing; null for one that shows by
/// its first bytes.
QString encodingOf(const QByteArray& bytes)
{
    static const QRegularExpression declared(
        u"^\\x{FEFF}?<\\?xml[^>]*\\bencoding\\s*=\\s*[\"']([^\"']*)[\"']"_s);
    constexpr qsizetype kDeclarationLength = 256;
    if (isWide(bytes))
        return QString();
    const QString head = QString::fromUtf8(bytes.left(kDeclarationLength));
    const QRegularExpressionMatch match = declared.match(head);
    return match.hasMatch() ? match.captured(1) : u"UTF-8"_s;
}

/// As the library's reader takes it, "utf8" is the same.
bool isUtf8(const QString& encoding)
{
    return QStringConverter::encodingForName(encoding.toLatin1().constData())
        == QStringConverter::Utf8;
}

bool isAscii(const QString& encoding)
{
    return encoding.compare("us-ascii"_L1, Qt::CaseInsensitive) == 0
        || encoding.compare("ascii"_L1, Qt::CaseInsensitive) == 0;
}

XmlPosition firstByteAboveAscii(const QByteArray& bytes)
{
    const auto found = std::find_if(bytes.cbegin(), bytes.cend(),
                                    [](char byte) { return static_cast<uchar>(byte) > 0x7f; });
    if (found == bytes.cend())
        return {};
    const QByteArrayView before = QByteArrayView(bytes).first(found - bytes.cbegin());
    return {std::count(before.cbegin(), before.cend(), '\n') + 1,
            before.size() - before.lastIndexOf('\n')};
}

/// How many bytes a character has that begins with @p lead.
qsizetype lengthFrom(uchar lead)
{
    if (lead < 0xe0)
        return lead < 0xc0 ? 1 : 2;
    return lead < 0xf0 ? 3 : 4;
}

/// In UTF-16, as all columns.
qint64 firstInvalidColumn(QByteArrayView line)
{
    qint64 column = 1;
    for (qsizetype at = 0; at < line.size();) {
        const qsizetype length = lengthFrom(static_cast<uchar>(line.at(at)));
        if (length > line.size() - at || !line.sliced(at, length).isValidUtf8())
            break;
        column += length == 4 ? 2 : 1;
        at += length;
    }
    return column;
}

} // namespace

bool isWide(const QByteArray& bytes)
{
    return bytes.startsWith("\xff\xfe") || bytes.startsWith("\xfe\xff")
        || bytes.left(4).contains('\0');
}

XmlPosition firstInvalidByte(const QByteArray& bytes)
{
    qint64 number = 0;
    for (qsizetype begin = 0; begin < bytes.size();) {
        qsizetype end = bytes.indexOf('\n', begin);
        end = end < 0 ? bytes.size() : end;
        const QByteArrayView line = QByteArrayView(bytes).sliced(begin, end - begin);
        ++number;
        if (!line.isValidUtf8())
            return {number, firstInvalidColumn(line)};
        begin = end + 1;
    }
    return {};
}

XmlPosition firstWrongByte(const QByteArray& bytes, QString& encoding)
{
    encoding = encodingOf(bytes);
    if (isUtf8(encoding))
        return firstInvalidByte(bytes);
    return isAscii(encoding) ? firstByteAboveAscii(bytes) : XmlPosition();
}

} // namespace Vidlets::AuthorEncoding
