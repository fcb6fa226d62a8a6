// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSceneText.h"

#include "VLSceneSource.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextDocument>
#include <QTextFormat>
#include <QVariant>

using namespace Qt::StringLiterals;

namespace Vidlets::SceneText {

namespace {

// Each round takes all that can be seen; more are needed only where one uncovers the next.
constexpr int kMaxRounds = 4;
constexpr qint64 kMaxSheetBytes = qint64(1024) * 1024;

void addOnce(const QString& address, QStringList& addresses)
{
    if (!address.isEmpty() && !addresses.contains(address))
        addresses.append(address);
}

/// The pictures and backgrounds in @p document.
void addOfFormats(const QTextDocument& document, QStringList& addresses)
{
    const QList<QTextFormat> formats = document.allFormats();
    for (const QTextFormat& format : formats) {
        if (format.isImageFormat())
            addOnce(format.toImageFormat().name(), addresses);
        const QVariant background = format.property(QTextFormat::BackgroundImageUrl);
        if (background.isValid())
            addOnce(background.toString(), addresses);
    }
}

/// Writes down what it is asked to load, and loads nothing but style sheets that may be read, since
/// those can ask for more.
class RecordingDocument : public QTextDocument
{
public:
    RecordingDocument(const QUrl& base, const VLContentRoots& roots)
        : m_base(base)
        , m_roots(roots)
    {
        setUndoRedoEnabled(false);
    }

    QStringList addresses() const
    {
        QStringList all = m_addresses;
        addOfFormats(*this, all);
        return all;
    }

protected:
    QVariant loadResource(int type, const QUrl& name) override
    {
        const QString address = name.toString();
        addOnce(address, m_addresses);
        const QUrl url = m_base.resolved(name);
        if (type != StyleSheetResource || !url.isLocalFile()
            || SceneSource::leadsOut(address, m_base, m_roots))
            return QVariant(QString());
        QFile sheet(url.toLocalFile());
        return sheet.open(QIODevice::ReadOnly) ? QString::fromUtf8(sheet.read(kMaxSheetBytes))
                                               : QString();
    }

private:
    QUrl m_base;
    const VLContentRoots& m_roots;
    QStringList m_addresses;
};

bool mayLoad(const QString& text)
{
    static const QRegularExpression hint(u"img|link|style|background"_s,
                                         QRegularExpression::CaseInsensitiveOption
                                             | QRegularExpression::UseUnicodePropertiesOption);
    return text.contains(u'<') && text.contains(hint);
}

QStringList addressesOfRich(const QString& text, const QUrl& base, const VLContentRoots& roots)
{
    if (!mayLoad(text))
        return {};
    RecordingDocument document(base, roots);
    document.setHtml(text);
    return document.addresses();
}

QStringList addressesOfMarkdown(const QString& text, const QUrl& base, const VLContentRoots& roots)
{
    if (!text.contains("!["_L1) && !mayLoad(text))
        return {};
    RecordingDocument document(base, roots);
    document.setMarkdown(text);
    return document.addresses();
}

/// Each value of a "src", in or out of a tag. Styled text ends a value at either quote.
QStringList addressesOfStyled(const QString& text)
{
    static const QRegularExpression source(u"src=[\"']"_s);
    QStringList addresses;
    if (!text.contains(u'<'))
        return addresses;
    QRegularExpressionMatchIterator matches = source.globalMatch(text);
    while (matches.hasNext()) {
        const qsizetype begin = matches.next().capturedEnd();
        qsizetype end = begin;
        while (end < text.size() && text.at(end) != u'"' && text.at(end) != u'\'')
            ++end;
        addOnce(text.mid(begin, end - begin), addresses);
    }
    return addresses;
}

QStringList addressesOf(const QString& text, Format format, const QUrl& base,
                        const VLContentRoots& roots)
{
    switch (format) {
    case Plain:
        break;
    case Rich:
        return addressesOfRich(text, base, roots);
    case Markdown:
        return addressesOfMarkdown(text, base, roots);
    case Auto:
        return Qt::mightBeRichText(text) ? addressesOfStyled(text) : QStringList();
    case Styled:
        return addressesOfStyled(text);
    }
    return {};
}

QStringList straysAmong(const QStringList& addresses, const QUrl& base, const VLContentRoots& roots)
{
    QStringList strays;
    for (const QString& address : addresses) {
        if (SceneSource::leadsOut(address, base, roots))
            strays.append(address);
    }
    return strays;
}

QStringList straysInAnyFormat(const QString& text, const QUrl& base, const VLContentRoots& roots)
{
    QStringList strays;
    for (const Format format : {Rich, Markdown, Styled}) {
        const QStringList found = strayAddresses(text, format, base, roots);
        for (const QString& stray : found)
            addOnce(stray, strays);
    }
    return strays;
}

/// @p text without those of @p strays that stand where an address can. The same letters elsewhere
/// are left alone.
QString withoutAddresses(const QString& text, const QStringList& strays)
{
    static const QRegularExpression place(u"(?:\\b(?:src|source|href|background)\\s*+=\\s*+|"
                                          u"\\burl\\(\\s*+|@import\\s*+|\\]\\(\\s*+|\\]:\\s*+)"
                                          "(?:[\"'<]|&quot;)?"_s,
                                          QRegularExpression::CaseInsensitiveOption);
    QString result;
    qsizetype kept = 0;
    QRegularExpressionMatchIterator places = place.globalMatch(text);
    while (places.hasNext()) {
        const qsizetype begin = places.next().capturedEnd();
        qsizetype length = 0;
        for (const QString& stray : strays) {
            if (QStringView(text).mid(begin).startsWith(stray))
                length = qMax(length, stray.size());
        }
        if (length == 0 || begin < kept)
            continue;
        result += QStringView(text).mid(kept, begin - kept);
        kept = begin + length;
    }
    result += QStringView(text).mid(kept);
    return result;
}

} // namespace

QStringList strayAddresses(const QString& text, Format format, const QUrl& base,
                           const VLContentRoots& roots)
{
    return straysAmong(addressesOf(text, format, base, roots), base, roots);
}

QStringList strayAddresses(const QTextDocument& document, const QUrl& base,
                           const VLContentRoots& roots)
{
    QStringList addresses;
    addOfFormats(document, addresses);
    return straysAmong(addresses, base, roots);
}

QString cleaned(const QString& text, const QUrl& base, const VLContentRoots& roots,
                QStringList& strays)
{
    QString result = text;
    for (int round = 0; round < kMaxRounds; ++round) {
        const QStringList found = straysInAnyFormat(result, base, roots);
        if (found.isEmpty())
            return result;
        for (const QString& stray : found)
            addOnce(stray, strays);
        const QString rest = withoutAddresses(result, found);
        if (rest == result)
            break;
        result = rest;
    }
    return straysInAnyFormat(result, base, roots).isEmpty() ? result : QString();
}

} // namespace Vidlets::SceneText
