// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLVectorPicture.h"

#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets::VectorPicture {

namespace {

// Enough to tell what a file is.
constexpr qint64 kHeadBytes = 64;
constexpr qint64 kMaxPictureBytes = qint64(16) * 1024 * 1024;

/// Whether @p head begins a document in XML, or one that is packed, in which one may hide.
bool mayBeVector(const QByteArray& head)
{
    static const QList<QByteArray> beginnings = {
        QByteArrayLiteral("<"),           QByteArrayLiteral("\x1f\x8b"),
        QByteArrayLiteral("\xff\xfe"),    QByteArrayLiteral("\xfe\xff"),
        QByteArrayLiteral("\0<"),         QByteArrayLiteral("\0\0\0<"),
        QByteArrayLiteral("\0\0\xfe\xff")};
    const QByteArray start = (head.startsWith("\xef\xbb\xbf") ? head.mid(3) : head).trimmed();
    return std::any_of(
        beginnings.cbegin(), beginnings.cend(),
        [&start](const QByteArray& beginning) { return start.startsWith(beginning); });
}

QByteArray contentOf(const QByteArray& address)
{
    const qsizetype comma = address.indexOf(',');
    const QByteArray content = QByteArray::fromPercentEncoding(address.mid(comma + 1));
    return address.left(comma).toLower().contains(";base64") ? QByteArray::fromBase64(content)
                                                             : content;
}

/// Whether @p address stays within the picture. What it holds itself may be another picture.
bool isWithin(const QString& address)
{
    const QString place = address.trimmed();
    if (place.isEmpty() || place.startsWith(u'#'))
        return true;
    return place.startsWith("data:"_L1) && !mayBeVector(contentOf(place.toUtf8()).left(kHeadBytes));
}

bool hasOuter(const QRegularExpression& form, const QString& text)
{
    QRegularExpressionMatchIterator matches = form.globalMatch(text);
    while (matches.hasNext()) {
        if (!isWithin(matches.next().captured(1)))
            return true;
    }
    return false;
}

} // namespace

bool reachesOut(const QByteArray& content)
{
    if (!mayBeVector(content.left(kHeadBytes)))
        return false;
    if (content.size() > kMaxPictureBytes || content.contains('\0')
        || content.startsWith("\x1f\x8b"))
        return true;
    // Entities and other encodings hide letters.
    static const QRegularExpression hiding(
        u"<!ENTITY|encoding\\s*+=\\s*+[\"'](?!utf-8|us-ascii|iso-8859-|latin1)"_s,
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression reference(u"\\bhref\\s*+=\\s*+[\"']([^\"']*+)"_s,
                                              QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression style(
        u"(?:\\burl\\(\\s*+(?:[\"']|&quot;)?|@import\\s*+)([^)]*+)"_s,
        QRegularExpression::CaseInsensitiveOption);
    const QString text = QString::fromUtf8(content);
    static const QRegularExpression vector(u"svg|<!ENTITY"_s,
                                           QRegularExpression::CaseInsensitiveOption);
    if (!text.contains(vector))
        return false;
    return text.contains(hiding) || hasOuter(reference, text) || hasOuter(style, text);
}

bool fileReachesOut(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    if (!mayBeVector(file.peek(kHeadBytes)))
        return false;
    return reachesOut(file.read(kMaxPictureBytes + 1));
}

bool dataReachesOut(const QUrl& url)
{
    return reachesOut(contentOf(url.toEncoded()));
}

} // namespace Vidlets::VectorPicture
