// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORCONTROLREADER_H
#define AUTHORCONTROLREADER_H

#include "AuthorControlFile.h"

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QXmlStreamReader>

namespace Vidlets {

struct AuthorXmlFault;

/**
 * Reads a control file or key data file in one pass and applies the rules that need no other file.
 *
 * For one file each.
 */
class AuthorControlReader
{
public:
    enum class Kind {
        ControlFile,
        KeyData
    };

    /// @p bytes is the content of the file @p path and has to stay.
    AuthorControlReader(Kind kind, const QString& path, const QByteArray& bytes,
                        AuthorFindings& findings);

    AuthorControlFile read();

private:
    /// What the file has in one of an element's text.
    struct Piece
    {
        qsizetype at = 0;
        XmlPosition position;
    };
    struct OpenElement
    {
        /// Its own text.
        QString text;
        /// Of the text, in order.
        QList<Piece> pieces;
        XmlPosition position;
        /// How many suppressions are open for it.
        int suppressions = 0;
    };

    void readToken();
    void startElement();
    void endElement();
    void comment();
    void readRoot();
    void checkRoot();
    void reportForeignRoot();
    void readTip();
    void readDirectory();
    void readKey(QLatin1StringView attribute);
    void reportTwice(const QString& key, qint64 line);
    void checkLocale();
    void checkAttributes(bool isTip);
    void checkAttribute(const QXmlStreamAttribute& attribute, bool isTip);
    void checkText(const OpenElement& element);
    void checkFault();
    void checkWrongByte();
    void checkOwnFault();
    void addFault(const AuthorXmlFault& fault);
    QString unrecognised() const;

    XmlPosition firstContentBehindRoot() const;
    XmlPosition placeOfTag() const;
    XmlPosition placeOf(const QString& attribute) const;
    XmlPosition placeIn(const OpenElement& element, qsizetype at) const;
    QByteArray line(qint64 number) const;
    void add(XmlPosition position, const char16_t* rule, const QString& message,
             const QString& help = QString());

    const Kind m_kind;
    const QLatin1StringView m_rootTag;
    const QLatin1StringView m_tipTag;
    const QByteArray& m_bytes;
    AuthorFindings& m_findings;
    QXmlStreamReader m_reader;
    AuthorControlFile m_file;
    QList<OpenElement> m_open;
    QList<AuthorSuppression> m_pending;
    QList<AuthorSuppression> m_suppressions;
    /// The numbers of those whose element is open, the innermost last.
    QList<qsizetype> m_openSuppressions;
    QHash<QString, qint64> m_lineOfKey;
    QSet<QString> m_keysTwice;
    /// Those that have a fault of the file itself.
    QSet<qint64> m_faultyLines;
    /// Where the present token begins.
    XmlPosition m_start;
    QString m_directory;
    QString m_rootDirectory;
    /// The attributes by which the root names scenes for all tips.
    QStringList m_rootScenes;
    /// Those for which a tip with neither has been met.
    QStringList m_usualScenes;
    QString m_rootName;
    bool m_isRecognised = true;
    bool m_isRootSeen = false;
    bool m_isRootForeign = false;
    bool m_isTooDeep = false;
    /// Whether the child of the root that is open, or was last, is a tip or record.
    bool m_isInTip = false;
    mutable QList<qsizetype> m_lineStarts;
};

} // namespace Vidlets

#endif
