// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEREADER_H
#define VLKEYTABLEREADER_H

#include "VLKeyTableFile.h"
#include "VLKeyTableScanner.h"
#include "VLSearchCollector.h"
#include "VLSearchText.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QXmlStreamReader>

#include <atomic>

namespace Vidlets {

/**
 * Reads one control file into the rows of the table, in one pass and without building elements.
 *
 * It gets the bytes in the same pieces as VLXmlParser does, since a fault of the encoding shows
 * when a piece is decoded and not where it stands. Nothing that a file holds can end the process:
 * each fault ends up in the result. Memory grows with the number of tips, not with their length.
 *
 * Internal to the host kit. One reader reads one file, on any thread.
 */
class VLKeyTableReader
{
public:
    enum class Keys {
        Omit,
        List
    };

    /// Prepares to read the file @p path. Where @p isCancelled, which may be null and stays the
    /// caller's, becomes true, the pass ends early.
    explicit VLKeyTableReader(const QString& path, Keys keys = Keys::Omit,
                              const std::atomic<bool>* isCancelled = nullptr);

    /// Reads the file. What a cancelled pass gives means nothing.
    VLKeyTableFile read();
    /// As read(), and gives what is searched of the tips that lookups find in the file.
    VLKeyTableFile read(QList<VLSearchText>* texts);

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableReader)

    /// A key in the file.
    struct Place
    {
        qsizetype row = 0;
        int count = 0;
    };

    void readOnce();
    void readDocument(QXmlStreamReader& xml);
    void readStartTag(const QXmlStreamReader& xml);
    void readRoot(const QXmlStreamReader& xml);
    void readChild(const QXmlStreamReader& xml);
    void readEndOfChild();
    void judge(const QXmlStreamReader& xml);
    void locateFault(XmlReport& report) const;
    void finishRows();
    void takeText();
    QList<VLSearchText> finishTexts();
    bool canReadParts() const;

    const QString m_path;
    const Keys m_keys;
    const std::atomic<bool>* const m_isCancelled;

    VLKeyTableScanner m_scanner;
    VLKeyTableFile m_file;
    QString m_rootKey;
    XmlPosition m_rootPosition;
    QString m_encoding;
    qint64 m_depth = 0;
    /// Whether an entity holds markup, so that what the reader meets need not stand in the file.
    bool m_hasMarkupEntity = false;
    /// Whether the scanner and the reader agree.
    bool m_isInStep = true;

    /// The child of the root that is open.
    VLKeyTableRow m_row;
    bool m_isRow = false;
    QHash<QString, Place> m_places;
    /// What is searched, row by row; only where that is asked for.
    bool m_hasTexts = false;
    VLSearchCollector m_collector;
    QList<VLSearchText> m_texts;
    int m_childCount = 0;
    int m_nestedCount = 0;
    VLKeyTableRow m_nested;
};

} // namespace Vidlets

#endif
