// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLINDEXHOOKS_H
#define VLINDEXHOOKS_H

#include "VLIndex.h"
#include "VLXmlReport.h"
#include <Vidlets/VidletsExport.h>

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>

class QFile;
class QIODevice;
class VLContext;

namespace Vidlets {

class VLXmlElement;

/// What tells one state of a file from the next; all 0 for a file that is not there.
struct VLFileStamp
{
    qint64 size = 0;
    /// When the content was written last.
    qint64 modifiedNs = 0;
    /// When anything about the file was changed last, which nobody can set back.
    qint64 changedNs = 0;

    friend bool operator==(const VLFileStamp& left, const VLFileStamp& right)
    {
        return left.size == right.size && left.modifiedNs == right.modifiedNs
            && left.changedNs == right.changedNs;
    }
    friend bool operator!=(const VLFileStamp& left, const VLFileStamp& right)
    {
        return !(left == right);
    }
};

/// A directory that holds packages, and how they are told there.
struct VLDataPath
{
    /// Absolute; whether or not there is such a directory.
    QString path;
    /// Of the names of packages.
    QString extension;
    /// The name of the directory of control files in a package.
    QString controlDirectory;

    friend bool operator==(const VLDataPath& left, const VLDataPath& right)
    {
        return left.path == right.path && left.extension == right.extension
            && left.controlDirectory == right.controlDirectory;
    }
    friend bool operator!=(const VLDataPath& left, const VLDataPath& right)
    {
        return !(left == right);
    }
};

/**
 * What an index with a table needs to know and to do beyond what VLIndex gives to each derived
 * class.
 *
 * Internal: the header is not installed, and only the host kit calls it. What says so may be called
 * on any thread, all else is for the user-interface thread.
 */
class VIDLETS_EXPORT VLIndexHooks final
{
public:
    VLIndexHooks() = delete;

    /// Deletes the record of @p index, which else stays allocated: the last that the destructor of
    /// a derived class does.
    static void deleteRecord(VLIndex& index);

    /// Returns the control files of @p index in search order.
    static const QList<IndexedLocation>& locations(const VLIndex& index);

    /// Records @p file as VLIndex::indexControlFile() does, but takes it for a control file without
    /// a look into it.
    static void indexKnownFile(VLIndex& index, const QString& file, const QString& root);

    /// Takes @p entry out of the record, as if it had never been there. A root that is no more goes
    /// with the last file below it.
    static void forgetLocation(VLIndex& index, const IndexedLocation& entry);

    /// Returns the data paths of @p index: those that it was made with, then all others that the
    /// manager has walked over, be there such a directory or not.
    static QList<VLDataPath> dataPaths(const VLIndex& index);

    /// Has @p listener called when dataPaths() gives others than before. An empty one takes it
    /// away.
    static void setDataPathListener(VLIndex& index, const std::function<void()>& listener);

    /// Has @p index read the settings of @p context, which stays the caller's, from now on.
    static void setContext(VLIndex& index, VLContext* context);

    /**
     * Opens @p file for reading if it is a regular file; no other is touched. On any thread.
     *
     * @param[out] stamp How the file is, if it is there.
     * @param[out] reason Why it was not opened.
     */
    static bool open(QFile& file, VLFileStamp& stamp, QString& reason);

    /// How long a file must have been left alone, in milliseconds, for no later change to have its
    /// stamp: some file systems count whole seconds, and clocks of file servers differ a little.
    /// Tests have no time for that. On any thread.
    static std::atomic<int> settledAfterMs;

    /// Returns how the file @p path is now. On any thread.
    static VLFileStamp stampAt(const QString& path);

    /**
     * Reads a control file for @p key as VLIndex::load() does, up to the choice of the one tip.
     *
     * @param[out] report What the parser met. A document that breaks has its root all the same if
     *             nothing but the root was open then.
     * @return The root with what was built for the key, or null.
     */
    static std::unique_ptr<VLXmlElement> parse(QIODevice& device, const QString& key,
                                               XmlReport& report);

    /// Makes what @p report says of the fault of @p document fit for authors. On any thread.
    static void explain(const QByteArray& document, XmlReport& report);

    /// Hands a warning to whoever listens to the guard of @p index, once for as long as @p path
    /// stays as it is. A line of 0 stands for the whole file.
    static void warn(VLIndex& index, const QString& path, XmlPosition position,
                     const QString& reason);
};

} // namespace Vidlets

#endif
