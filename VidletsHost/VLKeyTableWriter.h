// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLKEYTABLEWRITER_H
#define VLKEYTABLEWRITER_H

#include "VLKeyTableFile.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace Vidlets {

class VLKeyTableStore;

/**
 * Puts what was read of control files into the table on disk, many at once.
 *
 * A table that is damaged is put aside, and a new one takes its place; one that cannot be written
 * is given up. Internal to the host kit; lives on the builder's thread while that runs.
 */
class VLKeyTableWriter
{
public:
    /// What was read of a file.
    struct Content
    {
        int file = 0;
        quint32 generation = 0;
        QString path;
        VLKeyTableFile content;
    };

    /// What became of the table.
    struct Incident
    {
        QString reason;
        /// Whether what was in the table before is lost.
        bool isReplaced = false;
        /// Whether there is no table any more.
        bool isGivenUp = false;
    };

    /// For the table @p path; an empty one stands for none. Where @p isCancelled, which stays the
    /// caller's, becomes true, nobody is waited for.
    VLKeyTableWriter(const QString& path, const std::atomic<bool>& isCancelled);
    ~VLKeyTableWriter();

    /// Gives what the table says of the file @p path, without its rows, but for a nested one.
    /// Returns whether the file is as it was then.
    bool knows(const QString& path, VLKeyTableFile& content);
    /// Gives what the table says of the file @p path, whatever has become of that.
    std::optional<VLKeyTableFile> contentOf(const QString& path);
    /// Has @p content written with the next ones.
    void add(Content&& content);
    /// Returns whether so much waits to be written that it is time for it.
    bool isFull() const;
    /// Writes what waits. Returns the files whose rows are in the table now, without their content.
    QList<Content> flush();
    /// Gives the files that the table knows and that are there no more; asking ends where
    /// @p mustEnd, on this thread, gives true. Returns whether all were asked for.
    bool findGone(const std::function<bool()>& mustEnd, QStringList& gone);
    /// Drops what the table says of those of @p paths that are still not there.
    void forget(const QStringList& paths);
    /// Returns what tells the table from any other; null where there is none.
    QByteArray token() const;
    /// Gives what has happened to the table since it was asked for last. Returns whether anything
    /// has.
    bool takeIncident(Incident& incident);

private:
    Q_DISABLE_COPY_MOVE(VLKeyTableWriter)

    bool isOpen();
    template <typename Operation> bool retried(Operation operation);
    bool write(const Content& content, bool& isWritten);
    bool writeAll(QList<Content>& written);
    bool forgetAll(const QStringList& paths);
    void giveUp();
    void loseTable();

    const QString m_path;
    const std::atomic<bool>& m_isCancelled;
    std::unique_ptr<VLKeyTableStore> m_store;
    bool m_isGivenUp = false;
    bool m_isChanged = false;
    bool m_isReplaced = false;
    /// What the table said of each file when it was opened; only as long as the writer lives.
    QHash<QString, VLKeyTableFile> m_known;
    QList<Content> m_waiting;
    qsizetype m_waitingRows = 0;
    std::optional<Incident> m_incident;
};

} // namespace Vidlets

#endif
