// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLCONTENTGUARD_H
#define VLCONTENTGUARD_H

#include "VLXmlParser.h"
#include "VLXmlReport.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>

class QFile;

namespace Vidlets {

class VLIndexHooks;
class VLXmlElement;

/**
 * The one way to content files for a host that has set ckGuardContent.
 *
 * It opens nothing but regular files, gives out a tree only of a file that is well-formed to its
 * end, and warns of each fault once for as long as the file stays as it is. A file that was found
 * broken is not read again until it changes. Internal to the library; used on the user-interface
 * thread.
 */
class VLContentGuard
{
public:
    using Listener = std::function<void(const QString& warning)>;

    /// What tells one state of a file from the next; all 0 for a file that cannot be reached.
    struct Stamp
    {
        qint64 size = 0;
        quint64 device = 0;
        quint64 inode = 0;
        qint64 modifiedNs = 0;
        qint64 changedNs = 0;

        bool operator==(const Stamp& other) const;
        bool operator!=(const Stamp& other) const
        {
            return !(*this == other);
        }
    };

    /// As much as is read of a document: far above what any content needs, and below what a host
    /// can spare for a moment.
    static constexpr qint64 kMaxDocumentBytes = qint64(256) * 1024 * 1024;

    VLContentGuard() = default;

    /// Has warnings handed to @p listener from now on. Without one they are dropped.
    void setListener(Listener listener);

    /// Opens @p file for reading if it is a regular file; no other is touched.
    static bool open(QFile& file);

    /**
     * Reads the beginning of the file @p path if it is a regular one.
     *
     * @param isListed Whether a directory was just found to hold it as a regular file, which saves
     *                 a look at it before it is opened.
     * @param[out] isWhole Whether there is no more of the file.
     * @return The bytes; null where there is nothing to read.
     */
    static QByteArray readHead(const QString& path, bool isListed, bool& isWhole);

    /**
     * Reads the XML file @p path in one pass, as VLXmlParser does with @p filter and @p userData.
     *
     * @param[out] positions The places of the root and of each of its children.
     * @return The root, which is a @p rootTag, or null, after a warning, for any file that has not
     *         exactly this root or is not well-formed.
     */
    std::unique_ptr<VLXmlElement> parse(const QString& path, QLatin1StringView rootTag,
                                        ShouldGenerateElementFunction filter, void* userData,
                                        QList<XmlPosition>& positions);

    /**
     * Reads the compiled translations @p path.
     *
     * @return What QTranslator can load from memory, without what the file depends on; null, after
     *         a warning, for what is no sound translation file.
     */
    QByteArray readTranslations(const QString& path);

    /// Warns of @p reason, once for as long as the file or directory @p path stays as it is.
    void warn(const QString& path, const QString& reason);
    /// @overload
    void warn(const QString& path, XmlPosition position, const QString& reason);
    /// Warns likewise; @p place is asked only where there is a warning to give, and may give a line
    /// of 0 if it does not know.
    void warn(const QString& path, const std::function<XmlPosition()>& place,
              const QString& reason);

private:
    Q_DISABLE_COPY_MOVE(VLContentGuard)

    friend class VLIndexHooks;

    /// What is known of one state of a file.
    struct Record
    {
        Stamp stamp;
        bool isBroken = false;
        /// Whether the file had been left alone for so long that no later change can have the same
        /// stamp.
        bool isSettled = false;
        QSet<QString> told;
    };

    static bool open(QFile& file, Stamp& stamp, QString& reason);
    /// How the file or directory @p path is now.
    static Stamp stampAt(const QString& path);
    /// Makes what @p report says of @p document fit for authors.
    static void explain(const QByteArray& document, XmlReport& report);
    /// Reads up to @p limit bytes; false, with a @p reason, where the file does not open.
    static bool read(const QString& path, qint64 limit, QByteArray& content, Stamp& stamp,
                     QString& reason);
    Record& recordOf(const QString& path, const Stamp& stamp);
    bool isKnownBroken(const QString& path, const Stamp& stamp) const;
    void refuse(const QString& path, const Stamp& stamp, const QString& warning);
    void accept(const QString& path);
    void tell(Record& record, const QString& warning);

    Listener m_listener;
    /// The files with faults, by their path.
    QHash<QString, Record> m_records;
};

} // namespace Vidlets

#endif
